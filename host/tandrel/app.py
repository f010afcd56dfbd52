"""The application: one part's profile in a window, and the sketch editor to change it."""

from __future__ import annotations

import argparse
import os
import sys
import tkinter as tk
from dataclasses import replace
from tkinter import filedialog, messagebox, ttk
from typing import Any, Dict, List, Optional, cast

import numpy as np

from tandrel import storage
from tandrel.gui import i18n
from tandrel.gui.i18n import N_, tr
from tandrel.gui.profile_view import ProfileView
from tandrel.gui.sketcher import SketchEditor
from tandrel.gui.widgets import PAL, SYSTEMS, main_window, px, set_units, units

UNIT_LABELS = {
    "mm": N_("Millimetres (mm)"),
    "cm": N_("Centimetres (cm)"),
    "m": N_("Metres (m)"),
    "in": N_("Inches (in)"),
}


class App:
    """The main window on one sketch file. Messages appear in the window, where they stop nobody."""

    def __init__(self, root: tk.Tk, path: Optional[str] = None) -> None:
        self.root = root
        self.path = path
        self.document: Optional[storage.Document] = None
        self.unsaved = False
        self.unit_choice = tk.StringVar(root, units().name)
        self.language_choice = tk.StringVar(root, i18n.language())
        root.configure(background=PAL["window"])
        root.minsize(px(480), px(360))
        root.protocol("WM_DELETE_WINDOW", self.quit)
        root.bind("<Control-o>", lambda _event: self.choose_file())
        root.bind("<Control-s>", lambda _event: self.save())
        root.bind("<Control-q>", lambda _event: self.quit())
        self.build()
        if path is not None:
            self.open(path)

    def build(self) -> None:
        """Make the window's content anew, in the language of the moment."""
        for child in self.root.winfo_children():
            child.destroy()
        self.menus = self._menus()
        outer = ttk.Frame(self.root, style="Panel.TFrame", padding=px(12))
        outer.pack(fill="both", expand=True)
        head = ttk.Frame(outer, style="Panel.TFrame")
        head.pack(fill="x")
        self.name = ttk.Label(head, style="Title.TLabel")
        self.name.pack(side="left")
        self.size = ttk.Label(head, style="Muted.TLabel")
        self.size.pack(side="right")
        foot = ttk.Frame(outer, style="Panel.TFrame")
        foot.pack(side="bottom", fill="x", pady=(px(10), 0))
        self.edit_button = ttk.Button(
            foot, text=tr("Edit sketch"), style="Primary.TButton", command=self.edit
        )
        self.edit_button.pack(side="right")
        self.message = ttk.Label(foot, style="Muted.TLabel", wraplength=px(440))
        self.message.pack(side="left", fill="x", expand=True)
        self.view = ProfileView(outer)
        self.view.pack(fill="both", expand=True, pady=(px(10), 0))
        self.refresh()

    def refresh(self) -> None:
        """Show the document, in the units of the moment."""
        document = self.document
        self.view.show(document.sketch if document else None)
        self.size.configure(text=self.view.size_text())
        self.name.configure(text=document.name if document else tr("No part is open"))
        self.edit_button.state(["!disabled" if document else "disabled"])
        mark = "• " if self.unsaved else ""
        self.root.title(f"{mark}{document.name} – tandrel" if document else "tandrel")

    def tell(self, text: str, warning: bool = False) -> None:
        style = "Warning.TLabel" if warning else "Muted.TLabel"
        self.message.configure(text=text, style=style)

    def open(self, path: str) -> None:
        """Show the part in a file; where it can't be read, say so and keep what is shown."""
        try:
            document = storage.read(path)
        except storage.SketchFileError as error:
            text = tr("{file} can't be opened: {why}")
            self.tell(text.format(file=os.path.basename(path), why=error), warning=True)
            return
        self.path, self.document, self.unsaved = path, document, False
        self.refresh()
        self.tell(path)

    def choose_file(self) -> None:
        kinds = [(tr("Sketch files"), "*.json"), (tr("All files"), "*")]
        folder = os.path.dirname(self.path) if self.path else None
        path = filedialog.askopenfilename(parent=self.root, filetypes=kinds, initialdir=folder)
        if path and self.may_leave():
            self.open(path)

    def edit(self) -> None:
        """Let the user edit the sketch; what they accept goes to the file at once."""
        document = self.document
        if document is None:
            return
        title = tr("Sketch of {name}").format(name=document.name)
        references = [(r["name"], np.array(r["points"], float)) for r in document.references]
        # Files are read strictly: what they hold is what the editor's types ask for.
        sketch = cast(Any, document.sketch)
        editor = SketchEditor(self.root, sketch, dim=3, title=title, references=references)
        edited = editor.run()
        if edited is not None:
            self.document = replace(document, sketch=edited)
            self.save()

    def save(self) -> None:
        """Write the document to its file; a failure keeps it here, marked as unsaved."""
        if self.document is None or self.path is None:
            return
        try:
            storage.write(self.path, self.document)
        except storage.SketchFileError as error:
            self.unsaved = True
            self.tell(tr("Not saved: {why}").format(why=error), warning=True)
        else:
            self.unsaved = False
            self.tell(tr("Saved: {file}").format(file=self.path))
        self.refresh()

    def may_leave(self) -> bool:
        """Ask what becomes of unsaved work; False when the user wants to stay."""
        if not self.unsaved:
            return True
        question = tr("The last edit isn't saved yet. Save it now?")
        answer = messagebox.askyesnocancel("tandrel", question, parent=self.root)
        if answer:
            self.save()
        return answer is False or (answer is True and not self.unsaved)

    def quit(self) -> None:
        if self.may_leave():
            self.root.destroy()

    def change_units(self) -> None:
        set_units(self.unit_choice.get())
        self.refresh()

    def change_language(self) -> None:
        i18n.set_language(self.language_choice.get())
        # The menu that called is among what is made anew.
        self.root.after_idle(self.build)

    def _menus(self) -> Dict[str, tk.Menu]:
        bar = tk.Menu(self.root, tearoff=False)
        menus = {"bar": bar}
        for key, label in (
            ("file", N_("File")),
            ("units", N_("Units")),
            ("language", N_("Language")),
        ):
            menus[key] = tk.Menu(bar, tearoff=False)
            bar.add_cascade(label=tr(label), menu=menus[key], underline=0)
        for label, key, command in (
            (N_("Open…"), "O", self.choose_file),
            (N_("Save"), "S", self.save),
            (N_("Quit"), "Q", self.quit),
        ):
            accelerator = tr("Ctrl+{key}").format(key=key)
            menus["file"].add_command(label=tr(label), accelerator=accelerator, command=command)
        for name in SYSTEMS:
            menus["units"].add_radiobutton(
                label=tr(UNIT_LABELS[name]),
                value=name,
                variable=self.unit_choice,
                command=self.change_units,
            )
        for code, name in i18n.languages().items():
            menus["language"].add_radiobutton(
                label=name,
                value=code,
                variable=self.language_choice,
                command=self.change_language,
            )
        self.root.configure(menu=bar)
        return menus


def main(arguments: Optional[List[str]] = None) -> int:
    parser = argparse.ArgumentParser(prog="tandrel", description="Edit the sketch of a part.")
    parser.add_argument("file", nargs="?", metavar="FILE", help="a sketch file")
    path = parser.parse_args(arguments).file
    i18n.set_language(i18n.preferred_language())
    try:
        root = main_window("Tandrel")
    except tk.TclError as error:
        print(f"tandrel: {error}", file=sys.stderr)
        return 1
    App(root, path)
    root.mainloop()
    return 0
