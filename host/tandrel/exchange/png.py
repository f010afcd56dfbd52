"""PNG pictures of the profile on a white ground; programs that care know their true size."""

from __future__ import annotations

import io
from typing import Any, Dict

from PIL import Image, ImageDraw

from tandrel import profile
from tandrel import sketch as S
from tandrel._shapes import contour
from tandrel.geometry.loops import divided
from tandrel.progress import Tick
from tandrel.storage import Document

_LONGER, _SHORTER = 1600, 160  # pixels: the longer side, and the shorter one at least
_MARGIN = 40
_FINER = 4  # times as many pixels are drawn, and averaged, so that edges are smooth
_GROUND, _FILL = "white", "#33566f"
_METRES_PER_INCH = 0.0254
_MOST_PER_INCH = 10_000_000  # beyond it the picture doesn't say how large the part is


def written(document: Document, unit: str, tick: Tick) -> bytes:
    """A picture 1600 pixels long. The unit doesn't show in it."""
    left, low, right, high = profile.box(document.sketch)
    scale = (_LONGER - 2 * _MARGIN) / max(right - left, high - low)  # pixels to the metre
    sides = [
        max(_SHORTER, round(side * scale) + 2 * _MARGIN) for side in (right - left, high - low)
    ]
    middle = (left + right) / 2, (low + high) / 2
    drawn = Image.new("L", (sides[0] * _FINER, sides[1] * _FINER), 0)
    pencil = ImageDraw.Draw(drawn)
    entities = document.sketch["entities"]
    # What lies inside is drawn over what it lies inside of: holes, and islands in them.
    by_depth = sorted(zip(S.depths(document.sketch), range(len(entities))))
    for done, (depth, k) in enumerate(by_depth):
        tick(done / len(entities))
        corners = [
            (
                drawn.width / 2 + (u - middle[0]) * scale * _FINER,
                drawn.height / 2 - (v - middle[1]) * scale * _FINER,
            )
            for u, v in divided(contour(entities[k]), 0.1 / scale)
        ]
        pencil.polygon(corners, fill=0 if depth % 2 else 255)
    mask = drawn.resize((sides[0], sides[1]), Image.Resampling.BOX)
    picture = Image.new("RGB", mask.size, _GROUND)
    picture.paste(_FILL, mask=mask)
    data = io.BytesIO()
    picture.save(data, "PNG", optimize=True, **_true_size(scale))
    return data.getvalue()


def _true_size(scale: float) -> Dict[str, Any]:
    per_inch = scale * _METRES_PER_INCH
    return {"dpi": (per_inch, per_inch)} if 1 <= per_inch <= _MOST_PER_INCH else {}
