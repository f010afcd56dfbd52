"""The size of what is being drawn, beside the pointer."""

import pytest

from tandrel.application.sizes_while_drawing import COLOUR, SizesWhileDrawing
from tandrel.gui import widgets


@pytest.fixture
def hands(habit):
    hands = habit(SizesWhileDrawing)
    hands.editor.fit()
    return hands


def labels(editor):
    canvas = editor.canvas
    items = [i for i in canvas.find_all() if canvas.type(i) == "text"]
    return [i for i in items if canvas.itemcget(i, "fill") == COLOUR]


def text(editor):
    return [editor.canvas.itemcget(i, "text") for i in labels(editor)]


DRAGS = {
    "rectangle": ((0.02, -0.01), "20 mm x 10 mm"),
    "circle": ((0.03, 0.04), "diameter 100 mm"),
    "regular": ((0.0, 0.02), "6 sides, 40 mm across corners"),
}


def test_a_drag_shows_the_size_of_its_shape(hands):
    editor = hands.editor
    for tool, (end, size) in DRAGS.items():
        editor.tool.set(tool)
        hands.press(*hands.at((0.0, 0.0)))
        assert size not in text(editor)
        hands.drag(*hands.at(end))
        assert text(editor) == [size]
        hands.release(*hands.at(end))
        assert len(editor.sk["entities"]) == 1
        editor.delete()
        assert text(editor) == []


CLICKS = [
    ("line", [(0.0, 0.0)], (0.03, 0.03), "42.4264 mm   45°"),
    ("line", [(0.0, 0.0), (0.02, 0.0)], (0.02, -0.01), "10 mm   -90°"),
    ("slot", [(0.0, 0.0)], (0.03, 0.0), "30 mm   0°"),
    ("slot", [(0.0, 0.0), (0.03, 0.0)], (0.0, 0.01), "50 mm x 20 mm"),
]


def test_clicks_show_the_size_of_what_comes_next(hands):
    editor = hands.editor
    for tool, clicks, pointer, size in CLICKS:
        editor.tool.set(tool)
        for click in clicks:
            hands.click(*hands.at(click))
        assert text(editor) == []
        hands.motion(*hands.at(pointer))
        assert text(editor) == [size]
        editor.cancel_drawing()
        assert text(editor) == []


def test_sizes_are_in_display_units(hands):
    widgets.set_units("in")
    hands.editor.tool.set("line")
    hands.click(*hands.at((0.0, 0.0)))
    hands.editor.snap.set(False)
    hands.editor.cursor = hands.editor.cursor + [0.0254, 0.0]
    hands.editor.redraw()
    assert text(hands.editor) == ["1 in   0°"]


def test_the_size_is_in_sight_and_never_under_the_pointer(hands):
    editor = hands.editor
    canvas = editor.canvas
    width, height = canvas.winfo_width(), canvas.winfo_height()
    editor.tool.set("rectangle")
    editor.scale /= 1e9  # long numbers
    hands.press(width // 2, height // 2 + 1)
    for x in (-50, 0, 3, width // 3, width - 3, width - 1, width + 50):
        for y in (-50, 0, 3, height // 3, height - 3, height - 1, height + 50):
            hands.drag(x, y)
            (label,) = labels(editor)
            left, top, right, bottom = canvas.bbox(label)
            assert 0 <= left < right <= width and 0 <= top < bottom <= height
            assert not (left - 2 <= x <= right + 2 and top - 2 <= y <= bottom + 2)


def test_the_size_hides_nothing_of_what_is_drawn(hands):
    editor = hands.editor
    editor.tool.set("line")
    hands.click(*hands.at((0.0, 0.0)))
    for u, v in ((0.02, 0.02), (-0.02, 0.02), (-0.02, -0.02), (0.02, -0.02)):
        x, y = hands.at((u, v))
        hands.motion(x, y)
        left, top, right, bottom = editor.canvas.bbox(*labels(editor))
        assert (right < x) == (u < 0) and (bottom < y) == (v > 0)
        assert (left > x) == (u > 0) and (top > y) == (v < 0)


def test_the_width_of_a_slot_stands_outside_it(hands):
    editor = hands.editor
    editor.tool.set("slot")
    for end in ((-0.02, -0.01), (0.02, 0.01)):
        hands.click(*hands.at(end))
    x, y = hands.at((0.01, 0.02))
    hands.motion(x, y)
    left, top, right, bottom = editor.canvas.bbox(*labels(editor))
    assert right < x and bottom < y
