"""Shapes built from the points of a drag or of three clicks."""

import copy
import math
import random

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from support.operations import DRAG_TOOLS
from support.plain import PlainEditor, Var, point, same_number


@pytest.fixture
def editor(sketcher):
    return PlainEditor()


def drawn(tool, a, b, sides="6"):
    """What a drag from a to b makes."""
    return PlainEditor(tool=Var(tool), sides=Var(sides))._from_drag(point(*a), point(*b))


def is_exactly(made, expected):
    """Same keys in the same order, same types, same numbers to the last bit."""
    if made is None or expected is None:
        return made is expected
    return (
        type(made) is dict
        and list(made) == list(expected)
        and list(map(type, made.values())) == list(map(type, expected.values()))
        and all(
            made[key] == expected[key]
            if isinstance(expected[key], str)
            else same_number(made[key], expected[key])
            for key in expected
        )
    )


# The formulas, written plainly with the interpreter's own numbers.


def rectangle_of(a, b):
    (ax, ay), (bx, by) = a, b
    if abs(bx - ax) == 0 or abs(by - ay) == 0:
        return None
    lo = np.minimum(point(*a), point(*b))
    return {
        "type": "rectangle",
        "x": float(lo[0]),
        "y": float(lo[1]),
        "w": abs(bx - ax),
        "h": abs(by - ay),
        "radius": 0.0,
    }


def circle_of(a, b):
    with np.errstate(over="ignore", invalid="ignore"):
        r = float(np.linalg.norm(point(*b) - point(*a)))
    return None if r == 0 else {"type": "circle", "xc": a[0], "yc": a[1], "r": r}


def regular_of(a, b, n):
    circle = circle_of(a, b)
    if circle is None:
        return None
    angle = round(math.degrees(math.atan2(b[1] - a[1], b[0] - a[0])), 6)
    return {**circle, "type": "regular", "n": n, "angle": angle}


def slot_of(a, b, p):
    dx, dy = b[0] - a[0], b[1] - a[1]
    with np.errstate(over="ignore", invalid="ignore"):
        length = float(np.linalg.norm(np.array([dx, dy])))
    if length == 0:
        return None
    r = abs(dx * (p[1] - a[1]) - dy * (p[0] - a[0])) / length
    if r == 0:
        return None
    return {"type": "slot", "x1": a[0], "y1": a[1], "x2": b[0], "y2": b[1], "r": r}


def random_points(count):
    """Tuples of that many points of all magnitudes, some of them in line; the same in every run."""
    dice = random.Random(52)
    for _ in range(400):
        size = 10.0 ** dice.randint(-6, 6)
        points = [(dice.uniform(-size, size), dice.uniform(-size, size)) for _ in range(count)]
        if dice.random() < 0.2:
            points[1] = (points[0][0], points[1][1])
        yield points


any_float = st.floats()
any_point = st.tuples(any_float, any_float)


class TestRectangle:
    def test_from_the_upper_right_to_the_lower_left(self, sketcher):
        expected = {"type": "rectangle", "x": 1.0, "y": 2.0, "w": 2.0, "h": 3.0, "radius": 0.0}
        assert is_exactly(drawn("rectangle", (3, 5), (1, 2)), expected)

    @pytest.mark.parametrize(
        "a, b", [((1, 2), (3, 5)), ((3, 5), (1, 2)), ((1, 5), (3, 2)), ((3, 2), (1, 5))]
    )
    def test_is_the_same_in_all_four_directions(self, sketcher, a, b):
        expected = {"type": "rectangle", "x": 1.0, "y": 2.0, "w": 2.0, "h": 3.0, "radius": 0.0}
        assert is_exactly(drawn("rectangle", a, b), expected)

    @pytest.mark.parametrize("b", [(4, 2), (1, 5), (1, 2)])
    def test_flat_in_one_direction_is_none(self, sketcher, b):
        assert drawn("rectangle", (1, 2), b) is None

    def test_only_exactly_flat_is_none(self, sketcher):
        made = drawn("rectangle", (0, 0), (5e-324, -5e-324))
        assert (made["w"], made["h"]) == (5e-324, 5e-324)

    def test_follows_its_formula_to_the_last_bit(self, sketcher):
        for a, b in random_points(2):
            assert is_exactly(drawn("rectangle", a, b), rectangle_of(a, b))

    @given(a=any_point, b=any_point)
    def test_of_any_doubles(self, sketcher, a, b):
        assert is_exactly(drawn("rectangle", a, b), rectangle_of(a, b))


