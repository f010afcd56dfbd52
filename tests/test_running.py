"""The modal dialog: where it stands, what ends it and what it returns."""

import tkinter as tk
from fractions import Fraction

import numpy as np
import pytest
from harness.user import User

from support.events import run_while, settle
from support.neighbours import circle, one_of_each
from support.plain import PlainEditor, Recorder
from support.widgets import button

pytestmark = pytest.mark.usefixtures("neighbours")


# --- run


class Modal(PlainEditor):
    """A plain editor to run: its own and its master's places and sizes are given."""

    def __init__(self, master, size, **attributes):
        super().__init__(**attributes)
        x, y, width, height = master
        self.master = Recorder(winfo_rootx=x, winfo_rooty=y, winfo_width=width, winfo_height=height)
        self.winfo_width = lambda: size[0]
        self.winfo_height = lambda: size[1]
        self.calls = self.watch("update_idletasks", "geometry", "grab_set", "fit", "wait_window")


@pytest.mark.parametrize(
    "master, size, place",
    [
        ((100, 50, 1000, 800), (600, 400), "+300+150"),
        ((100, 50, 1001, 803), (600, 400), "+300+150"),
        ((0, 0, 1003, 807), (600, 400), "+201+101"),
        ((100, 50, 600, 400), (600, 400), "+100+50"),
        ((100, 50, 599, 399), (600, 400), "+100+50"),
        ((100, 50, 300, 800), (600, 400), "+100+150"),
        ((100, 50, 1000, 100), (600, 400), "+300+50"),
        ((-1, -1, 10, 10), (600, 400), "+-1+-1"),
        ((-7, -9, 10, 10), (600, 400), "+-7+-9"),
        # Whatever calculates as numbers do is written as the interpreter writes it.
        ((10.5, 20, 901.0, 607.0), (300, 200), "+310.5+121.0"),
        ((Fraction(1, 2), 0, Fraction(1203, 2), 100), (300, 200), "+301/2+0"),
        ((True, np.int16(7), 300, 204), (300, 200), "+1+8"),
        ((10**30, -5, 10**30, 50), (300, 200), f"+{10**30 + (10**30 - 300) // 2}+-5"),
    ],
)
def test_dialog_is_placed_over_its_master(sketcher, master, size, place):
    editor = Modal(master, size)
    sketcher.SketchEditor.run(editor)
    assert editor.calls == [
        ("update_idletasks", (), {}),
        ("geometry", (place,), {}),
        ("grab_set", (), {}),
        ("fit", (), {}),
        ("wait_window", (), {}),
    ]


def test_sizes_are_read_after_the_layout_is_settled(sketcher):
    editor = Modal((0, 0, 100, 100), (10, 10))

    def settle_layout():
        editor.winfo_width = lambda: 50
        editor.winfo_height = lambda: 60

    editor.update_idletasks = settle_layout
    sketcher.SketchEditor.run(editor)
    assert ("geometry", ("+25+10",), {}) in editor.calls


def test_result_is_read_when_the_dialog_has_gone(sketcher):
    editor = Modal((0, 0, 10, 10), (10, 10))
    accepted = {}
    editor.wait_window = lambda: setattr(editor, "result", accepted)
    assert sketcher.SketchEditor.run(editor) is accepted
    editor = Modal((0, 0, 10, 10), (10, 10))
    assert sketcher.SketchEditor.run(editor) is None


def test_run_with_ok_returns_the_edited_sketch(open_editor, root):
    sketch = one_of_each()
    editor = open_editor(sketch)

    def edit(editor):
        assert root.grab_current() is editor
        editor.add(circle(0.1, 0.1, 0.01))
        button(editor, "OK").invoke()

    result = run_while(editor, edit)
    assert result is editor.sk
    assert len(result["entities"]) == len(sketch["entities"]) + 1
    assert root.grab_current() is None
    assert root.winfo_children() == []


