"""Pointer handlers and picking: what is asked how often, in which order, and what is no number."""

import math

import numpy as np
import pytest
from support.neighbours import circle, polygon, rectangle
from support.plain import Event, Var, painting_nothing, point

NAN = math.nan


@pytest.fixture
def editor(neighbours):
    """No grid."""
    return painting_nothing(snap=Var(False))


class TestPressWithLine:
    def test_adds_to_the_corners_that_the_look_at_the_first_leaves(self, editor):
        old, new = [point(k, k) for k in range(3)], [point(9, 9)]

        def to_screen(first):
            editor.clicks = new
            return 0.0, 0.0

        editor.tool.set("line")
        editor.clicks, editor.to_screen = old, to_screen
        editor.snapped = lambda x, y: point(5, 5)
        editor._press(Event(230, 100))
        assert len(old) == 3
        assert [corner.tolist() for corner in new] == [[9.0, 9.0], [5.0, 5.0]]


class TestMotion:
    def test_asks_for_the_units_once(self, editor, neighbours):
        editor._motion(Event(230, 100))
        assert neighbours.units.asked == 1

    def test_keeps_the_point_even_if_it_cannot_be_shown(self, editor, neighbours):
        neighbours.units.fail["fmt"] = RuntimeError("broken")
        with pytest.raises(RuntimeError):
            editor._motion(Event(230, 100))
        assert editor.cursor.tolist() == [3.0, 5.0]
        assert editor.status.texts == []
        assert editor.calls == []

    def test_a_tool_without_a_hint_is_an_error(self, editor):
        editor.tool.set("spline")
        with pytest.raises(KeyError, match="spline"):
            editor._motion(Event(230, 100))
        assert editor.status.texts == []


class TestPress:
    def test_keeps_the_point_before_it_reads_the_tool(self, editor):
        def fail():
            raise RuntimeError("no tool")

        editor.tool.get = fail
        with pytest.raises(RuntimeError, match="no tool"):
            editor._press(Event(230, 100))
        assert editor.cursor.tolist() == [3.0, 5.0]

    def test_the_tool_is_read_after_snapping(self, editor):
        real = editor.snapped

        def snapped(x, y):
            editor.tool.set("circle")
            return real(x, y)

        editor.snapped = snapped
        editor._press(Event(230, 100))
        assert editor.drag["kind"] == "new"

    def test_closing_measures_with_the_module_s_own_distance(self, editor, sketcher, monkeypatch):
        class Halved:
            def __getattr__(self, name):
                return getattr(math, name)

            def hypot(self, dx, dy):
                return math.hypot(dx, dy) / 2

        closed = []
        editor.tool.set("line")
        editor.close_line = lambda: closed.append(1)
        editor.clicks = [point(0, 0), point(3, 0), point(3, 5)]
        monkeypatch.setattr(sketcher, "math", Halved())
        editor._press(Event(218, 150))
        assert closed == [1]
        editor._press(Event(219, 150))
        assert closed == [1]
        assert len(editor.clicks) == 4

    def test_closing_measures_from_the_first_corner_of_many(self, editor):
        closed = []
        editor.tool.set("line")
        editor.close_line = lambda: closed.append(1)
        editor.clicks = [point(0, 0), point(5, 0), point(5, 5), point(9, 9), point(0, 5)]
        editor._press(Event(201, 149))
        assert closed == [1]
        editor._press(Event(253, 151))
        assert closed == [1]
        assert len(editor.clicks) == 6

    def test_a_corner_that_is_no_number_is_not_placed_after_another(self, editor):
        editor.tool.set("line")
        editor.clicks = [point(0, 0)]
        editor.snapped = lambda x, y: point(NAN, 0.0)
        editor._press(Event(0, 0))
        assert len(editor.clicks) == 1

    def test_the_ends_of_a_slot_are_there_while_it_is_built(self, editor):
        editor.tool.set("slot")
        editor.clicks = ends = [point(0, 0), point(4, 0)]
        seen = []
        editor._slot = lambda a, b, p: seen.append(editor.clicks is ends and len(ends))
        editor._press(Event(300, 130))
        assert seen == [2]
        assert editor.clicks == []

    def test_a_slot_that_fails_keeps_its_ends(self, editor):
        def fail(a, b, p):
            raise RuntimeError("broken")

        editor.tool.set("slot")
        editor.clicks = ends = [point(0, 0), point(4, 0)]
        editor._slot = fail
        with pytest.raises(RuntimeError):
            editor._press(Event(300, 130))
        assert editor.clicks is ends and len(ends) == 2
        assert editor.calls == []


