"""The pointer handlers, tool by tool: what they change, what they call and in which order."""

import pytest
from support.neighbours import circle, rectangle
from support.operations import TOOLS
from support.plain import Event, Var, is_point, names, painting_nothing, point
from support.types import CARDS


@pytest.fixture
def editor(neighbours):
    """A grid of one unit."""
    return painting_nothing(grid=Var("1000"))


class TestMotion:
    def test_keeps_the_very_point_that_snapping_gives(self, editor):
        mine = point(3, 4)
        asked = []
        editor.snapped = lambda x, y: asked.append((x, y)) or mine
        editor._motion(Event(7, 8))
        assert editor.cursor is mine
        assert asked == [(7, 8)]

    @pytest.mark.parametrize("tool", TOOLS)
    def test_shows_coordinates_and_the_translated_hint_of_the_tool(
        self, editor, sketcher, neighbours, tool
    ):
        neighbours.tr.texts[sketcher.TOOL_TIPS[tool]] = "Tipp"
        editor.tool.set(tool)
        editor._motion(Event(230, 100))
        assert editor.status.texts == ["x = 3000 mm   y = 5000 mm     Tipp"]

    def test_names_the_axes_of_the_plane_in_space(self, editor):
        editor.plane.set("YZ")
        editor._motion(Event(230, 100))
        assert editor.status["text"].startswith("y = 3000 mm   z = 5000 mm     ")

    def test_repaints_last(self, editor):
        seen = []
        editor.redraw = lambda: seen.append((editor.cursor.tolist(), len(editor.status.texts)))
        editor._motion(Event(230, 100))
        assert seen == [([3.0, 5.0], 1)]

    def test_asks_for_the_units_once(self, editor, neighbours):
        editor.snap.set(False)
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


