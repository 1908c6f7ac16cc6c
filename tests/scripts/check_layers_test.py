#!/usr/bin/env python3
"""Plants faults in small trees of sources and lets scripts/check-layers find each."""

import pathlib
import subprocess
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]


class CheckLayersTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name)
        # Without a fault, so that each test's own is the only one.
        self.write("platform/DisplayID.h", "#pragma once", "#include <cstdint>")
        self.write("controller/Refresh.h", "#pragma once", "#include <optional>")
        self.write("ui/View.cpp", "#include <QWidget>", '#include "controller/Refresh.h"')

    def write(self, path, *lines):
        file = self.tree / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text("\n".join(lines) + "\n", encoding="utf-8")

    def check(self, tree=None):
        return subprocess.run([PROJECT / "scripts/check-layers", tree or self.tree],
                              capture_output=True, text=True, check=False)

    def assert_finds(self, *findings):
        result = self.check()

        self.assertEqual(result.stdout.splitlines(), list(findings))
        self.assertEqual(result.returncode, 1)

    def test_a_tree_without_a_fault_passes(self):
        result = self.check()

        self.assertEqual((result.stdout, result.returncode), ("", 0))
        self.assertIn("4 includes of 3 files", result.stderr)

    def test_an_empty_tree_fails(self):
        with tempfile.TemporaryDirectory() as empty:
            self.assertEqual(self.check(empty).returncode, 1)

    def test_an_upward_include_is_found(self):
        self.write("platform/Upward.h", "#pragma once", "", '#include "controller/Refresh.h"')

        self.assert_finds(
            "platform/Upward.h:3: platform may not include controller/Refresh.h of controller")

    def test_an_upward_include_in_angle_brackets_is_found(self):
        self.write("platform/Upward.h", "#  include <controller/Refresh.h>")

        self.assert_finds(
            "platform/Upward.h:1: platform may not include controller/Refresh.h of controller")

    def test_only_the_mac_may_include_its_private_calls(self):
        self.write("display/control/DisplayControl.h", "#include <dlfcn.h>")
        self.write("platform/macos/Server.cpp", '#include "display/control/DisplayControl.h"')
        self.write("platform/x11/Server.cpp", '#include "display/control/DisplayControl.h"')

        self.assert_finds("platform/x11/Server.cpp:1: platform/x11 may not include "
                          "display/control/DisplayControl.h of display/control")

    def test_a_window_server_is_entered_by_its_own_room(self):
        self.write("platform/x11/crtc/Plan.h", '#include "platform/DisplayID.h"')
        self.write("platform/x11/Server.h", '#include "platform/x11/crtc/Plan.h"')
        self.write("app/main.cpp", '#include "platform/x11/Server.h"')
        self.write("app/System.cpp", '#include "platform/x11/crtc/Plan.h"')

        self.assert_finds("app/System.cpp:1: app may not include platform/x11/crtc/Plan.h "
                          "of platform/x11/crtc")

    def test_a_circle_of_files_in_one_room_is_found(self):
        self.write("registry/One.h", '#include "registry/Two.h"')
        self.write("registry/Two.h", "#include <string>", '#include "registry/Three.h"')
        self.write("registry/Three.h", '#include "registry/One.h"')

        self.assert_finds("files include each other in a circle:",
                          "  registry/One.h:1: registry/One.h includes registry/Two.h",
                          "  registry/Two.h:2: registry/Two.h includes registry/Three.h",
                          "  registry/Three.h:1: registry/Three.h includes registry/One.h")

    def test_a_circle_of_rooms_is_found(self):
        self.write("display/Device.h", '#include "registry/Registry.h"')
        self.write("display/Errors.h")
        self.write("registry/Registry.h", '#include "display/Errors.h"')

        self.assert_finds("registry/Registry.h:1: registry may not include display/Errors.h "
                          "of display",
                          "rooms include each other in a circle:",
                          "  display/Device.h:1: display includes registry",
                          "  registry/Registry.h:1: registry includes display")

    def test_a_header_of_the_system_in_the_core_is_found(self):
        for room in ("display", "registry", "controller", "platform", "platform/layout"):
            with self.subTest(room):
                self.write(f"{room}/Fault.cpp", "#include <unistd.h>")

                self.assert_finds(f"{room}/Fault.cpp:1: {room} may not include <unistd.h>")

                (self.tree / room / "Fault.cpp").unlink()

    def test_a_header_of_the_toolkit_is_found_where_it_has_no_place(self):
        for header in ("QString", "QtCore/QString", "qglobal.h"):
            for room in ("controller", "platform/x11", "watchdog/program"):
                with self.subTest(f"{header} in {room}"):
                    self.write(f"{room}/Fault.cpp", f"#include <{header}>")

                    self.assert_finds(f"{room}/Fault.cpp:1: {room} may not include <{header}>")

                    (self.tree / room / "Fault.cpp").unlink()

    def test_a_source_in_an_unknown_room_is_found(self):
        self.write("platform/wayland/Server.cpp")
        self.write("Stray.cpp")

        self.assert_finds("Stray.cpp:1: the root is not a room in LAYERS",
                          "platform/wayland/Server.cpp:1: platform/wayland is not a room in LAYERS")

    def test_an_include_of_the_tests_is_found(self):
        self.write("tests/simulated/Server.h")
        self.write("controller/Fault.cpp", '#include "tests/simulated/Server.h"')

        self.assert_finds("controller/Fault.cpp:1: controller may not include "
                          "tests/simulated/Server.h of tests/simulated")

    def test_an_include_that_is_not_written_from_the_root_is_found(self):
        self.write("controller/Fault.cpp", '#include "Refresh.h"')

        self.assert_finds("controller/Fault.cpp:1: there is no Refresh.h "
                          "(includes are written from the project's root)")

    def test_an_include_that_cannot_be_read_is_found(self):
        self.write("controller/Fault.cpp", "#include HEADER")

        self.assert_finds("controller/Fault.cpp:1: cannot tell what HEADER includes")

    def test_tests_and_builds_are_passed_over(self):
        self.write("tests/ui/Test.cpp", "#include <unistd.h>")
        self.write("build/release/Made.cpp", "#include <unistd.h>")
        self.write("other-build/CMakeCache.txt")
        self.write("other-build/Made.cpp", "#include <unistd.h>")

        self.assertEqual(self.check().returncode, 0)


if __name__ == "__main__":
    unittest.main()
