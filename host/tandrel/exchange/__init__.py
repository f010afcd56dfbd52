"""Other programs' drawings: sketches written as DXF, SVG and PNG files, and DXF files read."""

from __future__ import annotations

import os
from dataclasses import dataclass
from importlib import import_module
from pathlib import Path

from tandrel import files, profile
from tandrel import sketch as S
from tandrel.gui.i18n import N_, tr
from tandrel.progress import Tick, no_tick
from tandrel.storage import Document
from tandrel.units import SYSTEMS

# Each kind has a module of its name beside this one: the libraries behind them load when needed.
SUFFIXES = {
    ".dxf": N_("Drawing exchange (DXF)"),
    ".svg": N_("Scalable drawing (SVG)"),
    ".png": N_("Picture (PNG)"),
}


class ExchangeError(Exception):
    """What can't be exported or imported; its text says why, in the user's language."""


class UnitsMissing(ExchangeError):
    """A drawing doesn't say what its lengths are measured in; whoever knows may ask again."""


@dataclass(frozen=True)
class Imported:
    """What was read from a drawing, and for the user, what was left out or approximated."""

    document: Document
    notes: list[str]


def export(
    document: Document, path: str | os.PathLike[str], unit: str = "mm", tick: Tick = no_tick
) -> list[str]:
    """Write a document's profile to a file, of the kind that the file's name says.

    The answer is what the user should know of the file. A drawing keeps the shapes of the sketch,
    so that it comes back as it was; a picture shows what overlapping shapes make together.
    ExchangeError, or whatever the tick raises, leaves the file, or its absence, as it was.
    """
    suffix = Path(path).suffix.lower()
    if suffix not in SUFFIXES:
        text = tr("{suffix} is no kind of file to export to; there are {kinds}")
        given = suffix or Path(path).name
        raise ExchangeError(text.format(suffix=given, kinds=", ".join(SUFFIXES)))
    _known(unit)
    problems = S.check(document.sketch)
    if problems:
        raise ExchangeError("; ".join(problems))
    data = import_module(f"{__name__}{suffix}").written(document, unit, tick)
    notes = _notes(document, suffix, lambda done: tick(1.0))
    try:
        files.replace(path, data)
    except (OSError, ValueError) as error:
        raise ExchangeError(files.reason(error)) from error
    return notes


def _notes(document: Document, suffix: str, tick: Tick) -> list[str]:
    if suffix != ".dxf" or profile.has_own_contours(document.sketch, tick):
        return []
    return [tr("Shapes that overlap are separate contours in it: join them to cut it.")]


def import_(
    path: str | os.PathLike[str], unit: str | None = None, tick: Tick = no_tick
) -> Imported:
    """The sketch in a DXF drawing. The unit is for drawings that don't name theirs."""
    if unit is not None:
        _known(unit)
    try:
        data = files.contents(path)
    except (OSError, ValueError) as error:
        raise ExchangeError(files.reason(error)) from error
    sketch, notes = import_module(f"{__name__}.dxf").read(data, unit, tick)
    return Imported(Document(Path(path).stem, sketch), notes)


def _known(unit: str) -> None:
    if unit not in SYSTEMS:
        text = tr("{unit} is no unit of length; there are {units}")
        raise ExchangeError(text.format(unit=unit, units=", ".join(SYSTEMS)))
