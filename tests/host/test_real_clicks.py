"""Clicks and drags by a real pointer, on screens of usual sizes with a window manager.

A hand that clicks moves: here by the one pixel at which snapping takes the next point.
"""

import copy
import math
from itertools import product
from pathlib import Path

import numpy as np
import pytest
from harness.user import User, play, until
from support.roots import open_root
from tandrel import sketch as S
from tandrel.gui import i18n

PARTS = sorted((Path(i18n.__file__).parents[2] / "parts").glob("*.json"))
DRAG = 20  # pixels
APART = 9  # pixels: a press as close as that to the one before is a double click


class Hand(User):
    """A pointer over an editor's canvas; places are pixels of the canvas."""

    def __init__(self, app, display_name):
        super().__init__(app.root, display_name)
        self.app = app
        self.editor = None
        self.released = []
        self.last = -APART, -APART  # the pixel of the last press

    def open(self, part):
        """Open the editor on a part."""
        self.app.open(str(part))
        self.root.after(1, self.app.edit_button.invoke)
        yield until(self._is_open, "the editor")
        yield from self.steady(self.editor.canvas)
        self.editor.canvas.bind("<ButtonRelease-1>", self.released.append, add="+")

    def _is_open(self):
        editors = [w for w in self.root.winfo_children() if hasattr(w, "sk")]
        self.editor = editors[0] if editors else None
        return editors and editors[0].grab_current() is editors[0]

    def close(self):
        self.editor.destroy()
        yield until(lambda: self.root.grab_current() is None, "the editor to close")

    def stroke(self, x, y, *ways):
        """Press at a pixel, go by these ways to the right, one after the other, and release."""
        canvas = self.editor.canvas
        left, top = canvas.winfo_rootx() + x, canvas.winfo_rooty() + y
        moves = [["mousemove", str(left + way), str(top)] for way in ways]
        press = ["mousemove", str(left), str(top), "mousedown", "1"]
        self.released.clear()
        self.last = x, y
        self._xdotool(*press, *sum(moves, []), "mouseup", "1")
        yield until(lambda: self.released, f"the button to be released at {x}, {y}")

    def place(self):
        """Where the canvas lies on the screen, and how large it is."""
        canvas = self.editor.canvas
        return (
            (canvas.winfo_rootx(), canvas.winfo_rooty()),
            (canvas.winfo_width(), canvas.winfo_height()),
        )

    def spot(self, index, is_good):
        """A pixel of the canvas at which a click takes a shape, and which is good(x, y)."""
        editor = self.editor
        outline = S.outline(editor.sk["entities"][index])
        for point, off in product(outline, range(-8, 9, 2)):
            x, y = (round(c) for c in editor.to_screen(point))
            if math.dist((x + off, y), self.last) < APART:
                continue
            if is_good(x + off, y) and editor.pick(x + off, y) == index:
                return x + off, y
        return None

    def steps(self, x, y):
        """Whether the pointer takes another point of the plane one pixel further on."""
        return (self.editor.snapped(x, y) != self.editor.snapped(x + 1, y)).any()

    def is_free(self, x, y):
        """Whether the pointer takes the very point that it shows, here and where a drag ends."""
        ends = [(x, y), (x + DRAG, y)]
        return all((self.editor.snapped(*p) == self.editor.to_world(*p)).all() for p in ends)


def click_each_shape(hand):
    editor, before, place = hand.editor, copy.deepcopy(hand.editor.sk), hand.place()
    for index in range(len(before["entities"])):
        spot = hand.spot(index, hand.steps)
        assert spot, f"no pixel to press for shape {index + 1}"
        yield from hand.stroke(*spot, 1)
        assert (editor.sel, editor.drag) == (index, None)
        assert len(editor.props.winfo_children()) > 1
        assert (editor.sk, hand.place()) == (before, place)
    yield from hand.steady(editor.canvas)
    assert hand.place() == place


def drag_a_shape(hand):
    editor = hand.editor
    editor.snap.set(False)
    shapes = enumerate(copy.deepcopy(editor.sk["entities"]))
    index, before, spot = next(
        (i, e, spot) for i, e in shapes for spot in [hand.spot(i, hand.is_free)] if spot
    )
    yield from hand.stroke(*spot, 1, DRAG // 2, DRAG)
    moved = S.outline(editor.sk["entities"][index]) - S.outline(before)
    way = np.subtract(editor.to_world(DRAG, 0), editor.to_world(0, 0))
    np.testing.assert_allclose(moved, np.broadcast_to(way, moved.shape), rtol=0, atol=1e-12)


@pytest.mark.parametrize(
    "size", [(1024, 768), (1366, 768), (1400, 900), (1920, 1080)], ids="{0[0]}x{0[1]}".format
)
def test_clicks_move_nothing_and_drags_move_a_shape(size, screen_of, start, tmp_path):
    display_name = screen_of(*size, window_manager=True)

    def script(hand):
        for part in PARTS:
            yield from hand.open(part)
            yield from click_each_shape(hand)
            yield from drag_a_shape(hand)
            yield from hand.close()
        done.append(size)

    done = []
    app = start(root=open_root(display_name))
    play(app.root, script(Hand(app, display_name)), tmp_path / "failure.png")
    assert done
