"""A tkinter that knows only what the dialog may ask of it, and keeps every call in one order.

    stage = Stage()
    stage.replace(monkeypatch, sketcher)  # by the module's names, for editors without a window
    stage.install()                       # in sys.modules, before the module is loaded

What makes or changes something is kept in `stage.record`, as `call` writes it; questions (sizes,
values, the focus) are only answered. Widgets stand there by their names, which are their kind and a
number: `Frame1`, `Label3`. Whatever else a stand-in is asked for fails the test.
"""

import functools
import re
import sys
import types

from .neighbours import FakeSketch, FakeUnits, Strict
from .plain import PlainEditor

DOES = {
    "Frame": "pack",
    "Label": "pack configure",
    "Entry": "pack bind",
    "Combobox": "pack bind",
    "Checkbutton": "pack",
    "Radiobutton": "pack",
    "Spinbox": "pack",
    "Button": "pack",
    "Treeview": "heading column pack bind delete insert selection_set",
    "Canvas": "pack bind delete create_line create_text create_polygon create_oval",
    "Text": "pack insert",
    "Form": "pack entry note",
    "Toplevel": "title transient configure update_idletasks bind geometry grab_set wait_window "
    "destroy",
}
ANSWERS = {
    "Frame": {"winfo_children": ()},
    "Treeview": {"get_children": (), "selection": ()},
    "Canvas": {"winfo_width": 1, "winfo_height": 1},
    "Text": {"get": "0 0\n3 0\n0 2\n"},
    "Toplevel": {"winfo_width": 300, "winfo_height": 200, "focus_get": None},
}
PLAIN = ("Toplevel", "Canvas", "Text", "Entry")  # of tkinter itself; the rest is of its themed set
THEMED = ("Frame", "Label", "Entry", "Combobox", "Checkbutton", "Radiobutton", "Spinbox")
THEMED += ("Button", "Treeview")

# Operations that widgets get themselves; all others are behind a handler.
GIVEN_AS_THEY_ARE = "fit delete destroy ok cancel_drawing apply_props".split()
GIVEN_AS_THEY_ARE += "_press _drag _release _motion _pan_start _pan_move".split()

# What an editor may lack: nothing else is ever looked for in vain.
MAY_BE_MISSING = ("points_text",)


def call(name, *args, **kwargs):
    """One entry of a record."""
    return name, args, kwargs


def line(entry):
    """An entry of a record as it would be written."""
    name, args, options = entry
    return f"{name}({', '.join([*map(repr, args), *(f'{k}={v!r}' for k, v in options.items())])})"


def lines(text):
    """Those of a record; what is indented belongs to the line before."""
    return re.sub(r"\n +", " ", text.strip()).splitlines()


def operation_of(value):
    """The name of the editor's operation that this is, as it is bound; None for a handler."""
    name = getattr(value, "__name__", None)
    owner = getattr(value, "__self__", None)
    return name if name in GIVEN_AS_THEY_ARE and getattr(owner, name, None) == value else None


def written(value):
    """An entry, or a part of one, as it is compared: everything by its name."""
    if isinstance(value, (tuple, list)):
        return type(value)(map(written, value))
    if isinstance(value, dict):
        return {key: written(item) for key, item in value.items()}
    if isinstance(value, (Widget, Variable)):
        return value.name
    if isinstance(value, PlainEditor):
        return "editor"
    if callable(value):
        name = operation_of(value)
        return f"editor.{name}" if name else "handler"
    return value


class Variable(Strict):
    def __init__(self, stage, kind, value):
        super().__init__()
        self.name = stage.named(kind)
        self.value = value

    def get(self):
        return self.value


@functools.lru_cache(None)
def doing(name):
    """The function that keeps a call of this name; one for all widgets, as with any class."""

    def operation(self, *args, **kwargs):
        return self.do(name, *args, **kwargs)

    operation.__name__ = name
    return operation


class Widget(Strict):
    """Anything that was made on the stage, by its kind."""

    def __init__(self, stage, kind, name):
        super().__init__()
        self.stage, self.kind, self.name = stage, kind, name
        self.answers = dict(ANSWERS.get(kind, {}))

    def __getattr__(self, name):
        if name in DOES[self.kind].split():
            return types.MethodType(doing(name), self)
        if name in ANSWERS.get(self.kind, ()):
            return functools.partial(self.answer, name)
        if name in MAY_BE_MISSING:
            raise AttributeError(name)
        self.stage.keep(f"{self.name} was asked for {name}")  # for whoever swallows what follows
        return super().__getattr__(name)

    def answer(self, name, *args):
        assert args == (("1.0", "end") if name == "get" else ())
        return self.answers[name]

    def do(self, name, *args, **kwargs):
        self.stage.keep(f"{self.name}.{name}", *args, **kwargs)
        if (self.kind, name) == ("Form", "entry"):
            return Widget(self.stage, "Entry", self.stage.named("Entry"))
        return None


