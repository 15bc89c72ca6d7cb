"""What columns may hold, and what is refused in which words."""

import datetime
import decimal
import fractions

import numpy as np
import pandas
import pytest

import survmeth

TIME = [5, 3, 8, 2, 9, 4]
EVENT = [1, 0, 1, 1, 0, 1]
ARM = ["b", "a", "b", "a", "a", "b"]


def life(**changes):
    columns = {"t": TIME, "e": EVENT, "g": ARM} | changes
    return survmeth.life(columns, time="t", event="e", group="g")


def refused(function, *arguments, **named):
    with pytest.raises(survmeth.RefusedInput) as caught:
        function(*arguments, **named)
    return caught.value


EXPECTED = life().to_json()


@pytest.mark.parametrize("time", [
    np.array(TIME, dtype=np.int16), np.array(TIME, dtype=np.float32), tuple(TIME),
    np.array(TIME, dtype=np.float64)[::-1][::-1], np.array([*zip(TIME, EVENT)])[:, 0],
    [str(value) for value in TIME], pandas.Series(TIME, dtype="Int64"),
    [np.float64(value) for value in TIME]])
def test_numbers_of_any_type_and_layout_are_the_same_numbers(time):
    assert life(t=time).to_json() == EXPECTED


@pytest.mark.parametrize("group", [np.array(ARM), pandas.Series(ARM, dtype="string"),
                                   pandas.Series(ARM, dtype="object"), np.array(ARM, dtype="S1")])
def test_texts_of_any_type_are_the_same_labels(group):
    assert life(g=group).to_json() == EXPECTED


def test_truth_values_are_events():
    truths = np.array(EVENT, dtype=bool)
    assert life(e=truths).arrays["tests"]["pValue"].tolist() \
        == life().arrays["tests"]["pValue"].tolist()
    assert life(e=truths).facts["eventLabels"] == "True"
    named = survmeth.life({"t": TIME, "e": truths}, time="t", event="e", event_value=True)
    assert named.facts["eventLabels"] == "True"


def test_categories_keep_their_order_and_those_without_rows_are_dropped():
    groups = pandas.Series(pandas.Categorical(ARM, categories=["b", "unused", "a"]))
    assert life(g=groups).arrays["summary"]["group"].tolist() == ["b", "a"]
    assert life(g=ARM).arrays["summary"]["group"].tolist() == ["a", "b"]


@pytest.mark.parametrize("missing", [None, float("nan"), np.nan, pandas.NA, pandas.NaT, ""])
def test_a_missing_label_leaves_its_row_out(missing):
    fit = life(g=[missing, *ARM[1:]])
    assert [note["code"] for note in fit.notes][0] == "rowsLeftOut"
    assert fit.notes[0]["text"] == '1 of 6 rows left out: missing in "g" (1)'


@pytest.mark.parametrize("time", [
    [None, *TIME[1:]], np.array([np.nan, *TIME[1:]]), pandas.Series([None, *TIME[1:]], dtype="Int64"),
    np.ma.masked_equal(TIME, 5)])
def test_a_missing_number_leaves_its_row_out(time):
    assert life(t=time).notes[0]["text"] == '1 of 6 rows left out: missing in "t" (1)'


def test_texts_that_look_missing_are_labels_unless_they_are_named():
    arm = ["NA", "a", "NA", "a", "a", "NA"]
    assert life(g=arm).arrays["summary"]["group"].tolist() == ["NA", "a"]
    data = {"t": TIME, "e": EVENT, "g": ["NA", *ARM[1:]]}
    fit = survmeth.life(data, time="t", event="e", group="g", missing=["NA", 9])
    assert fit.notes[0]["text"] == '2 of 6 rows left out: missing in "t" (1), "g" (1)'


def test_days_are_what_dates_and_durations_count():
    days = np.array(TIME, dtype="m8[D]")
    assert life(t=days).to_json() == EXPECTED
    assert life(t=pandas.Series(days)).to_json() == EXPECTED
    dates = np.array(["1970-01-02", "NaT"], dtype="M8[D]")
    assert survmeth._data.column_of("d", dates)[1].tolist()[0] == 1


@pytest.mark.parametrize("ids", [np.array([2**60, 2**60 + 1] * 3), [2**60, 2**60 + 1] * 3])
def test_whole_numbers_that_doubles_do_not_tell_apart_are_refused(ids):
    assert str(refused(life, g=ids)) == (
        'data, column "g": there are whole numbers beyond 2**53; expected numbers that doubles tell '
        "apart")


def test_only_the_columns_that_are_named_are_looked_at():
    assert life(other=[object()] * 6).to_json() == EXPECTED


