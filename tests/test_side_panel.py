"""The list of shapes: its rows, and the selection that it shares with the canvas."""

import pytest

from support.canvas import of_kind
from support.neighbours import circle, one_of_each, polygon, rectangle
from support.plain import PlainEditor, ShapeList
from support.types import CARDS

SELECTED = "#E8833A"


pytestmark = pytest.mark.usefixtures("neighbours")


def plain(*entities, **attributes):
    """A plain editor; `calls` holds what it asked of the form and the canvas."""
    editor = PlainEditor(entities=entities, **attributes)
    editor.calls = editor.watch("show_props", "redraw")
    return editor


def done(*names):
    return [(name, (), {}) for name in names]


# --- rows


def test_each_entity_has_a_row_in_stored_order(sketcher):
    editor = plain(*(card.placed for card in reversed(CARDS)))
    assert sketcher.SketchEditor.refresh_list(editor) is None
    assert editor.list.rows == [
        {"iid": str(k), "text": f"{k + 1}. {card.label}", "values": (card.row,)}
        for k, card in enumerate(reversed(CARDS))
    ]
    assert {type(row["iid"]) for row in editor.list.rows} == {str}
    assert {type(row["values"]) for row in editor.list.rows} == {tuple}
    assert {call[1] for call in editor.list.calls if call[0] == "insert"} == {("", "end")}


def test_old_rows_go_in_one_call(sketcher):
    editor = plain(circle())
    editor.list.rows = [{"iid": iid} for iid in ("0", "1", "2")]
    sketcher.SketchEditor.refresh_list(editor)
    assert editor.list.calls[0] == ("delete", ("0", "1", "2"))
    assert [call[0] for call in editor.list.calls] == ["delete", "insert"]


@pytest.mark.parametrize(
    "arguments, named, kept",
    [((True,), {}, True), ((), {"keep": True}, True), ((1,), {}, True)]
    + [((), {}, False), ((False,), {}, False), ((), {"keep": False}, False), ((0,), {}, False)],
)
def test_form_is_rebuilt_unless_kept(sketcher, arguments, named, kept):
    """After the selection is shown."""
    editor = plain(circle(), circle(), sel=1)
    seen = []
    editor.show_props = lambda: seen.append(editor.list.selected)
    assert sketcher.SketchEditor.refresh_list(editor, *arguments, **named) is None
    assert editor.list.selected == ("1",)
    assert seen == [("1",)] * (not kept)
    assert len(editor.list.rows) == 2


def test_kind_is_translated(sketcher, neighbours):
    neighbours.tr.texts = {"Outline": "Umriss", "Circle": "Kreis"}
    editor = plain(circle(), polygon(), rectangle())
    sketcher.SketchEditor.refresh_list(editor)
    texts = [row["text"] for row in editor.list.rows]
    assert texts == ["1. Kreis", "2. Umriss", "3. Rectangle"]


def test_summary_comes_from_describe(sketcher, monkeypatch):
    asked = []
    monkeypatch.setattr(sketcher, "describe", lambda e: asked.append(e) or ["size", "of"])
    entities = [circle(), polygon()]
    editor = plain(*entities)
    sketcher.SketchEditor.refresh_list(editor)
    assert [e is entity for e, entity in zip(asked, entities)] == [True, True]
    assert [row["values"] for row in editor.list.rows] == [(["size", "of"],)] * 2


@pytest.mark.parametrize("error", [KeyError, ValueError, TypeError, UnicodeError])
def test_three_kinds_of_errors_are_a_question_mark(sketcher, monkeypatch, error):
    def describe(e):
        if e is broken:
            raise error("no")
        return "sound"

    monkeypatch.setattr(sketcher, "describe", describe)
    broken = circle()
    editor = plain(circle(), broken, circle())
    editor.refresh_list()
    assert [row["values"] for row in editor.list.rows] == [("sound",), ("?",), ("sound",)]
    assert editor.list.rows[1]["text"] == "2. Circle"


@pytest.mark.parametrize(
    "error", [IndexError, AttributeError, ZeroDivisionError, OverflowError, RuntimeError]
)
def test_other_errors_of_describe_pass(sketcher, monkeypatch, error):
    def describe(e):
        raise error("no")

    monkeypatch.setattr(sketcher, "describe", describe)
    editor = plain(circle(), sel=0)
    with pytest.raises(error):
        sketcher.SketchEditor.refresh_list(editor)
    assert editor.list.selected == ()
    assert editor.calls == []


@pytest.mark.parametrize(
    "sketch, error, rows",
    [
        ({"entities": [circle(), {"type": "spline"}, circle()]}, KeyError("spline"), ["0"]),
        ({}, KeyError("entities"), []),
        ({"entities": None}, TypeError(), []),
    ],
)
def test_what_cannot_be_listed_passes_to_the_caller(sketch, error, rows):
    editor = plain()
    editor.sk = sketch
    with pytest.raises(type(error), match=str(error)):
        editor.refresh_list()
    assert [row["iid"] for row in editor.list.rows] == rows
    assert editor.calls == []


