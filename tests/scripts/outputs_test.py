#!/usr/bin/env python3
"""Examples for what ./dev docs, ./dev package and ./dev bench make: the reference's input and checks, the package's
documents and checks, and the tables of figures."""
import contextlib
import io
import json
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path

sys.dont_write_bytecode = True
SCRIPTS = Path(__file__).resolve().parent.parent.parent / "scripts"
sys.path[:0] = [str(SCRIPTS), str(SCRIPTS / "package")]
import bench_docs  # noqa: E402
import check_package  # noqa: E402
import package  # noqa: E402
import reference  # noqa: E402
import sbom  # noqa: E402


class Folder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        return path


class Header(unittest.TestCase):
    def prepared(self, *lines):
        return reference.prepared_header("\n".join(["// The file.", "#ifndef H", *lines])).splitlines()[3:]

    def test_a_comment_documents_what_follows(self):
        self.assertEqual(self.prepared("// Takes `a\\b` and c\\d.", "void F();"), ["/// Takes `a\\b` and c\\\\d.", "void F();"])

    def test_it_stands_for_the_next_declarations_too(self):
        self.assertEqual(self.prepared("// Both.", "void F(int a,", "       int b);", "void G();", "", "void H();"),
                         ["/// Both.", "void F(int a,", "       int b);", "/// Both.", "void G();", "", "void H();"])

    def test_but_not_for_what_is_deleted_or_explained(self):
        self.assertEqual(self.prepared("// One.", "C();", "~C();", "C(const C&) = delete;", "int a; // own words"),
                         ["/// One.", "C();", "~C();", "C(const C&) = delete;", "int a; ///< own words"])

    def test_a_comment_that_stands_alone_is_left_out(self):
        self.assertEqual(self.prepared("// --- Servers ---", "", "void F();"), ["", "void F();"])


class Guide(unittest.TestCase):
    def test_headings_get_the_anchors_that_links_use(self):
        path = reference.ROOT / "docs/faults.md"
        text = reference.with_anchors("# Faults\n\n## `The` grammar\n\n## Same\n\n## Same\n", path, [])
        self.assertEqual(text, "# Faults {#page-docs-faults}\n\n## The grammar {#page-docs-faults--the-grammar}\n\n"
                               "## Same {#page-docs-faults--same}\n\n## Same {#page-docs-faults--same-1}\n")

    def test_links_lead_to_pages_or_become_words(self):
        path = reference.ROOT / "docs/faults.md"
        links = {"[a](building.md#windows)": "[a](@ref page-docs-building--windows)", "[the\ncode](../src/core/Text.h)": "the code"}
        for link, wanted in links.items():
            match = reference.re.fullmatch(r"\[([^\]]+)\]\(([^)\s]+)\)", link)
            self.assertEqual(reference.linked(match, path), wanted)


class Pages(Folder):
    def problems(self):
        return [problem for problem in reference.check_pages(self.folder) if "links were found" not in problem]

    def test_links_have_to_lead_somewhere(self):
        self.write("a.html", '<a id="here"></a><a href="#here"></a><a href="b.html#gone"></a><a href="c.html"></a>')
        self.write("b.html", "<p>Text</p>")
        self.assertEqual(self.problems(), ["a.html: link to b.html#gone: no such anchor", "a.html: link to c.html: no such file"])

    def test_commands_that_are_shown_are_found(self):
        self.write("a.html", "<p>@section name Title</p>")
        self.assertEqual(self.problems(), ["a.html: shows '@section', which Doxygen should have understood"])


class PackageDocuments(Folder):
    def test_links_out_of_the_package_become_words(self):
        self.write("docs/b.md", "")
        text = package.without_dead_links("[a](b.md#x), [c](../src/c.h), [d](https://example.com/), [e](#f)", self.folder / "docs")
        self.assertEqual(text, "[a](b.md#x), c, [d](https://example.com/), [e](#f)")

    def test_comments_are_left_out(self):
        self.assertEqual(package.without_comments("# A\n\n<!-- Made by\n`./dev`. -->\n\nText\n"), "# A\n\nText\n")

    def test_what_only_the_sources_have_is_said_to_be_theirs(self):
        for words in ("`./dev build`", "`src/core/Text.h`", "(tests/cluster)", "simulator/veritas/", "cd build/rehearsal"):
            self.assertEqual(list(check_package.sections_for_others(f"# A\n\nText\n\n## B\n\n{words}\n")), ["## B"], words)
            self.assertEqual(list(check_package.sections_for_others(f"# A\n\nIn the source tree: {words}\n")), [], words)

    def test_what_the_package_has_needs_no_word(self):
        text = "# A\n\n`simulator/ClusSimControl.h`, `lib/cmake/clusutil`, `include/`, ../src.txt, /dev/null, development\n"
        self.assertEqual(list(check_package.sections_for_others(text)), [])


