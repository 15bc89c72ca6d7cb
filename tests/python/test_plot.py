"""Figures by matplotlib hold the numbers of the report."""

import matplotlib

matplotlib.use("Agg")

import numpy as np  # noqa: E402: after the choice of what draws
import pytest  # noqa: E402
from matplotlib import pyplot  # noqa: E402

import survmeth  # noqa: E402
from cases import ROOT, cases, columns_of  # noqa: E402
from survmeth import _plot  # noqa: E402


@pytest.fixture(name="fit")
def fit_of_leukemia():
    return survmeth.life(columns_of(ROOT / "data" / "leukemia.csv"), time="weeks",
                         event="relapse", group="treatment")


@pytest.fixture(autouse=True)
def closed():
    yield
    pyplot.close("all")


def line_of(ax, label):
    return next(line for line in ax.lines if line.get_label() == label)


def test_curves_are_steps_through_the_numbers_of_the_figure(fit):
    ax = fit.plot()
    for series in fit.figures[0]["panels"][0]["series"]:
        if series["kind"] == "step":
            line = line_of(ax, series["name"])
            assert line.get_drawstyle() == "steps-post"
            np.testing.assert_array_equal(line.get_xdata(), series["x"])
            np.testing.assert_array_equal(line.get_ydata(), series["y"])
    assert [text.get_text() for text in ax.get_legend().get_texts()] == ["6-MP", "placebo"]
    assert (ax.get_xlabel(), ax.get_ylabel()) == ("weeks", "Survival")
    assert line_of(ax, "6-MP").get_color() != line_of(ax, "placebo").get_color()


def test_censored_times_are_marked_on_the_curve(fit):
    ax = fit.plot()
    series = next(each for each in fit.figures[0]["panels"][0]["series"] if each["ticks"])
    marks = next(line for line in ax.lines if line.get_marker() == "|")
    assert marks.get_xdata().tolist() == series["ticks"]
    # Of 6-MP, censored at 6 weeks: after the relapses of that week, 18/21 are left.
    assert marks.get_ydata()[0] == pytest.approx(18 / 21, rel=1e-15)


def test_the_numbers_at_risk_stand_below(fit):
    texts = [text.get_text() for text in fit.plot().texts]
    assert {"At risk", "6-MP", "placebo", "21"} <= set(texts)
    assert "At risk" not in [text.get_text() for text in fit.plot(risk_table=False).texts]


def test_each_stacked_panel_has_its_own_numbers_at_risk():
    # At 0 all are at risk: 3 of "a", 4 of "b".
    rows = {"t": [1, 2, 3, 1, 2, 3, 4], "s": [1, 2, 0, 2, 1, 0, 1], "g": list("aaabbbb")}
    axes = survmeth.incidence(rows, time="t", status="s", group="g").plot("stacked")
    for ax, title, first in zip(axes, "ab", ("3", "4")):
        written = [text.get_text() for text in ax.texts]
        assert title in ax.get_title()
        assert written[:3] == ["At risk", "", first]


def test_the_names_of_the_groups_at_risk_stand_clear_of_the_numbers():
    lung = columns_of(ROOT / "data" / "lung.csv")
    ax = survmeth.life(lung, time="time", event="status", group="sex").plot()
    ax.figure.canvas.draw()
    written = [text.get_text() for text in ax.texts]
    for name, count in (("female", "90"), ("male", "138")):
        at = written.index(name)
        assert written[at + 1] == count  # at time 0, the left end of the axis
        assert ax.texts[at].get_window_extent().x1 < ax.texts[at + 1].get_window_extent().x0


def test_logarithmic_axes_have_plain_numbers():
    lung = columns_of(ROOT / "data" / "lung.csv")
    ax = survmeth.cox("Surv(time, status) ~ age + sex", lung).plot("hazardRatios")
    ax.figure.canvas.draw()
    labels = [label.get_text() for label in ax.get_xticklabels() + ax.get_xticklabels(minor=True)]
    assert {"1", "2"} <= set(labels)
    assert not any("10^" in label for label in labels)