# --- showing the selection


@pytest.mark.parametrize("sel, row", [(2, "2"), (-1, "-1")])
def test_selection_is_shown_by_its_row(sel, row):
    editor = plain(circle(), circle(), circle(), sel=sel)
    editor.refresh_list()
    assert editor.list.calls[-1] == ("selection_set", (row,))
    assert editor.sel == sel
    assert editor.calls == done("show_props")


@pytest.mark.parametrize("sel", [None, 3, 4, 1000])
def test_no_and_a_stale_selection_are_neither_shown_nor_changed(sel):
    editor = plain(circle(), circle(), circle(), sel=sel)
    editor.refresh_list()
    assert [call for call in editor.list.calls if call[0] == "selection_set"] == []
    assert editor.sel == sel
    assert editor.calls == done("show_props")


# --- a selection made in the list


def selecting(*selected, sel=None):
    editor = plain(circle(), circle(), circle(), sel=sel)
    editor.list.selected = selected
    return editor


def test_row_selected_by_the_user_becomes_the_selection(sketcher):
    editor = selecting("2", sel=0)
    seen = []
    editor.show_props = lambda: seen.append(("show_props", editor.sel))
    editor.redraw = lambda: seen.append(("redraw", editor.sel))
    assert sketcher.SketchEditor._list_selected(editor) is None
    assert editor.sel == 2 and type(editor.sel) is int
    assert seen == [("show_props", 2), ("redraw", 2)]
    assert editor.status.texts == []


@pytest.mark.parametrize(
    "selected, sel, expected",
    [(["1", "2"], None, 1), (["1"], 1, 1), ([], 1, None), ([], None, None), (["0"], None, 0)],
)
def test_list_and_selection_agree_and_only_a_change_is_shown(sketcher, selected, sel, expected):
    """The first of several rows counts, and the first row is no lack of one."""
    editor = selecting(*selected, sel=sel)
    sketcher.SketchEditor._list_selected(editor)
    assert editor.sel == expected
    assert editor.calls == (done("show_props", "redraw") if expected != sel else [])


# --- in the window


@pytest.fixture
def spied(open_editor, sketcher):
    """Opens an editor that keeps its calls of show_props and redraw, and still does them."""

    def open_spied(sketch):
        calls = []

        class Editor(sketcher.SketchEditor):
            def show_props(self):
                calls.append("show_props")
                super().show_props()

            def redraw(self):
                calls.append("redraw")
                super().redraw()

        editor = open_editor(sketch, cls=Editor)
        editor.update()
        calls.clear()
        return editor, calls

    return open_spied


def click_row(editor, iid):
    """Click on a row with the pointer."""
    x, y, width, height = editor.list.bbox(iid)
    at = {"x": x + width // 2, "y": y + height // 2}
    editor.list.event_generate("<ButtonPress-1>", **at)
    editor.list.event_generate("<ButtonRelease-1>", **at)
    editor.update()


def test_list_is_rebuilt_without_a_loop(spied):
    editor, calls = spied(one_of_each())
    editor.sel = 3
    editor.refresh_list()
    editor.update()
    assert editor.list.selection() == ("3",)
    assert calls == ["show_props"]


def test_clicking_a_row_selects_its_shape(spied):
    editor, calls = spied(one_of_each())
    click_row(editor, "2")
    assert editor.sel == 2
    assert calls == ["show_props", "redraw"]
    assert len(of_kind(editor.canvas, "polygon", outline=SELECTED)) == 1
    assert set(editor.vars) == {"xc", "yc", "r", "n", "angle"}


def test_summaries_are_shown_as_they_are(open_editor, sketcher, monkeypatch):
    texts = ["{n} {", "a b", "", "tab\tstop", "$x [y] ;z", 'q"q', "{", "\\"]
    monkeypatch.setattr(sketcher, "describe", lambda e: e["text"])
    editor = open_editor({"entities": [{**circle(), "text": text} for text in texts]})
    assert [editor.list.set(row, "size") for row in editor.list.get_children()] == texts


def test_plain_list_behaves_as_the_real_one(open_editor, sketcher):
    editor = open_editor(one_of_each())
    stand_in = PlainEditor(entities=editor.sk["entities"], sel=2)
    stand_in.watch("show_props", "redraw")
    editor.sel = 2
    for each in (editor, stand_in):
        sketcher.SketchEditor.refresh_list(each)
        sketcher.SketchEditor.refresh_list(each, keep=True)
    assert type(stand_in.list) is ShapeList
    assert editor.list.get_children() == stand_in.list.get_children()
    assert editor.list.selection() == stand_in.list.selection() == ("2",)
