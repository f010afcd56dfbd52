"""Whichever way items take to the canvas, the picture is the same and overrides are honoured.

A plain Tk canvas may be given its items without a detour through tkinter's methods; any other
canvas gets the method calls.
"""

import math
import random
import sys
import tkinter as tk
import types
from collections import Counter

import numpy as np
import pytest
from support import canvas as shown
from support.events import settle
from support.neighbours import FakeUnits, circle, polygon, rectangle
from support.operations import TOOLS
from support.plain import RecordingCanvas
from support.roots import close_root, open_root
from support.types import random_entity

METHODS = ["create_line", "create_text", "create_polygon", "create_oval"]


def scene(editor, seed):
    """Put the editor into a random state of drawing."""
    dice = random.Random(seed)
    entities = [random_entity(dice, 0.05) for _ in range(dice.randrange(7))]
    if dice.random() < 0.7:
        entities = [e for e in entities if editor._ok(e)]
    editor.sk["entities"] = entities
    editor.sel = dice.choice([None, *range(len(entities))])
    editor.scale = 10 ** dice.uniform(2, 5)
    editor.centre = np.array([dice.uniform(-0.05, 0.05), dice.uniform(-0.05, 0.05)])
    editor.cursor = np.array([dice.uniform(-0.05, 0.05), dice.uniform(-0.05, 0.05)])
    editor.tool.set(dice.choice(TOOLS))
    editor.clicks = [np.array([0.001 * k, 0.002]) for k in range(dice.randrange(4))]
    editor.drag = dice.choice([None, {"kind": "new", "start": np.array([0.01, -0.02])}])
    editor.refs = [("edge", np.array([[-0.05, -0.05], [0.05, -0.05], [0.0, 0.05]]))]


def through_methods(canvas, seen=None):
    """Make every item go through a method of this one canvas."""

    def detour(name):
        real = getattr(tk.Canvas, name)

        def method(*args, **options):
            if seen is not None:
                seen.append((name, args, options))
            return real(canvas, *args, **options)

        return method

    for name in METHODS:
        setattr(canvas, name, detour(name))


def picture(editor):
    editor.redraw()
    return shown.items(editor.canvas)


def either_way(editor, seen):
    """Whether what is seen is the same when every item goes through a method of the canvas."""
    straight = seen()
    through_methods(editor.canvas)
    around = seen()
    for name in METHODS:
        delattr(editor.canvas, name)
    return straight == around


def looks_the_same_either_way(editor):
    return either_way(editor, lambda: picture(editor))


@pytest.fixture
def editor(open_editor):
    return open_editor(None)


@pytest.fixture(scope="module")
def shown_editor(display, sketcher):
    """One for all that is only painted in another way."""
    root = open_root()
    editor = sketcher.SketchEditor(root, None)
    settle(editor, lambda: editor.canvas.winfo_width() > 1)
    yield editor
    close_root(root)


@pytest.fixture
def selected(shown_editor):
    """It, with a selected rectangle and a reference."""
    scene(shown_editor, 5)
    shown_editor.sk["entities"] = [rectangle(0.0, 0.0, 0.01, 0.01)]
    shown_editor.sel = 0
    return shown_editor


def test_random_scenes_look_the_same_either_way(shown_editor):
    for seed in range(60):
        scene(shown_editor, seed)
        assert looks_the_same_either_way(shown_editor)
        assert len(picture(shown_editor)) > 10


@pytest.mark.parametrize("kind", [tuple, type("Shapes", (list,), {})])
def test_shapes_that_are_kept_otherwise_look_the_same(selected, kind):
    selected.sk["entities"].append(circle(0.005, 0.005, 0.002))
    before = picture(selected)
    selected.sk["entities"] = kind(selected.sk["entities"])
    assert picture(selected) == before


def test_where_tkinter_s_own_library_is_hidden_the_picture_is_the_same(selected, monkeypatch):
    before = picture(selected)
    monkeypatch.delitem(sys.modules, "_tkinter")
    assert picture(selected) == before


def test_the_methods_get_what_any_other_canvas_gets(editor):
    for seed in range(30):
        scene(editor, seed)
        seen = []
        through_methods(editor.canvas, seen)
        editor.redraw()
        real = editor.canvas
        editor.canvas = RecordingCanvas(real.winfo_width(), real.winfo_height())
        editor.redraw()
        assert seen == editor.canvas.drawn
        editor.canvas = real