def test_axes_of_the_caller_are_used(fit):
    _, ax = pyplot.subplots()
    assert fit.plot(ax=ax) is ax
    assert ax.get_title() == fit.figures[0]["title"]
    with pytest.raises(ValueError, match="has 1 panels, and ax has 2"):
        fit.plot(ax=pyplot.subplots(1, 2)[1])


def test_a_figure_of_several_panels_gives_as_many_axes():
    lung = columns_of(ROOT / "data" / "lung.csv")
    fit = survmeth.cox("Surv(time, status) ~ age + sex", lung, zph="km")
    assert [ax.get_title() for ax in fit.plot("schoenfeld")] == ["age", "sex=male"]
    ratios = fit.plot("hazardRatios")
    assert ratios.get_xscale() == "log"
    low, high = ratios.get_ylim()
    assert low > high  # the first category stands above the others
    assert [label.get_text() for label in ratios.get_yticklabels()][0] == "age"


LONG = "a long name of a group of patients, as protocols have it, with dose and schedule"


def drawn_with(groups, **named):
    """Survival of two groups with these names, drawn."""
    weeks = {"weeks": [1.0, 2, 3, 4], "dead": [1, 1, 0, 1]}
    fit = survmeth.life(weeks | {"arm": [groups[0], groups[1]] * 2} | named, time="weeks",
                        event="dead", group="arm")
    ax = fit.plot()
    ax.figure.canvas.draw()
    return ax


def legend_of(ax):
    return [text.get_text() for text in ax.get_legend().get_texts()]


def test_dollars_are_dollars_and_no_formula():
    ax = drawn_with(["$5 or $6", "${$"])
    texts = [*ax.get_legend().get_texts(), *[text for text in ax.texts if "$" in text.get_text()]]
    # matplotlib's own reading of what is written: (what is shown, whether that is a formula).
    assert {text._preprocess_math(text.get_text()) for text in texts} \
        == {("$5 or $6", False), ("${$", False)}


@pytest.mark.filterwarnings("error")  # a glyph that no font has
def test_what_cannot_be_printed_is_a_space():
    assert legend_of(drawn_with(["a\tb\nc", "a\0b"])) == ["a b", "a b c"]


def test_a_name_that_begins_with_an_underscore_has_its_place_in_the_legend():
    assert legend_of(drawn_with(["_a", "b"])) == [" _a", "b"]


@pytest.mark.filterwarnings("error")  # constrained_layout not applied
def test_long_names_stand_in_lines_and_within_the_picture():
    ax = drawn_with([LONG, "b"])
    assert [text.replace("\n", " ") for text in legend_of(ax)] == [LONG, "b"]
    assert max(len(line) for text in legend_of(ax) for line in text.splitlines()) <= 30
    picture = ax.figure.bbox
    for text in [*ax.texts, *ax.get_legend().get_texts(), ax.figure._suptitle]:
        box = text.get_window_extent()
        assert picture.x0 <= box.x0 and box.x1 <= picture.x1, text.get_text()
        assert picture.y0 <= box.y0 and box.y1 <= picture.y1, text.get_text()


def test_names_at_risk_in_lines_do_not_cover_one_another():
    boxes = [text.get_window_extent() for text in drawn_with([LONG, LONG + " b"]).texts
             if text.get_ha() == "right"]
    assert len(boxes) == 3
    assert all(below.y1 <= above.y0 for above, below in zip(boxes, boxes[1:]))


