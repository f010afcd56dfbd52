"""How typed sizes are read, judged and put in place of the selected shape."""

import copy

import pytest

from support.form import form_of
from support.neighbours import circle, polygon, rectangle, regular
from support.plain import PlainEditor, Var
from support.widgets import button

pytestmark = pytest.mark.usefixtures("neighbours")


# --- applying


def applying(entity, typed=None, corners=None, others=()):
    """A plain editor with the entity selected and these texts typed into its form."""
    editor = PlainEditor(entities=[*others, entity], sel=len(others))
    editor.vars = {key: Var(text) for key, text in (typed or {}).items()}
    editor.calls = editor.watch("refresh_list", "redraw", "show_props")

    class Corners:
        def __init__(self):
            self.asked = []

        def get(self, *span):
            self.asked.append(span)
            return corners

    editor.points_text = Corners()
    return editor


def applied(*arguments, **named):
    """The same after what was typed was applied."""
    editor = applying(*arguments, **named)
    assert editor.apply_props() is None
    return editor


CIRCLE_TEXTS = {"xc": "1", "yc": "2", "r": "3"}
REGULAR_TEXTS = {"xc": "0", "yc": "0", "r": "10", "n": "5", "angle": "0"}
OUTLINE_TEXTS = {"radius": "0"}


def test_entity_is_replaced_in_one_step_before_anything_shows_it():
    steps = []

    def kept(name):
        def method(self, *args):
            steps.append((name, *args))
            return getattr(list, name)(self, *args)

        return method

    changes = "__setitem__ __delitem__ __iadd__ append extend insert pop remove clear".split()
    Entities = type("Entities", (list,), {name: kept(name) for name in changes})
    old = circle(5.0, 6.0, 7.0)
    editor = applying(old, CIRCLE_TEXTS, others=[rectangle()])
    editor.sk["entities"] = entities = Entities(editor.sk["entities"])
    editor.status.configure = lambda text: steps.append(("status", text))
    editor.refresh_list = lambda keep: steps.append(("refresh_list", keep))
    editor.redraw = lambda: steps.append(("redraw",))
    editor.apply_props()
    assert steps == [
        ("__setitem__", 1, circle(0.001, 0.002, 0.003)),
        ("status", ""),
        ("refresh_list", True),
        ("redraw",),
    ]
    assert editor.sk["entities"] is entities
    assert (old, editor.sel) == (circle(5.0, 6.0, 7.0), 1)
    assert editor.calls == []


def test_lengths_are_stored_as_the_units_convert_them(neighbours):
    """The units are asked for once, and the sketch module judges what is stored."""
    neighbours.units.answers["to_si"] = lambda value, quantity: (value, quantity)
    neighbours.S.answers["outline"] = []
    (stored,) = applied(circle(), CIRCLE_TEXTS).sk["entities"]
    assert [stored[key] for key in ("xc", "yc", "r")] == [
        (1.0, "length"),
        (2.0, "length"),
        (3.0, "length"),
    ]
    assert neighbours.units.asked == 1
    ((judged,),) = neighbours.S.named("outline")
    assert judged is stored


@pytest.mark.parametrize(
    "text, n",
    [("4.6", 5), ("4.5", 4), ("5.5", 6), ("3.4999", 3), (" 12 ", 12), ("1e1", 10), ("64.49", 64)]
    + [("100000000000000000000", 100000000000000000000), ("2", 2), ("0.5", 0), ("-7", -7)],
)
def test_sides_are_rounded_to_the_nearest_integer_ties_to_even(neighbours, text, n):
    """Whatever it is: how many there must be is the sketch module's affair."""
    neighbours.S.answers["outline"] = []
    (stored,) = applied(regular(), {**REGULAR_TEXTS, "n": text}).sk["entities"]
    assert stored["n"] == n and type(stored["n"]) is int


def test_infinite_number_of_sides_passes_as_an_overflow():
    editor = applying(regular(), {**REGULAR_TEXTS, "n": "inf"})
    with pytest.raises(OverflowError, match="cannot convert float infinity to integer"):
        editor.apply_props()
    assert editor.status.texts == []
    assert editor.sk["entities"] == [regular()]


