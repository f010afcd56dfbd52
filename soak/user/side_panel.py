"""The side panel as it must be: the rows of the list and the property form."""

from __future__ import annotations

import copy
from typing import Any

from soak.user import shapes
from soak.user.shapes import Entity
from tandrel import sketch as S
from tandrel.gui.i18n import tr
from tandrel.gui.sketcher import FIELDS, TYPE_LABEL
from tandrel.gui.widgets import num_text, units

Row = tuple[str, str, str]  # iid, text, size
Cell = list[str]  # class of a widget and the text that it shows


class SidePanel:
    """The part of an editor's shadow that its side panel shows."""

    sk: dict[str, Any]
    sel: int | None
    status: str

    rows: list[Row]
    selected_rows: list[str]
    form: list[Cell]  # in the order in which the widgets are made
    fields: dict[str, Cell] = {}
    corners: Cell = []

    def redraw(self) -> None:
        raise NotImplementedError

    def refresh_list(self, keep: bool = False) -> None:
        self.rows, self.selected_rows = [], []
        for i, e in enumerate(self.sk["entities"]):
            try:
                size = shapes.summary(e)
            except (KeyError, ValueError, TypeError):
                size = "?"
            self.rows.append((str(i), f"{i + 1}. {tr(TYPE_LABEL[e['type']])}", size))
        if self.sel is not None and self.sel < len(self.rows):
            self.selected_rows = [str(self.sel)]
        if not keep:
            self.show_props()

    def list_selected(self, selection: tuple[str, ...]) -> None:
        self.selected_rows = list(selection)
        i = int(selection[0]) if selection else None
        if i != self.sel:
            self.sel = i
            self.show_props()
            self.redraw()

    def show_props(self) -> None:
        self.form = []
        if self.sel is None or self.sel >= len(self.sk["entities"]):
            self.form.append(["TLabel", tr("Select a shape to type its exact size.")])
            return
        e = self.sk["entities"][self.sel]
        self.fields = {}
        for key, label, is_length in FIELDS[e["type"]]:
            value = float(e.get(key, 0))
            text = shown_length(value) if is_length else num_text(value)
            self.fields[key] = ["TEntry", text]
            unit = units().unit("length") if is_length else ""
            self.form += [["TLabel", tr(label)], self.fields[key], ["TLabel", unit]]
        if e["type"] == "polygon":
            self.form.append(["TLabel", tr("Corners (u v, one pair per line):")])
            self.corners = ["Text", ""]
            self.form.append(self.corners)
            self.corners[1] = "\n".join(
                f"{shown_length(p[0])} {shown_length(p[1])}" for p in e["points"]
            )
        self.form.append(["TButton", tr("Apply")])

    def apply_props(self) -> None:
        if self.sel is None:
            return
        e = copy.deepcopy(self.sk["entities"][self.sel])
        try:
            self.read_form(e)
            S.outline(e)
        except ValueError as error:
            self.status = tr("Not applied: {why}").format(why=error)
            return
        self.sk["entities"][self.sel] = e
        self.status = ""
        self.refresh_list(keep=True)
        self.redraw()

    def read_form(self, e: Entity) -> None:
        for key, _, is_length in FIELDS[e["type"]]:
            text = self.fields[key][1]
            if is_length:
                e[key] = typed_length(text)
            else:
                e[key] = round(float(text)) if key == "n" else float(text)
        if e["type"] == "polygon":
            lines = [line.split() for line in self.corners[1].replace(",", " ").splitlines()]
            points = []
            for words in filter(None, lines):
                if len(words) != 2:
                    raise ValueError(tr("each corner needs two numbers"))
                points.append([typed_length(word) for word in words])
            e["points"] = points


def shown_length(value: Any) -> str:
    return num_text(units().from_si(value, "length"))


def typed_length(text: str) -> float:
    return units().to_si(float(text), "length")
