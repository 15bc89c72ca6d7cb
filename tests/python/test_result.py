"""What a result offers."""

import inspect
import json
import pathlib
import pickle
import sys

import numpy as np
import pandas
import pytest

import survmeth
from cases import ROOT, columns_of
from survmeth import _functions

LEUKEMIA = columns_of(ROOT / "data" / "leukemia.csv")


@pytest.fixture(name="fit")
def fit_of_leukemia():
    return survmeth.life(LEUKEMIA, time="weeks", event="relapse", group="treatment",
                         data_name="data/leukemia.csv")


def test_tables_are_data_frames_with_the_keys_of_the_json(fit):
    printed = json.loads(fit.to_json())["tables"]
    assert list(fit.tables) == list(printed)
    for name, table in fit.tables.items():
        assert isinstance(table, pandas.DataFrame)
        assert list(table) == list(printed[name]["values"])
        for key, values in printed[name]["values"].items():
            assert [None if value != value else value for value in table[key]] == values


def test_without_pandas_tables_are_arrays(fit, monkeypatch):
    monkeypatch.setitem(sys.modules, "pandas", None)
    median = fit.tables["summary"]["median"]
    assert isinstance(median, np.ndarray)
    assert median.tolist() == [23, 8]
    assert np.isnan(fit.tables["summary"]["upper"][0])


def test_arrays_outlive_the_result(fit):
    survival = fit.arrays["kaplanMeier"]["survival"]
    before = survival.copy()
    del fit
    np.testing.assert_array_equal(survival, before)
    with pytest.raises(ValueError, match="read-only"):
        survival[0] = 0


def test_tables_and_facts_are_attributes(fit):
    assert fit.tests["test"].tolist() == ["Log-rank", "Gehan-Breslow", "Tarone-Ware"]
    assert fit.level == 0.95
    assert {"tests", "level", "to_json"} <= set(dir(fit))
    with pytest.raises(AttributeError, match="this Result has no 'medians'; it has the tables summary"):
        fit.medians


def test_the_summary_is_the_text_of_the_command_line(fit):
    lines = fit.summary(width=100).splitlines()
    assert lines[:2] == ["Survival by treatment", "---------------------"]
    assert "Log-rank           16.793   1  <0.0001" in lines
    assert str(fit) == fit.summary()
    assert repr(fit) == "<survmeth.Result of life: Survival by treatment>"


def test_html_is_a_document_and_a_cell_of_a_notebook_frames_it(fit):
    assert fit.to_html().startswith("<!DOCTYPE html>")
    assert fit._repr_html_().startswith("<iframe sandbox ")
    assert "&lt;!DOCTYPE html&gt;" in fit._repr_html_()


def test_csv_files_are_those_of_the_command_line(fit):
    files = fit.to_csv()
    assert files["tests.csv"].startswith("test,chiSquare,degreesOfFreedom,pValue\n")


def test_figures_are_described(fit):
    assert fit.figures[0]["id"] == "survival"
    kinds = {series["kind"] for series in fit.figures[0]["panels"][0]["series"]}
    assert kinds == {"step", "band"}
    assert json.loads(fit.to_json(figures=True))["figures"][0]["id"] == "survival"


def test_notes_and_methods_are_those_of_the_json(fit):
    printed = json.loads(fit.to_json())
    assert (fit.notes, fit.methods, fit.plan) == \
        (printed["notes"], printed["methods"], printed["plan"])


def test_every_analysis_has_a_function_with_signature_and_docstring():
    for analysis in _functions.analyses():
        function = getattr(survmeth, analysis["name"])
        parameters = list(inspect.signature(function).parameters)
        assert parameters[0] == "data"
        others = sum(option["type"] == "data" for option in analysis["options"])  # each is named too
        assert len(parameters) == 1 + len(analysis["options"]) + others + len(_functions.SHARED)
        assert function.__doc__.startswith(analysis["summary"])


def test_no_option_has_the_name_of_what_all_functions_take():
    for analysis in _functions.analyses():
        assert not {option["name"].replace("-", "_") for option in analysis["options"]} \
            & set(_functions.SHARED)


def test_a_refusal_pickles():
    error = survmeth.RefusedInput("event-value", "e", 3, "x", "y")
    again = pickle.loads(pickle.dumps(error))
    assert (str(again), again.argument, again.index) == (str(error), "event_value", 3)


def test_classes_are_named_as_callers_name_them(fit):
    assert str(survmeth.RefusedInput) == "<class 'survmeth.RefusedInput'>"
    assert str(type(fit)) == "<class 'survmeth.Result'>"
    assert type(pickle.loads(pickle.dumps(fit))) is survmeth.Result


def test_the_version_is_that_of_the_project():
    listed = (ROOT / "CMakeLists.txt").read_text()
    assert f"VERSION {survmeth.__version__} " in listed


def test_the_sources_are_the_trees():
    package = pathlib.Path(survmeth.__file__).parent
    assert (package / "_data.py").resolve().is_relative_to(ROOT)