@pytest.mark.parametrize("name", METHODS)
def test_a_method_replaced_on_the_instance_is_called(editor, name):
    scene(editor, 3)
    editor.tool.set("line")
    editor.clicks = [np.zeros(2)]
    editor.sk["entities"] = [rectangle(0.0, 0.0, 0.01, 0.01)]
    kind = name.split("_")[1]
    editor.redraw()
    count = len(shown.of_kind(editor.canvas, kind))
    assert count
    seen = []
    setattr(editor.canvas, name, lambda *args, **options: seen.append(args))
    editor.redraw()
    assert len(seen) == count
    assert shown.of_kind(editor.canvas, kind) == []


@pytest.mark.parametrize("name", ["create_line", "_create", "_options"])
def test_a_method_replaced_in_tkinter_is_called(editor, monkeypatch, name):
    real = getattr(tk.Canvas, name)
    seen = []

    def method(self, *args, **options):
        seen.append(self)
        return real(self, *args, **options)

    method.__name__ = name  # nothing but where it was written tells it from tkinter's
    monkeypatch.setattr(tk.Canvas, name, method)
    before = picture(editor)
    assert seen and all(canvas is editor.canvas for canvas in seen)
    monkeypatch.undo()
    assert picture(editor) == before


@pytest.mark.parametrize("name", ["_create", "_options"])
def test_a_part_of_the_methods_that_is_replaced_on_the_instance_is_called(editor, name):
    real = getattr(editor.canvas, name)
    before = picture(editor)
    seen = []
    setattr(editor.canvas, name, lambda *args: seen.append(args) or real(*args))
    assert picture(editor) == before
    assert len(seen) == len(before)


def test_delete_replaced_on_the_instance_is_called(editor):
    before, seen = picture(editor), []
    editor.canvas.delete = lambda *args: seen.append(args)
    assert picture(editor) == before + before
    assert seen == [("all",)]


def test_another_canvas_s_method_draws_there(editor):
    other = tk.Canvas(editor)
    editor.canvas.create_oval = other.create_oval
    editor.redraw()
    assert [item.kind for item in shown.items(other)] == ["oval"]
    assert shown.of_kind(editor.canvas, "oval") == []


class Logged:
    """Tk's interpreter with a log of the commands that it is given."""

    def __init__(self, interpreter):
        self.interpreter = interpreter
        self.commands = []

    def __getattr__(self, name):
        return getattr(self.interpreter, name)

    def call(self, *words):
        self.commands.append(words)
        return self.interpreter.call(*words)


def test_an_interpreter_of_another_kind_is_given_what_tkinter_gives(editor):
    scene(editor, 3)
    editor.sk["entities"] = [polygon(*((0.001 * k, 0.0005 * k * k) for k in range(12)))]
    logs = []
    for detour in (False, True):
        if detour:
            through_methods(editor.canvas)
        editor.canvas.tk = Logged(editor.canvas.tk)
        editor.redraw()
        logs.append(editor.canvas.tk.commands)
        editor.canvas.tk = editor.canvas.tk.interpreter
    assert logs[0] == logs[1]
    kinds = {words[2] for words in logs[0] if "create" in words}
    assert kinds == {"line", "polygon", "text", "oval"}


class Asked:
    """A canvas that is asked for nothing but what painting takes; `count` tells how often."""

    def __init__(self, canvas, count):
        object.__setattr__(self, "answer", lambda name: getattr(canvas, name))
        object.__setattr__(self, "count", count)

    def __getattribute__(self, name):
        assert name in ("winfo_width", "winfo_height", "delete", *METHODS), name
        object.__getattribute__(self, "count")[name] += 1
        return object.__getattribute__(self, "answer")(name)


def test_anything_that_has_the_methods_is_a_canvas(selected):
    selected.tool.set("line")
    selected.clicks = [np.zeros(2)]
    before, canvas, count = picture(selected), selected.canvas, Counter()
    selected.canvas = Asked(canvas, count)
    selected.redraw()
    selected.canvas = canvas
    assert shown.items(canvas) == before
    assert {name: count[name] for name in METHODS} == Counter(f"create_{i.kind}" for i in before)
    assert count["delete"] == 1


def test_a_canvas_of_a_subclass_gets_the_calls(editor):
    class Counting(tk.Canvas):
        lines = 0

        def create_line(self, *args, **options):
            self.lines += 1
            return super().create_line(*args, **options)

    expected = len([item for item in picture(editor) if item.kind == "line"])
    canvas = Counting(editor.canvas.master, width=620, height=460)
    canvas.place(x=0, y=0, width=editor.canvas.winfo_width(), height=editor.canvas.winfo_height())
    editor.update()
    editor.canvas = canvas
    editor.redraw()
    assert canvas.lines == expected
    assert len([item for item in shown.items(canvas) if item.kind == "line"]) == expected


