#!/usr/bin/env python3
"""Checks the import and export tables of the shipped binaries.

usage: check_tables.py imports|exports|recorded --bin FOLDER [--objdump PROGRAM] [--update]

imports: the functions, compared with imports.txt beside this file, which --update writes; none may belong to CryptoAPI. What C and
C++ runtime functions a binary wants of the runtime's DLLs is the compiler's affair and left out.
exports: what clusutil.dll exports, compared with src/clusutil.exports.txt.
recorded: a recording knows all functions of the cluster API that clusutil.dll and clusctl.exe call.
"""
import argparse
import difflib
import re
import subprocess
import sys
from pathlib import Path

SHIPPED = ["clusutil.dll", "CommonUtil.dll", "DebugLog.dll", "WebServerUtil.dll", "clusctl.exe", "clusrecord.dll", "clusapi.dll", "resutils.dll",
           "haagent.exe", "hacf.exe", "haclus.exe", "haconf.exe", "hagrp.exe", "hares.exe", "hastatus.exe", "hasys.exe", "vcsencrypt.exe",
           "vcssim.exe", "libstdc++-6.dll", "libgcc_s_seh-1.dll", "libwinpthread-1.dll"]
RUNTIME = {"msvcrt.dll", "libstdc++-6.dll", "libgcc_s_seh-1.dll", "libwinpthread-1.dll"}
CRYPTOGRAPHY = re.compile(r"\s+(Crypt|BCrypt|NCrypt)")
EXPECTED = Path(__file__).with_name("imports.txt")
CALLS = Path(__file__).parents[2] / "tools/recording/CallTable.cpp"
DELAYED = [Path(__file__).parents[2] / f"tools/clusctl/delayed/{dll}.def" for dll in ("clusapi", "resutils")]
EXPORTS = Path(__file__).parents[2] / "src/clusutil.exports.txt"


def imports(objdump, path):
    """The names of the functions by DLL, in lower case."""
    text = subprocess.run([objdump, "-p", str(path)], check=True, stdout=subprocess.PIPE, text=True).stdout
    found = {}
    names = None
    for line in text.splitlines():
        dll = re.match(r"\s*DLL Name: (\S+)", line)
        entry = re.match(r"\s+[0-9a-f]+\s+\d+\s+(\S+)$", line)
        if dll:
            names = found.setdefault(dll.group(1).lower(), set())
        elif entry and names is not None:
            names.add(entry.group(1))
        elif not line.strip():
            names = None
    return found


def listing(objdump, folder):
    """Lines: binaries with the same imports, the DLLs below them, the functions below these."""
    tables = {}
    for binary in SHIPPED:
        found = imports(objdump, folder / binary)
        if not found:
            sys.exit(f"{binary}: no imports found")
        lines = []
        for dll, names in sorted(found.items()):
            lines += [f"  {dll}", *(f"    {name}" for name in sorted(names) if dll not in RUNTIME)]
        tables.setdefault(tuple(lines), []).append(binary)
    return [line for lines, binaries in tables.items() for line in (" ".join(binaries), *lines)]


def exports(objdump, path):
    text = subprocess.run([objdump, "-p", str(path)], check=True, stdout=subprocess.PIPE, text=True).stdout
    table = text.partition("[Ordinal/Name Pointer] Table")[2].splitlines()
    entries = (re.match(r"\s+\[\s*\d+\] (?:\+base\[\s*\d+\]\s+[0-9a-f]+ )?(\S+)$", line) for line in table)
    return sorted(entry.group(1) for entry in entries if entry)


def unrecorded(objdump, folder):
    """Functions of the cluster API that are called and are not in the table of the recordings."""
    known = set(re.findall(r"CLUSTER_CALL\(\w+, (\w+),", CALLS.read_text(encoding="utf-8")))
    found = imports(objdump, folder / "clusutil.dll")
    called = found["clusapi.dll"] | found["resutils.dll"]
    for delayed in DELAYED:
        called |= set(re.findall(r"(?m)^    (\w+)$", delayed.read_text(encoding="utf-8")))
    if len(called) < 30:
        sys.exit("the functions that are called are not found")
    return sorted(called - known)


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("what", choices=("imports", "exports", "recorded"))
    parser.add_argument("--bin", type=Path, required=True)
    parser.add_argument("--objdump", default="x86_64-w64-mingw32-objdump")
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()
    if arguments.what == "recorded":
        unknown = unrecorded(arguments.objdump, arguments.bin)
        print("\n".join(f"no recording knows {name}: tools/recording/CallTable.cpp" for name in unknown))
        sys.exit(1 if unknown else 0)
    if arguments.what == "exports":
        found = exports(arguments.objdump, arguments.bin / "clusutil.dll")
        expected = sorted(line.split()[0] for line in EXPORTS.read_text(encoding="utf-8").splitlines())
    else:
        found = listing(arguments.objdump, arguments.bin)
        if arguments.update:
            EXPECTED.write_text("\n".join(found) + "\n", encoding="utf-8")
        expected = EXPECTED.read_text(encoding="utf-8").splitlines()
    wrong = [f"cryptography:{line}" for line in found if CRYPTOGRAPHY.match(line)]
    wrong += difflib.unified_diff(expected, found, "expected", "found", lineterm="", n=3)
    print("\n".join(wrong) if wrong else f"the {arguments.what} are as expected")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
