#!/usr/bin/python3 -B
"""Lets every call that changes a file fail, or ends the process there, and looks at what is left.

A scenario is a command on files of its own. It is run once to count its calls, and then from the same
beginning for each call and each fault: killed before or after it, the call failing with an error, a write
that takes half. What must hold afterwards:

  - each file is the old or the new one, whole;
  - a call that failed is told of, with file and cause, and the status is not 0, unless the program can do
    without that call, which then has the same result as without the fault;
  - nothing else is left, or, where the process was killed, nothing after the next run, which succeeds.
"""

import argparse
import collections
import configparser
import ctypes
import errno
import fcntl
import hashlib
import mmap
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

PATIENCE = 60  # seconds for one run
MOST_CALLS = 4096
NO_CALL = 0xFFFFFFFF
NOTHING, KILL_BEFORE, KILL_AFTER, FAIL, WRITE_HALF = range(5)
FIRST, FORKED = range(2)  # which processes are meant


class Call(ctypes.Structure):
    _fields_ = [("operation", ctypes.c_char * 16), ("path", ctypes.c_char * 240)]


class Control(ctypes.Structure):
    """As preload.cpp has it."""

    _fields_ = [("action", ctypes.c_uint32), ("processes", ctypes.c_uint32), ("target", ctypes.c_uint32),
                ("error", ctypes.c_int32), ("count", ctypes.c_uint32), ("calls", Call * MOST_CALLS)]


Fault = collections.namedtuple("Fault", "name action error operations")

EVERY = None
MAKING = {"open", "mkdir", "mkdtemp", "link", "rename", "renameat", "unlink", "unlinkat", "rmdir"}
GROWING = {"open", "write", "pwrite", "sendfile", "fsync", "close", "mkdir", "mkdtemp", "link", "rename", "ftruncate"}
FAULTS = [
    Fault("killed before", KILL_BEFORE, 0, EVERY),
    Fault("killed after", KILL_AFTER, 0, EVERY),
    Fault("EIO", FAIL, errno.EIO, EVERY),
    Fault("ENOSPC", FAIL, errno.ENOSPC, GROWING),
    Fault("EROFS", FAIL, errno.EROFS, MAKING),
    Fault("EACCES", FAIL, errno.EACCES, MAKING),
    Fault("short write", WRITE_HALF, 0, {"write", "pwrite"}),
]

# What the program can do without: a directory may be on disk later, the owner may be another (it is where the program
# may not give files away), a file system may be without locks, instead of a second name there is a copy, a directory
# is tried to be made once more.
DISPENSABLE = {"fsync directory", "fchown", "flock", "link", "mkdir"}


def is_temporary(path):
    return pathlib.PurePath(path).name.startswith((".morva-", ".former", "morvaai-run-"))


def is_dispensable(call, path):
    if call == "close":  # of the lock on a file that is in place
        return not is_temporary(path)
    if call in {"unlink", "unlinkat", "rmdir"}:  # a leftover for the next run
        return is_temporary(path) or "morvaai-run-" in path
    return call in DISPENSABLE


class Broken(AssertionError):
    """Something that must hold does not."""


def expect(condition, message):
    if not condition:
        raise Broken(message)


class Finished:
    def __init__(self, status, output, errors):
        self.status, self.output, self.errors = status, output, errors


class Program:
    """The program, run with the library of faults or without."""

    def __init__(self, program, preload):
        self.program, self.preload = str(program), str(preload)
        self.file = tempfile.NamedTemporaryFile(prefix="faults-")
        self.file.truncate(ctypes.sizeof(Control))
        self.control = Control.from_buffer(mmap.mmap(self.file.fileno(), ctypes.sizeof(Control)))

    def run(self, arguments, environment=None, preloaded=False):
        variables = {**os.environ, **(environment or {})}
        if preloaded:
            variables.update(LD_PRELOAD=self.preload, FAULT_CONTROL=self.file.name)
        done = subprocess.run([self.program, *map(str, arguments)], env=variables, capture_output=True,
                              stdin=subprocess.DEVNULL, timeout=PATIENCE)
        return Finished(done.returncode, done.stdout, done.stderr.decode("utf-8", "replace"))

    def run_with(self, fault, target, arguments, environment, processes=FIRST):
        """Runs with a fault at a call, and gives the calls too."""
        control = self.control
        control.action, control.processes, control.target = fault.action, processes, target
        control.error, control.count = fault.error, 0
        finished = self.run(arguments, environment, preloaded=True)
        count = min(control.count, MOST_CALLS)
        calls = [(call.operation.decode(), call.path.decode("utf-8", "replace")) for call in control.calls[:count]]
        ctypes.memset(ctypes.byref(control, Control.calls.offset), 0, ctypes.sizeof(Call) * count)
        return finished, calls


