"""What Tk makes of the dialog's bindings.

Which event runs which operation: test_construction_among_stand_ins.py.
"""

import pytest

from support.events import settle
from support.neighbours import one_of_each

pytestmark = pytest.mark.usefixtures("neighbours")


@pytest.fixture
def spied(open_editor, sketcher):
    """Opens an editor whose operations of these names only keep their calls."""

    def open_spied(*names):
        calls = []

        def replacement(name):
            def operation(self, *args, **kwargs):
                calls.append((name, args, kwargs))

            return operation

        members = {name: replacement(name) for name in names}
        editor = open_editor(cls=type("Editor", (sketcher.SketchEditor,), members))
        calls.clear()
        return editor, calls

    return open_spied


def test_double_click_closes_the_outline(spied, send):
    editor, calls = spied("_press", "_release", "close_line")
    send(editor).double_click(31, 47)
    assert [name for name, *_ in calls] == ["_press", "_release", "close_line", "_release"]
    assert calls[2] == ("close_line", (), {})


def test_slow_clicks_are_no_double_click(spied, send):
    editor, calls = spied("_press", "_release", "close_line")
    hand = send(editor)
    hand.click(31, 47)
    hand.click(31, 47)
    assert [name for name, *_ in calls] == ["_press", "_release"] * 2


def test_handlers_leave_the_event_to_other_bindings(open_editor, send, root):
    seen = []
    editor = open_editor()
    tag = "AfterTheEditor"
    editor.canvas.bindtags((*editor.canvas.bindtags(), tag))
    events = ["<ButtonPress>", "<ButtonRelease>", "<Motion>", "<MouseWheel>"]
    for event in events:
        editor.canvas.bind_class(tag, event, lambda e: seen.append(e.type.name))
    hand = send(editor)
    hand.stroke((10, 10), (50, 60))
    hand.motion(70, 70)
    hand.wheel(70, 70, 120)
    hand.press(70, 70, button=3)
    hand.press(70, 70, button=4)
    expected = "ButtonPress Motion ButtonRelease Motion MouseWheel ButtonPress ButtonPress"
    assert seen == expected.split()


def test_resizing_repaints_and_keeps_the_view(open_editor, sketcher):
    repaints = []

    class Editor(sketcher.SketchEditor):
        def redraw(self, *args):
            repaints.append(args)
            super().redraw(*args)

    editor = open_editor(one_of_each(), cls=Editor)
    view = (editor.scale, editor.centre.tolist())
    width = editor.canvas.winfo_width()
    repaints.clear()
    editor.geometry(f"{editor.winfo_width() + 60}x{editor.winfo_height() + 30}")
    settle(editor, lambda: editor.canvas.winfo_width() == width + 60)
    assert repaints and set(repaints) == {()}
    assert (editor.scale, editor.centre.tolist()) == view
