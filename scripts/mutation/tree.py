"""Builds clusutil.dll from changed copies of src/, and runs the test programs on it."""
import hashlib
import json
import os
import re
import shlex
import shutil
import subprocess

from sources import ROOT

PROGRAMS = ("core_test", "cluster_test", "disk_test", "product_test", "virtualserver_test", "veritas_test", "log_test")
# What tests a file most, by the beginning of its path; the other programs follow.
FIRST = (
    ("src/cluster/DiskPaths", ("disk_test",)),
    ("src/cluster/", ("cluster_test", "product_test")),
    ("src/core/Disk", ("disk_test", "core_test")),
    ("src/core/Tool", ("veritas_test", "core_test")),
    ("src/core/UniqueNames", ("veritas_test", "core_test")),
    ("src/core/Veritas", ("veritas_test",)),
    ("src/core/", ("core_test", "virtualserver_test", "cluster_test")),
    ("src/platform/Capture", ("veritas_test",)),
    ("src/platform/Tool", ("veritas_test",)),
    ("src/platform/RegistryKey", ("virtualserver_test",)),
    ("src/settings/", ("virtualserver_test",)),
    ("src/veritas/", ("veritas_test",)),
    ("src/virtualserver/", ("virtualserver_test", "product_test")),
)
CORE_TESTS = "tests/core/"
LINKED = ("bin/clusutil.dll", "bin/core_test.exe")
PRECOMPILED = "-Winvalid-pch"  # CMake's, in front of "-include" and the headers
COMPILE_SECONDS = 600  # for a machine with much else to do
# Read once for all of the library's sources, which takes more time than the rest of most.
HEADERS = "headers.h"
HEADERS_TEXT = "".join(f"#include <{name}>\n" for name in (
    "winsock2.h", "windows.h", "clusapi.h", "algorithm", "list", "memory", "string", "vector"))


def programs_for(file):
    first = next((programs for begin, programs in FIRST if file.startswith(begin)), ())
    return [*first, *(program for program in PROGRAMS if program not in first)]


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", check=False,
                          **options)


def library_files_in(dependencies):
    """Of the compiler's list for one source. The tests of the core name its headers "src/core/../core/UniqueNames.h"."""
    return {os.path.normpath(file) for file in re.findall(r"src/[\w/.]+", dependencies)}


