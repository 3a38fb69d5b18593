#!/usr/bin/env python3
"""Checks that the product's files and functions stay short enough to be read at once.

usage: check_size.py

A function is counted from the first line of its signature to its closing brace. The sources are formatted by clang-format: the
brace that closes a function stands alone in the column in which the function begins.
"""
import re
import sys

sys.dont_write_bytecode = True
from sources import ROOT, code_only, product_sources, report  # noqa: E402

FILE_LINES = 450
FUNCTION_LINES = 80
# "path" or "path: function" of what may be longer. The one permitted reason: its only content is the required order of steps.
ORDER_OF_STEPS = set()

SCOPE = re.compile(r'\s*(?:template\s*<.*>\s*)?(?:(?:inline\s+)?namespace\b|extern\s+"?|(?:typedef\s+)?(?:class|struct|union|enum)\b)')
PARAMETERS_AT_END = re.compile(r"\)\s*(?:const\b\s*|noexcept\b\s*|override\b\s*|final\b\s*|&\s*|->[^{]*)*\{$")
NAME = re.compile(r"([~\w:]+|operator\s*[^\s(]+)\s*\(")


def indent(line):
    return len(line) - len(line.lstrip())


def functions(text):
    """(name, first line, number of lines) of each function defined in the text, members in their class included."""
    lines = [line.rstrip() for line in code_only(text).split("\n")]
    statement = []  # the lines of the declaration that has begun
    first = 0
    number = 0
    while number < len(lines):
        line = lines[number]
        if line.lstrip().startswith("#"):
            while lines[number].endswith("\\"):
                number += 1
            number += 1
            continue
        if line and not statement:
            first = number
        if line:
            statement.append(line.strip())
        if line.endswith("{"):
            whole = " ".join(statement)
            statement = []
            is_scope = SCOPE.match(whole) and not PARAMETERS_AT_END.search(whole)
            if not is_scope and not whole == "{":
                end = next((later for later in range(number + 1, len(lines))
                            if lines[later].lstrip().startswith("}") and indent(lines[later]) == indent(lines[first])), None)
                if end is None:
                    raise ValueError(f"line {first + 1}: nothing closes what begins here")
                if NAME.search(whole) and not re.search(r"=\s*\{$", whole):
                    yield NAME.search(whole).group(1), first + 1, end - first + 1
                number = end
        elif line.endswith((";", "}")) or re.fullmatch(r"\s*(public|protected|private):", line):
            statement = []
        number += 1


def check(texts, allowed):
    """The problems of the files, given as path -> text."""
    problems = []
    used = set()
    for name, text in texts.items():
        places = [(name, name, text.count("\n"), FILE_LINES)]
        try:
            places += [(f"{name}: {function}", f"{name}:{line}: {function}", count, FUNCTION_LINES)
                       for function, line, count in functions(text)]
        except ValueError as error:
            problems.append(f"{name}: {error}")
        for key, shown, count, limit in places:
            if count <= limit:
                continue
            if key in allowed:
                used.add(key)
            else:
                problems.append(f"{shown} has {count} lines; {limit} are the limit")
    problems += [f"scripts/check_size.py: allows {key}, which needs it no more" for key in sorted(set(allowed) - used)]
    return problems


def main():
    if len(sys.argv) > 1:
        sys.exit(__doc__)
    texts = {str(path.relative_to(ROOT)): path.read_text(encoding="utf-8") for path in product_sources()}
    report(check(texts, ORDER_OF_STEPS), texts)


if __name__ == "__main__":
    main()
