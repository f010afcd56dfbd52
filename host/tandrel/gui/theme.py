"""How the application looks: its colours, its sizes on this screen, and its ttk theme.

Windows are light or dark; drawings lie on dark ground in both. The editor marks what is selected or
being drawn with the fixed orange #E8833A, as lines and as text. On white its contrast is 2.7:1, too
little for either; on `panel` and on `accent_soft` it has the 4.5:1 that text needs. The ground is
as dark as it is for the letter of the first axis, in the fixed red #D2504B.
"""

from __future__ import annotations

import tkinter as tk
from tkinter import font, ttk
from typing import Any, Dict

from tandrel.gui._marks import check_box

_DRAWINGS = {
    "panel": "#0A0F14",
    "bg": "#1C2630",
    "line": "#7D8894",
    "muted": "#93A4B5",
    "accent": "#6DB3F2",
    "accent_soft": "#1A334D",
}
PALETTES = {
    "light": {
        **_DRAWINGS,
        "window": "#F3F5F7",
        "field": "#FFFFFF",
        "text": "#1B2733",
        "hint": "#55616E",
        "edge": "#7D8894",
        "button": "#E3E8ED",
        "button_over": "#D5DDE5",
        "primary": "#1D5FA8",
        "primary_over": "#174D88",
        "on_primary": "#FFFFFF",
        "chosen": "#D6E6F7",
        "warning": "#A32A22",
    },
    "dark": {
        **_DRAWINGS,
        "window": "#1C252E",
        "field": "#12191F",
        "text": "#E6ECF2",
        "hint": "#A9B5C1",
        "edge": "#7D8894",
        "button": "#2C3843",
        "button_over": "#384653",
        "primary": "#6DB3F2",
        "primary_over": "#93C8F7",
        "on_primary": "#0A0F14",
        "chosen": "#24405C",
        "warning": "#FF9086",
    },
}
# The colours in use. It is one dictionary for good: others hold it.
PAL = dict(PALETTES["light"])

Options = Dict[str, Any]

_NOMINAL_DPI = 96.0
_POINTS_PER_INCH = 72.0
# In nominal pixels; it has room for all of the sketch editor, in every language.
_SMALLEST_SCREEN = 800, 540
_scale = 1.0


def px(n: float) -> int:
    """A size in nominal pixels, of which 96 are an inch, in pixels of this screen.

    Where the screen has no room for windows as large as its resolution, or the desktop's setting,
    asks for, they are as large as it has room for, but not smaller than pixels.
    """
    return round(n * _scale)


def main_window(name: str) -> tk.Tk:
    """A main window of this class name, themed and sized for the user's screen."""
    dpi = _desktop_dpi()
    root = tk.Tk(className=name)
    if dpi is not None:
        root.tk.call("tk", "scaling", dpi / _POINTS_PER_INCH)
    install(root)
    return root


def use_palette(name: str) -> None:
    """Use the colours of this name from now on; windows that are open take them by `install`."""
    PAL.update(PALETTES[name])


def install(root: tk.Misc) -> None:
    """Set up theme, colours and bindings for all windows of `root`, open ones too.

    Harmless when repeated.
    """
    global _scale
    asked = float(root.tk.call("tk", "scaling")) * _POINTS_PER_INCH / _NOMINAL_DPI
    screen = root.winfo_screenwidth(), root.winfo_screenheight()
    most = min(n / nominal for n, nominal in zip(screen, _SMALLEST_SCREEN))
    _scale = min(asked, max(most, 1.0))
    style = ttk.Style(root)
    is_there = "tandrel" in style.theme_names()
    if not is_there:
        _scale_fonts(root, _scale / asked)
    marks = _check_marks(root)
    if is_there:
        style.theme_settings("tandrel", _styles(root))
    else:
        style.theme_create("tandrel", parent="clam", settings={**_styles(root), **marks})
        # Keys go where the user works: in a drawing too, after a click on it.
        root.tk.call("bind", "Canvas", "<ButtonPress-1>", "+focus %W")
        # What Ctrl+A does on today's desktops; Tk's own is that of Home.
        for sequence in ("<Control-a>", "<Control-Lock-A>"):
            root.event_delete("<<LineStart>>", sequence)
            root.event_add("<<SelectAll>>", sequence)
        # Its variables exist once the file dialog is loaded, which a call that fails does.
        root.tk.eval("catch {tk_getOpenFile -none}; set ::tk::dialog::file::showHiddenVar 0")
    style.theme_use("tandrel")
    for kind, options in _classic_options().items():
        for option, value in options.items():
            root.option_add(f"*{kind}.{option}", value)
    _recolour(root)


