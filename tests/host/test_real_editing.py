"""What the application's editor has of its own, by a real pointer and real keys under a window
manager: in the flange, whose bore is the shape 1."""

import copy

from harness.user import until
from support.application import dialogs
from support.desk import field
from support.widgets import button
from tandrel import storage
from tandrel.application.dialogs import Question
from tandrel.application.recovery import Recovery
from tandrel.application.sizes_while_drawing import COLOUR

CROSSED = [(-90, -60), (-80, -50), (-80, -60), (-90, -50)]


def said(person, text):
    return person.status_has(text)


def kept():
    """The sketches that lie where a crash can't reach them."""
    records = Recovery().folder.glob("*.sketch")
    return [storage.loads(r.read_bytes().split(b"\n", 1)[1]).sketch for r in records]


def sizes(person):
    """The labels beside the pointer: their texts and boxes, without those of the selected shape."""
    canvas = person.editor.canvas
    items = [i for i in canvas.find_all() if canvas.type(i) == "text"]
    items = [i for i in items if canvas.itemcget(i, "fill") == COLOUR]
    return [(canvas.itemcget(i, "text"), canvas.bbox(i)) for i in items]


def key(person, name, condition, what):
    person.user.key(name)
    yield until(condition, what)


def draw_by_sizes(person):
    """The size stands beside the pointer while the shape is drawn; undo takes it away."""
    editor, canvas = person.editor, person.editor.canvas
    count = len(editor.sk["entities"])
    yield from person.choose("rectangle")
    yield from person.hold((-90, -60), (-70, -50))
    ((text, (left, top, right, bottom)),) = sizes(person)
    assert text == "20 mm x 10 mm"
    x, y = canvas.winfo_pointerx() - canvas.winfo_rootx(), canvas.winfo_pointery()
    y -= canvas.winfo_rooty()
    assert not (left <= x <= right and top <= y <= bottom)
    assert 0 <= left < right <= canvas.winfo_width() and 0 <= top < bottom <= canvas.winfo_height()
    yield from person.drop()
    yield person.shapes(count + 1)
    yield from person.undo(count)
    yield from key(
        person, "ctrl+shift+z", lambda: len(editor.sk["entities"]) == count + 1, "the shape again"
    )
    yield from person.undo(count)


def mend_an_outline(person):
    """A refused outline keeps its corners, its reason stays, BackSpace takes the last one back."""
    editor = person.editor
    count = len(editor.sk["entities"])
    yield from person.choose("line")
    for corner in CROSSED:
        yield from person.place(corner)
    person.user.key("Return")
    yield said(person, "Not added: the outline crosses itself")
    yield from person.point((-85, -45))
    yield from person.point((-86, -45))
    assert len(editor.clicks) == 4 and "Not added" in str(editor.status.cget("text"))
    yield from key(person, "BackSpace", lambda: len(editor.clicks) == 3, "three corners")
    person.user.key("Return")
    yield person.shapes(count + 1)
    yield from key(person, "BackSpace", lambda: len(editor.sk["entities"]) == count, "its end")
    assert editor.clicks == []


def take_back_all(person):
    """A held BackSpace takes back all corners and no shape; redo has them again."""
    editor = person.editor
    count = len(editor.sk["entities"])
    yield from person.pick_row(1)
    yield from person.choose("line")
    for corner in CROSSED[:2]:
        yield from person.place(corner)
    yield from key(person, "ctrl+z", lambda: len(editor.clicks) == 1, "one corner")
    yield from key(person, "ctrl+y", lambda: len(editor.clicks) == 2, "both again")
    person.user.key(*4 * ["BackSpace"])
    yield until(lambda: editor.clicks == [], "no corner")
    yield from key(person, "ctrl+y", lambda: len(editor.clicks) == 1, "the first again")
    assert (len(editor.sk["entities"]), editor.sel) == (count, 1)
    yield from key(person, "Escape", lambda: editor.clicks == [], "the end of it")


