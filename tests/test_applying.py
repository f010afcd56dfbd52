"""How typed sizes are read, judged and put in place of the selected shape."""

import copy

import pytest

from support.canvas import items
from support.form import corners_text, form_of, form_texts, type_corners
from support.neighbours import circle, one_of_each, polygon, rectangle, regular
from support.plain import PlainEditor, Var
from support.types import CARDS
from support.widgets import button, walk

pytestmark = pytest.mark.usefixtures("neighbours")


# --- applying


def applying(entity, typed=None, corners=None, others=()):
    """A plain editor with the entity selected and these texts typed into its form."""
    editor = PlainEditor(entities=[*others, entity], sel=len(others))
    editor.vars = {key: Var(text) for key, text in (typed or {}).items()}
    editor.calls = editor.watch("refresh_list", "redraw", "show_props")

    class Corners:
        asked = []

        def get(self, *span):
            self.asked.append(span)
            return corners

    editor.points_text = Corners()
    return editor


CIRCLE_TEXTS = {"xc": "1", "yc": "2", "r": "3"}
OUTLINE_TEXTS = {"radius": "0"}


def test_applied_entity_replaces_the_selected_one(sketcher, neighbours):
    old = circle(5.0, 6.0, 7.0)
    before = copy.deepcopy(old)
    editor = applying(old, CIRCLE_TEXTS, others=[rectangle()])
    entities = editor.sk["entities"]
    assert sketcher.SketchEditor.apply_props(editor) is None
    assert editor.sk["entities"] is entities
    assert entities == [rectangle(), circle(0.001, 0.002, 0.003)]
    assert entities[1] is not old
    assert old == before
    assert editor.status.texts == [""]
    assert editor.calls == [("refresh_list", (), {"keep": True}), ("redraw", (), {})]
    assert editor.sel == 1


def test_entity_is_replaced_in_one_step_before_anything_shows_it(sketcher):
    steps = []

    def kept(name):
        def method(self, *args):
            steps.append((name, *args))
            return getattr(list, name)(self, *args)

        return method

    changes = "__setitem__ __delitem__ __iadd__ append extend insert pop remove clear".split()
    Entities = type("Entities", (list,), {name: kept(name) for name in changes})
    editor = applying(circle(), CIRCLE_TEXTS, others=[rectangle()])
    editor.sk["entities"] = Entities(editor.sk["entities"])
    editor.status.configure = lambda text: steps.append(("status", text))
    editor.refresh_list = lambda keep: steps.append(("refresh_list", keep))
    editor.redraw = lambda: steps.append(("redraw",))
    sketcher.SketchEditor.apply_props(editor)
    assert steps == [
        ("__setitem__", 1, circle(0.001, 0.002, 0.003)),
        ("status", ""),
        ("refresh_list", True),
        ("redraw",),
    ]


def test_lengths_are_stored_as_the_units_convert_them(sketcher, neighbours):
    neighbours.units.answers["to_si"] = lambda value, quantity: (value, quantity)
    neighbours.S.answers["outline"] = []
    editor = applying(circle(), CIRCLE_TEXTS)
    sketcher.SketchEditor.apply_props(editor)
    (stored,) = editor.sk["entities"]
    assert [stored[key] for key in ("xc", "yc", "r")] == [
        (1.0, "length"),
        (2.0, "length"),
        (3.0, "length"),
    ]


def test_units_are_asked_for_once_by_an_apply(sketcher, neighbours):
    sketcher.SketchEditor.apply_props(applying(circle(), CIRCLE_TEXTS))
    assert neighbours.units.asked == 1


def test_validity_is_asked_of_the_changed_copy_once(sketcher, neighbours):
    editor = applying(circle(), CIRCLE_TEXTS)
    sketcher.SketchEditor.apply_props(editor)
    ((judged,),) = neighbours.S.named("outline")
    assert judged is editor.sk["entities"][0]


def test_angle_is_stored_as_a_plain_float(sketcher):
    typed = {"xc": "0", "yc": "0", "r": "10", "n": "5", "angle": "45"}
    editor = applying(regular(), typed)
    sketcher.SketchEditor.apply_props(editor)
    assert editor.sk["entities"] == [regular(0.0, 0.0, 0.01, 5, 45.0)]
    assert type(editor.sk["entities"][0]["angle"]) is float


