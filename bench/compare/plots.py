"""Draws all groups of rows into one picture with gnuplot."""

import shutil
import statistics
import subprocess
import sys

from report import measured_groups
from rows import LIMITS, LOGGERS, name_of

COLUMNS = 2
PANEL_WIDTH = 660
PANEL_HEIGHT = 340

COLORS = {LIMITS: "#bbbbbb", "zav": "#c03028", "before": "#e8a49c", "quill": "#ee7733", "spdlog": "#4477aa", "log4cplus": "#66ccee", "log4cxx": "#228833",
          "glog": "#ccbb44", "boost": "#aa3377"}

HEAD = """\
set terminal svg size {width},{height} font "sans-serif,11" background "white"
set output "comparison.svg"
set multiplot layout {lines},{columns}
set datafile separator tab
set datafile missing "?"
set style data histogram
set style histogram errorbars gap 2 linewidth 1
set style fill solid 0.9 border -1
set key outside right center
set grid ytics
set xtics nomirror
"""

PANEL = """
set title "{title}"
set ylabel "{unit}"
{scale}
plot {bars}
"""


def write_plot(folder, results):
    """The bars are medians; the error bars go from the lowest to the highest round."""
    groups = list(measured_groups(results))
    if not groups:
        return
    lines = -(-len(groups) // COLUMNS)
    script = HEAD.format(width=COLUMNS * PANEL_WIDTH, height=lines * PANEL_HEIGHT, lines=lines, columns=COLUMNS)
    for index, group in enumerate(groups):
        script += panel("comparison%d.dat" % index, folder, group, results)
    (folder / "comparison.gp").write_text(script, encoding="utf-8")
    if shutil.which("gnuplot") is None:
        print("The plot is left out: gnuplot is not installed", file=sys.stderr)
        return
    subprocess.run(["gnuplot", "comparison.gp"], cwd=folder, check=True)


def short(label):
    """Narrow enough to stand below the bars of one row, each part of it on a line."""
    words = label.replace("default waiting period", "default").replace("prompt delivery", "prompt")
    return words.replace(", ", "\\n")


def panel(data, folder, group, results):
    figures = {LIMITS: [row.limit for row in group.rows]}
    figures.update({logger: [row.figure for row in group.rows] for logger in LOGGERS})
    shown = [program for program in figures if any(results.of(program, measured) for measured in figures[program])]
    lines = []
    for index, row in enumerate(group.rows):
        cells = [cell for program in shown for cell in bar(results.of(program, figures[program][index]))]
        lines.append("\t".join(['"%s"' % short(row.label)] + cells))
    (folder / data).write_text("\n".join(lines) + "\n", encoding="utf-8")
    values = [value for program in shown for measured in figures[program] for value in results.of(program, measured)]
    return PANEL.format(title=group.title, unit=group.unit, scale=scale(values), bars=bars(data, shown))


def bar(values):
    if not values:
        return ["?"] * 3
    return ["%g" % value for value in (statistics.median(values), min(values), max(values))]


def scale(values):
    """Where the slowest takes thirty times as long as the fastest, only a logarithmic scale shows both."""
    if max(values) < 30 * min(values):
        return "unset logscale y\nset yrange [0:*]"
    return "set logscale y\nset yrange [%g:*]" % (min(values) / 2)


def bars(data, shown):
    parts = []
    for index, program in enumerate(shown):
        column = 2 + 3 * index
        labels = ":xtic(1)" if index == 0 else ""
        parts.append('"%s" using %d:%d:%d%s title "%s" linecolor rgb "%s"'
                     % (data, column, column + 1, column + 2, labels, name_of(program), COLORS[program]))
    return ", \\\n     ".join(parts)
