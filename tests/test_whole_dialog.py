"""The whole dialog under a user's hands: every tool, picking and moving, OK and Cancel."""

import copy
from tkinter import ttk

import numpy as np
import pytest
from support import canvas as shown
from support.desk import Desk, entry_of, of_class
from support.events import run_while, type_text
from support.neighbours import PLACES, circle, one_of_each, polygon, rectangle, regular
from support.operations import DRAG_TOOLS
from tandrel.gui import widgets

pytestmark = pytest.mark.usefixtures("millimetres_in_english")

STEP = 0.001


def on(*grid_lines):
    """Plane coordinates of grid lines a millimetre apart, as snapping gives them."""
    return tuple(k * STEP for k in grid_lines)


def close_as_the_window_manager_does(window):
    """Follow the protocol: the window's own handler if it has one, else it is destroyed."""
    handler = window.protocol("WM_DELETE_WINDOW")
    if handler:
        window.tk.eval(handler)
    else:
        window.destroy()


@pytest.fixture(params=[0, 5, -3], ids=["fitted", "zoomed in", "zoomed out"])
def drawing(request, desk):
    """An empty sketch in different views, reached with the wheel and the right button."""
    one = desk()
    middle = one.editor.canvas.winfo_width() // 2, one.editor.canvas.winfo_height() // 2
    for _ in range(abs(request.param)):
        one.hands.wheel(*middle, request.param)
    if request.param:
        one.hands.stroke((200, 200), (215, 190), (237, 179), button=3)
    return one


class TestDrawing:
    def test_a_rectangle(self, drawing):
        drawing.tool("rectangle")
        drawing.stroke((-30, -20), (0, 0), (25, 15))
        x, y, right, top = on(-30, -20, 25, 15)
        assert drawing.entities == [rectangle(x, y, right - x, top - y)]
        assert drawing.rows() == ["1. Rectangle"]
        assert drawing.sizes() == ["55 mm x 35 mm"]
        assert drawing.selected() == 0

    def test_a_circle(self, drawing):
        drawing.tool("circle")
        drawing.stroke((-20, -15), (-17, -11), (4, 17))
        (u, v), end = on(-20, -15), on(4, 17)
        expected = circle(u, v, float(np.linalg.norm(np.array(end) - np.array((u, v)))))
        assert drawing.entities == [expected]
        assert drawing.rows() == ["1. Circle"]
        assert drawing.sizes() == ["diameter 80 mm"]

    def test_a_regular_polygon(self, drawing):
        sides = of_class(drawing.editor, ttk.Spinbox)[0]
        type_text(sides, "5")
        drawing.tool("regular")
        drawing.stroke((10, 10), (10, 20), (10, 35))
        u, v, end = on(10, 10, 35)
        assert drawing.entities == [regular(u, v, end - v, 5, 90.0)]
        assert type(drawing.entities[0]["n"]) is int
        assert drawing.rows() == ["1. Polygon"]
        assert drawing.sizes() == ["5 sides, 50 mm across corners"]

    def test_a_slot(self, drawing):
        drawing.tool("slot")
        drawing.click((-30, -20), (20, -20))
        assert len(drawing.editor.clicks) == 2
        assert drawing.entities == []
        drawing.click((31, -10))
        x1, y1, x2, p = on(-30, -20, 20, -10)
        (made,) = drawing.entities
        assert (made["x1"], made["y1"], made["x2"], made["y2"]) == (x1, y1, x2, y1)
        assert made["r"] == abs((x2 - x1) * (p - y1)) / (x2 - x1)
        assert drawing.sizes() == ["70 mm x 20 mm"]
        assert drawing.editor.clicks == []

    CORNERS = [(-30, -20), (30, -20), (30, 10), (-10, 10), (-10, 25), (-30, 25)]

    def outline(self):
        return polygon(*(on(*corner) for corner in self.CORNERS))

    def test_an_outline_closed_on_its_first_corner(self, drawing):
        drawing.tool("line")
        drawing.click(*self.CORNERS)
        assert drawing.entities == []
        drawing.click(self.CORNERS[0])
        assert drawing.entities == [self.outline()]
        assert drawing.rows() == ["1. Outline"]
        assert drawing.sizes() == ["6 corners"]
        assert drawing.selected() == 0

    def test_an_outline_closed_by_return(self, drawing):
        drawing.tool("line")
        drawing.click(*self.CORNERS)
        drawing.hands.key("Return")
        assert drawing.entities == [self.outline()]

    def test_an_outline_closed_by_a_double_click(self, drawing):
        drawing.tool("line")
        drawing.click(*self.CORNERS[:-1])
        drawing.hands.double_click(*drawing.pixels(self.CORNERS[-1])[0])
        assert drawing.entities == [self.outline()]
        assert drawing.editor.clicks == []

    def test_an_outline_abandoned_by_escape(self, drawing):
        drawing.tool("line")
        drawing.click(*self.CORNERS)
        drawing.hands.key("Escape")
        assert drawing.editor.clicks == []
        assert drawing.editor.winfo_exists()
        drawing.hands.key("Return")
        assert drawing.entities == []

    def test_an_outline_abandoned_by_another_tool(self, drawing):
        drawing.tool("line")
        drawing.click(*self.CORNERS)
        drawing.tool("slot")
        assert drawing.editor.clicks == []
        drawing.tool("line")
        drawing.hands.key("Return")
        assert drawing.entities == []

    def test_an_outline_that_crosses_itself(self, drawing):
        drawing.tool("line")
        drawing.click((-30, -20), (30, 20), (30, -20), (-30, 20))
        drawing.hands.key("Return")
        assert drawing.entities == []
        assert drawing.status().startswith("Not added: ")
        assert len(drawing.status()) > len("Not added: ")
        assert drawing.editor.clicks == []

    def test_a_drag_without_way_leaves_nothing(self, drawing):
        for tool in DRAG_TOOLS:
            drawing.tool(tool)
            drawing.stroke((20, 20), (30, 30), (20, 20))
        assert drawing.entities == []
        assert drawing.editor.drag is None

    def test_the_status_line_follows_the_pointer(self, drawing, sketcher):
        drawing.tool("slot")
        drawing.move((-25, 15))
        assert drawing.status() == "x = -25 mm   y = 15 mm     " + sketcher.TOOL_TIPS["slot"]


