"""Arrow's C data interface is read by the package itself: no pyarrow, no copy of what need not be
copied, nothing left behind."""

import datetime
import decimal
import gc
import subprocess
import sys

import numpy as np
import polars
import pyarrow
import pyarrow.compute
import pytest

import survmeth
from survmeth import _core, _data
from test_data import ARM, EVENT, EXPECTED, TIME, refused


class Stream:
    """Has nothing but the interface, as duckdb's relations."""

    def __init__(self, data):
        self.data = data

    def __arrow_c_stream__(self, requested_schema=None):
        return self.data.__arrow_c_stream__(requested_schema)


class Array:
    """Has the other half of the interface, as a record batch."""

    def __init__(self, data):
        self.data = data

    def __arrow_c_array__(self, requested_schema=None):
        return self.data.__arrow_c_array__(requested_schema)


COLUMNS = {"t": TIME, "e": EVENT, "g": ARM}


def life(data):
    return survmeth.life(data, time="t", event="e", group="g")


def column(array):
    """What the core makes of one column: the parts behind its name."""
    return _data.column_of("c", Stream(pyarrow.chunked_array(array))
                           if isinstance(array, list) else Array(array))[1:]


def numbers(array):
    cells = column(array)
    assert len(cells) == 1 and cells[0].dtype == np.float64
    return cells[0].tolist()


def labels(array):
    codes, names, _ = column(array)
    return [None if code == _data.MISSING else names[code] for code in codes.tolist()]


def test_both_halves_of_the_interface_give_what_a_dict_gives():
    assert life(Stream(pyarrow.table(COLUMNS))).to_json() == EXPECTED
    assert life(Array(pyarrow.record_batch(COLUMNS))).to_json() == EXPECTED
    assert life(pyarrow.record_batch(COLUMNS)).to_json() == EXPECTED
    assert life(Stream(polars.DataFrame(COLUMNS))).to_json() == EXPECTED


def test_columns_of_a_dict_may_have_the_interface():
    columns = {"t": pyarrow.array(TIME), "e": polars.Series(EVENT), "g": pyarrow.chunked_array(
        [ARM[:2], ARM[2:]])}
    assert life(columns).to_json() == EXPECTED


def test_polars_is_read_without_pyarrow():
    program = """
import sys
sys.modules["pyarrow"] = None
import polars, survmeth
from test_data import ARM, EVENT, EXPECTED, TIME
frame = polars.DataFrame({"t": TIME, "e": EVENT, "g": ARM},
                         schema_overrides={"g": polars.Enum(["a", "b"])})
for made in (frame, frame.cast({"g": polars.String}), frame.cast({"t": polars.Float64})):
    assert survmeth.life(made, time="t", event="e", group="g").to_json() == EXPECTED
"""
    path = "import sys; sys.path[:0] = " + repr(sys.path) + "\n"
    run = subprocess.run([sys.executable, "-c", path + program], capture_output=True, text=True,
                         check=False)
    assert (run.returncode, run.stderr) == (0, "")


@pytest.mark.parametrize("kind", [pyarrow.int8(), pyarrow.uint8(), pyarrow.int16(),
                                  pyarrow.uint16(), pyarrow.int32(), pyarrow.uint32(),
                                  pyarrow.int64(), pyarrow.uint64(), pyarrow.float16(),
                                  pyarrow.float32(), pyarrow.float64()])
def test_numbers(kind):
    cells = np.array([1, 3, 0, 100]).astype(kind.to_pandas_dtype())
    assert numbers(pyarrow.array(cells, kind)) == [1, 3, 0, 100]
    missing = pyarrow.array([5, None, 7], kind) if kind != pyarrow.float16() else \
        pyarrow.array([np.float16(5), None, np.float16(7)])
    assert str(numbers(missing)) == "[5.0, nan, 7.0]"


def test_halves():
    """By hand from the layout: signs, the smallest, the largest, infinities."""
    cells = np.array([-1.5, 2.0**-24, 65504, np.inf, -np.inf, 2.0**-14], dtype=np.float16)
    assert numbers(pyarrow.array(cells)) == [-1.5, 2.0**-24, 65504, np.inf, -np.inf, 2.0**-14]


@pytest.mark.parametrize("text", ["0.10", "-0.10", "12345678901234567890.12", "-99999999.99", "0"])
@pytest.mark.parametrize("kind", [pyarrow.decimal128(38, 2), pyarrow.decimal256(60, 2)])
def test_decimals_are_the_nearest_doubles(text, kind):
    assert numbers(pyarrow.array([decimal.Decimal(text)], kind)) == [float(text)]


def test_days_of_dates_and_durations():
    day = datetime.datetime(1970, 1, 3, 12, tzinfo=datetime.timezone.utc)
    for unit in ("s", "ms", "us", "ns"):
        assert numbers(pyarrow.array([day], pyarrow.timestamp(unit, "UTC"))) == [2.5]
        assert numbers(pyarrow.array([datetime.timedelta(hours=-6)],
                                     pyarrow.duration(unit))) == [-0.25]
    assert numbers(pyarrow.array([day.date()], pyarrow.date32())) == [2]
    assert numbers(pyarrow.array([day.date()], pyarrow.date64())) == [2]


@pytest.mark.parametrize("kind", [pyarrow.string(), pyarrow.large_string(), pyarrow.string_view(),
                                  pyarrow.binary(), pyarrow.large_binary()])
def test_texts(kind):
    texts = ["a", "", None, "longer than twelve bytes", "a", "Größe"]
    cells = [text.encode() if text is not None and "binary" in str(kind) else text
             for text in texts]
    assert labels(pyarrow.array(cells, kind)) == texts
    assert labels(pyarrow.array(["", ""], pyarrow.string())) == ["", ""]


