"""What can't be built is refused with a reason; nothing that a sketch may hold does more harm."""

import math
import warnings
from decimal import Decimal
from fractions import Fraction

import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from support.neighbours import circle, polygon, rectangle, regular, slot
from support.shapes import sketch
from support.types import CARDS
from tandrel import _reasons
from tandrel import sketch as S
from tandrel.kinds.polygon import _complain
from tandrel.units import set_units

RECTANGLE, CIRCLE, REGULAR = rectangle(w=0.04, h=0.02), circle(r=0.01), regular(r=0.01)
SLOT, OUTLINE = slot(x2=0.03, r=0.004), polygon((0.0, 0.0), (0.02, 0.0), (0.0, 0.01))
EVERY_KIND = [card.sample for card in CARDS]


REFUSED = [
    *(row for card in CARDS for row in card.refused),
    ({"type": "spline"}, "'spline' is no kind of shape"),
    ({"type": None}, "None is no kind of shape"),
    ({"type": ["circle"]}, "['circle'] is no kind of shape"),
]
OF_WRONG_TYPE = [
    (None, "a shape must be a dictionary"),
    ("circle", "a shape must be a dictionary"),
    ([("type", "circle")], "a shape must be a dictionary"),
    *(
        (circle(r=r), "Radius: not a number")
        for r in (None, "0.01", True, 1j, [0.01], np.array(0.01), Decimal("0.01"))
    ),
    (regular(n="6"), "Sides: not a number"),
    *(
        ({**OUTLINE, "points": points}, "the corners must be a list")
        for points in (None, "0 0", np.array(1.0))
    ),
    ({**OUTLINE, "points": [["0", "0"], ["1", "0"], ["0", "1"]]}, "corner 1: not a number"),
    ({**OUTLINE, "points": [[0.0, 0.0], [True, False], [0.0, 1.0]]}, "corner 2: not a number"),
]


@pytest.fixture(autouse=True)
def millimetres():
    yield
    set_units("mm")


@pytest.mark.parametrize("e, message", REFUSED)
def test_a_value_that_makes_no_shape_is_a_value_error_that_says_why(e, message):
    for ask in (S.outline, S.area, S.corners):
        with pytest.raises(ValueError) as refusal:
            ask(e)
        assert str(refusal.value) == message
        assert message in repr(refusal.value)


@pytest.mark.parametrize("e, message", OF_WRONG_TYPE)
def test_a_value_of_the_wrong_type_is_a_type_error_that_says_which(e, message):
    for ask in (S.outline, S.area):
        with pytest.raises(TypeError) as refusal:
            ask(e)
        assert str(refusal.value) == message
    with pytest.raises(ValueError) as refusal:
        S.corners(e)
    assert str(refusal.value) == message


@pytest.mark.parametrize("e, key", [(e, key) for e in EVERY_KIND for key in e])
def test_a_missing_key_is_a_key_error_that_names_it(e, key):
    for ask in (S.outline, S.area, S.corners):
        with pytest.raises(KeyError) as missing:
            ask({name: value for name, value in e.items() if name != key})
        assert missing.value.args == (key,)


def test_whole_numbers_of_any_type_are_numbers():
    assert len(S.corners({**REGULAR, "n": np.int16(5), "r": Fraction(1, 100)})) == 5


def test_the_greatest_and_smallest_shapes_are_drawn():
    for e in (
        circle(1e9, -1e9, 1e9),
        circle(1e9, r=10.0),
        circle(r=1.1e-11),
        regular(n=1000),
        regular(n=3),
        {**RECTANGLE, "radius": 0.01},
    ):
        assert S.area(e) > 0
        assert np.isfinite(S.outline(e)).all()


def test_a_rounding_just_as_large_as_it_may_be_is_drawn_whatever_the_rounding_errors():
    for k in range(1, 200):
        side = k / 70
        for radius in (side / 2, math.nextafter(side / 2, math.inf)):
            assert S.area({**RECTANGLE, "x": 0.1, "w": side, "h": side, "radius": radius}) > 0


def test_a_reason_speaks_the_units_and_the_language_of_the_moment(monkeypatch):
    e = {**RECTANGLE, "radius": 0.0508}
    with pytest.raises(ValueError) as refusal:
        S.outline(e)
    set_units("in")
    assert str(refusal.value).startswith("the corner radius 2 in is larger")
    set_units("cm")
    with pytest.raises(ValueError, match=r"the corner radius 5\.08 cm is larger"):
        S.outline(e)
    german = {
        "the corner radius {radius} is larger than half of the shorter side, {half}": "{half}"
    }
    monkeypatch.setattr(_reasons, "tr", lambda text: german.get(text, text))
    assert str(refusal.value) == "1 cm"


