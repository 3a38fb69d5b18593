"""The doctor's codes: documented, judged as the status judges, found in a case and not found in another that came as far, and one for each branch of the library that leads to less.

The branches are those of the source files that enumerate, look up and create, but for the functions that the table names with a reason."""
import json
import re

import mends
import schemas

ROOT = schemas.FOLDER.parent.parent
HERE = schemas.CASES.parent
TABLE = ROOT / "tools" / "clusctl" / "DoctorCodes.cpp"
RULE = ROOT / "tools" / "clusctl" / "picture" / "Problems.cpp"
MANUAL = ROOT / "docs" / "doctor.md"
BRANCHES = HERE / "doctor-branches.txt"
NOT_RUN = HERE / "doctor-mends.txt"
FOLDERS = ("src/virtualserver", "src/veritas", "src/cluster", "src/settings", "src/platform")
FILES = ("src/core/SettingsFile.cpp",)

# A branch that leaves something out, passes it over, or gives up.
EXIT = re.compile(r"\breturn (?:false|-1|0|nullptr|\{\}|std::wstring\(\)|[\w:]*(?:NotHere|Unknown|UNKNOWN|ENUM_VS_RESULT_FAIL)|(?:served|owner).*);|\breturn .*(?:==|!=|&&)"
                  r"|\b(?:continue|succeeded = false);|\.erase\(|remove_if\(|\bSleep\(retryInterval\);|\bLOG_\w+\(.*\bskip\b")
JUDGED = re.compile(r"return (?!.*(?:==|!=|&&))|continue|succeeded|Sleep|LOG_") # by the condition that leads there; all others by their own text
CONDITION = re.compile(r"(?:\} )?(?:else )?(?:if|while|for|switch|catch) \(|(?:case .*|default):|\} else \{")
FUNCTION = re.compile(r"(?:[\w:<>&*,~ ]*[ *&])?(?:\w+::)*~?(?!bool\b)(\w+)\([^;]*(?:\{|,|\)|const)$")

# What only a run shows that came to the step of a code, on a cluster of its kind: one of each set. The first line that matches counts.
# "deployment KIND" stands for a deployment of that kind.
PRODUCT = {"product-resource"}
GROUP = PRODUCT | {"product-resource-missing"}
VCS_PRODUCT = {"vcs-replication", "vcs-resource-online"}
REPLICATION = {"deployment continuous-replication"}
CLUSTER = {"deployment single-copy-cluster", "deployment continuous-replication", "deployment cluster"}
STEPS = [
    (r"bundle-without-findings", {"bundle"}),
    (r"library-.*|log-.*|run-.*|capture-.*", {"library"}),
    (r"settings-file-.*", {"settings-file-entry"}),
    (r"product-key-.*|value-.*|home-.*", {"product-key"}),
    (r"is-cluster-.*", {"product-key"}, CLUSTER | {"plain-server", "cluster-not-deployed"}),
    (r"quorum-.*", {"product-key"}, CLUSTER),
    (r"server-(address|guid)-.*", {"product-key"}, {"plain-server"}),
    (r"data-root-missing", {"product-key"}, REPLICATION),
    (r"data-root-other-key", {"settings-file-entry"}, {"product-key"}),
    (r"plain-server-.*", {"plain-server"}),
    (r"cluster-not-.*", {"cluster-open"}, CLUSTER),
    (r"node-.*|resources-unlisted|types?-(case|unlisted)|product-type-.*|servers-none|cluster-unread", {"cluster-open"}, {"product-resource"}),
    (r"creation-.*", {"creation-possible"}),
    (r"product-resource-missing", PRODUCT),
    (r"network-name-id-.*|address-.*|server-left-out", {"server-served"}),
    (r"smtp-.*", PRODUCT, CLUSTER),
    (r"disk-.*|data-path-off-disk", PRODUCT, {"data-path"}),
    (r"product-resource-several|product-.*|owner-.*|network-name-dependency-.*|data-path-.*|store-dependency-.*|possible-.*|restart-.*|type-not-.*", PRODUCT),
    (r"network-name-.*|attendant-.*|store-.*|group-.*|resource-.*|server-.*", {"cluster-open"}, GROUP),
    (r"vcs-(tool|type|data-root)-.*", {"vcs-tool"}),
    (r"vcs-(engine-down|not-asked)", {"vcs-engine"}),
    (r"vcs-(system|mode)-.*|vcs-servers?-unread|vcs-store-.*", {"vcs-engine"}, {"vcs-server"}),
    (r"vcs-creation-.*", {"vcs-creation-possible"}),
    (r"vcs-(lanman|virtual|group|attendant|mount|product)-.*", {"vcs-server"}),
    (r"vcs-(replication|service|resource)-.*", {"vcs-server"}, VCS_PRODUCT),
]


