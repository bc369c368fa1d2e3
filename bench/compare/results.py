"""The measured values."""

import csv
import statistics

from rows import LIMITS, LOGGERS, OTHERS


class Results:
    """All values, by program and figure, in the order of the rounds."""

    def __init__(self):
        self.values = {}

    def add(self, program, measured, value):
        self.values.setdefault((program, measured), []).append(value)

    def of(self, program, measured):
        return self.values.get((program, measured), [])

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
