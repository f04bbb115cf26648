#!/usr/bin/python3
"""Whether help, manual pages and completions say what the program takes, and whether their examples work.

usage: manual_test.py PROGRAM SAMPLES MANUAL COMPLETIONS
"""

import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM, SAMPLES, MANUAL, COMPLETIONS = None, None, None, None
SECTIONS = ["NAME", "SYNOPSIS", "DESCRIPTION", "EXIT STATUS", "SEE ALSO"]
MOST_LINES, MOST_COLUMNS = 30, 80


def definitions():
    return json.loads(subprocess.run([PROGRAM, "help", "--json"], check=True, capture_output=True).stdout)


def all_commands(command, words=()):
    yield list(words), command
    for one in command["commands"]:
        yield from all_commands(one, (*words, one["name"]))


def names_of(command):
    return {name for option in command["options"] for name in option["names"]}


def names_in_page(text):
    """The options that a manual page lists: "-n, --words" of `.It Fl n , Fl -words Ar N`."""
    lists = re.findall(r"^\.It ((?:Fl \S+(?: , )?)+)", text, re.MULTILINE)
    return {"-" + name for line in lists for name in re.findall(r"Fl (\S+)", line)}


class Help(unittest.TestCase):
    def test_each_fits_a_screen(self):
        for words, _ in all_commands(definitions()):
            text = subprocess.run([PROGRAM, *words, "--help"], check=True, capture_output=True).stdout.decode()
            with self.subTest(command=" ".join(words)):
                self.assertLessEqual(max(len(line.encode("gb18030")) for line in text.splitlines()), MOST_COLUMNS)
                self.assertLessEqual(text.count("\n"), MOST_LINES, text)

    def test_it_is_the_same_by_the_command_of_that_name(self):
        asked = subprocess.run([PROGRAM, "help", "box", "add"], check=True, capture_output=True).stdout
        option = subprocess.run([PROGRAM, "box", "add", "--help"], check=True, capture_output=True).stdout
        self.assertEqual(asked, option)

    def test_of_no_command_is_wrong_use(self):
        finished = subprocess.run([PROGRAM, "help", "nonsense"], capture_output=True)
        self.assertEqual(finished.returncode, 2)
        self.assertIn(b"there is no command nonsense", finished.stderr)


class Pages(unittest.TestCase):
    def setUp(self):
        self.pages = {path.name: path.read_text() for path in MANUAL.glob("man*/*")}

    def test_each_command_has_one_with_its_options(self):
        program = definitions()
        self.assertEqual(names_in_page(self.pages["morvaai.1"]), names_of(program))
        for command in program["commands"]:
            if command["name"] in ("help", "version"):
                continue
            with self.subTest(command=command["name"]):
                wanted = set().union(*(names_of(one) for _, one in all_commands(command) if not one["commands"]))
                self.assertEqual(names_in_page(self.pages[f"morvaai-{command['name']}.1"]), wanted)

    def test_they_have_the_sections_that_readers_look_for(self):
        for name, text in self.pages.items():
            if name.endswith(".1"):
                found = re.findall(r"^\.Sh (.*)", text, re.MULTILINE)
                self.assertEqual([section for section in SECTIONS if section not in found], [], name)

    def test_they_name_pages_that_there_are(self):
        for name, text in self.pages.items():
            for page, section in re.findall(r"\bXr (morvaai\S*) (\d)", text):
                self.assertIn(f"{page}.{section}", self.pages, name)

    def test_no_part_is_left_to_fill_in(self):
        for name, text in self.pages.items():
            self.assertNotRegex(text, "@[A-Z_]+@", name)

    @unittest.skipUnless(shutil.which("mandoc"), "mandoc is not installed")
    def test_they_are_written_as_they_should_be(self):
        paths = [str(path) for path in sorted(MANUAL.glob("man*/*"))]
        told = subprocess.run(["mandoc", "-Tlint", "-Wstyle", *paths], capture_output=True, text=True).stdout
        faults = [line for line in told.splitlines() if "referenced manual not found" not in line]
        self.assertEqual(faults, [])


