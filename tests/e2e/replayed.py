"""The asking commands of the cases, each recorded on the simulator and then replayed without one: both say the same.

What the recorded run prints is also what the case says that the command prints without a recording.
"""
import json
import os
import re
import shlex
import shutil
from pathlib import Path

CASES = Path(__file__).resolve().parent / "cases"
EXAMPLES = CASES.parents[2] / "examples"
KINDS = {"failover": "model", "vcs": "vcs"}
# Settings of a case that are about the program, its libraries, its disk or the files of tools, which no recording has.
APART = {"settings", "simulator", "missing", "replaced", "tools", "writable-tool", "planted-tool", "environment-tool", "disk", "small-disk",
         "read-only-disk", "debug-log"}
# Command lines that say something else in a recording, or nothing about a cluster: docs/testing.md says why.
UNRECORDED = re.compile(r"--(model|log|show-secrets|help|version|show-tools)\b|STDOUT=|STDIN|CLUSSIM_FILE= |VCSSIM_MAIN_CF= ")
UNRECORDED_COMMANDS = re.compile(r"(record|vcs encrypt|vcs snapshot|vcs type|host|help|manual|completion|rehearse|doctor|support-bundle|report|model|probe \S+\.json)\b")
CLUSTERS = {"model", "vcs", "faults", "registry", "more-resources", "computer"}
# Cases whose recordings say more than the case shows, or nothing.
ALONE = {"deployment-not-installed",  # a replay always says that the settings are those of the recording
         "vcs-long-answer",  # no recording holds what a tool prints beyond what is taken of an answer
         "vcs-killed"}  # the runs that are told were ended on the simulated cluster, not on the recorded one
# What changes a case's cluster or files for the lines behind it; all else only looks, and is left out.
PREPARING = re.compile(r"clusctl (snapshot|model|record)\b|--save\b")


def settings_of(case):
    lines = case.read_text(encoding="utf-8").splitlines()
    first = next((i for i, line in enumerate(lines) if line.startswith("$ ")), len(lines))
    return [tuple(line.split(" ", 1)) for line in lines[:first] if line and not line.startswith("#")]


def is_asking(line, changing):
    """Whether a line of a case runs clusctl, asks a cluster of the environment, and changes nothing."""
    words = shlex.split(line)
    while words and "=" in words[0]:
        words.pop(0)
    if not words or words[0] != "clusctl" or UNRECORDED.search(line) or re.search(rf"\b({changing})( |$)", line):
        return False
    command = " ".join(word for word in words[1:] if not word.startswith("-"))
    return not UNRECORDED_COMMANDS.match(command) or (command.startswith("vcs snapshot ") and "--from-tools" in words)


def prepares(line, expected, changing):
    """Whether what follows in a case may depend on the line. What is refused beforehand changes nothing."""
    if re.search(r"\[exit [24]\]\n$", expected):
        return False
    verb = next(word for word in shlex.split(line) if "=" not in word)
    if verb == "clusctl":
        return bool(PREPARING.search(line) or re.search(rf"\b({changing})( |$)", line)) and not re.search(r"--(help|dry-run)\b", line)
    return verb in ("afresh", "left", "mark") or bool(re.search(rf"\bclusctl .*\b({changing})( |$)", line))


def changing_commands():
    """The commands that change something, from where clusctl itself has them."""
    text = (CASES.parents[2] / "tools/clusctl/CommandLine.cpp").read_text(encoding="utf-8")
    return "|".join(re.findall(r'"([^"]+)"', re.search(r"ChangingCommands\[\] = \{([^}]*)\}", text)[1]))


