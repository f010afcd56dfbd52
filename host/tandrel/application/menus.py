"""The menu bar and the keys: what can be done, what it is called and where it is found."""

from __future__ import annotations

import tkinter as tk
from collections.abc import Callable, Iterable, Mapping
from functools import partial
from typing import Dict, NamedTuple, Optional, Tuple

from tandrel.application.names import with_folder
from tandrel.gui.i18n import N_, tr


class Entry(NamedTuple):
    """An entry that does something: an operation by its name, and the key that does it too."""

    operation: str
    label: str
    key: str = ""


SEPARATOR = None
# Menus of the bar; a text stands for the submenu of this name.
BAR: Dict[str, Tuple[str, Tuple[Entry | str | None, ...]]] = {
    "file": (
        N_("File"),
        (
            Entry("new", N_("New"), "N"),
            Entry("choose_file", N_("Open…"), "O"),
            "recent",
            Entry("choose_drawing", N_("Import drawing…")),
            SEPARATOR,
            Entry("save", N_("Save"), "S"),
            Entry("save_as", N_("Save as…"), "Shift+S"),
            Entry("export", N_("Export…"), "E"),
            Entry("export_contours", N_("Export contours as they are…")),
            SEPARATOR,
            Entry("quit", N_("Quit"), "Q"),
        ),
    ),
    "edit": (
        N_("Edit"),
        (
            Entry("undo", N_("Undo"), "Z"),
            Entry("redo", N_("Redo"), "Y"),
            SEPARATOR,
            Entry("edit", N_("Edit sketch…"), "D"),
        ),
    ),
    "view": (N_("View"), ("units", "language", "palette", SEPARATOR, Entry("fit", N_("Fit"), "0"))),
}
SUBMENUS = {
    "recent": N_("Open recent"),
    "units": N_("Units"),
    "language": N_("Language"),
    "palette": N_("Colours"),
}
UNITS = {
    "mm": N_("Millimetres (mm)"),
    "cm": N_("Centimetres (cm)"),
    "m": N_("Metres (m)"),
    "in": N_("Inches (in)"),
}
PALETTES = {"light": N_("Light"), "dark": N_("Dark")}
_KEYS = [e for _, rows in BAR.values() for e in rows if isinstance(e, Entry) and e.key]
_LONGEST_PLACE = 100  # characters of a recent file's entry
_MORE_KEYS = [Entry("redo", "", "Shift+Z")]

Perform = Callable[[str], None]


class Menus(Dict[str, tk.Menu]):
    """The menus of a window by name: "bar", those in it and those in these.

    `perform` is called with the name of an operation.
    """

    def __init__(self, root: tk.Tk, perform: Perform) -> None:
        super().__init__(bar=tk.Menu(root, tearoff=False))
        self._perform = perform
        self._places: Dict[str, Tuple[tk.Menu, int]] = {}
        for name, (label, rows) in BAR.items():
            self[name] = self._cascade(self["bar"], label)
            for row in rows:
                self._add(self[name], row)
        root.configure(menu=self["bar"])

    def enable(self, name: str, can_act: bool) -> None:
        """Let the entry of an operation, or of a submenu, act or not."""
        menu, index = self._places[name]
        menu.entryconfigure(index, state="normal" if can_act else "disabled")

    def offer(
        self, name: str, choices: Mapping[str, str], chosen: tk.Variable, operation: str
    ) -> None:
        """Fill a menu with values to choose from, each with its label."""
        for value, label in choices.items():
            self[name].add_radiobutton(
                label=label,
                value=value,
                variable=chosen,
                command=partial(self._perform, operation),
                image="tandrel-none",
                selectimage="tandrel-on",
                compound="left",
                indicatoron=False,
            )

    def list_recent(self, paths: Iterable[str], open_file: Callable[[str], None]) -> None:
        menu = self["recent"]
        menu.delete(0, "end")
        for path in paths:
            label = with_folder(path, _LONGEST_PLACE)
            menu.add_command(label=label, command=partial(open_file, path))
        self.enable("recent", menu.index("end") is not None)

    def _cascade(self, menu: tk.Menu, label: str) -> tk.Menu:
        inner = tk.Menu(menu, tearoff=False)
        menu.add_cascade(label=tr(label), menu=inner, underline=0)
        return inner

    def _add(self, menu: tk.Menu, row: Optional[Entry | str]) -> None:
        if isinstance(row, Entry):
            menu.add_command(
                label=tr(row.label),
                accelerator=_accelerator(row.key),
                command=partial(self._perform, row.operation),
            )
        elif row is SEPARATOR:
            menu.add_separator()
            return
        else:
            self[row] = self._cascade(menu, SUBMENUS[row])
        name = row.operation if isinstance(row, Entry) else row
        self._places[name] = menu, menu.index("end") or 0


def bind_keys(root: tk.Tk, perform: Perform) -> None:
    """The keys of the menus, whether Caps Lock is on or not."""
    for operation, _, key in _KEYS + _MORE_KEYS:
        *shift, letter = key.split("+")
        for symbol in (letter.lower(), letter):
            sequence = "-".join(["Control", *shift, "Key", symbol])
            root.bind(f"<{sequence}>", partial(_on_key, perform, operation))


def _on_key(perform: Perform, operation: str, _event: tk.Event[tk.Misc]) -> None:
    perform(operation)


def _accelerator(key: str) -> str:
    if not key:
        return ""
    text = tr("Ctrl+Shift+{key}") if key.startswith("Shift+") else tr("Ctrl+{key}")
    return text.format(key=key[-1])