class TestSnapping:
    def test_a_second_circle_is_concentric_though_off_the_grid(self, desk):
        hole = circle(0.01234, 0.00567, 0.01)
        one = desk({"entities": [hole]})
        one.tool("circle")
        one.hands.wheel(300, 200, 1)
        x, y = one.hands.at((hole["xc"], hole["yc"]))
        one.hands.stroke((x + 5, y - 4), one.hands.at(on(30, 20)))
        assert (one.entities[1]["xc"], one.entities[1]["yc"]) == (0.01234, 0.00567)

    def test_an_outline_takes_corners_of_a_rectangle(self, desk):
        box = rectangle(0.0101, 0.0202, 0.0303, 0.0104)
        one = desk({"entities": [box]})
        one.tool("line")
        corners = [(0.0101, 0.0202), (0.0101 + 0.0303, 0.0202), (0.0101, 0.0202 + 0.0104)]
        for corner in corners:
            x, y = one.hands.at(corner)
            one.hands.click(x - 3, y + 3)
        one.hands.key("Return")
        assert one.entities[1] == polygon(*corners)

    def test_without_the_grid_the_pointer_itself_counts(self, desk):
        one = desk()
        button = of_class(one.editor, ttk.Checkbutton)[0]
        button.invoke()
        one.tool("rectangle")
        one.hands.stroke((101, 103), (333, 251))
        first, last = one.editor.to_world(101, 103), one.editor.to_world(333, 251)
        (made,) = one.entities
        assert (made["x"], made["y"]) == (first[0], last[1])
        assert (made["w"], made["h"]) == (last[0] - first[0], first[1] - last[1])

    def test_the_typed_grid_counts(self, desk):
        one = desk()
        entry = entry_of(one.editor, one.editor.grid)
        type_text(entry, "10")
        one.hands.key("Return", entry)
        grid = shown.of_kind(one.editor.canvas, "line", fill=widgets.PAL["bg"])
        assert grid[1].coords[0] - grid[0].coords[0] == pytest.approx(0.01 * one.editor.scale)
        one.tool("rectangle")
        one.stroke((-28, -22), (33, 19))
        assert one.entities[0]["x"] == -3 * 0.01
        assert one.entities[0]["w"] == 3 * 0.01 - -3 * 0.01


