"""Key points, and the point that a pointer position stands for."""

import math

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from support.neighbours import circle, rectangle, slot
from support.plain import PlainEditor, Var, is_point, random_views
from support.types import CARDS

NAN, INF = math.nan, math.inf


@pytest.fixture
def editor(neighbours):
    """400 x 300 pixels, 10 pixels to the unit, a grid of 1 millimetre by its text."""
    return PlainEditor(scale=10.0)


class TestKeyPoints:
    def points(self, editor):
        found = editor.key_points()
        assert type(found) is list
        assert all(isinstance(p, np.ndarray) and p.shape == (2,) for p in found)
        return [tuple(p) for p in found]

    def test_are_new_at_every_call(self, editor):
        editor.key_points()[0][0] = 5
        assert self.points(editor) == [(0.0, 0.0)]

    def test_of_each_type_are_its_centres_and_then_its_corners(self, editor, neighbours, card):
        neighbours.S.answers["corners"] = [(3.0, 4.0), (5.0, 6.0)]
        entity = card.sample
        editor.sk["entities"] = [entity, {"type": "arcs", "xc": 1.0, "yc": 2.0, "x1": 1.0}]
        expected = [(entity[u], entity[v]) for u, v in card.centres]
        expected += [(3.0, 4.0), (5.0, 6.0)] * card.has_corners
        assert self.points(editor) == [(0.0, 0.0)] + expected
        assert all(p.dtype == np.float64 for p in editor.key_points())
        assert [args[0] for args in neighbours.S.named("corners")] == [
            entity,
            entity,
        ] * card.has_corners

    def test_may_be_given_as_texts(self, editor):
        editor.sk["entities"] = [{"type": "circle", "xc": "1.5", "yc": 2}]
        assert self.points(editor) == [(0.0, 0.0), (1.5, 2.0)]

    def test_come_in_the_order_of_the_sketch_with_pending_corners_last(self, editor):
        editor.sk["entities"] = [circle(1.0, 1.0), slot(2.0, 2.0, 3.0, 3.0), circle(4.0, 4.0)]
        editor.clicks = [np.array([9.0, 9.0]), np.array([8.0, 8.0])]
        expected = [(0, 0), (1, 1), (2, 2), (3, 3), (4, 4), (9, 9), (8, 8)]
        assert self.points(editor) == expected
        assert editor.key_points()[-1] is editor.clicks[-1]

    @pytest.mark.parametrize(
        "card, key, kept",
        [(card, key, k) for card in CARDS for k, pair in enumerate(card.centres) for key in pair]
        + [(card, None, len(card.centres)) for card in CARDS if card.has_corners],
    )
    @pytest.mark.parametrize("damage", [None, "left"])
    def test_a_damaged_shape_gives_those_found_before_the_damage(
        self, editor, neighbours, card, key, kept, damage
    ):
        """One coordinate is missing or no number; without a key, it is the corners that fail."""
        neighbours.S.fail["corners"] = ValueError("no") if damage else KeyError("no")
        entity = {**card.sample, key: damage}
        if not damage:
            del entity[key]
        editor.sk["entities"] = [entity, circle(7.0, 7.0)]
        centres = [(card.sample[u], card.sample[v]) for u, v in card.centres]
        assert self.points(editor) == [(0.0, 0.0), *centres[:kept], (7.0, 7.0)]

    @pytest.mark.parametrize("error", [ValueError, KeyError])
    def test_corners_yielded_before_an_error_stay(self, editor, neighbours, error):
        def corners(e):
            yield (1.0, 2.0)
            yield (3.0, 4.0)
            raise error("no more")

        neighbours.S.answers["corners"] = corners
        editor.sk["entities"] = [rectangle(), circle(7.0, 7.0)]
        assert self.points(editor) == [(0, 0), (1.0, 2.0), (3.0, 4.0), (7.0, 7.0)]

    @pytest.mark.parametrize(
        "entity, error", [(circle(None, 1.0), TypeError), ({"xc": 1.0, "yc": 1.0}, KeyError)]
    )
    def test_a_coordinate_of_the_wrong_type_and_a_missing_type_are_errors(
        self, editor, entity, error
    ):
        editor.sk["entities"] = [entity]
        for operation in (editor.key_points, lambda: editor.snapped(0, 0)):
            with pytest.raises(error):
                operation()


