"""Finds the places of a C++ source where a small change makes a mutant of it."""
import re
from dataclasses import dataclass

from sources import NO_CODE, code_only

KEYWORDS = {"if", "for", "while", "switch", "return", "sizeof", "catch", "decltype", "alignof", "defined", "static_assert"}
COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">"}
LEVELS = {"LOG_INFO": "LOG_WARNING", "LOG_WARNING": "LOG_ERROR", "LOG_ERROR": "LOG_WARNING", "LOG_ENTER": "LOG_INFO",
          "LOG_LEAVE": "LOG_INFO"}
# Objects that only their end is for.
SCOPED = re.compile(r"const [\w:]*(?:Keeper|Guard|Deleter|Eraser) \w+[;(]")
# An expression that is a statement, as opposed to a declaration: no blank before what is called or assigned to.
STATEMENT = re.compile(r"(?:\+\+|--)[\w.>-]+;|\*?[A-Za-z_][\w:]*(?:(?:\.|->)\w+|\[[^\]]*\]|\(\))*(?:\(| = | [-+|&]= |\+\+;|--;)")
DECLARED = re.compile(r"(?:const )?[\w:]+(?:<.*>)?[*&]* [*&]?\w+(?: = .*)?$", re.DOTALL)
FUNCTION = re.compile(r"(?! *(?:if|for|while|switch|return|else|case|do|catch)\b)(?: {4})?(?! )(?:[\w:<>*&~, ]*[ *&])?([\w:~]+)\(")


@dataclass(frozen=True)
class Mutant:
    file: str  # as it is called in the report
    operator: str
    start: int  # what is replaced
    end: int
    replacement: str
    line: int
    function: str
    before: str  # the lines concerned, each in one line without needless blanks
    after: str

    def apply(self, text):
        return text[:self.start] + self.replacement + text[self.end:]

    def key(self):
        """What it is known by as long as these lines stay, wherever they move in their function."""
        return (self.file, self.function, self.before, self.after)


def one_line(text):
    return " ".join(text.split())


def closing(code, opening):
    """The position of the bracket that closes the one at `opening`; -1 when there is none."""
    depth = 0
    for position in range(opening, len(code)):
        if code[position] in "([{":
            depth += 1
        elif code[position] in ")]}":
            depth -= 1
            if depth == 0:
                return position
    return -1


def other_letter(letter):
    return {"z": "y", "Z": "Y", "9": "8"}.get(letter, chr(ord(letter) + 1))


class Source:
    """A source text and what its mutants are found in."""

    def __init__(self, file, text):
        self.file = file
        self.text = text
        self.code = code_only(text)  # of the same length
        self.kept = code_only(text, keep_texts=True)
        self.line_starts = [0] + [match.end() for match in re.finditer("\n", text)]
        self.functions = self.functions_by_line()
        self.logs = [(match.start(), closing(self.code, match.end() - 1))
                     for match in re.finditer(r"\b(?:CLUS_)?LOG(?:_\w+)?\(", self.code)]

    def functions_by_line(self):
        functions = []
        name = ""
        for line in self.code.split("\n"):
            found = FUNCTION.match(line)
            if found and not line.rstrip().endswith((";", ":")) and (line[0] != " " or line.endswith("{")):
                name = found.group(1)
            functions.append(name)
        return functions

    def line_of(self, position):
        return self.text.count("\n", 0, position)

    def mutant(self, operator, start, end, replacement):
        first, last = self.line_of(start), self.line_of(max(start, end - 1))
        begin = self.line_starts[first]
        limit = self.line_starts[last + 1] if last + 1 < len(self.line_starts) else len(self.text)
        return Mutant(self.file, operator, start, end, replacement, first + 1, self.functions[first],
                      one_line(self.text[begin:limit]),
                      one_line(self.text[begin:start] + replacement + self.text[end:limit]))

    def is_directive(self, position):
        return self.text[self.line_starts[self.line_of(position)]] == "#"

    def is_logged(self, position):
        return any(start <= position < end for start, end in self.logs)

    def indent(self, position):
        line = self.text[self.line_starts[self.line_of(position)]:]
        return len(line) - len(line.lstrip(" "))


def comparisons(source):
    for match in re.finditer(r" (==|!=|<=|>=|<|>) ", source.code):
        yield source.mutant("comparison", match.start(1), match.end(1), COMPARISONS[match.group(1)])


def constants(source):
    for match in re.finditer(r"\b(?:0[xX][0-9a-fA-F]+|\d[\d']*)(?=[uUlL]*\b)", source.code):
        text = match.group().replace("'", "")
        changed = hex(int(text, 16) + 1) if text[:2] in ("0x", "0X") else str(int(text) + 1)
        yield source.mutant("constant", match.start(), match.end(), changed)
    for match in re.finditer(r"\b(true|false)\b", source.code):
        yield source.mutant("constant", match.start(), match.end(), "false" if match.group() == "true" else "true")
    for match in NO_CODE.finditer(source.text):
        if match.group("text") and not source.is_logged(match.start()):
            yield from changed_text(source, "constant", match.start("text"), match.group("text"))


