"""A layout of the sketch editor in which nothing moves under the pointer.

By itself the dialog follows what its content asks for: the form of another shape, or a second line
of the status text, pushes the canvas, and what the pointer stood on with it.
"""

from __future__ import annotations

import re
from tkinter import font, ttk
from typing import Any, Tuple

from tandrel.gui import sketcher, widgets
from tandrel.gui.sketcher import FIELDS, SketchEditor
from tandrel.gui.widgets import px

Size = Tuple[int, int]  # width and height in pixels

_STATUS_LINES = 2
_LEAST_ROWS = 3
# In nominal pixels.
_COLUMNS = {"#0": 110, "size": 180}
_AROUND_TEXT = 16  # in a column, at most
_LEAST_CANVAS = 240, 160
_FAIR_WIDTH = 370  # the canvas's, of which it leaves nothing to the list
_LEAST_USUAL, _USUAL = (1000, 700), (1400, 900)

_LONG = 0.123457  # metres, with all the digits that a length is shown with
_SHARE_OF_SCREEN = 0.9  # between those two; panels may have the rest


def arrange(editor: SketchEditor, wanted: str = "") -> None:
    """Give a dialog that has just been built its size, and each part a room of its own.

    `wanted` is a size such as "1200x800" in pixels, or empty for a usual one. The dialog has it as
    far as the screen allows, and as its parts, the largest form among them, have the room that they
    need.
    """
    # It appears when it has its size: forms are measured before.
    editor.withdraw()
    most = widgets.room(editor)
    _give_way(editor)
    _break_lines(editor, most[0])
    _reserve_status(editor)
    _reserve_side(editor, _largest_form(editor))
    editor.canvas.configure(width=px(_LEAST_CANVAS[0]), height=px(_LEAST_CANVAS[1]))
    width, height = _larger(_smaller(_size(editor, wanted), most), _least(editor, most))
    _widen_list(editor, width)
    editor.minsize(*_least(editor, most))
    # A window with a size of its own doesn't follow its content any more.
    editor.geometry(f"{width}x{height}")
    editor.deiconify()


def on_screen(editor: SketchEditor, geometry: str) -> str:
    """A geometry, where it is a place such as "+700+90", moved so that all is on the screen."""
    place = re.fullmatch(r"\+(-?\d+)\+(-?\d+)", geometry)
    if place is None:
        return geometry
    size = editor.winfo_width(), editor.winfo_height()
    return widgets.on_screen(editor, int(place[1]), int(place[2]), size)


def _least(editor: SketchEditor, most: Size) -> Size:
    """The size in which all parts have the room that they need, as far as the screen has it."""
    editor.update_idletasks()
    return _smaller((editor.winfo_reqwidth(), editor.winfo_reqheight()), most)


def _size(editor: SketchEditor, wanted: str) -> Size:
    if wanted:
        width, height = map(int, wanted.split("x"))
        return width, height
    screen = editor.winfo_screenwidth(), editor.winfo_screenheight()
    width, height = (
        min(max(int(n * _SHARE_OF_SCREEN), px(least)), px(usual))
        for n, least, usual in zip(screen, _LEAST_USUAL, _USUAL)
    )
    return width, height


def _smaller(a: Size, b: Size) -> Size:
    return min(a[0], b[0]), min(a[1], b[1])


def _larger(a: Size, b: Size) -> Size:
    return max(a[0], b[0]), max(a[1], b[1])


def _give_way(editor: SketchEditor) -> None:
    """Let shrink with the window what can do with less: the canvas, the list of shapes, the hint.

    What has no room is what is packed last in its frame: neither the form nor OK and Cancel.
    """
    body: Any = editor.canvas.master
    side: Any = editor.list.master
    outer: Any = editor.status.master
    bottom = outer.winfo_children()[-1]
    hint, _, ok = bottom.winfo_children()
    hint.pack_configure(after=ok)
    bottom.pack_configure(side="bottom", before=body)
    side.pack_configure(side="right", before=editor.canvas)
    editor.props.pack_configure(side="bottom", anchor="w", fill="none", before=editor.list)
    editor.list.pack_configure(fill="both", expand=True)


