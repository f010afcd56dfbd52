"""Outlines and corners in arrays of any kind: read as their points, whatever their memory holds."""

import numpy as np
import pytest
from support.neighbours import circle, polygon
from support.plain import PlainEditor, Var, is_point

POINTS = [[1.0, 2.0], [4.0, -1.0], [3.0, 3.0]]


class Shifted(np.ndarray):
    """Its rows lie one unit further right than its memory says."""

    def __getitem__(self, key):
        row = np.array(super().__getitem__(key), float)
        return row + (1.0, 0.0)

    def __iter__(self):
        return (self[i] for i in range(len(self)))


def shifted():
    return (np.array(POINTS) - (1.0, 0.0)).view(Shifted)


def every_second_row():
    return np.repeat(np.array(POINTS), 2, axis=0)[::2]


KINDS = {
    "doubles": lambda: np.array(POINTS),
    "columns in memory": lambda: np.asfortranarray(POINTS),
    "backwards in memory": lambda: np.array(POINTS[::-1])[::-1],
    "with gaps in memory": every_second_row,
    "of the other byte order": lambda: np.array(POINTS).astype(
        np.array(POINTS).dtype.newbyteorder()
    ),
    "single precision": lambda: np.array(POINTS, np.float32),
    "integers": lambda: np.array(POINTS).astype(np.int64),
    "objects": lambda: np.array(POINTS, object),
    "a third column": lambda: np.array([[*point, 99.0] for point in POINTS]),
    "a subclass": shifted,
    "lists": lambda: [list(point) for point in POINTS],
    "tuples of integers": lambda: tuple((int(u), int(v)) for u, v in POINTS),
    "a mixture": lambda: [tuple(POINTS[0]), POINTS[1], np.array(POINTS[2])],
}


@pytest.fixture(params=KINDS)
def array(request):
    return KINDS[request.param]()


@pytest.fixture
def editor(neighbours):
    """400 x 300 pixels, 10 pixels to the unit, no grid."""
    return PlainEditor(scale=10.0, snap=Var(False))


@pytest.fixture
def outlined(editor, neighbours, array):
    """An editor on one shape with this outline."""
    neighbours.S.answers.update(outline=array, depths=[0], inside=False, area=1.0)
    editor.sk["entities"] = [circle()]
    return editor


def test_the_extent_holds_an_outline(outlined):
    lo, hi = outlined._extent()
    assert is_point(lo, 1.0, -1.0)
    assert is_point(hi, 4.0, 3.0)


def test_the_extent_holds_an_outline_and_others_before_it(editor, array):
    editor.refs = [("edge", np.array([[2.0, 2.0]])), ("edge", array), ("edge", np.ones((1, 2)))]
    lo, hi = editor._extent()
    assert is_point(lo, 1.0, -1.0)
    assert is_point(hi, 4.0, 3.0)


def test_a_repaint_shows_an_outline(outlined):
    outlined.redraw()
    ((pixels, _),) = outlined.canvas.named("create_polygon")
    assert pixels == (210.0, 130.0, 240.0, 160.0, 230.0, 120.0)
    assert {type(value) for value in pixels} == {float}


def test_picking_measures_to_the_points(outlined):
    for pixel in ((210, 130), (240, 160), (230, 120)):
        assert outlined.pick(*pixel) == 0
    assert outlined.pick(200, 170) is None
    assert outlined.pick(250, 130) is None


def test_a_repaint_shows_a_reference(editor, array):
    editor.refs = [("edge", array)]
    editor.redraw()
    (pixels,) = [args for args, options in editor.canvas.named("create_line") if len(args) == 8]
    assert pixels == (210.0, 130.0, 240.0, 160.0, 230.0, 120.0, 210.0, 130.0)


class TestCorners:
    @pytest.fixture
    def editor(self, editor, neighbours):
        def with_corners(corners):
            neighbours.S.answers["corners"] = corners
            editor.sk["entities"] = [polygon(), circle(-9.0, -9.0)]
            return editor

        return with_corners

    def test_are_points_to_snap_to(self, editor, array):
        editor = editor(array)
        for pixel, point in (((212, 131), (1, 2)), ((239, 163), (4, -1)), ((230, 120), (3, 3))):
            assert is_point(editor.snapped(*pixel), *point)
        assert is_point(editor.snapped(270, 190), 7.0, -4.0)

    @pytest.mark.parametrize(
        "corner", [("1.5", "2"), ["1.5", 2], [2, "1.5"], (np.float32(1.5), True)]
    )
    def test_may_be_of_anything_that_an_array_of_floats_takes(self, editor, corner):
        editor = editor([corner])
        points = editor.key_points()
        assert is_point(points[1], *map(float, corner))
        assert is_point(editor.snapped(*editor.to_screen(points[1])), *map(float, corner))

    @pytest.mark.parametrize("damaged", [("left", 0.0), [[1.0], 2.0], "up"])
    def test_that_are_no_points_end_the_shape_and_leave_the_others(self, editor, damaged):
        editor = editor([(1.0, 2.0), damaged, (5.0, 5.0)])
        assert [p.tolist() for p in editor.key_points()[1:]] == [[1.0, 2.0], [-9.0, -9.0]]
        assert is_point(editor.snapped(210, 130), 1.0, 2.0)
        assert is_point(editor.snapped(110, 240), -9.0, -9.0)
        assert is_point(editor.snapped(251, 101), 5.1, 4.9)

    def test_one_number_alone_is_an_error_of_snapping(self, editor):
        editor = editor([(1.0,)])
        with pytest.raises(IndexError):
            editor.snapped(0, 0)
