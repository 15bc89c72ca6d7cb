"""Data of callers as columns of numbers, or of codes into labels."""

import datetime
import numbers
import sys

import numpy as np

from survmeth import _core
from survmeth._errors import RefusedInput

MISSING = 0xFFFFFFFF  # of codes
LARGEST_WHOLE = 2**53


class Table:
    """The columns of a caller's data, looked at only where they are wanted."""

    def __init__(self, names, column, rows):
        self.names = names
        self.rows = rows
        self._column = column

    def columns(self, wanted):
        """Those of the wanted names that there are, each once."""
        return [self._column(name) for name in dict.fromkeys(wanted) if name in self.names]


def table_of(data):
    if hasattr(data, "iloc") and hasattr(data, "columns"):  # a pandas DataFrame
        by_name = {str(name): position for position, name in enumerate(data.columns)}
        if not by_name:
            raise refused("there is no column", "a dict of columns or a DataFrame")
        if len(by_name) < data.shape[1]:
            raise refused("two columns have the same name", "a different name for each")
        return Table(list(by_name), lambda name: column_of(name, data.iloc[:, by_name[name]]),
                     len(data))
    if hasattr(data, "get_columns") and hasattr(data, "height"):  # a polars DataFrame
        return Table(list(data.columns), lambda name: column_of(name, data[name]), data.height)
    if is_arrow(data):
        table = arrow_of(data, True)
        names = table.names
        if len(set(names)) < len(names):
            raise refused("two columns have the same name", "a different name for each")
        return Table(names, lambda name: of_arrow(name, table, names.index(name)), table.rows)
    if getattr(getattr(data, "dtype", None), "names", None) and data.ndim == 1:  # numpy's records
        return table_of_dict({name: data[name] for name in data.dtype.names}, len(data.dtype.names))
    if hasattr(data, "keys") and hasattr(data, "__getitem__") and not hasattr(data, "iloc"):
        return table_of_dict({str(name): data[name] for name in data.keys()}, len(data.keys()))
    raise refused(f"the data are a {type(data).__name__}",
                  "a dict of columns or a DataFrame")


def table_of_dict(columns, count):
    if len(columns) < count:  # 1 and "1"
        raise refused("two columns have the same name", "a different name for each")
    lengths = {}
    if not columns:
        raise refused("there is no column", "a dict of columns or a DataFrame")
    for name, cells in columns.items():
        try:
            if isinstance(cells, (set, frozenset, dict, str, bytes)):
                raise TypeError
            lengths[name] = len(cells)
        except TypeError:
            raise refused(f"the column is a {type(cells).__name__}",
                          "an array or a list of its cells", name) from None
    first = next(iter(lengths), None)
    for name, length in lengths.items():
        if length != lengths[first]:
            raise refused(f'the column "{name}" has {length} cells',
                          f'{lengths[first]}, as "{first}" has')
    return Table(list(columns), lambda name: column_of(name, columns[name]),
                 lengths.get(first, 0))


def is_arrow(data):
    """Whether Arrow's C data interface hands it over; what pandas has is read as pandas' own."""
    return ((hasattr(data, "__arrow_c_stream__") or hasattr(data, "__arrow_c_array__"))
            and not hasattr(data, "iloc"))


def arrow_of(data, is_table):
    try:
        return _core.ArrowTable(data, is_table)
    except ValueError as wrong:  # from who makes the data
        raise refused(str(wrong), "data that can be handed over") from None


def of_arrow(name, table, number):
    try:
        return name, *table.column(number)
    except ValueError as wrong:
        expected = ("numbers that doubles tell apart" if "2**53" in str(wrong)
                    else "numbers or texts")
        raise refused(str(wrong), expected, name) from None


def of_polars(name, series):
    """Categories of polars' own have no order, other than those of an Enum."""
    kind = str(series.dtype)
    if kind.startswith("Categorical"):
        series = series.cast(str)
    if kind == "Object":
        return column_of(name, series.to_list())
    return of_arrow(name, arrow_of(series, False), 0)


def refused(what, expected, column=None, row=None):
    return RefusedInput("data", column, row, what, expected)


def column_of(name, values):
    """(name, numbers) or (name, codes, labels, whether they are categories in their order)."""
    if is_arrow(values) and hasattr(values, "to_physical"):
        return of_polars(name, values)
    if is_arrow(values):
        return of_arrow(name, arrow_of(values, False), 0)
    if hasattr(values, "cat") and hasattr(values, "dtype"):  # pandas categories
        labels = [label_of(label) for label in values.cat.categories]
        codes = np.asarray(values.cat.codes).astype(np.int64)
        return name, as_codes(np.where(codes < 0, MISSING, codes)), labels, True
    if isinstance(values, np.ma.MaskedArray):
        values = np.where(np.ma.getmaskarray(values), None, values.data.astype(object))
    if not isinstance(values, np.ndarray):
        values = array_of(name, values)
    if values.ndim != 1:
        raise refused(f"the column has {values.ndim} dimensions", "one", name)
    kind = values.dtype.kind
    if kind in "iuf":
        require_doubles(name, values)
        return name, np.ascontiguousarray(values, dtype=np.float64)
    if kind in "mM":  # days, of dates since 1970-01-01
        days = values.astype(kind + "8[us]").astype(np.int64) / 86400e6
        return name, np.where(np.isnat(values), np.nan, days)
    if kind in "bUST":
        return labelled(name, values.tolist())
    if kind == "O":
        return column_of_objects(name, values)
    raise refused(f"the column is of the type {values.dtype}", "numbers or texts", name)


