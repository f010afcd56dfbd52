"""Whichever way items take to the canvas, the picture is the same and overrides are honoured.

A plain Tk canvas may be given its items without a detour through tkinter's methods; any other
canvas gets the method calls.
"""

import random
import tkinter as tk

import numpy as np
import pytest
from support import canvas as shown
from support.neighbours import FakeUnits, polygon, rectangle
from support.operations import TOOLS
from support.plain import RecordingCanvas
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


@pytest.fixture
def editor(open_editor):
    return open_editor(None)


def test_random_scenes_look_the_same_either_way(editor):
    for seed in range(60):
        scene(editor, seed)
        straight = picture(editor)
        through_methods(editor.canvas)
        around = picture(editor)
        for name in METHODS:
            delattr(editor.canvas, name)
        assert straight == around
        assert len(straight) > 10


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


@pytest.mark.parametrize("name", ["create_line", "_create"])
def test_a_method_replaced_in_tkinter_is_called(editor, monkeypatch, name):
    real = getattr(tk.Canvas, name)
    seen = []

    def method(self, *args, **options):
        seen.append(self)
        return real(self, *args, **options)

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


def test_anything_that_has_the_methods_is_a_canvas(editor):
    class Methods:
        """Has no `tk`, as little as any other attribute."""

        drawn = 0

        def __getattr__(self, name):
            if name not in ("winfo_width", "winfo_height", "delete", *METHODS):
                raise AttributeError(name)
            Methods.drawn += name in METHODS
            return getattr(canvas, name)

    before, canvas = picture(editor), editor.canvas
    editor.canvas = Methods()
    editor.redraw()
    assert shown.items(canvas) == before
    assert Methods.drawn == len(before)
    editor.canvas = canvas


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


TEXTS = [
    "",
    " ",
    "a b",
    "{",
    "}",
    "\\",
    "$x [exit]",
    '"',
    "Ø ½ 𝄞",
    "a\nb",
    "-fill",
    5,
    (4, 3),
    None,
]


@pytest.mark.parametrize("text", TEXTS, ids=repr)
def test_any_label_looks_the_same_either_way(editor, sketcher, monkeypatch, text):
    units = FakeUnits()
    units.answers["fmt"] = text
    monkeypatch.setattr(sketcher, "units", units)
    editor.sk["entities"] = [rectangle(0.0, 0.0, 0.01, 0.01)]
    editor.sel = 0
    straight = picture(editor)
    through_methods(editor.canvas)
    assert picture(editor) == straight


@pytest.mark.parametrize("colour", ["red", "#abc", "", None, type("Colour", (str,), {})("blue")])
@pytest.mark.parametrize("role", ["bg", "accent", "accent_soft", "muted"])
def test_any_colour_looks_the_same_either_way(editor, sketcher, monkeypatch, role, colour):
    monkeypatch.setattr(sketcher, "PAL", {**sketcher.PAL, role: colour})
    scene(editor, 5)
    editor.sk["entities"] = [rectangle(0.0, 0.0, 0.01, 0.01)]
    straight = picture(editor)
    through_methods(editor.canvas)
    assert picture(editor) == straight


@pytest.mark.parametrize("detour", [False, True])
def test_what_tk_refuses_is_its_error_either_way(editor, sketcher, monkeypatch, detour):
    monkeypatch.setattr(sketcher, "PAL", {**sketcher.PAL, "bg": "no such colour"})
    if detour:
        through_methods(editor.canvas)
    with pytest.raises(tk.TclError, match="no such colour"):
        editor.redraw()


@pytest.mark.parametrize("detour", [False, True])
def test_a_canvas_that_is_gone_is_tk_s_error_either_way(editor, detour):
    if detour:
        through_methods(editor.canvas)
    editor.canvas.destroy()
    with pytest.raises(tk.TclError):
        editor.redraw()


def test_colours_in_a_form_that_only_tkinter_reads(editor, neighbours):
    scene(editor, 3)
    neighbours.PAL.update({"muted": ("#123456",), "bg": ["#654321"], "accent": ("Dark", "Red")})
    straight = picture(editor)
    through_methods(editor.canvas)
    assert picture(editor) == straight
    lines = shown.of_kind(editor.canvas, "line")
    assert {"#123456", "#654321"} <= {line.options["fill"] for line in lines}


def test_options_written_in_another_way_are_written_so(editor, monkeypatch):
    seen = []
    real = tk.Canvas._options

    def options(self, cnf, kw=None):
        seen.append(cnf if kw is None else kw)
        return real(self, cnf, kw)

    monkeypatch.setattr(tk.Canvas, "_options", options)
    editor.redraw()
    assert len(seen) == len(editor.canvas.find_all())
    assert seen[-1] == {"fill": "#E8833A", "outline": ""}
