"""Draws one bar chart per group of tables with gnuplot."""

import shutil
import statistics
import subprocess
import sys

MISSING = "?"

SCRIPT = """\
set terminal svg size 1000,500 background "white"
set output "{name}.svg"
set title "{title}"
set ylabel "{unit}"
set datafile separator tab
set datafile missing "?"
set style data histogram
set style histogram errorbars gap 2 linewidth 1
set style fill solid 0.8 border -1
set key outside right
set grid ytics
set xtics noenhanced
{scale}
plot {curves}
"""


def write_plots(folder, tables, loggers, results):
    """The bars are medians; the error bars go from the lowest to the highest round."""
    for group in dict.fromkeys(table.group for table in tables):
        members = [table for table in tables if table.group == group]
        shown = [logger for logger in loggers if any(results.of(logger, table.figure) for table in members)]
        if shown:
            write_plot(folder, group.replace(" ", "-"), members, shown, results)


def write_plot(folder, name, tables, loggers, results):
    rows = [[label(table)] + cells(table, loggers, results) for table in tables]
    (folder / (name + ".dat")).write_text("\n".join("\t".join(row) for row in rows) + "\n", encoding="utf-8")
    script = SCRIPT.format(name=name, title=name, unit=tables[0].unit, scale=scale(tables, loggers, results),
                           curves=curves(name, loggers))
    (folder / (name + ".gp")).write_text(script, encoding="utf-8")
    if shutil.which("gnuplot") is None:
        print("%s.svg is left out: gnuplot is not installed" % name, file=sys.stderr)
        return
    subprocess.run(["gnuplot", name + ".gp"], cwd=folder, check=True)


def label(table):
    threads = table.figure.task.threads
    form = {"own": ", own loggers", "shared": ", one logger", "function": ", function", "macro": ", macro",
            "process": ", with process"}
    suffix = form.get(table.figure.task.workload.rpartition("-")[2], "")
    return "%d thread%s%s" % (threads, "s" if threads > 1 else "", suffix)


def cells(table, loggers, results):
    texts = []
    for logger in loggers:
        values = results.of(logger, table.figure)
        texts += ["%g" % value for value in (statistics.median(values), min(values), max(values))] if values \
            else [MISSING] * 3
    return texts


def scale(tables, loggers, results):
    """Where the slowest takes thirty times as long as the fastest, only a logarithmic scale shows both."""
    values = [value for table in tables for logger in loggers for value in results.of(logger, table.figure)]
    if max(values) < 30 * min(values):
        return "set yrange [0:*]"
    return "set logscale y\nset yrange [%g:*]" % (min(values) / 2)


def curves(name, loggers):
    parts = []
    for index, logger in enumerate(loggers):
        column = 2 + 3 * index
        labels = ":xtic(1)" if index == 0 else ""
        parts.append('"%s.dat" using %d:%d:%d%s title "%s"' % (name, column, column + 1, column + 2, labels, logger))
    return ", \\\n     ".join(parts)
