"""Sketch editor: draw closed profiles with the mouse, snap to a grid and to existing points,
and type exact dimensions. Used by the sketch-based features (extrude, revolve and 2D regions).

Lengths and coordinates in a sketch are SI lengths, angles are degrees. Plane coordinates (u, v)
grow to the right and upwards; canvas positions are pixels and grow to the right and downwards.

The types whose names start with an underscore are known to type checkers only: import them where
`typing.TYPE_CHECKING` is true.
"""

import copy as copy
import math as math
import tkinter
import typing
from tkinter import ttk as ttk
from typing import Any as Any, Dict as Dict, List as List, Optional as Optional, Tuple as Tuple
from typing import Iterable, Literal, TypedDict, Union

import numpy
import numpy.typing as npt

import tandrel.sketch
from tandrel.gui.i18n import N_ as N_, tr as tr
from tandrel.gui.widgets import PAL as PAL, Form as Form, Tooltip as Tooltip
from tandrel.gui.widgets import num_text as num_text, px as px, units as units

# A stub keeps to itself what it imports under another name; what it assigns is everybody's.
tk = tkinter
np = numpy
S = tandrel.sketch
Sequence = typing.Sequence

_Point = npt.NDArray[numpy.float64]  # u, v
_Points = npt.NDArray[numpy.float64]  # one row a point
_PointLike = Union[_Point, Sequence[float]]
_PointerEvent = tkinter.Event[tkinter.Canvas]

class _Rectangle(TypedDict):
    type: Literal["rectangle"]
    x: float  # the corner with the smaller coordinates
    y: float
    w: float
    h: float
    radius: float  # of the corners, 0 = sharp

class _Circle(TypedDict):
    type: Literal["circle"]
    xc: float
    yc: float
    r: float

class _Regular(TypedDict):
    type: Literal["regular"]
    xc: float
    yc: float
    r: float  # from the centre to a corner
    n: int  # sides
    angle: float  # of the first corner

class _Slot(TypedDict):
    type: Literal["slot"]
    x1: float  # the centres of the rounded ends
    y1: float
    x2: float
    y2: float
    r: float  # half the width

class _Polygon(TypedDict):
    type: Literal["polygon"]
    points: List[List[float]]  # corners [u, v]; the first isn't repeated at the end
    radius: float  # of the corners, 0 = sharp

_Entity = Union[_Rectangle, _Circle, _Regular, _Slot, _Polygon]

class _Sketch(TypedDict, total=False):
    """Further keys stay as they are. `sk` and `result` of an editor always have entities."""

    plane: str  # a name in S.PLANES; "XY" if absent
    offset: float  # along the plane's normal; 0 if absent
    entities: List[_Entity]  # in drawing order

class _NewDrag(TypedDict):
    kind: Literal["new"]
    start: _Point

class _MoveDrag(TypedDict):
    kind: Literal["move"]
    start: _Point
    orig: _Entity  # as it was at the press

TOOLS: List[Tuple[str, str]]
"""Key and label of each tool, in the order of the buttons."""
TOOL_TIPS: Dict[str, str]
"""The hint of each tool."""
FIELDS: Dict[str, List[Tuple[str, str, bool]]]
"""The editable fields of each entity type: key, label, whether it is a length."""
TYPE_LABEL: Dict[str, str]
"""The display name of each entity type."""
SNAP_PX: int
"""The snapping radius in pixels."""

def describe(e: _Entity) -> str:
    """A short summary of an entity in display units."""

