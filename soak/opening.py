"""Open and close the dialog again and again, in every way: nothing may be left of any of them.

For each way a few cycles warm up; then, over the way's share of the cycles, the growth is taken of
Tcl commands, Tcl variables, windows (with timers, images and fonts), Python objects, references to
what the application keeps, allocated blocks and file descriptors.

    soak/opening.py --cycles 10000 [--ways "every tip" "parent destroyed"]
"""

from __future__ import annotations

import argparse
import json
import sys
from collections.abc import Callable, Iterator, Mapping
from pathlib import Path
from typing import Any

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))

from soak.common import growth  # noqa: E402
from soak.common.watched import Finding, Telling, watch_all  # noqa: E402

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
        print(f"{way}, cycle {cycle}: {what}\n  replay: {replay(way, cycle)}")
    return figure(rows, findings)


def row_text(row: dict[str, Any]) -> str:
    grew = row["grew"]
    cells = "  ".join(f"{grew.get(name, 0):>+{len(name)}}" for name in growth.MEASURES)
    more = [f"    {name} {by:+}" for name, by in grew.items() if name not in growth.MEASURES]
    return "\n".join([f"{row['way']:<34} {row['cycles']:>7}  {cells}", *more])


def replay(way: str, cycle: int) -> str:
    return f"soak/opening.py --cycles {max(cycle, 0) + 1} --ways {way!r}"


def figure(rows: list[dict[str, Any]], findings: list[Finding]) -> int:
    """The last line: the growth of every measure over all ways."""
    totals = {name: sum(row["grew"].get(name, 0) for row in rows) for name in growth.MEASURES}
    cycles = sum(row["cycles"] for row in rows)
    amounts = ", ".join(f"{name} {by:+}" for name, by in totals.items())
    broken = f"; {len(findings)} faults" if findings else ""
    print(f"open and close: {cycles:,} cycles in {len(rows)} ways: {amounts}{broken}")
    return 1 if any(totals.values()) or findings or not rows else 0


# -- the child ---------------------------------------------------------------------------------


def serve(
    telling: Telling,
    cycles: int,
    only: list[str] | None = None,
    ways: Mapping[str, Callable[[Any], None]] | None = None,
) -> None:
    """Do the cycles of all ways and tell what grew."""
    from soak.dialogs.ways import WAYS, Stage
    from tandrel.gui.widgets import main_window

    root = main_window("Opening and closing")
    stage = Stage(root)
    root.report_callback_exception = lambda kind, *_: stage.raised.append(kind.__name__)
    root.update()
    every = WAYS if ways is None else ways
    watched = watched_objects(stage)
    for name, count in shares(only or list(every), cycles):
        telling.result(grown_by(stage, watched, telling, name, every[name], count))
    root.destroy()


def shares(names: list[str], cycles: int) -> Iterator[tuple[str, int]]:
    """The cycles of each way: all of them together, evenly, and at least one."""
    each, over = divmod(cycles, len(names))
    for index, name in enumerate(names):
        yield name, max(each + (index < over), 1)


def watched_objects(stage: Any) -> dict[str, object]:
    """What the application keeps while dialogs come and go, by a name that tells a reader."""
    from tandrel.gui import sketcher

    entities = stage.sketch["entities"]
    # Not small numbers: one object serves the whole process.
    module = {f"sketcher.{k}": v for k, v in vars(sketcher).items() if not isinstance(v, int)}
    methods = {f"SketchEditor.{name}": v for name, v in vars(sketcher.SketchEditor).items()}
    constants = {repr(value): value for value in (True, False, (), "")}
    return {
        "sketch": stage.sketch,
        "entities": entities,
        **{f"entity {index}": entity for index, entity in enumerate(entities)},
        "references": stage.references,
        "points of a reference": stage.references[0][1],
        "parent": stage.root,
        **module,
        **methods,
        **constants,
    }


def grown_by(
    stage: Any,
    watched: Mapping[str, object],
    telling: Telling,
    name: str,
    way: Callable[[Any], None],
    count: int,
) -> dict[str, Any]:
    """What a number of cycles of one way left behind.

    Caches and free lists breathe; only what grows with the cycles counts. What grew must grow again
    in further runs of as many cycles.
    """

    def run(first: int, last: int) -> None:
        for cycle in range(first, last):
            telling.begin([name, cycle])
            way(stage)
            stage.root.update()
            stage.take_raised()
            windows = stage.root.winfo_children()
            assert windows == [], f"left {windows}"

    before = growth.measured(stage.root, watched)
    grew = growth.growth(before, before)
    # One measurement and one growth are kept while the next measurement is taken, from the first.
    run(-WARM_UP, 0)
    before = growth.measured(stage.root, watched)
    for repetition in range(RUNS):
        run(repetition * count, (repetition + 1) * count)
        after = growth.measured(stage.root, watched)
        grew_now = growth.growth(before, after)
        grew = growth.least(grew_now, grew) if repetition else grew_now
        before = after
        del after, grew_now
        if not json.loads(grew):
            break
    return {"way": name, "cycles": count, "grew": json.loads(grew)}


if __name__ == "__main__":
    sys.exit(main())