@pytest.mark.parametrize("whole", [True, False], ids=["tkinter", "its Canvas"])
def test_a_canvas_whose_attribute_hides_tkinter_gets_the_calls(editor, monkeypatch, whole):
    class Hiding(tk.Canvas):
        hides = False

        @property
        def _w(self):
            if self.hides and whole:
                monkeypatch.delitem(sys.modules, "tkinter", raising=False)
            elif self.hides:
                monkeypatch.delattr(tk, "Canvas", raising=False)
            return self.path

        @_w.setter
        def _w(self, path):
            self.path = path

    before = picture(editor)
    canvas = Hiding(editor.canvas.master, width=620, height=460)
    canvas.place(x=0, y=0, width=editor.canvas.winfo_width(), height=editor.canvas.winfo_height())
    editor.update()
    editor.canvas = canvas
    canvas.hides = True
    editor.redraw()
    canvas.hides = False
    assert "tkinter" not in sys.modules or not hasattr(tk, "Canvas")
    monkeypatch.undo()
    assert shown.items(canvas) == before


TEXTS = ["", " ", "a b", "{", "}", "\\", "$x [exit]", '"', "Ø ½ 𝄞", "a\nb", "-fill"]


@pytest.mark.parametrize("text", [*TEXTS, 5, (4, 3), None], ids=repr)
def test_any_label_looks_the_same_either_way(selected, sketcher, monkeypatch, text):
    units = FakeUnits()
    units.answers["fmt"] = text
    monkeypatch.setattr(sketcher, "units", units)
    assert looks_the_same_either_way(selected)


OF_TKINTER = [("#123456",), ["#654321"], ("Dark", "Red")]  # forms of a colour that no other reads


@pytest.mark.parametrize(
    "colour", ["red", "#abc", "", None, type("Colour", (str,), {})("blue"), *OF_TKINTER]
)
@pytest.mark.parametrize("role", ["bg", "accent", "accent_soft", "muted"])
def test_any_colour_looks_the_same_either_way(selected, sketcher, monkeypatch, role, colour):
    monkeypatch.setattr(sketcher, "PAL", {**sketcher.PAL, role: colour})
    assert looks_the_same_either_way(selected)


@pytest.mark.parametrize("detour", [False, True])
def test_what_tk_refuses_is_its_error_either_way(editor, sketcher, monkeypatch, detour):
    """A colour, and to paint on a canvas that is gone."""
    if detour:
        through_methods(editor.canvas)
    with monkeypatch.context() as patch, pytest.raises(tk.TclError, match="no such colour"):
        patch.setattr(sketcher, "PAL", {**sketcher.PAL, "bg": "no such colour"})
        editor.redraw()
    editor.canvas.destroy()
    with pytest.raises(tk.TclError):
        editor.redraw()


@pytest.fixture
def traced(root):
    """Counts what Tcl is given while it works: traced(command, ...) gives a growing Counter.

    A command of a widget counts as its first word, any other one as itself.
    """
    counts = Counter()

    def count(words, _):
        name, first = words.split(maxsplit=2)[:2]
        counts[first if name.startswith(".") else name] += 1

    def trace(*commands):
        callback = root.register(count)
        for command in commands:
            root.tk.call("trace", "add", "execution", command, "enter", callback)
        return counts

    return trace


OUTLINES = [circle(0.001 * k, 0.0, 0.01) for k in range(7)]
PROCEDURES = ["::tandrel::clear", "::tandrel::items", "::tandrel::polygons"]


def test_tcl_is_given_as_few_commands_as_can_be(open_editor, traced):
    editor = open_editor({"entities": 10 * OUTLINES})
    editor.cursor = np.array([0.01, 0.01])
    count = len(picture(editor))
    counts = traced(str(editor.canvas), *PROCEDURES)
    editor.redraw()
    # The grid, two axes, a letter at each, and the dot at the pointer.
    commands = {"::tandrel::clear": 1, "::tandrel::polygons": 2, "::tandrel::items": 1 + 2 + 2 + 1}
    looks = len(["grid", "first axis", "second axis", "shapes", "pointer"])
    assert counts == {"delete": 2, "create": looks + count, "coords": 70, **commands}


def hidden(canvas):
    """The colours of the items that don't show."""
    items = shown.of_kind(canvas, "rectangle", state="hidden")
    return {item.options["fill"] for item in items}


