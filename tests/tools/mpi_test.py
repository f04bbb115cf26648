"""The program in several processes that MPI connects: scripts/check-mpi builds it with an MPI library, and starts this.
Usage: mpi_test.py PROGRAM LAUNCHER SAMPLES [TEST...]"""

import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = pathlib.Path(sys.argv[1]).absolute()
LAUNCHER = sys.argv[2]
SAMPLES = pathlib.Path(sys.argv[3])

DOCUMENTS = 1200
MOST_PROCESSES = 4
METHODS = {
    "kmeans": ["-k", "6"],
    "kmeans of many": ["-k", "40"],
    "kmeans from canopies": ["--canopy-seeds"],
    "dbscan": ["-m", "dbscan"],
    "dbscan of few": ["-m", "dbscan", "--minpts", "12"],
    "dbscan within a radius": ["-m", "dbscan", "--eps", "1.4"],
}
# A lost process is noticed at once; a launcher gives the others some seconds to end.
SECONDS_TO_END = 60
LIMIT = 600


def environment(boxes):
    """Of a run that has its boxes in a folder."""
    return os.environ | {"MORVA_BOX_PATH": str(boxes), "OMPI_ALLOW_RUN_AS_ROOT": "1",
                         "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM": "1", "OMPI_MCA_rmaps_base_oversubscribe": "1",
                         "OMPI_MCA_mpi_yield_when_idle": "1"}


def call(boxes, *words, variables=None):
    return subprocess.run([str(word) for word in words], env=environment(boxes) | (variables or {}),
                          capture_output=True, text=True, timeout=LIMIT)


def own_lines(text):
    """What the program says, without the launcher's own words."""
    return [line for line in text.splitlines() if line.startswith("morvaai: ")]


def processes_below(pid):
    """Running processes that a process has started, and those that they have."""
    children = {}
    for path in pathlib.Path("/proc").glob("[0-9]*/stat"):
        try:
            number, rest = path.read_text().split(" (", 1)
        except (FileNotFoundError, ProcessLookupError):
            continue
        parent = int(rest.rsplit(") ", 1)[1].split()[1])
        children.setdefault(parent, []).append(int(number))
    found = []
    waiting = [pid]
    while waiting:
        found += (own := children.get(waiting.pop(), []))
        waiting += own
    return found


def is_program(pid):
    try:
        return os.readlink(f"/proc/{pid}/exe") == str(PROGRAM)
    except OSError:
        return False


def rank_of(pid):
    content = pathlib.Path(f"/proc/{pid}/environ").read_bytes().split(b"\0")
    names = (b"OMPI_COMM_WORLD_RANK=", b"PMI_RANK=")
    return next(int(entry.split(b"=")[1]) for entry in content if entry.startswith(names))


def is_in_group(pid):
    """Whether the first rank has met the others: from then on it tells of an end."""
    try:
        status = pathlib.Path(f"/proc/{pid}/status").read_text()
    except FileNotFoundError:
        return False
    caught = int(status.split("SigCgt:")[1].split()[0], 16)
    return bool(caught >> (signal.SIGTERM - 1) & 1)


def write_documents(folder):
    """Texts of few subjects, and some that come again, the same at every call."""
    chance = random.Random(11)
    text = ""
    for number in range(DOCUMENTS):
        subject = chance.randrange(12)
        if not text or chance.randrange(10):
            text = " ".join(f"word{chance.choice('abcdefgh')}{subject * 40 + int(chance.paretovariate(0.7)) % 200}"
                            for _ in range(chance.randrange(40, 300)))
        (folder / f"text-{number:04}.txt").write_text(text)


