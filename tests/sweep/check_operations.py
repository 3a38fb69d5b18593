#!/usr/bin/env python3
"""Checks that every function that clusutil.dll exports is tested in two ways.

usage: check_operations.py

operations.txt beside this file names each of them, and nothing else, with a test of this folder that sweeps it. A line: the
function without its parameters, two blanks, and
  Suite.Name         the test that calls it
  within Suite.Name  the test that calls another one, which calls it
  - reason           why it is not swept

The tests THREADED call each of them on 16 threads at once, but for those of threads.txt:
  within FUNCTION    they call that one, which calls it, or must have an object of that class
  - reason           why it is not called
"""
import re
import sys
from pathlib import Path

HERE = Path(__file__).parent
EXPORTS = HERE.parents[1] / "src/clusutil.exports.txt"
THREADED = ("virtualserver/EveryOperationThreadsTest.cpp", "veritas/EveryOperationThreadsTest.cpp")


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


def rows(name):
    return [line.split("  ", 1) for line in (HERE / name).read_text(encoding="utf-8").splitlines()]


def problems_of_sweeps(functions):
    listed = rows("operations.txt")
    known = tests()
    names = [name for name, _ in listed]
    problems = [f"{name}: is exported, and not in operations.txt" for name in sorted(functions - set(names))]
    problems += [f"{name}: is not exported" for name in sorted(set(names) - functions)]
    problems += [f"{name}: stands there twice" for name in sorted({name for name in names if names.count(name) > 1})]
    for name, sweep in listed:
        test = sweep.removeprefix("within ")
        if sweep.startswith("- "):
            continue
        if test not in known:
            problems.append(f"{name}: there is no test {test}")
        elif test == sweep and not re.search(rf"\b{name.split('::')[-1]}\b", known[test]):
            problems.append(f"{name}: {test} does not call it")
    return problems


def called(functions, cluster_text, veritas_text):
    """Those that the two texts call, and the classes of which they have objects as their constructors."""
    scopes = {}
    for function in functions:
        scope, _, name = function.rpartition("::")
        scopes.setdefault(name, set()).add(scope)
    found = set()
    for function in functions:
        scope, _, name = function.rpartition("::")
        text = veritas_text if "Veritas" in function else cluster_text
        if name == scope:
            pattern = rf"\b{name}\b[ &]"
        elif len(scopes[name]) == 1:
            pattern = rf"(?<![\w~]){re.escape(name)}(?=\()|&{name}\b"
        else:  # several classes have one of this name: it has to be called for an object of this one
            objects = set(re.findall(rf"\b{scope}&? (\w+)\b", text))
            pattern = rf"\b(?:{'|'.join([scope + '::', *(f'{one}[.]' for one in sorted(objects))])}){re.escape(name)}\("
        if re.search(pattern, text):
            found.add(function)
    return found


def problems_of_threads(functions, listed, done):
    names = {name for name, _ in listed}
    problems = [f"{name}: no thread calls it, and it is not in threads.txt" for name in sorted(functions - done - names)]
    problems += [f"{name}: threads call it, and it is in threads.txt" for name in sorted(names & done)]
    problems += [f"{name}: of threads.txt, is not exported" for name in sorted(names - functions)]
    problems += [f"{name}: no thread calls {how.removeprefix('within ')}" for name, how in listed
                 if not how.startswith("- ") and how.removeprefix("within ") not in done]
    return problems


def main():
    functions = exported()
    texts = [(HERE.parent / name).read_text(encoding="utf-8") for name in THREADED]
    problems = problems_of_sweeps(functions)
    problems += problems_of_threads(functions, rows("threads.txt"), called(functions, *texts))
    print("\n".join(problems) if problems else f"{len(functions)} operations are swept and called by threads, or need not be")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
