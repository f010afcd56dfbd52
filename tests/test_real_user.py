"""Whole jobs with real pointer and key events, in a dialog that a window manager placed."""

import json
from pathlib import Path
from tkinter import ttk

import numpy as np
import pytest
from harness.user import User
from support.desk import entry_of, field, of_class, tool_button
from support.events import run_while, settle
from support.neighbours import circle, one_of_each, polygon
from support.types import CARD, CARDS
from support.widgets import button
from tandrel.gui.widgets import num_text, units

FLANGE = Path(__file__).resolve().parent.parent / "host" / "parts" / "flange.json"
STEP = 0.001


class RealUser:
    """A user before the screen. Points are in millimetres; every act waits until it was seen."""

    def __init__(self, editor, display_name):
        self.editor = editor
        self.window = editor.master
        self.hand = User(self.window, display_name)
        self.events = []
        editor.canvas.bindtags(("Seen", *editor.canvas.bindtags()))
        for event in ("Motion", "ButtonPress", "ButtonRelease"):
            editor.bind_class("Seen", f"<{event}>", self.note)

    def note(self, event):
        self.events.append((event.type.name, event.x, event.y))

    @property
    def entities(self):
        return self.editor.sk["entities"]

    def wait(self, condition):
        settle(self.window, condition)

    def do(self, script):
        for step in script:
            self.wait(step.condition)

    def pixel(self, point):
        x, y = self.editor.to_screen((point[0] / 1000, point[1] / 1000))
        return round(x), round(y)

    def point(self, point):
        """Move the pointer to a place on the canvas."""
        canvas = self.editor.canvas
        x, y = self.pixel(point)
        target = canvas.winfo_rootx() + x, canvas.winfo_rooty() + y
        if canvas.winfo_pointerxy() != target:
            del self.events[:]
            self.hand.move(*target)
            self.wait(lambda: ("Motion", x, y) in self.events)

    def press(self, number=1):
        self._button(self.hand.press, number, "ButtonPress")

    def release(self, number=1):
        self._button(self.hand.release, number, "ButtonRelease")

    def _button(self, act, number, name):
        del self.events[:]
        act(number)
        self.wait(lambda: any(event[0] == name for event in self.events))

    def drag(self, *points, number=1):
        self.point(points[0])
        self.press(number)
        for point in points[1:]:
            self.point(point)
        self.release(number)

    def click(self, *points, number=1):
        for point in points:
            self.point(point)
            self.press(number)
            self.release(number)

    def choose(self, tool):
        self.do(self.hand.click_on(tool_button(self.editor, tool)))
        self.wait(lambda: self.editor.tool.get() == tool)

    def push(self, text):
        self.do(self.hand.click_on(button(self.editor, text)))

    def keys(self, *names):
        self.hand.key(*names)

    def fill_in(self, **texts):
        """Type into fields of the property form, then press Return in the last of them."""
        for key, text in texts.items():
            self.do(self.hand.fill_in(field(self.editor, key), text))
        self.keys("Return")

    def accept(self):
        self.push("OK")
        self.wait(lambda: not self.editor.winfo_exists())


@pytest.fixture
def edit(sketcher, managed_root, managed_display):
    """Runs the dialog while a story is played before it; gives what the dialog returns."""

    def run(sketch, story, **options):
        editor = sketcher.SketchEditor(managed_root, sketch, **options)
        user = RealUser(editor, managed_display)

        def play(editor):
            settle(managed_root, lambda: editor.winfo_viewable() and editor.grab_status())
            story(user)

        return run_while(editor, play)

    return run


def draw(user, tool, points):
    user.choose(tool.name)
    (user.drag if tool.dragged else user.click)(*points)


def drawn_roughly(user, number, entity):
    """Draw an entity of this type by mouse, somewhere near; its sizes come later."""
    kind = entity["type"]
    u, v = (-40 + 8 * number, -25 + 5 * number)
    draw(user, CARD[kind].tool, [(u, v), (u + 12, v), (u + 10, v + 10)])
    user.wait(lambda: len(user.entities) == number + 1)
    assert user.entities[number]["type"] == kind


