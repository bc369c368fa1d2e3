#!/usr/bin/env -S python3 -B
"""What each further logging call costs to compile: processor time, and bytes of code and data."""

import argparse
import pathlib
import resource
import statistics
import subprocess
import sys
import tempfile
from collections import namedtuple

# A kind of call, its maximum cost, and the call itself: no two calls of a program are alike.
Kind = namedtuple("Kind", "title header most_ms most_bytes call")
Cost = namedtuple("Cost", "milliseconds bytes")

VALUES = ["number, seconds, text", "text, number, letter", "big, flag, seconds", "name, number, number"]


def formatted(index):
    return 'ZAV_LOGF_INFO(logger, "user {} left %d after {} s from {}", %s);' % (index, VALUES[index % len(VALUES)])


def streamed(index):
    first, second, third = VALUES[index % len(VALUES)].split(", ")
    return 'ZAV_LOG_INFO(logger, "user " << %s << " left %d after " << %s << " s from " << %s);' % (
        first, index, second, third)


KINDS = [
    Kind("ZAV_LOGF_INFO, 3 values", "log/LogFormat.h", 6, 350, formatted),
    Kind("ZAV_LOG_INFO, 3 values", "log/LogMacros.h", None, None, streamed),
]

PROGRAM = """\
#include "{header}"
#include <string>
void use(ZAV::Log::Logger& logger, int number, double seconds, const char* text, char letter, unsigned long big,
         bool flag, const std::string& name);
void use(ZAV::Log::Logger& logger, int number, double seconds, const char* text, char letter, unsigned long big,
         bool flag, const std::string& name) {{
    {calls}
    (void)logger, (void)number, (void)seconds, (void)text, (void)letter, (void)big, (void)flag, (void)name;
}}
"""


def loaded_bytes(path):
    """\\return what a program is longer by with this object file: code, constants, tables to unwind, and data"""
    size = subprocess.run(["size", "--format=berkeley", path], capture_output=True, text=True, check=True)
    text, data = size.stdout.splitlines()[1].split()[:2]
    return int(text) + int(data)


def compile_program(compiler, includes, source):
    """\\return what it cost; processor time, since that of the clock depends on what else the machine does"""
    output = source.with_suffix(".o")
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run([compiler, "-std=c++17", "-O2", "-c", *includes, "-o", output, source], check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return Cost(1000 * seconds, loaded_bytes(output))


class Programs:
    """The same program with all calls and with none."""

    def __init__(self, folder, kind, calls):
        self.calls = calls
        self.sources = []
        for count in (0, calls):
            source = folder / ("%s-%d.cpp" % (pathlib.Path(kind.header).stem, count))
            text = "\n    ".join(kind.call(index) for index in range(count))
            source.write_text(PROGRAM.format(header=kind.header, calls=text), encoding="utf-8")
            self.sources.append(source)

    def cost_of_a_call(self, compiler, includes):
        none, all_calls = [compile_program(compiler, includes, source) for source in self.sources]
        return Cost(*[(most - least) / self.calls for least, most in zip(none, all_calls)])


def verdict(value, most):
    return "" if most is None else "at most %d: %s" % (most, "met" if value <= most else "MISSED")


def report(kind, costs, calls):
    print("%s: each of %d further calls, median of %d" % (kind.title, calls, len(costs)))
    for unit, values, most in [("ms", [cost.milliseconds for cost in costs], kind.most_ms),
                               ("bytes", [cost.bytes for cost in costs], kind.most_bytes)]:
        median = statistics.median(values)
        line = "  %8.1f %-6s (%.1f to %.1f)  %s" % (median, unit, min(values), max(values), verdict(median, most))
        print(line.rstrip())


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--include", type=pathlib.Path, action="append", required=True, help="a folder of headers")
    parser.add_argument("--compiler", default="g++")
    parser.add_argument("--calls", type=int, default=100)
    parser.add_argument("--rounds", type=int, default=5)
    return parser.parse_args()


def main():
    options = parse_options()
    includes = ["-I%s" % folder for folder in options.include]
    with tempfile.TemporaryDirectory() as name:
        programs = [Programs(pathlib.Path(name), kind, options.calls) for kind in KINDS]
        costs = [[] for _ in KINDS]
        for _ in range(options.rounds):
            for index, pair in enumerate(programs):
                costs[index].append(pair.cost_of_a_call(options.compiler, includes))
    for kind, measured in zip(KINDS, costs):
        report(kind, measured, options.calls)


if __name__ == "__main__":
    sys.exit(main())
