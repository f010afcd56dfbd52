"""What must hold after each event, and saying what doesn't."""

import math
import traceback
from itertools import zip_longest
from typing import Any

import numpy as np

from soak.user.screen import Screen
from soak.user.shadow import Shadow


class Fault(Exception):
    """Something that must not be; the text tells what."""


def demand(holds: bool, what: str, expected: Any = None, found: Any = None) -> None:
    if not holds:
        raise Fault(f"{what}: {difference(expected, found)}")


def difference(expected: Any, found: Any) -> str:
    """Two values in short; of two lists the first place where they differ."""
    if isinstance(expected, (list, tuple)) and isinstance(found, (list, tuple)):
        for k, (a, b) in enumerate(zip_longest(expected, found, fillvalue="nothing")):
            if not same(a, b):
                return f"entry {k}: {difference(a, b)}"
    return f"expected {repr(expected):.300}, found {repr(found):.300}"


def same(a: Any, b: Any) -> bool:
    """Whether two values are equal in type and to the last bit; NaN equals itself."""
    if type(a) is not type(b):
        return False
    if isinstance(a, dict):
        return list(a) == list(b) and all(same(a[key], b[key]) for key in a)
    if isinstance(a, (list, tuple)):
        return len(a) == len(b) and all(map(same, a, b))
    if isinstance(a, np.ndarray):
        return a.dtype == b.dtype and same(a.tolist(), b.tolist())
    if isinstance(a, float):
        return a == b and math.copysign(1, a) == math.copysign(1, b) or a != a and b != b
    return bool(a == b)


def same_items(expected: list[Any], shown: list[Any]) -> bool:
    """Whether a canvas shows a picture; Tk has no coordinate to tell where there is no number."""

    def same_item(item: Any, other: Any) -> bool:
        (kind, at, *options), (other_kind, there, *others) = item, other
        alike = (kind, options, len(at)) == (other_kind, others, len(there))
        return alike and all(a == b or a != a for a, b in zip(at, there))

    if expected == shown:
        return True
    return len(expected) == len(shown) and all(map(same_item, expected, shown))


def check_state(editor: Any, shadow: Shadow) -> None:
    """The editor's attributes."""
    demand(same(editor.sk, shadow.sk), "sketch", shadow.sk, editor.sk)
    for name in ("sel", "clicks", "cursor", "centre", "scale", "drag"):
        found, expected = getattr(editor, name), getattr(shadow, name)
        demand(same(found, expected), name, expected, found)
    demand(editor.result is shadow.result is None, "result", None, editor.result)


def check_screen(screen: Screen, shadow: Shadow) -> None:
    """What the window shows."""
    painted = shadow.canvas.items
    demand(same_items(painted, screen.items), "canvas", painted, screen.items)
    for name in ("rows", "selected_rows", "form", "status", "typed"):
        found, expected = getattr(screen, name), getattr(shadow, name)
        demand(found == expected, name, expected, found)


# The operations that may let an error through, and why; all other errors are faults.
DAMAGED = {
    ("refresh_list", KeyError): "an entity without a type, or of an unknown one",
    ("refresh_list", TypeError): "an entity that is no dictionary, a type that is no text",
    ("summary", OverflowError): "an infinite number of sides, a number too large for a float",
    ("length", OverflowError): "a size too large for a float",
    ("show_props", TypeError): "a number that is none, corners that are no list of pairs",
    ("show_props", ValueError): "a text in a number's place",
    ("show_props", OverflowError): "a number too large for a float",
    ("show_props", KeyError): "an outline without corners",
    ("show_props", IndexError): "a corner of fewer than two numbers",
    ("shown_length", TypeError): "a corner that is no number",
    ("shown_length", ValueError): "a text in a corner's place",
    ("shown_length", OverflowError): "a corner too far away for a float",
    ("key_points", TypeError): "a centre that is no number",
    ("key_points", OverflowError): "a centre too far away for a float",
    ("read_form", KeyError): "a form that stopped at a number it can't show",
    ("extent", TypeError): "entities that are no list",
    ("__init__", TypeError): "an offset that is no number",
    ("__init__", ValueError): "an offset that is a text",
}
SOUND = {
    ("read_form", OverflowError): "an infinite number of sides is typed",
    ("read_form", KeyError): "a drag has put another kind of shape in the place of the form's",
}


def operation_of(error: BaseException) -> str:
    """The operation of the shadow, or of a shape, that an error came out of."""
    names = [
        frame.f_code.co_name
        for frame, _ in traceback.walk_tb(error.__traceback__)
        if frame.f_globals["__name__"].startswith(("soak.", "harness."))
    ]
    return [name for name in names if not name.startswith("<")][-1]


def check_errors(expected: list[BaseException], raised: list[BaseException], sound: bool) -> None:
    """What came out of the module's operations, against what the shadow's let through."""
    for error in expected:
        case = operation_of(error), type(error)
        allowed = case in SOUND or not sound and case in DAMAGED
        if not allowed:
            told = "".join(traceback.format_exception(error))
            raise Fault(f"nothing should raise {case} here:\n{told}")
    kinds = [type(error).__name__ for error in expected], [type(e).__name__ for e in raised]
    if kinds[0] != kinds[1]:
        told = "".join(line for e in raised for line in traceback.format_exception(e))
        raise Fault(f"errors: expected {kinds[0]}, raised {kinds[1]}\n{told}")


def shapes_of(shadow: Shadow, editor: Any) -> list[list[Any]]:
    """The very objects, in the sketch as in its shadow, to see which of them an event leaves."""
    sketches = shadow.sk["entities"], editor.sk["entities"]
    return [list(some) if isinstance(some, list) else [] for some in sketches]


def check_kept(before: list[list[Any]], after: list[list[Any]], action: tuple[Any, ...]) -> None:
    """Which shapes an event left alone."""
    kept = []
    for were, are in zip(before, after):
        places = {id(shape): place for place, shape in enumerate(were)}
        kept.append([places.get(id(shape)) for shape in are])
    demand(kept[0] == kept[1], f"shapes that {action} kept", *kept)