def test_a_verdict_without_a_place_is_still_a_reason():
    with pytest.raises(ValueError, match="the outline is not a simple closed line"):
        _complain("Hole lies outside shell", "", "")


def cyclic():
    ring = [[0.0, 0.0], [1.0, 0.0]]
    ring.append(ring)
    return ring


CYCLE = cyclic()
NUMBERS = st.one_of(
    st.floats(),
    st.floats(-10, 10),
    st.integers(),
    st.sampled_from([0.0, -0.0, 1.0, 1e308, -1e308, 5e-324, 10**400, -(10**400), 1e9, 1e-9]),
)
ANYTHING = st.one_of(
    NUMBERS,
    st.none(),
    st.booleans(),
    st.text(max_size=3),
    st.binary(max_size=3),
    st.complex_numbers(),
    st.sampled_from([CYCLE, np.array(1.0), np.array([1.0, 2.0]), np.array("x"), object(), {}, ()]),
    st.lists(NUMBERS, max_size=3),
)
CORNERS = st.one_of(
    ANYTHING,
    st.lists(st.lists(NUMBERS, min_size=2, max_size=2), max_size=8),
    st.lists(st.tuples(*[st.integers(-3, 3)] * 2), min_size=3, max_size=8),
    st.lists(ANYTHING, max_size=5),
    st.lists(NUMBERS, max_size=6).map(np.array),
)
KEYS = sorted({key for e in EVERY_KIND for key in e} - {"type", "points"})
HOSTILE = st.one_of(
    ANYTHING,
    st.fixed_dictionaries(
        {},
        optional={
            "type": st.one_of(st.sampled_from([e["type"] for e in EVERY_KIND]), ANYTHING),
            "points": CORNERS,
            **{key: st.one_of(NUMBERS, NUMBERS, ANYTHING) for key in KEYS},
        },
    ),
    st.builds(
        lambda e, key, value: {**e, key: value},
        st.sampled_from(EVERY_KIND),
        st.sampled_from(KEYS),
        st.one_of(NUMBERS, ANYTHING),
    ),
    st.builds(
        lambda points, radius: {"type": "polygon", "points": points, "radius": radius},
        CORNERS,
        st.sampled_from([0.0, 0.1, 1.0, 1e-3]),
    ),
    st.builds(
        lambda kind, numbers: {"type": kind, **dict(zip(KEYS, numbers))},
        st.sampled_from([e["type"] for e in EVERY_KIND if "points" not in e]),
        st.lists(st.floats(-1e3, 1e3), min_size=len(KEYS), max_size=len(KEYS)),
    ),
)


@settings(deadline=None, max_examples=1500)
@given(HOSTILE)
def test_whatever_an_entity_holds_there_is_a_shape_or_one_of_three_errors(e):
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        try:
            ring = S.outline(e)
        except (ValueError, TypeError) as refusal:
            assert isinstance(refusal.args[0], _reasons.Reason) and str(refusal)
            with pytest.raises(ValueError):
                S.corners(e)
        except KeyError as missing:
            assert missing.args[0] not in e
            with pytest.raises(KeyError):
                S.corners(e)
        else:
            assert np.isfinite(ring).all() and len(ring) >= 64
            assert S.area(e) > 0 and math.isfinite(S.area(e))
            assert S.corners(e).shape[1] == 2
            twice = ring[:, 0] @ np.roll(ring[:, 1], -1) - ring[:, 1] @ np.roll(ring[:, 0], -1)
            assert twice > 0 or max(abs(ring).max() ** 2 * 1e-12, 0) > S.area(e)


SKETCHES = st.one_of(
    ANYTHING,
    st.fixed_dictionaries(
        {},
        optional={
            "plane": st.one_of(st.sampled_from(S.PLANES), ANYTHING),
            "offset": st.one_of(NUMBERS, ANYTHING),
            "entities": st.one_of(st.lists(HOSTILE, max_size=6), ANYTHING),
        },
    ),
)