class TestCircle:
    def test_press_is_the_centre_and_the_release_lies_on_it(self, sketcher):
        expected = {"type": "circle", "xc": 0.0, "yc": 0.0, "r": 5.0}
        assert is_exactly(drawn("circle", (0, 0), (3, 4)), expected)
        expected = {"type": "circle", "xc": 1.0, "yc": -2.0, "r": 2.0}
        assert is_exactly(drawn("circle", (1, -2), (1, 0)), expected)

    def test_without_radius_is_none(self, sketcher):
        assert drawn("circle", (1, 2), (1, 2)) is None

    def test_follows_its_formula_to_the_last_bit(self, sketcher):
        for a, b in random_points(2):
            assert is_exactly(drawn("circle", a, b), circle_of(a, b))

    @given(a=any_point, b=any_point)
    def test_of_any_doubles(self, sketcher, a, b):
        assert is_exactly(drawn("circle", a, b), circle_of(a, b))


class TestRegular:
    def test_the_release_is_the_first_corner(self, sketcher):
        keys = {"type": "regular", "xc": 0.0, "yc": 0.0, "r": 2.0, "n": 5, "angle": 90.0}
        assert is_exactly(drawn("regular", (0, 0), (0, 2), "5"), keys)

    @pytest.mark.parametrize(
        "b, angle",
        [((2, 0), 0.0), ((-2, 0), 180.0), ((0, -2), -90.0), ((1, 1), 45.0), ((-3, -3), -135.0)],
    )
    def test_the_angle_is_that_of_the_drag(self, sketcher, b, angle):
        assert drawn("regular", (0, 0), b)["angle"] == angle

    def test_the_angle_has_six_decimals(self, sketcher):
        assert drawn("regular", (0, 0), (3, 1))["angle"] == 18.434949
        assert drawn("regular", (0, 0), (1, 3))["angle"] == 71.565051

    @pytest.mark.parametrize(
        "text, n",
        [
            ("5", 5),
            ("3", 3),
            ("2", 3),
            ("0", 3),
            ("-7", 3),
            ("64", 64),
            ("1000", 1000),
            (" 7 ", 7),
            ("+8", 8),
            ("007", 7),
            ("1_2", 12),
            ("\N{ARABIC-INDIC DIGIT NINE}", 9),
            ("123456789012345678901234567890", 123456789012345678901234567890),
            ("", 6),
            ("  ", 6),
            ("six", 6),
            ("4.5", 6),
            ("5.0", 6),
            ("5e0", 6),
            ("0x10", 6),
            ("nan", 6),
            ("5 6", 6),
            ("9" * 5000, 6),
        ],
    )
    def test_the_number_of_sides_is_the_field_s_integer(self, sketcher, text, n):
        if text == "9" * 5000:
            try:
                n = int(text)  # only newer interpreters limit the digits
            except ValueError:
                pass
        made = drawn("regular", (0, 0), (0, 2), text)
        assert made["n"] == n
        assert type(made["n"]) is int

    def test_without_radius_is_none(self, sketcher):
        assert drawn("regular", (1, 2), (1, 2)) is None

    def test_follows_its_formula_to_the_last_bit(self, sketcher):
        for a, b in random_points(2):
            assert is_exactly(drawn("regular", a, b, "9"), regular_of(a, b, 9))

    @given(a=any_point, b=any_point)
    def test_of_any_doubles(self, sketcher, a, b):
        assert is_exactly(drawn("regular", a, b), regular_of(a, b, 6))

    @given(text=st.text())
    def test_any_text_gives_at_least_three_sides(self, sketcher, text):
        try:
            expected = max(3, int(text))
        except ValueError:
            expected = 6
        assert drawn("regular", (0, 0), (0, 2), text)["n"] == expected


