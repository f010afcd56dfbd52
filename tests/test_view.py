"""The mapping between plane and canvas, fit, zoom and pan, the grid step."""

import math
import random

import numpy as np
import pytest
from support.neighbours import circle, rectangle
from support.plain import Event, PlainEditor, same_number
from support.views import is_point, random_views

ERRORS_OF_BAD_SHAPES = [ValueError, KeyError, TypeError]


@pytest.fixture
def editor(neighbours):
    """400 x 300 pixels, 10 pixels to the unit, a grid of 1 millimetre by its text."""
    return PlainEditor(scale=10.0)


class TestToScreen:
    def test_puts_the_centre_into_the_middle_of_the_canvas(self, editor):
        editor.centre = np.array([3.0, -2.0])
        assert editor.to_screen((3.0, -2.0)) == (200.0, 150.0)

    def test_scales_to_pixels_with_v_upwards(self, editor):
        assert editor.to_screen((1.0, 2.0)) == (210.0, 130.0)

    def test_halves_odd_sizes_exactly(self, neighbours):
        editor = PlainEditor(width=401, height=299)
        assert editor.to_screen((0.0, 0.0)) == (200.5, 149.5)

    def test_gives_a_tuple_of_two_plain_floats(self, editor):
        result = editor.to_screen(np.array([1.0, 2.0]))
        assert type(result) is tuple
        assert [type(value) for value in result] == [float, float]

    @pytest.mark.parametrize(
        "point", [(1, 2), [1.0, 2.0], np.array([1, 2]), np.array([1.0, 2.0], np.float32), (True, 2)]
    )
    def test_takes_any_pair_of_numbers(self, editor, point):
        result = editor.to_screen(point)
        assert result == (210.0, 130.0)
        assert [type(value) for value in result] == [float, float]

    def test_follows_its_formula_to_the_last_bit(self, neighbours):
        for editor, p in random_views():
            w, h, s, c = editor.canvas.width, editor.canvas.height, editor.scale, editor.centre
            sx, sy = editor.to_screen(p)
            assert same_number(sx, w / 2 + (p[0] - float(c[0])) * s)
            assert same_number(sy, h / 2 - (p[1] - float(c[1])) * s)

    def test_asks_the_canvas_for_its_size_at_every_call(self, editor):
        assert editor.to_screen((0, 0)) == (200.0, 150.0)
        editor.canvas.width, editor.canvas.height = 100, 50
        assert editor.to_screen((0, 0)) == (50.0, 25.0)

    @pytest.mark.parametrize("point", [(), (1.0,), None, "ab", ("a", "b"), (None, 0.0)])
    def test_refuses_what_is_no_point(self, editor, point):
        with pytest.raises((TypeError, IndexError, ValueError)):
            editor.to_screen(point)


class TestToWorld:
    def test_gives_the_plane_point_of_a_pixel(self, editor):
        editor.centre = np.array([3.0, -2.0])
        assert is_point(editor.to_world(210, 130), 4.0, 0.0)

    def test_takes_fractions_of_pixels(self, editor):
        assert is_point(editor.to_world(200.5, 149.5), 0.05, 0.05)

    def test_follows_its_formula_to_the_last_bit(self, neighbours):
        for editor, (x, y) in random_views():
            w, h, s, c = editor.canvas.width, editor.canvas.height, editor.scale, editor.centre
            expected = float(c[0]) + (x - w / 2) / s, float(c[1]) - (y - h / 2) / s
            assert is_point(editor.to_world(x, y), *expected)

    def test_asks_the_canvas_for_its_size_at_every_call(self, editor):
        editor.to_world(0, 0)
        editor.canvas.width, editor.canvas.height = 100, 50
        assert is_point(editor.to_world(50, 25), 0.0, 0.0)

    def test_hands_out_a_new_array_each_time(self, editor):
        first = editor.to_world(200, 150)
        first += 1
        assert is_point(editor.to_world(200, 150), 0.0, 0.0)
        assert is_point(editor.centre, 0.0, 0.0)

    def test_is_the_inverse_of_to_screen(self, neighbours):
        for editor, p in random_views():
            reach = max(abs(editor.centre).max(), 1000 / editor.scale, abs(p[0]), abs(p[1]))
            assert editor.to_world(*editor.to_screen(p)) == pytest.approx(p, abs=reach * 1e-12)


