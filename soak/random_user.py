"""A random user of the real editor, who does sensible and senseless things to sound and damaged
sketches; after each event everything that the editor is and shows is compared with what it must be.

Each dialog has a seed of its own, so a fault is replayed alone. Every job runs in a process and on
an X server of its own and is watched: a crash or a hang is told with the event that was last begun.
"""

from __future__ import annotations

import argparse
import faulthandler
import importlib
import os
import sys
from collections.abc import Callable
from pathlib import Path
from typing import Any, NamedTuple

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))

from harness import patience  # noqa: E402
from harness.display import x_server  # noqa: E402
from harness.places import ROOT  # noqa: E402
from soak.common.watched import Finding, Progress, Telling, watch_all  # noqa: E402

SCREEN = (1024, 800)
EDITOR = "tandrel.gui.sketcher:SketchEditor"


class Plan(NamedTuple):
    """What to do: so many events, in every so many-th dialog from this one on."""

    events: int
    seed: int = 1
    dialog: int = 0
    stride: int = 1
    most_faults: int = 5
    editor: str = EDITOR

    def shares(self, jobs: int) -> list[Plan]:
        """The plans of jobs that do this one side by side."""
        return [
            self._replace(
                events=self.events // jobs + (job < self.events % jobs),
                dialog=self.dialog + job,
                stride=jobs,
            )
            for job in range(jobs)
        ]

    def replay(self, step: list[int]) -> str:
        """The command that does one dialog again as far as this event."""
        dialog, event = step
        editor = "" if self.editor == EDITOR else f" --editor {self.editor}"
        return (
            f"{Path(__file__).relative_to(ROOT)} --seed {self.seed} --dialog {dialog}"
            f" --events {max(event, 1)}{editor}"
        )


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--events", type=int, default=30_000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--dialog", type=int, default=0, help="the first dialog to open")
    parser.add_argument("--jobs", type=int, default=1, help="processes to share the events")
    parser.add_argument("--editor", default=EDITOR, help="the class to try, as module:name")
    parser.add_argument("--stride", type=int, help=argparse.SUPPRESS)
    options = parser.parse_args()
    plan = Plan(options.events, options.seed, options.dialog, editor=options.editor)
    if options.stride:
        return work(plan._replace(stride=options.stride))
    done, faults = run(plan, options.jobs)
    for fault in faults:
        step = fault.step or [plan.dialog, 0]  # of a job that ended before it began
        print(f"dialog {step[0]}, event {step[1]}: {fault.what}")
        print(f"replay: {plan.replay(step)}\n")
    print(f"random user: {done:,} events, seed {plan.seed}: {len(faults)} faults")
    return 1 if faults or done < plan.events else 0


# -- one job -----------------------------------------------------------------------------------


def work(plan: Plan) -> int:
    """Do a plan in this process, telling on the standard output."""
    faulthandler.enable()
    telling = Telling()
    with x_server(*SCREEN) as display:
        os.environ["DISPLAY"] = display
        telling.result(use(imported(plan.editor), plan, telling.begin, telling.found))
    return 0


def imported(editor: str) -> Any:
    """The class of this name."""
    module, _, name = editor.partition(":")
    return getattr(importlib.import_module(module), name)


def use(
    cls: Callable[..., Any],
    plan: Plan,
    begin: Callable[[list[int]], None],
    found: Callable[[list[int], str], None],
) -> int:
    """Do a plan on the display at hand; how many events that were. A step is (dialog, event)."""
    from soak.user import session

    root = session.open_root()
    dialog, done, faults = plan.dialog, 0, 0
    while done < plan.events and faults < plan.most_faults:
        one = session.Session(f"{plan.seed} {dialog}", lambda event: begin([dialog, event]))
        try:
            one.play(root, cls, plan.events - done)
        except Exception as error:
            faults += 1
            found([dialog, one.steps], session.told(error))
        done += one.steps
        dialog += plan.stride
    root.destroy()
    return done


# -- all jobs ----------------------------------------------------------------------------------


def run(plan: Plan, jobs: int = 1) -> tuple[int, list[Finding]]:
    """Do a plan in watched processes side by side; how many events were done, what went wrong."""
    begun = 0
    progress = Progress()

    def heard(_kind: str, value: Any) -> None:
        nonlocal begun
        begun += isinstance(value, list) and value[1] > 0
        progress.tell(f"random user: {begun:,} of {plan.events:,} events")

    faults = watch_all([command(share) for share in plan.shares(jobs)], patience.SECONDS, heard)
    return begun, faults


def command(plan: Plan) -> list[str]:
    """What runs a plan in a process of its own."""
    options = ["events", "seed", "dialog", "stride", "editor"]
    values = [part for name in options for part in (f"--{name}", str(getattr(plan, name)))]
    return [sys.executable, __file__, *values]


if __name__ == "__main__":
    sys.exit(main())
