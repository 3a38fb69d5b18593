#!/usr/bin/env python3
"""Examples for the checks of ./dev lint and ./dev docs and for the choice of tests: what they find and what they let pass."""
import os
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent.parent.parent / "scripts"))
import check_docs  # noqa: E402
import check_duplicates  # noqa: E402
import check_layers  # noqa: E402
import check_log_places  # noqa: E402
import check_size  # noqa: E402
import choose_tests  # noqa: E402
import coverage  # noqa: E402
import fuzz_report  # noqa: E402
import sources  # noqa: E402


def code(text):
    return textwrap.dedent(text).lstrip("\n")


class CodeOnly(unittest.TestCase):
    def test_comments_and_texts_become_blanks_and_lines_stay(self):
        text = 'a("// no comment"); // { one\n/* two\n} */ b(\'"\', 1\'000);\n'
        self.assertEqual(sources.code_only(text), "a(" + 15 * " " + ");" + 9 * " " + "\n" + 6 * " " + "\n     b(   , 1'000);\n")

    def test_a_raw_text_may_hold_anything(self):
        self.assertEqual(sources.code_only('x = R"json({"a": ")"}\n})json";'), "x = " + 17 * " " + "\n" + 7 * " " + ";")

    def test_texts_are_kept_where_wanted(self):
        self.assertEqual(sources.code_only('a("//"); // b', keep_texts=True), 'a("//");     ')


class Subject(unittest.TestCase):
    def subject_of(self, text):
        with tempfile.TemporaryDirectory() as folder:
            file = Path(folder) / "File.h"
            file.write_text(code(text), encoding="utf-8")
            return sources.subject(file)

    def test_it_is_the_first_sentence(self):
        self.assertEqual(self.subject_of("// What file.txt holds, on\n// two lines. More.\n"), "What file.txt holds, on two lines")

    def test_it_ends_with_its_paragraph(self):
        self.assertEqual(self.subject_of("// One thing:\n//\n// Another.\n"), "One thing")

    def test_a_file_without_comment_has_none(self):
        self.assertIsNone(self.subject_of("#include <string>\n// Too late.\n"))


class Layers(unittest.TestCase):
    FILES = {name: "" for name in (
        "common/Text.h", "include/clus_Cluster.h", "include/clus_Export.h", "include/clus_VirtualServerUtil.h",
        "simulator/cluster/Model.h", "simulator/veritas/configuration/CfReader.h", "simulator/veritas/Text.h", "src/cluster/Wait.h",
        "src/core/ValueList.h", "src/platform/Owner.h", "src/settings/ProductSettings.h", "src/veritas/ToolRunReport.h",
        "src/virtualserver/HostSettings.h", "support/DebugLog/DebugLog.h", "simulator/veritas/State.h")}

    def problems(self, name, *lines):
        return check_layers.check_includes({**self.FILES, name: "\n".join(f"#include {line}" for line in lines) + "\n"})

    def test_arrows_down_pass(self):
        for name, line in (("src/core/A.cpp", '"core/ValueList.h"'), ("src/platform/A.cpp", '"core/ValueList.h"'),
                           ("src/platform/A.h", '"DebugLog.h"'), ("src/settings/A.cpp", '"platform/Owner.h"'),
                           ("src/cluster/A.cpp", '"clus_Cluster.h"'), ("src/virtualserver/A.cpp", '"clus_Cluster.h"'),
                           ("src/veritas/A.cpp", '"settings/ProductSettings.h"'), ("src/core/A.cpp", "<string>"),
                           ("src/platform/A.h", "<windows.h>"), ("simulator/cluster/A.cpp", '"common/Text.h"'),
                           ("tools/clusctl/A.cpp", "<clus_Cluster.h>"), ("tools/clusctl/A.cpp", '"DebugLog.h"'),
                           ("tools/clusctl/A.cpp", '"CfReader.h"'), ("tools/clusctl/A.cpp", '"core/ValueList.h"'),
                           ("simulator/veritas/A.cpp", '"CfReader.h"')):
            self.assertEqual(self.problems(name, line), [], (name, line))

    def test_arrows_up_and_across_fail(self):
        for name, line in (("src/core/A.cpp", '"platform/Owner.h"'), ("src/core/A.cpp", "<windows.h>"),
                           ("src/core/A.cpp", '"clus_Cluster.h"'), ("src/platform/A.h", '"settings/ProductSettings.h"'),
                           ("src/settings/A.cpp", '"clus_Cluster.h"'), ("src/cluster/A.cpp", '"virtualserver/HostSettings.h"'),
                           ("src/cluster/A.cpp", '"clus_VirtualServerUtil.h"'), ("src/virtualserver/A.cpp", '"veritas/ToolRunReport.h"'),
                           ("src/virtualserver/A.cpp", '"cluster/Wait.h"'), ("src/veritas/A.cpp", '"clus_Cluster.h"'),
                           ("src/veritas/A.cpp", '"virtualserver/HostSettings.h"'), ("src/veritas/A.cpp", '"common/Text.h"'),
                           ("common/A.cpp", '"core/ValueList.h"'), ("simulator/veritas/A.cpp", '"../cluster/Model.h"'),
                           ("simulator/cluster/A.cpp", '"CfReader.h"'), ("simulator/veritas/configuration/A.h", '"State.h"'),
                           ("simulator/veritas/configuration/A.h", "<windows.h>"), ("support/CommonUtil/A.cpp", '"DebugLog.h"'),
                           ("tools/clusctl/A.cpp", '"State.h"'), ("tools/clusctl/A.cpp", '"Model.h"'),
                           ("tools/clusctl/A.cpp", '"platform/Owner.h"'), ("include/clus_Cluster.h", '"clus_VirtualServerUtil.h"')):
            self.assertEqual(len(self.problems(name, line)), 1, (name, line))

    def test_unknown_and_ambiguous_headers_and_homeless_files_fail(self):
        self.assertIn("is no file of the product", self.problems("src/cluster/A.cpp", '"Missing.h"')[0])
        self.assertIn("may be any of", self.problems("tools/clusctl/A.cpp", '"Text.h"')[0])
        self.assertIn("lies in no layer", self.problems("src/other/A.cpp")[0])

    def test_the_line_is_named(self):
        self.assertTrue(self.problems("src/core/A.cpp", "<string>", '"DebugLog.h"')[0].startswith("src/core/A.cpp:2: "))


