"""What the module is made to do while an allocation fails, and how a dialog of today is used after.

A step makes its subject first; only what it then does with it is armed.
"""

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
    import_module(None)
    raised = run_all(sound)
    assert not raised, raised


def make_plain() -> Any:
    import_module(None)
    return sound()


def pan(editor: Any) -> None:
    editor._pan_start(Event(20, 30))
    editor._pan_move(Event(50, 60))


def describe(editor: Any) -> None:
    for entity in editor.sk["entities"]:
        sys.modules[MODULE].describe(entity)


ON_PLAIN = {**OPERATIONS, "pan": pan, "grid_step": lambda e: e.grid_step(), "describe": describe}

# -- real windows ------------------------------------------------------------------------------


def make_root() -> Any:
    from support.roots import open_root

    import_module(None)
    return open_root()


def open_dialog(root: Any) -> Any:
    module = importlib.import_module(MODULE)
    return module.SketchEditor(root, neighbours.one_of_each(), title="Sketch")


def make_dialog() -> Any:
    """In the middle of everything, with the size of a rectangle typed."""
    editor = open_dialog(make_root())
    editor.update()
    editor.select(0)
    editor.update()
    for name in "clicks", "drag", "refs":
        setattr(editor, name, getattr(sound(), name))
    editor.vars["w"].set("12")
    return editor


def dialog_works(window: Any) -> None:
    """Another dialog in the same process: opened, drawn in, sized, accepted."""
    root = window.nametowidget(".")
    errors = [repr(error) for error in root.errors if isinstance(error, SystemError)]
    assert not errors, errors
    root.errors.clear()
    for child in root.winfo_children():
        child.destroy()
    editor = open_dialog(root)
    editor.update()
    assert len(editor.list.get_children()) == 5
    stroke_with("circle")(editor)
    assert len(editor.sk["entities"]) == 6 and editor.canvas.find_all()
    editor.select(0)
    editor.vars["w"].set("12")
    editor.apply_props()
    assert editor.sk["entities"][0]["w"] == 0.012
    editor.ok()
    assert len(editor.result["entities"]) == 6
    assert not root.winfo_children() and not root.errors, root.errors
    root.destroy()


def hand(editor: Any, tool: str = "select") -> Any:
    """The user's, with a tool on an open dialog."""
    from support.events import Send

    editor.tool.set(tool)
    return Send(editor)


def stroke_with(tool: str) -> Callable[[Any], None]:
    return lambda editor: hand(editor, tool).stroke((100, 100), (140, 120))


def keys(editor: Any) -> None:
    for key in ("Return", "Escape", "Delete"):
        editor.event_generate(f"<KeyPress-{key}>")


def choose_row(editor: Any) -> None:
    editor.list.selection_set("2")
    editor.update()


def apply_corners(editor: Any) -> None:
    editor.select(4)
    editor.points_text.insert("end", "\n1, 2")
    editor.apply_props()


def show(editor: Any) -> Any:
    root = editor.master

    def accept() -> None:
        try:
            editor.ok()
        except MemoryError:
            editor.destroy()  # still open, for the user to try again; this one gives up
            raise

    end = root.after(20, accept)
    try:
        return editor.run()
    finally:
        root.after_cancel(end)


IN_WINDOW: dict[str, Callable[[Any], Any]] = {
    **{f"{name} in a window": act for name, act in OPERATIONS.items()},
    **{f"stroke with {tool}": stroke_with(tool) for tool in TOOLS},
    "wheel": lambda editor: hand(editor).wheel(50, 60, 120),
    "pan by mouse": lambda editor: hand(editor).stroke((50, 60), (70, 90), button=3),
    "keys": keys,
    "row": choose_row,
    "form": lambda editor: editor.show_props(),
    "apply": lambda editor: editor.apply_props(),
    "apply corners": apply_corners,
    "plane": lambda editor: editor._plane_changed(),
    "Cancel": lambda editor: editor.destroy(),
    "run": show,
}
STEPS = {
    "import": Step(lambda: None, import_module, plain_works),
    **{name: Step(make_plain, act, plain_works) for name, act in ON_PLAIN.items()},
    "construction": Step(make_root, open_dialog, dialog_works),
    **{name: Step(make_dialog, act, dialog_works) for name, act in IN_WINDOW.items()},
}


def prepare() -> None:
    """Everything that isn't the module's: imported before any allocation fails."""
    import tkinter.ttk  # noqa: F401

    import numpy  # noqa: F401

    neighbours.install_modules()
