#!/usr/bin/env python3
"""Runs the comparison programs in interleaved rounds and reports medians, ratios and targets."""

import argparse
import csv
import pathlib
import shutil
import statistics
import subprocess
import sys
from collections import namedtuple

from plots import write_plots

LIMITS = "limits"
OURS = "zav"
OTHERS = ["spdlog", "log4cplus", "log4cxx", "glog", "boost"]
PROGRAMS = [LIMITS, OURS] + OTHERS
PACKAGES = ["libspdlog-dev", "liblog4cplus-dev", "liblog4cxx-dev", "libgoogle-glog-dev", "libboost-log-dev"]
SECONDS_PER_PROGRAM = 300

# What a program is asked for, and one figure that it answers with.
Task = namedtuple("Task", "workload threads")
Figure = namedtuple("Figure", "task metric")


def figure(workload, threads, metric):
    return Figure(Task(workload, threads), metric)


WRITE = figure("write", 1, "message_ns")
WRITE_4 = figure("write", 4, "message_ns")
REOPEN = figure("reopen", 1, "message_ns")
LOAD = figure("load", 1, "call_ns")
LOAD_4 = figure("load", 4, "call_ns")
CLOCK = figure("clock", 1, "call_ns")
LOCK = figure("lock", 1, "call_ns")

# A table of the report: one figure of all loggers, and the limit that it stands against, if there is one.
Table = namedtuple("Table", "group title unit figure limit")

NS = "ns a message"
CALL = "ns a call"
ASYNC_NOTE = "asynchronous, every line flushed, "

TABLES = [
    Table("rejected", "rejected call, function, 1 thread", CALL, figure("rejected-function", 1, "call_ns"), LOAD),
    Table("rejected", "rejected call, function, 4 threads", CALL, figure("rejected-function", 4, "call_ns"), LOAD_4),
    Table("rejected", "rejected call, macro, 1 thread", CALL, figure("rejected-macro", 1, "call_ns"), LOAD),
    Table("rejected", "rejected call, macro, 4 threads", CALL, figure("rejected-macro", 4, "call_ns"), LOAD_4),
    Table("synchronous", "file, every line flushed, 1 thread", NS, figure("sync-shared", 1, "message_ns"), WRITE),
    Table("synchronous", "file, every line flushed, 4 threads, own loggers", NS,
          figure("sync-own", 4, "message_ns"), WRITE_4),
    Table("synchronous", "file, every line flushed, 4 threads, one logger", NS,
          figure("sync-shared", 4, "message_ns"), WRITE_4),
    Table("producer", ASYNC_NOTE + "1 producer: the call", CALL, figure("async-shared", 1, "producer_ns"), None),
    Table("producer", ASYNC_NOTE + "4 producers, own loggers: the call", CALL,
          figure("async-own", 4, "producer_ns"), None),
    Table("producer", ASYNC_NOTE + "4 producers, one logger: the call", CALL,
          figure("async-shared", 4, "producer_ns"), None),
    Table("end-to-end", ASYNC_NOTE + "1 producer: until all lines are in the file", NS,
          figure("async-shared", 1, "end_to_end_ns"), WRITE),
    Table("end-to-end", ASYNC_NOTE + "4 producers, own loggers: until all lines are in the file", NS,
          figure("async-own", 4, "end_to_end_ns"), WRITE),
    Table("end-to-end", ASYNC_NOTE + "4 producers, one logger: until all lines are in the file", NS,
          figure("async-shared", 4, "end_to_end_ns"), WRITE),
    Table("memory", ASYNC_NOTE + "1 producer: peak memory", "KB", figure("async-shared", 1, "peak_kb"), None),
    Table("memory", ASYNC_NOTE + "4 producers, own loggers: peak memory", "KB",
          figure("async-own", 4, "peak_kb"), None),
    Table("memory", ASYNC_NOTE + "4 producers, one logger: peak memory", "KB",
          figure("async-shared", 4, "peak_kb"), None),
    Table("rotation", "rotation every 10 MB over 4 files, every line flushed, 1 thread", NS,
          figure("rotation", 1, "message_ns"), WRITE),
    Table("rendering", "rendering in memory", CALL, figure("rendering", 1, "call_ns"), None),
    Table("rendering", "rendering in memory, with process and host", CALL,
          figure("rendering-process", 1, "call_ns"), None),
    Table("reopened file", "file opened and closed for every line, 1 thread", NS, REOPEN, REOPEN),
]

LIMIT_TITLES = [
    (WRITE, "write(2) of the finished line, 1 thread", NS),
    (WRITE_4, "write(2) of the finished line, 4 threads, one file", NS),
    (REOPEN, "open, append the finished line, close", NS),
    (CLOCK, "one reading of the clock", CALL),
    (LOCK, "one lock that nobody else wants", CALL),
    (LOAD, "one relaxed load and compare, 1 thread", CALL),
    (LOAD_4, "one relaxed load and compare, 4 threads", CALL),
]