class TestSnapped:
    """The view shows 10 pixels to the unit, the origin at (200, 150), the grid at every 2 units."""

    @pytest.fixture
    def editor(self, editor):
        editor.grid.set("2000")
        return editor

    def test_reaches_less_than_nine_pixels(self, editor):
        editor.snap.set(False)
        assert is_point(editor.snapped(208.999, 150), 0.0, 0.0)
        assert is_point(editor.snapped(200, 141.001), 0.0, 0.0)
        for pixel in ((209, 150), (191, 150), (200, 141), (200, 159)):
            assert is_point(editor.snapped(*pixel), *editor.to_world(*pixel))

    def test_the_radius_is_the_module_s(self, editor, sketcher, monkeypatch):
        monkeypatch.setattr(sketcher, "SNAP_PX", 30)
        assert is_point(editor.snapped(229, 150), 0.0, 0.0)

    @pytest.mark.parametrize("on_grid", [True, False])
    def test_key_points_beat_the_grid(self, editor, on_grid):
        editor.snap.set(on_grid)
        editor.sk["entities"] = [circle(3.3, 1.7)]
        assert is_point(editor.snapped(235, 135), 3.3, 1.7)

    def test_the_nearest_key_point_wins(self, editor):
        editor.sk["entities"] = [circle(3.0, 0.0), circle(3.5, 0.0), circle(4.0, 0.0)]
        assert is_point(editor.snapped(234, 150), 3.5, 0.0)
        assert is_point(editor.snapped(239, 150), 4.0, 0.0)

    def test_the_first_of_equally_near_key_points_wins(self, editor):
        editor.sk["entities"] = [circle(4.0, 0.0), circle(3.0, 0.0)]
        editor.clicks = [np.array([3.5, 0.5])]
        assert is_point(editor.snapped(235, 150), 4.0, 0.0)
        editor.sk["entities"].reverse()
        assert is_point(editor.snapped(235, 150), 3.0, 0.0)

    def test_the_origin_is_first_of_all(self, editor):
        editor.sk["entities"] = [circle(1.0, 0.0)]
        assert is_point(editor.snapped(205, 150), 0.0, 0.0)

    def test_of_two_equal_key_points_the_first_is_returned(self, editor):
        mine, other = np.array([3.0, 0.0]), np.array([3.0, -0.0])
        editor.key_points = lambda: [mine, other]
        assert is_point(editor.snapped(230, 150), 3.0, 0.0)

    def test_the_result_is_of_floats_whatever_the_key_point_is(self, editor):
        editor.key_points = lambda: [(5, 2), np.array([7, 7])]
        assert is_point(editor.snapped(250, 130), 5.0, 2.0)

    @pytest.mark.parametrize(
        "pixel, u", [(210, 0.0), (230, 4.0), (250, 4.0), (270, 8.0), (190, -0.0)]
    )
    def test_halves_go_to_the_even_multiple(self, editor, pixel, u):
        assert is_point(editor.snapped(pixel, 50), u, 10.0)

    def test_the_grid_point_is_numpy_s_to_the_last_bit(self, editor):
        for view, (x, y) in random_views():
            view.key_points = lambda: []
            for g in (0.001, 0.1, 1, 3, 7.7, 1e-11):
                view.grid_step = lambda: g
                expected = np.round(view.to_world(x, y) / g) * g
                assert is_point(view.snapped(x, y), *expected)

    def test_asks_its_parts_through_the_editor(self, editor):
        editor.to_world = lambda x, y: np.array([x + 0.4, y - 0.4])
        editor.to_screen = lambda p: (p[0] * 100, p[1] * 100)
        editor.key_points = lambda: [(1.0, 1.0)]
        editor.grid_step = lambda: 5
        assert is_point(editor.snapped(104, 96), 1.0, 1.0)
        assert is_point(editor.snapped(52, 97), 50.0, 95.0)

    def test_asks_for_no_grid_where_it_needs_none(self, editor):
        editor.grid_step = lambda: pytest.fail("asked")
        editor.snap.set(False)
        assert is_point(editor.snapped(250, 150), 5.0, 0.0)
        editor.snap.get = editor.grid_step
        assert is_point(editor.snapped(200, 150), 0.0, 0.0)

    def test_a_key_point_that_is_no_number_is_passed_over(self, editor):
        editor.snap = Var(False)
        editor.clicks = [np.array([NAN, 0.0]), np.array([0.0, NAN]), np.array([INF, NAN])]
        assert is_point(editor.snapped(203, 150), 0.0, 0.0)
        assert is_point(editor.snapped(250, 150), 5.0, 0.0)

    def test_a_pointer_that_is_nowhere_reaches_no_key_point(self, editor):
        editor.snap = Var(False)
        assert is_point(editor.snapped(NAN, 150), NAN, 0.0)

    def test_without_grid_what_the_editor_takes_for_the_pointer_comes_back_itself(self, editor):
        mine = np.array([70.0, 80.0])
        editor.snap = Var(False)
        editor.to_world = lambda x, y: mine
        assert editor.snapped(0, 0) is mine

    def test_an_overridden_to_screen_gets_the_key_points_themselves(self, editor):
        corner = np.array([9.0, 9.0])
        asked = []
        editor.clicks = [corner]
        editor.sk["entities"] = [circle(1.0, 2.0), rectangle(3.0, 4.0, 1.0, 1.0)]
        editor.to_screen = lambda p: asked.append(p) or (0.0, 0.0)
        editor.snapped(100, 100)
        assert [p.tolist() for p in asked] == [p.tolist() for p in editor.key_points()]
        assert all(isinstance(p, np.ndarray) for p in asked)
        assert asked[-1] is corner

    def test_the_result_is_no_point_of_an_override(self, editor):
        mine = np.array([3.0, 4.0])
        editor.key_points = lambda: [mine]
        result = editor.snapped(230, 110)
        assert is_point(result, 3.0, 4.0)
        result += 1
        assert is_point(mine, 3.0, 4.0)


number = st.floats(-1e9, 1e9)


@given(u=number, v=number, x=st.integers(0, 400), y=st.integers(0, 300), scale=st.floats(1e-6, 1e9))
def test_snapping_never_leaves_the_reach_or_the_grid(sketcher, u, v, x, y, scale):
    """Either a key point less than 9 pixels away or, without the grid, the pointer's own point."""
    editor = PlainEditor(scale=scale, snap=Var(False), clicks=[np.array([u, v])])
    near = [
        p for p in editor.key_points() if math.dist(editor.to_screen(p), (x, y)) < sketcher.SNAP_PX
    ]
    result = editor.snapped(x, y)
    if near:
        assert any(is_point(result, *p) for p in near)
    else:
        assert is_point(result, *editor.to_world(x, y))