class TestExtent:
    def test_of_nothing_is_a_tenth_around_the_origin(self, editor):
        lo, hi = editor._extent()
        assert is_point(lo, -0.05, -0.05)
        assert is_point(hi, 0.05, 0.05)

    def test_of_nothing_is_new_at_every_call(self, editor):
        editor._extent()[0][0] = 7
        assert is_point(editor._extent()[0], -0.05, -0.05)

    def test_holds_all_outlines(self, editor):
        editor.sk["entities"] = [rectangle(1.0, 2.0, 3.0, 0.5), circle(-1.0, 0.25, 0.5)]
        lo, hi = editor._extent()
        assert is_point(lo, -1.5, -0.25)
        assert is_point(hi, 4.0, 2.5)

    def test_holds_references(self, editor):
        editor.sk["entities"] = [rectangle(0.0, 0.0, 1.0, 1.0)]
        editor.refs = [("edge", np.array([[5.0, -3.0], [0.5, 0.5]])), (None, [[0.0, 2.0]])]
        lo, hi = editor._extent()
        assert is_point(lo, 0.0, -3.0)
        assert is_point(hi, 5.0, 2.0)

    def test_of_references_alone_does_not_hold_the_default_box(self, editor):
        editor.refs = [("edge", np.array([[5.0, 6.0], [7.0, 9.0]]))]
        lo, hi = editor._extent()
        assert is_point(lo, 5.0, 6.0)
        assert is_point(hi, 7.0, 9.0)

    def test_leaves_out_references_without_points(self, editor):
        editor.refs = [("none", np.zeros((0, 2))), ("list", [])]
        assert is_point(editor._extent()[0], -0.05, -0.05)

    @pytest.mark.parametrize("error", ERRORS_OF_BAD_SHAPES)
    def test_leaves_out_shapes_without_outline(self, editor, neighbours, error):
        bad = circle(50.0, 50.0, 1.0)
        neighbours.S.fail["outline"] = lambda e: error("no") if e is bad else None
        editor.sk["entities"] = [bad, rectangle(1.0, 1.0, 1.0, 1.0)]
        lo, hi = editor._extent()
        assert is_point(lo, 1.0, 1.0)
        assert is_point(hi, 2.0, 2.0)

    def test_of_bad_shapes_only_is_the_default_box(self, editor):
        editor.sk["entities"] = [circle(r=-1.0), {"type": "circle"}]
        assert is_point(editor._extent()[1], 0.05, 0.05)

    def test_lets_other_errors_of_an_outline_through(self, editor, neighbours):
        editor.sk["entities"] = [circle()]
        neighbours.S.fail["outline"] = RuntimeError("broken")
        with pytest.raises(RuntimeError, match="broken"):
            editor._extent()

    def test_asks_the_editor_which_shapes_are_valid(self, editor):
        good, other = circle(), rectangle(5.0, 5.0, 1.0, 1.0)
        editor.sk["entities"] = [good, other]
        editor._ok = lambda e: e is other
        assert is_point(editor._extent()[0], 5.0, 5.0)

    def test_takes_outlines_of_tuples(self, editor, neighbours):
        neighbours.S.answers["outline"] = [(0.5, 1.5), (2.5, -1.0), (1.0, 1.0)]
        editor.sk["entities"] = [circle()]
        lo, hi = editor._extent()
        assert tuple(lo) == (0.5, -1.0)
        assert tuple(hi) == (2.5, 1.5)


