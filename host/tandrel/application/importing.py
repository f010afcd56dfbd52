"""What is asked while a drawing is imported, and the list of what is not as it was drawn."""

from __future__ import annotations

import tkinter as tk
from collections.abc import Callable, Mapping, Sequence
from tkinter import ttk
from tkinter.font import Font
from typing import Any, Optional

from tandrel.application.dialogs import Dialog, ask
from tandrel.application.menus import UNITS
from tandrel.application.names import short
from tandrel.exchange import LayersUnclear, OutlineOpen, Question, UnitsMissing
from tandrel.exchange.tell import Note
from tandrel.geometry.edges import Point
from tandrel.gui.i18n import tr
from tandrel.gui.widgets import on_screen, px, room

_ROWS = 10  # of a list that are shown, at most
_LONGEST_NAME = 60  # characters of a layer's name
# In nominal pixels: of a row that its text doesn't have, of a window that its list doesn't have.
_AROUND_TEXT, _AROUND_LIST = 48, 48
_LEAST_WIDTH = 400  # nominal pixels of a list


def answer(parent: tk.Misc, file: str, question: Question) -> Any:
    """The user's answer to what an import asks; None when they give none."""
    text = tr("{file}: {why}.").format(file=file, why=question)
    if isinstance(question, UnitsMissing):
        which = tr("Which unit do its numbers have, and how large is it?")
        return ask(parent, f"{text}\n\n{which}", _labelled(question.choices), stacked=True)
    if isinstance(question, LayersUnclear):
        which = tr("Which layers are the part?")
        return choose_layers(parent, f"{text}\n\n{which}", question.layers, question.proposed)
    answers = {OutlineOpen.GO_ON: tr("Import without it"), "stay": tr("Cancel")}
    given = ask(parent, text, answers)
    return given if given == OutlineOpen.GO_ON else None


def _labelled(choices: Mapping[str, str]) -> dict[str, str]:
    text = tr("{unit}: {size}")
    return {
        name: text.format(unit=tr(UNITS[name]), size=size) if name in UNITS else size
        for name, size in choices.items()
    }


class Layers(Dialog):
    """Which layers to import: a box for each, ticked where it is proposed."""

    def __init__(
        self, parent: tk.Misc, text: str, layers: Mapping[str, int], proposed: Sequence[str]
    ) -> None:
        super().__init__(parent)
        self.answer: Optional[list[str]] = None
        ttk.Label(self.body, text=text, justify="left", wraplength=px(400)).pack(anchor="w")
        self.boxes = ttk.Treeview(
            self.body, show="tree", selectmode="none", height=min(len(layers), _ROWS)
        )
        _scrolled(self.boxes).pack(fill="both", expand=True, pady=px(12))
        self.chosen = {name: name in proposed for name in layers}
        for name, count in layers.items():
            label = tr("{layer} (contours: {n})").format(layer=short(name, _LONGEST_NAME), n=count)
            self.boxes.insert("", "end", name, text=label)
            self._tick(name)
        _as_wide_as_texts(self.boxes)
        self.boxes.bind("<Button-1>", lambda event: self.toggle(self.boxes.identify_row(event.y)))
        self.boxes.bind("<space>", lambda _event: self.toggle(self.boxes.focus()))
        row = ttk.Frame(self.body, style="Panel.TFrame")
        row.pack(anchor="e")
        self.button = ttk.Button(
            row, text=tr("Import"), style="Primary.TButton", command=self._choose
        )
        self.button.bind("<Return>", self._choose)
        self.button.pack(side="left")
        ttk.Button(row, text=tr("Cancel"), command=self.close).pack(side="left", padx=(px(8), 0))
        self.boxes.focus(next(iter(layers)))
        self.show(self.button)

    def toggle(self, name: str) -> None:
        """Tick the box of a layer, or not; without any there is nothing to import."""
        if name:
            self.chosen[name] = not self.chosen[name]
            self._tick(name)
            self.button.state(["!disabled" if any(self.chosen.values()) else "disabled"])

    def _tick(self, name: str) -> None:
        sign = "☑" if self.chosen[name] else "☐"
        text = self.boxes.item(name, "text").lstrip("☑☐ ")
        self.boxes.item(name, text=f"{sign} {text}")

    def _choose(self, _event: object = None) -> None:
        self.answer = [name for name, is_chosen in self.chosen.items() if is_chosen]
        self.destroy()


