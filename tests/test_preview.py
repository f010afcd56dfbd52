"""The shape being drawn, and the dot where a click would land."""

import numpy as np
import pytest
from support.neighbours import circle, outline_points, slot
from support.operations import DRAG_TOOLS, TOOLS
from support.plain import PlainEditor, Var, point
from support.types import CARDS

ORANGE = "#E8833A"
DASHED = {"fill": "", "outline": ORANGE, "width": 2, "dash": (5, 3)}


@pytest.fixture
def editor(neighbours):
    """400 x 300 pixels, 40 pixels to the unit, the pointer at (1, 0.5)."""
    return PlainEditor(scale=40.0, cursor=np.array([1.0, 0.5]))


def previewed(editor):
    """The drawing calls of one preview."""
    del editor.canvas.calls[:]
    assert editor._preview() is None
    return editor.canvas.calls


def dot(x, y):
    return ("create_oval", (x - 2, y - 2, x + 2, y + 2), {"fill": ORANGE, "outline": ""})


def ring(x, y):
    return ("create_oval", (x - 3, y - 3, x + 3, y + 3), {"outline": ORANGE})


def dashed_outline(editor, e):
    coordinates = tuple(value for p in outline_points(e) for value in editor.to_screen(p))
    return ("create_polygon", coordinates, DASHED)


DOT = dot(240.0, 130.0)


class TestDot:
    @pytest.mark.parametrize("tool", TOOLS)
    def test_is_all_there_is_while_nothing_is_drawn(self, editor, tool):
        editor.tool.set(tool)
        assert previewed(editor) == [DOT]

    @pytest.mark.parametrize("drag", [None, {}, {"start": None}, {"kind": "move", "start": None}])
    def test_is_all_there_is_while_no_new_shape_is_dragged(self, editor, drag):
        editor._from_drag = lambda a, b: pytest.fail("built")
        editor.tool.set("rectangle")
        editor.drag = drag
        assert previewed(editor) == [DOT]


def circle_dragged(editor):
    editor.tool.set("circle")
    editor.drag = {"kind": "new", "start": point(0, 0)}


def slot_clicked(editor):
    editor.tool.set("slot")
    editor.clicks = [point(0, 0), point(3, 0)]


BEING_DRAWN = [circle_dragged, slot_clicked]


class TestShapeFromADrag:
    @pytest.mark.parametrize("card", [card for card in CARDS if card.tool.dragged])
    def test_is_a_dashed_outline_below_the_dot(self, editor, card):
        """The shape that the release would add."""
        editor.tool.set(card.tool.name)
        editor.sides.set("5")
        editor.drag = {"kind": "new", "start": point(-1.0, 2.0)}
        shape = card.drawn((-1.0, 2.0), (1.0, 0.5), sides=5)
        assert previewed(editor) == [dashed_outline(editor, shape), DOT]

    def test_is_built_through_the_editor_from_start_to_cursor(self, editor):
        asked = []
        editor._from_drag = lambda a, b: asked.append((a, b)) or circle(2.0, 1.0, 0.5)
        editor.drag = {"kind": "new", "start": point(0, 0)}
        assert previewed(editor) == [dashed_outline(editor, circle(2.0, 1.0, 0.5)), DOT]
        assert asked[0][0] is editor.drag["start"]
        assert asked[0][1] is editor.cursor

    @pytest.mark.parametrize("drawn", BEING_DRAWN)
    def test_no_shape_is_not_asked_for_its_validity(self, editor, drawn):
        drawn(editor)
        editor._from_drag = editor._slot = lambda *points: None
        editor._ok = lambda e: pytest.fail("asked")
        assert previewed(editor) == [DOT]

    @pytest.mark.parametrize("drawn", BEING_DRAWN)
    def test_an_invalid_shape_is_not_shown(self, editor, drawn):
        drawn(editor)
        editor._ok = lambda e: False
        assert previewed(editor) == [DOT]

    @pytest.mark.parametrize("error", [ValueError, KeyError, TypeError])
    def test_a_shape_that_the_sketch_module_refuses_is_not_shown(self, editor, neighbours, error):
        editor.tool.set("circle")
        editor.drag = {"kind": "new", "start": point(0, 0)}
        neighbours.S.fail["outline"] = error("no")
        assert previewed(editor) == [DOT]
        assert editor.status.texts == []


