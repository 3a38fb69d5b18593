#!/usr/bin/env python3
"""Checks the documentation.

- Markdown: every relative link leads to a file, every #anchor to a heading; every `./dev COMMAND` named is a command.
- The map in docs/architecture.md: it is what scripts/check_layers.py makes of the layers and the sources.
- Public headers: every type and every public or protected member is documented: the block of lines it stands in begins
  with a comment, or its own line ends with one. Constructors and destructors without parameters, deleted members
  and friends need none.
- Exit codes and error codes of clusctl: the table in docs/clusctl.md and the list in docs/schemas are what
  tools/clusctl/Failure.h says.
- Every sub-command in docs/clusctl.md has --dry-run, or is one of those that change nothing.
- CHANGELOG.md: the first release is the version of CMakeLists.txt, with its date, and nothing stands under "Unreleased": what is
  built is called by the version.
- README.md holds examples/first-program.cpp as it is.
- Public headers: every plain `name` in a comment's backticks occurs in the header's code or is a parameter there.
"""
import json
import re
import sys

sys.dont_write_bytecode = True
import check_layers  # noqa: E402
from sources import ROOT, project_files  # noqa: E402

# The sub-commands that change neither cluster nor configuration. Any other one has to have --dry-run.
ASKING = (
    "servers", "query", "smtp-instances", "store-online", "host", "cluster", "nodes", "groups", "resources", "disk", "doctor",
    "report", "snapshot", "status", "support-bundle", "model show", "model check", "model diff", "model from-recording", "tree",
    "graph", "probe", "vcs systems", "vcs groups", "vcs resources", "vcs deps", "vcs attribute", "vcs online-node",
    "vcs find-group", "vcs resource-of-service", "vcs type", "vcs servers", "vcs storage", "vcs encrypt", "vcs product list",
    "vcs snapshot", "rehearse", "help", "completion", "manual", "record",
)

problems = []


def problem(path, line, text):
    problems.append(f"{path.relative_to(ROOT)}:{line}: {text}")


def without_code_blocks(lines):
    inside = False
    for number, line in enumerate(lines, 1):
        if line.lstrip().startswith("```"):
            inside = not inside
        elif not inside:
            yield number, line


def anchor_of(heading):
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def sub_commands(manual):
    """Name, line and text of each section about a sub-command."""
    heading = re.compile(r"(?m)^### `([^`]+)`$")
    for found in heading.finditer(manual):
        words = []
        for word in found.group(1).split():
            if not re.fullmatch(r"[a-z-]+", word) or word.startswith("-"):
                break
            words.append(word)
        text = re.split(r"(?m)^##+ ", manual[found.end():])[0]
        yield " ".join(words), manual.count("\n", 0, found.start()) + 1, text


def dry_run_problems(manual, asking=ASKING):
    """Lines and what is wrong with the sub-command there."""
    left = set(asking)
    for name, line, text in sub_commands(manual):
        has = "\n- `--dry-run`" in text
        if name in left and has:
            yield line, f"'{name}' has --dry-run, and counts as one that changes nothing"
        if name not in left and not has:
            yield line, f"'{name}' has no --dry-run; one that changes nothing stands in ASKING of scripts/check_docs.py"
        left.discard(name)
    for name in sorted(left):
        yield 1, f"there is no sub-command '{name}'"


def anchors(path):
    found = set()
    for _, line in without_code_blocks(path.read_text(encoding="utf-8").splitlines()):
        heading = re.match(r"#+\s+(.*)", line)
        if heading:
            found.add(anchor_of(heading.group(1)))
    return found


def check_markdown(path, commands):
    lines = path.read_text(encoding="utf-8").splitlines()
    for number, line in without_code_blocks(lines):
        for target in re.findall(r"\]\(([^)\s]+)\)", line):
            if re.match(r"[a-z]+:", target):
                continue
            name, _, anchor = target.partition("#")
            file = (path.parent / name).resolve() if name else path
            if not file.exists():
                problem(path, number, f"link to {target}: no such file")
            elif anchor and file.suffix == ".md" and anchor not in anchors(file):
                problem(path, number, f"link to {target}: no such heading")
    for number, line in enumerate(lines, 1):
        for command in re.findall(r"\./dev ([a-z]+)", line):
            if command not in commands:
                problem(path, number, f"./dev has no command '{command}'")


def check_exit_codes():
    header = (ROOT / "tools/clusctl/Failure.h").read_text(encoding="utf-8")
    numbers = dict(re.findall(r"^    (Exit\w+) = (\d+)", header, re.M))
    declared = {(number, "") for number in numbers.values()}
    declared |= {(numbers[name], code) for code, name in re.findall(r'^constexpr ErrorKind \w+ = \{"([^"]+)", (\w+)\};', header, re.M)}
    manual = ROOT / "docs/clusctl.md"
    table = manual.read_text(encoding="utf-8").split("\n## Exit status\n")[1]
    listed = set()
    for number, codes in re.findall(r"^\| (\d+) \| .* \|(.*)\|$", table, re.M):
        listed |= {(number, code) for code in ["", *re.findall(r"`([^`]+)`", codes)]}
    if len(declared) < 20:
        sys.exit("check_docs.py: found no error codes in Failure.h")
    for number, code in sorted(declared ^ listed):
        where = "Failure.h" if (number, code) in declared else "the table of exit codes"
        problem(manual, 0, f"exit code {number} {code}: only in {where}")
    schema = ROOT / "docs/schemas/common.schema.json"
    error = json.loads(schema.read_text(encoding="utf-8"))["$defs"]["error"]
    for code in sorted({code for _, code in declared if code} ^ set(error["properties"]["code"]["enum"])):
        problem(schema, 0, f"error code {code}: only here or only in Failure.h")


