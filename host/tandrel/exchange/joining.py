"""Lines and arcs joined to closed contours where their ends meet."""

from __future__ import annotations

import math
from collections import defaultdict
from itertools import product
from typing import Iterator

from tandrel.geometry.edges import Edge, Point

# How far apart ends may lie that meet: metres, and a part of the extent of all open lines.
_FARTHEST, _FARTHEST_PART = 1e-6, 1e-5
_NEAREST = 1e-12  # metres, where there is no extent


class Chains:
    """Open lines, each a row of edges, to be joined when all of them are known."""

    def __init__(self) -> None:
        self._lines: list[list[Edge]] = []

    def add(self, edges: list[Edge]) -> None:
        self._lines.append(edges)

    def closed(self) -> tuple[list[list[Edge]], int]:
        """The closed contours that the lines make, and how many lines are in none.

        Where more than two ends meet there is no telling how to go on: such lines are in none.
        """
        places = _Places(self._reach())
        ends = [(places.at(line[0].start), places.at(line[-1].end)) for line in self._lines]
        meeting: dict[int, list[int]] = defaultdict(list)  # the lines that end in a place
        for k, (start, end) in enumerate(ends):
            meeting[start].append(k)
            meeting[end].append(k)
        contours: list[list[Edge]] = []
        used: set[int] = set()
        joined = 0
        for first in range(len(self._lines)):
            if first in used:
                continue
            ring, place, k = [], ends[first][0], first
            while k not in used:
                used.add(k)
                is_forward = ends[k][0] == place
                ring.append((k, is_forward))
                place = ends[k][1 if is_forward else 0]
                if len(meeting[place]) != 2:
                    break
                k = next((other for other in meeting[place] if other != k), k)
            if place == ends[first][0] and len(meeting[place]) == 2:
                contours.append([edge for line in ring for edge in self._run(*line)])
                joined += len(ring)
        return contours, len(self._lines) - joined

    def _run(self, k: int, is_forward: bool) -> list[Edge]:
        line = self._lines[k]
        return line if is_forward else [edge.reversed() for edge in reversed(line)]

    def _reach(self) -> float:
        points = [edge.start for line in self._lines for edge in line]
        if not points:
            return 0.0
        us, vs = zip(*points)
        return min(_FARTHEST, _FARTHEST_PART * max(max(us) - min(us), max(vs) - min(vs)))


class _Places:
    """Numbers for points, the same for points that lie close to each other."""

    def __init__(self, reach: float) -> None:
        self._reach = max(reach, _NEAREST)
        self._cells: dict[tuple[int, int], list[tuple[Point, int]]] = defaultdict(list)
        self._count = 0

    def at(self, point: Point) -> int:
        cell = math.floor(point[0] / self._reach), math.floor(point[1] / self._reach)
        for other, number in self._around(cell):
            if math.dist(point, other) <= self._reach:
                return number
        self._count += 1
        self._cells[cell].append((point, self._count))
        return self._count

    def _around(self, cell: tuple[int, int]) -> Iterator[tuple[Point, int]]:
        for du, dv in product((0, -1, 1), repeat=2):
            yield from self._cells.get((cell[0] + du, cell[1] + dv), ())
