"""What the module is made to do while an allocation fails, and how a dialog of today is used after.

A step makes its subject first; only what it then does with it is armed.
"""

from __future__ import annotations

import importlib
import sys
from collections.abc import Callable
from typing import Any, NamedTuple

from support import neighbours
from support.operations import OPERATIONS, TOOLS, run_all, sound
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
    """In the middle of everything, with the size of a rectangle typed."""
    root = make_root().root
    editor = open_dialog(Window(root, None))
    editor.update()
    editor.select(0)
    editor.update()
    for name in "clicks", "drag", "refs":
        setattr(editor, name, getattr(sound(), name))
    editor.vars["w"].set("12")
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


def on_canvas(act: Callable[[Any], None], tool: str = "select") -> Step:
    """The user's hand with a tool on an open dialog."""

    def run(window: Window) -> None:
        from support.events import Send

        window.editor.tool.set(tool)
        act(Send(window.editor))

    return Step(make_dialog, run, dialog_works)


def keys(window: Window) -> None:
    for key in ("Return", "Escape", "Delete"):
        window.editor.event_generate(f"<KeyPress-{key}>")


def choose_row(window: Window) -> None:
    window.editor.list.selection_set("2")
    window.editor.update()


def apply_corners(window: Window) -> None:
    window.editor.select(4)
    window.editor.points_text.insert("end", "\n1, 2")
    window.editor.apply_props()


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


def operation(act: Callable[[Any], Any]) -> Step:
    """An operation of the editor, on an open dialog."""
    return Step(make_dialog, lambda window: act(window.editor), dialog_works)


REAL = {
    "construction": Step(make_root, open_dialog, dialog_works),
    **{f"{name} in a window": operation(act) for name, act in OPERATIONS.items()},
    **{
        f"stroke with {tool}": on_canvas(lambda hand: hand.stroke((100, 100), (140, 120)), tool)
        for tool in TOOLS
    },
    "wheel": on_canvas(lambda hand: hand.wheel(50, 60, 120)),
    "pan by mouse": on_canvas(lambda hand: hand.stroke((50, 60), (70, 90), button=3)),
    "keys": Step(make_dialog, keys, dialog_works),
    "row": Step(make_dialog, choose_row, dialog_works),
    "form": operation(lambda editor: editor.show_props()),
    "apply": operation(lambda editor: editor.apply_props()),
    "apply corners": Step(make_dialog, apply_corners, dialog_works),
    "plane": operation(lambda editor: editor._plane_changed()),
    "Cancel": operation(lambda editor: editor.destroy()),
    "run": Step(make_dialog, show, dialog_works),
}


def prepare() -> None:
    """Everything that isn't the module's: imported before any allocation fails."""
    import tkinter.ttk  # noqa: F401

    import numpy  # noqa: F401

    neighbours.install_modules()
