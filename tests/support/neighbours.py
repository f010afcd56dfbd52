"""Scripted neighbour modules: simple exact geometry and units that keep every call and can fail.

    monkeypatch.setattr(sketcher, "S", FakeSketch())
    monkeypatch.setattr(sketcher, "units", FakeUnits())
    replace(monkeypatch, sketcher)  # all of them

`fake.fail["outline"] = ValueError("no")` makes an operation raise, `fake.answers["check"] = []`
makes it answer; a callable in either is called with the operation's arguments.
"""

import copy
import sys
import types

import numpy as np

from .types import CARD, CARDS
from .types.circle import circle  # noqa: F401  # as the tests build their sketches
from .types.polygon import area as polygon_area
from .types.polygon import polygon  # noqa: F401
from .types.rectangle import rectangle  # noqa: F401
from .types.regular import regular  # noqa: F401
from .types.slot import slot  # noqa: F401


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
    if e["type"] not in CARD:
        raise ValueError(f"unknown shape {e['type']}")
    return CARD[e["type"]].outline(e)


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


def one_of_each():
    """A sketch with one entity of every type, apart from each other."""
    entities = [copy.deepcopy(card.placed) for card in CARDS]
    return {"plane": "XY", "offset": 0.0, "entities": entities}


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
