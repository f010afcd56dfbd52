"""Tk's own file dialogs, with what this application reads and writes.

Each gives the path that the user chose, or nothing where they chose none. It begins in a folder;
None leaves that to Tk.
"""

from __future__ import annotations

import tkinter as tk
from collections.abc import Iterable
from tkinter import filedialog
from typing import Optional

from tandrel import exchange
from tandrel.gui.i18n import tr

SKETCH = ".json"


def sketch_or_drawing(parent: tk.Misc, folder: Optional[str]) -> str:
    """A file to open."""
    return _existing(parent, folder, tr("Sketches and drawings"), [SKETCH, *exchange.READERS])


def drawing(parent: tk.Misc, folder: Optional[str]) -> str:
    """A drawing to import."""
    return _existing(parent, folder, tr("Drawings (DXF, SVG)"), exchange.READERS)


def place_of_sketch(parent: tk.Misc, folder: Optional[str], name: str) -> str:
    """Where to save a sketch, under this name unless the user writes another one."""
    return filedialog.asksaveasfilename(
        parent=parent,
        filetypes=[(tr("Sketch files"), SKETCH)],
        initialdir=folder,
        initialfile=name,
    )


def place_of_export(
    parent: tk.Misc, folder: Optional[str], stem: str, suffixes: Iterable[str]
) -> str:
    """Where to export to. A name without an ending gets that of the kind that was chosen."""
    kinds = [(tr(exchange.SUFFIXES[suffix]), suffix) for suffix in suffixes]
    return filedialog.asksaveasfilename(
        parent=parent, filetypes=kinds, initialdir=folder, initialfile=stem
    )


def _existing(parent: tk.Misc, folder: Optional[str], kind: str, endings: Iterable[str]) -> str:
    # Tk shows the names that end in these very letters.
    either_case = tuple(case for ending in endings for case in (ending, ending.upper()))
    kinds: list[tuple[str, tuple[str, ...]]] = [(kind, either_case), (tr("All files"), ("*",))]
    return filedialog.askopenfilename(parent=parent, filetypes=kinds, initialdir=folder)


def translate(root: tk.Tk, language: str) -> None:
    """Let Tk's own dialogs follow the language; a file dialog shown before is made anew."""
    root.tk.call("::msgcat::mclocale", {"zh": "zh_cn"}.get(language, language))
    root.tk.eval("destroy .__tk_filedialog")
