#!/usr/bin/env -S python3 -B
"""Puts the report of a run into docs/performance.md, and its figures and plot beside it."""

import pathlib
import shutil
import sys

DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"
BEGIN = "<!-- Written by bench/compare/publish.py: begin -->\n"
END = "<!-- Written by bench/compare/publish.py: end -->\n"


def main(results):
    page = DOCS / "performance.md"
    before, rest = page.read_text(encoding="utf-8").split(BEGIN)
    after = rest.split(END)[1]
    report = (results / "report.md").read_text(encoding="utf-8").rstrip()
    page.write_text("%s%s\n%s\n\n%s%s" % (before, BEGIN, report, END, after), encoding="utf-8")
    folder = DOCS / "performance"
    folder.mkdir(exist_ok=True)
    for name in ("summary.csv", "comparison.svg"):
        shutil.copyfile(results / name, folder / name)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: bench/compare/publish.py RESULTS    (the folder that scripts/bench wrote)")
    main(pathlib.Path(sys.argv[1]))