def _scale_fonts(root: tk.Misc, factor: float) -> None:
    """By their points: the desktop's setting takes part in what a font's pixels are."""
    for name in font.names(root):
        named = font.nametofont(name, root)
        named.configure(size=round(named.cget("size") * factor))


def _recolour(root: tk.Misc) -> None:
    """Give open windows the colours that new ones get from the option database."""
    options = _classic_options()
    windows = ["."]
    while windows:
        window = windows.pop()
        windows += root.tk.splitlist(root.tk.call("winfo", "children", window))
        kind = str(root.tk.call("winfo", "class", window))
        if window == "." or kind == "Toplevel":
            root.tk.call(window, "configure", "-background", PAL["window"])
        for option, value in options.get(kind, {}).items():
            if str(value).startswith("#"):
                root.tk.call(window, "configure", f"-{option.lower()}", value)


def _desktop_dpi() -> float | None:
    """The resolution that the desktop's settings ask for; X servers report 96 whatever the screen.

    Fonts follow this setting by themselves; other sizes must be told. Tk reads X resources of its
    own class only: a window of the class that owns the setting asks.
    """
    probe = tk.Tk(className="Xft")
    try:
        dpi = float(str(probe.tk.call("option", "get", ".", "dpi", "Dpi")))
    except ValueError:
        return None
    finally:
        probe.destroy()
    return dpi if 48 <= dpi <= 480 else None


def _styles(root: tk.Misc) -> dict[str, Options]:
    """The theme's settings, one entry for each widget style."""
    line_height = int(font.nametofont("TkDefaultFont", root).metrics("linespace"))
    return {
        ".": {"configure": _common()},
        "TFrame": {},
        "Panel.TFrame": {},
        "Panel.TLabel": {},
        "Muted.TLabel": {"configure": {"foreground": PAL["hint"]}},
        "Warning.TLabel": {"configure": {"foreground": PAL["warning"]}},
        "Title.TLabel": {"configure": {"font": "TkCaptionFont"}},
        "TButton": _button("button", "button_over", "text", "edge"),
        "Primary.TButton": _button("primary", "primary_over", "on_primary", "primary"),
        "SketchTool.TRadiobutton": _tool_button(),
        "TCheckbutton": {"configure": {"padding": px(3)}},
        "TEntry": _field(),
        "TSpinbox": _field(arrowsize=px(11)),
        "TCombobox": _field(arrowsize=px(13)),
        "Treeview": _list(line_height + px(8)),
        "Treeview.Item": {"configure": {"padding": [px(5), 0]}, "layout": _flat_row()},
        "Treeview.Heading": _button("button", "button_over", "text", "button", padding=(6, 4)),
        "TMenubutton": _menu_button(),
        "TScrollbar": _scroll_bar(),
        "TProgressbar": {"configure": {**_flat("primary"), "arrowsize": px(14)}},
        "TSeparator": {"configure": {"background": PAL["edge"]}},
    }


def _common() -> Options:
    return {
        **_flat("window"),
        "foreground": PAL["text"],
        "font": "TkDefaultFont",
        "fieldbackground": PAL["field"],
        "arrowcolor": PAL["text"],
        "troughcolor": PAL["button"],
        "insertcolor": PAL["text"],
        "selectbackground": PAL["primary"],
        "selectforeground": PAL["on_primary"],
        "focuscolor": PAL["primary"],
    }


def _flat(face: str, edge: str | None = None) -> Options:
    """One colour inside an edge: the parent theme's bevels take the colour of the face."""
    colours = dict.fromkeys(("background", "lightcolor", "darkcolor"), PAL[face])
    return {**colours, "bordercolor": PAL[edge or face]}


def _faces(*states: tuple[str, str]) -> Options:
    """The face in each (state, colour key); the first state that applies wins."""
    colours = [(*state.split(), PAL[key]) for state, key in states]
    return dict.fromkeys(("background", "lightcolor", "darkcolor"), colours)


def _button(
    face: str, over: str, text: str, edge: str, padding: tuple[int, int] = (12, 5)
) -> Options:
    return {
        "configure": {
            **_flat(face, edge),
            "foreground": PAL[text],
            "focuscolor": PAL[text],
            "padding": [px(n) for n in padding],
            "anchor": "center",
            "relief": "raised",
        },
        "map": {
            **_faces(("disabled", "button"), ("pressed", over), ("active", over)),
            "foreground": [("disabled", PAL["hint"])],
            "bordercolor": [("disabled", PAL["button"])],
        },
    }


def _menu_button() -> Options:
    look = _button("button", "button_over", "text", "edge")
    return {**look, "configure": {**look["configure"], "arrowsize": px(6)}}


