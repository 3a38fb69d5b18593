#!/usr/bin/env python3
"""Runs clusctl end to end and compares what it does with a committed transcript.

  run.py --bin DIR --prefix DIR --work DIR start | stop       the Wine prefix that the cases share
  run.py ... case NAME [NAME ...] [--update]                  cases/NAME.txt; --update accepts the difference and prints it
  run.py ... silent NAME [NAME ...]                           the same cases with a DebugLog.dll that hands out no lines: all but the
                                                              library's own lines ("clusctl: log: ...", "log" in JSON) is the same
  run.py ... manual [--update]                                docs/clusctl.md and docs/clusctl.1 against what the program prints
  run.py ... help                                             "clusctl help COMMAND" against "clusctl COMMAND --help"
  run.py ... replayed failover|vcs|examples [--update]        the asking commands of the cases, recorded and replayed (replayed.py)
  run.py ... bundled failover|vcs                             the asking commands on a support bundle, on another computer (bundled.py)
  run.py ... completion                                       what the completion scripts complete
  run.py ... schemas                                          docs/schemas: one for each command, and strict
  run.py ... browser [--update]                               what "clusctl report" writes, in Chromium; --update writes docs/report.png
  run.py ... doctor                                           that the cases show each code of the doctor, and docs/doctor.md has it
  run.py ... demo                                             examples/demo.sh, from copies in a folder with blanks in its name

A case is a transcript: lines that begin with "$ " are run, and what they print and their exit code follow. Before the first of them stand
the case's purpose ("# ...") and its setting:

  model FILE          a model from models/ or examples/, copied to model.json, which CLUSSIM_FILE names
  more-resources N [TYPE]  so many resources, Generic Services without a type, are added to the model's first group
  more-servers N GROUP  so many copies of this group of the model, with other names, are added to it
  registry FILE       a registry file from examples/ or models/; without it the product is not installed
  computer NAME       the computer's name, NODE1 without it
  iis FILE            the web server's configuration on this computer
  debug-log silent    the DebugLog.dll beside clusctl does not hand out its lines
  simulator none      the simulator's DLLs do not lie beside clusctl
  simulator apart     the simulators lie as an installation has them: in the folder simulator, beside that of clusctl
  model-file FILE ... these lie in the case's folder, from models/ or examples/; no variable names them
  missing DLL         this DLL does not lie beside clusctl
  replaced DLL OTHER  another one lies there under this name
  settings KEY        clusctl runs with a cfg_ProductRegistry.txt beside it that names this registry key
  settings-file [config] FILE  this file of models/ is that file, or the one in the folder config
  registry-access read  the product's key can be read and not written
  version DLL NUMBER  this DLL has that version
  vcs FILE            a main.cf from models/ or examples/, copied to main.cf, which VCSSIM_MAIN_CF names, with its state if there is one
  vcs-tools TOOL ...  the only VCS tools on the search path; "none" for none
  disk KILOBYTES      the temporary folder lies on a disk of this size; without the right to mount one the case is not run (exit code 77)
  small-disk FOLDER KILOBYTES  a folder of the case's folder that lies on a disk of this size
  read-only-disk FOLDER  the same on a disk that cannot be written to
  tools writable      everybody may write to the folder of clusctl and of the VCS tools
  writable-tool TOOL  everybody may write to this VCS tool, and to no other
  planted-tool TOOL   the same stand-in as of environment-tool lies, as this tool, in the folder in which clusctl is called
  environment-tool TOOL  in place of this VCS tool one that lists the CLUSCTL_ variables that it was started with
  faults FILE         faults of the VCS tools from models/, copied to faults.json, for VCSSIM_FAULTS

Commands, with the quoting of a shell and, before them, VARIABLE=VALUE settings; VCSSIM_FAULTS=FAULT;FAULT are the faults themselves:

  clusctl ...         STDOUT=full, STDOUT=closed or STDOUT=none says where its output goes, STDERR=file that its messages go to a file, as
                      processes that are left behind keep a pipe, STDIN=TEXT what it is told, with a line end, STDIN_BYTES=EFBBBF41 the bytes it is told; {x*5000} stands for 5,000 letters x
  same A B ...        runs "clusctl ..." on the models A and B, prints how the outputs differ but for the names of the models
  together N ...      runs N "clusctl ..." at once; prints how the others differ from the first
  interrupt HOW N ... runs "clusctl ..." on a console of its own and interrupts it in its N-th run of a VCS tool (interrupted.py)
  interrupt-at N,N .. the same at each of these runs, each time afresh; prints one line each
  interrupt-call HOW CALL ..  the same in a call of the cluster, written as in a fault: "AddClusterResourceDependency#2"
  interrupt-calls CALL CALL ..  the same in each of these calls, each time afresh; prints some lines each; "each-changing" are those that
                      change the cluster in a run that is not interrupted
  search TEXT FAULT . runs "clusctl ..." and holds it up in the run of a VCS tool that FAULT names ("haconf@-dump*#1"); prints where the
                      text is found: on command lines, in environments, files, and in the memory of clusctl; and its encrypted form
  runs clusctl ...    counts the runs of VCS tools of "clusctl ...", which is not interrupted
  afresh              the configuration of VCS, and the model, are those of the beginning again
  rehearsed clusctl . runs "clusctl ..." with --dry-run and then without; prints how the runs of VCS tools differ
  terminal clusctl .. runs clusctl on a terminal; prints the pending states that it drew meanwhile, and what stands there in the end
  shown PATTERN clusctl ..  the same with what it drew that matches the pattern
  found CODE,CODE clusctl doctor ..  prints of what the doctor finds what has one of these codes, a line each
  colours clusctl ... runs clusctl on a terminal; prints the lines that have a colour or another style, and which
  screen CALL clusctl ..  runs clusctl on a terminal, and prints what stands there, in which colours, in this call of the cluster, in
                      which Ctrl+C is pressed
  show FILE           prints a file of the case's folder
  lines TEXT FILE     prints the lines of a file that contain the text
  absent TEXT FILE .. fails when the text, in any letter case, is in one of the files, or of the files of a folder
  same-rehearsal M E .. rehearses the events E on the model M twice; prints how the second output, and model, differ from the first
  at-most N WHAT FILE  fails when a file has more "lines" or "bytes"
  asked-only FILE     fails when a journal of a simulator holds a call, or the run of a tool, that changes something
  documented-ends CMD .. runs "clusctl CMD --json" with --each-call-fails; prints what ended in between, without the numbers of the steps;
                      with --fail first which of the command's calls failed in their turn
  add-up CASE CASE .. whether these lines of the cases name all calls, each once
  unchanged A B       tells whether A is the same as B of the case's folder, models/ or examples/
  unzip FILE.zip      unpacks an archive into the folder FILE; prints what is in it, what of it was masked, and whether its manifest is right
  files [FOLDER]      lists the case's folder, or one in it
  temporary           lists the temporary folders of clusctl with what is in them
  left FOLDER SECONDS  there is an empty temporary folder that has not changed for so long
  mark NAME BEGUN COMMAND  there is the mark of a run that was ended, in a file of this name, begun at this time ("2026-01-02 03:04:05 UTC",
                      or with units of 100 ns behind it, "2026-01-02 03:04:05 UTC+7"), perhaps on a model: mark NAME BEGUN COMMAND FILE
  long-log LINES BYTES FILE  there is a log of so many lines of so many bytes
  elsewhere NAME      from now on this is another computer of that name, without the product and its settings file
  without FILE A.zip B.zip  copies the bundle A but for one file, which the manifest of B does not name either
  mends CODE [PLACE=VALUE ...] clusctl ...  runs "clusctl ...", which is the doctor, then the mends of all findings of that code, with these values
                      for placeholders, and the doctor again; prints the commands, what they print when they fail, and whether the code is gone
  program NAME ...    runs a VCS tool of the simulator, vcssim, or reg
  left-keys           counts the registry keys of runs on models with settings
"""
import argparse
import difflib
import fcntl
import hashlib
import json
import os
import pty
import re
import shlex
import shutil
import struct
import subprocess
import sys
import termios
import time
import zipfile
from pathlib import Path

