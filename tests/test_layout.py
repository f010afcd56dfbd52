"""The widgets of the dialog: what they are, how they are packed and what they show."""

import tkinter as tk
from tkinter import ttk

import pytest

from support.neighbours import FakeUnits, circle, one_of_each
from support.widgets import walk

pytestmark = pytest.mark.usefixtures("neighbours")

HINT = "Shapes inside other shapes become holes; overlapping shapes join."
CANVAS_BINDINGS = {
    "<Configure>",
    "<Button-1>",
    "<B1-Motion>",
    "<ButtonRelease-1>",
    "<Double-Button-1>",
    "<Motion>",
    "<Button-2>",
    "<Button-3>",
    "<B2-Motion>",
    "<B3-Motion>",
    "<MouseWheel>",
    "<Button-4>",
    "<Button-5>",
}


class Widget:
    """One widget of the expected tree: class, options, pack options, bindings and children."""

    def __init__(self, cls, options=None, pack=None, bind=(), children=()):
        self.facts = (cls, options or {}, pack or {}, set(bind))
        self.children = list(children)

    def in_order(self):
        yield self
        for child in self.children:
            yield from child.in_order()


def frame(pack, *children, **options):
    return Widget(ttk.Frame, {"style": "Panel.TFrame", **options}, pack, (), children)


def label(text, style, **pack):
    return Widget(ttk.Label, {"text": text, "style": f"{style}.TLabel"}, {"side": "left", **pack})


def push(text, pack, style=None):
    options = {"text": text, "command": "command"}
    if style:
        options["style"] = style
    return Widget(ttk.Button, options, pack)


def plane_chooser():
    return [
        label("Plane", "Panel"),
        Widget(
            ttk.Combobox,
            {"textvariable": "plane", "values": "XY XZ YZ", "state": "readonly", "width": "5"},
            {"side": "left", "padx": (4, 12)},
            ["<<ComboboxSelected>>"],
        ),
    ]


def offset_entry():
    return [
        label("Offset along the normal", "Panel"),
        Widget(
            ttk.Entry, {"textvariable": "offset", "width": "9"}, {"side": "left", "padx": (4, 2)}
        ),
        label("mm", "Muted", padx=(0, 12)),
    ]


def snap_and_grid():
    return [
        Widget(ttk.Checkbutton, {"text": "Snap to grid", "variable": "snap"}, {"side": "left"}),
        label("Grid", "Panel", padx=(10, 4)),
        Widget(
            ttk.Entry,
            {"textvariable": "grid", "width": "7"},
            {"side": "left"},
            ["<Key-Return>", "<FocusOut>"],
        ),
        label("mm", "Muted", padx=(2, 0)),
        push("Fit", {"side": "right"}),
    ]


def tool_column(sketcher):
    radio_buttons = [
        Widget(
            ttk.Radiobutton,
            {
                "text": text,
                "value": key,
                "variable": "tool",
                "style": "SketchTool.TRadiobutton",
                "command": "command",
            },
            {"fill": "x", "pady": 1},
        )
        for key, text in sketcher.TOOLS
    ]
    sides = Widget(
        ttk.Spinbox,
        {"from": "3", "to": "64", "textvariable": "sides", "width": "4"},
        {"side": "left", "padx": (4, 0)},
    )
    return frame(
        {"side": "left", "fill": "y", "padx": (0, 8)},
        *radio_buttons,
        frame({"fill": "x", "pady": (6, 0)}, label("Sides", "Panel"), sides),
        push("Delete", {"fill": "x", "pady": (12, 0)}),
    )


def canvas(palette):
    return Widget(
        tk.Canvas,
        {
            "width": "620",
            "height": "460",
            "background": palette["panel"],
            "highlightbackground": palette["line"],
            "cursor": "crosshair",
        },
        {"side": "left", "fill": "both", "expand": 1},
        CANVAS_BINDINGS,
    )


def side_panel():
    shapes = Widget(
        ttk.Treeview,
        {"columns": "size", "height": "8", "selectmode": "browse"},
        {"fill": "x"},
        ["<<TreeviewSelect>>"],
    )
    hint = Widget(
        ttk.Label,
        {
            "text": "Select a shape to type its exact size.",
            "style": "Muted.TLabel",
            "wraplength": "260",
        },
        {"anchor": "w"},
    )
    props = frame({"fill": "x", "pady": (8, 0)}, hint)
    return frame({"side": "left", "fill": "y", "padx": (8, 0)}, shapes, props, width="280")


def expected_tree(sketcher, top_bar):
    status = Widget(
        ttk.Label,
        {"style": "Muted.TLabel", "wraplength": "900"},
        {"fill": "x", "pady": (6, 0)},
    )
    bottom = frame(
        {"fill": "x", "pady": (8, 0)},
        label(HINT, "Muted"),
        push("Cancel", {"side": "right"}),
        push("OK", {"side": "right", "padx": (0, 6)}, "Primary.TButton"),
    )
    body = frame(
        {"fill": "both", "expand": 1, "pady": (8, 0)},
        tool_column(sketcher),
        canvas(sketcher.PAL),
        side_panel(),
    )
    return frame(
        {"fill": "both", "expand": 1},
        frame({"fill": "x"}, *top_bar),
        body,
        status,
        bottom,
        padding="10",
    )


