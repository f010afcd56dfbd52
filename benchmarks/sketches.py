"""Sketches of any size, and an application that knows all answers beforehand."""

import functools
import math
from contextlib import contextmanager
from types import SimpleNamespace

from tandrel import sketch as geometry
from tandrel.gui import sketcher

POINTS = 64  # of every outline
PITCH = 0.02  # between the fields of a sketch, SI length


def sketch(count):
    """A sketch of `count` shapes of 64 points in a square of fields, as many of each type.

    Three fields hold five shapes: an island in a hole in a plate, a slot, an angle.
    """
    kinds = (_island, _hole, _slot, _plate, _angle)
    fields = (0, 0, 1, 0, 2)  # the field of each kind
    columns = max(1, round(math.sqrt(3 * count / len(kinds))))
    entities = []
    for k in range(count):
        turn, kind = divmod(k, len(kinds))
        row, column = divmod(3 * turn + fields[kind], columns)
        x, y = (column - columns / 2) * PITCH, (row - columns / 2) * PITCH
        # Sizes differ, as those of real shapes do: no two outlines are alike.
        entities.append(kinds[kind](x, y, 0.9 + 0.1 * k / count))
    return {"plane": "XY", "offset": 0.0, "entities": entities}


# All edges are multiples of a 64th of the way round, so that an outline gets 64 points exactly.


def _plate(x, y, size):
    a = 0.018 * size
    return {"type": "rectangle", "x": x - a / 2, "y": y - a / 2, "w": a, "h": a, "radius": 0.0}


def _hole(x, y, size):
    return {"type": "circle", "xc": x, "yc": y, "r": 0.007 * size}


def _island(x, y, size):
    return {"type": "regular", "xc": x, "yc": y, "r": 0.004 * size, "n": 8, "angle": 15.0}


def _slot(x, y, size):
    r = 0.0035 * size
    half = math.pi * r / 2
    return {"type": "slot", "x1": x - half, "y1": y, "x2": x + half, "y2": y, "r": r}


def _angle(x, y, size):
    a = 0.0045 * size
    corners = ((-2, -2), (2, -2), (2, -1), (-1, -1), (-1, 2), (-2, 2))
    return {
        "type": "polygon",
        "points": [[x + u * a, y + v * a] for u, v in corners],
        "radius": 0.0,
    }


def answers(sk):
    """A sketch module that answers for the entities of this sketch from memory.

    It knows them by their identity: change none of them. `inside` answers for one plane point, the
    last that `aim` was called with.
    """
    outlines = {id(e): geometry.outline(e) for e in sk["entities"]}
    corners = {id(e): geometry.corners(e) for e in sk["entities"]}
    areas = {id(e): geometry.area(e) for e in sk["entities"]}
    depths = geometry.depths(sk)
    around = set()

    def aim(p):
        around.clear()
        around.update(id(o) for o in outlines.values() if geometry.inside(o, p))

    return SimpleNamespace(
        AXES=geometry.AXES,
        aim=aim,
        outline=lambda e: outlines[id(e)],
        corners=lambda e: corners[id(e)],
        area=lambda e: areas[id(e)],
        inside=lambda o, p: id(o) in around,
        depths=lambda sk: depths,
    )


class Remembered:
    """Gives the answers of another object's operations; of each question only the first time."""

    def __init__(self, asked):
        self._asked = asked

    def __getattr__(self, name):
        operation = functools.lru_cache(maxsize=None)(getattr(self._asked, name))
        setattr(self, name, operation)
        return operation


@contextmanager
def asked_of(host):
    """Lets the editor ask this sketch module while the block runs, and units from memory."""
    before = sketcher.S, sketcher.units
    display_units = Remembered(sketcher.units())
    sketcher.S, sketcher.units = host, lambda: display_units
    try:
        yield host
    finally:
        sketcher.S, sketcher.units = before


@contextmanager
def calls_of(owner, name):
    """Keeps the arguments of each call of a function while the block runs: a growing list."""
    function = getattr(owner, name)
    own = name in vars(owner)
    calls = []

    def kept(*args, **kwargs):
        calls.append(args)
        return function(*args, **kwargs)

    setattr(owner, name, kept)
    try:
        yield calls
    finally:
        if own:
            setattr(owner, name, function)
        else:
            delattr(owner, name)
