#!/usr/bin/env python3
"""Checks that every #include of the product keeps to the layers below.

usage: check_layers.py [--write-map]

--write-map writes the section "Map" of docs/architecture.md: the layers, and the subject of each file, which is the first
sentence of its first comment. ./dev docs checks that the section is up to date.
"""
import re
import sys

sys.dont_write_bytecode = True
from sources import ROOT, cell, product_sources, report, subject  # noqa: E402

# The layers, from the bottom up: a folder or file; what else of the project it may include (folders and files); its subject.
# Within a folder everything may be included. A file belongs to the first layer that it lies in; one in none fails the check.
LAYERS = [
    ("common", [], "what simulators, `clusctl`, support and test tools share"),
    ("support/DebugLog", ["common"], "`DebugLog.dll`: interface and default implementation"),
    ("support/CommonUtil", ["common"], "`CommonUtil.dll`: interface and default implementation"),
    ("support/WebServerUtil", ["common"], "`WebServerUtil.dll`: interface and default implementation"),
    ("include/clus_Export.h", [], "how the public classes are exported"),
    ("include/clus_Cluster.h", ["include/clus_Export.h"], "public: the failover cluster, its resources, groups and nodes"),
    ("include/clus_VirtualServerUtil.h", ["include/clus_Export.h", "include/clus_Cluster.h"],
     "public: servers, settings, the product's cluster resource"),
    ("include/clus_VeritasCluster.h", ["include/clus_Export.h"], "public: Veritas Cluster Server"),
    ("src/core", [], "pure functions; no platform header, compiled and fuzzed natively too"),
    ("src/platform", ["src/core", "support/DebugLog/DebugLog.h"],
     "what stands around platform calls: owners, buffers, log lines, locks, processes"),
    ("src/settings", ["src/core", "src/platform"], "the product's registry key and what is read there for all"),
    ("src/cluster", ["src/core", "src/platform", "src/settings", "include/clus_Cluster.h",
                     "support/CommonUtil/CommonUtil.h"], "the failover cluster classes"),
    ("src/virtualserver", ["src/core", "src/platform", "src/settings", "include/clus_VirtualServerUtil.h",
                           "include/clus_Cluster.h", "support/CommonUtil/CommonUtil.h",
                           "support/WebServerUtil/WebServerUtil.h"],
     "servers, host settings and the product's cluster resource"),
    ("src/veritas", ["src/core", "src/platform", "src/settings", "include/clus_VeritasCluster.h",
                     "support/CommonUtil/CommonUtil.h"], "Veritas Cluster Server"),
    ("simulator/cluster/ModelStates.h", [], "what a model file calls states"),
    ("simulator/cluster", ["common"], "the cluster API's drop-in simulator"),
    ("simulator/veritas/configuration", [], "the text of a `main.cf`; no platform header, fuzzed natively"),
    ("simulator/veritas/engine", [],
     "what a simulated VCS cluster does by itself; no platform header, tested and fuzzed natively"),
    ("simulator/veritas/files", ["common", "simulator/veritas/configuration"], "the files of a simulated VCS cluster"),
    ("simulator/veritas/store", ["common", "simulator/veritas/configuration", "simulator/veritas/engine", "simulator/veritas/files"],
     "a simulated VCS cluster as its files have it"),
    ("simulator/veritas", ["common", "src/core/ToolSecrets.h"],
     "the VCS tools' simulator, whose journal hides what the library takes for a secret"),
    ("tools/clusctl/picture", [],
     "what a cluster looks like, and how it is drawn; no platform header, tested natively"),
    ("tools/clusctl/archive", [], "archives in memory; no platform header, tested and fuzzed natively"),
    ("tools/recording", ["common", "src/core"], "what a process asks of its cluster, recorded and replayed"),
    # The core's rules and formats hold for the administrator's tool too, and need nothing of the platform.
    ("tools/clusctl", ["common", "include", "src/core", "tools/recording", "support/DebugLog/DebugLog.h", "support/DebugLog/LogConfig.h",
                       "support/DebugLog/LogLine.h", "simulator/cluster/ModelStates.h", "simulator/veritas/configuration",
                       "simulator/veritas/files", "simulator/veritas/store", "tools/clusctl/archive", "tools/clusctl/picture"],
     "the administrator's tool, which writes the log's file and model files, and copies the VCS simulator's"),
]
# Of the headers in <> only those of the C++ standard library, which have no extension.
STANDARD_ONLY = {"src/core", "simulator/veritas/configuration", "simulator/veritas/engine", "tools/clusctl/picture"}
SUBJECT_PER_FILE = ("src", "common", "simulator", "support", "tools")  # of the public headers the layer is enough

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(["<])([^">]+)[">]', re.MULTILINE)
MAP = ROOT / "docs/architecture.md"
MAP_BEGIN = "<!-- The map is written by scripts/check_layers.py --write-map. -->"
MAP_END = "<!-- The end of the map. -->"


def is_below(name, place):
    return name == place or name.startswith(place + "/")


def layer_of(name):
    return next((layer for layer in LAYERS if is_below(name, layer[0])), None)


def candidates(includer, header, names):
    """The project's files that an include may mean: the one beside the includer, or else all whose path ends so."""
    folder = includer.rsplit("/", 1)[0]
    beside = re.sub(r"[^/]+/\.\./", "", f"{folder}/{header}")
    if beside in names:
        return [beside]
    return sorted(name for name in names if name.endswith("/" + header) or name == header)


def check_include(name, quote, header, names):
    """What is wrong with an include, or None."""
    layer = layer_of(name)
    found = candidates(name, header, names)
    if not found:
        if quote == '"':
            return f'"{header}" is no file of the product; headers of others stand in <>'
        if layer[0] in STANDARD_ONLY and "." in header:
            return f"<{header}> is no header of the standard library, and {layer[0]} uses nothing else"
        return None
    if len(found) > 1:
        return f"{header} may be any of {', '.join(found)}"
    if any(is_below(found[0], place) for place in [layer[0], *layer[1]]):
        return None
    return f"{layer[0]} may not use {found[0]}"


def check_includes(texts):
    """The problems of the files, given as path -> text."""
    problems = []
    for name, text in texts.items():
        if layer_of(name) is None:
            problems.append(f"{name}: lies in no layer; scripts/check_layers.py lists them")
            continue
        for match in INCLUDE.finditer(text):
            problem = check_include(name, match.group(1), match.group(2), texts)
            if problem:
                problems.append(f"{name}:{text.count(chr(10), 0, match.start()) + 1}: {problem}")
    return problems


def short(place):
    return place.rsplit("/", 1)[-1] if place.endswith(".h") else place


def map_lines(names):
    """The map, and the files whose subject is missing."""
    lines = ["| place | subject | may use |", "|---|---|---|"]
    for place, uses, words in LAYERS:
        allowed = ", ".join(f"`{short(use)}`" for use in uses)
        lines.append(f"| `{place}` | {words} | {allowed or 'nothing'} |")
    without = []
    for place, _, _ in LAYERS:
        if not place.startswith(SUBJECT_PER_FILE) or place.endswith(".h"):
            continue
        inside = [name for name in names if layer_of(name)[0] == place]
        stems = sorted({name.rsplit(".", 1)[0] for name in inside})
        if not stems:
            continue
        lines += ["", f"`{place}/`", "", "| file | subject |", "|---|---|"]
        for stem in stems:
            kinds = [kind for kind in (".h", ".cpp") if stem + kind in inside]
            words = subject(ROOT / (stem + kinds[-1]))
            if words is None:
                without.append(f"{stem}{kinds[0]}: has no comment on its first line that tells its subject")
            lines.append(f"| `{stem[len(place) + 1:]}` {', '.join(kinds)} | {cell(words or '')} |")
    return lines, without


def check_map():
    """What is wrong with the map in the document."""
    lines, problems = map_lines([str(path.relative_to(ROOT)) for path in product_sources()])
    if written_map(MAP.read_text(encoding="utf-8"), lines) != MAP.read_text(encoding="utf-8"):
        problems.append(f"{MAP.relative_to(ROOT)}: the map is out of date; scripts/check_layers.py --write-map writes it")
    return problems


def written_map(text, lines):
    begin, end = text.find(MAP_BEGIN), text.find(MAP_END)
    if begin < 0 or end < begin:
        sys.exit(f"{MAP}: the lines that begin and end the map are missing")
    return text[:begin] + "\n".join([MAP_BEGIN, "", *lines, "", ""]) + text[end:]


def main():
    paths = product_sources()
    names = [str(path.relative_to(ROOT)) for path in paths]
    if sys.argv[1:] == ["--write-map"]:
        lines, problems = map_lines(names)
        MAP.write_text(written_map(MAP.read_text(encoding="utf-8"), lines), encoding="utf-8")
        report(problems, names)
    if len(sys.argv) > 1:
        sys.exit(__doc__)
    report(check_includes({name: path.read_text(encoding="utf-8") for name, path in zip(names, paths)}), names)


if __name__ == "__main__":
    main()
