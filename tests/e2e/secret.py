"""Looks for a secret wherever a run of clusctl could leave it."""
import json
import os
import threading
from pathlib import Path

import interrupted

HELD_UP = 4000 # milliseconds: how long the last tool runs, while the memory is searched
TIME_LIMIT = 150 # seconds


class Watch:
    """Of all processes, again and again until it is stopped: which tools show the text on their command lines, and which processes in
    their environments. Of the tools' temporary files: which hold it."""

    def __init__(self, case, text):
        self.forms = forms_of(text)
        self.folder = interrupted.temporary_folder(case)
        self.tools, self.others, self.files = set(), set(), set()
        self.seen = 0
        self.stopped = threading.Event()
        self.thread = threading.Thread(target=self.look)
        self.thread.start()

    def look(self):
        while not self.stopped.is_set():
            for process in Path("/proc").glob("[0-9]*"):
                if int(process.name) != os.getpid():
                    self.look_at(process)
            for file in self.folder.glob("clusctl-*/*"):
                if holds(file, self.forms):
                    self.files.add(file.suffix)
            self.stopped.wait(0.005)

    def look_at(self, process):
        try:
            command = (process / "cmdline").read_bytes()
            environment = (process / "environ").read_bytes()
        except OSError: # it has ended, or is somebody else's
            return
        name = name_of(command)
        self.seen += name == "hares"
        if name != "search-tool" and any(form in command for form in self.forms): # that one is told what to look for
            self.tools.add(name)
        if any(form in environment for form in self.forms):
            self.others.add(name)

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
    the text was found."""
    held = case.folder / "held.json"
    held.write_text(json.dumps([f"{fault}=delay_ms:{HELD_UP}"]), encoding="ascii")
    counts = case.folder / "held.json.counts"
    program, case.program = case.program, case.runner.bin / "e2e" / "search-tool.exe"
    watch = Watch(case, text)
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
    left = sorted(file.name for file in case.folder.rglob("*") if holds(file, watch.forms))
    if watch.seen == 0:
        result += "[no tool was seen]\n"
    return (f"{result}[command lines] {', '.join(sorted(watch.tools)) or 'none'}\n"
            f"[environments] {', '.join(sorted(watch.others)) or 'none'}\n"
            f"[temporary files] {', '.join(sorted(watch.files)) or 'none'}\n[files] {', '.join(left) or 'none'}\n")
