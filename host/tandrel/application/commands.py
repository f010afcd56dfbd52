"""What the command line asks for: the window on a file, or an export that needs no display."""

from __future__ import annotations

import argparse
import signal
import sys
from contextlib import contextmanager
from typing import Iterator, List, Optional

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
        document = storage.read(options.part)
        notes = exchange.export(document, options.target, options.unit)
    except storage.SketchFileError as error:
        text = tr("{file} can't be opened: {why}")
        return _failed(text.format(file=options.part, why=error))
    except exchange.ExchangeError as error:
        text = tr("{file} can't be written: {why}")
        return _failed(text.format(file=options.target, why=error))
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
    with _ended_by_interrupt():
        App(root, Session(recovery), settings, path, recovery.found())
        root.mainloop()
    return 0


@contextmanager
def _ended_by_interrupt() -> Iterator[None]:
    """Ctrl+C in the terminal ends the program at once; the next start offers unsaved work.

    Left to Python, it would act when Tk next runs something of it, and then fail in that.
    """
    before = signal.getsignal(signal.SIGINT)
    # Whoever starts the program so that it lives on may ignore the signal.
    if before is not signal.default_int_handler:
        yield
        return
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    try:
        yield
    finally:
        signal.signal(signal.SIGINT, before)


def _failed(why: object) -> int:
    _say(why)
    return 1


def _say(what: object) -> None:
    """Say something on one line, apart from any output."""
    print("tandrel:", " ".join(str(what).split()), file=sys.stderr)
