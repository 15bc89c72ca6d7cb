"""Predictions that follow from results, and results that are pickled."""

import inspect
import json
import pickle

import pytest

import survmeth
from cases import CASES, ROOT, columns_of, of_memory
from survmeth import _core
from survmeth._result import Result

LUNG = columns_of(ROOT / "data" / "lung.csv")
FORMULA = "Surv(time, status) ~ age + sex + ph.ecog"


@pytest.fixture(name="fit", scope="module")
def fit_of_lung():
    return survmeth.cox(FORMULA, LUNG, data_name="lung")


def test_predictions_of_a_saved_fit_are_the_command_lines():
    case = CASES / "predict_json"
    assert (case / "arguments").read_text().strip() \
        == "predict trial.fit new.csv --at 5 --conf log --json --quiet"

    class Saved:
        _fit = _core.Fit((case / "input" / "trial.fit").read_text())

    given = Result._follow_ups["cox"](Saved(), columns_of(case / "input" / "new.csv"), at=[5],
                                      conf="log", data_name="new.csv")
    assert given.to_json() == of_memory(
        (case / "stdout").read_text().replace("@VERSION@", survmeth.__version__))


def test_linear_predictors_are_those_of_the_coefficients(fit):
    new = {"age": [60.0, 70.0], "sex": ["female", "male"], "ph.ecog": [1.0, 2.0]}
    shown = fit.predict(new).arrays["predictions"]["linearPredictor"]
    table = fit.arrays["coefficients"]
    coefficients = dict(zip(table["name"], table["coef"]))
    difference = (10 * coefficients["age"] + coefficients["sex=male"] + coefficients["ph.ecog"])
    # Both subtract the same means, of numbers near 1.
    assert shown[1] - shown[0] == pytest.approx(difference, abs=1e-14)


def test_new_data_beside_the_first_are_told_the_same(fit):
    new = {"age": [60.0, None, 70.0], "sex": ["female", "male", "male"], "ph.ecog": [1.0, 0.0, 2.0]}
    both = survmeth.cox(FORMULA, LUNG, newdata=new, newdata_name="new", at=[180, 365], terms=True)
    alone = fit.predict(new, at=[180, 365], terms=True)
    assert both.plan["newdata"] == "new" and both.facts["newRows"] == 2
    for name, table in alone.arrays.items():
        ours = both.arrays["predictedTerms" if name == "terms" else name]
        assert {key: list(ours[key]) for key in ours} == {key: list(table[key]) for key in table}


def test_incidences_of_new_data_beside_the_first_are_those_of_predict():
    rows = {"time": [1.0, 2, 3, 4, 5, 6, 7, 8], "status": [1, 2, 0, 1, 2, 1, 0, 1],
            "x": [0.0, 1, 1, 0, 0, 1, 0, 0]}
    new = {"x": [1.0, 0.5]}
    formula = "Surv(time, status) ~ x"
    both = survmeth.finegray(formula, rows, event="1", newdata=new, at=[2, 6])
    alone = survmeth.finegray(formula, rows, event="1").predict(new, at=[2, 6])
    for ours, name in (("predictions", "predictions"), ("predictedIncidenceAt", "incidenceAt")):
        table = alone.arrays[name]
        assert {key: list(both.arrays[ours][key]) for key in table} == {
            key: list(table[key]) for key in table}
    with pytest.raises(survmeth.RefusedInput) as refused:
        survmeth.finegray(formula, rows, event="1", newdata={"y": [1.0]})
    assert refused.value.argument == "newdata"


@pytest.mark.parametrize("new, column, index", [
    ({"age": [60.0, 50.0], "sex": ["male", "none"], "ph.ecog": [1.0, 1.0]}, None, 1),
    ({"age": [60.0], "sex": ["male"]}, None, None),
    ({"age": [60.0, 50.0], "sex": ["male"]}, None, None),
    ({"age": ["old"], "sex": ["male"], "ph.ecog": [1.0]}, "age", 0)])
def test_what_is_refused_of_new_data_is_said_of_them(new, column, index):
    with pytest.raises(survmeth.RefusedInput) as refused:
        survmeth.cox(FORMULA, LUNG, newdata=new)
    assert (refused.value.argument, refused.value.index) == ("newdata", index)
    assert column is None or refused.value.column == column


def test_the_file_is_the_command_lines(fit, tmp_path):
    fit.save(tmp_path / "lung.fit")
    saved = json.loads((tmp_path / "lung.fit").read_text())
    assert (saved["schema"], saved["fit"]["analysis"], saved["fit"]["data"]) \
        == ("survmeth-fit/1", "cox", "lung")
    assert pickle.loads(pickle.dumps(fit))._report.saved == (tmp_path / "lung.fit").read_text()


def test_predict_has_the_signature_that_is_declared(fit):
    parameters = inspect.signature(fit.predict).parameters
    assert list(parameters)[0] == "data" and {"at", "conf", "where"} <= set(parameters)
    assert "predict" in dir(fit)


def test_new_data_without_a_column_of_the_fit_are_refused(fit):
    with pytest.raises(survmeth.RefusedInput) as caught:
        fit.predict({"sex": ["male"], "ph.ecog": [1]})
    assert str(caught.value) == (
        'data, column "age": there is no such column; expected one of "sex", "ph.ecog"')


def test_analyses_without_predictions_have_none():
    fit = survmeth.life(LUNG, time="time", event="status")
    with pytest.raises(AttributeError, match="this Result has no 'predict'"):
        fit.predict
    for again in (fit, pickle.loads(pickle.dumps(fit))):
        with pytest.raises(ValueError, match="results of life make no predictions that a saved fit "
                                             "would be for; those of cox and finegray do"):
            again.save("nowhere.fit")


def test_a_fit_with_an_infinite_coefficient_predicts_nothing(tmp_path):
    data = {"t": [1, 2, 3, 4, 5, 6], "e": [1, 1, 1, 0, 0, 0], "x": [1, 1, 1, 0, 0, 0]}
    fit = survmeth.cox(data, time="t", event="e", covariates=["x"])
    for again in (fit, pickle.loads(pickle.dumps(fit))):
        with pytest.raises(ValueError, match="infinite"):
            again.predict(data)
        with pytest.raises(ValueError, match="infinite"):
            again.save(tmp_path / "no.fit")
    assert not (tmp_path / "no.fit").exists()


def test_a_pickled_result_is_the_result(fit):
    again = pickle.loads(pickle.dumps(pickle.loads(pickle.dumps(fit))))
    assert again.to_json() == fit.to_json()
    assert again.to_json(figures=True) == fit.to_json(figures=True)
    assert (again.summary(), again.summary(width=0)) == (fit.summary(), fit.summary(width=0))
    assert (again.to_html(), again._repr_html_()) == (fit.to_html(), fit._repr_html_())
    assert again.to_csv() == fit.to_csv()
    assert (again.facts, again.plan, again.notes, again.methods, repr(again)) \
        == (fit.facts, fit.plan, fit.notes, fit.methods, repr(fit))
    assert repr(again.figures) == repr(fit.figures)
    for name, table in fit.tables.items():
        assert again.tables[name].equals(table)
    new = {name: cells[:5] for name, cells in LUNG.items()}
    assert again.predict(new, at=[180]).to_json() == fit.predict(new, at=[180]).to_json()


def test_a_pickled_result_has_its_text_for_two_widths_only(fit):
    with pytest.raises(ValueError, match=r"has its text for \(80, 5\) and \(0, 5\) only"):
        pickle.loads(pickle.dumps(fit)).summary(width=100)
