#!/usr/bin/env python3
"""Gives scripts/count-start what callgrind writes down, and counts to compare with."""

import importlib.machinery
import importlib.util
import pathlib
import sys
import unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]

sys.dont_write_bytecode = True
LOADER = importlib.machinery.SourceFileLoader("count_start", str(PROJECT / "scripts/count-start"))
SPEC = importlib.util.spec_from_loader("count_start", LOADER)
count_start = importlib.util.module_from_spec(SPEC)
LOADER.exec_module(count_start)

DUMP = """# callgrind format
version: 1
creator: callgrind
part: 1
positions: line
events: Ir
summary: 1000107

ob=(1) /usr/lib/x86_64-linux-gnu/ld-linux-x86-64.so.2
fl=(1) ./elf/dl-lookup.c
fn=(1) do_lookup_x
848 500000
fe=(2) ./elf/dl-new-hash.h
+2 100000
cob=(2) /any/build/image/tavrel
cfi=(3) ???
cfn=(2) main
calls=1 0
* 400107

ob=(2)
fl=(3)
fn=(3) tavrel::Backdrop::image(QSize const&, double, QRect const&) const
0 300000
cob=(3) /usr/lib/x86_64-linux-gnu/libQt6Gui.so.6.4.2
cfn=(4) QFont::QFont()
calls=3 0
0 99000

ob=(3)
fn=(4)
0 99000

ob=(4) /usr/lib/x86_64-linux-gnu/libexpat.so.1.8.10
fn=(5) XML_Parse
-5 1000

ob=(5) /usr/lib/x86_64-linux-gnu/libm.so.6
fn=(6) sine
0 100

ob=(6) ???
fn=(7) 0x0000000000001000
0 7

totals: 1000107
"""


class CountStartTest(unittest.TestCase):
    def test_each_function_counts_for_the_area_of_its_library(self):
        sums = count_start.sums(DUMP)

        self.assertEqual(sums["dynamic loader"], 600000)
        self.assertEqual(sums["own code"], 300000)
        self.assertEqual(sums["toolkit"], 99000)
        self.assertEqual(sums["fonts"], 1000)
        self.assertEqual(sums["C and C++ library"], 100)
        self.assertEqual(sums["all else"], 7)
        self.assertEqual(sums["message bus"], 0)

    def test_nothing_is_counted_twice_or_left_out(self):
        self.assertEqual(count_start.sums(DUMP)["sum"], 1000107)

    def test_what_is_written_is_read_again(self):
        counts = count_start.sums(DUMP)

        self.assertEqual(count_start.read(count_start.written(counts)), counts)

    def test_the_file_that_is_kept_names_every_area(self):
        kept = count_start.read(count_start.KEPT.read_text())

        self.assertEqual(list(kept), [*count_start.AREAS, "all else", "sum"])
        self.assertEqual(kept["sum"] > 0, True)

    def test_a_comparison_says_how_far_each_area_has_moved(self):
        lines = count_start.comparison({"toolkit": 200, "sum": 200},
                                       {"toolkit": 150, "fonts": 50, "sum": 200}).splitlines()

        self.assertEqual(lines[0].split(), ["150", "toolkit", "-50", "-25.0", "%"])
        self.assertEqual(lines[1].split(), ["50", "fonts", "+50", "new"])
        self.assertEqual(lines[2].split(), ["200", "sum", "+0", "+0.0", "%"])

    def test_the_median_of_the_runs_counts_and_how_far_they_are_apart_is_told(self):
        runs = [{"sum": 10}, {"sum": 90}, {"sum": 20}]

        self.assertEqual(count_start.medians(runs), {"sum": 20})
        self.assertEqual(count_start.spread(runs), 80)


if __name__ == "__main__":
    unittest.main()
