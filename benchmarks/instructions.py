"""How many machine instructions one repaint and one pointer motion take, counted by callgrind.

Unlike times these figures hardly move from run to run, so that a change of one per cent shows.
Two ways: without a window, on a canvas that takes everything and does nothing, for what the editor
itself does; and on a real canvas, for what it makes Tk do too, drawing excluded. The host answers
from memory. What one operation takes is the difference of two runs, divided by the repetitions
that they differ by: the first repetition makes what is made only once.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile
import tkinter as tk
from pathlib import Path
from types import SimpleNamespace
from typing import Callable, NamedTuple

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT))

from harness.places import SEARCH_PATH  # noqa: E402

sys.path[:0] = SEARCH_PATH

import numpy as np  # noqa: E402
from benchmarks.sketches import answers, asked_of, sketch  # noqa: E402
from benchmarks.stage import PIXEL, opened  # noqa: E402
from benchmarks.timing import steady  # noqa: E402
from harness.display import x_server  # noqa: E402
from tandrel.gui.sketcher import SketchEditor  # noqa: E402

SHAPES = 100
ONCE, OFTEN = 1, 11


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--shapes", type=int, default=SHAPES)
    parser.add_argument("--runs", type=int, default=1, help="count again to see what moves")
    parser.add_argument("--repeat", nargs=2, metavar=("HOW", "TIMES"), help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.repeat:
        how, times = options.repeat
        repeat(how, options.shapes, int(times))
        return
    print(f"Instructions, {options.shapes} shapes of 64 points")
    with x_server(1600, 1200) as display_name:
        for how in OPERATIONS:
            for _ in range(options.runs):
                counted = count(how, options.shapes, display_name)
                print(f"{how:<26} {counted:>14,.0f}", flush=True)


def count(how, shapes, display_name):
    """Instructions of one operation."""
    totals = [total(how, shapes, times, display_name) for times in (ONCE, OFTEN)]
    return (totals[1] - totals[0]) / (OFTEN - ONCE)


def total(how, shapes, times, display_name):
    """Instructions of all calls of the operation in a process that repeats it so many times."""
    with tempfile.TemporaryDirectory() as folder:
        profile = Path(folder) / "callgrind.out"
        counted = OPERATIONS[how].entry
        # Fixed hashes and addresses, which order dictionaries, and a fixed environment, whose size
        # moves the stack.
        command = ["setarch", "--addr-no-randomize", "valgrind", "--tool=callgrind"]
        command += [f"--callgrind-out-file={profile}"]
        command += ["--collect-atstart=no", f"--toggle-collect={counted}"]
        command += [sys.executable, __file__, "--shapes", str(shapes)]
        command += ["--repeat", how, str(times)]
        environment = {"PATH": os.environ["PATH"], "HOME": "/", "LANG": "C.UTF-8"}
        environment |= {"PYTHONHASHSEED": "0", "PYTHONDONTWRITEBYTECODE": "1"}
        environment |= {"DISPLAY": display_name}
        done = subprocess.run(command, env=environment, capture_output=True, text=True)
        if done.returncode:
            raise RuntimeError(f"{' '.join(command)}\n{done.stderr}")
        found = re.search(r"^totals: (\d+)", profile.read_text(), re.M)
        if not found or found[1] == "0":
            raise RuntimeError(f"nothing was counted: is there no function {counted}?")
        return int(found[1])


def repeat(how, shapes, times):
    editor = OPERATIONS[how].prepare(shapes)
    with asked_of(answers(editor.sk)), steady():
        for _ in range(times):
            OPERATIONS[how].run(editor)


class Windowless(SketchEditor):
    """An editor without a window: what it asks for is there, and does nothing."""

    def __init__(self, sk):
        self.sk, self.sel, self.refs, self.dim = sk, None, [], 3
        self.scale, self.centre, self.cursor = 1000.0, np.zeros(2), np.zeros(2)
        self.drag, self.clicks = None, []
        self.tool, self.grid = Constant("select"), Constant("10")
        self.snap, self.plane = Constant(True), Constant("XY")
        self.canvas = Canvas()
        self.status = Label()


class Constant:
    def __init__(self, value):
        self._value = value

    def get(self):
        return self._value


class Label:
    def configure(self, text):
        pass


class Canvas:
    def winfo_width(self):
        return 620

    def winfo_height(self):
        return 460

    def delete(self, *tags):
        pass

    def create_item(self, *coordinates, **options):
        pass

    create_line = create_polygon = create_text = create_oval = create_item


def windowless(shapes):
    return Windowless(sketch(shapes))


def windowed(shapes):
    return opened(SketchEditor, tk.Tk(), sketch(shapes))


def repaint(editor):
    editor.redraw()


def motion(editor):
    editor._motion(SimpleNamespace(x=PIXEL[0], y=PIXEL[1]))


class Operation(NamedTuple):
    """What is counted: where it runs, what it does, and its C++ function as callgrind names it."""

    prepare: Callable
    run: Callable
    entry: str


OPERATIONS = {
    "repaint, no window": Operation(windowless, repaint, "*method_entry<*::redraw>*"),
    "motion, no window": Operation(windowless, motion, "*method_entry<*::motion>*"),
    "repaint, real canvas": Operation(windowed, repaint, "*method_entry<*::redraw>*"),
    "motion, real canvas": Operation(windowed, motion, "*method_entry<*::motion>*"),
}

if __name__ == "__main__":
    main()