class TestFromDrag:
    @pytest.mark.parametrize("tool", ["select", "line", "slot", "spline", ""])
    def test_other_tools_make_nothing(self, sketcher, tool):
        assert drawn(tool, (0, 0), (3, 4)) is None
        assert drawn(tool, (0, 0), (0, 0)) is None

    @pytest.mark.parametrize("tool", DRAG_TOOLS)
    def test_has_no_side_effects(self, sketcher, tool):
        editor = PlainEditor(tool=Var(tool))
        a, b = point(1, 2), point(4, 6)
        before, sketch = dict(vars(editor)), copy.deepcopy(editor.sk)
        editor._from_drag(a, b)
        assert dict(vars(editor)) == before
        assert editor.sk == sketch
        assert editor.canvas.calls == []
        assert (a.tolist(), b.tolist()) == ([1.0, 2.0], [4.0, 6.0])

    @pytest.mark.parametrize("tool", DRAG_TOOLS)
    def test_makes_a_new_dictionary_each_time(self, sketcher, tool):
        editor = PlainEditor(tool=Var(tool))
        a, b = point(1, 2), point(4, 6)
        assert editor._from_drag(a, b) is not editor._from_drag(a, b)

    @pytest.mark.parametrize("tool", ["rectangle", "circle"])
    def test_only_the_polygon_tool_reads_the_sides(self, sketcher, tool):
        editor = PlainEditor(tool=Var(tool), sides=None)
        assert editor._from_drag(point(0, 0), point(3, 4))["type"] == tool

    def test_needs_no_more_of_the_editor_than_tool_and_sides(self, sketcher):
        class Tools:
            tool, sides = Var("regular"), Var("4")

        made = sketcher.SketchEditor._from_drag(Tools(), point(0, 0), point(0, 2))
        assert made["n"] == 4


class TestSlot:
    def test_the_width_is_measured_from_the_axis_line_beyond_the_ends_too(self, editor):
        keys = {"type": "slot", "x1": 0.0, "y1": 0.0, "x2": 4.0, "y2": 0.0, "r": 1.5}
        assert is_exactly(editor._slot(point(0, 0), point(4, 0), point(10, 1.5)), keys)
        assert is_exactly(editor._slot(point(0, 0), point(4, 0), point(-3, -1.5)), keys)

    def test_a_slanted_axis(self, editor):
        made = editor._slot(point(1, 1), point(4, 5), point(1, 6))
        assert made["r"] == 3.0

    @pytest.mark.parametrize("p", [(2, 0), (0, 0), (4, 0), (9, 0)])
    def test_a_click_on_the_axis_line_gives_none(self, editor, p):
        assert editor._slot(point(0, 0), point(4, 0), point(*p)) is None

    def test_coincident_ends_give_none(self, editor):
        assert editor._slot(point(1, 2), point(1, 2), point(5, 5)) is None

    def test_follows_its_formula_to_the_last_bit(self, editor):
        for a, b, p in random_points(3):
            assert is_exactly(editor._slot(point(*a), point(*b), point(*p)), slot_of(a, b, p))

    @given(a=any_point, b=any_point, p=any_point)
    def test_of_any_doubles(self, sketcher, a, b, p):
        made = PlainEditor()._slot(point(*a), point(*b), point(*p))
        assert is_exactly(made, slot_of(a, b, p))

    def test_has_no_side_effects(self, editor):
        points = [point(0, 0), point(4, 0), point(1, 1)]
        before = dict(vars(editor))
        editor._slot(*points)
        assert dict(vars(editor)) == before
        assert [p.tolist() for p in points] == [[0.0, 0.0], [4.0, 0.0], [1.0, 1.0]]
