"""A drawing made a sketch, step by step: its unit, its lines joined, tidied and recognised."""

from __future__ import annotations

import math
from collections import defaultdict
from typing import Any, Dict, Iterator, List, Mapping, NamedTuple, Optional, Sequence, Tuple

from tandrel import _checks
from tandrel._reasons import Reason
from tandrel._shapes import shape
from tandrel.exchange import ExchangeError, LayersUnclear, OutlineOpen, gaps, join, layers, unit
from tandrel.exchange.faces import faces
from tandrel.exchange.join import Contour
from tandrel.exchange.lines import Drawing
from tandrel.exchange.notches import cut_out
from tandrel.exchange.recognise import MOST_EDGES, recognised
from tandrel.exchange.scale import in_metres
from tandrel.exchange.tell import Note, Notes, placed
from tandrel.exchange.tidy import Places, doubles, extent_of, once, pieces, reach, strokes
from tandrel.geometry import nesting
from tandrel.geometry.edges import Edge, Point
from tandrel.geometry.loops import Box, box
from tandrel.geometry.shapes import Shape
from tandrel.gui.i18n import tr
from tandrel.kinds.kind import Entity
from tandrel.progress import Tick
from tandrel.units import units


_ALIKE = 2e-6  # metres between shapes that are the same but for rounding


class Found(NamedTuple):
    """An entity and its shape, how far its arcs are from those of its contour, and that contour."""

    entity: Entity
    shape: Shape
    error: float
    edges: List[Edge]
    layer: str


def _found(edges: List[Edge], layer: str) -> Found:
    """What a contour stands for; ``ValueError`` with a :class:`Reason` if it is nothing."""
    entity, error = recognised(edges)
    return Found(entity, shape(entity), error, edges, layer)


def sketched(
    drawing: Drawing, answers: Mapping[str, Any], tick: Tick
) -> Tuple[Dict[str, Any], List[Note]]:
    """The sketch in a drawing, and notes for the user on what is not as it was there.

    It passes every check that a sketch must pass. ``answers`` are those to questions that were
    raised before, by their subjects; :class:`Question` where there is one more, ExchangeError where
    nothing is left to be a sketch.
    """
    metres = unit.metres(drawing, answers.get("unit"))
    notes = drawing.notes
    notes.scale(float(metres))
    closed, open_lines = [], []
    lost: List[Tuple[List[Edge], str]] = []
    for line in in_metres(drawing, metres, lost):
        if line.is_closed or line.edges[0].turn is not None:
            closed.append(Contour(line.edges, line.layer))
        else:
            open_lines.append(line)
    tick(0.2)
    rows = [*(one.edges for one in closed), *(line.edges for line in open_lines)]
    extent = extent_of(edge for row in rows for edge in row)
    whole = [one.edges for one in closed]
    lines = join.joined(open_lines, extent, whole, lambda done: tick(0.2 + 0.2 * done))
    found, refused = _recognised([*closed, *lines.contours], lambda done: tick(0.4 + 0.4 * done))
    refused += [Refused(edges, why, edges[0].start) for edges, why in lost]
    found, again = _once(found)
    kept = _clear(_on_layers(found, answers.get("layers"), notes), notes)
    tick(0.9)
    _tell(notes, kept, lines, lines.doubled + again)
    opened = gaps.opened(lines.open)
    _leave(notes, lines, opened, refused)
    if not kept:
        text = tr("there is no closed contour in this drawing")
        raise ExchangeError("; ".join([text, *notes.lines()]))
    if answers.get("outline") != OutlineOpen.GO_ON:
        shared = gaps.beside(lines.open, [one.shape for one in kept])
        _ask_outline([*opened, *gaps.nearly_closed(lines.gaping), *shared], refused, kept)
    return {**drawing.placing, "entities": [one.entity for one in kept]}, notes.lines()


class Refused(NamedTuple):
    """A contour that is none, why, and where."""

    edges: Sequence[Edge]
    why: str
    place: Optional[Point]


