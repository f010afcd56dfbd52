"""A user's hands: pointer, wheel and key events on a real editor window."""

import itertools
import time

from harness import patience

SHIFT, CONTROL, BUTTON1, BUTTON2, BUTTON3 = 0x1, 0x4, 0x100, 0x200, 0x400
BUTTON_STATE = {1: BUTTON1, 2: BUTTON2, 3: BUTTON3}


def settle(window, ready=None):
    """Handle events until the window is on the screen and `ready()`, if given, is true."""
    deadline = time.monotonic() + patience.SECONDS
    while True:
        window.update()
        if window.winfo_viewable() and (ready is None or ready()):
            return
        if time.monotonic() > deadline:
            raise TimeoutError(f"{window} did not appear")
        time.sleep(0.005)


class Send:
    """Events on an editor's canvas, in canvas pixels; `at` gives the pixel of a plane point.

    Presses carry time stamps far apart, so that two of them are a double click only if asked for.
    """

    clock = itertools.count(1_000, 10_000)

    def __init__(self, editor):
        self.editor = editor
        self.canvas = editor.canvas

    def at(self, point):
        """The whole pixel nearest to a plane point."""
        sx, sy = self.editor.to_screen(point)
        return round(sx), round(sy)

    def press(self, x, y, button=1):
        self.canvas.event_generate(f"<ButtonPress-{button}>", x=x, y=y, time=next(self.clock))

    def drag(self, x, y, button=1):
        self.canvas.event_generate("<Motion>", x=x, y=y, state=BUTTON_STATE[button])

    def release(self, x, y, button=1):
        state = BUTTON_STATE[button]
        self.canvas.event_generate(f"<ButtonRelease-{button}>", x=x, y=y, state=state)

    def motion(self, x, y):
        self.canvas.event_generate("<Motion>", x=x, y=y)

    def click(self, x, y, button=1):
        self.press(x, y, button)
        self.release(x, y, button)

    def double_click(self, x, y):
        stamp = next(self.clock)
        for moment in (stamp, stamp + 50):
            self.canvas.event_generate("<ButtonPress-1>", x=x, y=y, time=moment)
            self.canvas.event_generate("<ButtonRelease-1>", x=x, y=y, time=moment + 10)

    def stroke(self, *pixels, button=1):
        """Press at the first pixel, move through the others and release at the last."""
        self.press(*pixels[0], button)
        for pixel in pixels[1:]:
            self.drag(*pixel, button)
        self.release(*pixels[-1], button)

    def wheel(self, x, y, delta):
        self.canvas.event_generate("<MouseWheel>", x=x, y=y, delta=delta)

    def key(self, name, widget=None):
        """A key such as "Control-z", with the keyboard focus in the widget, or in the canvas."""
        widget = self.canvas if widget is None else widget
        focus(widget)
        *held, key = name.split("-")
        for event in ("KeyPress", "KeyRelease"):
            if widget.winfo_exists():
                widget.event_generate(f"<{'-'.join([*held, event, key])}>")


def focus(widget):
    """Put the keyboard focus into the widget, whatever window manager there is."""
    widget.focus_force()
    settle(widget.winfo_toplevel(), lambda: widget.focus_get() is widget)


def type_text(widget, text):
    """Replace the text of an entry as typing does: the variable and the bindings follow."""
    focus(widget)
    widget.delete(0, "end")
    widget.insert(0, text)


def run_while(editor, *steps, delay=50):
    """Run the modal dialog; each step is called with the editor while it is shown.

    A dialog that is still there after the last step is destroyed, so that a failing test ends.
    """
    failures = []

    def act():
        try:
            for step in steps:
                step(editor)
        except BaseException as error:
            failures.append(error)
        finally:
            if editor.winfo_exists():
                editor.destroy()

    editor.after(delay, act)
    result = editor.run()
    if failures:
        raise failures[0]
    return result
