"""Drawings read, step by step: the file, its unit, its parts, their edges joined and recognised."""

from __future__ import annotations

import codecs
import io
from typing import Any

import ezdxf
from ezdxf.document import Drawing
from ezdxf.lldxf.tagger import binary_tags_loader

from tandrel.exchange import ExchangeError
from tandrel.exchange.dxf.harvest import Harvest
from tandrel.exchange.dxf.parts import spread, take
from tandrel.exchange.dxf.placing import placed
from tandrel.exchange.dxf.units import metres
from tandrel.gui.i18n import tr
from tandrel.progress import Tick

_LINES_BETWEEN_TICKS = 4096
_BINARY = b" Binary DXF\r\n\x1a\x00"


def read(data: bytes, unit: str | None, tick: Tick) -> tuple[dict[str, Any], list[str]]:
    """The sketch in a drawing, and notes for the user on what is not as it was there.

    Read are closed polylines, circles, and lines and arcs that close where they meet; everything
    that is placed as a block too. ExchangeError where there is nothing of the kind.
    """
    drawing = _Drawing(data, lambda done: tick(done / 2))
    harvest = Harvest(metres(drawing.unit, unit))
    for part in spread(drawing.parts, drawing.hidden, harvest, lambda done: tick(0.5 + 0.4 * done)):
        take(part, harvest)
    harvest.close(lambda done: tick(0.9 + 0.1 * done))
    if not harvest.entities:
        text = tr("there is no closed contour of lines and arcs in this drawing")
        raise ExchangeError("; ".join([text, *harvest.notes()]))
    return {**placed(drawing.properties), "entities": harvest.entities}, harvest.notes()


class _Drawing:
    """What is of use in a drawing; ExchangeError where the library can't make sense of it."""

    def __init__(self, data: bytes, tick: Tick) -> None:
        stream = _Watched(data.removeprefix(codecs.BOM_UTF8), tick)
        try:
            if _BINARY in data[:22]:
                drawing = Drawing.load(binary_tags_loader(data))
            else:
                drawing = ezdxf.read(stream)  # type: ignore[arg-type]
            self.parts: list[Any] = list(drawing.modelspace())
            self.hidden = {
                layer.dxf.name.lower()
                for layer in drawing.layers
                if layer.is_off() or layer.is_frozen()
            }
            self.properties = dict(drawing.header.custom_vars.properties)
            # A drawing without a header gets one from the library, with a unit that nobody chose.
            self.unit = drawing.units if b"$INSUNITS" in data else 0
        except Exception as error:
            # Of a damaged drawing the library may raise anything. Half of one is of no use.
            if stream.stopped is not None:
                raise stream.stopped from None
            text = tr("this is not a sound DXF drawing ({why})")
            why = str(error)[:200] or type(error).__name__
            raise ExchangeError(text.format(why=why)) from error


class _Watched:
    """The lines of a file, ticking as they are read."""

    def __init__(self, data: bytes, tick: Tick) -> None:
        # Only keywords and numbers matter, which are ASCII in whatever code page texts are.
        self._lines = io.StringIO(data.decode("latin-1"), newline=None)
        self._total = 1 + data.count(b"\n")
        self._count = 0
        self._tick = tick
        self.stopped: Exception | None = None  # what the tick raised

    def readline(self) -> str:
        if not self._count % _LINES_BETWEEN_TICKS:
            try:
                self._tick(min(1.0, self._count / self._total))
            except Exception as error:
                self.stopped = error
                raise
        self._count += 1
        return self._lines.readline()
