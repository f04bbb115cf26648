"""The program where the disk is full or read-only, where its output goes nowhere, and where it is ended.

Usage: surroundings_test.py PROGRAM
"""

import fcntl
import os
import pathlib
import shlex
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import threading
import time
import unittest

PATIENCE = 120
NOBODY = 65534


def mounting_is_possible():
    """Whether a file system can be mounted that only the test sees."""
    command = ["unshare", "--mount", "mount", "-t", "tmpfs", "none", "/mnt"]
    try:
        return subprocess.run(command, capture_output=True).returncode == 0
    except OSError:
        return False


def children_of(process):
    """The workers of a run, and what keeps its working directory."""
    return [int(number) for number in
            pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()]


MOUNTING = mounting_is_possible()


class Case(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="surroundings-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.boxes, self.work, self.samples = (self.place / name for name in ("boxes", "work", "samples"))
        for folder in (self.boxes, self.work, self.samples / "one", self.samples / "two"):
            folder.mkdir(parents=True)
        (self.samples / "one" / "a.txt").write_text("Cranes lift containers from ships in the harbour. ")
        (self.samples / "two" / "b.txt").write_text("Onions fry in butter, flour thickens the sauce. ")
        self.environment = {**os.environ, "MORVA_BOX_PATH": str(self.boxes), "MORVA_RUN_PATH": str(self.work)}

    def run_program(self, *arguments, shell=None, **options):
        """Runs it; `shell` is a command line in which {} stands for it."""
        command = [PROGRAM, *map(str, arguments)]
        if shell:
            command = ["sh", "-c", shell.format(shlex.join(command))]
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=PATIENCE, **options)

    def learn(self, id="ships", *more):
        return "learn", self.samples, "--by-folder", "--box", id, *more

    def learnt(self, id="ships"):
        done = self.run_program(*self.learn(id))
        self.assertEqual(done.returncode, 0, done.stderr)

    def content(self):
        return {path.name: path.read_bytes() for path in self.boxes.iterdir()}

    def assert_failed(self, done, *told):
        self.assertEqual(done.returncode, 1, done.stderr)
        for text in told:
            self.assertIn(text, done.stderr)


@unittest.skipUnless(MOUNTING, "no file system can be mounted here")
class FullDisk(Case):
    def mounted(self, folder, size, preparation, *arguments):
        """Runs the program on a file system of its own, and prints what is in the folder afterwards."""
        script = (f"mount -t tmpfs -o size={size} none {folder}; {preparation}; {{}}; status=$?; "
                  f"ls -A {folder} | sed 's/^/left: /'; exit $status")
        return self.run_program(*arguments, shell=f"exec unshare --mount sh -c {shlex.quote(script)}")

    def test_a_box_that_does_not_fit_is_told_and_leaves_nothing(self):
        done = self.mounted(self.boxes, "8k", f"head -c 100000 /dev/zero > {self.boxes}/filler 2>/dev/null",
                            *self.learn())
        self.assert_failed(done, str(self.boxes), "No space left on device")
        self.assertEqual([line for line in done.stdout.splitlines() if line.startswith("left: ")], ["left: filler"])

    def test_an_old_box_stays_where_the_new_one_does_not_fit(self):
        self.learnt()
        preparation = (f"cp {self.boxes}.old/* {self.boxes}; "
                       f"head -c 1000000 /dev/zero > {self.boxes}/filler 2>/dev/null")
        self.boxes.rename(f"{self.boxes}.old")
        self.boxes.mkdir()
        verified = shlex.join([PROGRAM, "box", "verify"])
        script = f"{self.boxes}; {preparation}; {{}}; {verified}"
        done = self.run_program(
            *self.learn("ships", "--force"),
            shell=f"exec unshare --mount sh -c {shlex.quote('mount -t tmpfs -o size=16k none ' + script)}")
        self.assertIn("No space left on device", done.stderr)
        self.assertEqual(done.stdout, "ships: as it should be\n")

    def test_lists_that_do_not_fit_are_told(self):
        lists = self.place / "lists"
        lists.mkdir()
        done = self.mounted(lists, "4k", f"head -c 100000 /dev/zero > {lists}/filler 2>/dev/null",
                            "cluster", self.samples, "-m", "kmeans", "-k", "2", "-o", lists)
        self.assert_failed(done, str(lists / "class-0.txt"), "No space left on device")
        self.assertEqual([line for line in done.stdout.splitlines() if line.startswith("left: ")], ["left: filler"])


    def test_working_files_that_do_not_fit_are_told(self):
        done = self.mounted(self.work, "8k", f"head -c 100000 /dev/zero > {self.work}/filler 2>/dev/null",
                            "collect", self.samples)
        self.assert_failed(done, str(self.work), "No space left on device")
        self.assertEqual([line for line in done.stdout.splitlines() if line.startswith("left: ")], ["left: filler"])


