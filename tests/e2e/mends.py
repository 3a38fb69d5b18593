"""Runs the mends that the doctor names, and asks it again."""
import json
import re
import subprocess

OF_WINDOWS = {"reg": ["reg"], "del": ["cmd", "/c", "del"]}
OF_CLUSTER = ("haconf", "hasys", "hagrp", "hares", "vcssim")
PROGRAMS = ("clusctl", "cluster", "hares", "hagrp", "hastart", "net", "reg", "del")
COMMAND = re.compile(rf"(?:.*?, then )?((?:{'|'.join(PROGRAMS)}) .*?|hastart)(?:, (?:on|while) .*)?")


def commands_of(mend):
    """The command lines in a mend; none when it says in words what to do."""
    found = COMMAND.fullmatch(mend or "")
    return found[1].split(" && ") if found else []


def words_of(command):
    """As a command prompt takes it apart: a backslash is nothing special."""
    return [word.replace('"', "") for word in re.findall(r'(?:"[^"]*"|[^\s"])+', command)]


def run(case, words, variables):
    """Its output and exit code, as a transcript has them."""
    name, arguments = words[0], words[1:]
    if name == "clusctl":
        return case.clusctl(arguments, variables)
    if name in OF_CLUSTER:
        line = case.runner.wine(case.runner.bin / f"{name}.exe", *arguments)
    else:
        line = case.runner.wine(*OF_WINDOWS[name], *arguments)
    done = subprocess.run(line, cwd=case.folder, env=case.environment(variables), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT)
    text = done.stdout.decode("utf-8", "replace").replace("\r\n", "\n")
    return text + f"[exit {done.returncode}]\n"


def findings_of(case, arguments, variables):
    process = case.start([*arguments, "--json"], variables)
    output, _ = process.communicate()
    return json.loads(output)["findings"]


def mend(case, code, arguments, variables):
    """Runs the mends of all findings of the code; says what ran, and what became of it. The words before "clusctl" fill placeholders."""
    program = arguments.index("clusctl")
    values = dict(argument.split("=", 1) for argument in arguments[:program])
    before = findings_of(case, arguments[program + 1:], variables)
    mends = dict.fromkeys(finding["mend"] for finding in before if finding["code"] == code)
    if not mends:
        return f"{code} is not found\n"
    result = ""
    for text in mends:
        commands = commands_of(text)
        if not commands:
            return f"{code} is mended by no command: {text}\n"
        for command in commands:
            words = words_of(command)
            for place, value in values.items():
                words = [re.sub(rf"\b{place}\b", lambda _, to=value: to, word) for word in words]
            ended = run(case, words, variables)
            exit_code = ended.splitlines()[-1]
            result += f"{command}\n" + (f"{exit_code}\n" if exit_code == "[exit 0]" else ended)
    after = findings_of(case, arguments[program + 1:], variables)
    known = {finding["code"] for finding in before}
    result += "".join(f"now {finding['code']}: {finding['seen']}\n" for finding in after
                      if finding["level"] in ("warning", "error") and finding["code"] not in known)
    left = [finding for finding in after if finding["code"] == code]
    return result + ("".join(f"{code} is still there: {finding['seen']}\n" for finding in left) or f"{code} is gone\n")
