"""Writes docs/growth.md and its plots from raw results."""

import pathlib
import re
import tomllib

import outlook
import page
import plots
import records
import summary

TEXT = pathlib.Path(__file__).parent / "text.toml"
FOLDERS = re.compile(r"/(?:[\w.+-]+/)+")
# What the rows of the tables are called, in their order.
POINTS = {"mean-distance": "mean distance", "eps": "estimate of eps", "canopy": "canopy, T2 by mean distance",
          "canopy-given": "canopy, T2 given", "kmeans-20": "K-means, k 20", "kmeans-100": "K-means, k 100",
          "dbscan-auto": "DBSCAN, eps estimated", "dbscan-given": "DBSCAN, eps given"}
PROGRAM = {"extract": "`extract`", "merge": "`merge`, 4 parts", "similar": "`similar --from`",
           "learn-kmeans-20": "`learn --from`, K-means, k 20", "learn-kmeans-100": "K-means, k 100",
           "learn-canopy-seeds": "K-means, canopy seeds", "learn-dbscan-auto": "DBSCAN, eps estimated",
           "learn-dbscan-given": "DBSCAN, eps given"}
# Where the table of machines is of: documents, and on how many of them.
MACHINES = dict(zip(outlook.TARGETS, (1, 4, 16)))
PROCESSORS, MEMORY = 64, 256e9
LEARNT = ["learn-kmeans-20", "learn-kmeans-100", "learn-dbscan-given"]
TITLES = {"points": ("Points", POINTS), "program": ("Files and shards", PROGRAM)}


def render(raw, target):
    about, results = records.read(raw)
    found = summary.measurements(results)
    text = tomllib.loads(TEXT.read_text(encoding="utf-8"))
    folder = target.with_suffix("")
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("*.svg"):
        old.unlink()
    parts = [text["introduction"].lstrip(), reach(found), page.about({key: value for key, value in about.items() if value}),
             text["documents"].lstrip(), text["method"].lstrip()]
    for name, (title, rows) in TITLES.items():
        parts += section(name, title, of_rows(found, rows), rows, folder)
    parts += ["## What is exact, and why\n", text["exact"].lstrip(), same(results)]
    parts += ["## Beyond\n", text["outlook"].lstrip(), beyond(found, results), held(results),
              text["machines"].lstrip(), layout(found),
              "## What stops the next factor of ten\n", text["stops"].lstrip(), left_out(results)]
    target.write_text("\n".join(part for part in parts if part.strip()).rstrip() + "\n", encoding="utf-8")


def reach(found):
    """Which sizes were measured."""
    told = []
    for title, rows in TITLES.values():
        sizes = [one.size for one in of_rows(found, rows)]
        if sizes:
            told.append(f"{title.lower()} of {min(sizes):,.0f} to {max(sizes):,.0f} documents")
    return f"Measured are {', '.join(told)}.\n" if told else ""


def of_rows(found, rows):
    return sorted((one for one in found if one.operation in rows),
                  key=lambda one: (list(rows).index(one.operation), one.candidate != "morvaai"))


def section(name, title, found, rows, folder):
    if not found:
        return
    several = {one.operation for one in found if one.candidate not in ("morvaai", "plain")}
    yield f"## {title}\n"
    yield by_size("Processor time", found, rows, processor_time, summary.in_seconds)
    if several:
        yield by_size("Wall time", [one for one in found if one.operation in several], rows, lambda one: one.seconds,
                      summary.in_seconds)
    yield by_size("Peak memory", found, rows, lambda one: one.memory, summary.in_bytes)
    panels = {(rows[operation].replace("`", ""), ""): candidates
              for (operation, _), candidates in summary.curves(found).items()}
    if panels:
        yield page.picture(folder, name, f"{title}: processor time", lambda path: plots.draw_growth(
            path, panels, processor_time, summary.in_seconds, lambda operation: "documents"))


def processor_time(one):
    return one.cpu_seconds or one.seconds


