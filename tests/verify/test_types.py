"""What type checkers are told about the module is true, complete, and strict enough to help."""

import ast
import importlib.util
import os
import re
import shutil
import subprocess
import sys
import tkinter as tk

import numpy as np
import pytest
from harness.places import ROOT, SEARCH_PATH
from support.neighbours import one_of_each
from support.plain import Event

TESTS = ROOT / "tests"
STUB = ROOT / "tandrel" / "gui" / "sketcher.pyi"
EXAMPLE = TESTS / "typing_example.py"
CONFIGURATION = TESTS / "mypy.ini"

needs_mypy = pytest.mark.skipif(
    importlib.util.find_spec("mypy") is None, reason="mypy isn't installed"
)


# --- checked by mypy


@pytest.fixture(scope="session")
def search_path(tmp_path_factory):
    """Where mypy finds the stub and the application.

    The stub gets a folder of its own: in its source folder mypy would take the C++ folder of the
    same name for a package.
    """
    folder = tmp_path_factory.mktemp("stubs")
    package = folder / "tandrel" / "gui"
    package.mkdir(parents=True)
    shutil.copy(STUB, package)
    return os.pathsep.join([str(folder), str(ROOT / "host")])


@pytest.fixture(scope="session")
def run_checker(search_path, tmp_path_factory):
    """Runs one of mypy's programs; its exit code and what it printed."""
    folder = tmp_path_factory.mktemp("mypy")
    modules = os.pathsep.join(SEARCH_PATH)
    environment = {**os.environ, "MYPYPATH": search_path, "PYTHONPATH": modules}

    def run(program, *arguments):
        process = subprocess.run(
            [sys.executable, "-m", program, *map(str, arguments)],
            cwd=folder,
            env=environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            timeout=300,
        )
        return process.returncode, process.stdout

    return run


def strictly(*arguments):
    return ("mypy", "--strict", "--config-file", CONFIGURATION, *arguments)


