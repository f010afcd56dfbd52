"""The replayed session: a part drawn from nothing, changed, measured and saved."""

from __future__ import annotations

from pathlib import Path
from typing import Any, Dict, List

from demo.draughtsman import Draughtsman, Point, at
from demo.user import Script, until

ARROW: List[Point] = [(-18, 30), (4, 30), (4, 27), (14, 32), (4, 37), (4, 34), (-18, 34)]
LONGER: List[Point] = [(-18, 30), (4, 30), (4, 27), (20.5, 32), (4, 37), (4, 34), (-18, 34)]

# Places of menus in the menu bar.
UNITS, LANGUAGE = 1, 2


def shapes_drawn() -> List[Dict[str, Any]]:
    """The shapes that the session leaves behind, number by number.

    What is drawn lies on grid lines; what is typed is the double of the typed number.
    """
    moved = at(36) - at(32)
    return [
        {
            "type": "rectangle",
            "x": at(-60),
            "y": at(-40),
            "w": at(60) - at(-60),
            "h": at(40) - at(-40),
            "radius": 0.01,
        },
        {"type": "circle", "xc": 0.0, "yc": 0.0, "r": at(25)},
        {"type": "regular", "xc": at(-42), "yc": 0.0, "r": 0.00925, "n": 6, "angle": 90.0},
        {
            "type": "slot",
            "x1": at(32) + moved,
            "y1": at(-20),
            "x2": at(32) + moved,
            "y2": at(20),
            "r": at(32) - at(28),
        },
        {"type": "circle", "xc": 0.0, "yc": 0.0, "r": at(15)},
        {
            "type": "polygon",
            "points": [[u / 1000, v / 1000] for u, v in LONGER],
            "radius": 0.001,
        },
    ]


def draw_and_save(hands: Draughtsman) -> Script:
    """Everything from the empty sketch to OK."""
    yield from hands.open_editor()
    yield from _shapes(hands)
    yield from _outline(hands)
    yield from _delete_and_move(hands)
    yield from _sizes(hands)
    yield from _corners(hands)
    yield from hands.pick_row(0)
    yield from hands.picture("editor")
    yield from hands.accept()


def look_around(hands: Draughtsman, part: Path) -> Script:
    """Other units, another language, another part; the editor is left by Cancel each time."""
    user, app = hands.user, hands.app
    yield from user.choose_from_menu(app.menus["bar"], UNITS, 3)
    yield until(lambda: " in " in str(app.size.cget("text")), "the size in inches")
    yield from hands.picture("inches-window")
    yield from _look(hands, 0, "inches-editor")
    yield from user.choose_from_menu(app.menus["bar"], UNITS, 0)
    yield from user.choose_from_menu(app.menus["bar"], LANGUAGE, 1)
    yield until(lambda: app.edit_button.cget("text") != "Edit sketch", "German texts")
    yield from _look(hands, 3, "german-editor")
    yield from user.choose_from_menu(app.menus["bar"], LANGUAGE, 0)
    yield until(lambda: app.edit_button.cget("text") == "Edit sketch", "English texts")
    yield from hands.open_file(part)
    yield from hands.picture("flange-window")
    yield from _look(hands, 7, "flange-editor")


def _look(hands: Draughtsman, row: int, picture: str) -> Script:
    yield from hands.open_editor()
    yield from hands.pick_row(row)
    yield from hands.picture(picture)
    yield from hands.cancel()


def _shapes(hands: Draughtsman) -> Script:
    """A plate, a hole in it, a hexagon, a slot, and an island in the hole.

    The island doesn't follow the hole at once: two quick presses in one place are a double click.
    """
    yield from hands.choose("rectangle")
    yield from hands.drag((-60, -40), (60, 40))
    yield from hands.choose("circle")
    yield from hands.drag((0, 0), (25, 0))
    yield from hands.choose("regular")
    yield from hands.set_sides(6)
    yield from hands.drag((-42, 0), (-42, 9))
    yield from hands.choose("slot")
    yield from hands.place((32, -20))
    yield from hands.place((32, 20))
    yield from hands.place((28, 11))
    yield from hands.choose("circle")
    yield from hands.drag((0, 0), (15, 0))


def _outline(hands: Draughtsman) -> Script:
    """Zoom in, pan, and click corner after corner, the last on the first."""
    yield from hands.choose("line")
    yield from hands.zoom_in((0, 32), 3)
    yield from hands.pan((0, 32), (-5, 20))
    for corner in ARROW:
        yield from hands.place(corner)
    yield from hands.point((-12, 32))
    yield from hands.picture("outline")
    yield from hands.place(ARROW[0])
    yield hands.shapes(6)
    yield from hands.fit()


def _delete_and_move(hands: Draughtsman) -> Script:
    yield from hands.choose("circle")
    yield from hands.drag((-48, -28), (-45, -28))
    hands.user.key("Delete")
    yield hands.shapes(6)
    yield from hands.choose("select")
    yield from hands.hold((32, 0), (36, 0))
    yield from hands.picture("moving")
    yield from hands.drop()


def _sizes(hands: Draughtsman) -> Script:
    """Exact sizes: one by the button, one with a mistake first and then by Return."""
    yield from hands.pick_row(2)
    yield from hands.fill_in("r", "9.25")
    yield from hands.apply()
    yield hands.holds(2, "r", 0.00925)
    yield from hands.pick_row(0)
    yield from hands.fill_in("radius", "ten")
    yield from hands.apply()
    yield hands.status_has("ten")
    yield from hands.picture("mistake")
    yield from hands.fill_in("radius", "10")
    hands.user.key("Return")
    yield hands.holds(0, "radius", 0.01)


def _corners(hands: Draughtsman) -> Script:
    yield from hands.pick_row(5)
    yield from hands.fill_in("radius", "1")
    yield from hands.fill_in_corners(LONGER)
    yield from hands.apply()
    yield hands.holds(5, "radius", 0.001)
    yield from hands.picture("corners")
