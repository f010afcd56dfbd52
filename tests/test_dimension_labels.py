"""The sizes that are written beside the selected shape."""

import numpy as np
import pytest
from support.neighbours import circle, rectangle, slot
from support.plain import PlainEditor
from support.types import CARDS

ORANGE = "#E8833A"


@pytest.fixture
def editor(neighbours):
    """400 x 300 pixels, 40 pixels to the unit, millimetres shown."""
    return PlainEditor(scale=40.0)


def labels(editor, entity):
    """The drawing calls for one shape."""
    del editor.canvas.calls[:]
    assert editor._dimensions(entity) is None
    return editor.canvas.calls


def label(x, y, text, **options):
    return ("create_text", (x, y), {"text": text, "fill": ORANGE, **options})


def test_every_type_has_its_labels(editor, card):
    for entity, expected in card.labels:
        assert labels(editor, entity) == [
            label(x, y, text, **options) for x, y, text, options in expected
        ]


def test_a_slot_s_summary_is_the_module_s(editor, sketcher, monkeypatch):
    entity = slot()
    asked = []
    monkeypatch.setattr(sketcher, "describe", lambda e: asked.append(e) or "long and thin")
    assert labels(editor, entity)[0][2]["text"] == "long and thin"
    assert len(asked) == 1 and asked[0] is entity


@pytest.mark.parametrize("entity", [{"type": "arcs"}, {"type": None}])
def test_other_shapes_have_none(editor, neighbours, entity):
    assert labels(editor, entity) == []
    assert neighbours.units.asked == 1


def test_follow_zoom_and_pan_at_fixed_distances(editor):
    box = rectangle(0.0, 0.0, 2.0, 1.0)
    for scale, centre in ((40.0, (0.0, 0.0)), (80.0, (3.0, -1.0)), (0.5, (0.1, 0.2))):
        editor.scale, editor.centre = scale, np.array(centre)
        width, height = labels(editor, box)
        sx, sy = editor.to_screen((1.0, 0.0))
        assert width[1] == (sx, sy + 12)
        sx, sy = editor.to_screen((2.0, 0.5))
        assert height[1] == (sx + 6, sy)


def test_anchor_points_are_computed_in_doubles(editor):
    asked = []
    editor.to_screen = lambda p: asked.append(tuple(p)) or (0.0, 0.0)
    labels(editor, rectangle(0.1, 0.7, 0.3, 0.9))
    labels(editor, slot(0.1, 0.7, 0.2, 0.1, 1.0))
    assert asked == [
        (0.1 + 0.3 / 2, 0.7),
        (0.1 + 0.3, 0.7 + 0.9 / 2),
        ((0.1 + 0.2) * 0.5, (0.7 + 0.1) * 0.5),
    ]


def test_the_centre_is_handed_over_as_it_is_stored(editor):
    u, v = np.float32(1.5), 3
    asked = []
    editor.to_screen = lambda p: asked.append(p) or (1.0, 2.0)
    labels(editor, circle(u, v, 1.0))
    assert asked[0][0] is u
    assert asked[0][1] is v


def test_lengths_are_formatted_as_plain_floats(editor, neighbours):
    labels(editor, {"type": "rectangle", "x": "1", "y": 0, "w": 3, "h": np.float32(2)})
    labels(editor, {"type": "circle", "xc": 0, "yc": 0, "r": "4"})
    assert neighbours.units.named("fmt") == [(3.0, "length"), (2.0, "length"), (8.0, "length")]
    assert all(type(args[0]) is float for args in neighbours.units.named("fmt"))


def test_the_units_are_asked_for_once_and_again_by_a_summary(editor, neighbours, card):
    labels(editor, card.sample)
    texts = [text for _, _, text, _ in card.dimensions(card.sample, str)]
    assert neighbours.units.asked == 1 + (card.summary(card.sample, str, str) in texts)


@pytest.mark.parametrize(
    "entity, error", [({}, KeyError), *(row for card in CARDS for row in card.no_labels)]
)
def test_what_cannot_be_read_is_an_error(editor, entity, error):
    with pytest.raises(error):
        editor._dimensions(entity)
    assert editor.canvas.calls == [] or error is not KeyError


def test_an_error_of_the_units_passes(editor, neighbours):
    neighbours.units.fail["fmt"] = RuntimeError("broken")
    with pytest.raises(RuntimeError):
        editor._dimensions(circle())
