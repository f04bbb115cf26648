"""Whole commands, each in a process of its own, in turn."""

import dataclasses
import json
import os
import pathlib
import shutil
import signal
import subprocess
import threading

from records import progress

MEASURED_COMMAND = "measured_command"


class Failed(Exception):
    """Why a command gave no measurement."""


@dataclasses.dataclass
class Run:
    """What one command took, the proportional bytes only where all processes were watched; and the end of what it
    said on standard error."""

    seconds: float
    cpu_seconds: float
    peak_bytes: int
    proportional_bytes: int = 0
    errors: str = ""

    @classmethod
    def sum(cls, runs):
        """Runs one after the other."""
        return cls(sum(run.seconds for run in runs), sum(run.cpu_seconds for run in runs),
                   max(run.peak_bytes for run in runs), max(run.proportional_bytes for run in runs))


class ProportionalMemory(threading.Thread):
    """The highest sum, over the processes of a session, of the memory that each has a share of."""

    def __init__(self, session):
        super().__init__(daemon=True)
        self.session, self.highest, self.done = session, 0, threading.Event()

    def run(self):
        while not self.done.wait(0.05):
            self.highest = max(self.highest, sum(self._of(process) for process in self._processes()))

    def end(self):
        self.done.set()
        self.join()
        return self.highest

    def _processes(self):
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                # The fields behind the name, which may hold spaces itself.
                fields = (process / "stat").read_text().rpartition(")")[2].split()
            except OSError:
                continue
            if int(fields[3]) == self.session:
                yield process

    def _of(self, process):
        try:
            lines = (process / "smaps_rollup").read_text().splitlines()
        except OSError:
            return 0
        return next((1024 * int(line.split()[1]) for line in lines if line.startswith("Pss:")), 0)


class Commands:
    """Runs commands with the small program that measures them."""

    def __init__(self, build):
        self.starter = build / "bench" / MEASURED_COMMAND

    def run(self, command, limit=120.0, all_processes=False, good=(0,), environment=None):
        """One run; Failed where the command is missing, takes longer than the limit in seconds, or ends
        with another status than the good ones."""
        if not shutil.which(str(command[0])):
            raise Failed(f"{command[0]} is not installed")
        reading, writing = os.pipe()
        with os.fdopen(reading) as answer:
            with subprocess.Popen([self.starter, str(writing), *map(str, command)], pass_fds=[writing],
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.PIPE, start_new_session=True,
                                  env={**os.environ, **(environment or {})}) as process:
                os.close(writing)
                memory = ProportionalMemory(process.pid) if all_processes else None
                if memory:
                    memory.start()
                errors = self._wait(process, limit)
                highest = memory.end() if memory else 0
            line = answer.read()
        if errors is None:
            raise Failed(f"{command[0]} took longer than {limit:.0f} s")
        told = json.loads(line)
        status = told.pop("status")
        if status not in good:
            raise Failed(f"{command[0]} ended with {status}: {errors[-200:].strip()}")
        return Run(**told, proportional_bytes=highest, errors=errors[-200:].strip())

    @staticmethod
    def _wait(process, limit):
        try:
            return process.communicate(timeout=limit)[1].decode("utf-8", "replace")
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            return None


def in_turn(candidates, rounds, enough_seconds, records, operation, case, **more):
    """Measures candidates against each other: A, B, A, B and so on. candidates maps a name to a function
    that does the work once and returns a Run. One that has taken enough seconds in all is not run again,
    one that fails is told and left out."""
    runs = {name: [] for name in candidates}
    failed = set()
    for _ in range(rounds):
        for name, work in candidates.items():
            if name in failed or sum(run.seconds for run in runs[name]) > enough_seconds:
                continue
            try:
                runs[name].append(work())
            except Failed as failure:
                failed.add(name)
                records.missing(f"{operation}/{name}/{case}", str(failure))
    for name in candidates:
        if name not in failed:
            add_runs(records, f"{operation}/{name}/{case}", runs[name], **more)


def add_runs(records, name, runs, **more):
    proportional = [run.proportional_bytes for run in runs]
    records.add(name, [run.seconds for run in runs], cpu_seconds=[run.cpu_seconds for run in runs],
                peak_bytes=[run.peak_bytes for run in runs],
                proportional_bytes=proportional if all(proportional) else None, **more)
    progress(f"  {name}: {', '.join(f'{run.seconds:.3f}' for run in runs)} s")

