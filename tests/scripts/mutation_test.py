#!/usr/bin/env python3
"""Examples for ./dev mutate: the mutants of each kind, the order in which they are tried, the list of equivalent ones, the report."""
import contextlib
import io
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
SCRIPTS = Path(__file__).resolve().parent.parent.parent / "scripts"
sys.path[:0] = [str(SCRIPTS), str(SCRIPTS / "mutation")]
import mutate  # noqa: E402
import operators  # noqa: E402
import tree  # noqa: E402


def mutants(body, operator=None):
    """The mutants of a function's body, as pairs of the line before and after."""
    text = "void Function() {\n" + textwrap.indent(textwrap.dedent(body).strip("\n"), "    ") + "\n}\n"
    found = operators.mutants_of("src/File.cpp", text)
    return [(mutant.before, mutant.after) for mutant in found if operator in (None, mutant.operator)]


def after(body, operator):
    return [changed for _, changed in mutants(body, operator)]


class Operators(unittest.TestCase):
    def test_comparisons(self):
        self.assertEqual(after("x = a == b;\nx = a < b;\nx = a->b;", "comparison"), ["x = a != b;", "x = a <= b;"])

    def test_templates_and_texts_are_no_comparisons(self):
        self.assertEqual(after('std::list<int> x;\nf(" < ");', "comparison"), [])

    def test_numbers_and_truth(self):
        self.assertEqual(after("x = 0;\nx = 0x1F;\nx = true;", "constant"), ["x = 1;", "x = 0x20;", "x = false;"])

    def test_a_letter_of_a_text_or_character(self):
        self.assertEqual(after("f(L\"abc\", L'z', \"\");", "constant"),
                         ["f(L\"acc\", L'z', \"\");", "f(L\"abc\", L'y', \"\");", "f(L\"abc\", L'z', \"x\");"])

    def test_comments_have_no_mutants(self):
        self.assertEqual(mutants("// if (a == 1) break;\n/* f(a, b); */"), [])

    def test_conditions(self):
        self.assertEqual(after("if (a || f(b)) {\n}", "condition"), ["if (!(a || f(b))) {", "if (a && f(b)) {"])

    def test_a_single_not_is_taken_away_once(self):
        self.assertEqual(after("while (!f(a)) {\n}", "condition"), ["while (f(a)) {"])

    def test_statements(self):
        self.assertEqual(after("object.member(1,\n    2);\n++count;\nreturn x;", "statement"), [";", ";", ";"])

    def test_declarations_stay(self):
        self.assertEqual(after("int x = f(1);\nconst Owner owner(1);\nLocalBuffer buffer;\nusing a::b;", "statement"), [])

    def test_an_object_that_only_its_end_is_for_is_left_out(self):
        self.assertEqual(after("const LastErrorKeeper keeper;\nconst clus::CriticalSectionGuard guard(Lock);", "statement"),
                         [";", ";"])

    def test_lines_stay_where_they_are(self):
        text = "void F() {\n    g(1,\n      2);\n    h();\n}\n"
        for mutant in operators.mutants_of("src/File.cpp", text):
            self.assertEqual(mutant.apply(text).count("\n"), text.count("\n"), mutant.after)

    def test_jumps(self):
        self.assertEqual(after("break;\ncontinue;", "jump"), [";", "continue;", ";", "break;"])

    def test_arguments(self):
        self.assertEqual(after("f(a, g(b, c), d);", "arguments"),
                         ["f(g(b, c), a, d);", "f(a, d, g(b, c));", "f(a, g(c, b), d);"])

    def test_parameters_and_equal_arguments_stay(self):
        self.assertEqual(after("auto f = [](int a, const wchar_t* b) { return a; };\ng(a, a);", "arguments"), [])

    def test_the_format_of_a_log_line_stays_in_front(self):
        self.assertEqual(after('LOG_INFO(L"%s, %s", a, b);', "arguments"), ['LOG_INFO(L"%s, %s", b, a);'])

    def test_level_and_text_of_a_log_line(self):
        line = 'LOG_ERROR(L"code:%d");'
        self.assertEqual(after(line, "log level"), ['LOG_WARNING(L"code:%d");'])
        self.assertEqual(after(line, "log text"), ['LOG_ERROR(L"coee:%d");'])
        self.assertEqual(after(line, "constant"), [])

    def test_the_function_is_told(self):
        text = "int A::First(int a) {\n    return 1;\n}\n\nnamespace {\nbool Second(\n    int b) {\n    return true;\n}\n}\n"
        found = {(mutant.function, mutant.operator) for mutant in operators.mutants_of("src/File.cpp", text)}
        self.assertEqual(found, {("A::First", "constant"), ("A::First", "statement"), ("Second", "constant"),
                                 ("Second", "statement")})


class Order(unittest.TestCase):
    TEXT = "void F() {\n    f(1, 2);\n    g(3, 4);\n    h(5, 6);\n}\n"

    def test_each_line_comes_before_a_second_of_any(self):
        chosen = mutate.in_order(operators.mutants_of("src/File.cpp", self.TEXT), 1)
        self.assertEqual(sorted(mutant.line for mutant in chosen[:3]), [2, 3, 4])

    def test_the_seed_decides(self):
        found = operators.mutants_of("src/File.cpp", self.TEXT)
        self.assertEqual(mutate.in_order(found, 1), mutate.in_order(list(reversed(found)), 1))
        self.assertNotEqual(mutate.in_order(found, 1), mutate.in_order(found, 2))

    def test_a_line_that_moves_keeps_its_place(self):
        moved = self.TEXT.replace("    f", "\n    f")
        orders = [[mutant.after for mutant in mutate.in_order(operators.mutants_of("src/File.cpp", text), 1)]
                  for text in (self.TEXT, moved)]
        self.assertEqual(*orders)


