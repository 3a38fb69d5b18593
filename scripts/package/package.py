#!/usr/bin/env python3
"""Makes the archives out of an installation: the package, its symbols, and checksums of both.

usage: package.py INSTALLED OUTPUT NAME VERSION

Writes OUTPUT/NAME (the package, unpacked), OUTPUT/NAME.zip and OUTPUT/NAME-symbols.zip. The environment's
SOURCE_DATE_EPOCH is the time of everything. The same installation gives the same bytes.
"""
import os
import re
import shutil
import subprocess
import sys
import zipfile
from datetime import datetime, timezone
from hashlib import sha256
from pathlib import Path

sys.dont_write_bytecode = True
import components  # noqa: E402
import sbom  # noqa: E402

HERE = Path(__file__).resolve().parent
TOOLS = "x86_64-w64-mingw32-"
# Import libraries for Visual Studio, by what they are made from.
IMPORT_LIBRARIES = {
    "clusutil": HERE / "clusutil.def",
    "DebugLog": HERE / "DebugLog.def",
    "clussim": HERE.parent.parent / "simulator/cluster/clusapi.def",
}
# About building and changing the library, of no use without its sources.
DEVELOPERS_DOCUMENTS = ("architecture.md", "building.md", "testing.md", "clusctl.1")


def run(*command):
    subprocess.run([str(word) for word in command], check=True)


def separate_symbols(tree, symbols):
    """Moves the symbols of every binary to a file of its own, which debuggers find by its name and checksum."""
    for binary in sorted(path for path in tree.rglob("*") if path.suffix in (".dll", ".exe")):
        debug = symbols / binary.relative_to(tree).with_name(binary.name + ".debug")
        debug.parent.mkdir(parents=True, exist_ok=True)
        run(TOOLS + "objcopy", "--only-keep-debug", binary, debug)
        run(TOOLS + "strip", "--strip-unneeded", binary)
        run(TOOLS + "objcopy", f"--add-gnu-debuglink={debug}", binary)


def make_import_libraries(folder):
    folder.mkdir()
    for name, definition in IMPORT_LIBRARIES.items():
        run("llvm-dlltool", "-m", "i386:x86-64", "-d", definition, "-l", folder / f"{name}.lib")


def without_dead_links(text, folder):
    """The text with links to what is not in the package made plain words."""
    def link(match):
        target = match[2].partition("#")[0]
        if re.match(r"[a-z]+:", match[2]) or not target or (folder / target).exists():
            return match[0]
        return match[1]
    return re.sub(r"\[([^\]]+)\]\(([^)\s]+)\)", link, text)


def without_comments(text):
    """The text without comments, which are for who changes it."""
    return re.sub(r"<!--.*?-->\n*", "", text, flags=re.S)


def arrange_documents(tree, version):
    share = tree / "share/clusutil"
    (share / "README.md").unlink()  # is about the sources
    for name in DEVELOPERS_DOCUMENTS:
        (share / "docs" / name).unlink()
    readme = (HERE / "README.md.in").read_text(encoding="utf-8").replace("@VERSION@", version)
    (tree / "README.md").write_text(readme, encoding="utf-8")
    shutil.rmtree(share / "docs/reference")
    for path in sorted(share.rglob("*.md")):
        text = path.read_text(encoding="utf-8")
        path.write_text(without_dead_links(without_comments(text), path.parent), encoding="utf-8")


def write_checksums(tree):
    lines = [f"{sha256(path.read_bytes()).hexdigest()}  {path.relative_to(tree)}\n"
             for path in sorted(tree.rglob("*")) if path.is_file()]
    (tree / "SHA256SUMS").write_text("".join(lines), encoding="utf-8")


def write_zip(folder, archive, top, epoch):
    """All files of a folder, below the folder `top` in the archive."""
    time = datetime.fromtimestamp(epoch, timezone.utc).timetuple()[:6]
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as zipped:
        for path in sorted(path for path in folder.rglob("*") if path.is_file()):
            entry = zipfile.ZipInfo(f"{top}/{path.relative_to(folder)}", time)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = (0o755 if path.suffix in (".exe", ".dll", ".sh") else 0o644) << 16
            zipped.writestr(entry, path.read_bytes())


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    installed, output, name, version = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3], sys.argv[4]
    epoch = int(os.environ["SOURCE_DATE_EPOCH"])
    tree, symbols = output / name, output / f"{name}-symbols"
    for folder in (tree, symbols):
        shutil.rmtree(folder, ignore_errors=True)
    output.mkdir(parents=True, exist_ok=True)
    shutil.copytree(installed, tree)
    separate_symbols(tree, symbols)
    make_import_libraries(tree / "lib/msvc")
    arrange_documents(tree, version)
    components.write_licences(tree / "licenses")
    sbom.write(tree, name, version, epoch)
    write_checksums(tree)
    write_zip(tree, output / f"{name}.zip", name, epoch)
    write_zip(symbols, output / f"{name}-symbols.zip", name, epoch)  # unpacked there, beside the binaries


if __name__ == "__main__":
    main()
