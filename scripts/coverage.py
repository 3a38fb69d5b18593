#!/usr/bin/env python3
"""Reports line and branch coverage of src/ from a build tree made with CLUSUTIL_COVERAGE.

usage: coverage.py BUILD_TREE [--compare]

Prints a table; BUILD_TREE/coverage.txt gets the table and every uncovered line and branch. Branches that only an
exception takes (gcov marks them "throw") are not counted. Code that is compiled several times (headers, templates)
counts as covered when one of its copies ran. A source without run-time data counts as never run.

--compare, after all tests: the exit code is 1 when docs/testing.md tells other totals, when a line or branch is left in
a function that its table of what cannot be reached does not name, when one has more or fewer of them than the table
tells, or when it names one in which nothing is left.
"""
import collections
import json
import os
import re
import subprocess
import sys

GCOV = os.environ.get("GCOV", "x86_64-w64-mingw32-gcov-posix")


DOCUMENT = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "docs/testing.md")
TABLE = "| place | left | why |"
TOTALS = "Of {:,} lines {:,} are run, of {:,} branches {:,} are taken."


class SourceFile:
    def __init__(self):
        self.lines = {}  # number -> times run
        self.functions = {}  # number -> bare name of the function that the line is in
        self.branches = collections.defaultdict(int)  # (line, branches of the line, index) -> times taken

    def add(self, record, names):
        number = record["line_number"]
        self.functions[number] = names.get(record.get("function_name"), "-")
        self.lines[number] = self.lines.get(number, 0) + record["count"]
        taken = [branch["count"] for branch in record["branches"] if not branch["throw"]]
        for index, count in enumerate(taken):
            self.branches[(number, len(taken), index)] += count

    def uncovered_lines(self):
        return sorted(number for number, count in self.lines.items() if count == 0)

    def uncovered_branches(self):
        """Lines that ran, with the branches of them that were never taken."""
        missing = collections.defaultdict(list)
        for (number, total, index), count in sorted(self.branches.items()):
            if count == 0 and self.lines[number] != 0:
                missing[number].append(f"{index + 1}/{total}")
        return missing

    def left(self):
        """Of each function with something uncovered how much: lines that never ran, and branches of others."""
        counts = collections.Counter(self.functions[number] for number in self.uncovered_lines())
        for number, missing in self.uncovered_branches().items():
            counts[self.functions[number]] += len(missing)
        return counts


def bare_name(demangled):
    """"TakeField" of "clus::(anonymous namespace)::TakeField(std::string const&)"."""
    name = demangled.replace("(anonymous namespace)", "").replace("operator()", "operator")
    name = re.sub(r"\{lambda[^{}]*\}", "lambda", name)
    while True:
        shorter = re.sub(r"<[^<>]*>|\([^()]*\)", "", name)
        if shorter == name:
            break
        name = shorter
    return name.replace(" const", "").replace("[abi:cxx11]", "").strip().split("::")[-1].split(" ")[-1]


def listed_places(text):
    """The rows of the table: "`core/A.cpp` `F`, `G`; `core/B.h` `H`" and how much is left in all of them together, as
    [({(file, function), ...}, count)]."""
    rows = []
    lines = text.splitlines()
    if TABLE not in lines:
        sys.exit(f"coverage.py: {DOCUMENT} has no table {TABLE}")
    for line in lines[lines.index(TABLE) + 2:]:
        if not line.startswith("|"):
            break
        place, count = line.split("|")[1:3]
        places = set()
        for item in place.split(";"):
            file, *functions = re.findall(r"`([^`]+)`", item)
            places.update((f"src/{file}", function) for function in functions)
        rows.append((places, int(count)))
    return rows


def compared(left, rows):
    """What is wrong: `left` is {(file, function): count}."""
    listed = set().union(*(places for places, _ in rows))
    wrong = [f"{file}, {function}: {count} left, and not listed"
             for (file, function), count in sorted(left.items()) if (file, function) not in listed]
    wrong += [f"{file}, {function}: listed, and nothing is left" for file, function in sorted(listed - set(left))]
    for places, count in rows:
        found = sum(left.get(place, 0) for place in places)
        if found != count:
            wrong.append(f"{', '.join(function for _, function in sorted(places))}: {found} left instead of {count}")
    return wrong


