"""Regressions as scikit-learn's pipelines and searches take them: needs scikit-learn.

y is a structured array of the event and the time, or has the columns time and event, in this order.
"""

import numpy as np
from sklearn.base import BaseEstimator
from sklearn.utils.validation import (assert_all_finite, check_array, check_consistent_length,
                                      check_is_fitted, validate_data)

import survmeth
from survmeth import _core

__all__ = ["CoxRegression", "FineGrayRegression", "concordance_index"]


class _Regression(BaseEstimator):
    """What both have: columns of X, their names, predictions and the score."""

    def predict(self, X):
        """The linear predictor, an array of n: the logarithm of the risk against that at the means."""
        columns = self._columns(X, reset=False)
        return np.array(self._linear(columns))

    def __sklearn_tags__(self):
        tags = super().__sklearn_tags__()
        tags.target_tags.required = True
        tags.target_tags.one_d_labels = False
        tags.target_tags.two_d_labels = True
        return tags

    def _columns(self, X, reset):
        """By name, columns of doubles, and that of strata as it is."""
        strata = getattr(self, "strata", None)
        if strata is None:
            _require_numbers(X)
            numbers = validate_data(self, X, reset=reset, dtype=np.float64,
                                    ensure_min_samples=2 if reset else 1)
            names = [str(name) for name in getattr(self, "feature_names_in_", [])] \
                or [f"x{i}" for i in range(numbers.shape[1])]
            return {name: numbers[:, i] for i, name in enumerate(names)}
        if not hasattr(X, "columns"):
            raise ValueError(f"X is a {type(X).__name__}; expected a table, whose column {strata!r} "
                             "makes strata")
        validate_data(self, X, reset=reset, skip_check_array=True)
        if strata not in list(X.columns):
            raise ValueError(f"X has no column {strata!r}, which is to make strata")
        rest = X[[name for name in X.columns if name != strata]]
        _require_numbers(rest)
        numbers = check_array(rest, dtype=np.float64, estimator=self, input_name="X")
        columns = {str(name): numbers[:, i] for i, name in enumerate(rest.columns)}
        return columns | {str(strata): X[strata]}

    def _fitted(self, y, columns, analyse):
        """Runs `analyse` on the columns beside time and event, whose names nobody else has."""
        if y is None:
            raise ValueError(f"{type(self).__name__} requires y to be passed, but the target y is "
                             "None: times and events")
        time, event = _times_of(y)
        check_consistent_length(next(iter(columns.values())), time)
        dots = "." * max((len(name) for name in columns), default=0)
        named = {f"y{dots}.time": time, f"y{dots}.event": event} if any(
            name in ("y.time", "y.event") for name in columns) else {"y.time": time, "y.event": event}
        self.result_ = analyse(columns | named, *named)
        self.coef_ = np.array(self.result_.arrays["coefficients"]["coef"])
        return self