@pytest.mark.parametrize("how", ["Cancel", "window closed"])
def test_run_without_ok_returns_none(open_editor, how):
    editor = open_editor(one_of_each())
    close = {
        "Cancel": lambda editor: button(editor, "Cancel").invoke(),
        "window closed": lambda editor: editor.tk.call(editor.protocol("WM_DELETE_WINDOW")),
    }
    assert run_while(editor, close[how]) is None


def test_run_ends_when_the_parent_is_destroyed(open_editor, root):
    parent = tk.Toplevel(root)
    settle(parent)
    editor = open_editor(one_of_each(), parent=parent)
    editor.after(50, parent.destroy)
    assert editor.run() is None
    assert root.winfo_children() == []


def test_run_outlives_an_error_in_a_handler(open_editor, root, neighbours):
    editor = open_editor(one_of_each())
    error = ZeroDivisionError("units")
    neighbours.units.fail["fmt"] = error

    def stumble(editor):
        editor.canvas.event_generate("<Motion>", x=10, y=10)
        assert root.errors == [error]
        del neighbours.units.fail["fmt"]
        button(editor, "OK").invoke()

    assert run_while(editor, stumble) is editor.sk
    root.errors.clear()


# --- under a window manager


def click_with_the_pointer(display, widget, until):
    """Click on the widget with the real pointer, and handle events until what it does is done."""
    root = widget.nametowidget(".")
    user = User(root, display)
    user.move(widget.winfo_width() // 2, widget.winfo_height() // 2, widget)
    user.click()
    settle(root, until)


def test_managed_dialog_is_modal_and_returns_its_result(open_editor, managed_root, managed_display):
    pressed = []
    outside = tk.Button(managed_root, text="outside", command=lambda: pressed.append(1))
    outside.place(x=0, y=0)
    managed_root.geometry("400x300+600+650")
    settle(managed_root, lambda: managed_root.winfo_rooty() > 600)
    click_with_the_pointer(managed_display, outside, lambda: pressed)
    assert pressed == [1]
    editor = open_editor(one_of_each(), parent=managed_root)

    def use(editor):
        editor.geometry("+0+0")
        settle(editor, lambda: editor.winfo_rooty() < 100)
        # A grab gets what happens outside of it.
        released = []
        editor.bind("<ButtonRelease>", released.append)
        click_with_the_pointer(managed_display, outside, lambda: released)
        editor.unbind("<ButtonRelease>")
        assert pressed == [1]
        assert editor.winfo_exists()
        click_with_the_pointer(
            managed_display, button(editor, "OK"), lambda: not editor.winfo_exists()
        )

    assert run_while(editor, use) is editor.sk
    managed_root.update()
    click_with_the_pointer(managed_display, outside, lambda: len(pressed) > 1)
    assert pressed == [1, 1]


@pytest.mark.parametrize("size", ["320x240", "1200x940"])
def test_managed_dialog_is_placed_over_its_parent(open_editor, managed_root, size):
    managed_root.geometry(f"{size}+15+25")
    settle(
        managed_root,
        lambda: f"{managed_root.winfo_width()}x{managed_root.winfo_height()}" == size,
    )
    editor = open_editor(parent=managed_root)
    free_x = max((managed_root.winfo_width() - editor.winfo_width()) // 2, 0)
    free_y = max((managed_root.winfo_height() - editor.winfo_height()) // 4, 0)
    assert bool(free_x) == bool(free_y) == (size == "1200x940")
    x, y = managed_root.winfo_rootx() + free_x, managed_root.winfo_rooty() + free_y
    border, caption = managed_root.winfo_rootx() - 15, managed_root.winfo_rooty() - 25
    seen = []

    def look(editor):
        settle(editor, lambda: editor.winfo_rooty() == y + caption)
        seen.append((editor.geometry(), editor.winfo_rootx() - x, editor.winfo_rooty() - y))

    run_while(editor, look)
    ((geometry, *offset),) = seen
    assert geometry.endswith(f"+{x}+{y}")
    assert offset == [border, caption]
