#!/usr/bin/env -S python3 -B
"""Runs the comparison programs in interleaved rounds and reports medians, ratios and targets."""

import argparse
import pathlib
import shutil
import subprocess
import sys

import environment
import rows
from plots import write_plot
from report import MarkdownReport, TextReport
from results import Results

SECONDS_PER_PROGRAM = 300


class Failure(Exception):
    """A program failed, or its output is not what it must be."""


def run_program(program, *arguments):
    command = " ".join([program.name, *arguments])
    try:
        run = subprocess.run([program, *arguments], capture_output=True, text=True, check=False,
                             timeout=SECONDS_PER_PROGRAM)
    except subprocess.TimeoutExpired as timeout:
        raise Failure("%s does not come to an end" % command) from timeout
    if run.returncode != 0:
        # Some loggers repeat a warning for every line.
        raise Failure("%s: %s" % (command, run.stderr.strip()[-2000:] or run.returncode))
    return run.stdout.splitlines()


class Comparison:
    """The programs that were built, run in rounds."""

    def __init__(self, options):
        self.options = options
        self.results = Results()
        self.programs = {}
        self.workloads = {}
        for name in options.loggers:
            program = options.programs / ("compare_" + name)
            if program.exists():
                self.programs[name] = program
                self.workloads[name] = set(run_program(program, "list"))
            else:
                print("%s is left out: it was not built" % name, file=sys.stderr)

    def run(self):
        for index in range(self.options.rounds):
            print("round %d of %d" % (index + 1, self.options.rounds), file=sys.stderr, flush=True)
            for task in rows.tasks(self.options.only):
                self.run_task(task, index)

    def run_task(self, task, index):
        """Every round starts with another program, so that none always runs behind the same one."""
        names = list(self.programs)
        first = index % len(names)
        for name in names[first:] + names[:first]:
            if task.workload in self.workloads[name] and (name, task) not in self.results.failed:
                self.measure(name, task)

    def measure(self, name, task):
        """Another logger that fails once is left out of the row from then on, and the report says so."""
        try:
            self.run_once(name, task)
        except Failure as failure:
            if name in (rows.LIMITS, rows.OURS):
                raise
            print("%s: left out of this row" % failure, file=sys.stderr, flush=True)
            self.results.leave_out(name, task)

    def run_once(self, name, task):
        folder = self.options.folder / "written"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        arguments = task.workload, str(task.threads), str(folder), str(self.options.divisor)
        for line in run_program(self.programs[name], *arguments):
            metric, value = line.split()
            self.results.add(name, rows.Figure(task, metric), float(value))
        shutil.rmtree(folder)


def positive(text):
    value = int(text)
    if value < 1:
        raise argparse.ArgumentTypeError("%s is not above 0" % text)
    return value


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", type=pathlib.Path, required=True, help="folder of the built programs")
    parser.add_argument("--results", type=pathlib.Path, required=True, help="folder for the figures and the plot")
    parser.add_argument("--folder", type=pathlib.Path, help="folder for the logs; the results' by default")
    parser.add_argument("--rounds", type=positive, default=5)
    parser.add_argument("--divisor", type=positive, default=1, help="how much smaller the workloads are")
    parser.add_argument("--only", nargs="+", metavar="WORKLOAD", choices=rows.workloads(),
                        help="only these, with their limits: " + ", ".join(rows.workloads()))
    parser.add_argument("--loggers", nargs="+", metavar="LOGGER", choices=rows.PROGRAMS, default=rows.PROGRAMS,
                        help="only these: " + ", ".join(rows.PROGRAMS))
    parser.add_argument("--quill", type=pathlib.Path, help="folder of quill's headers, for its version")
    parser.add_argument("--before", help="what the program \"before\" was built from")
    options = parser.parse_args()
    options.folder = options.folder or options.results
    return options


def write(options, results):
    described = list(environment.describe(options.folder, options.quill))
    if options.before:
        described.append(("before", options.before))
    described.append(("rounds", str(options.rounds)))
    if options.divisor > 1:
        described.append(("quick run", "messages divided by %d" % options.divisor))
    text = str(TextReport(results, described))
    print(text)
    (options.results / "report.txt").write_text(text + "\n", encoding="utf-8")
    (options.results / "report.md").write_text(str(MarkdownReport(results, described)), encoding="utf-8")
    results.write_rounds(options.results / "rounds.csv")
    results.write_summary(options.results / "summary.csv")
    write_plot(options.results, results)


def main():
    options = parse_options()
    options.results.mkdir(parents=True, exist_ok=True)
    comparison = Comparison(options)
    try:
        comparison.run()
    except Failure as failure:
        print(failure, file=sys.stderr)
        return 1
    write(options, comparison.results)
    return 0


if __name__ == "__main__":
    sys.exit(main())
