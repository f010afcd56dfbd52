"""Repainting with unusual depths, selections, dimensions and failing tests of validity."""

import tkinter as tk

import numpy as np
import pytest
from support import canvas as shown
from support.neighbours import circle, rectangle
from support.plain import PlainEditor
from support.watchdog import finishes

SOLID, HOLE, ORANGE, ACCENT = "#ddeeff", "#f7f7f7", "#E8833A", "#1155aa"


@pytest.fixture
def editor(neighbours):
    """400 x 300 pixels, 40 pixels to the unit, two shapes, one in the other; no preview."""
    entities = [rectangle(0.0, 0.0, 3.0, 3.0), rectangle(1.0, 1.0, 1.0, 1.0)]
    editor = PlainEditor(scale=40.0, entities=entities)
    editor.grid_step = lambda: 1.0
    editor._preview = lambda: None
    return editor


def polygons(editor):
    """The options of the shapes that one repaint draws."""
    del editor.canvas.calls[:]
    editor.redraw()
    return [options for _, options in editor.canvas.named("create_polygon")]


def fills(editor):
    return [options["fill"] for options in polygons(editor)]


class TestGrid:
    @pytest.fixture
    def grid_lines(self, editor):
        """Paints and counts; fails where that takes for ever."""

        def count():
            finishes(editor.redraw)
            lines = [options for _, options in editor.canvas.named("create_line")]
            return sum("dash" not in options for options in lines)

        return count

    @pytest.mark.parametrize("step", [0.0, -1.0, np.inf, -np.inf, np.nan])
    def test_without_a_step_has_no_lines(self, editor, grid_lines, step):
        editor.grid_step = lambda: step
        assert grid_lines() == 0

    def test_that_runs_backwards_has_no_lines(self, editor, grid_lines):
        """The step is wide enough on the screen, and would never reach the upper bound."""
        editor.grid_step, editor.scale = lambda: -1.0, -40.0
        editor.to_world = lambda x, y: (x, -y)
        assert grid_lines() == 0

    def test_of_more_lines_than_can_be_meant_has_none(self, editor, grid_lines):
        editor.grid_step = lambda: 1.0
        editor.to_world = lambda x, y: (x * 1e7, 0.0)
        assert grid_lines() <= 2


class TestDepths:
    @pytest.mark.parametrize(
        "depth, fill",
        [(-1, HOLE), (-2, SOLID), (3, HOLE), (0.5, HOLE), (-0.0, SOLID), (True, HOLE)],
    )
    def test_every_multiple_of_two_is_solid(self, editor, neighbours, depth, fill):
        neighbours.S.answers["depths"] = [depth, depth]
        assert fills(editor) == [fill, fill]

    @pytest.mark.parametrize(
        "depths, lowest", [([np.nan, 5], 1), ([np.inf, 5], 1), ([np.nan, np.inf], 0)]
    )
    def test_what_has_no_depth_is_painted_last(self, editor, neighbours, depths, lowest):
        neighbours.S.answers["depths"] = depths
        editor.redraw()
        painted = [points[:2] for points, _ in editor.canvas.named("create_polygon")]
        corners = [editor.to_screen(corner) for corner in ((0.0, 0.0), (1.0, 1.0))]
        assert painted == [corners[lowest], corners[1 - lowest]]

    @pytest.mark.parametrize("error", [ValueError, KeyError])
    def test_a_test_of_validity_that_fails_flattens_all_shapes(self, editor, neighbours, error):
        failures = [error("not now")]

        def valid(e):
            if failures:
                raise failures.pop()
            return True

        assert fills(editor) == [SOLID, HOLE]
        neighbours.S.calls.clear()
        editor._ok = valid
        assert fills(editor) == [SOLID, SOLID]
        assert neighbours.S.count("depths") == 0

    @pytest.mark.parametrize("error", [TypeError, IndexError, RuntimeError])
    def test_other_errors_of_the_test_pass(self, editor, error):
        def refuse(e):
            raise error("broken")

        editor._ok = refuse
        with pytest.raises(error):
            editor.redraw()

    @pytest.mark.parametrize("error", [ValueError, KeyError])
    def test_an_error_of_the_test_while_drawing_passes(self, editor, error):
        answers = iter([True, True])

        def valid(e):
            for answer in answers:
                return answer
            raise error("broken")

        editor._ok = valid
        with pytest.raises(error):
            editor.redraw()

    @pytest.mark.parametrize("error", [ValueError, KeyError])
    def test_shapes_that_cannot_be_gone_through_are_flat(self, editor, neighbours, error):
        class Torn(list):
            def __iter__(self):
                raise error("torn")

        editor.sk["entities"] = Torn(editor.sk["entities"])
        assert fills(editor) == [SOLID, SOLID]
        assert neighbours.S.count("depths") == 0


