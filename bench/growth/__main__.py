"""Measures how time and memory grow with the documents and writes docs/growth.md. See scripts/growth."""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import traceback

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "bench/performance"))

import growth_page
import machine
import points
import program
import records
import schedule
from records import progress

RESULTS = ROOT / "build/growth"
SIZES = [1_000, 2_000, 5_000, 10_000, 20_000, 50_000, 100_000, 200_000]
QUICK_SIZES = [500, 1_000, 2_000]
# The last state in which all pairs of documents were measured.
PLAIN_COMMIT = "6ede55c"
# Documents up to which that state is measured too: its times show their growth by then.
PLAIN_UP_TO = 20_000
# What that state is measured with.
MEASURING = ["generated_*", "growth*.*", "measured_run.*"]


class Setting:
    """What a measurement needs to know."""

    def __init__(self, options):
        self.build = options.built or RESULTS / "build"
        self.plain = RESULTS / "plain" if options.plain else None
        self.work, self.documents = options.work, options.work / "documents"
        self.work.mkdir(parents=True, exist_ok=True)
        self.records = records.Records(options.raw)
        self.schedule = schedule.Schedule(options.limit, options.budget)

    def has_mpi(self):
        built_with = (self.build / "CMakeCache.txt").read_text(encoding="utf-8")
        return "MORVA_WITH_MPI:BOOL=ON" in built_with and shutil.which("mpirun") is not None


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/growth", description=__doc__)
    parser.add_argument("--sizes", nargs="+", type=int, default=SIZES, metavar="N",
                        help="numbers of documents, multiples of 500")
    parser.add_argument("--quick", action="store_true", help="up to 2,000 documents: a minute")
    parser.add_argument("--limit", type=float, default=900.0, metavar="SECONDS",
                        help="leave out what will take longer, 900 if not given")
    parser.add_argument("--budget", type=float, default=4 * 3600.0, metavar="SECONDS",
                        help="begin nothing that will not be through by then, 14400 if not given")
    parser.add_argument("--only", choices=["program", "library"], help="measure one of both alone")
    parser.add_argument("--no-plain", dest="plain", action="store_false",
                        help="not beside the state in which all pairs were measured, which is built first")
    parser.add_argument("--built", type=pathlib.Path, metavar="FOLDER", help="build nothing, measure what is there")
    parser.add_argument("--work", type=pathlib.Path, default=RESULTS / "work", metavar="FOLDER",
                        help="for documents and shards: 1 GB for 200,000 documents")
    parser.add_argument("--raw", type=pathlib.Path, default=RESULTS / "results.jsonl",
                        help="the results, as JSON lines")
    parser.add_argument("--page", type=pathlib.Path, default=ROOT / "docs/growth.md")
    parser.add_argument("--render", action="store_true", help="only write the page again from the results")
    options = parser.parse_args()
    options.sizes = sorted(QUICK_SIZES if options.quick else options.sizes)
    if any(size < 500 or size % 500 for size in options.sizes):
        parser.error("sizes are multiples of 500")
    return options


def build():
    """With MPI where it is installed."""
    progress("building")
    run_all(commands_of(ROOT, RESULTS / "build", "growth_documents", "measured_command"))


def build_plain():
    """Builds the state of before, with the measuring programs of today. Whether that could be done."""
    source = RESULTS / "plain-source"
    progress(f"building {PLAIN_COMMIT}")
    try:
        if not source.exists():
            archive = subprocess.run(["git", "-C", ROOT, "archive", PLAIN_COMMIT], capture_output=True, check=True)
            source.mkdir(parents=True)
            subprocess.run(["tar", "-x", "-C", source], input=archive.stdout, check=True)
            with (source / "bench/CMakeLists.txt").open("a", encoding="utf-8") as targets:
                targets.write("include(growth.cmake)\n")
        for name in MEASURING:
            for path in (ROOT / "bench").glob(name):
                shutil.copy(path, source / "bench")
        run_all(commands_of(source, RESULTS / "plain"))
    except subprocess.CalledProcessError as failure:
        progress(f"{PLAIN_COMMIT} is not measured: {failure.stdout[-2000:]}")
        return False
    return True


def commands_of(source, target, *more):
    """What builds the measured programs."""
    with_mpi = "ON" if shutil.which("mpicxx") else "OFF"
    return [["cmake", "-S", source, "-B", target, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
             "-DMORVA_BUILD_TESTS=OFF", "-DMORVA_BUILD_BENCH=ON", f"-DMORVA_WITH_MPI={with_mpi}"],
            ["cmake", "--build", target, "--target", "morvaai-tool", "growth_points", *more]]


def run_all(commands):
    for command in commands:
        subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=True)


def measure(options):
    if not options.built:
        build()
        options.plain = options.plain and build_plain()
    setting = Setting(options)
    setting.records.about({**machine.describe(ROOT), "peers": ""})
    for size in options.sizes:
        progress(f"{size:,} documents")
        with_plain = setting.plain and size <= PLAIN_UP_TO
        for part, other in (points, "program"), (program, "library"):
            if options.only != other:
                attempt(setting, part, size, with_plain)
    for name, why in setting.records.failures:
        progress(f"not measured: {name}: {why}")


def attempt(setting, part, size, with_plain):
    """What fails does not keep the rest from being measured."""
    try:
        part.measure(setting, size, with_plain)
    except Exception:  # pylint: disable=broad-except
        traceback.print_exc()
        setting.records.missing(f"{part.__name__}/{size}", traceback.format_exc().strip().rpartition("\n")[2])


def main():
    options = arguments()
    # Open MPI has to be told that it may, and that why a run failed is for the program alone to say.
    os.environ.update(OMPI_ALLOW_RUN_AS_ROOT="1", OMPI_ALLOW_RUN_AS_ROOT_CONFIRM="1", OMPI_MCA_orte_execute_quiet="1")
    if not options.render:
        measure(options)
    growth_page.render(options.raw, options.page)
    return 0 if growth_page.all_are_same(options.raw) else 1


if __name__ == "__main__":
    sys.exit(main())
