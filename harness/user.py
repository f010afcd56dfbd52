"""A replayed user: real pointer and key events, sent to an application in this very process.

A script is a generator that uses the `User` and yields `until(condition)` wherever a person would
wait to see something. The application's own event loop, also that of a modal dialog, runs the
script between its events: no thread is needed, and widgets can be asked where they are on screen.
"""

from __future__ import annotations

import os
import subprocess
import time
import tkinter as tk
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any, NamedTuple, Optional

from PIL import Image, ImageGrab

from harness import patience

_TURN_MS = 15


class Wait(NamedTuple):
    condition: Callable[[], object]
    what: str


Script = Iterator[Wait]


def until(condition: Callable[[], object], what: str) -> Wait:
    """What a script yields to go on when the condition holds; too late is a TimeoutError."""
    return Wait(condition, what)


def play(root: tk.Tk, script: Script, last_sight: Path) -> None:
    """Run the application's event loop until the script ends, then destroy the window.

    An error of the script, or of any of the application's callbacks, ends the play and is raised;
    what the screen showed then is in the picture `last_sight`.
    """
    errors: list[BaseException] = []

    def stop(_kind: object, error: BaseException, _trace: object) -> None:
        errors.append(error)
        if len(errors) > 1:
            return
        try:
            ImageGrab.grab(xdisplay=root.winfo_screen()).save(last_sight)
        finally:
            # A file dialog would wait for its answer for ever.
            root.tk.eval("catch {set ::tk::Priv(selectFilePath) {}}")
            root.destroy()

    def turn(wait: Optional[Wait] = None, deadline: float = 0.0) -> None:
        while wait is None or wait.condition():
            wait = next(script, None)
            deadline = time.monotonic() + patience.SECONDS
            if wait is None:
                root.destroy()
                return
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited too long: {wait.what}")
        root.after(_TURN_MS, turn, wait, deadline)

    root.report_callback_exception = stop
    root.after_idle(turn)
    # Not `mainloop`, which goes on while this process has any other main window.
    while root.tk.eval("info commands ."):
        root.tk.dooneevent()
    if errors:
        raise errors[0]


