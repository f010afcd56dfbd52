"""Finding one's way in a real editor window, and working in it with generated events."""

from tkinter import ttk

from tandrel.gui import widgets

from . import canvas as shown
from .events import type_text
from .widgets import button, walk

ORANGE = "#E8833A"


def of_class(widget, cls):
    """All widgets of a class inside a widget."""
    return [found for found in walk(widget) if isinstance(found, cls)]


def tool_button(editor, tool):
    """The button that chooses a tool."""
    return next(b for b in of_class(editor, ttk.Radiobutton) if str(b.cget("value")) == tool)


def field(editor, key):
    """The entry of a property."""
    return entry_of(editor.props, editor.vars[key])


def entry_of(widget, variable):
    """The entry, spin box or combobox of a variable."""
    return next(
        e for e in of_class(widget, ttk.Entry) if str(e.cget("textvariable")) == str(variable)
    )


def rearranged(cls, text):
    """A class of editors whose layout has one button more, after the one with this text."""
    from tandrel.gui.sketcher import SketchEditor

    class AnotherButton(SketchEditor):
        def _build(self, allow_plane):
            super()._build(allow_plane)
            ttk.Button(button(self, text).master, text="More").pack()

    return type(cls.__name__, (cls, AnotherButton), {})


class Desk:
    """An editor with its user: points are given in millimetres, fields by their key."""

    def __init__(self, editor, hands):
        self.editor = editor
        self.hands = hands

    @property
    def entities(self):
        return self.editor.sk["entities"]

    def tool(self, key):
        """Click the button of a tool."""
        tool_button(self.editor, key).invoke()

    def pixels(self, *points):
        return [self.hands.at((u / 1000, v / 1000)) for u, v in points]

    def stroke(self, *points):
        self.hands.stroke(*self.pixels(*points))
        self.editor.update()

    def click(self, *points):
        for pixel in self.pixels(*points):
            self.hands.click(*pixel)
        self.editor.update()

    def move(self, point):
        self.hands.motion(*self.pixels(point)[0])

    def field(self, key):
        """The entry of a property."""
        return field(self.editor, key)

    def fill_in(self, key, text):
        type_text(self.field(key), text)

    def button(self, text):
        return button(self.editor, text)

    def rows(self):
        return [self.editor.list.item(iid, "text") for iid in self.editor.list.get_children()]

    def sizes(self):
        return [self.editor.list.set(iid, "size") for iid in self.editor.list.get_children()]

    def status(self):
        return str(self.editor.status.cget("text"))

    def selected(self):
        """The selection, which the list and the form must show as well."""
        editor = self.editor
        editor.update()
        sel = editor.sel
        assert editor.list.selection() == (() if sel is None else (str(sel),))
        orange = shown.of_kind(editor.canvas, "polygon", outline=ORANGE, width="3.0")
        assert len(orange) == (sel is not None)
        forms = [w for w in editor.props.winfo_children() if isinstance(w, widgets.Form)]
        assert len(forms) == (sel is not None)
        return sel
