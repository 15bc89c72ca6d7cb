"""Cox regression within scikit-learn."""

import numpy as np
import pandas
import pytest
from sklearn.base import clone
from sklearn.exceptions import NotFittedError
from sklearn.model_selection import GridSearchCV, cross_val_score
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import StandardScaler

import survmeth
from cases import ROOT
from survmeth.sklearn import CoxRegression

LUNG = pandas.read_csv(ROOT / "data" / "lung.csv")[["time", "status", "age", "ph.ecog", "sex"]].dropna()
X = LUNG[["age", "ph.ecog"]]
Y = np.array([(status == 1, time) for status, time in zip(LUNG["status"], LUNG["time"])],
             dtype=[("event", bool), ("time", float)])
PLAIN = np.column_stack([Y["time"], Y["event"]])
REFERENCE = survmeth.cox("Surv(time, status) ~ age + ph.ecog", LUNG)


@pytest.fixture(name="fit", scope="module")
def fit_of_lung():
    return CoxRegression().fit(X, Y)


def test_coefficients_are_those_of_cox(fit):
    np.testing.assert_array_equal(fit.coef_, REFERENCE.arrays["coefficients"]["coef"])
    assert fit.feature_names_in_.tolist() == ["age", "ph.ecog"]
    assert fit.n_features_in_ == 2


def test_y_may_have_two_columns_and_x_none_of_names(fit):
    plain = CoxRegression().fit(X.to_numpy(), PLAIN)
    np.testing.assert_array_equal(plain.coef_, fit.coef_)
    assert plain.feature_names_in_.tolist() == ["x0", "x1"]


def test_predictions_are_those_of_the_result(fit):
    expected = REFERENCE.predict(LUNG, at=[180, 365])
    np.testing.assert_array_equal(fit.predict(X),
                                  expected.arrays["predictions"]["linearPredictor"])
    np.testing.assert_array_equal(
        fit.predict_survival(X, [365, 180]),
        np.reshape(expected.arrays["survival"]["survival"], (-1, 2))[:, ::-1])


def test_the_score_is_the_concordance_whichever_way_it_points(fit):
    assert fit.score(X, Y) == pytest.approx(REFERENCE.facts["concordance"], rel=1e-12)
    turned = CoxRegression().fit(X, Y)
    turned.predict = lambda rows: -CoxRegression.predict(turned, rows)
    assert turned.score(X, Y) == pytest.approx(1 - REFERENCE.facts["concordance"], rel=1e-12)


def test_pipelines_searches_and_clones_take_it():
    pipeline = make_pipeline(StandardScaler(), CoxRegression())
    scores = cross_val_score(pipeline, X, PLAIN, cv=3)
    assert all(0.4 < score < 0.8 for score in scores)
    search = GridSearchCV(CoxRegression(), {"ties": ["efron", "breslow"]}, cv=3).fit(X, PLAIN)
    assert search.best_estimator_.get_params()["ties"] in ("efron", "breslow")
    assert clone(CoxRegression(ties="breslow")).ties == "breslow"


def test_strata_come_from_a_column():
    fit = CoxRegression(strata="sex").fit(LUNG[["age", "ph.ecog", "sex"]], Y)
    expected = survmeth.cox("Surv(time, status) ~ age + ph.ecog + strata(sex)", LUNG)
    # The same data, centred by stratum in either case.
    np.testing.assert_allclose(fit.coef_, expected.arrays["coefficients"]["coef"], rtol=1e-12)


def test_what_it_cannot_take(fit):
    with pytest.raises(NotFittedError):
        CoxRegression().predict(X)
    with pytest.raises(ValueError, match="X has the columns age; expected those of the fit, age, ph"):
        fit.predict(X[["age"]])
    with pytest.raises(ValueError, match="X has missing cells"):
        fit.predict(X.iloc[:3].assign(age=[np.nan, 60, 70]))
    with pytest.raises(ValueError, match="a column of X holds labels"):
        CoxRegression().fit(LUNG[["age"]].assign(arm=["a", "b", "c"] * 75 + ["a"] * (len(X) - 225)), Y)
    with pytest.raises(ValueError, match="y has another shape"):
        CoxRegression().fit(X, Y["time"])
