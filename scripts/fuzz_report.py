#!/usr/bin/env python3
"""Writes the table of fuzz targets in docs/testing.md: how often each ran, and what of its program it reaches.

usage: fuzz_report.py

Runs are added up from build/fuzz/runs.txt, to which ./dev fuzz appends. What is reached are the edges of the control
flow, as libFuzzer counts them, of all that is linked into the target: the code under test, what the target compares it
with, and what neither of them calls. It is read from the log of the target's last run, which begins with everything
that was found before.
"""
import collections
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs/testing.md"
FUZZ = ROOT / "build/fuzz"
BEGIN = "<!-- Written by `./dev fuzz --report`. -->\n"
END = "<!-- The end of the table. -->\n"


def runs_by_target():
    runs = collections.Counter()
    for line in (FUZZ / "runs.txt").read_text().splitlines():
        target, count = line.split()
        runs[target] += int(count)
    return runs


def reached(target):
    """Edges of the program, those reached and all."""
    text = (FUZZ / f"{target}.log").read_text(errors="replace")
    return max(map(int, re.findall(r"\bcov: (\d+)", text))), int(re.search(r"\((\d+) inline 8-bit counters\)", text)[1])


def table():
    runs = runs_by_target()
    rows = ["| target | runs | edges reached |", "|---|---|---|"]
    for source in sorted((ROOT / "tests/fuzz").glob("*_fuzz.cpp")):
        target = source.name[:-len("_fuzz.cpp")]
        covered, total = reached(target)
        rows.append(f"| `{target}` | {runs[target]:,} | {covered:,} of {total:,} |")
    rows.append(f"| all | {sum(runs.values()):,} | |")
    return "\n".join(rows) + "\n"


def main():
    if len(sys.argv) != 1:
        sys.exit(__doc__)
    text = DOCUMENT.read_text(encoding="utf-8")
    before, begin, rest = text.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f"fuzz_report.py: {DOCUMENT} has no place for the table")
    DOCUMENT.write_text(before + begin + "\n" + table() + "\n" + end + after, encoding="utf-8")


if __name__ == "__main__":
    main()
