"""Features and fingerprints of a folder of mixed documents: the program beside a pipeline of usual tools."""

import pathlib
import random
import re
import shutil

import documents
import texts
from commands import in_turn

# How many of a thousand.
SHARES = {"docx": 250, "pdf": 200, "xlsx": 130, "pptx": 120, "html": 120, "txt": 120, "doc": 60}
PIPELINE = pathlib.Path(__file__).parent / "pipeline_jieba.py"
LONGEST_SECONDS = 900.0
ENOUGH_SECONDS = 30.0


def measure(setting):
    count = 100 if setting.quick else 1000
    folder = make_folder(setting, count)
    size = sum(path.stat().st_size for path in folder.iterdir())
    for operation, words in ("features", ["-n", "100"]), ("dna", []):
        def ours(jobs):
            return lambda: setting.commands.run(
                [setting.program, operation, *words, "--json", "-j", jobs, folder], LONGEST_SECONDS, good=(0, 1))

        def pipeline(jobs):
            return lambda: setting.commands.run(["/usr/bin/python3", PIPELINE, operation, "-j", jobs, folder],
                                                LONGEST_SECONDS)

        candidates = {"morvaai -j 1": ours(1), "morvaai -j 2": ours(2),
                      "pipeline -j 1": pipeline(1), "pipeline -j 2": pipeline(2)}
        in_turn(candidates, setting.rounds, ENOUGH_SECONDS, setting.records, operation, f"{count} documents",
                items=count, bytes=size)


def make_folder(setting, count):
    """Each of a corpus' documents once, and for the rest documents with its texts; without a corpus all texts
    are made up."""
    def fill(folder):
        prose = corpus_texts(setting.corpus) if setting.corpus else made_up_texts()
        for name, share in SHARES.items():
            wanted = count * share // 1000
            known = corpus_documents(setting.corpus, name) if setting.corpus else []
            for number in range(wanted):
                path = folder / f"{name}-{number:03}.{name}"
                if number < len(known) or (known and name not in documents.WRITERS):
                    shutil.copyfile(known[number % len(known)], path)
                else:
                    documents.write(path if name in documents.WRITERS else path.with_suffix(".docx"), next(prose))

    return documents.filled(setting.data / f"folder-{count}{'-corpus' if setting.corpus else ''}", fill)


def corpus_documents(corpus, name):
    return [path for path in sorted((corpus / "documents" / name).glob("*")) if path.is_file()]


def corpus_texts(corpus):
    paths = [path for path in sorted((corpus / "text").rglob("*")) if path.is_file()]
    random.Random("order of texts").shuffle(paths)
    while True:
        for path in paths:
            text = path.read_text(encoding="utf-8", errors="replace")
            lines = re.sub(r"[\x00-\x08\x0b-\x1f\ufffe\uffff]", " ", text).split("\n")
            yield [[line] for line in lines if line.strip()] or [[" "]]


def made_up_texts():
    sizes = random.Random("sizes of texts")
    number = 0
    while True:
        yield texts.Writer(f"document {number}").paragraphs(sizes.randint(1_000, 12_000))
        number += 1