def compared_totals(totals, text):
    """What is wrong: `totals` are lines, those run, branches, those taken."""
    sentence = TOTALS.format(*totals)
    return [] if sentence in " ".join(text.split()) else [f"it does not say: {sentence}"]


def read_object(gcno):
    """gcov's records for one object file."""
    data = gcno[:-len("gcno")] + "gcda"
    result = subprocess.run(
        [GCOV, "--json-format", "--branch-probabilities", "--stdout", data if os.path.exists(data) else gcno],
        cwd=os.path.dirname(gcno), stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if result.returncode != 0:
        sys.exit(f"coverage.py: {GCOV} fails on {gcno}:\n{result.stderr.decode(errors='replace')}")
    for line in result.stdout.decode().splitlines():
        if line.startswith("{"):
            yield json.loads(line)


def read_tree(build_tree, source_root):
    files = collections.defaultdict(SourceFile)
    objects = with_data = 0
    for folder, _, names in os.walk(os.path.join(build_tree, "src")):
        for name in sorted(names):
            if not name.endswith(".gcno"):
                continue
            objects += 1
            with_data += name[:-len("gcno")] + "gcda" in names
            for document in read_object(os.path.join(folder, name)):
                for record in document["files"]:
                    names = {function["name"]: bare_name(function["demangled_name"]) for function in record["functions"]}
                    path = os.path.normpath(os.path.join(document["current_working_directory"], record["file"]))
                    if path.startswith(source_root + os.sep):
                        for line in record["lines"]:
                            files[os.path.relpath(path, os.path.dirname(source_root))].add(line, names)
    if with_data == 0:
        sys.exit(f"coverage.py: {objects} instrumented objects below {build_tree}/src, none has run-time data")
    return files


def share(covered, total):
    return f"{covered:5}/{total:<5} {100.0 * covered / total if total else 100.0:6.1f} %"


def ranges(numbers):
    """[1, 2, 3, 7] -> "1-3, 7"."""
    parts = []
    for number in numbers:
        if parts and parts[-1][1] == number - 1:
            parts[-1][1] = number
        else:
            parts.append([number, number])
    return ", ".join(str(first) if first == last else f"{first}-{last}" for first, last in parts)


def main():
    if len(sys.argv) not in (2, 3) or sys.argv[2:] not in ([], ["--compare"]):
        sys.exit(__doc__)
    build_tree = os.path.abspath(sys.argv[1])
    source_root = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "src")
    files = read_tree(build_tree, source_root)

    width = max(len(name) for name in files)
    table = [f"{'file':{width}}  {'lines':>13}          {'branches':>13}"]
    totals = [0, 0, 0, 0]
    for name, source in sorted(files.items()):
        counts = [len(source.lines) - len(source.uncovered_lines()), len(source.lines),
                  sum(1 for count in source.branches.values() if count), len(source.branches)]
        totals = [total + count for total, count in zip(totals, counts)]
        table.append(f"{name:{width}}  {share(*counts[:2])}  {share(*counts[2:])}")
    table.append(f"{'total':{width}}  {share(*totals[:2])}  {share(*totals[2:])}")

    details = []
    for name, source in sorted(files.items()):
        if source.uncovered_lines():
            details.append(f"{name}: lines never run: {ranges(source.uncovered_lines())}")
        branches = source.uncovered_branches()
        if branches:
            listed = ", ".join(f"{number} ({' '.join(missing)})" for number, missing in branches.items())
            details.append(f"{name}: branches never taken, as line (which/of): {listed}")

    report = os.path.join(build_tree, "coverage.txt")
    with open(report, "w", encoding="utf-8") as out:
        out.write("\n".join(table + ["", "Branches taken by exceptions only are not counted.", ""] + details) + "\n")
    print("\n".join(table))
    print("Branches taken by exceptions only are not counted. "
          f"Uncovered lines and branches: {os.path.relpath(report)}")
    if sys.argv[2:]:
        left = {(name, function): count for name, source in files.items() for function, count in source.left().items()}
        with open(DOCUMENT, encoding="utf-8") as document:
            text = document.read()
        wrong = compared_totals((totals[1], totals[0], totals[3], totals[2]), text) + compared(left, listed_places(text))
        if wrong:
            sys.exit("\n".join(["docs/testing.md and the branches that are left differ:", *wrong]))


if __name__ == "__main__":
    main()
