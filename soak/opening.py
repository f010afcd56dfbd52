"""Open and close the dialog again and again, in every way: nothing may be left of any of them.

For each way a few cycles warm up; then, over the way's share of the cycles, the growth is taken of
Tcl commands, Tcl variables, windows (with timers, images and fonts), Python objects, references to
what the application keeps, allocated blocks and file descriptors.

    python3 -m soak opening --cycles 10000 [--ways "every tip" "parent destroyed"]
"""

import argparse
import json
from collections.abc import Callable, Mapping
from functools import partial
from typing import Any

from soak.common import growth
from soak.common.watched import Telling, watch_all

WARM_UP = 4
RUNS = 3  # of a way's cycles, for as long as something grows
CHILD = "soak.opening:serve"


def main(arguments: list[str] | None = None) -> int:
    """Run the child, print a row for each way and the figure; 0 where nothing grew."""
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--cycles", type=int, default=10_000, help="of all ways together")
    parser.add_argument("--ways", nargs="+", metavar="WAY", help="only these")
    chosen = parser.parse_args(arguments)
    print(f"{'growth over':<34} {'cycles':>7}  {'  '.join(growth.MEASURES)}")
    rows: list[dict[str, Any]] = []

    def heard(kind: str, value: Any) -> None:
        if kind == "result":
            rows.append(value)
            print(row_text(value), flush=True)

    findings = watch_all(CHILD, [(chosen.cycles, chosen.ways)], heard)
    for step, what in findings:
        way, cycle = step or ("start", 0)
        replay = f"python3 -m soak opening --cycles {max(cycle, 0) + 1} --ways {way!r}"
        print(f"{way}, cycle {cycle}: {what}\n  replay: {replay}")
    totals = {name: sum(row["grew"].get(name, 0) for row in rows) for name in growth.MEASURES}
    cycles = sum(row["cycles"] for row in rows)
    amounts = ", ".join(f"{name} {by:+}" for name, by in totals.items())
    broken = f"; {len(findings)} faults" if findings else ""
    print(f"open and close: {cycles:,} cycles in {len(rows)} ways: {amounts}{broken}")
    return 1 if any(totals.values()) or findings or not rows else 0


def row_text(row: dict[str, Any]) -> str:
    grew = row["grew"]
    cells = "  ".join(f"{grew.get(name, 0):>+{len(name)}}" for name in growth.MEASURES)
    more = [f"    {name} {by:+}" for name, by in grew.items() if name not in growth.MEASURES]
    return "\n".join([f"{row['way']:<34} {row['cycles']:>7}  {cells}", *more])


def serve(
    telling: Telling,
    cycles: int,
    only: list[str] | None = None,
    ways: Mapping[str, Callable[[Any], None]] | None = None,
) -> None:
    """Do the cycles of all ways, evenly and each way at least once, and tell what grew."""
    from soak.dialogs.ways import WAYS, Stage
    from soak.user.session import open_root

    root = open_root()
    stage = Stage(root)
    root.report_callback_exception = lambda kind, *_: stage.raised.append(kind.__name__)
    every = WAYS if ways is None else ways
    names = only or list(every)
    watched = watched_objects(stage)

    def do(name: str, first: int, last: int) -> str:
        for cycle in range(first, last):
            telling.begin([name, cycle])
            every[name](stage)
            root.update()
            stage.take_raised()
            assert root.winfo_children() == [], f"left {root.winfo_children()}"
        return growth.measured(root, watched)

    for index, name in enumerate(names):
        count = max(len(range(index, cycles, len(names))), 1)
        grew = growth_of(partial(do, name), count)
        telling.result({"way": name, "cycles": count, "grew": json.loads(grew)})
    root.destroy()


def watched_objects(stage: Any) -> dict[str, object]:
    """What the application keeps while dialogs come and go, by a name that tells a reader."""
    from tandrel.gui import sketcher

    entities = stage.sketch["entities"]
    return {
        "sketch": stage.sketch,
        "entities": entities,
        **{f"entity {index}": entity for index, entity in enumerate(entities)},
        "references": stage.references,
        "points of a reference": stage.references[0][1],
        "parent": stage.root,
        # Not small numbers: one object serves the whole process.
        **{f"sketcher.{k}": v for k, v in vars(sketcher).items() if not isinstance(v, int)},
        **{f"SketchEditor.{name}": v for name, v in vars(sketcher.SketchEditor).items()},
        **{repr(constant): constant for constant in (True, False, (), "")},
    }


def growth_of(do: Callable[[int, int], str], count: int) -> str:
    """What a number of cycles left behind, by what measures all after the cycles that it does.

    Caches and free lists breathe; only what grows with the cycles counts. What grew must grow again
    in further runs of as many cycles.
    """
    before = do(0, 0)
    grew = growth.growth(before, before)
    # One measurement and one growth are kept while the next measurement is taken, from the first.
    before = do(-WARM_UP, 0)
    for repetition in range(RUNS):
        after = do(repetition * count, (repetition + 1) * count)
        grew_now = growth.growth(before, after)
        grew = growth.least(grew_now, grew) if repetition else grew_now
        before = after
        del after, grew_now
        if not json.loads(grew):
            break
    return grew
