"""Regressions within scikit-learn."""

import pickle

import numpy as np
import pandas
import polars
import pytest
import scipy.sparse
from sklearn.base import clone
from sklearn.exceptions import NotFittedError
from sklearn.model_selection import GridSearchCV, cross_val_score
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import StandardScaler

import survmeth
from cases import ROOT
from peers import theirs
from survmeth.sklearn import CoxRegression, FineGrayRegression, concordance_index

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
    assert plain.n_features_in_ == 2 and not hasattr(plain, "feature_names_in_")
    assert plain.result_.arrays["coefficients"]["name"].tolist() == ["x0", "x1"]


def test_predictions_are_those_of_the_result(fit):
    expected = REFERENCE.predict(LUNG, at=[180, 365])
    np.testing.assert_array_equal(fit.predict(X),
                                  expected.arrays["predictions"]["linearPredictor"])
    np.testing.assert_array_equal(
        fit.predict_survival(X, [365, 180]),
        np.reshape(expected.arrays["survival"]["survival"], (-1, 2))[:, ::-1])


def test_the_score_is_the_concordance(fit):
    assert fit.score(X, Y) == pytest.approx(REFERENCE.facts["concordance"], rel=1e-12)


def test_a_score_that_points_the_other_way_or_nowhere():
    lower = concordance_index(PLAIN, LUNG["age"])
    assert concordance_index(Y, -LUNG["age"]) == pytest.approx(1 - lower, rel=1e-12)
    assert concordance_index(Y, np.zeros(len(Y))) == 0.5
    with pytest.raises(ValueError, match="no two rows of y can be compared"):
        concordance_index([[1, 0], [2, 0]], [1, 2])


def test_concordance_is_that_of_lifelines_and_scikit_survival():
    """tests/reference/python/peers.csv; a ratio of whole numbers."""
    peers = theirs()
    for peer in ("lifelines", "scikit-survival"):
        assert concordance_index(PLAIN, LUNG["ph.ecog"]) == \
            pytest.approx(peers[peer, "concordance"], rel=1e-14)


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


def test_names_of_columns_may_be_those_of_the_answer():
    renamed = X.rename(columns={"age": "y.time", "ph.ecog": "time"})
    np.testing.assert_array_equal(CoxRegression().fit(renamed, Y).coef_,
                                  CoxRegression().fit(X, Y).coef_)


def test_a_ridge_is_that_of_cox():
    expected = survmeth.cox("Surv(time, status) ~ age + ph.ecog", LUNG, ridge=20)
    np.testing.assert_array_equal(CoxRegression(ridge=20).fit(X, Y).coef_,
                                  expected.arrays["coefficients"]["coef"])
    search = GridSearchCV(CoxRegression(), {"ridge": [None, 1, 100]}, cv=3).fit(X, Y)
    assert set(search.best_params_) == {"ridge"}


def test_feature_names_pass_through_pipelines():
    pipeline = make_pipeline(StandardScaler().set_output(transform="pandas"), CoxRegression())
    assert pipeline.fit(X, Y)[-1].feature_names_in_.tolist() == ["age", "ph.ecog"]
    with pytest.raises(ValueError, match="feature names should match"):
        pipeline[-1].predict(X[["ph.ecog", "age"]])


def test_frames_of_polars_are_taken():
    frame = polars.DataFrame(X.to_dict("list"))
    np.testing.assert_array_equal(CoxRegression().fit(frame, PLAIN).coef_,
                                  CoxRegression().fit(X, Y).coef_)


PBC = pandas.read_csv(ROOT / "data" / "pbc.csv")
COMPETING = np.array([*zip(PBC["status"], PBC["time"])], dtype=[("status", int), ("time", float)])


def pbc_columns():
    return pandas.DataFrame({"age": PBC["age"], "log bilirubin": np.log(PBC["bili"])})


def test_fine_and_grays_regression_is_that_of_the_analysis():
    fit = FineGrayRegression(event=2).fit(pbc_columns(), COMPETING)
    expected = survmeth.finegray("Surv(time, status) ~ age + log(bili)", PBC, event="2")
    np.testing.assert_allclose(fit.coef_, expected.arrays["coefficients"]["coef"], rtol=1e-12)
    plain = FineGrayRegression(event=2).fit(pbc_columns().to_numpy(),
                                            np.column_stack([PBC["time"], PBC["status"]]))
    np.testing.assert_array_equal(plain.coef_, fit.coef_)
    sandwich = FineGrayRegression(event=2, errors="sandwich").fit(pbc_columns(), COMPETING)
    assert not np.allclose(sandwich.result_.arrays["coefficients"]["standardError"],
                           fit.result_.arrays["coefficients"]["standardError"], rtol=1e-6)


