"""The scripts for clusters under Slurm, which is there for this program only: scripts/check-slurm starts it.
Usage: slurm_test.py PROGRAM SAMPLES SCRIPTS [TEST...]"""

import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = pathlib.Path(sys.argv[1]).absolute()
SAMPLES = pathlib.Path(sys.argv[2])
SCRIPTS = pathlib.Path(sys.argv[3])

PARTS = 4
RESUMED = "[1-9][0-9]* of an earlier run"
DOCUMENTS = 4000  # so many that a task can be met in the middle
LEARNING = ["kinds", "-m", "kmeans", "-k", "6"]
LAUNCHERS = {"libmpi.so": "mpirun.openmpi", "libmpich.so": "mpirun.mpich"}
FINAL = {"BOOT_FAIL", "CANCELLED", "COMPLETED", "DEADLINE", "FAILED", "NODE_FAIL", "TIMEOUT"}


def call(*words, status=0, **environment):
    """What a command prints, which has to end with that status."""
    done = subprocess.run([str(word) for word in words], env=os.environ | environment, capture_output=True, text=True)
    if done.returncode != status:
        raise AssertionError(f"{words}: {done.returncode}\n{done.stdout[:1000]}{done.stderr}")
    return done.stdout


def until(what, condition, seconds=120):
    """Waits for a condition, and gives what it gives."""
    end = time.monotonic() + seconds
    while not (result := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"{what}: not within {seconds} s\n{call('squeue', '--array', '--states=all')}")
        time.sleep(0.05)
    return result


def states(job):
    """The state of each task of a job, by the number of the task, which a job that is no array has not."""
    lines = call("squeue", "--noheader", "--array", "--states=all", f"--jobs={job}", "--format=%K %T").split("\n")
    return {line.split()[0]: line.split()[1] for line in lines if line}


def wait_for(job):
    """The states in which a job has come to its end."""
    until(f"job {job}", lambda: set(states(job).values()) <= FINAL)
    return states(job)


def write_documents(folder):
    """Texts of few subjects, the same at every call."""
    chance = random.Random(7)
    for number in range(DOCUMENTS):
        subject = chance.randrange(12)
        words = [f"word{chance.choice('abcdefgh')}{subject * 40 + int(chance.paretovariate(0.7)) % 200}"
                 for _ in range(chance.randrange(40, 400))]
        (folder / f"text-{number:04}.txt").write_text(" ".join(words))


