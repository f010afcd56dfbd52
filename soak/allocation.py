"""Memory that runs out at the n-th allocation, for every n: no crash, no hang, an error that Python
code can handle, and the next dialog works in the same process.

Steps are the import, every operation on an editor without window, and, in real windows, the
construction, repaints, each handler, OK and Cancel. Each point is a process of its own, forked
before the module is loaded, and counts the allocations that the module asks for itself, of the
interpreter or of C++ (see common/failing_allocator.cpp): not those of the Python code, numpy and
Tk that it calls. At every point memory is tried to fail once, and to stay away until the step has
ended.

    python3 -m soak allocation [--points 500] [--only "repaint:17:lasting"]
"""

import argparse
import ctypes
import gc
import json
import os
import signal
import sysconfig
import tempfile
import traceback
from collections import Counter
from typing import Any, NamedTuple, NoReturn

from harness import patience
from harness.places import ROOT
from soak.common.suite import quietly
from soak.common.watched import Telling, watch_all

SHIM = ROOT / "build" / "soak" / "failing_allocator.so"
CHILD = "soak.allocation:serve"
SECONDS = round(patience.SECONDS)  # for one point
SILENCE = 2 * patience.SECONDS
MODES = ("once", "lasting")


class Point(NamedTuple):
    step: str
    n: int
    mode: str

    def __str__(self) -> str:
        return f"{self.step}:{self.n}:{self.mode}"


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--points", type=int, help="about so many, evenly chosen; else all")
    parser.add_argument("--only", metavar="STEP[:N[:MODE]]", help="one step, or one point of it")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1)
    options = parser.parse_args(arguments)
    build_shim()
    outcomes: Counter[str] = Counter()

    def heard(kind: str, value: str) -> None:
        if kind == "result":
            outcomes[value] += 1

    parts = [(part, options.jobs, options.only, options.points) for part in range(options.jobs)]
    findings = watch_all(CHILD, parts, heard, {"LD_PRELOAD": str(SHIM)}, SILENCE)
    for step, what in findings:
        print(f"{step}: {what}\n  replay: python3 -m soak allocation --only {step!r}")
    print("ended with:", ", ".join(f"{name} {n:,}" for name, n in outcomes.most_common()))
    points = sum(outcomes.values())
    print(f"allocation failure: {points:,} points: {len(findings)} faults")
    return 0 if points and not findings else 1


def build_shim() -> None:
    SHIM.parent.mkdir(parents=True, exist_ok=True)
    command = ["c++", "-std=c++20", "-shared", "-fPIC", "-O2", "-g", "-Wall", "-Wextra"]
    command += ["-Wl,-z,lazy", f"-I{sysconfig.get_path('include')}"]
    quietly(*command, str(ROOT / "soak" / "common" / "failing_allocator.cpp"), "-o", str(SHIM))


def serve(telling: Telling, part: int, parts: int, *chosen_by: Any) -> None:
    """Try this part's points and tell how each ended."""
    from soak.dialogs.steps import STEPS, prepare

    prepare()
    shim = ctypes.PyDLL(str(SHIM))
    if not shim.install():
        raise RuntimeError("this interpreter hides where it evaluates")
    gc.collect()
    gc.freeze()
    for point in chosen(STEPS, shim, telling, *chosen_by)[part::parts]:
        telling.begin(str(point))
        outcome, wrong = tried(STEPS[point.step], point, shim)
        telling.result(outcome)
        if wrong:
            telling.found(str(point), wrong)


def chosen(
    steps: dict[str, Any], shim: Any, telling: Telling, only: str | None, most: int | None
) -> list[Point]:
    """All points, or evenly chosen ones; the same in every part."""
    name, _, rest = (only or "").partition(":")
    n, _, mode = rest.partition(":")
    if n:
        return [Point(name, int(n), each) for each in MODES if mode in ("", each)]
    points = [
        Point(step, k, mode)
        for step in ([name] if name else steps)
        for k in range(1, allocations(steps[step], step, shim, telling) + 1)
        for mode in MODES
    ]
    if most and most < len(points):
        return [points[k * len(points) // most] for k in range(most)]
    return points


def allocations(step: Any, name: str, shim: Any, telling: Telling) -> int:
    """How many allocations the module asks for in a step in which none fails."""
    point = Point(name, 0, "once")
    telling.begin(str(point))
    outcome, wrong = tried(step, point, shim)
    kind, _, count = outcome.partition(" ")
    if wrong or kind != "completed":
        raise RuntimeError(f"{name}, with all memory that it asks for: {outcome} {wrong}")
    return int(count)


def tried(step: Any, point: Point, shim: Any) -> tuple[str, str]:
    """How a step ended in a process of its own, and what was wrong, if anything."""
    with tempfile.TemporaryFile() as errors:
        child = os.fork()
        if child == 0:
            os.dup2(errors.fileno(), 2)
            in_child(step, point, shim)
        _, status = os.waitpid(child, 0)
        errors.seek(0)
        said = errors.read().decode(errors="replace").strip()
    if os.WIFSIGNALED(status):
        number = signal.Signals(os.WTERMSIG(status))
        how = f"hang: {SECONDS} s" if number == signal.SIGALRM else f"crash: {number.name}"
        return how, f"{how}\n{said}"
    if status:
        return "lost", f"the process ended with {os.WEXITSTATUS(status)}\n{said}"
    outcome, wrong = json.loads(said.splitlines()[-1])
    return outcome, wrong


def in_child(step: Any, point: Point, shim: Any) -> NoReturn:
    """Try a point and write down how it ended, as the last line of what is said."""
    signal.alarm(SECONDS)
    try:
        answer = outcome_of(step, point, shim)
    except BaseException:
        answer = "the next", traceback.format_exc()
    os.write(2, f"\n{json.dumps(answer)}".encode())
    os._exit(0)


def outcome_of(step: Any, point: Point, shim: Any) -> tuple[str, str]:
    subject = step.make()
    raised: BaseException | None = None
    gc.collect()  # empties the interpreter's lists of freed objects, which need no allocation
    shim.arm(ctypes.c_long(point.n), point.mode == "lasting")
    try:
        step.act(subject)
    except BaseException as error:
        raised = error
    finally:
        count = shim.disarm()
    outcome = type(raised).__name__ if raised else "completed"
    if isinstance(raised, SystemError):
        return outcome, "".join(traceback.format_exception(raised))
    del raised
    step.next_works(subject)
    return outcome if point.n else f"{outcome} {count}", ""
