"""What a person sees of a profile on the screen: material, and holes in it."""

from __future__ import annotations

import tkinter as tk
from collections import Counter
from collections.abc import Callable
from typing import Tuple

import numpy as np
import numpy.typing as npt
from PIL import Image
from shapely.geometry import Point, Polygon
from shapely.geometry.base import BaseGeometry
from shapely.ops import unary_union
from shapely.prepared import prep

from tandrel import profile

Colour = Tuple[int, int, int]
# From a point of the plane to a pixel of a picture.
ToPixel = Callable[[npt.NDArray[np.float64]], Tuple[float, float]]

_LOOKS = 60  # from the left to the right of the profile, and as many upwards
_EDGE = 0.005  # of the profile's width: what lies as close as that to an outline may be the line


def fault_in_sight(
    picture: Image.Image, region: BaseGeometry, to_pixel: ToPixel, material: Colour
) -> str:
    """How a picture of a profile differs from what it should show, if it does.

    Labels, axes and marks may lie anywhere: of the material and of its holes, each looked at all
    over, the most frequent colour counts.
    """
    left, _, right, _ = region.bounds
    edge = _EDGE * (right - left)
    rings = [ring for piece in profile.polygons(region) for ring in piece.interiors]
    holes = unary_union([Polygon(ring) for ring in rings]).difference(region)
    seen = _main_colour(picture, region.buffer(-edge), to_pixel)
    if seen != material:
        return f"material is {seen} instead of {material}"
    if rings and _main_colour(picture, holes.buffer(-edge), to_pixel) == material:
        return "holes look like material"
    return ""


def view_to_pixel(view: tk.Canvas, region: BaseGeometry) -> ToPixel:
    """Where a canvas that shows a region as polygons has its points."""
    drawn = [view.coords(item) for item in view.find_all() if view.type(item) == "polygon"]
    xs, ys = ([c for coords in drawn for c in coords[axis::2]] for axis in (0, 1))
    left, bottom, right, _ = region.bounds
    scale = (max(xs) - min(xs)) / (right - left)
    return lambda point: (
        min(xs) + scale * (point[0] - left),
        max(ys) - scale * (point[1] - bottom),
    )


def colour(widget: tk.Misc, name: str) -> Colour:
    """What a colour of Tk is in a picture."""
    red, green, blue = widget.winfo_rgb(name)
    return red >> 8, green >> 8, blue >> 8


def _main_colour(picture: Image.Image, part: BaseGeometry, to_pixel: ToPixel) -> Colour:
    left, bottom, right, top = part.bounds
    inside, seen = prep(part), Counter[Colour]()
    for u in np.linspace(left, right, _LOOKS):
        for v in np.linspace(bottom, top, _LOOKS):
            if inside.contains(Point(u, v)):
                x, y = to_pixel(np.array([u, v]))
                seen[picture.getpixel((round(x), round(y)))] += 1  # type: ignore[index]
    return seen.most_common(1)[0][0]