class TestFit:
    @pytest.fixture
    def unpainted(self, editor):
        editor.calls = editor.watch("redraw")
        return editor

    @pytest.mark.parametrize("size", [(200, 200), (1, 1), (150, 20)])
    def test_an_empty_sketch_fills_a_small_canvas(self, unpainted, size):
        unpainted.canvas.width, unpainted.canvas.height = size
        unpainted.fit()
        assert unpainted.scale == 1600.0
        assert is_point(unpainted.centre, 0.0, 0.0)

    def test_counts_a_small_side_as_200_pixels(self, unpainted):
        unpainted.canvas.width, unpainted.canvas.height = 1000, 100
        unpainted._extent = lambda: (np.zeros(2), np.array([1.0, 1.0]))
        unpainted.fit()
        assert unpainted.scale == 160.0

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

    def test_leaves_a_tenth_on_each_side_of_the_tighter_direction(self, unpainted):
        unpainted.sk["entities"] = [rectangle(0.0, 0.0, 40.0, 10.0)]
        unpainted.fit()
        assert unpainted.to_screen((0.0, 5.0)) == pytest.approx((40.0, 150.0))
        assert unpainted.to_screen((40.0, 5.0)) == pytest.approx((360.0, 150.0))

    def test_a_single_point_does_not_divide_by_zero(self, unpainted):
        unpainted.refs = [("point", np.array([[3.0, 4.0]]))]
        unpainted.fit()
        assert unpainted.scale == 0.8 * (300 / 1e-9)
        assert is_point(unpainted.centre, 3.0, 4.0)

    def test_the_width_decides_for_a_horizontal_line(self, unpainted):
        unpainted.refs = [("line", np.array([[0.0, 1.0], [10.0, 1.0]]))]
        unpainted.fit()
        assert unpainted.scale == 0.8 * (400 / 10.0)

    def test_the_height_decides_for_a_vertical_line(self, unpainted):
        unpainted.refs = [("line", np.array([[1.0, 0.0], [1.0, 10.0]]))]
        unpainted.fit()
        assert unpainted.scale == 0.8 * (300 / 10.0)

    def test_repaints_with_the_new_view_and_returns_nothing(self, editor):
        seen = []
        editor.redraw = lambda: seen.append((editor.scale, editor.centre.tolist()))
        editor._extent = lambda: (np.zeros(2), np.array([2.0, 1.0]))
        assert editor.fit() is None
        assert seen == [(160.0, [1.0, 0.5])]

    def test_leaves_a_float_and_an_array(self, unpainted):
        unpainted.fit()
        assert isinstance(unpainted.scale, float)
        assert is_point(unpainted.centre, 0.0, 0.0)


class TestZoom:
    @pytest.fixture
    def unpainted(self, editor):
        editor.calls = editor.watch("redraw")
        return editor

    def test_multiplies_the_scale(self, unpainted):
        unpainted._zoom(1.2, 200, 150)
        assert unpainted.scale == 10.0 * 1.2
        assert is_point(unpainted.centre, 0.0, 0.0)

    def test_follows_its_formula_to_the_last_bit(self, neighbours):
        for editor, (x, y) in random_views():
            editor.watch("redraw")
            scale, centre = editor.scale, editor.centre
            before = editor.to_world(x, y)
            editor._zoom(1.2, x, y)
            assert same_number(editor.scale, scale * 1.2)
            view = PlainEditor(
                width=editor.canvas.width,
                height=editor.canvas.height,
                scale=scale * 1.2,
                centre=centre,
            )
            expected = centre + (before - view.to_world(x, y))
            assert is_point(editor.centre, *expected)

    def test_keeps_the_point_under_the_pointer(self, unpainted):
        unpainted.centre = np.array([3.0, 7.0])
        under = unpainted.to_world(37, 251)
        for factor in (1.2, 1.2, 1 / 1.2, 5.0, 0.01):
            unpainted._zoom(factor, 37, 251)
            assert unpainted.to_world(37, 251) == pytest.approx(under, abs=1e-12)

    def test_one_step_in_and_one_out_restore_the_view(self, unpainted):
        unpainted.centre = np.array([3.0, 7.0])
        unpainted._zoom(1.2, 37, 251)
        unpainted._zoom(1 / 1.2, 37, 251)
        assert unpainted.scale == pytest.approx(10.0)
        assert unpainted.centre == pytest.approx([3.0, 7.0])

    def test_has_no_limits(self, unpainted):
        for _ in range(1000):
            unpainted._zoom(1.2, 0, 0)
        assert unpainted.scale > 1e79
        for _ in range(2000):
            unpainted._zoom(1 / 1.2, 0, 0)
        assert 0 < unpainted.scale < 1e-77

    def test_measures_before_and_after_through_the_editor(self, unpainted):
        scales = []
        answers = iter([np.array([1.0, 2.0]), np.array([0.25, 4.0])])

        def to_world(x, y):
            assert (x, y) == (11, 22)
            scales.append(unpainted.scale)
            return next(answers)

        unpainted.to_world = to_world
        unpainted._zoom(2.0, 11, 22)
        assert scales == [10.0, 20.0]
        assert is_point(unpainted.centre, 0.75, -2.0)

    def test_puts_a_new_centre_in_place_of_the_old_one(self, unpainted):
        old = unpainted.centre
        unpainted._zoom(1.2, 0, 0)
        assert unpainted.centre is not old
        assert is_point(old, 0.0, 0.0)

    def test_repaints_once_with_the_new_view(self, editor):
        seen = []
        editor.redraw = lambda: seen.append((editor.scale, editor.centre.tolist()))
        assert editor._zoom(2.0, 300, 150) is None
        assert seen == [(20.0, [5.0, 0.0])]