def test_keys_without_a_field_are_kept():
    entity = {**circle(), "colour": ["red"], "radius": 9}
    (stored,) = applied(entity, CIRCLE_TEXTS).sk["entities"]
    assert (stored["colour"], stored["radius"]) == (["red"], 9)
    assert stored["colour"] is not entity["colour"]


def test_missing_keys_are_filled_from_the_form():
    made = applied({"type": "circle"}, CIRCLE_TEXTS).sk["entities"]
    assert made == [circle(0.001, 0.002, 0.003)]
    (made,) = applied({"type": "polygon"}, OUTLINE_TEXTS, "0 0\n1 0\n1 1").sk["entities"]
    assert len(made["points"]) == 3


@pytest.mark.parametrize(
    "typed, told",
    [
        ({"r": ""}, "''"),
        ({"xc": "abc"}, "'abc'"),
        ({"yc": "1,5"}, "'1,5'"),
        ({"r": "10 mm"}, "'10 mm'"),
        ({"r": "1/2"}, "'1/2'"),
        ({"yc": "two", "r": "three"}, "'two'"),
    ],
)
def test_first_field_that_is_no_number_is_told(neighbours, typed, told):
    entity = circle(5.0, 6.0, 7.0)
    editor = applied(entity, {**CIRCLE_TEXTS, **typed})
    assert editor.status.texts == [f"Not applied: could not convert string to float: {told}"]
    assert editor.sk["entities"][0] is entity
    assert entity == circle(5.0, 6.0, 7.0)
    assert editor.calls == []
    assert neighbours.S.calls == []
    assert {key: editor.vars[key].get() for key in typed} == typed


@pytest.mark.parametrize(
    "entity, typed, corners, told",
    [
        (regular(), {"n": "nan"}, None, "cannot convert float NaN to integer"),
        (circle(), {"r": "-1"}, None, "the radius must be positive"),
        (polygon(), {}, "0 0\n1 zwei\n0 1", "could not convert string to float: 'zwei'"),
    ],
)
def test_what_makes_no_shape_is_not_applied(entity, typed, corners, told):
    texts = {**CIRCLE_TEXTS, **REGULAR_TEXTS, **OUTLINE_TEXTS, **typed}
    before = copy.deepcopy(entity)
    editor = applied(entity, texts, corners)
    assert editor.status.texts == [f"Not applied: {told}"]
    assert editor.sk["entities"][0] is entity and entity == before
    assert editor.calls == []


@pytest.mark.parametrize(
    "error, why", [(ValueError("bad {why} {0}"), "bad {why} {0}"), (ValueError(), "")]
)
@pytest.mark.parametrize("neighbour, name", [("S", "outline"), ("units", "to_si")])
def test_message_is_translated_and_then_filled(neighbours, neighbour, name, error, why):
    neighbours.tr.texts = {"Not applied: {why}": "{why} (nicht angewendet)"}
    getattr(neighbours, neighbour).fail[name] = error
    assert applied(circle(), CIRCLE_TEXTS).status.texts == [f"{why} (nicht angewendet)"]


def test_value_error_of_asking_for_the_units_passes(sketcher, monkeypatch):
    def units():
        raise ValueError("no units today")

    monkeypatch.setattr(sketcher, "units", units)
    editor = applying(circle(), CIRCLE_TEXTS)
    with pytest.raises(ValueError, match="no units today"):
        editor.apply_props()
    assert editor.status.texts == []


@pytest.mark.parametrize("error", [KeyError, TypeError, ZeroDivisionError, OverflowError])
def test_other_errors_of_an_apply_pass(neighbours, error):
    neighbours.S.fail["outline"] = error("outline")
    entity = circle()
    editor = applying(entity, CIRCLE_TEXTS)
    with pytest.raises(error):
        editor.apply_props()
    assert editor.status.texts == []
    assert editor.sk["entities"][0] is entity and entity == circle()
    assert editor.calls == []


