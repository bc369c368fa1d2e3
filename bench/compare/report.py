"""What a reader sees of a run: a text for the terminal, and the same as Markdown for docs/performance.md."""

import statistics
from collections import namedtuple

from rows import BEST_OTHER, GROUPS, LIMIT_ROWS, LIMITS, LOGGERS, OURS, Ours, Value, name_of, targets

Verdict = namedtuple("Verdict", "title ratio factor against met")


def number(value):
    return "%.2f" % value if value < 100 else "%.0f" % value


def ratio(value, base):
    return "%.2f" % (value / base) if value is not None and base else "-"


def measured_groups(results):
    """\\return the groups with the rows of which at least one logger has a figure"""
    for group in GROUPS:
        rows = [row for row in group.rows if any(results.of(logger, row.figure) for logger in LOGGERS)]
        if rows:
            yield group._replace(rows=rows)


def base_of(target, results):
    """\\return what our figure is divided by, and its name; None where it was not measured"""
    if isinstance(target.against, Value):
        return target.against.value, "%d %s" % target.against
    if isinstance(target.against, Ours):
        return results.median(OURS, target.against.figure), target.against.name
    if target.against == BEST_OTHER:
        return results.best_other(target.figure)
    if target.against in LOGGERS:
        return results.median(target.against, target.figure), target.against
    return results.limit(target.against), LIMITS


def verdicts(results):
    """\\return a verdict on each target that was measured"""
    for target in targets():
        ours = results.median(OURS, target.figure)
        base, against = base_of(target, results)
        if ours is not None and base is not None:
            yield Verdict(target.title, ours / base, target.factor, name_of(against), ours <= target.factor * base)


class TextReport:
    def __init__(self, results, environment):
        self.results = results
        self.loggers = results.loggers()
        self.lines = ["%-20s %s" % line for line in environment] + [""]
        self.add_limits()
        for group in measured_groups(results):
            for row in group.rows:
                self.add_row(group, row)
        self.add_targets()

    def __str__(self):
        return "\n".join(self.lines)

    def add(self, line=""):
        self.lines.append(line)

    def add_limits(self):
        self.add("%-52s %10s %10s %10s" % ("The limits", "median", "min", "max"))
        for title, measured, unit in LIMIT_ROWS:
            values = self.results.of(LIMITS, measured)
            if values:
                self.add("  %-50s %10s %10s %10s  %s" % (title, number(statistics.median(values)), number(min(values)),
                                                         number(max(values)), unit))
        self.add()

    def add_row(self, group, row):
        self.add("%s, %s (%s)" % (group.title, row.label, group.unit))
        self.add("  %-12s %10s %10s %10s %10s %10s" % ("", "median", "min", "max", "to ours", "to limit"))
        limit = self.results.limit(row.limit)
        ours = self.results.median(OURS, row.figure)
        if limit:
            self.add_values(LIMITS, row.limit, ours, limit)
        present = [logger for logger in self.loggers if self.results.of(logger, row.figure)]
        for logger in sorted(present, key=lambda logger: self.results.median(logger, row.figure)):
            self.add_values(logger, row.figure, ours, limit)
        for logger in self.loggers:
            if logger not in present:
                reason = self.results.why_absent(logger, row.figure) or "was not run"
                self.add("  %-12s %s" % (name_of(logger), reason))
        self.add()

    def add_values(self, program, measured, ours, limit):
        values = self.results.of(program, measured)
        median = statistics.median(values)
        self.add("  %-12s %10s %10s %10s %10s %10s" % (name_of(program), number(median), number(min(values)),
                                                       number(max(values)), ratio(median, ours), ratio(median, limit)))

    def add_targets(self):
        self.add("Targets: ours, divided by what it stands against")
        for verdict in verdicts(self.results):
            self.add("  %-52s %5.2f to %-10s at most %.2f  %s" % (verdict.title, verdict.ratio, verdict.against,
                                                                  verdict.factor, "met" if verdict.met else "MISSED"))


class MarkdownReport:
    def __init__(self, results, environment):
        self.results = results
        self.loggers = results.loggers()
        self.lines = []
        self.add_table(["The run", ""], environment)
        self.add("### Targets", "")
        self.add_table(["", "our median", "at most", ""],
                       [(verdict.title, "%.2f × %s" % (verdict.ratio, verdict.against), "%.2f ×" % verdict.factor,
                         "met" if verdict.met else "**missed**") for verdict in verdicts(results)])
        self.add("### All rows", "",
                 "Medians, with the minimum and the maximum of the rounds; ×: the median divided by ours.", "")
        self.add_table(["The limits", ""], self.limits())
        for group in measured_groups(results):
            self.add_group(group)

    def __str__(self):
        return "\n".join(self.lines)

    def add(self, *lines):
        self.lines += lines

    def add_table(self, head, rows):
        self.add("| %s |" % " | ".join(head), "|%s" % ("---|" * len(head)))
        self.add(*["| %s |" % " | ".join(row) for row in rows], "")

    def limits(self):
        for title, measured, unit in LIMIT_ROWS:
            if self.results.of(LIMITS, measured):
                yield title, "%s %s" % (self.spread(LIMITS, measured), unit)

    def add_group(self, group):
        limits = [LIMITS] if any(row.limit for row in group.rows) else []
        head = ["%s (%s)" % (group.title, group.unit)] + [name_of(program) for program in limits + self.loggers]
        rows = []
        for row in group.rows:
            cells = [self.cell(LIMITS, row.limit, row.figure)] if limits else []
            cells += [self.cell(logger, row.figure, row.figure) for logger in self.loggers]
            rows.append([row.label] + cells)
        self.add_table(head, rows)
        self.add_absent(group)

    def cell(self, program, measured, ours):
        if not self.results.of(program, measured):
            return "–"
        spread = self.spread(program, measured)
        if program == OURS:
            return "**%s**" % spread
        return "%s ×%s" % (spread, ratio(self.results.median(program, measured), self.results.median(OURS, ours)))

    def spread(self, program, measured):
        values = self.results.of(program, measured)
        return "%s (%s–%s)" % (number(statistics.median(values)), number(min(values)), number(max(values)))

    def add_absent(self, group):
        reasons = {}
        for row in group.rows:
            for logger in self.loggers:
                reason = self.results.why_absent(logger, row.figure)
                if reason:
                    reasons.setdefault((logger, reason), []).append(row.label)
        for (logger, reason), labels in reasons.items():
            where = "" if len(labels) == len(group.rows) else " (%s)" % "; ".join(labels)
            self.add("- %s %s%s." % (name_of(logger), reason, where))
        if reasons:
            self.add("")
