"""What frames the view: the extent, fitting, and the grid step that suits it."""

import math
import random

import numpy as np
import pytest
from support.neighbours import circle, one_of_each, rectangle
from support.plain import PlainEditor, is_point, same_number

NAN, INF = math.nan, math.inf


@pytest.fixture
def editor(neighbours):
    """400 x 300 pixels, 10 pixels to the unit, a grid of 1 millimetre by its text."""
    return PlainEditor(scale=10.0)


@pytest.fixture
def unpainted(editor):
    editor.calls = editor.watch("redraw")
    return editor


class TestExtent:
    @pytest.mark.parametrize(
        "refs, low, high",
        [
            ([], (-0.05, -0.05), (0.05, 0.05)),
            ([("edge", [[1.0, 2.0], [3.0, 5.0]])], (1, 2), (3, 5)),
        ],
    )
    def test_is_handed_out_anew_and_a_tenth_around_the_origin_without_shapes(
        self, editor, refs, low, high
    ):
        editor.refs = refs
        for corner in editor._extent():
            corner += 7
        lo, hi = editor._extent()
        assert is_point(lo, *low)
        assert is_point(hi, *high)

    def test_holds_all_outlines_and_references(self, editor):
        editor.sk["entities"] = [rectangle(1.0, 2.0, 3.0, 0.5), circle(-1.0, 0.25, 0.5)]
        lo, hi = editor._extent()
        assert is_point(lo, -1.5, -0.25)
        assert is_point(hi, 4.0, 2.5)
        editor.refs = [("edge", np.array([[5.0, -3.0], [0.5, 0.5]])), (None, [[0.0, 4.0]])]
        lo, hi = editor._extent()
        assert is_point(lo, -1.5, -3.0)
        assert is_point(hi, 5.0, 4.0)

    def test_leaves_out_references_without_points(self, editor):
        editor.refs = [("none", np.zeros((0, 2))), ("list", [])]
        assert is_point(editor._extent()[0], -0.05, -0.05)

    @pytest.mark.parametrize("error", [ValueError, KeyError, TypeError])
    def test_leaves_out_shapes_without_outline(self, editor, neighbours, error):
        bad = circle(50.0, 50.0, 1.0)
        neighbours.S.fail["outline"] = lambda e: error("no") if e is bad else None
        editor.sk["entities"] = [bad, rectangle(1.0, 1.0, 1.0, 1.0)]
        lo, hi = editor._extent()
        assert is_point(lo, 1.0, 1.0)
        assert is_point(hi, 2.0, 2.0)
        editor.sk["entities"] = [bad]
        assert is_point(editor._extent()[1], 0.05, 0.05)

    def test_asks_the_editor_which_shapes_are_valid(self, editor):
        good, other = circle(), rectangle(5.0, 5.0, 1.0, 1.0)
        editor.sk["entities"] = [good, other]
        editor._ok = lambda e: e is other
        assert is_point(editor._extent()[0], 5.0, 5.0)

    @pytest.mark.parametrize("order", [(0, 1, 2), (2, 1, 0), (1, 2, 0)])
    def test_a_coordinate_that_is_no_number_leaves_no_bound_in_its_direction(self, editor, order):
        points = [[0.0, 1.0], [NAN, 5.0], [2.0, -3.0]]
        editor.refs = [("edge", np.array([points[k] for k in order]))]
        lo, hi = editor._extent()
        assert is_point(lo, NAN, -3.0)
        assert is_point(hi, NAN, 5.0)

    def test_an_infinite_coordinate_is_a_bound(self, editor):
        editor.refs = [("edge", [[0.0, 1.0], [INF, -INF]])]
        lo, hi = editor._extent()
        assert is_point(lo, 0.0, -INF)
        assert is_point(hi, INF, 1.0)

    def test_an_outline_without_rows_adds_nothing(self, editor, neighbours):
        neighbours.S.answers["outline"] = lambda e: (
            np.zeros((0, 2)) if e["type"] == "circle" else np.array([[1.0, 2.0], [3.0, 5.0]])
        )
        editor.sk["entities"] = [circle(), rectangle(), circle()]
        lo, hi = editor._extent()
        assert is_point(lo, 1.0, 2.0)
        assert is_point(hi, 3.0, 5.0)

    def test_an_outline_without_points_does_not_go_with_others(self, editor, neighbours):
        """As numpy's stacking sees it."""
        neighbours.S.answers["outline"] = lambda e: [] if e["type"] == "circle" else [[1.0, 2.0]]
        editor.sk["entities"] = [rectangle(), circle()]
        with pytest.raises(ValueError):
            editor._extent()

    @pytest.mark.parametrize("error", [ValueError, KeyError, TypeError])
    def test_an_error_of_the_editor_s_own_test_passes(self, editor, error):
        def refuse(e):
            raise error("no")

        editor._ok = refuse
        editor.sk["entities"] = [circle()]
        with pytest.raises(error):
            editor._extent()

    def test_a_shape_that_only_the_editor_accepts_is_an_error(self, editor):
        editor._ok = lambda e: True
        editor.sk["entities"] = [circle(r=-1.0)]
        with pytest.raises(ValueError):
            editor._extent()


