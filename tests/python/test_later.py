"""Parts of a result that are described where somebody touches them."""

import pickle
import threading

import numpy as np
import pytest

import survmeth
from cases import cases, columns_of
from standstill import standstill_during

RANDOM = np.random.default_rng(21)
ROWS = 20_000
# Whole days, which are pooled, and distinct times, which are not.
WHOLE = np.ceil(RANDOM.exponential(300, ROWS))
DISTINCT = RANDOM.exponential(300, ROWS)
EVENT = RANDOM.integers(0, 2, ROWS).astype(float)
GROUP = RANDOM.integers(0, 2, ROWS).astype(float)
LIFE = [case for case in cases() if case.analysis["name"] == "life"]


def life(times, **named):
    data = {"t": times.copy(), "e": EVENT.copy(), "g": GROUP.copy()}
    return survmeth.life(data, time="t", event="e", group="g", **named), data


def touches():
    """What makes the rest be described, by name."""
    return {"tables": lambda fit: fit.tables["kaplanMeier"], "arrays": lambda fit: list(fit.arrays),
            "text": lambda fit: fit.summary(), "csv": lambda fit: fit.to_csv(),
            "html": lambda fit: fit.to_html(), "figures": lambda fit: fit.figures,
            "dir": dir, "pickle": pickle.dumps}


@pytest.mark.parametrize("case", LIFE, ids=lambda case: case.name)
def test_what_is_touched_first_changes_no_byte(case):
    for touch in touches().values():
        fit = case.call(columns_of(case.path))
        touch(fit)
        assert fit.to_json() == case.printed


@pytest.mark.parametrize("times", [WHOLE, DISTINCT], ids=["whole", "distinct"])
def test_parts_are_of_the_data_as_they_were(times):
    expected = life(times)[0].to_json(figures=True)
    fit, data = life(times)
    for column in data.values():
        column[:] = 1
    assert fit.to_json(figures=True) == expected
    weighted = {"t": times.copy(), "e": EVENT, "w": np.full(ROWS, 0.5), "s": np.zeros(ROWS)}
    names = {"time": "t", "event": "e", "weight": "w", "entry": "s"}
    expected = survmeth.life(weighted, **names).to_json(figures=True)
    fit = survmeth.life(weighted, **names)
    for name in "tws":
        weighted[name][:] = 1
    assert fit.to_json(figures=True) == expected


def test_a_short_table_and_a_fact_describe_nothing_more():
    fit, _ = life(WHOLE)
    assert fit.tests["test"].tolist() == ["Log-rank", "Gehan-Breslow", "Tarone-Ware"]
    assert fit.arrays["summary"]["n"].sum() == ROWS
    assert fit.level == 0.95 and "curve" not in fit.tables
    assert fit.arrays._all is None and fit.tables._all is None
    assert "curves" not in fit.tables and "kaplanMeier" in fit.tables
    assert fit.tables._all is not None


def test_tables_are_a_mapping_in_the_order_of_the_report():
    fit, _ = life(WHOLE)
    assert list(fit.arrays) == ["summary", "tests", "events", "kaplanMeier", "atRisk"]
    assert len(fit.tables) == 5 and fit.tables.get("curves") is None
    with pytest.raises(KeyError, match="curves"):
        fit.tables["curves"]
    with pytest.raises(KeyError, match="nonsense"):
        fit.arrays["nonsense"]
    assert repr(fit.arrays).startswith("{'summary': {'group': array(")
    assert fit.arrays._ipython_key_completions_() == list(fit.arrays)


def test_a_table_stays_the_one_it_was():
    fit, _ = life(WHOLE)
    summary, median = fit.tables["summary"], fit.arrays["summary"]["median"]
    assert list(fit.tables)[0] == "summary"
    assert fit.tables["summary"] is summary and fit.arrays["summary"]["median"] is median
    assert fit.kaplanMeier is fit.tables["kaplanMeier"]


def test_views_outlive_the_result_of_both_reports():
    fit, _ = life(WHOLE)
    median = fit.arrays["summary"]["median"]
    survival = fit.arrays["kaplanMeier"]["survival"]
    expected = [median.copy(), survival.copy()]
    del fit
    for _ in range(3):
        life(DISTINCT)[0].figures
    np.testing.assert_array_equal(median, expected[0])
    np.testing.assert_array_equal(survival, expected[1])


def test_pickles_hold_what_was_not_touched():
    fit, _ = life(WHOLE)
    again = pickle.loads(pickle.dumps(fit))
    assert again.to_json(figures=True) == fit.to_json(figures=True)
    assert list(again.tables) == list(fit.tables)
    assert "kaplanMeier" in again.arrays and "curves" not in again.arrays
    assert again.level == 0.95


def test_what_cannot_be_described_is_refused_at_the_call():
    for wish, said in [({"band": "hall-wellner", "cluster": "g"}, "band"),
                       ({"hazard": 1e9}, "hazard"), ({"risk_rows": ["nobody"]}, "risk_rows"),
                       ({"risk_at": [-1]}, "risk_at")]:
        with pytest.raises(survmeth.RefusedInput) as refused:
            life(DISTINCT, **wish)
        assert refused.value.argument == said


def test_sixteen_threads_touch_one_result():
    expected = life(DISTINCT)[0].to_json(figures=True)
    fit, _ = life(DISTINCT)
    begin, made = threading.Barrier(16), []

    def work():
        begin.wait()
        made.append((fit.to_json(figures=True), fit.arrays["kaplanMeier"]["survival"].sum()))

    threads = [threading.Thread(target=work) for _ in range(16)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert {text for text, _ in made} == {expected}
    assert len({total for _, total in made}) == 1


def test_other_threads_run_while_parts_are_described():
    rows = 400_000
    random = np.random.default_rng(3)
    fit = survmeth.life({"t": random.exponential(size=rows), "e": random.integers(0, 2, rows)},
                        time="t", event="e")
    assert "kaplanMeier" in fit._report.declared_tables
    longest, took = standstill_during(lambda: fit._report.tables)
    # With the lock held throughout, the watcher would stand still for all of it.
    assert longest < took / 2