class Child(Strict):
    """What stands in the property frame: it can only be destroyed."""

    def __init__(self, stage, name):
        super().__init__()
        self.destroy = lambda: stage.keep(f"{name}.destroy")


class Master(Strict):
    """The window over which the dialog is placed."""

    def __init__(self, **answers):
        super().__init__()
        for name, answer in answers.items():
            setattr(self, name, lambda answer=answer: answer)


class StrictEditor(PlainEditor):
    """A plain editor that has what editors have and fails the test for anything else."""

    def __getattr__(self, name):
        try:
            return super().__getattr__(name)
        except AttributeError:
            if name in MAY_BE_MISSING or name.startswith("__"):
                raise
            raise AssertionError(f"the editor was asked for {name}") from None


class Namespace(types.ModuleType, Strict):
    """A module with these members and no others."""

    def __init__(self, name, **members):
        types.ModuleType.__init__(self, name)
        vars(self).update(members)


class Stage:
    """One set of stand-ins, with the record of what was done to them."""

    def __init__(self):
        self.record = []
        self.numbers = {}
        self.S = FakeSketch()
        self.units = FakeUnits()
        self.tr = lambda text: f"<{text}>"
        self.num_text = lambda value: f"number {value:.12g}"
        self.px = lambda size: ("px", size)
        self.PAL = {key: f"the {key}" for key in "panel line bg muted accent accent_soft".split()}
        self.Form = self.maker("Form", "Form")
        self.Tooltip = lambda widget, text: self.keep("Tooltip", widget, text)
        self.ttk = Namespace(
            "tkinter.ttk", **{kind: self.maker(f"ttk.{kind}", kind) for kind in THEMED}
        )
        self.tk = Namespace(
            "tkinter",
            ttk=self.ttk,
            StringVar=self.variable_maker("StringVar"),
            BooleanVar=self.variable_maker("BooleanVar"),
            **{kind: self.maker(kind, kind) for kind in PLAIN},
        )

    def keep(self, name, *args, **kwargs):
        self.record.append(call(name, *args, **kwargs))

    def named(self, kind):
        self.numbers[kind] = self.numbers.get(kind, 0) + 1
        return f"{kind}{self.numbers[kind]}"

    def maker(stage, name, kind):  # noqa: N805
        """The class of widgets of this kind; one that is derived from, too."""

        class Made(Widget):
            def __init__(self, parent, **options):
                own = "editor" if kind == "Toplevel" else stage.named(kind)
                super().__init__(stage, kind, own)
                stage.keep(name, parent, **options)
                if kind == "Toplevel":
                    self.master = parent

        return Made

    def variable_maker(stage, kind):  # noqa: N805
        class Made(Variable):
            def __init__(self, *, value):
                super().__init__(stage, kind, value)
                stage.keep(kind, value=value)

        return Made

    def recorded(self):
        """What was done since it was asked last, as `call` writes it."""
        done = written(self.record)
        self.record.clear()
        return done

    def handlers(self):
        """What was bound so far: by widget and event."""
        return {
            (name.partition(".")[0], args[0]): args[1]
            for name, args, _ in self.record
            if name.endswith(".bind")
        }

    def commands(self):
        """The commands of the widgets made so far, by what the widgets say."""
        return {
            kwargs["text"]: kwargs["command"] for _, _, kwargs in self.record if "command" in kwargs
        }

    NEIGHBOURS = ("S", "units", "tr", "num_text", "px", "PAL", "Form", "Tooltip")

    def replace(self, monkeypatch, sketcher):
        for name in ("tk", "ttk", *self.NEIGHBOURS):
            monkeypatch.setattr(sketcher, name, getattr(self, name))

    def install(self):
        """For a process that hasn't loaded anything yet. tkinter.ttk is an attribute only."""
        widgets = {name: getattr(self, name) for name in self.NEIGHBOURS if name not in ("S", "tr")}
        sketch = {name: getattr(self.S, name) for name in dir(FakeSketch) if name[:1] != "_"}
        for module in (
            self.tk,
            Namespace("tandrel.sketch", **sketch),
            Namespace("tandrel.gui.i18n", N_=lambda text: text, tr=self.tr),
            Namespace("tandrel.gui.widgets", **widgets),
        ):
            sys.modules[module.__name__] = module

    def editor(self, entities=(), **attributes):
        """An editor without a window whose widgets and variables are of this stage."""
        editor = StrictEditor(entities=entities, **attributes)
        for kind, name in (("Canvas", "canvas"), ("Treeview", "list"), ("Label", "status")):
            setattr(editor, name, Widget(self, kind, name))
        editor.props = Widget(self, "Frame", "props")
        editor.canvas.answers.update(winfo_width=40, winfo_height=30)
        editor.destroy = lambda: self.keep("editor.destroy")
        return editor
