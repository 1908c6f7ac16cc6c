#!/usr/bin/env python3
"""Installs what was built into a folder of its own and looks at all that is there.

usage: installed_files_test.py BUILD VERSION
"""

import gzip
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

ID = "io.github.tavrel.Tavrel"
SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
ICONS = pathlib.PurePath("share/icons/hicolor")
DESKTOP_FILE = f"share/applications/{ID}.desktop"
SERVICE = f"share/dbus-1/services/{ID}.service"
MANUAL = "share/man/man1/tavrel.1.gz"
METAINFO = f"share/metainfo/{ID}.metainfo.xml"

EXPECTED = {
    "bin/tavrel",
    "libexec/tavrel/display-watchdog",
    DESKTOP_FILE,
    SERVICE,
    "share/doc/tavrel/changelog.gz",
    "share/doc/tavrel/copyright",
    f"{ICONS}/scalable/apps/{ID}.svg",
    *(f"{ICONS}/{size}x{size}/apps/{ID}.png" for size in SIZES),
    MANUAL,
    METAINFO,
}

BUILD, VERSION = sys.argv.pop(1), sys.argv.pop(1)


def install(prefix, **environment):
    subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix], check=True,
                   stdout=subprocess.DEVNULL, env={**os.environ, **environment})


def files_in(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


def program_started_by(service):
    """What stands in the service file, as whom the message bus starts."""
    return [line.removeprefix("Exec=") for line in service.read_text("utf-8").splitlines()
            if line.startswith("Exec=")]


def helper_in(manual):
    """Where the manual says that the helper is."""
    text = gzip.decompress(manual.read_bytes()).decode("utf-8").replace("\\-", "-")
    return [line.removeprefix(".I ") for line in text.splitlines() if "display-watchdog" in line]


class InstalledFilesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = pathlib.Path(folder.name)
        install(cls.prefix)

    def read(self, path):
        return (self.prefix / path).read_bytes()

    def assert_accepted_by(self, *command):
        result = subprocess.run(command, capture_output=True, text=True, check=False)

        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result.stdout + result.stderr

    def test_exactly_these_are_there(self):
        self.assertEqual(files_in(self.prefix), EXPECTED)

    def test_programs_can_be_run_and_nothing_else(self):
        for path in EXPECTED:
            with self.subTest(path):
                mode = (self.prefix / path).stat().st_mode & 0o777
                is_program = path.startswith(("bin/", "libexec/"))

                self.assertEqual(mode, 0o755 if is_program else 0o644)

    def test_each_icon_has_the_size_of_its_folder(self):
        for size in SIZES:
            with self.subTest(size):
                picture = self.read(ICONS / f"{size}x{size}/apps/{ID}.png")

                self.assertEqual(picture[:8], b"\x89PNG\r\n\x1a\n")
                self.assertEqual(struct.unpack(">II", picture[16:24]), (size, size))

    def test_desktops_accept_the_desktop_file(self):
        said = self.assert_accepted_by("desktop-file-validate", self.prefix / DESKTOP_FILE)

        self.assertEqual(said, "")

    def test_the_icon_that_the_desktop_file_names_is_installed(self):
        lines = self.read(DESKTOP_FILE).decode("utf-8").splitlines()

        self.assertIn(f"Icon={ID}", lines)

    def test_the_message_bus_knows_the_program_by_its_own_name(self):
        lines = self.read(SERVICE).decode("utf-8").splitlines()

        self.assertIn(f"Name={ID}", lines)

    def test_files_that_name_the_place_name_the_one_they_were_installed_to(self):
        # Not what the build was configured for.
        self.assertEqual(program_started_by(self.prefix / SERVICE), [f"{self.prefix}/bin/tavrel"])
        self.assertEqual(helper_in(self.prefix / MANUAL),
                         [f"{self.prefix}/libexec/tavrel/display-watchdog"])

    def test_a_folder_that_packages_are_gathered_in_is_in_no_file(self):
        with tempfile.TemporaryDirectory() as gathered:
            install("/opt/tavrel", DESTDIR=gathered)
            there = pathlib.Path(gathered) / "opt/tavrel"

            self.assertEqual(files_in(there), EXPECTED)
            self.assertEqual(program_started_by(there / SERVICE), ["/opt/tavrel/bin/tavrel"])
            self.assertEqual(helper_in(there / MANUAL),
                             ["/opt/tavrel/libexec/tavrel/display-watchdog"])
            for file in EXPECTED:
                self.assertNotIn(gathered.encode(), (there / file).read_bytes(), file)

    def test_software_centres_accept_the_metainfo(self):
        said = self.assert_accepted_by("appstreamcli", "validate", "--no-net", "--no-color",
                                       self.prefix / METAINFO)

        self.assertNotIn("W: ", said)

    def test_the_metainfo_names_this_version_and_what_is_installed(self):
        component = xml.etree.ElementTree.fromstring(self.read(METAINFO))

        self.assertEqual(component.findtext("id"), ID)
        self.assertEqual(component.findtext("launchable"), f"{ID}.desktop")
        self.assertEqual(component.findtext("icon"), ID)
        self.assertEqual(component.find("releases/release").get("version"), VERSION)
        for binary in component.findall("provides/binary"):
            self.assertIn(f"bin/{binary.text}", EXPECTED)

    def test_the_manual_is_of_this_version(self):
        manual = gzip.decompress(self.read(MANUAL)).decode("utf-8")

        self.assertIn(f'"Tavrel {VERSION}"', manual)

    def test_no_placeholder_is_left_in_any_text(self):
        texts = [gzip.decompress(self.read(MANUAL)), self.read(METAINFO),
                 self.read(DESKTOP_FILE), self.read(SERVICE)]

        for text in texts:
            self.assertNotRegex(text, rb"@\w+@")


if __name__ == "__main__":
    unittest.main()
