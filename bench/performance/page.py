"""Writes docs/performance.md and its plots from raw results."""

import pathlib
import tomllib

import plots
import records
import summary

ROWS = pathlib.Path(__file__).parent / "rows.toml"
INTRODUCTION = """# Performance

What the system does to one file or one corpus, measured beside what a user would pick instead, in one run on one
machine. `scripts/bench` measures and writes this page; `scripts/bench --render` writes it again from the last
results. With `MORVA_CORPUS` set, or `--corpus`, real documents and texts are measured besides generated ones.
"""
METHOD = """Each time is the median of the runs that stand beside it; the runs of candidates take turns, so that all
see the same machine. The spread is the distance from the fastest run to the slowest as a share of the median, the
largest in its line. `×` says how many times ours a figure is. The growth is the exponent of size, by least squares
on the logarithms: 1 doubles the time for twice the size, 2 makes four times. A peak is that of the largest process of
a command. What an aim measured is its worst case.
"""


def rows():
    return tomllib.loads(ROWS.read_text(encoding="utf-8"))["row"]


def render(raw, page):
    machine, results = records.read(raw)
    found = summary.measurements(results)
    folder = page.with_suffix("")
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("*.svg"):
        old.unlink()
    absent = [result for result in results if "missing" in result]
    sections = [section(row, found, absent, folder) for row in rows()]
    page.write_text("\n".join([INTRODUCTION, about(machine), METHOD, overview(found), *sections,
                               others(found, absent)]).rstrip() + "\n", encoding="utf-8")


def about(machine):
    lines = [f"| {key.capitalize()} | {value} |" for key, value in machine.items()]
    return table(["Measured with", ""], []) + "\n".join(lines) + "\n"


def overview(found):
    lines = []
    for row in rows():
        for number, judged in enumerate(judged_aims(row, found)):
            title = f"[{row['title']}](#{anchor(row['title'])})" if number == 0 else ""
            lines.append([title, judged.text, judged.measured, verdict(judged)])
    return "## Aims\n\n" + table(["What", "Aim", "Measured", "Reached"], lines)


def judged_aims(row, found):
    return [summary.judge(aim, of_row(row, found)) for aim in row.get("aims", [])]


def verdict(judged):
    return {True: "yes", False: "**no**", None: "-"}[judged.reached]


def anchor(title):
    kept = "".join(character for character in title.lower() if character.isalnum() or character in " -_")
    return kept.replace(" ", "-")


def of_row(row, found):
    return [one for one in found if summary.belongs(one.operation, row["operations"])]


def section(row, found, absent, folder):
    ours = of_row(row, found)
    parts = [f"## {row['title']}\n", row["what"].strip() + "\n"]
    for operation in dict.fromkeys(one.operation for one in ours):
        parts += tables([one for one in ours if one.operation == operation], row)
    parts += pictures(row, ours, folder)
    parts += [f"- {result['name']}: not measured, {result['missing']}" for result in absent
              if summary.belongs(result["name"].split("/")[0], row["operations"])]
    if row.get("bounds", "").strip():
        parts.append("\n" + row["bounds"].strip() + "\n")
    return "\n".join(parts)


def tables(found, row):
    """A table of times for each series of an operation, and one of memory where it is known."""
    sizes = size_name(row, found[0].operation)
    groups = {}
    for one in found:
        groups.setdefault(one.case.partition("/")[0] if "/" in one.case else "", []).append(one)
    for name, members in groups.items():
        shown = f"{int(name):,}" if name.isdigit() else name
        title = f"{members[0].operation} {shown}".strip()
        yield comparison(title, members, lambda one: one.seconds, summary.in_seconds, sizes, with_runs=True)
        if any(one.memory for one in members):
            yield comparison(f"{title}: {row.get('memory', 'peak memory')}", members, lambda one: one.memory,
                             summary.in_bytes, sizes, with_runs=False)
    yield from growths(found)


