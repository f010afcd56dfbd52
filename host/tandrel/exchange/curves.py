"""Curves as edges: arcs where they are arcs, else chords."""

from __future__ import annotations

import math
from typing import Iterator, List, Optional, Sequence, Tuple

import numpy as np

from tandrel.geometry.edges import Edge, Point, Points
from tandrel.geometry.loops import chords, fineness, straight

_FEWEST = 3  # chords that make an arc: through any three points there is one
_STEEPEST = 0.1  # radians that an arc turns from one chord to the next, at most
_UNLIKE = 0.1  # radians that sides of different lengths count for in the search for an arc's end
_STRICT = 1e-9  # what is rounding is tried first, so that exact arcs end where they ended
_SAME = 1e-12  # by how much corners may differ that are the same, as a part of their coordinates
_FLATTER = 1 - 1e-3  # what drawings round must not take an arc over the error


def arcs_again(points: Sequence[Point], error: float) -> List[Edge]:
    """A row of chords as edges: arcs where consecutive points and their chords lie on one.

    Points and chords are within ``error`` of the arcs. What turns too sharply to be a divided arc,
    such as the corners of a hexagon, keeps its straight edges.
    """
    return [Edge(points[first], points[last], bulge) for first, last, bulge in _runs(points, error)]


def _runs(points: Sequence[Point], error: float) -> Iterator[Tuple[int, int, float]]:
    """The first and the last of the points of each edge, and its bulge."""
    array = np.asarray(points, dtype=np.float64)
    # An arc turns little between its first three chords; elsewhere there is no need to look for it.
    little = np.abs(_turns(np.diff(array, axis=0))) <= _STEEPEST
    arcs_begin = {*np.flatnonzero(little[:-1] & little[1:]).tolist()}
    first = 0
    while first < len(array) - 1:
        if first not in arcs_begin:
            yield first, first + 1, 0.0
            first += 1
            continue
        last = max(_reach(array, first, min(_STRICT, error), error), first + 1)
        if last - first < _FEWEST:
            last = max(_reach(array, first, error, error), first + 1)
        bulge = _bulge(array[first : last + 1], error, error)
        if bulge is None or last - first < _FEWEST:
            last, bulge = first + 1, 0.0
        yield first, last, bulge
        first = last


def contour_with_arcs(corners: Sequence[Point], error: float) -> List[Edge]:
    """The closed line through corners, with arcs again where :func:`arcs_again` finds them.

    Divided with that error they give the same corners again. An arc that would give others is
    written as one from corner to corner. Corners round a whole circle stay: as arcs they would be
    taken for the circle.
    """
    if len(corners) <= _FEWEST:
        return straight(corners)
    # From where the line turns most, so that no arc is cut in two by where the corners begin.
    array = np.asarray(corners, dtype=np.float64)
    before, after = (
        array - np.roll(array, 1, axis=0),
        np.roll(array, -1, axis=0) - array,
    )
    turns = _turns(np.vstack([before[:1], after]))
    first = int(np.argmax(np.abs(turns) + _UNLIKE * _unlike(before, after)))
    row = [*corners[first:], *corners[: first + 1]]
    runs = list(_runs(row, error))
    if len(runs) == len(corners):
        return straight(corners)
    wholes = [Edge(row[start], row[end], bulge) for start, end, bulge in runs]
    if all(edge.bulge for edge in wholes):
        if all(math.dist(edge.centre, wholes[0].centre) <= error for edge in wholes):
            return straight(corners)
    same = _SAME * float(np.abs(array).max())

    def divisible(error: float) -> Iterator[Edge]:
        """The edges that give the corners again when they are divided with that error."""
        for whole, (start, end, _) in zip(wholes, runs):
            points = whole.points(chords(whole, error)) if whole.bulge else row[start:end]
            if len(points) == end - start and _apart(points, row[start:end]) <= same:
                yield whole
            else:
                yield from _on_arc(whole, row[start : end + 1], error)

    edges, fine = wholes, math.inf
    # Of a small contour the error hangs on its size, and that on the arcs.
    while fineness(edges, error) < fine:
        fine = fineness(edges, error)
        edges = list(divisible(fine))
    return edges


