"""What clusctl tells about itself: manual, help texts, completion scripts, and the schemas of its documents.

Each check takes the runner, and whether committed files are to be written, and gives back what is wrong: a list of texts.
"""
import difflib
import re
import shutil
import subprocess

import doctor
import schemas

ROOT = schemas.FOLDER.parent.parent
TIME_LIMIT = 60

# Words of a command line, the last of them unfinished, and what bash offers for it; None stands for whatever else there is.
COMPLETIONS = [
    (["resource", ""], ["create", "online", "offline", "delete"]),
    (["res"], ["resources", "resource"]),
    (["--json", "vcs", "product", "add"], ["add-quarantine", "add-remote-config"]),
    (["--log", "some file", "vcs", "res"], ["resources", "resource-of-service", "resource"]),
    (["resource", "create", "EXVS1", "--mode", ""], ["single-copy", "ccr"]),
    (["resource", "create", "EXVS1", "--mode", "c"], ["ccr"]),
    (["resource", "create", "EXVS1", "--mode", "=", "s"], ["single-copy"]),
    (["resource", "create", "--name", "--da"], []),
    (["resource", "create", "--name", "--disk", "--da"], ["--data-path", "--data-root"]),
    (["resources", "--j"], ["--json"]),
    (["resources", "--show"], ["--show-secrets", "--show-tools"]),
    (["servers", "--show"], ["--show-tools"]),
    (["vcs", "mode", ""], ["rw", "ro"]),
    (["vcs", "mode", "rw", ""], []),
    (["groups", ""], []),
    (["snapshot", "mod"], ["model.json", "model of two.json"]),
    (["--log", "mod"], ["model.json", "model of two.json"]),
    (["resource", "create", "--data-path", "d"], ["data folder"]),
    (["help", "ex"], ["examples", "exit-status"]),
    (["help", "vcs", "product", "switch"], ["switch-on", "switch-off"]),
    (["help", "exit-status", ""], []),
    (["completion", "p"], ["powershell"]),
    (["frobnicate", ""], None),
]


def told_by(runner, *arguments):
    """What clusctl prints when it is asked for nothing but a text of its own."""
    runner.work.mkdir(parents=True, exist_ok=True)
    return subprocess.run(runner.wine(runner.bin / "clusctl.exe", *arguments), cwd=runner.work, check=True,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, timeout=TIME_LIMIT).stdout.decode("utf-8")


def check_manual(runner, update):
    """The committed forms of the manual are those that the program prints."""
    problems = []
    for form, name in (("markdown", "clusctl.md"), ("man", "clusctl.1")):
        file = ROOT / "docs" / name
        text = told_by(runner, "manual", form)
        committed = file.read_text(encoding="utf-8") if file.exists() else ""
        if update:
            file.write_text(text, encoding="utf-8")
        elif text != committed:
            problems += difflib.unified_diff(committed.splitlines(), text.splitlines(), f"docs/{name}", "what the program prints",
                                             lineterm="")
            problems.append(f"docs/{name} is out of date: its source is tools/clusctl (Manual.md.in and the options); "
                            "`./dev docs --update` writes it")
    return problems


def commands_of(runner):
    """The full names of all commands, from the overview."""
    commands = re.findall(r"^  ([a-z][a-z-]*(?: [a-z][a-z-]*){0,2})  ", told_by(runner, "--help"), re.MULTILINE)
    if len(commands) < 40:
        raise SystemExit("too few commands found in clusctl --help")
    return commands


def changing_commands():
    """Those that change something, from where clusctl itself has them."""
    source = (ROOT / "tools" / "clusctl" / "CommandLine.cpp").read_text(encoding="utf-8")
    return set(re.findall(r'"([^"]+)"', re.search(r"ChangingCommands\[\] = \{(.*?)\};", source, re.DOTALL)[1]))


