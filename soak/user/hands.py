"""A user's hands on an editor's window: each action goes to the real widgets as Tk events.

What an event means to the editor's shadow is told by bindings beside the module's own, so that Tk
itself decides, for both alike, what is a double click, a focus that left, or a row selected.
"""

import sys
import tkinter as tk
from collections.abc import Callable
from tkinter import ttk
from typing import Any

import _tkinter

from soak.user.shadow import Shadow
from support.desk import tool_button
from support.widgets import walk
from tandrel.gui.i18n import set_language
from tandrel.gui.widgets import set_units

Action = tuple[Any, ...]
WINDOW_EVENTS = _tkinter.WINDOW_EVENTS | _tkinter.DONT_WAIT
BUTTON_STATE = {0: 0, 1: 0x100, 2: 0x200, 3: 0x400}
TYPED = ("grid", "sides", "offset", "plane")
WHEEL = {"up": 120, "down": -120, "still": 0}
ZOOM = 1.2
QUICK_MS, SLOW_MS = 50, 1000


class Hands:
    """Does actions, such as ("press", 1, 20, 30, False), to an editor and to its shadow.

    An action whose widget isn't there does nothing. What the shadow's operations let through is
    collected in `errors`.
    """

    # Of all dialogs: Tk takes two presses at nearly the same time for a double click.
    clock = 0

    def __init__(self, editor: Any, shadow: Shadow) -> None:
        self.editor = editor
        self.shadow = shadow
        self.errors: list[BaseException] = []
        self._send = editor.canvas.event_generate
        self.fixed = {"canvas": editor.canvas, "list": editor.list, "editor": editor}
        for widget in walk(editor):
            if isinstance(widget, ttk.Entry):
                for name in TYPED:
                    if str(widget.cget("textvariable")) == str(getattr(editor, name)):
                        self.fixed[name] = widget
        (self._snap,) = of_class(editor, ttk.Checkbutton)
        # In the order in which the window is built.
        names = "fit", "delete", "cancel", "ok"
        self._buttons = dict(zip(names, of_class(editor, ttk.Button)))
        self._listen()

    def do(self, action: Action) -> None:
        """Do one action and let Tk handle what follows from it at once."""
        # Interned: the interpreter keeps the names of methods that it looked up.
        getattr(self, sys.intern("_do_" + action[0]))(*action[1:])
        self.settle()

    def settle(self) -> None:
        """Handle window events; the screen is left as it is."""
        while self.editor.tk.dooneevent(WINDOW_EVENTS):
            pass

    # -- the shadow --------------------------------------------------------------------------

    def _tell(self, operation: Callable[..., None], *arguments: Any) -> None:
        try:
            operation(*arguments)
        except Exception as error:
            self.errors.append(error)

    def _listen(self) -> None:
        shadow, canvas = self.shadow, self.editor.canvas

        def at(operation: Callable[[int, int], None]) -> Callable[[Any], None]:
            return lambda event: self._tell(operation, event.x, event.y)

        def plain(operation: Callable[[], None]) -> Callable[[Any], None]:
            return lambda event: self._tell(operation)

        def zoom(event: Any) -> None:
            closer = event.num == 4 or event.num != 5 and event.delta > 0
            self._tell(shadow.zoom, ZOOM if closer else 1 / ZOOM, event.x, event.y)

        bindings: list[tuple[Any, str, Callable[[Any], None]]] = [
            (canvas, "<Configure>", plain(shadow.redraw)),
            (canvas, "<ButtonPress-1>", at(shadow.press)),
            (canvas, "<B1-Motion>", at(shadow.drag_to)),
            (canvas, "<ButtonRelease-1>", at(shadow.release)),
            (canvas, "<Double-Button-1>", plain(shadow.close_line)),
            (canvas, "<Motion>", at(shadow.motion)),
            (canvas, "<ButtonPress-2>", at(shadow.pan_start)),
            (canvas, "<ButtonPress-3>", at(shadow.pan_start)),
            (canvas, "<B2-Motion>", at(shadow.pan_move)),
            (canvas, "<B3-Motion>", at(shadow.pan_move)),
            (canvas, "<MouseWheel>", zoom),
            (canvas, "<Button-4>", zoom),
            (canvas, "<Button-5>", zoom),
            (self.fixed["grid"], "<Return>", plain(shadow.redraw)),
            (self.fixed["grid"], "<FocusOut>", plain(shadow.redraw)),
            (self.editor.list, "<<TreeviewSelect>>", self._row_selected),
            (self.editor, "<Escape>", plain(shadow.cancel_drawing)),
            (self.editor, "<Return>", plain(shadow.close_line)),
            (self.editor, "<Delete>", self._delete_typed),
            (self.editor, "<BackSpace>", self._delete_typed),
        ]
        if "plane" in self.fixed:
            bindings.append((self.fixed["plane"], "<<ComboboxSelected>>", self._plane_chosen))
        for widget, event, handler in bindings:
            widget.bind(event, handler, add="+")

    def _row_selected(self, _event: Any) -> None:
        self._tell(self.shadow.list_selected, self.editor.list.selection())

    def _delete_typed(self, event: Any) -> None:
        if event.widget.winfo_class() != "Text":  # there the key edits the corners
            self._tell(self.shadow.delete)

    def _plane_chosen(self, _event: Any) -> None:
        self.shadow.plane.set(self.fixed["plane"].get())
        self._tell(self.shadow.choose_plane)

    # -- actions -----------------------------------------------------------------------------

    def _do_press(self, button: int, x: int, y: int, quick: bool) -> None:
        Hands.clock += QUICK_MS if quick else SLOW_MS
        self._send(f"<ButtonPress-{button}>", x=x, y=y, time=Hands.clock)

    def _do_motion(self, button: int, x: int, y: int) -> None:
        self._send("<Motion>", x=x, y=y, state=BUTTON_STATE[button], time=Hands.clock)

    def _do_release(self, button: int, x: int, y: int) -> None:
        state, time = BUTTON_STATE[button], Hands.clock
        self._send(f"<ButtonRelease-{button}>", x=x, y=y, state=state, time=time)

    def _do_wheel(self, way: str, x: int, y: int) -> None:
        if way in WHEEL:
            self._send("<MouseWheel>", x=x, y=y, delta=WHEEL[way])
        else:
            self._send(f"<Button-{way}>", x=x, y=y, time=Hands.clock)

    def _do_tool(self, tool: str) -> None:
        self.shadow.tool.set(tool)
        self._tell(self.shadow.cancel_drawing)
        tool_button(self.editor, tool).invoke()

    def _do_push(self, name: str) -> None:
        """Push one of the window's buttons."""
        if name == "snap":
            self.shadow.snap.set(not self.shadow.snap.get())
            self._snap.invoke()
        elif name == "apply":
            buttons = of_class(self.editor.props, ttk.Button)
            if buttons:
                self._tell(self.shadow.apply_props)
                buttons[0].invoke()
        else:
            self._tell(getattr(self.shadow, name))
            self._buttons[name].invoke()

    def _do_key(self, target: str, keysym: str) -> None:
        widget = self._do_focus(target)
        if widget is None:
            return
        cell = self._cell(target)
        if keysym == "Return" and target.startswith("field"):
            self._tell(self.shadow.apply_props)
        widget.event_generate(f"<KeyPress-{keysym}>")
        self._note(target, widget, cell)

    def _do_focus(self, target: str) -> Any:
        """The widget once it has the keyboard, None where it can't have it."""
        widget = self._widget(target)
        if widget is None:
            return None
        widget.focus_set()
        self.settle()
        return widget if widget.winfo_exists() and widget.focus_get() is widget else None

    def _do_type(self, target: str, text: str) -> None:
        widget = self._widget(target)
        if widget is None:
            return
        first = "1.0" if target == "corners" else 0
        widget.delete(first, "end")
        widget.insert(first, text)
        self._note(target, widget, self._cell(target))

    def _do_row(self, row: str | None, by_click: bool) -> None:
        rows = self.editor.list
        if row is None:
            rows.selection_set(())
        elif rows.exists(row):
            rows.see(row)
            self.editor.update_idletasks()
            box = rows.bbox(row)
            if not by_click or not box:
                rows.selection_set(row)
                return
            Hands.clock += SLOW_MS
            place = {"x": box[0] + 3, "y": box[1] + 3, "time": Hands.clock}
            rows.event_generate("<ButtonPress-1>", **place)
            rows.event_generate("<ButtonRelease-1>", **place)

    def _do_plane(self, index: int) -> None:
        if "plane" in self.fixed:
            chooser = self.fixed["plane"]
            chooser.current(index)
            chooser.event_generate("<<ComboboxSelected>>")

    def _do_units(self, name: str) -> None:
        set_units(name)

    def _do_language(self, code: str) -> None:
        set_language(code)

    def _do_resize(self, width: int, height: int) -> None:
        self.editor.geometry(f"{width}x{height}")
        self.editor.update()

    # -- widgets -----------------------------------------------------------------------------

    def _widget(self, target: str) -> Any:
        """A widget by its name, such as "canvas" or "field 2"; None where there is none."""
        props = self.editor.props
        in_form = by_name(of_class(props, ttk.Entry), of_class(props, tk.Text))
        return {**self.fixed, **in_form}.get(target)

    def _cell(self, target: str) -> list[str] | None:
        """What the shadow knows of a widget in the form."""
        form = self.shadow.form
        entries, texts = ([cell for cell in form if cell[0] == kind] for kind in ("TEntry", "Text"))
        return by_name(entries, texts).get(target)

    def _note(self, target: str, widget: Any, cell: list[str] | None) -> None:
        """Let the shadow know what a widget that was typed in holds now."""
        if not widget.winfo_exists():
            return
        if cell is not None:
            cell[1] = widget.get("1.0", "end-1c") if target == "corners" else widget.get()
        elif target in TYPED:
            getattr(self.shadow, target).set(widget.get())


def by_name(entries: list[Any], texts: list[Any]) -> dict[str, Any]:
    """What is typed in in the property form."""
    return {
        **{f"field {k}": entry for k, entry in enumerate(entries)},
        **dict(zip(["corners"], texts)),
    }


def of_class(widget: Any, cls: type) -> list[Any]:
    """The widgets of exactly this class."""
    return [found for found in walk(widget) if type(found) is cls]
