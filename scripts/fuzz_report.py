#!/usr/bin/env python3
"""Writes the table of fuzz targets in docs/testing.md: how often each ran, and what of the project's code it reaches.

usage: fuzz_report.py COVERAGE_TREE

Runs are added up from build/fuzz/runs.txt, to which ./dev fuzz appends. What is reached is measured by running the
inputs found so far, and the committed ones, through programs of COVERAGE_TREE that are built for it: lines and branches
of the project's own files that are linked into the target, its own and the stand-ins' left out.
"""
import collections
import json
import os
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs/testing.md"
BEGIN = "<!-- Written by `./dev fuzz --report`. -->\n"
END = "<!-- The end of the table. -->\n"


def runs_by_target():
    runs = collections.Counter()
    log = ROOT / "build/fuzz/runs.txt"
    for line in log.read_text().splitlines() if log.exists() else []:
        target, count = line.split()
        runs[target] += int(count)
    return runs


def run(command, **options):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False, **options)
    if result.returncode != 0:
        sys.exit(f"fuzz_report.py: {' '.join(map(str, command))} fails:\n{result.stderr[-2000:]}")
    return result.stdout


def reached(tree, target):
    """Lines and branches of the project: (covered, all) of each."""
    program = tree / "bin" / f"fuzz_{target}"
    raw = tree / f"{target}.profraw"
    merged = tree / f"{target}.profdata"
    found = ROOT / "build/fuzz/corpus" / target
    found.mkdir(parents=True, exist_ok=True)
    inputs = [file for folder in (ROOT / "tests/fuzz/corpus" / target, found) for file in folder.iterdir()]
    # Inputs that are named as files are run once each, and nothing is made of them.
    for start in range(0, len(inputs), 500):
        run([program, *inputs[start:start + 500]], env={**os.environ, "LLVM_PROFILE_FILE": f"{raw}.{start}"})
    parts = sorted(tree.glob(f"{target}.profraw.*"))
    run(["llvm-profdata", "merge", "-o", merged, *parts])
    for part in parts:
        part.unlink()
    exported = json.loads(run(["llvm-cov", "export", "-summary-only", f"-instr-profile={merged}", program]))
    totals = collections.Counter()
    for file in exported["data"][0]["files"]:
        name = Path(os.path.normpath(file["filename"]))
        if ROOT in name.parents and ROOT / "tests" not in name.parents:
            for kind in ("lines", "branches"):
                totals[kind] += file["summary"][kind]["count"]
                totals[kind, "covered"] += file["summary"][kind]["covered"]
    return [(totals[kind, "covered"], totals[kind]) for kind in ("lines", "branches")]


def share(covered, total):
    return f"{100.0 * covered / total:.0f} % of {total:,}" if total else "none"


def table(tree):
    runs = runs_by_target()
    rows = ["| target | runs | lines | branches |", "|---|---|---|---|"]
    for source in sorted((ROOT / "tests/fuzz").glob("*_fuzz.cpp")):
        target = source.name[:-len("_fuzz.cpp")]
        lines, branches = reached(tree, target)
        rows.append(f"| `{target}` | {runs[target]:,} | {share(*lines)} | {share(*branches)} |")
    rows.append(f"| all | {sum(runs.values()):,} | | |")
    return "\n".join(rows) + "\n"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    text = DOCUMENT.read_text(encoding="utf-8")
    before, begin, rest = text.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f"fuzz_report.py: {DOCUMENT} has no place for the table")
    DOCUMENT.write_text(before + begin + "\n" + table(Path(sys.argv[1]).resolve()) + "\n" + end + after, encoding="utf-8")


if __name__ == "__main__":
    main()