@pytest.mark.parametrize(
    "text, n",
    [("4.6", 5), ("4.5", 4), ("5.5", 6), ("3.4999", 3), (" 12 ", 12), ("1e1", 10), ("64.49", 64)]
    + [("100000000000000000000", 100000000000000000000)],
)
def test_sides_are_rounded_to_the_nearest_integer_ties_to_even(sketcher, neighbours, text, n):
    neighbours.S.answers["outline"] = []
    typed = {"xc": "0", "yc": "0", "r": "10", "n": text, "angle": "0"}
    editor = applying(regular(), typed)
    sketcher.SketchEditor.apply_props(editor)
    stored = editor.sk["entities"][0]["n"]
    assert stored == n and type(stored) is int


@pytest.mark.parametrize("text, n", [("2", 2), ("0.5", 0), ("-7", -7)])
def test_sides_have_no_lower_bound_of_their_own(sketcher, neighbours, text, n):
    typed = {"xc": "0", "yc": "0", "r": "10", "n": text, "angle": "0"}
    editor = applying(regular(), typed)
    sketcher.SketchEditor.apply_props(editor)
    assert neighbours.S.named("outline")[0][0]["n"] == n
    assert editor.status.texts == ["Not applied: at least three sides"]


def test_undefined_number_of_sides_is_not_applied(sketcher):
    typed = {"xc": "0", "yc": "0", "r": "10", "n": "nan", "angle": "0"}
    editor = applying(regular(), typed)
    sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == ["Not applied: cannot convert float NaN to integer"]
    assert editor.sk["entities"] == [regular()]


def test_infinite_number_of_sides_passes_as_an_overflow(sketcher):
    typed = {"xc": "0", "yc": "0", "r": "10", "n": "inf", "angle": "0"}
    editor = applying(regular(), typed)
    with pytest.raises(OverflowError, match="cannot convert float infinity to integer"):
        sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == []
    assert editor.sk["entities"] == [regular()]


def test_keys_without_a_field_are_kept(sketcher):
    entity = {**circle(), "colour": ["red"], "radius": 9}
    editor = applying(entity, CIRCLE_TEXTS)
    sketcher.SketchEditor.apply_props(editor)
    (stored,) = editor.sk["entities"]
    assert (stored["colour"], stored["radius"]) == (["red"], 9)
    assert stored["colour"] is not entity["colour"]


def test_missing_keys_are_filled_from_the_form(sketcher):
    editor = applying({"type": "circle"}, CIRCLE_TEXTS)
    sketcher.SketchEditor.apply_props(editor)
    assert editor.sk["entities"] == [circle(0.001, 0.002, 0.003)]


@pytest.mark.parametrize(
    "key, text",
    [("r", ""), ("xc", "abc"), ("yc", "1,5"), ("r", "10 mm"), ("r", "1/2"), ("xc", "--1")],
)
def test_field_that_is_no_number_is_not_applied(sketcher, neighbours, key, text):
    entity = circle(5.0, 6.0, 7.0)
    editor = applying(entity, {**CIRCLE_TEXTS, key: text})
    assert sketcher.SketchEditor.apply_props(editor) is None
    message = f"could not convert string to float: {text!r}"
    assert editor.status.texts == [f"Not applied: {message}"]
    assert editor.sk["entities"][0] is entity
    assert entity == circle(5.0, 6.0, 7.0)
    assert editor.calls == []
    assert neighbours.S.calls == []
    assert editor.vars[key].get() == text


def test_entity_that_the_sketch_module_rejects_is_not_applied(sketcher):
    entity = circle()
    editor = applying(entity, {**CIRCLE_TEXTS, "r": "-1"})
    sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == ["Not applied: the radius must be positive"]
    assert editor.sk["entities"][0] is entity
    assert editor.calls == []


@pytest.mark.parametrize(
    "error, why", [(ValueError("bad {why} {0}"), "bad {why} {0}"), (ValueError(), "")]
)
def test_message_is_translated_and_then_filled(sketcher, neighbours, error, why):
    neighbours.tr.texts = {"Not applied: {why}": "{why} (nicht angewendet)"}
    neighbours.S.fail["outline"] = error
    editor = applying(circle(), CIRCLE_TEXTS)
    sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == [f"{why} (nicht angewendet)"]


def test_first_bad_field_is_the_one_reported(sketcher):
    editor = applying(circle(), {"xc": "1", "yc": "two", "r": "three"})
    sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == ["Not applied: could not convert string to float: 'two'"]


