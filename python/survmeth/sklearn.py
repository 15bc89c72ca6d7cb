"""Proportional hazards as scikit-learn's pipelines take it: needs scikit-learn."""

import numpy as np
from sklearn.base import BaseEstimator
from sklearn.utils.validation import check_is_fitted

import survmeth


class CoxRegression(BaseEstimator):
    """Cox regression of all columns of X.

    Parameters
    ----------
    ties : the treatment of ties, as in survmeth.cox
    strata : name of a column of X that strata come from instead; X is then a table

    Attributes
    ----------
    result_ : the survmeth.Result
    coef_ : array of n_features_in_, or fewer where a column makes strata; columns of labels are
        refused
    feature_names_in_, n_features_in_ : as scikit-learn has them
    """

    def __init__(self, ties="efron", strata=None):
        self.ties = ties
        self.strata = strata

    def fit(self, X, y):
        """y is a structured array of a truth value (the event) and a number (the time), or has the
        columns time and event, in this order."""
        columns = _columns_of(X)
        self.feature_names_in_ = np.array(list(columns), dtype=object)
        self.n_features_in_ = len(columns)
        time, event = _times_of(y)
        names = [name for name in columns if name != self.strata]
        data, spelled = _spelled(columns)
        self.result_ = survmeth.cox(
            {**data, "time": time, "event": event}, time="time", event="event",
            covariates=[spelled[name] for name in names], ties=self.ties, event_value="1",
            strata=spelled[self.strata] if self.strata is not None else None)
        self.coef_ = np.array(self.result_.arrays["coefficients"]["coef"])
        if len(self.coef_) != len(names):
            raise ValueError("a column of X holds labels; expected numbers, as an encoder gives them")
        return self

    def predict(self, X):
        """The linear predictor: the logarithm of the risk against that at the means."""
        return np.array(self._predicted(X).arrays["predictions"]["linearPredictor"])

    def predict_survival(self, X, times):
        """Survival at the times: a row for each row of X, a column for each time; NaN where nothing
        is known."""
        times = np.atleast_1d(np.asarray(times, dtype=float))
        order, back = np.unique(times, return_inverse=True)
        shown = self._predicted(X, at=order.tolist()).arrays["survival"]["survival"]
        return np.array(shown).reshape(-1, len(order))[:, back]

    def score(self, X, y):
        """Harrell's concordance of the predictions with y: that of a model of them alone, turned
        where it turns them."""
        time, event = _times_of(y)
        alone = survmeth.cox({"time": time, "event": event, "x": self.predict(X)}, time="time",
                             event="event", covariates=["x"], event_value="1")
        concordance = alone.facts["concordance"]
        return concordance if alone.arrays["coefficients"]["coef"][0] >= 0 else 1 - concordance

    def _predicted(self, X, **named):
        check_is_fitted(self)
        columns = _columns_of(X)
        if list(columns) != list(self.feature_names_in_):
            raise ValueError(f"X has the columns {', '.join(map(str, columns))}; expected those of "
                             f"the fit, {', '.join(map(str, self.feature_names_in_))}")
        data = _spelled(columns)[0]
        given = self.result_.predict(data, **named)
        rows = len(next(iter(data.values())))
        if len(given.arrays["predictions"]["linearPredictor"]) != rows:
            raise ValueError("X has missing cells; expected whole rows, as an imputer gives them")
        return given


def _columns_of(X):
    """By name; x0, x1, ... where X is an array."""
    if hasattr(X, "columns") and hasattr(X, "__getitem__"):
        return {name: X[name] for name in X.columns}
    X = np.asarray(X)
    if X.ndim != 2:
        raise ValueError(f"X has {X.ndim} dimensions; expected 2")
    return {f"x{i}": X[:, i] for i in range(X.shape[1])}


def _spelled(columns):
    """The columns by names that are neither y's nor of several meanings, and those names."""
    spelled = {name: f"X.{name}" for name in columns}
    return {spelled[name]: column for name, column in columns.items()}, spelled


def _times_of(y):
    if getattr(y, "dtype", None) is not None and getattr(y.dtype, "names", None):
        truths = [name for name in y.dtype.names if y.dtype[name].kind == "b"]
        numbers = [name for name in y.dtype.names if y.dtype[name].kind in "iuf"]
        if len(truths) != 1 or len(numbers) != 1:
            raise ValueError("y has other fields than a truth value and a number")
        return y[numbers[0]].astype(float), y[truths[0]].astype(float)
    y = np.asarray(y, dtype=float)
    if y.ndim != 2 or y.shape[1] != 2:
        raise ValueError("y has another shape than n x 2; expected the columns time and event, or a "
                         "structured array of event and time")
    return y[:, 0].copy(), y[:, 1].copy()