class Tree:
    """What all mutants have in common: how the library of a build tree is compiled and linked."""

    def __init__(self, build, work):
        self.build = build
        self.work = work
        # source -> arguments, to be run beside a copy of src/; those of core_test, too, which compile the core's headers
        self.compilations = {}
        for entry in json.loads((build / "compile_commands.json").read_text()):
            source = os.path.relpath(entry["file"], ROOT)
            if source.startswith(("src/", CORE_TESTS)):
                self.compilations[source] = self.compilation(source, shlex.split(entry["command"]))
        self.links = [(self.link_command(target), target) for target in LINKED]
        self.archiver = re.search(r'CMAKE_AR:FILEPATH=(.*)', (build / "CMakeCache.txt").read_text()).group(1)
        self.dependents = {}  # file -> sources that it is compiled in

    @staticmethod
    def compilation(source, arguments):
        kept = [argument.replace(f"{ROOT}/src", "src") for argument in arguments if argument != "-Werror"]
        if kept[0].endswith("ccache"):
            del kept[0]
        del kept[kept.index("-o"):]
        if PRECOMPILED in kept:  # made for other settings than those below
            start = kept.index(PRECOMPILED)
            del kept[start:start + 3]
        # Optimised, so that changes that mean nothing give equal code; -w, since what is unused is no matter.
        kept = [*(part for part in kept if not part.startswith(("-g", "-O"))), "-O2", "-w"]
        headers = [] if "/core/" in source else ["-include", HEADERS]
        copied = source if source.startswith("src/") else str(ROOT / source)
        return [*kept, *headers, "-MMD", "-c", copied, "-o", Tree.object_of(source)]

    @staticmethod
    def object_of(source):
        return "objects/" + source.replace("/", "-") + ".o"

    def link_command(self, target):
        listed = run(["ninja", "-C", str(self.build), "-t", "commands", "-s", target]).stdout
        command = next(line for line in listed.splitlines() if " -o " + target in line)
        return next(part.strip() for part in command.split("&&") if " -o " + target in part)

    def compile(self, folder, source):
        """None, or what the compiler says against it."""
        result = run(self.compilations[source], cwd=folder, timeout=COMPILE_SECONDS)
        return result.stdout or "failed" if result.returncode != 0 else None

    def prepare(self, folder):
        """A worker's own folder: a copy of src/, room for objects, and the programs."""
        for part in ("src", "objects", "bin"):
            shutil.rmtree(folder / part, ignore_errors=True)
        folder.mkdir(parents=True, exist_ok=True)
        shutil.copytree(ROOT / "src", folder / "src")
        shutil.copytree(self.build / "bin", folder / "bin", copy_function=os.link)
        (folder / "objects").mkdir()

    def compile_all(self, folder):
        """Compiles all of src/, and learns what is compiled of which file."""
        command = next(command for source, command in self.compilations.items() if "/core/" not in source)
        (folder / HEADERS).write_text(HEADERS_TEXT)
        run([*command[:command.index("-include")], "-x", "c++-header", HEADERS, "-o", HEADERS + ".gch"], cwd=folder)
        for source in self.compilations:
            problem = self.compile(folder, source)
            if problem:
                raise SystemExit(f"{source} does not compile:\n{problem}")
            listed = (folder / self.object_of(source)).with_suffix(".d").read_text()
            for file in library_files_in(listed):
                self.dependents.setdefault(file, set()).add(source)

    def link(self, folder, file):
        """Links the folder's objects to clusutil.dll, and core_test when `file` is of the core, which it holds itself. None, or
        what the linker says."""
        core = [source for source in self.compilations if source.startswith("src/core/")]
        archive = folder / "core.a"
        archive.unlink(missing_ok=True)
        result = run([self.archiver, "qcs", archive, *(folder / self.object_of(source) for source in core)])
        for command, target in (self.links if result.returncode == 0 else ()):
            if target != LINKED[0] and "/core/" not in file:
                continue
            for old, new in self.replaced_in_link(folder, archive):
                command = command.replace(old, str(new))
            (folder / target).unlink(missing_ok=True)  # it is another name of the build tree's file
            result = run(["sh", "-c", command], cwd=self.build, timeout=COMPILE_SECONDS)
            if result.returncode != 0:
                break
        return result.stdout or "failed" if result.returncode != 0 else None

    def replaced_in_link(self, folder, archive):
        yield "lib/clusutil_core.a", archive
        yield "--out-implib,lib/libclusutil.dll.a", f"--out-implib,{folder}/libclusutil.dll.a"
        for source in self.compilations:
            place, target = ("src/", "clusutil") if source.startswith("src/") else (CORE_TESTS, "core_test")
            yield f"{place}CMakeFiles/{target}.dir/{source[len(place):]}.obj", folder / self.object_of(source)
        for target in LINKED:
            yield f" -o {target} ", f" -o {folder / target} "


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


class Wine:
    """A worker's own prefix, whose server runs as long as the object is used."""

    def __init__(self, folder):
        self.prefix = str(folder / "wineprefix")
        self.bin = folder / "bin"
        run([str(ROOT / "cmake/wine-run"), "--start", self.prefix])

    def stop(self):
        run([str(ROOT / "cmake/wine-run"), "--stop", self.prefix])

    def run(self, program, seconds, *arguments):
        """Exit code and output of a test program; 124 when its time was over."""
        environment = dict(os.environ, CLUSUTIL_RUN_SECONDS=str(int(seconds)))
        result = run([str(ROOT / "cmake/wine-run"), self.prefix, str(self.bin / (program + ".exe")), *arguments],
                     env=environment, cwd=self.bin, stdin=subprocess.DEVNULL)
        return result.returncode, result.stdout


def failed_tests(output):
    """The tests of a run that failed, in their order; the one that was running when the program ended early, too."""
    failed = re.findall(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", output, re.MULTILINE)
    started = re.findall(r"^\[ RUN      \] (\S+)", output, re.MULTILINE)
    if started and not re.search(r"^\[(?:       OK |  FAILED  |  SKIPPED )\] " + re.escape(started[-1]), output, re.MULTILINE):
        failed.append(started[-1])
    return list(dict.fromkeys(failed))


def tests_longer_than(output, seconds):
    return [test for test, duration in re.findall(r"^\[       OK \] (\S+?)(?:,.*)? \((\d+) ms\)", output, re.MULTILINE)
            if int(duration) > 1000 * seconds]