class TestDrag:
    def begin(self, editor, shape=None):
        editor.sk["entities"] = [shape or rectangle(1.0, 1.0, 3.0, 2.0), circle(9.0, 9.0)]
        editor.sel = 0
        orig = dict(editor.sk["entities"][0])
        editor.drag = {"kind": "move", "start": point(1, 1), "orig": orig}

    def test_moves_the_selected_shape_with_the_snapped_pointer(self, editor):
        self.begin(editor)
        entities = editor.sk["entities"]
        before = entities[0]
        assert editor._drag(Event(231, 98)) is None
        assert is_point(editor.cursor, 3.0, 5.0)
        assert editor.sk["entities"] is entities
        assert entities[0] == rectangle(3.0, 5.0, 3.0, 2.0)
        assert entities[0] is not before
        assert before == rectangle(1.0, 1.0, 3.0, 2.0)
        assert entities[1] == circle(9.0, 9.0)
        assert editor.calls == [("refresh_list", (), {"keep": True}), ("redraw", (), {})]

    def test_moves_the_copy_of_the_press_never_the_shape_as_it_is(self, editor):
        self.begin(editor, rectangle(0.1, 0.2, 0.3, 0.4))
        editor.snap.set(False)
        for step in range(50):
            editor._drag(Event(217 + 7 * step, 143 - 3 * step))
        shift = editor.cursor - editor.drag["start"]
        assert editor.sk["entities"][0]["x"] == 0.1 + shift[0]
        assert editor.sk["entities"][0]["y"] == 0.2 + shift[1]
        assert editor.drag["orig"] == rectangle(0.1, 0.2, 0.3, 0.4)

    def test_moves_through_the_editor(self, editor):
        self.begin(editor)
        asked = []
        editor._moved = lambda e, d: asked.append((e, d.tolist())) or {"type": "circle"}
        editor._drag(Event(231, 98))
        assert asked == [(editor.drag["orig"], [2.0, 4.0])]
        assert asked[0][0] is editor.drag["orig"]
        assert editor.sk["entities"][0] == {"type": "circle"}

    @pytest.mark.parametrize(
        "drag, sel",
        [(None, 0), ({}, 0), ({"kind": "new", "start": point(1, 1)}, 0)]
        + [({"kind": "move", "start": point(1, 1), "orig": circle()}, None)],
    )
    def test_without_a_move_or_a_selection_only_follows_the_pointer(self, editor, drag, sel):
        self.begin(editor)
        editor.drag, editor.sel = drag, sel
        editor._drag(Event(231, 98))
        assert editor.sk["entities"][0] == rectangle(1.0, 1.0, 3.0, 2.0)
        assert is_point(editor.cursor, 3.0, 5.0)
        assert names(editor) == ["redraw"]
        assert editor.drag is drag

    def test_a_stale_selection_is_an_error(self, editor):
        self.begin(editor)
        editor.sel = 2
        with pytest.raises(IndexError):
            editor._drag(Event(231, 98))

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
    @pytest.mark.parametrize("drag", [None, {}])
    def test_without_a_drag_does_nothing_at_all(self, editor, drag):
        editor.drag = drag
        editor.snapped = lambda x, y: pytest.fail("snapped")
        assert editor._release(Event(231, 98)) is None
        assert editor.drag is drag
        assert editor.calls == []

    @pytest.mark.parametrize("tool", [card.tool for card in CARDS if card.tool.dragged])
    def test_adds_the_shape_from_press_to_release(self, editor, tool):
        editor.tool.set(tool.name)
        editor._press(Event(210, 140))
        editor.cursor = cursor = point(7, 7)
        assert editor._release(Event(231, 98)) is None
        assert editor.sk["entities"] == [editor._from_drag(point(1.0, 1.0), point(3.0, 5.0))]
        assert editor.sel == 0
        assert editor.drag is None
        assert editor.cursor is cursor
        assert names(editor) == ["refresh_list", "redraw", "redraw"]

    def test_builds_tests_and_adds_through_the_editor_and_then_ends_the_drag(self, editor):
        steps = []
        shape = circle()
        editor.drag = drag = {"kind": "new", "start": point(1, 1)}
        editor._from_drag = lambda a, b: steps.append(("build", a, b.tolist())) or shape
        editor._ok = lambda e: steps.append(("test", e)) or True
        editor.add = lambda e: steps.append(("add", e, editor.drag))
        editor.redraw = lambda: steps.append(("redraw", editor.drag))
        editor._release(Event(231, 98))
        assert steps == [
            ("build", drag["start"], [3.0, 5.0]),
            ("test", shape),
            ("add", shape, drag),
            ("redraw", None),
        ]
        assert steps[0][1] is drag["start"]

    def test_after_a_move_the_form_is_shown_anew_and_nothing_else_is_done(self, editor):
        editor.sk["entities"] = [rectangle()]
        editor.sel = 0
        editor.drag = {"kind": "move", "start": point(1, 1), "orig": rectangle()}
        seen = []
        editor.show_props = lambda: seen.append(editor.drag is None)
        editor._ok = editor.add = editor._from_drag = lambda *args: pytest.fail("asked")
        editor._release(Event(231, 98))
        assert seen == [False]
        assert editor.drag is None
        assert editor.sk["entities"] == [rectangle()]
        assert names(editor) == ["redraw"]

    def test_another_kind_of_drag_just_ends(self, editor):
        editor.drag = {"kind": "spin"}
        editor.add = lambda e: pytest.fail("added")
        editor._release(Event(231, 98))
        assert editor.drag is None
        assert names(editor) == ["redraw"]

    def test_the_tool_of_the_release_decides_the_shape(self, editor):
        editor.tool.set("rectangle")
        editor._press(Event(210, 140))
        editor.tool.set("circle")
        editor._release(Event(231, 98))
        assert editor.sk["entities"][0]["type"] == "circle"

    def test_a_drag_that_cannot_be_finished_stays(self, editor):
        def fail(a, b):
            raise RuntimeError("broken")

        editor.drag = drag = {"kind": "new", "start": point(0, 0)}
        editor._from_drag = fail
        with pytest.raises(RuntimeError):
            editor._release(Event(230, 100))
        assert editor.drag is drag
        assert editor.calls == []
