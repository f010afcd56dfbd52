"""Shapes joined level by level: the contours of what remains, their arcs kept as arcs.

A place is material where the deepest of the shapes that hold it has an even depth. The edges of all
shapes are cut where they meet; each part has material on one side, and is kept, or on both or
neither. What is kept makes closed contours. Edges that come as near to each other as a billionth of
their shapes' sizes meet.
"""

from __future__ import annotations

import math
from collections import defaultdict
from typing import Any, Dict, Iterator, List, NamedTuple, Optional, Sequence, Tuple

import numpy as np

from tandrel.geometry import meeting
from tandrel.geometry.edges import Edge, Point
from tandrel.geometry.loops import Loop, box, turning_points
from tandrel.geometry.meeting import Track
from tandrel.progress import Tick

_NEAR, _LOST = 1e-9, 1e-15  # what makes edges meet, of a shape's size and of its coordinates


class Unjoined(ValueError):
    """Shapes so close to each other that it can't be told how their edges meet."""


class Contour(NamedTuple):
    """A closed contour with the material on its left, and the shape that it is all of, if any."""

    edges: List[Edge]
    shape: Optional[int]


class Part(NamedTuple):
    """A part of an edge between two nodes, and how far along the edge they lie."""

    track: int
    nodes: Tuple[int, int]
    positions: Tuple[float, float]

    def reversed(self) -> Part:
        return Part(self.track, self.nodes[::-1], self.positions[::-1])


def joined(loops: Sequence[Loop], depths: Sequence[int], tick: Tick) -> List[Contour]:
    """The contours of shapes, given by their own contours and how deep each is nested."""
    plan = _Plan(loops, lambda done: tick(0.6 * done))
    stacks = _Stacks(loops, depths)
    found, kept = [], []
    for k, loop in enumerate(loops):
        if k in plan.touched:
            continue
        tick(0.6 + 0.2 * k / len(loops))
        is_hole = stacks.cuts(Track(loop[0]).at(0.5), [k], [])
        if is_hole is not None:
            found.append(_whole(loop, k, is_hole))
    groups = plan.groups()
    for done, group in enumerate(groups):
        tick(0.8 + 0.2 * done / len(groups))
        first = group[0]
        along = [plan.owners[part.track] for part in group if part.nodes == first.nodes]
        against = [plan.owners[part.track] for part in group if part.nodes != first.nodes]
        is_hole = stacks.cuts(plan.middle(first), along, against)
        if is_hole is not None:
            kept.append(first.reversed() if is_hole else first)
    for ring in _rings(kept, plan):
        k, *others = {plan.owners[part.track] for part in ring}
        is_backward = ring[0].positions[0] > ring[0].positions[1]
        # A simple line that closes on parts of one contour is all of it.
        found.append(
            Contour(plan.edges(ring), None) if others else _whole(loops[k], k, is_backward)
        )
    return found


def _whole(loop: Loop, k: int, is_hole: bool) -> Contour:
    return Contour([edge.reversed() for edge in reversed(loop)] if is_hole else [*loop], k)


