"""Shortcuts ask for no more than the plain way and are taken only where nothing is replaced."""

import math
import sys
import tkinter as tk
import types

import numpy as np
import pytest
from support import canvas as shown
from support.children import run_on_plain_editors
from support.neighbours import circle
from support.plain import PlainEditor, RecordingCanvas, Var


def test_a_reference_whose_length_is_a_lie():
    run_on_plain_editors(
        """
        class Points:
            def __len__(self): return 2
            def __iter__(self): return iter(())

        e = PlainEditor(refs=[("edge", Points())])
        e.redraw()
        assert len(e.canvas.named("create_line")) > 2
        """
    )


def test_an_interpreter_without_tkinter(open_editor, monkeypatch):
    editor = open_editor({"entities": [circle(r=0.01)]})
    painted = shown.items(editor.canvas)
    monkeypatch.delitem(sys.modules, "tkinter")
    editor.redraw()
    assert shown.items(editor.canvas) == painted


def test_an_interpreter_without_numpy(neighbours, monkeypatch):
    editor = PlainEditor(entities=[circle(3.0, 3.0)])
    pixel = editor.to_screen((2.0, 3.0))
    monkeypatch.delitem(sys.modules, "numpy")
    assert editor.pick(*pixel) == 0
    assert editor.snapped(*pixel).tolist() == [3.0, 3.0]


def test_a_built_in_function_as_test_of_validity(neighbours):
    editor = PlainEditor(entities=[circle(r=-1.0)])
    assert editor._extent()[1].tolist() == [0.05, 0.05]
    editor._ok = len
    with pytest.raises(ValueError, match="radius"):
        editor._extent()


class Bare:
    """Only the attributes given."""

    def __init__(self, **attributes):
        vars(self).update(attributes)


def test_the_preview_needs_no_to_world(sketcher):
    e = Bare(
        canvas=RecordingCanvas(),
        cursor=np.zeros(2),
        tool=Var("select"),
        drag=None,
        clicks=[],
        to_screen=lambda p: (1.0, 2.0),
    )
    sketcher.SketchEditor._preview(e)
    assert len(e.canvas.drawn) == 1


def test_the_preview_with_another_to_screen_reads_no_view(neighbours):
    e = PlainEditor(to_screen=lambda p: (1.0, 2.0))
    del e.scale, e.centre
    e._preview()
    assert e.canvas.sizes_asked == 0


def test_picking_in_an_empty_sketch_needs_no_to_screen(sketcher):
    e = Bare(sk={"entities": []}, to_world=lambda x, y: (0.0, 0.0))
    assert sketcher.SketchEditor.pick(e, 1, 2) is None


def test_an_operation_reads_the_size_of_the_canvas_once_for_all_points(neighbours):
    e = PlainEditor(entities=[circle(k, k) for k in range(5)], to_world=lambda x, y: (0.0, 0.0))
    e.pick(0, 0)
    assert e.canvas.sizes_asked == 1
    e.snapped(0, 0)
    assert e.canvas.sizes_asked == 2


def test_repainting_an_empty_sketch_needs_no_ok(neighbours, sketcher):
    e = Bare(
        canvas=RecordingCanvas(),
        refs=[],
        sk={"entities": []},
        dim=2,
        sel=None,
        scale=1.0,
        to_screen=lambda p: (1.0, 2.0),
        to_world=lambda x, y: (0.0, 0.0),
        grid_step=lambda: 1.0,
        _preview=lambda: None,
    )
    sketcher.SketchEditor.redraw(e)


def test_an_event_s_x_is_read_first(neighbours):
    with pytest.raises(AttributeError, match="'x'"):
        PlainEditor()._motion(object())


def test_an_error_of_a_replaced_hypot_passes(neighbours, sketcher, monkeypatch):
    def hypot(dx, dy):
        if dx > 0:
            raise ValueError("hypot")
        return math.hypot(dx, dy)

    monkeypatch.setattr(sketcher, "math", types.SimpleNamespace(hypot=hypot))
    e = PlainEditor(entities=[circle(3.0, 3.0)])
    with pytest.raises(ValueError, match="hypot"):
        e.snapped(200, 150)


def test_another_built_in_function_as_hypot_is_asked_for_every_point(
    neighbours, sketcher, monkeypatch
):
    monkeypatch.setattr(sketcher, "math", types.SimpleNamespace(hypot=min))
    assert PlainEditor(snap=Var(False)).snapped(300, 152).tolist() == [0.0, 0.0]


def test_a_method_of_tk_in_another_one_s_place_is_called(open_editor, monkeypatch):
    e = open_editor(None)
    monkeypatch.setattr(tk.Canvas, "create_oval", tk.Canvas.create_rectangle)
    e.redraw()
    kinds = {e.canvas.type(i) for i in e.canvas.find_all()}
    assert "rectangle" in kinds and "oval" not in kinds


def test_picking_measures_with_a_replaced_numpy(neighbours, sketcher, monkeypatch):
    editor = PlainEditor(entities=[circle(0.0, 0.0, 1.0)])
    outside = [float(v) for v in editor.to_screen((30.0, 0.0))]
    assert editor.pick(*outside) is None
    seen = []

    def hypot(dx, dy):
        seen.append((dx, dy))
        return np.float64(9.0)

    monkeypatch.setattr(sketcher, "np", types.SimpleNamespace(array=np.array, hypot=hypot))
    assert editor.pick(*outside) == 0
    outline = [editor.to_screen(p) for p in sketcher.S.outline(circle(0.0, 0.0, 1.0))]
    assert seen == [(u - outside[0], v - outside[1]) for u, v in outline]
