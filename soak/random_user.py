"""A random user of the real editor, who does sensible and senseless things to sound and damaged
sketches; after each event everything that the editor is and shows is compared with what it must be.

Each dialog has a seed of its own, so a fault is replayed alone. Every job runs in a process and on
an X server of its own and is watched: a crash or a hang is told with the event that was last begun.
"""

from __future__ import annotations

import argparse
from collections.abc import Callable
from typing import Any, NamedTuple

from soak.common.watched import Finding, Telling, named, watch_all

CHILD = "soak.random_user:work"
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
                events=len(range(job, self.events, jobs)),
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
            f"python3 -m soak random_user --seed {self.seed} --dialog {dialog}"
            f" --events {max(event, 1)}{editor}"
        )


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--events", type=int, default=30_000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--dialog", type=int, default=0, help="the first dialog to open")
    parser.add_argument("--jobs", type=int, default=1, help="processes to share the events")
    parser.add_argument("--editor", default=EDITOR, help="the class to try, as module:name")
    options = parser.parse_args(arguments)
    plan = Plan(options.events, options.seed, options.dialog, editor=options.editor)
    done, faults = run(plan, options.jobs)
    for fault in faults:
        step = fault.step or [plan.dialog, 0]  # of a job that ended before it began
        print(f"dialog {step[0]}, event {step[1]}: {fault.what}")
        print(f"replay: {plan.replay(step)}\n")
    print(f"random user: {done:,} events, seed {plan.seed}: {len(faults)} faults")
    return 1 if faults or done < plan.events else 0


def run(plan: Plan, jobs: int = 1) -> tuple[int, list[Finding]]:
    """Do a plan in watched processes side by side; how many events were done, what went wrong."""
    begun = 0

    def heard(_kind: str, step: list[int]) -> None:
        nonlocal begun
        begun += step[1] > 0

    faults = watch_all(CHILD, plan.shares(jobs), heard)
    return begun, faults


def work(telling: Telling, *plan: Any) -> None:
    """Do a plan in this process."""
    use(named(Plan(*plan).editor), Plan(*plan), telling)


def use(cls: Callable[..., Any], plan: Plan, telling: Telling) -> None:
    """Do a plan on the display at hand with this class of editors. A step is (dialog, event)."""
    from soak.user import session

    root = session.open_root()
    dialog, done, faults = plan.dialog, 0, 0
    while done < plan.events and faults < plan.most_faults:
        one = session.Session(f"{plan.seed} {dialog}", lambda event: telling.begin([dialog, event]))
        try:
            one.play(root, cls, plan.events - done)
        except Exception as error:
            faults += 1
            telling.found([dialog, one.steps], session.told(error))
        done += one.steps
        dialog += plan.stride
    root.destroy()