class TestOutlineCornerByCorner:
    @pytest.fixture
    def editor(self, editor):
        editor.tool.set("line")
        return editor

    def test_one_corner(self, editor):
        editor.clicks = [point(0, 0)]
        line = ("create_line", (200.0, 150.0, 240.0, 130.0), {"fill": ORANGE, "width": 2})
        assert previewed(editor) == [line, ring(200.0, 150.0), DOT]

    def test_several_corners_stay_open(self, editor):
        editor.clicks = [point(0, 0), point(2, 0), point(2, -1)]
        coordinates = (200.0, 150.0, 280.0, 150.0, 280.0, 190.0, 240.0, 130.0)
        assert previewed(editor) == [
            ("create_line", coordinates, {"fill": ORANGE, "width": 2}),
            ring(200.0, 150.0),
            ring(280.0, 150.0),
            ring(280.0, 190.0),
            DOT,
        ]

    @pytest.mark.parametrize("tool", ["select", *DRAG_TOOLS])
    def test_corners_show_with_the_line_tool_only(self, editor, tool):
        editor.tool.set(tool)
        editor.clicks = [point(0, 0)]
        assert previewed(editor) == [DOT]


class TestSlot:
    @pytest.fixture
    def editor(self, editor):
        editor.tool.set("slot")
        return editor

    def test_one_end_has_a_dashed_line_to_the_pointer(self, editor):
        editor.clicks = [point(0, 0)]
        editor._slot = lambda a, b, p: pytest.fail("built")
        options = {"fill": ORANGE, "width": 2, "dash": (5, 3)}
        line = ("create_line", (200.0, 150.0, 240.0, 130.0), options)
        assert previewed(editor) == [line, DOT]

    def test_two_ends_have_the_whole_outline(self, editor):
        editor.clicks = [point(0, 0), point(3, 0)]
        expected = dashed_outline(editor, slot(0.0, 0.0, 3.0, 0.0, 0.5))
        assert previewed(editor) == [expected, DOT]

    def test_is_built_through_the_editor_from_the_first_two_clicks(self, editor):
        asked = []
        editor._slot = lambda *points: asked.append(points) or circle()
        editor.clicks = [point(0, 0), point(3, 0), point(4, 4)]
        assert previewed(editor) == [dashed_outline(editor, circle()), DOT]
        a, b, c = asked[0]
        assert (a is editor.clicks[0], b is editor.clicks[1], c is editor.cursor) == (True,) * 3


class TestTogether:
    def test_the_steps_are_independent(self, editor):
        editor.tool.set("line")
        editor.clicks = [point(0, 0)]
        editor.drag = {"kind": "new", "start": point(0, 0)}
        editor._from_drag = lambda a, b: circle()
        names = [name for name, _, _ in previewed(editor)]
        assert names == ["create_polygon", "create_line", "create_oval", "create_oval"]

    def test_the_tool_is_read_once(self, editor):
        read = []

        class Counted(Var):
            def get(self):
                read.append(1)
                return super().get()

        for tool, clicks in (("line", 1), ("slot", 1), ("slot", 2), ("select", 0)):
            del read[:]
            editor.tool = Counted(tool)
            editor.clicks = [point(k, 0) for k in range(clicks)]
            editor._preview()
            assert len(read) == 1

    def test_every_point_goes_through_to_screen(self, editor):
        editor.to_screen = lambda p: (p[0] * 10 + 1000, p[1] * 10 + 2000)
        editor.tool.set("line")
        editor.clicks = [point(0, 0)]
        line = ("create_line", (1000, 2000, 1010, 2005), {"fill": ORANGE, "width": 2})
        assert previewed(editor) == [line, ring(1000, 2000), dot(1010, 2005)]
        editor.tool.set("slot")
        assert previewed(editor)[0][1] == (1000, 2000, 1010, 2005)
        editor.clicks.append(point(3, 0))
        assert previewed(editor)[0][1][:2] == (1000 - 5, 2000 - 5)

    def test_nothing_of_the_editor_changes(self, editor):
        editor.tool.set("line")
        editor.drag = {"kind": "new", "start": point(0, 0)}
        editor.clicks = [point(0, 0), point(2, 0)]
        before, drag, clicks = dict(vars(editor)), dict(editor.drag), list(editor.clicks)
        editor._preview()
        assert dict(vars(editor)) == before
        assert (editor.drag, editor.sk) == (drag, {"entities": []})
        assert list(map(id, editor.clicks)) == list(map(id, clicks))

    def test_is_the_last_step_of_a_repaint(self, editor):
        editor.tool.set("rectangle")
        editor.drag = {"kind": "new", "start": point(0, 0)}
        editor.sk["entities"] = [circle()]
        editor.redraw()
        names = [name for name, _, _ in editor.canvas.drawn]
        assert names[-3:] == ["create_polygon", "create_polygon", "create_oval"]