class CoxRegression(_Regression):
    """Cox regression of all columns of X.

    Parameters
    ----------
    ties : treatment of ties: 'efron', 'breslow', 'discrete' or 'marginal'
    ridge : size of a ridge penalty from 0, on coefficients in standard deviations of their columns;
        None: the likelihood as it is
    strata : name of a column of X that strata come from instead; X is then a table

    Attributes
    ----------
    result_ : the survmeth.Result
    coef_ : array of n_features_in_, without the column that makes strata
    n_features_in_, feature_names_in_ : as scikit-learn has them

    Examples
    --------
    >>> from survmeth.sklearn import CoxRegression
    >>> X = [[1.0], [4.0], [2.0], [6.0], [3.0], [5.0]]
    >>> y = [[9, 1], [2, 1], [5, 0], [3, 1], [4, 1], [7, 1]]  # time, event
    >>> round(float(CoxRegression().fit(X, y).score(X, y)), 4)  # 10 of 13 pairs
    0.7692
    """

    def __init__(self, ties="efron", ridge=None, strata=None):
        self.ties = ties
        self.ridge = ridge
        self.strata = strata

    def fit(self, X, y):
        """Fits; y says of each row the time and whether it ends in the event.

        Raises ValueError (survmeth.RefusedInput) for what cannot be analysed."""
        columns = self._columns(X, reset=True)
        return self._fitted(y, columns, self._analyse)

    def _analyse(self, data, time, event):
        _require_truth(data[event])
        if not np.any(data[event]):
            raise ValueError("no row of y ends in the event; expected one at least")
        strata = None if self.strata is None else str(self.strata)
        names = [name for name in data if name not in (time, event, strata)]
        return survmeth.cox(data, time=time, event=event, covariates=names, ties=self.ties,
                            event_value="1", strata=strata, ridge=self.ridge)

    def _linear(self, columns):
        return self.result_.predict(columns).arrays["predictions"]["linearPredictor"]

    def predict(self, X):
        check_is_fitted(self)
        return super().predict(X)

    predict.__doc__ = _Regression.predict.__doc__

    def predict_survival(self, X, times):
        """Survival at the times: a row for each row of X, a column for each time; NaN where nothing
        is known."""
        check_is_fitted(self)
        order, back = np.unique(_ascending(times), return_inverse=True)
        predicted = self.result_.predict(self._columns(X, reset=False), at=order.tolist())
        shown = predicted.arrays["survival"]["survival"]
        return np.array(shown).reshape(-1, len(order))[:, back]

    def score(self, X, y):
        """Harrell's concordance of the predictions with y: of the pairs whose order is known, the
        share in which the higher prediction fails first."""
        return concordance_index(y, self.predict(X))


class FineGrayRegression(_Regression):
    """Regression of the subdistribution hazard of one type of event, the others competing.

    Parameters
    ----------
    event : the type of event, as y has it
    censor : what stands in y where no event was seen
    errors : 'estimated-weights' or 'sandwich', as in survmeth.finegray

    Attributes
    ----------
    result_ : the survmeth.Result
    coef_ : array of n_features_in_
    means_ : array of n_features_in_, where predictions are 0
    n_features_in_, feature_names_in_ : as scikit-learn has them

    Examples
    --------
    >>> from survmeth.sklearn import FineGrayRegression
    >>> X = [[1.0], [4.0], [2.0], [6.0], [3.0], [5.0]]
    >>> y = [[9, 1], [2, 1], [5, 0], [3, 2], [4, 1], [7, 2]]  # time, type of event
    >>> FineGrayRegression(event=1).fit(X, y).predict(X).shape
    (6,)
    """

    def __init__(self, event=1, censor=0, errors="estimated-weights"):
        self.event = event
        self.censor = censor
        self.errors = errors

    def fit(self, X, y):
        """Fits; y says of each row the time and the type of event in which it ends.

        Raises ValueError (survmeth.RefusedInput) for what cannot be analysed."""
        columns = self._columns(X, reset=True)
        self.means_ = np.array([np.mean(column) for column in columns.values()])
        return self._fitted(y, columns, self._analyse)

    def _analyse(self, data, time, event):
        terms = " + ".join(f"`{name}`" for name in data if name not in (time, event))
        censored = np.any(data[event] == self.censor)
        return survmeth.finegray(f"Surv(`{time}`, `{event}`) ~ {terms}", data, event=self.event,
                                 censor=self.censor if censored else "none", errors=self.errors)

    def _linear(self, columns):
        return (np.column_stack(list(columns.values())) - self.means_) @ self.coef_

    def predict(self, X):
        check_is_fitted(self)
        return super().predict(X)

    predict.__doc__ = _Regression.predict.__doc__

    def predict_incidence(self, X, times):
        """Cumulative incidence of the event at the times: a row for each row of X, a column for each
        time; 0 before the first event, constant after the last."""
        check_is_fitted(self)
        baseline = self.result_.arrays["baseline"]
        at = np.searchsorted(baseline["time"], _ascending(times), side="right")
        free = np.concatenate([[1.0], 1 - baseline["cumulativeIncidence"]])[at]  # at the means
        return 1 - free[np.newaxis, :] ** np.exp(self.predict(X))[:, np.newaxis]

    def score(self, X, y):
        """Concordance of the predictions with y: of the pairs in which the one has the event while
        the other is without it, the share in which the higher prediction has it. Those with another
        event are without it for ever (Wolbers et al., Epidemiology 20 (2009) 555-561)."""
        time, event = _times_of(y)
        of_interest = event == self.event
        competing = ~of_interest & (event != self.censor)
        beyond = np.where(competing, np.max(time, initial=0) + 1, time)
        return concordance_index(np.column_stack([beyond, of_interest]), self.predict(X))


