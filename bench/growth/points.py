"""The engines on generated documents as points, by the program growth_points."""

import json
import os
import signal
import subprocess

from records import progress

OPERATIONS = ["mean-distance", "eps", "canopy", "canopy-given", "kmeans-20", "kmeans-100", "dbscan-auto",
              "dbscan-given"]
# Within that are the revisions of a document, and hardly anything else.
EPS = 1.0


def measure(setting, size, with_plain):
    measure_one(setting, setting.build, "morvaai", size)
    if with_plain:
        measure_one(setting, setting.plain, "plain", size)


def measure_one(setting, build, candidate, size):
    wanted = []
    for operation in OPERATIONS:
        name = f"{operation}/{candidate}"
        refused = setting.schedule.refuses(name, size)
        if refused:
            setting.records.missing(f"{name}/{size}", refused)
        else:
            wanted.append(operation)
    if not wanted:
        return
    command = [build / "bench/growth_points", "--documents", str(size), "--candidate", candidate, "--eps", str(EPS),
               "--limit", f"{setting.schedule.longest():.0f}", "--operations", ",".join(wanted)]
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True, start_new_session=True,
                          env={**os.environ, "MORVA_LOG_LEVEL": "0"}) as process:
        try:
            for line in process.stdout:
                take(setting, json.loads(line), candidate, size)
        except BaseException:
            os.killpg(process.pid, signal.SIGKILL)
            raise
    if process.returncode != 0:
        setting.records.missing(f"points/{candidate}/{size}", f"growth_points ended with {process.returncode}")


def take(setting, record, candidate, size):
    if "corpus" in record:
        if candidate == "morvaai":
            setting.records.note(f"corpus/points/{size}", **record)
        return
    if "missing" in record:
        setting.schedule.fail(record["name"].rpartition("/")[0])
        setting.records.missing(record["name"], record["missing"])
        return
    setting.schedule.took(record["name"].rpartition("/")[0], size, min(record["cpu_seconds"]))
    setting.records.note(**record)
    progress(f"  {record['name']}: {min(record['cpu_seconds']):.3f} s")
