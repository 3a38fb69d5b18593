"""Runs of clusctl that are interrupted in the midst of a run of a VCS tool, or of a call of the cluster."""
import json
import re
import time

HELD_UP = 800 # milliseconds: how long that run, or call, is held up, so that it is met


def once(case, how, number, arguments, variables):
    """With the faults that VCSSIM_FAULTS names besides: presses Ctrl+C ("ctrl-c"), twice ("twice"), when the run is over ("later"), closes the console ("close"), ends the session
    ("logoff"), ends clusctl ("kill"), or presses Ctrl+C in a run that hangs ("hang"). What clusctl says, its exit code, the mode of the configuration and how many temporary
    files are left."""
    held = case.folder / "held.json"
    counts = case.folder / "held.json.counts"
    counts.unlink(missing_ok=True)
    effect = "hang" if how == "hang" else f"delay_ms:{HELD_UP}"
    others = json.loads((case.folder / variables["VCSSIM_FAULTS"]).read_text(encoding="utf-8")) if "VCSSIM_FAULTS" in variables else []
    held.write_text(json.dumps([*others, f"*#{number}={effect}"]), encoding="ascii")
    program, case.program = case.program, case.runner.bin / "e2e" / "interrupt-tool.exe"
    key, pause = ("ctrl-c", 2 * HELD_UP) if how == "later" else ("ctrl-c", 300) if how == "hang" else (how, 100)
    try:
        process = case.start([key, counts.name, str(number), str(pause), str(program), *arguments],
                             {**variables, "VCSSIM_FAULTS": held.name})
        result = case.finish(process, arguments)
    finally:
        case.program = program
    time.sleep(2 * HELD_UP / 1000 if how in ("twice", "kill") else 0) # the tool goes on
    held.unlink()
    counts.unlink()
    left = [*case.folder.glob("ha-*.tmp"), *temporary_folder(case).glob("clusctl-*")]
    return f"{result}[mode {mode(case)}]\n[left {len(left)} temporary files]\n"


def at_each(case, numbers, arguments, variables):
    """A line for each interruption; what clusctl tells of each resource is compared with the configuration."""
    lines = []
    for number in numbers:
        case.copy_configuration()
        said = once(case, "ctrl-c", number, [*arguments, "--json"], variables)
        document, _, rest = said.partition("[stderr]\n")
        document = json.loads(document)
        told = {record["name"]: record["result"] for record in document.get("resources", [])}
        configuration = (case.folder / "main.cf").read_text(encoding="utf-8")
        wrong = [name for name, result in told.items() if is_there(name, configuration) != (result in ("created", "half created"))]
        command = ", ".join(document.get("interruptedCommands", [])) or "-"
        ends = " ".join(re.findall(r"^\[.*\]$", rest, re.MULTILINE))
        lines.append(f"{number}: {command}\n   {document['error']['message']}\n   {', '.join(told.values()) or 'no resources told'} {ends}"
                     + (f" WRONG: {', '.join(wrong)}" if wrong else "") + "\n")
    return "".join(lines)


def in_call(case, how, call, arguments, variables):
    """The same in a call of the cluster, "AddClusterResourceDependency#2". What clusctl says, and its exit code."""
    journal, reached = case.folder / "held.journal", case.folder / "held.reached"
    faults = [*variables.get("CLUSSIM_FAULTS", "").split(";"), f"{call if '#' in call else call + '#1'}=delay_ms:{HELD_UP}"]
    program, case.program = case.program, case.runner.bin / "e2e" / "interrupt-tool.exe"
    try:
        process = case.start([how, reached.name, "1", "100", str(program), *arguments],
                             {**variables, "CLUSSIM_FAULTS": ";".join(filter(None, faults)), "CLUSSIM_JOURNAL": journal.name})
        while process.poll() is None and not (journal.is_file() and "delayMs" in journal.read_text(encoding="utf-8")):
            time.sleep(0.01)
        reached.write_text("1", encoding="ascii")
        result = case.finish(process, arguments)
    finally:
        case.program = program
    journal.unlink()
    reached.unlink()
    left = [*case.folder.glob("*.new"), *temporary_folder(case).glob("clusctl-*"), *case.marks()]
    return f"{result}[left {len(left)} files]\n"


def in_each_call(case, calls, arguments, variables):
    """Some lines for each interruption; what clusctl tells of resources is compared with the model."""
    lines = []
    for call in calls:
        case.copy_model()
        before = resources_of(case)
        said = in_call(case, "ctrl-c", call, [*arguments, "--json"], variables)
        text, _, rest = said.partition("[stderr]\n")
        document, after = json.loads(text), resources_of(case)
        error = document.get("error", {"code": None, "message": "no error", "hint": None})
        changes = [*(f"{name} is {after[name]}" for name in after if after[name] != before.get(name)),
                   *(f"{name} is gone" for name in before if name not in after)]
        records = [*document.get("resources", []), *filter(None, [document.get("restarted")])]
        told = {record["name"]: record for record in records}
        wrong = [*(name for name, record in told.items() if not is_as_told(record, after.get(name, ""))),
                 *(name for name in after if name not in before and told and name not in told),
                 *(name for name in document.get("deleted", []) if name in after)]
        ends = " ".join(re.findall(r"^\[.*\]$", rest, re.MULTILINE))
        lines.append(f"{call}: {error['message']}\n" + (f"   {error['hint']}\n" if error["hint"] else "")
                     + f"   {'; '.join(changes) or 'nothing is changed'} {ends}"
                     + (f" WRONG: {', '.join(wrong)}" if wrong else "")
                     + ("" if error["code"] == "interrupted" else " NOT INTERRUPTED") + "\n")
    return "".join(lines)


def resources_of(case):
    """The states of the model's resources, and how many others each depends on."""
    model = json.loads((case.folder / "model.json").read_text(encoding="utf-8"))
    return {resource["name"]: f"{resource.get('state', 'Offline').lower()}, depends on {len(resource.get('dependsOn', []))}"
            for resource in model["resources"]}


def is_as_told(record, found):
    state, _, number = found.partition(", depends on ")
    return state == record["state"].replace(" ", "") and int(number) == len(record.get("dependsOn", [None] * int(number)))


def is_there(name, configuration):
    return re.search(rf"^\s*\w+ {re.escape(name)} \(", configuration, re.MULTILINE) is not None


def mode(case):
    state = case.folder / "main.cf.state.json"
    return json.loads(state.read_text(encoding="utf-8")).get("mode", "ro") if state.is_file() else "ro"


def temporary_folder(case):
    users = case.runner.prefix / "drive_c" / "users"
    return next(folder for place in ("*/Temp", "*/AppData/Local/Temp") for folder in users.glob(place)) # of one Wine, and another