def type_and_go_on(person):
    """What is typed is taken over by a click on another shape, which gives the drawing the keys."""
    editor = person.editor
    before = copy.deepcopy(editor.sk["entities"])
    yield from person.choose("select")
    yield from person.pick_row(1)
    yield from person.fill_in("r", "30+1/2")
    yield from person.point((-68, 0))
    person.user.click()
    yield until(lambda: editor.sel == 0, "the plate to be selected")
    assert editor.sk["entities"][1] == {**before[1], "r": 0.0305}
    yield from key(person, "Right", lambda: editor.sk["entities"][0] != before[0], "a step aside")
    for _ in range(2):
        person.user.key("ctrl+z")
    yield until(lambda: editor.sk["entities"] == before, "all as it was")


def undo_in_a_field(person):
    """Ctrl+Z in a field that nothing was typed into leaves the keyboard there."""
    editor = person.editor
    before = copy.deepcopy(editor.sk["entities"])
    yield from person.pick_row(1)
    yield from person.fill_in("r", "30")
    yield from person.enter()
    yield person.holds(1, "r", 0.03)
    yield from person.user.click_on(field(editor, "r"))
    yield until(lambda: editor.focus_get() is field(editor, "r"), "the cursor in the radius")
    yield from key(person, "ctrl+z", lambda: editor.sk["entities"] == before, "the bore's radius")
    shown = editor.vars["r"].get()
    yield until(lambda: editor.focus_get() is field(editor, "r"), "the cursor in the radius again")
    person.user.key("End", "BackSpace")
    yield until(lambda: editor.vars["r"].get() == shown[:-1], "a digit less")
    yield from key(person, "ctrl+z", lambda: editor.vars["r"].get() == shown, "the digit again")
    assert editor.sk["entities"] == before


def multiply_and_move(person):
    """Ctrl+D and arrow keys once a row was chosen; a sum in the form; then all of it back."""
    editor = person.editor
    before = copy.deepcopy(editor.sk["entities"])
    bore = before[1]
    yield from person.pick_row(1)
    person.user.key("ctrl+d")
    yield person.shapes(len(before) + 1)
    last = len(before)
    yield from person.fill_in("r", "10+1/2 in")
    person.user.key("Return")
    yield said(person, "each number of a sum needs its unit")
    yield from person.fill_in("r", "10/4 mm")
    yield from person.enter()
    yield person.holds(last, "r", 0.0025)
    for name, u, v in (("Left", 0.0, 0.0), ("shift+Up", 0.0, 0.0001)):
        person.user.key(name)
        yield person.holds(last, "xc", bore["xc"] + u)
        yield person.holds(last, "yc", bore["yc"] + v)
    yield until(lambda: kept() == [editor.sk], "what a crash would leave")
    for name, value in (("yc", bore["yc"]), ("xc", bore["xc"] + 0.001), ("r", bore["r"])):
        person.user.key("ctrl+z")
        yield person.holds(last, name, value)
    yield from person.undo(last)
    assert (editor.sk["entities"], editor.sel) == (before, 1)


def leave(person):
    """Alt+F4 and Cancel ask; what was discarded is not in the document."""
    editor = person.editor
    before = copy.deepcopy(person.app.session.document.sketch)
    yield from person.pick_row(1)
    person.user.key("Delete")
    yield person.shapes(len(before["entities"]) - 1)
    person.user.key("alt+F4")
    yield until(lambda: dialogs(editor, Question), "the question")
    (question,) = dialogs(editor, Question)
    yield from person.user.focused(question)
    person.user.key("Escape")
    yield until(lambda: editor.grab_current() is editor, "the editor to have the keys again")
    yield from person.user.focused(editor)
    yield from person.undo(len(before["entities"]))
    yield from key(
        person, "ctrl+y", lambda: len(editor.sk["entities"]) != 0, "the shape away again"
    )
    yield person.shapes(len(before["entities"]) - 1)
    yield from person.user.click_on(button(editor, "Cancel"))
    yield until(lambda: dialogs(editor, Question), "the question")
    (question,) = dialogs(editor, Question)
    yield from person.user.focused(question)
    yield from person.user.click_on(question.buttons["discard"])
    yield until(lambda: not editor.winfo_exists(), "the editor to close")
    assert person.app.session.document.sketch == before


def test_a_person_s_hands_reach_all_of_it(hands):
    def script(person):
        yield from person.open_editor()
        for act in acts:
            yield from act(person)
            done.append(act)

    acts = [draw_by_sizes, mend_an_outline, take_back_all, type_and_go_on, undo_in_a_field]
    acts += [multiply_and_move, leave]
    done = []
    hands(script)
    assert done == acts
