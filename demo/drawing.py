"""The replayed session: two parts drawn from nothing, changed, measured and saved.

They are the parts of these names that come with the application, line by line in the same order.
Between them lies a bracket with four equal holes, in as few acts as a person needs.
"""

from __future__ import annotations

from pathlib import Path
from typing import Any, Dict, List, Mapping, Tuple

from demo.draughtsman import Draughtsman, Point
from harness.user import Script, until

PARTS = ("gasket", "bracket")
LEGS: List[Point] = [(0, 0), (80, 0), (80, 24), (24, 24), (24, 60), (0, 60)]
LONGER: List[Point] = [(0, 0), (80, 0), (80, 24), (24, 24), (24, 64), (0, 64)]

FLAT_BRACKET: List[Dict[str, Any]] = [
    {"type": "rectangle", "x": -0.05, "y": -0.02, "w": 0.1, "h": 0.04, "radius": 0.0},
    *({"type": "circle", "xc": u, "yc": 0.0, "r": 0.0033} for u in (-0.036, -0.012, 0.012, 0.036)),
]

# Places in the menu bar, and in the menu of the view.
VIEW, UNITS, LANGUAGE = 2, 0, 1


def draw_and_save(hands: Draughtsman, files: Mapping[str, Path]) -> Script:
    """Everything from an empty window to two sketch files."""
    yield from hands.picture("empty-window")
    yield from hands.open_editor()
    yield from _gasket(hands)
    yield from hands.accept()
    yield from hands.save_as(files["gasket"])
    yield from hands.see_profile("gasket-window")
    yield from hands.new()
    yield from _flat_bracket(hands)
    yield from hands.open_editor()
    yield from _bracket(hands)
    yield from hands.pick_row(0)
    yield from hands.picture("editor")
    yield from hands.accept()
    yield from _undo_and_redo(hands)
    yield from hands.save_as(files["bracket"])
    yield from hands.see_profile("bracket-window")


def look_around(hands: Draughtsman, part: Path) -> Script:
    """Other units, another language, another part; the editor is left by Cancel each time."""
    user, app = hands.user, hands.app
    yield from user.choose_from_menu(app.menus["bar"], VIEW, UNITS, 3)
    yield until(lambda: " in " in str(app.size.cget("text")), "the size in inches")
    yield from hands.picture("inches-window")
    yield from _look(hands, 0, "inches-editor")
    yield from user.choose_from_menu(app.menus["bar"], VIEW, UNITS, 0)
    english = str(app.edit_button.cget("text"))
    yield from user.choose_from_menu(app.menus["bar"], VIEW, LANGUAGE, 1)
    yield until(lambda: app.edit_button.cget("text") != english, "German texts")
    yield from hands.picture("german-window")
    yield from _look(hands, 4, "german-editor")
    yield from user.choose_from_menu(app.menus["bar"], VIEW, LANGUAGE, 0)
    yield until(lambda: app.edit_button.cget("text") == english, "English texts")
    yield from hands.open_file(part)
    yield from hands.see_profile("flange-window")
    yield from _look(hands, 7, "flange-editor")


def _look(hands: Draughtsman, row: int, picture: str) -> Script:
    yield from hands.open_editor()
    yield from hands.pick_row(row)
    yield from hands.see_profile(picture)
    yield from hands.cancel()


def _gasket(hands: Draughtsman) -> Script:
    """An oval, its bore, and holes of which one of a kind is drawn by eye, and typed; the other is
    its duplicate, at a place that is a sum.

    No shape follows another in its place at once: two quick presses there are a double click.
    """
    yield from hands.choose("slot")
    yield from hands.place((-30, 0))
    yield from hands.place((30, 0))
    yield from hands.place((10, 25))
    yield hands.shapes(1)
    yield from hands.choose("circle")
    yield from hands.drag((0, 0), (16, 0))
    yield from hands.drag((-40, 0), (-36, 0))
    yield from _mistake(hands)
    yield from _and_its_like(hands, 2, ("9/2", 0.0045), xc=("-40+80", 0.04))
    yield from hands.duplicate()
    yield from hands.undo(4)
    yield from hands.drag((0, -20), (0, -18))
    yield from _and_its_like(hands, 4, ("3/2", 0.0015), xc=("0", 0.0), yc=("-20+40", 0.02))


