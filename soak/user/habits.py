"""What a random user does next: whole strokes that make sense, cut into by things that don't."""

import math
from collections.abc import Iterator
from random import Random
from typing import Any

from soak.user import shapes
from soak.user.hands import Action
from soak.user.shadow import Shadow
from support.types import CARDS
from tandrel import sketch as S
from tandrel.gui.i18n import languages
from tandrel.gui.sketcher import TOOLS
from tandrel.gui.widgets import SYSTEMS

Pixel = tuple[int, int]
NEARBY = [(0, 0), (0, 0), (1, 0), (3, -2), (8, 0), (9, 0)]  # pixels
NEARBY += [(0, -9), (-6, 7), (8, 8), (-7, -7), (10, 0)]
NUMBERS = ["0", "5", "8", "10", "12.5", "20", "40", "-3", "4.5", "4.6", " 7 ", "1e3", "0.01", "1_0"]
NO_NUMBERS = ["", "x", "nan", "inf", "-inf", "1e999", "3,4", "1 2", "\u0664", "1e-320"]
COUNTS = ["3", "4.5", "5.5", "4.6", "8", "2", "nan", "inf"]
GRIDS = ["1", "5", "0.5", "2.5", "20", "0", "-3", "nan", "inf", "", "x", "1e-320"]
CHANGES = ["move", "move", "add", "drop", "third", "comma", "blank", "junk", "key", "key"]
DRAG_TOOLS = [card.tool.name for card in CARDS if card.tool.dragged]
FULL = 12  # shapes


