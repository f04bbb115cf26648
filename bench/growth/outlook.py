"""What the measured growth comes to where nothing was measured: powers fitted to the greatest sizes, carried on."""

import dataclasses
import math
import statistics

import summary

TARGETS = [1_000_000, 10_000_000, 100_000_000]
# Sizes of the last octaves: those from an eighth of the greatest on.
OCTAVES = 3


@dataclasses.dataclass(frozen=True)
class Power:
    """scale * size^exponent, through the greatest size that was measured."""

    size: float
    value: float
    exponent: float

    @classmethod
    def of(cls, points):
        """Of pairs (size, value); None where three of the last octaves are not known."""
        exponent = summary.growth(last_octaves(points))
        return cls(*max(points), exponent) if exponent is not None else None

    def at(self, size, least=1.0):
        """Time and bytes grow at least in proportion, whatever the costs of small sizes make of it."""
        return self.value * (size / self.size) ** max(self.exponent, least)


@dataclasses.dataclass(frozen=True)
class Line(Power):
    """What begins with a constant share, as memory does: the slope of the greatest sizes goes on. What grows more
    than in proportion is a power all the same."""

    slope: float

    @classmethod
    def of(cls, points):
        power = Power.of(points)
        if power is None:
            return None
        slope = statistics.linear_regression(*zip(*last_octaves(points))).slope
        return cls(power.size, power.value, power.exponent, max(slope, 0.0))

    def at(self, size, least=1.0):
        if self.exponent > 1.1:
            return super().at(size, least)
        return self.value + self.slope * (size - self.size)


def last_octaves(points):
    if not points:
        return []
    least = max(size for size, _ in points) / 2**OCTAVES
    # Sizes are steps of 2 and 2.5: the one just below belongs to them.
    return sorted(point for point in points if point[0] >= 0.8 * least)


def in_hours(seconds):
    """Of a processor, in the unit that suits."""
    for unit, scale in ("years", 365 * 24 * 3600.0), ("days", 24 * 3600.0), ("h", 3600.0), ("min", 60.0):
        if seconds >= 2.0 * scale:
            return f"{summary.digits(seconds / scale)} {unit}"
    return f"{summary.digits(seconds)} s"


def in_bytes(value):
    for unit, scale in ("PB", 1e15), ("TB", 1e12), ("GB", 1e9), ("MB", 1e6):
        if value >= scale:
            return f"{summary.digits(value / scale)} {unit}"
    return f"{value / 1e3:,.0f} kB"


def in_count(value):
    """Three digits that count."""
    rounding = max(math.floor(math.log10(value)) - 2, 0)
    return f"{round(value, -rounding):,.0f}" if value >= 100 else summary.digits(value)
