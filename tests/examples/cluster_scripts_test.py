"""The scripts for clusters, with a stand-in for Slurm's sbatch that does each job at once. What Slurm itself makes of
them is looked at by scripts/check-slurm. Usage: cluster_scripts_test.py PROGRAM SAMPLES SCRIPTS"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM = pathlib.Path(sys.argv[1])
SAMPLES = pathlib.Path(sys.argv[2])
SCRIPTS = pathlib.Path(sys.argv[3])

# Takes the options that submit gives, and forgets a job that waits for one that failed.
SBATCH = """#!/usr/bin/env bash
set -uo pipefail
ids=1
while [[ "$1" == --* ]]; do
  case "$1" in
    --array=1-*) ids=$(seq "${1#--array=1-}") ;;
    --ntasks=*) export SLURM_NTASKS=${1#--ntasks=} ;;
    --dependency=afterok:*) [ -f "$JOBS/${1##*:}.done" ] || is_skipped=1 ;;
  esac
  shift
done
job=$(($(wc -l <"$JOBS/list") + 1))
echo "$*" >>"$JOBS/list"
echo "$job"
[ -z "${is_skipped:-}" ] || exit 0
for id in $ids; do
  SLURM_ARRAY_TASK_ID=$id bash "$@" >>"$JOBS/log" 2>&1 || has_failed=1
done
[ -n "${has_failed:-}" ] || touch "$JOBS/$job.done"
"""


class Scripts(unittest.TestCase):
    def test_they_are_shell_scripts(self):
        for file in sorted(SCRIPTS.iterdir()):
            subprocess.run(["bash", "-n", file], check=True)

    @unittest.skipUnless(shutil.which("shellcheck"), "shellcheck is not installed")
    def test_they_are_without_mistakes(self):
        subprocess.run(["shellcheck", *sorted(SCRIPTS.iterdir())], check=True)


class Run(unittest.TestCase):
    """A run over two samples and a file that is no document of its kind, in two parts."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.run_folder = self.folder / "100% run"
        self.documents = self.folder / "documents"
        self.documents.mkdir()
        for name in ["budget.xlsx", "travel-policy.html"]:
            shutil.copy(SAMPLES / name, self.documents)
        (self.documents / "broken.docx").write_bytes((SAMPLES / "harbour-report.docx").read_bytes()[:999])
        jobs = self.folder / "jobs"
        jobs.mkdir()
        (jobs / "list").touch()
        (jobs / "sbatch").write_text(SBATCH)
        (jobs / "sbatch").chmod(0o755)
        self.jobs = jobs
        self.environment = os.environ | {
            "JOBS": str(jobs), "MORVAAI": str(PROGRAM), "PATH": f"{jobs}:{os.environ['PATH']}"}
        for name in ["CPUS", "RANKS", "MORVA_BOX_PATH"]:
            self.environment.pop(name, None)

    def submit(self, *words):
        return subprocess.run([SCRIPTS / "submit", *words], env=self.environment, capture_output=True, text=True)

    def morvaai(self, *words):
        boxes = {"MORVA_BOX_PATH": str(self.folder / "boxes")}
        return subprocess.run([PROGRAM, *words], env=self.environment | boxes, capture_output=True, text=True)

    def test_shard_and_box_are_those_of_a_single_machine(self):
        learning = ["kinds", "-m", "dbscan", "--eps", "2", "--minpts", "1"]
        done = self.submit(self.run_folder, "2", self.documents, "--", *learning)
        self.assertEqual(done.returncode, 0, done.stderr)

        single = self.folder / "single.shard"
        self.morvaai("extract", self.documents, "-o", single)
        self.morvaai("learn", "--from", single, "--box", *learning)
        log = (self.jobs / "log").read_text()
        self.assertTrue((self.jobs / "3.done").exists(), log)
        self.assertEqual((self.run_folder / "all.shard").read_bytes(), single.read_bytes(), log)
        self.assertEqual((self.run_folder / "boxes/kinds.box").read_bytes(),
                         (self.folder / "boxes/kinds.box").read_bytes(), log)

    def test_a_part_that_fails_keeps_the_others_and_is_all_that_is_done_again(self):
        obstacle = self.run_folder / "parts/2-of-2.shard"
        obstacle.mkdir(parents=True)
        self.submit(self.run_folder, "2", self.documents)
        first = self.run_folder / "parts/1-of-2.shard"
        before = first.stat()
        self.assertFalse((self.run_folder / "all.shard").exists())

        obstacle.rmdir()
        self.submit(self.run_folder, "2", self.documents)
        self.assertTrue((self.run_folder / "all.shard").exists(), (self.jobs / "log").read_text())
        self.assertEqual(first.stat().st_mtime_ns, before.st_mtime_ns)

    def test_a_part_that_is_gone_is_missed_by_merging(self):
        self.submit(self.run_folder, "2", self.documents)
        merge = ["bash", SCRIPTS / "merge.sbatch", self.run_folder, "2"]
        again = subprocess.run(merge, env=self.environment, capture_output=True, text=True)
        self.assertEqual((again.returncode, again.stdout), (0, f"{self.run_folder}/all.shard is there\n"))

        (self.run_folder / "parts/1-of-2.shard").unlink()
        lacking = subprocess.run(merge, env=self.environment, capture_output=True, text=True)
        self.assertEqual(lacking.returncode, 1)
        self.assertIn("1-of-2.shard: No such file or directory", lacking.stderr)

    def test_a_machine_without_the_folder_makes_no_shard(self):
        self.submit(self.run_folder, "1", self.documents, self.folder / "elsewhere")
        self.assertIn(f"{self.folder}/elsewhere is not there", (self.jobs / "log").read_text())
        self.assertFalse((self.run_folder / "parts").exists())

    def test_wrong_use_submits_nothing(self):
        for words in [[], [self.run_folder, "2"], [self.run_folder, "0", self.documents], [self.run_folder, "--", "2"]]:
            done = self.submit(*words)
            self.assertEqual((done.returncode, done.stdout), (2, ""))
            self.assertTrue(done.stderr.startswith("usage: "))
        self.assertEqual((self.jobs / "list").read_text(), "")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
