"""Scripted neighbour modules: simple exact geometry and units that keep every call and can fail.

    monkeypatch.setattr(sketcher, "S", FakeSketch())
    monkeypatch.setattr(sketcher, "units", FakeUnits())
    replace(monkeypatch, sketcher)  # all of them

`fake.fail["outline"] = ValueError("no")` makes an operation raise, `fake.answers["check"] = []`
makes it answer; a callable in either is called with the operation's arguments.
"""

import copy
import math
import sys
import types

import numpy as np


class Strict:
    """Fails the test where it is asked for what it hasn't got."""

    def __getattr__(self, name):
        if name.startswith("__"):
            raise AttributeError(name)
        raise AssertionError(f"{type(self).__name__} was asked for {name}")


class Scripted(Strict):
    """Keeps calls and lets single operations fail or answer as the test wants."""

    def __init__(self):
        self.calls = []
        self.fail = {}
        self.answers = {}

    def _enter(self, name, *args):
        """Keep the call; raise if it shall; (True, answer) if it has a scripted answer."""
        self.calls.append((name, args))
        failure = self.fail.get(name)
        if callable(failure) and not isinstance(failure, type):
            failure = failure(*args)
        if failure is not None:
            raise failure
        if name not in self.answers:
            return False, None
        answer = self.answers[name]
        return True, answer(*args) if callable(answer) else answer

    def count(self, name):
        return sum(1 for call in self.calls if call[0] == name)

    def named(self, name):
        """The arguments of every call of one operation."""
        return [args for called, args in self.calls if called == name]


class FakeSketch(Scripted):
    """A sketch module whose outlines are few, exact points."""

    PLANES = ("XY", "XZ", "YZ")
    AXES = {"XY": ("x", "y"), "XZ": ("x", "z"), "YZ": ("y", "z")}

    def new(self):
        scripted, answer = self._enter("new")
        return answer if scripted else {"plane": "XY", "offset": 0.0, "entities": []}

    def outline(self, e):
        scripted, answer = self._enter("outline", e)
        return answer if scripted else np.array(outline_points(e), float)

    def corners(self, e):
        scripted, answer = self._enter("corners", e)
        return answer if scripted else outline_points(e)

    def area(self, e):
        scripted, answer = self._enter("area", e)
        return answer if scripted else polygon_area(outline_points(e))

    def inside(self, o, p):
        scripted, answer = self._enter("inside", o, p)
        return answer if scripted else point_inside(o, p)

    def depths(self, sk):
        scripted, answer = self._enter("depths", sk)
        return answer if scripted else nesting_depths(sk["entities"])

    def check(self, sk):
        scripted, answer = self._enter("check", sk)
        return answer if scripted else []


def outline_points(e):
    """The corners of a straight-sided stand-in for the entity; ValueError if it has no size."""
    kind = e["type"]
    if kind == "rectangle":
        x, y, w, h = (float(e[key]) for key in ("x", "y", "w", "h"))
        if not (w > 0 and h > 0):
            raise ValueError("the rectangle has no area")
        return [[x, y], [x + w, y], [x + w, y + h], [x, y + h]]
    if kind == "circle":
        x, y, r = (float(e[key]) for key in ("xc", "yc", "r"))
        if not r > 0:
            raise ValueError("the radius must be positive")
        return [[x + r, y], [x, y + r], [x - r, y], [x, y - r]]
    if kind == "regular":
        x, y, r, angle = (float(e[key]) for key in ("xc", "yc", "r", "angle"))
        if not (r > 0 and e["n"] >= 3):
            raise ValueError("at least three sides")
        turns = [math.radians(angle) + 2 * math.pi * k / e["n"] for k in range(e["n"])]
        return [[x + r * math.cos(t), y + r * math.sin(t)] for t in turns]
    if kind == "slot":
        x1, y1, x2, y2, r = (float(e[key]) for key in ("x1", "y1", "x2", "y2", "r"))
        if not r > 0:
            raise ValueError("the half width must be positive")
        return [[x1 - r, y1 - r], [x2 + r, y2 - r], [x2 + r, y2 + r], [x1 - r, y1 + r]]
    if kind == "polygon":
        points = [[float(u), float(v)] for u, v in e["points"]]
        if len(points) < 3 or polygon_area(points) == 0:
            raise ValueError("the outline has no area")
        return points
    raise ValueError(f"unknown shape {kind}")


def polygon_area(points):
    total = 0.0
    for (x1, y1), (x2, y2) in zip(points, points[1:] + points[:1]):
        total += x1 * y2 - x2 * y1
    return abs(total) / 2


def point_inside(outline, p):
    """Even-odd rule."""
    inside = False
    points = [(float(q[0]), float(q[1])) for q in outline]
    x, y = float(p[0]), float(p[1])
    for (x1, y1), (x2, y2) in zip(points, points[1:] + points[:1]):
        if (y1 > y) != (y2 > y) and x < (x2 - x1) * (y - y1) / (y2 - y1) + x1:
            inside = not inside
    return inside


def nesting_depths(entities):
    """How many other shapes hold all points of each shape."""
    outlines = [outline_points(e) for e in entities]
    return [
        sum(all(point_inside(other, p) for p in own) for k, other in enumerate(outlines) if k != i)
        for i, own in enumerate(outlines)
    ]


