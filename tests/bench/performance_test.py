"""What scripts/bench makes of raw results. Nothing is measured here."""

import pathlib
import sys
import tempfile
import unittest
import zipfile
from unittest import mock

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "bench/performance"))

import commands
import documents
import google
import records
import summary


def result(name, *seconds, **more):
    return {"name": name, "seconds": list(seconds), **more}


def found(*results):
    return summary.measurements(results)


class Names(unittest.TestCase):
    def test_a_case_that_ends_in_a_number_has_a_size_and_a_series(self):
        one = found(result("text/pandoc/html/4", 1.0))[0]
        self.assertEqual((one.operation, one.candidate, one.series, one.size), ("text", "pandoc", "html", 4.0))

    def test_a_case_without_a_number_has_no_size(self):
        self.assertIsNone(found(result("text/pandoc/html/26 documents", 1.0))[0].size)

    def test_what_the_library_adds_to_a_name_is_left_out(self):
        self.assertEqual(google.plain_name("match/plain/classes:100/iterations:3/real_time"), "match/plain/100")


class Figures(unittest.TestCase):
    def test_the_median_of_an_even_number_of_runs_lies_between_the_middle_ones(self):
        self.assertEqual(found(result("a/morvaai/b", 1.0, 4.0, 2.0, 9.0))[0].seconds, 3.0)

    def test_spread_is_the_range_as_a_share_of_the_median(self):
        self.assertEqual(found(result("a/morvaai/b", 1.0, 2.0, 4.0))[0].spread, 1.5)

    def test_memory_is_the_highest_that_was_seen_in_any_way(self):
        one = found(result("a/morvaai/b", 1.0, peak_bytes=[5, 7], proportional_bytes=[9, 6]))[0]
        self.assertEqual(one.memory, 9)

    def test_growth_is_the_exponent_of_a_power(self):
        self.assertAlmostEqual(summary.growth([(x, 3.0 * x**1.5) for x in (250.0, 1000.0, 8000.0)]), 1.5)

    def test_two_points_tell_no_growth(self):
        self.assertIsNone(summary.growth([(1.0, 1.0), (2.0, 4.0)]))

    def test_figures_have_three_digits_that_count(self):
        self.assertEqual([summary.in_seconds(value) for value in (12.34, 0.01234, 1.2344e-6, 3e-9)],
                         ["12.3 s", "12.3 ms", "1.23 µs", "3.00 ns"])


class Aims(unittest.TestCase):
    def setUp(self):
        self.found = found(result("a/morvaai/10", 1.0, bytes=50), result("a/plain/10", 30.0),
                           result("a/morvaai/20", 2.0, bytes=200), result("a/plain/20", 40.0))

    def judge(self, **aim):
        return summary.judge({"text": "aim", "of": ["a/*"], **aim}, self.found)

    def test_a_ratio_is_judged_by_its_lowest(self):
        judged = self.judge(than=["plain"], times=25.0)
        self.assertEqual((judged.reached, judged.measured), (False, "20.0 × (plain, a 20), at best 30.0 ×"))

    def test_a_limit_is_judged_by_the_highest(self):
        self.assertTrue(self.judge(at_most_seconds=2.0).reached)
        self.assertFalse(self.judge(at_most_seconds=1.5).reached)

    def test_a_rate_is_judged_by_the_lowest(self):
        self.assertFalse(self.judge(at_least_rate=60.0).reached)

    def test_alike_compares_the_slowest_rate_with_the_fastest(self):
        self.assertEqual(self.judge(alike=0.9).measured, "0.50")

    def test_what_was_not_measured_is_neither_reached_nor_missed(self):
        self.assertIsNone(self.judge(than=["sklearn"], times=1.0).reached)


class Turns(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = pathlib.Path(self.folder.name) / "results.jsonl"
        self.records = records.Records(self.path)
        self.addCleanup(self.records.out.close)
        for module in "commands", "records":
            silent = mock.patch(f"{module}.progress")
            silent.start()
            self.addCleanup(silent.stop)

    def test_candidates_alternate_and_one_that_took_enough_rests(self):
        order = []

        def work(name, seconds):
            order.append(name)
            return commands.Run(seconds, seconds, 1)

        commands.in_turn({"a": lambda: work("a", 1.0), "b": lambda: work("b", 9.0)}, 3, 5.0, self.records, "o", "c")
        self.assertEqual(order, ["a", "b", "a", "a"])

    def test_one_that_fails_is_told_and_the_others_go_on(self):
        def fail():
            raise commands.Failed("no such tool")

        commands.in_turn({"a": fail, "b": lambda: commands.Run(1.0, 1.0, 1)}, 2, 5.0, self.records, "o", "c")
        _, results = records.read(self.path)
        self.assertEqual(results[0], {"name": "o/a/c", "missing": "no such tool"})
        self.assertEqual(results[1]["seconds"], [1.0, 1.0])


class Documents(unittest.TestCase):
    def test_the_same_paragraphs_give_the_same_bytes(self):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("docx", "xlsx", "pptx"):
                paths = [pathlib.Path(folder) / f"{number}.{name}" for number in (1, 2)]
                for path in paths:
                    documents.write(path, [["数据 & more. ", "系统。"], ["end"]])
                self.assertEqual(paths[0].read_bytes(), paths[1].read_bytes())
                self.assertIsNone(zipfile.ZipFile(paths[0]).testzip())


if __name__ == "__main__":
    unittest.main()
