"""The whole dialog under a user's hands: every tool, picking and moving, OK and Cancel."""

import copy
from tkinter import ttk

import numpy as np
import pytest
from support import canvas as shown
from support.desk import Desk, entry_of, of_class
from support.events import run_while, type_text
from support.neighbours import circle, one_of_each, polygon, rectangle
from support.types import CARDS
from tandrel.gui import widgets

pytestmark = pytest.mark.usefixtures("millimetres_in_english")

STEP = 0.001


def on(*grid_lines):
    """Plane coordinates of grid lines a millimetre apart, as snapping gives them."""
    return tuple(k * STEP for k in grid_lines)


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
    def test_every_type(self, drawing):
        type_text(of_class(drawing.editor, ttk.Spinbox)[0], "5")
        for card in CARDS:
            self.draw(drawing, card)
            drawing.hands.key("Delete")
            assert drawing.entities == [] and drawing.rows() == []

    def draw(self, drawing, card):
        tool, (first, *others) = card.tool, card.tool.gesture
        drawing.tool(tool.name)
        if tool.dragged:
            drawing.stroke(first, (0, 0), *others)
        else:
            drawing.click(first, *others[:-1])
            assert len(drawing.editor.clicks) == len(others)
            assert drawing.entities == []
            # An outline is closed on its first corner.
            drawing.click(others[-1], *([first] if tool.name == "line" else []))
        expected = card.drawn(*(on(*point) for point in tool.gesture), sides=5)
        assert drawing.entities == [expected]
        assert list(map(type, drawing.entities[0].values())) == list(map(type, expected.values()))
        assert drawing.rows() == [f"1. {card.label}"]
        assert drawing.sizes() == [tool.size]
        assert drawing.selected() == 0
        assert drawing.editor.clicks == []


class TestSnapping:
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
    def test_every_type_is_moved_by_whole_grid_steps(self, desk):
        one = desk(one_of_each())
        for number, card in enumerate(CARDS):
            expected = copy.deepcopy(one.entities)
            u, v = (round(c * 1000) for c in card.place)
            one.stroke((u, v), (u + 4, v - 3), (u + 1, v))
            d = np.array(on(u + 1, v)) - np.array(on(u, v))
            assert one.entities[number] != expected[number]
            expected[number] = one.editor._moved(expected[number], d)
            assert one.entities == expected


class TestAccepting:
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
