"""What the raw results say: medians, ratios, growth, and whether an aim was reached."""

import dataclasses
import fnmatch
import functools
import math
import statistics

OURS = "morvaai"


@dataclasses.dataclass(frozen=True)
class Measurement:
    """The runs of one candidate at one case. A case that ends in a number has a size, and what stands before
    the number is its series: `html/4` is size 4 of the series `html`."""

    operation: str
    candidate: str
    case: str
    raw: dict

    @classmethod
    def of(cls, raw):
        operation, candidate, case = raw["name"].split("/", 2)
        return cls(operation, candidate, case, raw)

    @functools.cached_property
    def seconds(self):
        return statistics.median(self.raw["seconds"])

    @property
    def runs(self):
        return len(self.raw["seconds"])

    @property
    def spread(self):
        """From the fastest run to the slowest, as a share of the median."""
        return (max(self.raw["seconds"]) - min(self.raw["seconds"])) / self.seconds

    @property
    def rate(self):
        """Bytes in a second, where it is known how many there are."""
        return self.raw["bytes"] / self.seconds if "bytes" in self.raw else None

    @property
    def cpu_seconds(self):
        return statistics.median(self.raw["cpu_seconds"]) if "cpu_seconds" in self.raw else None

    @property
    def memory(self):
        """The highest peak of any run: of its largest process or, where all were watched, of all together. What is
        watched is seen at times only, and a short run may be over before."""
        return max(self.raw.get("proportional_bytes", []) + self.raw.get("peak_bytes", []), default=None)

    @property
    def label(self):
        return f"{self.operation} {self.case}"

    @property
    def series(self):
        """The case without its size."""
        return self.case.rpartition("/")[0]

    @property
    def size(self):
        try:
            return float(self.case.rpartition("/")[2])
        except ValueError:
            return None


def measurements(results):
    """Of the results that are measurements with a name of three parts."""
    return [Measurement.of(raw) for raw in results if "seconds" in raw and raw["name"].count("/") >= 2]


def belongs(operation, patterns):
    return any(fnmatch.fnmatchcase(operation, pattern) for pattern in patterns)


def ours_first(candidates):
    """Each once, in their order, but ours before the others."""
    return sorted(dict.fromkeys(candidates), key=lambda name: not name.startswith(OURS))


def growth(points):
    """The exponent b of the least squares fit of y = a * x^b on logarithms, from three points on."""
    points = [(math.log(x), math.log(y)) for x, y in points if x > 0 and y > 0]
    if len(points) < 3:
        return None
    return statistics.linear_regression(*zip(*points)).slope


def curves(found):
    """For each operation and series, and each candidate in it, the points (size, measurement), where at least
    one candidate has three."""
    grouped = {}
    for one in found:
        if one.size is not None:
            candidates = grouped.setdefault((one.operation, one.series), {})
            candidates.setdefault(one.candidate, []).append((one.size, one))
    return {key: {candidate: sorted(points, key=lambda point: point[0])
                  for candidate, points in candidates.items()}
            for key, candidates in grouped.items()
            if max(map(len, candidates.values())) >= 3}


@dataclasses.dataclass
class Judged:
    """An aim, the worst of what was measured for it in words, and whether it is reached (None: not measured)."""

    text: str
    measured: str
    reached: bool | None


def judge(aim, found):
    """An aim of a row in rows.toml: `of` names our cases as patterns of operation/case; `ours` the candidate
    where it is another than the usual one. Then one of
    at_most_seconds, at_most_bytes, at_least_rate (bytes in a second): each case by itself;
    times, with `than` as patterns of candidates: how much longer each of them takes;
    times_memory: how much more memory each of them takes;
    alike: the slowest rate as a share of the fastest."""
    ours = [one for one in found if one.candidate == aim.get("ours", OURS)
            and belongs(f"{one.operation}/{one.case}", aim["of"])]
    values = [value for one in ours for value in values_of(aim, one, found)]
    if not values:
        return Judged(aim["text"], "not measured", None)
    kind = kind_of(aim)
    if kind == "alike":
        rates = [value for value, _ in values]
        share = min(rates) / max(rates)
        return Judged(aim["text"], f"{share:.2f}", share >= aim["alike"])
    is_limit_above = kind.startswith("at_most")
    worst, where = (max if is_limit_above else min)(values)
    best = (min if is_limit_above else max)(values)[0]
    reached = worst <= aim[kind] if is_limit_above else worst >= aim[kind]
    told = f"{FORMATS[kind](worst)} ({where})"
    if len(values) > 1:
        told += f", at best {FORMATS[kind](best)}"
    return Judged(aim["text"], told, reached)


def kind_of(aim):
    return next(kind for kind in FORMATS if kind in aim)


def values_of(aim, one, found):
    """Pairs of a value and where it is from."""
    kind = kind_of(aim)
    if kind in ("times", "times_memory"):
        others = [other for other in found if other.candidate != one.candidate
                  and (other.operation, other.case) == (one.operation, one.case)
                  and belongs(other.candidate, aim["than"])]
        if kind == "times":
            return [(other.seconds / one.seconds, f"{other.candidate}, {one.label}") for other in others]
        return [(other.memory / one.memory, f"{other.candidate}, {one.label}") for other in others
                if other.memory and one.memory]
    value = {"at_most_seconds": one.seconds, "at_most_bytes": one.memory, "at_least_rate": one.rate,
             "alike": one.rate}[kind]
    return [] if value is None else [(value, one.label)]


def in_seconds(value):
    for unit, scale in ("s", 1.0), ("ms", 1e-3), ("µs", 1e-6):
        if value >= scale:
            return f"{digits(value / scale)} {unit}"
    return f"{digits(value / 1e-9)} ns"


def in_bytes(value):
    return f"{digits(value / 1e6)} MB" if value < 1e9 else f"{digits(value / 1e9)} GB"


def times(value):
    return f"{digits(value)} ×"


def digits(value):
    """Three of them that count."""
    if value >= 100.0:
        return f"{value:,.0f}"
    return f"{value:.1f}" if value >= 10.0 else f"{value:.2f}"


FORMATS = {"at_most_seconds": in_seconds, "at_most_bytes": in_bytes,
           "at_least_rate": lambda value: f"{in_bytes(value)}/s", "times": times, "times_memory": times,
           "alike": digits}
