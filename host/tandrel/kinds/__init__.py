"""The kinds of shapes, a module for each: its keys, label, drawing, and how a contour shows it."""

from __future__ import annotations

from typing import Mapping

from tandrel.kinds.circle import CIRCLE
from tandrel.kinds.kind import Kind
from tandrel.kinds.polygon import POLYGON
from tandrel.kinds.rectangle import RECTANGLE
from tandrel.kinds.regular import REGULAR
from tandrel.kinds.slot import SLOT

# In the order that messages name them in.
KINDS: Mapping[str, Kind] = {
    kind.type: kind for kind in (RECTANGLE, CIRCLE, REGULAR, SLOT, POLYGON)
}
# Those that a contour is compared with. A short slot is hardly longer than wide, a rectangle may be
# rounded to a circle, a square is a regular polygon, and all of them are outlines.
PLAINEST_FIRST = (SLOT, CIRCLE, RECTANGLE, REGULAR, POLYGON)
