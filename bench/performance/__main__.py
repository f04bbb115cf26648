"""Measures everything beside its peers and writes docs/performance.md. See scripts/bench."""

import argparse
import functools
import hashlib
import os
import pathlib
import shutil
import subprocess
import sys
import traceback

import commands
import extraction
import folder
import google
import learning
import machine
import page
import peers
import records
import summary
from records import progress

ROOT = pathlib.Path(__file__).resolve().parents[2]
RESULTS = ROOT / "build/performance"
# What the driver itself measures.
ALWAYS_BUILT = [commands.MEASURED_COMMAND, "morvaai-tool"]
MAKE_DATA = ["documents.py", "texts.py", "extraction.py", "folder.py", "learning.py"]
MEASURES = {"text": extraction.measure, "folder": folder.measure, "learn": learning.measure}


class Setting:
    """What a measurement needs to know."""

    def __init__(self, options, rows):
        self.rows, self.names = rows, options.rows or [row["id"] for row in rows]
        earlier = self._unwanted_of(options.raw)
        self.root, self.build, self.data = ROOT, options.built or ROOT / "build/release", RESULTS / "data"
        self.program = self.build / "bin/morvaai"
        self.quick, self.rounds = options.quick, 3 if options.quick else 5
        self.corpus = options.corpus.resolve() if options.corpus else None
        self.records = records.Records(options.raw, earlier)
        self.commands = commands.Commands(self.build)
        self.printed = []
        self._drop_data_of_other_sources()
        # Programs and scripts learn it from here.
        os.environ.pop("MORVA_CORPUS", None)
        if self.corpus:
            os.environ["MORVA_CORPUS"] = str(self.corpus)

    def _drop_data_of_other_sources(self):
        """Documents are made once; what makes them is known by a digest."""
        made_by = hashlib.sha256(b"".join((ROOT / "bench/performance" / name).read_bytes() for name in MAKE_DATA))
        mark = self.data / made_by.hexdigest()[:16]
        if self.data.exists() and not mark.exists():
            shutil.rmtree(self.data)
        self.data.mkdir(parents=True, exist_ok=True)
        mark.touch()

    def wants(self, name):
        """Whether a result belongs to a row that is to be measured, or to none at all."""
        operation = name.split("/")[0]
        owners = [row["id"] for row in self.rows if summary.belongs(operation, row["operations"])]
        return not owners or any(owner in self.names for owner in owners)

    def _unwanted_of(self, raw):
        """What an earlier run found of the rows that are not to be measured now."""
        if len(self.names) == len(self.rows) or not raw.exists():
            return []
        return [result for result in records.read(raw)[1] if not self.wants(result["name"])]


def arguments(rows):
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__)
    parser.add_argument("--quick", action="store_true", help="fewer sizes and runs: some four minutes")
    parser.add_argument("--rows", nargs="+", metavar="ROW", choices=[row["id"] for row in rows],
                        help="only these: " + ", ".join(row["id"] for row in rows))
    parser.add_argument("--corpus", type=pathlib.Path, default=os.environ.get("MORVA_CORPUS"),
                        help="real documents and texts, MORVA_CORPUS if not given")
    parser.add_argument("--built", type=pathlib.Path, metavar="FOLDER", help="build nothing, measure what is there")
    parser.add_argument("--raw", type=pathlib.Path, default=RESULTS / "results.jsonl",
                        help="the results, as JSON lines")
    parser.add_argument("--page", type=pathlib.Path, default=ROOT / "docs/performance.md")
    parser.add_argument("--render", action="store_true", help="only write the page again from the results")
    options = parser.parse_args()
    options.corpus = pathlib.Path(options.corpus) if options.corpus else None
    return options


def build(rows):
    """What does not build is told, and then missing where it is to be measured."""
    progress("building")
    subprocess.run(["cmake", "--preset", "release", "-DMORVA_BUILD_BENCH=ON"], cwd=ROOT, stdout=subprocess.DEVNULL,
                   check=True)
    targets = [*ALWAYS_BUILT, *(name for row in rows for name in row.get("programs", []) + row.get("builds", []))]
    for target in dict.fromkeys(targets):
        done = subprocess.run(["cmake", "--build", "--preset", "release", "--target", target], cwd=ROOT,
                              stdout=subprocess.PIPE, text=True, check=False)
        if done.returncode != 0:
            progress(f"{target} was not built:\n{done.stdout[-2000:]}")


def parts_of(setting, row):
    """Names and functions of all that a row needs. What prints results of several rows is run once."""
    for name in row.get("programs", []):
        rounds = (1 if setting.quick else row["rounds"]) if "rounds" in row else setting.rounds
        yield name, functools.partial(google.measure, setting, name, row["operations"], rounds)
    for command in row.get("prints", []):
        if command not in setting.printed:
            setting.printed.append(command)
            yield command[0], functools.partial(peers.measure, setting, command)
    for name in row.get("driver", []):
        yield name, functools.partial(MEASURES[name], setting)


def measure(setting, row):
    """A part that fails does not keep the others from being measured."""
    for name, part in parts_of(setting, row):
        try:
            part()
        except Exception:  # pylint: disable=broad-except
            traceback.print_exc()
            setting.records.missing(f"{row['id']}: {name}", traceback.format_exc().strip().rpartition("\n")[2])


def how(options):
    return {"real documents": "yes" if options.corpus else "no, generated ones only",
            **({"quick": "yes: few sizes and runs"} if options.quick else {}),
            **({"of this run": ", ".join(options.rows)} if options.rows else {})}


def main():
    rows = page.rows()
    options = arguments(rows)
    failures = []
    if not options.render:
        if not options.built:
            build(rows)
        setting = Setting(options, rows)
        setting.records.about({**machine.describe(ROOT), **how(options)})
        for row in rows:
            if row["id"] in setting.names:
                progress(f"{row['id']}: {row['title']}")
                before = len(setting.records.failures)
                measure(setting, row)
                if len(setting.records.failures) > before:
                    failures.append(row["id"])
        for name, why in setting.records.failures:
            progress(f"not measured: {name}: {why}")
    page.render(options.raw, options.page)
    progress(f"rows with something that was not measured: {', '.join(failures)}" if failures else "done")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
