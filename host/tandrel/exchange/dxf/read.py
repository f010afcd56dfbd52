"""DXF files read: as they are, or repaired where they are damaged, down to the lines in them."""

from __future__ import annotations

import codecs
import io
from copy import deepcopy
from functools import partial
from itertools import chain
from typing import Any, Collection, Iterator, List, Optional, Tuple

import ezdxf
from ezdxf import recover
from ezdxf.document import Drawing as Document
from ezdxf.lldxf.tagger import binary_tags_loader

from tandrel.exchange import ExchangeError
from tandrel.exchange.dxf.parts import READABLE, lines_of, spread
from tandrel.exchange.dxf.placing import is_noted, placed
from tandrel.exchange.dxf.repair import dated, repaired
from tandrel.exchange.dxf.units import stated
from tandrel.exchange.lines import Drawing, Line
from tandrel.exchange.tell import Notes
from tandrel.gui.i18n import tr
from tandrel.progress import Tick

_BETWEEN_TICKS = 1 << 16  # characters
_BINARY = b" Binary DXF\r\n\x1a\x00"


def read(data: bytes, tick: Tick) -> Drawing:
    """What is shown in a drawing, that of blocks where they are placed.

    It is what the model is made of; where that is empty, what is on the first sheet with anything
    that could be cut. If nothing of it is shown, it is what is hidden. ExchangeError where the
    library can't make sense of it.
    """
    document, found = _loaded(
        dated(data.removeprefix(codecs.BOM_UTF8)), lambda done: tick(done / 2)
    )
    try:
        parts = list(document.modelspace())
        if not parts:
            parts = _on_sheet(document, found)
        hidden = {
            layer.dxf.name.lower()
            for layer in document.layers
            if layer.is_off() or layer.is_frozen()
        }
        properties = dict(document.header.custom_vars.properties)
        # A drawing without a header gets one from the library, with a unit that nobody chose.
        code = document.units if b"$INSUNITS" in data else 0
        metric = document.header.get("$MEASUREMENT") if b"$MEASUREMENT" in data else None
        is_metric = None if metric is None else bool(metric)
    except Exception as error:  # of a damaged drawing the library may raise anything
        raise _unsound(error) from error

    def looked(hidden: Collection[str], notes: Notes) -> List[Line]:
        shown = spread(parts, hidden, notes, lambda done: tick(0.5 + done / 2))
        return [line for part, layer in shown for line in lines_of(part, layer, notes)]

    notes = deepcopy(found)
    lines = looked(hidden, notes)
    if hidden and not lines:
        found.tell(tr("Nothing that could be cut is shown: this is what is hidden."))
        lines = looked((), found)
        notes = found if lines else notes
    named = stated(code, is_metric)
    return Drawing(lines, named, notes, placed(properties), is_noted(properties))


def _on_sheet(document: Document, notes: Notes) -> List[Any]:
    """The parts on the first sheet with any that could be cut; those of others may lie on them."""
    names = [name for name in document.layout_names_in_taborder() if name != "Model"]
    sheets = [document.layout(name) for name in names]
    sheets = [sheet for sheet in sheets if any(part.dxftype() in READABLE for part in sheet)]
    if not sheets:
        return []
    first, *others = sheets
    text = tr("Nothing is in the model: this is what is on the sheet {sheet}.")
    notes.tell(text.format(sheet=first.name))
    for part in chain.from_iterable(others):
        if part.dxftype() in READABLE:
            notes.leave(tr("parts on other sheets"))
    return [part for part in first if part.dxftype() != "VIEWPORT"]


def _loaded(data: bytes, tick: Tick) -> Tuple[Document, Notes]:
    """The drawing in a file, and what there is to tell of it if it had to be repaired."""
    stream = _Watched(data, tick)
    try:
        if _BINARY in data[:22]:
            return Document.load(binary_tags_loader(data)), Notes()
        return ezdxf.read(stream), Notes()  # type: ignore[arg-type]
    except Exception as error:
        if stream.stopped is not None:
            raise stream.stopped from None
        for text, notes in repaired(data):
            try:
                document, _ = recover.read(io.BytesIO(text))
            except Exception:
                continue
            notes.tell(tr("The file is damaged; it was repaired as well as it can be."))
            return document, notes
        raise _unsound(error) from error


def _unsound(error: Exception) -> ExchangeError:
    text = tr("this is not a sound DXF drawing ({why})")
    return ExchangeError(text.format(why=str(error)[:200] or type(error).__name__))


class _Watched:
    """The lines of a file, ticking as they are read."""

    def __init__(self, data: bytes, tick: Tick) -> None:
        # Only keywords and numbers matter, which are ASCII in whatever code page texts are.
        self._text = io.StringIO(data.decode("latin-1"), newline=None)
        self._tick = tick
        self.stopped: Optional[Exception] = None  # what the tick raised
        # No step of Python's for each of a million lines; "" where there are no more.
        self.readline = partial(next, chain.from_iterable(self._blocks(len(data))), "")

    def _blocks(self, size: int) -> Iterator[List[str]]:
        while block := self._text.readlines(_BETWEEN_TICKS):
            yield block
            try:
                self._tick(self._text.tell() / size)
            except Exception as error:
                self.stopped = error
                raise
