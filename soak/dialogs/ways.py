"""Ways in which a dialog opens, is used and ends, each leaving nothing to show for it.

A way is a function of the stage, done once per cycle; what it fails to do raises. `WAYS` has them
all by name.
"""

from __future__ import annotations

import re
import tkinter as tk
from collections.abc import Callable
from contextlib import ExitStack
from dataclasses import dataclass, field
from typing import Any
from unittest.mock import patch

import numpy as np
from support.desk import button, tool_button
from support.events import Send
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

    def modal(self, *steps: Callable[[Any], object], **arguments: Any) -> Any:
        """Run a dialog; what the steps, called with it while it is modal, leave must be closed."""
        editor = self.open(**arguments)
        failures: list[BaseException] = []

        def act() -> None:
            try:
                editor.update()
                for step in steps:
                    step(editor)
                assert not editor.winfo_exists(), "the dialog is still open"
            except BaseException as error:
                failures.append(error)
                if editor.winfo_exists():
                    editor.destroy()

        editor.after(1, act)
        result = editor.run()
        if failures:
            raise failures.pop()
        return result

    def take_raised(self, *expected: type[BaseException]) -> None:
        """Whether callbacks raised these and nothing else since the last time."""
        names = {error.__name__ for error in expected}
        assert set(self.raised) == names, f"callbacks raised {self.raised}"
        self.raised.clear()


def click(text: str) -> Callable[[Any], None]:
    """Press the button of this text."""
    return lambda editor: button(editor, text).invoke()


def key(event: str) -> Callable[[Any], None]:
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


def expect(condition: bool, what: str) -> None:
    if not condition:
        raise AssertionError(what)


# -- endings -----------------------------------------------------------------------------------


def accepted(stage: Stage) -> None:
    result = stage.modal(click("OK"))
    expect(result == stage.sketch and result is not stage.sketch, "not the edited sketch")


def accepted_in_a_plane(stage: Stage) -> None:
    expect(stage.modal(click("OK"), dim=2, allow_plane=False) == stage.sketch, "not the sketch")


def new_sketch(stage: Stage) -> None:
    def draw_rectangle(editor: Any) -> None:
        editor.tool.set("rectangle")
        Send(editor).stroke((100, 100), (200, 160))

    result = stage.modal(draw_rectangle, click("OK"), sketch=None, title="New")
    expect([entity["type"] for entity in result["entities"]] == ["rectangle"], "not drawn")


def cancelled(stage: Stage) -> None:
    expect(stage.modal(click("Cancel")) is None, "a result after Cancel")


def escape_then_cancel(stage: Stage) -> None:
    def begin_outline(editor: Any) -> None:
        editor.tool.set("line")
        Send(editor).click(100, 100)
        expect(len(editor.clicks) == 1, "no corner clicked")

    stage.modal(begin_outline, key("<Escape>"), click("Cancel"))


def window_closed(stage: Stage) -> None:
    expect(stage.modal(close_window) is None, "a result after closing the window")


def destroyed(stage: Stage) -> None:
    stage.modal(destroy)


def never_run(stage: Stage) -> None:
    stage.open().destroy()


def parent_destroyed(stage: Stage) -> None:
    parent = tk.Toplevel(stage.root)
    stage.modal(lambda editor: parent.destroy(), parent=parent)


def parent_destroyed_while_drawing(stage: Stage) -> None:
    parent = tk.Toplevel(stage.root)

    def begin(editor: Any) -> None:
        editor.tool.set("rectangle")
        Send(editor).press(100, 100)
        Send(editor).drag(150, 150)
        parent.destroy()

    stage.modal(begin, parent=parent)


def refused_then_cancelled(stage: Stage) -> None:
    def refuse(editor: Any) -> None:
        with patch.object(sketcher.S, "check", lambda sketch: ["not closed", "too small"]):
            button(editor, "OK").invoke()
        expect("not closed" in str(editor.status.cget("text")), "no reason shown")

    stage.modal(refuse, click("Cancel"))


def refused_then_accepted(stage: Stage) -> None:
    def refuse(editor: Any) -> None:
        editor.offset.set("twelve")
        button(editor, "OK").invoke()
        expect("number" in str(editor.status.cget("text")), "no reason shown")
        editor.offset.set("12")

    stage.modal(refuse, click("OK"))


# -- errors ------------------------------------------------------------------------------------


def error_in_a_handler(stage: Stage) -> None:
    def hover(editor: Any) -> None:
        with patch.object(sketcher.S, "corners", fail):
            Send(editor).motion(100, 100)
        stage.take_raised(Failure)

    stage.modal(hover, destroy)


def error_in_ok(stage: Stage) -> None:
    def accept(editor: Any) -> None:
        with patch.object(sketcher.S, "check", fail):
            button(editor, "OK").invoke()
        stage.take_raised(Failure)

    stage.modal(accept, click("Cancel"))


