"""What the command line asks for: the window on a file, or an export that needs no display."""

from __future__ import annotations

import argparse
import shlex
import signal
import sys
from contextlib import contextmanager
from typing import TYPE_CHECKING, Any, Dict, Iterable, Iterator, List, Optional

from tandrel._packages import how_to_get
from tandrel.application import VERSION
from tandrel.application.settings import Settings
from tandrel.gui import i18n
from tandrel.gui.i18n import N_, tr
from tandrel.units import SYSTEMS, set_units

if TYPE_CHECKING:
    from tandrel.exchange import Question

# What argparse says of itself; it asks for a translation by these very texts.
_WORDS_OF_ARGPARSE = (
    N_("usage: "),
    N_("positional arguments"),
    N_("options"),
    N_("optional arguments"),
    N_("show this help message and exit"),
    N_("%(prog)s: error: %(message)s\n"),
    N_("argument %(argument_name)s: %(message)s"),
    N_("the following arguments are required: %s"),
    N_("unrecognized arguments: %s"),
    N_("expected one argument"),
    N_("ignored explicit argument %r"),
    N_("invalid choice: %(value)r (choose from %(choices)s)"),
    N_("ambiguous option: %(option)s could match %(matches)s"),
)


def main(arguments: Optional[List[str]] = None) -> int:
    """Do it; 0 if it was done. Without an argument that says so, open the window."""
    settings = Settings.load()
    chosen = settings.language
    i18n.set_language(chosen if chosen in i18n.languages() else i18n.preferred_language())
    # From gettext itself it would have the environment's language.
    argparse._ = tr  # type: ignore[attr-defined]
    arguments = sys.argv[1:] if arguments is None else arguments
    try:
        if arguments[:1] == ["export"]:
            return _export(arguments[1:])
        options = _parser().parse_args(arguments)
        return _open_window(options.file, options.unit, settings)
    except ModuleNotFoundError as error:
        told = how_to_get(error)
        if told is None:
            raise
        return _failed(told)


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="tandrel",
        description=tr("Draw the profile of a part, and edit it."),
        epilog=tr("“tandrel export --help” tells how to export without a window."),
    )
    file = tr("FILE")
    parser.add_argument("file", nargs="?", metavar=file, help=tr("a sketch or a drawing"))
    unit = tr("the unit of the drawing's numbers, whatever it says itself")
    parser.add_argument("--unit", choices=list(SYSTEMS), help=unit)
    version, told = f"%(prog)s {VERSION}", tr("show program's version number and exit")
    parser.add_argument("--version", action="version", version=version, help=told)
    return parser


def _export_parser(suffixes: Iterable[str]) -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="tandrel export", description=tr("Write the profile of a part for other programs.")
    )
    parser.add_argument("part", metavar=tr("PART"), help=tr("a sketch or a drawing"))
    target = tr("the file to write: {kinds}").format(kinds=", ".join(suffixes))
    parser.add_argument("target", metavar=tr("TARGET"), help=target)
    parser.add_argument("--unit", choices=list(SYSTEMS), default="mm", help=tr("the file's unit"))
    parser.add_argument(
        "--contours",
        action="store_true",
        help=tr("the contours of the shapes as they are, not joined (DXF only)"),
    )
    parser.add_argument(
        "--drawing-unit",
        choices=list(SYSTEMS),
        help=tr("the unit of the drawing's numbers, whatever it says itself"),
    )
    parser.add_argument(
        "--layer",
        action="append",
        metavar=tr("NAME"),
        help=tr("a layer of the drawing to take, repeated for each; without it all are"),
    )
    parser.add_argument(
        "--without-outline",
        action="store_true",
        help=tr("go on without what seems to be the drawing's outline but does not close"),
    )
    return parser


def _export(arguments: List[str]) -> int:
    from tandrel import exchange, files, storage

    options = _export_parser(exchange.SUFFIXES).parse_args(arguments)
    notes: List[str] = []
    try:
        if exchange.is_drawing(options.part):
            answers = _answers(options)
            imported = exchange.import_(options.part, options.drawing_unit, answers=answers)
            document, notes = imported.document, list(imported.notes)
        else:
            document = storage.read(options.part)
    except exchange.Question as question:
        text = tr("{file} can't be opened: {why}; {option} answers that")
        option = _option_for(question)
        return _failed(text.format(file=options.part, why=question, option=option))
    except (storage.SketchFileError, exchange.ExchangeError) as error:
        text = tr("{file} can't be opened: {why}")
        return _failed(text.format(file=options.part, why=error))
    try:
        if files.stamp(options.target) == files.stamp(options.part):
            raise exchange.ExchangeError(tr("this is the drawing that was read"))
        notes += exchange.export(
            document, options.target, options.unit, own_contours=options.contours
        )
    except exchange.ExchangeError as error:
        text = tr("{file} can't be written: {why}")
        return _failed(text.format(file=options.target, why=error))
    for note in notes:
        _say(note)
    return 0


def _answers(options: argparse.Namespace) -> Dict[str, Any]:
    """What the options answer in advance of all that a drawing may leave open."""
    from tandrel.exchange import LayersUnclear, OutlineOpen

    answers: Dict[str, Any] = {}
    if options.layer:
        answers[LayersUnclear.subject] = options.layer
    if options.without_outline:
        answers[OutlineOpen.subject] = OutlineOpen.GO_ON
    return answers


def _option_for(question: Question) -> str:
    """What to add to the command line to answer a question as most would."""
    from tandrel.exchange import LayersUnclear, UnitsMissing

    if isinstance(question, LayersUnclear):
        return " ".join(f"--layer {shlex.quote(name)}" for name in question.proposed)
    return "--drawing-unit" if isinstance(question, UnitsMissing) else "--without-outline"


def _open_window(path: Optional[str], unit: Optional[str], settings: Settings) -> int:
    # Exporting works where there is no Tk.
    import tkinter as tk

    from tandrel.application.recovery import Recovery
    from tandrel.application.session import Session
    from tandrel.application.window import App
    from tandrel.gui import theme

    set_units(settings.units)
    theme.use_palette(settings.palette)
    try:
        root = theme.main_window("Tandrel")
    except tk.TclError as error:
        text = tr("no window can be opened: {why}; “tandrel export” needs none")
        return _failed(text.format(why=error))
    recovery = Recovery()
    with _ended_by_interrupt():
        App(root, Session(recovery), settings, path, recovery.found(), unit)
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