def codes():
    """Each code of the table with its level."""
    found = re.findall(r'\{"([a-z-]+)",\s*(Ok|Note|Warning|Error),', TABLE.read_text(encoding="utf-8"))
    return {code: level.lower() for code, level in found}


def problems_of_manual(table):
    text = MANUAL.read_text(encoding="utf-8")
    fine, _, right = text.partition("\n## What is as it should be\n")
    rows = re.findall(r"(?m)^\| ((?:`[a-z-]+`(?:, )?)+) \| (note|warning|error) \| [^|]+ \| [^|]+ \|$", fine)
    told = [(code, level) for names, level in rows for code in re.findall(r"`([a-z-]+)`", names)]
    told += [(code, "ok") for code in re.findall(r"`([a-z-]+)`", right)]
    problems = [f"docs/doctor.md: {code} stands there twice" for code, _ in told if [name for name, _ in told].count(code) > 1]
    problems += [f"docs/doctor.md: {code} is no {level}" for code, level in told if table.get(code) != level]
    return problems + [f"docs/doctor.md: {code} is missing" for code in table if code not in dict(told)]


def problems_of_rule(table):
    """The status judges as the doctor does, by codes of its table, and docs/doctor.md says how."""
    rows = dict(re.findall(r"(?m)^\| (critical|warning|unknown) \| [a-z ]+ \| (.*) \|$", MANUAL.read_text(encoding="utf-8")))
    judged = re.findall(r'\{"([a-z-]+)", Level::(\w+)\}', RULE.read_text(encoding="utf-8"))
    allowed = {"Critical": ("error",), "Warning": ("warning",), "Unknown": ("error", "warning")}
    problems = [] if judged else ["the status has no codes"]
    for code, level in judged:
        if table.get(code) not in allowed[level]:
            problems.append(f"the status calls {code} {level.lower()}, the doctor {table.get(code, 'does not know it')}")
        if f"`{code}`" not in rows.get(level.lower(), ""):
            problems.append(f"docs/doctor.md: {code} is not among what the status calls {level.lower()}")
    told = re.findall(r"`([a-z-]+)`", " ".join(rows.values()))
    return problems + [f"docs/doctor.md: the status does not tell {code}" for code in told if code not in dict(judged)]


def runs():
    """Each run of the doctor: its case, the command, and what it found: code and words, as its readable form or its
    document has them."""
    for case in sorted(schemas.CASES.glob("*.txt")):
        for run in case.read_text(encoding="utf-8").split("\n$ ")[1:]:
            if re.match(r"(\S+=(\"[^\"]*\"|\S+) )*(found \S+ )?clusctl (\S+ )*doctor\b", run):
                found = [(code, text) for text, code in re.findall(r"(?m)^  (?:ok|note|warning|error) +(.*) \[([a-z-]+)\]$", run)]
                found += [(code, f"{object}: {seen}") for code, object, seen in
                          re.findall(r'(?m)^      "code": "([a-z-]+)",\n.*\n      "object": "(.*)",\n      "seen": "(.*)",$', run)]
                if found:
                    yield case.stem, run.partition("\n")[0], found