class Symbols(Folder):
    def setUp(self):
        super().setUp()
        for name in ("bin/a.exe", "simulator/b.dll"):
            self.write(f"example/{name}", "binary")
            self.write(f"symbols/{name}.debug", "symbols")

    def problems(self):
        # No entry of an archive can be older than 1980.
        package.write_zip(self.folder / "symbols", self.folder / "symbols.zip", "example", 400_000_000)
        return list(check_package.symbols(self.folder / "example", self.folder / "symbols.zip"))

    def test_they_lie_beside_the_binaries_once_unpacked(self):
        self.assertEqual(self.problems(), [])
        with zipfile.ZipFile(self.folder / "symbols.zip") as zipped:
            zipped.extractall(self.folder)
        self.assertTrue((self.folder / "example/bin/a.exe.debug").exists())

    def test_missing_and_needless_ones_are_found(self):
        (self.folder / "symbols/simulator/b.dll.debug").rename(self.folder / "symbols/b.dll.debug")
        self.assertEqual(self.problems(), ["example/b.dll.debug: symbols of no binary",
                                           "example/simulator/b.dll.debug: not among the symbols"])


class ListOfContents(Folder):
    def setUp(self):
        super().setUp()
        self.write("bin/a.exe", "a")
        sbom.write(self.folder, "example", "1.0.0", 0)

    def change(self, change):
        path = self.folder / sbom.NAME
        found = json.loads(path.read_text(encoding="utf-8"))
        change(found)
        path.write_text(json.dumps(found), encoding="utf-8")
        return sbom.check(self.folder)

    def test_it_names_what_is_there(self):
        self.assertEqual(sbom.check(self.folder), [])

    def test_a_changed_or_new_file_is_found(self):
        self.write("bin/a.exe", "b")
        self.write("bin/b.exe", "b")
        self.assertEqual(len(sbom.check(self.folder)), 2)

    def test_a_member_that_is_missing_is_found(self):
        self.assertEqual(len(self.change(lambda found: found["packages"][0].pop("packageVerificationCode"))), 1)

    def test_a_reference_to_nothing_is_found(self):
        self.assertEqual(self.change(lambda found: found["relationships"][0].update(relatedSpdxElement="SPDXRef-none")),
                         ["clusutil.spdx.json: SPDXRef-none is named and not there"])


class Figures(Folder):
    DOCUMENT = {
        "version": "1.2.3", "date": "2026-01-02", "parts": "all", "scale": "large",
        "machine": {"processor": "P", "processors": 2, "system": "S", "clock": "C", "processClock": "D"},
        "subjects": [{"subject": "Loading", "explanation": "Why.", "things": "files",
                      "figures": [{"size": 10, "measure": "load", "value": 1.25, "unit": "ms"},
                                  {"size": 100, "measure": "load", "value": 3, "unit": "ms", "goal": 8}]}]}

    def setUp(self):
        super().setUp()
        kept = bench_docs.DOCUMENT
        self.addCleanup(lambda: setattr(bench_docs, "DOCUMENT", kept))
        bench_docs.DOCUMENT = self.page = self.write("benchmarks.md", f"Head.\n\n{bench_docs.MARK}\n\nold\n")

    def code_of(self, **changes):
        figures = self.write("figures.json", json.dumps({**self.DOCUMENT, **changes}))
        with contextlib.redirect_stderr(io.StringIO()):
            return bench_docs.main([str(figures)])

    def test_a_table_has_a_row_for_each_measure_and_a_column_for_each_size(self):
        self.assertEqual(self.code_of(), 0)
        self.assertEqual(self.page.read_text(encoding="utf-8"),
                         f"Head.\n\n{bench_docs.MARK}\n\nVersion 1.2.3, measured on 2026-01-02: P, 2 processors, S; "
                         "processor times from C, of processes from D.\n\n## Loading\n\nWhy.\n\n"
                         "| measure | 10 files | 100 files | goal |\n|---|--:|--:|--:|\n"
                         "| load, ms | 1.25 | 3 | at most 8 |\n")

    def test_figures_of_less_than_everything_do_not_replace_the_tables(self):
        for changes in ({"parts": ["cluster"]}, {"scale": "normal"}):
            self.assertEqual(self.code_of(**changes), 1)
            self.assertIn("old", self.page.read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
