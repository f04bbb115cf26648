"""The quickest part of what scripts/fault-injection goes through.

Usage: injection_test.py PROGRAM PRELOAD
"""

import pathlib
import sys
import unittest

import injection

FAULTS = [fault for fault in injection.FAULTS if fault.name in ("killed before", "ENOSPC", "short write")]


class Faults(unittest.TestCase):
    def go_through(self, kind, faults):
        with injection.working_place() as place:
            figures = injection.Figures()
            figures.go_through(injection.scenario_of(kind, PROGRAM, place), faults)
        self.assertEqual(figures.broken, [])
        self.assertGreater(sum(figures.runs.values()), figures.calls)

    def test_the_first_box(self):
        self.go_through(injection.AddFirst, FAULTS)

    def test_a_box_over_another(self):
        self.go_through(injection.AddOver, FAULTS)

    def test_a_box_that_is_removed(self):
        self.go_through(injection.Remove, FAULTS)


class Driver(unittest.TestCase):
    """What it says must be broken is found to be."""

    def test_a_fault_that_is_not_told_of(self):
        class Silent(injection.AddFirst):
            def arguments(self):
                return ["version"]

        with injection.working_place() as place:
            with self.assertRaises(injection.Broken):
                injection.scenario_of(Silent, PROGRAM, place).count()

    def test_the_calls_are_those_of_a_box_and_an_index(self):
        with injection.working_place() as place:
            calls = injection.scenario_of(injection.AddFirst, PROGRAM, place).count()
        renamed = [pathlib.Path(path).name for operation, path in calls if operation == "rename"]
        self.assertEqual(renamed, ["ships.box", "box.ini"])


if __name__ == "__main__":
    PROGRAM = injection.Program(*(pathlib.Path(path).resolve() for path in sys.argv[1:3]))
    unittest.main(argv=sys.argv[:1])
