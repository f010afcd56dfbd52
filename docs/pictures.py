"""Makes the manual's pictures: the running editor, used by its own pointer events.

    make pictures

The editor runs on an X server of its own with one font, so that the same sources give the same
pictures but for the dots of letters, which another version of the font sets differently: each
picture carries its texts, and where they stand, under "texts".
"""

from __future__ import annotations

import argparse
import json
import os
import sys
import tempfile
import tkinter as tk
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any, Dict, List, Tuple

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT))

from harness.places import SEARCH_PATH  # noqa: E402

sys.path[:0] = SEARCH_PATH

from harness.display import x_server  # noqa: E402
from PIL import Image, ImageGrab  # noqa: E402
from PIL.PngImagePlugin import PngInfo  # noqa: E402

IMAGES = ROOT / "docs" / "images"
FONTS = """<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd">
<fontconfig>
<dir>/usr/share/fonts/truetype/dejavu</dir>
<cachedir>{cache}</cachedir>
<alias><family>monospace</family><prefer><family>DejaVu Sans Mono</family></prefer></alias>
<match><edit name="family" mode="append"><string>DejaVu Sans</string></edit></match>
</fontconfig>
"""

SIZE = "1188x608"  # pixels; not much more than the manual's page shows

Point = Tuple[float, float]  # millimetres
Entity = Dict[str, Any]

PLATE: Entity = {"type": "rectangle", "x": -0.05, "y": -0.03, "w": 0.1, "h": 0.06, "radius": 0.008}
HOLE: Entity = {"type": "circle", "xc": -0.015, "yc": 0.0, "r": 0.016}
ISLAND: Entity = {"type": "circle", "xc": -0.015, "yc": 0.0, "r": 0.008}
SLOT: Entity = {"type": "slot", "x1": 0.02, "y1": 0.01, "x2": 0.036, "y2": 0.01, "r": 0.004}
NUT: Entity = {"type": "regular", "xc": 0.028, "yc": -0.013, "r": 0.009, "n": 6, "angle": 0.0}
BRACKET: Entity = {
    "type": "polygon",
    "points": [[-0.04, -0.03], [0.04, -0.03], [0.04, -0.01], [-0.01, -0.01], [-0.01, 0.03]]
    + [[-0.04, 0.03]],
    "radius": 0.004,
}


class Hands:
    """Pointer and keys on one editor."""

    def __init__(self, editor: Any) -> None:
        self.editor = editor

    def choose(self, tool: str) -> None:
        self.editor.tool.set(tool)
        self.editor.cancel_drawing()

    def move(self, point: Point) -> None:
        self._event("<Motion>", point)

    def press(self, point: Point) -> None:
        self._event("<ButtonPress-1>", point)

    def drag(self, point: Point) -> None:
        self._event("<B1-Motion>", point)

    def click(self, point: Point) -> None:
        self.press(point)
        self._event("<ButtonRelease-1>", point)
        self.move(point)

    def _event(self, event: str, point: Point) -> None:
        x, y = self.editor.to_screen((point[0] / 1000, point[1] / 1000))
        self.editor.canvas.event_generate(event, x=round(x), y=round(y))
        self.editor.update()


def plate_with_selection(hands: Hands) -> None:
    hands.move((-15, 27))
    hands.editor.select(4)


def rectangle(hands: Hands) -> None:
    hands.choose("rectangle")
    hands.move((-30, -15))
    hands.press((-30, -15))
    hands.drag((25, 20))


def circle(hands: Hands) -> None:
    hands.choose("circle")
    hands.press((0, 0))
    hands.drag((20, 15))


def regular(hands: Hands) -> None:
    hands.choose("regular")
    hands.press((-5, -5))
    hands.drag((20, 5))


def slot(hands: Hands) -> None:
    hands.choose("slot")
    hands.click((-20, -10))
    hands.click((20, 10))
    hands.move((-5, 10))


def line(hands: Hands) -> None:
    hands.choose("line")
    for corner in ((-35, -20), (30, -20), (30, 0), (0, 5)):
        hands.click(corner)
    hands.move((-10, 25))


def select(hands: Hands) -> None:
    hands.choose("select")
    hands.press((24, 10))
    hands.drag((14, 15))


def snapping(hands: Hands) -> None:
    hands.choose("line")
    hands.click((10, 0))
    x, y = hands.editor.to_screen((-0.04, 0.03))
    hands.editor.canvas.event_generate("<Motion>", x=round(x) + 6, y=round(y) + 5)


def joining(hands: Hands) -> None:
    hands.move((45, 35))


def refused(hands: Hands) -> None:
    hands.editor.select(0)
    hands.editor.vars["radius"].set("40")
    hands.editor.apply_props()