def test_no_column_of_that_name():
    error = refused(survmeth.life, {"t": TIME, "e": EVENT}, time="tt", event="e")
    assert str(error) == \
        'time, column "tt": there is no such column; expected one of "t", "e"'
    assert (error.argument, error.column, error.index) == ("time", "tt", None)


def test_a_number_out_of_range():
    error = refused(life, t=[5, 3, -8, 2, 9, 4])
    assert str(error) == \
        'time, column "t", row 3: "-8" is out of range; expected numbers not below 0'
    assert (error.argument, error.column, error.index) == ("time", "t", 2)
    assert (error.what, error.expected) == ('"-8" is out of range', "numbers not below 0")


def test_the_row_is_the_callers_also_where_rows_before_it_are_left_out():
    error = refused(life, e=[None, 0, 1, 7, 0, 1])
    assert error.index == 3
    assert str(error).startswith('event, column "e", row 4: "7" is neither yes nor no; expected')
    assert str(error).endswith("or what is an event in event_value")


def test_cells_that_are_neither_numbers_nor_texts():
    error = refused(life, t=[5, 3, object, 2, 9, 4])
    assert str(error) == ('data, column "t", row 3: <class \'object\'> is neither a number nor a '
                          "text; expected numbers or texts")


def test_numbers_among_texts():
    error = refused(life, g=["a", "a", 3, "b", "b", "b"])
    assert str(error) == \
        'data, column "g", row 3: 3 stands among texts; expected all numbers or all texts'


def test_categories_are_no_times():
    error = refused(life, t=pandas.Series(pandas.Categorical(TIME)))
    assert str(error) == \
        'time, column "t": the column holds categories; expected numbers not below 0'


def test_columns_of_different_lengths():
    error = refused(life, e=[1, 0])
    assert str(error) == 'data: the column "e" has 2 cells; expected 6, as "t" has'


@pytest.mark.parametrize("cells, kind", [
    (3, "int"), (np.array(3.0), "ndarray"), (None, "NoneType"), (iter(TIME), "list_iterator"),
    ({1, 2, 3, 4, 5, 6}, "set"), (dict(enumerate(TIME)), "dict"), ("abcdef", "str")])
def test_what_has_no_cells_in_an_order_is_no_column(cells, kind):
    assert str(refused(life, t=cells)) == \
        f'data, column "t": the column is a {kind}; expected an array or a list of its cells'


@pytest.mark.parametrize("time", [
    [datetime.date(1970, 1, 1 + day) for day in TIME],
    [datetime.datetime(1970, 1, 1 + day) for day in TIME],
    [pandas.Timestamp(1970, 1, 1 + day, tz="UTC") for day in TIME],
    pandas.to_datetime([f"1970-01-{1 + day:02}T01:00" for day in TIME]).to_series()
    .dt.tz_localize("+01:00"),
    [datetime.timedelta(days=day) for day in TIME],
    [decimal.Decimal(day) for day in TIME], [fractions.Fraction(day) for day in TIME],
    np.array(TIME, dtype=">f8"), np.array(TIME, dtype=">i4"), np.repeat(TIME, 2)[::2],
    pandas.arrays.SparseArray(TIME), range(2, 8)])
def test_dates_durations_decimals_and_foreign_layouts(time):
    expected = life(t=list(time)) if isinstance(time, range) else life()
    assert life(t=time).to_json() == expected.to_json()


def test_missing_dates_and_mixtures():
    times = [pandas.NaT, *(datetime.date(1970, 1, 1 + day) for day in TIME[1:])]
    assert life(t=times).notes[0]["text"] == '1 of 6 rows left out: missing in "t" (1)'
    error = refused(life, t=[3, datetime.date(1970, 1, 2), 3, 3, 3, 3])
    assert (error.what, error.index) == ("datetime.date(1970, 1, 2) stands among numbers", 1)


def test_whole_numbers_beside_missing_ones_are_looked_at_too():
    times = pandas.Series([2**60 + 1, None, 8, 2, 9, 4], dtype="Int64")
    assert refused(life, t=times).what == "there are whole numbers beyond 2**53"


@pytest.mark.parametrize("bad", [b"\xff", "\ud800"])
def test_what_is_no_text_is_refused(bad):
    error = refused(life, g=["a", bad, "a", "a", "a", "a"])
    assert (error.what, error.column, error.index) == (
        f"{bad!r} is no text that UTF-8 can hold", "g", 1)


