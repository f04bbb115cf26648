"""The machine and the programs that a run was measured with."""

import datetime
import os
import pathlib
import platform
import subprocess

PEERS = ["python3-jieba", "python3-sklearn", "libopenblas0-pthread", "poppler-utils", "pandoc", "docx2txt", "catdoc",
         "xlsx2csv", "gnumeric", "unzip", "w3m", "lynx", "libtlsh-dev", "libfuzzy-dev", "nlohmann-json3-dev"]


def describe(root):
    return {
        "processor": first_line("/proc/cpuinfo", "model name") or platform.machine(),
        "processors": os.cpu_count(),
        "memory": f"{int(first_line('/proc/meminfo', 'MemTotal').split()[0]) / 2**20:.0f} GiB",
        "system": f"{release_name()}, Linux {platform.release()}",
        "compiler": told_by(["c++", "--version"]).split("\n")[0],
        "load before": f"{os.getloadavg()[0]:.2f}",
        "date": datetime.datetime.now(datetime.timezone.utc).date().isoformat(),
        "commit": told_by(["git", "-C", root, "rev-parse", "--short", "HEAD"]),
        "peers": ", ".join(filter(None, map(version, PEERS))),
    }


def first_line(path, key):
    lines = pathlib.Path(path).read_text(encoding="utf-8").splitlines()
    return next((line.split(":", 1)[1].strip() for line in lines if line.startswith(key)), "")


def release_name():
    lines = pathlib.Path("/etc/os-release").read_text(encoding="utf-8").splitlines()
    return next((line.split("=", 1)[1].strip('"') for line in lines if line.startswith("PRETTY_NAME=")), "Linux")


def version(package):
    found = told_by(["dpkg-query", "-W", "-f", "${Version}", package])
    return f"{package} {found}" if found else ""


def told_by(command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=False).stdout.strip()
    except OSError:
        return ""