@settings(deadline=None, max_examples=500)
@given(SKETCHES)
def test_whatever_a_sketch_holds_the_check_says_what_is_wrong_and_depths_are_told(sk):
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        messages = S.check(sk)
        assert all(type(message) is str and message for message in messages)
        entities = sk.get("entities", []) if isinstance(sk, dict) else None
        if isinstance(entities, (list, tuple)):
            depths = S.depths(sk)
            assert len(depths) == len(entities)
            assert all(type(depth) is int and depth >= 0 for depth in depths)
        else:
            with pytest.raises(ValueError, match="The list of shapes is damaged"):
                S.depths(sk)
            assert messages


class TestCheck:
    def test_a_good_sketch_has_no_problems(self):
        outer = {**RECTANGLE, "x": -0.02, "y": -0.02, "h": 0.04, "radius": 0.005}
        assert S.check(sketch(outer, CIRCLE)) == []
        for plane in S.PLANES:
            assert S.check(sketch(CIRCLE, plane=plane, offset=-3)) == []
        assert S.check({"entities": [SLOT]}) == []
        assert S.check(sketch(CIRCLE, offset=None)) == []

    @pytest.mark.parametrize("sk", [None, [], "sketch", 3])
    def test_something_else_is_no_sketch(self, sk):
        assert S.check(sk) == ["This is not a sketch"]

    @pytest.mark.parametrize("sk", [{}, S.new(), {"entities": ()}])
    def test_an_empty_sketch(self, sk):
        assert S.check(sk) == ["Nothing is drawn yet"]

    @pytest.mark.parametrize("entities", [None, 3, "circle", {"type": "circle"}])
    def test_a_damaged_list_of_shapes(self, entities):
        assert S.check({"entities": entities}) == ["The list of shapes is damaged"]

    @pytest.mark.parametrize("plane", ["ZX", None, ["XY"], ""])
    def test_an_unknown_plane(self, plane):
        assert S.check(sketch(CIRCLE, plane=plane)) == [
            f"{plane!r} is no sketch plane, choose one of XY, XZ, YZ"
        ]

    def test_a_plane_of_any_length_is_said_shortly(self):
        (message,) = S.check(sketch(CIRCLE, plane="XY" * 10_000))
        assert len(message) < 100

    @pytest.mark.parametrize(
        "why, offsets",
        [
            ("not a number", [math.nan, "0", True, [0.0], 1j]),
            ("the number is too large", [math.inf, -math.inf, 10**400, 1e10]),
        ],
    )
    def test_an_offset_that_is_no_place(self, why, offsets):
        for offset in offsets:
            assert S.check(sketch(CIRCLE, offset=offset)) == [f"Offset along the normal: {why}"]

    def test_each_shape_that_cannot_be_built_is_named(self):
        bad = [{**CIRCLE, "r": 0.0}, {**RECTANGLE, "w": None}, {"type": "regular"}, None]
        bad += [{"type": "spline"}, {}, {**SLOT, "r": -1.0}]
        assert S.check(sketch(OUTLINE, *bad)) == [
            "Shape 2 (Circle): the radius must be greater than zero",
            "Shape 3 (Rectangle): Width: not a number",
            "Shape 4 (Polygon): xc is missing",
            "Shape 5: a shape must be a dictionary",
            "Shape 6: 'spline' is no kind of shape",
            "Shape 7: type is missing",
            "Shape 8 (Slot): the half width must be greater than zero",
        ]
        assert S.check(sketch({**OUTLINE, "points": []}))[0].startswith("Shape 1 (Outline): ")

    def test_of_many_problems_the_first_are_said_and_the_others_counted(self):
        bad = {**CIRCLE, "r": 0.0}
        nine = S.check(sketch(*[bad] * 9))
        assert len(nine) == 9 and nine[-1] == "Further problems: 1"
        many = S.check(sketch(*[bad] * 1000))
        assert len(many) == 9 and many[-1] == "Further problems: 992"
        assert len(S.check(sketch(*[bad] * 8))) == 8

    def test_messages_are_translated(self, monkeypatch):
        german = {
            "{shape}: {why}": "{shape} - {why}",
            "Shape {n} ({kind})": "Form {n}, {kind}",
            "Circle": "Kreis",
            "the radius must be greater than zero": "Radius fehlt",
        }
        monkeypatch.setattr(_reasons, "tr", lambda text: german.get(text, text))
        assert S.check(sketch({**CIRCLE, "r": 0.0})) == ["Form 1, Kreis - Radius fehlt"]