def test_columns_named_by_numbers_and_tuples():
    by_number = pandas.DataFrame({0: TIME, 1: EVENT, 2: ARM})
    fit = survmeth.life(by_number, time=0, event=1, group=[2])
    assert fit.tables["summary"].equals(life().tables["summary"])
    nested = pandas.DataFrame({("a", "t"): TIME, ("a", "e"): EVENT})
    assert nested.columns.nlevels == 2
    fit = survmeth.life(nested, time=("a", "t"), event=("a", "e"))
    assert fit.plan["time"] == "('a', 't')"


def test_structured_arrays_are_tables():
    rows = np.array([*zip(TIME, EVENT, ARM)], dtype=[("t", float), ("e", int), ("g", "U1")])
    assert survmeth.life(rows, time="t", event="e", group="g").to_json() == EXPECTED


@pytest.mark.parametrize("data", [{}, pandas.DataFrame()])
def test_data_without_columns(data):
    assert str(refused(survmeth.life, data, time="t", event="e")) == \
        "data: there is no column; expected a dict of columns or a DataFrame"


def test_data_without_rows():
    empty = pandas.DataFrame({"t": TIME, "e": EVENT}).iloc[:0]
    assert str(refused(survmeth.life, empty, time="t", event="e")).startswith(
        "there are no rows of data; expected at least")


def test_a_single_column_is_no_table():
    assert refused(survmeth.life, pandas.Series(TIME), time="t", event="e").what \
        == "the data are a Series"


def test_two_keys_of_one_name():
    error = refused(survmeth.life, {"t": TIME, "e": EVENT, 1: TIME, "1": EVENT}, time="t", event="e")
    assert error.what == "two columns have the same name"


def test_columns_of_two_dimensions():
    error = refused(life, t=np.ones((6, 2)))
    assert str(error) == 'data, column "t": the column has 2 dimensions; expected one'


def test_data_that_are_no_table():
    error = refused(survmeth.life, 3, time="t", event="e")
    assert str(error) == "data: the data are a int; expected a dict of columns or a DataFrame"


def test_two_columns_of_one_name():
    data = pandas.DataFrame([[1, 1, 2]], columns=["t", "e", "t"])
    error = refused(survmeth.life, data, time="t", event="e")
    assert str(error) == "data: two columns have the same name; expected a different name for each"


@pytest.mark.parametrize("wrong, sentence", [
    ({"alpha": 2}, 'alpha: "2" is out of range; expected a number between 0 and 1'),
    ({"alpha": "a lot"}, 'alpha: "a lot" is not a number; expected a number between 0 and 1'),
    ({"alpha": datetime.date(2020, 1, 1)},
     "alpha: the value is of the type date; expected numbers, texts or True and False"),
    ({"conf": "cubic"}, 'conf: there is no "cubic"; expected one of "plain", "logit", "log", '
                        '"arcsine", "log-log"'),
    ({"table": "actuarial"}, "table: actuarial needs intervals; expected width or bounds"),
    ({"bounds": [3, 1]}, 'bounds: "1" is out of order; expected ascending numbers from 0'),
    ({"weight": ""}, "weight: the value is empty; expected the name of a column"),
    ({"weight": pandas.Series(TIME)},
     "weight: the value is a Series; expected the name of a column of data"),
    ({"group": pandas.DataFrame({"e": EVENT})},
     "group: the value is a DataFrame; expected names of columns of data"),
    ({"at": []}, "at: the list is empty; expected numbers"),
    ({"event_value": []}, "event_value: the list is empty; expected labels"),
    ({"tests": []}, "tests: the list is empty; expected texts"),
    ({"event": None}, "event: is missing; expected the name of a column"),
    ({"tau": np.array([4.0])}, "tau: the value is of another type; expected a number"),
])
def test_arguments_out_of_range(wrong, sentence):
    data = {"t": TIME, "e": EVENT}
    arguments = {"time": "t", "event": "e"} | wrong
    assert str(refused(survmeth.life, data, **arguments)) == sentence


def test_numpys_truth_values_are_truth_values():
    data = {"t": TIME, "e": np.array(EVENT, dtype=bool), "x": [2.0, 1.0, 2.5, 4.0, 3.0, 3.5]}
    assert "baseline" in survmeth.cox("Surv(t, e) ~ x", data, baseline=np.True_).arrays
    assert "baseline" not in survmeth.cox("Surv(t, e) ~ x", data, baseline=np.False_).arrays
    for value in (np.False_, [np.False_], np.array([False])):
        fit = survmeth.life(data, time="t", event="e", event_value=value)
        assert fit.facts["eventLabels"] == "False"


def test_a_round_number_of_permutations_is_a_number():
    data = {"t": TIME, "e": EVENT, "g": ARM}
    made = [survmeth.life(data, time="t", event="e", group="g", permutations=number).to_json()
            for number in (100_000, np.int64(100_000), "100000")]
    assert len(set(made)) == 1


