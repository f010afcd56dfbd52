"""Shapes are built once, whatever becomes of the dictionaries that they were built from."""

import contextlib
import math

import numpy as np
import pytest
from support.neighbours import circle, polygon, rectangle, regular
from support.shapes import ELL, EVERY_KIND
from tandrel import _shapes
from tandrel import sketch as S


@pytest.mark.parametrize("e", EVERY_KIND.values(), ids=EVERY_KIND)
def test_an_outline_asked_for_again_is_the_same_array(e):
    assert S.outline(e) is S.outline(dict(e))


def test_numbers_corners_and_types_changed_in_place_are_seen():
    e = circle(r=0.015)
    before = S.outline(e)
    e["r"] = 0.03
    assert S.outline(e)[0, 0] == 0.03
    assert S.area(e) == pytest.approx(math.pi * 0.03**2)
    e["r"] = 0.015
    assert S.outline(e) is before
    e = polygon((0, 0), (1, 0), (0, 1))
    assert S.area(e) == 0.5
    e["points"][1][0] = 2.0
    assert (S.area(e), S.corners(e)[1].tolist()) == (1.0, [2.0, 0.0])
    e["points"].append([-1.0, 0.5])
    assert S.area(e) == 1.5
    e = {**circle(), **regular()}
    assert len(S.corners(e)) == 6
    e["type"] = "circle"
    assert len(S.corners(e)) == 0


def test_equal_numbers_of_any_type_are_the_same_shape_whatever_else_it_says():
    ints, floats = rectangle(0, 0, 2, 1, 0), rectangle(0.0, 0.0, 2.0, 1.0, 0.0)
    assert S.outline({**ints, "note": [object()]}) is S.outline(floats)
    numpy = {**floats, "w": np.float64(2), "h": np.int64(1), "x": np.float32(0)}
    assert S.outline(ints) is S.outline(floats) is S.outline(numpy)
    outline = EVERY_KIND["polygon"]
    for points in (np.array(ELL), tuple(map(tuple, ELL)), list(np.array(ELL))):
        assert S.outline({**outline, "points": points}) is S.outline(outline)
    assert S.outline(regular(n=6.0)) is S.outline(regular(n=6))


@pytest.mark.parametrize("bad", [circle(r=-1.0), polygon((0, 0), (1, 1))])
def test_shapes_and_refusals_are_worked_out_once(bad, monkeypatch):
    monkeypatch.setattr(_shapes, "_shapes", _shapes.Memo(1000))
    built = []

    def counted(key, build=_shapes._built):
        built.append(key)
        return build(key)

    monkeypatch.setattr(_shapes, "_built", counted)
    for _ in range(3):
        S.outline(circle())
        with pytest.raises(ValueError):
            S.outline(bad)
    assert len(built) == 2


def test_what_was_not_asked_for_lately_is_forgotten():
    memo = _shapes.Memo(10)
    for k in range(100):
        memo.put(k, str(k), 3)
        assert memo.get(0) == "0"
        assert memo.get(k) == str(k)
    assert [k for k in range(1, 90) if memo.get(k)] == []
    assert len(memo._young) + len(memo._old) <= 2 * 10 // 3


def test_outlines_count_by_their_points_also_when_refused(monkeypatch):
    memo = _shapes.Memo(10_000)
    monkeypatch.setattr(_shapes, "_shapes", memo)
    for k in range(50):
        zigzag = [(n, n % 2) for n in range(999)]
        for e in (polygon(*zigzag, (k, -1)), polygon(*zigzag, (k, 9))):
            with contextlib.suppress(ValueError):
                S.outline(e)
    assert 5 < len(memo._young) + len(memo._old) <= 20


def test_a_value_too_large_to_keep_does_no_harm():
    memo = _shapes.Memo(10)
    for k in range(5):
        memo.put(k, str(k), 1000)
    assert len(memo._young) + len(memo._old) == 2