sys.dont_write_bytecode = True
import browser  # noqa: E402
import bundled  # noqa: E402
import interrupted  # noqa: E402
import mends  # noqa: E402
import replayed  # noqa: E402
import schemas  # noqa: E402
import screen  # noqa: E402
import secret  # noqa: E402
import telling  # noqa: E402

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
EXAMPLES = ROOT / "examples"
TIME_LIMIT = 60
SKIPPED = 77
MESSAGES = "stderr.txt"
COMPUTER = "NODE1"
STYLES = {"91": "red", "92": "green", "93": "yellow", "97": "bright"} # as the console draws them
VCS_TOOLS = ("haconf", "hasys", "hagrp", "hares", "vcsencrypt")

# All that may differ between two runs or two machines.
VOLATILE = [
    (r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3} \d+ \d+ ", "TIME PID THREAD "),
    (r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", "TIME"),
    (r"(clus_\w+\.cpp)\(\d+\)", r"\1(LINE)"),
    (r"(?<=clusctl )\d+\.\d+\.\d+(?=\n)", "VERSION"),
    # Random IDs of what a command created; those of the models are of another version.
    (r"(?m)(^ID: +|\"id\": \")[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[0-9a-f]{4}-[0-9a-f]{12}", r"\1NEW-ID"),
    (r"ha-[0-9a-f]+\.tmp", "ha-NAME.tmp"),
    (r"process \d+, begun \d{4}-\d\d-\d\d \d\d:\d\d:\d\d UTC", "process NUMBER, begun TIME"),
    (r"Z:(\\+)[^ \"]*\\+(?=(?:ha\w+|vcsencrypt)\.exe)", r"BIN\1"),
    (r"Z:(\\+)[^ \"]*\\bin\\+(?=[\w+-]+\.dll\\?\")", r"BIN\1"),
    (r"Z:\\[^ \"]*\\bin(?=\\?\")", "BIN"),
    # Of Wine's run-time, and whatever else is no part of this project.
    (r"(?<=of version )\d+\.\d+\.\d+\.\d+(?=, and is \\?\"C:)", "VERSION"),
    (r"Z:\\[^ \"]*\\e2e\\+work(?:-2)?\\+(?:silent\\+)?(?!silent\\)[^ \"\\]+\\+", ""), # in the case's folder, as the environment names it; but for the tools
    (r"Z:(\\+)[^ \"]*\\e2e\\+work(?:-2)?\\+(?:silent\\+)?", r"WORK\1"),
    (r"C:(\\+)[^ \"]*\\(clusctl-vcs)-\d+-\d+", r"TEMP\1\2"),
    (r"C:\\[^ ]*\\clusctl-\d+-\d+\\", r"TEMP\\"),
    (r'"time":[\d.]+,"took":[\d.]+', '"time":TIME,"took":TIME'), # of a recording
    (r'(?<="bytes": )\d+(?=,\n +"sha256")', "0"), # of files that name folders
    (r'(?<="sha256": ")[0-9a-f]{64}', "HASH"),
    (r"(\(simulated\) main\.cf\.state\.json: )[^\n\"]*\.\.\.", r"\1..."), # cut behind a path of any length
    (r"x{1000,}", lambda match: "{x*%d}" % len(match[0])),
]


def normalised(text):
    for pattern, replacement in VOLATILE:
        text = re.sub(pattern, replacement, text)
    return text


def expanded(text):
    return re.sub(r"\{(\w)\*(\d+)\}", lambda match: match[1] * int(match[2]), text)


def ranges(numbers):
    """1-3, 7"""
    parts = []
    for number in sorted(numbers):
        if parts and parts[-1][1] == number - 1:
            parts[-1][1] = number
        else:
            parts.append([number, number])
    return ", ".join(str(first) if first == last else f"{first}-{last}" for first, last in parts)


class Runner:
    def __init__(self, options):
        self.bin = Path(options.bin).resolve()
        self.prefix = Path(options.prefix).resolve()
        self.work = Path(options.work).resolve()

    def wine(self, *arguments):
        return [str(ROOT / "cmake" / "wine-run"), str(self.prefix), *map(str, arguments)]

    def quiet(self, *command):
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        if done.returncode != 0:
            sys.exit(f"exit code {done.returncode} of {' '.join(command)}")

    def start(self):
        self.quiet(str(ROOT / "cmake" / "wine-run"), "--start", str(self.prefix))

    def stop(self):
        self.quiet(str(ROOT / "cmake" / "wine-run"), "--stop", str(self.prefix))

    def set_registry(self, folder, computer, product):
        """The product's key holds what the file `product` says and nothing else."""
        head, _, body = (product or "REGEDIT4\n").partition("\n")
        text = (f"{head.strip()}\n\n[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Plinthcore]\n\n"
                "[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName]\n"
                f"\"ComputerName\"=\"{computer}\"\n\n{body}\n")
        file = folder / "setting.reg"
        file.write_text(text, encoding="ascii")
        self.quiet(*self.wine("reg", "import", file.name if Path.cwd() == folder else file))


class Case:
    def __init__(self, runner, name, silent=False):
        self.runner = runner
        self.file = HERE / "cases" / f"{name}.txt"
        self.folder = (runner.work / "silent" if silent else runner.work) / name
        self.silent = silent
        self.program = runner.bin / "clusctl.exe"
        self.configuration = self.model = None
        self.problems = []  # of JSON documents
        self.disks = []
        self.restricted = False

    def prepare(self, settings):
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        self.set_web_server(None)
        for mark in self.marks(): # of runs that were ended
            mark.unlink()
        for word, value in settings:
            if word == "model":
                self.model = value
                self.copy_model()
            elif word == "more-resources":
                count, _, kind = value.partition(" ")
                self.add_resources(int(count), kind or "Generic Service")
            elif word == "more-servers":
                count, _, group = value.partition(" ")
                self.add_servers(int(count), group)
            elif word == "settings":
                text = f"RegKeyProductCurrentVersion\t{value}\n"
                (self.own_program_folder() / "cfg_ProductRegistry.txt").write_text(text, encoding="ascii")
            elif word == "settings-file":
                *place, name = value.split()
                folder = self.own_program_folder().joinpath(*place)
                folder.mkdir(exist_ok=True)
                shutil.copy(find_input(name), folder / "cfg_ProductRegistry.txt")
            elif word == "version":
                name, version = value.split()
                self.set_version(self.own_program_folder() / name, version)
            elif word == "debug-log":
                library = self.own_program_folder() / "DebugLog.dll"
                library.unlink()
                os.link(self.runner.bin / "e2e" / value / "DebugLog.dll", library)
            elif word == "simulator":
                for library in ("clusapi.dll", "resutils.dll"):
                    (self.own_program_folder() / library).unlink()
                if value == "apart":
                    self.set_simulators_apart()
            elif word == "model-file":
                for name in value.split():
                    shutil.copy(find_input(name), self.folder / Path(name).name)
            elif word == "missing":
                (self.own_program_folder() / value).unlink()
            elif word == "replaced":
                name, other = value.split()
                (self.own_program_folder() / name).unlink()
                os.link(self.runner.bin / other, self.own_program_folder() / name)
            elif word == "vcs":
                self.configuration = value
                self.copy_configuration()
            elif word == "vcs-tools":
                for tool in value.split():
                    if tool != "none" and not (self.own_program_folder() / f"{tool}.exe").exists():
                        os.link(self.runner.bin / f"{tool}.exe", self.own_program_folder() / f"{tool}.exe")
                self.own_program_folder()
            elif word == "environment-tool":
                stand_in = self.own_program_folder() / f"{value}.exe"
                stand_in.unlink(missing_ok=True)
                os.link(self.runner.bin / "e2e" / "environment-tool.exe", stand_in)
            elif word == "planted-tool":
                os.link(self.runner.bin / "e2e" / "environment-tool.exe", self.folder / f"{value}.exe")
            elif word == "tools":
                self.own_program_folder().chmod(0o777)
            elif word == "writable-tool":
                tool = self.own_program_folder() / f"{value}.exe"
                tool.unlink(missing_ok=True)
                shutil.copy(self.runner.bin / tool.name, tool)
                tool.chmod(0o777)
            elif word == "disk":
                self.mount_disk(interrupted.temporary_folder(self), f"size={value}k")
            elif word == "small-disk":
                name, kilobytes = value.split()
                self.mount_disk(self.folder / name, f"size={kilobytes}k")
            elif word == "read-only-disk":
                self.mount_disk(self.folder / value, "ro")
            elif word == "faults":
                shutil.copy(find_input(value), self.folder / "faults.json")
            elif word == "iis":
                self.set_web_server(find_input(value).read_text(encoding="utf-8"))
            elif word not in ("registry", "registry-access", "computer"):
                sys.exit(f"{self.file.name}: unknown setting '{word}'")
        values = dict(settings)
        registry = find_input(values["registry"]).read_text(encoding="ascii") if "registry" in values else None
        self.runner.set_registry(self.folder, values.get("computer", COMPUTER), registry)
        if "registry-access" in values:
            self.set_access(values["registry-access"])

    def set_access(self, access):
        """Of the product's key: "read" or "full"; lasts until it is set again."""
        self.restricted = access != "full"
        self.runner.quiet(*self.runner.wine(self.runner.bin / "e2e" / "access-tool.exe", access))

    @staticmethod
    def set_version(file, version):
        """In the version resource of a copy of the file."""
        data = bytearray(file.read_bytes())
        fixed = data.index((0xFEEF04BD).to_bytes(4, "little"))
        first, second, third, fourth = (int(number) for number in version.split("."))
        data[fixed + 8:fixed + 16] = struct.pack("<4H", second, first, fourth, third)
        file.unlink()
        file.write_bytes(data)

    def marks(self):
        """The files that runs leave while they last."""
        return list((self.runner.prefix / "drive_c/ProgramData/clusctl").glob("*"))

    def mount_disk(self, folder, options):
        folder.mkdir(exist_ok=True)
        if subprocess.run(["mount", "-t", "tmpfs", "-o", f"{options},mode=0755", "none", str(folder)],
                          stderr=subprocess.DEVNULL).returncode != 0:
            print("not run: no disk can be mounted here")
            self.unmount_disks()
            sys.exit(SKIPPED)
        self.disks.append(folder)

    def unmount_disks(self):
        while self.disks:
            subprocess.run(["umount", str(self.disks.pop())], check=True)

    def copy_configuration(self):
        for file in self.folder.glob("main.cf*"):
            file.unlink()
        shutil.copy(find_input(self.configuration), self.folder / "main.cf")
        state = find_input(self.configuration).with_name(self.configuration + ".state.json")
        if state.is_file():
            shutil.copy(state, self.folder / "main.cf.state.json")

    def copy_model(self):
        text = expanded(find_input(self.model).read_text(encoding="utf-8"))
        (self.folder / "model.json").write_text(text, encoding="utf-8")

    def add_resources(self, count, kind):
        """To the first group of the model."""
        file = self.folder / "model.json"
        model = json.loads(file.read_text(encoding="utf-8"))
        for number in range(count):
            model["resources"].append({"name": f"Service {number}", "type": kind, "group": model["groups"][0]["name"],
                                       "id": f"00000000-0000-4000-8000-{number:012x}", "state": "Online"})
        file.write_text(json.dumps(model), encoding="utf-8")

    def add_servers(self, count, group):
        """Whatever is called by the group is called by a number in a copy."""
        file = self.folder / "model.json"
        model = json.loads(file.read_text(encoding="utf-8"))
        of_group = {"groups": [item for item in model["groups"] if item["name"] == group],
                    "resources": [item for item in model["resources"] if item["group"] == group]}
        for number in range(count):
            copy = json.loads(json.dumps(of_group).replace(group, f"COPY{number}"))
            for index, resource in enumerate(copy["resources"]):
                resource["id"] = f"00000000-0000-4000-8000-{number:08x}{index:04x}"
            model["groups"] += copy["groups"]
            model["resources"] += copy["resources"]
        file.write_text(json.dumps(model), encoding="utf-8")

    def own_program_folder(self):
        """A folder with a copy of clusctl and its libraries that this case may change."""
        folder = self.folder / "bin"
        if not folder.exists():
            folder.mkdir(exist_ok=True)
            for file in [self.runner.bin / "clusctl.exe", self.runner.bin / "vcssim.exe", *self.runner.bin.glob("*.dll")]:
                os.link(file, folder / file.name)
            self.program = folder / "clusctl.exe"
        return folder

    def set_simulators_apart(self):
        folder = self.folder / "simulator"
        folder.mkdir()
        for name in ("clusapi.dll", "resutils.dll", *(f"{tool}.exe" for tool in (*VCS_TOOLS, "vcssim"))):
            os.link(self.runner.bin / name, folder / name)

    def set_web_server(self, text):
        file = self.runner.prefix / "drive_c/windows/system32/inetsrv/config/applicationHost.config"
        if text is None:
            file.unlink(missing_ok=True)
        else:
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")

    def environment(self, variables):
        # Only what a case sets reaches the program; the machine's own settings must not.
        own = ("CLUSSIM_", "VCSSIM_", "CLUSUTIL_", "CLUSCTL_")
        kept = {name: value for name, value in os.environ.items() if not name.startswith(own)}
        files = {"CLUSSIM_FILE": "model.json", "VCSSIM_MAIN_CF": "main.cf"}
        named = {name: file for name, file in files.items() if (self.folder / file).exists()}
        return {**kept, **named, "CLUSUTIL_RUN_SECONDS": str(TIME_LIMIT), **variables}

    def start(self, arguments, variables):
        variables = dict(variables)
        target = variables.pop("STDOUT", "pipe")
        told = (expanded(variables["STDIN"]) + "\n").encode("utf-8") if "STDIN" in variables else None
        told = bytes.fromhex(variables["STDIN_BYTES"]) if "STDIN_BYTES" in variables else told
        variables.pop("STDIN", None)
        variables.pop("STDIN_BYTES", None)
        output = messages = subprocess.PIPE
        if variables.pop("STDERR", "pipe") == "file":
            messages = os.open(self.folder / MESSAGES, os.O_WRONLY | os.O_CREAT | os.O_EXCL)
        if target == "full":
            output = os.open("/dev/full", os.O_WRONLY)
        elif target == "none":
            output = os.open(os.devnull, os.O_WRONLY)
        elif target == "closed":
            reader, output = os.pipe()
            os.close(reader)
        process = subprocess.Popen(self.runner.wine(self.program, *map(expanded, arguments)), cwd=self.folder,
                                   env=self.environment(variables), stdin=subprocess.DEVNULL if told is None else subprocess.PIPE,
                                   stdout=output, stderr=messages)
        if messages != subprocess.PIPE:
            os.close(messages)
        if told is not None:
            process.stdin.write(told)
            process.stdin.close()
            process.stdin = None
        if output != subprocess.PIPE:
            os.close(output)
        return process

    def finish(self, process, arguments):
        captured = process.stdout is not None
        out, err = process.communicate()
        out = out or b""
        if err is None:
            err = (self.folder / MESSAGES).read_bytes()
            (self.folder / MESSAGES).unlink()
        if b"\r" in out:
            sys.exit(f"carriage return in the output of clusctl {' '.join(arguments)}")
        result = out.decode("utf-8")
        if captured and schemas.is_expected(arguments, result):
            for problem in schemas.problems_of(arguments, result):
                self.problems.append(f"clusctl {' '.join(arguments)}: {problem}")
        # A message of the loader of the system that Wine runs on, now and then when a process ends.
        err = re.sub(rb"Inconsistency detected by ld\.so:.*\r?\n", b"", err)
        if err:
            result += "[stderr]\n" + err.decode("utf-8").replace("\r\n", "\n") # the simulator's come with both
        return normalised(result) + f"[exit {process.returncode}]\n"

    def on_terminal(self, arguments, variables):
        """What is written on a terminal, and the exit code."""
        variables = dict(variables)
        told = variables.pop("STDIN", None)
        primary, secondary = pty.openpty()
        process = subprocess.Popen(self.runner.wine(self.program, *map(expanded, arguments)), cwd=self.folder,
                                   env=self.environment({"CLUSUTIL_RUN_FOREGROUND": "1", **variables}), stdin=secondary, stdout=secondary,
                                   stderr=secondary, start_new_session=True,
                                   preexec_fn=lambda: fcntl.ioctl(secondary, termios.TIOCSCTTY, 0))
        os.close(secondary)
        out = b""
        try:
            while data := os.read(primary, 4096):
                out += data
                if told is not None and b"Password:" in out: # it asks
                    time.sleep(1) # the console is switched over with the first key that is asked for
                    os.write(primary, told.encode("utf-8") + b"\r")
                    told = None
        except OSError: # the program has closed its end
            pass
        os.close(primary)
        return re.sub(r"\x1b\[\?\d+[hl]", "", out.decode("utf-8")), process.wait()

    def colours(self, arguments, variables):
        """The lines that are drawn in a colour or otherwise not plainly, each once, with how they are; and whether others are drawn."""
        text, exit_code = self.on_terminal(arguments, variables)
        style, lines, has_plain = "", {}, False
        for line in text.split("\n"):
            shown = styled = ""
            for part in re.findall(r"\x1b\[[\d;]*[A-Za-z]|[^\x1b\r]", line):
                if part.startswith("\x1b") and part.endswith("m"):
                    style = part[2:-1]
                elif not part.startswith("\x1b"):
                    shown += part
                    styled = style
            if shown.strip() and styled:
                lines[f"[{STYLES.get(styled, styled)}] {shown.rstrip()}\n"] = True
            has_plain = has_plain or bool(shown.strip() and not styled)
        return normalised("".join(lines)) + ("[others are plain]\n" if has_plain else "") + f"[exit {exit_code}]\n"

    def terminal(self, arguments, variables, shown=r"[^\r\n]*(?:: (?:[a-z]+ pending|stopped|some of \d+)|reading servers)"):
        text, exit_code = self.on_terminal(arguments, variables)
        words = re.sub(r"\x1b\[\d*[A-Za-z]", "", text)
        words = re.sub(r"(reading \w+|with each call failing): \d+ of ", r"\1: some of ", words)
        drawn = dict.fromkeys(re.findall(rf"\r?({shown}), \d+ s", words))
        screen = "".join(f"{on_screen(line)}\n" for line in text.split("\n")[:-1])
        return "".join(f"[drawn] {line}\n" for line in drawn) + normalised(screen) + f"[exit {exit_code}]\n"

    def clusctl(self, arguments, variables):
        return self.finish(self.start(arguments, variables), arguments)

    def changing_calls(self, arguments, variables):
        """As faults name them."""
        self.copy_model()
        self.clusctl(arguments, {**variables, "CLUSSIM_JOURNAL": "change.journal"})
        journal = self.folder / "change.journal"
        calls = [json.loads(line) for line in journal.read_text(encoding="utf-8").splitlines()]
        journal.unlink()
        kinds = [call["call"] + (f"@0x{call['args']['code']:08x}" if "code" in call["args"] else "")
                 for call in calls if "call" in call and is_changing(call)]
        return [f"{kind}#{kinds[:i].count(kind) + 1}" for i, kind in enumerate(kinds)]

    def rehearsed(self, arguments, variables):
        """How the runs of VCS tools of a dry run differ from those of the change itself."""
        result = self.clusctl([*arguments, "--dry-run", "--json"], variables)
        document = json.loads(result[:result.rindex("\n}\n") + 3])
        rehearsal = "".join(f"{call['text']}\n" for call in document["calls"]) + f"[exit {document['command']['exitCode']}]\n"
        exit_code = self.clusctl(arguments, {**variables, "VCSSIM_JOURNAL": "change.journal"}).splitlines()[-1]
        journal = self.folder / "change.journal"
        runs = [json.loads(line) for line in journal.read_text(encoding="utf-8").splitlines()]
        journal.unlink()
        words = ([run["tool"], *(f'"{word}"' if word == "" or " " in word else word for word in run["arguments"])] for run in runs)
        change = "".join(" ".join(line) + "\n" for line in words) + exit_code + "\n"
        return difference(rehearsal, change, "rehearsal", "change") or f"the same {len(runs)} commands\n"

    def same_rehearsal(self, arguments, variables):
        outputs, models = [], []
        for name in ("first.json", "second.json"):
            outputs.append(self.clusctl(["--model", arguments[0], "rehearse", *arguments[1:], "--save", name], variables).replace(name, "FILE"))
            saved = self.folder / name
            files = sorted(saved.iterdir()) if saved.is_dir() else [saved]
            models.append("".join(file.read_text(encoding="utf-8") for file in files))
        return difference(*outputs, "first", "second") + difference(*models, "first", "second") or f"same {len(outputs[0].splitlines())} lines\n"

    def documented_ends(self, arguments, variables):
        command = arguments.index("--")
        variables = {"CLUSUTIL_RUN_SECONDS": "220", **variables}
        rehearse = [] if "rehearse" in arguments[:command] else ["rehearse"] # with options of its own
        words = [*arguments[:command], *rehearse, "--each-call-fails", "--json", *arguments[command:]]
        result = self.clusctl(words, variables)
        document = json.loads(result[:result.rindex("\n}\n") + 3])
        if "runs" not in document:
            return result
        rows = [run for run in document["runs"] if run["ended"] == "in between"]
        texts = [f"{run['call']}: exit {run['exitCode']}: {run['message'] or 'no failure'}\n" for run in rows]
        steps = f"calls {ranges(run['step'] for run in document['runs'])} of {document['plain']['calls']}\n" if "--fail" in arguments else ""
        count = document["ended"]
        if count["inBetween"] + count["asBefore"] + count["asWanted"] != len(document["runs"]) or len(document["runs"]) < 10:
            return f"{len(document['runs'])} runs do not add up to {count}\n"
        return steps + ("".join(dict.fromkeys(texts)) or "nothing ends in between\n")

    def elsewhere(self, name):
        if self.restricted:
            self.set_access("full")
        for file in (self.program.parent / "cfg_ProductRegistry.txt", self.program.parent / "config" / "cfg_ProductRegistry.txt"):
            if self.program.parent != self.runner.bin:
                file.unlink(missing_ok=True)
        self.runner.set_registry(self.folder, name, None)

    def without(self, name, bundle, other):
        with zipfile.ZipFile(self.folder / bundle) as archive, zipfile.ZipFile(self.folder / other, "w") as copy:
            manifest = json.loads(archive.read("manifest.json"))
            manifest["files"] = [file for file in manifest["files"] if file["name"] != name]
            copy.writestr("manifest.json", json.dumps(manifest))
            for file in manifest["files"]:
                copy.writestr(file["name"], archive.read(file["name"]))
        return ""

    @staticmethod
    def add_up(cases):
        numbers, totals = [], set()
        for case in cases:
            for steps, total in re.findall(r"(?m)^calls ([\d, -]+) of (\d+)$", (HERE / "cases" / f"{case}.txt").read_text(encoding="utf-8")):
                totals.add(int(total))
                for part in steps.split(", "):
                    first, _, last = part.partition("-")
                    numbers += range(int(first), int(last or first) + 1)
        if len(totals) != 1 or sorted(numbers) != list(range(1, max(totals) + 1)):
            return f"not each of {sorted(totals)} calls once: {ranges(sorted(numbers))}\n"
        return f"all {max(totals)} calls\n"

    def run(self, line):
        words = shlex.split(line)
        variables = {}
        while "=" in words[0]:
            name, _, value = words.pop(0).partition("=")
            variables[name] = value
        verb, arguments = words[0], words[1:]
        if "=" in variables.get("VCSSIM_FAULTS", ""):
            (self.folder / "given-faults").write_text(variables["VCSSIM_FAULTS"].replace(";", "\n"), encoding="utf-8")
            variables["VCSSIM_FAULTS"] = "given-faults"
        if self.silent and verb in ("show", "lines", "absent") and ".log" in line:
            return "" # there is none
        if verb == "clusctl":
            return self.clusctl(arguments, variables)
        if verb == "interrupt":
            return interrupted.once(self, arguments[0], int(arguments[1]), arguments[3:], variables)
        if verb == "interrupt-at":
            return interrupted.at_each(self, [int(number) for number in arguments[0].split(",")], arguments[2:], variables)
        if verb == "interrupt-call":
            return interrupted.in_call(self, arguments[0], arguments[1], arguments[3:], variables)
        if verb == "interrupt-calls":
            program = arguments.index("clusctl")
            calls = arguments[:program]
            if "each-changing" in calls:
                at = calls.index("each-changing")
                calls[at:at + 1] = self.changing_calls(arguments[program + 1:], variables)
            return interrupted.in_each_call(self, calls, arguments[program + 1:], variables)
        if verb == "runs":
            self.clusctl(arguments[1:], {**variables, "VCSSIM_JOURNAL": "runs.journal"})
            journal = self.folder / "runs.journal"
            count = len(journal.read_text(encoding="utf-8").splitlines())
            journal.unlink()
            return f"{count} runs\n"
        if verb == "search":
            return secret.search(self, arguments[0], arguments[1], arguments[3:], variables)
        if verb == "afresh":
            for name, copy in ((self.configuration, self.copy_configuration), (self.model, self.copy_model)):
                if name is not None:
                    copy()
            return ""
        if verb == "same":
            first, second = (self.clusctl(arguments[2:], {**variables, "CLUSSIM_FILE": file}).replace(f'"{file}"', '"FILE"')
                             for file in arguments[:2])
            return difference(first, second, *arguments[:2]) or "same\n"
        if verb == "together":
            processes = [self.start(arguments[1:], variables) for _ in range(int(arguments[0]))]
            results = [self.finish(process, arguments[1:]) for process in processes]
            differences = [difference(results[0], other, "first", "other") for other in results[1:]]
            return results[0] + "".join(text or "same\n" for text in differences)
        if verb == "rehearsed":
            return self.rehearsed(arguments[1:], variables)
        if verb == "colours":
            return self.colours(arguments[1:], variables)
        if verb == "terminal":
            return self.terminal(arguments[1:], variables)
        if verb == "found":
            result = self.clusctl(arguments[2:], variables)
            codes = "|".join(arguments[0].split(","))
            return "".join(f"{line}\n" for line in result.splitlines() if re.search(rf" \[({codes})\]$|^\[exit ", line))
        if verb == "shown":
            return self.terminal(arguments[2:], variables, arguments[0])
        if verb == "screen":
            lines, exit_code = screen.at_call(self, arguments[0], self.program, arguments[2:], variables)
            return normalised("\n".join(lines).strip("\n")) + f"\n[exit {exit_code}]\n"
        if verb == "show":
            return normalised((self.folder / arguments[0]).read_text(encoding="utf-8"))
        if verb == "lines":
            text = normalised((self.folder / arguments[1]).read_text(encoding="utf-8"))
            return "".join(f"{found}\n" for found in text.splitlines() if arguments[0] in found)
        if verb == "absent":
            wanted = arguments[0].encode("utf-8").lower()
            paths = [path for name in arguments[1:] for path in (sorted((self.folder / name).iterdir())
                                                                 if (self.folder / name).is_dir() else [self.folder / name])]
            found = [path.name for path in paths if wanted in path.read_bytes().lower()]
            return f"found in {', '.join(found)}\n" if found else "absent\n"
        if verb == "same-rehearsal":
            return self.same_rehearsal(arguments, variables)
        if verb == "at-most":
            data = (self.folder / arguments[2]).read_bytes()
            count = {"lines": data.count(b"\n"), "bytes": len(data)}[arguments[1]]
            return "at most that\n" if 0 < count <= int(arguments[0]) else f"{count}\n"
        if verb == "asked-only":
            return asked_only((self.folder / arguments[0]).read_text(encoding="utf-8"))
        if verb == "documented-ends":
            return self.documented_ends(arguments, variables)
        if verb == "add-up":
            return self.add_up(arguments)
        if verb == "unchanged":
            other = self.folder / arguments[1]
            other = other if other.is_file() and arguments[0] != arguments[1] else find_input(arguments[1])
            same = (self.folder / arguments[0]).read_bytes() == other.read_bytes()
            return "unchanged\n" if same else "changed\n"
        if verb == "unzip":
            return self.unzip(arguments[0])
        if verb == "files":
            folder = self.folder.joinpath(*arguments)
            return "".join(f"{name}\n" for name in sorted(file.name for file in folder.iterdir() if file.is_file() or arguments))
        if verb == "temporary":
            folders = sorted(interrupted.temporary_folder(self).glob("clusctl-*"))
            lines = [f"{folder.name}: {', '.join(sorted(file.name for file in folder.iterdir())) or 'empty'}\n" for folder in folders]
            return normalised(re.sub(r"(clusctl-[a-z]+)-\d+-\d+", r"\1", "".join(lines))) or "none\n"
        if verb == "left":
            folder = interrupted.temporary_folder(self) / arguments[0]
            folder.mkdir(exist_ok=True)
            os.utime(folder, (time.time() - int(arguments[1]),) * 2)
            return ""
        if verb == "mark":
            begun, _, moment = arguments[1].partition("+")
            model = {"model": "Z:" + str(self.folder / arguments[3]).replace("/", "\\")} if len(arguments) > 3 else {}
            mark = {"command": arguments[2], "process": 7, "begun": begun, **({"begunAt": int(moment)} if moment else {}), **model}
            folder = self.runner.prefix / "drive_c/ProgramData/clusctl"
            folder.mkdir(exist_ok=True)
            (folder / f"{arguments[0]}.run").write_text(json.dumps(mark), encoding="utf-8")
            return ""
        if verb == "long-log":
            text = "x" * (int(arguments[1]) - 1) + "\n"
            (self.folder / arguments[2]).write_text(text * int(arguments[0]), encoding="ascii")
            return ""
        if verb == "elsewhere":
            self.elsewhere(arguments[0])
            return ""
        if verb == "without":
            return self.without(*arguments)
        if verb == "mends":
            return normalised(mends.mend(self, arguments[0], arguments[1:], variables))
        if verb == "program":
            return normalised(mends.run(self, arguments, variables))
        if verb == "left-keys":
            keys = subprocess.run(self.runner.wine("reg", "query", "HKCU\\Software"), stdout=subprocess.PIPE, check=True).stdout
            return f"{keys.count(b'clusctl-')}\n"
        sys.exit(f"{self.file.name}: unknown command '{verb}'")

    def unzip(self, name):
        folder = self.folder / Path(name).stem
        with zipfile.ZipFile(self.folder / name) as archive:
            archive.extractall(folder)
            names = archive.namelist()
        manifest = json.loads((folder / "manifest.json").read_text(encoding="utf-8"))
        told = {entry["name"]: (entry["sha256"], entry["bytes"]) for entry in manifest["files"]}
        found = {file.name: (hashlib.sha256(file.read_bytes()).hexdigest(), file.stat().st_size)
                 for file in folder.iterdir() if file.name != "manifest.json"}
        lines = [f"{entry['name']}: {masked['what']}" for entry in manifest["files"] for masked in entry["masked"]]
        return "\n".join([*names, *lines, "as" if told == found else "not as"]) + " the manifest says\n"

    def transcript(self):
        lines = self.file.read_text(encoding="utf-8").splitlines()
        first = next((i for i, line in enumerate(lines) if line.startswith("$ ")), len(lines))
        settings = [tuple(line.split(" ", 1)) for line in lines[:first] if line and not line.startswith("#")]
        if self.silent:
            settings.append(("debug-log", "silent"))
            if not any(word == "vcs-tools" for word, _ in settings):
                settings.append(("vcs-tools", " ".join((*VCS_TOOLS, "haclus"))))
        if first == len(lines):
            sys.exit(f"{self.file.name} runs nothing")
        try:
            self.prepare(settings)
            return self.run_lines(lines, first)
        finally:
            self.unmount_disks()
            if self.restricted:
                self.set_access("full")

    def run_lines(self, lines, first):
        result = "\n".join(lines[:first]).rstrip("\n") + "\n"
        for line in lines[first:]:
            if line.startswith("$ "):
                result += f"\n{line}\n{self.run(line[2:])}"
        return result

    def check(self, update):
        found = self.transcript()
        expected = self.file.read_text(encoding="utf-8")
        if self.silent:
            update = False
            found, expected = (without_log(text) for text in (found, expected))
        text = difference(expected, found, f"expected {self.file.name}", "found")
        if text:
            print(text, end="")
        if update:
            self.file.write_text(found, encoding="utf-8")
        for problem in self.problems:
            print(f"not as docs/schemas has it: {problem}")
        return not self.problems and (update or not text)


def is_changing(call):
    """Of the cluster's API, as a journal has it."""
    return (re.match(r"(Add|Change|Create|Delete|Fail|Move|Offline|Online|Pause|Remove|Restart|Resume|Set)[A-Z]", call["call"])
            or call.get("args", {}).get("code", 0) & 0x400000)


def asked_only(journal):
    asking = {"-display", "-list", "-state", "-dep", "-value"}
    calls = [json.loads(line) for line in journal.splitlines()]
    found = [call["tool"] for call in calls if "tool" in call and call["arguments"][0] not in asking]
    found += [call["call"] for call in calls if "call" in call and is_changing(call)]
    return "".join(f"{name}\n" for name in found) or "only asked\n" if calls else "the journal is empty\n"


def without_log(text):
    """A transcript without the library's own lines, and without the answers of commands that are about them."""
    text = re.sub(r"(?m)^clusctl: log: .*\n", "", text)
    text = re.sub(r"(?m)^\[stderr\]\n(?=\[exit )", "", text) # where nothing else was told
    text = re.sub(r"(?m)^[\w-]+\.log\n", "", text)
    text = re.sub(r'(?m)^  "log": \[\n(?:    .*\n)+  \]', '  "log": []', text)
    answers = text.split("\n\n$ ")
    return "\n\n$ ".join(answer.splitlines()[0] if is_about_log(answer.splitlines()[0]) else answer for answer in answers)


def is_about_log(command):
    return command.startswith("rehearsed ") or "--verbose" in command or "--log " in command or ".log" in command


def on_screen(line):
    """What a line shows at its end: carriage returns, erasing to the end, and moves to the right are obeyed."""
    shown, at = [], 0
    for part in re.findall(r"\x1b\[[\d;]*[A-Za-z]|\r|[^\x1b\r]", re.sub(r"\x1b\[[\d;]*m", "", line)): # without colours
        if part == "\r":
            at = 0
        elif part.endswith("K") and len(part) > 1:
            del shown[at:]
        elif part.endswith("C") and len(part) > 1:
            at += int(part[2:-1] or 1)
        elif len(part) > 1:
            sys.exit(f"unknown terminal sequence {part!r}")
        else:
            shown += [" "] * (at + 1 - len(shown))
            shown[at] = part
            at += 1
    return "".join(shown).rstrip()


def difference(first, second, first_name, second_name):
    return "".join(line if line.endswith("\n") else line + "\n" for line in difflib.unified_diff(
        first.splitlines(keepends=True), second.splitlines(keepends=True), first_name, second_name, n=2))


def find_input(name):
    for folder in (HERE / "models", EXAMPLES):
        if (folder / name).is_file():
            return folder / name
    sys.exit(f"no input file {name}")


def check_demo(runner):
    folder = runner.work / "demo in a folder with blanks"
    shutil.rmtree(folder, ignore_errors=True)
    (folder / "bin dir").mkdir(parents=True)
    tools = (f"{tool}.exe" for tool in (*VCS_TOOLS, "vcssim"))
    for file in [runner.bin / "clusctl.exe", *(runner.bin / tool for tool in tools), *runner.bin.glob("*.dll")]:
        os.link(file, folder / "bin dir" / file.name)
    shutil.copytree(EXAMPLES, folder / "examples")
    done = subprocess.run([str(folder / "examples" / "demo.sh"), str(folder / "bin dir"), *runner.wine()], cwd=folder,
                          stdin=subprocess.DEVNULL, timeout=220)
    return done.returncode == 0


# The pages that are looked at: settings as of a case, and a word that some of their resources have.
PAGES = {
    "failover": ([("model", "two-node-single-copy.json"), ("registry", "cluster.reg")], "exvs-mail2"),
    "odd-names": ([("model", "odd-names.json"), ("registry", "cluster.reg")], "<script>alert(1)"),
    "many": ([("model", "seventy-servers.json"), ("more-resources", "300"), ("registry", "cluster.reg")], "service 299"),
    "long-names": ([("model", "long-names.json"), ("registry", "cluster.reg")], "physical disk"),
    "vcs": ([("vcs", "vcs-with-product.cf"), ("registry", "vcs.reg")], "genericservice"),
}
COMMON_PAGES = ("failover", "vcs") # of clusters of common size


def problems_of_picture(picture, page, update):
    """Whether a committed picture is the one that was made of this page: what both were is kept beside it, as hashes, of the page without
    version and times. Pixels are not compared, which are the browser's and the fonts'."""
    text = re.sub(r"(?<![\d.])\d+\.\d+\.\d+(?![\d.])", "VERSION", normalised(page.read_text(encoding="utf-8")))
    text = re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d UTC", "TIME", text)
    made = f"page {hashlib.sha256(text.encode('utf-8')).hexdigest()}\npicture {hashlib.sha256(picture.read_bytes()).hexdigest()}\n"
    kept = picture.with_suffix(".sha256")
    if update:
        kept.write_text(made, encoding="utf-8")
    if kept.is_file() and kept.read_text(encoding="utf-8") == made:
        return []
    return [f"docs/{picture.name} is not the picture of the page that 'clusctl report' writes now: run.py ... browser --update makes it anew, "
            f"with docs/{kept.name}; look at it, and commit both"]


def check_pages(runner, update):
    pages = []
    for name, (settings, word) in PAGES.items():
        case = Case(runner, f"page-{name}")
        case.prepare(settings)
        result = case.clusctl(["report", f"{name}.html"], {})
        if not result.endswith("[exit 0]\n"):
            print(result, end="")
            return False
        pages.append((case.folder / f"{name}.html", word, name in COMMON_PAGES))
    pictures = runner.work / "pages"
    shown = ROOT / "docs" / "report.png"
    problems = browser.check(pages, pictures, shown if update else None)
    if not problems:
        problems = problems_of_picture(shown, pages[0][0], update)
    print("".join(f"{problem}\n" for problem in problems), end="")
    return not problems


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--bin", required=True)
    parser.add_argument("--prefix", required=True)
    parser.add_argument("--work", required=True)
    parser.add_argument("--processor", type=int, help="the one, counted from 0, that all of it runs on")
    parser.add_argument("--update", action="store_true")
    parser.add_argument("action", choices=["start", "stop", "case", "silent", "replayed", "bundled", "demo", "browser", *telling.CHECKS])
    parser.add_argument("names", nargs="*")
    options = parser.parse_args()
    if options.processor is not None and options.action != "browser": # which has processes of its own
        # A Wine program and the server take turns; to wake one on another processor takes longer than most of what they do.
        allowed = sorted(os.sched_getaffinity(0))
        os.sched_setaffinity(0, {allowed[options.processor % len(allowed)]})
    runner = Runner(options)
    if options.action == "start":
        runner.start()
    elif options.action == "stop":
        runner.stop()
    elif options.action in ("case", "silent"):
        results = [Case(runner, name, options.action == "silent").check(options.update) for name in options.names]
        sys.exit(0 if results and all(results) else 1)
    elif options.action == "browser":
        sys.exit(0 if check_pages(runner, options.update) else 1)
    elif options.action == "replayed":
        problems = [problem for kind in options.names
                    for problem in replayed.check(lambda name: Case(runner, name), runner, kind, options.update, difference)]
        print("\n".join(problems), end="\n" if problems else "")
        sys.exit(1 if problems or not options.names else 0)
    elif options.action == "bundled":
        problems = bundled.check(lambda name: Case(runner, name), options.names, difference)
        print("\n".join(problems), end="\n" if problems else "")
        sys.exit(1 if problems or not options.names else 0)
    elif options.action == "demo":
        sys.exit(0 if check_demo(runner) else 1)
    else:
        problems = telling.CHECKS[options.action](runner, options.update)
        print("\n".join(problems), end="\n" if problems else "")
        sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
