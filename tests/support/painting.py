"""One repaint of a plain editor, as the drawing calls that its canvas gets."""

from .neighbours import outline_points
from .plain import PlainEditor


def without_preview():
    """400 x 300 pixels, 40 pixels to the unit, a grid of 1 unit; no preview."""
    editor = PlainEditor(scale=40.0)
    editor.grid_step = lambda: 1.0
    editor._preview = lambda: None
    return editor


def painted(editor):
    """The drawing calls of one repaint."""
    del editor.canvas.calls[:]
    editor.redraw()
    return editor.canvas.drawn


def polygons(editor):
    return [(args, options) for name, args, options in painted(editor) if name == "create_polygon"]


def fills(editor):
    return [options["fill"] for _, options in polygons(editor)]


def corners_on_screen(editor, e):
    """The flat pixel coordinates of a straight-sided shape of the scripted sketch module."""
    return tuple(value for p in outline_points(e) for value in editor.to_screen(p))