def test_an_array_without_dimensions_is_a_number():
    data = {"t": TIME, "e": EVENT}
    assert survmeth.life(data, time="t", event="e", tau=np.array(4.0)).to_json() \
        == survmeth.life(data, time="t", event="e", tau=4).to_json()


def test_a_formula_stands_before_the_data_or_by_its_name():
    data = {"t": TIME, "e": EVENT, "x": [2.0, 1.0, 2.5, 4.0, 3.0, 3.5]}
    fit = survmeth.cox("Surv(t, e) ~ x", data)
    assert fit.plan["formula"] == "Surv(t, e) ~ x"
    assert survmeth.cox(data, formula="Surv(t, e) ~ x").to_json() == fit.to_json()
    assert refused(survmeth.cox, "Surv(t, e) ~ x +", data).argument == "formula"
    with pytest.raises(TypeError, match=r"cox\(\) takes a formula and data without a name; give"):
        survmeth.cox(data, "Surv(t, e) ~ x")
    with pytest.raises(TypeError, match=r"cox\(\) missing a required argument: 'data'"):
        survmeth.cox("Surv(t, e) ~ x")


def test_the_name_of_a_file_is_no_data():
    error = refused(survmeth.life, "lung.csv", time="t", event="e")
    assert str(error) == "data: the data are a str; expected a dict of columns or a DataFrame"


def test_names_that_are_words_of_python_end_in_an_underscore():
    data = {"m": [1, 2, 3, 4, 5, 6], "y": [0, 0, 1, 0, 1, 1]}
    fit = survmeth.roc(data, class_="y", marker="m")
    assert fit.plan["class"] == "y"
    assert str(refused(survmeth.roc, data, class_="z", marker="m")).startswith(
        'class_, column "z": ')


def test_round_numbers_are_labels_with_all_their_digits():
    data = {"t": [1, 2, 3, 4], "e": [1, 1, 1, 0], "g": [100000, 200000, 100000, 200000]}
    fit = survmeth.life(data, time="t", event="e", group="g")
    assert fit.arrays["summary"]["group"].tolist() == ["100000", "200000"]


def test_an_argument_that_there_is_not():
    with pytest.raises(TypeError, match="got an unexpected keyword argument 'groups'"):
        survmeth.life({}, time="t", event="e", groups="g")
    with pytest.raises(TypeError, match=r"life\(\) got .*; did you mean 'group'\?"):
        survmeth.life({}, time="t", event="e", grup="g")
    with pytest.raises(TypeError, match="missing a required argument: 'group'"):
        survmeth.gray({}, time="t", status="s")
    with pytest.raises(TypeError, match=r"life\(\) multiple values for argument 'data'"):
        survmeth.life({}, data={}, time="t", event="e")
    with pytest.raises(TypeError, match=r"life\(\) takes a formula and data without a name; "
                                        "give the rest by name, as alpha=0.1"):
        survmeth.life({}, {}, time="t", event="e")
    with pytest.raises(TypeError, match=r"life\(\) got .*'evnt'; did you mean 'event'\?"):
        survmeth.life({}, time="t", evnt="e")  # as many arguments as there are


def test_a_condition_chooses_rows():
    chosen = survmeth.life({"t": TIME, "e": EVENT, "g": ARM}, time="t", event="e", where="g == 'a'")
    rows = [i for i, arm in enumerate(ARM) if arm == "a"]
    alone = survmeth.life({"t": [TIME[i] for i in rows], "e": [EVENT[i] for i in rows]},
                          time="t", event="e")
    assert chosen.tables["summary"].equals(alone.tables["summary"])
    assert chosen.plan["where"] == "g == 'a'"
    assert chosen.notes[0]["text"] == "3 of 6 rows meet the condition g == 'a'"


@pytest.mark.parametrize("where, sentence", [
    ("t >", "where: the end of the text does not fit here"),
    ("t > 100", "where: data: no row of 6 meets the condition t > 100; expected a condition that "
                "some rows meet"),
    ("age > 3", 'where, column "age": there is no such column; expected one of "e", "g", "t"'),
])
def test_a_condition_that_cannot_be_used(where, sentence):
    error = refused(survmeth.life, {"t": TIME, "e": EVENT, "g": ARM}, time="t", event="e",
                    where=where)
    assert error.argument == "where"
    assert str(error).startswith(sentence)


def test_what_only_files_have_is_no_argument():
    with pytest.raises(TypeError, match="delimiter"):
        survmeth.life({}, time="t", event="e", delimiter=";")
