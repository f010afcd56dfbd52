"""One dialog of a random user, from its opening to its end."""

import copy
import tkinter as tk
import traceback
from collections.abc import Callable, Iterator
from random import Random
from typing import Any

import numpy as np

from soak.user import random_sketches
from soak.user.checks import Fault, check_errors, check_kept, check_screen, check_state, demand
from soak.user.checks import same, shapes_of
from soak.user.habits import Habits
from soak.user.hands import Action, Hands
from soak.user.screen import Eye
from soak.user.shadow import Shadow
from support.events import run_while
from tandrel.gui.i18n import languages, set_language
from tandrel.gui.widgets import SYSTEMS, main_window, set_units

LONGEST = 250  # events
PAINTED_EVERY = 12  # events; the screen follows then, and options that nobody set are looked at
TYPED_IN = ("TEntry", "TCombobox", "TSpinbox")
ENDING: Action = ("push", "cancel")


def open_root() -> tk.Tk:
    """A main window like the application's."""
    root = main_window("Soak")
    root.geometry("320x240+20+20")
    root.update()
    return root


class Session:
    """What one seed gives: a sketch, the arguments of a dialog, and what its user does.

    Nothing depends on other sessions. `begin` is told the number of each event before it is done,
    from 1; before the dialog is opened it is told 0. `steps` is how many events there were so far.
    """

    def __init__(self, seed: str, begin: Callable[[int], None]) -> None:
        self._begin = begin
        self._dice = dice = Random(seed)
        self.sound = dice.random() < 0.65
        self.sketch = random_sketches.sketch(dice, self.sound)
        self.arguments: dict[str, Any] = {
            "dim": dice.choice([3, 3, 3, 2]),
            "title": dice.choice(["", "Profile"]),
            "references": random_sketches.references(dice),
            "allow_plane": dice.random() < 0.8,
        }
        self.units = dice.choice(list(SYSTEMS))
        self.language = dice.choice(list(languages()))
        self._length = dice.randint(20, LONGEST)
        self.steps = 0
        self._given = copy.deepcopy(self.sketch)
        self._raised: list[BaseException] = []  # out of the window's callbacks
        self._editor: Any = None

    def play(self, root: tk.Tk, cls: Callable[..., Any], most: int) -> None:
        """Open the dialog and use it for at most so many events; a Fault where one is found."""
        root.report_callback_exception = (  # type: ignore[method-assign]
            lambda kind, error, trace: self._raised.append(error)
        )
        self._begin(0)
        set_units(self.units)
        set_language(self.language)
        try:
            with np.errstate(all="ignore"):  # the shadow's numbers may be of any size
                shadow = self._open(root, cls)
                if shadow is not None:
                    self._run(shadow, min(self._length, most))
        finally:
            for window in root.winfo_children():
                window.destroy()
            root.update()

    # What the shadow asks the window for.

    def size(self) -> tuple[int, int]:
        canvas = self._editor.canvas
        return canvas.winfo_width(), canvas.winfo_height()

    def is_typing(self) -> bool:
        return self._editor.tk.eval("catch {winfo class [focus]} class; set class") in TYPED_IN

    # The dialog, from its opening to its end.

    def _open(self, root: tk.Tk, cls: Callable[..., Any]) -> Shadow | None:
        """Make the editor and its shadow; None where neither can be."""
        dim, references = self.arguments["dim"], self.arguments["references"]
        shadow, expected = attempted(lambda: Shadow(self._given, dim, references, self))
        self._editor, raised = attempted(lambda: cls(root, self._given, **self.arguments))
        check_errors(expected, raised, self.sound)
        self._check_given()
        if expected:
            demand(not root.winfo_children(), "a dialog that couldn't be made is left")
        return shadow

    def _run(self, shadow: Shadow, count: int) -> None:
        """Show the dialog, use it and end it."""
        result = run_while(self._editor, lambda editor: self._use(editor, shadow, count), delay=0)
        demand(same(result, shadow.result), "result of run", shadow.result, result)
        demand(result is None or result is self._editor.sk, "the result is another sketch")
        demand(result is None or result is not self._given, "the result is the caller's sketch")
        self._check_given()

    def _actions(self, shadow: Shadow, count: int) -> Iterator[Action]:
        actions = Habits(self._dice, shadow).actions()
        for self.steps in range(1, count + 1):
            self._begin(self.steps)
            yield next(actions)
        yield ENDING

    def _use(self, editor: Any, shadow: Shadow, count: int) -> None:
        editor.update()
        shadow.fit()
        hands, eye = Hands(editor, shadow), Eye(editor)
        self._check_entries(hands)
        self._check(hands, eye, shadow, full=True)
        for number, action in enumerate(self._actions(shadow, count), 1):
            before = shapes_of(shadow, editor)
            hands.do(action)
            if shadow.closed:
                break
            demand(bool(editor.winfo_exists()), "the dialog is gone")
            check_kept(before, shapes_of(shadow, editor), action)
            if paints := number % PAINTED_EVERY == 0:
                editor.update()
            self._check(hands, eye, shadow, full=paints)
        demand(not editor.winfo_exists(), "the dialog is still open")
        self._check_errors(hands)
        demand(same(editor.sk, shadow.sk), "sketch", shadow.sk, editor.sk)

    def _check_entries(self, hands: Hands) -> None:
        """Only a sketch in space can be placed, on another plane only where that is allowed."""
        in_space = self.arguments["dim"] == 3
        allowed = {"plane": in_space and self.arguments["allow_plane"], "offset": in_space}
        found = {name: name in hands.fixed for name in allowed}
        demand(found == allowed, "entries", allowed, found)

    def _check(self, hands: Hands, eye: Eye, shadow: Shadow, full: bool) -> None:
        self._check_errors(hands)
        self._check_given()
        check_state(self._editor, shadow)
        check_screen(eye.read(), shadow)
        if full:
            demand(eye.strays() == "", "options of canvas items", "", eye.strays())

    def _check_errors(self, hands: Hands) -> None:
        check_errors(hands.errors, self._raised, self.sound)
        hands.errors.clear()
        self._raised.clear()

    def _check_given(self) -> None:
        given, before = self._given, self.sketch
        demand(same(given, before), "the caller's sketch was changed", before, given)


def attempted(make: Callable[[], Any]) -> tuple[Any, list[BaseException]]:
    """What is made, or None and the error."""
    try:
        return make(), []
    except Exception as error:
        return None, [error]


def told(error: BaseException) -> str:
    """A fault in words; an error of the tool's own with its trace."""
    return str(error) if isinstance(error, Fault) else "".join(traceback.format_exception(error))
