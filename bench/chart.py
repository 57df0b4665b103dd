"""Draws panels of bars, one below the other, as an SVG picture."""

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams.update({"svg.hashsalt": "tessel", "font.size": 9})
from matplotlib import pyplot  # noqa: E402  (the settings come first)


def draw(panels, path):
    heights = [len(bars) for _, bars in panels]
    figure, axes = pyplot.subplots(
        len(panels),
        figsize=(8, 0.24 * sum(heights) + 0.7 * len(panels)),
        squeeze=False,
        gridspec_kw={"height_ratios": heights},
    )
    for axis, (title, bars) in zip(axes[:, 0], panels):
        names, values = zip(*bars)
        colours = ["#1f6f8b" if name.startswith("tessel") else "#b5bec4" for name in names]
        axis.bar_label(axis.barh(range(len(bars)), values, color=colours), fmt="%.3g", padding=3)
        axis.set_yticks(range(len(bars)), names)
        axis.set_title(title, loc="left", fontweight="bold", fontsize=9)
        axis.set_xticks([])
        axis.invert_yaxis()
        axis.margins(x=0.1)
        axis.spines[:].set_visible(False)
        axis.tick_params(length=0)
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None})
