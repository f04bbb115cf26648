"""Measures everything beside its peers and writes docs/performance.md. See scripts/bench."""

import argparse
import os
import pathlib
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
MEASURES = {"text": extraction.measure, "folder": folder.measure, "learn": learning.measure}


class Setting:
    """What a measurement needs to know."""

    def __init__(self, options, earlier):
        self.root, self.build, self.data = ROOT, options.built or ROOT / "build/release", RESULTS / "data"
        self.program = self.build / "bin/morvaai"
        self.quick, self.rounds = options.quick, 3 if options.quick else 5
        self.corpus = options.corpus.resolve() if options.corpus else None
        self.records = records.Records(options.raw, earlier)
        self.commands = commands.Commands(self.build)
        self.data.mkdir(parents=True, exist_ok=True)
        # Programs and scripts learn it from here.
        os.environ.pop("MORVA_CORPUS", None)
        if self.corpus:
            os.environ["MORVA_CORPUS"] = str(self.corpus)
        if self.quick:
            os.environ["MORVA_BENCH_QUICK"] = "1"


def arguments(rows):
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__)
    parser.add_argument("--quick", action="store_true", help="fewer sizes and runs: some four minutes")
    parser.add_argument("--rows", nargs="+", metavar="ROW", choices=[row["id"] for row in rows],
                        help="only these: " + ", ".join(row["id"] for row in rows))
    parser.add_argument("--corpus", type=pathlib.Path, default=os.environ.get("MORVA_CORPUS"),
                        help="real documents and texts, MORVA_CORPUS if not given")
    parser.add_argument("--built", type=pathlib.Path, metavar="FOLDER", help="build nothing, measure what is there")
    parser.add_argument("--raw", type=pathlib.Path, default=RESULTS / "results.jsonl", help="the results, as JSON lines")
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


def kept(options, rows):
    """What an earlier run found of the rows that are not to be measured now."""
    if not options.rows or not options.raw.exists():
        return []
    again = [pattern for row in rows if row["id"] in options.rows for pattern in row["operations"]]
    return [result for result in records.read(options.raw)[1]
            if not summary.belongs(result["name"].split("/")[0], again)]


def measure(setting, row):
    """All that a row needs. A part that fails does not keep the others from being measured."""
    parts = [(name, lambda name=name: google.measure(setting, name, row["operations"]))
             for name in row.get("programs", [])]
    parts += [(command[0], lambda command=command: peers.measure(setting, command)) for command in row.get("prints", [])]
    parts += [(name, lambda name=name: MEASURES[name](setting)) for name in row.get("driver", [])]
    for name, part in parts:
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
        setting = Setting(options, kept(options, rows))
        setting.records.about({**machine.describe(ROOT), **how(options)})
        for row in rows:
            if not options.rows or row["id"] in options.rows:
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