def _apart(points: Sequence[Point], others: Sequence[Point]) -> float:
    return max(math.dist(one, other) for one, other in zip(points, others))


def _on_arc(whole: Edge, points: Sequence[Point], error: float) -> Iterator[Edge]:
    """From point to point arcs of the radius of one that all lie on, none further from its chord
    than the error, so that none is divided."""
    radius = whole.radius
    for start, end in zip(points, points[1:]):
        chord = math.dist(start, end)
        bulge = math.tan(math.asin(min(chord / (2 * radius), 1.0)) / 2)
        bulge = min(bulge, _FLATTER * 2 * error / chord)
        yield Edge(start, end, math.copysign(bulge, whole.bulge))


def _turns(steps: Points) -> Points:
    """By how much each step turns from the one before it, in radians."""
    before, after = steps[:-1], steps[1:]
    cross = before[:, 0] * after[:, 1] - before[:, 1] * after[:, 0]
    found: Points = np.arctan2(cross, (before * after).sum(axis=1))
    return found


def _unlike(before: Points, after: Points) -> Points:
    """From 0, where both sides of a corner are as long as each other, to 1."""
    one, two = np.hypot(*before.T), np.hypot(*after.T)
    return np.abs(one - two) / np.maximum(one, two)


def _reach(points: Points, first: int, off: float, sagitta: float) -> int:
    """The last point of the longest arc from one on; found by doubling, then by halving."""

    def fits(last: int) -> bool:
        return _bulge(points[first : last + 1], off, sagitta) is not None

    good, step = first + _FEWEST, 1
    if good >= len(points) or not fits(good):
        return first
    while good + step < len(points) and fits(good + step):
        good, step = good + step, step * 2
    while step:
        if good + step < len(points) and fits(good + step):
            good += step
        step //= 2
    return good


def _bulge(points: Points, off: float, sagitta: float) -> Optional[float]:
    """The bulge of the arc that points lie on, of less than a whole turn; None if there is none."""
    if len(points) < 3:
        return None
    steps = np.diff(points, axis=0)
    lengths = np.hypot(steps[:, 0], steps[:, 1])
    if not lengths.all():
        return None
    turns = _turns(steps)
    most = np.abs(turns).max()
    if most > _STEEPEST or not (np.all(turns > 0) or np.all(turns < 0)):
        return None
    centre = _centre(points[0], points[len(points) // 2], points[-1])
    if centre is None:
        return None
    radii = np.hypot(*(points - centre).T)
    radius = float(radii[0])
    # The angles that the chords subtend; one more than the turns between them.
    angles = 2 * np.arcsin(np.minimum(lengths / (2 * radius), 1.0))
    sweep = float(angles.sum())
    if np.abs(radii - radius).max() > off or sweep > 2 * math.pi - _STEEPEST:
        return None
    if (radius * (1 - np.cos(angles / 2))).max() > sagitta * (1 + 1e-3):
        return None
    return math.copysign(math.tan(sweep / 4), float(turns[0]))


def _centre(a: Points, b: Points, c: Points) -> Optional[Points]:
    """Of the circle through three points."""
    (ux, uy), (vx, vy) = map(float, b - a), map(float, c - a)
    twice = 2 * (ux * vy - uy * vx)
    if not twice:
        return None
    u, v = ux * ux + uy * uy, vx * vx + vy * vy
    return a + np.array([(vy * u - uy * v) / twice, (ux * v - vx * u) / twice])


def as_edges(points: Sequence[Point], error: float) -> List[Edge]:
    """A divided curve as the arc, or the two halves of the circle, that it is; else its chords."""
    middle = len(points) // 2
    for halves in ([points], [points[: middle + 1], points[middle:]]):
        bulges = [_bulge(np.asarray(half), error, error) for half in halves if len(half) > _FEWEST]
        if len(bulges) == len(halves) and None not in bulges:
            return [Edge(half[0], half[-1], bulge) for half, bulge in zip(halves, bulges) if bulge]
    return [Edge(a, b) for a, b in zip(points, points[1:]) if a != b]
