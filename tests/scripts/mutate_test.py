#!/usr/bin/env python3
"""Lets scripts/mutate change small sources, and a small tree whose tests are a few lines."""

import importlib.machinery
import importlib.util
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]

sys.dont_write_bytecode = True
LOADER = importlib.machinery.SourceFileLoader("mutate", str(PROJECT / "scripts/mutate"))
SPEC = importlib.util.spec_from_loader("mutate", LOADER)
mutate = importlib.util.module_from_spec(SPEC)
LOADER.exec_module(mutate)

SOURCE = """#include "registry/One.h"

int one(int a, int b) {
    return a == b;
}
int two(int a) {
    return a;  // a == 2
}
int three() {
    broken(4);
}
"""

# Builds the tests; cannot when the source calls nothing.
CMAKE = """#!/usr/bin/env bash
[ "$1" = --build ] || exit 0
grep -q 'broken(' registry/One.cpp || exit 1
mkdir -p "$2/tests"
for test in tavrel_registry_tests tavrel_scenario_test registry_replay; do
    cp "$PROGRAMS/$test" "$2/tests/"
done
"""
NEAR = "#!/usr/bin/env bash\ngrep -q 'a == b' registry/One.cpp\n"
FAR = "#!/usr/bin/env bash\ngrep -q 'broken(4)' registry/One.cpp\n"
TRUE = "#!/usr/bin/env bash\n"
ALONE = "#!/usr/bin/env bash\nwhile [[ $1 == --* ]]; do shift; done\nexec \"$@\"\n"


class MutationsTest(unittest.TestCase):
    def changes(self, text):
        return [(each.kind, each.old, each.new) for each in mutate.mutations_of("a.cpp", text)]

    def test_comparisons_are_turned(self):
        self.assertIn(("comparison", " == ", " != "), self.changes("bool x = a == b;"))
        self.assertIn(("comparison", " < ", " <= "), self.changes("bool x = a < b;"))
        self.assertIn(("comparison", "!", ""), self.changes("bool x = !a;"))

    def test_brackets_of_templates_are_no_comparisons(self):
        self.assertEqual(self.changes("template <typename A>\nstd::vector<A> a(B<C> c);"), [])

    def test_constants_are_made_others(self):
        self.assertEqual(self.changes("x{7}"), [("constant", "7", "8")])
        self.assertEqual(self.changes("x{0x10U}"), [("constant", "0x10", "0x11")])
        self.assertEqual(self.changes("x{1'000ms}"), [("constant", "1'000", "1001")])
        self.assertEqual(self.changes("x{0.5}"), [("constant", "0.5", "2.0")])
        self.assertEqual(self.changes("x{true}"), [("constant", "true", "false")])

    def test_digits_in_names_are_no_constants(self):
        self.assertEqual(self.changes("rotate90 | int32_t"), [("constant", " | ", " & ")])

    def test_calls_and_assignments_are_left_out(self):
        text = "void f() {\n    a.b(c)->d();\n    e_ = g;\n    return h();\n    int i = j();\n}\n"

        self.assertEqual(self.changes(text), [("call", "a.b(c)->d();", ";"),
                                              ("statement", "e_ = g;", ";")])

    def test_conditions_are_negated(self):
        self.assertEqual(self.changes("if (a(b) > c) {"),
                         [("comparison", "(a(b) > c)", "(!(a(b) > c))"),
                          ("comparison", " > ", " >= ")])

    def test_a_condition_that_declares_is_not(self):
        self.assertEqual(self.changes("if (const auto a = b(); a) {"), [])

    def test_comments_texts_and_directives_are_passed_over(self):
        for text in ('// a == 1', '/* 1\n 2 */', 'x("a == 1 \\" 2")', 'x(R"(" == 1)")',
                     "x('1')", '#define A 1'):
            with self.subTest(text):
                self.assertEqual(self.changes(text), [])

    def test_declarations_are_passed_over(self):
        self.assertEqual(self.changes("virtual int a(int b) const = 0;\n    A() = default;"), [])

    def test_only_what_was_named_is_changed(self):
        for each in mutate.mutations_of("a.cpp", SOURCE):
            changed = each.apply(SOURCE)

            self.assertEqual(changed.count("\n"), SOURCE.count("\n"), str(each))
            self.assertEqual(changed[:each.start], SOURCE[:each.start])
            self.assertTrue(changed.endswith(SOURCE[each.end:]))

    def test_a_seed_always_chooses_the_same(self):
        all_of_them = list(range(1000))

        self.assertEqual(mutate.sample(all_of_them, 7, 20), mutate.sample(all_of_them, 7, 20))
        self.assertNotEqual(mutate.sample(all_of_them, 7, 20), mutate.sample(all_of_them, 8, 20))
        self.assertEqual(mutate.sample(all_of_them, 7, 5000), all_of_them)

    def test_the_innermost_room_tests_a_source(self):
        self.assertEqual(mutate.room_of("display/control/A.cpp").near[0],
                         "tavrel_display_control_test")
        self.assertEqual(mutate.room_of("display/A.cpp").near, ["tavrel_display_tests"])
        self.assertIsNone(mutate.room_of("app/main.cpp"))

    def test_each_room_is_there(self):
        for room in mutate.ROOMS:
            for source in room.sources:
                self.assertTrue((PROJECT / source).exists(), source)

    def test_what_only_a_mac_compiles_is_left_alone(self):
        changed = {each.path for each in mutate.all_mutations(
            PROJECT, mutate.tracked_files(PROJECT), "watchdog/program")}

        self.assertIn("watchdog/program/WatchdogService.cpp", changed)
        self.assertNotIn("watchdog/program/WindowServerMacos.cpp", changed)


class ScriptTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name)
        self.write("scripts/mutate", (PROJECT / "scripts/mutate").read_text(encoding="utf-8"))
        self.write("registry/One.cpp", SOURCE)
        self.write(".gitignore", "/programs\n/build\n")
        for program, text in (("cmake", CMAKE), ("unshare", ALONE), ("registry_replay", TRUE),
                              ("tavrel_registry_tests", NEAR), ("tavrel_scenario_test", FAR)):
            self.write(f"programs/{program}", text)
        subprocess.run(["git", "init", "-q"], cwd=self.tree, check=True)
        subprocess.run(["git", "add", "-A"], cwd=self.tree, check=True)

    def write(self, path, text):
        file = self.tree / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")
        file.chmod(0o755)

    def run_script(self, *arguments):
        programs = str(self.tree / "programs")
        return subprocess.run([self.tree / "scripts/mutate", *arguments],
                              env={**os.environ, "PATH": f"{programs}:{os.environ['PATH']}",
                                   "PROGRAMS": programs},
                              capture_output=True, text=True, check=False, timeout=120)

    def test_what_becomes_of_each_change_is_told(self):
        result = self.run_script("--count", "10")

        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([line.strip() for line in result.stdout.splitlines()], [
            "caught           registry/One.cpp:4: comparison: '==' -> '!=' (tavrel_registry_tests fails)",
            "does not compile registry/One.cpp:10: call: 'broken(4);' -> ';'",
            "1 are left to tests that are about more",
            "caught           registry/One.cpp:10: constant: '4' -> '5' (tavrel_scenario_test fails)",
            "3 of 3 changes, seed 1: 2 caught, 0 survived, 1 do not compile; "
            "caught of those that do: 100.0 %"])

    def test_a_change_that_no_test_notices_survives(self):
        self.write("programs/tavrel_registry_tests", TRUE)

        result = self.run_script("--count", "10")

        self.assertIn("survived         registry/One.cpp:4: comparison: '==' -> '!='",
                      result.stdout)
        self.assertIn("1 caught, 1 survived", result.stdout)

    def test_tests_that_are_about_more_can_be_left_out(self):
        result = self.run_script("--count", "10", "--near")

        self.assertIn("survived         registry/One.cpp:10: constant: '4' -> '5'", result.stdout)
        self.assertNotIn("tavrel_scenario_test", result.stdout)

    def test_a_change_cannot_take_all_the_memory_there_is(self):
        self.write("programs/tavrel_registry_tests",
                   "#!/usr/bin/env bash\n[ \"$(ulimit -v)\" = 4194304 ]\n")

        self.assertEqual(self.run_script("--near").returncode, 0)

    def test_the_sources_stay_as_they_are(self):
        self.run_script("--count", "10")

        self.assertEqual((self.tree / "registry/One.cpp").read_text(encoding="utf-8"), SOURCE)
        copy = self.tree / "build/mutate/tree/registry/One.cpp"
        self.assertEqual(copy.read_text(encoding="utf-8"), SOURCE)

    def test_the_simulations_own_mutants_stand_in_nobodys_way(self):
        self.write("tests/simulation/Mutants.cmake", "insists on a source")
        subprocess.run(["git", "add", "-A"], cwd=self.tree, check=True)

        self.run_script("--count", "10")

        copy = self.tree / "build/mutate/tree/tests/simulation/Mutants.cmake"
        self.assertEqual(copy.read_text(encoding="utf-8"), "")

    def test_tests_that_fail_anyway_are_no_proof(self):
        for tests in ("tavrel_scenario_test", "tavrel_registry_tests"):
            self.write(f"programs/{tests}", "#!/usr/bin/env bash\nexit 1\n")

            result = self.run_script()

            self.assertEqual(result.returncode, 1)
            self.assertNotIn(f"({tests}", result.stdout)
            self.assertIn(f"{tests} fails without any change", result.stderr)

    def test_a_place_without_anything_to_change_is_refused(self):
        self.assertEqual(self.run_script("--only", "controller").returncode, 1)


if __name__ == "__main__":
    unittest.main()
