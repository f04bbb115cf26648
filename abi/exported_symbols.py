"""Compares the names that a library exports with a list, and tells what came and what went.

Usage: exported_symbols.py NM LIBRARY LIST [--update]   (--update: writes the list)
"""
import pathlib
import subprocess
import sys


def exported_names(nm: str, library: str) -> list[str]:
    listed = subprocess.run([nm, "--dynamic", "--defined-only", "--demangle", library],
                            check=True, capture_output=True, text=True).stdout
    return sorted({line.split(" ", 2)[2] for line in listed.splitlines()})


def main(nm: str, library: str, list_path: str, *options: str) -> int:
    now = exported_names(nm, library)
    listed = pathlib.Path(list_path)
    if "--update" in options:
        listed.write_text("".join(name + "\n" for name in now), encoding="utf-8")
        return 0
    before = listed.read_text(encoding="utf-8").splitlines()
    gone = sorted(set(before) - set(now))
    new = sorted(set(now) - set(before))
    for name in gone:
        print(f"gone: {name}")
    for name in new:
        print(f"new: {name}")
    if gone:
        print("Programs that were built with the release before may need what is gone: see CONTRIBUTING.md.")
    if new:
        print("If what is new is meant to be exported: scripts/check-abi --update")
    return 1 if gone or new else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
