#!/usr/bin/env python3
"""Lets scripts/test-under-load run tests that fail in some of its runs."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]

# Counts its runs, and fails in those that FAILS_IN names.
CTEST = """#!/usr/bin/env bash
echo run >>runs
printf '%s\\n' "$*" >arguments
if [[ " $FAILS_IN " != *" $(wc -l <runs | tr -d ' ') "* ]]; then
    echo "100% tests passed, 0 tests failed out of 7"
    exit 0
fi
printf '50%% tests passed, 2 tests failed out of 7\\n\\nThe following tests FAILED:\\n'
printf '\\t  3 - Keys.AreHeld (Failed)\\n\\t 12 - Row/Switch.IsOn/on (Timeout)\\n'
exit 8
"""
NOTHING = "#!/usr/bin/env bash\n"


class TestUnderLoadTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name)
        (self.tree / "scripts").mkdir()
        for script in ("lib.sh", "test-under-load"):
            shutil.copy(PROJECT / "scripts" / script, self.tree / "scripts")
        self.write_program("scripts/bootstrap", NOTHING)
        for program in ("cmake", "clang-19", "clang++-19"):
            self.write_program(f"programs/{program}", NOTHING)
        self.write_program("programs/ctest", CTEST)

    def write_program(self, path, text):
        program = self.tree / path
        program.parent.mkdir(exist_ok=True)
        program.write_text(text, encoding="utf-8")
        program.chmod(0o755)

    def run_script(self, *arguments, fails_in=""):
        path = f"{self.tree / 'programs'}:{os.environ['PATH']}"
        return subprocess.run([self.tree / "scripts/test-under-load", *arguments],
                              env={**os.environ, "PATH": path, "FAILS_IN": fails_in},
                              capture_output=True, text=True, check=False, timeout=60)

    def test_runs_without_failures_pass(self):
        result = self.run_script("3")

        self.assertEqual((result.stdout, result.returncode), ("", 0))
        self.assertIn("3 runs beside", result.stderr)
        self.assertEqual((self.tree / "runs").read_text(encoding="utf-8").count("run"), 3)

    def test_tests_that_fail_are_named_and_counted(self):
        result = self.run_script("3", fails_in="2 3")

        self.assertEqual([line.split() for line in result.stdout.splitlines()],
                         [["2", "Row/Switch.IsOn/on"], ["2", "Keys.AreHeld"]])
        self.assertIn("2 with failures", result.stderr)
        self.assertEqual(result.returncode, 1)

    def test_a_run_without_any_test_fails(self):
        self.write_program("programs/ctest", "#!/usr/bin/env bash\necho No tests; exit 8\n")

        result = self.run_script("1")

        self.assertIn("No tests", result.stderr)
        self.assertEqual(result.returncode, 1)

    def test_further_arguments_go_to_ctest(self):
        self.run_script("1", "asan", "-L", "e2e")

        arguments = (self.tree / "arguments").read_text(encoding="utf-8")
        self.assertTrue(arguments.startswith("--preset asan "))
        self.assertTrue(arguments.endswith(" -L e2e\n"))

    def test_other_numbers_of_runs_than_one_and_more_are_refused(self):
        for runs in ("0", "-1", "many"):
            self.assertEqual(self.run_script(runs).returncode, 1)

        self.assertFalse((self.tree / "runs").exists())


if __name__ == "__main__":
    unittest.main()
