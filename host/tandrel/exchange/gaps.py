"""Where lines that close nowhere would have to be closed, and whether an outline is among them."""

from __future__ import annotations

import math
from typing import Iterator, List, NamedTuple, Sequence, Tuple

import numpy as np
from shapely.geometry import MultiPoint

from tandrel.geometry.edges import Edge, Point, Points
from tandrel.geometry.loops import Box

_MOST_ROWS = 500  # the longest, whose ends are all compared with each other
# Of its length that may be missing in a row of lines that encloses something, and in one that is
# likely to have been meant to close.
_MOST_OPEN, _LIKELY_OPEN = 0.5, 0.05


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
    rows = sorted(rows, key=lambda row: -math.fsum(edge.length for edge in row))[:_MOST_ROWS]
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
            points += [point for edge in edges for point in edge.points(8 if edge.bulge else 1)]
            points.append(edges[-1].end)
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