BEST_OTHER = "best other"

# Our figure must be at most `factor` times what it stands against: a limit, or the best of the other loggers.
Target = namedtuple("Target", "title figure against factor")


def rejection_targets():
    for form in ("function", "macro"):
        for threads, load in ((1, LOAD), (4, LOAD_4)):
            ours = figure("rejected-" + form, threads, "call_ns")
            title = "rejected call, %s, %d thread%s" % (form, threads, "s" if threads > 1 else "")
            yield Target(title, ours, load, 1.5)
            yield Target(title, ours, BEST_OTHER, 1.0)


def asynchronous_targets():
    for workload, threads, title in (("async-shared", 1, "1 producer"), ("async-own", 4, "4 producers, own loggers"),
                                     ("async-shared", 4, "4 producers, one logger")):
        end_to_end = figure(workload, threads, "end_to_end_ns")
        yield Target("asynchronous, %s: the call" % title, figure(workload, threads, "producer_ns"), BEST_OTHER, 1.0)
        yield Target("asynchronous, %s: end to end" % title, end_to_end, WRITE, 1.2)
        yield Target("asynchronous, %s: end to end" % title, end_to_end, BEST_OTHER, 1.0)


TARGETS = [
    *rejection_targets(),
    Target("file, 1 thread", figure("sync-shared", 1, "message_ns"), WRITE, 1.15),
    Target("file, 1 thread", figure("sync-shared", 1, "message_ns"), BEST_OTHER, 1.0),
    Target("file, 4 threads, own loggers", figure("sync-own", 4, "message_ns"), BEST_OTHER, 1.0),
    Target("file, 4 threads, one logger", figure("sync-shared", 4, "message_ns"), BEST_OTHER, 1.0),
    *asynchronous_targets(),
    Target("rendering", figure("rendering", 1, "call_ns"), BEST_OTHER, 0.5),
    Target("reopened file", REOPEN, REOPEN, 1.2),
]


class Failure(Exception):
    """A program failed, or its output is not what it must be."""


class Results:
    """All measured values, by program and figure, in the order of the rounds."""

    def __init__(self):
        self.values = {}

    def add(self, program, measured, value):
        self.values.setdefault((program, measured), []).append(value)

    def of(self, program, measured):
        return self.values.get((program, measured), [])

    def median(self, program, measured):
        values = self.of(program, measured)
        return statistics.median(values) if values else None

    def best_other(self, measured):
        medians = [(self.median(other, measured), other) for other in OTHERS if self.of(other, measured)]
        return min(medians) if medians else (None, None)


def run_program(program, arguments):
    try:
        run = subprocess.run([program] + arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                             check=False, timeout=SECONDS_PER_PROGRAM)
    except subprocess.TimeoutExpired as timeout:
        raise Failure("%s %s does not come to an end" % (program.name, " ".join(arguments))) from timeout
    if run.returncode != 0:
        raise Failure("%s %s: %s" % (program.name, " ".join(arguments), run.stderr.strip() or run.returncode))
    return run.stdout.splitlines()


class Comparison:
    """The programs that were built, run in rounds."""

    def __init__(self, options):
        self.options = options
        self.results = Results()
        self.programs = {}
        self.workloads = {}
        for name in PROGRAMS:
            program = options.programs / ("compare_" + name)
            if program.exists():
                self.programs[name] = program
                self.workloads[name] = set(run_program(program, ["list"]))
            else:
                print("%s is left out: it was not built" % name, file=sys.stderr)

    def tasks(self):
        figures = [row[0] for row in LIMIT_TITLES] + [table.figure for table in TABLES]
        tasks = list(dict.fromkeys(measured.task for measured in figures))
        wanted = self.options.only
        return [task for task in tasks if not wanted or task.workload in wanted]

    def run(self):
        for number in range(self.options.rounds):
            print("round %d of %d" % (number + 1, self.options.rounds), file=sys.stderr, flush=True)
            for task in self.tasks():
                self.run_task(task, number)

    def run_task(self, task, number):
        """Every round starts with another program, so that none always runs behind the same one."""
        names = list(self.programs)
        first = number % len(names)
        for name in names[first:] + names[:first]:
            if task.workload in self.workloads[name]:
                self.measure(name, task)

    def measure(self, name, task):
        folder = self.options.folder / "written"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        arguments = [task.workload, str(task.threads), str(folder), str(self.options.divisor)]
        for line in run_program(self.programs[name], arguments):
            metric, value = line.split()
            self.results.add(name, Figure(task, metric), float(value))
        shutil.rmtree(folder)


def number(value):
    return "%.2f" % value if value < 100 else "%.0f" % value


def ratio(value, base):
    return "%.2f" % (value / base) if value is not None and base else "-"