class SketchEditor(tkinter.Toplevel):
    """Edit a sketch in place. `result` is the edited sketch after OK (None after Cancel)."""

    # `list` is an attribute here: annotations say List.

    sk: _Sketch
    dim: int
    """3 for a sketch placed in space, anything else for a plane region."""
    refs: List[Tuple[str, _Points]]
    result: Optional[_Sketch]
    sel: Optional[int]
    """Index of the selected entity."""

    scale: float
    """Pixels per SI length."""
    centre: _Point
    """The plane point in the middle of the canvas."""
    cursor: _Point
    """The plane point that the pointer was last snapped to."""
    clicks: List[_Point]
    """The corners or slot ends clicked so far."""
    drag: Union[_NewDrag, _MoveDrag, None]
    _pan: Tuple[int, int, _Point]
    """Pointer position and `centre` at the start of the last pan drag; absent before the first."""

    tool: tkinter.StringVar
    snap: tkinter.BooleanVar
    sides: tkinter.StringVar
    plane: tkinter.StringVar
    offset: tkinter.StringVar
    """In display units."""

    canvas: tkinter.Canvas
    list: ttk.Treeview
    """The shapes, one row each; a row's iid is the index of its entity."""
    props: ttk.Frame
    status: ttk.Label
    vars: Dict[str, tkinter.StringVar]
    """The property form's fields by entity key; absent before the first form."""
    points_text: tkinter.Text
    """The property form's box of corners; absent before the first outline's form."""

    # An attribute too; but the class has the window manager's command under this name.
    @property  # type: ignore[override]
    def grid(self) -> tkinter.StringVar:
        """The grid step in display units."""
    @grid.setter
    def grid(self, variable: tkinter.StringVar) -> None: ...
    def __init__(
        self,
        parent: tkinter.Misc,
        sketch: Optional[_Sketch],
        dim: int = 3,
        title: str = "",
        references: Iterable[Tuple[str, _Points]] = (),
        allow_plane: bool = True,
    ) -> None:
        """Open a dialog over parent on a copy of the sketch, or on a new one."""
    def run(self) -> Optional[_Sketch]:
        """Show the dialog, wait for its end and return `result`."""
    def ok(self) -> None:
        """Accept the sketch, or tell why not."""
    @staticmethod
    def _ok(e: Optional[_Entity]) -> bool:
        """Whether the sketch module can outline entity e."""
    def _build(self, allow_plane: bool) -> None:
        """Make the dialog's widgets."""
    def _plane_changed(self) -> None:
        """Take over the chosen plane."""
    def to_screen(self, p: _PointLike) -> Tuple[float, float]:
        """Canvas pixels (x, y) of a plane point."""
    def to_world(self, x: float, y: float) -> _Point:
        """The plane point under a canvas pixel."""
    def fit(self) -> None:
        """Show everything, with a margin."""
    def _extent(self) -> Tuple[_Point, _Point]:
        """Lower left and upper right corner of everything shown."""
    def _zoom(self, f: float, x: float, y: float) -> None:
        """Scale the view by f around a canvas pixel."""
    def _pan_start(self, e: _PointerEvent) -> None:
        """Remember where a pan drag begins."""
    def _pan_move(self, e: _PointerEvent) -> None:
        """Move the view with the pointer."""
    def grid_step(self) -> float:
        """The grid spacing in SI length units."""
    def _default_grid(self) -> float:
        """A round grid spacing for the sketch's extent."""
    def key_points(self) -> List[_Point]:
        """The plane points that the pointer snaps to: the origin, centres, corners and slot ends
        of the shapes, and the corners clicked so far."""
    def snapped(self, x: float, y: float) -> _Point:
        """The plane point for a canvas pixel, pulled onto the nearest key point or else,
        where the grid is on, onto the grid."""
    def redraw(self) -> None:
        """Paint the whole picture again."""
    def _dimensions(self, e: _Entity) -> None:
        """Dimension labels for the selected shape."""
    def _preview(self) -> None:
        """The shape being drawn, following the pointer."""
    def _motion(self, e: _PointerEvent) -> None:
        """Show the pointer's coordinates and the tool's hint."""
    def _press(self, e: _PointerEvent) -> None:
        """Start or advance the tool's action."""
    def _drag(self, e: _PointerEvent) -> None:
        """Move the selected shape, or the shape being drawn."""
    def _release(self, e: _PointerEvent) -> None:
        """Finish a drag."""
    def _from_drag(self, a: _Point, b: _Point) -> Optional[_Entity]:
        """The entity that the tool makes of a drag from a to b, or None."""
    def _slot(self, a: _Point, b: _Point, p: _Point) -> Optional[_Entity]:
        """The slot with end centres a and b whose side runs through p, or None."""
    def add(self, ent: _Entity) -> None:
        """Append an entity and select it."""
    def close_line(self) -> None:
        """Close the outline through the corners clicked so far."""
    def cancel_drawing(self) -> None:
        """Abandon what is being drawn."""
    def pick(self, x: float, y: float) -> Optional[int]:
        """Index of the smallest shape under a canvas pixel, or None."""
    def select(self, i: Optional[int]) -> None:
        """Select the entity with index i, or nothing for None."""
    @staticmethod
    def _moved(e: _Entity, d: _PointLike) -> _Entity:
        """A copy of entity e shifted by d."""
    def delete(self) -> None:
        """Remove the selected entity, unless a text field has the focus."""
    def refresh_list(self, keep: bool = False) -> None:
        """Rebuild the rows from the sketch, and the property form unless keep."""
    def _list_selected(self) -> None:
        """Take over a selection made in the list."""
    def show_props(self) -> None:
        """Rebuild the property form for the selection."""
    def apply_props(self) -> None:
        """Put the typed values in place of the selected entity's, if they are valid."""
