"""What the package redistributes of others: versions and licence texts are those of Debian's packages on this system, or of
third_party/."""
import re
import subprocess
from pathlib import Path

COMMON_LICENCES = Path("/usr/share/common-licenses")
THIRD_PARTY = Path(__file__).resolve().parent.parent.parent / "third_party"


class Component:
    def __init__(self, name, package, licence, link, use, files=()):
        self.name = name
        self.package = package  # of Debian
        self.licence = licence  # SPDX expression
        self.link = link  # SPDX relationship of the package to it
        self.use = use
        self.files = files  # those of its files that are in the package
        self.spdx_id = f"SPDXRef-{package}"
        self.licence_file = f"{package}.txt"

    @property
    def version(self):
        return subprocess.run(["dpkg-query", "-W", "-f", "${Version}", self.package],
                              check=True, capture_output=True, text=True).stdout

    def licence_text(self):
        return Path(f"/usr/share/doc/{self.package}/copyright").read_text(encoding="utf-8")


class Vendored(Component):
    """Sources in third_party/."""

    def __init__(self, name, folder, version, licence, use):
        super().__init__(name, folder, licence, "STATIC_LINK", use)
        self.folder = THIRD_PARTY / folder
        self.of_sources = version

    @property
    def version(self):
        return self.of_sources

    def licence_text(self):
        return (self.folder / "LICENSE").read_text(encoding="utf-8")


ALL = (
    Component("GCC run-time libraries", "gcc-mingw-w64-x86-64-posix-runtime", "GPL-3.0-or-later WITH GCC-exception-3.1",
              "DYNAMIC_LINK", "libstdc++ and libgcc: DLLs, and linked into the simulators.",
              ("libstdc++-6.dll", "libgcc_s_seh-1.dll")),
    Component("mingw-w64 run-time", "mingw-w64-x86-64-dev", "LicenseRef-mingw-w64", "DYNAMIC_LINK",
              "winpthreads: DLL, and linked into the simulators; the C run-time's start-up code: linked into all programs.",
              ("libwinpthread-1.dll",)),
    Component("CLI11", "libcli11-dev", "BSD-3-Clause", "STATIC_LINK", "Compiled into clusctl."),
    Component("JSON for Modern C++", "nlohmann-json3-dev", "MIT", "STATIC_LINK", "Compiled into clusctl and the simulators."),
    Vendored("zlib and its minizip", "zlib", "1:1.3.dfsg+really1.3.1-1", "Zlib", "Compiled into clusctl."),
)


def origin(file_name):
    """The component that a file of the package comes from, or None for the project's own."""
    return next((component for component in ALL if file_name in component.files), None)


def write_licences(folder):
    """Writes the licence texts, and those that they refer to."""
    folder.mkdir()
    referred = set()
    for component in ALL:
        text = component.licence_text()
        (folder / component.licence_file).write_text(text, encoding="utf-8")
        referred |= set(re.findall(rf"{COMMON_LICENCES}/([A-Za-z0-9.-]*[A-Za-z0-9])", text))
    for name in sorted(referred):
        (folder / f"{name}.txt").write_text((COMMON_LICENCES / name).read_text(encoding="utf-8"), encoding="utf-8")