class Functions(unittest.TestCase):
    def functions(self, text):
        return list(check_size.functions(code(text)))

    def test_signature_and_closing_brace_count(self):
        self.assertEqual(self.functions("""
            namespace a {

            int f(int x,
                  int y) { // {
                return x;
            }

            int g();

            } // namespace a
            """), [("f", 3, 4)])

    def test_members_in_and_outside_of_their_class(self):
        self.assertEqual(self.functions("""
            class API_ A : public B {
            public:
                A() : m_x(1) {
                    if (m_x) {
                    }
                }
                enum class Kind { One };

                Kind Get() const;

            private:
                int m_x;
            };

            template <class T>
            A::Kind A::Get() const {
                return Kind::One;
            }
            """), [("A", 3, 4), ("A::Get", 15, 4)])

    def test_a_brace_in_a_raw_text_closes_nothing(self):
        self.assertEqual(self.functions('''
            const char* f() {
                return R"({
            })";
            }
            '''), [("f", 1, 4)])

    def test_tables_and_macros_are_no_functions(self):
        self.assertEqual(self.functions("""
            #define BODY(x) \\
                void x() {  \\
                }
            const Entry table[] = {
                {"a", 1},
            };
            struct Record {
                int size;
            };
            int f() {
            }
            """), [("f", 10, 2)])

    def test_limits_and_what_is_allowed(self):
        longest = "int f() {\n" + 78 * "    g();\n" + "}\n"
        self.assertEqual(check_size.check({"a.cpp": longest}, set()), [])
        longer = longest.replace("{\n", "{\n    g();\n")
        self.assertEqual(check_size.check({"a.cpp": longer}, set()), ["a.cpp:1: f has 81 lines; 80 are the limit"])
        self.assertEqual(check_size.check({"a.cpp": longer}, {"a.cpp: f"}), [])
        self.assertEqual(len(check_size.check({"a.cpp": longest}, {"a.cpp: f"})), 1)
        self.assertEqual(check_size.check({"a.h": 450 * "//\n"}, set()), [])
        self.assertEqual(check_size.check({"a.h": 451 * "//\n"}, set()), ["a.h has 451 lines; 450 are the limit"])


