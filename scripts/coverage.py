#!/usr/bin/env python3
"""Reports line and branch coverage of src/ from a build tree made with CLUSUTIL_COVERAGE.

usage: coverage.py BUILD_TREE

Prints a table; BUILD_TREE/coverage.txt gets the table and every uncovered line and branch. Branches that only an
exception takes (gcov marks them "throw") are not counted. Code that is compiled several times (headers, templates)
counts as covered when one of its copies ran. A source without run-time data counts as never run.
"""
import collections
import json
import os
import subprocess
import sys

GCOV = os.environ.get("GCOV", "x86_64-w64-mingw32-gcov-posix")


class SourceFile:
    def __init__(self):
        self.lines = {}  # number -> times run
        self.branches = collections.defaultdict(int)  # (line, branches of the line, index) -> times taken

    def add(self, record):
        number = record["line_number"]
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
                    path = os.path.normpath(os.path.join(document["current_working_directory"], record["file"]))
                    if path.startswith(source_root + os.sep):
                        for line in record["lines"]:
                            files[os.path.relpath(path, os.path.dirname(source_root))].add(line)
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
    if len(sys.argv) != 2:
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


if __name__ == "__main__":
    main()
