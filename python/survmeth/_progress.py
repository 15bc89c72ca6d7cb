"""How far a run is, shown by tqdm or told to a function of the caller's."""

import contextlib
import importlib.util
import sys
import time

PATIENCE = 1.0  # seconds after which a notebook shows a bar by itself


def in_notebook():
    ipython = sys.modules.get("IPython")
    shell = ipython.get_ipython() if ipython is not None else None
    return hasattr(shell, "kernel")


def bar_of(what):
    """A bar of tqdm, or None where that is not installed."""
    # In a notebook tqdm draws by ipywidgets, and complains where there are none.
    kind = "auto" if importlib.util.find_spec("ipywidgets") else "std"
    try:
        tqdm = importlib.import_module(f"tqdm.{kind}").tqdm
    except ImportError:
        return None
    return tqdm(total=1.0, desc=what, leave=False, bar_format="{desc}: {percentage:3.0f}%|{bar}|")


class Bar:
    """Is called with the part that is done; the bar appears after so many seconds."""

    def __init__(self, what, patience):
        self.what, self.after = what, time.monotonic() + patience
        self.bar = None

    def __call__(self, done):
        if self.what is not None and time.monotonic() >= self.after:
            self.bar, self.what = bar_of(self.what), None
        if self.bar is not None:
            self.bar.update(done - self.bar.n)

    def close(self):
        if self.bar is not None:
            self.bar.close()


@contextlib.contextmanager
def telling(progress, what):
    """The function that a run calls with the part that is done, or None.

    progress  a function, True: a bar, None: a bar in notebooks where the run takes long, False
    """
    if callable(progress):
        yield progress
        return
    if not (progress or (progress is None and in_notebook())):
        yield None
        return
    bar = Bar(what, 0 if progress else PATIENCE)
    try:
        yield bar
    finally:
        bar.close()
