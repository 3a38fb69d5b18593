#!/usr/bin/env python3
"""Checks that operations.txt beside this file names every function that clusutil.dll exports, and nothing else, with a test of
this folder that sweeps it.

usage: check_operations.py

A line: the function without its parameters, two blanks, and
  Suite.Name         the test that calls it
  within Suite.Name  the test that calls another one, which calls it
  - reason           why it is not swept
"""
import re
import sys
from pathlib import Path

HERE = Path(__file__).parent
EXPORTS = HERE.parents[1] / "src/clusutil.exports.txt"


def exported():
    """The functions without their parameters; those of all overloads are one."""
    names = set()
    for line in EXPORTS.read_text(encoding="utf-8").splitlines():
        function = line.split("  ", 1)[1].replace("[abi:cxx11]", "")
        names.add(function.split("(")[0])
    return names


def tests():
    """The text of each test's file by its name."""
    found = {}
    for path in HERE.glob("*.cpp"):
        text = path.read_text(encoding="utf-8")
        for suite, name in re.findall(r"(?m)^TEST_[FP]\((\w+), (\w+)\)", text):
            found[f"{suite}.{name}"] = text
    return found


def main():
    listed = [line.split("  ", 1) for line in (HERE / "operations.txt").read_text(encoding="utf-8").splitlines()]
    known = tests()
    names = [name for name, _ in listed]
    problems = [f"{name}: is exported, and not in operations.txt" for name in sorted(exported() - set(names))]
    problems += [f"{name}: is not exported" for name in sorted(set(names) - exported())]
    problems += [f"{name}: stands there twice" for name in sorted({name for name in names if names.count(name) > 1})]
    for name, sweep in listed:
        test = sweep.removeprefix("within ")
        if sweep.startswith("- "):
            continue
        if test not in known:
            problems.append(f"{name}: there is no test {test}")
        elif test == sweep and not re.search(rf"\b{name.split('::')[-1]}\b", known[test]):
            problems.append(f"{name}: {test} does not call it")
    print("\n".join(problems) if problems else f"{len(listed)} operations are swept or need not be")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