def _tool_button() -> Options:
    """A flat toggle button without the radio indicator; the chosen tool stays lit."""
    label = ("Radiobutton.label", {"sticky": "nswe"})
    focus = ("Button.focus", {"sticky": "nswe", "children": [label]})
    padding = ("Radiobutton.padding", {"sticky": "nswe", "children": [focus]})
    return {
        "configure": {
            **_flat("window"),
            "padding": [px(10), px(5)],
            "anchor": "w",
            "relief": "raised",
        },
        "map": {
            **_faces(("selected", "chosen"), ("active", "button")),
            "bordercolor": [("selected", PAL["primary"]), ("active", PAL["button"])],
            "foreground": [("selected", PAL["primary_over"])],
        },
        "layout": [("Button.border", {"sticky": "nswe", "border": "1", "children": [padding]})],
    }


def _check_marks(root: tk.Misc) -> dict[str, Options]:
    """A box with a tick in place of the parent theme's cross. Made anew, its pictures change.

    Menus show it beside what is chosen, and "tandrel-none" beside what isn't: Tk's own signs there
    are as small on every screen.
    """
    size = px(15)
    off = check_box(root, "tandrel-off", size, PAL["field"], PAL["edge"], None)
    on = check_box(root, "tandrel-on", size, PAL["primary"], PAL["primary"], PAL["on_primary"])
    root.tk.call("image", "create", "photo", "tandrel-none", "-width", size, "-height", size)
    images = [off, ("selected", on)]
    return {
        "Checkbutton.indicator": {
            "element create": ["image", *images, {"width": size + px(6), "sticky": "w"}]
        }
    }


def _field(**options: object) -> Options:
    """An entry and its kin: white, with an edge that shows the focus."""
    return {
        "configure": {
            **_flat("button", "edge"),
            "lightcolor": PAL["field"],
            "padding": px(3),
            **options,
        },
        "map": {
            "bordercolor": [("focus", PAL["primary"])],
            "lightcolor": [("focus", PAL["primary"])],
            "fieldbackground": [("readonly", PAL["field"]), ("disabled", PAL["window"])],
            "selectbackground": [("readonly", PAL["field"])],
            "selectforeground": [("readonly", PAL["text"])],
        },
    }


def _list(row_height: int) -> Options:
    return {
        "configure": {
            "background": PAL["field"],
            "fieldbackground": PAL["field"],
            "bordercolor": PAL["edge"],
            "rowheight": row_height,
            "indent": 0,
        },
        "map": {
            "background": [("selected", PAL["primary"])],
            "foreground": [("selected", PAL["on_primary"])],
            "bordercolor": [("focus", PAL["primary"])],
        },
    }


def _scroll_bar() -> Options:
    """Its slider stands out; where all is in sight there is nothing to be seen of it."""
    return {
        "configure": {
            **_flat("edge", "window"),
            "troughcolor": PAL["window"],
            "arrowsize": px(14),
        },
        "map": {
            **_faces(("disabled", "window"), ("active", "primary")),
            "arrowcolor": [("disabled", PAL["window"]), ("active", PAL["on_primary"])],
        },
    }


def _flat_row() -> list[tuple[str, Options]]:
    """A row of a list without levels: no room for the sign that unfolds it."""
    text = ("Treeitem.text", {"side": "left", "sticky": ""})
    return [("Treeitem.padding", {"sticky": "nswe", "children": [text]})]


def _classic_options() -> dict[str, Options]:
    """The same looks for the widgets that ttk has not: texts, menus, lists of choices."""
    plain: Options = {"background": PAL["field"], "foreground": PAL["text"]}
    chosen: Options = {"selectBackground": PAL["primary"], "selectForeground": PAL["on_primary"]}
    text: Options = {
        "relief": "flat",
        "borderWidth": 0,
        "padX": px(4),
        "padY": px(3),
        "highlightThickness": 1,
        "highlightBackground": PAL["edge"],
        "highlightColor": PAL["primary"],
        "insertBackground": PAL["text"],
        "font": "TkFixedFont",
    }
    menu: Options = {
        "background": PAL["window"],
        "foreground": PAL["text"],
        "activeBackground": PAL["chosen"],
        "activeForeground": PAL["text"],
        "disabledForeground": PAL["hint"],
        "selectColor": PAL["primary"],
        "relief": "raised",
        "borderWidth": 1,
        "activeBorderWidth": 0,
    }
    return {
        "Text": {**plain, **chosen, **text},
        "Menu": menu,
        "Listbox": {**plain, **chosen, "borderWidth": 0},
        "Canvas": {"highlightColor": PAL["accent"]},
    }
