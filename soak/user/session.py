"""One dialog of a random user, from its opening to its end."""

from __future__ import annotations

import copy
import itertools
import tkinter as tk
import traceback
from collections.abc import Callable, Iterator
from random import Random
from typing import Any

import numpy as np

from soak.user import random_sketches
from soak.user.checks import Fault, Ledger, check_errors, check_screen, check_state, demand, same
from soak.user.habits import Habits
from soak.user.hands import Action, Hands
from soak.user.screen import Eye
from soak.user.shadow import Shadow
from tandrel.gui.i18n import languages, set_language
from tandrel.gui.widgets import SYSTEMS, main_window, set_units

LONGEST = 250  # events
PAINTED_EVERY = 12  # events; the screen follows then, and options that nobody set are looked at
TYPED_IN = ("TEntry", "TCombobox", "TSpinbox")
ENDING: list[Action] = [("push", "cancel")]

Script = Callable[[Shadow], Iterator[Action]]
EditorClass = Callable[..., Any]


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
        self._seed = seed
        self._begin = begin
        self._dice = dice = Random(seed)
        self.sound = dice.random() < 0.65
        self.sketch = random_sketches.sketch(dice, self.sound)
        self.arguments = {
            "dim": dice.choice([3, 3, 3, 2]),
            "title": dice.choice(["", "Profile"]),
            "references": random_sketches.references(dice),
            "allow_plane": dice.random() < 0.8,
        }
        self.units = dice.choice(list(SYSTEMS))
        self.language = dice.choice(list(languages()))
        self._length = dice.randint(20, LONGEST)
        self.steps = 0

    def play(self, root: tk.Tk, cls: EditorClass, most: int) -> None:
        """Open the dialog and use it for at most so many events; a Fault where one is found."""

        def script(shadow: Shadow) -> Iterator[Action]:
            actions = Habits(self._dice, shadow).actions()
            for self.steps in range(1, min(self._length, most) + 1):
                self._begin(self.steps)
                yield next(actions)

        self._begin(0)
        set_units(self.units)
        set_language(self.language)
        try:
            with np.errstate(all="ignore"):  # the shadow's numbers may be of any size
                Dialog(root, self, copy.deepcopy(self.sketch)).run(cls, script)
        finally:
            for window in root.winfo_children():
                window.destroy()
            root.update()


class Dialog:
    """An editor, its shadow, and the errors that come out of its window's callbacks."""

    def __init__(self, root: tk.Tk, session: Session, given: Any) -> None:
        self._root = root
        self._session = session
        self._given = given
        self._raised: list[BaseException] = []
        root.report_callback_exception = self._report  # type: ignore[assignment]
        self._editor: Any = None

    def _report(self, _kind: object, error: BaseException, _trace: object) -> None:
        self._raised.append(error)

    # What the shadow asks the window for.

    def size(self) -> tuple[int, int]:
        canvas = self._editor.canvas
        return canvas.winfo_width(), canvas.winfo_height()

    def is_typing(self) -> bool:
        return self._root.tk.eval("catch {winfo class [focus]} class; set class") in TYPED_IN

    def run(self, cls: EditorClass, script: Script) -> None:
        """Open the dialog modally, do what the script says, and end it."""
        shadow = self._open(cls, self._session.arguments)
        if shadow is None:
            return
        faults: list[BaseException] = []
        self._editor.after(0, self._act, shadow, script, faults)
        result = self._editor.run()
        if faults:
            raise faults[0]
        demand(same(result, shadow.result), "result of run", shadow.result, result)
        demand(result is None or result is self._editor.sk, "the result is another sketch")
        demand(result is None or result is not self._given, "the result is the caller's sketch")
        self._check_given()

    def _open(self, cls: EditorClass, arguments: dict[str, Any]) -> Shadow | None:
        """Make the editor and its shadow; None where neither can be."""
        expected: list[BaseException] = []
        raised: list[BaseException] = []
        shadow: Any = None
        try:
            shadow = Shadow(self._given, arguments["dim"], arguments["references"], self)
        except Exception as error:
            expected.append(error)
        try:
            self._editor = cls(self._root, self._given, **arguments)
        except Exception as error:
            raised.append(error)
        check_errors(expected, raised, self._session.sound)
        self._check_given()
        if expected:
            demand(not self._root.winfo_children(), "a dialog that couldn't be made is left")
            return None
        return shadow

    def _act(self, shadow: Shadow, script: Script, faults: list[BaseException]) -> None:
        """Use the dialog from within its modal loop, which can't pass errors on."""
        try:
            self._use(shadow, script)
        except BaseException as error:
            faults.append(error)
            if self._editor.winfo_exists():
                self._editor.destroy()

    def _use(self, shadow: Shadow, script: Script) -> None:
        editor = self._editor
        editor.update()
        shadow.fit()
        hands, eye = Hands(editor, shadow), Eye(editor)
        self._check_entries(hands)
        ledger = Ledger(editor, shadow)
        self._check(hands, eye, shadow, full=True)
        for count, action in enumerate(itertools.chain(script(shadow), ENDING), 1):
            ledger.take()
            hands.do(action)
            if shadow.closed:
                break
            demand(bool(editor.winfo_exists()), "the dialog is gone")
            ledger.check(action)
            if paints := count % PAINTED_EVERY == 0:
                editor.update()
            self._check(hands, eye, shadow, full=paints)
        demand(not editor.winfo_exists(), "the dialog is still open")
        self._check_errors(hands)
        demand(same(editor.sk, shadow.sk), "sketch", shadow.sk, editor.sk)

    def _check_entries(self, hands: Hands) -> None:
        """Only a sketch in space can be placed, on another plane only where that is allowed."""
        in_space = self._session.arguments["dim"] == 3
        allowed = {"plane": in_space and self._session.arguments["allow_plane"], "offset": in_space}
        found = {name: hands.has(name) for name in allowed}
        demand(found == allowed, "entries", allowed, found)

    def _check(self, hands: Hands, eye: Eye, shadow: Shadow, full: bool) -> None:
        self._check_errors(hands)
        self._check_given()
        check_state(self._editor, shadow)
        check_screen(eye.read(), shadow)
        if full:
            demand(eye.strays() == "", "options of canvas items", "", eye.strays())

    def _check_errors(self, hands: Hands) -> None:
        check_errors(hands.errors, self._raised, self._session.sound)
        hands.errors.clear()
        self._raised.clear()

    def _check_given(self) -> None:
        given, before = self._given, self._session.sketch
        demand(same(given, before), "the caller's sketch was changed", before, given)


def told(error: BaseException) -> str:
    """A fault in words; an error of the tool's own with its trace."""
    return str(error) if isinstance(error, Fault) else "".join(traceback.format_exception(error))
