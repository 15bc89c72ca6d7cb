"""The examples of docs/python.md run, from the root of the tree; the names in docs/coming-from.md are
those of results."""

import doctest
import re

import survmeth
from cases import ROOT, columns_of
from survmeth import _functions


def test_the_examples_of_the_page(monkeypatch):
    monkeypatch.chdir(ROOT)
    made = doctest.testfile(str(ROOT / "docs" / "python.md"), module_relative=False)
    assert made.attempted >= 9
    assert made.failed == 0


def test_the_results_and_figures_that_newcomers_are_sent_to_are_there():
    page = (ROOT / "docs" / "coming-from.md").read_text()
    analyses = _functions.analyses()
    analyses += [each["predict"] for each in analyses if "predict" in each]
    figures = set(re.findall(r'fit\.plot\("(\w+)"\)', page))
    assert {"hazardRatios", "incidence", "schoenfeld"} <= figures
    assert figures <= {figure for each in analyses for figure in each["figures"]}

    lung = columns_of(ROOT / "data" / "lung.csv")
    fit = survmeth.cox("Surv(time, status) ~ age", lung)
    tables = {table for each in analyses for table in each["tables"]}
    named = set(re.findall(r"fit\.(\w+)", page)) | set(re.findall(r'tables\["(\w+)"\]', page))
    assert len(named) > 20
    assert named <= tables | set(fit.facts) | set(dir(survmeth.Result)) | {"predict"}
    life = survmeth.life("Surv(time, status) ~ sex", lung)
    assert {"time", "atRisk", "events", "censored"} <= set(life.arrays["kaplanMeier"])
