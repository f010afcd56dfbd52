"""Ways in which a dialog opens, is used and ends, each leaving nothing to show for it.

A way is a function of the stage, done once per cycle; what it fails to do raises. `WAYS` has them
all by name.
"""

from __future__ import annotations

import re
import tkinter as tk
from collections.abc import Callable
from contextlib import suppress
from dataclasses import dataclass, field
from typing import Any
from unittest.mock import patch

import numpy as np
from support.desk import button, tool_button
from support.events import Send, run_while
from support.neighbours import one_of_each, polygon
from tandrel.gui import i18n, sketcher, widgets

from soak.user.session import Session

TOOLS = [key for key, _ in sketcher.TOOLS]
RANDOM_USES = 10
MOST_EVENTS = 100  # of one


class Failure(Exception):
    """Raised by application code that the editor asks."""


def fail(*_arguments: Any, **_keywords: Any) -> Any:
    raise Failure


@dataclass
class Stage:
    """A main window, the caller's own sketch and what was raised in callbacks, by type."""

    root: tk.Tk
    sketch: dict[str, Any] = field(default_factory=one_of_each)
    references: list[Any] = field(
        default_factory=lambda: [("edge", np.array([[0.0, 0.0], [0.01, 0.01]]))]
    )
    raised: list[str] = field(default_factory=list)

    def open(self, parent: tk.Misc | None = None, **arguments: Any) -> Any:
        arguments = {"sketch": self.sketch, "references": self.references, **arguments}
        return sketcher.SketchEditor(parent or self.root, **arguments)

    def modal(self, *steps: Step, **arguments: Any) -> Any:
        """Run a dialog; what the steps, called with it while it is modal, leave must be closed."""

        def is_closed(editor: Any) -> None:
            assert not editor.winfo_exists(), "the dialog is still open"

        editor = self.open(**arguments)
        return run_while(editor, lambda editor: editor.update(), *steps, is_closed, delay=1)

    def take_raised(self, *expected: type[BaseException]) -> None:
        """Whether callbacks raised these and nothing else since the last time."""
        names = {error.__name__ for error in expected}
        assert set(self.raised) == names, f"callbacks raised {self.raised}"
        self.raised.clear()


Step = Callable[[Any], object]
Way = Callable[[Stage], None]

# -- what is done in a dialog ------------------------------------------------------------------


def click(text: str) -> Step:
    """Press the button of this text."""
    return lambda editor: button(editor, text).invoke()


def key(event: str) -> Step:
    """Run the dialog's own binding of a key, wherever the keyboard focus is."""

    def press(editor: Any) -> None:
        script = editor.bind(event)
        assert script, event
        editor.tk.eval(re.sub(r"%(.)", "0", script))

    return press


def close_window(editor: Any) -> None:
    """What the window manager's close button does."""
    editor.tk.eval(editor.protocol("WM_DELETE_WINDOW"))


def destroy(editor: Any) -> None:
    editor.destroy()


def begin_outline(editor: Any) -> None:
    editor.tool.set("line")
    Send(editor).click(100, 100)
    assert len(editor.clicks) == 1, "no corner clicked"


def begin_rectangle(editor: Any) -> None:
    editor.tool.set("rectangle")
    Send(editor).press(100, 100)
    Send(editor).drag(150, 150)


def draw_rectangle(editor: Any) -> None:
    begin_rectangle(editor)
    Send(editor).release(150, 150)
    assert editor.sk["entities"][-1]["type"] == "rectangle", "not drawn"


def choose_row(editor: Any) -> None:
    editor.list.selection_set("1")
    editor.update()


def be_refused(editor: Any) -> None:
    with patch.object(sketcher.S, "check", lambda sketch: ["not closed", "too small"]):
        click("OK")(editor)
    assert "not closed" in str(editor.status.cget("text")), "no reason shown"


def mistype(editor: Any) -> None:
    editor.offset.set("twelve")
    click("OK")(editor)
    assert "number" in str(editor.status.cget("text")), "no reason shown"
    editor.offset.set("12")


def every_tip(editor: Any) -> None:
    """Let the pointer rest on each tool; the last tip is up when the dialog goes."""
    with patch.object(widgets.Tooltip, "DELAY_MS", 0):
        for tool in TOOLS:
            choice = tool_button(editor, tool)
            choice.event_generate("<Enter>")
            editor.after(1, lambda: None)
            while not choice.winfo_children():
                editor.update()
            if tool != TOOLS[-1]:
                choice.event_generate("<Leave>")


# -- ways --------------------------------------------------------------------------------------


def given_up(*steps: Step, **arguments: Any) -> Way:
    """A dialog that gives nothing back."""

    def way(stage: Stage) -> None:
        assert stage.modal(*steps, **arguments) is None, "a result"

    return way


def accepted(*steps: Step, **arguments: Any) -> Way:
    """A dialog that gives back a sketch of its own, equal to the caller's if that had shapes."""

    def way(stage: Stage) -> None:
        result = stage.modal(*steps, click("OK"), **arguments)
        assert result["entities"] and result is not stage.sketch
        assert "sketch" in arguments or result["entities"] == stage.sketch["entities"]

    return way


def opened_only(stage: Stage) -> None:
    stage.open().destroy()