def files_in(folder):
    """The content of each file below a folder, by its path in it; a folder has none."""
    found = {}
    for path in sorted(folder.rglob("*")):
        found[str(path.relative_to(folder))] = path.read_bytes() if path.is_file() else None
    return found


def leftovers(folder):
    return [name for name in files_in(folder) if is_temporary(name)]


class Scenario:
    """A command and the files that it begins with.

    `folder` is what each run may change; it is a copy of `beginning`.
    """

    name = ""
    processes = FIRST

    def __init__(self, program, root):
        self.program = program
        self.root = root
        self.beginning, self.folder = root / "beginning", root / "folder"
        self.beginning.mkdir(parents=True)
        self.environment = {"MORVA_BOX_PATH": str(self.folder / "boxes"), "MORVA_RUN_PATH": str(self.folder / "work")}
        self.prepare()
        self.old = files_in(self.beginning)

    def prepare(self):
        """Fills `beginning`."""

    def arguments(self):
        raise NotImplementedError

    def again(self):
        """The run that must succeed after one that was killed."""
        return self.arguments()

    def check_files(self, found):
        """Each file is the old or the new one."""
        raise NotImplementedError

    def check_done(self, found, finished):
        """All is as after a run without faults."""
        raise NotImplementedError

    def begin(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        shutil.copytree(self.beginning, self.folder)

    def ordinary(self, arguments):
        return self.program.run(arguments, self.environment)

    def count(self):
        """The calls of a run without faults."""
        self.begin()
        finished, calls = self.program.run_with(Fault("none", NOTHING, 0, EVERY), NO_CALL, self.arguments(),
                                                self.environment, self.processes)
        expect(finished.status == 0, f"without a fault: {finished.errors}")
        self.check_done(files_in(self.folder), finished)
        expect(calls, "there is no call that changes a file")
        return calls

    def run_fault(self, fault, target):
        """One run; the call that it was about, or nothing where the run came to an end before it."""
        self.begin()
        finished, calls = self.program.run_with(fault, target, self.arguments(), self.environment, self.processes)
        if target >= len(calls):
            return None
        operation, path = calls[target]
        try:
            self.judge(fault, operation, path, finished)
        except Broken as broken:
            told = finished.errors.strip() or "nothing on standard error"
            raise Broken(f"{self.name}, call {target} ({operation} {path}), {fault.name}: {broken}\n"
                         f"  status {finished.status}, {told}\n"
                         f"  files {sorted(files_in(self.folder))}") from None
        return operation

    def judge(self, fault, operation, path, finished):
        found = {name: content for name, content in files_in(self.folder).items() if not is_temporary(name)}
        self.check_files(found)
        if fault.action in (KILL_BEFORE, KILL_AFTER):
            self.judge_killed(finished)
            return
        if fault.action == WRITE_HALF or finished.status == 0:
            expect(fault.action == WRITE_HALF or is_dispensable(operation, path), "the error is not told of")
            self.check_done(found, finished)
        else:
            self.judge_failed(fault, finished)
        expect(is_temporary(path) and operation.startswith(("unlink", "rmdir")) or not leftovers(self.folder),
               "temporaries are left")

    def judge_killed(self, finished):
        expect(finished.status == -signal.SIGKILL, "it was not killed")
        self.judge_next()

    def judge_next(self):
        after = self.ordinary(self.again())
        expect(after.status == 0, f"the next run fails: {after.errors}")
        expect(not leftovers(self.folder), "the next run leaves what the killed one left")
        self.check_done(files_in(self.folder), after)

    def judge_failed(self, fault, finished):
        expect(finished.status == 1, "the status is not that of a failure")
        expect(os.strerror(fault.error) in finished.errors, "the cause is not told")
        expect(str(self.folder) in finished.errors, "the file is not told")


HARBOUR = ("Cranes lift containers from ships. Pilots steer ships into the harbour. Cranes of the harbour lift "
           "containers onto trains. Ships leave the harbour with containers, and pilots leave ships. ")
KITCHEN = ("Onions fry in butter. Flour thickens the sauce. Butter and flour make dough, and onions with butter make "
           "sauce. Dough rests in the kitchen, sauce simmers in the kitchen with onions. ")


class Boxes(Scenario):
    """Changes of the boxes: `old_ids` are there before, `new_ids` afterwards, and the command changes `changed`."""

    old_ids, new_ids, changed = [], [], "ships"

    def prepare(self):
        for folder, text in (("harbour", HARBOUR), ("kitchen", KITCHEN)):
            (self.root / "samples" / folder).mkdir(parents=True, exist_ok=True)
            for number, more in enumerate(["Storms delay ships.", "Dough needs butter."]):
                (self.root / "samples" / folder / f"{number}.txt").write_text(text + more)
        boxes = self.beginning / "boxes"
        (self.beginning / "work").mkdir()
        if self.old_ids:
            boxes.mkdir()
        environment = {**self.environment, "MORVA_BOX_PATH": str(boxes)}
        for id in self.old_ids:
            done = self.program.run(self.learning(id), environment)
            expect(done.status == 0, done.errors)
        other = {**self.environment, "MORVA_BOX_PATH": str(self.root)}
        done = self.program.run([*self.learning("elsewhere"), "-m", "dbscan", "--eps", "1.5", "--minpts", "1"],
                                other)
        expect(done.status == 0, done.errors)

    def learning(self, id):
        return ["learn", self.root / "samples", "--by-folder", "--box", id, "-j", "1"]

    def again(self):
        arguments = self.arguments()
        return arguments if "--force" in arguments else [*arguments, "--force"]

    def check_files(self, found):
        boxes = {name.removeprefix("boxes/"): content for name, content in found.items() if name.startswith("boxes/")}
        for name, content in boxes.items():
            if name == "box.ini" or content == self.old.get("boxes/" + name):
                continue
            expect(name == self.changed + ".box", f"{name} is neither old nor new")
            shown = self.ordinary(["box", "dump", self.folder / "boxes" / name])
            expect(shown.status == 0, f"{name} is not whole: {shown.errors}")
        self.check_index(boxes)

    def check_index(self, boxes):
        """The old index, or one that knows the new box file."""
        if boxes.get("box.ini") == self.old.get("boxes/box.ini"):
            return
        expect("box.ini" in boxes, "the index is gone")
        index = configparser.ConfigParser(interpolation=None, delimiters="=")
        index.read_string(boxes["box.ini"].decode())
        expect(sorted(index.sections()) == sorted(self.new_ids), f"the index lists {index.sections()}")
        for id in self.new_ids:
            entry = index[id]
            expect(id + ".box" in boxes, f"the index lists {id}, which is gone")
            expect(entry.get("MD5") == hashlib.md5(boxes[id + ".box"]).hexdigest().upper(),
                   f"the index has another file of {id}")
            expect(len(entry.get("CLASS", "").split("|")) == 2, f"the index has other classes of {id}")

    def check_done(self, found, finished):
        self.check_files(found)
        names = {"box.ini", *(id + ".box" for id in self.new_ids)}
        expect({name.removeprefix("boxes/") for name in found if name.startswith("boxes/")} == names,
               "other files than those of the boxes")
        verified = self.ordinary(["box", "verify"])
        expect(verified.status == 0, f"box verify: {verified.errors}")
        expect(verified.output.count(b"as it should be") == len(self.new_ids), "a box is not listed")


class AddFirst(Boxes):
    name, new_ids = "box add, the first box", ["ships"]

    def arguments(self):
        return ["box", "add", self.root / "elsewhere.box", "--id", "ships"]


class AddOver(AddFirst):
    name, old_ids, new_ids = "box add --force, over another box", ["fleet", "ships"], ["fleet", "ships"]

    def arguments(self):
        return [*super().arguments(), "--force"]


class Remove(Boxes):
    name, old_ids, new_ids = "box remove", ["fleet", "ships"], ["fleet"]

    def arguments(self):
        return ["box", "remove", "ships"]

    def again(self):
        return self.arguments()

    def judge_next(self):
        # The run that was killed may have been through: then there is nothing to remove any more.
        after = self.ordinary(self.again())
        expect(after.status == 0 or "there is no box" in after.errors, f"the next run fails: {after.errors}")
        after = self.ordinary(["box", "add", self.root / "elsewhere.box", "--id", "ships", "--force"])
        expect(after.status == 0, f"the next run fails: {after.errors}")
        after = self.ordinary(self.again())
        expect(not leftovers(self.folder), "the next run leaves what the killed one left")
        self.check_done(files_in(self.folder), after)


class LearnFirst(Boxes):
    name, new_ids = "learn, the first box", ["ships"]

    def arguments(self):
        return self.learning("ships")


class LearnOver(LearnFirst):
    name, old_ids, new_ids = "learn --force, over another box", ["fleet", "ships"], ["fleet", "ships"]

    def arguments(self):
        return [*super().arguments(), "--force"]


class Cluster(Boxes):
    """Lists of files, of which an earlier run left some."""

    name = "cluster -o"

    def prepare(self):
        super().prepare()
        self.lists = {"lists/class-0.txt": "a", "lists/class-1.txt": "b", "lists/class-2.txt": "c"}
        (self.beginning / "lists").mkdir()
        for name, text in self.lists.items():
            (self.beginning / name).write_text(text)
        self.new = {}

    def arguments(self):
        return ["cluster", self.root / "samples", "-m", "kmeans", "-k", "2", "-j", "1", "-o", self.folder / "lists"]

    def again(self):
        return self.arguments()

    def check_files(self, found):
        lists = {name: content for name, content in found.items() if name.startswith("lists/")}
        for name, content in lists.items():
            whole = content.endswith(b".txt\n") and content.count(b"\n") == 2
            expect(content == self.old[name] or whole, f"{name} is neither old nor new")
        expect(lists.keys() == self.lists.keys(), f"there are other lists: {sorted(lists)}")

    def check_done(self, found, finished):
        self.check_files(found)
        changed = [name for name in self.lists if found[name] != self.old[name]]
        expect(changed == ["lists/class-0.txt", "lists/class-1.txt"], f"new are {changed}")


class Collect(Boxes):
    """Working files with the text of documents."""

    name = "collect"

    def arguments(self):
        return ["collect", self.root / "samples", "-j", "1"]

    def again(self):
        return self.arguments()

    def check_files(self, found):
        expect(not [name for name in found if name.startswith("boxes")], "there are boxes")

    def check_done(self, found, finished):
        expect(list(found) == ["work"], f"there are other files: {sorted(found)}")
        expect(finished.output.count(b"  words ") == 4, "not all files are told of")


class CollectInWorkers(Collect):
    """What a worker cannot write costs its file; one that is killed is replaced."""

    name, processes = "collect, in the workers", FORKED

    def judge_killed(self, finished):
        # The keeper of the working directory is forked too, and is not missed.
        expect(finished.status in (0, 1), "the run did not go on")
        expect(not leftovers(self.folder), "temporaries are left")
        self.judge_next()

    def judge_failed(self, fault, finished):
        expect(finished.status == 1, "the status is not that of a failure")
        expect(str(self.root / "samples") in finished.errors, "the file is not told")


class Extract(Scenario):
    """A shard in the place of another; what was read is kept for the next run."""

    name = "extract, over another shard"

    def prepare(self):
        (self.root / "samples").mkdir()
        for number, text in enumerate([HARBOUR, KITCHEN]):
            (self.root / "samples" / f"{number}.txt").write_text(text)
        self.make([self.root / "samples" / "0.txt"], self.beginning / "all.shard")
        self.make([self.root / "samples"], self.root / "new.shard")
        self.new = (self.root / "new.shard").read_bytes()

    def make(self, inputs, shard):
        done = self.program.run(["extract", *inputs, "-o", shard])
        expect(shard.exists(), done.errors)

    def arguments(self):
        return ["extract", self.root / "samples" / "0.txt", self.root / "samples" / "1.txt", "-o",
                self.folder / "all.shard", "-j", "1"]

    def check_files(self, found):
        expect(found.get("all.shard") in (self.old["all.shard"], self.new), "the shard is neither old nor new")
        others = found.keys() - {"all.shard", "all.shard.part", "all.shard.new"}
        expect(not others, f"there are other files: {sorted(others)}")

    def check_done(self, found, finished):
        expect(found == {"all.shard": self.new}, f"not the new shard alone: {sorted(found)}")


class Merge(Extract):
    name = "merge, over another shard"

    def prepare(self):
        super().prepare()
        for number in (0, 1):
            self.make([self.root / "samples" / f"{number}.txt"], self.root / f"{number}.shard")

    def arguments(self):
        return ["merge", self.root / "1.shard", self.root / "0.shard", "-o", self.folder / "all.shard"]


SCENARIOS = [AddFirst, AddOver, Remove, LearnFirst, LearnOver, Cluster, Collect, CollectInWorkers, Extract,
             Merge]


class Figures:
    def __init__(self):
        self.runs, self.calls, self.operations = collections.Counter(), 0, collections.Counter()
        self.broken = []

    def go_through(self, scenario, faults):
        calls = scenario.count()
        self.calls = len(calls)
        for target, (operation, _) in enumerate(calls):
            for fault in faults:
                if fault.operations is not EVERY and operation not in fault.operations:
                    continue
                try:
                    met = scenario.run_fault(fault, target)
                except Broken as broken:
                    self.broken.append(str(broken))
                    met = operation
                if met is not None:
                    self.runs[fault.name] += 1
                    self.operations[met] += 1


def scenario_of(kind, program, place):
    return kind(program, pathlib.Path(place) / kind.__name__)


def working_place():
    """In memory where that can be: nothing is to be synced to a disk."""
    memory = "/dev/shm"
    return tempfile.TemporaryDirectory(prefix="faults-", dir=memory if os.access(memory, os.W_OK) else None)


def check_held_lock(program, place):
    """A run that cannot have the lock on the boxes says so, and changes nothing."""
    boxes = pathlib.Path(place) / "held"
    boxes.mkdir()
    directory = os.open(boxes, os.O_RDONLY)
    fcntl.flock(directory, fcntl.LOCK_EX)
    begun = time.monotonic()
    finished = program.run(["box", "add", pathlib.Path(place) / "AddFirst" / "elsewhere.box"],
                           {"MORVA_BOX_PATH": str(boxes)})
    seconds = time.monotonic() - begun
    os.close(directory)
    expect(finished.status == 1 and "another run has been changing the boxes" in finished.errors,
           f"a lock that another run has is not told of: {finished.errors}")
    expect(not files_in(boxes), "the boxes were changed without the lock")
    print(f"a lock that another run keeps: told after {seconds:.0f} s, nothing changed")


def check_side_by_side(program, place, seconds=15):
    """Of runs side by side most are killed at any moment; none loses what another has entered."""
    boxes = pathlib.Path(place) / "crowd"
    boxes.mkdir()
    environment = {**os.environ, "MORVA_BOX_PATH": str(boxes)}
    command = [program.program, "box", "add", str(pathlib.Path(place) / "AddFirst" / "elsewhere.box"), "--force"]
    chance, runs, killed, entered = random.Random(7), 0, 0, set()
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        ids = [f"box{(runs + number) % 40}" for number in range(3)]
        crowd = [subprocess.Popen([*command, "--id", id], env=environment, stdout=subprocess.DEVNULL) for id in ids]
        time.sleep(chance.random() * 0.05)
        for process in crowd[1:]:
            process.kill()
        for id, process in zip(ids, crowd):
            status = process.wait(PATIENCE)
            expect(status in (0, -signal.SIGKILL), f"a run side by side with others ends with status {status}")
            runs, killed = runs + 1, killed + (status != 0)
            if status == 0:
                entered.add(id)
    listed = program.run(["box", "list"], {"MORVA_BOX_PATH": str(boxes)})
    found = {line.split(":")[0] for line in listed.output.decode().splitlines()}
    expect(listed.status == 0 and entered <= found, f"entries are lost: {sorted(entered - found)} {listed.errors}")
    last = program.run([*command[1:], "--id", "last"], {"MORVA_BOX_PATH": str(boxes)})
    expect(last.status == 0 and not leftovers(boxes), "the last run leaves what killed ones left")
    print(f"side by side: {runs} runs, {killed} of them killed, {len(entered)} boxes entered, none lost")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("preload", type=pathlib.Path)
    parser.add_argument("--only", help="scenarios whose name holds this")
    options = parser.parse_args()
    program = Program(options.program.resolve(), options.preload.resolve())
    names = [fault.name for fault in FAULTS]
    print(f"{'scenario':<34} {'calls':>5} {'faults':>6} " + " ".join(f"{name:>13}" for name in names) + "  broken")
    total, operations, broken = collections.Counter(), collections.Counter(), []
    with working_place() as place:
        for kind in SCENARIOS:
            if options.only and options.only not in kind.name:
                continue
            figures = Figures()
            figures.go_through(scenario_of(kind, program, place), FAULTS)
            print(f"{kind.name:<34} {figures.calls:>5} {sum(figures.runs.values()):>6} " +
                  " ".join(f"{figures.runs[name]:>13}" for name in names) + f"  {len(figures.broken)}", flush=True)
            total += figures.runs
            operations += figures.operations
            broken += figures.broken
        if not options.only:
            check_side_by_side(program, place)
            check_held_lock(program, place)
    print(f"{'all':<34} {'':>5} {sum(total.values()):>6} " + " ".join(f"{total[name]:>13}" for name in names) +
          f"  {len(broken)}")
    print("by call: " + ", ".join(f"{name} {count}" for name, count in operations.most_common()))
    for one in broken:
        print(one)
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
