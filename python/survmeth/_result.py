"""What an analysis gives back."""

import collections.abc
import types

from survmeth import _core


class Result:
    """The report of one analysis.

    tables    by id, each a pandas.DataFrame where pandas is installed, else a dict of arrays
    arrays    the same, always as dicts of numpy arrays, which are views into the result; in both,
              tables as long as the data are made where one is touched
    facts     single values by key; tables and facts are attributes too, where no method has the name
    plan      the options that were in force
    notes     conditions that leave the analysis valid: dicts of code, text, names
    methods   how the numbers were computed: dicts of text, reference
    figures   what plot() draws: dicts, as docs/report.md describes them

    Results of an analysis that predicts have the method predict(data, ...), by the columns of new
    data, and save(path), for survmeth predict. Results pickle, with all of these.
    """

    _follow_ups = {}  # by the analysis, its method

    def __init__(self, report):
        self._report = report
        self._facts = None
        self._arrays = _Tables(report, _arrays_of)
        self._tables = _Tables(report, lambda table: _frame_of(_arrays_of(table)))

    @property
    def _fit(self):
        return self._report.fit

    @property
    def analysis(self):
        return self._report.analysis

    @property
    def title(self):
        return self._report.title

    @property
    def plan(self):
        return self._report.plan

    @property
    def notes(self):
        return self._report.notes

    @property
    def methods(self):
        return self._report.methods

    @property
    def figures(self):
        return self._report.figures

    @property
    def facts(self):
        if self._facts is None:
            self._facts = self._report.facts
        return self._facts

    @property
    def arrays(self):
        return self._arrays

    @property
    def tables(self):
        return self._tables

    def summary(self, width=80, digits=5):
        """The report as text, as the command line prints it."""
        return self._report.text(width, digits)

    def to_json(self, figures=False):
        """The report as JSON: the bytes that the command line prints for data of this name."""
        return self._report.json(figures)

    def to_html(self, digits=5):
        """The report as one HTML document without script and network."""
        return self._report.html({}, digits)

    def to_csv(self):
        """By file name, every table as CSV."""
        return self._report.csv()

    def plot(self, figure=None, ax=None, risk_table=True):
        """Draws a figure by matplotlib: the first, or the one of this id; gives back its axes.

        ax  where to draw: one of matplotlib's axes, or a list of as many as the figure has panels
        """
        from survmeth import _plot

        return _plot.draw(_plot.named(self.figures, figure), ax, risk_table)

    def save(self, path):
        """Writes the fit to a file that `survmeth predict` reads; ValueError where none can be."""
        if self.analysis not in self._follow_ups:
            raise ValueError(f"results of {self.analysis} make no predictions that a saved fit "
                             f"would be for; those of {' and '.join(self._follow_ups)} do. A "
                             "pickle keeps any result")
        text = self._report.saved
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)

    def __reduce__(self):
        return _again, (type(self), _kept(self._report))

    def __getattr__(self, name):
        if name == "predict" and self.analysis in self._follow_ups:
            return types.MethodType(self._follow_ups[self.analysis], self)
        if not name.startswith("_"):
            if name in self.arrays:
                return self.tables[name]
            if name in self.facts:
                return self.facts[name]
        raise AttributeError(f"this {type(self).__name__} has no {name!r}; it has the tables "
                             f"{', '.join(self.arrays)} and the facts {', '.join(self.facts)}"
                             if not name.startswith("_") else name)

    def __dir__(self):
        follows = ["predict"] if self.analysis in self._follow_ups else []
        return [*super().__dir__(), *follows, *self.arrays, *self.facts]

    def __repr__(self):
        return f"<survmeth.Result of {self.analysis}: {self.title}>"

    def __str__(self):
        return self.summary()

    def _repr_html_(self):
        import html  # takes milliseconds, which not everyone needs

        # A document of its own: its styles stay inside.
        lines = self.summary(width=0).count("\n")
        return (f'<iframe sandbox style="width:100%;height:{min(60, lines + 12)}em;border:0" '
                f'srcdoc="{html.escape(self.to_html())}"></iframe>')


class _Tables(collections.abc.Mapping):
    """Tables by id; those as long as the data are described where somebody touches one."""

    def __init__(self, report, form):
        self._report, self._form = report, form
        self._first = self._all = None
        self._made = {}

    def _described(self):
        if self._first is None:
            self._first = self._report.described_tables
        return self._first

    def _every(self):
        if self._all is None:
            # One that was given out before stays the one it was.
            self._all = self._report.tables | self._described()
        return self._all

    def __contains__(self, id):
        return (id in self._described()
                or (id in self._report.declared_tables and id in self._every()))

    def __getitem__(self, id):
        if id not in self._made:
            if id not in self:
                raise KeyError(id)
            described = self._described()
            self._made[id] = self._form((described if id in described else self._every())[id])
        return self._made[id]

    def __iter__(self):
        return iter(self._every())

    def __len__(self):
        return len(self._every())

    def __repr__(self):
        return repr(dict(self))

    def _ipython_key_completions_(self):
        return list(self)


class _Kept:
    """A report that was pickled: its parts, without the means to render them anew."""

    def __init__(self, parts):
        self.__dict__.update(parts)

    @property
    def described_tables(self):
        return self.tables

    @property
    def declared_tables(self):
        return list(self.tables)

    @property
    def saved(self):
        if isinstance(self.lasting, ValueError):
            raise self.lasting
        return self.lasting

    @property
    def fit(self):
        return _core.Fit(self.saved)

    def text(self, width, digits):
        return self._rendered("text", (width, digits))

    def html(self, pictures, digits):
        return self._rendered("html", digits)

    def json(self, figures):
        return self._rendered("json", figures)

    def csv(self):
        return dict(self.files)

    def _rendered(self, form, how):
        if how not in self.forms[form]:
            raise ValueError(f"a result that was pickled has its {form} for "
                             f"{' and '.join(map(str, self.forms[form]))} only, not for {how}")
        return self.forms[form][how]


# Of a pickled result: widths and digits of the text.
_TEXTS = [(80, 5), (0, 5)]


def _kept(report):
    if isinstance(report, _Kept):
        return report.__dict__
    names = ["analysis", "title", "digest", "plan", "facts", "tables", "notes", "methods", "figures"]
    parts = {name: getattr(report, name) for name in names}
    for table in parts["tables"].values():
        for column in table["columns"].values():
            if column["kind"] != "label":
                column["values"] = column["values"].copy()  # no view into what is not pickled
    try:
        parts["lasting"] = report.saved
    except ValueError as none:
        parts["lasting"] = none
    parts["files"] = report.csv()
    parts["forms"] = {"text": {how: report.text(*how) for how in _TEXTS},
                      "html": {5: report.html({}, 5)},
                      "json": {figures: report.json(figures) for figures in (False, True)}}
    return parts


def _again(kind, parts):
    return kind(_Kept(parts))


def _arrays_of(table):
    return {key: _array_of(column) for key, column in table["columns"].items()}


def _array_of(column):
    import numpy as np

    if column["kind"] == "label":
        return np.array(column["values"], dtype=object)
    return column["values"]


def _frame_of(table):
    try:
        import pandas
    except ImportError:
        return table
    return pandas.DataFrame(table)
