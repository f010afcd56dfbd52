"""A user at the application's window: what is shown, what is asked, what the editor gives back."""

import os

import numpy as np
from harness.user import User, handle, until
from tandrel.application.dialogs import Dialog, Question

from .canvas import of_kind
from .events import settle


def in_editor(app, act):
    """Press the button that opens the editor, act(editor) in it, and leave it if still open."""
    opened = []

    def look():
        editors = [w for w in app.root.winfo_children() if hasattr(w, "sk")]
        if not editors or app.root.grab_current() is not editors[0]:
            app.root.after(5, look)
            return
        opened.append(editors[0])
        try:
            act(editors[0])
        finally:
            if editors[0].winfo_exists():
                editors[0].destroy()

    app.root.after(5, look)
    app.edit_button.invoke()
    assert opened


def accept_bore(editor, diameter="66"):
    """Give the flange another bore and press OK."""
    editor.select(1)
    editor.vars["r"].set(str(float(diameter) / 2))
    editor.apply_props()
    editor.ok()


def dialogs(root, kind=Dialog):
    """The application's own modal windows that are shown."""
    return [w for w in root.winfo_children() if isinstance(w, kind) and w.winfo_viewable()]


def answering(root, *answers):
    """Answer the questions to come, one after the other; None closes one, and any that is more.

    Gives the texts that were asked, as they come.
    """
    asked = []
    left = list(answers)

    def look():
        for question in dialogs(root, Question):
            if root.grab_current() is question:
                asked.append(question.body.winfo_children()[0].cget("text"))
                answer = left.pop(0) if left else None
                if answer is None:
                    question.close()
                else:
                    question.buttons[answer].invoke()
        root.after(5, look)

    root.after(5, look)
    return asked


def status(editor):
    """What the editor's status line says."""
    return str(editor.status.cget("text"))


def fills(view):
    """The colours of the outlines on a canvas, bottom up."""
    return [item.options["fill"] for item in of_kind(view, "polygon")]


def outlines(view):
    """The outlines on a canvas, bottom up: arrays of their points."""
    return [np.array(item.coords).reshape(-1, 2) for item in of_kind(view, "polygon")]


def texts(view):
    """The texts on a canvas."""
    return [item.options["text"] for item in of_kind(view, "text")]


def labels(menu):
    """What the entries of a menu are called; "" for separators."""
    kinds = [menu.type(i) for i in range(menu.index("end") + 1)]
    return ["" if k == "separator" else menu.entrycget(i, "label") for i, k in enumerate(kinds)]


def state(menu, label):
    return menu.entrycget(labels(menu).index(label), "state")


def choose(menu, label):
    """Let the entry of this name act, as a click on it does."""
    menu.invoke(labels(menu).index(label))


def shown(app):
    settle(app.root, lambda: app.view.winfo_width() > 100)


class Person(User):
    """A user at the application: what they see is awaited before they go on."""

    def __init__(self, app, display_name):
        super().__init__(app.root, display_name)
        self.app = app

    def menu(self, letter, *keys):
        """Open a menu by Alt and its letter and go through it by keys."""
        yield from self.focused(self.root)
        self.move(0, 0)  # out of the way: where the pointer rests an opening menu lights up
        self.key(f"alt+{letter}")
        yield until(lambda: self.root.tk.call("grab", "current"), "the menu")
        self.key(*keys)

    def type_path(self, path):
        """Type a path into Tk's own file dialog."""
        shown = "expr {[focus] ne {} && [string match *__tk_filedialog* [focus]]}"
        yield until(lambda: self.root.tk.eval(shown) == "1", "the file dialog")
        entry = handle(self.root, ".__tk_filedialog.contents.f2.ent")
        yield from self.fill_in(entry, os.fspath(path))
        self.key("Return")

    def asked(self):
        yield until(lambda: dialogs(self.root), "a question")
        (question,) = dialogs(self.root)
        first = next(iter(question.buttons.values()))
        yield until(lambda: question.focus_get() is first, "the keys to reach the question")

    def change_the_bore(self):
        yield from self.focused(self.root)
        # The button has the focus when the window opens.
        self.key("space")
        yield until(self._editors, "the editor")
        (editor,) = self._editors()
        yield until(lambda: editor.grab_current() is editor, "the editor to be modal")
        accept_bore(editor)
        yield until(lambda: not self._editors() and self.app.session.dirty, "the edit")
        yield from self.focused(self.root)

    def _editors(self):
        return [w for w in self.root.winfo_children() if hasattr(w, "sk") and w.winfo_viewable()]