class TestFit:
    @pytest.mark.parametrize("size", [(200, 200), (1, 1), (150, 20)])
    def test_an_empty_sketch_fills_a_small_canvas(self, unpainted, size):
        unpainted.canvas.width, unpainted.canvas.height = size
        unpainted.fit()
        assert unpainted.scale == 1600.0
        assert is_point(unpainted.centre, 0.0, 0.0)

    def test_follows_its_formula_to_the_last_bit(self, unpainted):
        dice = random.Random(31)
        for _ in range(200):
            lo = np.array([dice.uniform(-9, 9), dice.uniform(-9, 9)])
            hi = lo + np.array([dice.uniform(0, 20), dice.uniform(0, 0.1)])
            w, h = dice.randint(1, 1500), dice.randint(1, 1500)
            unpainted.canvas.width, unpainted.canvas.height = w, h
            unpainted._extent = lambda: (lo, hi)
            unpainted.fit()
            dx, dy = (max(float(hi[k]) - float(lo[k]), 1e-9) for k in (0, 1))
            assert same_number(unpainted.scale, 0.8 * min(max(w, 200) / dx, max(h, 200) / dy))
            middle = [(float(lo[k]) + float(hi[k])) / 2 for k in (0, 1)]
            assert is_point(unpainted.centre, *middle)

    def test_a_single_point_does_not_divide_by_zero(self, unpainted):
        unpainted.refs = [("point", np.array([[3.0, 4.0]]))]
        unpainted.fit()
        assert unpainted.scale == 0.8 * (300 / 1e-9)
        assert is_point(unpainted.centre, 3.0, 4.0)

    def test_repaints_with_the_new_view_and_returns_nothing(self, editor):
        seen = []
        editor.redraw = lambda: seen.append((editor.scale, editor.centre.tolist()))
        editor._extent = lambda: (np.zeros(2), np.array([2.0, 1.0]))
        assert editor.fit() is None
        assert seen == [(160.0, [1.0, 0.5])]


