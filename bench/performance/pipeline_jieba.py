#!/usr/bin/python3
"""What a user would put together: for each file of a folder the usual tool for its text, then jieba's words.

Usage: pipeline_jieba.py features|dna [-j N] FOLDER

features: the 100 strongest words by TextRank; dna: SimHash, 128 bits wide, of all words by their counts.
Generous: jieba is loaded once, a process stays for many files, and the bits are summed by numpy.
"""

import argparse
import collections
import hashlib
import json
import logging
import multiprocessing
import pathlib
import subprocess

import jieba
import jieba.analyse
import numpy

# The fastest that Debian has for each format.
TOOLS = {
    ".doc": ["catdoc", "-d", "utf-8", "{}"],
    ".docx": ["docx2txt", "{}", "-"],
    ".html": ["w3m", "-dump", "-T", "text/html", "{}"],
    ".pdf": ["pdftotext", "{}", "-"],
    ".pptx": ["sh", "-c", "unzip -p \"$0\" 'ppt/slides/*.xml' | sed 's/<[^>]*>/ /g'", "{}"],
    ".txt": None,
    ".xlsx": ["xlsx2csv", "--all", "{}"],
}


def text_of(path):
    tool = TOOLS[path.suffix]
    if tool is None:
        return path.read_text(encoding="utf-8", errors="replace")
    command = [part.replace("{}", str(path)) for part in tool]
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          check=False).stdout.decode("utf-8", "replace")


def features(path):
    return jieba.analyse.textrank(text_of(path), topK=100, withWeight=True)


def dna(path):
    counts = collections.Counter(word for word in jieba.cut(text_of(path)) if not word.isspace())
    if not counts:
        return None
    digests = b"".join(hashlib.md5(word.encode()).digest() for word in counts)
    bits = numpy.unpackbits(numpy.frombuffer(digests, numpy.uint8)).reshape(-1, 128)
    signs = 2.0 * bits - 1.0
    sums = numpy.fromiter(counts.values(), float) @ signs
    return numpy.packbits(sums > 0).tobytes().hex()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("operation", choices=["features", "dna"])
    parser.add_argument("-j", "--jobs", type=int, default=1)
    parser.add_argument("folder", type=pathlib.Path)
    options = parser.parse_args()
    work = {"features": features, "dna": dna}[options.operation]
    paths = sorted(options.folder.iterdir())
    jieba.setLogLevel(logging.ERROR)
    jieba.initialize()
    if options.jobs == 1:
        results = map(work, paths)
    else:
        # Forked: the workers share the dictionary.
        results = multiprocessing.Pool(options.jobs).imap(work, paths)
    for path, result in zip(paths, results):
        print(json.dumps([path.name, result], ensure_ascii=False))


if __name__ == "__main__":
    main()
