"""Neighbours of the module that strike, raise or answer nonsense when they are asked."""

import types
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from functools import partial
from typing import Any
from unittest.mock import patch

from support.neighbours import FakeSketch, FakeUnits, number_text
from support.plain import Recorder, RecordingCanvas, Var
from tandrel import sketch as real_sketch
from tandrel.gui import sketcher, widgets

from soak.hostility.attack import Attack
from soak.hostility.values import HostileDict

# Nonsense from these could only make the interpreter itself work for ever (10 ** 10 ** 400).
TRUSTED = {"math", "tk", "ttk"}
MOST_ITEMS = 210_000  # of one picture: as many grid lines as are drawn at most, and shapes
# What S.outline makes of more sides is its own affair.
MOST_SIDES = 1000


def asked(name: str, real: Callable[..., Any], attack: Attack, trusted: bool = False) -> Any:
    """A function that is attacked before and after it answers."""

    def function(*arguments: Any, **keywords: Any) -> Any:
        attack.hit(name)
        call = partial(real, *arguments, **keywords)
        answer = call() if trusted else attack.answer(call)
        attack.hit(f"{name} answered")
        return answer

    return function


class Neighbour:
    """A module or object of the application with every function of it attacked."""

    def __init__(self, name: str, real: Any, attack: Attack) -> None:
        self.__dict__.update(_name=name, _real=real, _attack=attack)

    def __getattr__(self, name: str) -> Any:
        if name.startswith("__"):
            raise AttributeError(name)
        attack = self._attack
        attack.hit(f"{self._name}.{name}")
        value = getattr(self._real, name)
        where = f"{self._name}.{name}"
        if isinstance(value, types.ModuleType):
            return Neighbour(where, value, attack)
        if isinstance(value, type) or not callable(value):
            return HostileDict(value, attack) if isinstance(value, dict) else value
        return asked(where, value, attack, trusted=self._name in TRUSTED)


class SidesBounded:
    """A sketch module that refuses shapes of very many sides."""

    def __init__(self, real: Any) -> None:
        self._real = real

    def __getattr__(self, name: str) -> Any:
        real = getattr(self._real, name)
        if name not in ("outline", "corners", "area", "depths"):
            return real

        def bounded(given: Any) -> Any:
            for entity in given["entities"] if name == "depths" else [given]:
                sides = entity.get("n", 0)
                if isinstance(sides, int) and sides > MOST_SIDES:
                    raise ValueError("too many sides")
            return real(given)

        return bounded


class StandInWidget(Recorder):
    """Any widget, without Tk: keeps nothing, strikes with every method."""

    def __init__(self, *arguments: Any, **keywords: Any) -> None:
        super().__init__(
            winfo_children=[],
            get="0.01 0.02\n0.5, 0.1\n0 0",
            entry=StandInWidget,
        )

    def __getattr__(self, name: str) -> Any:
        if name in ("tk", "_w"):
            raise AttributeError(name)
        method = super().__getattr__(name)
        StandInWidgets.attack.hit(f"widget.{name}")
        self.calls.clear()
        return method


class StandInVariable(Var):
    def __init__(self, *, value: Any) -> None:
        super().__init__(value)

    def get(self) -> Any:
        StandInWidgets.attack.hit("variable.get")
        return super().get()


class StandInWidgets:
    """Takes the place of tkinter and of its themed set: every name is a class of widgets."""

    attack: Attack

    def __init__(self) -> None:
        self.StringVar = self.BooleanVar = StandInVariable

    def __getattr__(self, name: str) -> Any:
        if name.startswith("__"):
            raise AttributeError(name)
        made = type(name, (StandInWidget,), {})
        setattr(self, name, made)
        return made


class EndlessPicture(BaseException):
    """A repaint that goes on painting."""


class HostileCanvas(RecordingCanvas):
    """A canvas that strikes with everything that it is asked to draw."""

    def __init__(self, attack: Attack) -> None:
        super().__init__(400, 300)
        self.attack = attack

    def __getattr__(self, name: str) -> Any:
        if name == "delete":
            self.calls.clear()
        if len(self.calls) > MOST_ITEMS:
            raise EndlessPicture(f"more than {MOST_ITEMS} items on a canvas")
        if name.startswith("create_") or name == "delete":
            self.attack.hit(f"canvas.{name}")
        return super().__getattr__(name)

    def winfo_width(self) -> Any:
        self.attack.hit("canvas.winfo_width")
        return self.attack.answer(super().winfo_width)


def neighbours(attack: Attack, scripted: bool) -> dict[str, Any]:
    """Attacked neighbours by the names that the module has for them."""
    sketch = SidesBounded(FakeSketch()) if scripted else real_sketch
    units: Any = FakeUnits() if scripted else widgets.units
    num_text = number_text if scripted else widgets.num_text
    return {
        "S": Neighbour("S", sketch, attack),
        "units": asked("units", lambda: Neighbour("units()", units(), attack), attack),
        "tr": asked("tr", lambda text: text, attack),
        "num_text": asked("num_text", num_text, attack),
        "px": asked("px", lambda size: size, attack),
        "PAL": HostileDict(widgets.PAL, attack),
        "TOOL_TIPS": HostileDict(sketcher.TOOL_TIPS, attack),
        "TYPE_LABEL": HostileDict(sketcher.TYPE_LABEL, attack),
        "FIELDS": HostileDict(sketcher.FIELDS, attack),
        "describe": asked("describe", sketcher.describe, attack),
        "copy": Neighbour("copy", sketcher.copy, attack),
        "np": Neighbour("np", sketcher.np, attack),
        "math": Neighbour("math", sketcher.math, attack),
    }


@contextmanager
def replaced(names: dict[str, Any]) -> Iterator[None]:
    """These names in the module; then it and the class as they were, whatever is done to them."""
    cls = sketcher.SketchEditor
    methods = dict(vars(cls))
    with patch.dict(vars(sketcher), names):
        try:
            yield
        finally:
            for name in set(vars(cls)) - set(methods):
                delattr(cls, name)
            for name, method in methods.items():
                if vars(cls).get(name) is not method:
                    setattr(cls, name, method)