class Laboratory:
    """Stands in for the compiler and the tests: a mutant has the outcome that is given for its changed line."""

    def __init__(self, outcomes):
        self.outcomes = outcomes
        self.tried = []

    def try_out(self, mutant, text):
        assert mutant.apply(text) != text
        self.tried.append(mutant.after)
        return self.outcomes.get(mutant.after, "caught"), "Suite.Test"


class Examination(unittest.TestCase):
    TEXT = "bool F() {\n    return a == b;\n}\n"

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.file = Path(folder.name) / "results.jsonl"
        self.mutants = [mutant for mutant in operators.mutants_of("src/File.cpp", self.TEXT) if mutant.operator != "arguments"]
        self.assertEqual([mutant.after for mutant in self.mutants], [";", "return a != b;"])

    def examine(self, laboratory, reasons=(), tests="tests", count=10):
        texts = {"src/File.cpp": self.TEXT}
        results = mutate.Results(self.file, tests)
        with contextlib.redirect_stdout(io.StringIO()):
            outcomes = mutate.examine(self.mutants, texts, results, laboratory, dict(reasons), count, 1)
        return outcomes, *mutate.report(outcomes, texts, [])

    def test_a_survivor_is_reported_with_its_difference(self):
        _, lines, well = self.examine(Laboratory({"return a != b;": "survived"}))
        self.assertFalse(well)
        text = "\n".join(lines)
        self.assertIn("src/File.cpp F\n- return a == b;\n+ return a != b;", text)
        self.assertIn("\n-    return a == b;\n+    return a != b;", text)
        self.assertIn("2 mutants: 1 caught, 0 listed as equivalent, 1 survived.", text)

    def test_all_caught_is_well(self):
        self.assertTrue(self.examine(Laboratory({}))[-1])

    def test_what_does_not_compile_is_not_counted(self):
        outcomes, lines, _ = self.examine(Laboratory({";": "not compiled"}), count=1)
        self.assertEqual(list(outcomes.values()), ["not compiled", "caught"])
        self.assertIn("1 mutants: 1 caught, 0 listed as equivalent, 0 survived. Not counted: 1 that do not compile, "
                      "0 with the same code.", lines)

    def test_a_listed_one_is_not_tried(self):
        laboratory = Laboratory({})
        reasons = mutate.read_equivalents("# head\n\nsrc/File.cpp F\n- return a == b;\n+ return a != b;\nthe\nreason\n")
        outcomes, _, well = self.examine(laboratory, reasons)
        self.assertEqual(laboratory.tried, [";"])
        self.assertEqual(outcomes[self.mutants[1]], "equivalent")
        self.assertTrue(well)
        self.assertEqual(list(reasons.values()), ["the reason"])

    def test_an_entry_without_reason_is_refused(self):
        with self.assertRaises(SystemExit):
            mutate.read_equivalents("src/File.cpp F\n- return a == b;\n+ return a != b;\n")

    def test_a_listed_line_that_is_gone_is_told(self):
        lines, well = mutate.report({}, {}, [("src/File.cpp", "F", "gone;", ";")])
        self.assertFalse(well)
        self.assertIn("lists what is no mutant of src/File.cpp: - gone; + ;", lines[0])

    def test_a_second_run_goes_on_where_the_first_ended(self):
        self.examine(Laboratory({";": "survived"}))
        again = Laboratory({";": "survived"})
        self.assertEqual(list(self.examine(again)[0].values()), ["survived", "caught"])
        self.assertEqual(again.tried, [])

    def test_survivors_are_tried_on_changed_tests(self):
        self.examine(Laboratory({";": "survived"}))
        again = Laboratory({})
        self.examine(again, tests="other tests")
        self.assertEqual(again.tried, [";"])


class TestOutput(unittest.TestCase):
    def test_the_failed_and_the_unfinished_test_are_found(self):
        output = ("[ RUN      ] A.One\n[       OK ] A.One (0 ms)\n[ RUN      ] A.Two\n[  FAILED  ] A.Two, where GetParam() = 1 (0 ms)\n"
                  "[ RUN      ] A.Three\n")
        self.assertEqual(tree.failed_tests(output), ["A.Two", "A.Three"])

    def test_tests_behind_the_first_failure_did_not_fail(self):
        output = "[ RUN      ] A.One\n[  FAILED  ] A.One (0 ms)\n[ RUN      ] A.Two\n[  SKIPPED ] A.Two (0 ms)\n"
        self.assertEqual(tree.failed_tests(output), ["A.One"])

    def test_long_tests_are_found(self):
        output = "[       OK ] A.One (201 ms)\n[       OK ] A/B.Two/3, where GetParam() = 1 (1000 ms)\n[       OK ] A.Four (3 ms)\n"
        self.assertEqual(tree.tests_longer_than(output, 0.2), ["A.One", "A/B.Two/3"])

    def test_the_tests_of_a_file_come_first(self):
        programs = tree.programs_for("src/cluster/DiskPaths.cpp")
        self.assertEqual(programs[0], "disk_test")
        self.assertEqual(sorted(programs), sorted(tree.PROGRAMS))

    def test_a_file_has_one_name_however_it_is_included(self):
        listed = "objects/a.o: \\\n /source/tests/core/a.cpp \\\n src/core/../core/Text.h src/core/Lists.h\n"
        self.assertEqual(tree.library_files_in(listed), {"src/core/Text.h", "src/core/Lists.h"})


if __name__ == "__main__":
    unittest.main()
