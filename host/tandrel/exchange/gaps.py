"""Where lines that close nowhere would have to be closed, and whether an outline is among them."""

from __future__ import annotations

import math
from typing import Iterator, List, NamedTuple, Sequence, Tuple

import numpy as np
from shapely.geometry import LineString, MultiPoint
from shapely.geometry import Point as Place
from shapely.ops import linemerge, polygonize, snap, unary_union

from tandrel.geometry.edges import Edge, Point, Points
from tandrel.geometry.loops import Box
from tandrel.geometry.shapes import Shape

_MOST_ROWS = 500  # the longest, whose ends are all compared with each other
# Of its length that may be missing in a row of lines that encloses something, and in one that is
# likely to have been meant to close.
_MOST_OPEN, _LIKELY_OPEN = 0.5, 0.05
_ON = 1e-4  # metres from a contour to what ends on it, at most


class Open(NamedTuple):
    """Lines that would close over gaps: how many, what they enclose, and the widest of the gaps."""

    lines: int
    box: Box
    area: float
    place: Point
    width: float
    is_likely: bool = True  # whether they lack so little that they were meant to close


def opened(rows: Sequence[List[Edge]]) -> List[Open]:
    """What rows of edges would enclose if each end were joined to the one that lies nearest."""
    rows = _longest(rows)
    ends = [end for row in rows for end in (row[0].start, row[-1].end)]
    if not ends:
        return []
    partner = _partners(np.array(ends))
    found, used = [], [False] * len(rows)
    for first in range(len(rows)):
        row, gaps, end, points = first, [], 2 * first, []
        count, length = 0, 0.0
        while not used[row]:
            used[row] = True
            edges = rows[row] if end % 2 == 0 else [e.reversed() for e in reversed(rows[row])]
            points += _points(edges)
            count, length = count + len(edges), length + math.fsum(e.length for e in edges)
            out = end ^ 1
            end = partner[out]
            gaps.append((math.dist(ends[out], ends[end]), ends[out], ends[end]))
            row = end // 2
        if not gaps:
            continue
        width, one, two = max(gaps)
        hull = MultiPoint(points).convex_hull
        missing = math.fsum(gap[0] for gap in gaps) / length
        if hull.area and missing <= _MOST_OPEN:
            place = (one[0] + two[0]) / 2, (one[1] + two[1]) / 2
            is_likely = missing <= _LIKELY_OPEN
            found.append(Open(count, hull.bounds, hull.area, place, width, is_likely))
    return found


def nearly_closed(rows: Sequence[List[Edge]]) -> Iterator[Open]:
    """What those rows would enclose that lack so little that each was meant to close by itself."""
    for row in rows:
        length = math.fsum(edge.length for edge in row)
        if math.dist(row[0].start, row[-1].end) <= _LIKELY_OPEN * length:
            yield from opened([row])


def beside(rows: Sequence[List[Edge]], found: Sequence[Shape]) -> Iterator[Open]:
    """What rows of edges enclose with contours that they end on, outside of all contours.

    So are parts that share sides with others, where those are contours of another layer or pen.
    """
    if not rows:
        return
    rows = _longest(rows)
    ends = np.array([end for row in rows for end in (row[0].start, row[-1].end)])
    rims = [one.polygon.exterior for one in found if _is_met(one, ends)]
    if not rims:
        return
    around = unary_union(rims)
    lines = unary_union([snap(LineString(_points(row)), around, _ON) for row in rows])
    for face in polygonize(unary_union([around, lines])):
        if any(one.prepared.contains(face.representative_point()) for one in found):
            continue
        lacking = face.exterior.difference(lines)
        if lacking.is_empty:
            continue
        merged = lacking if lacking.geom_type == "LineString" else linemerge(lacking)
        widest = max(getattr(merged, "geoms", [merged]), key=lambda gap: gap.length)
        middles = [Place(*edge.points(2)[1]) for row in rows for edge in row]
        count = sum(face.exterior.distance(middle) <= _ON for middle in middles)
        place = widest.interpolate(0.5, normalized=True)
        yield Open(count, face.bounds, face.area, (place.x, place.y), widest.length)


def _is_met(shape: Shape, points: Points) -> bool:
    """Whether any of these points lies on the outline of a shape."""
    left, low, right, high = shape.box
    near = (points >= (left - _ON, low - _ON)) & (points <= (right + _ON, high + _ON))
    met = (Place(point) for point in points[near.all(axis=1)])
    return any(shape.polygon.exterior.distance(place) <= _ON for place in met)


def _longest(rows: Sequence[List[Edge]]) -> List[List[Edge]]:
    return sorted(rows, key=lambda row: -math.fsum(edge.length for edge in row))[:_MOST_ROWS]


def _points(row: Sequence[Edge]) -> List[Point]:
    points = [point for edge in row for point in edge.points(8 if edge.bulge else 1)]
    return [*points, row[-1].end]


def _partners(ends: Points) -> List[int]:
    """For each end another, the nearest pairs first. The ends of one row are a pair at last."""
    apart = np.hypot(*(ends[:, None] - ends[None]).transpose(2, 0, 1))
    count = len(ends)
    first, second = np.triu_indices(count, 1)
    partner = [-1] * count
    free = count
    for k in np.argsort(apart[first, second], kind="stable"):
        one, two = int(first[k]), int(second[k])
        if partner[one] < 0 and partner[two] < 0:
            partner[one], partner[two] = two, one
            free -= 2
            if not free:
                break
    return partner


def outlines(rows: Sequence[Open], found: Sequence[Tuple[Box, float]]) -> Iterator[Open]:
    """Of what is open, what may be an outline of the part: nothing that was found holds it.

    ``found`` are boxes and areas of contours. Beside an outline that was found it takes more to be
    another one than where there is none.
    """
    largest = max((area for _, area in found), default=0.0)
    for row in rows:
        is_large = row.area >= (largest / 2 if row.is_likely else largest * 2)
        if is_large and not any(_holds(one, row.box) for one, _ in found):
            yield row


def _holds(outer: Box, inner: Box) -> bool:
    slack = 1e-3 * max(outer[2] - outer[0], outer[3] - outer[1])
    return (
        outer[0] <= inner[0] + slack
        and outer[1] <= inner[1] + slack
        and outer[2] >= inner[2] - slack
        and outer[3] >= inner[3] - slack
    )
