"""Presses of the pointer's first button, tool by tool, up to what a click finishes."""

import math

import numpy as np
import pytest
from support.neighbours import circle, polygon
from support.operations import CLICK_TOOLS, DRAG_TOOLS
from support.plain import Event, Var, is_point, names, painting_nothing, point

NAN = math.nan


@pytest.fixture
def editor(neighbours):
    """A grid of one unit."""
    return painting_nothing(grid=Var("1000"))


class TestPressWithSelect:
    @pytest.fixture
    def editor(self, editor):
        editor.sk["entities"] = [polygon((0, 0), (4, 0), (0, 3)), circle(8.0, 0.0)]
        return editor

    def test_picks_by_the_raw_pixel_and_snaps_the_start(self, editor):
        picked = []
        editor.pick = lambda x, y: picked.append((x, y)) or 1
        assert editor._press(Event(213, 141)) is None
        assert picked == [(213, 141)]
        assert is_point(editor.drag["start"], 1.0, 1.0)
        assert is_point(editor.cursor, 1.0, 1.0)

    def test_begins_a_move_of_the_shape_as_it_is(self, editor):
        shape = editor.sk["entities"][0]
        editor._press(Event(212, 138))
        assert editor.sel == 0
        assert list(editor.drag) == ["kind", "start", "orig"]
        assert editor.drag["kind"] == "move"
        assert editor.drag["orig"] == shape
        assert editor.drag["orig"] is not shape
        assert editor.drag["orig"]["points"] is not shape["points"]
        assert editor.drag["orig"]["points"][0] is not shape["points"][0]

    def test_selects_before_the_move_begins(self, editor):
        seen = []

        def select(i):
            seen.append((i, editor.drag, editor.cursor.tolist()))
            editor.sk["entities"][1]["r"] = 5.0

        editor.select = select
        editor.pick = lambda x, y: 1
        editor._press(Event(280, 150))
        assert seen == [(1, None, [8.0, 0.0])]
        assert editor.drag["orig"]["r"] == 5.0
        assert editor.calls == []  # what is painted is the selection's affair

    def test_on_nothing_clears_the_selection_and_leaves_a_drag_alone(self, editor):
        editor.sel = 1
        editor.drag = drag = {"kind": "move", "start": point(0, 0), "orig": {}}
        editor._press(Event(390, 290))
        assert editor.sel is None
        assert editor.drag is drag
        assert names(editor) == ["refresh_list", "show_props", "redraw"]

    def test_a_stale_pick_is_an_error(self, editor):
        editor.pick = lambda x, y: 2
        with pytest.raises(IndexError):
            editor._press(Event(0, 0))
        assert editor.drag is None


class TestPressWithAShapeTool:
    @pytest.mark.parametrize("tool", DRAG_TOOLS)
    def test_begins_a_new_shape_without_picking_and_painting(self, editor, tool):
        editor.tool.set(tool)
        editor.pick = editor.select = lambda *args: pytest.fail("picked")
        editor.drag = {"kind": "new", "start": point(9, 9)}
        assert editor._press(Event(231, 98)) is None
        assert list(editor.drag) == ["kind", "start"]
        assert editor.drag["kind"] == "new"
        assert is_point(editor.drag["start"], 3.0, 5.0)
        assert is_point(editor.cursor, 3.0, 5.0)
        assert editor.calls == []
        assert editor.sk["entities"] == []

    def test_an_unknown_tool_does_nothing_but_follow_the_pointer(self, editor):
        editor.tool.set("spline")
        assert editor._press(Event(231, 98)) is None
        assert is_point(editor.cursor, 3.0, 5.0)
        assert editor.drag is None
        assert editor.clicks == []
        assert editor.calls == []


