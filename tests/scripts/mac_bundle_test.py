"""Whether scripts/mac-bundle keeps what a bundle needs, drops the rest, and misses no fault.

The bundles are made up here: their programs and libraries have headers and load commands, and
nothing else.
"""

import plistlib
import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "mac-bundle"
ARM64, X86_64 = 0x0100000C, 0x01000007


def string_command(kind, text, header):
    data = text.encode() + b"\0"
    size = (header + len(data) + 7) // 8 * 8
    fields = struct.pack("<III", kind, size, header) + bytes(header - 12)
    return (fields + data).ljust(size, b"\0")


def program(loads=(), rpaths=(), minimum=(13, 3), weak=(), processor=ARM64):
    """A thin program or library."""
    major, minor = minimum
    commands = [struct.pack("<IIIIII", 0x32, 24, 1, major << 16 | minor << 8, 0, 0)]
    commands += [string_command(0xC, each, 24) for each in loads]
    commands += [string_command(0x80000018, each, 24) for each in weak]
    commands += [string_command(0x8000001C, each, 12) for each in rpaths]
    body = b"".join(commands)
    header = (0xFEEDFACF, processor, 0, 8, len(commands), len(body), 0, 0)
    return struct.pack("<IIIIIIII", *header) + body


def universal(*programs):
    """Several programs in one file, each for another processor and on a page of its own."""
    page = 4096
    table, bodies = b"", b""
    for each in programs:
        processor = struct.unpack_from("<I", each, 4)[0]
        table += struct.pack(">IIIII", processor, 0, page + len(bodies), len(each), 12)
        bodies += each.ljust((len(each) + page - 1) // page * page, b"\0")
    return (struct.pack(">II", 0xCAFEBABE, len(programs)) + table).ljust(page, b"\0") + bodies


CORE = "@rpath/QtCore.framework/Versions/A/QtCore"
SVG = "@rpath/QtSvg.framework/Versions/A/QtSvg"
SYSTEM = "/usr/lib/libSystem.B.dylib"


class MacBundleTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.bundle = Path(folder.name) / "Some.app"
        self.put("MacOS/Some", program([CORE, SYSTEM], ["@executable_path/../Frameworks"]))
        self.put("MacOS/helper", program([SYSTEM]))
        self.framework("QtCore", program([SYSTEM]))
        self.framework("QtSvg", program([CORE]))
        self.put("PlugIns/platforms/libcocoa.dylib", program([CORE, SYSTEM]))
        self.put("PlugIns/styles/libmac.dylib", program([CORE]))
        self.put("PlugIns/imageformats/libsvg.dylib", program([SVG]))
        self.put("Resources/Some.icns", b"icns, and no program, however long it may be")
        self.put("Info.plist", plistlib.dumps({"LSMinimumSystemVersion": "13.3", "Other": "kept"}))

    def put(self, place, data):
        file = self.bundle / "Contents" / place
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(data)

    def framework(self, name, data):
        self.put(f"Frameworks/{name}.framework/Versions/A/{name}", data)
        current = self.bundle / f"Contents/Frameworks/{name}.framework/{name}"
        current.symlink_to(f"Versions/A/{name}")

    def has(self, place):
        return (self.bundle / "Contents" / place).exists()

    def run_script(self, command):
        return subprocess.run([SCRIPT, command, self.bundle], capture_output=True, text=True)

    def assert_fault(self, *words):
        result = self.run_script("check")
        self.assertNotEqual(result.returncode, 0)
        for word in words:
            self.assertIn(word, result.stderr)

    def test_a_whole_bundle_passes(self):
        result = self.run_script("check")

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn("7 programs and libraries", result.stdout)

    def test_pruning_keeps_the_platform_and_the_styles_and_what_they_load(self):
        self.assertEqual(self.run_script("prune").returncode, 0)

        for place in (
            "PlugIns/platforms/libcocoa.dylib",
            "PlugIns/styles/libmac.dylib",
            "Frameworks/QtCore.framework/QtCore",
            "MacOS/helper",
            "Resources/Some.icns",
        ):
            self.assertTrue(self.has(place), place)
        self.assertFalse(self.has("PlugIns/imageformats"))
        self.assertFalse(self.has("Frameworks/QtSvg.framework"), "only that plug-in wanted it")
        self.assertEqual(self.run_script("check").returncode, 0)

    def test_pruning_keeps_what_a_framework_wants(self):
        self.framework("QtGui", program([SVG]))
        self.put("MacOS/Some", program([CORE, "@rpath/QtGui.framework/QtGui"],
                                       ["@loader_path/../Frameworks"]))

        self.run_script("prune")

        self.assertTrue(self.has("Frameworks/QtSvg.framework"))

    def test_a_library_outside_the_bundle_is_a_fault(self):
        self.put("PlugIns/styles/libmac.dylib", program(["/opt/homebrew/lib/libz.dylib"]))

        self.assert_fault("libmac.dylib", "/opt/homebrew/lib/libz.dylib")

    def test_a_weakly_loaded_library_outside_the_bundle_is_a_fault_too(self):
        self.put("MacOS/helper", program(weak=["/usr/local/lib/libz.dylib"]))

        self.assert_fault("MacOS/helper", "/usr/local/lib/libz.dylib")

    def test_an_rpath_that_leads_to_no_file_is_a_fault(self):
        self.put("MacOS/helper", program(["@rpath/libgone.dylib"]))

        self.assert_fault("MacOS/helper", "@rpath/libgone.dylib")

    def test_an_rpath_outside_the_bundle_is_a_fault(self):
        self.put("MacOS/helper", program(rpaths=["/opt/homebrew/lib"]))

        self.assert_fault("MacOS/helper", "/opt/homebrew/lib")

    def test_a_link_that_leads_out_of_the_bundle_is_a_fault(self):
        outside = self.bundle.parent / "libout.dylib"
        outside.write_bytes(program())
        (self.bundle / "Contents/Frameworks/libout.dylib").symlink_to(outside)
        self.put("MacOS/helper", program(["@executable_path/../Frameworks/libout.dylib"]))

        self.assert_fault("libout.dylib")

    def test_every_program_in_a_universal_file_is_looked_at(self):
        self.put("MacOS/helper", universal(program([SYSTEM], processor=X86_64),
                                        program(["@loader_path/libgone"])))

        self.assert_fault("@loader_path/libgone")

    def test_a_bundle_without_a_program_is_a_fault(self):
        for file in self.bundle.rglob("*"):
            if file.is_file() and not file.is_symlink():
                file.write_bytes(b"")

        self.assert_fault("no program")

    def test_the_minimum_is_what_the_newest_part_needs(self):
        self.framework_needs((14, 2))

        self.assertEqual(self.run_script("minimum").stdout, "14.2\n")

        properties = plistlib.loads((self.bundle / "Contents/Info.plist").read_bytes())
        self.assertEqual(properties, {"LSMinimumSystemVersion": "14.2", "Other": "kept"})

    def test_the_minimum_is_never_older_than_what_the_application_claims(self):
        for file in self.bundle.rglob("*"):
            if file.is_file() and not file.is_symlink() and file.suffix not in (".plist", ".icns"):
                file.write_bytes(program(minimum=(11, 0)))

        self.assertEqual(self.run_script("minimum").stdout, "13.3\n")

    def framework_needs(self, minimum):
        self.put("Frameworks/QtCore.framework/Versions/A/QtCore", program([SYSTEM], (), minimum))


if __name__ == "__main__":
    unittest.main()
