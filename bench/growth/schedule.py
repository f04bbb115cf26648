"""What is begun: nothing that is expected to take too long."""

import math
import time

# Where less is known, times are taken to grow with this power.
USUAL_GROWTH, LEAST_GROWTH, GREATEST_GROWTH = 1.5, 0.8, 2.5


def expected(known, size):
    """The seconds that a size will take, by those known of smaller ones as pairs (size, seconds); 0.0 where nothing
    is known."""
    known = sorted(pair for pair in known if pair[0] < size and pair[1] > 0.0)
    if not known:
        return 0.0
    growth = USUAL_GROWTH
    if len(known) > 1:
        (small, before), (great, after) = known[-2:]
        growth = math.log(after / before) / math.log(great / small)
    return known[-1][1] * (size / known[-1][0]) ** min(max(growth, LEAST_GROWTH), GREATEST_GROWTH)


class Schedule:
    """Keeps what steps took of the processor, which is what they take on a quiet machine, and what is left of the
    time for all of them."""

    def __init__(self, limit, budget, clock=time.monotonic):
        self.limit, self.clock = limit, clock
        self.end = clock() + budget
        self.known = {}
        self.failed = set()

    def refuses(self, step, size):
        """Why a step is not begun, empty where it may be."""
        if step in self.failed:
            return "left out: failed with fewer documents"
        seconds = expected(self.known.get(step, []), size)
        if seconds > self.limit:
            return f"left out: some {seconds:,.0f} s expected, above the limit of {self.limit:,.0f} s"
        left = self.end - self.clock()
        if left <= seconds:
            return f"left out: some {seconds:,.0f} s expected, {max(left, 0.0):,.0f} s left of the budget"
        return ""

    def longest(self):
        """Seconds after which what was begun is given up: no guess is better than by half."""
        return max(min(2.0 * self.limit, self.end - self.clock() + 60.0), 1.0)

    def fail(self, step):
        """What failed is not begun with more documents."""
        self.failed.add(step)

    def took(self, step, size, seconds):
        self.known.setdefault(step, []).append((size, seconds))
