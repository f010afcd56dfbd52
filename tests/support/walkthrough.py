"""A short use of the whole editor with scripted neighbours, in any interpreter; prints the outcome.

    PYTHONPATH=build:tests python -m support.walkthrough
"""

import importlib
import json
import sys

try:
    import numpy  # noqa: F401
except ImportError:
    from . import arrays

    sys.modules["numpy"] = arrays

from . import neighbours


def picture(editor):
    """What the canvas shows: the kind and the whole pixels of every item."""
    canvas = editor.canvas
    return [
        [canvas.type(item), *(round(value) for value in canvas.coords(item))]
        for item in canvas.find_all()
    ]


def draw(editor, hand):
    """Use every tool, pan and zoom; yield the picture after each of them."""
    strokes = {"rectangle": ((50, 60), (150, 120)), "circle": ((300, 200), (340, 210))}
    strokes["regular"] = ((450, 100), (480, 130))
    for tool, (start, end) in strokes.items():
        editor.tool.set(tool)
        hand.stroke(start, end)
        yield picture(editor)
    corners = {"slot": [(100, 300), (200, 300), (150, 320)]}
    corners["line"] = [(300, 300), (400, 300), (350, 400), (300, 300)]
    for tool, pixels in corners.items():
        editor.tool.set(tool)
        for pixel in pixels:
            hand.motion(*pixel)
            hand.click(*pixel)
        yield picture(editor)
    hand.wheel(200, 200, 120)
    hand.stroke((10, 10), (30, 40), button=3)
    yield picture(editor)
    editor.tool.set("select")
    hand.stroke((320, 220), (330, 240))
    yield picture(editor)


def type_sizes(editor, hand):
    """Type a size of each shape, once wrongly; delete one; return the texts of the status line."""
    texts = []
    for index, (key, text) in enumerate(
        [("w", "12"), ("r", "7"), ("n", "4.6"), ("r", "x"), ("radius", "0.25")]
    ):
        editor.select(index)
        editor.vars[key].set(text)
        editor.apply_props()
        texts.append(editor.status.cget("text"))
    editor.points_text.insert("end", "\n1, 2, 3")
    editor.apply_props()
    texts.append(editor.status.cget("text"))
    editor.select(1)
    hand.key("Delete")
    return texts


def nest_without_end(editor):
    """Let an operation lead to itself with no Python code between; return how that ends."""
    editor.to_world = editor.snapped
    try:
        editor.snapped(1, 2)
    except RecursionError as error:
        return type(error).__name__
    finally:
        del editor.to_world
    return "came back"


def main():
    sketch, units = neighbours.install_modules()
    sketcher = importlib.import_module("tandrel.gui.sketcher")

    import tkinter as tk

    from .events import Send, run_while, settle

    root = tk.Tk()
    errors = []
    root.report_callback_exception = lambda kind, error, trace: errors.append(repr(error))
    settle(root)
    editor = sketcher.SketchEditor(root, None, title="Walkthrough")
    settle(editor, lambda: editor.canvas.winfo_width() > 1)
    outcome = {"pictures": list(draw(editor, Send(editor)))}
    outcome["rows"] = [editor.list.item(iid, "text") for iid in editor.list.get_children()]
    outcome["texts"] = type_sizes(editor, Send(editor))
    outcome["nested"] = nest_without_end(editor)
    sketch.answers["check"] = ["refused"]
    editor.ok()
    outcome["texts"].append(editor.status.cget("text"))
    del sketch.answers["check"]
    outcome["result"] = run_while(editor, lambda editor: editor.ok())
    outcome["windows"] = len(root.winfo_children())
    root.destroy()
    outcome["errors"] = errors
    print(json.dumps(outcome))


if __name__ == "__main__":
    main()