def runs_of(kind, changing):
    """The cases of a kind of cluster, and of each the lines to run, with what they print and whether they are recorded: those that ask
    and say something for the first time; the others prepare them."""
    seen = set()
    for case in sorted(CASES.glob("*.txt")):
        settings = settings_of(case)
        words = {word for word, _ in settings}
        if KINDS[kind] not in words or words & APART or case.stem in ALONE:
            continue
        cluster = tuple(setting for setting in settings if setting[0] in CLUSTERS)
        steps = []
        for line, expected in steps_of(case):
            is_wanted = is_asking(line, changing) and (cluster, line, expected) not in seen
            if is_wanted:
                seen.add((cluster, line, expected))
            if is_wanted or prepares(line, expected, changing):
                steps.append((line, expected, is_wanted))
        while steps and not steps[-1][2]:
            steps.pop()
        if steps:
            yield case.stem, steps


def steps_of(case):
    """The lines that a case runs, each with what it prints."""
    _, *parts = case.read_text(encoding="utf-8").split("\n\n$ ")
    for part in parts:
        line, _, expected = part.partition("\n")
        yield line, expected if expected.endswith("\n") else expected + "\n"


def player_folder(runner):
    """clusctl and its libraries without a simulator of either kind."""
    folder = runner.work / "replay-bin"
    folder.mkdir(parents=True, exist_ok=True)
    for file in [runner.bin / "clusctl.exe", *runner.bin.glob("*.dll")]:
        target = folder / file.name
        target.unlink(missing_ok=True)
        if file.name not in ("clusapi.dll", "resutils.dll"):
            os.link(file, target)
    return folder


def without_stray_codes(text):
    """Without the last-error values that the library logs where no call has set one: they are of the process, not of the cluster.
    And without binary values, which no recording has, and the number of secrets, which those that are empty are among there."""
    text = re.sub(r'("binary": ?")[0-9a-f]+', r"\1BYTES", text)
    text = re.sub(r"masked \d+ secrets? of the configuration", "masked SECRETS of the configuration", text)
    return re.sub(r"(GetVirtualServerInfo for server .* fail, code: |Cannot open registry .*, Last err:)\d+( \([^)]*\))?", r"\1CODE", text)


def source_of(case, begin):
    """The file that a line says the answers come from: one of its own, or the case's."""
    named = re.search(r"(?:CLUSSIM_FILE|VCSSIM_MAIN_CF)=(\S+)", begin)
    return named[1] if named else next(model for model in ("model.json", "main.cf") if (case.folder / model).exists())


def without_source_of_replay(recorded, replayed, name):
    """What is replayed of a plain server, whose settings the recording has, is its answer, and marked; nobody but this computer has
    answered when it was recorded."""
    if "clusctl: simulated: " in recorded:
        return replayed
    return replayed.replace(f'clusctl: simulated: the answers come from "{name}"\n', "").replace(f'"simulated": "{name}"', '"simulated": null')


class Written:
    """What a command made in the case's folder of what its line names, laid aside, so that its replay makes it again."""
    def __init__(self, case, words):
        self.case = case
        self.names = {word for word in words if (case.folder / word).parent == case.folder and not (case.folder / word).exists()}
        self.aside = case.folder.parent / f"{case.folder.name}-aside"

    def made(self):
        return sorted(path for path in self.case.folder.iterdir() if path.name in self.names)

    def lay_aside(self):
        shutil.rmtree(self.aside, ignore_errors=True)
        self.aside.mkdir()
        for path in self.made():
            path.rename(self.aside / path.name)

    def contents(self, folder, names):
        files = (file for name in names for file in ([folder / name, *sorted((folder / name).rglob("*"))]))
        text = "".join(f"{file.relative_to(folder)}: {file.read_text(encoding='utf-8') if file.is_file() else ''}\n" for file in files)
        return re.sub(r'\t+\w+ = "\*\*\*"\n', "", text) # a secret that is empty is one as well in a recording

    def compare(self, difference, what):
        """What the replay made against it, which it leaves in its place."""
        names = sorted(path.name for path in self.aside.iterdir())
        made = [path.name for path in self.made()]
        problem = difference(*map(without_stray_codes, (self.contents(self.aside, names), self.contents(self.case.folder, made))), what, "replayed")
        for name in names:
            path = self.case.folder / name
            if path.is_dir():
                shutil.rmtree(path)
            (self.aside / name).replace(path)
        self.aside.rmdir()
        return problem


