"""The measured values."""

import csv
import statistics

from rows import ABSENT, LIMITS, LOGGERS, OTHERS


class Results:
    """All values, by program and figure, in the order of the rounds."""

    def __init__(self):
        self.values = {}
        self.failed = set()

    def leave_out(self, program, task):
        """Forgets a program's figures of a task in which it has failed."""
        self.failed.add((program, task))
        self.values = {(name, measured): values for (name, measured), values in self.values.items()
                       if (name, measured.task) != (program, task)}

    def add(self, program, measured, value):
        self.values.setdefault((program, measured), []).append(value)

    def of(self, program, measured):
        return self.values.get((program, measured), [])

    def why_absent(self, program, measured):
        """\\return why a program has no figure, if that is known"""
        if (program, measured.task) in self.failed:
            return "failed in this run, and has no figure"
        return ABSENT.get((program, measured.task.workload))

    def loggers(self):
        """\\return those that were run"""
        run = {program for program, _ in self.values}
        return [logger for logger in LOGGERS if logger in run]

    def median(self, program, measured):
        values = self.of(program, measured)
        return statistics.median(values) if values else None

    def limit(self, measured):
        return self.median(LIMITS, measured) if measured else None

    def best_other(self, measured):
        """\\return the lowest median of the other loggers, and whose it is"""
        medians = [(self.median(other, measured), other) for other in OTHERS if self.of(other, measured)]
        return min(medians) if medians else (None, None)

    def write_rounds(self, path):
        rows = [(program, *measured.task, measured.metric, index + 1, value)
                for (program, measured), values in self.values.items() for index, value in enumerate(values)]
        write_csv(path, ["round", "value"], rows)

    def write_summary(self, path):
        rows = [(program, *measured.task, measured.metric, statistics.median(values), min(values), max(values))
                for (program, measured), values in self.values.items()]
        write_csv(path, ["median", "min", "max"], rows)


def write_csv(path, columns, rows):
    with open(path, "w", newline="", encoding="utf-8") as stream:
        writer = csv.writer(stream, lineterminator="\n")
        writer.writerow(["program", "workload", "threads", "figure"] + columns)
        writer.writerows(rows)