class TestEditing:
    def test_a_shape_is_picked_and_dragged(self, desk):
        one = desk({"entities": [rectangle(-0.03, -0.02, 0.06, 0.04), circle(0.0, 0.0, 0.01)]})
        assert one.editor.tool.get() == "select"
        one.stroke((20, 3), (25, 8), (41, 15))
        du, dv = np.array(on(41, 15)) - np.array(on(20, 3))
        expected = rectangle(-0.03 + du, -0.02 + dv, 0.06, 0.04)
        assert one.entities == [expected, circle(0.0, 0.0, 0.01)]
        assert one.selected() == 0
        assert one.field("x").get() == widgets.num_text(
            widgets.units().from_si(-0.03 + du, "length")
        )

    def test_the_smaller_of_two_nested_shapes_is_picked(self, desk):
        one = desk({"entities": [rectangle(-0.03, -0.02, 0.06, 0.04), circle(0.0, 0.0, 0.01)]})
        one.click((3, 4))
        assert one.selected() == 1
        one.click((24, 14))
        assert one.selected() == 0
        one.click((45, 15))
        assert one.selected() is None

    @pytest.mark.parametrize("number", range(len(PLACES)))
    def test_every_type_is_moved_by_whole_grid_steps(self, desk, number):
        sketch = one_of_each()
        one = desk(sketch)
        u, v = (round(c * 1000) for c in PLACES[number])
        one.stroke((u, v), (u + 4, v - 3), (u + 5, v - 3))
        expected = copy.deepcopy(sketch["entities"])
        d = np.array(on(u + 5, v - 3)) - np.array(on(u, v))
        expected[number] = one.editor._moved(expected[number], d)
        assert one.entities == expected
        assert one.entities != sketch["entities"]

    def test_the_list_selects_too(self, desk):
        one = desk(one_of_each())
        one.editor.list.selection_set("3")
        one.editor.update()
        assert one.selected() == 3
        one.editor.list.selection_set(())
        one.editor.update()
        assert one.selected() is None

    @pytest.mark.parametrize("way", ["Delete", "BackSpace", "button"])
    def test_the_selected_shape_is_deleted(self, desk, way):
        one = desk(one_of_each())
        one.click((3, 22))
        if way == "button":
            one.button("Delete").invoke()
        else:
            one.hands.key(way)
        expected = one_of_each()["entities"]
        del expected[1]
        assert one.entities == expected
        assert one.selected() is None
        assert [row.split(".")[0] for row in one.rows()] == [
            str(n + 1) for n in range(len(expected))
        ]

    def test_nothing_is_deleted_without_a_selection(self, desk):
        one = desk(one_of_each())
        one.hands.key("Delete")
        assert one.entities == one_of_each()["entities"]

    def test_the_caller_s_sketch_is_never_touched(self, open_editor, send):
        sketch = one_of_each()
        editor = open_editor(sketch)
        one = Desk(editor, send(editor))
        one.stroke((3, 22), (13, 22))
        one.fill_in("r", "7")
        one.hands.key("Return", one.field("r"))
        one.editor.delete()
        one.tool("circle")
        one.stroke((-30, -10), (-20, -10))
        assert sketch == one_of_each()


class TestAccepting:
    SKETCH = {"plane": "XZ", "offset": 0.01, "entities": [circle(0.0, 0.0, 0.02)], "note": [1]}

    def test_ok_returns_the_edited_copy(self, open_editor, send):
        sketch = copy.deepcopy(self.SKETCH)
        editor = open_editor(sketch)
        one = Desk(editor, send(editor))

        def edit(editor):
            one.editor.plane.set("YZ")
            one.editor.offset.set("2.5")
            one.stroke((3, 4), (13, 4))
            one.button("OK").invoke()

        result = run_while(editor, edit)
        expected = {**self.SKETCH, "plane": "YZ", "offset": 0.0025}
        expected["entities"] = [circle(13 * STEP - 3 * STEP, 0.0, 0.02)]
        assert result == expected
        assert result is not sketch and result is editor.sk
        assert sketch == self.SKETCH

    def test_a_bad_offset_keeps_the_dialog_open(self, open_editor, send):
        editor = open_editor(self.SKETCH)
        one = Desk(editor, send(editor))

        def edit(editor):
            one.editor.offset.set("far")
            one.button("OK").invoke()
            assert one.status() == "The offset must be a number."
            assert editor.winfo_exists()
            one.editor.offset.set("1")
            one.button("OK").invoke()

        assert run_while(editor, edit)["offset"] == 0.001

    def test_a_rejected_sketch_keeps_the_dialog_open(self, open_editor, send, sketcher):
        editor = open_editor({"entities": [circle(0.0, 0.0, 0.02), circle(0.0, 0.0, -1.0)]})
        one = Desk(editor, send(editor))

        def edit(editor):
            messages = sketcher.S.check(editor.sk)
            assert messages
            one.button("OK").invoke()
            assert one.status() == "; ".join(messages)
            editor.select(1)
            editor.canvas.focus_force()
            editor.delete()
            one.button("OK").invoke()

        assert run_while(editor, edit)["entities"] == [circle(0.0, 0.0, 0.02)]

    @pytest.mark.parametrize("way", ["Cancel", "window"])
    def test_cancel_and_close_return_none(self, open_editor, send, way):
        sketch = copy.deepcopy(self.SKETCH)
        editor = open_editor(sketch)
        one = Desk(editor, send(editor))

        def edit(editor):
            one.stroke((3, 4), (13, 4))
            assert one.entities != sketch["entities"]
            if way == "Cancel":
                one.button("Cancel").invoke()
            else:
                close_as_the_window_manager_does(editor)

        assert run_while(editor, edit) is None
        assert sketch == self.SKETCH
