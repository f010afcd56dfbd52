"""What the editor costs, as ratios of times taken side by side, and how long a motion takes.

Runs on an X server of its own and ends with 1 where a bound is missed. `--quick` runs everything on
small sketches, to see that it runs: then only exact counts are held against their bounds.
"""

import argparse
import os
import sys
from pathlib import Path
from typing import NamedTuple

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT))

from harness.places import SEARCH_PATH  # noqa: E402

sys.path[:0] = SEARCH_PATH

from benchmarks import floor, picture  # noqa: E402
from benchmarks.latency import dragging, hovering  # noqa: E402
from benchmarks.sketches import asked_of, calls_of  # noqa: E402
from benchmarks.stage import PIXEL, stages  # noqa: E402
from benchmarks.timing import side_by_side, undisturbed  # noqa: E402
from harness.display import x_server  # noqa: E402
from tandrel.gui.widgets import main_window  # noqa: E402

RESULTS = ROOT / "build" / "bench"


class Size(NamedTuple):
    """How much is measured."""

    shapes: tuple[int, int, int]  # the last one is for picking and snapping too
    grown: int  # shapes to grow to from the last one
    watched: tuple[int, ...]  # shapes under a moving pointer
    motions: int
    seconds: float  # for each figure that is a ratio of times


FULL = Size((0, 100, 1000), 4000, (0, 100, 300, 1000), 600, 8.0)
QUICK = Size((0, 10, 50), 200, (0, 10, 30, 50), 20, 0.05)


class Figure(NamedTuple):
    """A measured ratio or count and what it must be, at most or at least, if anything."""

    name: str
    shapes: str
    value: float
    most: float | None = None
    least: float | None = None
    exact: bool = False
    detail: str = ""

    @property
    def bound(self):
        bounds = (("at most", self.most), ("at least", self.least))
        return ", ".join(f"{how} {value:g}" for how, value in bounds if value is not None)

    @property
    def holds(self):
        above = self.most is not None and self.value > self.most
        return not above and (self.least is None or self.value >= self.least)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--quick", action="store_true", help="small sketches, a few seconds")
    quick = parser.parse_args().quick
    with x_server(1600, 1200) as display_name:
        os.environ["DISPLAY"] = display_name
        return measure(QUICK if quick else FULL, quick)


def measure(size, quick):
    """Measure and show everything; 1 where a bound is missed, else 0."""
    root = main_window("Benchmarks")
    held = [report(figure, figure.exact or not quick) for figure in figures(root, size)]
    print()
    hovers = show_latencies("pointer moving over", hovering, root, size.watched, size.motions)
    drags = show_latencies("dragging one", dragging, root, size.watched[1:], size.motions // 4)
    root.destroy()
    RESULTS.mkdir(parents=True, exist_ok=True)
    image = RESULTS / ("quick.png" if quick else "motion.png")
    picture.draw(hovers, drags).save(image)
    print(f"\n{image.relative_to(ROOT)} shows these times.")
    return 0 if all(held) else 1


def figures(root, size):
    """Every figure that has a bound, as soon as it is known."""
    busy = f"{os.getloadavg()[0]:.1f} of {os.cpu_count()} processors busy before"
    print(f"Ratios of times taken side by side; {busy}. On the right the times.\n")
    for count in size.shapes:
        with stages(root, count) as (stage,), asked_of(stage.host):
            yield from repaint_figures(stage, size.seconds)
            if count == size.shapes[-1]:
                yield from pointer_figures(stage, size.seconds)
                yield from question_figures(stage)
    with stages(root, size.shapes[-1], size.grown) as (few, many):
        yield from growth_figures(few, many, size.seconds)


def repaint_figures(stage, seconds):
    most, least = (1.10, 3.5) if stage.count else (1.00, 1.3)
    again = [stage.editor.redraw, stage.send_items_again]
    name = "repaint / sending its canvas items again"
    yield timed_figure(name, stage.count, side_by_side(again, seconds), most=most)
    if stage.count:
        times = side_by_side([stage.editor.redraw, made_by_c(stage)], seconds)
        name = "repaint / its polygons made by C"
        yield timed_figure(name, stage.count, times, most=1.35)
    plain = [stage.plain.redraw, stage.editor.redraw]
    name = "repaint, plain Python / ours"
    yield timed_figure(name, stage.count, side_by_side(plain, seconds), least=least)


def made_by_c(stage):
    """Makes the polygons of a repaint as cheaply as can be."""
    with asked_of(stage.host):
        polygons = stage.polygons
    return floor.Floor(floor.library(RESULTS), stage.editor.canvas, polygons).repaint


def pointer_figures(stage, seconds):
    for operation, least in (("pick", 30), ("snapped", 10)):
        ours, plain = (getattr(editor, operation) for editor in (stage.editor, stage.plain))
        times = side_by_side([lambda: plain(*PIXEL), lambda: ours(*PIXEL)], seconds)
        yield timed_figure(f"{operation}, plain Python / ours", stage.count, times, least=least)


def timed_figure(name, shapes, times, **bound):
    """The ratio of the times of two operations."""
    one, other = map(undisturbed, times)
    detail = f"{1000 * one:.3g} ms / {1000 * other:.3g} ms"
    return Figure(name, str(shapes), one / other, detail=detail, **bound)


def question_figures(stage):
    """How often the host is asked for an outline; here nesting depths are known without."""
    for operation, arguments in (("redraw", ()), ("pick", PIXEL), ("_extent", ())):
        with calls_of(stage.host, "outline") as calls:
            getattr(stage.editor, operation)(*arguments)
        value = len(calls) / stage.count
        name = f"outlines asked of the host per shape, {operation}"
        yield Figure(name, str(stage.count), value, most=1.0, exact=True)


def growth_figures(few, many, seconds):
    grown = f"{few.count} to {many.count}"
    in_c = [made_by_c(stage) for stage in (many, few)]
    yield timed_figure("growth of the polygons made by C", grown, side_by_side(in_c, seconds))
    arguments_of = {"redraw": (), "pick": PIXEL, "snapped": PIXEL, "_extent": ()}
    for operation, arguments in arguments_of.items():

        def run(stage):
            with asked_of(stage.host):
                getattr(stage.editor, operation)(*arguments)

        times = side_by_side([lambda: run(many), lambda: run(few)], seconds)
        yield timed_figure(f"growth of {operation}", grown, times, most=4.4)


def report(figure, judged):
    """Print a figure; whether it holds, if it is judged."""
    judged = judged and bool(figure.bound)
    verdict = ("ok" if figure.holds else "MISSED") if judged else "-"
    value = f"{figure.name:<48} {figure.shapes:>12} {figure.value:8.2f}"
    print(f"{value}  {figure.bound:<13} {verdict:<6} {figure.detail}".rstrip(), flush=True)
    return figure.holds or not judged


def show_latencies(what, measure, root, counts, motions):
    print(f"{f'motion to painted, ms, {what}':<48} {'shapes':>12}   median     95 %     99 %")
    latencies = []
    for count in counts:
        latencies.append(measure(root, count, motions))
        times = " ".join(f"{1000 * seconds:8.2f}" for seconds in latencies[-1][1:])
        print(f"{'':<48} {count:>12} {times}", flush=True)
    return latencies


if __name__ == "__main__":
    sys.exit(main())
