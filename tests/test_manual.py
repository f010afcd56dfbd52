"""The manual's examples do what the manual says."""

import json
import re
from pathlib import Path

import pytest
from harness.places import BUILD, ROOT, SEARCH_PATH
from support.children import run

DOCS = ROOT / "docs"
EXAMPLE = DOCS / "examples" / "one_file_application.py"

# Runs pieces of code one after the other, with a user who presses OK in whatever editor is open.
READER = """
import json, sys, tkinter as tk
from tandrel.gui import sketcher

window = tk.Tk()
window.update()
accepted = []

def press_ok():
    for editor in window.winfo_children():
        if isinstance(editor, sketcher.SketchEditor) and editor.grab_current() is editor:
            accepted.append(editor.title())
            editor.ok()
    window.after(50, press_ok)

press_ok()
names = {"window": window}
for code in sys.argv[1:]:
    exec(code, names)
print(json.dumps([accepted, sketcher.SNAP_PX]))
"""

# Runs the application, with a user who makes the hole smaller in the form, and prints what is kept,
# and whether window and canvas stayed as they were.
APPLICATION = """
import contextlib, io, json, runpy, sys, tkinter as tk

def place(editor):
    editor.update()
    return tuple(
        (w.winfo_rootx(), w.winfo_rooty(), w.winfo_width(), w.winfo_height())
        for w in (editor, editor.canvas)
    )

def use(editor):
    before = place(editor)
    sys.modules["tandrel.gui.widgets"].units().unit = lambda quantity: "thousandths of a metre"
    outline = {"type": "polygon", "points": [[0, 0], [0.1, 0], [0, 0.1]], "radius": 0}
    editor.add(outline)
    places = [place(editor)]
    editor.delete()
    for text in ("", "a text " * 30, "a text " * 99):
        editor.status.configure(text=text)
        places.append(place(editor))
    shapes = [i for i in editor.canvas.find_all() if editor.canvas.type(i) == "polygon"]
    x, y = editor.to_screen((0, 0))
    editor.canvas.event_generate("<ButtonPress-1>", x=round(x), y=round(y))
    editor.canvas.event_generate("<ButtonRelease-1>", x=round(x), y=round(y))
    editor.vars["r"].set("7.5")
    editor.apply_props()
    places.append(place(editor))
    editor.ok()
    seen.append([len(shapes), editor.sel, set(places) == {before}])

seen = []
tk.Toplevel.wait_window = use
kept = io.StringIO()
with contextlib.redirect_stdout(kept):
    runpy.run_path(sys.argv[1], run_name="__main__")
print(json.dumps([kept.getvalue(), seen]))
"""


def examples(file):
    return re.findall(r"^```python\n(.*?)^```$", file.read_text(), re.DOTALL | re.MULTILINE)


def test_examples_of_the_manual_run(display):
    code = examples(DOCS / "programming.md")
    assert len(code) == 4
    told = run(READER, paths=SEARCH_PATH, arguments=code)
    assert told == [["Profile of the flange", "Sketch"], 14]


def test_example_of_the_front_page_runs(display):
    code = examples(ROOT / "README.md")
    given = "sketch = {'entities': [{'type': 'circle', 'xc': 0.0, 'yc': 0.0, 'r': 0.01}]}"
    accepted, _ = run(READER, paths=SEARCH_PATH, arguments=[given, *code])
    assert accepted == ["Profile of the flange"]


def test_application_in_one_file_needs_nothing_but_the_module(display):
    kept, seen = run(APPLICATION, paths=[BUILD], arguments=[str(EXAMPLE)])
    assert seen == [[2, 1, True]]
    assert json.loads(kept.replace("'", '"'))["entities"] == [
        {"type": "rectangle", "x": -0.04, "y": -0.03, "w": 0.08, "h": 0.06, "radius": 0.0},
        {"type": "circle", "xc": 0.0, "yc": 0.0, "r": 0.0075},
    ]


@pytest.mark.parametrize(
    "file", sorted(DOCS.glob("**/*.md")) + [ROOT / "README.md"], ids=lambda file: file.name
)
def test_links_and_pictures_are_there(file):
    targets = re.findall(r"\]\(([^)#\s]+)(?:#[^)]*)?\)", file.read_text())
    missing = [name for name in targets if not Path(file.parent, name).exists()]
    assert missing == []
