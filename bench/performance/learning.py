"""Learning a box from many short documents: time, and memory of all processes together."""

import random
import tempfile

import documents
import texts
from commands import Failed, add_runs

LONGEST_SECONDS = 900.0
# Documents and rounds: the smaller ones show the growth.
SIZES = {1250: 1, 2500: 1, 5000: 1, 10000: 2}
QUICK_SIZES = {250: 1, 500: 1, 1000: 1}


def measure(setting):
    for count, rounds in (QUICK_SIZES if setting.quick else SIZES).items():
        name = f"learn/morvaai/{count}"
        folder = make_folder(setting, count)
        try:
            add_runs(setting.records, name, [learn(setting, folder) for _ in range(rounds)], items=count)
        except Failed as failure:
            setting.records.missing(name, str(failure))


def learn(setting, folder):
    with tempfile.TemporaryDirectory() as boxes:
        return setting.commands.run([setting.program, "learn", folder, "--box", "bench", "-k", 20, "-j", 2],
                                    LONGEST_SECONDS, all_processes=True, good=(0, 1),
                                    environment={"MORVA_BOX_PATH": boxes})


def make_folder(setting, count):
    """Texts of about a kilobyte."""
    def fill(folder):
        sizes = random.Random("sizes of short texts")
        for number in range(count):
            documents.write(folder / f"{number:05}.txt",
                            texts.Writer(f"short {number}").paragraphs(sizes.randint(500, 1_500)))

    return documents.filled(setting.data / f"learn-{count}", fill)