def option_texts(widget):
    """Every option of the widget as a text; the parts of a list separated by blanks."""
    synonyms = {name for name, spec in widget.configure().items() if len(spec) == 2}
    values = {name: widget.cget(name) for name in widget.keys() if name not in synonyms}
    return {
        name: " ".join(map(str, value)) if isinstance(value, tuple) else str(value)
        for name, value in values.items()
    }


def facts(editor, widget, pristine):
    """What the expected tree says about a widget, read from the real one."""
    cls = type(widget)
    options = {
        name: value for name, value in option_texts(widget).items() if value != pristine(cls)[name]
    }
    for name in ("textvariable", "variable"):
        for attribute in ("plane", "offset", "snap", "grid", "sides", "tool"):
            if options.get(name) == str(getattr(editor, attribute)):
                options[name] = attribute
    if "command" in options:
        options["command"] = "command"
    packed = {name: value for name, value in widget.pack_info().items() if name != "in"}
    defaults = {"anchor": "center", "expand": 0, "fill": "none", "side": "top"}
    defaults.update(ipadx=0, ipady=0, padx=0, pady=0)
    packed = {name: value for name, value in packed.items() if value != defaults[name]}
    return cls, options, packed, set(widget.bind())


@pytest.fixture
def pristine(root):
    """The options of an untouched widget of a class, as texts."""
    known = {}

    def options(cls):
        if cls not in known:
            widget = cls(root)
            known[cls] = option_texts(widget)
            widget.destroy()
        return known[cls]

    return options


def compare(editor, widget, expected, pristine):
    assert facts(editor, widget, pristine) == expected.facts, widget
    children = widget.winfo_children()
    assert [type(child) for child in children] == [child.facts[0] for child in expected.children]
    assert widget.pack_slaves() == children, widget
    for child, expected_child in zip(children, expected.children):
        compare(editor, child, expected_child, pristine)


BARS = {
    "in space": ({}, lambda: [*plane_chooser(), *offset_entry(), *snap_and_grid()]),
    "with a fixed plane": (
        {"allow_plane": False},
        lambda: [*offset_entry(), *snap_and_grid()],
    ),
    "plain region": ({"dim": 2}, snap_and_grid),
    "plain region with a fixed plane": ({"dim": 2, "allow_plane": False}, snap_and_grid),
}


@pytest.mark.parametrize("name", BARS)
def test_whole_widget_tree(open_editor, sketcher, pristine, name):
    arguments, top_bar = BARS[name]
    editor = open_editor(**arguments)
    (outer,) = editor.winfo_children()
    assert editor.pack_slaves() == [outer]
    compare(editor, outer, expected_tree(sketcher, top_bar()), pristine)


def test_status_line_is_empty_and_aligned_to_the_left(open_editor):
    status = open_editor().status
    assert status.cget("text") == ""
    assert str(status.cget("justify")) == "left"


def test_application_wide_defaults_do_not_change_the_dialog(open_editor, root):
    root.option_add("*Canvas.highlightThickness", 7)
    root.option_add("*TLabel.justify", "right")
    root.option_add("*TLabel.text", "Ready")
    assert tk.Canvas(root).cget("highlightthickness") == "7"
    assert ttk.Label(root).cget("text") == "Ready"
    assert str(ttk.Label(root).cget("justify")) == "right"
    editor = open_editor()
    assert editor.canvas.cget("highlightthickness") == "1"
    assert editor.status.cget("text") == ""
    assert str(editor.status.cget("justify")) == "left"


def test_widgets_are_made_in_the_order_of_the_tree(open_editor, sketcher, monkeypatch):
    made = []
    original = tk.BaseWidget.__init__

    def init(self, *args, **kwargs):
        original(self, *args, **kwargs)
        made.append(self)

    monkeypatch.setattr(tk.BaseWidget, "__init__", init)
    editor = open_editor()
    in_props = [widget for widget in walk(editor.props) if widget is not editor.props]
    tree = [widget for widget in walk(editor) if widget not in in_props]
    assert made == [*tree, *in_props]


@pytest.mark.parametrize("dim, bar", [(3, True), (3.0, True), (2, False), (1, False), ("3", False)])
def test_plane_and_offset_have_widgets_only_in_space(open_editor, dim, bar):
    editor = open_editor(dim=dim)
    texts = [w.cget("text") for w in walk(editor) if isinstance(w, ttk.Label)]
    assert ("Plane" in texts) == ("Offset along the normal" in texts) == bar


def test_named_widgets_are_the_ones_of_the_tree(open_editor):
    editor = open_editor()
    assert type(editor.canvas) is tk.Canvas
    assert type(editor.list) is ttk.Treeview
    assert type(editor.props) is ttk.Frame
    assert type(editor.status) is ttk.Label
    assert editor.props.winfo_y() > editor.list.winfo_y()
    assert editor.status.winfo_width() == editor.status.master.winfo_width() - 20


# --- variables