@pytest.mark.parametrize(
    "entity, typed, sel, error, told",
    [
        ({"r": 1.0}, CIRCLE_TEXTS, 0, KeyError, "type"),
        (circle(), {"xc": "1", "yc": "2"}, 0, KeyError, "r"),
        (circle(), CIRCLE_TEXTS, 1, IndexError, ""),
    ],
    ids=["no type", "no variable", "no shape selected"],
)
def test_what_cannot_be_applied_passes_as_an_error(entity, typed, sel, error, told):
    editor = applying(entity, typed)
    editor.sel = sel
    with pytest.raises(error, match=told):
        editor.apply_props()
    assert editor.sk["entities"] == [entity]


def test_apply_without_a_selection_does_nothing(neighbours):
    editor = applying(circle(), CIRCLE_TEXTS)
    editor.sel = None
    assert editor.apply_props() is None
    assert (editor.calls, editor.status.texts) == ([], [])
    assert neighbours.units.asked == 0


def test_copy_is_made_before_anything_is_read():
    class Stubborn:
        def __deepcopy__(self, memo):
            raise ValueError("cannot be copied")

    editor = applying({**circle(), "note": Stubborn()}, CIRCLE_TEXTS)
    with pytest.raises(ValueError, match="cannot be copied"):
        editor.apply_props()
    assert editor.status.texts == []


# --- applying corners


@pytest.mark.parametrize(
    "text, points",
    [
        ("0 0\n3 0\n0 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("0 0\n\n3 0\n   \n\t\n0 2\n\n", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("0,0\n3,0\n0 , 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        (",0,,0,\n 3\t0 \n,\n0 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("-1e0 +.5\r\n3 0\r0 2", [[-0.001, 0.0005], [0.003, 0.0], [0.0, 0.002]]),
        ("0 0\x0b3 0\x0c0 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("0 0\u20283 0\x850 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
        ("0\xa00\n3\u20030\n0 2", [[0.0, 0.0], [0.003, 0.0], [0.0, 0.002]]),
    ],
)
def test_corners_text_gives_the_corners(text, points):
    editor = applied(polygon(), OUTLINE_TEXTS, text)
    assert editor.status.texts == [""]
    assert editor.points_text.asked == [("1.0", "end")]
    (stored,) = editor.sk["entities"]
    assert stored == {"type": "polygon", "points": points, "radius": 0.0}
    assert {type(point) for point in stored["points"]} == {list}
    assert {type(value) for point in stored["points"] for value in point} == {float}


def test_corners_are_converted_first_u_then_v(neighbours):
    applied(polygon(), {"radius": "7"}, "1 2\n3 4\n5 7")
    values = [value for value, _ in neighbours.units.named("to_si")]
    assert values == [7.0, 1.0, 2.0, 3.0, 4.0, 5.0, 7.0]


@pytest.mark.parametrize(
    "text", ["1", "1 2 3", "1 2\n3", "0 0\n1 0\n2 2 2 2\nx y", "1;2", "1 2 3\nx y z"]
)
def test_corner_needs_two_numbers(neighbours, text):
    neighbours.tr.texts = {"each corner needs two numbers": "zwei Zahlen"}
    entity = polygon()
    editor = applied(entity, OUTLINE_TEXTS, text)
    assert editor.status.texts == ["Not applied: zwei Zahlen"]
    assert editor.sk["entities"][0] is entity and entity == polygon()
    assert editor.calls == []
    assert neighbours.S.calls == []


def test_radius_is_read_before_the_corners():
    editor = applied(polygon(), {"radius": "wide"}, "1")
    assert editor.status.texts == ["Not applied: could not convert string to float: 'wide'"]
    assert editor.points_text.asked == []


@pytest.mark.parametrize("text", ["", "\n", " \n\n,"])
def test_empty_corners_are_left_to_the_sketch_module(neighbours, text):
    editor = applied(polygon(), OUTLINE_TEXTS, text)
    assert neighbours.S.named("outline")[0][0]["points"] == []
    assert editor.status.texts == ["Not applied: the outline has no area"]


# --- in the window


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
