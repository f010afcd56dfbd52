"""Shapes built from the points of a drag or of three clicks."""

import copy
import random

import pytest
from hypothesis import given
from hypothesis import strategies as st
from support.operations import CLICK_TOOLS, DRAG_TOOLS
from support.plain import PlainEditor, Var, point, same_number
from support.types import CARD, CARDS

BUILT = [card for card in CARDS if card.tool.dragged or card.name == "slot"]
built = pytest.mark.parametrize("card", BUILT, ids=lambda card: card.name)
dragged = pytest.mark.parametrize("tool", DRAG_TOOLS)


def drawn(card, points, sides="6"):
    """What the editor makes of a drag, or of three clicks."""
    editor = PlainEditor(tool=Var(card.tool.name), sides=Var(sides))
    build = editor._from_drag if card.tool.dragged else editor._slot
    return build(*(point(*p) for p in points))


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


@built
class TestEveryShape:
    def test_follows_its_formula_to_the_last_bit(self, sketcher, card):
        dice = random.Random(52)
        for _ in range(400):
            reach = 10.0 ** dice.randint(-6, 6)
            points = [
                (dice.uniform(-reach, reach), dice.uniform(-reach, reach))
                for _ in card.tool.gesture
            ]
            if dice.random() < 0.2:
                points[1] = (points[0][0], points[1][1])
            assert is_exactly(drawn(card, points, "9"), card.drawn(*points, sides=9))

    @given(points=st.lists(st.tuples(st.floats(), st.floats()), min_size=3, max_size=3))
    def test_of_any_doubles(self, sketcher, card, points):
        points = points[: len(card.tool.gesture)]
        assert is_exactly(drawn(card, points), card.drawn(*points))

    def test_of_points_in_one_place_is_none(self, sketcher, card):
        assert drawn(card, [(1, 2)] * len(card.tool.gesture)) is None

    def test_is_a_new_one_each_time_without_side_effects(self, sketcher, card):
        editor = PlainEditor(tool=Var(card.tool.name))
        points = [point(1, 2), point(4, 6), point(2, 9)][: len(card.tool.gesture)]
        before, sketch = dict(vars(editor)), copy.deepcopy(editor.sk)
        build = editor._from_drag if card.tool.dragged else editor._slot
        assert build(*points) is not build(*points)
        assert dict(vars(editor)) == before
        assert (editor.sk, editor.canvas.calls) == (sketch, [])
        assert [p.tolist() for p in points] == [[1, 2], [4, 6], [2, 9]][: len(points)]


def test_only_exactly_flat_is_none(sketcher):
    made = drawn(CARD["rectangle"], ((0, 0), (5e-324, -5e-324)))
    assert (made["w"], made["h"]) == (5e-324, 5e-324)


class TestRegular:
    def made(self, b, sides="6"):
        return drawn(CARD["regular"], ((0, 0), b), sides)

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
            *((text, 6) for text in ("", "  ", "six", "4.5", "5.0", "5e0", "0x10", "nan", "5 6")),
            ("9" * 5000, 6),
        ],
    )
    def test_the_number_of_sides_is_the_field_s_integer(self, sketcher, text, n):
        if text == "9" * 5000:
            try:
                n = int(text)  # only newer interpreters limit the digits
            except ValueError:
                pass
        made = self.made((0, 2), text)
        assert made["n"] == n
        assert type(made["n"]) is int

    @given(text=st.text())
    def test_any_text_gives_at_least_three_sides(self, sketcher, text):
        try:
            expected = max(3, int(text))
        except ValueError:
            expected = 6
        assert self.made((0, 2), text)["n"] == expected


class TestFromDrag:
    @pytest.mark.parametrize("tool", ["select", *CLICK_TOOLS, "spline", ""])
    def test_other_tools_make_nothing(self, sketcher, tool):
        for b in (point(3, 4), point(0, 0)):
            assert PlainEditor(tool=Var(tool))._from_drag(point(0, 0), b) is None

    @dragged
    def test_only_the_polygon_tool_reads_the_sides(self, sketcher, tool):
        editor = PlainEditor(tool=Var(tool), sides=None)
        if tool == "regular":
            with pytest.raises(AttributeError):
                editor._from_drag(point(0, 0), point(3, 4))
        else:
            assert editor._from_drag(point(0, 0), point(3, 4))["type"] == tool

    def test_needs_no_more_of_the_editor_than_tool_and_sides(self, sketcher):
        class Tools:
            tool, sides = Var("regular"), Var("4")

        made = sketcher.SketchEditor._from_drag(Tools(), point(0, 0), point(0, 2))
        assert made["n"] == 4
