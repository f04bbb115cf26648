"""Whether a process that did the same work over and over has grown, by the table that endurance prints."""

import argparse
import dataclasses
import sys

MIB = 1 << 20

# What is compared, and how much more of it the last half of the rounds may show than the second quarter: a share of
# that, and something on top. The allocator returns what it holds when it likes to, so resident memory has some play;
# what is allocated at the end of a round has next to none, and the countable things have none. Proportional memory
# is shown but not compared: it goes with how many other processes have the same libraries mapped.
BOUNDS = {
    "rss": (0.02, MIB), "heap": (0.001, 16384),
    "mappings": (0.0, 4), "descriptors": (0.0, 0), "threads": (0.0, 0), "files": (0.0, 0),
}
FEWEST = 8


@dataclasses.dataclass
class Run:
    """The rounds, each by the names of the columns, and the notes that followed them."""
    rounds: list
    notes: dict


def read(lines):
    rows = [line.rstrip("\n").split("\t") for line in lines]
    notes = {row[0].lstrip("# "): int(row[1]) for row in rows if row[0].startswith("#")}
    header, *body = [row for row in rows if not row[0].startswith("#")]
    convert = {"digest": str, "seconds": float}
    return Run([{name: convert.get(name, int)(value) for name, value in zip(header, row)} for row in body], notes)


def second_quarter(rounds):
    return rounds[len(rounds) // 4:len(rounds) // 2]


def last_half(rounds):
    return rounds[len(rounds) // 2:]


def largest(rounds, name):
    return max(one[name] for one in rounds)


def faults(run):
    """What has grown or differs, one line each. The first quarter of the rounds is for warming up."""
    found = []
    if len({one["digest"] for one in run.rounds}) > 1:
        found.append("the results are not the same in every round")
    if len(run.rounds) < FEWEST:
        return found + [f"{len(run.rounds)} rounds are too few to tell growth by: {FEWEST} at least"]
    for name, (share, more) in BOUNDS.items():
        early = largest(second_quarter(run.rounds), name)
        late = largest(last_half(run.rounds), name)
        if late > early * (1 + share) + more:
            found.append(f"{name} has grown from {early} to {late}")
    return found


def summary(run):
    """Lines of a Markdown table: first round, second quarter, last half."""
    units = {"rss": "resident memory", "pss": "proportional memory", "heap": "allocated memory",
             "mappings": "mappings", "descriptors": "open descriptors", "threads": "threads",
             "files": "files left behind"}
    lines = ["| | after the first round | most in the second quarter | most in the last half | at the end |",
             "|---|---:|---:|---:|---:|"]
    for name, title in units.items():
        numbers = [run.rounds[0][name], largest(second_quarter(run.rounds), name),
                   largest(last_half(run.rounds), name), run.rounds[-1][name]]
        lines.append(f"| {title} | " + " | ".join(shown(name, number) for number in numbers) + " |")
    return lines


def shown(name, number):
    return f"{number / MIB:.2f} MiB" if name in ("rss", "pss", "heap") else str(number)


def draw(path, run):
    """Memory over the rounds, as SVG. Needs what scripts/setup --comparison installs, and bench/performance on the
    path of modules."""
    import plots
    with plots.pyplot.rc_context(plots.STYLE):
        figure, place = plots.pyplot.subplots(figsize=(6.4, 3.0), layout="constrained")
        minutes = [one["seconds"] / 60 for one in run.rounds]
        for name, title, colour in zip(("rss", "pss", "heap"), ("resident", "proportional", "allocated"),
                                       plots.COLOURS):
            place.plot(minutes, [one[name] / MIB for one in run.rounds], color=colour, label=title, linewidth=1.4)
        place.set_xlabel("minutes")
        place.set_ylabel("MiB")
        place.set_ylim(bottom=0)
        place.grid(True)
        place.legend(loc="lower right", ncol=3)
        plots.finish(path, figure)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("table")
    parser.add_argument("--plot", help="an SVG file to draw the memory into")
    options = parser.parse_args()
    with open(options.table, encoding="utf-8") as table:
        run = read(table)
    print(f"{len(run.rounds)} rounds in {run.rounds[-1]['seconds'] / 60:.1f} minutes, "
          f"digest {run.rounds[-1]['digest']}\n")
    if len(run.rounds) >= FEWEST:
        print("\n".join(summary(run)), end="\n\n")
    for note, number in run.notes.items():
        print(f"{note}: {number} bytes")
    if options.plot:
        draw(options.plot, run)
    found = faults(run)
    for fault in found:
        print(f"endurance: {fault}", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
