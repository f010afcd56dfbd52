"""Sizes are read as people type them, in the form, the corners, the offset and the grid."""

from __future__ import annotations

import re
import tkinter as tk
from contextlib import suppress
from fractions import Fraction
from functools import partial
from typing import Any, Dict, Iterator, List, Optional, Tuple

from tandrel.application import typed_numbers
from tandrel.application.status_messages import LastingMessages
from tandrel.application.typed_numbers import Unreadable
from tandrel.application.widget_tree import walk
from tandrel.gui import sketcher
from tandrel.gui.i18n import N_, tr
from tandrel.gui.widgets import SYSTEMS, num_text, units

_DEGREES = {"°": Fraction(1)}
_FINEST_GRID = 1e-12  # metres
_OFFSET = N_("Offset along the normal")


def read_length(text: str) -> float:
    """The length that was typed, in display units."""
    own = Fraction(SYSTEMS[units().name].metres)
    known = {name: Fraction(system.metres) / own for name, system in SYSTEMS.items()}
    return typed_numbers.read(text, {**known, '"': known["in"]})


def _is_step(typed: float) -> bool:
    """Whether a length in display units can be that of a grid; numbers end somewhere."""
    return units().to_si(typed, "length") >= _FINEST_GRID


def _read_plain(key: str, text: str) -> float:
    """The count of sides, or the angle, that was typed."""
    return typed_numbers.read(text, {} if key == "n" else _DEGREES)


class TypedSizes(LastingMessages):
    """What was typed is put as plain numbers before the editor reads it.

    What can't be read is named, and stays as it was typed. What was applied, and a press on the
    drawing, give the keyboard back to that. OK applies what is typed in the form, and so does going
    on to another shape; what was refused is there again whenever its shape is.
    """

    _shown: Optional[List[str]] = None  # by the form before anything was typed
    # By the identity of a shape: the shape, and what was typed for it last and told to be refused.
    _refused: Dict[int, Tuple[Any, List[str]]]
    # Of the field over the drawing that has the keyboard, and what stood there when it came.
    _field: Optional[Tuple[tk.StringVar, str]] = None

    def _build(self, allow_plane: bool) -> None:
        self._refused = {}
        super()._build(allow_plane)
        for variable, label in ((self.grid, N_("Grid")), (self.offset, _OFFSET)):
            for entry in self._entries(variable):
                entry.bind("<Return>", lambda _event: self.canvas.focus_set(), add="+")
                entry.bind("<FocusIn>", partial(self._begin, variable), add="+")
                entry.bind("<FocusOut>", partial(self._take, variable, label), add="+")

    def _entries(self, variable: tk.Variable) -> Iterator[tk.Misc]:
        """The fields over the drawing that show a variable."""
        for widget in walk(self):
            if isinstance(widget, tk.Entry) and str(widget.cget("textvariable")) == str(variable):
                yield widget

    # The form.

    def _shape(self) -> Any:
        """The shape that the form is for, or None."""
        entities = self.sk["entities"]
        return None if self.sel is None or self.sel >= len(entities) else entities[self.sel]

    def _refused_text(self) -> Optional[List[str]]:
        return self._refused.get(id(self._shape()), (None, None))[1]

    def typed(self) -> Optional[List[str]]:
        """The texts of the form, that of the corners last; None where there is no form."""
        if self._shape() is None:
            return None
        texts = [str(variable.get()) for variable in self.vars.values()]
        return [*texts, self.points_text.get("1.0", "end-1c")] if self._has_corners() else texts

    def is_unapplied(self) -> bool:
        """Whether something stands in the form that wasn't applied."""
        return self.typed() != self._shown

    def forget_typed(self) -> bool:
        """Take back what was typed and not applied; False where there is no such thing."""
        if self._field is not None and self._field[0].get() != self._field[1]:
            self._field[0].set(self._field[1])
            return True
        if self._shown is None or not self.is_unapplied():
            return False
        self._type(self._shown)
        self._refused.pop(id(self._shape()), None)
        return True

    def settle(self) -> bool:
        """Apply what was typed and not applied; False where it can't be."""
        if self.is_unapplied():
            self.apply_props()
        return not self.is_unapplied()

    def _go_on(self) -> None:
        """Apply what was typed before another shape is shown; what was refused is known to be."""
        if not self.is_unapplied():
            self._refused.pop(id(self._shape()), None)
        elif self.typed() != self._refused_text():
            self.settle()

    def select(self, index: Optional[int]) -> None:
        self._go_on()
        super().select(index)

    def add(self, ent: Any) -> None:
        self._go_on()
        super().add(ent)

    def _list_selected(self) -> None:
        row = self.list.selection()
        if row != (str(self.sel),):
            self._go_on()
            if self.list.selection() != row:
                # Applying made the rows anew, with that of the shape that was typed for selected.
                self.list.selection_set(row)
                self.list.focus(*row)
        super()._list_selected()

    def _press(self, e: Any) -> None:
        self.canvas.focus_set()
        super()._press(e)

    def _has_corners(self) -> bool:
        return bool(self._shape()["type"] == "polygon")

    def show_props(self) -> None:
        super().show_props()
        self._shown = self.typed()
        if self._shown is None:
            return
        if self._has_corners():
            self.points_text.configure(undo=True)
            for event, step in (("<<Undo>>", "undo"), ("<<Redo>>", "redo")):
                self.points_text.bind(event, partial(_step_in_text, self.points_text, step))
        refused = self._refused_text()
        if refused is not None:
            self._type(refused)

    def apply_props(self) -> None:
        typed = self.typed()
        if typed is None:
            return super().apply_props()
        shape = self._shape()
        self._refused[id(shape)] = shape, typed
        try:
            plain = self._plain()
        except Unreadable as error:
            return self.tell(tr("Not applied: {why}").format(why=error))
        self._type(plain)
        super().apply_props()
        if self._shape() is shape:
            # Refused: an applied shape is another one, whatever the status line tells besides.
            return self._type(typed)
        self._refused.pop(id(shape), None)
        self._shown = self.typed()
        if str(self.tk.call("focus")).startswith(f"{self.props}."):
            # Keys are the drawing's again.
            self.canvas.focus_set()

    def _plain(self) -> List[str]:
        """The texts of the form as plain numbers."""
        kind = self._shape()["type"]
        texts = []
        for key, label, is_length in sketcher.FIELDS[kind]:
            text = str(self.vars[key].get())
            with _named(tr(label)):
                value = read_length(text) if is_length else _read_plain(key, text)
            texts.append(num_text(value))
        if self._has_corners():
            texts.append(plain_corners(self.points_text.get("1.0", "end-1c")))
        return texts

    def _type(self, texts: List[str]) -> None:
        """Have the form show these texts; a text that it shows already keeps its cursor."""
        for variable, text in zip(self.vars.values(), texts):
            if variable.get() != text:
                variable.set(text)
        if self._has_corners() and self.points_text.get("1.0", "end-1c") != texts[-1]:
            self.points_text.replace("1.0", "end-1c", texts[-1])

    # Offset and grid.

    def ok(self) -> None:
        if not self.settle():
            return
        if self.dim == 3:
            try:
                with _named(tr(_OFFSET)):
                    self.offset.set(num_text(read_length(self.offset.get())))
            except Unreadable as error:
                return self.tell(tr("Not applied: {why}").format(why=error))
        super().ok()

    def grid_step(self) -> float:
        with suppress(Unreadable):
            typed = read_length(self.grid.get())
            if _is_step(typed):
                return units().to_si(typed, "length")
        return self._default_grid()

    def _begin(self, variable: tk.StringVar, _event: Any) -> None:
        self._field = variable, variable.get()

    def _take(self, variable: tk.StringVar, label: str, _event: Any) -> None:
        """Show as a plain number what was typed into a field over the drawing, or say why not."""
        self._field = None
        text = variable.get()
        if not text.strip():
            return
        try:
            with _named(tr(label)):
                typed = read_length(text)
                if variable is self.grid and typed and not _is_step(typed):
                    below, fine = tr("“{text}” is less than zero"), tr("“{text}” is too small")
                    raise Unreadable((below if typed < 0 else fine).format(text=text.strip()))
        except Unreadable as error:
            self.tell(tr("Not applied: {why}").format(why=error))
        else:
            variable.set(num_text(typed))