def without_its_parent(*steps: Step) -> Way:
    """A dialog over a window that goes when these steps are done."""

    def way(stage: Stage) -> None:
        parent = tk.Toplevel(stage.root)
        stage.modal(*steps, lambda editor: parent.destroy(), parent=parent)

    return way


def with_an_error(owner: Any, name: str, act: Step, ending: Step) -> Way:
    """A dialog in which something is done while a name of an object raises when it is called."""

    def way(stage: Stage) -> None:
        def stumble(editor: Any) -> None:
            with patch.object(owner, name, fail):
                act(editor)
            stage.take_raised(Failure)

        stage.modal(stumble, ending)

    return way


def constructor_fails(owner: Any, name: str, sketch: bool = True) -> Way:
    """The constructor while a name of an object raises when it is called."""

    def way(stage: Stage) -> None:
        with patch.object(owner, name, fail):
            not_opened(stage, stage.sketch if sketch else None)

    return way


def not_opened(stage: Stage, sketch: Any, cls: Any = None) -> None:
    before = stage.root.winfo_children()
    with suppress(Failure):
        (cls or sketcher.SketchEditor)(stage.root, sketch)
        raise AssertionError("the constructor didn't fail")
    assert stage.root.winfo_children() == before, "a window is left"
    stage.raised.clear()  # of laying out, which asks the same neighbours


def constructor_fails_at_the_nth_call(name: str) -> Way:
    """The constructor while a name of the module raises at its n-th call, each n in turn."""
    turn = 0

    def way(stage: Stage) -> None:
        nonlocal turn
        real, left = getattr(sketcher, name), turn

        def counting(*arguments: Any) -> Any:
            nonlocal left
            left -= 1
            return fail() if left < 0 else real(*arguments)

        with patch.object(sketcher, name, counting):
            try:
                not_opened(stage, stage.sketch)
                turn += 1
            except AssertionError:
                assert left >= 0 and turn > 0, f"{name} wasn't asked"
                for window in stage.root.winfo_children():
                    window.destroy()
                turn = 0

    return way


def overridden_build_fails(stage: Stage) -> None:
    for built in False, True:

        class Editor(sketcher.SketchEditor):
            def _build(self, allow_plane: bool) -> None:
                if built:
                    super()._build(allow_plane)
                raise Failure

        not_opened(stage, stage.sketch, Editor)


def random_use(seed: int) -> Way:
    """A dialog of the random user, the same one each time."""

    def way(stage: Stage) -> None:
        units, language = widgets.units(), i18n.language()
        session = Session(f"opening {seed}", lambda event: None)
        with patch.object(stage.root, "report_callback_exception", None):
            session.play(stage.root, sketcher.SketchEditor, MOST_EVENTS)
        widgets.set_units(units.name)
        i18n.set_language(language)

    return way


def long_outline(stage: Stage) -> None:
    """An outline that Tk gets by its second command, and one that is refused."""
    turns = np.linspace(0, 2 * np.pi, 65)[:-1]
    ring = polygon(*(np.column_stack([np.cos(turns), np.sin(turns)]) / 50).tolist())
    crossing = polygon((0.0, 0.0), (0.01, 0.01), (0.01, 0.0), (0.0, 0.01))
    stage.modal(lambda editor: editor.select(0), destroy, sketch={"entities": [ring, crossing]})


WAYS: dict[str, Way] = {
    "OK": accepted(),
    "OK in a plane": accepted(dim=2, allow_plane=False),
    "OK of a new sketch": accepted(draw_rectangle, sketch=None, title="New"),
    "Cancel": given_up(click("Cancel")),
    "Escape, then Cancel": given_up(begin_outline, key("<Escape>"), click("Cancel")),
    "window closed": given_up(close_window),
    "destroyed": given_up(destroy),
    "opened, never run": opened_only,
    "parent destroyed": without_its_parent(),
    "parent destroyed while drawing": without_its_parent(begin_rectangle),
    "OK refused, then Cancel": given_up(be_refused, click("Cancel")),
    "OK refused, then OK": accepted(mistype),
    "error in a handler": with_an_error(
        sketcher.S, "corners", lambda editor: Send(editor).motion(100, 100), destroy
    ),
    "error in OK": with_an_error(sketcher.S, "check", click("OK"), click("Cancel")),
    "error in the form": with_an_error(sketcher, "Form", choose_row, destroy),
    "constructor: S.new": constructor_fails(sketcher.S, "new", sketch=False),
    "constructor: deepcopy": constructor_fails(sketcher.copy, "deepcopy"),
    "constructor: outline": constructor_fails(sketcher.S, "outline"),
    "constructor: depths": constructor_fails(sketcher.S, "depths"),
    "constructor: form": constructor_fails(sketcher.SketchEditor, "show_props"),
    "constructor: fit": constructor_fails(sketcher.SketchEditor, "fit"),
    "constructor: _build overridden": overridden_build_fails,
    **{
        f"constructor: n-th {name}": constructor_fails_at_the_nth_call(name)
        for name in ("tr", "units", "num_text", "Tooltip", "px")
    },
    "every tip": given_up(every_tip, destroy),
    **{f"random use {seed}": random_use(seed) for seed in range(RANDOM_USES)},
    "long outlines": long_outline,
}