class Run(unittest.TestCase):
    """A run by four tasks on two nodes, compared with what a single process makes of the same documents."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.documents = cls.folder / "documents"
        shutil.copytree(SAMPLES, cls.documents)
        (cls.documents / "broken.docx").write_bytes((SAMPLES / "harbour-report.docx").read_bytes()[:999])
        write_documents(cls.documents)
        cls.single = cls.folder / "single.shard"
        # One document cannot be read, and the rest can.
        call(PROGRAM, "extract", cls.documents, "-o", cls.single, status=1)
        call(PROGRAM, "learn", "--from", cls.single, "--box", *LEARNING, status=1, MORVA_BOX_PATH=str(cls.folder))

    def setUp(self):
        self.run_folder = pathlib.Path(tempfile.mkdtemp(dir=self.folder))

    def tearDown(self):
        call("scancel", "--quiet", f"--user={os.getuid()}")

    def part(self, number):
        return self.run_folder / f"parts/{number}-of-{PARTS}.shard"

    def log(self, name):
        return (self.run_folder / "log" / f"{name}.log").read_text()

    def submit(self, *learning, **environment):
        """The jobs of a run, in the order of their work."""
        lines = call(SCRIPTS / "submit", self.run_folder, PARTS, self.documents, *learning,
                     MORVAAI=str(PROGRAM), **environment).splitlines()
        return [line.split()[1].rstrip(":") for line in lines]

    def in_the_middle(self, number):
        """Waits until a task has done some of its documents, and is far from its end."""
        begun = self.part(number).with_name(self.part(number).name + ".part")
        enough = self.single.stat().st_size / PARTS / 8
        until(f"{begun} grows", lambda: begun.exists() and begun.stat().st_size > enough)

    def expect_the_shard_of_a_single_run(self):
        self.assertEqual((self.run_folder / "all.shard").read_bytes(), self.single.read_bytes())

    def test_shard_and_box_are_those_of_a_single_run(self):
        extract, merge, learn = self.submit("--", *LEARNING)
        wait_for(learn)
        self.assertEqual(set(states(extract).values()), {"COMPLETED"}, self.log("extract-1"))
        self.assertEqual(set(states(merge).values()), {"COMPLETED"}, self.log("merge"))
        self.expect_the_shard_of_a_single_run()
        box = self.run_folder / "boxes/kinds.box"
        self.assertTrue(box.exists(), self.log("learn"))
        self.assertEqual(box.read_bytes(), (self.folder / "kinds.box").read_bytes())

    def test_a_task_that_is_requeued_goes_on_where_it_stopped(self):
        extract, merge = self.submit()
        self.in_the_middle(2)
        call("scontrol", "requeue", f"{extract}_2")
        wait_for(merge)
        self.assertIn("Restarts=1", call("scontrol", "show", "job", f"{extract}_2"))
        self.assertRegex(self.log("extract-2"), RESUMED)
        self.expect_the_shard_of_a_single_run()

    def test_the_tasks_of_a_node_that_is_lost_go_on_elsewhere(self):
        extract, merge = self.submit()
        self.in_the_middle(1)
        node = call("squeue", "--noheader", f"--jobs={extract}_1", "--format=%N").strip()
        call("scontrol", "update", f"nodename={node}", "state=down", "reason=test")
        self.addCleanup(call, "scontrol", "update", f"nodename={node}", "state=resume")
        wait_for(merge)
        self.assertIn("Restarts=1", call("scontrol", "show", "job", f"{extract}_1"))
        self.assertRegex(self.log("extract-1"), RESUMED)
        self.expect_the_shard_of_a_single_run()

    def test_a_cancelled_task_keeps_the_merge_from_running_and_the_same_command_goes_on(self):
        extract, merge = self.submit()
        self.in_the_middle(3)
        call("scancel", f"{extract}_3")
        self.assertEqual(wait_for(merge), {"N/A": "CANCELLED"})
        self.assertEqual(wait_for(extract)["3"], "CANCELLED")
        self.assertFalse((self.run_folder / "all.shard").exists())

        before = self.part(1).stat()
        _, merge = self.submit()
        wait_for(merge)
        self.assertRegex(self.log("extract-3"), RESUMED)
        self.assertEqual(self.part(1).stat().st_mtime_ns, before.st_mtime_ns)
        self.expect_the_shard_of_a_single_run()

    def test_a_task_that_fails_keeps_the_merge_from_running_and_tells_why(self):
        self.part(4).mkdir(parents=True)
        extract, merge = self.submit()
        self.assertEqual(wait_for(merge), {"N/A": "CANCELLED"})
        self.assertEqual(wait_for(extract), {"1": "COMPLETED", "2": "COMPLETED", "3": "COMPLETED", "4": "FAILED"})
        self.assertIn(str(self.part(4)), self.log("extract-4"))

        self.part(4).rmdir()
        _, merge = self.submit()
        wait_for(merge)
        self.expect_the_shard_of_a_single_run()

    def test_a_merged_shard_is_not_made_again(self):
        _, merge = self.submit()
        wait_for(merge)
        before = (self.run_folder / "all.shard").stat()
        _, merge = self.submit()
        wait_for(merge)
        self.assertEqual((self.run_folder / "all.shard").stat().st_mtime_ns, before.st_mtime_ns)

    def test_several_ranks_learn_the_box_of_a_single_run(self):
        linked = call("ldd", PROGRAM)
        launcher = next((name for library, name in LAUNCHERS.items() if library in linked), None)
        if launcher is None:
            self.skipTest("the program is built without MPI")
        # More than a node has processors. Open MPI has to be told twice where the tests are run by root.
        as_root = {"OMPI_ALLOW_RUN_AS_ROOT": "1", "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM": "1"}
        _, _, learn = self.submit("--", *LEARNING, RANKS="3", MPIRUN=launcher, **as_root)
        self.assertEqual(wait_for(learn), {"N/A": "COMPLETED"}, self.log("learn"))
        self.assertEqual((self.run_folder / "boxes/kinds.box").read_bytes(), (self.folder / "kinds.box").read_bytes())
        # Whatever the launcher reads it by, a log is no terminal.
        self.assertNotIn("\x1b", self.log("learn"))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
