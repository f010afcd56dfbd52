"""What must be put right before a sketch can be used."""

from __future__ import annotations

import math
import reprlib
from typing import Any, Iterator, Sequence

from tandrel._reasons import Reason
from tandrel._shapes import shape
from tandrel.geometry import nesting
from tandrel.geometry.shapes import Shape
from tandrel.gui.i18n import N_
from tandrel.kinds import KINDS
from tandrel.kinds.fields import Number

MOST = 8  # messages; a status line with more would push the buttons off the screen
_OFFSET = Number(N_("Offset along the normal"))


def messages(sk: Any, planes: Sequence[str]) -> list[str]:
    """What is wrong with a sketch; of a long list the first few and how many follow."""
    reasons = list(_reasons(sk, planes))
    further = len(reasons) - MOST
    if further > 0:
        reasons[MOST:] = [Reason(N_("Further problems: {n}"), {"n": further})]
    return [str(reason) for reason in reasons]


def _reasons(sk: Any, planes: Sequence[str]) -> Iterator[Reason]:
    if not isinstance(sk, dict):
        yield Reason(N_("This is not a sketch"))
        return
    yield from _placing(sk, planes)
    entities = sk.get("entities", [])
    if not isinstance(entities, (list, tuple)):
        yield Reason(N_("The list of shapes is damaged"))
        return
    if not entities:
        yield Reason(N_("Nothing is drawn yet"))
    valid: dict[int, Shape] = {}
    for k, e in enumerate(entities):
        try:
            valid[k] = shape(e)
        except KeyError as error:
            why = Reason(N_("{key} is missing"), {"key": error.args[0]})
            yield Reason(N_("{shape}: {why}"), {"shape": _name(entities, k), "why": why})
        except (ValueError, TypeError) as error:
            yield Reason(N_("{shape}: {why}"), {"shape": _name(entities, k), "why": error})
    for k, original in doubles(valid):
        shown = {"shape": _name(entities, k), "other": _name(entities, original)}
        yield Reason(N_("{shape} lies exactly on {other}: delete one of them"), shown)
    yield from _touches(entities, valid)


def _placing(sk: dict[str, Any], planes: Sequence[str]) -> Iterator[Reason]:
    plane = sk.get("plane", "XY")
    if not isinstance(plane, str) or plane not in planes:
        shown = {"plane": reprlib.repr(plane), "planes": ", ".join(planes)}
        yield Reason(N_("{plane} is no sketch plane, choose one of {planes}"), shown)
    offset = sk.get("offset")
    try:
        _OFFSET.read(0.0 if offset is None else offset)
    except (ValueError, TypeError) as error:
        yield error.args[0]


def doubles(valid: dict[int, Shape]) -> Iterator[tuple[int, int]]:
    """Shapes that were drawn before, each with the first one that is alike, by their numbers."""
    alike: dict[tuple[int, ...], list[int]] = {}
    for k, one in valid.items():
        # Shapes that are the same but for rounding have boxes that are; no others are compared.
        # The step is a power of two, and sizes that are one don't lie where it changes.
        u1, v1, u2, v2 = one.box
        step = math.ldexp(1.0, math.frexp(max(u2 - u1, v2 - v1) * 1.001)[1] - 24)
        originals = alike.setdefault(tuple(round(c / step) for c in one.box), [])
        original = next((k for k in originals if _same(valid[k], one)), None)
        if original is None:
            originals.append(k)
        else:
            yield k, original


def _same(one: Shape, other: Shape) -> bool:
    if not math.isclose(one.area, other.area, rel_tol=1e-8):
        return False
    return bool(one.polygon.hausdorff_distance(other.polygon) <= nesting.tolerance(one))


def _touches(entities: Sequence[Any], valid: dict[int, Shape]) -> Iterator[Reason]:
    indexes = list(valid)
    for inner, outer, (u, v) in nesting.touches(list(valid.values())):
        shown = {
            "shape": _name(entities, indexes[inner]),
            "other": _name(entities, indexes[outer]),
        }
        text = N_(
            "{shape} touches {other} from inside near u = {u}, v = {v}:"
            " move it clear of the outline or across it"
        )
        yield Reason(text, shown, u=u, v=v)


def _name(entities: Sequence[Any], k: int) -> Reason:
    """A shape by its number in the list and its kind, such as "Shape 3 (Circle)"."""
    e = entities[k]
    kind = e.get("type") if isinstance(e, dict) else None
    known = KINDS.get(kind) if isinstance(kind, str) else None
    if known is None:
        return Reason(N_("Shape {n}"), {"n": k + 1})
    return Reason(N_("Shape {n} ({kind})"), {"n": k + 1, "kind": Reason(known.label)})
