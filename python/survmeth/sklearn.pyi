from typing import Any, Literal, Self

from sklearn.base import BaseEstimator

from survmeth._result import Result

__all__ = ["CoxRegression", "FineGrayRegression", "concordance_index"]

class _Regression(BaseEstimator):
    result_: Result
    coef_: Any
    n_features_in_: int
    feature_names_in_: Any
    def fit(self, X: Any, y: Any) -> Self: ...
    def predict(self, X: Any) -> Any: ...
    def score(self, X: Any, y: Any) -> float: ...

class CoxRegression(_Regression):
    ties: str
    ridge: float | None
    strata: Any
    def __init__(
        self,
        ties: Literal["efron", "breslow", "discrete", "marginal"] = "efron",
        ridge: float | None = None,
        strata: Any = None,
    ) -> None: ...
    def predict_survival(self, X: Any, times: Any) -> Any: ...

class FineGrayRegression(_Regression):
    means_: Any
    event: float
    censor: float
    errors: str
    def __init__(
        self,
        event: float = 1,
        censor: float = 0,
        errors: Literal["estimated-weights", "sandwich"] = "estimated-weights",
    ) -> None: ...
    def predict_incidence(self, X: Any, times: Any) -> Any: ...

def concordance_index(y: Any, score: Any) -> float: ...