class Run(unittest.TestCase):
    """A run of several processes, compared with one process."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        documents = cls.folder / "documents"
        documents.mkdir()
        write_documents(documents)
        cls.shards = []
        for number, inputs in enumerate([[documents, "--part", "1/2"], [documents, "--part", "2/2"], [SAMPLES]]):
            shard = cls.folder / f"{number}.shard"
            done = call(cls.folder, PROGRAM, "extract", *inputs, "-o", shard, "-j", "2")
            assert done.returncode == 0, done.stderr
            cls.shards.append(shard)

    def setUp(self):
        self.boxes = pathlib.Path(tempfile.mkdtemp(dir=self.folder))

    def learn(self, *options, shards=None, force=True):
        return [PROGRAM, "learn", "--json", "--box", "kinds", *(["--force"] if force else []), *options, "--from",
                *(shards or self.shards)]

    def launch(self, processes, *options, **others):
        return call(self.boxes, LAUNCHER, "-n", processes, *self.learn("--mpi", *options, **others))

    def expect_nothing_left(self):
        self.assertEqual([path.name for path in self.boxes.iterdir() if path.name != "box.ini"], [])

    def test_the_box_is_that_of_one_process_byte_for_byte(self):
        for name, options in METHODS.items():
            plain = call(self.boxes, *self.learn(*options))
            self.assertEqual(plain.returncode, 0, plain.stderr)
            expected = (self.boxes / "kinds.box").read_bytes()
            for processes in range(1, MOST_PROCESSES + 1):
                with self.subTest(method=name, processes=processes):
                    (self.boxes / "kinds.box").unlink()
                    started = time.monotonic()
                    done = self.launch(processes, *options)
                    print(f"{LAUNCHER} -n {processes}, {name}: {time.monotonic() - started:.1f} s", flush=True)
                    self.assertEqual(done.returncode, 0, done.stderr)
                    self.assertEqual((self.boxes / "kinds.box").read_bytes(), expected)
                    self.assertEqual(done.stdout, plain.stdout)
                    self.assertEqual(own_lines(done.stderr), own_lines(plain.stderr))

    def test_folders_make_the_box_of_one_process(self):
        shards = [self.folder / "classes.shard"]
        call(self.boxes, PROGRAM, "extract", SAMPLES / "corpus/learn", "-o", shards[0])
        plain = call(self.boxes, *self.learn("--by-folder", "-m", "dbscan", shards=shards))
        self.assertEqual(plain.returncode, 0, plain.stderr)
        expected = (self.boxes / "kinds.box").read_bytes()
        done = self.launch(3, "--by-folder", "-m", "dbscan", shards=shards)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stdout, plain.stdout)
        self.assertEqual((self.boxes / "kinds.box").read_bytes(), expected)

    def end_in_the_middle(self, choose):
        """Starts a run that waits for its last rank, which stands still; sends a process that is chosen of the launcher
        and the ranks a signal, and waits."""
        run = subprocess.Popen([str(word) for word in [LAUNCHER, "-n", 3, *self.learn("--mpi", "-k", "6")]],
                               env=environment(self.boxes), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        ranks = {}
        while 0 not in ranks or not is_in_group(ranks[0]):
            self.assertIsNone(run.poll(), "the run has ended before it was to be disturbed")
            time.sleep(0.01)
            ranks = {rank_of(pid): pid for pid in processes_below(run.pid) if is_program(pid)}
        os.kill(ranks[2], signal.SIGSTOP)
        time.sleep(1)
        process, number = choose(run.pid, ranks)
        started = time.monotonic()
        os.kill(process, number)
        try:
            output, errors = run.communicate(timeout=SECONDS_TO_END)
        except subprocess.TimeoutExpired:
            for pid in [run.pid, *ranks.values()]:
                os.kill(pid, signal.SIGKILL)
            raise
        print(f"{LAUNCHER}: ended after {time.monotonic() - started:.1f} s, status {run.returncode}\n{errors}")
        # A launcher that is told to end may be gone before the processes are.
        while any(is_program(pid) for pid in ranks.values()):
            self.assertLess(time.monotonic(), started + SECONDS_TO_END, "a process is left")
            time.sleep(0.1)
        self.assertNotEqual(run.returncode, 0)
        return output

    def expect_end_without_a_box(self, rank, number):
        output = self.end_in_the_middle(lambda launcher, ranks: (ranks[rank], number))
        self.assertNotIn("{", output)
        self.expect_nothing_left()

    def test_a_rank_that_is_killed_ends_the_run_without_a_box(self):
        self.expect_end_without_a_box(1, signal.SIGKILL)

    def test_the_first_rank_that_is_killed_ends_the_run_without_a_box(self):
        self.expect_end_without_a_box(0, signal.SIGKILL)

    def test_a_rank_that_breaks_off_ends_the_run_without_a_box(self):
        self.expect_end_without_a_box(1, signal.SIGSEGV)

    def test_a_launcher_that_is_told_to_end_leaves_a_whole_box_or_none(self):
        # Some have what stands still go on first, so that the run can come to its end after all.
        self.end_in_the_middle(lambda launcher, ranks: (launcher, signal.SIGTERM))
        if (self.boxes / "kinds.box").exists():
            self.assertEqual(call(self.boxes, PROGRAM, "box", "verify", "kinds").returncode, 0)
            (self.boxes / "kinds.box").unlink()
        self.expect_nothing_left()

    def expect_one_line(self, done, status, words):
        self.assertEqual(done.returncode, status, done.stderr)
        lines = own_lines(done.stderr)
        self.assertEqual(len(lines), 1, done.stderr)
        self.assertIn(words, lines[0])
        self.expect_nothing_left()

    def test_a_shard_that_cannot_be_read_is_told_once(self):
        done = self.launch(3, "-k", "6", shards=[self.folder / "missing.shard"])
        self.expect_one_line(done, 1, "missing.shard")

    def test_options_that_do_not_go_together_are_told_once(self):
        self.expect_one_line(self.launch(3), 2, "-k")

    def test_a_box_that_is_not_to_be_replaced_is_told_once(self):
        call(self.boxes, *self.learn("-k", "6"))
        done = self.launch(3, "-k", "6", force=False)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(len(own_lines(done.stderr)), 1, done.stderr)

    def test_processes_that_read_other_shards_are_told(self):
        parts = [["-n", 1, *self.learn("--mpi", "-k", "6", shards=[shard])] for shard in self.shards[:2]]
        done = call(self.boxes, LAUNCHER, *parts[0], ":", *parts[1])
        self.expect_one_line(done, 1, "different files")

    def test_a_process_without_memory_ends_the_run(self):
        learn = self.learn("--mpi", "-k", "6", shards=self.shards[2:])
        kibibytes = 40000
        errors = ""
        # With less and less of it: at first all goes well, and with too little MPI itself does not begin.
        while "out of memory" not in errors:
            (self.boxes / "kinds.box").unlink(missing_ok=True)
            self.assertGreater(kibibytes, 8000, errors)
            kibibytes -= 1000
            starved = ["sh", "-c", f'ulimit -d {kibibytes}; exec "$@"', "sh", *learn]
            done = call(self.boxes, LAUNCHER, "-n", 1, *learn, ":", "-n", 1, *starved)
            errors = done.stderr
        self.assertIn("morvaai: process 1 of 2: out of memory", errors)
        self.assertNotEqual(done.returncode, 0)
        self.expect_nothing_left()

    def test_documents_themselves_are_refused(self):
        done = call(self.boxes, LAUNCHER, "-n", 2, PROGRAM, "learn", "--mpi", "--box", "kinds", "-k", "6", SAMPLES)
        self.expect_one_line(done, 2, "--from")

    def test_a_launcher_of_another_library_is_refused(self):
        for variable in ["OMPI_COMM_WORLD_SIZE", "PMI_SIZE", "SLURM_STEP_NUM_TASKS"]:
            with self.subTest(variable=variable):
                done = call(self.boxes, *self.learn("--mpi", "-k", "6"), variables={variable: "2"})
                self.expect_one_line(done, 2, "the launcher started 2 processes")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2)
