"""Damaged sketches and hostile neighbours, at random: no crash, no hang, nothing held afterwards.

A case is an editor with a damaged sketch, asked for a handful of operations while hostile values
and neighbours raise, lie, answer nonsense, enter the editor again, replace what it works on or
close it. Most cases have a stand-in for the window; every eighth has a real one. After each of
them a fresh editor must work, and nothing of the case may be held any more.

    python3 -m soak hostile --cases 200000 [--seed 0] [--jobs 2]

A finding names the seed of its case, which `--seed N --cases 1` replays; what strikes is then told
one by one.
"""

import argparse
import gc
import os
import resource
import warnings
from collections.abc import Callable

from soak.common.watched import Telling, watch_all

BATCH = 500  # cases of one child; those after one that crashes or hangs aren't run
WINDOWS_EVERY = 8
MEMORY = 2 << 30  # bytes that a child may take over what it starts with
CHILD = "soak.hostile:serve"
ENVIRONMENT = {
    "PYTHONMALLOC": os.environ.get("PYTHONMALLOC", "debug"),  # shows the use of a freed object
    "PYTHONHASHSEED": "0",  # sets have the same order in every run
}


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--cases", type=int, default=200_000)
    parser.add_argument("--seed", type=int, default=0, help="of the first case")
    parser.add_argument("--jobs", type=int, default=1, help="children at a time")
    chosen = parser.parse_args(arguments)
    end = chosen.seed + chosen.cases
    batches = [(seed, min(seed + BATCH, end)) for seed in range(chosen.seed, end, BATCH)]
    seeds: list[int] = []
    findings = watch_all(
        CHILD, batches, lambda _, seed: seeds.append(seed), ENVIRONMENT, jobs=chosen.jobs
    )
    for seed, what in findings:
        print(f"seed {seed}: {what}\n  replay: python3 -m soak hostile --seed {seed} --cases 1")
    print(f"hostile: {len(seeds):,} cases, seed {chosen.seed}: {len(findings)} faults")
    return 1 if findings or len(seeds) < chosen.cases else 0


def serve(telling: Telling, seed: int, end: int) -> None:
    """Run the cases and tell what is found."""
    warnings.simplefilter("ignore")  # numpy's, about nonsense
    bound_memory()
    run = runner(aloud=end - seed == 1)
    for seed in range(seed, end):
        telling.begin(seed)
        for what in run(seed):
            telling.found(seed, what)


def runner(aloud: bool = False) -> Callable[[int], list[str]]:
    """A function that runs the case of a seed and gives what must not be."""
    from soak.hostility.cases import Afterwards, Case
    from soak.hostility.windows import Screen, WindowCase

    screen, afterwards = Screen(), Afterwards()
    gc.collect()
    gc.freeze()  # what is there already need not be looked at after each case

    def run(seed: int) -> list[str]:
        windows = seed % WINDOWS_EVERY == 0
        case = WindowCase(seed, screen) if windows else Case(seed)
        case.attack.aloud = aloud
        case.run()
        return [*afterwards.check(case), *(screen.check() if windows else ())]

    return run


def bound_memory() -> None:
    """Let what asks for senseless amounts of memory be refused; a sanitizer's shadow needs more."""
    if "asan" in os.environ.get("LD_PRELOAD", ""):
        return
    with open("/proc/self/statm", "rb") as numbers:
        now = int(numbers.read().split()[0]) * resource.getpagesize()
    resource.setrlimit(resource.RLIMIT_AS, (now + MEMORY, now + MEMORY))