def _recognised(contours: List[Contour], tick: Tick) -> Tuple[List[Found], List[Refused]]:
    found: List[Found] = []
    refused: List[Refused] = []
    for k, contour in enumerate(contours):
        tick(k / len(contours))
        try:
            found.append(_found(*contour))
        except ValueError as error:
            parts = list(_apart(contour))
            found += parts
            if not parts:
                refused.append(_refused(contour.edges, error.args[0]))
    return found, refused


def _refused(edges: Sequence[Edge], why: Reason) -> Refused:
    # Reasons that name a place would make a kind of each contour.
    if {"u", "v"} <= set(why.lengths):
        text = tr("contours that cross or touch themselves")
        return Refused(edges, text, (why.lengths["u"], why.lengths["v"]))
    return Refused(edges, str(why), edges[0].start if edges else None)


def _apart(contour: Contour) -> Iterator[Found]:
    """What a contour that touches itself encloses, if it isn't beyond any outline."""
    if len(contour.edges) > MOST_EDGES:
        return
    places = Places(reach(extent_of(contour.edges)))
    sides, _ = once(pieces([contour.edges], places), places.reach)
    rings, _ = faces(sides, places, places.reach)
    for ring in rings:
        try:
            yield _found([piece.edge for piece in ring], contour.layer)
        except ValueError:
            continue


def _once(found: List[Found]) -> Tuple[List[Found], int]:
    """One of each of the shapes, and how many others there were."""
    shapes = dict(enumerate(one.shape for one in found))
    doubled = doubles([one.edges for one in found], [_reach(one.edges) for one in found])
    doubled |= {k for k, _ in _checks.doubles(shapes)}
    return [one for k, one in enumerate(found) if k not in doubled], len(doubled)


def _reach(edges: Sequence[Edge]) -> float:
    """How far a contour may be off from its doubles: as far at each end as it has gaps."""
    gaps = (math.dist(one.end, after.start) for one, after in zip(edges, [*edges[1:], edges[0]]))
    return max(_ALIKE, 2 * max(gaps))


def _clear(found: List[Found], notes: Notes) -> List[Found]:
    """The shapes but for those that touch another from inside, which are neither in nor out.

    They are cut out of it, as holes are, where both are on one layer and that leaves a part.
    """
    cut: List[Point] = []
    while True:
        touches = nesting.touches([one.shape for one in found])
        if not touches:
            break
        by_outer: Dict[int, List[nesting.Touch]] = defaultdict(list)
        for touch in touches:
            by_outer[touch.outer].append(touch)
        gone, new = {touch.inner for touch in touches}, []
        for k, those in by_outer.items():
            if k in gone:  # it is cut itself, or goes
                gone -= {touch.inner for touch in those}
                continue
            outer, inner = found[k], [found[touch.inner] for touch in those]
            try:
                if any(one.layer != outer.layer for one in inner):
                    raise ValueError
                left = cut_out([one.entity for one in inner], outer.entity)
                new.append(_found(left, outer.layer))
            except ValueError:
                for touch in those:
                    notes.leave(tr("contours that touch another one from inside"), touch.place)
            else:
                gone.add(k)
                cut += [touch.place for touch in those]
        found = [*(one for k, one in enumerate(found) if k not in gone), *new]
    if cut:
        text = tr("Cut out of the contour that they touch from inside ({n}), near {place}")
        notes.tell(text.format(n=len(cut), place=placed(cut[0])), cut[0])
    return found


