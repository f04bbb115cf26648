"""The verdict over rounds that are made up."""

import unittest

import verdict

STEADY = {"rss": 50 << 20, "pss": 40 << 20, "heap": 20 << 20, "mappings": 100, "descriptors": 5, "threads": 1,
          "files": 0, "digest": "0123"}


def run_of(count, **changes):
    """Rounds of which each column named is what its function says of the round's number."""
    rounds = [{"round": i, "seconds": float(i), **STEADY, **{name: of(i) for name, of in changes.items()}}
              for i in range(count)]
    return verdict.Run(rounds, {})


class Verdict(unittest.TestCase):
    def test_steady_rounds_have_no_fault(self):
        self.assertEqual(verdict.faults(run_of(40)), [])

    def test_growth_while_warming_up_is_no_fault(self):
        self.assertEqual(verdict.faults(run_of(40, heap=lambda i: min(i, 9) << 20)), [])

    def test_a_few_bytes_of_each_round_are_told(self):
        found = verdict.faults(run_of(400, heap=lambda i: (20 << 20) + 500 * i))
        self.assertEqual(len(found), 1)
        self.assertIn("heap has grown", found[0])

    def test_one_descriptor_is_told(self):
        self.assertIn("descriptors", verdict.faults(run_of(40, descriptors=lambda i: 5 + i // 30))[0])

    def test_resident_memory_may_sway(self):
        self.assertEqual(verdict.faults(run_of(40, rss=lambda i: (50 << 20) + (i % 7 << 16))), [])

    def test_another_result_is_told(self):
        self.assertIn("results", verdict.faults(run_of(40, digest=lambda i: str(i == 7)))[0])

    def test_too_few_rounds_prove_nothing(self):
        self.assertIn("too few", verdict.faults(run_of(3))[0])

    def test_the_table_is_read(self):
        run = verdict.read(["round\tseconds\trss\tdigest\n", "1\t2.5\t300\t00ff\n", "# left\t264\n"])
        self.assertEqual(run.rounds, [{"round": 1, "seconds": 2.5, "rss": 300, "digest": "00ff"}])
        self.assertEqual(run.notes, {"left": 264})


if __name__ == "__main__":
    unittest.main()
