"""Corners that were clicked: taken back one by one, kept where their outline is refused."""

import pytest
from support.application import status
from support.desk import field
from support.neighbours import circle, polygon
from tandrel.application.corner_by_corner import CornerByCorner

CIRCLE = circle(r=0.01)
CROSSED = [(0.02, 0.0), (0.04, 0.02), (0.04, 0.0), (0.02, 0.02)]


@pytest.fixture
def hands(habit):
    hands = habit(CornerByCorner, CIRCLE)
    hands.editor.scale = 5000.0
    hands.editor.select(0)
    return hands


def click(hands, tool, points):
    hands.editor.tool.set(tool)
    for point in points:
        hands.click(*hands.at(point))
    return [tuple(click) for click in hands.editor.clicks]


@pytest.mark.parametrize("tool, count", [("line", 3), ("slot", 2)])
def test_backspace_takes_back_the_last_corner_and_then_the_shape(hands, tool, count):
    editor = hands.editor
    clicks = click(hands, tool, CROSSED[:count])
    assert len(clicks) == count
    for left in range(count - 1, -1, -1):
        hands.key("BackSpace")
        assert [tuple(c) for c in editor.clicks] == clicks[:left]
        assert editor.sk["entities"] == [CIRCLE]
    # A key that is held goes on.
    hands.key("BackSpace")
    hands.key("BackSpace")
    assert editor.sk["entities"] == [CIRCLE]
    hands.key("Shift_L")
    hands.key("BackSpace")
    assert editor.sk["entities"] == []


def test_corners_that_were_taken_back_come_back(hands):
    editor = hands.editor
    for left, back in ((1, 2), (0, 3)):
        clicks = click(hands, "line", CROSSED[:3])
        while len(editor.clicks) > left:
            editor.take_back()
        assert [editor.give_back() for _ in range(back + 1)] == back * [True] + [False]
        assert [tuple(c) for c in editor.clicks] == clicks
        hands.key("Escape")
    for end in ("press", "Return", "Escape"):
        assert len(click(hands, "line", [*CROSSED[:3], (0.03, -0.01)])) == 4
        editor.take_back()
        hands.press(20, 20) if end == "press" else hands.key(end)
        assert not editor.give_back()
        hands.key("Escape")


def test_delete_and_fields_have_keys_of_their_own(hands):
    editor = hands.editor
    editor.add(polygon())
    click(hands, "line", CROSSED[:2])
    for widget in (field(editor, "radius"), editor.points_text):
        hands.key("BackSpace", widget)
        assert (len(editor.clicks), len(editor.sk["entities"])) == (2, 2)
    hands.key("Delete")
    assert (len(editor.clicks), len(editor.sk["entities"])) == (2, 1)


def test_a_refused_outline_keeps_its_corners_and_its_reason(hands):
    editor = hands.editor
    clicks = click(hands, "line", CROSSED)
    hands.key("Return")
    assert [tuple(c) for c in editor.clicks] == clicks
    assert editor.sk["entities"] == [CIRCLE]
    hands.motion(300, 300)
    hands.motion(310, 300)
    assert status(editor).startswith("Not added: the outline crosses itself")
    hands.key("BackSpace")
    hands.motion(300, 300)
    assert status(editor).startswith("x = ")
    hands.key("Return")
    assert [tuple(p) for p in editor.sk["entities"][1]["points"]] == clicks[:3]
    assert editor.clicks == []


@pytest.mark.parametrize(
    "tool, clicked, why",
    [
        ("line", CROSSED[:2], "an outline needs at least three corners"),
        ("slot", [(0.02, 0.0), (0.04, 0.0), (0.03, 0.0)], "the half width must be greater"),
    ],
)
def test_what_can_be_no_shape_yet_is_told_and_kept(hands, tool, clicked, why):
    editor = hands.editor
    clicks = click(hands, tool, clicked)
    if tool == "line":
        hands.key("Return")
    hands.motion(300, 300)
    assert [tuple(c) for c in editor.clicks] == clicks and len(clicks) == 2
    assert status(editor).startswith(f"Not added: {why}")
    hands.click(*hands.at((0.04, -0.01)))
    hands.key("Return")
    assert len(editor.sk["entities"]) == 2 and editor.clicks == []


def test_enter_in_a_field_closes_no_outline(hands):
    clicks = click(hands, "line", CROSSED[:3])
    fields = hands.editor.props.winfo_children()[0].winfo_children()
    hands.key("Return", next(w for w in fields if hasattr(w, "icursor")))
    assert [tuple(c) for c in hands.editor.clicks] == clicks


def test_ok_drops_no_corners(hands):
    editor = hands.editor
    clicks = click(hands, "slot", CROSSED[:2])
    editor.ok()
    hands.motion(300, 300)
    assert editor.winfo_exists() and [tuple(c) for c in editor.clicks] == clicks
    assert status(editor).startswith("Finish what you began to draw")
    hands.key("Escape")
    editor.ok()
    assert editor.result["entities"] == [CIRCLE]


def test_a_refusal_by_a_click_stays_too(hands):
    editor = hands.editor
    click(hands, "line", [*CROSSED, CROSSED[0]])
    hands.motion(300, 300)
    assert status(editor).startswith("Not added: ") and len(editor.clicks) == 4
    hands.key("Escape")
    hands.motion(300, 300)
    assert editor.clicks == [] and status(editor).startswith("x = ")
