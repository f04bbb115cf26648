"""Raw results: one JSON object a line.

A measurement is {"name": "operation/candidate/case", "seconds": [each run...]} and, where known,
"cpu_seconds" and "peak_bytes" (lists too), "bytes" and "items" (of one run), "runs" (inside each entry
of seconds). What could not be measured is {"name": ..., "missing": "why"}.
"""

import json
import sys


def progress(text):
    print(text, file=sys.stderr, flush=True)


class Records:
    """Writes results as they come, so that a run that ends early leaves what it has."""

    def __init__(self, path, earlier=()):
        path.parent.mkdir(parents=True, exist_ok=True)
        self.out = path.open("w", encoding="utf-8")
        self.failures = []
        for record in earlier:
            self._write(record)

    def add(self, name, seconds, **more):
        known = {key: value for key, value in more.items() if value}
        self._write({"name": name, "seconds": seconds, **known})

    def note(self, name, **facts):
        """What is no measurement of time."""
        self._write({"name": name, **facts})

    def missing(self, name, why):
        progress(f"  {name}: {why}")
        self.failures.append((name, why))
        self._write({"name": name, "missing": why})

    def about(self, machine):
        self._write({"machine": machine})

    def _write(self, record):
        self.out.write(json.dumps(record, ensure_ascii=False) + "\n")
        self.out.flush()


def read(path):
    """The machine, and all results in their order."""
    lines = [json.loads(line) for line in path.read_text(encoding="utf-8").splitlines()]
    machine = next((line["machine"] for line in lines if "machine" in line), {})
    return machine, [line for line in lines if "name" in line]
