#!/usr/bin/env python3
"""Lets packaging/linux/debian_changelog.py read changelogs, also faulty ones."""

import pathlib
import subprocess
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = PROJECT / "packaging/linux/debian_changelog.py"

CHANGELOG = """# Changes

The newest first.

## 1.2.0 – 2026-03-02

- One change.
- Another one, that is told in so many words that they do not fit into one line
  of either text.

## 1.1.0 – 2025-12-31

- The beginning.
"""

AS_DEBIAN_WANTS_IT = """tavrel (1.2.0-1) unstable; urgency=medium

  * One change.
  * Another one, that is told in so many words that they do not fit into one
    line of either text.

 -- Somebody <somebody@example.org>  Mon, 02 Mar 2026 12:00:00 +0000

tavrel (1.1.0-1) unstable; urgency=medium

  * The beginning.

 -- Somebody <somebody@example.org>  Wed, 31 Dec 2025 12:00:00 +0000
"""


class DebianChangelogTest(unittest.TestCase):
    def convert(self, text, version="1.2.0"):
        with tempfile.NamedTemporaryFile("w", encoding="utf-8") as file:
            file.write(text)
            file.flush()
            return subprocess.run([PROGRAM, file.name, version,
                                   "Somebody <somebody@example.org>"],
                                  capture_output=True, text=True, check=False)

    def assert_refused(self, text, why, version="1.2.0"):
        result = self.convert(text, version)

        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn(why, result.stderr)

    def test_every_version_becomes_an_entry(self):
        result = self.convert(CHANGELOG)

        self.assertEqual((result.stdout, result.stderr), (AS_DEBIAN_WANTS_IT, ""))

    def test_another_version_than_the_newest_is_refused(self):
        self.assert_refused(CHANGELOG, "does not begin with version 1.3.0", version="1.3.0")

    def test_a_version_without_a_date_is_refused(self):
        self.assert_refused(CHANGELOG.replace("2026-03-02", "soon"), "neither a version nor a date")

    def test_a_version_without_changes_is_refused(self):
        self.assert_refused(CHANGELOG.replace("- The", "The"), "names no change of version 1.1.0")


if __name__ == "__main__":
    unittest.main()