def test_the_flange_is_drawn_from_nothing_by_mouse_and_typed_sizes(edit):
    part = json.loads(FLANGE.read_text())["sketch"]

    def story(user):
        for number, entity in enumerate(part["entities"]):
            drawn_roughly(user, number, entity)
            sizes = {
                key: num_text(units().from_si(value, "length"))
                for key, value in entity.items()
                if key != "type"
            }
            user.fill_in(**sizes)
            user.wait(lambda: user.entities[number] == entity)
        user.accept()

    result = edit(None, story)
    assert result == part
    for made, wanted in zip(result["entities"], part["entities"]):
        assert {key: repr(value) for key, value in made.items()} == {
            key: repr(value) for key, value in wanted.items()
        }


def test_every_tool_with_the_mouse(edit):
    def story(user):
        user.editor.snap.set(True)
        for number, card in enumerate(CARDS):
            points = card.tool.gesture
            draw(user, card.tool, points + points[:1] * (card.tool.name == "line"))
            user.wait(lambda: len(user.entities) > number)
        user.accept()

    made = edit(None, story)["entities"]
    assert made == [
        card.drawn(*((u * STEP, v * STEP) for u, v in card.tool.gesture)) for card in CARDS
    ]


def test_wheel_and_right_button_zoom_and_pan(edit):
    def story(user):
        editor = user.editor
        scale = editor.scale
        user.point((20, 10))
        under = editor.to_world(*user.pixel((20, 10)))
        user.click((20, 10), (20, 10), number=4)
        assert editor.scale == pytest.approx(scale * 1.2**2)
        assert editor.to_world(*user.pixel((20, 10))) == pytest.approx(under, abs=1e-3)
        user.click((20, 10), number=5)
        assert editor.scale == pytest.approx(scale * 1.2)
        for number in (2, 3):
            centre = editor.centre.copy()
            x, y = user.pixel((20, 10))
            user.drag((20, 10), (22, 12), (0, 0), number=number)
            assert editor.to_screen((0.02, 0.01)) != (x, y)
            assert not np.array_equal(editor.centre, centre)
        user.push("Fit")
        user.wait(lambda: editor.scale == scale)

    assert edit(None, story) is None


def test_pick_drag_and_delete(edit):
    sketch = one_of_each()

    def story(user):
        user.drag((3, 22), (8, 22), (13, 12))
        user.wait(lambda: user.editor.drag is None)
        moved = user.entities[1]
        assert moved == circle(0.0 + (13 * STEP - 3 * STEP), 0.02 + (12 * STEP - 22 * STEP), 0.01)
        user.click((-40, -25))
        user.wait(lambda: user.editor.sel == 0)
        user.keys("Delete")
        user.wait(lambda: len(user.entities) == len(sketch["entities"]) - 1)
        user.click((30, -20))
        user.wait(lambda: user.editor.sel == 2)
        user.keys("BackSpace")
        user.wait(lambda: len(user.entities) == len(sketch["entities"]) - 2)
        user.accept()

    made = edit(sketch, story)["entities"]
    types = [e["type"] for e in sketch["entities"]]
    assert [e["type"] for e in made] == [t for t in types if t not in ("rectangle", "slot")]


def test_an_outline_by_escape_return_and_double_click(edit):
    def story(user):
        user.choose("line")
        user.click((-30, -20), (30, -20), (30, 20))
        user.keys("Escape")
        user.wait(lambda: user.editor.clicks == [])
        user.click((-30, -10), (30, -10), (30, 20))
        user.keys("Return")
        user.wait(lambda: len(user.entities) == 1)
        user.click((-20, -30), (20, -30))
        user.point((0, -15))
        user.hand.click(times=2)
        user.wait(lambda: len(user.entities) == 2)
        user.accept()

    made = edit(None, story)["entities"]
    assert made[0]["points"] == [
        [-30 * STEP, -10 * STEP],
        [30 * STEP, -10 * STEP],
        [30 * STEP, 20 * STEP],
    ]
    assert len(made[1]["points"]) == 3


