"""Programs of Google Benchmark: each operation in a process of its own, so that one that fails takes no other
with it, and its candidates in random turns."""

import collections
import fnmatch
import json
import re
import subprocess
import tempfile

from records import progress

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
# What the library appends to a name on its own.
OPTIONS = re.compile(r"/(iterations|repeats|min_time|min_warmup_time|threads):[^/]*"
                     r"|/(real_time|process_time|manual_time)$")
ARGUMENT_NAME = re.compile(r"(?<=/)[A-Za-z_]+:(?=[0-9])")
LONGEST_SECONDS = 900.0


def measure(setting, program, operations, rounds):
    """The operations of a program that a pattern names."""
    path = setting.build / "bench" / program
    if not path.exists():
        setting.records.missing(program, "was not built")
        return
    listed = run(path, ["--benchmark_list_tests=true"], setting)
    if listed.returncode != 0:
        setting.records.missing(program, f"ended with {listed.returncode}: {listed.stderr[-200:].strip()}")
        return
    found = dict.fromkeys(name.split("/")[0] for name in listed.stdout.splitlines())
    for operation in found:
        if any(fnmatch.fnmatchcase(operation, pattern) for pattern in operations):
            measure_operation(setting, path, operation, rounds)


def run(path, options, setting):
    # In the folder of data: some programs write files where they are.
    try:
        return subprocess.run([path, *options], capture_output=True, text=True, timeout=LONGEST_SECONDS,
                              check=False, cwd=setting.data)
    except subprocess.TimeoutExpired:
        return subprocess.CompletedProcess(path, -1, "", f"took longer than {LONGEST_SECONDS:.0f} s")


def measure_operation(setting, path, operation, rounds):
    progress(f"  {path.name}: {operation}")
    with tempfile.NamedTemporaryFile("r", suffix=".json") as out:
        done = run(path, [f"--benchmark_filter=^{re.escape(operation)}/", f"--benchmark_out={out.name}",
                          "--benchmark_out_format=json", "--benchmark_enable_random_interleaving=true",
                          f"--benchmark_repetitions={rounds}",
                          f"--benchmark_min_time={0.02 if setting.quick else 0.1}"], setting)
        try:
            results = json.load(out)["benchmarks"]
        except json.JSONDecodeError:
            results = []
    if done.returncode != 0 or not results:
        setting.records.missing(operation, f"{path.name} ended with {done.returncode}: {done.stderr[-200:].strip()}")
    add(setting.records, results)


def add(records, results):
    repetitions = collections.defaultdict(list)
    # In the order of the program, whatever the turns were.
    for result in sorted(results, key=lambda one: (one["family_index"], one["per_family_instance_index"])):
        if result["run_type"] == "iteration":
            repetitions[plain_name(result["name"])].append(result)
    for name, runs in repetitions.items():
        failed = next((one["error_message"] for one in runs if one.get("error_occurred")), None)
        if failed:
            records.missing(name, failed)
            continue
        first = runs[0]
        # Its rates are per second of CPU time, unless the case says otherwise.
        once = SECONDS[first["time_unit"]] * (first["real_time" if "real_time" in first["name"] or
                                                    "manual_time" in first["name"] else "cpu_time"])
        records.add(name, [one["real_time"] * SECONDS[one["time_unit"]] for one in runs],
                    bytes=round(first.get("bytes_per_second", 0.0) * once),
                    items=round(first.get("items_per_second", 0.0) * once))


def plain_name(name):
    return ARGUMENT_NAME.sub("", OPTIONS.sub("", name))
