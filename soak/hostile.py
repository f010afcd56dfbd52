"""Damaged sketches and hostile neighbours, at random: no crash, no hang, nothing held afterwards.

A case is an editor with a damaged sketch, asked for a handful of operations while hostile values
and neighbours raise, lie, answer nonsense, enter the editor again, replace what it works on or
close it. Most cases have a stand-in for the window; every eighth has a real one. After each of
them a fresh editor must work, and nothing of the case may be held any more.

    soak/hostile.py --cases 200000 [--seed 0] [--jobs 2]

A finding names the seed of its case, which `--seed N --cases 1` replays; what strikes is then told
one by one.
"""

from __future__ import annotations

import argparse
import faulthandler
import gc
import os
import resource
import sys
import warnings
from collections.abc import Callable
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))

from harness import patience  # noqa: E402
from harness.display import x_server  # noqa: E402
from soak.common.watched import Progress, Telling, watch_all  # noqa: E402

BATCH = 500  # cases of one child
WINDOWS_EVERY = 8
MEMORY = 2 << 30  # bytes that a child may take over what it starts with
COMMAND = [sys.executable, str(Path(__file__).resolve())]


def main(arguments: list[str] | None = None, command: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--cases", type=int, default=200_000)
    parser.add_argument("--seed", type=int, default=0, help="of the first case")
    parser.add_argument("--jobs", type=int, default=1, help="children at a time")
    parser.add_argument("--child", action="store_true", help=argparse.SUPPRESS)
    chosen = parser.parse_args(arguments)
    seeds = range(chosen.seed, chosen.seed + chosen.cases)
    if chosen.child:
        serve(seeds)
        return 0
    with x_server(1280, 1024) as display:
        environment = {
            "PYTHONMALLOC": "debug",  # shows the use of an object that is gone
            **os.environ,
            "PYTHONHASHSEED": "0",  # sets have the same order in every run
            "DISPLAY": display,
        }
        return report(seeds, chosen.jobs, command or COMMAND, environment)


# -- the child ---------------------------------------------------------------------------------


def serve(seeds: range, strike: Callable[[int], None] | None = None) -> None:
    """Run the cases and tell what is found; `strike` is called first with each seed."""
    faulthandler.enable()
    warnings.simplefilter("ignore")  # numpy's, about nonsense
    bound_memory()
    telling = Telling(os.fdopen(os.dup(1), "w"))
    sys.stdout = sys.stderr
    run = runner(aloud=len(seeds) == 1)
    for seed in seeds:
        telling.begin(seed)
        if strike:
            strike(seed)
        for what in run(seed):
            telling.found(seed, what)


def runner(aloud: bool = False) -> Callable[[int], list[str]]:
    """A function that runs the case of a seed and gives what must not be."""
    from soak.hostility.cases import Afterwards, Case
    from soak.hostility.windows import AfterwardsOnScreen, Screen, WindowCase

    screen = Screen()
    off_screen = Afterwards()
    on_screen = AfterwardsOnScreen(screen, off_screen)
    gc.collect()
    gc.freeze()  # what is there already need not be looked at after each case

    def run(seed: int) -> list[str]:
        windows = seed % WINDOWS_EVERY == 0
        case = WindowCase(seed, screen) if windows else Case(seed)
        case.attack.aloud = aloud
        case.run()
        return on_screen.check(case) if windows else off_screen.check(case)

    return run


def bound_memory() -> None:
    """Let what asks for senseless amounts of memory be refused; a sanitizer's shadow needs more."""
    if "asan" in os.environ.get("LD_PRELOAD", ""):
        return
    with open("/proc/self/statm", "rb") as numbers:
        now = int(numbers.read().split()[0]) * resource.getpagesize()
    resource.setrlimit(resource.RLIMIT_AS, (now + MEMORY, now + MEMORY))


# -- the parent --------------------------------------------------------------------------------


def report(seeds: range, jobs: int, command: list[str], environment: dict[str, str]) -> int:
    """Run the cases in children, print the findings and the figure; 0 where there are none.

    After a crash or a hang the child's other cases, a batch at most, aren't run.
    """
    starts = range(seeds.start, seeds.stop, BATCH)
    batches = [range(start, min(start + BATCH, seeds.stop)) for start in starts]
    words = [["--child", "--seed", str(b.start), "--cases", str(len(b))] for b in batches]
    begun = 0
    progress = Progress()

    def heard(_kind: str, _seed: int) -> None:
        nonlocal begun
        begun += 1
        progress.tell(f"{begun:,} cases")

    commands = [command + each for each in words]
    findings = watch_all(commands, patience.SECONDS, heard, environment, jobs)
    for finding in findings:
        replay = f"soak/hostile.py --seed {finding.step} --cases 1"
        print(f"seed {finding.step}: {finding.what}\n  replay: {replay}")
    print(f"hostile: {begun:,} cases, seed {seeds.start}: {len(findings)} faults")
    return 1 if findings or begun < len(seeds) else 0


if __name__ == "__main__":
    sys.exit(main())