def changed_text(source, operator, start, literal):
    """A literal with another letter in its middle; an empty one gets one."""
    quote = re.search("[\"']", literal).end()
    inner = literal[quote:-1]
    letters = [found.start() for found in re.finditer(r"(?<![\\%])[A-Za-z0-9]", inner)]
    if letters:
        at = letters[len(letters) // 2]
        yield source.mutant(operator, start + quote + at, start + quote + at + 1, other_letter(inner[at]))
    elif literal[quote - 1] == "'" or not inner:
        yield source.mutant(operator, start + quote, start + quote + len(inner), "x")


def conditions(source):
    for match in re.finditer(r"\b(?:if|while) \(", source.code):
        begin, end = match.end(), closing(source.code, match.end() - 1)
        condition = source.code[begin:end]
        if condition.startswith("const ") or (condition[0] == "!" and not re.search(" (?:&&|[|]{2}|[=<>!]+) ", condition)):
            continue  # a declaration; a single "not" is dropped below
        yield source.mutant("condition", begin, end, f"!({source.text[begin:end]})")
    for match in re.finditer(r"!(?=[\w(])", source.code):
        yield source.mutant("condition", match.start(), match.end(), "")
    for match in re.finditer(r"&&|\|\|", source.code):
        if source.code[match.start() - 1] == " ":
            yield source.mutant("condition", match.start(), match.end(), "||" if match.group() == "&&" else "&&")


def statement_end(code, start):
    """The position behind the semicolon of a statement; -1 when something else begins at `start`."""
    position = start
    while position < len(code) and code[position] != ";":
        if code[position] in "{}":
            return -1
        if code[position] in "([":
            position = closing(code, position)
            if position < 0:
                return -1
        position += 1
    return position + 1


def statements(source):
    for match in re.finditer(r"(?<=[;{}:\s])\n?( *)(?=\S)", source.code):
        start = match.end()
        before = source.code[:start].rstrip()
        if not before or before[-1] not in ";{}:" or before.endswith("::") or source.indent(start) == 0:
            continue
        returns = re.match(r"return\b", source.code[start:])
        if not returns and not STATEMENT.match(source.code, start) and not SCOPED.match(source.code, start):
            continue
        end = statement_end(source.code, start)
        if end < 0 or re.search(r"= (?:delete|default);$|^CLUS_", source.code[start:end]):
            continue
        kept_lines = "\n" * source.text.count("\n", start, end)
        yield source.mutant("statement", start, end, ";" + kept_lines)


def jumps(source):
    for match in re.finditer(r"\b(break|continue);", source.code):
        yield source.mutant("jump", match.start(), match.end() - 1, "")
        yield source.mutant("jump", match.start(), match.end() - 1, "continue" if match.group(1) == "break" else "break")


def split_arguments(source, begin, end):
    """The ranges of the arguments between two brackets, without blanks before them."""
    commas = []
    position = begin
    templates = 0
    while position < end:
        letter = source.code[position]
        if letter in "([{":
            position = closing(source.code, position)
        elif letter == "<" and source.code[position - 1] not in " <":
            templates += 1
        elif letter == ">" and templates > 0 and source.code[position - 1] != "-":
            templates -= 1
        elif letter == "," and templates == 0:
            commas.append(position)
        position += 1
    ranges = []
    for first, last in zip([begin] + [comma + 1 for comma in commas], commas + [end]):
        text = source.kept[first:last]
        ranges.append((first + len(text) - len(text.lstrip()), last))
    return ranges


def arguments(source):
    for match in re.finditer(r"([\w:>\]]+)\((?!\))", source.code):
        name = match.group(1)
        if name in KEYWORDS or source.indent(match.start()) == 0:
            continue
        begin, end = match.end(), closing(source.code, match.end() - 1)
        ranges = split_arguments(source, begin, end)
        if re.fullmatch(r"(?:CLUS_)?LOG(?:_\w+)?", name):
            ranges = ranges[1:]  # the format stays in front
        for (first, first_end), (second, second_end) in zip(ranges, ranges[1:]):
            one, other = source.text[first:first_end], source.text[second:second_end]
            between = source.text[first_end:second]
            if one == other or "{" in one + other or DECLARED.match(one) or DECLARED.match(other):
                continue
            yield source.mutant("arguments", first, second_end, other + between + one)


def logs(source):
    for match in re.finditer(r"\b(LOG_(?:INFO|WARNING|ERROR|ENTER|LEAVE))\b", source.code):
        yield source.mutant("log level", match.start(), match.end(), LEVELS[match.group()])
    for match in NO_CODE.finditer(source.text):
        if match.group("text") and source.is_logged(match.start()):
            yield from changed_text(source, "log text", match.start("text"), match.group("text"))


OPERATORS = (comparisons, constants, conditions, statements, jumps, arguments, logs)


def mutants_of(file, text):
    """All mutants of a source, in the order of their places; no two give the same text."""
    source = Source(file, text)
    found = {}
    for operator in OPERATORS:
        for mutant in operator(source):
            if not source.is_directive(mutant.start):
                found.setdefault((mutant.start, mutant.end, mutant.replacement), mutant)
    return [found[place] for place in sorted(found)]