class TestPressWithLine:
    @pytest.fixture
    def editor(self, editor):
        editor.tool.set("line")
        return editor

    def corners(self, editor):
        return [p.tolist() for p in editor.clicks]

    def test_every_click_places_a_corner(self, editor):
        clicks = editor.clicks
        for pixel in ((200, 150), (231, 151), (231, 98)):
            editor._press(Event(*pixel))
        assert self.corners(editor) == [[0.0, 0.0], [3.0, 0.0], [3.0, 5.0]]
        assert editor.clicks is clicks
        assert names(editor) == ["redraw"] * 3
        assert editor.drag is None

    @pytest.mark.parametrize("tool", CLICK_TOOLS)
    def test_what_is_clicked_is_the_snapped_point_itself(self, editor, tool):
        mine = point(3, 4)
        editor.tool.set(tool)
        editor.snapped = lambda x, y: mine
        editor._press(Event(0, 0))
        assert editor.clicks[0] is mine
        assert editor.cursor is mine

    @pytest.mark.parametrize("tool", CLICK_TOOLS)
    @pytest.mark.parametrize("u, count", [(3.0, 1), (np.nextafter(3.0, 4.0), 2), (NAN, 1)])
    def test_only_another_place_than_the_last_is_a_second_click(self, editor, tool, u, count):
        editor.tool.set(tool)
        editor.clicks = [point(3, 4)]
        editor.snapped = lambda x, y: point(u, 4)
        editor._press(Event(0, 0))
        assert len(editor.clicks) == count
        assert names(editor) == ["redraw"]

    def test_with_two_corners_the_first_one_is_a_third_and_closes_nothing(self, editor):
        editor.clicks = [point(0, 0), point(3, 0)]
        editor.close_line = lambda: pytest.fail("closed")
        editor._press(Event(205, 150))
        assert self.corners(editor) == [[0.0, 0.0], [3.0, 0.0], [0.0, 0.0]]

    @pytest.mark.parametrize(
        "pixel, closes",
        [((200, 150), 1), ((209, 150), 1), ((200, 141), 1), ((205, 157), 1)]
        + [((210, 150), 0), ((207, 156), 0), ((209.001, 150), 0)],
    )
    def test_with_three_corners_a_click_within_nine_pixels_of_the_first_closes(
        self, editor, pixel, closes
    ):
        editor.clicks = [point(0, 0), point(3, 0), point(3, 5)]
        closed = []
        editor.close_line = lambda: closed.append(len(editor.clicks))
        editor._press(Event(*pixel))
        assert closed == [3] * closes
        assert self.corners(editor)[:3] == [[0.0, 0.0], [3.0, 0.0], [3.0, 5.0]]
        assert len(editor.clicks) == (3 if closes else 4)
        assert names(editor) == ([] if closes else ["redraw"])
        assert editor.cursor.tolist() == editor.snapped(*pixel).tolist()

    def test_closing_measures_the_raw_pointer_at_every_zoom(self, editor):
        for scale in (0.01, 10.0, 1e6):
            editor.scale = scale
            editor.clicks = [point(0, 0), point(3, 0), point(3, 5)]
            closed = []
            editor.close_line = lambda: closed.append(1)
            editor.snapped = lambda x, y: point(77, 77)
            editor._press(Event(206, 156))
            assert closed == [1]
            editor._press(Event(207, 156))
            assert self.corners(editor)[3:] == [[77.0, 77.0]]

    def test_closing_uses_the_module_s_radius_and_distance(self, editor, sketcher, monkeypatch):
        class Halved:
            def __getattr__(self, name):
                return getattr(math, name)

            def hypot(self, dx, dy):
                return math.hypot(dx, dy) / 2

        closed = []
        editor.close_line = lambda: closed.append(1)
        editor.clicks = [point(0, 0), point(3, 0), point(3, 5)]
        monkeypatch.setattr(sketcher, "SNAP_PX", 2)
        monkeypatch.setattr(sketcher, "math", Halved())
        for x in (204, 205):
            editor._press(Event(x, 150))
            assert closed == [1]
        assert len(editor.clicks) == 4

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


class TestPressWithSlot:
    @pytest.fixture
    def editor(self, editor):
        editor.tool.set("slot")
        return editor

    def test_three_clicks_make_a_slot(self, editor):
        editor._press(Event(200, 150))
        editor._press(Event(240, 150))
        assert [p.tolist() for p in editor.clicks] == [[0.0, 0.0], [4.0, 0.0]]
        assert editor.sk["entities"] == []
        editor._press(Event(300, 130))
        assert editor.clicks == []
        assert editor.sk["entities"] == [
            {"type": "slot", "x1": 0.0, "y1": 0.0, "x2": 4.0, "y2": 0.0, "r": 2.0}
        ]
        assert editor.sel == 0
        assert names(editor) == ["redraw", "redraw", "refresh_list", "redraw", "redraw"]

    def test_the_third_click_gives_its_point_as_the_width_while_the_ends_are_there(self, editor):
        asked = []
        ends = editor.clicks = [point(0, 0), point(4, 0)]

        def slot(*points):
            asked.extend(points)
            assert editor.clicks is ends and len(ends) == 2

        editor._slot = slot
        editor._press(Event(300, 130))
        assert asked[0] is ends[0] and asked[1] is ends[1]
        assert asked[2] is editor.cursor

    def test_the_ends_are_forgotten_before_the_slot_is_added(self, editor):
        ends = editor.clicks = [point(0, 0), point(4, 0)]
        seen = []
        editor.add = lambda e: seen.append((e, list(editor.clicks)))
        editor._slot = lambda a, b, p: "slot"
        editor._press(Event(300, 130))
        assert seen == [("slot", [])]
        assert editor.clicks is not ends and len(ends) == 2
        assert names(editor) == ["redraw"]

    def test_a_third_click_on_the_axis_drops_the_slot_silently(self, editor):
        editor.clicks = [point(0, 0), point(4, 0)]
        editor._press(Event(320, 150))
        assert editor.clicks == []
        assert editor.sk["entities"] == []
        assert editor.sel is None
        assert editor.status.texts == []
        assert names(editor) == ["redraw"]


class TestPress:
    def test_keeps_the_point_before_it_reads_the_tool(self, editor):
        def fail():
            raise RuntimeError("no tool")

        editor.tool.get = fail
        with pytest.raises(RuntimeError, match="no tool"):
            editor._press(Event(230, 100))
        assert editor.cursor.tolist() == [3.0, 5.0]

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
