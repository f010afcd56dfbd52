"""DXF drawings: those that are written, and those that somebody else might bring."""

import io

import ezdxf
from tandrel.exchange import dxf
from tandrel.exchange.importing import sketched
from tandrel.progress import no_tick

from .shapes import document


def text_of(*shapes, unit="mm", own_contours=False, **placing):
    return dxf.written(document(*shapes, **placing), unit, no_tick, own_contours).decode()


def opened(*shapes, **options):
    """A written drawing, as another program sees it."""
    return ezdxf.read(io.StringIO(text_of(*shapes, **options)))


def read(drawing, unit=None, tick=no_tick, **answers):
    """What is read of a drawing, given as such, as text or as bytes: the entities and the notes."""
    if not isinstance(drawing, (str, bytes)):
        text = io.StringIO()
        drawing.write(text)
        drawing = text.getvalue()
    data = drawing if isinstance(drawing, bytes) else drawing.encode()
    found, notes = sketch_in(data, unit, tick, **answers)
    return found["entities"], notes


def sketch_in(data, unit=None, tick=no_tick, reader=dxf, **answers):
    """The sketch that is read of a drawing's bytes, and the notes."""
    if unit is not None:
        answers["unit"] = unit
    found = reader.read(data, lambda done: tick(done / 2))
    return sketched(found, answers, lambda done: tick(0.5 + done / 2))


def new_drawing(units=4):
    drawing = ezdxf.new("R2010", units=units)
    return drawing, drawing.modelspace()


def rectangle(space, u, v, w, h, layer="0"):
    """Draw a closed polyline: a corner and the sides, in the drawing's unit."""
    corners = [(u, v), (u + w, v), (u + w, v + h), (u, v + h)]
    space.add_lwpolyline(corners, close=True, dxfattribs={"layer": layer})


def binary(drawing):
    data = io.BytesIO()
    drawing.write(data, fmt="bin")
    return data.getvalue()


LWPOLYLINE = 0, "LWPOLYLINE", 100, "AcDbEntity", 100, "AcDbPolyline"


def raw(*lines, units=4):
    """A drawing with this unit, or without a header, from its lines."""
    # Light polylines are younger than the oldest kind of drawings, which needs the fewest lines.
    version = "9\n$ACADVER\n1\nAC1015\n" if "LWPOLYLINE" in lines else ""
    named = f"{version}9\n$INSUNITS\n70\n{units}\n"
    header = f"0\nSECTION\n2\nHEADER\n{named}0\nENDSEC\n" if units is not None else ""
    body = "".join(f"{line}\n" for line in lines)
    return f"{header}0\nSECTION\n2\nENTITIES\n{body}0\nENDSEC\n0\nEOF\n"
