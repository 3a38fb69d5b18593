#!/usr/bin/env python3
"""Writes the table of fuzz targets in docs/testing.md: how often each ran, and what of its program it reaches.

usage: fuzz_report.py

To the runs of the table those of build/fuzz/runs.txt are added, to which ./dev fuzz appends and which then begins anew: so
runs of several trees add up. What is reached are the edges of the control flow, as libFuzzer counts them, of all that is
linked into the target: the code under test, what the target compares it with, and what neither of them calls. It is read
from the log of the target's last run in this tree, which begins with everything that was found before; of the same program
what another tree has reached counts, too. A target that has not run here keeps its row.
"""
import collections
import re
import sys
from pathlib import Path

sys.dont_write_bytecode = True

ROOT = Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs/testing.md"
FUZZ = ROOT / "build/fuzz"
BEGIN = "<!-- Written by `./dev fuzz --report`. -->\n"
END = "<!-- The end of the table. -->\n"


ROW = re.compile(r"\| `(\w+)` \| ([\d,]+) \| ([\d,]+) of ([\d,]+) \|")


def runs_by_target(text):
    runs = collections.Counter()
    for line in text.splitlines():
        target, count = line.split()
        runs[target] += int(count)
    return runs


def rows_of(text):
    """target -> runs, edges reached and all, as the table has them."""
    return {match[1]: tuple(int(number.replace(",", "")) for number in match.groups()[1:]) for match in ROW.finditer(text)}


def reached(text):
    """Edges of the program, those reached and all, as the log of a run has them."""
    return max(map(int, re.findall(r"\bcov: (\d+)", text))), int(re.search(r"\((\d+) inline 8-bit counters\)", text)[1])


def merged(row, runs, log):
    """A row with the runs added; `log` is that of the last run here, None when there is none."""
    before, covered, total = row or (0, 0, 0)
    if log is not None:
        here = reached(log)
        covered, total = (max(covered, here[0]), total) if here[1] == total else here
    return before + runs, covered, total


def table(before):
    rows = rows_of(before)
    file = FUZZ / "runs.txt"
    runs = runs_by_target(file.read_text() if file.is_file() else "")
    lines = ["| target | runs | edges reached |", "|---|---|---|"]
    all_runs = 0
    for source in sorted((ROOT / "tests/fuzz").glob("*_fuzz.cpp")):
        target = source.name[:-len("_fuzz.cpp")]
        log = FUZZ / f"{target}.log"
        count, covered, total = merged(rows.get(target), runs[target],
                                       log.read_text(errors="replace") if log.is_file() and runs[target] else None)
        all_runs += count
        lines.append(f"| `{target}` | {count:,} | {covered:,} of {total:,} |")
    lines.append(f"| all | {all_runs:,} | |")
    return "\n".join(lines) + "\n"


def main():
    if len(sys.argv) != 1:
        sys.exit(__doc__)
    text = DOCUMENT.read_text(encoding="utf-8")
    before, begin, rest = text.partition(BEGIN)
    shown, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f"fuzz_report.py: {DOCUMENT} has no place for the table")
    DOCUMENT.write_text(before + begin + "\n" + table(shown) + "\n" + end + after, encoding="utf-8")
    (FUZZ / "runs.txt").unlink(missing_ok=True) # they are in the table


if __name__ == "__main__":
    main()