def test_predictions_are_0_at_the_means_and_incidences_stay_where_no_event_is():
    """Incidences of rows are held against cmprsk's in test_peers.py."""
    fit = FineGrayRegression(event=2).fit(pbc_columns(), COMPETING)
    made = fit.predict_incidence(pbc_columns().iloc[:3], [3650, 0, 10_000, 365])
    assert made.shape == (3, 4) and made[:, 1].tolist() == [0, 0, 0]
    assert np.all(made[:, 3] < made[:, 0]) and np.all(made[:, 0] <= made[:, 2])
    means = pbc_columns().mean().to_frame().T
    np.testing.assert_allclose(fit.predict(means), 0, atol=1e-13)


def test_those_with_another_event_never_have_this_one():
    """By hand: the pairs are (1, 2), (1, 3), (1, 4), (3, 2), (3, 4); the second, of time 2, died of
    another cause and stays; of the fourth nothing is known after 5."""
    fit = FineGrayRegression().fit(pbc_columns(), np.column_stack([PBC["time"], PBC["status"] == 2]))
    fit.predict = lambda rows: np.array([4.0, 3.0, 2.0, 1.0])
    y = [[1, 1], [2, 2], [3, 1], [5, 0]]
    assert fit.score(None, y) == pytest.approx(4 / 5, rel=1e-15)


def test_fine_and_gray_within_pipelines_and_searches():
    pipeline = make_pipeline(StandardScaler(), FineGrayRegression(event=2))
    scores = cross_val_score(pipeline, pbc_columns(), COMPETING, cv=3)
    assert all(0.6 < score < 0.95 for score in scores)
    search = GridSearchCV(FineGrayRegression(event=2),
                          {"errors": ["sandwich", "estimated-weights"]}, cv=3)
    assert search.fit(pbc_columns(), COMPETING).best_score_ == pytest.approx(
        search.cv_results_["mean_test_score"][0])
    assert clone(FineGrayRegression(event=2, censor=9)).get_params() == {
        "event": 2, "censor": 9, "errors": "estimated-weights"}


def test_both_pickle():
    for estimator in (CoxRegression().fit(X, Y),
                      FineGrayRegression(event=2).fit(pbc_columns(), COMPETING)):
        rows = X if isinstance(estimator, CoxRegression) else pbc_columns()
        again = pickle.loads(pickle.dumps(estimator))
        np.testing.assert_array_equal(again.predict(rows), estimator.predict(rows))


def test_what_they_cannot_take(fit):
    for estimator in (CoxRegression(), FineGrayRegression()):
        name = type(estimator).__name__
        with pytest.raises(NotFittedError, match=name):
            estimator.predict(X)
        with pytest.raises(TypeError, match="Sparse data was passed for X, but dense data is req"):
            estimator.fit(scipy.sparse.csr_array(X.to_numpy()), PLAIN)
        with pytest.raises(ValueError, match=f"Input X contains NaN.\n{name} does not accept"):
            estimator.fit(X.assign(age=[np.nan, *X["age"][1:]]), PLAIN)
        with pytest.raises(ValueError, match="y has the shape \\(227,\\); expected the columns"):
            estimator.fit(X, Y["time"])
        with pytest.raises(ValueError, match="y has other fields than an event"):
            estimator.fit(X, np.array([(1.0, 2.0)] * len(X), dtype=[("a", float), ("b", float)]))
        with pytest.raises(ValueError, match="inconsistent numbers of samples"):
            estimator.fit(X, PLAIN[:-1])
        with pytest.raises(ValueError, match="the column 'arm' of X holds labels; expected numbers"):
            estimator.fit(X.assign(arm="a"), PLAIN)
        with pytest.raises(ValueError, match="the column 'arm' of X holds labels; expected numbers"):
            estimator.fit(X.assign(arm=np.array(["a"] * len(X), dtype=object)), PLAIN)
        with pytest.raises(ValueError, match="y holds labels; expected times and, of each, a number for"):
            estimator.fit(X, [[1, "dead"]] * len(X))
    with pytest.raises(ValueError, match="feature names should match"):
        fit.predict(X[["age"]])
    with pytest.raises(ValueError, match="the events of y are other than 0 and 1; expected the col"):
        CoxRegression().fit(X, PLAIN[:, ::-1])
    with pytest.raises(ValueError, match="no row of y ends in the event; expected one at least"):
        CoxRegression().fit(X, PLAIN * [1, 0])
    with pytest.raises(ValueError, match="X has no column 'arm', which is to make strata"):
        CoxRegression(strata="arm").fit(X, Y)
    with pytest.raises(ValueError, match="X is a ndarray; expected a table, whose column 'arm'"):
        CoxRegression(strata="arm").fit(X.to_numpy(), Y)