def check_case(case, steps, player, difference):
    """Runs the lines; what is wrong, as texts."""
    problems = []
    case.prepare(settings_of(case.file))
    for number, (line, expected, is_wanted) in enumerate(steps):
        if not is_wanted:
            case.run(line)
            continue
        name = f"{number}.rec"
        begin, rest = line[:line.index("clusctl ") + 8], line[line.index("clusctl ") + 8:]
        written = Written(case, shlex.split(rest))
        recorded = case.run(f"{begin}record {name} -- {rest}")
        problems.append(difference(*map(without_stray_codes, (expected, recorded)), f"{case.file.name}: {line}", "recorded"))
        if not (case.folder / name).exists(): # nobody was asked
            continue
        program, case.program = case.program, player / "clusctl.exe"
        written.lay_aside()
        replayed = case.run(f"CLUSSIM_FAULTS= VCSSIM_FAULTS= clusctl --model {name} {rest}")
        case.program = program
        replayed = without_source_of_replay(recorded, replayed, name).replace(f'"{name}"', f'"{source_of(case, begin)}"')
        problems.append(written.compare(difference, f"files of {case.file.name}: {line}"))
        problems.append(difference(*map(without_stray_codes, (recorded, replayed)), f"recorded in {case.file.name}: {line}", "replayed"))
    return [problem for problem in problems if problem]


# Committed recordings: the model, the product's settings, the command, and the file in examples/.
RECORDINGS = [("model", "two-node-single-copy.json", "cluster.reg", "servers", "servers.rec"),
              ("model", "two-node-single-copy.json", "cluster.reg", "resources", "resources.rec"),
              ("model", "ccr.json", "ccr.reg", "servers", "servers-ccr.rec"),
              ("vcs", "vcs-exchange.cf", "cluster.reg", "vcs servers", "vcs-servers.rec")]


def calls_of(file):
    """What a recording says but for times and the computer's files."""
    lines = [json.loads(line) for line in file.read_text(encoding="utf-8").splitlines()]
    for line in lines:
        for name in ("program", "begun", "tools", "time", "took"):
            line.pop(name, None)
    return "".join(json.dumps(line, ensure_ascii=False) + "\n" for line in lines)


def check_examples(make_case, update, difference):
    """The library asks what it asked when the examples were recorded, and their replay says what the simulator says."""
    problems = []
    for kind, model, settings, command, name in RECORDINGS:
        case = make_case("cluster")
        case.configuration = case.model = None
        case.prepare([(kind, model), ("registry", settings)])
        said = case.run(f"clusctl record {name} -- {command}")
        if update:
            text = re.sub(r'"file":"[^"]*"', '"file":""', (case.folder / name).read_text(encoding="utf-8"))
            (EXAMPLES / name).write_text(text, encoding="utf-8")
        problems.append(difference(calls_of(EXAMPLES / name), calls_of(case.folder / name), f"examples/{name}", "recorded"))
        shutil.copy(EXAMPLES / name, case.folder / f"committed-{name}")
        replayed = case.run(f"clusctl --model committed-{name} {command}")
        problems.append(difference(*map(without_source, (said, replayed)), f"the simulator: {command}", f"examples/{name}"))
    return [problem for problem in problems if problem]


def without_source(text):
    return re.sub(r"the answers come from .*", "the answers come from FILE", text)


def check(make_case, runner, kind, update, difference):
    if kind == "examples":
        return check_examples(make_case, update, difference)
    player = player_folder(runner)
    problems = []
    count = 0
    for name, steps in runs_of(kind, changing_commands()):
        case = make_case(name)
        problems += check_case(case, steps, player, difference)
        problems += case.problems
        count += sum(is_wanted for _, _, is_wanted in steps)
    if count < 20:
        problems.append(f"only {count} command lines were found")
    return problems