@unittest.skipUnless(MOUNTING, "no file system can be mounted here")
class ReadOnlyDisk(Case):
    def read_only(self, *arguments):
        mount = f"mount --bind {self.boxes} {self.boxes} && mount -o remount,ro,bind {self.boxes}"
        return self.run_program(*arguments, shell=f"exec unshare --mount sh -c {shlex.quote(mount + '; {}')}")

    def test_a_new_box_is_told(self):
        done = self.read_only(*self.learn())
        self.assert_failed(done, str(self.boxes), "Read-only file system")

    def test_boxes_and_index_stay(self):
        self.learnt()
        before = self.content()
        for arguments in (self.learn("ships", "--force"), ("box", "remove", "ships"),
                          ("box", "add", self.boxes / "ships.box", "--id", "other")):
            self.assert_failed(self.read_only(*arguments), str(self.boxes), "Read-only file system")
        self.assertEqual(self.content(), before)

    def test_boxes_can_be_used(self):
        self.learnt()
        self.assertEqual(self.read_only("match", self.samples).returncode, 0)


class ForbiddenDirectory(Case):
    """As a user without rights: root has all."""

    def setUp(self):
        super().setUp()
        if os.getuid() == 0:
            self.user = NOBODY
            self.place.chmod(0o755)
            if self.run_program("version", user=NOBODY).returncode != 0:
                self.skipTest("another user cannot run the program here")
        else:
            self.user = os.getuid()

    def test_a_new_box_is_told(self):
        self.boxes.chmod(0o555)
        done = self.run_program(*self.learn(), user=self.user)
        self.assert_failed(done, str(self.boxes), "Permission denied")
        self.assertEqual(self.content(), {})

    def test_a_place_for_boxes_that_cannot_be_made_is_told(self):
        self.place.chmod(0o555)
        self.environment["MORVA_BOX_PATH"] = str(self.place / "none")
        self.assert_failed(self.run_program(*self.learn(), user=self.user), str(self.place / "none"),
                           "Permission denied")
        self.place.chmod(0o755)

    def test_a_place_to_work_that_cannot_be_used_is_told(self):
        self.work.chmod(0o555)
        self.assert_failed(self.run_program("collect", self.samples, user=self.user), str(self.work),
                           "Permission denied")


class Output(Case):
    COMMANDS = {
        "features": 1, "dna": 1, "text": 1, "collect": 1, "cluster -m kmeans -k 1": 1, "match": 2,
    }

    def commands(self):
        for command, status in self.COMMANDS.items():
            yield [*command.split(), self.samples], status
        yield ["box", "list"], 1
        yield ["box", "show", "ships"], 1
        yield ["box", "verify"], 1
        yield ["version"], 1
        yield ["--help"], 1

    def test_a_full_one_is_told(self):
        self.learnt()
        for arguments, status in self.commands():
            with self.subTest(arguments[0]):
                done = self.run_program(*arguments, shell="exec {} >/dev/full")
                self.assertEqual(done.returncode, status, done.stderr)
                self.assertIn("standard output: No space left on device", done.stderr)

    def test_a_closed_one_is_told(self):
        self.learnt()
        for arguments, status in self.commands():
            with self.subTest(arguments[0]):
                done = self.run_program(*arguments, shell="exec {} >&-")
                self.assertEqual(done.returncode, status, done.stderr)
                self.assertIn("standard output: Bad file descriptor", done.stderr)

    def test_nothing_goes_into_files_where_all_are_closed(self):
        self.run_program(*self.learn(), shell="exec {} <&- >&- 2>&-")
        self.assertEqual(self.run_program("box", "verify").stdout, "ships: as it should be\n")

    def test_a_reader_that_goes_away_ends_the_program(self):
        # The reader is gone before the first line is written.
        done = self.run_program("features", self.samples, shell="{{ sleep 0.2; {}; echo status $? >&2; }} | true")
        self.assertIn(f"status {128 + signal.SIGPIPE}", done.stderr)