def test_a_mistake_in_the_form_and_keys_that_stay_in_text_fields(edit):
    outline = polygon((0, 0), (0.03, 0), (0, 0.02))

    def story(user):
        editor = user.editor
        user.click((5, 5))
        user.wait(lambda: editor.sel == 0)
        user.fill_in(radius="x1")
        user.wait(lambda: str(editor.status.cget("text")).startswith("Not applied: "))
        user.keys("BackSpace", "BackSpace", "1", "Delete")
        user.wait(lambda: editor.vars["radius"].get() == "1")
        user.keys("Return")
        user.wait(lambda: user.entities[0]["radius"] == 0.001)
        box = editor.points_text
        user.do(user.hand.click_on(box))
        user.keys("ctrl+End", "BackSpace", "BackSpace", "2", "5", "Delete")
        user.wait(lambda: box.get("1.0", "end-1c") == "0 0\n30 0\n0 25")
        user.push("Apply")
        user.wait(lambda: user.entities[0]["points"][2] == [0.0, 0.025])
        user.accept()

    assert edit({"entities": [outline]}, story)["entities"] == [
        polygon((0.0, 0.0), (0.03, 0.0), (0.0, 0.025), radius=0.001)
    ]


def test_by_keyboard_only(edit):
    """Tab from field to field, type, choose, apply and accept, never touching the mouse."""

    def story(user):
        editor = user.editor
        editor.focus_force()

        def tab_to(widget):
            for _ in range(60):
                before = editor.focus_get()
                user.keys("Tab")
                user.wait(lambda: editor.focus_get() is not before)
                if editor.focus_get() is widget:
                    return
            raise LookupError(f"Tab does not lead to {widget}")

        # A field that Tab enters has its text selected: typing replaces it.
        tab_to(entry_of(editor, editor.offset))
        user.hand.type("12.5")
        user.wait(lambda: editor.offset.get() == "12.5")
        # Tk's list takes arrow keys once one of its rows has the focus.
        tab_to(editor.list)
        editor.list.focus("0")
        user.keys("Down")
        user.wait(lambda: editor.sel == 1)
        tab_to(field(editor, "r"))
        user.hand.type("7.5")
        user.wait(lambda: editor.vars["r"].get() == "7.5")
        user.keys("Return")
        user.wait(lambda: user.entities[1]["r"] == 0.0075)
        tab_to(button(editor, "OK"))
        user.keys("space")
        user.wait(lambda: not editor.winfo_exists())

    result = edit({"entities": [circle(0.0, 0.0, 0.02), circle(0.0, 0.0, 0.01)]}, story)
    assert result["offset"] == 0.0125
    assert result["entities"] == [circle(0.0, 0.0, 0.02), circle(0.0, 0.0, 0.0075)]


def test_the_plane_is_chosen_in_its_list(edit):
    def story(user):
        box = of_class(user.editor, ttk.Combobox)[0]
        user.do(user.hand.click_on(box))
        popdown = user.editor.tk.call("ttk::combobox::PopdownWindow", box)
        user.wait(lambda: user.editor.tk.call("winfo", "viewable", popdown))
        user.keys("Down", "Down", "Return")
        user.wait(lambda: user.editor.sk["plane"] == "YZ")
        user.accept()

    assert edit({"plane": "XY", "entities": [circle(0.0, 0.0, 0.01)]}, story)["plane"] == "YZ"


def test_the_window_is_closed_from_outside(edit):
    def story(user):
        user.drag((-40, -30), (40, 30))
        user.wait(lambda: len(user.entities) == 1)
        user.keys("alt+F4")
        user.wait(lambda: not user.editor.winfo_exists())

    assert edit(None, story) is None