def by_size(title, found, rows, value, words):
    """A line for each operation and candidate, a column for each size, then both exponents."""
    sizes = sorted({one.size for one in found})
    lines = []
    for (operation, candidate), measured in lines_of(found).items():
        name = rows[operation] + candidate.replace("morvaai", "", 1).replace("plain", " plain").replace(" ", ", ", 1)
        points = [(one.size, value(one)) for one in measured if value(one)]
        if points:
            known = dict(points)
            lines.append([name, *(words(known[size]) if size in known else "-" for size in sizes),
                          exponent(points), exponent(outlook.last_octaves(points))])
    return page.table([title, *(f"{size:,.0f}" for size in sizes), "exponent", "last octaves"], lines,
                      numbers_from=1) if lines else ""


def lines_of(found):
    lines = {}
    for one in found:
        lines.setdefault((one.operation, one.candidate), []).append(one)
    return lines


def exponent(points):
    slope = summary.growth(points)
    return "-" if slope is None else f"{slope:.2f}"


def compared(results):
    """For each thing and size what had to be the same, as {who: digest}: results of engines and files."""
    groups = {}
    for result in results:
        what, who, size = (result["name"].split("/", 2) + ["", ""])[:3]
        if what == "same":
            groups.setdefault((who, int(size)), {}).update(result["digests"])
        elif "result" in result:
            groups.setdefault((what, int(size)), {})[who] = result["result"]
    return {key: digests for key, digests in groups.items() if len(digests) > 1}


def all_are_same(raw):
    return all(len(set(digests.values())) == 1 for digests in compared(records.read(raw)[1]).values())


def same(results):
    """What was compared with what, and up to which size."""
    lines = {}
    for (what, size), digests in compared(results).items():
        lines.setdefault((what, ", ".join(digests)), []).append((size, len(set(digests.values())) == 1))
    body = [[what, who, ", ".join(f"{size:,}" for size, _ in sizes),
             "yes" if all(is_same for _, is_same in sizes) else "**no**"] for (what, who), sizes in lines.items()]
    return ("Compared bit for bit in this run: of points the classes and values, of the program shards as files and "
            "boxes but\nfor the identifiers of their classes.\n\n"
            + page.table(["What", "Made by", "Documents", "The same"], body)) if body else ""


def beyond(found, results):
    """A line for each step, with its time at each target, then the memory of some, then what was counted."""
    lines = []
    for title, rows in TITLES.values():
        measured = [one for one in of_rows(found, rows) if one.candidate in ("morvaai", "morvaai -j 1")]
        for (operation, _), ones in lines_of(measured).items():
            times = [(one.size, processor_time(one)) for one in ones]
            lines.append(carried(f"{title}: {rows[operation]}", times, outlook.in_hours))
        for (operation, _), ones in lines_of(measured).items():
            memory = [(one.size, one.memory) for one in ones if one.memory]
            lines.append(carried(f"{title}: memory of {rows[operation]}", memory, outlook.in_bytes, curve=outlook.Line))
    lines += [carried(name, counted(results, *where), words, least) for name, where, words, least in (
        ("Documents", ("files", "bytes"), outlook.in_bytes, 1.0), ("Shard", ("shard", "bytes"), outlook.in_bytes, 1.0),
        ("Vocabulary", ("points", "vocabulary"), outlook.in_count, 0.0),
        ("Neighbours of a document, eps given", ("points", "neighbours_given"), outlook.in_count, 0.0),
        ("Neighbours of a document, eps estimated", ("points", "neighbours_auto"), outlook.in_count, 0.0))]
    lines = [line for line in lines if line]
    heads = ["Carried on", "from", "exponent", *(f"{target // 1_000_000} million" for target in outlook.TARGETS)]
    return page.table(heads, lines, numbers_from=1) if lines else ""


