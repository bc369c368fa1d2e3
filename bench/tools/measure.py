#!/usr/bin/env python3
"""Measures the command zav-log: cat beside grep -c on the same file, and how soon follow shows a line.

usage: measure.py PROGRAM [--megabytes N] [--rounds N] [--lines N]
"""

import argparse
import os
import resource
import statistics
import subprocess
import tempfile
import time


def write_log(path, megabytes):
    """A file of lines like the library's, a tenth of a second apart."""
    with open(path, "w") as log:
        number = 0
        while log.tell() < megabytes * 1_000_000:
            seconds, tenths = divmod(number, 10)
            clock = "%02d:%02d:%02d:%d00000" % (seconds // 3600 % 24, seconds // 60 % 60, seconds % 60, tenths)
            day = 1 + seconds // 86400 % 28
            level = "INFO" if number % 10 else "WARNING"
            log.write("2013.05.%02d %s net.tcp Socket.cpp:120 %s connected to the backend server, request %d\n"
                      % (day, clock, level, number))
            number += 1


def seconds_of(command):
    """Runs a command whose output goes through a pipe, as in a shell."""
    start = time.monotonic()
    with subprocess.Popen(command, stdout=subprocess.PIPE) as process:
        while process.stdout.read(1 << 20):
            pass
    assert process.returncode == 0, command
    return time.monotonic() - start


def compare_cat(program, folder, megabytes, rounds):
    path = os.path.join(folder, "big.log")
    write_log(path, megabytes)
    commands = {"grep -c INFO": ["grep", "-c", "INFO", path],
                "zav-log cat": [program, "cat", path],
                "zav-log cat --json": [program, "cat", "--json", path]}
    times = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            times[name].append(seconds_of(command))
    base = statistics.median(times["grep -c INFO"])
    for name, values in times.items():
        median = statistics.median(values)
        print("%-20s %6.2f s for %d MB (%.2f-%.2f), %.1f times grep"
              % (name, median, megabytes, min(values), max(values), median / base))
    print("most memory of a command: %d KB" % resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)


def measure_follow(program, folder, lines):
    path = os.path.join(folder, "live.log")
    open(path, "w").close()
    delays = []
    with subprocess.Popen([program, "follow", path], stdout=subprocess.PIPE, text=True) as follower:
        with open(path, "a") as log:
            for number in range(lines + 1):
                time.sleep(0.05 + 0.037 * (number % 10))
                start = time.monotonic()
                log.write("2013.05.07 14:03:27:123000 net INFO line %d\n" % number)
                log.flush()
                assert follower.stdout.readline().endswith("line %d\n" % number)
                delays.append(time.monotonic() - start)
        follower.terminate()
    delays = delays[1:]  # the first one waits for the program's start
    print("zav-log follow       %6.0f ms until a line shows, median of %d; at most %.0f ms"
          % (statistics.median(delays) * 1000, lines, max(delays) * 1000))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("--megabytes", type=int, default=1000)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--lines", type=int, default=50)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        compare_cat(options.program, folder, options.megabytes, options.rounds)
        measure_follow(options.program, folder, options.lines)


if __name__ == "__main__":
    main()
