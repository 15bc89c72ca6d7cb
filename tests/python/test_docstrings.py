"""Docstrings say what an argument takes and what it comes to; their examples run."""

import csv
import doctest
import inspect
import re

import pytest

import survmeth
from cases import CASES, DECLARED, ROOT
from survmeth._examples import EXAMPLES, SOURCES
from survmeth._names import argument_of

FUNCTIONS = {each["name"]: getattr(survmeth, each["name"]) for each in DECLARED["analyses"]}
ALL = FUNCTIONS | {f"{name}.predict": method
                   for name, method in survmeth.Result._follow_ups.items()}
with open(ROOT / "tests" / "reference" / "python" / "examples.csv", encoding="utf-8") as made:
    NUMBERS = list(csv.DictReader(made))


def names_after(name):
    """Runs the example of the docstring; gives the names that it leaves."""
    example = doctest.DocTestParser().get_doctest(inspect.getdoc(ALL[name]), {}, name, None, 0)
    assert example.examples
    outcome = doctest.DocTestRunner().run(example, clear_globs=False)
    assert outcome.attempted >= 4 and outcome.failed == 0
    return example.globs


@pytest.mark.parametrize("name", ALL)
def test_the_example_of_the_docstring_runs_and_gives_the_numbers_of_r(name):
    names = names_after(name)
    numbers = [row for row in NUMBERS if row["analysis"] == name]
    assert numbers
    for row in numbers:
        # crr stops where its gradient is small: six digits; what the others stop by is smaller.
        assert eval(row["expression"], names) == pytest.approx(float(row["value"]), rel=1e-6)


def test_the_examples_of_the_module_run():
    outcome = doctest.testmod(survmeth)
    assert outcome.attempted >= 5 and outcome.failed == 0


def test_the_examples_of_the_estimators_run():
    import survmeth.sklearn

    outcome = doctest.testmod(survmeth.sklearn)
    assert outcome.attempted >= 7 and outcome.failed == 0


@pytest.mark.parametrize("name", ALL)
def test_every_argument_is_explained_once(name):
    text = inspect.getdoc(ALL[name])
    parameters = text.partition("Parameters\n")[2].partition("\nReturns\n")[0]
    explained = re.findall(r"^(\w+) : ", parameters, re.MULTILINE)
    assert explained == arguments_of(name)
    assert "--" not in parameters.replace("----------", "")  # options are named as arguments are


def arguments_of(name):
    name, _, follows = name.partition(".")
    declared = next(each for each in DECLARED["analyses"] if each["name"] == name)
    if follows:
        declared = declared[follows]
    options = [argument_of(option["name"]) for option in declared["options"]]
    others = [option["name"] + "_name" for option in declared["options"]
              if option["type"] == "data"]
    return ["data", *options, *others, "data_name", "missing", "where", "progress"]


@pytest.mark.parametrize("name", ALL)
def test_what_comes_back_and_what_is_raised_is_said(name):
    text = inspect.getdoc(ALL[name])
    for heading in ("Parameters", "Returns", "Raises", "References", "Examples"):
        assert text.count(f"\n{heading}\n{'-' * len(heading)}\n") == 1
    assert "\nRefusedInput\n" in text


def test_ranges_shapes_and_choices_are_those_of_the_declarations():
    text = inspect.getdoc(survmeth.life)
    assert "\ntime : name of a column of n numbers not below 0, optional\n" in text
    assert "\nalpha : float, a number between 0 and 1, optional\n" \
           "    Significance level; intervals have level 1 - alpha (default 0.05).\n" in text
    assert "\nat : float or list of float, ascending numbers from 0, optional\n" in text
    assert "\nseed : int, a whole number from 0 to 9007199254740991, optional\n" in text
    cox = inspect.getdoc(survmeth.cox)
    assert "\ncovariates : names of columns of n numbers or labels, optional\n" \
           "    Columns of the model, likewise.\n" in cox
    assert "'efron', 'breslow', 'discrete', 'marginal' (default efron)" in cox
    assert "\nresiduals : bool, optional\n    Whether the result has the table residuals.\n" in cox


def test_every_analysis_has_an_example_and_sources():
    assert list(EXAMPLES) and set(EXAMPLES) == set(SOURCES) == set(ALL)


@pytest.mark.parametrize("name", ALL)
def test_the_sources_are_those_that_reports_name(name):
    printed = "".join((folder / "stdout").read_text() for folder in CASES.iterdir()
                      if (folder / "stdout").exists())
    for source in SOURCES[name]:
        assert source in printed


def test_prose_has_lines_that_a_terminal_has_room_for():
    for function in ALL.values():
        lines = function.__doc__.splitlines()
        # Lines of examples are as they were typed, those of a parameter its name and its type.
        prose = lines[:lines.index("Examples")] if "Examples" in lines else lines
        assert [line for line in prose if len(line) > 100
                and (" : " not in line or line.startswith(" "))] == []


def test_new_data_are_data_and_no_file():
    found = re.search("newdata : .*\n    (.*)\n", survmeth.cox.__doc__)
    assert found[1].startswith("New data, of whose rows risk, survival and more are predicted.")
    assert "FILE" not in survmeth.cox.__doc__