def layout(found):
    """On how many machines of which size what takes how long."""
    def of(operation, candidate, value, curve):
        return curve.of([(one.size, value(one)) for one in found if (one.operation, one.candidate) ==
                         (operation, candidate) and value(one)])

    def line(name, power, words):
        return [name, *(words(power.at(target), machines) for target, machines in MACHINES.items())]

    lines = []
    extract = of("extract", "morvaai -j 1", processor_time, outlook.Power)
    if extract:
        lines.append(line("`extract`, all processors", extract, lambda seconds, machines: outlook.in_hours(
            seconds / (machines * PROCESSORS))))
    for operation in "merge", "similar":
        power = of(operation, "morvaai", processor_time, outlook.Power)
        if power:
            lines.append(line(f"{PROGRAM[operation]}, one process", power,
                              lambda seconds, _: outlook.in_hours(seconds)))
    for operation in LEARNT:
        time = of(operation, "morvaai", processor_time, outlook.Power)
        memory = of(operation, "morvaai", lambda one: one.memory, outlook.Line)
        if time and memory:
            name = f"learn, {PROGRAM[operation].rpartition('`, ')[2]}"
            lines.append(line(f"{name}: processes that a machine has room for", memory, lambda size, _: str(
                min(int(MEMORY / size), PROCESSORS)) if size <= MEMORY else "none"))
            lines.append([f"{name}: if all divides among them", *(
                outlook.in_hours(time.at(target) / (machines * min(int(MEMORY / memory.at(target)), PROCESSORS)))
                if memory.at(target) <= MEMORY else "-" for target, machines in MACHINES.items())])
    heads = [f"Machines of {PROCESSORS} processors and {MEMORY / 1e9:.0f} GB",
             *(f"{target // 1_000_000} million on {machines}" for target, machines in MACHINES.items())]
    return page.table(heads, lines, numbers_from=1) if lines else ""


def held(results):
    """What the forms in memory and the exchanges of processes come to, by what was counted."""
    words = outlook.Power.of(counted(results, "points", "words"))
    lines = []
    if words:
        lines.append(["Points in the memory of each process, while measured: up to 41 bytes a word of a document",
                      *(outlook.in_bytes(41.0 * words.at(target)) for target in outlook.TARGETS)])
    # Of a point its two rows take 12 and 8 bytes, and its own place in the first another 4.
    for name, key in ("given", "neighbours_given"), ("estimated", "neighbours_auto"):
        neighbours = outlook.Power.of(counted(results, "points", key))
        if neighbours:
            each = [max(neighbours.at(target, 0.0), 0.0) for target in outlook.TARGETS]
            lines.append([f"Neighbours of all, eps {name}: 4 bytes each and 24 a document, at most a bit for each pair of documents",
                          *(outlook.in_bytes(min(target * (24.0 + 4.0 * near), target**2 / 8.0))
                            for target, near in zip(outlook.TARGETS, each))])
            lines.append([f"DBSCAN, eps {name}: what each process gets from others, 4 bytes a pair or a bit for each",
                          *(outlook.in_bytes(min(2.0 * target * near, target**2 / 16.0))
                            for target, near in zip(outlook.TARGETS, each))])
    if words:
        lines.append(["K-means: what each process gets in an iteration, 8 bytes a document, and the means",
                      *(outlook.in_bytes(8.0 * target) for target in outlook.TARGETS)])
    heads = ["By count", *(f"{target // 1_000_000} million" for target in outlook.TARGETS)]
    return page.table(heads, lines, numbers_from=1) if lines else ""


def carried(name, points, words, least=1.0, curve=outlook.Power):
    power = curve.of(points)
    if power is None:
        return None
    return [name, f"{power.size:,.0f}", f"{power.exponent:.2f}",
            *(words(power.at(target, least)) for target in outlook.TARGETS)]


def counted(results, what, key):
    """What was counted, not measured, by size."""
    return [(float(result["name"].rpartition("/")[2]), result[key]) for result in results
            if result["name"].startswith(f"corpus/{what}/") and result.get(key)]


def left_out(results):
    # Without the folders that programs were in.
    lines = [f"- {result['name']}: {FOLDERS.sub('', result['missing'])}" for result in results if "missing" in result]
    return "\n".join(["## Not measured\n", *lines]) if lines else ""
