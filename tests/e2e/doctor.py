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
FOLDERS = ("src/virtualserver", "src/veritas", "src/cluster", "src/settings")
FILES = ("src/core/SettingsFile.cpp",)

# A branch that leaves something out, passes it over, or gives up.
EXIT = re.compile(r"\b(?:return (?:false|-1|[\w:]+::(?:NotHere|Unknown|ENUM_VS_RESULT_FAIL)|(?:served|owner).*)|continue|succeeded = false|return 0);|\.erase\(|\bSleep\(retryInterval\);")
CONDITION = re.compile(r"^\s*(?:\} else )?(?:if|while|for) \(")


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
    """The case of each run of the doctor, and the codes that it found, as its readable form or its document has them."""
    for case in sorted(schemas.CASES.glob("*.txt")):
        for run in case.read_text(encoding="utf-8").split("\n$ ")[1:]:
            if re.match(r"(\S+=(\"[^\"]*\"|\S+) )*clusctl (\S+ )*doctor\b", run):
                found = set(re.findall(r"(?m)^  (?:ok|note|warning|error) .* \[([a-z-]+)\]$", run))
                found |= set(re.findall(r'(?m)^      "code": "([a-z-]+)",$', run))
                found |= {f"deployment {kind}" for kind in re.findall(r"(?m)^  ok       ([a-z-]+): .* \[deployment\]$", run)}
                found |= {f"deployment {kind}" for kind in re.findall(r'"code": "deployment",\n      "group": null,\n      "object": "([a-z-]+)"', run)}
                if found:
                    yield case.stem, found


def problems_of_cases(table):
    all_runs = [found for _, found in runs()]
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
    """The branches of a source file, each as the condition that leads there; of equal ones in a function one."""
    function = ""
    condition = ""
    open_condition = ""
    for line in (ROOT / file).read_text(encoding="utf-8").splitlines():
        begun = re.match(r"^[\w:<>&*,~ ]*?\b(?:\w+::)?(\w+)\((?!.*;$)", line)
        if begun and not line.startswith(" "):
            function, condition = begun[1], ""
        if CONDITION.match(line) or open_condition:
            open_condition += " " + line.strip()
            if line.rstrip().endswith("{"):
                condition, open_condition = open_condition.strip(), ""
        if EXIT.search(line):
            yield f"{file} {function}: {condition.rstrip('{ ')}"


def read_branches():
    """The branches with the codes that tell of them, as the table of this test has them: a line that begins with a blank holds the codes
    of the branch above it with the cases that show them, "code, code: case, case", or after a dash why there is none. And the functions that are not looked at, "not FILE FUNCTION - WHY"."""
    table, passed_over = {}, []
    for line in BRANCHES.read_text(encoding="utf-8").splitlines():
        if line.startswith("  "):
            table[branch] = line.strip()
        elif line.startswith("not "):
            passed_over.append(re.fullmatch(r"not (\S+ \S+) - \S.*", line)[1])
        elif line and not line.startswith("#"):
            branch = line
    return table, passed_over


def problems_of_branches(table):
    told, passed_over = read_branches()
    files = [file.relative_to(ROOT).as_posix() for folder in FOLDERS for file in sorted((ROOT / folder).iterdir())] + list(FILES)
    every = {branch for file in files for branch in branches_in(file)}
    found = {branch for branch in every if branch.split(": ")[0] not in passed_over}
    problems = [f"{BRANCHES.name} passes over {function}, which has no such branch, or is not there" for function in passed_over
                if not any(branch.startswith(f"{function}: ") for branch in every)]
    problems += [f"{BRANCHES.name} lacks: {branch}" for branch in sorted(found - set(told))]
    problems += [f"{BRANCHES.name}: the library has no such branch: {branch}" for branch in sorted(set(told) - found)]
    shown = {}
    for case, codes_of_run in runs():
        shown.setdefault(case, set()).update(codes_of_run)
    for branch, line in told.items():
        if line.startswith("- "):
            continue
        names, _, cases = line.partition(": ")
        found = set().union(*(shown.get(case, set()) for case in cases.split(", ")))
        problems += [f"{BRANCHES.name}: {branch}: there is no code {name}" for name in names.split(", ") if name not in table]
        problems += [f"{BRANCHES.name}: {branch}: none of the cases '{cases}' shows {name}" for name in names.split(", ") if name not in found]
        problems += [f"{BRANCHES.name}: {branch}: the case {case} shows none of its codes" for case in cases.split(", ")
                     if not shown.get(case, set()) & set(names.split(", "))]
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