class FakeUnits(Scripted):
    """A unit system; the instance is also the `units` function that hands itself out."""

    def __init__(self, factor=1000.0, symbol="mm"):
        super().__init__()
        self.factor = factor
        self.symbol = symbol
        self.asked = 0

    def __call__(self):
        self.asked += 1
        return self

    def from_si(self, value, quantity):
        scripted, answer = self._enter("from_si", value, quantity)
        return answer if scripted else value * self.factor

    def to_si(self, value, quantity):
        scripted, answer = self._enter("to_si", value, quantity)
        return answer if scripted else value / self.factor

    def fmt(self, value, quantity):
        scripted, answer = self._enter("fmt", value, quantity)
        return answer if scripted else f"{value * self.factor:g} {self.symbol}"

    def unit(self, quantity):
        scripted, answer = self._enter("unit", quantity)
        return answer if scripted else self.symbol


class FakeTranslation:
    """A `tr` that looks texts up in a dictionary and keeps what it was asked for."""

    def __init__(self, texts=()):
        self.texts = dict(texts)
        self.asked = []

    def __call__(self, text):
        self.asked.append(text)
        return self.texts.get(text, text)


class Kept:
    """A function that keeps its arguments in `calls` and answers as `function` does."""

    def __init__(self, function):
        self.function = function
        self.calls = []

    def __call__(self, *args):
        self.calls.append(args)
        return self.function(*args)


def number_text(value):
    """A short text that is plain enough to be typed and compared."""
    return f"{value:.12g}"


PALETTE = {
    "panel": "#f7f7f7",
    "line": "#cccccc",
    "bg": "#eeeeee",
    "muted": "#666666",
    "accent": "#1155aa",
    "accent_soft": "#ddeeff",
}


def rectangle(x=0.0, y=0.0, w=2.0, h=1.0, radius=0.0):
    return {"type": "rectangle", "x": x, "y": y, "w": w, "h": h, "radius": radius}


def circle(xc=0.0, yc=0.0, r=1.0):
    return {"type": "circle", "xc": xc, "yc": yc, "r": r}


def regular(xc=0.0, yc=0.0, r=1.0, n=6, angle=0.0):
    return {"type": "regular", "xc": xc, "yc": yc, "r": r, "n": n, "angle": angle}


def slot(x1=0.0, y1=0.0, x2=4.0, y2=0.0, r=1.0):
    return {"type": "slot", "x1": x1, "y1": y1, "x2": x2, "y2": y2, "r": r}


def polygon(*points, radius=0.0):
    corners = points or ((0.0, 0.0), (3.0, 0.0), (0.0, 2.0))
    return {"type": "polygon", "points": [list(p) for p in corners], "radius": radius}


def one_of_each():
    """A sketch with one entity of every type, apart from each other; a new type comes last."""
    return {
        "plane": "XY",
        "offset": 0.0,
        "entities": [
            rectangle(-0.05, -0.03, 0.02, 0.01),
            circle(0.0, 0.02, 0.01),
            regular(0.03, 0.02, 0.008, 6, 15.0),
            slot(0.02, -0.02, 0.04, -0.02, 0.004),
            polygon((-0.03, 0.01), (-0.01, 0.01), (-0.03, 0.03)),
        ],
    }


# A point inside each of them, away from its key points.
PLACES = [(-0.04, -0.025), (0.004, 0.023), (0.033, 0.018), (0.03, -0.02), (-0.025, 0.014)]


def replace(monkeypatch, sketcher):
    """Replace every neighbour that the module imports; the stand-ins by the module's names."""
    from . import form

    form.GridForm.made = []
    stand_ins = types.SimpleNamespace(
        S=FakeSketch(),
        units=FakeUnits(),
        tr=FakeTranslation(),
        PAL=dict(PALETTE),
        Form=form.GridForm,
        Tooltip=Kept(lambda widget, text: None),
        num_text=Kept(number_text),
        px=Kept(lambda n: n),
    )
    for name, stand_in in vars(stand_ins).items():
        monkeypatch.setattr(sketcher, name, stand_in)
    return stand_ins


def install_modules(form=None, tooltip=None):
    """Put scripted neighbours into sys.modules, for an interpreter without the application.

    `tandrel` and `tandrel.gui` keep the search path they have: only the three modules are replaced.
    """
    from . import form as forms

    sketch, units = FakeSketch(), FakeUnits()
    modules = {
        "tandrel.sketch": {
            name: getattr(sketch, name) for name in dir(FakeSketch) if name[:1] != "_"
        },
        "tandrel.gui.i18n": {"N_": lambda text: text, "tr": lambda text: text},
        "tandrel.gui.widgets": {
            "PAL": copy.copy(PALETTE),
            "Form": form or forms.GridForm,
            "Tooltip": tooltip or (lambda widget, text: None),
            "num_text": number_text,
            "px": lambda n: n,
            "units": units,
        },
    }
    for name, members in modules.items():
        module = types.ModuleType(name)
        vars(module).update(members)
        sys.modules[name] = module
    return sketch, units
