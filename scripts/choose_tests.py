#!/usr/bin/env python3
"""Tells which groups of tests (test programs, e2e, consumer) a choice of ctest can touch.

usage: choose_tests.py BUILD_TREE [CTEST-ARGUMENT ...]

Prints the names of the groups, which are targets of the configured build tree too, or "all". ctest itself makes the choice, among
the names of the tests that are known before anything is built: those of the last build of a program, as long as its test
sources are older, or else those read from the sources. Where a name is not known before the program runs (tests with
parameters), the program counts as chosen unless the choice begins with the name of another one, of this build tree or one
beside it, as in 'core_test/'.
"""
import json
import re
import subprocess
import sys
from pathlib import Path

CHOOSING = {"-R": "-R", "--tests-regex": "-R", "-E": "-E", "--exclude-regex": "-E",
            "-L": "-L", "--label-regex": "-L", "-LE": "-LE", "--label-exclude": "-LE"}
# Arguments that choose nothing; after any other everything is built.
WITHOUT_VALUE = {"-V", "--verbose", "-VV", "--extra-verbose", "-Q", "--quiet", "--output-on-failure", "--stop-on-failure",
                 "--progress", "--schedule-random", "-N", "--show-only"}
WITH_VALUE = {"-j", "--parallel", "--repeat", "--timeout"}

NAMED_TEST = re.compile(r"\bTEST(?:_F)?\(\s*(\w+)\s*,\s*(\w+)\s*\)")
# What makes tests whose names cannot be told from the source.
UNNAMED_TEST = re.compile(r"\bTEST_P\b|\bTYPED_TEST|\bRegisterTest\b|#define[^\n]*\bTEST")


class Group:
    def __init__(self, note):
        self.note = note
        self.name = note.name
        self.listing = self.program = None
        self.sources = []
        self.labels = ""
        for line in note.read_text().splitlines():
            kind, _, value = line.partition(" ")
            if kind == "listing":
                self.listing = Path(value)
            elif kind == "labels":
                self.labels = value
            elif kind == "program":
                self.program = Path(value)
            elif kind == "source":
                self.sources.append(Path(value))

    def is_listed(self):
        """Whether the listing names every test that the group has now."""
        if not self.listing.exists():
            return False
        if not self.sources:
            return True  # written by CMake
        headers = {header for source in self.sources for header in source.parent.glob("*.h")}
        newest = max(modified(file) for file in {*self.sources, *headers})
        return (self.program.exists() and newest < modified(self.program) <= modified(self.listing)
                and modified(self.note) < modified(self.listing))

    def registration(self):
        """A text for ctest that makes known what is known of the group's tests."""
        if self.is_listed():
            return f'include("{self.listing}")\n'
        lines = [f"add_test([=[{self.name}/{name}]=] unknown)\n"
                 f'set_tests_properties([=[{self.name}/{name}]=] PROPERTIES LABELS "{self.labels}")\n'
                 for name in sorted(self.names_in_sources())]
        return "".join(lines)

    def texts(self):
        return [source.read_text(encoding="utf-8", errors="replace") for source in self.sources]

    def names_in_sources(self):
        return {".".join(without_disabled(part) for part in match) for text in self.texts() for match in NAMED_TEST.findall(text)}

    def may_hold_more(self):
        """Whether it may have tests whose names the sources do not tell."""
        return any(UNNAMED_TEST.search(text) for text in self.texts())


def modified(file):
    return file.stat().st_mtime_ns


def without_disabled(name):
    return name[len("DISABLED_"):] if name.startswith("DISABLED_") else name


def alternatives(pattern):
    """The pattern's parts between the bars outside of parentheses."""
    parts = [""]
    depth = 0
    for token in re.findall(r"\\.|.", pattern):
        depth += {"(": 1, ")": -1}.get(token, 0)
        if token == "|" and depth == 0:
            parts.append("")
        else:
            parts[-1] += token
    return parts


def is_beside(part, name, names):
    """Whether a part of the pattern begins with the name of other groups, and so matches no test of this one."""
    head = re.match(r"[\w()|^]*/", part)
    if not head:
        return False
    try:
        begin = re.compile(f"(?:{head.group()[:-1]})$")
    except re.error:  # its parentheses reach beyond the slash
        return False
    return not begin.search(name) and any(begin.search(other) for other in names)


def parse(arguments):
    """The arguments that choose tests, or None where everything has to be built."""
    chosen = []
    position = 0
    while position < len(arguments):
        argument = arguments[position]
        has_value = argument in CHOOSING or argument in WITH_VALUE
        if not has_value and argument not in WITHOUT_VALUE and not re.fullmatch(r"-j\d+|--output-on-failure", argument):
            return None
        if has_value and position + 1 == len(arguments):
            return None
        if argument in CHOOSING:
            chosen += [CHOOSING[argument], arguments[position + 1]]
        position += 2 if has_value else 1
    return chosen or None


def ask_ctest(folder, registrations, choosing):
    """The groups of the registered tests that ctest chooses."""
    folder.mkdir(exist_ok=True)
    (folder / "CTestTestfile.cmake").write_text("".join(registrations))
    command = ["ctest", "--test-dir", str(folder), "--show-only=json-v1", *choosing]
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    if result.returncode != 0:
        sys.exit(f"choose_tests.py: {' '.join(command)} fails:\n{result.stderr}")
    return {test["name"].split("/")[0] for test in json.loads(result.stdout)["tests"]}


def choose(build_tree, arguments):
    """The names of the groups that ctest's arguments can touch; None for all."""
    choosing = parse(arguments)
    if choosing is None:
        return None
    groups = [Group(note) for note in sorted((build_tree / "tests/groups").iterdir())]
    folder = build_tree / "tests/chosen"
    chosen = ask_ctest(folder, [group.registration() for group in groups], choosing)

    pattern = None  # the last one counts
    by_label = []
    for option, value in zip(choosing[::2], choosing[1::2]):
        if option == "-R":
            pattern = value
        elif option in ("-L", "-LE"):
            by_label += [option, value]
    parts = alternatives(pattern) if pattern is not None else [""]
    names = {note.name for note in build_tree.parent.glob("*/tests/groups/*")}
    doubtful = [group for group in groups
                if not group.is_listed() and group.may_hold_more()
                and not all(is_beside(part, group.name, names) for part in parts)]
    stand_ins = [f'add_test({group.name}/ unknown)\nset_tests_properties({group.name}/ PROPERTIES LABELS "{group.labels}")\n'
                 for group in doubtful]
    return chosen | ask_ctest(folder, stand_ins, by_label) if stand_ins else chosen


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    chosen = choose(Path(sys.argv[1]).resolve(), sys.argv[2:])
    print("all" if chosen is None else "\n".join(sorted(chosen)))


if __name__ == "__main__":
    main()