def error_in_the_form(stage: Stage) -> None:
    def choose(editor: Any) -> None:
        with patch.object(sketcher, "Form", fail):
            editor.list.selection_set("1")
            editor.update()
        stage.take_raised(Failure)

    stage.modal(choose, destroy)


def constructor_fails(*broken: tuple[Any, str], sketch: bool = True) -> Callable[[Stage], None]:
    """The constructor while these names of these objects raise when they are called."""

    def way(stage: Stage) -> None:
        with ExitStack() as stack:
            for owner, name in broken:
                stack.enter_context(patch.object(owner, name, fail))
            not_opened(stage, stage.sketch if sketch else None)

    return way


def not_opened(stage: Stage, sketch: Any, cls: Any = None) -> None:
    before = stage.root.winfo_children()
    try:
        (cls or sketcher.SketchEditor)(stage.root, sketch)
    except Failure:
        pass
    else:
        raise AssertionError("the constructor didn't fail")
    expect(stage.root.winfo_children() == before, "a window is left")
    stage.raised.clear()  # of laying out, which asks the same neighbours


def constructor_fails_at_the_nth_call(name: str) -> Callable[[Stage], None]:
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
                expect(left >= 0 and turn > 0, f"{name} wasn't asked")
                for window in stage.root.winfo_children():
                    window.destroy()
                turn = 0

    return way


def overridden_build_fails(stage: Stage) -> None:
    class Before(sketcher.SketchEditor):
        def _build(self, allow_plane: bool) -> None:
            raise Failure

    class After(sketcher.SketchEditor):
        def _build(self, allow_plane: bool) -> None:
            super()._build(allow_plane)
            raise Failure

    not_opened(stage, stage.sketch, Before)
    not_opened(stage, stage.sketch, After)


# -- uses --------------------------------------------------------------------------------------


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


def random_use(seed: int) -> Callable[[Stage], None]:
    """A dialog of the random user, the same one each time."""

    def way(stage: Stage) -> None:
        report = stage.root.report_callback_exception
        units, language = widgets.units(), i18n.language()
        try:
            session = Session(f"opening {seed}", lambda event: None)
            session.play(stage.root, sketcher.SketchEditor, MOST_EVENTS)
        finally:
            stage.root.report_callback_exception = report  # type: ignore[method-assign]
            widgets.set_units(units.name)
            i18n.set_language(language)

    return way


def used(use: Callable[[Any], None], ending: Callable[[Any], None]) -> Callable[[Stage], None]:
    def way(stage: Stage) -> None:
        stage.modal(use, ending)

    return way


def long_outline(stage: Stage) -> None:
    """An outline that Tk gets by its second command, and one that is refused."""
    turns = np.linspace(0, 2 * np.pi, 65)[:-1]
    ring = polygon(*(np.column_stack([np.cos(turns), np.sin(turns)]) / 50).tolist())
    crossing = polygon((0.0, 0.0), (0.01, 0.01), (0.01, 0.0), (0.0, 0.01))
    stage.modal(lambda editor: editor.select(0), destroy, sketch={"entities": [ring, crossing]})


WAYS: dict[str, Callable[[Stage], None]] = {
    "OK": accepted,
    "OK in a plane": accepted_in_a_plane,
    "OK of a new sketch": new_sketch,
    "Cancel": cancelled,
    "Escape, then Cancel": escape_then_cancel,
    "window closed": window_closed,
    "destroyed": destroyed,
    "opened, never run": never_run,
    "parent destroyed": parent_destroyed,
    "parent destroyed while drawing": parent_destroyed_while_drawing,
    "OK refused, then Cancel": refused_then_cancelled,
    "OK refused, then OK": refused_then_accepted,
    "error in a handler": error_in_a_handler,
    "error in OK": error_in_ok,
    "error in the form": error_in_the_form,
    "constructor: S.new": constructor_fails((sketcher.S, "new"), sketch=False),
    "constructor: deepcopy": constructor_fails((sketcher.copy, "deepcopy")),
    "constructor: outline": constructor_fails((sketcher.S, "outline")),
    "constructor: depths": constructor_fails((sketcher.S, "depths")),
    "constructor: form": constructor_fails((sketcher.SketchEditor, "show_props")),
    "constructor: fit": constructor_fails((sketcher.SketchEditor, "fit")),
    "constructor: _build overridden": overridden_build_fails,
    **{
        f"constructor: n-th {name}": constructor_fails_at_the_nth_call(name)
        for name in ("tr", "units", "num_text", "Tooltip", "px")
    },
    "every tip": used(every_tip, destroy),
    **{f"random use {seed}": random_use(seed) for seed in range(RANDOM_USES)},
    "long outlines": long_outline,
}
