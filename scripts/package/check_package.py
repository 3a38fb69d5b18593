#!/usr/bin/env python3
"""Checks an unpacked package: checksums, list of contents, stripped binaries, import libraries, links, licences.

usage: check_package.py PACKAGE VERSION
"""
import re
import subprocess
import sys
from hashlib import sha256
from pathlib import Path

sys.dont_write_bytecode = True
import components  # noqa: E402
import package  # noqa: E402
import sbom  # noqa: E402


def output_of(*command):
    return subprocess.run([str(word) for word in command], check=True, capture_output=True, text=True).stdout


def checksums(tree):
    named = dict(reversed(line.split("  ", 1)) for line in (tree / "SHA256SUMS").read_text(encoding="utf-8").splitlines())
    for path in sorted(tree.rglob("*")):
        name = str(path.relative_to(tree))
        if path.is_file() and name != "SHA256SUMS" and named.pop(name, None) != sha256(path.read_bytes()).hexdigest():
            yield f"SHA256SUMS: {name} differs or is missing"
    for name in named:
        yield f"SHA256SUMS: there is no {name}"


def binaries(tree):
    found = sorted(path for path in tree.rglob("*") if path.suffix in (".dll", ".exe"))
    if len(found) < 15:
        yield f"only {len(found)} binaries"
    for path in found:
        sections = set(re.findall(r"^ +\d+ (\S+)", output_of(package.TOOLS + "objdump", "-h", path), re.M))
        if not {".text", ".gnu_debuglink"} <= sections or any(name.startswith(".debug") for name in sections):
            yield f"{path.relative_to(tree)}: not stripped, or without a link to its symbols"


def import_libraries(tree):
    binary = {"clusutil": "bin/clusutil.dll", "DebugLog": "bin/DebugLog.dll", "clussim": "simulator/clusapi.dll"}
    for name in package.IMPORT_LIBRARIES:
        exported = set(re.findall(r"^\t\[ *\d+\](?: \+base\[ *\d+\] +[0-9a-f]+)? (\S+)$",
                                  output_of(package.TOOLS + "objdump", "-p", tree / binary[name]), re.M))
        members = output_of("llvm-nm", tree / f"lib/msvc/{name}.lib")
        offered = {name for name in re.findall(r" T (\w+)$", members, re.M) if not name.startswith("__imp_")}
        if not offered:
            yield f"lib/msvc/{name}.lib: offers nothing"
        for function in sorted(offered - exported):
            yield f"lib/msvc/{name}.lib: {binary[name]} does not export {function}"


def documents(tree, version):
    for path in sorted(tree.rglob("*.md")):
        text = path.read_text(encoding="utf-8")
        for target in re.findall(r"\]\(([^)\s#]+)[^)\s]*\)", text):
            if not re.match(r"[a-z]+:", target) and not (path.parent / target).exists():
                yield f"{path.relative_to(tree)}: link to {target}, which is not there"
    readme = (tree / "README.md").read_text(encoding="utf-8")
    if "./dev" in readme or f"# clusutil {version} " not in readme or "@" in readme:
        yield "README.md: not for the reader of this package"
    for component in components.ALL:
        if component.licence_text() != (tree / "licenses" / component.licence_file).read_text(encoding="utf-8"):
            yield f"licenses: not those of {component.package}"


def main():
    tree, version = Path(sys.argv[1]), sys.argv[2]
    problems = [*checksums(tree), *sbom.check(tree), *binaries(tree), *import_libraries(tree), *documents(tree, version)]
    print("\n".join(problems) or f"{tree.name}: checked")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
