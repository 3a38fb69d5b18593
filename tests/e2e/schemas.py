"""The JSON documents of clusctl against the schemas in docs/schemas."""
import json
import re
import shlex
from pathlib import Path

CASES = Path(__file__).resolve().parent / "cases"
FOLDER = Path(__file__).resolve().parent.parent.parent / "docs" / "schemas"
SUFFIX = ".schema.json"
COMMON = "common" + SUFFIX
DRY_RUN = "dry-run"  # what it answers is not the command's own document
WATCH = "status-watch"  # nor is what "status --watch" does: a document a line
TELLING = ("help", "completion", "manual")  # commands whose answer is a text
PASSING = ("record",)  # commands whose answer is that of another one, behind "--"


def validator(schema):
    from jsonschema import Draft202012Validator  # where nothing is validated, the package need not be there
    Draft202012Validator.check_schema(schema)
    return Draft202012Validator(schema)


def commands_with_schema():
    return {file.name[:-len(SUFFIX)] for file in FOLDER.glob("*" + SUFFIX)} - {"common", DRY_RUN, WATCH}


def load(name):
    """A schema with the definitions of others that it refers to in it, so that nothing has to be looked up."""
    text = (FOLDER / name).read_text(encoding="utf-8")
    others = sorted({COMMON} | set(re.findall(r"[\w-]+" + re.escape(SUFFIX) + "(?=#/)", text)))
    definitions = {}
    for other in others:
        text = text.replace(other + "#/", "#/")
        definitions.update(load(other)["$defs"] if other not in (name, COMMON) else definitions_of(other))
    schema = json.loads(text)
    schema["$defs"] = {**definitions, **schema.get("$defs", {})}
    return schema


def definitions_of(name):
    return json.loads((FOLDER / name).read_text(encoding="utf-8"))["$defs"]


def command_of(arguments):
    """The words of a command line that name a command, joined as the schemas' files are; None when none do."""
    if "--" in arguments and any(word in arguments[:arguments.index("--")] for word in PASSING):
        arguments = arguments[arguments.index("--") + 1:]
    words = [argument for argument in arguments if not argument.startswith("-")]
    known = commands_with_schema()
    if "rehearse" in words:
        return "rehearse"
    if "--dry-run" in arguments:
        return DRY_RUN
    for first in range(len(words)):
        for count in (3, 2, 1):
            name = "-".join(words[first:first + count])
            if name in known:
                return name
    return None


def problems_of(arguments, output):
    """What is wrong with what a command line printed, given that it is to be a JSON document: a list of sentences."""
    if "--watch" in arguments and not output.startswith("{\n"): # else it failed before it showed anything
        taken = validator(load(WATCH + SUFFIX))
        if not output:
            return ["it printed nothing"]
        return [problem for line in output.splitlines() for problem in problems_of_document(taken, line)]
    command = command_of(arguments)
    return problems_of_document(validator(load(command + SUFFIX) if command else {**load(COMMON), "$ref": "#/$defs/failure"}), output)


def problems_of_document(taken, text):
    try:
        document = json.loads(text)
    except ValueError as error:
        return [f"no JSON document: {error}"]
    errors = sorted(taken.iter_errors(document), key=lambda error: list(map(str, error.path)))
    return [f"{error.json_path}: {error.message}" for error in errors]


def is_expected(arguments, output):
    """Whether a command line has to print a document: with --json all but those that print a text do."""
    wants = "--json" in arguments and not {"--help", "-h", "--version"} & set(arguments)
    words = [argument for argument in arguments if not argument.startswith("-")]
    tells = bool(words) and words[0] in TELLING
    return (wants and not tells) or output.startswith("{")


def documents():
    """The command and the document of each run in the cases that prints one."""
    for case in sorted(CASES.glob("*.txt")):
        for line, output in re.findall(r"(?m)^\$ (?:\w+=\S+ )*clusctl (.* --json.*|--json .*)\n(\{\n(?:[ \]}].*\n)*?\}\n)",
                                       case.read_text(encoding="utf-8")):
            command = command_of(shlex.split(line))
            if command:
                yield command, json.loads(output)


def problems_of_answer(command, document):
    """That a schema refuses an answer that has a member more or less, or says that another command's work was done."""
    taken = validator(load(command + SUFFIX))
    common = json.loads((FOLDER / COMMON).read_text(encoding="utf-8"))["$defs"]["answer"]
    always = set(document) - (set(common["properties"]) - set(common["required"]))
    wrong = [{name: value for name, value in document.items() if name != left} for left in sorted(always)] + [{**document, "more": 1}]
    for key, records in document.items():
        if isinstance(records, list) and records and isinstance(records[0], dict):
            wrong.append({**document, key: [{**records[0], "more": 1}]})
            wrong += [{**document, key: [{**records[0], name: "no such"}]} for name in ("result", "online") if name in records[0]]
            other = {"created": "deleted", "existed already": "deleted", "deleted": "created"}.get(records[0].get("result"))
            wrong += [{**document, key: [{**records[0], "result": other}]}] if other else []
    return [f"docs/schemas/{command}{SUFFIX} takes {document}" for document in wrong if taken.is_valid(document)]


def problems_of_watching():
    """That the schema of "status --watch" takes the lines that the cases show, of both kinds, and refuses them changed."""
    taken = validator(load(WATCH + SUFFIX))
    text = "".join(case.read_text(encoding="utf-8") for case in sorted(CASES.glob("*watch*.txt")))
    lines = [json.loads(line.replace('"TIME"', '"2026-01-02T03:04:05Z"')) for line in re.findall(r'(?m)^\{"time":.*\}$', text)]
    problems = [f"no case shows {what}" for what, member in (("the status", "cluster"), ("a change", "kind"))
                if not any(member in line for line in lines)]
    for line in lines:
        wrong = [{**line, "more": 1}, *({name: value for name, value in line.items() if name != left} for left in line)]
        wrong += [{**line, "what": "none of these"}] if "kind" in line else []
        problems += [] if taken.is_valid(line) else [f"docs/schemas/{WATCH}{SUFFIX} refuses {line}"]
        problems += [f"docs/schemas/{WATCH}{SUFFIX} takes {changed}" for changed in wrong if taken.is_valid(changed)]
    return problems


def problems_of_strictness():
    """That every schema takes the document of a failure, and refuses it changed; that the cases show both kinds of documents of every
    command, and the schemas refuse the answers changed."""
    error = {"code": "failed", "message": "it failed", "reason": None, "win32": None, "hint": None}
    failure = {"complete": False, "warnings": [], "error": error, "log": [], "simulated": None}
    wrong = [{**failure, "more": 1}, {**failure, "error": {**error, "more": 1}}, {**failure, "error": {**error, "code": "no-such"}},
             *({name: value for name, value in failure.items() if name != left} for left in failure)]
    problems = []
    for command in sorted(commands_with_schema()):
        taken = validator(load(command + SUFFIX))
        if not taken.is_valid(failure):
            problems.append(f"docs/schemas/{command}{SUFFIX} refuses a failure")
        problems += [f"docs/schemas/{command}{SUFFIX} takes {document}" for document in wrong if taken.is_valid(document)]
    answered = set()
    failed = set()
    for command, document in documents():
        if "error" in document:
            failed.add(command)
        elif "complete" in document: # no model file
            answered.add(command)
            problems += problems_of_answer(command, document)
    problems += [f"no case shows an answer of {command} --json" for command in sorted(commands_with_schema() - answered)]
    problems += problems_of_watching()
    return problems + [f"no case shows a failure of {command} --json" for command in sorted(commands_with_schema() - failed)]