def check_help(runner, _):
    """`clusctl help COMMAND` shows what `clusctl COMMAND --help` shows, and each command that changes something takes --dry-run."""
    commands = commands_of(runner)
    changing = changing_commands()
    families = {command.rsplit(" ", 1)[0] for command in commands if " " in command}
    problems = [] if told_by(runner, "help") == told_by(runner, "--help") else ["clusctl help is not clusctl --help"]
    for command in [*commands, *sorted(families)]:
        words = command.split()
        text = told_by(runner, *words, "--help")
        if told_by(runner, "help", *words) != text:
            problems.append(f"clusctl help {command} is not clusctl {command} --help")
        if not text.startswith(f"Usage: clusctl {command} "):
            problems.append(f"clusctl {command} --help does not begin with how it is used")
        if ("\n  --dry-run " in text) != (command in changing):
            problems.append(f"clusctl {command} {'takes no' if command in changing else 'has a'} --dry-run")
    return problems + [f"there is no clusctl {command}" for command in sorted(changing - set(commands))]


def offered(folder, script, words):
    """What bash offers for the last of the words behind "clusctl"."""
    test = 'source "$1"; shift; COMP_WORDS=(clusctl "$@"); COMP_CWORD=$#; _clusctl; printf "%s\\n" "${COMPREPLY[@]}"'
    done = subprocess.run(["bash", "--norc", "-c", test, "bash", str(script), *words], cwd=folder, check=True,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, encoding="utf-8", timeout=TIME_LIMIT)
    return [line for line in done.stdout.split("\n") if line]


def check_bash(runner, folder):
    script = folder / "clusctl.bash"
    script.write_text(told_by(runner, "completion", "bash"), encoding="utf-8")
    registered = subprocess.run(["bash", "--norc", "-c", 'source "$1"; complete -p clusctl clusctl.exe', "bash", str(script)],
                                check=True, stdout=subprocess.PIPE, encoding="utf-8", timeout=TIME_LIMIT).stdout
    problems = []
    if registered != "complete -F _clusctl clusctl\ncomplete -F _clusctl clusctl.exe\n":
        problems.append(f"bash: registered is {registered!r}")
    top = offered(folder, script, [""])
    for words, expected in COMPLETIONS:
        found = offered(folder, script, words)
        if sorted(found) != sorted(top if expected is None else expected):
            problems.append(f"bash: for {words} it offers {found}")
    for command in commands_of(runner):
        words = command.split()
        for count, word in enumerate(words):
            if word not in offered(folder, script, [*words[:count], ""]):
                problems.append(f"bash: {word} of {command} is not offered")
    return problems


# The tables in both scripts: a function in bash, a variable in PowerShell.
TABLES = [("_clusctl_words", "words"), ("_clusctl_options", "options"), ("_clusctl_value", "values")]


def check_powershell(runner):
    """Without a PowerShell to run it: brackets and quotes match, and the tables are those of the bash script, which is run."""
    bash = told_by(runner, "completion", "bash")
    script = told_by(runner, "completion", "powershell")
    problems = []
    if "Register-ArgumentCompleter -Native -CommandName 'clusctl', 'clusctl.exe' -ScriptBlock {" not in script:
        problems.append("PowerShell: nothing is registered")
    bare = re.sub(r"#.*|'(?:[^']|'')*'|\"[^\"\n]*\"", "", script)
    open_brackets = []
    for character in bare:
        if character in "({[":
            open_brackets.append(character)
        elif character in ")}]" and (not open_brackets or open_brackets.pop() + character not in ("()", "{}", "[]")):
            problems.append(f"PowerShell: a {character} closes nothing")
            break
    if open_brackets or "'" in bare or '"' in bare:
        problems.append("PowerShell: a bracket or a quote stays open")
    for function, variable in TABLES:
        in_bash = re.search(rf"^{function}\(\) {{.*?^}}", bash, re.MULTILINE | re.DOTALL)[0]
        in_script = re.search(rf"^    \${variable} = @{{\n(.*?)^    }}", script, re.MULTILINE | re.DOTALL)[1]
        branches = re.findall(r"^ +\*?'(.*)'\) echo '(.*)' ;;$", in_bash, re.MULTILINE)
        entries = re.findall(r"^ +'(.*)' = '(.*)'$", in_script, re.MULTILINE)
        if branches != entries or len(entries) < 4 or len(entries) != in_script.count("\n"):
            problems.append(f"PowerShell: ${variable} is not {function} of bash")
    return problems + problems_of_powershell_words(script, bare)