def _step_in_text(box: tk.Text, step: str, _event: Any) -> Optional[str]:
    """The text's own undo. Where there is nothing left to undo, the key is that of the dialog."""
    try:
        box.edit(step)
    except tk.TclError:
        return None
    return "break"


class _named:
    """Put the name of a field before what is wrong with it."""

    def __init__(self, field: str) -> None:
        self._field = field

    def __enter__(self) -> None:
        pass

    def __exit__(self, _kind: Any, error: Any, _trace: Any) -> None:
        if isinstance(error, Unreadable):
            why = tr("{place}: {why}").format(place=self._field, why=error)
            raise Unreadable(why) from None


def plain_corners(text: str) -> str:
    """Lines of two lengths as lines of two plain numbers.

    Between the two stands a semicolon, a blank, or a comma where that isn't the decimal mark. Where
    it is a blank, a sum has none; a unit may.
    """
    return "\n".join(_plain_corner(number, line) for number, line in enumerate(text.split("\n"), 1))


def _plain_corner(number: int, line: str) -> str:
    if not line.strip():
        return ""
    with _named(tr("Corners, line {n}").format(n=number)):
        texts = _two(line)
        if len(texts) != 2:
            raise Unreadable(tr("each corner needs two numbers"))
        return " ".join(num_text(read_length(text)) for text in texts)


def _two(line: str) -> List[str]:
    line = typed_numbers.in_plain_signs(line)
    if ";" in line:
        return line.split(";")
    comma = r",(?=\s)" if typed_numbers.decimal_comma() else ","
    # A unit goes with the number before it.
    line = re.sub(rf"""(?<=[0-9.,])\s+(?=(?i:{"|".join(SYSTEMS)})\b|")""", "", line)
    return re.sub(comma, " ", line).split()