class Examples(unittest.TestCase):
    """Each in a folder of its own with the samples, what other examples write, and boxes to ask where it makes none."""

    def test_they_work(self):
        program = definitions()
        examples = {example for _, command in all_commands(program) for example in command["examples"]}
        for page in MANUAL.glob("man*/*"):
            examples.update(re.findall(r"\$ ((?:find|morvaai) .*)", page.read_text()))
        examples = sorted(example for example in examples if not example.startswith("morvaai console"))
        self.assertGreater(len(examples), 20)
        with tempfile.TemporaryDirectory() as scratch:
            self.prepared = pathlib.Path(scratch) / "boxes"
            for box in ("demo", "company"):
                self.run_in(scratch, f"morvaai learn {SAMPLES}/corpus/learn --by-folder --box {box}", self.prepared)
            self.run_in(scratch, f"morvaai dna {SAMPLES} --json > samples.jsonl", self.prepared)
            for part in (1, 2):
                self.run_in(scratch, f"morvaai extract {SAMPLES} --part {part}/2 -o part{part}.shard", self.prepared)
            with concurrent.futures.ThreadPoolExecutor(2) as pool:
                results = list(pool.map(self.run_example, examples))
        self.assertEqual([result for result in results if result], [])

    def run_in(self, folder, line, boxes):
        environment = {**os.environ, "MORVA_BOX_PATH": str(boxes),
                       "PATH": f"{pathlib.Path(PROGRAM).parent}:{os.environ['PATH']}"}
        return subprocess.run(["bash", "-o", "pipefail", "-c", line], cwd=folder, env=environment, capture_output=True,
                              stdin=subprocess.DEVNULL)

    def run_example(self, example):
        """What went wrong; nothing where it worked."""
        with tempfile.TemporaryDirectory() as scratch:
            folder = pathlib.Path(scratch)
            (folder / "samples").symlink_to(SAMPLES)
            (folder / "received").mkdir()
            for file in ("company.box", "received/0815.box"):
                shutil.copy(self.prepared / "company.box", folder / file)
            for file in ("samples.jsonl", "part1.shard", "part2.shard"):
                shutil.copy(self.prepared.parent / file, folder)
            boxes = folder / "boxes"
            makes_box = " learn " in example or (" box add " in example and "--force" not in example)
            if not makes_box:
                shutil.copytree(self.prepared, boxes)
            finished = self.run_in(folder, example, boxes)
            return None if finished.returncode == 0 else (example, finished.returncode, finished.stderr.decode())


class BashCompletion(unittest.TestCase):
    """Its function called as bash calls it, with the words of a command line."""

    def complete(self, *words, boxes="/nonexistent"):
        script = 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _morvaai; printf "%s\\n" "${COMPREPLY[@]}"'
        environment = {**os.environ, "MORVA_BOX_PATH": str(boxes)}
        finished = subprocess.run(["bash", "-c", script, "bash", COMPLETIONS / "morvaai", PROGRAM, *words],
                                  check=True, capture_output=True, env=environment, cwd=self.folder.name)
        return [line for line in finished.stdout.decode().splitlines() if line]

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def test_commands(self):
        self.assertEqual(self.complete(""), [command["name"] for command in definitions()["commands"]])
        self.assertEqual(self.complete("box", "re"), ["remove"])

    def test_options_of_each_command(self):
        program = definitions()
        everywhere = names_of(program) - {"-V", "--version"}
        for words, command in all_commands(program):
            if words and not command["commands"]:
                self.assertEqual(set(self.complete(*words, "-")), names_of(command) | everywhere, words)

    def test_values(self):
        self.assertEqual(self.complete("text", "--kind", "foot"), ["footnote"])
        self.assertEqual(self.complete("text", "--kind", "=", "foot"), ["footnote"])
        self.assertEqual(self.complete("cluster", "-m", "k"), ["kmeans", "kmedians"])
        self.assertEqual(self.complete("console", "d"), ["dbscan"])

    def test_boxes_and_classes_whatever_their_names(self):
        boxes = pathlib.Path(self.folder.name) / "boxes"
        name, folder = "a $(touch owned) box", pathlib.Path(self.folder.name) / "learn" / "`touch owned` 类"
        folder.mkdir(parents=True)
        (folder / "one.txt").write_text("anchor vessel cargo harbour\n" * 5)
        subprocess.run([PROGRAM, "learn", folder.parent, "--by-folder", "--box", name], check=True, capture_output=True,
                       env={**os.environ, "MORVA_BOX_PATH": str(boxes)})
        self.assertEqual(self.complete("match", "--box", "a", boxes=boxes), [name])
        self.assertEqual(self.complete("box", "show", "a\\ $", boxes=boxes), [name])
        (pathlib.Path(self.folder.name) / "a received.box").touch()
        self.assertEqual(self.complete("report", "a", boxes=boxes), [name, "a received.box"])
        self.assertEqual(self.complete("match", "--class", "", boxes=boxes), [folder.name])
        self.assertEqual(self.complete("match", "--box", name.replace(" ", "\\ "), "--class", "", boxes=boxes),
                         [folder.name])
        self.assertEqual(self.complete("match", "--box", "other", "--class", "", boxes=boxes), [])
        self.assertFalse((pathlib.Path(self.folder.name) / "owned").exists())


class OtherCompletions(unittest.TestCase):
    def test_they_have_all_long_options(self):
        for file, form in (("_morvaai", "{}"), ("morvaai.fish", "-l {}")):
            text = (COMPLETIONS / file).read_text()
            for words, command in all_commands(definitions()):
                for name in names_of(command):
                    if name.startswith("--"):
                        self.assertIn(form.format(name[2:]), text, f"{file}: {words}")

    def test_their_shells_can_read_them(self):
        for shell, file in (("bash", "morvaai"), ("zsh", "_morvaai"), ("fish", "morvaai.fish")):
            if shutil.which(shell):
                subprocess.run([shell, "-n", COMPLETIONS / file], check=True)


if __name__ == "__main__":
    PROGRAM, SAMPLES = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    MANUAL, COMPLETIONS = pathlib.Path(sys.argv[3]), pathlib.Path(sys.argv[4])
    unittest.main(argv=sys.argv[:1])
