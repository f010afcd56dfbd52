"""Application code that closes the dialog while it is being painted: an error, never a crash.

In processes of their own: Tk itself may crash when a window that was never shown goes in the
middle of being laid out.
"""

import os
import subprocess
import sys
import textwrap

import pytest
from harness.places import SEARCH_PATH

PROGRAM = """
import sys, tkinter as tk, types
import tandrel.gui.sketcher as sketcher

kind, occasion = sys.argv[1:]
host = sketcher.S
root = tk.Tk()
raised = []
root.report_callback_exception = lambda kind, error, trace: raised.append(error)
root.update()
built = []

class Editor(sketcher.SketchEditor):
    def _build(self, allow_plane):
        super()._build(allow_plane)
        built.append(self)

def close(asked):
    def answer(*arguments):
        while built and asked == kind:
            built.pop().destroy()
        return getattr(host, asked)(*arguments)
    return answer

names = ("new", "corners", "area", "inside", "check", "PLANES", "AXES")
sketcher.S = types.SimpleNamespace(**{name: getattr(host, name) for name in names})
sketcher.S.outline, sketcher.S.depths = close("outline"), close("depths")
sketch = {"entities": [{"type": "circle", "xc": 0.0, "yc": 0.0, "r": 1.0}]}
try:
    editor = Editor(root, sketch)
    if occasion == "shown":
        editor.update()
        built.append(editor)
        editor.redraw()
except tk.TclError as error:
    raised.append(error)
root.update()
assert raised and all(isinstance(error, tk.TclError) for error in raised), raised
assert root.winfo_children() == [], root.winfo_children()
built.clear()
editor = sketcher.SketchEditor(root, sketch)
editor.update()
assert editor.canvas.find_all()
built.clear()
print("survived")
"""


@pytest.mark.parametrize("kind", ["outline", "depths"])
@pytest.mark.parametrize("occasion", ["opening", "shown"])
def test_the_process_lives_on_and_the_next_dialog_opens(display, kind, occasion):
    path = os.pathsep.join(SEARCH_PATH)
    run = subprocess.run(
        [sys.executable, "-X", "faulthandler", "-c", textwrap.dedent(PROGRAM), kind, occasion],
        env={**os.environ, "PYTHONPATH": path},
        capture_output=True,
        text=True,
        timeout=60,
    )
    assert (run.returncode, run.stdout) == (0, "survived\n"), run.stderr