def test_truth_values_and_nothing():
    assert labels(pyarrow.array([True, None, False, True])) == ["True", None, "False", "True"]
    assert labels(pyarrow.nulls(2)) == [None, None]


def test_slices_and_chunks():
    for cells in ([1.5, None, 3.5, 4.5, 5.5], ["a", None, "b", "c", "a"],
                  [True, None, False, True, True], [1, None, 3, 4, 5]):
        whole = pyarrow.array(cells)
        read = numbers if isinstance(cells[0], (int, float)) and cells[0] is not True else labels
        expected = read(whole)
        assert str(read(whole.slice(1, 3))) == str(expected[1:4])
        assert str(read([whole.slice(0, 2), whole.slice(2)])) == str(expected)
    batch = pyarrow.record_batch(COLUMNS).slice(2, 3)
    rows = {name: cells[2:5] for name, cells in COLUMNS.items()}
    assert life(Array(batch)).to_json() == life(rows).to_json()


def test_a_missing_struct_is_a_row_of_missing_cells():
    rows = pyarrow.array([{"t": 1.0, "e": 1}, None, {"t": 2.0, "e": 0}, {"t": 3.0, "e": 1}])
    fit = survmeth.life(Array(rows.slice(1)), time="t", event="e")
    assert fit.notes[0]["text"] == '1 of 3 rows left out: missing in "t" (1), "e" (1)'


def test_dictionaries_are_factors_in_their_order():
    array = pyarrow.DictionaryArray.from_arrays(pyarrow.array([2, None, 0, 2], pyarrow.int8()),
                                                ["low", "middle", "high"])
    codes, names, in_order = column(array)
    assert (codes.tolist(), names, in_order) == ([2, _data.MISSING, 0, 2],
                                                 ["low", "middle", "high"], True)
    assert column(pyarrow.DictionaryArray.from_arrays([1, 0], [5, 10]))[1] == ["5", "10"]


def test_chunks_may_have_dictionaries_of_their_own():
    first = pyarrow.DictionaryArray.from_arrays([1, 0], ["b", "a"])
    other = pyarrow.DictionaryArray.from_arrays([0, 1, 2], ["c", "a", "b"])
    codes, names, _ = column([first, other])
    assert names == ["b", "a", "c"]
    assert [names[code] for code in codes] == ["a", "b", "c", "a", "b"]


def test_an_index_beyond_the_dictionary_is_refused():
    array = pyarrow.DictionaryArray.from_arrays([0, 7], ["a"], safe=False)
    assert refused(column, array).what == "an index of the dictionary is out of range"


@pytest.mark.parametrize("array, what", [
    (pyarrow.array([[1], [2]]), 'the column is of Arrow\'s type "+l"'),
    (pyarrow.array([{"a": 1}]), 'the column is of Arrow\'s type "+s"'),
    (pyarrow.array([datetime.time(1)]), 'the column is of Arrow\'s type "ttu"'),
    (pyarrow.array([2**53 + 1]), "there are whole numbers beyond 2**53"),
    (pyarrow.array([-2**53 - 1]), "there are whole numbers beyond 2**53"),
    (pyarrow.array([2**64 - 1], pyarrow.uint64()), "there are whole numbers beyond 2**53"),
])
def test_what_is_refused(array, what):
    error = refused(column, array)
    assert (error.what, error.column, error.argument) == (what, "c", "data")
    assert numbers(pyarrow.array([2**53, -2**53])) == [2**53, -2**53]


def test_what_goes_wrong_where_the_data_come_from_is_said():
    def batches():
        yield pyarrow.record_batch(COLUMNS)
        raise OSError("the disk is gone")

    reader = pyarrow.RecordBatchReader.from_batches(pyarrow.record_batch(COLUMNS).schema, batches())
    assert "the disk is gone" in refused(life, Stream(reader)).what


def test_doubles_are_not_copied():
    array = pyarrow.array(np.arange(1000.0))
    made = numbers_of(array)
    assert made.ctypes.data == array.buffers()[1].address
    assert numbers_of(array.slice(10)).ctypes.data == array.buffers()[1].address + 80
    with_missing = pyarrow.array([1.0, None])
    assert numbers_of(with_missing).ctypes.data != with_missing.buffers()[1].address


def numbers_of(array):
    return column(array)[0]


def test_a_view_keeps_its_memory_and_the_last_one_frees_it():
    gc.collect()
    before = pyarrow.total_allocated_bytes()
    array = pyarrow.compute.add(pyarrow.array(np.arange(100_000.0)), 1.0)
    view = numbers_of(array)
    del array
    gc.collect()
    assert view[:3].tolist() == [1, 2, 3] and pyarrow.total_allocated_bytes() - before >= 800_000
    del view
    gc.collect()
    assert pyarrow.total_allocated_bytes() == before


def test_no_table_is_left_behind():
    gc.collect()
    before = pyarrow.total_allocated_bytes()
    for _ in range(20):
        table = pyarrow.table({"t": pyarrow.compute.add(pyarrow.array(np.arange(1000.0)), 1.0),
                               "e": np.arange(1000) % 2})
        survmeth.life(Stream(table), time="t", event="e").arrays
        refused(survmeth.life, Stream(table), time="x", event="e")
        _core.ArrowTable(Stream(table), True)
    del table
    gc.collect()
    assert pyarrow.total_allocated_bytes() == before


def test_an_empty_table_is_refused_in_words():
    for table in (pyarrow.table({"t": pyarrow.array([], pyarrow.float64()), "e": []}),
                  pyarrow.table({"t": pyarrow.chunked_array([], pyarrow.float64()), "e": []})):
        assert "no row" in str(refused(survmeth.life, Stream(table), time="t", event="e"))
