"""One user's hands at the application: its window, and the sketch editor that it opens."""

from __future__ import annotations

from collections.abc import Sequence
from pathlib import Path
from typing import Any, Tuple

import numpy as np
from PIL import Image

from demo import sight
from harness.user import Script, User, Wait, find, handle, until
from tandrel import profile
from tandrel.application.dialogs import Dialog
from tandrel.application.window import App
from tandrel.gui import theme
from tandrel.gui.sketcher import SketchEditor

# A point of the sketch plane in millimetres.
Point = Tuple[float, float]

GRID = 0.001


def at(millimetres: float) -> float:
    """The coordinate of a grid line, as snapping to a grid of one millimetre gives it."""
    return millimetres * GRID


class Draughtsman:
    """Does what a person does with mouse and keys, and waits to see that it happened."""

    def __init__(self, app: App, user: User, folder: Path) -> None:
        self.app = app
        self.user = user
        self.folder = folder
        self.editor: Any = None

    # The window and the dialog.

    def press(self, keys: str) -> Script:
        """Press keys of a menu entry, once the window takes them."""
        yield self._done()
        yield from self.user.focused(self.app.root)
        self.user.key(keys)

    def new(self) -> Script:
        yield from self.press("ctrl+n")
        yield until(lambda: self.app.session.path is None, "a new part")

    def open_file(self, path: Path) -> Script:
        """Open another part by typing its path into the file dialog."""
        yield from self.press("ctrl+o")
        yield from self._type_path(path)
        yield until(lambda: self.app.session.path == str(path), f"{path} to open")

    def save_as(self, path: Path) -> Script:
        """Save a part that has no file yet."""
        yield from self.press("ctrl+s")
        yield from self._type_path(path)
        yield until(lambda: self.app.session.path == str(path), f"{path} to be saved")

    def _type_path(self, path: Path) -> Script:
        root, tcl = self.app.root, self.app.root.tk.call
        # The dialog gives its entry the focus at once; no other window here has one.
        shown = "expr {[focus] ne {} && [winfo class [focus]] eq {TEntry}}"
        yield until(lambda: root.tk.eval(shown) == "1", "the file dialog")
        yield from self.user.fill_in(handle(root, str(tcl("focus"))), str(path))
        self.user.key("Return")

    def open_editor(self) -> Script:
        yield self._done()
        yield from self.user.click_on(self.app.edit_button)
        yield until(self._editors, "the editor to open")
        (self.editor,) = self._editors()
        yield until(lambda: self.editor.grab_current() is self.editor, "the editor to be modal")
        # A window manager gives a window the keys after it has placed it.
        yield from self.user.focused(self.editor)
        yield from self.user.steady(self.editor.canvas)

    def accept(self) -> Script:
        yield from self.user.click_on(self._ok_button())
        yield until(lambda: not self._editors(), "OK to close the editor")
        marked = "the window to show an edit that isn't saved"
        yield until(lambda: str(self.app.root.title()).startswith("•"), marked)

    def cancel(self) -> Script:
        """Leave by the button beside OK, whatever its language."""
        ok = self._ok_button()
        (other,) = (
            w for w in ok.master.winfo_children() if w.winfo_class() == "TButton" and w is not ok
        )
        yield from self.user.click_on(other)
        yield until(lambda: not self._editors(), "Cancel to close the editor")

    def picture(self, name: str) -> Script:
        window = self.editor if self._editors() else self.app.root
        yield from self.user.steady(window)
        yield from self.user.picture(window, self.folder / f"{name}.png")

    def see_profile(self, name: str) -> Script:
        """Take a picture in which material and holes are to be told apart."""
        yield from self.picture(name)
        open_ones = self._editors()
        sketch = self.editor.sk if open_ones else self.app.session.document.sketch
        region = profile.region(sketch)
        window = self.editor if open_ones else self.app.root
        canvas = self.editor.canvas if open_ones else self.app.view
        to_canvas = self.editor.to_screen if open_ones else sight.view_to_pixel(canvas, region)
        place = (
            canvas.winfo_rootx() - window.winfo_rootx(),
            canvas.winfo_rooty() - window.winfo_rooty(),
        )

        def to_pixel(point: Any) -> Tuple[float, float]:
            x, y = to_canvas(point)
            return x + place[0], y + place[1]

        with Image.open(self.folder / f"{name}.png") as picture:
            material = sight.colour(canvas, theme.PAL["accent_soft"])
            fault = sight.fault_in_sight(picture.convert("RGB"), region, to_pixel, material)
        if fault:
            raise RuntimeError(f"{name}: {fault}")

    def _done(self) -> Wait:
        """Until nothing is between the user and the window: what takes long shows that it does."""
        children = self.app.root.winfo_children
        return until(
            lambda: not any(isinstance(w, Dialog) for w in children()), "a window to work in"
        )

    def _editors(self) -> Sequence[Any]:
        return [w for w in self.app.root.winfo_children() if isinstance(w, SketchEditor)]

    def _ok_button(self) -> Any:
        return find(self.editor, "TButton", style="Primary.TButton")

    # Tools.

    def choose(self, tool: str) -> Script:
        yield from self.user.click_on(find(self.editor, "TRadiobutton", value=tool))
        yield until(lambda: self.editor.tool.get() == tool, f"the tool {tool}")

    def set_sides(self, sides: int) -> Script:
        """Step the number once by its arrow, then type over it."""
        box = find(self.editor, "TSpinbox")
        before = int(box.get())
        yield from self.user.steady(box)
        arrow = [
            (x, y)
            for x in range(box.winfo_width())
            for y in range(box.winfo_height())
            if "uparrow" in box.identify(x, y)
        ]
        yield from self.user.over(box, *arrow[len(arrow) // 2])
        self.user.click()
        yield until(lambda: box.get() == str(before + 1), "one more side")
        self.user.key("Home", "shift+End")
        yield until(box.selection_present, "the number to be selected")
        self.user.type(str(sides))
        yield until(lambda: self.editor.sides.get() == str(sides), f"{sides} sides")

    def fit(self) -> Script:
        before = self.editor.scale
        yield from self.user.click_on(find(self.editor, "TButton", text="Fit"))
        yield until(lambda: self.editor.scale != before, "the whole sketch in view")

    # The canvas.

    def point(self, point: Point) -> Script:
        """Move the pointer to where a grid point is now, and see it snap there."""
        yield until(self._has_room, "the dialog to be as large as it wants to be")
        self._move_to(point)
        yield until(lambda: self._snapped_to(point), f"the pointer to snap to {point}")

    def place(self, point: Point) -> Script:
        """Click a corner of an outline, or an end or the width of a slot."""
        before = len(self.editor.clicks)
        yield from self.point(point)
        self.user.click()
        yield until(lambda: len(self.editor.clicks) != before, f"a click at {point}")
        self._check_that_it_reached(point)

    def drag(self, start: Point, end: Point) -> Script:
        """Press, move by way of a point in between, and release: one more shape."""
        count = len(self.editor.sk["entities"])
        yield from self.hold(start, end)
        yield from self.drop()
        yield self.shapes(count + 1)

    def hold(self, start: Point, end: Point) -> Script:
        """A drag that isn't released yet."""
        yield from self.point(start)
        self.user.press()
        yield until(lambda: self.editor.drag is not None, "the drag to start")
        self._check_that_it_reached(start)
        self._move_to([(a + b) / 2 for a, b in zip(start, end)])
        yield from self.point(end)

    def drop(self) -> Script:
        end = self.editor.cursor
        self.user.release()
        yield until(lambda: self.editor.drag is None, "the drag to end")
        self._check_that_it_reached(end / GRID)

    def zoom_in(self, point: Point, steps: int) -> Script:
        """Turn the wheel over a point, which stays where it is."""
        yield from self.point(point)
        nearly = self.editor.scale * 1.2 ** (steps - 0.5)
        self.user.click(button=4, times=steps)
        yield until(lambda: self.editor.scale > nearly, "the view to zoom in")

    def pan(self, start: Point, end: Point) -> Script:
        """Pull the plane by the middle button, until `start` lies where `end` was."""
        target = self.editor.centre - np.array([at(b - a) for a, b in zip(start, end)])
        yield from self.point(start)
        self.user.press(2)
        self._move_to(end)
        reached = 2 / self.editor.scale
        yield until(
            lambda: np.allclose(self.editor.centre, target, rtol=0, atol=reached),
            "the view to follow",
        )
        self.user.release(2)

    def _move_to(self, point: Sequence[float]) -> None:
        x, y = self.editor.to_screen((at(point[0]), at(point[1])))
        self.user.move(x, y, self.editor.canvas)

    def _has_room(self) -> bool:
        """Whether what an act has added to the dialog has moved all that it is going to move."""
        self.editor.update_idletasks()
        return bool(
            self.editor.winfo_width() >= self.editor.winfo_reqwidth()
            and self.editor.winfo_height() >= self.editor.winfo_reqheight()
        )

    def _snapped_to(self, point: Sequence[float]) -> bool:
        target = [at(c) for c in point]
        return np.allclose(self.editor.cursor, target, rtol=0, atol=1e-9)

    def _check_that_it_reached(self, point: Sequence[float]) -> None:
        """A press or a release takes the pointer along to where it arrives."""
        if not self._snapped_to(point):
            found = " ".join(f"{c / GRID:g}" for c in self.editor.cursor)
            wanted = " ".join(f"{c:g}" for c in point)
            raise RuntimeError(f"the button reached {found} instead of {wanted} mm")

    # The side panel.

    def pick_row(self, index: int) -> Script:
        rows = self.editor.list
        yield until(lambda: rows.bbox(str(index)), f"row {index} to be in sight")
        x, y, width, height = rows.bbox(str(index))
        yield from self.user.over(rows, x + width / 2, y + height / 2)
        self.user.click()
        yield until(lambda: self.editor.sel == index, f"row {index} to be selected")

    def fill_in(self, key: str, text: str) -> Script:
        field = find(self.editor.props, "TEntry", textvariable=self.editor.vars[key])
        # A window manager may hand a click on after the keys that follow it: where the cursor is in
        # the field already, nothing would tell that the click came.
        has_keys = str(field.tk.call("focus")) == str(field)
        yield from (self.user.type_over if has_keys else self.user.fill_in)(field, text)

    def fill_in_corners(self, corners: Sequence[Point]) -> Script:
        box = self.editor.points_text
        text = "\n".join(f"{u} {v}" for u, v in corners)
        yield from self.user.click_on(box)
        yield until(lambda: self.editor.focus_get() is box, "the cursor in the corners box")
        self.user.key("ctrl+slash")
        yield until(lambda: box.tag_ranges("sel"), "all corners to be selected")
        self.user.type(text)
        yield until(lambda: box.get("1.0", "end-1c") == text, "the corners as typed")

    def apply(self) -> Script:
        yield from self.user.click_on(find(self.editor.props, "TButton"))

    def enter(self) -> Script:
        """Apply what is typed by the key, and see the keyboard go back to the drawing."""
        self.user.key("Return")
        yield until(self._draws, "the form to be applied")

    # Keys.

    def duplicate(self) -> Script:
        """Have a copy of the selected shape, which is selected then."""
        count = len(self.editor.sk["entities"])
        yield until(self._draws, "the keyboard to be the drawing's")
        self.user.key("ctrl+d")
        yield self.shapes(count + 1)

    def undo(self, count: int) -> Script:
        """Take a change back, and see so many shapes."""
        self.user.key("ctrl+z")
        yield self.shapes(count)

    def _draws(self) -> bool:
        return str(self.editor.tk.call("focus")) == str(self.editor.canvas)

    # What is seen.

    def shapes(self, count: int) -> Wait:
        return until(lambda: len(self.editor.sk["entities"]) == count, f"{count} shapes")

    def holds(self, index: int, key: str, value: float) -> Wait:
        return until(
            lambda: self.editor.sk["entities"][index][key] == value,
            f"{key} = {value} in the sketch",
        )

    def status_has(self, text: str) -> Wait:
        return until(lambda: text in str(self.editor.status.cget("text")), f"{text!r} below")
