"""Programs and scripts that measure themselves and print results, or write them to a file, one JSON object a line."""

import json
import subprocess
import tempfile

from records import progress

LONGEST_SECONDS = 1800.0


def measure(setting, command):
    """In the command, {build}, {runs}, {documents} and {file} stand for the folder of programs, how often to run a
    case, the sizes of a corpus, and a file that takes the results."""
    with tempfile.NamedTemporaryFile("r", suffix=".jsonl") as file:
        places = {"{build}": setting.build, "{runs}": 1 if setting.quick else 3, "{file}": file.name,
                  "{documents}": "250,500,1000" if setting.quick else "250,500,1000,2000,4000,8000"}
        for place, stands_for in places.items():
            command = [part.replace(place, str(stands_for)) for part in command]
        name = command[0].rpartition("/")[2]
        progress(f"  {name}")
        try:
            done = subprocess.run(command, capture_output=True, text=True, timeout=LONGEST_SECONDS, check=False,
                                  cwd=setting.root)
            failed = f"ended with {done.returncode}: {done.stderr[-200:].strip()}" if done.returncode else ""
            lines = done.stdout.splitlines()
        except (OSError, subprocess.TimeoutExpired) as error:
            failed, lines = str(error), []
        for line in lines + file.read().splitlines():
            add(setting, line)
    if failed:
        setting.records.missing(name, failed)


def add(setting, line):
    try:
        result = json.loads(line)
        name = result.pop("name")
    except (ValueError, KeyError, TypeError, AttributeError):
        return
    if not setting.wants(name):
        return
    if "missing" in result:
        setting.records.missing(name, result["missing"])
    else:
        setting.records.add(name, result.pop("seconds"), **result)
