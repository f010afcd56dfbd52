"""Summaries of entities, and which entities are valid."""

import builtins
import math

import pytest

from support.neighbours import FakeTranslation, FakeUnits, circle, polygon, rectangle, regular, slot
from support.plain import PlainEditor


@pytest.fixture
def units(sketcher, monkeypatch):
    """Units whose texts are the exact numbers that they were given."""
    units = FakeUnits()
    units.answers["fmt"] = lambda value, quantity: f"<{value!r} {quantity}>"
    monkeypatch.setattr(sketcher, "units", units)
    return units


@pytest.fixture
def tr(sketcher, monkeypatch):
    tr = FakeTranslation()
    monkeypatch.setattr(sketcher, "tr", tr)
    return tr


# --- describe


def test_rectangle_is_summarised_by_width_and_height(sketcher, units, tr):
    text = sketcher.describe(rectangle(5.0, 6.0, 0.03, 0.02))
    assert text == "<0.03 length> x <0.02 length>"
    assert type(text) is str


def test_rectangle_lengths_are_passed_on_as_stored(sketcher, units, tr):
    assert sketcher.describe(rectangle(w=3, h="h")) == "<3 length> x <'h' length>"


def test_circle_is_summarised_by_its_diameter_converted_once(sketcher, units, tr):
    assert sketcher.describe(circle(r=0.1)) == "diameter <0.2 length>"
    assert units.named("fmt") == [(0.2, "length")]


def test_radius_of_a_circle_is_taken_as_a_float(sketcher, units, tr):
    assert sketcher.describe(circle(r="1.5")) == "diameter <3.0 length>"


def test_regular_polygon_is_summarised_by_sides_and_circumscribed_diameter(sketcher, units, tr):
    text = sketcher.describe(regular(r=0.05, n=7))
    assert text == "7 sides, <0.1 length> across corners"


def test_sides_of_a_summary_are_an_int(sketcher, units, tr):
    assert sketcher.describe(regular(r=1, n=7.9)) == "7 sides, <2.0 length> across corners"
    assert sketcher.describe(regular(r=1, n="8")) == "8 sides, <2.0 length> across corners"


def test_slot_is_summarised_by_overall_length_and_width(sketcher, units, tr):
    text = sketcher.describe(slot(1.0, 1.0, 4.0, 5.0, 0.5))
    assert text == "<6.0 length> x <1.0 length>"


def test_slot_arithmetic_is_exact(sketcher, units, tr):
    x1, y1, x2, y2, r = 0.1, 0.7, 0.35, -0.13, 0.07
    length = math.hypot(x2 - x1, y2 - y1) + 2 * r
    text = sketcher.describe(slot(x1, y1, x2, y2, r))
    assert text == f"<{length!r} length> x <{2 * r!r} length>"


def test_slot_values_are_taken_as_floats(sketcher, units, tr):
    assert sketcher.describe(slot("0", "0", "3", "4", "1")) == "<7.0 length> x <2.0 length>"


def test_slot_with_equal_ends_shows_the_same_number_twice(sketcher, units, tr):
    assert sketcher.describe(slot(1.0, 2.0, 1.0, 2.0, 0.3)) == "<0.6 length> x <0.6 length>"


def test_outline_is_summarised_by_its_corner_count(sketcher, units, tr):
    assert sketcher.describe(polygon((0, 0), (1, 0), (1, 1), (0, 1))) == "4 corners"


def test_outline_without_points_has_no_corners(sketcher, units, tr):
    assert sketcher.describe({"type": "polygon"}) == "0 corners"


def test_unknown_type_is_summarised_as_a_corner_count(sketcher, units, tr):
    assert sketcher.describe({"type": "spline", "points": [1, 2]}) == "2 corners"
    assert sketcher.describe({"type": None}) == "0 corners"


def test_separator_is_a_plain_x(sketcher, units, tr):
    assert sketcher.describe(rectangle(w=1, h=2)).split("> ")[1].startswith("x <")


def test_units_are_asked_for_once_and_afresh(sketcher, units, tr):
    for count in (1, 2):
        sketcher.describe(slot())
        assert units.asked == count


def test_units_are_asked_for_even_by_an_outline(sketcher, units, tr):
    sketcher.describe(polygon())
    assert units.asked == 1


@pytest.mark.parametrize(
    "entity, missing",
    [
        (entity, key)
        for entity, keys in (
            (rectangle(), ("type", "w", "h")),
            (circle(), ("type", "r")),
            (regular(), ("type", "r", "n")),
            (slot(), ("type", "x1", "y1", "x2", "y2", "r")),
            (polygon(), ("type",)),
        )
        for key in keys
    ],
    ids=lambda value: value if isinstance(value, str) else value["type"],
)
def test_missing_key_raises_to_the_caller(sketcher, units, tr, entity, missing):
    damaged = {key: value for key, value in entity.items() if key != missing}
    with pytest.raises(KeyError) as caught:
        sketcher.describe(damaged)
    assert caught.value.args == (missing,)


