"""Every asking command on a support bundle, on another computer: it says what it says of the cluster that the bundle was made of.

The computer that opens the bundle has another name, and neither the product nor its settings file. With other names the answers have other
words, and as many lines.
"""
import re
import shutil

import schemas
from replayed import changing_commands

# The cluster that a bundle is made of, and the asking commands of that kind: each of docs/schemas once at least.
KINDS = {
    "failover": ([("model", "two-node-single-copy.json"), ("registry", "cluster.reg")], [
        "cluster", "nodes", "groups", "groups EXVS-MAIL1", "resources --group EXVS-MAIL2", "resources --type clusRDLL --json",
        "disk 'Disk F: (EXVS-MAIL1)'", "servers --explain", "query EXVS-MAIL1", "smtp-instances EXVS-MAIL1", "store-online", "host", "status",
        "tree EXVS-MAIL1", "graph EXVS-MAIL1 --format dot", "doctor", "probe", "snapshot", "report written", "rehearse node-down NODE1"]),
    "vcs": ([("vcs", "vcs-with-product.cf"), ("registry", "vcs.reg")], [
        "vcs systems", "vcs groups", "vcs resources", "vcs servers", "vcs storage EVS1", "vcs deps EVS1-IS", "vcs type",
        "vcs attribute EVS1-IS Service", "vcs find-group EXVS1", "vcs online-node EVS1", "vcs product list EVS1",
        "vcs resource-of-service EVS1 OXAHostService", "status", "tree EVS1", "graph EVS1 --format mermaid", "doctor", "probe", "report written", "vcs snapshot written", "rehearse node-down NODE1"]),
}
ANSWERED = (0, 11, 12) # the last two are of the doctor's findings
# Commands that are about no cluster, take time, or make a bundle of one.
APART = {"status-watch", "common", "dry-run", "model-check", "model-diff", "model-from-recording", "model-show", "support-bundle", "vcs-encrypt"}
# The same answers with other names have as many lines as with these.
RENAMED = {"failover": ("servers --explain", "nodes", "groups", "status", "doctor"), "vcs": ("vcs systems", "vcs servers", "status", "doctor")}
ABOUT_THE_BUNDLE = re.compile(r"(?m)^  ok +\S+: .* \[bundle\]\n")


def problems_of_list():
    changing = {name.replace(" ", "-") for name in changing_commands().split("|")}
    wanted = {file.name[:-len(".schema.json")] for file in schemas.FOLDER.glob("*.schema.json")} - changing - APART
    lines = [command for _, commands in KINDS.values() for command in commands]
    asked = {name for name in wanted if any((line + " ").startswith(name.replace("-", " ") + " ") or (line + " ").startswith(name + " ")
                                            or line.replace(" ", "-", 1).startswith(name + " ") for line in lines)}
    return [f"no bundle is asked '{name}'" for name in sorted(wanted - asked)]


def of_command(command, text):
    """What is compared. That of the computer alone asks no cluster: only of one in a bundle it says whose answers those are."""
    text = without_source(text)
    return text.replace('[stderr]\nclusctl: simulated: the answers come from "FILE"\n', "") if command in ("host", "vcs type") else text


def without_source(text):
    text = text.replace("copy of the bundle's main.cf", "copy of main.cf")
    return ABOUT_THE_BUNDLE.sub("", re.sub(r'"(bundle\.zip|names\.zip|model\.json|main\.cf)"', '"FILE"', text))


def forget_written(case):
    """What a command wrote, a file or a folder, is in the way of the next one."""
    written = case.folder / "written"
    if written.is_dir():
        shutil.rmtree(written)
    written.unlink(missing_ok=True)


def check_kind(case, kind, difference):
    settings, commands = KINDS[kind]
    case.prepare(settings)
    answers = {}
    for command in commands:
        answers[command] = case.run(f"clusctl {command}")
        forget_written(case)
    problems = [f"it does not answer: {command}\n{answer}" for command, answer in answers.items()
                if int(answer.rsplit("[exit ", 1)[1].rstrip("]\n")) not in ANSWERED]
    for line in ("clusctl support-bundle bundle.zip", "clusctl support-bundle names.zip --anonymise"):
        made = case.run(line)
        if not made.endswith("[exit 0]\n"):
            return [f"{line}: {made}"]
    case.run("elsewhere SUPPORT9")
    for command in commands:
        answer = case.run(f"CLUSSIM_FILE= VCSSIM_MAIN_CF= clusctl --model bundle.zip {command}")
        forget_written(case)
        problems.append(difference(of_command(command, answers[command]), of_command(command, answer), f"the cluster: {command}", "the bundle"))
    for command in RENAMED[kind]:
        answer = without_source(case.run(f"CLUSSIM_FILE= VCSSIM_MAIN_CF= clusctl --model names.zip {command}"))
        expected = without_source(answers[command])
        if [len(expected.splitlines()), expected.splitlines()[-1]] != [len(answer.splitlines()), answer.splitlines()[-1]] or answer == expected:
            problems.append(difference(expected, answer, f"the cluster: {command}", "the bundle with other names"))
    return [problem for problem in problems if problem] + case.problems


def check(make_case, kinds, difference):
    return problems_of_list() + [problem for kind in kinds for problem in check_kind(make_case(f"bundled-{kind}"), kind, difference)]
