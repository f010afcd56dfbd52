"""How a sketch is accepted, refused or left alone."""

import copy

import pytest

from support.neighbours import one_of_each
from support.plain import PlainEditor, Recorder, Var

pytestmark = pytest.mark.usefixtures("neighbours")


def accepting(**attributes):
    """A plain editor that can be accepted; `calls` holds what it did."""
    editor = PlainEditor(**attributes)
    editor.calls = editor.watch("destroy", "redraw", "refresh_list", "show_props")
    return editor


def test_ok_hands_out_the_editors_own_sketch_and_closes(sketcher, neighbours):
    editor = accepting(offset=Var("25"), plane=Var("XZ"))
    assert sketcher.SketchEditor.ok(editor) is None
    assert editor.result is editor.sk
    assert editor.sk == {"entities": [], "offset": 0.025, "plane": "XZ"}
    assert list(editor.sk) == ["entities", "offset", "plane"]
    assert neighbours.units.named("to_si") == [(25.0, "length")]
    assert len(neighbours.S.named("check")) == 1
    assert neighbours.S.named("check")[0][0] is editor.sk
    assert editor.calls == [("destroy", (), {})]
    assert editor.status.texts == []


@pytest.mark.parametrize("dim", [2, 1, 0, None, "3"], ids=repr)
def test_ok_of_a_plain_region_stores_neither_plane_nor_offset(sketcher, neighbours, dim):
    editor = accepting(dim=dim, offset=Var("no number"), plane=Var("XZ"))
    sketcher.SketchEditor.ok(editor)
    assert editor.result == {"entities": []}
    assert neighbours.units.asked == 0


def test_ok_of_a_plain_region_reads_no_widgets(sketcher):
    editor = accepting(dim=2)
    del editor.offset, editor.plane
    sketcher.SketchEditor.ok(editor)
    assert editor.result is editor.sk


@pytest.mark.parametrize("text", ["", " ", "abc", "1 mm", "1,5", "1/2", "0x10", "--1", "1e"])
def test_offset_must_be_a_number(sketcher, neighbours, text):
    neighbours.tr.texts = {"The offset must be a number.": "Zahl!"}
    editor = accepting(offset=Var(text), plane=Var("XZ"))
    assert sketcher.SketchEditor.ok(editor) is None
    assert editor.status.texts == ["Zahl!"]
    assert editor.sk == {"entities": []}
    assert editor.result is None
    assert editor.calls == []
    assert neighbours.S.count("check") == 0


@pytest.mark.parametrize(
    "text, offset",
    [("-2", -0.002), (" 2.5\t", 0.0025), ("1e3", 1.0), (".5", 0.0005), ("1_0", 0.01)]
    + [("inf", float("inf")), ("-Infinity", float("-inf"))],
)
def test_offset_is_parsed_as_a_float(sketcher, text, offset):
    editor = accepting(offset=Var(text))
    sketcher.SketchEditor.ok(editor)
    assert editor.result["offset"] == offset


def test_value_error_of_the_units_counts_as_a_bad_offset(sketcher, neighbours):
    neighbours.units.fail["to_si"] = ValueError("too long")
    editor = accepting()
    sketcher.SketchEditor.ok(editor)
    assert editor.status.texts == ["The offset must be a number."]
    assert editor.sk == {"entities": []}


def test_value_error_of_the_plane_counts_as_a_bad_offset(sketcher, neighbours):
    def bad():
        raise ValueError("plane")

    editor = accepting(offset=Var("3"), plane=Recorder(get=bad))
    sketcher.SketchEditor.ok(editor)
    assert editor.status.texts == ["The offset must be a number."]
    assert editor.sk == {"entities": [], "offset": 0.003}
    assert editor.result is None


@pytest.mark.parametrize("error", [TypeError, KeyError, ZeroDivisionError])
def test_other_errors_of_the_offset_pass(sketcher, neighbours, error):
    neighbours.units.fail["to_si"] = error("units")
    editor = accepting()
    with pytest.raises(error):
        sketcher.SketchEditor.ok(editor)
    assert editor.status.texts == []
    assert editor.result is None
    assert editor.calls == []


def test_messages_of_the_check_refuse_the_sketch(sketcher, neighbours):
    neighbours.S.answers["check"] = ["one is open", "two overlap", "{n}"]
    neighbours.tr.texts = {"one is open": "translated twice"}
    editor = accepting(offset=Var("4"), plane=Var("YZ"))
    assert sketcher.SketchEditor.ok(editor) is None
    assert editor.status.texts == ["one is open; two overlap; {n}"]
    assert editor.sk == {"entities": [], "offset": 0.004, "plane": "YZ"}
    assert editor.result is None
    assert editor.calls == []


def test_messages_of_the_check_refuse_a_plain_region_too(sketcher, neighbours):
    neighbours.S.answers["check"] = ["one is open"]
    editor = accepting(dim=2)
    sketcher.SketchEditor.ok(editor)
    assert [checked for (checked,) in neighbours.S.named("check")] == [editor.sk]
    assert editor.status.texts == ["one is open"]
    assert editor.result is None
    assert editor.calls == []


def test_value_error_of_the_check_passes(sketcher, neighbours):
    neighbours.S.fail["check"] = ValueError("broken")
    editor = accepting()
    with pytest.raises(ValueError, match="broken"):
        sketcher.SketchEditor.ok(editor)
    assert editor.status.texts == []
    assert editor.result is None


def test_check_sees_the_new_plane_and_offset(sketcher, neighbours):
    seen = []
    neighbours.S.answers["check"] = lambda sk: seen.append(dict(sk)) or []
    editor = accepting(offset=Var("7"), plane=Var("YZ"))
    sketcher.SketchEditor.ok(editor)
    assert seen == [{"entities": [], "offset": 0.007, "plane": "YZ"}]


def test_result_is_set_before_the_dialog_closes(sketcher):
    editor = PlainEditor()
    editor.destroy = lambda: setattr(editor, "at_end", editor.result)
    sketcher.SketchEditor.ok(editor)
    assert editor.at_end is editor.sk


def test_callers_sketch_is_never_touched(open_editor, send):
    sketch = one_of_each()
    before = copy.deepcopy(sketch)
    editor = open_editor(sketch)
    hand = send(editor)
    hand.stroke(hand.at((0.0, 0.02)), (200, 200), (240, 150))
    editor.select(4)
    editor.points_text.insert("end", "\n5 5")
    editor.apply_props()
    editor.select(0)
    editor.delete()
    editor.tool.set("circle")
    hand.stroke((60, 60), (90, 90))
    editor.plane.set("YZ")
    editor.offset.set("33")
    editor.ok()
    assert sketch == before
    assert editor.result is editor.sk
    assert editor.result is not sketch
    assert editor.result["entities"] != before["entities"]
    shared = {id(e) for e in sketch["entities"]} & {id(e) for e in editor.result["entities"]}
    assert not shared


def test_plane_chooser_is_copied_into_the_sketch(sketcher):
    editor = PlainEditor(plane=Var("XZ"))
    assert sketcher.SketchEditor._plane_changed(editor) is None
    assert editor.sk == {"entities": [], "plane": "XZ"}