class _Plan:
    """All edges, and the nodes where they end and meet. Nodes that are one place have one root."""

    def __init__(self, loops: Sequence[Loop], tick: Tick) -> None:
        self.tracks = [Track(edge) for loop in loops for edge in loop]
        self.owners = [k for k, loop in enumerate(loops) for _ in loop]
        self.touched: set[int] = set()
        self._points = [track.edge.start for track in self.tracks]
        self._roots = [*range(len(self.tracks))]
        self._reach: List[float] = []  # by which an edge meets others of its own size
        self._ends: List[Tuple[int, int]] = []
        for loop in loops:
            first = len(self._ends)
            self._ends += [(first + j, first + (j + 1) % len(loop)) for j in range(len(loop))]
            u1, v1, u2, v2 = box(loop)
            size, far = max(u2 - u1, v2 - v1), max(abs(c) for c in (u1, v1, u2, v2))
            self._reach += [_NEAR * size + _LOST * far] * len(loop)
        self._cuts: Dict[int, List[Tuple[float, int]]] = defaultdict(list)
        self._farthest = [*self._reach]  # by which it met any
        tick(0.0)
        for done, pairs in meeting.near(self.tracks, self.owners, self._reach):
            found: Any = pairs.tolist()
            for one, other in found:
                self._meet(one, other)
            tick(done)
        for k in range(len(self.tracks)):
            if self.owners[k] in self.touched:
                self._settle(k)

    def middle(self, part: Part) -> Point:
        start, end = part.positions
        return self.tracks[part.track].at((start + end) / 2)

    def groups(self) -> List[List[Part]]:
        """The parts of all edges that meet others; those that lie on each other stand together."""
        between: Dict[Tuple[int, int], List[List[Part]]] = defaultdict(list)
        for k, track in enumerate(self.tracks):
            if self.owners[k] not in self.touched:
                continue
            cuts = [(position, self._root(node)) for position, node in self._cuts[k]]
            for (start, one), (end, other) in zip(cuts, cuts[1:]):
                if one == other:
                    continue
                part = Part(k, (one, other), (start, end))
                alike = between[min(one, other), max(one, other)]
                group = next((group for group in alike if self._coincide(group[0], part)), None)
                if group is None:
                    alike.append([part])
                else:
                    group.append(part)
        return [group for alike in between.values() for group in alike]

    def edges(self, ring: List[Part]) -> List[Edge]:
        """A ring's edges, as few as they can be."""
        edges = [self._edge(part) for part in ring]
        k = 0
        while k < len(ring) and len(ring) > 2:
            one, other = ring[k - 1], ring[k]
            merged = None
            if one.track == other.track or self.owners[one.track] != self.owners[other.track]:
                reach = max(self._reach[one.track], self._reach[other.track])
                merged = _merged(edges[k - 1], edges[k], reach)
            if merged is None:
                k += 1
            else:
                edges[k - 1] = merged
                del edges[k], ring[k]
        return edges

    def point(self, node: int) -> Point:
        return self._points[node]

    def way(self, part: Part, length: float) -> Point:
        """The point that far along a part from its first node."""
        start, end = part.positions
        track = self.tracks[part.track]
        step = min(length / track.length, abs(end - start))
        return track.at(start + math.copysign(step, end - start))

    def length(self, part: Part) -> float:
        return self.tracks[part.track].length * abs(part.positions[1] - part.positions[0])

    def _edge(self, part: Part) -> Edge:
        one, other = part.nodes
        bulge = self.tracks[part.track].part(*sorted(part.positions))
        forward = part.positions[0] < part.positions[1]
        return Edge(self._points[one], self._points[other], bulge if forward else -bulge)

    def _coincide(self, one: Part, other: Part) -> bool:
        reach = max(self._reach[one.track], self._reach[other.track])
        return math.dist(self.middle(one), self.middle(other)) <= 8 * reach

    def _meet(self, one: int, other: int) -> None:
        reach = max(self._reach[one], self._reach[other])
        cuts: List[Tuple[int, float, int]] = []
        for k, ends in ((other, self._ends[one]), (one, self._ends[other])):
            for node in ends:
                position = self.tracks[k].position(self._points[node], reach)
                if position is not None:
                    cuts.append((k, position, node))
        for point, *places in meeting.crossings(self.tracks[one], self.tracks[other], reach):
            at_ends = [
                self._ends[k][int(place)]
                for k, place in zip((one, other), places)
                if place in (0.0, 1.0)
            ]
            node = at_ends[0] if at_ends else len(self._points)
            if not at_ends:
                self._roots.append(node)
                self._points.append(point)
            cuts += [(k, place, node) for k, place in zip((one, other), places)]
        for k, place, node in cuts:
            self._cuts[k].append((place, node))
            self._farthest[k] = max(self._farthest[k], reach)
            self.touched.add(self.owners[k])

    def _settle(self, k: int) -> None:
        """Put the cuts of an edge in order; those in one place become one node."""
        start, end = self._ends[k]
        cuts = [(0.0, start), *sorted(self._cuts[k]), (1.0, end)]
        reach = 2 * self._farthest[k] / self.tracks[k].length
        for (before, one), (after, other) in zip(cuts, cuts[1:]):
            if after - before <= reach:
                one, other = sorted((self._root(one), self._root(other)))
                self._roots[other] = one
        self._cuts[k] = cuts

    def _root(self, node: int) -> int:
        while self._roots[node] != node:
            self._roots[node] = node = self._roots[self._roots[node]]
        return node


class _Stacks:
    """Which shapes hold a place, and whether that makes it material."""

    def __init__(self, loops: Sequence[Loop], depths: Sequence[int]) -> None:
        self._loops = loops
        self._depths = depths
        self._deepest_first = sorted(range(len(loops)), key=lambda k: -depths[k])
        boxes = np.array([box(loops[k]) for k in self._deepest_first]).reshape(-1, 4)
        self._sides = np.ascontiguousarray(boxes.T)  # comparisons run through one after the other
        self._runs: Dict[int, List[_Run]] = {}

    def cuts(self, place: Point, along: List[int], against: List[int]) -> Optional[bool]:
        """Whether an edge through a place bounds a hole; None if it bounds nothing.

        Along it run the contours of these shapes, against it those of the others: the first have
        their inside on its left, the others on its right.
        """
        ground = self._depth(place, {*along, *against})
        left, right = (max([ground, *(self._depths[k] for k in ks)]) for ks in (along, against))
        if left % 2 == right % 2:
            return None
        return left % 2 == 1

    def _depth(self, place: Point, but: set[int]) -> int:
        """The depth of the deepest other shape that holds a place; -1 if there is none."""
        (u, v), (left, low, right, high) = place, self._sides
        held = (left < u) & (u < right) & (low < v) & (v < high)
        for row in map(int, np.flatnonzero(held)):
            k = self._deepest_first[row]
            if k not in but and self._holds(k, place):
                return self._depths[k]
        return -1

    def _holds(self, k: int, place: Point) -> bool:
        """A ray to the right crosses the contour an odd number of times."""
        if k not in self._runs:
            self._runs[k] = [run for edge in self._loops[k] for run in _runs(edge)]
        u, v = place
        within = False
        for run in self._runs[k]:
            if (run.start[1] > v) != (run.end[1] > v) and run.at(v) > u:
                within = not within
        return within


