"""The example programs on the sample documents. Usage: examples_test.py DIRECTORY_OF_EXAMPLES SAMPLES"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

EXAMPLES = pathlib.Path(sys.argv[1])
SAMPLES = pathlib.Path(sys.argv[2])


def run(name, *arguments, **options):
    """What an example prints, line by line."""
    done = subprocess.run([EXAMPLES / name, *arguments], capture_output=True, text=True, check=True, **options)
    return done.stdout.splitlines()


class Fingerprint(unittest.TestCase):
    def test_versions_are_alike_and_others_are_not(self):
        names = ["harbour-report.docx", "harbour-report-revised.docx", "budget.xlsx"]
        lines = run("fingerprint", *(SAMPLES / name for name in names))
        first = lines[0].split()
        self.assertEqual(first[0], "100.0")
        self.assertGreater(float(first[1]), 90)
        self.assertLess(float(first[2]), 70)
        self.assertTrue(first[3].endswith(names[0]))


class Boxes(unittest.TestCase):
    """Learning, and matching with what was learnt."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.environment = os.environ | {"MORVA_BOX_PATH": folder.name}

    def test_documents_get_the_class_that_they_were_not_learnt_from(self):
        learnt = run("learn", SAMPLES / "corpus/learn", "kinds", env=self.environment)
        self.assertIn("invoices: 14 files", "\n".join(learnt))

        files = [SAMPLES / "corpus/decide/invoices/invoices-01.odt", SAMPLES / "corpus/decide/invoices/no-such-file"]
        answers = run("match", "kinds", env=self.environment, input="".join(f"{file}\n" for file in files))
        self.assertEqual(answers, [f"{files[0]}: invoices", f"{files[1]}: (cannot be read)"])


class LogSink(unittest.TestCase):
    def test_records_reach_the_logger_of_the_host_under_its_own_names_of_levels(self):
        with tempfile.TemporaryDirectory() as folder:
            file = SAMPLES / "budget.xlsx"
            lines = run("log_sink", file, env=os.environ | {"MORVA_RUN_PATH": folder})
        self.assertRegex(lines[0], r"^info: parse file : .*budget\.xlsx \[HClusterFileParser:\d+\]$")
        self.assertRegex(lines[1], r"^error: pointn size:2 \[HFileDNA:\d+\]$")
        self.assertEqual(len(lines), 2)


class OwnHostLibrary(unittest.TestCase):
    def test_the_words_are_those_of_the_own_segmenter(self):
        lines = run("own_host_library/own_host_library", SAMPLES / "软件开发合同.docx")
        self.assertEqual(lines[0], "1  合同")

    def test_the_loader_takes_the_own_library_for_the_one_of_the_host_kit(self):
        program = EXAMPLES / "own_host_library/own_host_library"
        loaded = subprocess.run(["ldd", program], capture_output=True, text=True, check=True).stdout
        segmenters = [line.split()[2] for line in loaded.splitlines() if "libmorvajieba" in line]
        self.assertEqual([pathlib.Path(path).parent for path in segmenters], [program.parent])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
