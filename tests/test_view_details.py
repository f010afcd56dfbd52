"""What frames the view where a shape or a reference is unusual, and how little it asks."""

import math

import numpy as np
import pytest
from support.neighbours import circle, one_of_each, rectangle
from support.plain import Event, PlainEditor, Var
from support.views import is_point

NAN, INF = math.nan, math.inf


@pytest.fixture
def editor(neighbours):
    """400 x 300 pixels, 10 pixels to the unit; nothing is painted."""
    editor = PlainEditor(scale=10.0)
    editor.calls = editor.watch("redraw")
    return editor


class TestExtent:
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

    def test_corners_are_handed_out_anew(self, editor):
        editor.refs = [("edge", np.array([[1.0, 2.0], [3.0, 5.0]]))]
        for corner in editor._extent():
            corner += 7
        lo, hi = editor._extent()
        assert is_point(lo, 1.0, 2.0)
        assert is_point(hi, 3.0, 5.0)


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
    del editor.redraw
    editor.sk = one_of_each()
    count = len(editor.sk["entities"])
    neighbours.S.answers["depths"] = [0] * count
    operation(editor)
    assert neighbours.S.count("outline") == count


def test_snapping_asks_for_no_outline(editor, neighbours):
    editor.sk = one_of_each()
    editor.snapped(10, 10)
    assert neighbours.S.count("outline") == 0


class TestPan:
    def test_keeps_fractions_of_pixels(self, editor):
        editor._pan_start(Event(10.25, 20.5))
        editor._pan_move(Event(10.5, 20.0))
        assert is_point(editor.centre, -0.025, -0.05)

    def test_takes_the_scale_of_the_moment(self, editor):
        editor._pan_start(Event(0, 0))
        editor.scale = 20.0
        editor._pan_move(Event(10, 0))
        assert is_point(editor.centre, -0.5, 0.0)


class TestSnapping:
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

    @pytest.mark.parametrize("pixel", [(208.99, 150), (206.3, 156.3), (200, 150)])
    def test_the_module_s_own_measure_of_distance_counts(
        self, editor, sketcher, monkeypatch, pixel
    ):
        class Halved:
            def __getattr__(self, name):
                return getattr(math, name)

            def hypot(self, dx, dy):
                return math.hypot(dx, dy) / 2

        editor.snap = Var(False)
        far = (2 * pixel[0] - 200, 2 * pixel[1] - 150)
        if pixel != (200, 150):
            assert is_point(editor.snapped(*far), *editor.to_world(*far))
        monkeypatch.setattr(sketcher, "math", Halved())
        assert is_point(editor.snapped(*far), 0.0, 0.0)

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


def test_the_default_grid_asks_the_module_s_own_math(editor, sketcher, monkeypatch):
    asked = []

    class Counted:
        def __getattr__(self, name):
            return lambda value: asked.append((name, value)) or getattr(math, name)(value)

    editor._extent = lambda: (np.zeros(2), np.array([2000.0, 7.0]))
    monkeypatch.setattr(sketcher, "math", Counted())
    assert editor._default_grid() == 100
    assert asked == [("log10", 100.0), ("floor", 2.0)]