class Report:
    """What a reader sees: printed and kept in a file."""

    def __init__(self, results):
        self.results = results
        self.lines = []

    def add(self, line=""):
        self.lines.append(line)

    def write_limits(self):
        self.add("The limits (median, lowest and highest round)")
        for measured, title, unit in LIMIT_TITLES:
            values = self.results.of(LIMITS, measured)
            if values:
                self.add("  %-52s %10s %10s %10s  %s" % (title, number(statistics.median(values)),
                                                         number(min(values)), number(max(values)), unit))
        self.add()

    def write_tables(self):
        for table in TABLES:
            self.write_table(table)

    def write_table(self, table):
        rows = [(self.results.median(name, table.figure), name) for name in [OURS] + OTHERS]
        rows = sorted(row for row in rows if row[0] is not None)
        if not rows:
            return
        self.add("%s (%s)" % (table.title, table.unit))
        self.add("  %-12s %10s %10s %10s %10s %10s" % ("", "median", "lowest", "highest", "to ours", "to limit"))
        limit = self.results.median(LIMITS, table.limit) if table.limit else None
        ours = self.results.median(OURS, table.figure)
        if limit:
            self.write_row("(limit)", self.results.of(LIMITS, table.limit), ours, limit)
        for _, name in rows:
            self.write_row(name, self.results.of(name, table.figure), ours, limit)
        self.add()

    def write_row(self, name, values, ours, limit):
        median = statistics.median(values)
        self.add("  %-12s %10s %10s %10s %10s %10s" % (name, number(median), number(min(values)),
                                                       number(max(values)), ratio(median, ours),
                                                       ratio(median, limit)))

    def write_targets(self):
        self.add("Targets (ours, divided by what it stands against)")
        for target in TARGETS:
            ours = self.results.median(OURS, target.figure)
            base, name = self.base_of(target)
            if ours is None or base is None:
                self.add("  %-48s not measured" % target.title)
                continue
            verdict = "met" if ours <= target.factor * base else "MISSED"
            self.add("  %-48s %-7s %6s to %-12s at most %.2f" % (target.title, verdict, ratio(ours, base), name,
                                                                 target.factor))
        self.add()

    def base_of(self, target):
        if target.against == BEST_OTHER:
            return self.results.best_other(target.figure)
        return self.results.median(LIMITS, target.against), "the limit"


def first_line_of(command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()[0]
    except (OSError, subprocess.CalledProcessError, IndexError):
        return "unknown"


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return "unknown"


def write_environment(report, options):
    report.add("processor    %s, %s cores" % (processor(), first_line_of(["nproc"])))
    report.add("system       %s" % first_line_of(["uname", "-srm"]))
    report.add("compiler     %s" % first_line_of(["c++", "--version"]))
    report.add("file system  %s" % first_line_of(["stat", "-f", "-c", "%T", str(options.folder)]))
    for package in PACKAGES:
        version = first_line_of(["dpkg-query", "-W", "-f", "${Version}", package])
        report.add("%-20s %s" % (package, version))
    report.add("rounds       %d, messages divided by %d" % (options.rounds, options.divisor))
    report.add()


def write_raw(path, results):
    with open(path, "w", newline="", encoding="utf-8") as stream:
        writer = csv.writer(stream)
        writer.writerow(["program", "workload", "threads", "figure", "round", "value"])
        for (program, measured), values in results.values.items():
            for index, value in enumerate(values):
                writer.writerow([program, *measured.task, measured.metric, index + 1, value])


def write_summary(path, results):
    with open(path, "w", newline="", encoding="utf-8") as stream:
        writer = csv.writer(stream)
        writer.writerow(["program", "workload", "threads", "figure", "median", "lowest", "highest"])
        for (program, measured), values in results.values.items():
            writer.writerow([program, *measured.task, measured.metric, statistics.median(values), min(values),
                             max(values)])


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", type=pathlib.Path, required=True, help="folder of the built programs")
    parser.add_argument("--results", type=pathlib.Path, required=True, help="folder for the figures and plots")
    parser.add_argument("--folder", type=pathlib.Path, help="folder for the logs; the results' by default")
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--divisor", type=int, default=1, help="how much smaller the workloads are")
    parser.add_argument("--only", nargs="+", metavar="WORKLOAD", help="runs only these, and the limits among them")
    options = parser.parse_args()
    options.folder = options.folder or options.results
    return options


def main():
    options = parse_options()
    options.results.mkdir(parents=True, exist_ok=True)
    comparison = Comparison(options)
    try:
        comparison.run()
    except Failure as failure:
        print(failure, file=sys.stderr)
        return 1
    report = Report(comparison.results)
    write_environment(report, options)
    report.write_limits()
    report.write_tables()
    report.write_targets()
    print("\n".join(report.lines))
    (options.results / "report.txt").write_text("\n".join(report.lines), encoding="utf-8")
    write_raw(options.results / "raw.csv", comparison.results)
    write_summary(options.results / "summary.csv", comparison.results)
    write_plots(options.results, TABLES, [OURS] + OTHERS, comparison.results)
    return 0


if __name__ == "__main__":
    sys.exit(main())