class LogPlaces(unittest.TestCase):
    TAGS = {"Cluster": "clus_Cluster.cpp"}
    GOOD = "#include <a>\nCLUS_LOG_PLACE(Cluster, 2);\nvoid f() {\n    LOG_INFO(L\"a\");\n}\n"

    def problems(self, **texts):
        return check_log_places.check(texts, self.TAGS)[0]

    def test_one_place_at_the_head_passes(self):
        self.assertEqual(check_log_places.check({"a": self.GOOD, "b": "void g();\n"}, self.TAGS), ([], [("Cluster", 2, "a")]))

    def test_everything_else_fails(self):
        for text in (self.GOOD.replace("CLUS_LOG_PLACE(Cluster, 2);\n", ""), self.GOOD + "CLUS_LOG_PLACE(Cluster, 2);\n",
                     self.GOOD.replace("LOG_INFO(", "Log("), self.GOOD.replace("Cluster", "Other"),
                     self.GOOD.replace("2)", "0)"), self.GOOD.replace("2)", "Two)"), self.GOOD + 995 * "//\n",
                     "LOG_INFO(L\"\");\n" + self.GOOD, self.GOOD.replace("CLUS_LOG", "// CLUS_LOG")):
            self.assertEqual(len(self.problems(a=text)), 1, text)
        self.assertEqual(self.problems(a=self.GOOD + 994 * "//\n"), [])

    def test_a_place_belongs_to_one_file(self):
        self.assertEqual(self.problems(a=self.GOOD, b=self.GOOD), ["a, b: the same place Cluster, 2"])
        self.assertEqual(self.problems(a=self.GOOD, b=self.GOOD.replace("2", "3")), [])


class Duplicates(unittest.TestCase):
    SIX = "a1;\nb1;\n}\n\nc1;\n// comment\nd1;\ne1;\nf1;\n"

    def test_six_equal_lines_fail(self):
        self.assertEqual(check_duplicates.check({"x": "y1;\n" + self.SIX, "z": self.SIX.replace("b1", "    b1")}),
                         ["x:2 and z:1: 6 equal lines"])

    def test_so_they_do_in_one_file(self):
        self.assertEqual(check_duplicates.check({"x": self.SIX + "other;\n" + self.SIX}), ["x:1 and x:11: 6 equal lines"])

    def test_longer_runs_are_told_once(self):
        self.assertEqual(check_duplicates.check({"x": self.SIX + "g1;\n", "z": self.SIX + "g1;\n"}), ["x:1 and z:1: 7 equal lines"])

    def test_five_pass_and_includes_do_not_count(self):
        self.assertEqual(check_duplicates.check({"x": self.SIX, "z": self.SIX.replace("d1", "d2")}), [])
        five = "#include <a>\n" + self.SIX.replace("f1;\n", "")
        self.assertEqual(check_duplicates.check({"x": five, "z": five}), [])


class DryRuns(unittest.TestCase):
    MANUAL = "# M\n\n### `servers`\n\nLists.\n\n### `vcs mode rw|ro`\n\nOpens.\n\n- `--dry-run`: On a copy.\n\n## More\n"

    def problems(self, manual, asking=("servers",)):
        return [text for _, text in check_docs.dry_run_problems(manual, asking)]

    def test_what_asks_needs_none_and_what_changes_has_it(self):
        self.assertEqual(self.problems(self.MANUAL), [])

    def test_a_new_command_without_it_fails(self):
        new = self.MANUAL.replace("## More", "### `vcs group delete GROUP`\n\n- `--rw`: Opens.\n\n## More\n\n- `--dry-run`: Told here.")
        self.assertEqual(len(self.problems(new)), 1)
        self.assertIn("'vcs group delete' has no --dry-run", self.problems(new)[0])

    def test_the_list_of_those_that_ask_holds_no_others(self):
        self.assertEqual(len(self.problems(self.MANUAL, ("servers", "vcs mode"))), 1)
        self.assertEqual(self.problems(self.MANUAL, ("servers", "gone")), ["there is no sub-command 'gone'"])