def comparison(title, found, value, words, sizes, with_runs):
    """A line for each case, with a figure for each candidate, and how many times the first one's it is."""
    candidates = summary.ours_first(one.candidate for one in found)
    heads = [title, candidates[0], *(head for name in candidates[1:] for head in (name, ""))]
    body = []
    for case, shown in cases(found, sizes):
        line = {one.candidate: one for one in found if one.case == case}
        base = value(line[candidates[0]]) if candidates[0] in line else None
        cells = [shown]
        for name in candidates:
            known = value(line[name]) if name in line else None
            rate = line[name].rate if known and with_runs else None
            cells.append(words(known) + (f" ({summary.in_bytes(rate)}/s)" if rate else "") if known else "-")
            if name != candidates[0]:
                cells.append(summary.times(known / base) if known and base else "")
        if with_runs:
            runs = sorted({one.runs for one in line.values()})
            cells += [str(runs[0]) if len(runs) == 1 else f"{runs[0]} to {runs[-1]}",
                      f"{max(one.spread for one in line.values()):.0%}"]
        body.append(cells)
    return table(heads + (["runs", "spread"] if with_runs else []), body, numbers_from=1)


def cases(found, sizes):
    """Each case and how it is shown: those with a size by size, behind the others. What the heading of a table tells
    already is left out."""
    known = {one.case: one for one in found}
    for one in sorted(known.values(), key=lambda one: one.size or 0.0):
        shown = one.case if one.size is None else f"{one.series}/{one.size:,.12g} {sizes}"
        yield one.case, shown.rpartition("/")[2].strip()


def size_name(row, operation):
    names = row.get("sizes", {})
    return next((name for pattern, name in names.items() if summary.belongs(operation, [pattern])), "")


def growths(found):
    told = []
    for (_, series), candidates in summary.curves(found).items():
        exponents = {name: summary.growth([(size, one.seconds) for size, one in points])
                     for name, points in candidates.items()}
        told.append((f"{series}: " if series else "") + ", ".join(
            f"{name} {exponent:.2f}" for name, exponent in exponents.items() if exponent is not None))
    if told:
        yield "Growth with size: " + "; ".join(told) + ".\n"


def pictures(row, found, folder):
    """One figure of times for the row, with a panel for each operation and series, and one of memory."""
    drawn = [one for one in found if summary.belongs(one.operation, row.get("draw", ["*"]))]
    panels = summary.curves(drawn)
    if panels:
        yield picture(folder, row["id"], f"{row['title']}: time", lambda path: plots.draw_growth(
            path, panels, lambda one: one.seconds, summary.in_seconds, lambda operation: size_name(row, operation)))
    if panels and row.get("draw_memory"):
        yield picture(folder, f"{row['id']}-memory", f"{row['title']}: memory", lambda path: plots.draw_growth(
            path, panels, lambda one: one.memory, summary.in_bytes, lambda operation: size_name(row, operation)))
    bars = [one for one in found if one.rate and summary.belongs(one.operation, row.get("bars", []))]
    if bars:
        yield picture(folder, f"{row['id']}-rates", f"{row['title']}: bytes in a second",
                      lambda path: plots.draw_bars(path, bars))


def picture(folder, name, about_it, draw):
    path = folder / f"{name}.svg"
    draw(path)
    return f"![{about_it}]({folder.name}/{path.name})\n"


def others(found, absent):
    """What no row names."""
    patterns = [pattern for row in rows() for pattern in row["operations"]]
    rest = [one for one in found if not summary.belongs(one.operation, patterns)]
    parts = ["## Others\n"] if rest else []
    for operation in dict.fromkeys(one.operation for one in rest):
        parts += tables([one for one in rest if one.operation == operation], {})
    lost = [result for result in absent if not summary.belongs(result["name"].split("/")[0], patterns)]
    parts += [f"- {result['name']}: not measured, {result['missing']}" for result in lost]
    return "\n".join(parts)


def table(heads, lines, numbers_from=None):
    rule = ["---" if numbers_from is None or place < numbers_from else "---:" for place in range(len(heads))]
    return "".join(f"| {' | '.join(cells)} |\n" for cells in (heads, rule, *lines))