def problems_of_cases(table):
    all_runs = [{f"deployment {text.partition(':')[0]}" if code == "deployment" else code for code, text in found} | {code for code, _ in found}
                for _, _, found in runs()]
    found = {code for run in all_runs for code in run if not code.startswith("deployment ")}
    problems = [f"no case makes the doctor find {code}" for code in table if code not in found]
    for code in (code for code in table if table[code] != "ok"):
        marks = next((marks for pattern, *marks in STEPS if re.fullmatch(pattern, code)), None)
        if marks is None:
            problems.append(f"the step of {code} is not known")
        elif not any(code not in run and all(run & mark for mark in marks) for run in all_runs):
            problems.append(f"the doctor finds {code} in each case that comes to its step")
    return problems + [f"the cases show {code}, which the table does not have" for code in sorted(found - set(table))]


def branches_in(file):
    """The branches of a source file, each as its function and the innermost condition that leads there, or the statement that decides; of
    equal ones in a function one."""
    function, conditions, open_text = "", [], ""
    for line in (ROOT / file).read_text(encoding="utf-8").splitlines():
        code = line.split(" // ")[0].rstrip()
        text = code.strip()
        if not text or text.startswith(("//", "#", "[]")):
            continue
        if open_text:
            text = f"{open_text} {text}"
        else:
            indent = len(code) - len(code.lstrip())
        is_condition = CONDITION.match(text)
        if not text.endswith(("{", ":", ";", "}")) and (is_condition or text.startswith("return ")):
            open_text = text
            continue
        open_text = ""
        begun = FUNCTION.match(text)
        if begun and not is_condition and (indent == 0 or indent == 4 and text.endswith("{")):
            function, conditions = begun[1], []
        former = next((condition for depth, condition in conditions if depth == indent), "")
        conditions = [(depth, condition) for depth, condition in conditions if depth < indent]
        if is_condition:
            conditions.append((indent, f"else of {former}" if text == "} else {" else text.strip("{} ")))
        if EXIT.search(text):
            inner = conditions[-1][1] if conditions else ""
            if not JUDGED.match(text) or inner.startswith(("for", "while")):
                inner = text.rstrip(";")
            yield f"{file} {function}: {inner or 'at the end'}"


def causes_of(branch):
    """How many causes its condition has of its own: "a || b" is two."""
    causes, depth = 1, 0
    for i, letter in enumerate(branch):
        depth += {"(": 1, ")": -1}.get(letter, 0)
        causes += depth <= 1 and branch.startswith("||", i)
    return causes


def read_branches():
    """The table of this test, whose beginning tells its form: branch -> lines below it, each with the run in which all is well; and the
    functions that are not looked at; and the runs by name: case and command."""
    table, passed_over, named, fine = {}, [], {}, ""
    for line in BRANCHES.read_text(encoding="utf-8").splitlines():
        if line.startswith("  "):
            told, _, other = line.strip().partition("; not in ")
            table[branch].append((told, other or fine))
        elif line.startswith("not "):
            passed_over.append(re.fullmatch(r"not (\S+ \S+) - \S.*", line)[1])
        elif line.startswith("run "):
            name, case, command = re.fullmatch(r"run (\S+) = (\S+) \$ (.*)", line).groups()
            named[name] = case, command
        elif line.startswith("fine "):
            fine = line[5:]
        elif line and not line.startswith("#"):
            branch = line
            if branch in table:
                raise ValueError(f"{BRANCHES.name}: twice: {branch}")
            table[branch] = []
    return table, passed_over, named


def problems_of_line(table, shown, told, fine):
    if told.startswith("- "):
        return []
    said = re.fullmatch(r"([a-z-]+): (\S+)(?: (.+))?", told)
    if said is None:
        return ["is no 'CODE: RUN WORDS'"]
    code, run, words = said[1], said[2], said[3] or ""
    problems = [] if code in table else [f"there is no code {code}"]
    if not any(found == code and words in text for found, text in shown.get(run, ())):
        problems.append(f"run {run} shows no {code} of '{words}'")
    if fine not in shown or any(found == code for found, _ in shown[fine]):
        problems.append(f"run {fine} is none, or shows {code} as well")
    return problems