def problems_of_powershell_words(script, bare):
    """What PowerShell would not parse, or take for something else: a key twice in a table, whatever its letter case; a quote that is
    not ASCII, which counts as one; a variable that nothing sets."""
    problems = [] if script.isascii() else ["PowerShell: it holds more than ASCII"]
    for table in re.findall(r"(?m)^    \$(\w+) = @{$", script):
        entries = re.search(rf"^    \${table} = @{{\n(.*?)^    }}", script, re.MULTILINE | re.DOTALL)[1]
        keys = [key.lower() for key in re.findall(r"(?m)^ +'((?:[^']|'')*)' = '", entries)]
        problems += [f"PowerShell: {key!r} stands twice in ${table}" for key in sorted(set(keys)) if keys.count(key) > 1]
        if len(keys) != entries.count("\n"):
            problems.append(f"PowerShell: a line of ${table} is no entry")
    texts = "".join(re.findall(r'"[^"\n]*"', re.sub(r"#.*|'(?:[^']|'')*'", "", script)))
    used = set(re.findall(r"\$(\w+)", bare + texts))
    set_somewhere = set(re.findall(r"\$(\w+) = ", bare)) | set(re.findall(r"\$(\w+) in ", bare))
    parameters = set(re.findall(r"\$(\w+)", re.search(r"param\((.*?)\)", bare)[1]))
    return problems + [f"PowerShell: nothing sets ${name}" for name in sorted(used - set_somewhere - parameters)]


def check_completion(runner, _):
    folder = runner.work / "completion"
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    (folder / "data folder").mkdir()
    for name in ("model.json", "model of two.json"):
        (folder / name).touch()
    return check_bash(runner, folder) + check_powershell(runner)


def check_schemas(runner, _):
    """There is one for each command that answers, and each refuses what it does not know."""
    answering = {command.replace(" ", "-") for command in commands_of(runner)} - set(schemas.TELLING) - set(schemas.PASSING)
    problems = [f"docs/schemas: {name} is there for no command, or missing" for name in
                sorted(answering ^ schemas.commands_with_schema())]
    return problems + schemas.problems_of_strictness() + problems_of_probe()


def problems_of_probe():
    """docs/probe.md lists the rules of the probe, all of them and in their order, and among them one for each switch."""
    rules = re.findall(r'\{"([a-z-]+)",\s+"', (ROOT / "tools/clusctl/ProbeRules.cpp").read_text(encoding="utf-8"))
    page = (ROOT / "docs/probe.md").read_text(encoding="utf-8")
    listed = re.findall(r"(?m)^\| `([a-z-]+)`", page)
    problems = [] if rules and rules == listed else [f"docs/probe.md lists other rules than ProbeRules.cpp: {set(rules) ^ set(listed)}"]
    cluster = (ROOT / "docs/cluster-simulator.md").read_text(encoding="utf-8")
    vcs = (ROOT / "docs/vcs-simulator.md").read_text(encoding="utf-8").partition("## Switches")[2].partition("\n## ")[0]
    switches = set(re.findall(r"(?m)^\| `(behaviour\.\w+)`", cluster)) | set(re.findall(r"(?m)^\| `([a-z-]+)=", vcs))
    if len(switches) < 15:
        problems.append("the simulators' switches are not found")
    named = set(re.findall(r"(?m)^\|.*\| `([\w.-]+)` \|$", page))
    return problems + [f"docs/probe.md has no rule for the switch {switch}" for switch in sorted(switches - named)]


CHECKS = {"manual": check_manual, "help": check_help, "completion": check_completion, "schemas": check_schemas, "doctor": doctor.check}