def _break_lines(editor: SketchEditor, most: int) -> None:
    """Two lines for the bar above the body, and for the hint, where the dialog is too narrow.

    `most` is how wide it can be, in pixels. The bar's second line begins with snapping.
    """
    outer: Any = editor.status.master
    bar, bottom = outer.winfo_children()[0], outer.winfo_children()[-1]
    most -= _around(editor)
    editor.update_idletasks()
    if bar.winfo_reqwidth() > most:
        parts = bar.winfo_children()
        line = ttk.Frame(bar, style="Panel.TFrame")
        line.pack(side="bottom", fill="x", pady=(px(6), 0), before=parts[0])
        line.lower()
        first = next(k for k, part in enumerate(parts) if isinstance(part, ttk.Checkbutton))
        for part in parts[first:]:
            part.pack_configure(in_=line)
    hint = bottom.winfo_children()[0]
    buttons = bottom.winfo_reqwidth() - hint.winfo_reqwidth()
    hint.configure(wraplength=max(most - buttons, 1))


def _around(editor: SketchEditor) -> int:
    """How much wider the dialog is than what is in it, in pixels."""
    outer: Any = editor.status.master
    return 2 * int(outer.winfo_pixels(str(outer.cget("padding")[0])))


def _reserve_status(editor: SketchEditor) -> None:
    """Two lines for the status text. More lie over the body until the next text, or a click."""
    status: Any = editor.status
    status.configure(text="\n" * (_STATUS_LINES - 1))
    room = ttk.Frame(status.master, style="Panel.TFrame", height=status.winfo_reqheight())
    status.configure(text="")
    room.pack(side="bottom", fill="x", pady=(px(6), 0), before=editor.canvas.master)
    room.bind("<Configure>", lambda e: status.configure(wraplength=max(e.width - px(4), 1)))
    status.place(in_=room, relwidth=1, rely=1, anchor="sw")
    status.lift()
    status.bind("<Button-1>", lambda _event: status.configure(text=""))


def _reserve_side(editor: SketchEditor, form: Size) -> None:
    """Room for a few rows of the list, and for the largest form, whichever is shown."""
    editor.list.configure(height=_LEAST_ROWS)
    for column, nominal in _COLUMNS.items():
        editor.list.column(column, width=px(nominal))
    rows = editor.list
    bar = ttk.Scrollbar(rows.master, orient="vertical", command=rows.yview)
    rows.configure(yscrollcommand=bar.set)
    # Its room is there at any time; where all rows are in sight it shows no slider.
    rows.pack_configure(padx=(0, bar.winfo_reqwidth()))
    bar.place(in_=rows, relx=1, rely=0, relheight=1, anchor="nw")
    width = max(form[0], rows.winfo_reqwidth() + bar.winfo_reqwidth())
    height = form[1] + px(8) + rows.winfo_reqheight()
    side: Any = rows.master
    for frame, size in ((editor.props, form), (side, (width, height))):
        frame.pack_propagate(False)
        frame.configure(width=size[0], height=size[1])


def _widen_list(editor: SketchEditor, width: int) -> None:
    """Let the sizes in the list have what a dialog of this width has beyond a fair canvas."""
    canvas, rows = editor.canvas, editor.list
    others = canvas.master.winfo_reqwidth() - canvas.winfo_reqwidth()
    spare = width - _around(editor) - others - px(_FAIR_WIDTH)
    more = max(min(spare, _widest_size(editor) - px(_COLUMNS["size"])), 0)
    rows.column("size", width=px(_COLUMNS["size"]) + more)
    side: Any = rows.master
    side.configure(width=side.winfo_reqwidth() + more)


def _widest_size(editor: SketchEditor) -> int:
    """What the sizes of a part below a metre need in the list, in pixels."""
    shapes: Any = (
        {"type": "rectangle", "w": _LONG, "h": _LONG},
        {"type": "regular", "n": 12, "r": _LONG / 2},
    )
    text_font = font.nametofont("TkDefaultFont", editor)
    return max(text_font.measure(sketcher.describe(e)) for e in shapes) + px(_AROUND_TEXT)


def _largest_form(editor: SketchEditor) -> Size:
    """What the property form asks for at most, in the language and the units of the moment."""
    size = 0, 0
    sketch: Any = editor.sk
    for kind in FIELDS:
        sample: Any = {"entities": [{"type": kind, "points": []}]}
        editor.sk, editor.sel = sample, 0
        editor.show_props()
        editor.sk, editor.sel = sketch, None
        editor.update_idletasks()
        size = _larger(size, (editor.props.winfo_reqwidth(), editor.props.winfo_reqheight()))
    editor.show_props()
    return size