def _on_layers(found: List[Found], chosen: Optional[Sequence[str]], notes: Notes) -> List[Found]:
    """The shapes on the layers that the user wants, or on all but that of the sheet's frame."""
    entities, shapes = [one.entity for one in found], [one.shape for one in found]
    names, border = layers.without_sheet(entities, shapes, [one.layer for one in found])
    found = [one._replace(layer=name) for one, name in zip(found, names)]
    if chosen is None:
        frame = layers.frame(entities, shapes, names, border) if found else None
        if frame is None:
            return found
        raise LayersUnclear(
            tr("the layer {layer} is a rectangle around everything else").format(layer=frame.layer),
            layers.by_contours(names),
            frame.part,
        )
    unknown = next((name for name in chosen if name not in names), None)
    if unknown is not None:
        text = tr("no contour lies on the layer {layer}; there are {layers}")
        there = ", ".join(layers.by_contours(names))
        raise ExchangeError(text.format(layer=unknown, layers=there))
    for one in found:
        if one.layer not in chosen:
            text = tr("contours on the layer {layer}").format(layer=one.layer)
            notes.leave(text, _corner(one))
    return [one for one in found if one.layer in chosen]


def _corner(one: Found) -> Point:
    u, v = one.shape.outline[0].tolist()
    return u, v


def _tell(notes: Notes, found: List[Found], lines: join.Joined, doubles: int) -> None:
    """Say what is not as it was drawn."""
    errors = [one for one in found if one.error]
    if errors:
        text = tr("Approximated ({n}): contours with arcs, now polygons within {error}")
        error = units().fmt(max(one.error for one in errors), "length")
        notes.tell(text.format(n=len(errors), error=error), _corner(errors[0]))
    if doubles:
        notes.tell(tr("Drawn more than once ({n}): one of each is kept").format(n=doubles))
    thin = strokes([one.shape for one in found])
    if thin:
        text = tr(
            "Contours {width} within another one ({n}), near {place}: they may be the two sides of"
            " lines that were drawn with their width"
        )
        width, place = units().fmt(max(thin.values()), "length"), _corner(found[min(thin)])
        notes.tell(text.format(width=width, n=len(thin), place=placed(place)), place)
    if lines.bridged:
        one, two = max(lines.bridged, key=lambda ends: math.dist(*ends))
        text = tr("Gaps closed ({n}): the widest is {width}, near {place}")
        width = units().fmt(math.dist(one, two), "length")
        notes.tell(text.format(n=len(lines.bridged), width=width, place=placed(one)), one)


def _leave(
    notes: Notes,
    lines: join.Joined,
    opened: Sequence[gaps.Open],
    refused: Sequence[Refused],
) -> None:
    """Say what makes no contour, and where it lacks what."""
    for one in refused:
        notes.leave(one.why, one.place)
    for _ in range(lines.left):
        notes.leave(tr("lines and arcs that do not close"), lines.open[0][0].start)
    likely = [one for one in opened if one.is_likely]
    if likely:
        widest = max(likely, key=lambda one: one.area)
        text = tr("Gaps that stay ({n}): the largest contour lacks {width}, near {place}")
        width = units().fmt(widest.width, "length")
        told = text.format(n=len(likely), width=width, place=placed(widest.place))
        notes.tell(told, widest.place)


def _ask_outline(
    opened: Sequence[gaps.Open], refused: Sequence[Refused], found: Sequence[Found]
) -> None:
    """OutlineOpen where an outline may be among what is left out."""
    known = [(one.shape.box, one.shape.area) for one in found]
    for one in gaps.outlines(opened, known):
        text = tr(
            "the outline may be missing: {n} lines around {size} do not close; they lack {width}"
            " near {place}"
        )
        width = units().fmt(one.width, "length")
        shown = text.format(n=one.lines, size=_size(one.box), width=width, place=placed(one.place))
        raise OutlineOpen(shown, one.place)
    for edges, why, at in refused:
        u1, v1, u2, v2 = around = box(edges)
        place = at or (u1, v1)
        whole = gaps.Open(len(edges), around, (u2 - u1) * (v2 - v1), place, 0.0)
        for one in gaps.outlines([whole], known):
            text = tr("the outline may be missing; {size} large, near {place}: {why}")
            shown = text.format(size=_size(one.box), place=placed(place), why=why)
            raise OutlineOpen(shown, place)


def _size(around: Box) -> str:
    left, low, right, high = around
    return " × ".join(units().fmt(length, "length") for length in (right - left, high - low))