@pytest.mark.parametrize("dim", [3, 2])
def test_plane_and_offset_exist_whatever_the_dimension(open_editor, dim):
    editor = open_editor({"plane": "XZ", "offset": 0.25}, dim=dim)
    assert editor.plane.get() == "XZ"
    assert editor.offset.get() == "250"


@pytest.mark.parametrize("offset", [None, 0, 0.0, "", False, []], ids=repr)
def test_offset_that_says_nothing_is_zero(open_editor, neighbours, offset):
    editor = open_editor({"offset": offset})
    assert editor.plane.get() == "XY"
    assert editor.offset.get() == "0"
    assert ("from_si", (0, "length")) in neighbours.units.calls


def test_missing_plane_and_offset_have_defaults(open_editor):
    editor = open_editor({"entities": [circle()]})
    assert editor.plane.get() == "XY"
    assert editor.offset.get() == "0"
    assert "plane" not in editor.sk and "offset" not in editor.sk


def test_planes_of_the_sketch_module_are_offered(open_editor, neighbours):
    neighbours.S.PLANES = ["front", "top view", "side"]
    editor = open_editor()
    (chooser,) = [w for w in walk(editor) if type(w) is ttk.Combobox]
    assert chooser.cget("values") == ("front", "top view", "side")


def test_unit_stands_after_lengths(open_editor, neighbours):
    neighbours.units.symbol = "in"
    editor = open_editor()
    texts = [w.cget("text") for w in walk(editor) if isinstance(w, ttk.Label)]
    assert texts.count("in") == 2
    assert neighbours.units.named("unit") == [("length",)] * 2


def test_wraplengths_follow_the_scaling_of_the_screen(open_editor, neighbours):
    neighbours.px.function = lambda n: 2 * n
    editor = open_editor()
    assert str(editor.status.cget("wraplength")) == "1800"
    (hint,) = editor.props.winfo_children()
    assert str(hint.cget("wraplength")) == "520"
    assert neighbours.px.calls == [(900,), (260,)]


def test_every_visible_text_is_translated(open_editor, neighbours, sketcher):
    class Marked(dict):
        def get(self, text, default):
            return f"[{text}]"

    neighbours.tr.texts = Marked()
    editor = open_editor({"entities": [circle()]})
    shown = [
        widget.cget("text")
        for widget in walk(editor)
        if "text" in widget.keys() and widget is not editor.status
    ]
    shown = [text for text in shown if text != "mm"]
    assert shown and all(text.startswith("[") and text.endswith("]") for text in shown)
    assert editor.list.heading("#0", "text") == "[Shape]"
    assert editor.list.heading("size", "text") == "[Size]"
    assert editor.list.item("0", "text") == "1. [Circle]"
    tips = [tip for _, tip in neighbours.Tooltip.calls]
    assert tips == [f"[{sketcher.TOOL_TIPS[key]}]" for key, _ in sketcher.TOOLS]


def test_each_tool_button_has_its_tip(open_editor, neighbours, sketcher):
    editor = open_editor()
    buttons = [w for w in walk(editor) if type(w) is ttk.Radiobutton]
    keys = [key for key, _ in sketcher.TOOLS]
    assert neighbours.Tooltip.calls == [
        (widget, sketcher.TOOL_TIPS[key]) for widget, key in zip(buttons, keys)
    ]


def test_shape_list_has_two_columns(open_editor):
    editor = open_editor()
    assert editor.list.cget("columns") == ("size",)
    assert [str(part) for part in editor.list.cget("show")] == ["tree", "headings"]
    pristine = {"minwidth": 20, "stretch": 1, "anchor": "w"}
    for column, name, width in (("#0", "", 110), ("size", "size", 160)):
        options = editor.list.column(column)
        options["anchor"] = str(options["anchor"])
        assert options == {"id": name, "width": width, **pristine}
    assert editor.list.heading("#0", "text") == "Shape"
    assert editor.list.heading("size", "text") == "Size"
    for column in ("#0", "size"):
        assert editor.list.heading(column, "command") == ""


def test_layout_ends_by_filling_the_list(open_editor, sketcher):
    seen = []

    class Editor(sketcher.SketchEditor):
        def refresh_list(self, *args, **kwargs):
            seen.append((args, kwargs, [hasattr(self, name) for name in ("list", "status")]))
            seen.append(len(list(walk(self))))
            super().refresh_list(*args, **kwargs)

    editor = open_editor(one_of_each(), cls=Editor)
    assert seen == [((), {}, [True, True]), len(list(walk(editor))) - 1]
    assert len(editor.list.get_children()) == len(editor.sk["entities"])


def test_units_are_asked_for_afresh(open_editor, neighbours, sketcher, monkeypatch):
    first, second = FakeUnits(), FakeUnits(100.0, "cm")
    monkeypatch.setattr(sketcher, "units", first)
    open_editor({"offset": 0.5})
    monkeypatch.setattr(sketcher, "units", second)
    editor = open_editor({"offset": 0.5})
    assert editor.offset.get() == "50"
    assert "cm" in [w.cget("text") for w in walk(editor) if isinstance(w, ttk.Label)]
