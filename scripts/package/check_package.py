#!/usr/bin/env python3
"""Checks an unpacked package: checksums, list of contents, stripped binaries and their symbols, import libraries, documents,
licences.

usage: check_package.py PACKAGE VERSION SYMBOLS

SYMBOLS is the archive of the symbols.
"""
import re
import subprocess
import sys
import zipfile
from hashlib import sha256
from pathlib import Path

sys.dont_write_bytecode = True
import components  # noqa: E402
import package  # noqa: E402
import sbom  # noqa: E402


# What the reader of a package does not have.
OF_THE_SOURCES = re.compile(r"\./dev\b|(?<![\w./-])(build|cmake|scripts|simulator/(cluster|veritas)|src|support|tests|tools)/")
# Tells what changed in the sources, too.
ABOUT_THE_SOURCES = ("share/clusutil/CHANGELOG.md",)


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


def symbols(tree, archive):
    with zipfile.ZipFile(archive) as zipped:
        found = set(zipped.namelist())
    wanted = {f"{tree.name}/{path.relative_to(tree)}.debug" for path in tree.rglob("*") if path.suffix in (".dll", ".exe")}
    for name in sorted(found ^ wanted):
        yield f"{name}: " + ("symbols of no binary" if name in found else "not among the symbols")


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


def sections_for_others(text):
    """The headings of sections that lead to the sources without saying so."""
    for section in re.split(r"^(?=#+ )", text, flags=re.M):
        if OF_THE_SOURCES.search(section) and "source tree" not in section:
            yield section.partition("\n")[0]


def documents(tree, version):
    for path in sorted(tree.rglob("*.md")):
        text = path.read_text(encoding="utf-8")
        for target in re.findall(r"\]\(([^)\s#]+)[^)\s]*\)", text):
            if not re.match(r"[a-z]+:", target) and not (path.parent / target).exists():
                yield f"{path.relative_to(tree)}: link to {target}, which is not there"
        if str(path.relative_to(tree)) not in ABOUT_THE_SOURCES:
            for heading in sections_for_others(text):
                yield f"{path.relative_to(tree)}: '{heading}' names what only the source tree has, and does not say so"
    readme = (tree / "README.md").read_text(encoding="utf-8")
    if "source tree" in readme or f"# clusutil {version} " not in readme or "@" in readme:
        yield "README.md: not for the reader of this package"
    for component in components.ALL:
        if component.licence_text() != (tree / "licenses" / component.licence_file).read_text(encoding="utf-8"):
            yield f"licenses: not those of {component.package}"


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    tree, version, archive = Path(sys.argv[1]), sys.argv[2], Path(sys.argv[3])
    problems = [*checksums(tree), *sbom.check(tree), *binaries(tree), *symbols(tree, archive), *import_libraries(tree),
                *documents(tree, version)]
    print("\n".join(problems) or f"{tree.name}: checked")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
