"""Cases of hostility on real windows: neighbours that strike while Tk is in the middle of things.

Besides what strikes at stand-in editors: the dialog, its parent or one of its widgets is destroyed,
events are generated and handled, the dialog is run modally, in the middle of a construction or of
a repaint.

Tk itself uses memory that it has freed where a window that was never shown is destroyed while it is
being laid out; whether that crashes depends on what is allocated next. There, a strike that closes
the dialog is the last one.
"""

import tkinter as tk
from collections.abc import Callable
from typing import Any

from support.events import Send
from support.neighbours import one_of_each
from support.operations import TOOLS
from support.widgets import walk
from tandrel.gui import sketcher

from soak.hostility.attack import cyclic_list
from soak.hostility.cases import Case
from soak.hostility.neighbours import asked, neighbours

WIDGETS = ("canvas", "list", "props", "status", "points_text")
MODAL_MS = 20  # that a dialog is run at most


class Screen:
    """The main window that the cases of a process share, and what its callbacks raised."""

    def __init__(self) -> None:
        self._broken: list[str] = []
        self.open()
        self._items = self._open_and_close()

    def check(self) -> list[str]:
        """What is wrong with the windows after a case that has ended."""
        wrong = list(self._broken)
        self._broken.clear()
        items = self._open_and_close()
        if items != self._items:
            wrong.append(f"a fresh dialog shows {items} items, not {self._items}")
        return wrong

    def _open_and_close(self) -> int:
        editor = sketcher.SketchEditor(self.root, one_of_each())
        editor.update()
        items = len(editor.canvas.find_all())
        editor.destroy()
        self.root.update()
        return items

    def open(self) -> None:
        self.root = tk.Tk()
        self.root.report_callback_exception = self._report  # type: ignore[method-assign]
        self.root.update()
        self._commands = self._names()

    def _report(self, kind: type, error: BaseException, _trace: Any) -> None:
        if isinstance(error, SystemError):
            self._broken.append(f"in a callback: SystemError: {error}")

    def _names(self) -> set[str]:
        return set(self.root.tk.eval("info commands").split())

    def clear(self) -> None:
        """Close all windows but the main one, and take away what tkinter leaves behind.

        It leaves the commands of bindings that were made on a widget already destroyed.
        """
        tcl = self.root.tk
        for path in self.windows():
            tcl.call("destroy", path)
        for timer in tcl.splitlist(tcl.call("after", "info")):
            tcl.call("after", "cancel", timer)
        for name in self._names() - self._commands:
            tcl.deletecommand(name)
        self.root.children.clear()
        try:
            self.root.winfo_exists()
        except tk.TclError:  # the application was destroyed
            self.open()
        self.root.update()

    def windows(self) -> list[str]:
        try:
            return self.root.tk.eval("winfo children .").split()
        except tk.TclError:
            return []


