"""What scripts/growth makes of raw results, and what it begins. Nothing is measured here."""

import json
import pathlib
import sys
import tempfile
import unittest

BENCH = pathlib.Path(__file__).resolve().parents[2] / "bench"
sys.path[:0] = [str(BENCH / "growth"), str(BENCH / "performance")]

import outlook
import program
import schedule


class Expected(unittest.TestCase):
    def test_nothing_is_expected_where_nothing_is_known(self):
        self.assertEqual(schedule.expected([], 1000), 0.0)

    def test_growth_is_that_of_the_last_two_sizes(self):
        self.assertAlmostEqual(schedule.expected([(1000, 1.0), (2000, 1.0), (4000, 4.0)], 8000), 16.0)

    def test_growth_is_bounded_where_two_sizes_tell_too_much(self):
        self.assertAlmostEqual(schedule.expected([(1000, 1.0), (2000, 100.0)], 4000), 100.0 * 2**2.5)


class Schedule(unittest.TestCase):
    def setUp(self):
        self.now = 0.0
        self.schedule = schedule.Schedule(limit=100.0, budget=1000.0, clock=lambda: self.now)

    def test_what_will_take_longer_than_the_limit_is_refused(self):
        self.schedule.took("a", 1000, 60.0)
        self.assertIn("above the limit", self.schedule.refuses("a", 2000))

    def test_what_is_not_known_is_begun(self):
        self.assertEqual(self.schedule.refuses("a", 2000), "")

    def test_what_would_not_be_through_in_time_is_refused(self):
        self.schedule.took("a", 1000, 20.0)
        self.now = 990.0
        self.assertIn("10 s left", self.schedule.refuses("a", 2000))


class Outlook(unittest.TestCase):
    def test_the_last_octaves_reach_down_to_an_eighth(self):
        points = [(size, 1.0) for size in (1000, 20000, 50000, 100000, 200000)]
        self.assertEqual([size for size, _ in outlook.last_octaves(points)], [20000, 50000, 100000, 200000])

    def test_a_power_goes_through_the_greatest_size(self):
        power = outlook.Power.of([(1000.0, 1.0), (2000.0, 4.0), (4000.0, 16.0)])
        self.assertAlmostEqual(power.at(40000), 1600.0)

    def test_time_is_carried_on_in_proportion_at_least(self):
        power = outlook.Power.of([(1000.0, 5.0), (2000.0, 5.0), (4000.0, 5.0)])
        self.assertAlmostEqual(power.at(8000), 10.0)

    def test_memory_keeps_its_constant_share(self):
        line = outlook.Line.of([(size, 1e6 + 10.0 * size) for size in (1000.0, 2000.0, 4000.0)])
        self.assertAlmostEqual(line.at(1e6), 1.1e7)

    def test_hours_are_in_the_unit_that_suits(self):
        self.assertEqual([outlook.in_hours(seconds) for seconds in (30, 3600 * 5, 3600 * 24 * 400)],
                         ["30.0 s", "5.00 h", "400 days"])


class LastWords(unittest.TestCase):
    def test_those_of_a_failure_are_no_dashes(self):
        self.assertEqual(program.last_words("morvaai: no memory\n-----\n"), "morvaai: no memory")

    def test_there_may_be_none(self):
        self.assertEqual(program.last_words("-----"), "")


def measured(name, size, seconds, **more):
    return {"name": f"{name}/{size}", "seconds": [seconds], "cpu_seconds": [seconds], "peak_bytes": [size * 1000],
            **more}


class Page(unittest.TestCase):
    """The page itself is drawn where the plots can be."""

    def setUp(self):
        try:
            import growth_page
        except ImportError as missing:
            self.skipTest(str(missing))
        self.page = growth_page
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def rendered(self, results):
        raw = self.folder / "results.jsonl"
        raw.write_text("".join(json.dumps(result) + "\n" for result in results), encoding="utf-8")
        self.page.render(raw, self.folder / "growth.md")
        return (self.folder / "growth.md").read_text(encoding="utf-8"), raw

    def test_a_line_has_each_size_and_both_exponents(self):
        text, _ = self.rendered(measured("canopy/morvaai", size, (size / 1000) ** 2) for size in (1000, 2000, 4000))
        self.assertIn("| canopy, T2 by mean distance | 1.00 s | 4.00 s | 16.0 s | 2.00 | 2.00 |", text)

    def test_what_was_left_out_is_told(self):
        text, _ = self.rendered([{"name": "eps/plain/5000", "missing": "/home/me/bin/morvaai ended with 1"}])
        self.assertIn("- eps/plain/5000: morvaai ended with 1", text)

    def test_results_that_differ_are_told(self):
        text, raw = self.rendered([measured("eps/morvaai", 1000, 1.0, result="a"),
                                   measured("eps/plain", 1000, 9.0, result="b")])
        self.assertIn("| eps | morvaai, plain | 1,000 | **no** |", text)
        self.assertFalse(self.page.all_are_same(raw))

    def test_what_is_carried_on_follows_the_power(self):
        text, _ = self.rendered(measured("canopy/morvaai", size, size / 1000) for size in (50000, 100000, 200000))
        self.assertIn("| Points: canopy, T2 by mean distance | 200,000 | 1.00 | 16.7 min | 2.78 h | 27.8 h |", text)

    def test_a_machine_has_room_for_what_its_memory_holds(self):
        results = [measured("learn-kmeans-20/morvaai", size, size / 1000) for size in (50000, 100000, 200000)]
        for result in results:
            result["peak_bytes"] = [result["peak_bytes"][0] * 10]
        text, _ = self.rendered(results)
        self.assertIn("learn, K-means, k 20: processes that a machine has room for | 25 | 2 | none |", text)
        self.assertIn("learn, K-means, k 20: if all divides among them | 40.0 s | 20.8 min | - |", text)

    def test_what_has_several_processes_is_shown_by_the_wall_clock_too(self):
        text, _ = self.rendered(measured(f"extract/morvaai -j {jobs}", 1000, 2.0 / jobs) for jobs in (1, 2))
        self.assertIn("| Wall time | 1,000 |", text)
        self.assertIn("| `extract`, -j 2 | 1.00 s |", text)

    def test_bytes_follow_what_was_counted(self):
        text, _ = self.rendered({"name": f"corpus/points/{size}", "words": 100 * size, "neighbours_given": 0.5}
                                for size in (50000, 100000, 200000))
        self.assertIn("up to 41 bytes a word of a document | 4.10 GB | 41.0 GB | 410 GB |", text)

    def test_neighbours_are_kept_from_both_sides(self):
        text, _ = self.rendered({"name": f"corpus/points/{size}", "neighbours_given": 0.5}
                                for size in (50000, 100000, 200000))
        self.assertIn("at most a bit for each pair of documents | 26.0 MB | 260 MB | 2.60 GB |", text)

    def test_it_tells_which_sizes_were_measured(self):
        text, _ = self.rendered([measured("eps/morvaai", 1000, 1.0), measured("eps/morvaai", 200000, 9.0),
                                 measured("similar/morvaai", 2000, 1.0)])
        self.assertIn("points of 1,000 to 200,000 documents, files and shards of 2,000 to 2,000 documents.", text)


if __name__ == "__main__":
    unittest.main()