class Habits:
    """Endless actions; where to and on what follows from the editor's shadow."""

    def __init__(self, dice: Random, shadow: Shadow) -> None:
        self._dice = dice
        self._shadow = shadow
        self._strokes = {
            self._hover: 6,
            self._draw: 10,
            self._draw_outline: 8,
            self._draw_slot: 5,
            self._pick: 12,
            self._pan: 3,
            self._zoom: 4,
            self._fill_in: 9,
            self._edit_corners: 7,
            self._choose_row: 6,
            self._remove: 4,
            self._set_up: 6,
            self._look: 3,
            self._accept: 2,
            self._senseless: 5,
        }

    def actions(self) -> Iterator[Action]:
        while True:
            (stroke,) = self._dice.choices(list(self._strokes), list(self._strokes.values()))
            if len(self._shadow.entities or ()) >= FULL and self._chance(0.5):
                stroke = self._remove
            for action in stroke():
                yield action
                if self._chance(0.04):
                    yield from self._senseless()

    def _chance(self, p: float) -> bool:
        return self._dice.random() < p

    # -- places ------------------------------------------------------------------------------

    def _place(self) -> Pixel:
        """A pixel: near something, on the canvas, or outside it."""
        width, height = self._shadow.window.size()
        if self._chance(0.5):
            x, y = self._on(self._dice.choice(self._points()))
            if -200 < x < width + 200 and -200 < y < height + 200:
                return self._near(x, y)
        if self._chance(0.06):
            return self._dice.randint(-300, width + 300), self._dice.randint(-300, height + 300)
        return self._dice.randint(0, max(width, 1)), self._dice.randint(0, max(height, 1))

    def _by_an_outline(self) -> Pixel:
        """A pixel near a point of a shape's outline."""
        outlines = [shapes.outline(e) for e in self._shadow.entities or ()]
        drawn = [points for points in outlines if points is not None]
        if not drawn:
            return self._place()
        return self._near(*self._on(self._dice.choice(self._dice.choice(drawn))))

    def _near(self, x: int, y: int) -> Pixel:
        dx, dy = self._dice.choice(NEARBY)
        return x + dx, y + dy

    def _points(self) -> list[Any]:
        try:
            return self._shadow.key_points()
        except (TypeError, OverflowError):
            return [(0.0, 0.0)]

    def _on(self, point: Any) -> Pixel:
        """The pixel of a point, far outside where it has none."""
        x, y = self._shadow.to_screen(point)
        if not all(map(math.isfinite, (x, y))) or max(abs(x), abs(y)) > 1e6:
            return 10**6, 10**6
        return round(x), round(y)

    # -- with the pointer --------------------------------------------------------------------

    def _hover(self) -> Iterator[Action]:
        for _ in range(self._dice.randint(1, 5)):
            yield "motion", 0, *self._place()

    def _choose_tool(self, tool: str) -> Iterator[Action]:
        if self._shadow.tool.get() != tool or self._chance(0.1):
            yield "tool", tool

    def _click(self, x: int, y: int, quick: bool = False) -> Iterator[Action]:
        yield "press", 1, x, y, quick
        yield "release", 1, x, y

    def _stroke(self, button: int, start: Pixel, end: Pixel) -> Iterator[Action]:
        """Press, drag and release, mostly."""
        yield "press", button, *start, False
        steps = self._dice.randint(0, 4)
        for k in range(1, steps + 1):
            x, y = (a + (b - a) * k // steps for a, b in zip(start, end))
            yield "motion", button, x, y
        if self._chance(0.95):
            yield "release", button, *end

    def _draw(self) -> Iterator[Action]:
        yield from self._choose_tool(self._dice.choice(DRAG_TOOLS))
        yield from self._stroke(1, self._place(), self._place())

    def _draw_outline(self) -> Iterator[Action]:
        yield from self._choose_tool("line")
        x, y = self._place()
        count, reach = self._dice.randint(2, 6), self._dice.randint(20, 160)
        for k in range(count):
            angle = 2 * math.pi * k / count
            corner = round(x + reach * math.cos(angle)), round(y + reach * math.sin(angle))
            if self._chance(0.6):
                yield "motion", 0, *corner
            yield from self._click(*(corner if self._chance(0.9) else self._place()))
        ending = self._dice.choice(["first", "first", "Return", "double", "Escape", "leave"])
        if ending in ("Return", "Escape"):
            yield "key", self._dice.choice(["canvas", "editor"]), ending
        elif ending == "double":
            corner = self._place()
            yield from self._click(*corner)
            yield from self._click(*corner, quick=True)
        elif ending == "first" and self._shadow.clicks:
            yield from self._click(*self._near(*self._on(self._shadow.clicks[0])))

    def _draw_slot(self) -> Iterator[Action]:
        yield from self._choose_tool("slot")
        for _ in range(self._dice.choice([3, 3, 3, 2, 4])):
            place = self._place()
            if self._chance(0.6):
                yield "motion", 0, *place
            yield from self._click(*place)

    def _pick(self) -> Iterator[Action]:
        """Pick a shape by its outline, or anywhere, and often move it."""
        yield from self._choose_tool("select")
        start = self._by_an_outline() if self._chance(0.5) else self._place()
        end = start if self._chance(0.3) else self._place()
        for action in self._stroke(1, start, end):
            yield action
            if self._chance(0.04):
                yield from self._dice.choice([self._remove, self._choose_row])()

    def _pan(self) -> Iterator[Action]:
        yield from self._stroke(self._dice.choice([2, 3]), self._place(), self._place())

    def _zoom(self) -> Iterator[Action]:
        way = self._dice.choice(["4", "5", "up", "down", "still"])
        for _ in range(self._dice.randint(1, 6)):
            yield "wheel", way, *self._place()
        if self._chance(0.3):
            yield "push", "fit"

    # -- in the side panel -------------------------------------------------------------------

    def _text(self) -> str:
        return self._dice.choice(NUMBERS if self._chance(0.8) else NO_NUMBERS)

    def _apply(self, target: str) -> Iterator[Action]:
        if self._chance(0.5):
            yield "push", "apply"
        else:
            yield "key", target, "Return"

    def _fill_in(self) -> Iterator[Action]:
        entries = [cell for cell in self._shadow.form if cell[0] == "TEntry"]
        if not entries:
            yield from self._choose_row()
            return
        for _ in range(self._dice.choice([1, 1, 2])):
            k = self._dice.randrange(len(entries))
            field = f"field {k}"
            if self._chance(0.2):
                key = self._dice.choice(["5", "BackSpace", "Delete", "Left", "Tab"])
                yield "key", field, key
            else:
                is_count = entries[k] is self._shadow.fields.get("n")
                yield "type", field, self._dice.choice(COUNTS) if is_count else self._text()
        if self._chance(0.85):
            yield from self._apply(field)

    def _edit_corners(self) -> Iterator[Action]:
        outlines = [
            i
            for i, e in enumerate(self._shadow.entities or ())
            if isinstance(e, dict) and e.get("type") == "polygon"
        ]
        if outlines:
            yield "row", str(self._dice.choice(outlines)), False
        if not any(cell[0] == "Text" for cell in self._shadow.form):
            return
        lines = self._shadow.corners[1].split("\n")
        k = self._dice.randrange(len(lines))
        change = self._dice.choice(CHANGES)
        if change == "key":
            yield "focus", "corners"
            yield "key", "corners", self._dice.choice(["Delete", "BackSpace", "Return", "7"])
        elif change == "third":
            lines[k] += " 5"
        elif change == "drop":
            del lines[k]
        elif change == "comma":
            lines[k] = lines[k].replace(" ", self._dice.choice([",", ", ", "\t"]))
        elif change == "blank":
            lines.insert(k, self._dice.choice(["", "  ", ","]))
        elif change == "junk":
            lines[k] = self._text()
        else:
            pair = f"{self._dice.randint(-60, 60)} {self._dice.randint(-60, 60)}"
            lines[k : k + (change == "move")] = [pair]
        if change != "key":
            yield "type", "corners", "\n".join(lines)
        if self._chance(0.85):
            yield "push", "apply"

    def _choose_row(self) -> Iterator[Action]:
        rows = [row[0] for row in self._shadow.rows]
        row = self._dice.choice(rows) if rows and self._chance(0.9) else None
        yield "row", row, self._chance(0.4)
        if self._chance(0.2):
            yield "key", "list", self._dice.choice(["Up", "Down", "Home", "End", "Delete"])

    def _remove(self) -> Iterator[Action]:
        yield from self._choose_row()
        if self._chance(0.5):
            yield "push", "delete"
        else:
            yield "key", self._any_target(), self._dice.choice(["Delete", "BackSpace"])

    # -- with the window ---------------------------------------------------------------------

    def _set_up(self) -> Iterator[Action]:
        """Change a setting."""
        setting = self._dice.choice(["grid", "grid", "sides", "snap", "plane", "offset"])
        if setting == "snap":
            yield "push", "snap"
        elif setting == "plane":
            yield "plane", self._dice.randrange(len(S.PLANES))
        else:
            is_grid = setting == "grid"
            yield "type", setting, self._dice.choice(GRIDS) if is_grid else self._text()
            key = self._dice.choice(["Return", "5", "BackSpace", "Tab", None, None])
            if key:
                yield "key", setting, key
            elif self._chance(0.5):
                yield "focus", self._any_target()

    def _look(self) -> Iterator[Action]:
        """See things in another way."""
        way = self._dice.choice(["units", "units", "language", "resize", "fit"])
        if way == "units":
            yield "units", self._dice.choice(list(SYSTEMS))
        elif way == "language":
            yield "language", self._dice.choice(list(languages()))
        elif way == "resize":
            yield "resize", self._dice.randint(300, 960), self._dice.randint(200, 700)
        else:
            yield "push", "fit"

    def _accept(self) -> Iterator[Action]:
        if self._chance(0.7):
            yield "type", "offset", self._dice.choice(["0", "12.5", "x", "nan"])
            yield "push", "ok"
        elif self._chance(0.3):
            yield "push", "cancel"

    # -- without sense -----------------------------------------------------------------------

    def _any_target(self) -> str:
        targets = ["canvas", "canvas", "editor", "list", "grid", "offset", "sides", "sides"]
        targets += ["field 0", "field 1", "corners"]
        return self._dice.choice(targets)

    def _senseless(self) -> Iterator[Action]:
        """One thing alone, whatever else is going on."""
        button = self._dice.choice([1, 1, 1, 2, 3])
        kind = self._dice.choice(
            ["press", "release", "motion", "motion", "key", "key", "tool", "row", "other"]
        )
        if kind == "press":
            yield "press", button, *self._place(), self._chance(0.3)
        elif kind == "release":
            yield "release", button, *self._place()
        elif kind == "motion":
            # A button's motions go to the window that it was pressed in: no pan without a press.
            yield "motion", button if self._shadow.pan else 1, *self._place()
        elif kind == "key":
            keys = ["Escape", "Return", "Delete", "BackSpace"]
            yield "key", self._any_target(), self._dice.choice(keys)
        elif kind == "tool":
            yield "tool", self._dice.choice([key for key, _ in TOOLS])
        elif kind == "row":
            yield from self._choose_row()
        else:
            yield from self._dice.choice([self._set_up, self._look])()
