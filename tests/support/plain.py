"""An editor without a window: a plain object with the attributes that the operations ask for.

`PlainEditor(entities=[...])` is an editor whose canvas, variables, list, labels and frame are
simple objects that keep what was done to them. The operations of the class are reached through it
as through a real editor: one given as a keyword argument, or set later, replaces the operation of
that name.
"""

import math
import random

import numpy as np


class Var:
    """A variable like Tk's, without Tk."""

    def __init__(self, value=None):
        self.value = value

    def get(self):
        return self.value

    def set(self, value):
        self.value = value


class Event:
    """A pointer event: the two coordinates that a handler may read."""

    def __init__(self, x, y):
        self.x = x
        self.y = y


class Recorder:
    """Accepts every method call and keeps it in `calls` as (method, args, kwargs)."""

    def __init__(self, **answers):
        self.calls = []
        self.answers = answers

    def __getattr__(self, name):
        if name.startswith("__"):
            raise AttributeError(name)

        def method(*args, **kwargs):
            self.calls.append((name, args, kwargs))
            answer = self.answers.get(name)
            return answer(*args, **kwargs) if callable(answer) else answer

        return method

    def named(self, name):
        """The (args, kwargs) of every call of one method."""
        return [call[1:] for call in self.calls if call[0] == name]


class RecordingCanvas(Recorder):
    """A canvas that keeps the drawing calls; sizes are asked of it and not kept."""

    def __init__(self, width=400, height=300):
        super().__init__()
        self.width = width
        self.height = height
        self.sizes_asked = 0

    def winfo_width(self):
        self.sizes_asked += 1
        return self.width

    def winfo_height(self):
        return self.height

    @property
    def drawn(self):
        """The create_… calls, in order."""
        return [call for call in self.calls if call[0].startswith("create_")]


class Label:
    """A status line: every text that it was given, the last one under "text"."""

    def __init__(self):
        self.texts = []

    def configure(self, **options):
        assert set(options) == {"text"}
        self.texts.append(options["text"])

    config = configure

    def __setitem__(self, name, value):
        self.configure(**{name: value})

    def __getitem__(self, name):
        assert name == "text"
        return self.texts[-1] if self.texts else ""


class ShapeList:
    """The rows and the selection of a tree view; every change is kept in `calls`."""

    def __init__(self):
        self.rows = []
        self.selected = ()
        self.calls = []

    def get_children(self, *args):
        assert args in ((), ("",))
        return tuple(row["iid"] for row in self.rows)

    def delete(self, *iids):
        self.calls.append(("delete", iids))
        self.rows = [row for row in self.rows if row["iid"] not in iids]
        self.selected = tuple(iid for iid in self.selected if iid not in iids)

    def insert(self, parent, index, iid=None, **options):
        self.calls.append(("insert", (parent, index), {"iid": iid, **options}))
        self.rows.append({"iid": iid, **options})

    def selection_set(self, *iids):
        self.calls.append(("selection_set", iids))
        self.selected = tuple(iids)

    def selection(self):
        return self.selected


class PlainEditor:
    """Has the attributes of an editor and, bound to it, the operations of the class."""

    def __init__(self, cls=None, entities=(), width=400, height=300, **attributes):
        if cls is None:
            from tandrel.gui.sketcher import SketchEditor as cls
        self._class = cls
        self.sk = {"entities": list(entities)}
        self.dim = 3
        self.refs = []
        self.result = None
        self.sel = None
        self.tool = Var("select")
        self.snap = Var(True)
        self.grid = Var("1")
        self.sides = Var("6")
        self.drag = None
        self.clicks = []
        self.cursor = np.zeros(2)
        self.scale = 1.0
        self.centre = np.zeros(2)
        self.plane = Var("XY")
        self.offset = Var("0")
        self.canvas = RecordingCanvas(width, height)
        self.status = Label()
        self.list = ShapeList()
        self.props = Recorder(winfo_children=[])
        self.focused = None
        self.__dict__.update(attributes)

    def __getattr__(self, name):
        members = vars(self.__dict__["_class"])
        if name.startswith("__") or name not in members:
            raise AttributeError(name)
        return members[name].__get__(self, type(self))

    def focus_get(self):
        return self.focused

    def watch(self, *names):
        """Replace these operations by ones that only keep their calls, in one common list."""
        calls = []

        def replacement(name):
            def operation(*args, **kwargs):
                calls.append((name, args, kwargs))

            return operation

        for name in names:
            setattr(self, name, replacement(name))
        return calls


def painting_nothing(**attributes):
    """An editor with 10 pixels to the unit and the origin at (200, 150), which keeps the calls of
    repaints, of the picture, the list and the form, in `calls` instead."""
    editor = PlainEditor(scale=10.0, **attributes)
    editor.calls = editor.watch("redraw", "refresh_list", "show_props")
    return editor


def names(editor):
    """Of its calls, in their order."""
    return [name for name, _, _ in editor.calls]


def point(u, v):
    return np.array([u, v], float)


def is_point(value, *expected):
    """Whether it is an array of two doubles with exactly these values."""
    return (
        isinstance(value, np.ndarray)
        and value.dtype == np.float64
        and value.shape == (2,)
        and all(same_number(a, b) for a, b in zip(value, expected))
    )


def random_views(count=300):
    """Editors with views and points of all magnitudes, the same ones in every run."""
    dice = random.Random(20)
    for _ in range(count):

        def number():
            return dice.uniform(-1, 1) * 10 ** dice.randint(-6, 6)

        yield PlainEditor(
            width=dice.randint(1, 2000),
            height=dice.randint(1, 2000),
            scale=abs(number()) + 1e-9,
            centre=point(number(), number()),
        ), (number(), number())


def same_number(a, b):
    """Equal to the last bit, zeros by sign, NaN equal to itself."""
    a, b = float(a), float(b)
    return a == b and math.copysign(1, a) == math.copysign(1, b) or a != a and b != b