class Changelog(unittest.TestCase):
    RELEASE = "# Changelog\n\n## [1.2.0] - 2026-11-22\n\n### Added\n\n- A thing.\n"

    def problems(self, text):
        return list(check_docs.changelog_problems(text, "1.2.0"))

    def test_the_release_that_is_built_comes_first(self):
        self.assertEqual(self.problems(self.RELEASE), [])
        self.assertEqual(self.problems(self.RELEASE + "\n## [1.1.0] - 2026-01-01\n\n- Another.\n"), [])
        for text in ("", self.RELEASE.replace("1.2.0", "1.1.0"), self.RELEASE.replace("1.2.0", "1.2.0.1"),
                     self.RELEASE.replace(" - 2026-11-22", "")):
            self.assertEqual(len(self.problems(text)), 1, text)

    def test_nothing_is_unreleased(self):
        self.assertEqual(self.problems(self.RELEASE.replace("## [1", "## [Unreleased]\n\n## [1")), [])
        for unreleased in ("## [Unreleased]\n\n- Another.\n\n", "## Unreleased\n\n### Fixed\n\n- Another.\n\n"):
            self.assertEqual(len(self.problems(self.RELEASE.replace("## [1", unreleased + "## [1"))), 1, unreleased)


class ChosenTests(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = Path(folder.name) / "tree"
        (self.tree / "tests/groups").mkdir(parents=True)
        (self.tree.parent / "beside/tests/groups/d_native").mkdir(parents=True)
        (self.tree / "bin").mkdir()
        self.add("a_test", "quick", "TEST(Names, AreShort) {}\nTEST_F(Lists,\n    DISABLED_AreLong) {}\n")
        self.add("b_test", "quick", "TEST_F(Values, AreShort) {}\nTEST_P(Values, Fit) {}\n")
        self.add("c_test", "sweep", "TEST(Sweep, Names) {}\n")

    def add(self, name, label, text):
        source = self.tree / f"{name}.cpp"
        source.write_text(text)
        (self.tree / "tests/groups" / name).write_text(
            f"listing {self.tree}/{name}.cmake\nlabels {label}\nprogram {self.tree}/bin/{name}.exe\nsource {source}\n")

    def build(self, name, *tests):
        """As after a build and a run: the listing is newer than the program, which is newer than the sources."""
        program = self.tree / "bin" / f"{name}.exe"
        program.write_text("")
        listing = self.tree / f"{name}.cmake"
        listing.write_text("".join(f"add_test([=[{name}/{test}]=] x)\n" for test in tests))
        now = (self.tree / "tests/groups" / name).stat().st_mtime
        os.utime(program, (now + 10, now + 10))
        os.utime(listing, (now + 20, now + 20))

    def chosen(self, *arguments):
        return choose_tests.choose(self.tree, list(arguments))

    def test_without_a_choice_all_are_built(self):
        self.assertIsNone(self.chosen())
        self.assertIsNone(self.chosen("-j", "3"))

    def test_what_is_not_understood_builds_all(self):
        for arguments in (["-I", "3,4"], ["--rerun-failed"], ["-R", "a_test/", "-FA", "x"], ["-R"]):
            self.assertIsNone(self.chosen(*arguments), arguments)

    def test_names_in_sources_are_found(self):
        self.assertEqual(self.chosen("-R", "^c_test/Sweep"), {"c_test"})
        self.assertEqual(self.chosen("-R", "a_test/Lists.AreLong$"), {"a_test"})

    def test_programs_with_unknown_names_are_built_in_doubt(self):
        self.assertEqual(self.chosen("-R", "Sweep"), {"b_test", "c_test"})
        self.assertEqual(self.chosen("-R", "a_test/|Sweep"), {"a_test", "b_test", "c_test"})
        self.assertEqual(self.chosen("-R", "^(a|c)_test/"), {"a_test", "c_test"})
        self.assertEqual(self.chosen("-R", "^(b_test/Values|x)/9"), {"b_test"})
        self.assertEqual(self.chosen("-R", "d_native/Sweep"), set())

    def test_a_listing_ends_the_doubt(self):
        self.build("b_test", "Values.AreShort", "Some/Values.Fit/9")
        self.assertEqual(self.chosen("-R", "Sweep"), {"c_test"})
        self.assertEqual(self.chosen("-R", "Fit/9"), {"b_test"})
        self.assertEqual(self.chosen("-R", "Fit/8"), set())

    def test_a_newer_source_brings_it_back(self):
        self.build("b_test", "Values.AreShort")
        later = (self.tree / "bin/b_test.exe").stat().st_mtime + 5
        os.utime(self.tree / "b_test.cpp", (later, later))
        self.assertEqual(self.chosen("-R", "Fit/8"), {"b_test"})

    def test_labels_choose(self):
        self.assertEqual(self.chosen("-L", "quick"), {"a_test", "b_test"})
        self.assertEqual(self.chosen("-LE", "quick"), {"c_test"})
        self.assertEqual(self.chosen("-L", "sweep", "-R", "Names"), {"c_test"})

    def test_an_exclusion_leaves_doubtful_programs_in(self):
        self.assertEqual(self.chosen("-R", "Names", "-E", "^a_test"), {"b_test", "c_test"})


class FuzzReport(unittest.TestCase):
    LOG = "INFO: Loaded 1 modules (200 inline 8-bit counters): 200\n#2 INITED cov: 15 ft: 9\n#9 NEW cov: 60 ft: 70\n"

    def test_rows_of_the_table_are_read(self):
        self.assertEqual(fuzz_report.rows_of("| target | runs | edges reached |\n| `a_b` | 1,234 | 56 of 7,890 |\n| all | 1 | |\n"),
                         {"a_b": (1234, 56, 7890)})

    def test_runs_are_added_to_those_of_the_table(self):
        self.assertEqual(fuzz_report.runs_by_target("a 3\nb 4\na 5\n"), {"a": 8, "b": 4})
        self.assertEqual(fuzz_report.merged((10, 50, 200), 5, None), (15, 50, 200))
        self.assertEqual(fuzz_report.merged(None, 5, self.LOG), (5, 60, 200))

    def test_what_was_reached_of_the_same_program_stays(self):
        self.assertEqual(fuzz_report.merged((10, 90, 200), 5, self.LOG), (15, 90, 200))
        self.assertEqual(fuzz_report.merged((10, 90, 300), 5, self.LOG), (15, 60, 200))


class Coverage(unittest.TestCase):
    TABLE = code("""
        Before.
        | place | left | why |
        |---|---|---|
        | `core/A.cpp` `TakeField`, `~CAny`; `core/B.h` `Start` | 2 | memory |

        | `core/C.cpp` `Other` | 1 | another table |
        """)
    LISTED = {("src/core/A.cpp", "TakeField"): 1, ("src/core/A.cpp", "~CAny"): 1, ("src/core/B.h", "Start"): 0}

    def compared(self, more=None):
        left = {place: count for place, count in self.LISTED.items() if count}
        left.update(more or {})
        return coverage.compared(left, coverage.listed_places(self.TABLE))

    def test_a_function_s_name_is_bare(self):
        for demangled, name in (
                ("clus::(anonymous namespace)::Text::TakeField(unsigned long&)", "TakeField"),
                ("CAny::~CAny()", "~CAny"),
                ("CVeritasCluster::Names[abi:cxx11](std::vector<std::pair<int, int> > const&) const", "Names"),
                ("void clus::Add<std::vector<wchar_t> >(std::vector<wchar_t>&)", "Add"),
                ("clus::Run(int)::{lambda(int)#1}::operator()(int) const", "operator")):
            self.assertEqual(coverage.bare_name(demangled), name)

    def test_places_of_the_table_are_read(self):
        self.assertEqual(coverage.listed_places(self.TABLE), [(set(self.LISTED), 2)])

    def test_what_is_left_has_to_be_listed(self):
        more = {("src/core/B.h", "Start"): 0}
        self.assertEqual(self.compared(more=more), [])
        self.assertEqual(self.compared(more={**more, ("src/core/A.cpp", "Else"): 1}),
                         ["src/core/A.cpp, Else: 1 left, and not listed"])

    def test_as_many_have_to_be_left_as_are_told(self):
        self.assertEqual(self.compared(more={("src/core/B.h", "Start"): 1}),
                         ["TakeField, ~CAny, Start: 3 left instead of 2"])
        self.assertEqual(self.compared(more={("src/core/A.cpp", "~CAny"): 0, ("src/core/B.h", "Start"): 0}),
                         ["TakeField, ~CAny, Start: 1 left instead of 2"])

    def test_the_totals_have_to_be_those_of_the_page(self):
        page = "Before. Of 1,062 lines 1,053 are\nrun, of 2,861 branches 2,829 are taken. These remain."
        self.assertEqual(coverage.compared_totals((1062, 1053, 2861, 2829), page), [])
        for totals in ((1063, 1053, 2861, 2829), (1062, 1052, 2861, 2829), (1062, 1053, 2860, 2829), (1062, 1053, 2861, 829)):
            self.assertEqual(len(coverage.compared_totals(totals, page)), 1, totals)

    def test_what_is_listed_has_to_be_left(self):
        self.assertEqual(self.compared(), ["src/core/B.h, Start: listed, and nothing is left"])


if __name__ == "__main__":
    unittest.main()
