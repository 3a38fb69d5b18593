#!/usr/bin/env python3
"""Makes the installer of clusctl out of an unpacked package, with wixl and msibuild.

usage: msi.py PACKAGE OUTPUT.msi VERSION

Features: Clusctl (always), and Simulators, which is installed on demand (ADDLOCAL=ALL): a second clusctl with the simulated
clusters beside it. The environment's SOURCE_DATE_EPOCH is the time of everything. The same package gives the same bytes.
"""
import os
import re
import struct
import subprocess
import sys
import tempfile
import uuid
from hashlib import sha256
from pathlib import Path
from xml.etree import ElementTree

# Identities are made of names, so that every build has the same ones. The upgrade code is that of all versions.
IDENTITY = uuid.UUID("6d0c1f0e-3a57-4b0f-9c1e-5f7b5f2f2a64")
UPGRADE_CODE = "7A0D0E52-49B6-4F0B-8C39-2C0C7D3E7B11"
PROGRAM = "bin\\clusctl.exe"
NAMESPACE = "http://schemas.microsoft.com/wix/2006/wi"

# The installed folder: where the files of the package go, and the feature that they belong to.
LAYOUT = (
    ("Clusctl", "bin", "bin", "*"),
    ("Clusctl", "docs", "share/clusutil/docs", "*.md"),
    ("Clusctl", "docs\\schemas", "share/clusutil/docs/schemas", "*"),
    ("Clusctl", "examples", "share/clusutil/examples", "*"),
    ("Clusctl", "licenses", "licenses", "*"),
    ("Simulators", "simulator", "bin", "*"),
    ("Simulators", "simulator", "simulator", "*.dll"),
    ("Simulators", "simulator", "simulator", "*.exe"),
)
FEATURES = {
    "Clusctl": ("clusctl", "The administrator's tool, its manual and its schemas", "1"),
    "Simulators": ("Simulators", "A clusctl of its own with simulated clusters, for trials on any computer", "1000"),
}


def identity(text):
    return str(uuid.uuid5(IDENTITY, text)).upper()


def name_of(kind, text):
    return f"{kind}.{uuid.uuid5(IDENTITY, text).hex[:20]}"


def element(parent, tag, **attributes):
    return ElementTree.SubElement(parent, tag, {key: str(value) for key, value in attributes.items()})


class Installer:
    def __init__(self, package, version, epoch):
        self.package = package
        self.epoch = epoch
        self.root = ElementTree.Element("Wix", xmlns=NAMESPACE)
        self.product = element(self.root, "Product", Id=identity(f"product {version}"), Name="clusctl", Version=version,
                               Language="1033", Manufacturer="clusutil developers", UpgradeCode=UPGRADE_CODE)
        element(self.product, "Package", Id="*", InstallerVersion="301", Compressed="yes",
                InstallScope="perMachine", Description=f"clusctl {version}", Manufacturer="clusutil developers")
        element(self.product, "MajorUpgrade", DowngradeErrorMessage="A newer version of clusctl is installed.")
        element(self.product, "Media", Id="1", Cabinet="clusctl.cab", EmbedCab="yes")
        element(self.product, "Property", Id="ARPCOMMENTS", Value="Cluster utility command-line tool")
        self.folders = {"": self._install_folder()}
        self.components = {feature: [] for feature in FEATURES}

    def _install_folder(self):
        target = element(self.product, "Directory", Id="TARGETDIR", Name="SourceDir")
        programs = element(target, "Directory", Id="ProgramFiles64Folder")
        return element(programs, "Directory", Id="INSTALLDIR", Name="clusutil")

    def folder(self, path):
        if path not in self.folders:
            parent, _, name = path.rpartition("\\")
            self.folders[path] = element(self.folder(parent), "Directory", Id=folder_id(path), Name=name)
        return self.folders[path]

    def add_file(self, feature, folder, source):
        path = f"{folder}\\{source.name}"
        component = element(self.folder(folder), "Component", Id=name_of("component", path), Guid=identity(path), Win64="yes")
        element(component, "File", Id=name_of("file", path), Name=source.name, Source=source.relative_to(self.package), KeyPath="yes")
        os.utime(source, (self.epoch, self.epoch))  # stands in the cabinet
        self.components[feature].append(component.get("Id"))

    def write(self, path):
        for feature, (title, description, level) in FEATURES.items():
            entry = element(self.product, "Feature", Id=feature, Title=title, Description=description, Level=level)
            for component in self.components[feature]:
                element(entry, "ComponentRef", Id=component)
        ElementTree.ElementTree(self.root).write(path, encoding="utf-8", xml_declaration=True)


def folder_id(path):
    return "folder." + path.replace("\\", ".")


def run(*command, cwd=None):
    result = subprocess.run([str(word) for word in command], cwd=cwd, capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{command[0]} failed:\n{result.stdout}{result.stderr}")


def add_search_path(msi, work):
    """wixl knows no Environment element; the table says: at the end of the system's PATH, and gone with the program."""
    table = work / "Environment.idt"
    table.write_text("Environment\tName\tValue\tComponent_\n"
                     "s72\tl255\tL255\ts72\n"
                     "Environment\tEnvironment\n"
                     f"SearchPath\t=-*PATH\t[~];[{folder_id('bin')}]\t{name_of('component', PROGRAM)}\n")
    run("msibuild", msi, "-i", table)
    for action, number in (("RemoveEnvironmentStrings", 3300), ("WriteEnvironmentStrings", 5200)):
        run("msibuild", msi, "-q",
            f"INSERT INTO `InstallExecuteSequence` (`Action`, `Sequence`) VALUES ('{action}', {number})")


def fix_identity(msi, package_code, epoch):
    """Replaces the random package code and the times of the summary, which wixl cannot be told."""
    data = bytearray(msi.read_bytes())
    summary = subprocess.run(["msiinfo", "suminfo", str(msi)], check=True, capture_output=True, text=True).stdout
    random_code = re.search(r"\{[0-9A-F-]{36}\}", summary)[0].encode()
    place = data.index(random_code)
    data[place:place + len(random_code)] = f"{{{package_code}}}".encode()
    file_time = struct.pack("<Q", (epoch + 11644473600) * 10000000)  # 100 ns since 1601
    for _ in range(2):  # created, last saved: behind the code, each with its type's number before it
        place = data.index(b"\x40\0\0\0", place) + 4
        data[place:place + 8] = file_time
    msi.write_bytes(data)


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    package, output, version = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve(), sys.argv[3]
    epoch = int(os.environ["SOURCE_DATE_EPOCH"])
    installer = Installer(package, version, epoch)
    for feature, folder, source, pattern in LAYOUT:
        for path in sorted((package / source).glob(pattern)):
            if path.is_file():
                installer.add_file(feature, folder, path)
    output.unlink(missing_ok=True)
    with tempfile.TemporaryDirectory() as name:
        work = Path(name)
        installer.write(work / "clusctl.wxs")
        run("wixl", "-a", "x64", "-o", output, work / "clusctl.wxs", cwd=package)  # looks for files there
        add_search_path(output, work)
    fix_identity(output, identity(f"package {sha256((package / 'SHA256SUMS').read_bytes()).hexdigest()}"), epoch)


if __name__ == "__main__":
    main()