class TestDrag:
    def test_keeps_the_point_even_if_the_shape_cannot_be_moved(self, editor):
        editor.sk["entities"] = [circle()]
        editor.sel = 0
        editor.drag = {"kind": "move", "start": point(0, 0), "orig": {"type": "circle", "xc": 0}}
        with pytest.raises(KeyError):
            editor._drag(Event(230, 100))
        assert editor.cursor.tolist() == [3.0, 5.0]
        assert editor.calls == []

    def test_the_selection_of_the_moment_is_moved(self, editor):
        editor.sk["entities"] = [circle(), rectangle()]
        editor.sel = 0
        editor.drag = {"kind": "move", "start": point(0, 0), "orig": circle()}

        def moved(e, d):
            editor.sel = 1
            return "moved"

        editor._moved = moved
        editor._drag(Event(230, 100))
        assert editor.sk["entities"] == [circle(), "moved"]


class TestRelease:
    def test_a_drag_that_cannot_be_finished_stays(self, editor):
        def fail(a, b):
            raise RuntimeError("broken")

        editor.drag = drag = {"kind": "new", "start": point(0, 0)}
        editor._from_drag = fail
        with pytest.raises(RuntimeError):
            editor._release(Event(230, 100))
        assert editor.drag is drag
        assert editor.calls == []

    def test_a_move_asks_for_no_validity_and_adds_nothing(self, editor):
        editor.sk["entities"] = [circle()]
        editor.drag = {"kind": "move", "start": point(0, 0), "orig": circle()}
        editor._ok = editor.add = editor._from_drag = lambda *args: pytest.fail("asked")
        editor._release(Event(230, 100))
        assert editor.sk["entities"] == [circle()]


class TestPick:
    def test_an_outline_with_a_point_that_is_no_number_is_never_near(self, editor, neighbours):
        outline = [[0.0, 0.0], [NAN, 0.0], [5.0, 5.0]]
        editor.sk["entities"] = [circle()]
        for order in ((0, 1, 2), (1, 0, 2), (2, 0, 1)):
            neighbours.S.answers.update(outline=np.array([outline[k] for k in order]), inside=False)
            assert editor.pick(200, 150) is None
        neighbours.S.answers["inside"] = True
        assert editor.pick(200, 150) == 0

    @pytest.mark.parametrize("areas", [(5.0, NAN), (NAN, 5.0), (NAN, NAN)])
    def test_an_area_that_is_no_number_is_not_smaller_than_any(self, editor, neighbours, areas):
        editor.sk["entities"] = [circle(), rectangle(-1.0, -1.0, 2.0, 2.0)]
        neighbours.S.answers["area"] = lambda e: areas[editor.sk["entities"].index(e)]
        assert editor.pick(200, 150) == 0

    def test_validity_of_all_shapes_is_asked_in_their_order(self, editor):
        asked = []
        editor.sk["entities"] = [circle(), polygon(), rectangle()]
        editor._ok = lambda e: asked.append(e["type"])
        assert editor.pick(200, 150) is None
        assert asked == ["circle", "polygon", "rectangle"]


def test_the_angle_of_a_drag_is_the_module_s_own_math_s(editor, sketcher, monkeypatch):
    asked = []

    class Counted:
        def __getattr__(self, name):
            return lambda *args: asked.append((name, args)) or getattr(math, name)(*args)

    editor.tool.set("regular")
    monkeypatch.setattr(sketcher, "math", Counted())
    assert editor._from_drag(point(1, 1), point(1, 4))["angle"] == 90.0
    assert asked == [("atan2", (3.0, 0.0)), ("degrees", (math.atan2(3.0, 0.0),))]
