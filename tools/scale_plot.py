#!/usr/bin/python3
# Draws what bench_scale prints: processor of one client, of all, and memory, by
# the number of members. It wants python3-matplotlib, which nothing else here does.
# usage: bench_scale | tools/scale_plot.py PICTURE.png
import sys

import matplotlib

matplotlib.use("Agg")
from matplotlib import pyplot


def tables(lines):
    """The figures of each table by the word behind "cameras:"."""
    found = {}
    for line in lines:
        if line.startswith("cameras:"):
            rows = found.setdefault(line.split(":")[1].strip(), [])
        elif line.startswith("| ") and line[2].isdigit():
            rows.append([float(cell.split()[0]) for cell in line.strip("| \n").split("|")])
    return found


MEMBERS, ALL, FILMING, SPEAKING, LEFT, ALL_MEMORY, MEMORY = range(7)
KINDS = [("all", FILMING, "every camera on", "o-"), ("one", SPEAKING, "one camera on", "s-")]
PANELS = [("one client, % of a core", None), ("all clients, % of a core", ALL),
          ("one client's memory (RSS), MB", MEMORY)]

found = tables(sys.stdin)
pyplot.rcParams.update({"font.size": 9, "axes.grid": True, "grid.alpha": 0.3})
figure, panels = pyplot.subplots(1, 3, figsize=(10, 3.2), layout="constrained")
for panel, (title, column) in zip(panels, PANELS):
    for name, own, label, style in KINDS:
        rows = found.get(name, [])
        values = [row[own if column is None else column] for row in rows]
        panel.plot([row[MEMBERS] for row in rows], values, style, label=label, markersize=4)
    top = 1.1 * panel.dataLim.ymax
    panel.set(title=title, xlabel="members", xlim=0, ylim=(0, top))
    panel.legend()
figure.savefig(sys.argv[1], dpi=100)
