#!/usr/bin/python3
"""Measures the Python jieba on the texts of segmenter_bench and prints one JSON object a line.

Usage: bench/segmenter_jieba.py [--runs N]

The operations are those of segmenter_bench and first_word: jieba.cut in its default mode with all tokens taken from
it, and jieba.analyse.textrank as it is. The latter cuts by another model that also finds parts of speech, ranks four of
those and joins words within a window of all tokens, not of candidates: it has fewer words and pairs than the compiled
candidates. With MORVA_CORPUS set its novels and short documents are measured; without it the first word alone.
"""

import argparse
import json
import logging
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

LINE = "数据防泄漏系统在终端上识别敏感文档，并计算它们的指纹。"
SHORT_DOCUMENTS = 100  # the first ones of a folder, as in segmenter_texts.cpp
SHORT_BYTES = range(300, 12_001)
LEAST_HAN = 10_000
ALL_KEYWORDS = 100_000
BEST_KEYWORDS = 100

FIRST_WORD = """
import logging, time
import jieba
jieba.setLogLevel(logging.CRITICAL)
next(iter(jieba.cut(%r)))
taken = time.monotonic() - %r
private = sum(int(line.split()[1]) for line in open("/proc/self/smaps_rollup") if line.startswith("Private_Dirty:"))
print(taken, private * 1024)
"""


def measure(name, runs, work, **more):
    seconds = []
    for _ in range(runs):
        start = time.perf_counter()
        work()
        seconds.append(round(time.perf_counter() - start, 6))
    print(json.dumps({"name": name, "seconds": seconds, **more}), flush=True)


def measure_first_word(runs):
    """A process each, with the cache that jieba writes from its second start on."""
    seconds, private = [], []
    with tempfile.TemporaryDirectory() as folder:
        for run in range(runs + 1):
            done = subprocess.run([sys.executable, "-c", FIRST_WORD % (LINE, time.monotonic())],
                                  env={**os.environ, "TMPDIR": folder}, stdout=subprocess.PIPE, check=True)
            taken, memory = done.stdout.split()
            if run > 0:
                seconds.append(float(taken))
                private.append(int(memory))
    print(json.dumps({"name": "first_word/jieba/line", "seconds": seconds, "peak_bytes": private}), flush=True)


def take_all(tokens):
    for _ in tokens:
        pass


def read(path):
    return path.read_bytes().decode("utf-8", "replace")


def measure_novel(jieba, path, runs):
    text = read(path)
    lines = text.splitlines(True)
    bare = re.sub("[^\u4e00-\u9fd5]", "", text)
    size = len(text.encode())
    measure(f"segment_whole/jieba/{path.stem}", runs, lambda: take_all(jieba.cut(text)), bytes=size)
    measure(f"segment_lines/jieba/{path.stem}", runs, lambda: [take_all(jieba.cut(line)) for line in lines], bytes=size)
    if len(bare) >= LEAST_HAN:
        measure(f"segment_bare/jieba/{path.stem}", runs, lambda: take_all(jieba.cut(bare)), bytes=len(bare.encode()))
    measure(f"textrank_novel/jieba/{path.stem}", 1,
            lambda: jieba.analyse.textrank(text, topK=ALL_KEYWORDS, withWeight=True), bytes=size)


def measure_documents(jieba, folder, runs):
    paths = sorted(path for path in folder.rglob("*") if path.is_file() and path.stat().st_size in SHORT_BYTES)
    texts = [read(path) for path in paths[:SHORT_DOCUMENTS]]
    measure(f"textrank_short/jieba/{folder.name}", runs,
            lambda: [jieba.analyse.textrank(text, topK=BEST_KEYWORDS, withWeight=True) for text in texts],
            bytes=sum(len(text.encode()) for text in texts), items=len(texts))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--runs", type=int, default=3, help="of each case; TextRank of a novel is run once")
    runs = parser.parse_args().runs
    try:
        import jieba
        import jieba.analyse
    except ImportError:
        print(json.dumps({"name": "jieba", "missing": "python3-jieba is not installed"}))
        return
    jieba.setLogLevel(logging.CRITICAL)
    measure_first_word(runs)
    corpus = os.environ.get("MORVA_CORPUS")
    if not corpus:
        return
    jieba.initialize()
    take_all(jieba.posseg.dt.cut(LINE))
    for path in sorted(pathlib.Path(corpus, "long").iterdir()):
        measure_novel(jieba, path, runs)
    for folder in sorted(pathlib.Path(corpus, "text").iterdir()):
        measure_documents(jieba, folder, runs)


if __name__ == "__main__":
    main()