class TestSelection:
    @pytest.mark.parametrize("sel", [1, 1.0, True, np.int64(1)])
    def test_is_whatever_equals_the_index(self, editor, sel):
        editor.sel = sel
        assert [options["outline"] for options in polygons(editor)] == [ACCENT, ORANGE]

    @pytest.mark.parametrize("sel", [-1, "1", 0.5])
    def test_nothing_else_selects(self, editor, sel):
        editor.sel = sel
        assert [options["outline"] for options in polygons(editor)] == [ACCENT, ACCENT]

    def test_is_read_for_each_shape(self, editor):
        editor.sel = 0
        editor._dimensions = lambda e: setattr(editor, "sel", 1)
        assert [options["outline"] for options in polygons(editor)] == [ORANGE, ORANGE]

    def test_labels_may_be_covered_by_what_is_painted_later(self, editor):
        editor.sel = 0
        names = []
        editor.redraw()
        for name, _, options in editor.canvas.drawn:
            if name == "create_polygon" or options.get("fill") == ORANGE:
                names.append(name)
        assert names == ["create_polygon", "create_text", "create_text", "create_polygon"]


class TestSpace:
    @pytest.mark.parametrize(
        "dim, letters", [(3.0, ["x", "z"]), (np.int64(3), ["x", "z"]), (3.5, ["x", "y"])]
    )
    def test_is_any_number_that_equals_three(self, editor, dim, letters):
        editor.dim = dim
        editor.plane.set("XZ")
        editor.redraw()
        shown = [options["text"] for _, options in editor.canvas.named("create_text")]
        assert shown == letters


def test_a_shape_replaced_while_depths_are_asked_shows_its_new_outline(editor, neighbours):
    def replace(sk):
        sk["entities"][1] = circle(0.0, 0.0, 1.0)
        return [0, 1]

    neighbours.S.answers["depths"] = replace
    editor.redraw()
    (_, _), (pixels, _) = editor.canvas.named("create_polygon")
    assert pixels == (240.0, 150.0, 200.0, 110.0, 160.0, 150.0, 200.0, 190.0)


def test_options_written_in_another_way_are_written_so(open_editor, monkeypatch):
    seen = []
    real = tk.Canvas._options

    def options(self, cnf, kw=None):
        seen.append(cnf if kw is None else kw)
        return real(self, cnf, kw)

    editor = open_editor(None)
    monkeypatch.setattr(tk.Canvas, "_options", options)
    editor.redraw()
    assert len(seen) == len(editor.canvas.find_all())
    assert seen[-1] == {"fill": ORANGE, "outline": ""}


def test_a_method_borrowed_from_another_canvas_draws_there(open_editor):
    editor = open_editor(None)
    other = tk.Canvas(editor)
    expected = len(shown.of_kind(editor.canvas, "line"))
    editor.canvas.create_line = other.create_line
    editor.redraw()
    assert len(shown.of_kind(other, "line")) == expected
    assert shown.of_kind(editor.canvas, "line") == []


def test_a_canvas_with_an_interpreter_of_another_kind_gets_the_calls(open_editor):
    class Interpreter:
        """Everything of the real one; keeps the names of what was used."""

        def __init__(self, real):
            self.real = real
            self.used = []

        def __getattr__(self, name):
            self.used.append(name)
            return getattr(self.real, name)

    editor = open_editor(None)
    canvas = editor.canvas
    before = shown.items(canvas)
    canvas.tk = interpreter = Interpreter(canvas.tk)
    editor.redraw()
    canvas.tk = interpreter.real
    assert shown.items(canvas) == before
    assert interpreter.used.count("getint") >= len(before)