class _Run(NamedTuple):
    """A part of an edge whose v only rises or only falls, and of an arc on which side it lies."""

    start: Point
    end: Point
    centre: Optional[Point] = None
    radius: float = 0.0
    side: float = 0.0

    def at(self, v: float) -> float:
        if self.centre is None:
            (v1, u1), (v2, u2) = sorted([self.start[::-1], self.end[::-1]])
            return u1 + (u2 - u1) * ((v - v1) / (v2 - v1))
        height = min(abs(v - self.centre[1]), self.radius)
        half = math.sqrt((self.radius - height) * (self.radius + height))
        return self.centre[0] + self.side * half


def _runs(edge: Edge) -> Iterator[_Run]:
    if not edge.bulge:
        yield _Run(edge.start, edge.end)
        return
    centre, radius, track = edge.centre, edge.radius, Track(edge)
    points = [p for p in turning_points(edge) if abs(p[0] - centre[0]) < abs(p[1] - centre[1])]
    places = sorted((track.position(p, _NEAR * radius) or 0.0, p) for p in points)
    stops = [(0.0, edge.start), *(stop for stop in places if 0 < stop[0] < 1), (1.0, edge.end)]
    for (one, start), (other, end) in zip(stops, stops[1:]):
        side = math.copysign(1.0, track.at((one + other) / 2)[0] - centre[0])
        yield _Run(start, end, centre, radius, side)


def _rings(parts: List[Part], plan: _Plan) -> Iterator[List[Part]]:
    """Parts put together to closed rings that come to no node twice."""
    leaving: Dict[int, List[Part]] = defaultdict(list)
    arriving: Dict[int, int] = defaultdict(int)
    for part in parts:
        leaving[part.nodes[0]].append(part)
        arriving[part.nodes[1]] += 1
    if any(len(leaving[node]) != arriving[node] for node in {*leaving, *arriving}):
        raise Unjoined
    for first in parts:
        if first not in leaving[first.nodes[0]]:
            continue
        leaving[first.nodes[0]].remove(first)
        ring = [first]
        left = {first.nodes[0]: 0}  # the nodes that it left, and by which of its parts
        while ring:
            node = ring[-1].nodes[1]
            if node in left:
                closed = ring[left[node] :]
                yield closed
                del ring[left[node] :]
                for part in closed:
                    del left[part.nodes[0]]
                continue
            onward = leaving[node]
            part = onward[0] if len(onward) == 1 else _leftmost(ring[-1], onward, plan)
            onward.remove(part)
            left[node] = len(ring)
            ring.append(part)


def _leftmost(before: Part, onward: List[Part], plan: _Plan) -> Part:
    """The part that goes on most to the left, so that pieces that touch in a corner stay two."""
    back = before.reversed()
    length = min(plan.length(part) for part in (back, *onward)) / 4
    node = plan.point(before.nodes[1])

    def angle(part: Part) -> float:
        u, v = plan.way(part, length)
        return math.atan2(v - node[1], u - node[0])

    return min(onward, key=lambda part: (angle(back) - angle(part)) % (2 * math.pi))


def _merged(one: Edge, other: Edge, reach: float) -> Optional[Edge]:
    """One edge for two that follow each other, if there is one."""
    (u1, v1), (u2, v2), (u3, v3) = one.start, one.end, other.end
    if not one.bulge and not other.bulge:
        length = math.dist(one.start, other.end)
        aside = (u2 - u1) * (v3 - v1) - (v2 - v1) * (u3 - u1)
        onward = (u2 - u1) * (u3 - u2) + (v2 - v1) * (v3 - v2)
        is_straight = onward > 0 and abs(aside) <= reach * length
        return Edge(one.start, other.end) if is_straight else None
    if one.bulge * other.bulge <= 0:
        return None
    sweep = one.sweep + other.sweep
    alike = max(math.dist(one.centre, other.centre), abs(one.radius - other.radius)) <= reach
    if not alike or abs(sweep) > math.pi * (1 + 1e-9):
        return None
    return Edge(one.start, other.end, math.tan(sweep / 4))
