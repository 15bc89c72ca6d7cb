"""Survival analysis and comparison of measurement methods.

Each analysis is a function that takes data (a dict of columns, a pandas DataFrame) and the names of
columns, and returns a Result:

    >>> import survmeth
    >>> weeks = [6, 6, 6, 7, 10, 1, 1, 2, 2, 3]
    >>> relapse = [1, 1, 1, 1, 0, 1, 1, 1, 1, 1]
    >>> arm = ["6-MP"] * 5 + ["placebo"] * 5
    >>> fit = survmeth.life({"weeks": weeks, "relapse": relapse, "arm": arm},
    ...                     time="weeks", event="relapse", group="arm")
    >>> fit.arrays["summary"]["median"].tolist()
    [6.0, 2.0]
"""

from survmeth import _functions
from survmeth._core import version as __version__
from survmeth._errors import RefusedInput
from survmeth._result import Result

# Messages and help name them as callers do.
Result.__module__ = RefusedInput.__module__ = __name__

_made = _functions.made(__name__)
globals().update(_made)
__all__ = ["RefusedInput", "Result", "__version__", *_made]
