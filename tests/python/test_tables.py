"""Tables of polars and pyarrow are read as pandas' are."""

import datetime

import pandas
import polars
import pyarrow
import pytest

import survmeth
from cases import cases, columns_of
from test_data import ARM, EVENT, EXPECTED, TIME, life, refused

COLUMNS = {"t": TIME, "e": EVENT, "g": ARM}


class Stream:
    """Something else that has Arrow's interface."""

    def __init__(self, table):
        self.table = table

    def __arrow_c_stream__(self, requested_schema=None):
        return self.table.__arrow_c_stream__(requested_schema)


TABLES = {"polars": polars.DataFrame, "pyarrow": pyarrow.table,
          "stream": lambda columns: Stream(pyarrow.table(columns))}


def of(columns, table):
    return survmeth.life(TABLES[table](columns), time="t", event="e", group="g")


@pytest.mark.parametrize("table", TABLES)
@pytest.mark.parametrize("case", cases(), ids=lambda case: case.name)
def test_tables_give_the_bytes_of_the_command_line(case, table):
    assert case.call(TABLES[table](columns_of(case.path))).to_json() == case.printed


@pytest.mark.parametrize("kind", [polars.Int8, polars.UInt64, polars.Float32, polars.String,
                                  polars.Decimal(10, 2)])
def test_polars_numbers_of_any_type_are_the_same_numbers(kind):
    frame = polars.DataFrame(COLUMNS).with_columns(polars.col("t").cast(kind))
    if kind == polars.String:
        frame = frame.with_columns(polars.col("t").str.replace(".0", "", literal=True))
    assert survmeth.life(frame, time="t", event="e", group="g").to_json() == EXPECTED


@pytest.mark.parametrize("kind", [pyarrow.int8(), pyarrow.uint64(), pyarrow.float32(),
                                  pyarrow.string(), pyarrow.large_string(),
                                  pyarrow.decimal128(12, 2)])
def test_arrow_numbers_of_any_type_are_the_same_numbers(kind):
    table = pyarrow.table(COLUMNS)
    if pyarrow.types.is_decimal(kind):
        column = pyarrow.array(TIME, pyarrow.int32()).cast(kind)
    else:
        column = pyarrow.array(TIME).cast(kind)
    table = table.set_column(0, "t", column)
    assert survmeth.life(table, time="t", event="e", group="g").to_json() == EXPECTED


def test_categories_keep_their_order():
    order = ["b", "unused", "a"]
    frames = [polars.DataFrame(COLUMNS, schema_overrides={"g": polars.Enum(order)}),
              pyarrow.table({**COLUMNS, "g": pyarrow.DictionaryArray.from_arrays(
                  [order.index(arm) for arm in ARM], order)}),
              pyarrow.Table.from_pandas(pandas.DataFrame(
                  {**COLUMNS, "g": pandas.Categorical(ARM, categories=order)}))]
    for frame in frames:
        fit = survmeth.life(frame, time="t", event="e", group="g")
        assert fit.arrays["summary"]["group"].tolist() == ["b", "a"]


def test_categoricals_of_polars_are_labels():
    frame = polars.DataFrame(COLUMNS, schema_overrides={"g": polars.Categorical})
    assert survmeth.life(frame, time="t", event="e", group="g").to_json() == EXPECTED


def test_chunks_are_one_column():
    half = pyarrow.table({**COLUMNS, "g": pyarrow.array(ARM).dictionary_encode()})
    other = pyarrow.table({**COLUMNS, "g": pyarrow.array(ARM[::-1]).dictionary_encode()})
    both = pyarrow.concat_tables([half, other])
    assert both.column("g").num_chunks == 2
    expected = survmeth.life({"t": TIME * 2, "e": EVENT * 2, "g": ARM + ARM[::-1]},
                             time="t", event="e", group="g")
    fit = survmeth.life(both, time="t", event="e", group="g")
    assert sorted(fit.arrays["summary"]["n"]) == sorted(expected.arrays["summary"]["n"]) == [6, 6]
    assert fit.arrays["tests"]["pValue"] == pytest.approx(expected.arrays["tests"]["pValue"],
                                                          rel=1e-12)  # groups in another order


@pytest.mark.parametrize("table", TABLES)
@pytest.mark.parametrize("column, cells", [
    ("t", [None, *TIME[1:]]), ("g", [None, *ARM[1:]]), ("e", [None, *EVENT[1:]])])
def test_a_null_leaves_its_row_out(table, column, cells):
    fit = of({**COLUMNS, column: cells}, table)
    assert fit.notes[0]["text"] == f'1 of 6 rows left out: missing in "{column}" (1)'


@pytest.mark.parametrize("table", TABLES)
def test_days_are_what_dates_count(table):
    dates = [datetime.date(1970, 1, 1) + datetime.timedelta(days=day) for day in TIME]
    assert of({**COLUMNS, "t": dates}, table).to_json() == EXPECTED


@pytest.mark.parametrize("table", TABLES)
def test_truth_values_are_events(table):
    assert of({**COLUMNS, "e": [bool(event) for event in EVENT]}, table).facts["eventLabels"] \
        == "True"


def test_whole_numbers_that_doubles_do_not_tell_apart_are_refused():
    for frame in (polars.DataFrame, pyarrow.table):
        for cells in ([2**60 + 1, 1, 2, 3, 4, 5], [2**60 + 1, None, 2, 3, 4, 5]):
            error = refused(survmeth.life, frame({**COLUMNS, "t": cells}), time="t", event="e")
            assert error.what == "there are whole numbers beyond 2**53"


def test_two_columns_of_one_name_are_refused():
    table = pyarrow.Table.from_arrays([pyarrow.array(TIME)] * 2, ["t", "t"])
    assert refused(survmeth.life, table, time="t", event="e").what \
        == "two columns have the same name"
