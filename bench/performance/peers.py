"""Programs and scripts that measure themselves and print results, one JSON object a line."""

import json
import subprocess

from records import progress

LONGEST_SECONDS = 1200.0


def measure(setting, command):
    name = command[0].rsplit("/")[-1]
    progress(f"  {name}")
    try:
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              timeout=LONGEST_SECONDS, check=False, cwd=setting.root)
        output, failed = done.stdout, f"ended with {done.returncode}" if done.returncode else ""
        errors = done.stderr
    except (OSError, subprocess.TimeoutExpired) as error:
        output, failed, errors = "", str(error), ""
    for line in output.splitlines():
        add(setting.records, line)
    if failed:
        setting.records.missing(name, f"{failed}: {errors[-200:].strip()}")


def add(records, line):
    try:
        result = json.loads(line)
        name = result.pop("name")
    except (ValueError, KeyError, AttributeError):
        return
    if "missing" in result:
        records.missing(name, result["missing"])
    else:
        records.add(name, result.pop("seconds"), **result)
