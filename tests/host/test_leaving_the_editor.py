"""Nothing is lost by closing the editor, nor by a crash while it is open."""

import copy
import os
import signal
import subprocess
import sys

import pytest
from harness.places import SEARCH_PATH
from support.application import answering, dialogs, in_editor
from support.desk import rearranged
from support.events import Send, settle
from support.widgets import button
from tandrel import storage
from tandrel.application.dialogs import Question
from tandrel.application.leaving import Leaving
from tandrel.application.recovery import Recovery
from tandrel.gui import widgets
from tandrel.storage import SketchFileError

CIRCLE = {"type": "circle", "xc": 0.02, "yc": 0.0, "r": 0.01}
SKETCH = {"plane": "XY", "offset": 0.0, "entities": [CIRCLE]}


@pytest.fixture
def editor(open_editor, root):
    widgets.install(root)
    kept = []
    keep = lambda sketch: kept.append(copy.deepcopy(sketch)) or ""  # noqa: E731
    opened = open_editor(copy.deepcopy(SKETCH), Leaving, keep=keep)
    opened.kept = kept
    return opened


def delete(editor):
    editor.select(0)
    editor.delete()


def click_a_corner(editor):
    editor.tool.set("line")
    Send(editor).click(50, 50)


def begin_a_move(editor):
    hands = Send(editor)
    x, y = hands.at((CIRCLE["xc"], CIRCLE["yc"]))
    hands.press(x, y)
    hands.drag(x + 40, y)


def type_a_radius(editor):
    editor.select(0)
    editor.vars["r"].set("5")


CHANGES = [
    delete,
    click_a_corner,
    begin_a_move,
    type_a_radius,
    lambda editor: editor.offset.set("5"),
]


@pytest.mark.parametrize("change", CHANGES)
def test_what_was_not_accepted_is_asked_about(editor, change):
    change(editor)
    before = copy.deepcopy(editor.sk)
    asked = answering(editor, "stay", None, "discard")
    for times in (1, 2):
        button(editor, "Cancel").invoke()
        assert (len(asked), editor.winfo_exists(), editor.sk) == (times, True, before)
        assert editor.grab_current() is editor
    # The frame's button, by which Alt+F4 comes too.
    editor.tk.call(*editor.tk.splitlist(editor.protocol("WM_DELETE_WINDOW")))
    assert (len(asked), editor.winfo_exists(), editor.result) == (3, False, None)
    assert asked == 3 * ["Discard the changes to the sketch?"]


def test_cancel_asks_wherever_it_stands(open_editor, root):
    widgets.install(root)
    editor = open_editor(copy.deepcopy(SKETCH), rearranged(Leaving, "Cancel"))
    delete(editor)
    asked = answering(editor, "stay")
    button(editor, "Cancel").invoke()
    assert (len(asked), editor.winfo_exists()) == (1, True)


def test_nothing_is_asked_without_a_change(editor):
    asked = answering(editor)
    delete(editor)
    editor.undo()
    editor.select(0)
    editor.fit()
    editor.close()
    assert (asked, editor.winfo_exists()) == ([], False)


def test_it_is_asked_once_at_a_time_and_ends_with_the_editor(editor):
    delete(editor)

    def close_again():
        if not dialogs(editor, Question):
            editor.after(5, close_again)
            return
        editor.close()
        assert len(dialogs(editor, Question)) == 1
        editor.destroy()

    editor.after(5, close_again)
    editor.close()
    assert not editor.winfo_exists()


def rest(editor):
    """Wait until what was changed is kept."""
    settle(editor, lambda: editor._waiting is None)


def test_changes_are_kept_once_some_time_has_gone(editor):
    delete(editor)
    editor.undo()
    editor.redo()
    editor.select(None)
    assert editor.kept == []
    rest(editor)
    editor.undo()
    rest(editor)
    assert editor.kept == [{**SKETCH, "entities": entities} for entities in ([], [CIRCLE])]