class User:
    """Hands and eyes on one display. Sizes and places are read off the widgets themselves."""

    def __init__(self, root: tk.Tk, display_name: str) -> None:
        self.root = root
        self.display_name = display_name
        self._environment = {**os.environ, "DISPLAY": display_name}

    def move(self, x: float, y: float, within: Optional[tk.Misc] = None) -> None:
        """Move the pointer to a pixel of the screen, or of a widget.

        Where a widget stands is then asked of the X server as the pointer goes there: what Tk knows
        of it may be a moment old.
        """
        window = [] if within is None else ["--window", str(within.winfo_id())]
        self._xdotool("mousemove", *window, str(round(x)), str(round(y)))

    def press(self, button: int = 1) -> None:
        self._xdotool("mousedown", str(button))

    def release(self, button: int = 1) -> None:
        self._xdotool("mouseup", str(button))

    def click(self, button: int = 1, times: int = 1) -> None:
        """Click where the pointer is."""
        self._xdotool("click", "--repeat", str(times), "--delay", "30", str(button))

    def key(self, *keys: str) -> None:
        # The server sends keys to the window under the pointer. Once it has answered it knows which
        # ones the application has destroyed: keys for those would be lost.
        self.root.winfo_pointerxy()
        self._xdotool("key", "--delay", "20", *keys)

    def type(self, text: str) -> None:
        self._xdotool("type", "--delay", "20", "--", text)

    def click_on(self, widget: tk.Misc) -> Script:
        """Click the middle of a widget once it stands still on the screen."""
        yield from self.steady(widget)
        yield from self.over(widget, widget.winfo_width() / 2, widget.winfo_height() / 2)
        self.click()

    def over(self, widget: tk.Misc, x: float, y: float) -> Script:
        """Move to a pixel of a widget, and see the pointer over it."""
        self.move(x, y, widget)

        def is_there() -> bool:
            place = widget.winfo_pointerxy()
            return str(widget.tk.call("winfo", "containing", *place)) == str(widget)

        yield until(is_there, f"the pointer to be over {widget}")

    def steady(self, widget: tk.Misc) -> Script:
        """Wait until a widget is shown and neither moves nor grows any more."""
        seen: list[tuple[int, ...]] = []

        def still() -> bool:
            place = widget.winfo_rootx(), widget.winfo_rooty()
            seen.append((*place, widget.winfo_width(), widget.winfo_height()))
            return bool(widget.winfo_viewable()) and len(seen) > 8 and len(set(seen[-8:])) == 1

        yield until(still, f"{widget} to stand still")

    def focused(self, window: tk.Misc) -> Script:
        """Wait until keys reach a window."""

        def has_keys() -> bool:
            focus = window.focus_displayof()
            return focus is not None and focus.winfo_toplevel() is window

        yield until(has_keys, f"the keys to reach {window}")

    def fill_in(self, entry: tk.Misc, text: str) -> Script:
        """Replace what an entry holds: click into it, select it all and type."""
        yield from self.click_on(entry)
        yield until(lambda: str(entry.tk.call("focus")) == str(entry), "the cursor in the entry")
        yield from self.type_over(entry, text)

    def type_over(self, entry: tk.Misc, text: str) -> Script:
        """Replace what an entry holds that has the keyboard."""
        tcl = entry.tk.call
        self.key("ctrl+slash")
        yield until(
            lambda: not tcl(entry, "get") or tcl(entry, "selection", "present"),
            "the text to be selected",
        )
        self.type(text)
        yield until(lambda: str(tcl(entry, "get")) == text, f"{text!r} in the entry")

    def choose_from_menu(self, bar: tk.Menu, menu: int, *entries: int) -> Script:
        """Click a menu of a window's menu bar, an entry of it, one of the submenu that opens ..."""
        yield from self.steady(self.root)
        # What a window shows is a clone of its menu bar, with clones of its menus.
        shown = f".#{str(bar)[1:]}"
        tcl = self.root.tk.call
        self.move(tcl(shown, "xposition", menu) + 8, 8, handle(self.root, shown))
        self.click()
        first = opened = tcl(shown, "entrycget", menu, "-menu")
        for entry in entries:
            yield from self._light_up(opened, entry)
            if tcl(opened, "type", entry) == "cascade":
                opened = tcl(opened, "entrycget", entry, "-menu")
            self.click()
        # What the entry does may make the menus anew.
        yield until(
            lambda: not (tcl("winfo", "exists", first) and tcl("winfo", "viewable", first)),
            f"menu {menu} to close",
        )

    def _light_up(self, menu: object, entry: int) -> Script:
        """Move to an entry of a menu that opens, straight to the right and then up or down."""
        tcl = self.root.tk.call
        yield until(lambda: tcl("winfo", "viewable", menu), f"{menu} to open")
        for y in (8, tcl(menu, "yposition", entry) + 8):
            self.move(30, y, handle(self.root, str(menu)))
        lit = f"entry {entry} to light up"
        yield until(lambda: tcl(menu, "index", "active") == entry, lit)

    def picture(self, window: tk.Misc, path: Path) -> Script:
        """Save what the screen shows of a window, once it shows the same twice."""
        left, top = window.winfo_rootx(), window.winfo_rooty()
        box = left, top, left + window.winfo_width(), top + window.winfo_height()
        seen: list[Image.Image] = []

        def shown() -> bool:
            seen.append(ImageGrab.grab(box, xdisplay=self.display_name))
            return len(seen) > 3 and seen[-1].tobytes() == seen[-2].tobytes()

        yield until(shown, "the screen to come to rest")
        seen[-1].save(path)

    def _xdotool(self, *arguments: str) -> None:
        subprocess.run(
            ["xdotool", *arguments], env=self._environment, check=True, timeout=patience.SECONDS
        )


def handle(root: tk.Tk, path: str) -> tk.Misc:
    """A widget that Tk has made for itself, such as those of its file dialog."""
    widget = tk.Misc()
    widget.tk, widget._w = root.tk, path  # type: ignore[attr-defined]
    return widget


def descendants(widget: tk.Misc) -> Iterator[tk.Misc]:
    """All widgets within a widget, in the order in which they were made."""
    for child in widget.winfo_children():
        yield child
        yield from descendants(child)


def find(within: tk.Misc, kind: str, **options: object) -> Any:
    """The one widget of a Tk class with these options; LookupError if there isn't just one."""
    found = [
        widget
        for widget in descendants(within)
        if widget.winfo_class() == kind
        and all(str(widget.cget(name)) == str(value) for name, value in options.items())
    ]
    if len(found) != 1:
        raise LookupError(f"{len(found)} widgets {kind} with {options}")
    return found[0]
