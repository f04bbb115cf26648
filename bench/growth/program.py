"""The program on generated documents as files: from documents to shards, and from shards to boxes."""

import hashlib
import re
import shutil
import statistics
import subprocess

import commands
import points
from records import progress

PARTS = 4
# Short commands are run more often.
SHORT_SECONDS, SHORT_ROUNDS = 5.0, 3
LEARN = {
    "learn-kmeans-20": ["--method", "kmeans", "-k", "20"],
    "learn-kmeans-100": ["--method", "kmeans", "-k", "100"],
    "learn-canopy-seeds": ["--method", "kmeans", "--canopy-seeds", "-k", "20"],
    "learn-dbscan-auto": ["--method", "dbscan", "--eps", "auto"],
    "learn-dbscan-given": ["--method", "dbscan", "--eps", str(points.EPS), "--minpts", "2"],
}
IDENTIFIER = re.compile(rb"[0-9A-Fa-f]{8}-(?:[0-9A-Fa-f]{4}-){3}[0-9A-Fa-f]{12}|\b[0-9A-Fa-f]{32}\b")
RANKS = "2"
# Mark, version, length and checksum.
BOX_HEAD = 32


def measure(setting, size, with_plain):
    run = Run(setting, size)
    try:
        run.documents()
        run.extract()
        run.merge()
        run.similar()
        run.learn(with_plain)
    except Unable as failure:
        progress(f"  {failure}")
    finally:
        shutil.rmtree(run.folder, ignore_errors=True)


class Unable(Exception):
    """Why what comes behind cannot be measured."""


class Run:
    """One size."""

    def __init__(self, setting, size):
        self.setting, self.size = setting, size
        self.folder = setting.work / f"{size}"
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        self.commands = commands.Commands(setting.build)
        self.program = setting.build / "bin/morvaai"
        self.inputs = []
        self.shard = self.folder / "all.shard"

    def documents(self):
        """Those that are not there yet are written."""
        subprocess.run([self.setting.build / "bench/growth_documents", self.setting.documents, str(self.size)],
                       check=True)
        self.inputs = sorted(self.setting.documents.iterdir())[:self.size // 500]
        size = sum(path.stat().st_size for folder in self.inputs for path in folder.iterdir())
        self.setting.records.note(f"corpus/files/{self.size}", bytes=size)

    def step(self, name, command, makes=None, **more):
        """Measures a step, several times if it is short; whether that was done. What it makes has to be there then."""
        refused = self.setting.schedule.refuses(name, self.size)
        if refused:
            self.setting.records.missing(f"{name}/{self.size}", refused)
            return False
        runs = []
        try:
            while len(runs) < SHORT_ROUNDS and (not runs or runs[-1].seconds < SHORT_SECONDS):
                runs.append(self.run_once(command, makes, **more))
        except commands.Failed as failure:
            self.setting.records.missing(f"{name}/{self.size}", str(failure))
            self.setting.schedule.fail(name)
            return False
        self.setting.schedule.took(name, self.size, statistics.median(run.cpu_seconds for run in runs))
        commands.add_runs(self.setting.records, f"{name}/{self.size}", runs, items=self.size)
        return True

    def run_once(self, command, makes, **more):
        """Some documents are broken, which is no failure of a run that makes what it should."""
        if makes:
            makes.unlink(missing_ok=True)
        run = self.commands.run(command, self.setting.schedule.longest(), good=(0, 1),
                                environment={"MORVA_BOX_PATH": str(self.folder)}, **more)
        if makes and not makes.exists():
            raise commands.Failed(last_words(run.errors) or f"{makes.name} was not written")
        return run

    def extract(self):
        done = [self.step(f"extract/morvaai -j {jobs}", [self.program, "extract", *self.inputs, "-o", self.shard, "-j",
                                                         jobs], self.shard, all_processes=True) for jobs in (1, 2)]
        if not any(done):
            raise Unable("without a shard nothing else is measured")
        self.setting.records.note(f"corpus/shard/{self.size}", bytes=self.shard.stat().st_size)

    def merge(self):
        """Of as many parts as there might be machines; the result must be what one run gave."""
        if self.setting.schedule.refuses("extract/morvaai -j 2", self.size):
            self.setting.records.missing(f"merge/morvaai/{self.size}", "left out: its parts would take too long")
            return
        parts = [self.folder / f"part-{number}.shard" for number in range(1, PARTS + 1)]
        for number, part in enumerate(parts, 1):
            subprocess.run([self.program, "extract", *self.inputs, "-o", part, "--part", f"{number}/{PARTS}", "-j",
                            "2"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
        merged = self.folder / "merged.shard"
        if self.step("merge/morvaai", [self.program, "merge", *parts, "-o", merged], merged):
            self.same("shard", {"extracted": digest_of_file(self.shard), f"merged of {PARTS}": digest_of_file(merged)})

    def similar(self):
        self.step("similar/morvaai", [self.program, "similar", "--from", self.shard])

    def learn(self, with_plain):
        for name, options in LEARN.items():
            box = self.folder / f"{name}.box"
            learning = ["learn", "--from", self.shard, "--box", name, "--force", *options]
            wanted = {"one process": (f"{name}/morvaai", [self.program, *learning], False)}
            if self.setting.has_mpi():
                wanted[f"{RANKS} ranks"] = (f"{name}/morvaai {RANKS} ranks", [
                    "mpirun", "-n", RANKS, self.program, *learning, "--mpi"], True)
            if with_plain:
                # Its time has the reading of the documents in it.
                wanted["plain, from documents"] = (f"documents-{name}/plain", [
                    self.setting.plain / "bin/morvaai", "learn", *self.inputs, "--box", name, "--force", "-j", "2",
                    *options], True)
            self.same(name, {key: digest_of_box(box) for key, (step, command, all_processes) in wanted.items()
                             if self.step(step, command, box, all_processes=all_processes)})

    def same(self, what, digests):
        if len(digests) > 1:
            self.setting.records.note(f"same/{what}/{self.size}", digests=digests)


def last_words(errors):
    """The last line that says something: launchers end with lines of dashes."""
    return next((line for line in reversed(errors.splitlines()) if any(map(str.isalnum, line))), "")


def digest_of_file(path):
    with path.open("rb") as file:
        return hashlib.file_digest(file, "sha256").hexdigest()


def digest_of_box(path):
    """Of all that a box holds but for the identifiers of its classes, which were new each time before, and with them
    the checksum in front."""
    return hashlib.sha256(IDENTIFIER.sub(b"", path.read_bytes()[BOX_HEAD:])).hexdigest()
