"""What the command line asks for: the window on a file, or an export that needs no display."""

from __future__ import annotations

import argparse
import sys
from typing import List, Optional

from tandrel import exchange, storage
from tandrel.gui import i18n
from tandrel.gui.i18n import tr
from tandrel.units import SYSTEMS, set_units


def main(arguments: Optional[List[str]] = None) -> int:
    """Do it; 0 if it was done. Without an argument that says so, open the window."""
    i18n.set_language(i18n.preferred_language())
    arguments = sys.argv[1:] if arguments is None else arguments
    if arguments[:1] == ["export"]:
        return _export(arguments[1:])
    parser = argparse.ArgumentParser(
        prog="tandrel",
        description=tr("Draw the profile of a part, and edit it."),
        epilog=tr("“tandrel export --help” tells how to export without a window."),
    )
    parser.add_argument("file", nargs="?", metavar="FILE", help=tr("a sketch or a DXF drawing"))
    return _open_window(parser.parse_args(arguments).file)


def _export(arguments: List[str]) -> int:
    parser = argparse.ArgumentParser(
        prog="tandrel export", description=tr("Write the profile of a part for other programs.")
    )
    parser.add_argument("part", metavar="PART", help=tr("a sketch file"))
    target = tr("the file to write: {kinds}").format(kinds=", ".join(exchange.SUFFIXES))
    parser.add_argument("target", metavar="TARGET", help=target)
    parser.add_argument("--unit", choices=list(SYSTEMS), default="mm", help=tr("the file's unit"))
    options = parser.parse_args(arguments)
    try:
        notes = exchange.export(storage.read(options.part), options.target, options.unit)
    except (storage.SketchFileError, exchange.ExchangeError) as error:
        return _failed(error)
    for note in notes:
        _say(note)
    return 0


def _open_window(path: Optional[str]) -> int:
    # Exporting works where there is no Tk.
    import tkinter as tk

    from tandrel.application.recovery import Recovery
    from tandrel.application.session import Session
    from tandrel.application.settings import Settings
    from tandrel.application.window import App
    from tandrel.gui import theme

    settings = Settings.load()
    set_units(settings.units)
    theme.use_palette(settings.palette)
    if settings.language in i18n.languages():
        i18n.set_language(settings.language)
    try:
        root = theme.main_window("Tandrel")
    except tk.TclError as error:
        return _failed(error)
    recovery = Recovery()
    App(root, Session(recovery), settings, path, recovery.found())
    root.mainloop()
    return 0


def _failed(error: Exception) -> int:
    _say(error)
    return 1


def _say(what: object) -> None:
    """Say something on one line, apart from any output."""
    print("tandrel:", " ".join(str(what).split()), file=sys.stderr)