# Lines with a comment are refused, for the reason in it; all others are right.
MIXED_USE = """\
from __future__ import annotations
import tkinter as tk
from typing import Optional, TYPE_CHECKING
import numpy as np
import numpy.typing as npt
from tandrel.gui import sketcher
if TYPE_CHECKING:
    from tandrel.gui.sketcher import _Circle, _Entity, _Point, _Polygon, _Regular, _Sketch

whole: _Circle = {"type": "circle", "xc": 0, "yc": 0, "r": 1}
no_radius: _Circle = {"type": "circle", "xc": 0, "yc": 0}  # typeddict-item
rounded: _Circle = {"type": "circle", "xc": 0, "yc": 0, "r": 1, "radius": 1}  # typeddict-item
text: _Circle = {"type": "circle", "xc": 0, "yc": 0, "r": "1"}  # typeddict-item
slot: _Circle = {"type": "slot", "xc": 0, "yc": 0, "r": 1}  # typeddict-item
n: _Regular = {"type": "regular", "xc": 0, "yc": 0, "r": 1, "n": 5.5, "angle": 0}  # typeddict-item
tuples: _Polygon = {"type": "polygon", "points": [(0.0, 0.0)], "radius": 0}  # list-item
sketch: _Sketch = {"entities": [whole]}
unknown: _Sketch = {"entities": [{"type": "square", "w": 1}]}  # list-item
numbered: _Sketch = {"plane": 1}  # typeddict-item

root = tk.Tk()
editor = sketcher.SketchEditor(root, None, 2, "Profile", [("edge", np.zeros((4, 2)))], False)
sketcher.SketchEditor(root)  # call-arg
sketcher.SketchEditor(root, [whole])  # arg-type
sketcher.SketchEditor(root, sketch, references=[np.zeros((4, 2))])  # list-item
sketcher.SketchEditor(root, sketch, dimension=3)  # call-arg
sketcher.SketchEditor("root", sketch)  # arg-type

editor.run(1)  # call-arg
editor.run()["entities"]  # index
editor.ok(editor.sk)  # call-arg
editor.select(None)
editor.select("0")  # arg-type
editor.select(editor.pick(10, 20))
editor.pick(10)  # call-arg
editor.to_screen((0, 0))[2]  # misc
editor.to_screen(np.zeros(2))
editor.to_screen()  # call-arg
editor.add({"type": "circle", "xc": 0, "yc": 0})  # arg-type
editor.refresh_list(keep=True)
editor.refresh_list(kept=True)  # call-arg
editor.sel = None
editor.sel = "1"  # assignment
editor.grid.set("5")
editor.grid.set(5)  # arg-type
editor.grid(5)  # operator
editor.tool = "line"  # assignment
editor.list.selection()
editor.list.append(whole)  # attr-defined
editor.clicks.append(editor.snapped(10, 20))
editor.clicks.append(None)  # arg-type
editor.nothing  # attr-defined
editor.canvas.bind("<Motion>", editor._motion)
editor.canvas.bind("<Motion>", editor.redraw)  # arg-type

sketcher.describe(whole) + ""
sketcher.describe(whole) + 1  # operator
sketcher.describe(sketch)  # arg-type
sketcher.TOOLS[0][1] + ""
sketcher.TOOLS["line"]  # call-overload
sketcher.FIELDS["circle"][0][2] + ""  # operator
sketcher.SNAP_PX + ""  # operator
sketcher.S.outline(whole), sketcher.np.zeros(2), sketcher.tk.TkVersion, sketcher.PAL["bg"]
sketcher.numpy  # attr-defined

class Editor(sketcher.SketchEditor):
    def snapped(self, x: float, y: float) -> npt.NDArray[np.float64]:
        return super().snapped(x, y)
    def to_world(self, x: float, y: float) -> tuple[float, float]:  # override
        return x, y
    def pick(self, x: float) -> Optional[int]:  # override
        return None
    def _from_drag(self, a: _Point, b: _Point) -> Optional[_Entity]:
        return {"type": "circle", "xc": a[0], "yc": a[1], "r": abs(b - a).max()}
    def _press(self, e: tk.Event[tk.Canvas]) -> None:
        self._ok(self._from_drag(self.cursor, self.snapped(e.x, e.y)))

class Stricter(sketcher.SketchEditor):
    @staticmethod
    def _ok(e: _Entity) -> bool:  # override
        return True
"""


@needs_mypy
def test_wrong_uses_are_refused_and_right_ones_are_not(run_checker, tmp_path):
    lines = MIXED_USE.splitlines()
    program = tmp_path / "mixed_use.py"
    program.write_text(MIXED_USE)
    expected = {n: line.split("  # ")[1] for n, line in enumerate(lines, 1) if "  # " in line}
    code, printed = run_checker(*strictly(program))
    # Newer checkers have a name of its own for a key too many.
    printed = printed.replace("typeddict-unknown-key", "typeddict-item")
    found = re.findall(r"^[^:]*mixed_use\.py:(\d+): error: .*\[([\w-]+)\]$", printed, re.MULTILINE)
    assert {int(line): reason for line, reason in found} == expected, printed
    assert code == 1 and printed.count(" error: ") == len(found)


@needs_mypy
def test_every_name_of_the_module_can_be_imported(run_checker, tmp_path, sketcher):
    names = sorted(name for name in vars(sketcher) if not name.startswith("_"))
    program = tmp_path / "every_name.py"
    program.write_text(f"from tandrel.gui.sketcher import {', '.join(names)}\n")
    code, printed = run_checker(*strictly(program))
    assert (code, printed) == (0, "Success: no issues found in 1 source file\n")


# --- compared with the real class


@pytest.fixture(scope="module")
def attributes():
    """The attributes of the class's objects that the stub has."""
    module = ast.parse(STUB.read_text(encoding="utf-8"))
    (editor,) = (node for node in module.body if getattr(node, "name", "") == "SketchEditor")
    return {node.target.id for node in editor.body if isinstance(node, ast.AnnAssign)} | {"grid"}