def concordance_index(y, score):
    """Harrell's concordance: of the pairs whose order is known, the share in which the higher score
    fails first, ties of the score counting half.

    y      as estimators take it: times and events
    score  array of n finite numbers, higher for an earlier event

    Raises ValueError where no pair is comparable. O(n log n).

    >>> from survmeth.sklearn import concordance_index
    >>> concordance_index([[1, 1], [2, 0], [3, 1]], [3.0, 1.0, 2.0])
    1.0
    """
    time, event = _times_of(y)
    _require_truth(event)
    score = check_array(score, ensure_2d=False, dtype=np.float64, input_name="score")
    check_consistent_length(time, score)
    estimate = _core.concordance(time, (event == 1).astype(np.uint32), np.ascontiguousarray(score))
    if np.isnan(estimate):
        raise ValueError("no two rows of y can be compared; expected an event while another row is "
                         "at risk")
    return estimate


def _require_numbers(X):
    """Names the column of a table that an encoder has to go over first."""
    if not (hasattr(X, "columns") and hasattr(X, "dtypes")):
        return
    for name, kind in zip(X.columns, X.dtypes):
        labels = str(kind).lower().startswith(("str", "categor", "enum", "utf8"))
        if labels or str(kind) == "object" and any(isinstance(cell, str) for cell in X[name]):
            raise ValueError(f"the column {str(name)!r} of X holds labels; expected numbers, as an "
                             "encoder gives them")


def _require_truth(event):
    if not np.isin(event, (0, 1)).all():
        raise ValueError("the events of y are other than 0 and 1; expected the columns time and event, "
                         "in this order, or a structured array of event and time")


def _ascending(times):
    return np.atleast_1d(np.asarray(times, dtype=float))


def _times_of(y):
    if getattr(getattr(y, "dtype", None), "names", None):
        return _fields_of(y)
    if isinstance(y, (list, tuple)) or not hasattr(y, "ndim"):
        y = np.asarray(y)
    if y.ndim != 2 or y.shape[1] != 2:
        raise ValueError(f"y has the shape {tuple(y.shape)}; expected the columns time and event, n x "
                         "2, or a structured array of event and time")
    try:
        y = check_array(y, dtype=np.float64, input_name="y", ensure_min_samples=0)
    except ValueError as wrong:
        if "could not convert string" not in str(wrong):
            raise
        raise ValueError("y holds labels; expected times and, of each, a number for its "
                         "event") from None
    return y[:, 0].copy(), y[:, 1].copy()


def _fields_of(y):
    """Of a structured array the time, which is a float or beside a truth value, and the event."""
    kinds = {name: y.dtype[name].kind for name in y.dtype.names}
    truths = [name for name, kind in kinds.items() if kind == "b"]
    floats = [name for name, kind in kinds.items() if kind == "f"]
    if len(kinds) == 2 and set(kinds.values()) <= set("biuf"):
        events = truths or [name for name in kinds if name not in floats]
        times = [name for name in kinds if name not in events]
        if len(events) == len(times) == 1:
            time = np.ascontiguousarray(y[times[0]], dtype=np.float64)
            assert_all_finite(time, input_name="y")
            return time, np.ascontiguousarray(y[events[0]], dtype=np.float64)
    raise ValueError("y has other fields than an event (a truth value, or a whole number beside a "
                     "float) and a time")