class Interrupted(Case):
    SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
    # Minutes of work for one worker: no run has ended before the signal comes.
    DOCUMENTS = 5000

    def setUp(self):
        super().setUp()
        # The runs inherit what a shell that has put the tests in the background ignores.
        for number in self.SIGNALS:
            self.addCleanup(signal.signal, number, signal.signal(number, signal.SIG_DFL))
        self.lists = self.place / "lists"
        document = self.place / "long.txt"
        document.write_text(" ".join(f"word{i % 5003} stone{i % 4001} river{i % 3001}" for i in range(60000)))
        for number in range(self.DOCUMENTS):
            (self.samples / "one" / f"long{number}.txt").hardlink_to(document)

    def start_anew(self):
        for folder in (self.boxes, self.work, self.lists):
            shutil.rmtree(folder, ignore_errors=True)
        self.boxes.mkdir()
        self.work.mkdir()

    def wait_for_work(self, process, is_at_work):
        end = time.monotonic() + PATIENCE
        while not is_at_work(process):
            self.assertIsNone(process.poll(), "the run has ended")
            self.assertLess(time.monotonic(), end, "the run has not begun to work")
            time.sleep(0.005)

    def interrupted(self, number, arguments, is_at_work):
        with subprocess.Popen([PROGRAM, *map(str, arguments), "-j", "1"], env=self.environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            try:
                self.wait_for_work(process, is_at_work)
                process.send_signal(number)
                output, _ = process.communicate(timeout=PATIENCE)
            finally:
                process.kill()
        return process.returncode, output

    def assert_no_work(self):
        end = time.monotonic() + PATIENCE
        while list(self.work.iterdir()) and time.monotonic() < end:
            time.sleep(0.01)
        self.assertEqual(list(self.work.iterdir()), [])

    def test_the_status_is_that_of_the_signal_and_nothing_is_left(self):
        commands = [(self.learn(), children_of),
                    (("cluster", self.samples, "-m", "kmeans", "-k", "2", "-o", self.lists), children_of),
                    (("features", self.samples), children_of),
                    (("collect", self.samples), lambda _: list(self.work.rglob("Tessarine")))]
        for arguments, is_at_work in commands:
            for number in self.SIGNALS:
                with self.subTest(f"{arguments[0]} {number.name}"):
                    self.start_anew()
                    status, output = self.interrupted(number, arguments, is_at_work)
                    self.assertEqual(status, -number)
                    self.assertTrue(output == b"" or output.endswith(b"\n"))
                    self.assert_no_work()
                    self.assertEqual(self.content(), {})
                    self.assertFalse(self.lists.exists())


class Leftovers(Case):
    """Working directories of runs that were killed together with what would have removed them."""

    def directory(self, name, mode=stat.S_IRWXU):
        path = self.work / name
        path.mkdir()
        path.chmod(mode)
        (path / "text").write_text("of a document")
        return path

    def collect(self):
        done = self.run_program("collect", self.samples)
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_one_of_a_killed_run_is_removed(self):
        left = self.directory("morvaai-run-abc123")
        self.collect()
        self.assertFalse(left.exists())

    def test_one_of_a_run_that_was_killed_with_its_keeper_is_removed(self):
        text = " ".join(f"word{i % 5003} stone{i % 4001}" for i in range(90000))
        (self.samples / "one" / "long.txt").write_text(text)
        process = subprocess.Popen([PROGRAM, "collect", self.samples, "-j", "1"], env=self.environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        while not list(self.work.rglob("Tessarine")):
            self.assertIsNone(process.poll())
        for number in [process.pid, *children_of(process)]:
            os.kill(number, signal.SIGKILL)
        process.wait()
        left, = self.work.iterdir()
        # Until the last of the children, which nobody here can wait for, has ended.
        directory = os.open(left, os.O_RDONLY)
        fcntl.flock(directory, fcntl.LOCK_EX)
        os.close(directory)
        self.collect()
        self.assertEqual(list(self.work.iterdir()), [])

    def test_one_of_a_run_that_lives_stays(self):
        with subprocess.Popen(["flock", self.directory("morvaai-run-abc123"), "sh", "-c", "echo; read line"],
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE) as other:
            other.stdout.readline()
            self.collect()
            self.assertTrue((self.work / "morvaai-run-abc123" / "text").exists())
            other.communicate(b"\n")

    def test_what_others_have_there_stays(self):
        names = ["morvaai-abc123", "morvaai-run-notes", "morvaai-run-abc1234", "run"]
        for name in names:
            self.directory(name)
        self.directory("morvaai-run-opened", 0o755)
        elsewhere = self.place / "elsewhere"
        elsewhere.mkdir(mode=0o700)
        (self.work / "morvaai-run-linked").symlink_to(elsewhere)
        before = sorted(path.name for path in self.work.iterdir())
        self.collect()
        self.assertEqual(sorted(path.name for path in self.work.iterdir()), before)
        self.assertTrue(elsewhere.exists())

    @unittest.skipUnless(os.getuid() == 0, "only root can make files of another user")
    def test_one_of_another_user_stays(self):
        left = self.directory("morvaai-run-abc123")
        os.chown(left, NOBODY, NOBODY)
        self.collect()
        self.assertTrue((left / "text").exists())


class Lock(Case):
    """Of the directory of boxes, which a run that changes them has."""

    def test_a_run_waits_for_another(self):
        boxes = os.open(self.boxes, os.O_RDONLY)
        fcntl.flock(boxes, fcntl.LOCK_EX)
        threading.Timer(0.5, os.close, [boxes]).start()
        begun = time.monotonic()
        self.learnt()
        self.assertGreaterEqual(time.monotonic() - begun, 0.5)

    def test_a_run_that_waits_can_be_interrupted(self):
        self.learnt()
        boxes = os.open(self.boxes, os.O_RDONLY)
        self.addCleanup(os.close, boxes)
        fcntl.flock(boxes, fcntl.LOCK_EX)
        process = subprocess.Popen([PROGRAM, "box", "remove", "ships"], env=self.environment)
        time.sleep(0.3)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(PATIENCE), -signal.SIGINT)


if __name__ == "__main__":
    PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