@pytest.fixture
def used_editor(open_editor):
    """An editor on a shape of each type that has every attribute and is moving its circle."""
    editor = open_editor(one_of_each(), references=[("edge", np.eye(2) / 20)])
    editor.select(4)  # the outline: its form has a box of corners
    editor._pan_start(Event(10, 20))
    editor.tool.set("line")
    editor._press(Event(10, 20))
    editor.tool.set("select")
    editor._press(Event(*editor.to_screen((0.0, 0.02))))
    return editor


def test_the_stub_has_every_attribute(attributes, root, used_editor):
    plain = tk.Toplevel(root)
    tk.Frame(plain)
    assert vars(used_editor).keys() - vars(plain).keys() == attributes


def spelled(value):
    """A value as an expression with its type, for a program that is checked and never run."""
    if isinstance(value, dict):
        return "{" + ", ".join(f"{key!r}: {spelled(item)}" for key, item in value.items()) + "}"
    if isinstance(value, list):
        return "[" + ", ".join(map(spelled, value)) + "]"
    if isinstance(value, tuple):
        return "(" + "".join(f"{spelled(item)}, " for item in value) + ")"
    if isinstance(value, np.ndarray):
        return f"numpy.array({value.tolist()}, numpy.{value.dtype})"
    if value is None or isinstance(value, (str, int, float)):
        return repr(value)
    return f"{type(value).__module__}.{type(value).__qualname__}()"


A, B, P = np.array([0.0, 0.0]), np.array([0.01, 0.02]), np.array([0.01, 0.0])
ANSWERS = [
    ("to_screen", A),
    ("to_screen", (0, 0.5)),
    ("to_world", 10, 20),
    ("_extent",),
    ("grid_step",),
    ("_default_grid",),
    ("key_points",),
    ("snapped", 10, 20),
    ("_from_drag", A, B),
    ("_from_drag", A, A),
    ("_slot", A, B, P),
    ("_ok", None),
    ("_ok", one_of_each()["entities"][0]),
    ("pick", 10, 20),
    *[("_moved", entity, A) for entity in one_of_each()["entities"]],
]


@needs_mypy
def test_real_values_have_the_types_that_the_stub_says(
    run_checker, tmp_path, attributes, used_editor
):
    lines = ["import numpy, tkinter.ttk", "from tandrel.gui.sketcher import SketchEditor"]
    lines += ["def check(editor: SketchEditor) -> None:"]
    moving = used_editor.drag
    used_editor.tool.set("circle")
    used_editor._press(Event(300, 200))
    for i, (operation, *arguments) in enumerate(ANSWERS):
        answer = getattr(used_editor, operation)(*arguments)
        lines.append(f"    a{i} = editor.{operation}{spelled(tuple(arguments))}")
        lines.append(f"    a{i} = {spelled(answer)}")
    used_editor.ok()
    assert used_editor.result is used_editor.sk
    lines += [f"    editor.{name} = {spelled(getattr(used_editor, name))}" for name in attributes]
    lines += [f"    editor.drag = {spelled(moving)}"]
    program = tmp_path / "real_values.py"
    program.write_text("\n".join(lines) + "\n")
    code, printed = run_checker(*strictly(program))
    assert (code, printed) == (0, "Success: no issues found in 1 source file\n")


# --- run


def test_the_typed_program_does_what_it_says(display, sketcher, monkeypatch, capsys):
    example = importlib.import_module("typing_example")

    def draw_and_accept(editor):
        assert editor.tool.get() == "circle"
        editor.add({"type": "circle", "xc": 0.0, "yc": 0.02, "r": 0.0031})
        editor.ok()

    monkeypatch.setattr(example.DrillingEditor, "wait_window", draw_and_accept)
    example.main()
    drilled = {"type": "circle", "xc": 0.0, "yc": 0.02, "r": 0.003}
    expected = [
        f"{sketcher.TYPE_LABEL[e['type']]}: {sketcher.describe(e)}"
        for e in [*example.plate()["entities"], drilled]
    ]
    assert capsys.readouterr().out.splitlines() == expected