@pytest.mark.parametrize(
    "entity, error",
    [
        (circle(r="wide"), ValueError),
        (circle(r=None), TypeError),
        (regular(n="six"), ValueError),
        (regular(n=None), TypeError),
        (regular(n=math.inf), OverflowError),
        (regular(n=math.nan), ValueError),
        (slot(x1=[]), TypeError),
        ({"type": "polygon", "points": 3}, TypeError),
        (None, TypeError),
    ],
)
def test_unreadable_values_raise_to_the_caller(sketcher, units, tr, entity, error):
    with pytest.raises(error):
        sketcher.describe(entity)


def test_infinite_and_undefined_lengths_are_summarised_as_any_other(sketcher, units, tr):
    assert sketcher.describe(circle(r=math.inf)) == "diameter <inf length>"
    assert sketcher.describe(slot(x1=math.nan, r=1)) == "<nan length> x <2.0 length>"
    assert sketcher.describe(slot(x1=-1e308, x2=1e308, r=1)).startswith("<inf length>")


def test_errors_of_the_units_pass(sketcher, units, tr):
    units.fail["fmt"] = ZeroDivisionError("scale")
    with pytest.raises(ZeroDivisionError):
        sketcher.describe(circle())


def test_texts_are_translated_before_their_placeholders_are_filled(sketcher, units, tr):
    tr.texts = {
        "diameter {d}": "{d} weit",
        "{n} sides, {d} across corners": "{d} und {n} Seiten",
        "{n} corners": "Ecken: {n}",
    }
    assert sketcher.describe(circle(r=1)) == "<2.0 length> weit"
    assert sketcher.describe(regular(r=1, n=5)) == "<2.0 length> und 5 Seiten"
    assert sketcher.describe(polygon()) == "Ecken: 3"
    assert tr.asked == list(tr.texts)


def test_braces_in_a_length_are_no_placeholders(sketcher, units, tr):
    units.answers["fmt"] = "{n}"
    assert sketcher.describe(circle()) == "diameter {n}"


def test_lengths_alone_are_not_translated(sketcher, units, tr):
    sketcher.describe(rectangle())
    sketcher.describe(slot())
    assert tr.asked == []


# --- validity


def test_validity_is_the_outline_succeeding(sketcher, neighbours):
    ok = sketcher.SketchEditor._ok
    entity = circle()
    assert ok(entity) is True
    assert neighbours.S.named("outline") == [(entity,)]


@pytest.mark.parametrize(
    "error", [ValueError, KeyError, TypeError, UnicodeDecodeError], ids=lambda e: e.__name__
)
def test_entity_that_cannot_be_outlined_is_not_valid(sketcher, neighbours, error):
    args = ("utf-8", b"", 0, 1, "no") if error is UnicodeDecodeError else ("no",)
    neighbours.S.fail["outline"] = error(*args)
    assert sketcher.SketchEditor._ok(circle()) is False


OTHER_ERRORS = [
    error
    for error in vars(builtins).values()
    if isinstance(error, type)
    and issubclass(error, BaseException)
    and not issubclass(error, (ValueError, KeyError, TypeError))
    and not error.__name__.endswith("Group")
]


@pytest.mark.parametrize("kind", OTHER_ERRORS, ids=lambda kind: kind.__name__)
def test_other_errors_of_an_outline_pass_through(sketcher, neighbours, kind):
    error = kind("no")
    neighbours.S.fail["outline"] = error
    with pytest.raises(kind) as caught:
        sketcher.SketchEditor._ok(circle())
    assert caught.value is error


def test_error_that_passes_tells_where_it_was_raised(sketcher, neighbours, monkeypatch):
    def outline(e):
        return 1 / 0

    monkeypatch.setattr(neighbours.S, "outline", outline)
    with pytest.raises(ZeroDivisionError) as caught:
        sketcher.SketchEditor._ok(circle())
    assert caught.traceback[-1].name == "outline"


def test_any_outline_that_is_returned_makes_an_entity_valid(sketcher, neighbours):
    for outline in ([], None, 3):
        neighbours.S.answers["outline"] = outline
        assert sketcher.SketchEditor._ok(circle()) is True


def test_no_entity_at_all_is_not_valid(sketcher, neighbours):
    assert sketcher.SketchEditor._ok(None) is False
    assert sketcher.SketchEditor._ok({"type": "circle", "xc": 0.0}) is False


def test_validity_can_be_asked_of_the_class_and_of_an_editor(sketcher, neighbours):
    assert PlainEditor()._ok(circle()) is True
    assert PlainEditor()._ok(circle(r=-1.0)) is False