class WindowCase(Case):
    """One dialog among attacked neighbours."""

    def __init__(self, seed: int, screen: Screen) -> None:
        self.screen = screen
        self.parent: Any = None
        super().__init__(seed)
        self.attack.answers.remove(cyclic_list)
        # Out of a callback tkinter keeps it for its main loop, and an earlier one for ever.
        self.attack.errors.remove(SystemExit)

    def meddling(self) -> list[Callable[[], object]]:
        return [
            *super().meddling(),
            self.destroy_dialog,
            self.destroy_dialog,
            self.destroy_widget,
            self.destroy_parent,
            self.handle_events,
            self.send_events,
            self.leave_sound,
            self.leave_sound,
        ]

    def leave_sound(self) -> None:
        """Nothing: a case that goes on says more than one that is broken at once."""

    def destroy_dialog(self) -> None:
        self.close(lambda: self.editor.destroy())

    def destroy_parent(self) -> None:
        if self.parent is not self.screen.root or self.dice.random() < 0.1:
            self.close(lambda: self.parent.destroy())

    def destroy_widget(self) -> None:
        name = self.dice.choice(WIDGETS)
        self.close(lambda: getattr(self.editor, name).destroy())

    def close(self, step: Callable[[], object]) -> None:
        shown = self.has_been_shown()
        self.attack.quietly(step)
        if not shown:
            self.attack.armed = False

    def has_been_shown(self) -> bool:
        try:
            return bool(self.editor.winfo_ismapped())
        except (tk.TclError, AttributeError):
            return False

    def handle_events(self) -> None:
        if self.has_been_shown():
            self.attack.quietly(self.editor.update)

    def send_events(self) -> None:
        self.attack.quietly(lambda: self.event()())

    def replacement(self, name: str) -> Any:
        if name in ("canvas", "list", "props") and self.dice.random() < 0.5:
            return getattr(self.editor, self.dice.choice(WIDGETS[:4]), None)
        return super().replacement(name)

    def override_in_class(self) -> None:
        self.override()  # tkinter's own methods are looked up in the class

    # -- what a user does ----------------------------------------------------------------------

    def event(self) -> Callable[[], object]:
        dice = self.dice

        def pixel() -> tuple[int, int]:
            return dice.randint(0, 600), dice.randint(0, 400)

        return dice.choice(
            [
                lambda: Send(self.editor).motion(*pixel()),
                lambda: Send(self.editor).click(*pixel()),
                lambda: Send(self.editor).stroke(pixel(), pixel(), pixel()),
                lambda: Send(self.editor).stroke(pixel(), pixel(), button=3),
                lambda: Send(self.editor).double_click(*pixel()),
                lambda: Send(self.editor).wheel(*pixel(), dice.choice([120, -120])),
                lambda: self.editor.tool.set(dice.choice(TOOLS)),
                lambda: self.editor.grid.set(self.text()),
                lambda: self.editor.list.selection_set(dice.randint(0, 4)),
                lambda: self.press_button(),
                lambda: self.type_size(),
                lambda: self.editor.geometry(f"{dice.randint(300, 900)}x{dice.randint(200, 700)}"),
                lambda: self.editor.update(),
                lambda: self.run_modally(),
            ]
        )

    def press_button(self) -> None:
        buttons = [widget for widget in walk(self.editor) if hasattr(widget, "invoke")]
        self.dice.choice(buttons).invoke()  # type: ignore[attr-defined]

    def type_size(self) -> None:
        self.editor.vars[self.dice.choice(sorted(self.editor.vars))].set(self.text())
        self.editor.apply_props()

    def run_modally(self) -> None:
        root, path = self.screen.root, str(self.editor)
        root.after(MODAL_MS, lambda: root.tk.call("destroy", path))
        self.editor.run()

    def operation(self) -> Callable[[], object]:
        return self.event() if self.dice.random() < 0.6 else super().operation()

    def names(self) -> dict[str, Any]:
        names = neighbours(self.attack, self.dice.random() < 0.3)
        for name in "Form", "Tooltip":
            names[name] = asked(name, getattr(sketcher, name), self.attack, trusted=True)
        return names

    def run(self) -> None:
        super().run()
        self.parent = None
        self.screen.clear()

    def use(self) -> None:
        root = self.screen.root
        self.parent = tk.Toplevel(root) if self.dice.random() < 0.3 else root
        root.update()
        before = self.screen.windows()
        case = self

        class Editor(sketcher.SketchEditor):
            def __init__(self, *arguments: Any) -> None:
                case.editor = self
                case.attack.armed = True
                super().__init__(*arguments)

        sketch = {"entities": self.entities(), "token": self.token()}
        opened: list[Any] = []
        self.attempt(lambda: opened.append(Editor(self.parent, sketch)))
        self.attack.armed = False
        if not opened:
            left = set(self.screen.windows()) - set(before)
            if left:
                self.found.append(f"a failed constructor left {left}")
            return
        self.attack.quietly(lambda: self.editor.update())
        super().use()