def test_what_the_pointer_has_is_kept_when_it_is_put_down(editor):
    hands = Send(editor)
    editor.tool.set("select")
    x, y = hands.at((CIRCLE["xc"], CIRCLE["yc"]))
    hands.press(x, y)
    hands.drag(x + 40, y)
    editor._keep_now()
    assert editor.kept == []
    hands.release(x + 40, y)
    rest(editor)
    assert editor.kept == [editor.sk] and editor.sk["entities"] != [CIRCLE]


def test_an_offset_is_kept_as_it_is_typed(editor):
    for typed in ("1/2 in", "far"):
        editor.offset.set(typed)
        rest(editor)
    assert editor.kept == [{**SKETCH, "offset": 0.0127}, SKETCH]


def test_nothing_is_kept_of_an_editor_that_is_closed(editor):
    before = set(editor.tk.call("after", "info"))
    delete(editor)
    window = editor.master
    assert set(window.tk.call("after", "info")) != before
    editor.destroy()
    assert set(window.tk.call("after", "info")) == before


def test_what_cannot_be_kept_is_told_once(editor):
    editor._keep = lambda sketch: "no room"
    delete(editor)
    rest(editor)
    assert str(editor.status.cget("text")) == "Not kept for a crash: no room"
    editor.status.configure(text="")
    editor.undo()
    rest(editor)
    assert str(editor.status.cget("text")) == ""


# In the application.

CRASH = """
import os, signal, sys
from tandrel.application import commands
from tandrel.application.editor import Editor
from tandrel.application.recovery import Recovery
from tandrel.application.window import App

def delete_and_die(editor):
    editor.select(1)
    editor.delete()
    while not list(Recovery().folder.glob("*.sketch")):
        editor.update()
    os.kill(os.getpid(), signal.SIGKILL)

def build(app):
    built(app)
    app.root.after_idle(app.edit_button.invoke)

built, App.build, Editor.wait_window = App.build, build, delete_and_die
commands.main([sys.argv[1]])
"""


def test_the_open_editor_s_sketch_outlives_a_killed_program(part, display):
    command = [sys.executable, "-c", CRASH, part]
    environment = {**os.environ, "PYTHONPATH": os.pathsep.join(SEARCH_PATH)}
    ended = subprocess.run(command, env=environment, capture_output=True)
    assert (ended.returncode, ended.stderr) == (-signal.SIGKILL, b"")
    (found,) = Recovery().found()
    whole = storage.read(part)
    del whole.sketch["entities"][1]
    assert (found.document, found.path) == (whole, str(part))
    found.discard()


def records():
    return [
        storage.loads(f.read_bytes().split(b"\n", 1)[1]) for f in Recovery().folder.glob("*.sketch")
    ]


def test_an_editor_that_is_left_keeps_what_was_there_before(start, part):
    app = start(part)
    seen = []

    def change(editor):
        editor.select(1)
        editor.delete()
        rest(editor)
        editor.undo()
        rest(editor)
        kept.append(len(records()))
        editor.redo()
        rest(editor)
        seen.extend(records())

    kept = []
    in_editor(app, change)
    # What is undone is no unsaved work.
    assert kept == [0]
    assert [len(r.sketch["entities"]) for r in seen] == [
        len(app.session.document.sketch["entities"]) - 1
    ]
    assert records() == []
    in_editor(app, lambda editor: (change(editor), editor.ok()))
    assert [r.sketch for r in records()] == [app.session.document.sketch]
    seen.clear()
    in_editor(app, change)
    assert len(seen) == 1
    assert [r.sketch for r in records()] == [app.session.document.sketch]


def test_a_draft_that_cannot_be_kept_is_told(start, part, monkeypatch):
    def full(recovery, document, path):
        raise SketchFileError("No space left on device")

    app, seen = start(part), []
    monkeypatch.setattr(Recovery, "keep", full)

    def change(editor):
        delete(editor)
        rest(editor)
        seen.append(editor.status.cget("text"))

    in_editor(app, change)
    assert seen == ["Not kept for a crash: No space left on device"]
