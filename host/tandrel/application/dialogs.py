"""Modal windows of the application's own, in its language and colours."""

from __future__ import annotations

import tkinter as tk
from collections.abc import Mapping
from tkinter import ttk

from tandrel.gui.widgets import PAL, on_screen, px


class Dialog(tk.Toplevel):
    """A modal window over the middle of its parent. Escape and the frame's button close it."""

    def __init__(self, parent: tk.Misc) -> None:
        super().__init__(parent, background=PAL["window"])
        self.withdraw()
        self.title(str(parent.winfo_toplevel().title()))
        self.transient(parent.winfo_toplevel())
        self.resizable(False, False)
        self.protocol("WM_DELETE_WINDOW", self.close)
        self.bind("<Escape>", lambda _event: self.close())
        self.body = ttk.Frame(self, style="Panel.TFrame", padding=px(16))
        self.body.pack(fill="both", expand=True)

    def close(self) -> None:
        self.destroy()

    def show(self, focus: tk.Misc) -> None:
        """Appear, and take what the user does until destroyed."""
        self.place_over_parent()

        def hand_on(event: tk.Event[tk.Misc]) -> None:
            # After Tk's file dialog the focus comes to the window itself.
            if event.widget is self:
                focus.focus_set()

        self.bind("<FocusIn>", hand_on)
        self.deiconify()
        self.wait_visibility()
        self.grab_set()
        focus.focus_set()

    def place_over_parent(self) -> None:
        self.update_idletasks()
        parent = self.master.winfo_toplevel()
        x = parent.winfo_rootx() + (parent.winfo_width() - self.winfo_reqwidth()) // 2
        y = parent.winfo_rooty() + (parent.winfo_height() - self.winfo_reqheight()) // 3
        size = self.winfo_reqwidth(), self.winfo_reqheight()
        self.geometry(on_screen(self, x, y, size))


class Question(Dialog):
    """A question with a button for each answer; the first is the primary one and has the focus.

    The buttons are beside each other, or where they have long labels stacked, one below the other.
    """

    def __init__(
        self, parent: tk.Misc, text: str, answers: Mapping[str, str], stacked: bool = False
    ) -> None:
        super().__init__(parent)
        self._stacked = stacked
        self.answer: str | None = None
        label = ttk.Label(self.body, text=text, justify="left")
        label.pack(anchor="w", pady=(0, px(16)))
        row = ttk.Frame(self.body, style="Panel.TFrame")
        row.pack(anchor="e", fill="x" if stacked else "none")
        self.buttons = {key: self._button(row, key, text) for key, text in answers.items()}
        self.update_idletasks()
        label.configure(wraplength=max(row.winfo_reqwidth(), px(400)))
        first = next(iter(self.buttons.values()))
        first.configure(style="Primary.TButton")
        self.show(first)

    def _button(self, row: ttk.Frame, key: str, text: str) -> ttk.Button:
        def choose(_event: object = None) -> None:
            self.answer = key
            self.destroy()

        button = ttk.Button(row, text=text, command=choose)
        button.bind("<Return>", choose)
        button.bind("<KP_Enter>", choose)
        before, after = ("<Up>", "<Down>") if self._stacked else ("<Left>", "<Right>")
        button.bind(before, lambda _event: button.event_generate("<<PrevWindow>>"))
        button.bind(after, lambda _event: button.event_generate("<<NextWindow>>"))
        gap = px(8) if row.winfo_children()[1:] else 0
        if self._stacked:
            button.pack(fill="x", pady=(gap, 0))
        else:
            button.pack(side="left", padx=(gap, 0))
        return button


def ask(
    parent: tk.Misc, text: str, answers: Mapping[str, str], stacked: bool = False
) -> str | None:
    """The key of the answer that the user gives to a question; None when they give none."""
    question = Question(parent, text, answers, stacked)
    question.wait_window()
    return question.answer
