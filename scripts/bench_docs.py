#!/usr/bin/env python3
"""Writes the figures of docs/benchmarks.md.

usage: bench_docs.py FIGURES

FIGURES is the JSON document that clusutil_bench writes with --json, of all parts at the large scale: anything less
would drop what it did not measure. What stands above the mark in the file stays.
"""
import json
import sys
from pathlib import Path

DOCUMENT = Path(__file__).resolve().parent.parent / "docs/benchmarks.md"
MARK = "<!-- Below: written by `./dev bench --update-docs`. -->"
WIDTH = 120


def number(value):
    """As many digits as say something."""
    if abs(value) >= 100 or value == int(value):
        return f"{value:,.0f}"
    return f"{value:.1f}" if abs(value) >= 10 else f"{value:.2f}" if abs(value) >= 0.1 else f"{value:.4f}"


def wrapped(text):
    lines = [""]
    for word in text.split():
        if lines[-1] and len(lines[-1]) + 1 + len(word) > WIDTH:
            lines.append("")
        lines[-1] += (" " if lines[-1] else "") + word
    return lines


def table(subject):
    """A row for each measure, a column for each size."""
    figures = subject["figures"]
    sizes = sorted({figure["size"] for figure in figures})
    rows = {}
    for figure in figures:
        rows.setdefault((figure["measure"], figure["unit"]), {})[figure["size"]] = figure
    heads = [f"{size:,} {subject['things']}" if size else "" for size in sizes]
    lines = ["| measure | " + " | ".join(heads) + " | goal |", "|---|" + "--:|" * (len(sizes) + 1)]
    for (measure, unit), by_size in rows.items():
        cells = [number(by_size[size]["value"]) if size in by_size else "" for size in sizes]
        goals = [figure["goal"] for figure in by_size.values() if "goal" in figure]
        name = f"{measure}, {unit}" if unit else measure
        lines.append(f"| {name} | " + " | ".join(cells) + f" | {'at most ' + number(goals[-1]) if goals else ''} |")
    return lines


def text_of(document):
    machine = document["machine"]
    lines = wrapped(f"Version {document['version']}, measured on {document['date']}: {machine['processor']}, "
                    f"{machine['processors']} processors, {machine['system']}; processor times from "
                    f"{machine['clock']}, of processes from {machine['processClock']}.")
    for subject in document["subjects"]:
        lines += ["", f"## {subject['subject']}", ""] + wrapped(subject["explanation"]) + [""] + table(subject)
    return "\n".join(lines) + "\n"


def main(arguments):
    if len(arguments) != 1:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    document = json.loads(Path(arguments[0]).read_text(encoding="utf-8"))
    if (document["parts"], document["scale"]) != ("all", "large"):
        print(f"{arguments[0]}: not of all parts at the large scale; {DOCUMENT} stays as it is", file=sys.stderr)
        return 1
    text = DOCUMENT.read_text(encoding="utf-8")
    if MARK not in text:
        print(f"{DOCUMENT}: the mark is missing: {MARK}", file=sys.stderr)
        return 1
    DOCUMENT.write_text(text[:text.index(MARK)] + MARK + "\n\n" + text_of(document), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