def test_value_error_of_the_units_is_not_applied(sketcher, neighbours):
    neighbours.units.fail["to_si"] = ValueError("too long")
    editor = applying(circle(), CIRCLE_TEXTS)
    sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == ["Not applied: too long"]


def test_value_error_of_asking_for_the_units_passes(sketcher, monkeypatch):
    def units():
        raise ValueError("no units today")

    monkeypatch.setattr(sketcher, "units", units)
    editor = applying(circle(), CIRCLE_TEXTS)
    with pytest.raises(ValueError, match="no units today"):
        sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == []


@pytest.mark.parametrize("error", [KeyError, TypeError, ZeroDivisionError, OverflowError])
def test_other_errors_of_an_apply_pass(sketcher, neighbours, error):
    neighbours.S.fail["outline"] = error("outline")
    entity = circle()
    editor = applying(entity, CIRCLE_TEXTS)
    with pytest.raises(error):
        sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == []
    assert editor.sk["entities"][0] is entity and entity == circle()
    assert editor.calls == []


def test_entity_without_type_passes_as_a_key_error(sketcher):
    with pytest.raises(KeyError, match="type"):
        sketcher.SketchEditor.apply_props(applying({"r": 1.0}, CIRCLE_TEXTS))


def test_field_without_a_variable_passes_as_a_key_error(sketcher):
    with pytest.raises(KeyError, match="r"):
        sketcher.SketchEditor.apply_props(applying(circle(), {"xc": "1", "yc": "2"}))


def test_apply_without_a_selection_does_nothing(sketcher, neighbours):
    editor = PlainEditor(entities=[circle()])
    calls = editor.watch("refresh_list", "redraw")
    assert sketcher.SketchEditor.apply_props(editor) is None
    assert calls == []
    assert editor.status.texts == []
    assert neighbours.units.asked == 0


def test_apply_on_a_stale_selection_passes_as_an_index_error(sketcher):
    editor = applying(circle(), CIRCLE_TEXTS)
    editor.sel = 1
    with pytest.raises(IndexError):
        sketcher.SketchEditor.apply_props(editor)
    assert editor.sk["entities"] == [circle()]


def test_copy_is_made_before_anything_is_read(sketcher, neighbours):
    class Stubborn:
        def __deepcopy__(self, memo):
            raise ValueError("cannot be copied")

    editor = applying({**circle(), "note": Stubborn()}, CIRCLE_TEXTS)
    with pytest.raises(ValueError, match="cannot be copied"):
        sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == []


# --- applying corners


