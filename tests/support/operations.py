"""Every operation of the editor that needs no window, on an editor in the middle of everything."""

import numpy as np

from .neighbours import circle, one_of_each
from .plain import Event, PlainEditor, Var
from .types import CARDS

DRAG_TOOLS = [card.tool.name for card in CARDS if card.tool.dragged]
CLICK_TOOLS = [card.tool.name for card in CARDS if not card.tool.dragged]
TOOLS = ["select", *DRAG_TOOLS, *CLICK_TOOLS]
SELECT_TIP = (
    "Click a shape to select it and edit its dimensions; drag to move it; Delete removes it."
)
# Name, label and tip in the order of the buttons: outlines first.
BUTTONS = [
    ("select", "Select and move", SELECT_TIP),
    *sorted((card.tool[:3] for card in CARDS), key=lambda row: row[0] != "line"),
]


def sound(tool="select"):
    """An editor without window in the middle of everything, one shape of each type."""
    editor = PlainEditor(entities=one_of_each()["entities"], scale=5000.0, tool=Var(tool))
    editor.sel = 1
    editor.clicks = [np.array([0.0, 0.0]), np.array([0.01, 0.0])]
    editor.drag = {"kind": "move", "start": np.zeros(2), "orig": circle()}
    editor.refs = [("edge", np.array([[0.0, 0.0], [0.01, 0.01]]))]
    editor.show_props = lambda: None
    editor.destroy = lambda: None
    return editor


def with_tool(tool, operation):
    def run(editor):
        editor.tool.set(tool)
        operation(editor)

    return run


OPERATIONS = {
    "redraw": lambda e: e.redraw(),
    "fit": lambda e: e.fit(),
    "_default_grid": lambda e: e._default_grid(),
    "key_points": lambda e: e.key_points(),
    "snapped": lambda e: e.snapped(201, 149),
    "pick": lambda e: e.pick(200, 150),
    "_zoom": lambda e: e._zoom(1.2, 3, 4),
    "_motion": lambda e: e._motion(Event(200, 150)),
    "_drag": lambda e: e._drag(Event(260, 150)),
    "_release": lambda e: e._release(Event(260, 150)),
    "refresh_list": lambda e: e.refresh_list(keep=True),
    "_list_selected": lambda e: e._list_selected(),
    "close_line": with_tool("line", lambda e: e.close_line()),
    "add": lambda e: e.add(circle()),
    "select": lambda e: e.select(0),
    "delete": lambda e: e.delete(),
    "cancel_drawing": lambda e: e.cancel_drawing(),
    "ok": lambda e: e.ok(),
    "_preview of a drag": lambda e: (e.drag.update(kind="new"), e._preview()),
    **{
        f"_press with {tool}": with_tool(tool, lambda e: e._press(Event(200, 150)))
        for tool in TOOLS
    },
    **{f"_preview with {tool}": with_tool(tool, lambda e: e._preview()) for tool in TOOLS},
}


def run_all(make):
    """Every operation on an editor of its own; the names of what was raised, by operation.

    An error of the interpreter itself, which only broken native code causes, isn't an answer.
    """
    raised = {}
    for name, operation in OPERATIONS.items():
        try:
            operation(make())
        except SystemError:
            raise
        except Exception as error:
            raised[name] = type(error).__name__
    return raised