def test_colours_stay_with_tk_from_one_picture_to_the_next(selected, sketcher, monkeypatch):
    """Until the shapes are there. Where the last item of a colour goes, Tk has to ask for it."""
    before, kept, canvas = picture(selected), [], selected.canvas
    real = sketcher.S.depths
    monkeypatch.setattr(sketcher.S, "depths", lambda sk: kept.append(hidden(canvas)) or real(sk))
    assert picture(selected) == before
    assert kept == [{item.options["fill"] for item in before}]


@pytest.mark.parametrize("name", ["to_screen", "_dimensions", "_preview"])
def test_an_overridden_operation_sees_the_picture_only(selected, monkeypatch, name):
    real, kept = getattr(selected, name), []
    look = lambda *args: kept.append(hidden(selected.canvas)) or real(*args)  # noqa: E731
    monkeypatch.setattr(selected, name, look, raising=False)
    for selected.sel in (0, None):
        selected.redraw()
    assert kept and not any(kept)


def test_a_repaint_that_ends_early_leaves_the_picture_only(selected, sketcher, monkeypatch):
    def refuse(sk):
        raise ZeroDivisionError

    before = picture(selected)
    with monkeypatch.context() as patch, pytest.raises(ZeroDivisionError):
        patch.setattr(sketcher.S, "depths", refuse)
        selected.redraw()
    left = shown.items(selected.canvas)
    assert left == [item for item in before if item.kind != "polygon"][: len(left)] != []
    with monkeypatch.context() as patch:
        patch.setattr(selected, "canvas", tk.Canvas(selected))  # not laid out
        assert picture(selected) == []


def test_what_it_needs_in_tcl_is_made_once(open_editor):
    editor = open_editor(None)
    editor.redraw()
    call = editor.tk.call
    assert set(call("info", "commands", "::tandrel::*")) == {*PROCEDURES, "::tandrel::remember"}
    call("proc", "::tandrel::items", "args", "")
    editor.redraw()
    assert picture(editor) == []


def test_a_canvas_s_methods_are_looked_at_once_for_all_items(open_editor):
    """One that is replaced takes all items round by the methods."""
    editor = open_editor({"entities": OUTLINES})
    before = picture(editor)
    call = editor.tk.call
    for name in PROCEDURES:
        call("proc", name, "args", "error unexpected")
    editor.canvas.create_oval = lambda *args, **options: real(*args, **options)
    real = types.MethodType(tk.Canvas.create_oval, editor.canvas)
    assert picture(editor) == before


def test_an_interpreter_that_gives_texts_for_everything(open_editor):
    editor = open_editor({"entities": OUTLINES})
    before = picture(editor)
    wanted = editor.tk.wantobjects()
    editor.tk.wantobjects(False)
    try:
        editor.redraw()
    finally:
        editor.tk.wantobjects(wanted)
    assert shown.items(editor.canvas) == before


def test_coordinates_are_not_rounded(editor, sketcher):
    editor.sk["entities"] = OUTLINES
    editor.scale, editor.centre = 12345.6789, np.array([0.1, 1 / 3])
    editor.redraw()
    for entity, item in zip(OUTLINES, shown.shapes(editor.canvas)):
        pixels = [editor.to_screen(p) for p in sketcher.S.outline(entity)]
        assert item.coords == tuple(v for pixel in pixels for v in pixel)


ODD = {
    "no point": np.zeros((0, 2)),
    "one point": [(1.0, 2.0)],
    "two points": [(1.0, 2.0), (3.0, 4.0)],
    "three points": [(1.0, 2.0), (3.0, 4.0), (5.0, 1.0)],
    "not a number": [(0.0, 0.0), (1.0, 0.0), (1.0, 1.0), (math.nan, 1.0)],
    "endless": [(0.0, 0.0), (math.inf, 0.0), (1.0, 1.0), (-math.inf, 1.0)],
    "huge": [(0.0, 0.0), (1e300, 0.0), (1.0, 1e-300), (5e-324, -1e300)],
}


@pytest.mark.parametrize("points", ODD.values(), ids=ODD)
@pytest.mark.parametrize("kind", ["shape", "reference"])
def test_an_odd_outline_is_the_same_either_way(selected, sketcher, monkeypatch, points, kind):
    host = types.SimpleNamespace(outline=lambda e: np.array(points), depths=lambda sk: [0], AXES={})
    monkeypatch.setattr(sketcher, "S", host)
    selected.sk["entities"] = [circle()] if kind == "shape" else []
    if kind == "reference":
        selected.refs = [("edge", np.array(points))]

    def painted():
        try:
            return None, [repr(item) for item in picture(selected)]
        except (tk.TclError, IndexError) as raised:
            return repr(raised), [repr(item) for item in shown.items(selected.canvas)]

    assert either_way(selected, painted)
