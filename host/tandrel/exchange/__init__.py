"""Other programs' drawings: sketches written as DXF, SVG and PNG files; DXF and SVG files read."""

from __future__ import annotations

import gc
import os
from collections.abc import Iterator, Mapping, Sequence
from contextlib import contextmanager
from dataclasses import dataclass
from importlib import import_module
from pathlib import Path
from typing import Any

from tandrel import files, profile
from tandrel import sketch as S
from tandrel._packages import how_to_get
from tandrel.exchange.tell import Note
from tandrel.gui.i18n import N_, tr
from tandrel.progress import Tick, no_tick
from tandrel.storage import Document
from tandrel.units import SYSTEMS

# Each kind has a module of its name beside this one: the libraries behind them load when needed.
DRAWING = ".dxf"
SUFFIXES = {
    DRAWING: N_("Drawing exchange (DXF)"),
    ".svg": N_("Scalable drawing (SVG)"),
    ".png": N_("Picture (PNG)"),
}
# The modules that read drawings, by the ending of the file's name.
READERS = {DRAWING: ".dxf", ".svg": ".svg_reading"}


class ExchangeError(Exception):
    """What can't be exported or imported.

    Its arguments say why, in the user's language; its text is all of them.
    """

    def __str__(self) -> str:
        return "; ".join(map(str, self.args))


class NotReady(ExchangeError):
    """A sketch that S.check doesn't pass; its arguments are what must be put right."""


class Question(ExchangeError):
    """What only the user knows of a drawing; whoever does may import it again with the answer.

    ``subject`` is the key of the answer among those that :func:`import_` takes.
    """

    subject = ""


class UnitsMissing(Question):
    """A drawing doesn't say what its lengths are measured in, or nothing that can be believed.

    ``choices`` are the possible answers, the most likely first, with the size that each gives.
    """

    subject = "unit"

    def __init__(self, text: str, choices: Mapping[str, str]) -> None:
        super().__init__(text)
        self.choices = choices


class LayersUnclear(Question):
    """One layer lies around all others and may be the frame of the sheet.

    The answer is a list of those to import, of ``layers``, which has the number of contours of
    each; ``proposed`` is what most would answer.
    """

    subject = "layers"

    def __init__(self, text: str, layers: Mapping[str, int], proposed: Sequence[str]) -> None:
        super().__init__(text)
        self.layers = layers
        self.proposed = proposed


class OutlineOpen(Question):
    """What seems to be the outline of the part would be left out; the answer ``GO_ON`` does that.

    ``place`` is where to look, in metres.
    """

    subject = "outline"
    GO_ON = "go on"

    def __init__(self, text: str, place: tuple[float, float]) -> None:
        super().__init__(text)
        self.place = place


@dataclass(frozen=True)
class Imported:
    """What was read from a drawing, and for the user, what was left out or approximated."""

    document: Document
    notes: list[Note]


def export(
    document: Document,
    path: str | os.PathLike[str],
    unit: str = "mm",
    tick: Tick = no_tick,
    own_contours: bool = False,
) -> list[str]:
    """Write a document's profile to a file, of the kind that the file's name says.

    With ``own_contours`` a drawing has the contour of each shape as it is, whatever it overlaps, so
    that the sketch comes back as it was. The answer is what the user should know of the file.
    ExchangeError, or whatever the tick raises, leaves the file, or its absence, as it was.
    """
    suffix = Path(path).suffix.lower()
    if suffix not in SUFFIXES:
        text = tr("{suffix} is no kind of file to export to; there are {kinds}")
        given = suffix or Path(path).name
        raise ExchangeError(text.format(suffix=given, kinds=", ".join(SUFFIXES)))
    if own_contours and suffix != DRAWING:
        text = tr("only {kinds} files can hold the contours of the shapes as they are")
        raise ExchangeError(text.format(kinds=DRAWING))
    _known(unit)
    problems = S.check(document.sketch)
    if problems:
        raise NotReady(*problems)
    how = {"own_contours": True} if own_contours else {}
    data = _module(suffix).written(document, unit, tick, **how)
    notes = _notes(document, lambda done: tick(1.0)) if own_contours else []
    try:
        files.replace(path, data)
    except (OSError, ValueError) as error:
        raise ExchangeError(files.reason(error)) from error
    return notes


def _notes(document: Document, tick: Tick) -> list[str]:
    if profile.has_own_contours(document.sketch, tick):
        return []
    return [tr("Shapes that overlap are separate contours in it: they can't be cut as they are.")]


def is_drawing(path: str | os.PathLike[str]) -> bool:
    """Whether a file is a drawing by its name, else it is a sketch."""
    return Path(path).suffix.lower() in READERS


def import_(
    path: str | os.PathLike[str],
    unit: str | None = None,
    tick: Tick = no_tick,
    answers: Mapping[str, Any] = {},
) -> Imported:
    """The sketch in a drawing. A unit that is given holds, whatever the drawing says.

    ``answers`` are those to each :class:`Question` that was raised before, by its subject.
    """
    if unit is not None:
        _known(unit)
        answers = {**answers, "unit": unit}
    try:
        data = files.contents(path)
    except (OSError, ValueError) as error:
        raise ExchangeError(files.reason(error)) from error
    reader = _module(READERS.get(Path(path).suffix.lower(), DRAWING))
    sketched = _module(".importing").sketched
    with _nothing_collected():
        drawing = reader.read(data, lambda done: tick(done / 2))
        sketch, notes = sketched(drawing, answers, lambda done: tick(0.5 + done / 2))
    return Imported(Document(Path(path).stem, sketch), notes)


def _module(name: str) -> Any:
    """A module beside this one; ExchangeError where the library behind it is missing."""
    try:
        return import_module(f"{__name__}{name}")
    except ModuleNotFoundError as error:
        told = how_to_get(error)
        if told is None:
            raise
        raise ExchangeError(told) from error


@contextmanager
def _nothing_collected() -> Iterator[None]:
    """Meanwhile nobody looks for garbage.

    Of a large drawing hundreds of thousands of objects stay; to look through them again and again
    would take a third of the time.
    """
    was_enabled = gc.isenabled()
    gc.disable()
    try:
        yield
    finally:
        if was_enabled:
            gc.enable()


def _known(unit: str) -> None:
    if unit not in SYSTEMS:
        text = tr("{unit} is no unit of length; there are {units}")
        raise ExchangeError(text.format(unit=unit, units=", ".join(SYSTEMS)))