def _and_its_like(
    hands: Draughtsman, row: int, radius: Tuple[str, float], **place: Tuple[str, float]
) -> Script:
    """Type the radius of a shape that is selected, and the place of its duplicate.

    Each as the text and the metres that come of it.
    """
    text, metres = radius
    yield from hands.fill_in("r", text)
    yield from hands.enter()
    yield hands.holds(row, "r", metres)
    yield from hands.duplicate()
    for key, (text, _) in place.items():
        yield from hands.fill_in(key, text)
    yield from hands.enter()
    for key, (_, metres) in place.items():
        yield hands.holds(row + 1, key, metres)


def flat_bracket(hands: Draughtsman) -> List[Script]:
    """A plate with four equal holes, from an empty editor to OK: what its user does, act by act."""
    acts = [
        hands.drag((-50, -20), (50, 20)),
        hands.choose("circle"),
        hands.drag((-36, 0), (-33, 0)),
        hands.fill_in("r", "6.6/2"),
        hands.enter(),
    ]
    for before in (-36, -12, 12):
        acts += [hands.duplicate(), hands.fill_in("xc", f"{before}+24"), hands.enter()]
    return [*acts, hands.accept()]


def _flat_bracket(hands: Draughtsman) -> Script:
    yield from hands.open_editor()
    for act in flat_bracket(hands):
        yield from act
    session = hands.app.session
    drawn = session.document.sketch["entities"]
    if drawn != FLAT_BRACKET:
        raise RuntimeError(f"the flat bracket is {drawn}")
    yield from hands.see_profile("flat-bracket-window")
    yield from hands.press("ctrl+z")
    yield until(lambda: not session.document.sketch["entities"], "the empty sketch again")


def _mistake(hands: Draughtsman) -> Script:
    yield from hands.fill_in("r", "four")
    yield from hands.apply()
    yield hands.status_has("four")
    yield from hands.picture("mistake")


def _bracket(hands: Draughtsman) -> Script:
    """Two legs clicked corner after corner, one made longer; holes, a nut's seat and a slot."""
    yield from hands.pan((0, 0), (-40, -32))
    yield from hands.choose("line")
    for corner in LEGS:
        yield from hands.place(corner)
    yield from hands.point((4, 30))
    yield from hands.picture("outline")
    yield from hands.place(LEGS[0])
    yield hands.shapes(1)
    yield from _corners(hands)
    yield from hands.choose("circle")
    yield from hands.drag((12, 12), (15, 12))
    yield from _and_its_like(hands, 1, ("6.6/2", 0.0033), xc=("12", 0.012), yc=("12+40", 0.052))
    yield from _seat_and_slot(hands)
    yield from hands.fit()
    yield from _sizes(hands)


def _corners(hands: Draughtsman) -> Script:
    yield from hands.pick_row(0)
    yield from hands.fill_in("radius", "3")
    yield from hands.fill_in_corners(LONGER)
    yield from hands.apply()
    yield hands.holds(0, "radius", 0.003)
    yield from hands.picture("corners")


def _seat_and_slot(hands: Draughtsman) -> Script:
    """Drawn large, and the slot not quite where it belongs."""
    yield from hands.zoom_in((12, 12), 3)
    yield from hands.choose("regular")
    yield from hands.set_sides(6)
    yield from hands.drag((12, 34), (12, 39))
    yield from hands.choose("slot")
    yield from hands.place((40, 12))
    yield from hands.place((60, 12))
    yield from hands.place((50, 15))
    yield hands.shapes(5)
    yield from hands.choose("select")
    yield from hands.hold((50, 12), (54, 12))
    yield from hands.picture("moving")
    yield from hands.drop()


def _sizes(hands: Draughtsman) -> Script:
    """Exact sizes, by the button here."""
    for row, radius in ((3, "5.8"), (4, "3.3")):
        yield from hands.pick_row(row)
        yield from hands.fill_in("r", radius)
        yield from hands.apply()
        yield hands.holds(row, "r", float(radius) / 1000)


def _undo_and_redo(hands: Draughtsman) -> Script:
    """All that OK brought, away and back."""
    session = hands.app.session
    yield from hands.press("ctrl+z")
    yield until(lambda: not session.document.sketch["entities"], "the empty sketch again")
    yield from hands.press("ctrl+y")
    yield until(lambda: session.document.sketch["entities"], "the shapes again")