class TestGridStep:
    @pytest.mark.parametrize(
        "text, millimetres",
        [
            ("5", 5.0),
            ("2.5", 2.5),
            ("  5\t", 5.0),
            ("5e-1", 0.5),
            ("1_000", 1000.0),
            ("inf", math.inf),
        ],
    )
    def test_is_the_typed_length(self, editor, text, millimetres):
        editor.grid.set(text)
        assert editor.grid_step() == millimetres / 1000.0

    def test_is_whatever_is_above_zero(self, editor, neighbours):
        step = type("Step", (), {"__gt__": lambda self, zero: zero == 0})()
        neighbours.units.answers["to_si"] = step
        assert editor.grid_step() is step

    @pytest.mark.parametrize(
        "text", ["", "   ", "five", "5 mm", "1,5", "0", "-3", "0.0", "nan", "-inf"]
    )
    def test_is_the_default_where_the_text_is_no_positive_length(self, editor, text):
        editor.grid.set(text)
        editor._default_grid = lambda: 0.25
        assert editor.grid_step() == 0.25
        assert editor.grid.get() == text

    def test_asks_the_units_at_every_call(self, editor, neighbours):
        editor.grid.set("2")
        assert editor.grid_step() == 0.002
        neighbours.units.factor = 100.0
        assert editor.grid_step() == 0.02
        assert neighbours.units.asked == 2
        assert neighbours.units.named("to_si") == [(2.0, "length")] * 2
        assert {type(value) for value, _ in neighbours.units.named("to_si")} == {float}

    def test_is_the_default_where_the_units_refuse_the_value(self, editor, neighbours):
        neighbours.units.fail["to_si"] = ValueError("no")
        editor._default_grid = lambda: 0.25
        assert editor.grid_step() == 0.25

    def test_lets_an_error_of_the_default_through(self, editor):
        def fail():
            raise ValueError("no default")

        editor._default_grid = fail
        editor.grid.set("0")
        with pytest.raises(ValueError, match="no default"):
            editor.grid_step()


def span(width, height=0.0, corner=(0.0, 0.0)):
    lo = np.array(corner, float)
    return lo, lo + np.array([width, height])


class TestDefaultGrid:
    @pytest.mark.parametrize(
        "box, step",
        [
            (span(2.0, 1.0), 0.1),
            (span(1.99, 1.0), 0.01),
            (span(1.0, 2.0), 0.1),
            (span(0.0), 1e-11),
            (span(20.0), 1),
            (span(199.0), 1),
            (span(2500.0), 100),
            (span(5.0, 5.0, corner=(100.0, -300.0)), 0.1),
        ],
    )
    def test_is_the_power_of_ten_below_a_twentieth_of_the_longer_side(self, editor, box, step):
        editor._extent = lambda: box
        result = editor._default_grid()
        assert result == step
        assert type(result) is type(step)

    def test_is_the_interpreter_s_power_of_ten(self, editor):
        for exponent in range(-8, 40):
            editor._extent = lambda: span(37.0 * 10.0**exponent)
            expected = 10 ** math.floor(math.log10(37.0 * 10.0**exponent / 20))
            result = editor._default_grid()
            assert result == expected
            assert type(result) is type(expected)

    @pytest.mark.parametrize("corner", [(-math.inf, 0.0), (0.0, -math.inf), (math.nan, 0.0)])
    def test_is_that_of_an_empty_sketch_where_the_lower_corner_is_not_finite(self, editor, corner):
        editor._extent = lambda: (np.array(corner), np.array([5.0, 5.0]))
        assert editor._default_grid() == 0.001

    def test_only_the_lower_corner_is_tested(self, editor):
        editor._extent = lambda: (np.zeros(2), np.array([math.inf, 1.0]))
        with pytest.raises(OverflowError):
            editor._default_grid()


@pytest.mark.parametrize(
    "operation",
    [
        lambda e: e.redraw(),
        lambda e: e._extent(),
        lambda e: e.pick(200, 150),
    ],
    ids=["redraw", "_extent", "pick"],
)
def test_each_outline_is_asked_for_once(editor, neighbours, operation):
    editor.sk = one_of_each()
    count = len(editor.sk["entities"])
    neighbours.S.answers["depths"] = [0] * count
    operation(editor)
    assert neighbours.S.count("outline") == count


def test_snapping_asks_for_no_outline(editor, neighbours):
    editor.sk = one_of_each()
    editor.snapped(10, 10)
    assert neighbours.S.count("outline") == 0