@pytest.mark.filterwarnings("error")  # constrained_layout not applied
def test_many_groups_have_room_in_the_table_at_risk_and_in_the_legend():
    rows = {"t": list(range(1, 61)), "e": [1] * 60, "g": [f"group {i % 20}" for i in range(60)]}
    ax = survmeth.life(rows, time="t", event="e", group="g").plot()
    ax.figure.canvas.draw()
    legend, frame = ax.get_legend().get_window_extent(), ax.get_window_extent()
    assert frame.height > 2 * ax.figure.dpi
    assert frame.y0 <= legend.y0 and legend.y1 <= frame.y1
    assert all(text.get_window_extent().y0 >= 0 for text in ax.texts)


@pytest.mark.filterwarnings("error")
def test_equal_units_keep_the_limits_of_the_figure():
    rows = {"sick": [0, 0, 1, 0, 1, 1], "marker": [1, 2, 3, 4, 5, 6]}
    ax = survmeth.roc(rows, class_="sick", marker="marker").plot()
    ax.figure.canvas.draw()
    assert (ax.get_xlim(), ax.get_ylim()) == ((0, 1), (0, 1))
    frame = ax.get_window_extent()
    assert frame.width == pytest.approx(frame.height, rel=1e-9)  # but for rounding


def test_narrow_logarithmic_axes_have_more_than_one_number():
    lung = columns_of(ROOT / "data" / "lung.csv")
    ax = survmeth.cox("Surv(time, status) ~ age", lung).plot("hazardRatios")
    ax.figure.canvas.draw()
    low, high = ax.get_xlim()
    shown = [float(tick.get_text()) for tick in ax.get_xticklabels()
             if low <= tick.get_position()[0] <= high]
    assert 1 in shown and len(shown) >= 3


def test_more_than_three_panels_stand_in_rows():
    lung = columns_of(ROOT / "data" / "lung.csv")
    fit = survmeth.cox("Surv(time, status) ~ age + sex + ph.ecog + wt.loss", lung, zph="km")
    axes = fit.plot("schoenfeld")
    places = [(each.get_subplotspec().rowspan.start, each.get_subplotspec().colspan.start)
              for each in axes]
    assert places == [(0, 0), (0, 1), (0, 2), (1, 0)]
    assert axes[0].figure.axes == list(axes)  # no empty one


def test_a_figure_that_there_is_not(fit):
    with pytest.raises(ValueError, match="there is no figure 'roc'; expected one of 'survival'"):
        fit.plot("roc")
    with pytest.raises(ValueError, match="this result has no figure"):
        _plot.named([], None)


@pytest.mark.parametrize("case", cases(), ids=lambda case: case.name)
def test_every_figure_of_the_golden_cases_is_drawn(case):
    fit = case.call(columns_of(case.path))
    for figure in fit.figures:
        axes = np.ravel(fit.plot(figure["id"]))
        assert len(axes) == len(figure["panels"])
        axes[0].figure.canvas.draw()
        assert all(ax.has_data() for ax in axes)


@pytest.mark.parametrize("scale, p, z", [("cloglog", 0.5, -0.36651292058166435),
                                         ("probit", 0.975, 1.959963984540054)])
def test_scales_of_probabilities(scale, p, z):
    # log(-log(1/2)) and the normal quantile, of which 15 digits are known.
    forward, back = _plot.SCALES[scale]
    assert forward(p) == pytest.approx(z, rel=1e-12)
    assert back(z) == pytest.approx(p, rel=1e-12)


def test_areas_are_stacked():
    series = {"x": [0, 1], "y": [0.1, 0.2], "kind": "area", "name": "a", "stepped": True}
    _, ax = pyplot.subplots()
    below = _plot.draw_area(ax, series, {}, None)
    assert _plot.draw_area(ax, series, {}, below).tolist() == [0.2, 0.4]


def test_an_infinite_limit_is_an_arrow():
    _, ax = pyplot.subplots()
    _plot.draw_points(ax, {"x": [1.0], "y": [0.0], "left": [0.5], "right": [float("inf")],
                           "lower": [], "upper": [], "name": ""}, {"color": "k"}, "-")
    assert ">" in [line.get_marker() for line in ax.lines]
