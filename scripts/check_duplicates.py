#!/usr/bin/env python3
"""Checks that no six equal lines of code stand twice in the product.

usage: check_duplicates.py

Lines are compared without the blanks around them; includes, comments and lines without a letter or digit do not count.
"""
import re
import sys
from collections import defaultdict

sys.dont_write_bytecode = True
from sources import ROOT, code_only, product_sources, report  # noqa: E402

LINES = 6
FOLDERS = ("src", "simulator", "tools", "support", "common")


def counted_lines(text):
    """(line number, line) of the lines that count."""
    return [(number, line.strip()) for number, line in enumerate(code_only(text, keep_texts=True).split("\n"), 1)
            if re.search(r"\w", line) and not re.match(r"\s*#\s*include\b", line)]


def check(texts):
    """The problems of the files, given as path -> text: one for each longest run of equal lines."""
    files = {name: counted_lines(text) for name, text in texts.items()}
    places = defaultdict(list)  # LINES lines -> where they begin
    for name, lines in files.items():
        for index in range(len(lines) - LINES + 1):
            places[tuple(line for _, line in lines[index:index + LINES])].append((name, index))

    problems = []
    reported = set()  # pairs of beginnings inside a run that was reported
    for name, lines in files.items():
        for index in range(len(lines) - LINES + 1):
            here = (name, index)
            for there in places[tuple(line for _, line in lines[index:index + LINES])]:
                if there <= here or (here, there) in reported:
                    continue
                length = 0
                other = files[there[0]]
                while (index + length < len(lines) and there[1] + length < len(other)
                       and lines[index + length][1] == other[there[1] + length][1]):
                    reported.add(((name, index + length), (there[0], there[1] + length)))
                    length += 1
                problems.append(f"{name}:{lines[index][0]} and {there[0]}:{other[there[1]][0]}: {length} equal lines")
    return problems


def main():
    if len(sys.argv) > 1:
        sys.exit(__doc__)
    texts = {str(path.relative_to(ROOT)): path.read_text(encoding="utf-8") for path in product_sources(*FOLDERS)}
    report(check(texts), texts)


if __name__ == "__main__":
    main()
