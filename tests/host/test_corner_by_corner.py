"""Corners that were clicked: taken back one by one, kept where their outline is refused."""

import pytest
from support.events import Send
from tandrel.application.corner_by_corner import CornerByCorner
from tandrel.gui import widgets

CIRCLE = {"type": "circle", "xc": 0.0, "yc": 0.0, "r": 0.01}
CROSSED = [(0.02, 0.0), (0.04, 0.02), (0.04, 0.0), (0.02, 0.02)]


@pytest.fixture
def hands(open_editor, root):
    widgets.install(root)
    editor = open_editor({"entities": [dict(CIRCLE)]}, CornerByCorner)
    editor.geometry("900x700")
    editor.update()
    editor.scale = 5000.0
    editor.select(0)
    return Send(editor)


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
    hands.key("BackSpace")
    assert editor.sk["entities"] == []


def test_delete_and_fields_have_keys_of_their_own(hands):
    editor = hands.editor
    editor.add({"type": "polygon", "points": [[0, 0], [1, 0], [0, 1]], "radius": 0.0})
    click(hands, "line", CROSSED[:2])
    entry = next(
        w for w in editor.props.winfo_children()[0].winfo_children() if hasattr(w, "icursor")
    )
    for field in (entry, editor.points_text):
        hands.key("BackSpace", field)
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
    assert str(editor.status.cget("text")).startswith("Not added: the outline crosses itself")
    hands.key("BackSpace")
    hands.motion(300, 300)
    assert str(editor.status.cget("text")).startswith("x = ")
    hands.key("Return")
    assert [tuple(p) for p in editor.sk["entities"][1]["points"]] == clicks[:3]
    assert editor.clicks == []


def test_ok_drops_no_corners(hands):
    editor = hands.editor
    clicks = click(hands, "slot", CROSSED[:2])
    editor.ok()
    hands.motion(300, 300)
    assert editor.winfo_exists() and [tuple(c) for c in editor.clicks] == clicks
    assert str(editor.status.cget("text")).startswith("Finish what you began to draw")
    hands.key("Escape")
    editor.ok()
    assert editor.result["entities"] == [CIRCLE]


def test_a_refusal_by_a_click_stays_too(hands):
    editor = hands.editor
    click(hands, "line", [*CROSSED, CROSSED[0]])
    hands.motion(300, 300)
    assert str(editor.status.cget("text")).startswith("Not added: ")
    assert len(editor.clicks) == 4
    hands.key("Escape")
    hands.motion(300, 300)
    assert editor.clicks == [] and str(editor.status.cget("text")).startswith("x = ")