def problems_of_branches(table):
    told, passed_over, named = read_branches()
    files = [file.relative_to(ROOT).as_posix() for folder in FOLDERS for file in sorted((ROOT / folder).iterdir())] + list(FILES)
    every = {branch for file in files for branch in branches_in(file)}
    found = {branch for branch in every if branch.split(": ")[0] not in passed_over}
    problems = [f"{BRANCHES.name} passes over {function}, which has no such branch, or is not there" for function in passed_over
                if not any(branch.startswith(f"{function}: ") for branch in every)]
    problems += [f"{BRANCHES.name} lacks: {branch}" for branch in sorted(found - set(told))]
    problems += [f"{BRANCHES.name}: the library has no such branch: {branch}" for branch in sorted(set(told) - found)]
    found_by = {(case, command): findings for case, command, findings in runs()}
    problems += [f"{BRANCHES.name}: {name}: there is no '$ {command}' in {case}" for name, (case, command) in named.items() if (case, command) not in found_by]
    shown = {name: found_by.get(run, []) for name, run in named.items()}
    for branch, lines in told.items():
        if len(lines) < causes_of(branch) and not (len(lines) == 1 and lines[0][0].startswith("- ")):
            problems.append(f"{BRANCHES.name}: {branch}: {causes_of(branch)} causes, and {len(lines)} lines")
        problems += [f"{BRANCHES.name}: {branch}: {problem}" for line in lines for problem in problems_of_line(table, shown, *line)]
    return problems


def mends_in_cases():
    """The mends of the cases that are commands, in either form, by code and program: a code may have one on each kind of cluster."""
    found = {}
    for case in sorted(schemas.CASES.glob("*.txt")):
        text = case.read_text(encoding="utf-8")
        pairs = re.findall(r"(?m)^  (?:ok|note|warning|error) .* \[([a-z-]+)\]\n(?: +So: .*\n)? +Do: (.*)$", text)
        pairs += [(code, json.loads(mend)) for code, mend in
                  re.findall(r'(?m)^ +"code": "([a-z-]+)",\n(?: +"(?!code|mend)\w+": .*\n)* +"mend": (".*"),?$', text)]
        found.update({f"{code} {mends.commands_of(mend)[0].split()[0]}": mend for code, mend in pairs if mends.commands_of(mend)})
    return found


def problems_of_mends(table):
    """Each mend that is a command is run by a case, after which its finding is gone, or the list says why it cannot be."""
    needed = mends_in_cases()
    proofs = re.compile(r"(?m)^\$ (?:\S+=\S+ )*mends ([a-z-]+) .*\n((\w+).*\n(?:.+\n?)*)")
    answers = [(case.stem, *found) for case in sorted(schemas.CASES.glob("*.txt")) for found in proofs.findall(case.read_text(encoding="utf-8"))]
    problems = [f"{case}: the mend of {code} does not mend" for case, code, answer, _ in answers if not answer.endswith(f"{code} is gone\n")]
    proved = {f"{code} {program}" for _, code, _, program in answers}
    lines = [line for line in NOT_RUN.read_text(encoding="utf-8").splitlines() if line and not line.startswith("#")]
    reasons = dict(line.split(" - ", 1) for line in lines)
    problems += [f"no case runs a mend as of {pair}, and {NOT_RUN.name} does not say why: {mend}" for pair, mend in sorted(needed.items())
                 if pair not in proved and pair not in reasons]
    problems += [f"{NOT_RUN.name}: {pair} is proved by a case" for pair in reasons if pair in proved]
    problems += [f"{NOT_RUN.name}: no case shows a mend as of {pair}" for pair in reasons if pair not in needed]
    return problems + [f"a case mends {pair}, a code that the doctor does not have" for pair in sorted(proved) if pair.split()[0] not in table]


def check(_runner, _update):
    table = codes()
    return problems_of_manual(table) + problems_of_rule(table) + problems_of_cases(table) + problems_of_branches(table) + problems_of_mends(table)
