"""Times of operations that are measured side by side."""

import gc
import statistics
import time
from contextlib import contextmanager

LEAST_ROUNDS = 5
LEAST_SECONDS = 0.02  # of one timing, so that caches are as warm as they get


@contextmanager
def steady():
    """No garbage collection while the block runs."""
    gc.collect()
    gc.disable()
    try:
        yield
    finally:
        gc.enable()


def side_by_side(operations, seconds):
    """The times of each operation, in seconds: one list for each, with one time a round.

    Every round runs all operations, each time beginning with the next one, and repeats the faster
    ones until they take about as long as the slowest. So whatever else the machine does falls on
    all of them alike: of a short and a long operation it would interrupt the long one more often.
    """
    for operation in operations:
        operation()
    first = [timed(operation) for operation in operations]
    repeats = [max(1, round(max(*first, LEAST_SECONDS) / own)) for own in first]
    times = [[] for _ in operations]
    with steady():
        end = time.perf_counter() + seconds
        while time.perf_counter() < end or len(times[0]) < LEAST_ROUNDS:
            start = len(times[0]) % len(operations)
            for k in (*range(start, len(operations)), *range(start)):
                times[k].append(timed(operations[k], repeats[k]))
    return times


def timed(operation, repeats=1):
    start = time.perf_counter()
    for _ in range(repeats):
        operation()
    return (time.perf_counter() - start) / repeats


def undisturbed(times):
    """What an operation takes while nothing else keeps the machine busy: the fastest tenth."""
    return statistics.quantiles(times, n=10, method="inclusive")[0]