class TestPan:
    @pytest.fixture
    def unpainted(self, editor):
        editor.calls = editor.watch("redraw")
        return editor

    def test_keeps_the_press_and_a_copy_of_the_centre(self, unpainted):
        unpainted.centre = np.array([1.0, 2.0])
        assert unpainted._pan_start(Event(30, 40)) is None
        x, y, centre = unpainted._pan
        assert isinstance(unpainted._pan, tuple)
        assert (x, y) == (30, 40)
        assert is_point(centre, 1.0, 2.0)
        unpainted.centre[0] = 9
        assert is_point(centre, 1.0, 2.0)
        assert unpainted.calls == []

    def test_the_sketch_follows_the_pointer(self, unpainted):
        under = unpainted.to_world(30, 40)
        unpainted._pan_start(Event(30, 40))
        unpainted._pan_move(Event(50, 90))
        assert is_point(unpainted.centre, -2.0, 5.0)
        assert unpainted.to_world(50, 90) == pytest.approx(under)

    def test_follows_its_formula_to_the_last_bit(self, neighbours):
        for editor, (x, y) in random_views():
            editor.watch("redraw")
            c = editor.centre.copy()
            editor._pan_start(Event(17, 5))
            editor._pan_move(Event(x, y))
            dx, dy = x - 17, y - 5
            expected = c - np.array([dx / editor.scale, -dy / editor.scale])
            assert is_point(editor.centre, *expected)

    def test_does_not_drift(self, unpainted):
        unpainted.centre = np.array([0.1, 0.7])
        unpainted.scale = 3.0
        unpainted._pan_start(Event(30, 40))
        for step in range(1000):
            unpainted._pan_move(Event(30 + step % 7, 40 - step % 11))
        unpainted._pan_move(Event(30, 40))
        assert is_point(unpainted.centre, 0.1, 0.7)

    def test_repaints_at_every_move_with_the_new_centre(self, editor):
        seen = []
        editor.redraw = lambda: seen.append(editor.centre.tolist())
        editor._pan_start(Event(0, 0))
        assert editor._pan_move(Event(10, 0)) is None
        editor._pan_move(Event(20, 10))
        assert seen == [[-1.0, 0.0], [-2.0, 1.0]]

    def test_does_not_write_into_the_centre_it_kept(self, unpainted):
        unpainted._pan_start(Event(0, 0))
        unpainted._pan_move(Event(10, 10))
        assert is_point(unpainted._pan[2], 0.0, 0.0)
        assert unpainted.centre is not unpainted._pan[2]


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

    @pytest.mark.parametrize(
        "text", ["", "   ", "five", "5 mm", "1,5", "0", "-3", "0.0", "nan", "-inf"]
    )
    def test_is_the_default_where_the_text_is_no_positive_length(self, editor, text):
        editor.grid.set(text)
        editor._default_grid = lambda: 0.25
        assert editor.grid_step() == 0.25
        assert editor.grid.get() == text

    def test_is_what_the_units_make_of_the_number(self, editor, neighbours):
        neighbours.units.answers["to_si"] = 0.0254
        editor.grid.set("1")
        assert editor.grid_step() == 0.0254
        assert neighbours.units.named("to_si") == [(1.0, "length")]
        assert type(neighbours.units.named("to_si")[0][0]) is float

    def test_asks_for_the_units_at_every_call(self, editor, neighbours):
        editor.grid.set("2")
        assert editor.grid_step() == 0.002
        neighbours.units.factor = 100.0
        assert editor.grid_step() == 0.02
        assert neighbours.units.asked == 2

    def test_is_the_default_where_the_units_refuse_the_value(self, editor, neighbours):
        neighbours.units.fail["to_si"] = ValueError("no")
        editor._default_grid = lambda: 0.25
        assert editor.grid_step() == 0.25

    @pytest.mark.parametrize("error", [KeyError, TypeError, RuntimeError])
    def test_lets_other_errors_of_the_units_through(self, editor, neighbours, error):
        neighbours.units.fail["to_si"] = error("broken")
        with pytest.raises(error):
            editor.grid_step()

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

    def test_of_an_empty_sketch_is_a_thousandth(self, editor):
        assert editor._default_grid() == 0.001

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
