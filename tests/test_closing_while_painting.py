"""Application code that closes the dialog while it is being painted: an error, never a crash.

In a process of its own: Tk itself may crash when a window that was never shown goes in the middle
of being laid out.
"""

import pytest
from harness.places import SEARCH_PATH
from support.children import run

PROGRAM = """
import json, sys, tkinter as tk, types
import tandrel.gui.sketcher as sketcher

occasion, *questions = sys.argv[1:]
host, colours = sketcher.S, sketcher.PAL
names = ("new", "corners", "area", "inside", "check", "PLANES", "AXES")
built, raised, done = [], [], []

class Editor(sketcher.SketchEditor):
    def _build(self, allow_plane):
        super()._build(allow_plane)
        built.append(self)

class Projecting(Editor):
    def to_screen(self, p):
        close("to_screen")
        return super().to_screen(p)

def close(asked):
    while built and asked == question:
        built.pop().destroy()

def closing(asked):
    def answer(*arguments):
        close(asked)
        return getattr(host, asked)(*arguments)
    return answer

class Colours(dict):
    def __getitem__(self, role):
        close(role)
        return colours[role]

sketcher.S = types.SimpleNamespace(**{name: getattr(host, name) for name in names})
sketcher.S.outline, sketcher.S.depths = closing("outline"), closing("depths")
sketcher.PAL = Colours()
for question in questions:
    root = tk.Tk()
    root.report_callback_exception = lambda kind, error, trace: raised.append(error)
    root.update()
    entities = [{"type": "circle", "xc": 0.0, "yc": 0.0, "r": r} for r in (1.0, 0.5)]
    sketch = {"entities": [] if question == "bg" else entities}
    references = [("edge", [(0.0, 0.0), (1.0, 0.0), (0.0, 1.0)])] if question == "muted" else []
    try:
        cls = Projecting if question == "to_screen" else Editor
        editor = cls(root, sketch, references=references)
        if occasion == "shown":
            editor.update()
            built.append(editor)
            editor.redraw()
    except tk.TclError as error:
        raised.append(error)
    root.update()
    assert raised and all(isinstance(error, tk.TclError) for error in raised), (question, raised)
    assert root.winfo_children() == [], (question, root.winfo_children())
    built.clear()
    editor = sketcher.SketchEditor(root, sketch)
    editor.update()
    assert editor.canvas.find_all()
    root.destroy()
    raised.clear()
    done.append(question)
print(json.dumps(done))
"""

# What the application is asked for; the palette by the role of a colour: the grid's, a reference's,
# those of a shape, and of one in another.
QUESTIONS = ["outline", "depths", "to_screen", "bg", "muted", "accent_soft", "accent", "panel"]


@pytest.mark.parametrize("occasion", ["opening", "shown"])
def test_the_process_lives_on_and_the_next_dialog_opens(display, occasion):
    arguments = [occasion, *QUESTIONS]
    done = run(PROGRAM, "-X", "faulthandler", paths=SEARCH_PATH, arguments=arguments)
    assert done == QUESTIONS
