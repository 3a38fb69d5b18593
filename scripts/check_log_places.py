#!/usr/bin/env python3
"""Checks that the number of a log line of the library tells its file and its line.

usage: check_log_places.py [--write]

Log lines carry the tag of their subsystem and a number. Each file that logs owns, under its tag, the numbers of one thousand:
1000 * (the file's number) + line. docs/log-places.md lists them; --write writes it.
"""
import re
import sys
from collections import defaultdict

sys.dont_write_bytecode = True
from sources import ROOT, cell, code_only, product_sources, report, subject  # noqa: E402

# What a file that logs says at its head: the tag's name and the file's number.
PLACE = re.compile(r"^CLUS_LOG_PLACE\((\w+), (\d+)\);$", re.MULTILINE)
PLACE_ANYWHERE = re.compile(r"\bCLUS_LOG_PLACE\s*\(")
LOGS = re.compile(r"\bLOG_[A-Z_]+\s*\(")
MACROS = "src/platform/Log.h"  # defines all of these, and the tags
TAG = re.compile(r'^constexpr const char\* (\w+) = "\.\\\\(\w+\.cpp)";$', re.MULTILINE)
MOST_LINES = 999
TABLE = "docs/log-places.md"


def check(texts, tags):
    """(problems, places) of the files, given as path -> text; a place is (tag's name, file's number, path)."""
    problems = []
    places = []
    owners = defaultdict(list)
    for name, text in texts.items():
        code = code_only(text)
        first_log = LOGS.search(code)
        found = list(PLACE.finditer(code))
        if len(found) != len(PLACE_ANYWHERE.findall(code)):
            problems.append(f"{name}: its CLUS_LOG_PLACE does not stand alone on a line")
        elif not found and first_log:
            problems.append(f"{name}: logs, and has no CLUS_LOG_PLACE at its head")
        elif len(found) > 1:
            problems.append(f"{name}: has more than one CLUS_LOG_PLACE")
        elif found and not first_log:
            problems.append(f"{name}: has a CLUS_LOG_PLACE, and does not log")
        elif found and found[0].start() > first_log.start():
            problems.append(f"{name}: logs before its CLUS_LOG_PLACE")
        elif found:
            tag, number = found[0].group(1), int(found[0].group(2))
            if tag not in tags:
                problems.append(f"{name}: {tag} is no tag of {MACROS}")
            if number < 1:
                problems.append(f"{name}: file numbers begin with 1")
            if text.count("\n") > MOST_LINES:
                problems.append(f"{name}: has more than {MOST_LINES} lines, so that its numbers run into the next file's")
            owners[(tag, number)].append(name)
            places.append((tag, number, name))
    for (tag, number), names in sorted(owners.items()):
        if len(names) > 1:
            problems.append(f"{', '.join(names)}: the same place {tag}, {number}")
    return problems, sorted(places)


def table(places, tags):
    lines = ["# Log places", "",
             "A log line of the library ends its prefix with a tag and a number, as in `.\\clus_Cluster.cpp(2041)`. The tag names the",
             "subsystem; the thousands of the number tell the file of the source tree, the rest the line in it.", "",
             "In the source tree `scripts/check_log_places.py --write` writes this table, and `./dev lint` checks it.", "",
             "| tag | numbers | file | subject |", "|---|---|---|---|"]
    for tag, number, name in places:
        numbers = f"{1000 * number + 1} to {1000 * number + MOST_LINES}"
        words = cell(subject(ROOT / name) or "")
        lines.append(f"| `.\\{tags.get(tag, tag)}` | {numbers} | `{name}` | {words} |")
    return "\n".join(lines) + "\n"


def main():
    if sys.argv[1:] not in ([], ["--write"]):
        sys.exit(__doc__)
    texts = {str(path.relative_to(ROOT)): path.read_text(encoding="utf-8") for path in product_sources("src")}
    tags = dict(TAG.findall(texts.pop(MACROS)))
    if not tags:
        sys.exit(f"{MACROS}: defines no tags")
    problems, places = check(texts, tags)
    file = ROOT / TABLE
    if len(sys.argv) > 1:
        file.write_text(table(places, tags), encoding="utf-8")
    elif not file.exists() or file.read_text(encoding="utf-8") != table(places, tags):
        problems.append(f"{TABLE}: is out of date; scripts/check_log_places.py --write writes it")
    report(problems, places)


if __name__ == "__main__":
    main()
