"""Drawings of very many contours: nothing is compared with everything, or worked out twice."""

import math
import sys

import ezdxf
import pytest
import tandrel
from support.drawings import new_drawing, read, rectangle
from support.shapes import document
from tandrel import _shapes
from tandrel.exchange import ExchangeError, curves, dxf, faces, join
from tandrel.geometry import nesting
from tandrel.progress import no_tick


def test_a_large_drawing_is_joined_without_comparing_everything(monkeypatch):
    """Ends are compared with those near them: here with none but their own partners."""
    compared = []
    dist = math.dist
    monkeypatch.setattr(join.math, "dist", lambda a, b: compared.append(1) or dist(a, b))
    drawing = ezdxf.new("R12")
    space = drawing.modelspace()
    for k in range(400):
        u, v = 10 * (k % 20), 10 * (k // 20)
        corners = [(u, v), (u + 5, v), (u + 5, v + 4), (u, v + 4)]
        for one, two in zip(corners, [*corners[1:], (u, v + 0.02)]):
            space.add_line(one, two)
    found, notes = read(drawing, unit="mm")
    assert len(found) == 400
    assert notes[0].startswith("Gaps closed (400)")
    assert len(compared) < 100 * 400


def lines_run(task):
    """How many lines of the application a task runs through, those of its loops each time."""
    count, before = 0, sys.gettrace()

    def trace(frame, event, arg):
        nonlocal count
        if not frame.f_code.co_filename.startswith(tandrel.__path__[0]):
            return None
        count += 1
        return trace

    sys.settrace(trace)
    try:
        task()
    finally:
        sys.settrace(before)
    return count


def sharing_a_corner(space, count):
    for k in range(count):
        space.add_lwpolyline([(0, 0), (50 + k / 10, 0), (0, 1000 / (10 + k / 10))], close=True)


def notches(space, count):
    rectangle(space, 0, 0, 2 * count, 30)
    for k in range(count):
        rectangle(space, 2 * k + 0.5, 0, 1, 1)


@pytest.mark.parametrize("draw", [sharing_a_corner, notches])
def test_twice_the_contours_are_twice_the_work(draw):
    def work(count):
        drawing, space = new_drawing()
        draw(space, count)
        return lines_run(lambda: read(drawing, unit="mm"))

    work(10)  # what is read once and for all
    assert work(800) < 2.5 * work(400)


def test_strokes_that_lie_in_rows_are_not_looked_for_on_each_other(monkeypatch):
    compared = []
    monkeypatch.setattr(faces, "_part", lambda *_: compared.append(1) or 0.0)
    drawing, space = new_drawing()
    for k in range(100):
        u, v = 10 * (k % 10), 10 * (k // 10)
        space.add_line((u, v), (u + 5, v))
        space.add_line((u, v + 1), (u, v + 6))
    with pytest.raises(ExchangeError, match="no closed contour"):
        read(drawing)
    assert len(compared) <= 2 * 200  # its own ends


def test_only_the_shape_that_a_contour_is_is_built(monkeypatch):
    built = []
    build = _shapes._built
    monkeypatch.setattr(_shapes, "_shapes", _shapes.Memo(1000))
    monkeypatch.setattr(_shapes, "_built", lambda key: built.append(key[0]) or build(key))
    drawing, space = new_drawing()
    rectangle(space, 0, 0, 10, 5)
    space.add_lwpolyline([(20, 0), (30, 0), (30, 7), (20, 5)], close=True)
    found, _ = read(drawing)
    assert built == [entity["type"] for entity in found] == ["rectangle", "polygon"]
    assert "outline" not in vars(_shapes.shape(found[0]))


def test_a_shape_on_its_own_is_compared_with_none():
    apart = [_shapes.shape({"type": "circle", "xc": u, "yc": 0.0, "r": 0.1}) for u in (5.0, 6.0)]
    assert nesting.touches(apart) == []
    assert not any("polygon" in vars(shape) for shape in apart)


def test_ten_thousand_shapes_are_all_remembered(monkeypatch):
    built = []
    build = _shapes._built
    monkeypatch.setattr(_shapes, "_shapes", _shapes.Memo(_shapes.ROOM // 2))
    monkeypatch.setattr(_shapes, "_built", lambda key: built.append(key) or build(key))
    for _ in range(3):
        for k in range(10_000):
            _shapes.shape({"type": "rectangle", "x": k, "y": 0, "w": 0.5, "h": 0.5, "radius": 0})
    assert len(built) == 10_000


def test_sharp_corners_are_not_looked_at_for_arcs(monkeypatch):
    monkeypatch.setattr(curves, "_bulge", None)
    zigzag = [[k * 1e-3, (k % 2) * 1e-3] for k in range(40)]
    points = [*zigzag, [0.039, 0.02], [0.0, 0.02]]
    outline = {"type": "polygon", "points": points, "radius": 0.0}
    assert b"LWPOLYLINE" in dxf.written(document(outline), "mm", no_tick)