@pytest.mark.parametrize(
    "text, points",
    [
        ("0 0\n3 0\n0 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("0 0\n\n3 0\n   \n\t\n0 2\n\n", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("0,0\n3,0\n0 , 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("3,4\n0 0\n1 0\n", [[0.003, 0.004], [0.0, 0.0], [0.001, 0.0]]),
        (",0,,0,\n 3\t0 \n,\n0 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("-1e0 +.5\r\n3 0\r0 2", [[-0.001, 0.0005], [0.003, 0.0], [0.0, 0.002]]),
        ("0 0\x0b3 0\x0c0 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("0 0\u20283 0\x850 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("0\xa00\n3\u20030\n0 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
    ],
)
def test_corners_text_gives_the_corners(sketcher, text, points):
    editor = applying(polygon(), OUTLINE_TEXTS, text)
    sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == [""]
    (stored,) = editor.sk["entities"]
    assert stored == {"type": "polygon", "points": points, "radius": 0.0}
    assert {type(point) for point in stored["points"]} == {list}
    assert {type(value) for point in stored["points"] for value in point} == {float}


def test_whole_text_of_the_box_is_read(sketcher):
    editor = applying(polygon(), OUTLINE_TEXTS, "0 0\n3 0\n0 2\n")
    editor.points_text.asked.clear()
    sketcher.SketchEditor.apply_props(editor)
    assert editor.points_text.asked == [("1.0", "end")]


def test_corners_are_converted_first_u_then_v(sketcher, neighbours):
    editor = applying(polygon(), {"radius": "7"}, "1 2\n3 4\n5 7")
    sketcher.SketchEditor.apply_props(editor)
    values = [value for value, _ in neighbours.units.named("to_si")]
    assert values == [7.0, 1.0, 2.0, 3.0, 4.0, 5.0, 7.0]


@pytest.mark.parametrize(
    "text", ["1", "1 2 3", "1 2\n3", "0 0\n1 0\n2 2 2 2\nx y", "1;2", "1 2 3\nx y z"]
)
def test_corner_needs_two_numbers(sketcher, neighbours, text):
    neighbours.tr.texts = {"each corner needs two numbers": "zwei Zahlen"}
    entity = polygon()
    editor = applying(entity, OUTLINE_TEXTS, text)
    sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == ["Not applied: zwei Zahlen"]
    assert editor.sk["entities"][0] is entity and entity == polygon()
    assert editor.calls == []
    assert neighbours.S.calls == []


def test_corner_that_is_no_number_is_not_applied(sketcher):
    editor = applying(polygon(), OUTLINE_TEXTS, "0 0\n1 zwei\n0 1")
    sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == ["Not applied: could not convert string to float: 'zwei'"]


def test_radius_is_read_before_the_corners(sketcher):
    editor = applying(polygon(), {"radius": "wide"}, "1")
    editor.points_text.asked.clear()
    sketcher.SketchEditor.apply_props(editor)
    assert editor.status.texts == ["Not applied: could not convert string to float: 'wide'"]
    assert editor.points_text.asked == []


@pytest.mark.parametrize("text", ["", "\n", " \n\n,"])
def test_empty_corners_are_left_to_the_sketch_module(sketcher, neighbours, text):
    editor = applying(polygon(), OUTLINE_TEXTS, text)
    sketcher.SketchEditor.apply_props(editor)
    assert neighbours.S.named("outline")[0][0]["points"] == []
    assert editor.status.texts == ["Not applied: the outline has no area"]


def test_old_corners_are_not_needed(sketcher):
    editor = applying({"type": "polygon"}, OUTLINE_TEXTS, "0 0\n1 0\n1 1")
    sketcher.SketchEditor.apply_props(editor)
    assert len(editor.sk["entities"][0]["points"]) == 3


# --- in the window


@pytest.mark.parametrize("card", CARDS, ids=lambda card: card.name)
def test_form_that_is_applied_unchanged_changes_nothing(select, card):
    entity = card.sample
    editor = select(entity)
    editor.apply_props()
    assert editor.sk["entities"] == [entity]
    assert [(k, type(v)) for k, v in editor.sk["entities"][0].items()] == [
        (k, type(v)) for k, v in entity.items()
    ]
    assert editor.status.cget("text") == ""


def test_return_in_a_field_is_followed_by_the_dialogs_own(open_editor, sketcher, send):
    calls = []

    class Editor(sketcher.SketchEditor):
        def apply_props(self, *args):
            calls.append(("apply_props", args))

        def close_line(self, *args):
            calls.append(("close_line", args))

    editor = open_editor({"entities": [circle()]}, cls=Editor)
    editor.select(0)
    for entry in form_of(editor).entries():
        calls.clear()
        send(editor).key("Return", entry)
        assert calls == [("apply_props", ()), ("close_line", ())]
    button(editor, "Apply").invoke()
    assert calls[2:] == [("apply_props", ())]


def test_applied_form_keeps_its_texts_and_widgets(select):
    editor = select(circle())
    editor.update()
    widgets = list(walk(editor.props))
    editor.vars["xc"].set(" 2.50 ")
    button(editor, "Apply").invoke()
    editor.update()
    assert list(walk(editor.props)) == widgets
    assert form_texts(editor) == [" 2.50 ", "0", "1000"]
    assert editor.sel == 0
    assert editor.list.selection() == ("0",)


def test_failed_apply_changes_only_the_status_line(select):
    editor = select(*one_of_each()["entities"], index=4)
    before = copy.deepcopy(editor.sk), items(editor.canvas), form_texts(editor)
    rows = [editor.list.item(iid) for iid in editor.list.get_children()]
    type_corners(editor, "0 0\n1 1\n2 2 2")
    widgets = list(walk(editor.props))
    button(editor, "Apply").invoke()
    editor.update()
    assert (editor.sk, items(editor.canvas), form_texts(editor)) == before
    assert [editor.list.item(iid) for iid in editor.list.get_children()] == rows
    assert list(walk(editor.props)) == widgets
    assert corners_text(editor) == "0 0\n1 1\n2 2 2"
    assert editor.sel == 4
    assert editor.status.cget("text") == "Not applied: each corner needs two numbers"
