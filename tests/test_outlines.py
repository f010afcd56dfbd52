"""Finishing shapes: adding them, closing an outline, abandoning what is being drawn."""

import numpy as np
import pytest
from support.neighbours import circle, polygon, rectangle
from support.operations import TOOLS
from support.plain import PlainEditor, names


@pytest.fixture
def editor(neighbours):
    editor = PlainEditor(entities=[circle()])
    editor.calls = editor.watch("redraw", "refresh_list")
    editor.tool.set("line")
    return editor


def corners(*points):
    return [np.array(p, float) for p in points]


TRIANGLE = corners((0, 0), (3, 0), (0, 2))


class TestAdd:
    def test_appends_selects_refreshes_and_repaints(self, editor):
        entities, shape, seen = editor.sk["entities"], rectangle(), []
        editor.refresh_list = lambda: seen.append((editor.sel, len(entities)))
        assert editor.add(shape) is None
        assert editor.sk["entities"] is entities
        assert entities[1] is shape
        assert seen == [(1, 2)]
        assert type(editor.sel) is int
        assert editor.calls == [("redraw", (), {})]

    @pytest.mark.parametrize("shape", [circle(r=-1.0), {}, None, {"type": "nonsense"}])
    def test_tests_nothing(self, editor, neighbours, shape):
        editor.add(shape)
        assert editor.sk["entities"][1] is shape
        assert neighbours.S.calls == []


class TestCloseLine:
    def test_makes_the_clicked_outline(self, editor):
        editor.clicks = list(TRIANGLE)
        assert editor.close_line() is None
        shape = editor.sk["entities"][1]
        assert list(shape.items()) == [
            ("type", "polygon"),
            ("points", [[0.0, 0.0], [3.0, 0.0], [0.0, 2.0]]),
            ("radius", 0.0),
        ]
        assert type(shape["points"]) is list
        assert all(type(p) is list for p in shape["points"])
        assert all(type(value) is float for p in shape["points"] for value in p)
        assert type(shape["radius"]) is float
        assert editor.sel == 1
        assert editor.clicks == []
        assert names(editor) == ["refresh_list", "redraw", "redraw"]
        assert editor.status.texts == []

    @pytest.mark.parametrize("count", [0, 1, 2])
    def test_needs_three_corners(self, editor, count):
        editor.clicks = clicks = TRIANGLE[:count]
        assert editor.close_line() is None
        assert editor.clicks is clicks and len(clicks) == count
        assert editor.calls == []
        assert editor.sk["entities"] == [circle()]

    @pytest.mark.parametrize("tool", [tool for tool in TOOLS if tool != "line"])
    def test_does_nothing_with_another_tool(self, editor, tool):
        editor.tool.set(tool)
        editor.clicks = clicks = list(TRIANGLE)
        assert editor.close_line() is None
        assert editor.clicks is clicks and len(clicks) == 3
        assert editor.calls == []

    def test_clears_the_clicks_before_it_asks_and_adds(self, editor):
        clicks = editor.clicks = list(TRIANGLE)
        seen = []
        editor._ok = lambda e: seen.append(("test", list(editor.clicks), e["points"])) or True
        editor.add = lambda e: seen.append(("add", list(editor.clicks), e["points"]))
        editor.redraw = lambda: seen.append(("redraw",))
        editor.close_line()
        points = [[0.0, 0.0], [3.0, 0.0], [0.0, 2.0]]
        assert seen == [("test", [], points), ("add", [], points), ("redraw",)]
        assert len(clicks) == 3 and editor.clicks is not clicks

    def test_tells_why_an_outline_is_refused(self, editor, neighbours):
        editor.sel = 0
        editor.clicks = corners((0, 0), (1, 0), (2, 0))
        assert editor.close_line() is None
        assert editor.status.texts == ["Not added: the outline has no area"]
        assert editor.sk["entities"] == [circle()]
        assert editor.clicks == []
        assert editor.sel == 0
        assert names(editor) == ["redraw"]

    @pytest.mark.parametrize(
        "error, why",
        [
            (ValueError("crosses {itself} at 5 mm"), "crosses {itself} at 5 mm"),
            (ValueError(), ""),
            (type("Crossing", (ValueError,), {"__str__": lambda self: "crossing"})(), "crossing"),
        ],
    )
    def test_translates_before_it_fills_in_the_reason(self, editor, neighbours, error, why):
        neighbours.tr.texts["Not added: {why}"] = "{why} - nicht hinzugefügt"
        neighbours.S.fail["outline"] = error
        editor.clicks = list(TRIANGLE)
        editor.close_line()
        assert editor.status.texts == [f"{why} - nicht hinzugefügt"]
        assert "Not added: {why}" in neighbours.tr.asked

    @pytest.mark.parametrize("error", [KeyError, TypeError])
    def test_a_shape_that_fails_otherwise_is_dropped_silently(self, editor, neighbours, error):
        neighbours.S.fail["outline"] = error("no")
        editor.clicks = list(TRIANGLE)
        editor.close_line()
        assert editor.status.texts == []
        assert editor.sk["entities"] == [circle()]
        assert editor.clicks == []
        assert names(editor) == ["redraw"]

    def test_a_refusal_that_cannot_be_repeated_is_silent(self, editor):
        editor._ok = lambda e: False
        editor.clicks = list(TRIANGLE)
        editor.close_line()
        assert editor.status.texts == []
        assert editor.sk["entities"] == [circle()]
        assert names(editor) == ["redraw"]

    def test_the_reason_is_asked_of_the_sketch_module_again(self, editor, neighbours):
        editor._ok = lambda e: False
        neighbours.S.fail["outline"] = ValueError("second thoughts")
        editor.clicks = list(TRIANGLE)
        editor.close_line()
        assert editor.status.texts == ["Not added: second thoughts"]
        (asked,) = neighbours.S.named("outline")
        assert asked[0] == polygon((0.0, 0.0), (3.0, 0.0), (0.0, 2.0))

    def test_other_errors_of_the_sketch_module_pass_with_the_clicks_cleared(
        self, editor, neighbours
    ):
        neighbours.S.fail["outline"] = RuntimeError("broken")
        editor.clicks = list(TRIANGLE)
        with pytest.raises(RuntimeError, match="broken"):
            editor.close_line()
        assert editor.clicks == []
        assert editor.sk["entities"] == [circle()]


class TestCancelDrawing:
    def test_forgets_corners_and_drag_and_repaints(self, editor):
        clicks = editor.clicks = list(TRIANGLE)
        editor.drag = {"kind": "new", "start": TRIANGLE[0]}
        seen = []
        editor.redraw = lambda: seen.append((editor.clicks, editor.drag))
        assert editor.cancel_drawing() is None
        assert seen == [([], None)]
        assert editor.clicks is not clicks and len(clicks) == 3
