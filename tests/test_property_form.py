"""The form that shows the exact sizes of the selected shape."""

import math
import tkinter as tk

import pytest

from support.events import focus
from support.form import corners_text, form_of, form_texts, type_corners
from support.neighbours import circle, one_of_each, polygon, rectangle, regular
from support.widgets import walk

pytestmark = pytest.mark.usefixtures("neighbours")


# --- the fields


def test_form_of_every_type(select, sketcher, card):
    editor = select(card.sample)
    form = form_of(editor)
    rows = sketcher.FIELDS[card.name]
    assert form.master is editor.props
    assert form.label_width == 14
    assert form.calls[0] == ("pack", (), {})
    assert list(editor.vars) == [key for key, _, _ in rows]
    assert [call for call in form.calls if call[0] == "entry"] == [
        ("entry", (label, editor.vars[key], "mm" if is_len else ""), {"width": 10})
        for key, label, is_len in rows
    ]
    assert form_texts(editor) == card.shown
    assert {type(var) for var in editor.vars.values()} == {tk.StringVar}
    corners = [] if card.corners_text is None else ["Text"]
    classes = [type(child).__name__ for child in editor.props.pack_slaves()]
    assert classes == ["GridForm", *corners, "Button"]
    assert editor.props.winfo_children() == editor.props.pack_slaves()
    assert not corners or corners_text(editor) == card.corners_text


def test_lengths_are_converted_and_counts_and_angles_are_not(select, neighbours):
    editor = select(regular(0.5, 0.25, 0.125, 9, 30.0))
    assert form_texts(editor) == ["500", "250", "125", "9", "30"]
    neighbours.units.factor, neighbours.units.symbol = 100.0, "cm"
    editor.show_props()
    assert form_texts(editor) == ["50", "25", "12.5", "9", "30"]
    units = [call[1][2] for call in form_of(editor).calls if call[0] == "entry"]
    assert units == ["cm", "cm", "cm", "", ""]


def test_values_are_formatted_as_floats_to_their_last_digit(select, neighbours):
    select(regular(1, 2, 3, 6, 0.1 + 0.2))
    formatted = [value for (value,) in neighbours.num_text.calls[-5:]]
    assert formatted == [1000.0, 2000.0, 3000.0, 6.0, 0.30000000000000004]
    assert {type(value) for value in formatted} == {float}


def test_units_are_asked_for_each_field(select, neighbours):
    editor = select(circle())
    before = neighbours.units.asked
    editor.show_props()
    assert neighbours.units.asked - before == 2 * 3
    editor.select(None)
    before = neighbours.units.asked
    editor.show_props()
    assert neighbours.units.asked == before


@pytest.mark.parametrize(
    "entity, texts",
    [
        ({"type": "regular", "xc": 0.001}, ["1", "0", "0", "0", "0"]),
        (circle("0.5", " 1 ", True), ["500", "1000", "1000"]),
        (circle(math.inf, -math.inf, math.nan), ["inf", "-inf", "nan"]),
    ],
    ids=["missing", "texts", "not finite"],
)
def test_whatever_can_be_a_number_is_shown_as_one(open_editor, entity, texts):
    editor = open_editor({"entities": [entity]})
    editor.sel = 0
    editor.show_props()
    assert form_texts(editor) == texts


@pytest.mark.parametrize(
    "entity, error",
    [
        (circle(r="wide"), ValueError),
        (circle(r=None), TypeError),
        (circle(xc=[]), TypeError),
        ({"type": "polygon", "radius": 0.0}, KeyError),
        ({"type": "polygon", "points": [[1.0]]}, IndexError),
        ({"type": "polygon", "points": [5]}, TypeError),
        ({"type": "polygon", "points": None}, TypeError),
        ({"type": "spline"}, KeyError),
        ({"xc": 1.0}, KeyError),
    ],
    ids=str,
)
def test_damaged_entity_raises_and_the_editor_goes_on(open_editor, entity, error):
    editor = open_editor(one_of_each())
    editor.sk["entities"][0] = entity
    editor.sel = 0
    with pytest.raises(error):
        editor.show_props()
    editor.sk["entities"][0] = circle()
    editor.select(0)
    assert form_texts(editor) == ["0", "0", "1000"]
    editor.ok()
    assert editor.result is editor.sk


def test_every_rebuild_starts_afresh(select):
    editor = select(circle(), rectangle())
    old_widgets, old_vars = list(walk(editor.props))[1:], editor.vars
    editor.show_props()
    assert not any(widget.winfo_exists() for widget in old_widgets)
    assert editor.vars is not old_vars
    assert set(editor.vars) == set(old_vars)
    editor.select(1)
    assert list(editor.vars) == ["x", "y", "w", "h", "radius"]


# --- the corners of an outline


def test_corners_are_converted_in_order(select, neighbours):
    editor = select(polygon((0.001, 0.002), (0.003, 0.004), (0.005, 0.007)))
    before = len(neighbours.units.named("from_si"))
    editor.show_props()
    values = [value for value, _ in neighbours.units.named("from_si")[before:]]
    assert values == [0.0, 0.001, 0.002, 0.003, 0.004, 0.005, 0.007]


def test_units_are_asked_for_once_for_all_corners(select, neighbours):
    editor = select(polygon((0.0, 0.0), (1.0, 0.0), (1.0, 1.0), (0.0, 1.0)))
    before = neighbours.units.asked
    editor.show_props()
    assert neighbours.units.asked - before == 2 + 1


def test_outline_without_corners_has_an_empty_box(open_editor):
    editor = open_editor({"entities": [{"type": "polygon", "points": [], "radius": 0.0}]})
    editor.select(0)
    assert corners_text(editor) == ""


# --- the keys of the corners box


@pytest.mark.parametrize("state", [0x1, 0x4, 0x8])
def test_corners_box_keeps_the_deleting_keys_with_modifiers(select, state):
    editor = select(polygon())
    box = editor.points_text
    focus(box)
    for key in ("BackSpace", "Delete"):
        box.event_generate(f"<KeyPress-{key}>", state=state)
    assert editor.sk["entities"] == [polygon()]


def test_corners_box_is_an_ordinary_text(select):
    editor = select(polygon())
    box = editor.points_text
    assert box.bindtags() == (str(box), "Text", str(editor), "all")
    assert box.bind() == ()


def test_return_in_the_box_starts_a_line_and_applies_nothing(select, send):
    editor = select(polygon())
    type_corners(editor, "0 0")
    editor.points_text.mark_set("insert", "end-1c")
    send(editor).key("Return", editor.points_text)
    assert corners_text(editor) == "0 0\n"
    assert editor.sk["entities"] == [polygon()]
