"""What makes a kind of shape, and what several kinds ask of their numbers."""

from __future__ import annotations

from typing import (
    Any,
    Callable,
    Dict,
    Iterator,
    List,
    Mapping,
    NamedTuple,
    Optional,
    Sequence,
    Union,
)

from tandrel._reasons import Reason
from tandrel.geometry import fillets
from tandrel.geometry.edges import Edge, Point
from tandrel.geometry.loops import Loop
from tandrel.gui.i18n import N_
from tandrel.kinds.fields import Corners, Number

Entity = Dict[str, Any]


class Drawing(NamedTuple):
    """How a shape is drawn: its corners, in the order that they are drawn in, and its loop."""

    corners: List[Point]
    loop: List[Edge]


class Guess(NamedTuple):
    """An entity that a contour may stand for.

    It does if its own contour agrees with that one within ``tolerance``; None where a kind has
    compared them in its own way already.
    """

    entity: Entity
    tolerance: Optional[float]


class Kind(NamedTuple):
    """A kind of shape: all that the application knows of it.

    ``drawing`` takes what the fields read, in their order, and raises ``ValueError`` with a
    :class:`Reason` where it makes no shape. ``rank`` orders the kinds: what a contour may be, too,
    has a lower one if it is plainer. ``guesses`` takes a contour without rounding errors of
    its own (:func:`tandrel.geometry.loops.tidied`) and how far from it an entity may be.
    """

    type: str
    label: str  # for the user
    fields: Mapping[str, Union[Number, Corners]]
    drawing: Callable[..., Drawing]
    guesses: Callable[[Loop, float], Iterator[Guess]] = lambda contour, tolerance: iter(())
    rank: int = 100


def ask_positive(size: float, message: str) -> None:
    if not size > 0:
        raise ValueError(Reason(message))


def ask_drawable(size: float, detail: float) -> None:
    if size < detail:
        raise ValueError(Reason(N_("the shape is too small to be drawn exactly where it lies")))


def rounded(corners: Sequence[Point], radius: float, detail: float) -> List[Edge]:
    """The loop through corners, all of them rounded alike."""
    if radius < 0:
        raise ValueError(Reason(N_("the corner radius must not be negative")))
    try:
        return fillets.rounded(corners, radius, detail)
    except fillets.Tight as tight:
        text = N_(
            "the corner radius {radius} does not fit near u = {u}, v = {v}:"
            " at most {most} fits there"
        )
        (u, v), most = tight.place, tight.most
        raise ValueError(Reason(text, radius=radius, u=u, v=v, most=most)) from None