Scene = Tuple[str, List[Entity], Callable[[Hands], None], str]
SCENES: List[Scene] = [
    ("editor", [PLATE, HOLE, ISLAND, SLOT, NUT], plate_with_selection, "dialog"),
    ("rectangle", [], rectangle, "drawing"),
    ("circle", [], circle, "drawing"),
    ("polygon", [], regular, "drawing"),
    ("slot", [], slot, "drawing"),
    ("line", [], line, "drawing"),
    ("select", [PLATE, HOLE, SLOT], select, "drawing"),
    ("snapping", [BRACKET], snapping, "drawing"),
    (
        "holes",
        [
            {**PLATE, "radius": 0.0},
            {**PLATE, "x": 0.03, "y": 0.0, "w": 0.03, "h": 0.05, "radius": 0.0},
            HOLE,
            ISLAND,
        ],
        joining,
        "drawing",
    ),
    ("refused", [PLATE, HOLE], refused, "form and message"),
]


Box = Tuple[int, int, int, int]  # left, top, right and bottom on the screen


def box_of(widget: Any) -> Box:
    left, top = widget.winfo_rootx(), widget.winfo_rooty()
    return left, top, left + widget.winfo_width(), top + widget.winfo_height()


def explained(editor: Any, part: str) -> List[Box]:
    """The places that a picture shows, one below the other: none that another is there to show."""
    whole, canvas, status = box_of(editor), box_of(editor.canvas), box_of(editor.status)
    if part == "dialog":
        return [whole]
    if part == "drawing":
        return [canvas]
    form = (canvas[0], canvas[1], whole[2], canvas[3])
    return [form, (whole[0], status[1], whole[0] + form[2] - form[0], status[3])]


def texts(widget: Any) -> Iterator[Tuple[Box, str]]:
    """Every text that the widget and those in it show."""
    if isinstance(widget, tk.Canvas):
        left, top, _, _ = box_of(widget)
        for item in widget.find_all():
            if widget.type(item) == "text":
                x1, y1, x2, y2 = widget.bbox(item)
                box = (left + x1, top + y1, left + x2, top + y2)
                yield box, " ".join(widget.itemcget(item, name) for name in ("text", "fill"))
    elif hasattr(widget, "selection_set"):
        rows = [widget.item(row) for row in widget.get_children()]
        yield box_of(widget), json.dumps([(row["text"], row["values"]) for row in rows])
    elif hasattr(widget, "icursor"):
        yield box_of(widget), widget.get()
    elif "text" in widget.keys():
        yield box_of(widget), str(widget.cget("text"))
    for child in widget.winfo_children():
        yield from texts(child)


def take(root: tk.Tk, scene: Scene, folder: Path) -> None:
    from tandrel.application.editor import Editor

    name, entities, act, part = scene
    editor: Any = Editor(root, {"entities": entities} if entities else None, SIZE)
    editor.geometry("+20+20")
    editor.update()
    editor.fit()
    act(Hands(editor))
    editor.focus_set()
    editor.update()
    places = explained(editor, part)
    picture = Image.new("RGB", (places[0][2] - places[0][0], sum(p[3] - p[1] for p in places)))
    shown, below = [], 0
    for left, top, right, bottom in places:
        grabbed = ImageGrab.grab((left, top, right, bottom), xdisplay=root.winfo_screen())
        picture.paste(grabbed, (0, below))
        dx, dy = -left, below - top
        for (x1, y1, x2, y2), text in texts(editor):
            if left <= x1 < right and top <= y1 < bottom:
                shown.append(((x1 + dx, y1 + dy, x2 + dx, y2 + dy), text))
        below += bottom - top
    about = PngInfo()
    about.add_text("texts", json.dumps(shown))
    picture.save(folder / f"{name}.png", optimize=True, pnginfo=about)
    editor.destroy()


def main() -> int:
    parser = argparse.ArgumentParser(description="Make the manual's pictures.")
    parser.add_argument("--folder", type=Path, default=IMAGES)
    folder = parser.parse_args().folder
    with tempfile.TemporaryDirectory() as settings, x_server(1280, 1024) as display:
        fonts = Path(settings, "fonts.conf")
        fonts.write_text(FONTS.format(cache=settings))
        os.environ.update(DISPLAY=display, FONTCONFIG_FILE=str(fonts))
        from tandrel.gui.widgets import main_window

        root = main_window("Tandrel")
        root.geometry("200x100+1070+20")
        root.update()
        for scene in SCENES:
            take(root, scene, folder)
        root.destroy()
    return 0


if __name__ == "__main__":
    sys.exit(main())
