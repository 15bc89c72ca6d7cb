"""A described figure, drawn by matplotlib. What series are is said by their kinds; nothing here knows
an analysis."""

import math
import statistics
import textwrap

import numpy as np

# Told apart by those who see few colours, too; as the command line's pictures have them.
COLOURS = ["#0072b2", "#d55e00", "#009e73", "#cc79a7", "#222222", "#e69f00", "#56b4e9", "#8c564b",
           "#6a3d9a", "#7a9a01", "#808080", "#b2182b"]
DASHES = ["-", "--", "-.", ":"]
GUIDE = "#808080"
NORMAL = statistics.NormalDist()
LEAST = 1e-15  # probabilities of 0 and 1 have no place on these scales
ACROSS = 3  # panels beside one another
IN_COLUMN = 8  # entries of a legend

# Characters in a line of text, of a panel of matplotlib's usual size.
IN_TITLE, IN_LABEL, IN_LEGEND, IN_TICK, AT_RISK = 50, 45, 30, 40, 24

SCALES = {
    "cloglog": (lambda p: math.log(-math.log1p(-p)), lambda z: -math.expm1(-math.exp(min(z, 5)))),
    "probit": (NORMAL.inv_cdf, NORMAL.cdf),
}


def named(figures, name):
    """The figure of this id, or the first."""
    if not figures:
        raise ValueError("this result has no figure")
    if name is None:
        return figures[0]
    for figure in figures:
        if figure["id"] == name:
            return figure
    raise ValueError(f"there is no figure {name!r}; expected one of "
                     + ", ".join(repr(figure["id"]) for figure in figures))


def written(text, width):
    """Letter by letter, for matplotlib, to which dollars make formulas; long texts in lines."""
    text = "".join(each if each.isprintable() else " " for each in text)
    if len(text) > width:
        text = "\n".join(textwrap.wrap(text, width))
    return text.replace("$", r"\$")


def entry_of(name):
    """In a legend, where matplotlib leaves out what begins with an underscore."""
    text = written(name, IN_LEGEND)
    return (" " + text if text.startswith("_") else text) or None


def draw(figure, ax=None, risk_table=True):
    """Draws on the axes, one for each panel, or on new ones; gives them back likewise."""
    panels = figure["panels"]
    if ax is None:
        from matplotlib import pyplot

        across = min(len(panels), ACROSS)
        down = math.ceil(len(panels) / across)
        made, axes = pyplot.subplots(down, across, squeeze=False, layout="constrained",
                                     figsize=(6.4 * across, 4.8 * down + room_of(figure)))
        axes = list(axes.flat)
        for unused in axes[len(panels):]:
            unused.remove()
        axes = axes[:len(panels)]
        made.suptitle(written(figure["title"], 60 * across))
    else:
        axes = list(np.ravel(ax))
        if len(axes) != len(panels):
            raise ValueError(f"the figure {figure['id']!r} has {len(panels)} panels, and ax has "
                             f"{len(axes)}")
        if len(axes) == 1:
            axes[0].set_title(written(figure["title"], IN_TITLE))
    for each, panel in zip(axes, panels):
        draw_panel(each, panel)
    if risk_table:
        for each, table in zip(axes, risk_tables(figure)):
            draw_risk_table(each, table)
    return axes[0] if len(axes) == 1 else axes


def risk_tables(figure):
    """That of the figure, which stands under the first panel, or one for each panel."""
    table = figure["riskTable"]
    if table is None or not table["eachPanel"]:
        return [table] if table else []
    # Whose numbers these are is the panel's title.
    return [table | {"rows": [""], "counts": [counts]} for counts in table["counts"]]


def room_of(figure):
    """In inches, for a table at risk of more lines than the usual size of a picture has room for."""
    lines = sum(1 + written(name, AT_RISK).count("\n")
                for table in risk_tables(figure)[:1] for name in table["rows"])
    return max(0, lines - 3) * 13 / 72


