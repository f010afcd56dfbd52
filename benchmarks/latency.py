"""How long the user waits: from a motion of the pointer until the picture is on the screen."""

import statistics
from typing import NamedTuple

from benchmarks.sketches import sketch
from benchmarks.stage import opened
from benchmarks.timing import steady, timed
from tandrel.gui.sketcher import SketchEditor

BUTTON_1 = 0x100
UNTIMED = 3  # first motions, which fill the host's memory


class Latency(NamedTuple):
    """Seconds until painted: of half of the motions, of 95 and of 99 in a hundred, at most."""

    shapes: int
    median: float
    p95: float
    p99: float


def hovering(root, count, motions):
    """The pointer moves over a sketch of so many shapes; the application's own host answers."""
    editor = opened(SketchEditor, root, sketch(count))
    try:
        return latency(editor, count, motions, 0)
    finally:
        editor.destroy()


def dragging(root, count, motions):
    """The pointer moves a shape of the sketch, so that nesting has to be found anew each time."""
    editor = opened(SketchEditor, root, sketch(count))
    try:
        e = editor.sk["entities"][count // 10 * 5 + 2]  # a slot, which lies alone
        x, y = editor.to_screen(((e["x1"] + e["x2"]) / 2, e["y1"]))
        editor.canvas.event_generate("<ButtonPress-1>", x=round(x), y=round(y))
        if not editor.drag:
            raise RuntimeError("no shape was taken hold of")
        return latency(editor, count, motions, BUTTON_1)
    finally:
        editor.destroy()


def latency(editor, count, motions, state):
    canvas = editor.canvas
    width, height = canvas.winfo_width(), canvas.winfo_height()

    def move(k):
        # A path that comes everywhere without a pattern.
        x, y = 37 * k % width, 53 * k % height
        canvas.event_generate("<Motion>", x=x, y=y, state=state)
        canvas.update()
        # The answer to a question comes after the X server has done all that it was told before.
        canvas.winfo_pointerx()

    for k in range(UNTIMED):
        move(k)
    with steady():
        times = [timed(lambda: move(k)) for k in range(UNTIMED, UNTIMED + motions)]
    hundredths = statistics.quantiles(times, n=100, method="inclusive")
    return Latency(count, statistics.median(times), hundredths[94], hundredths[98])
