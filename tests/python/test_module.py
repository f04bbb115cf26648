"""The Python module over the library: what it gives, what it keeps alive, what it raises."""

import doctest
import gc
import importlib
import itertools
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import numpy as np

import morvaai

SAMPLES = pathlib.Path(__file__).resolve().parents[2] / "samples"
PROGRAM = os.environ["MORVA_PROGRAM"]
REPORT = SAMPLES / "harbour-report.docx"


def program(*arguments, **environment):
    """What the program prints as JSON, an object a line."""
    done = subprocess.run([PROGRAM, *map(str, arguments), "--json"], stdout=subprocess.PIPE, check=True,
                          env={**os.environ, **environment})
    return [json.loads(line) for line in done.stdout.splitlines()]


class ReadTest(unittest.TestCase):
    def test_words_are_those_of_the_program(self):
        (expected,) = program("features", REPORT, "-n", "100")
        document = morvaai.read(REPORT)
        self.assertEqual([each["word"] for each in expected["words"]], document.words)
        self.assertEqual([each["weight"] for each in expected["words"]], document.weights.tolist())
        self.assertEqual([each["count"] for each in expected["words"]], document.counts.tolist())
        self.assertEqual([each["tag"] for each in expected["words"]], document.tags)

    def test_fingerprints_are_those_of_the_program(self):
        (narrow,), (wide,) = program("dna", REPORT), program("dna", REPORT, "--wide")
        document = morvaai.read(REPORT, wide=True)
        self.assertEqual((narrow["dna"], wide["dna"]), (document.dna, document.wide_dna))
        self.assertEqual(narrow["character_count"], document.covered)

    def test_texts_are_those_of_the_program(self):
        (expected,) = program("text", SAMPLES / "launch.pptx", "--kind", "all")
        texts = morvaai.read(SAMPLES / "launch.pptx", text=True).texts
        self.assertEqual({kind: text for kind, text in expected["text"].items() if text}, texts)

    def test_a_text_may_hold_zeros(self):
        self.assertEqual("a\0b", morvaai.read_text("a\0b").text)

    def test_a_lone_surrogate_is_replaced(self):
        self.assertEqual("a?", morvaai.read_text("a\udc80").text)

    def test_all_words_are_more_than_a_hundred(self):
        text = " ".join(f"word{i}" for i in range(200))
        self.assertEqual(100, len(morvaai.read_text(text).words))
        self.assertEqual(200, len(morvaai.read_text(text, words=None).words))

    def test_a_path_that_is_no_unicode_is_found(self):
        with tempfile.TemporaryDirectory() as directory:
            path = os.path.join(os.fsencode(directory), b"\xff.txt")
            with open(path, "wb") as file:
                file.write(b"ships in the harbour")
            self.assertEqual({"ships", "harbour"}, set(morvaai.read(path).words))

    def test_a_missing_file_is_not_found(self):
        with self.assertRaises(FileNotFoundError) as raised:
            morvaai.read("/nowhere/a.docx")
        self.assertEqual("/nowhere/a.docx", raised.exception.filename)

    def test_a_damaged_file_tells_why_and_what_was_found(self):
        with tempfile.TemporaryDirectory() as directory:
            path = pathlib.Path(directory, "half.docx")
            path.write_bytes(REPORT.read_bytes()[:REPORT.stat().st_size // 2])
            with self.assertRaisesRegex(morvaai.DocumentError, "half.docx': damaged: ") as raised:
                morvaai.read(path)
            self.assertEqual("damaged", raised.exception.document.outcome)

    def test_a_failure_names_its_file_so_that_it_can_be_shown(self):
        with tempfile.TemporaryDirectory() as directory:
            path = os.path.join(os.fsencode(directory), b"\xff\x1b[31m.docx")
            with open(path, "wb") as file:
                file.write(REPORT.read_bytes()[:2000])
            with self.assertRaises(morvaai.DocumentError) as raised:
                morvaai.read(path)
            self.assertTrue(str(raised.exception).isprintable())

    def test_what_was_not_asked_for_is_refused(self):
        with self.assertRaises(morvaai.NotAskedError):
            morvaai.read(REPORT, dna=False).dna
        with self.assertRaises(morvaai.NotAskedError):
            morvaai.read(REPORT, words=0).words

    def test_wrong_arguments_are_refused(self):
        for call in (lambda: morvaai.read("a\0b"), lambda: morvaai.read(REPORT, words=-1),
                     lambda: morvaai.from_words(["a"], [1.0, 2.0]), lambda: morvaai.from_words([""], [1.0]),
                     lambda: morvaai.similarity("ff", "FF"), lambda: morvaai.dna_bits("G")):
            with self.assertRaises(ValueError):
                call()


class ArrayTest(unittest.TestCase):
    def test_weights_are_not_copied_and_outlive_their_document(self):
        document = morvaai.read(REPORT)
        weights, again = document.weights, document.weights
        expected = weights.tolist()
        self.assertTrue(np.shares_memory(weights, again))
        self.assertFalse(weights.flags.writeable)
        del document, again
        gc.collect()
        morvaai.read(SAMPLES / "travel-policy.odt")
        self.assertEqual(expected, weights.tolist())

    def test_a_document_without_words_has_empty_arrays(self):
        document = morvaai.read_text("")
        self.assertEqual(((0,), (0,), 0), (document.weights.shape, document.counts.shape, len(document.features)))

    def test_feature_matrix_has_a_row_for_each_document(self):
        documents = [morvaai.read_text(text) for text in ("ships in the harbour", "", "trains and ships")]
        matrix = morvaai.feature_matrix(documents)
        self.assertEqual(sorted(matrix.vocabulary), matrix.vocabulary)
        self.assertEqual((3, len(matrix.vocabulary)), matrix.shape)
        dense = matrix.toarray()
        for row, document in zip(dense, documents):
            expected = dict(zip(document.words, document.weights))
            self.assertEqual([expected.get(word, 0.0) for word in matrix.vocabulary], row.tolist())

    def test_feature_matrix_of_nothing_is_empty(self):
        self.assertEqual((0, 0), morvaai.feature_matrix([]).toarray().shape)

    def test_similarity_matrix_is_that_of_all_pairs(self):
        dnas = [morvaai.read(path).dna for path in sorted(SAMPLES.glob("*.docx"))]
        expected = [[morvaai.similarity(a, b) for b in dnas] for a in dnas]
        self.assertEqual(expected, morvaai.similarity_matrix(dnas).tolist())

    def test_bits_tell_the_similarity(self):
        a, b = (morvaai.read(path).dna for path in sorted(SAMPLES.glob("harbour*.docx")))
        agreeing = np.mean(morvaai.dna_bits(a) == morvaai.dna_bits(b))
        self.assertEqual(morvaai.similarity(a, b), 100 * agreeing)

    def test_a_point_has_the_sums_whose_signs_are_the_bits(self):
        document = morvaai.read(REPORT, wide=True)
        point = morvaai.dna_point(document.wide_dna)
        self.assertEqual(morvaai.dna_bits(document.dna).tolist(), (point > 0).tolist())

    def test_a_list_refuses_all_where_one_is_no_fingerprint(self):
        dnas = morvaai.DnaList(["FF"])
        with self.assertRaisesRegex(ValueError, "fingerprint 1"):
            dnas.extend(["00", "zz"])
        self.assertEqual(1, len(dnas))


class ReadAllTest(unittest.TestCase):
    def test_workers_find_what_this_process_finds(self):
        paths = sorted(SAMPLES.glob("*.docx"))
        for path, document in zip(paths, morvaai.read_all(paths, jobs=2)):
            expected = morvaai.read(path)
            self.assertEqual((path, expected.words, expected.weights.tolist(), expected.dna),
                             (document.path, document.words, document.weights.tolist(), document.dna))

    def test_paths_may_come_without_end(self):
        def endless():
            while True:
                yield REPORT

        documents = morvaai.read_all(endless(), jobs=1, words=1)
        self.assertEqual([["terminal"]] * 3, [next(documents).words for _ in range(3)])

    def test_a_file_that_is_not_read_does_not_stop_the_others(self):
        missing, report = morvaai.read_all(["/nowhere/a.docx", REPORT], jobs=1)
        self.assertEqual((False, "failed", "No such file or directory"),
                         (missing.is_read, missing.outcome, missing.reason))
        self.assertIsInstance(missing.error, FileNotFoundError)
        self.assertIsNone(report.error)

    def test_wrong_numbers_are_refused_at_once(self):
        for wrong in ({"jobs": 0}, {"memory": 1}, {"seconds": 0}):
            with self.assertRaises(ValueError):
                morvaai.read_all([], **wrong)

    def test_an_interrupt_ends_it(self):
        # Documents are kept: what is raised while one ends is lost, as Python has it.
        code = ("import itertools, sys, morvaai\n"
                "kept = []\n"
                "for document in morvaai.read_all(itertools.repeat(sys.argv[1]), jobs=1):\n"
                "    kept or print('reading', flush=True)\n"
                "    kept.append(document)\n")
        child = subprocess.Popen([sys.executable, "-B", "-c", code, str(REPORT)], stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, text=True)
        child.stdout.readline()
        time.sleep(0.1)
        child.send_signal(signal.SIGINT)
        _, errors = child.communicate(timeout=30)
        self.assertTrue(errors.endswith("KeyboardInterrupt\n"), errors)
        self.assertNotIn("ignored", errors)

    def test_an_interrupt_that_another_thread_gets_ends_it_as_well(self):
        swallowed = []
        self.addCleanup(setattr, sys, "unraisablehook", sys.unraisablehook)
        sys.unraisablehook = swallowed.append
        interrupting = threading.Timer(0.1, lambda: signal.pthread_kill(threading.get_ident(), signal.SIGINT))
        interrupting.start()
        self.addCleanup(interrupting.join)
        with self.assertRaises(KeyboardInterrupt):
            list(morvaai.read_all(itertools.repeat(REPORT), jobs=1))
        self.assertEqual([], swallowed)

    def test_an_interrupt_that_its_handler_takes_for_nothing_loses_no_document(self):
        came = []
        self.addCleanup(signal.signal, signal.SIGINT, signal.signal(signal.SIGINT, lambda *_: came.append(True)))
        interrupting = threading.Timer(0.1, lambda: os.kill(os.getpid(), signal.SIGINT))
        interrupting.start()
        paths = [SAMPLES / "launch.pptx", REPORT] * 32
        found = []
        while not came:
            found = [document.path for document in morvaai.read_all(paths, jobs=1)]
            self.assertEqual(paths, found)
        interrupting.join()

    def test_several_threads_read(self):
        found = []
        threads = [threading.Thread(target=lambda: found.append([d.dna for d in morvaai.read_all([REPORT], jobs=1)]))
                   for _ in range(3)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual([[morvaai.read(REPORT).dna]] * 3, found)


class BoxesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(directory.cleanup)
        cls.directory = pathlib.Path(directory.name)
        for name in ("invoices", "采购合同"):
            shutil.copytree(SAMPLES / "corpus/learn" / name, cls.directory / "learn" / name)
        subprocess.run([PROGRAM, "learn", cls.directory / "learn", "--by-folder", "--box", "office"],
                       stdout=subprocess.DEVNULL, check=True, env={**os.environ, "MORVA_BOX_PATH": directory.name})

    def test_classes_are_those_of_the_program(self):
        paths = [path for path in sorted(SAMPLES.glob("corpus/decide/*/*"))[::5] if path.is_file()]
        expected = program("match", *paths, MORVA_BOX_PATH=str(self.directory))
        with morvaai.Boxes(self.directory) as boxes:
            found = [each and each.id for _, each in boxes.match_files(paths)]
        self.assertEqual([each["class"] and each["class"]["id"] for each in expected], found)

    def test_a_file_is_matched_as_its_document_and_as_its_words(self):
        with morvaai.Boxes(self.directory / "office.box") as boxes:
            path = SAMPLES / "corpus/decide/invoices/invoices-05.docx"
            document = morvaai.read(path, words=5)
            kept = morvaai.read(path)
            self.assertEqual("invoices", boxes.match(path).name)
            self.assertEqual("invoices", boxes.match(document).name)
            self.assertEqual("invoices", boxes.match(morvaai.from_words(kept.words, kept.weights)).name)
            self.assertEqual(["invoices"], [each.name for each in boxes.match_all(document)])

    def test_a_box_that_is_none_is_refused(self):
        with self.assertRaises(morvaai.BoxError):
            morvaai.Boxes(REPORT)
        with self.assertRaises(FileNotFoundError):
            morvaai.Boxes("/nowhere/a.box")

    def test_a_box_that_may_not_be_opened_is_told_as_such(self):
        with tempfile.TemporaryDirectory() as directory:
            user = os.geteuid()
            os.chmod(directory, 0)
            # Root is kept out of nothing.
            os.seteuid(user or 65534)
            try:
                with self.assertRaises(PermissionError):
                    morvaai.Boxes(pathlib.Path(directory, "a.box"))
            finally:
                os.seteuid(user)
                os.chmod(directory, 0o700)

    def test_closed_boxes_are_refused(self):
        boxes = morvaai.Boxes(self.directory)
        boxes.close()
        boxes.close()
        with self.assertRaises(ValueError):
            boxes.match(REPORT)

    def test_examples_in_the_documentation_are_true(self):
        for name in ("", "._document", "._dna", "._boxes", "._matrix"):
            module = importlib.import_module("morvaai" + name)
            names = {**vars(module), "samples": SAMPLES, "box_file": self.directory / "office.box",
                     "read_all": morvaai.read_all}
            with self.subTest(module.__name__):
                self.assertEqual(0, doctest.testmod(module, globs=names).failed)

    def test_the_guide_is_true(self):
        self.addCleanup(os.chdir, os.getcwd())
        self.addCleanup(os.environ.pop, "MORVA_BOX_PATH")
        os.chdir(SAMPLES.parent)
        os.environ["MORVA_BOX_PATH"] = str(self.directory)
        flags = doctest.NORMALIZE_WHITESPACE
        self.assertEqual(0, doctest.testfile("docs/python.md", False, optionflags=flags).failed)


class LoadingTest(unittest.TestCase):
    def test_a_library_that_is_missing_is_named(self):
        done = subprocess.run([sys.executable, "-B", "-c", "import morvaai"], stderr=subprocess.PIPE, text=True,
                              env={**os.environ, "MORVA_LIBRARY": "/nowhere/libmorvaai_c.so.1"})
        self.assertIn("/nowhere/libmorvaai_c.so.1", done.stderr)
        self.assertIn("MORVA_LIBRARY", done.stderr)

    def test_a_missing_dictionary_is_told(self):
        done = subprocess.run([sys.executable, "-B", "-c", "import morvaai; morvaai.read_text('ships')"],
                              stderr=subprocess.PIPE, text=True, env={**os.environ, "MORVA_DICT_PATH": "/nowhere"})
        self.assertIn("DictionaryError: there is no dictionary in /nowhere", done.stderr)


if __name__ == "__main__":
    unittest.main()
