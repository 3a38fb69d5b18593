#!/usr/bin/env python3
"""Checks that everything that clusutil.dll imports is replaced by the tests of this folder, or stands in kept.txt.

usage: check_replacements.py

The imports are those of tests/binaries/imports.txt, which has no functions of run-times. kept.txt has a line for each that
stays what it is: DLL, function, two blanks, the reason.
"""
import re
import sys
from pathlib import Path

sys.dont_write_bytecode = True

HERE = Path(__file__).parent
IMPORTS = HERE.parent / "binaries/imports.txt"
BY_ADDRESS = {"DBG::DebugLogEx": ("debuglog.dll", "_ZN3DBG10DebugLogExEP11HINSTANCE__jPKciPKwz"),
              "CheckPathFormat": ("commonutil.dll", "_Z15CheckPathFormatPKwy")}


def imported(text):
    """(DLL, function) of clusutil.dll."""
    found, module, dll = set(), None, None
    for line in text.splitlines():
        name = line.strip()
        if line.startswith("    "):
            if module == "clusutil.dll":
                found.add((dll, name))
        elif line.startswith("  "):
            dll = name.lower()
        else:
            module = name
    return found


def replaced(text):
    """The same of the sources' text."""
    found = {(f"{dll}.dll", name) for dll, name in re.findall(r'HOSTILE\("(\w+)", (\w+)\)', text)}
    pattern = r'(?:replacements\.Add|patch)\(\s*(?:library, )?"([\w.]+)",\s*(?:Decorated\()?"(\w+)"'
    found |= {(dll.lower(), name) for dll, name in re.findall(pattern, text)}
    return found | {BY_ADDRESS[name] for name in re.findall(r"AddAt\(reinterpret_cast<const void\*>\(&([\w:]+)\)", text)}


def kept(text):
    """The same with the reasons."""
    found = {}
    for line in text.splitlines():
        place, _, reason = line.partition("  ")
        dll, _, name = place.partition(" ")
        found[dll, name] = reason
    return found


def problems_of(imports, replacements, exceptions):
    problems = [f"{dll} {name}: is imported, neither replaced nor in kept.txt"
                for dll, name in sorted(imports - replacements - set(exceptions))]
    problems += [f"{dll} {name}: is replaced, and not imported" for dll, name in sorted(replacements - imports)]
    problems += [f"{dll} {name}: is in kept.txt, and not imported" for dll, name in sorted(set(exceptions) - imports)]
    problems += [f"{dll} {name}: is replaced, and in kept.txt" for dll, name in sorted(replacements & set(exceptions))]
    return problems + [f"{dll} {name}: has no reason" for (dll, name), reason in sorted(exceptions.items()) if not reason]


def main():
    imports = imported(IMPORTS.read_text(encoding="utf-8"))
    sources = "\n".join(path.read_text(encoding="utf-8") for path in sorted(HERE.glob("*.cpp")))
    exceptions = kept((HERE / "kept.txt").read_text(encoding="utf-8"))
    problems = problems_of(imports, replaced(sources), exceptions)
    print("\n".join(problems) if problems else f"{len(imports)} imports, {len(exceptions)} of them are kept")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
