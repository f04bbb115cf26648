"""Growth curves and bars as SVG: small, the same for the same figures, and readable on light and dark pages."""

import math

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot
from matplotlib.ticker import FuncFormatter, LogLocator

import summary

# Of middle lightness, told apart by the colour-blind as well.
COLOURS = ["#0a84c6", "#d9622b", "#1a9e77", "#c25fa8", "#b8901f", "#8a6fd1", "#6f8f2a", "#b0455a", "#4f8f9a",
           "#a0663a"]
MARKERS = "osD^vP*Xph"
GREY = "#808080"
STYLE = {
    "svg.hashsalt": "morvaai", "svg.fonttype": "none", "font.family": "sans-serif", "font.size": 10,
    "text.color": GREY, "axes.edgecolor": GREY, "axes.labelcolor": GREY, "xtick.color": GREY, "ytick.color": GREY,
    "axes.titlecolor": GREY, "axes.titlesize": 11, "grid.color": GREY, "grid.alpha": 0.25, "legend.frameon": False,
    "axes.spines.top": False, "axes.spines.right": False, "legend.fontsize": 9,
}


def look_of(candidates):
    """Colour and marker by candidate."""
    ordered = summary.ours_first(candidates)
    return {name: (COLOURS[place % len(COLOURS)], MARKERS[place % len(MARKERS)])
            for place, name in enumerate(ordered)}


def draw_growth(path, panels, value, axis, size_name):
    """Panels: for each operation and series, by candidate, points (size, measurement). value tells what is drawn
    of one, axis how it is written, size_name what the sizes of an operation are."""
    with pyplot.rc_context(STYLE):
        columns = min(len(panels), 3)
        lines = -(-len(panels) // columns)
        figure, axes = pyplot.subplots(lines, columns, squeeze=False,
                                       layout="constrained",
                                       figsize=(6.4 if columns == 1 else 3.5 * columns, 3.4 * lines))
        look = look_of(name for candidates in panels.values() for name in candidates)
        for place, ((operation, series), candidates) in zip(axes.flat, panels.items()):
            for name, points in candidates.items():
                known = [(size, value(one)) for size, one in points if value(one)]
                if not known:
                    continue
                place.loglog(*zip(*known), color=look[name][0], marker=look[name][1], markersize=4.5, label=name,
                             linewidth=2.2 if name.startswith(summary.OURS) else 1.4)
            dress(place, f"{operation} {series}".strip(), size_name(operation), axis)
        for place in list(axes.flat)[len(panels):]:
            place.set_visible(False)
        lines = {line.get_label(): line for place in axes.flat for line in place.lines}
        shown = [name for name in look if name in lines]
        figure.legend([lines[name] for name in shown], shown, loc="lower center", bbox_to_anchor=(0.5, 1.0),
                      ncol=min(len(shown), 6))
        finish(path, figure)


def dress(place, title, size_name, axis):
    place.set_title(title)
    place.set_xlabel(size_name)
    place.grid(True, which="major")
    place.set_xticks(sorted({size for line in place.lines for size in line.get_xdata()}))
    place.xaxis.set_major_formatter(FuncFormatter(short))
    place.minorticks_off()
    is_short = math.log10(max(place.get_ylim()) / min(place.get_ylim())) < 2.5
    place.yaxis.set_major_locator(LogLocator(subs=(1.0, 2.0, 5.0) if is_short else (1.0,), numticks=9))
    place.yaxis.set_major_formatter(FuncFormatter(lambda value, _: axis(value).replace(".00", "").replace(".0", "")))


def draw_bars(path, found):
    """Bytes in a second of each candidate, a group of bars a case."""
    with pyplot.rc_context(STYLE):
        cases = list(dict.fromkeys(one.label for one in found))
        look = look_of(one.candidate for one in found)
        height = 0.8 / len(look)
        figure, place = pyplot.subplots(figsize=(6.4, 0.8 + 0.2 * len(cases) * (len(look) + 1)))
        for number, name in enumerate(look):
            ours = [one for one in found if one.candidate == name]
            bars = place.barh([cases.index(one.label) + number * height for one in ours],
                              [one.rate / 1e6 for one in ours], height, color=look[name][0], label=name)
            place.bar_label(bars, [f" {summary.digits(one.rate / 1e6)}" for one in ours], fontsize=8)
        place.set_yticks([case + height * (len(look) - 1) / 2 for case in range(len(cases))], cases)
        place.invert_yaxis()
        place.set_xlabel("MB in a second")
        place.margins(x=0.1)
        place.legend(loc="lower left", bbox_to_anchor=(0.0, 1.0), ncol=len(look))
        finish(path, figure)


def short(value, _=None):
    if value >= 1e6:
        return f"{value / 1e6:.3g} M"
    return f"{value:,.0f}" if value >= 1 else f"{value:g}"


def finish(path, figure):
    figure.savefig(path, transparent=True, bbox_inches="tight", metadata={"Date": None, "Creator": None})
    pyplot.close(figure)
