"""Whether scripts/hdiutil-again tries once more, and no oftener, and hands the status on."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "hdiutil-again"


class HdiutilAgainTest(unittest.TestCase):
    def calls_when_it_fails(self, times):
        """The arguments of each call of a tool that fails so many times, and the status."""
        with tempfile.TemporaryDirectory() as folder:
            calls, tool = Path(folder) / "calls", Path(folder) / "hdiutil"
            tool.write_text(
                f'#!/bin/sh\necho "$@" >>{calls}\n[ "$(wc -l <{calls})" -gt {times} ] || exit 16\n'
            )
            tool.chmod(0o755)
            environment = dict(os.environ, HDIUTIL=str(tool), HDIUTIL_PAUSE="0")
            result = subprocess.run([SCRIPT, "attach", "a b"], env=environment)
            return calls.read_text().splitlines(), result.returncode

    def test_what_works_is_done_once(self):
        self.assertEqual(self.calls_when_it_fails(0), (["attach a b"], 0))

    def test_what_fails_once_is_done_again(self):
        self.assertEqual(self.calls_when_it_fails(1), (["attach a b"] * 2, 0))

    def test_what_fails_again_has_failed(self):
        self.assertEqual(self.calls_when_it_fails(9), (["attach a b"] * 2, 16))


if __name__ == "__main__":
    unittest.main()
