"""The mapping between plane and canvas, zoom and pan."""

import numpy as np
import pytest
from support.plain import Event, PlainEditor, is_point, random_views, same_number


@pytest.fixture
def editor(neighbours):
    """400 x 300 pixels, 10 pixels to the unit, a grid of 1 millimetre by its text."""
    return PlainEditor(scale=10.0)


@pytest.fixture
def unpainted(editor):
    editor.calls = editor.watch("redraw")
    return editor


class TestToScreen:
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

    @pytest.mark.parametrize(
        "point",
        [(), (1.0,), None, "ab", ("a", "b"), (None, 0.0), ("1", 2.0), (1.0, "2"), (1.0, None)],
    )
    def test_refuses_what_is_no_point(self, editor, point):
        with pytest.raises((TypeError, IndexError, ValueError)):
            editor.to_screen(point)


class TestToWorld:
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


class TestZoom:
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

    def test_follows_its_formula_to_the_last_bit(self, neighbours):
        for editor, (x, y) in random_views():
            editor.watch("redraw")
            c = editor.centre.copy()
            editor._pan_start(Event(17, 5))
            editor._pan_move(Event(x, y))
            dx, dy = x - 17, y - 5
            expected = c - np.array([dx / editor.scale, -dy / editor.scale])
            assert is_point(editor.centre, *expected)

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

    def test_takes_the_scale_of_the_moment(self, unpainted):
        unpainted._pan_start(Event(0, 0))
        unpainted.scale = 20.0
        unpainted._pan_move(Event(10, 0))
        assert is_point(unpainted.centre, -0.5, 0.0)
