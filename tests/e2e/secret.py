"""Looks for a secret wherever a run of clusctl could leave it."""
import json
import os
import re
import threading
from pathlib import Path

import interrupted

HELD_UP = 4000 # milliseconds: how long the last tool runs, while the memory is searched
TIME_LIMIT = 150 # seconds


class Watch:
    """Of all processes, again and again until it is stopped: which tools show a text on their command lines. Of the tools' temporary
    files: which hold it."""

    def __init__(self, case, texts):
        self.folder = interrupted.temporary_folder(case)
        self.forms = {text: forms_of(text) for text in texts}
        self.tools, self.files = {text: set() for text in texts}, {text: set() for text in texts}
        self.stopped = threading.Event()
        self.thread = threading.Thread(target=self.look)
        self.thread.start()

    def look(self):
        while not self.stopped.is_set():
            for process in Path("/proc").glob("[0-9]*"):
                if int(process.name) != os.getpid():
                    self.look_at(process)
            for file in self.folder.glob("clusctl-*/*"):
                for text, forms in self.forms.items():
                    if holds(file, forms):
                        self.files[text].add(file.suffix)
            self.stopped.wait(0.005)

    def look_at(self, process):
        try:
            command = (process / "cmdline").read_bytes()
        except OSError: # it has ended, or is somebody else's
            return
        name = name_of(command)
        for text, forms in self.forms.items():
            if name != "search-tool" and any(form in command for form in forms): # that one is told what to look for
                self.tools[text].add(name)

    def stop(self):
        self.stopped.set()
        self.thread.join()


def name_of(command):
    """The program's, without Wine's own and the limit of time before it."""
    words = [word.replace(b"\\", b"/").split(b"/")[-1].decode(errors="replace") for word in command.split(b"\0")]
    tools = [word[:-len(".exe")] if word.endswith(".exe") else word for word in words]
    return next((tool for tool in tools if tool in ("search-tool", "clusctl", "vcsencrypt", "hares", "hagrp", "hasys", "haconf")), tools[0])


def forms_of(text):
    return [text.encode("utf-8"), text.encode("utf-16-le")]


def holds(file, forms):
    try:
        return file.is_file() and any(form in file.read_bytes() for form in forms)
    except OSError:
        return False


def search(case, text, fault, arguments, variables):
    """Runs clusctl, holds it up in the run of the VCS tool that `fault` names, and searches its memory then. What clusctl says, and where
    the text was found, and its encrypted form."""
    tool = fault.partition("@")[0]
    encrypted = case.clusctl(["vcs", "encrypt"], {"STDIN": text}).splitlines()[0]
    held = case.folder / "held.json"
    held.write_text(json.dumps([f"{fault}=delay_ms:{HELD_UP}"]), encoding="ascii")
    counts = case.folder / "held.json.counts"
    program, case.program = case.program, case.runner.bin / "e2e" / "search-tool.exe"
    watch = Watch(case, [text, encrypted])
    try:
        process = case.start([text, counts.name, "1", "200", str(program), *arguments],
                             {**variables, "VCSSIM_FAULTS": held.name, "VCSSIM_JOURNAL": "journal.txt",
                              "CLUSUTIL_RUN_SECONDS": str(TIME_LIMIT)})
        result = case.finish(process, arguments)
    finally:
        case.program = program
        watch.stop()
    held.unlink()
    counts.unlink()
    result, read = without_line(result, "[environments read] ")
    result, environments = without_line(result, "[environments] ")
    variable = variables.get("SEARCH_TOOL_VARIABLE")
    if variable == "CLUSCTL_PASSWORD":
        environments.discard("clusctl") # which takes it out: its memory is searched for it, too
    elif variable is not None:
        result = re.sub(r"(\[memory\] behind .*\n)+\[memory\] found \d+ times", "[memory] found", result) # the system keeps copies
    if not {"search-tool", tool} <= read:
        result += "[environments] not read\n"
    # What vcsencrypt prints stands in its capture file while it runs, which is seen or not as it happens.
    return (f"{result}[command lines] {listed(watch.tools[text])}\n"
            f"[environments] {listed(environments)}\n"
            f"[temporary files] {listed(watch.files[text])}\n"
            f"[files] {listed(files_with(case, text))}\n"
            f"[encrypted, command lines] {listed(watch.tools[encrypted])}\n"
            f"[encrypted, files] {listed(files_with(case, encrypted))}\n")


def without_line(text, begin):
    """The text without the line that begins so, and the names in that line."""
    line = next(line for line in text.splitlines(keepends=True) if line.startswith(begin))
    return text.replace(line, ""), set(line[len(begin):].strip().split(", ")) - {"none"}


def files_with(case, text):
    return {str(file.relative_to(case.folder)) for file in case.folder.rglob("*") if holds(file, forms_of(text))}


def listed(names):
    return ", ".join(sorted(names)) or "none"