def choose_layers(
    parent: tk.Misc, text: str, layers: Mapping[str, int], proposed: Sequence[str]
) -> Optional[list[str]]:
    dialog = Layers(parent, text, layers, proposed)
    dialog.wait_window()
    return dialog.answer


class Report(Dialog):
    """The notes of an import, one a line. It stays beside the window until it is closed.

    ``mark`` is called with the place that a note is about, or with None for no place.
    """

    def __init__(
        self,
        parent: tk.Misc,
        file: str,
        notes: Sequence[Note],
        mark: Callable[[Optional[Point]], None],
    ) -> None:
        super().__init__(parent)
        self._mark = mark
        self._notes = notes
        self.resizable(True, True)
        text = tr("{file} came in, but not all of it as it was drawn:").format(file=file)
        label = ttk.Label(self.body, text=text)
        label.pack(anchor="w")
        self.list = ttk.Treeview(
            self.body, show="tree", selectmode="browse", height=min(len(notes), _ROWS)
        )
        _scrolled(self.list).pack(fill="both", expand=True, pady=px(12))
        for k, note in enumerate(notes):
            self.list.insert("", "end", str(k), text=note)
        label.configure(wraplength=_as_wide_as_texts(self.list))
        self.list.bind("<<TreeviewSelect>>", lambda _event: self._enable())
        self.list.bind("<Double-1>", lambda _event: self.point())
        row = ttk.Frame(self.body, style="Panel.TFrame")
        row.pack(anchor="e")
        self.button = ttk.Button(row, text=tr("Show"), command=self.point)
        self.button.pack(side="left")
        ttk.Button(row, text=tr("Close"), command=self.close).pack(side="left", padx=(px(8), 0))
        self.list.selection_set("0")
        self.list.focus("0")
        self._enable()
        self._place_beside_parent()
        self.deiconify()
        self.list.focus_set()

    def _place_beside_parent(self) -> None:
        """Where it hides as little of what it shows as the screen allows."""
        self.update_idletasks()
        parent = self.master.winfo_toplevel()
        right = parent.winfo_rootx() + parent.winfo_width() + px(8)
        size = self.winfo_reqwidth(), self.winfo_reqheight()
        self.geometry(on_screen(self, right, parent.winfo_rooty(), size))

    def point(self) -> None:
        """Mark the place of the chosen note."""
        self._mark(self._chosen_place())

    def close(self) -> None:
        self._mark(None)
        super().close()

    def _chosen_place(self) -> Optional[Point]:
        chosen = self.list.selection()
        return self._notes[int(chosen[0])].place if chosen else None

    def _enable(self) -> None:
        self.button.state(["disabled" if self._chosen_place() is None else "!disabled"])


def _as_wide_as_texts(tree: ttk.Treeview) -> int:
    """Give a list the width of its longest row, as far as the screen has room; in pixels."""
    font = Font(tree, ttk.Style(tree).lookup("Treeview", "font") or "TkDefaultFont")
    needed = max(font.measure(tree.item(row, "text")) for row in tree.get_children())
    least, most = px(_LEAST_WIDTH), room(tree)[0] - px(_AROUND_LIST)
    width = min(max(needed + px(_AROUND_TEXT), least), most)
    tree.column("#0", width=width, stretch=True)
    return width


def _scrolled(tree: ttk.Treeview) -> ttk.Treeview:
    """The list with a bar that appears in it when it is longer than it is high."""
    bar = ttk.Scrollbar(tree, orient="vertical", command=tree.yview)

    def moved(first: float, last: float) -> None:
        bar.set(first, last)
        if float(first) <= 0 and float(last) >= 1:
            bar.place_forget()
        else:
            bar.place(relx=1.0, rely=0.0, relheight=1.0, anchor="ne")

    tree.configure(yscrollcommand=moved)
    return tree