def draw_panel(ax, panel):
    for side in ("x", "y"):
        set_scale(ax, side, panel[side])
    styles = {}
    for series in panel["series"]:
        if series["name"] and not series["guide"]:
            styles.setdefault(series["name"], len(styles))
    height = None  # of the areas so far
    for series in panel["series"]:
        index = styles.get(series["name"], 0)
        style = {"color": GUIDE if series["guide"] else COLOURS[index % len(COLOURS)]}
        if series["kind"] == "area":
            height = draw_area(ax, series, style, height)
        else:
            DRAWN[series["kind"]](ax, series, style, DASHES[index // len(COLOURS) % len(DASHES)])
    for line in panel["references"]:
        (ax.axvline if line["vertical"] else ax.axhline)(
            line["at"], color=GUIDE, linewidth=1, linestyle=(0, (5, 3)), zorder=1)
        if line["label"]:
            at, coordinates = ((line["at"], 1), ("data", "axes fraction")) if line["vertical"] \
                else ((1, line["at"]), ("axes fraction", "data"))
            ax.annotate(written(line["label"], IN_LABEL), at, xycoords=coordinates, xytext=(-2, 2),
                        textcoords="offset points", ha="right", color=GUIDE, fontsize="small")
    for side in ("x", "y"):
        set_axis(ax, side, panel[side])
    if panel["title"]:
        ax.set_title(written(panel["title"], IN_TITLE))
    if panel["equalUnits"]:
        ax.set_aspect("equal", adjustable="box")
    handles, labels = ax.get_legend_handles_labels()
    if handles:
        by_label = dict(zip(labels, handles))
        ax.legend(by_label.values(), by_label.keys(), framealpha=0.7, edgecolor="none",
                  ncols=math.ceil(len(by_label) / IN_COLUMN),
                  fontsize="small" if len(by_label) > IN_COLUMN else None)


def set_scale(ax, side, axis):
    if axis["scale"] == "log":
        getattr(ax, f"set_{side}scale")("log")
    elif axis["scale"] in SCALES:
        forward, back = SCALES[axis["scale"]]
        getattr(ax, f"set_{side}scale")("function", functions=(
            np.vectorize(lambda p: forward(min(max(p, LEAST), 1 - LEAST)), otypes=[float]),
            np.vectorize(back, otypes=[float])))


def set_axis(ax, side, axis):
    getattr(ax, f"set_{side}label")(written(axis["label"], IN_LABEL))
    set_ticks = getattr(ax, f"set_{side}ticks")
    if axis["scale"] == "category":
        groups = axis["categoryGroups"] or [""] * len(axis["categories"])
        set_ticks(range(len(groups)),
                  [written(f"{group}: {label}" if group else label, IN_TICK)
                   for group, label in zip(groups, axis["categories"])])
        set_limits = getattr(ax, f"set_{side}lim")
        # The first category stands above the others.
        set_limits(*((len(groups) - 0.5, -0.5) if side == "y" else (-0.5, len(groups) - 0.5)))
    elif axis["ticks"]:
        set_ticks(axis["ticks"])
    elif axis["scale"] == "log":
        plain_numbers(getattr(ax, f"{side}axis"), *sorted(getattr(ax, f"get_{side}lim")()))
    if axis["percent"]:
        from matplotlib.ticker import PercentFormatter

        getattr(ax, f"{side}axis").set_major_formatter(PercentFormatter(1))
    low, high = ("bottom", "top") if side == "y" else ("left", "right")
    limits = {low: axis["least"], high: axis["most"]}
    getattr(ax, f"set_{side}lim")(**{end: value for end, value in limits.items()
                                     if value is not None})


def plain_numbers(axis, least, most):
    """On a logarithmic scale 0.5, 1, 2 in the place of powers of ten; of narrow ones 1, 1.02, 1.04."""
    from matplotlib.ticker import FuncFormatter, LogLocator, MaxNLocator, NullFormatter

    narrow = most < 4 * least
    axis.set_major_locator(MaxNLocator(6, steps=[1, 2, 5, 10]) if narrow else LogLocator(subs=(1, 2, 5)))
    axis.set_major_formatter(FuncFormatter(lambda value, place: f"{value:g}"))
    axis.set_minor_formatter(NullFormatter())


def draw_line(ax, series, style, dash, drawstyle="default"):
    ax.plot(series["x"], series["y"], linestyle=dash, label=entry_of(series["name"]),
            linewidth=1 if series["guide"] else 1.8, drawstyle=drawstyle, **style)


def draw_step(ax, series, style, dash):
    draw_line(ax, series, style, dash, "steps-post")
    if series["ticks"]:
        at = np.searchsorted(series["x"], series["ticks"], side="right") - 1
        ax.plot(series["ticks"], np.asarray(series["y"])[at], linestyle="none", marker="|",
                markersize=7, **style)


def draw_band(ax, series, style, dash):
    ax.fill_between(series["x"], series["lower"], series["upper"], alpha=0.15, linewidth=0,
                    step="post" if series["stepped"] else None, **style)


def draw_points(ax, series, style, dash):
    x, y = np.asarray(series["x"]), np.asarray(series["y"])
    for low, high, vertical in (("lower", "upper", True), ("left", "right", False)):
        if series[low]:
            draw_bars_of_error(ax, x, y, series[low], series[high], vertical, style)
    ax.plot(x, y, linestyle="none", marker="o", markersize=5, label=entry_of(series["name"]),
            **style)


def draw_bars_of_error(ax, x, y, low, high, vertical, style):
    """An infinite end is left out; an arrow stands where the point's finite end is."""
    for at_x, at_y, begin, end in zip(x, y, low, high):
        centre = at_y if vertical else at_x
        for stop, arrow in ((begin, "v" if vertical else "<"), (end, "^" if vertical else ">")):
            if math.isnan(stop):
                continue
            if math.isinf(stop):
                ax.plot([at_x], [at_y], marker=arrow, markersize=9, linestyle="none", **style)
                continue
            line = ([at_x, at_x], [centre, stop]) if vertical else ([centre, stop], [at_y, at_y])
            ax.plot(*line, linewidth=1.4, **style)


def draw_segments(ax, series, style, dash):
    ax.plot([series["x"], series["right"]], [series["y"], series["upper"]], linewidth=1.2, **style)


def draw_bars(ax, series, style, dash):
    ax.bar(series["x"], series["y"], alpha=0.6, label=entry_of(series["name"]), **style)


def draw_area(ax, series, style, below):
    """On top of the areas before it; gives the height that they have together."""
    y = np.asarray(series["y"])
    below = np.zeros(len(y)) if below is None else below
    ax.fill_between(series["x"], below, below + y, alpha=0.6, label=entry_of(series["name"]),
                    step="post" if series["stepped"] else None, **style)
    return below + y


DRAWN = {"step": draw_step, "line": draw_line, "band": draw_band, "points": draw_points,
         "segments": draw_segments, "bars": draw_bars}


def draw_risk_table(ax, table):
    """Numbers below the axis, at its breaks."""
    from matplotlib.transforms import blended_transform_factory, offset_copy

    where = blended_transform_factory(ax.transData, ax.transAxes)
    # The first count may stand about the axis' left end: half of it is kept free.
    widest = max((len(f"{count:g}") for counts in table["counts"] for count in counts[:1]),
                 default=0)
    down = -38 - 14 * ax.get_xlabel().count("\n")
    for name, counts in zip([table["title"], *table["rows"]], [[], *table["counts"]]):
        name = written(name, AT_RISK)
        ax.annotate(name, (0, 0), xycoords="axes fraction", xytext=(-8 - 3 * widest, down),
                    textcoords="offset points", ha="right", va="top", fontsize="small",
                    annotation_clip=False)
        place = offset_copy(where, fig=ax.figure, y=down, units="points")
        for x, count in zip(table["breaks"], counts):
            ax.text(x, 0, f"{count:g}", transform=place, ha="center", va="top", fontsize="small")
        down -= 13 + 11 * name.count("\n")
