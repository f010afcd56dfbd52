"""What the module is made to do while an allocation fails, and how a dialog of today is used after.

A step makes its subject first; only what it then does with it is armed.
"""

from __future__ import annotations

import importlib
import sys
from collections.abc import Callable
from typing import Any, NamedTuple

from support import neighbours
from support.operations import DRAG_TOOLS, OPERATIONS, run_all, sound
from support.plain import Event

MODULE = "tandrel.gui.sketcher"


class Step(NamedTuple):
    make: Callable[[], Any]
    act: Callable[[Any], Any]
    next_works: Callable[[Any], None]  # raises where the next dialog doesn't


def import_module(_: Any) -> Any:
    return importlib.import_module(MODULE)


def plain_works(_: Any) -> None:
    """Every operation on an editor without window; AssertionError where one raises."""
    module = importlib.import_module(MODULE)
    assert sys.modules[MODULE] is module
    raised = run_all(sound)
    assert not raised, raised


def make_plain() -> Any:
    import_module(None)
    return sound()


def pan(editor: Any) -> None:
    editor._pan_start(Event(20, 30))
    editor._pan_move(Event(50, 60))


PLAIN = {
    "import": Step(lambda: None, import_module, plain_works),
    **{name: Step(make_plain, act, plain_works) for name, act in OPERATIONS.items()},
    "pan": Step(make_plain, pan, plain_works),
    "grid_step": Step(make_plain, lambda e: e.grid_step(), plain_works),
    "describe": Step(
        make_plain,
        lambda e: [sys.modules[MODULE].describe(entity) for entity in e.sk["entities"]],
        plain_works,
    ),
}


# -- real windows ------------------------------------------------------------------------------


class Window(NamedTuple):
    """A main window and, where the step is about an open one, its dialog."""

    root: Any
    editor: Any


def make_root() -> Window:
    from support.roots import open_root

    import_module(None)
    return Window(open_root(), None)


def open_dialog(window: Window, sketch: Any = None) -> Any:
    module = importlib.import_module(MODULE)
    return module.SketchEditor(window.root, sketch or neighbours.one_of_each(), title="Sketch")


def make_dialog() -> Window:
    root = make_root().root
    editor = open_dialog(Window(root, None))
    editor.update()
    editor.select(0)
    editor.update()
    return Window(root, editor)


def dialog_works(window: Window) -> None:
    """Another dialog in the same process: opened, drawn in, sized, accepted."""
    from support.events import Send

    root = window.root
    errors = [repr(error) for error in root.errors if isinstance(error, SystemError)]
    assert not errors, errors
    root.errors.clear()
    for child in root.winfo_children():
        child.destroy()
    editor = open_dialog(window)
    editor.update()
    assert len(editor.list.get_children()) == 5
    editor.tool.set("circle")
    Send(editor).stroke((100, 100), (140, 120))
    assert len(editor.sk["entities"]) == 6 and editor.canvas.find_all()
    editor.select(0)
    editor.vars["w"].set("12")
    editor.apply_props()
    assert editor.sk["entities"][0]["w"] == 0.012
    editor.ok()
    assert len(editor.result["entities"]) == 6
    assert not root.winfo_children() and not root.errors, root.errors
    root.destroy()


def on_canvas(tool: str, act: Callable[[Any], None]) -> Callable[[Window], None]:
    """The user's hand with a tool on an open dialog."""

    def run(window: Window) -> None:
        from support.events import Send

        window.editor.tool.set(tool)
        act(Send(window.editor))

    return run


def clicks(hand: Any) -> None:
    for pixel in ((100, 300), (200, 300), (150, 360), (100, 300)):
        hand.motion(*pixel)
        hand.click(*pixel)


def keys(window: Window) -> None:
    for key in ("Return", "Escape", "Delete"):
        window.editor.event_generate(f"<KeyPress-{key}>")


def choose_row(window: Window) -> None:
    window.editor.list.selection_set("2")
    window.editor.update()


def apply_number(window: Window) -> None:
    window.editor.vars["w"].set("12")
    window.editor.apply_props()


def apply_corners(window: Window) -> None:
    window.editor.select(4)
    window.editor.points_text.insert("end", "\n1, 2")
    window.editor.apply_props()


def choose_plane(window: Window) -> None:
    window.editor.plane.set("YZ")
    window.editor._plane_changed()


def show(window: Window) -> Any:
    def accept() -> None:
        try:
            window.editor.ok()
        except MemoryError:
            window.editor.destroy()  # still open, for the user to try again; this one gives up
            raise

    end = window.root.after(20, accept)
    try:
        return window.editor.run()
    finally:
        window.root.after_cancel(end)


def dialog_step(act: Callable[[Window], Any]) -> Step:
    return Step(make_dialog, act, dialog_works)


REAL = {
    "construction": Step(make_root, open_dialog, dialog_works),
    "repaint": dialog_step(lambda w: w.editor.redraw()),
    **{
        f"drawing with {tool}": dialog_step(
            on_canvas(tool, lambda hand: hand.stroke((100, 100), (140, 120)))
        )
        for tool in (*DRAG_TOOLS, "select")
    },
    **{f"clicks with {tool}": dialog_step(on_canvas(tool, clicks)) for tool in ("line", "slot")},
    "wheel": dialog_step(on_canvas("select", lambda hand: hand.wheel(50, 60, 120))),
    "pan by mouse": dialog_step(
        on_canvas("select", lambda hand: hand.stroke((50, 60), (70, 90), button=3))
    ),
    "keys": dialog_step(keys),
    "row": dialog_step(choose_row),
    "form": dialog_step(lambda w: w.editor.show_props()),
    "apply": dialog_step(apply_number),
    "apply corners": dialog_step(apply_corners),
    "plane": dialog_step(choose_plane),
    "OK": dialog_step(lambda w: w.editor.ok()),
    "Cancel": dialog_step(lambda w: w.editor.destroy()),
    "run": dialog_step(show),
}


def prepare() -> None:
    """Everything that isn't the module's: imported before any allocation fails."""
    import tkinter.ttk  # noqa: F401

    import numpy  # noqa: F401

    neighbours.install_modules()
