"""DXF drawings: written with a contour for each shape, and read for the closed contours in them.

A drawing is flat: the sketch plane and its offset are kept in custom properties of the file, which
drawing programs show and don't use. Shapes that cut material away lie on a layer of their own.
"""

from __future__ import annotations

import logging

from tandrel.exchange.dxf.read import read
from tandrel.exchange.dxf.writing import written

__all__ = ["read", "written"]

# What the library finds odd in a drawing is nothing that the user could act on.
logging.getLogger("ezdxf").addHandler(logging.NullHandler())
