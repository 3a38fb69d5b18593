"""Runs of clusctl that are interrupted in the midst of a run of a VCS tool."""
import json
import re
import time

HELD_UP = 800 # milliseconds: how long that run is held up, so that it is met


def once(case, how, number, arguments, variables):
    """Presses Ctrl+C ("ctrl-c"), twice ("twice"), when the run is over ("later"), or ends clusctl ("kill"). What clusctl says, its exit
    code, the mode of the configuration and how many temporary files are left."""
    held = case.folder / "held.json"
    counts = case.folder / "held.json.counts"
    counts.unlink(missing_ok=True)
    held.write_text(json.dumps([f"*#{number}=delay_ms:{HELD_UP}"]), encoding="ascii")
    program, case.program = case.program, case.runner.bin / "e2e" / "interrupt-tool.exe"
    key, pause = ("ctrl-c", 2 * HELD_UP) if how == "later" else (how, 100)
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


def is_there(name, configuration):
    return re.search(rf"^\s*\w+ {re.escape(name)} \(", configuration, re.MULTILINE) is not None


def mode(case):
    state = case.folder / "main.cf.state.json"
    return json.loads(state.read_text(encoding="utf-8")).get("mode", "ro") if state.is_file() else "ro"


def temporary_folder(case):
    users = case.runner.prefix / "drive_c" / "users"
    return next(folder for place in ("*/Temp", "*/AppData/Local/Temp") for folder in users.glob(place)) # of one Wine, and another
