"""The pointer handlers with the tools that are clicked: an outline corner by corner, and a slot."""

import numpy as np
import pytest
from support.plain import Event, Var, names, painting_nothing, point


@pytest.fixture
def editor(neighbours):
    """A grid of one unit."""
    return painting_nothing(grid=Var("1000"))


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

    def test_the_corner_is_the_snapped_point(self, editor):
        mine = point(3, 4)
        editor.snapped = lambda x, y: mine
        editor._press(Event(0, 0))
        assert editor.clicks[0] is mine
        assert editor.cursor is mine

    def test_the_same_point_again_adds_nothing_but_repaints(self, editor):
        editor._press(Event(230, 150))
        editor._press(Event(232, 148))
        assert self.corners(editor) == [[3.0, 0.0]]
        assert names(editor) == ["redraw", "redraw"]

    def test_the_least_distance_from_the_last_corner_adds_a_corner(self, editor):
        editor.clicks = [point(3, 4)]
        editor.snapped = lambda x, y: np.array([np.nextafter(3.0, 4.0), 4.0])
        editor._press(Event(0, 0))
        assert len(editor.clicks) == 2

    def test_an_earlier_corner_may_be_clicked_again(self, editor):
        editor.clicks = [point(0, 0), point(3, 0)]
        editor._press(Event(200, 150))
        assert self.corners(editor) == [[0.0, 0.0], [3.0, 0.0], [0.0, 0.0]]

    def test_with_two_corners_the_first_one_is_a_third_and_closes_nothing(self, editor):
        editor.clicks = [point(0, 0), point(3, 0)]
        editor.close_line = lambda: pytest.fail("closed")
        editor._press(Event(205, 150))
        assert self.corners(editor) == [[0.0, 0.0], [3.0, 0.0], [0.0, 0.0]]

    @pytest.mark.parametrize("pixel", [(200, 150), (209, 150), (200, 141), (205, 157)])
    def test_with_three_corners_a_click_within_nine_pixels_of_the_first_closes(self, editor, pixel):
        editor.clicks = [point(0, 0), point(3, 0), point(3, 5)]
        closed = []
        editor.close_line = lambda: closed.append(len(editor.clicks))
        editor._press(Event(*pixel))
        assert closed == [3]
        assert self.corners(editor) == [[0.0, 0.0], [3.0, 0.0], [3.0, 5.0]]
        assert editor.calls == []
        assert editor.cursor.tolist() == editor.snapped(*pixel).tolist()

    @pytest.mark.parametrize("pixel", [(210, 150), (207, 156), (209.001, 150)])
    def test_beyond_nine_pixels_is_a_further_corner(self, editor, pixel):
        editor.clicks = [point(0, 0), point(3, 0), point(3, 5)]
        editor.close_line = lambda: pytest.fail("closed")
        editor._press(Event(*pixel))
        assert len(editor.clicks) == 4
        assert names(editor) == ["redraw"]

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

    def test_closing_uses_the_module_s_radius(self, editor, sketcher, monkeypatch):
        monkeypatch.setattr(sketcher, "SNAP_PX", 2)
        editor.clicks = [point(0, 0), point(3, 0), point(3, 5)]
        closed = []
        editor.close_line = lambda: closed.append(1)
        editor._press(Event(203, 150))
        editor._press(Event(202, 150))
        assert closed == [1]

    def test_a_closed_outline_is_added(self, editor):
        for pixel in ((200, 150), (230, 150), (230, 100), (203, 152)):
            editor._press(Event(*pixel))
        (outline,) = editor.sk["entities"]
        assert outline["points"] == [[0.0, 0.0], [3.0, 0.0], [3.0, 5.0]]
        assert editor.clicks == []


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

    def test_the_ends_are_the_snapped_points(self, editor):
        mine = point(3, 4)
        editor.snapped = lambda x, y: mine
        editor._press(Event(0, 0))
        assert editor.clicks[0] is mine
        assert editor.cursor is mine

    def test_a_second_click_on_the_first_end_is_ignored_but_repaints(self, editor):
        editor._press(Event(200, 150))
        editor._press(Event(203, 152))
        assert len(editor.clicks) == 1
        assert names(editor) == ["redraw", "redraw"]
        editor._press(Event(240, 150))
        assert len(editor.clicks) == 2

    @pytest.mark.parametrize("u, count", [(3.0, 1), (np.nextafter(3.0, 4.0), 2)])
    def test_the_least_distance_from_the_first_end_makes_a_second(self, editor, u, count):
        editor.clicks = [point(3, 4)]
        editor.snapped = lambda x, y: point(u, 4)
        editor._press(Event(0, 0))
        assert len(editor.clicks) == count

    def test_the_third_click_gives_its_point_as_the_width(self, editor):
        asked = []
        ends = editor.clicks = [point(0, 0), point(4, 0)]
        editor._slot = lambda *points: asked.append(points) or None
        editor._press(Event(300, 130))
        a, b, p = asked[0]
        assert a is ends[0] and b is ends[1]
        assert p is editor.cursor

    def test_the_ends_are_forgotten_before_the_slot_is_added(self, editor):
        ends = editor.clicks = [point(0, 0), point(4, 0)]
        seen = []
        editor.add = lambda e: seen.append((e, list(editor.clicks)))
        editor._slot = lambda a, b, p: "slot"
        editor._press(Event(300, 130))
        assert seen == [("slot", [])]
        assert editor.clicks is not ends and len(ends) == 2
        assert names(editor) == ["redraw"]

    def test_what_is_built_is_added_unasked(self, editor):
        editor.clicks = [point(0, 0), point(4, 0)]
        editor._ok = lambda e: pytest.fail("asked")
        editor._press(Event(300, 130))
        assert len(editor.sk["entities"]) == 1

    def test_a_third_click_on_the_axis_drops_the_slot_silently(self, editor):
        editor.clicks = [point(0, 0), point(4, 0)]
        editor._press(Event(320, 150))
        assert editor.clicks == []
        assert editor.sk["entities"] == []
        assert editor.sel is None
        assert editor.status.texts == []
        assert names(editor) == ["redraw"]
