"""Summaries of entities, and which entities are valid."""


import pytest

from support.neighbours import FakeTranslation, FakeUnits, circle, polygon, rectangle, regular, slot
from support.plain import PlainEditor
from support.types import CARDS


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


def test_every_type_is_summarised(sketcher, units, tr, card):
    for entity, expected in card.summaries:
        text = sketcher.describe(entity)
        assert (text, type(text)) == (expected, str)


def test_a_diameter_is_converted_once(sketcher, units, tr):
    sketcher.describe(circle(r=0.1))
    assert units.named("fmt") == [(0.2, "length")]


def test_unknown_type_is_summarised_as_a_corner_count(sketcher, units, tr):
    assert sketcher.describe({"type": "spline", "points": [1, 2]}) == "2 corners"
    assert sketcher.describe({"type": None}) == "0 corners"


def test_units_are_asked_for_once_and_afresh(sketcher, units, tr, card):
    for count in (1, 2):
        sketcher.describe(card.sample)
        assert units.asked == count


@pytest.mark.parametrize(
    "card, missing", [(card, key) for card in CARDS for key in ("type", *card.summary_keys)]
)
def test_missing_key_raises_to_the_caller(sketcher, units, tr, card, missing):
    damaged = {key: value for key, value in card.sample.items() if key != missing}
    with pytest.raises(KeyError) as caught:
        sketcher.describe(damaged)
    assert caught.value.args == (missing,)


@pytest.mark.parametrize(
    "entity, error", [(None, TypeError), *(row for card in CARDS for row in card.no_summary)]
)
def test_unreadable_values_raise_to_the_caller(sketcher, units, tr, entity, error):
    with pytest.raises(error):
        sketcher.describe(entity)


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
    for outline in ([], None, 3):
        neighbours.S.answers["outline"] = outline
        assert ok(entity) is True


def test_no_entity_at_all_is_not_valid(sketcher, neighbours):
    assert sketcher.SketchEditor._ok(None) is False
    assert sketcher.SketchEditor._ok({"type": "circle", "xc": 0.0}) is False


def test_validity_can_be_asked_of_the_class_and_of_an_editor(sketcher, neighbours):
    assert PlainEditor()._ok(circle()) is True
    assert PlainEditor()._ok(circle(r=-1.0)) is False