def changelog_problems(text, version):
    sections = [section.partition("\n") for section in re.split(r"^## ", text, flags=re.M)[1:]]
    if any("unreleased" in heading.lower() and body.strip() for heading, _, body in sections):
        yield f"what stands under [Unreleased] belongs to {version}, which is what is built, or to a new version"
    releases = [heading for heading, _, _ in sections if "unreleased" not in heading.lower()]
    if not releases or not re.fullmatch(rf"\[{re.escape(version)}\] - \d{{4}}-\d\d-\d\d", releases[0]):
        yield f"the first release is not '[{version}] - YEAR-MONTH-DAY', the version of CMakeLists.txt"


def check_version():
    version = re.search(r"^project\(\w+ VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"), re.M)
    if not version:
        sys.exit("check_docs.py: found no version in CMakeLists.txt")
    changelog = ROOT / "CHANGELOG.md"
    for text in changelog_problems(changelog.read_text(encoding="utf-8"), version[1]):
        problem(changelog, 0, text)


def check_first_program():
    program = (ROOT / "examples/first-program.cpp").read_text(encoding="utf-8")
    if f"\n```cpp\n{program}```\n" not in (ROOT / "README.md").read_text(encoding="utf-8"):
        problem(ROOT / "README.md", 0, "does not hold examples/first-program.cpp as it is")


def split_comment(line):
    code, mark, comment = line.partition("//")
    return code.strip(), comment.strip() if mark else None


def exempt(code, type_name):
    return (code.startswith("friend ") or code.endswith("= delete;") or code.startswith("#")
            or (type_name and re.fullmatch(rf"(explicit )?~?{type_name}\(\);", code)))


def check_header(path):
    lines = path.read_text(encoding="utf-8").splitlines()
    code_words = set()
    for line in lines:
        code_words.update(re.findall(r"\w+", split_comment(line)[0]))

    scopes = []  # (kind, name, visible) of the open braces
    documented_block = False
    continued = False  # inside a declaration of several lines
    for number, line in enumerate(lines, 1):
        code, comment = split_comment(line)
        if comment:
            for name in re.findall(r"`(\w+)`", comment):
                if name not in code_words:
                    problem(path, number, f"the comment names `{name}`, which the header does not have")
        if not code:
            documented_block = comment is not None and (documented_block or not continued)
            continue
        if code.startswith("#") or code.endswith("\\"):
            continue
        if code in ("public:", "protected:", "private:"):
            scopes[-1] = (*scopes[-1][:2], code != "private:")
            continue
        if code.startswith("}"):
            scopes.pop()
            documented_block = False
            continue
        opened = re.match(r"(?:typedef\s+)?(class|struct|enum(?: class)?|namespace|extern)\b(?:\s+[A-Z_]+_API)?\s*([\w\"]*)", code)
        opens_scope = bool(opened) and code.endswith("{")
        visible = all(scope[2] for scope in scopes)
        type_name = scopes[-1][1] if scopes and scopes[-1][0] in ("class", "struct") else None
        forward = bool(re.fullmatch(r"(class|struct) \w+;", code))
        macro = bool(re.fullmatch(r"[A-Z_]+", code)) or code.startswith(("static_assert", "typedef struct _"))
        needs_words = visible and not continued and not forward and not macro and not exempt(code, type_name)
        if opens_scope and opened.group(1) in ("namespace", "extern"):
            needs_words = False
        if needs_words and not documented_block and comment is None and not (scopes and scopes[-1][0] == "documented"):
            problem(path, number, f"not documented: {code}")
        if opens_scope:
            kind = opened.group(1)
            # The values of a documented enumeration are explained by it unless they carry words of their own.
            scopes.append(("documented" if kind.startswith("enum") else kind, opened.group(2), kind != "class"))
            documented_block = False
        continued = not opens_scope and not code.endswith((";", "}", ",")) and not macro
        if code.endswith(",") and code.count("(") > code.count(")"):
            continued = True


def main():
    usage = (ROOT / "dev").read_text(encoding="utf-8").split("<<'TEXT'")[1].split("\nTEXT")[0]
    commands = set(re.findall(r"^  ([a-z]+)\b", usage, re.M))
    markdown = project_files("*.md")
    headers = project_files("include/*.h")
    if not markdown or not headers or not commands:
        sys.exit("check_docs.py: found no Markdown files, public headers or commands")
    for path in markdown:
        check_markdown(path, commands)
    for path in headers:
        check_header(path)
    check_exit_codes()
    manual = ROOT / "docs/clusctl.md"
    for line, text in dry_run_problems(manual.read_text(encoding="utf-8")):
        problem(manual, line, text)
    check_version()
    check_first_program()
    problems.extend(check_layers.check_map())
    for text in problems:
        print(text, file=sys.stderr)
    print(f"{len(markdown)} Markdown files and {len(headers)} public headers checked, {len(problems)} problems")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