def array_of(name, values):
    """Of lists and of what pandas has; texts stay objects of Python."""
    if hasattr(values, "to_numpy"):
        if getattr(values.dtype, "kind", "O") in "iu" and getattr(values, "hasnans", False):
            require_doubles(name, values.dropna().to_numpy())
        if getattr(values.dtype, "kind", "O") in "iuf" and getattr(values, "hasnans", False):
            return values.to_numpy(dtype=np.float64, na_value=np.nan)
        if getattr(values.dtype, "tz", None) is not None and hasattr(values, "dt"):
            return values.dt.tz_convert("UTC").dt.tz_localize(None).to_numpy()
        return values.to_numpy()
    values = list(values)
    made = np.empty(len(values), dtype=object)
    made[:] = values
    return made


def require_doubles(name, values):
    """Whole numbers that doubles do not tell apart would become one another."""
    if values.dtype.kind == "f" or not values.size:
        return
    if max(-int(values.min()), int(values.max())) > LARGEST_WHOLE:
        raise refused("there are whole numbers beyond 2**53", "numbers that doubles tell apart",
                      name)


def is_decimal(value):
    decimal = sys.modules.get("decimal")  # nobody has one without it
    return decimal is not None and isinstance(value, decimal.Decimal)


def is_missing(value):
    if value is None:
        return True
    pandas = sys.modules.get("pandas")
    if pandas is not None and (value is pandas.NA or value is pandas.NaT):
        return True
    return (isinstance(value, (float, np.floating)) or is_decimal(value)) and value != value


def is_number(value):
    return ((isinstance(value, numbers.Real) or is_decimal(value))
            and not isinstance(value, (bool, np.bool_)))


def days_of(value):
    """Of dates since 1970-01-01, those with a time zone in UTC; of durations."""
    if isinstance(value, datetime.timedelta):
        return value / datetime.timedelta(days=1)
    if not isinstance(value, datetime.datetime):
        return float((value - datetime.date(1970, 1, 1)).days)
    zone = None if value.tzinfo is None else datetime.timezone.utc
    return (value - datetime.datetime(1970, 1, 1, tzinfo=zone)) / datetime.timedelta(days=1)


def kind_of(value):
    """How a cell is read, or None."""
    if is_number(value):
        return "numbers"
    if isinstance(value, (str, bool, np.bool_, bytes)):
        return "texts"
    if isinstance(value, datetime.timedelta):
        return "durations"
    return "dates" if isinstance(value, datetime.date) else None


def column_of_objects(name, values):
    """Numbers where all cells are, days of dates or durations, else labels; what is none of these,
    and a mixture, is refused."""
    cells = [None if is_missing(value) else value for value in values.tolist()]
    kinds = {}
    for row, value in enumerate(cells):
        if value is None:
            continue
        kind = kind_of(value)
        if kind is None:
            raise refused(f"{value!r} is neither a number nor a text", "numbers or texts", name,
                          row)
        if kinds.setdefault(kind, row) == row and len(kinds) > 1:
            raise refused(f"{value!r} stands among {next(iter(kinds))}",
                          "all numbers or all texts", name, row)
    kind = next(iter(kinds), "texts")
    if kind == "texts":
        return labelled(name, cells)
    if kind != "numbers":
        return name, np.array([np.nan if value is None else days_of(value) for value in cells])
    if any(isinstance(value, int) and abs(value) > LARGEST_WHOLE for value in cells):
        raise refused("there are whole numbers beyond 2**53", "numbers that doubles tell apart",
                      name)
    return name, np.array([np.nan if value is None else float(value) for value in cells],
                          dtype=np.float64)


def label_of(value):
    if isinstance(value, bytes):
        return value.decode()
    if isinstance(value, (float, np.floating)) and float(value).is_integer():
        return str(int(value))
    return str(value)


def labelled(name, cells):
    seen = {}
    codes = np.fromiter((MISSING if is_missing(value) else seen.setdefault(value, len(seen))
                         for value in cells), dtype=np.uint32, count=len(cells))
    for value in seen:
        try:
            label_of(value).encode()
        except UnicodeError:
            raise refused(f"{value!r} is no text that UTF-8 can hold", "texts", name,
                          cells.index(value)) from None
    return name, codes, [label_of(value) for value in seen], False


def as_codes(codes):
    return np.ascontiguousarray(codes, dtype=np.uint32)


def words_of(missing):
    if missing is None:
        return []
    if isinstance(missing, str) or not hasattr(missing, "__iter__"):
        missing = [missing]
    return [label_of(word) for word in missing]
