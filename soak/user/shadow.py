"""An editor's state as it must be after everything that its user did.

Each operation is stated here plainly and independently of the module; what both of them can only
learn from the window (the size of the canvas, where the keyboard is) is asked of it.
"""

import copy
import math
from collections.abc import Sequence
from typing import Any

import numpy as np
from harness.python_editor import HIGHLIGHT, PythonOperations

from soak.user import shapes
from soak.user.screen import Paper
from soak.user.shapes import Entity, Point
from support.plain import Var
from support.types import CARDS
from support.types.card import distance
from tandrel import sketch as S
from tandrel.gui.i18n import tr
from tandrel.gui.sketcher import FIELDS, TOOL_TIPS, TYPE_LABEL
from tandrel.gui.widgets import num_text, units

SNAP_PIXELS = 9
Row = tuple[str, str, str]  # iid, text, size
Cell = list[str]  # class of a widget and the text that it shows


class Shadow(PythonOperations):
    """What an editor is, and what its operations must make of it.

    The window has a `size()`, the canvas's in pixels, and tells whether somebody `is_typing()`.
    Points are arrays of two doubles. Operations raise what they let through.
    """

    def __init__(
        self, sketch: Any, dim: int, references: Sequence[tuple[str, Any]], window: Any
    ) -> None:
        self.window = window
        self.sk = copy.deepcopy(sketch) if sketch else S.new()
        self.sk.setdefault("entities", [])
        self.dim = dim
        self.refs = list(references)
        self.closed = False
        self.result: Any = None
        self.sel: int | None = None
        self.tool = Var("select" if self.entities else "rectangle")
        self.snap = Var(True)
        self.grid = Var(num_text(units().from_si(self.default_grid(), "length")))
        self.sides = Var("6")
        self.drag: dict[str, Any] | None = None
        self.clicks = []
        self.cursor = np.zeros(2)
        self.scale = 1.0
        self.centre = np.zeros(2)
        self.pan: tuple[int, int, Any] | None = None
        self.status = ""
        self.rows: list[Row] = []
        self.selected_rows: list[str] = []
        self.form: list[Cell] = []  # in the order in which the widgets are made
        self.fields: dict[str, Cell] = {}
        self.corners: Cell = []
        self.canvas = Paper(window)
        plane = self.sk.get("plane", "XY")
        self.plane = Var("" if plane is None else str(plane))
        offset = units().from_si(self.sk.get("offset", 0) or 0, "length")
        self.offset = Var(num_text(offset))
        self.refresh_list()

    @property
    def entities(self) -> list[Any]:
        return self.sk["entities"]

    @property
    def typed(self) -> list[str]:
        """The tool, the switch and what stands in the entries outside of the form."""
        texts = (self.grid, self.sides, self.plane, self.offset)
        return [self.tool.get(), str(int(self.snap.get())), *(text.get() for text in texts)]

    # -- view --------------------------------------------------------------------------------

    def extent(self) -> tuple[list[float], list[float]]:
        outlines = [shapes.outline(e) for e in self.entities]
        framed = [points for points in outlines if points is not None]
        framed += [points for _, points in self.refs if len(points)]
        if not framed:
            return [-0.05, -0.05], [0.05, 0.05]
        points = np.vstack(framed)
        return points.min(axis=0).tolist(), points.max(axis=0).tolist()

    def fit(self) -> None:
        (u1, v1), (u2, v2) = self.extent()
        width, height = (max(pixels, 200) for pixels in self.window.size())
        self.scale = 0.8 * min(width / max(u2 - u1, 1e-9), height / max(v2 - v1, 1e-9))
        self.centre = np.array([(u1 + u2) / 2, (v1 + v2) / 2])
        self.redraw()

    def zoom(self, factor: float, x: int, y: int) -> None:
        before = self.to_world(x, y)
        self.scale = self.scale * factor
        self.centre = self.centre + (before - self.to_world(x, y))
        self.redraw()

    def pan_start(self, x: int, y: int) -> None:
        self.pan = x, y, self.centre

    def pan_move(self, x: int, y: int) -> None:
        assert self.pan is not None
        x0, y0, centre = self.pan
        self.centre = centre - np.array([(x - x0) / self.scale, -(y - y0) / self.scale])
        self.redraw()

    def grid_step(self) -> float:
        try:
            step = units().to_si(float(self.grid.get()), "length")
        except ValueError:
            return self.default_grid()
        return step if step > 0 else self.default_grid()

    def default_grid(self) -> float:
        (u1, v1), (u2, v2) = self.extent()
        side = max(u2 - u1, v2 - v1)
        return 10 ** math.floor(math.log10(max(side, 1e-9) / 20))

    # -- pointer -----------------------------------------------------------------------------

    def motion(self, x: int, y: int) -> None:
        self.cursor = self.snapped(x, y)
        (a, b), (u, v) = self.axis_names(), map(shapes.length, self.cursor)
        self.status = f"{a} = {u}   {b} = {v}     {tr(TOOL_TIPS[self.tool.get()])}"
        self.redraw()

    def press(self, x: int, y: int) -> None:
        p = self.cursor = self.snapped(x, y)
        tool = self.tool.get()
        if tool == "select":
            hit = self.pick(x, y)
            self.select(hit)
            if hit is not None:
                original = copy.deepcopy(self.entities[hit])
                self.drag = {"kind": "move", "start": p, "orig": original}
        elif tool == "line":
            self.press_line(p, x, y)
        elif tool == "slot":
            self.press_slot(p)
        else:
            self.drag = {"kind": "new", "start": p}

    def press_line(self, p: Any, x: int, y: int) -> None:
        if len(self.clicks) >= 3:
            sx, sy = self.to_screen(self.clicks[0])
            if math.hypot(x - sx, y - sy) <= SNAP_PIXELS:
                self.close_line()
                return
        if not self.clicks or distance(self.clicks[-1], p) > 0:
            self.clicks.append(p)
        self.redraw()

    def press_slot(self, p: Any) -> None:
        if len(self.clicks) == 2:
            e = shapes.slot(self.clicks[0], self.clicks[1], p)
            self.clicks = []
            if e is not None:
                self.add(e)
        elif not self.clicks or distance(self.clicks[0], p) > 0:
            self.clicks.append(p)
        self.redraw()

    def drag_to(self, x: int, y: int) -> None:
        p = self.cursor = self.snapped(x, y)
        if self.drag is not None and self.drag["kind"] == "move" and self.sel is not None:
            shift = (p - self.drag["start"]).tolist()
            self.entities[self.sel] = shapes.moved(self.drag["orig"], shift)
            self.refresh_list(keep=True)
        self.redraw()

    def release(self, x: int, y: int) -> None:
        if self.drag is None:
            return
        p = self.snapped(x, y)
        if self.drag["kind"] == "new":
            e = self.from_drag(self.drag["start"], p)
            if shapes.outline(e) is not None:
                self.add(e)
        else:
            self.show_props()
        self.drag = None
        self.redraw()

    # -- shapes ------------------------------------------------------------------------------

    def from_drag(self, a: Any, b: Any) -> Entity | None:
        for card in CARDS:
            if card.tool.dragged and card.tool.name == self.tool.get():
                return card.drawn(a.tolist(), b.tolist(), sides=number_of_sides(self.sides.get()))
        return None

    def add(self, e: Entity | None) -> None:
        self.entities.append(e)
        self.sel = len(self.entities) - 1
        self.refresh_list()
        self.redraw()

    def close_line(self) -> None:
        if self.tool.get() != "line" or len(self.clicks) < 3:
            return
        e = {"type": "polygon", "points": [p.tolist() for p in self.clicks], "radius": 0.0}
        self.clicks = []
        if shapes.outline(e) is not None:
            self.add(e)
        else:
            try:
                S.outline(e)
            except ValueError as error:
                self.status = tr("Not added: {why}").format(why=error)
            except (KeyError, TypeError):
                pass
        self.redraw()

    def cancel_drawing(self) -> None:
        self.clicks = []
        self.drag = None
        self.redraw()

    def select(self, i: int | None) -> None:
        self.sel = i
        self.refresh_list(keep=True)
        self.show_props()
        self.redraw()

    def delete(self) -> None:
        if self.sel is None or self.window.is_typing():
            return
        del self.entities[self.sel]
        self.sel = None
        self.refresh_list()
        self.redraw()

    # -- picture -----------------------------------------------------------------------------

    def card(self, e: Any) -> Any:
        return shapes.card(e)

    def _flat(self, points: Any) -> list[float]:
        """All at once, for there are many."""
        pixels = self.to_screen(np.asarray(points, dtype=np.float64).T)
        flat: Any = np.column_stack(pixels).ravel()
        return flat.tolist()

    def _ok(self, e: Any) -> bool:
        return shapes.outline(e) is not None

    def _dimensions(self, e: Entity) -> None:
        card = self.card(e)
        for place, (dx, dy), words, anchor in card.dimensions(e, shapes.length) if card else ():
            x, y = self.to_screen(place)
            self.canvas.create_text(x + dx, y + dy, text=words, fill=HIGHLIGHT, anchor=anchor)

    def _preview(self) -> None:
        """The shape that is being drawn, and the dot where a click would land."""
        tool, dot = self.tool.get(), self.to_screen(self.cursor)
        if self.drag is not None and self.drag["kind"] == "new":
            self._rubber_band(self.from_drag(self.drag["start"], self.cursor))
        corners = [self.to_screen(p) for p in self.clicks]
        if tool == "line" and corners:
            path = [c for pixel in (*corners, dot) for c in pixel]
            self.canvas.create_line(*path, fill=HIGHLIGHT, width=2)
            for pixel in corners:
                self._spot(pixel, 3, fill="", outline=HIGHLIGHT)
        if tool == "slot" and len(corners) == 1:
            self.canvas.create_line(*corners[0], *dot, fill=HIGHLIGHT, width=2, dash=(5, 3))
        elif tool == "slot" and corners:
            self._rubber_band(shapes.slot(self.clicks[0], self.clicks[1], self.cursor))
        self._spot(dot, 2, fill=HIGHLIGHT, outline="")

    def _rubber_band(self, e: Entity | None) -> None:
        outline = None if e is None else shapes.outline(e)
        if outline is not None:
            pixels = self._flat(outline)
            self.canvas.create_polygon(*pixels, fill="", outline=HIGHLIGHT, width=2, dash=(5, 3))

    def _spot(self, centre: Point, radius: float, **options: str) -> None:
        x, y = centre
        self.canvas.create_oval(x - radius, y - radius, x + radius, y + radius, **options)

    # -- the side panel ------------------------------------------------------------------------

    def refresh_list(self, keep: bool = False) -> None:
        self.rows, self.selected_rows = [], []
        for i, e in enumerate(self.entities):
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
        if self.sel is None or self.sel >= len(self.entities):
            self.form.append(["TLabel", tr("Select a shape to type its exact size.")])
            return
        e = self.entities[self.sel]
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
        e = copy.deepcopy(self.entities[self.sel])
        try:
            self.read_form(e)
            S.outline(e)
        except ValueError as error:
            self.status = tr("Not applied: {why}").format(why=error)
            return
        self.entities[self.sel] = e
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

    # -- the dialog --------------------------------------------------------------------------

    def choose_plane(self) -> None:
        self.sk["plane"] = self.plane.get()
        self.redraw()

    def ok(self) -> None:
        if self.dim == 3:
            try:
                self.sk["offset"] = units().to_si(float(self.offset.get()), "length")
            except ValueError:
                self.status = tr("The offset must be a number.")
                return
            self.sk["plane"] = self.plane.get()
        problems = S.check(self.sk)
        if problems:
            self.status = "; ".join(problems)
            return
        self.result = self.sk
        self.closed = True

    def cancel(self) -> None:
        self.closed = True


def shown_length(value: Any) -> str:
    return num_text(units().from_si(value, "length"))


def typed_length(text: str) -> float:
    return units().to_si(float(text), "length")


def number_of_sides(text: str) -> int:
    try:
        return max(3, int(text))
    except ValueError:
        return 6
