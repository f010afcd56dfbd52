"""Overridden operations are the ones that the other operations and the events use."""

import copy
import types

import numpy as np
import pytest

from support.neighbours import circle, one_of_each
from support.plain import Event, PlainEditor, Var
from support.stand_ins import Stage

pytestmark = pytest.mark.usefixtures("neighbours")

A, B, P = np.array([0.01, 0.02]), np.array([0.03, 0.05]), np.array([0.0, 0.01])


# --- operations


def with_tool(tool, **state):
    def prepare(e):
        e.tool.set(tool)
        for name, value in state.items():
            setattr(e, name, value)
        return e

    return prepare


def selecting(i):
    def prepare(e):
        e.sel = i
        return e

    return prepare


def drag_of_new(tool):
    return with_tool(tool, drag={"kind": "new", "start": A}, cursor=B)


def moving(e):
    e.sel = 1
    e.drag = {"kind": "move", "start": A, "orig": copy.deepcopy(e.sk["entities"][1])}
    return e


def sizing(e):
    e.sel = 1
    e.vars = {key: Var("5") for key in ("xc", "yc", "r")}
    return e


def at(point):
    def event(e):
        return Event(*e.to_screen(point))

    return event


def as_it_is(e):
    return e


ANYWHERE = Event(300, 200)
LINE_OF_3 = with_tool("line", clicks=[A, B, P])
SLOT_OF_2 = with_tool("slot", clicks=[A, B])

# Each row: an operation, one that it calls, how an editor with one entity of every type is made
# ready for it, and its arguments.
CALLS = [
    ("fit", "_extent", as_it_is, ()),
    ("fit", "redraw", as_it_is, ()),
    ("_extent", "_ok", as_it_is, ()),
    ("_zoom", "to_world", as_it_is, (1.2, 100, 100)),
    ("_zoom", "redraw", as_it_is, (1.2, 100, 100)),
    ("_pan_move", "redraw", with_tool("select", _pan=(0, 0, A)), (ANYWHERE,)),
    ("grid_step", "_default_grid", lambda e: e.grid.set("") or e, ()),
    ("_default_grid", "_extent", as_it_is, ()),
    ("snapped", "to_world", as_it_is, (300, 200)),
    ("snapped", "key_points", as_it_is, (300, 200)),
    ("snapped", "to_screen", as_it_is, (300, 200)),
    ("snapped", "grid_step", as_it_is, (5, 5)),
    ("redraw", "to_world", as_it_is, ()),
    ("redraw", "to_screen", as_it_is, ()),
    ("redraw", "grid_step", as_it_is, ()),
    ("redraw", "_ok", as_it_is, ()),
    ("redraw", "_dimensions", selecting(0), ()),
    ("redraw", "_preview", as_it_is, ()),
    ("_dimensions", "to_screen", as_it_is, (circle(),)),
    ("_preview", "to_screen", as_it_is, ()),
    ("_preview", "_from_drag", drag_of_new("circle"), ()),
    ("_preview", "_ok", drag_of_new("circle"), ()),
    ("_preview", "_slot", SLOT_OF_2, ()),
    ("_motion", "snapped", as_it_is, (ANYWHERE,)),
    ("_motion", "redraw", as_it_is, (ANYWHERE,)),
    ("_press", "snapped", as_it_is, (ANYWHERE,)),
    ("_press", "pick", with_tool("select"), (ANYWHERE,)),
    ("_press", "select", with_tool("select"), (ANYWHERE,)),
    ("_press", "to_screen", LINE_OF_3, (ANYWHERE,)),
    ("_press", "close_line", LINE_OF_3, (at(A),)),
    ("_press", "redraw", with_tool("line"), (ANYWHERE,)),
    ("_press", "_slot", SLOT_OF_2, (ANYWHERE,)),
    ("_press", "add", SLOT_OF_2, (ANYWHERE,)),
    ("_press", "redraw", with_tool("slot"), (ANYWHERE,)),
    ("_drag", "snapped", moving, (ANYWHERE,)),
    ("_drag", "_moved", moving, (ANYWHERE,)),
    ("_drag", "refresh_list", moving, (ANYWHERE,)),
    ("_drag", "redraw", as_it_is, (ANYWHERE,)),
    ("_release", "snapped", drag_of_new("circle"), (ANYWHERE,)),
    ("_release", "_from_drag", drag_of_new("circle"), (ANYWHERE,)),
    ("_release", "_ok", drag_of_new("circle"), (ANYWHERE,)),
    ("_release", "add", drag_of_new("circle"), (ANYWHERE,)),
    ("_release", "redraw", drag_of_new("circle"), (ANYWHERE,)),
    ("_release", "show_props", moving, (ANYWHERE,)),
    ("add", "refresh_list", as_it_is, (circle(),)),
    ("add", "redraw", as_it_is, (circle(),)),
    ("close_line", "_ok", LINE_OF_3, ()),
    ("close_line", "add", LINE_OF_3, ()),
    ("close_line", "redraw", LINE_OF_3, ()),
    ("cancel_drawing", "redraw", as_it_is, ()),
    ("pick", "to_world", as_it_is, (300, 200)),
    ("pick", "to_screen", as_it_is, (300, 200)),
    ("pick", "_ok", as_it_is, (300, 200)),
    ("select", "refresh_list", as_it_is, (1,)),
    ("select", "show_props", as_it_is, (1,)),
    ("select", "redraw", as_it_is, (1,)),
    ("delete", "focus_get", selecting(1), ()),
    ("delete", "refresh_list", selecting(1), ()),
    ("delete", "redraw", selecting(1), ()),
    ("refresh_list", "show_props", as_it_is, ()),
    ("_list_selected", "show_props", selecting(1), ()),
    ("_list_selected", "redraw", selecting(1), ()),
    ("apply_props", "refresh_list", sizing, ()),
    ("apply_props", "redraw", sizing, ()),
    ("ok", "destroy", as_it_is, ()),
]
STATIC = {"_ok", "_moved"}
OF_TK = ("focus_get", "destroy")


def spy_on(cls, callee, calls):
    """An override that keeps its call and does what the class does."""
    original = getattr(cls, callee)

    def override(*args, **kwargs):
        calls.append(callee)
        return original(*args, **kwargs)

    return override


def unshown(cls, stage):
    """An editor of this class that has stand-ins for its window and widgets."""
    editor = cls.__new__(cls)
    vars(editor).update(vars(stage.editor(one_of_each()["entities"], scale=5000.0)))
    del editor.destroy  # the class has one
    return editor


@pytest.mark.parametrize("level", ["class", "subclass", "instance"])
@pytest.mark.parametrize(
    "operation, callee, prepare, arguments", CALLS, ids=lambda v: v if isinstance(v, str) else ""
)
def test_overridden_operation_is_used(
    sketcher, monkeypatch, level, operation, callee, prepare, arguments
):
    """On the class, a subclass or the editor itself."""
    stage = Stage()
    stage.replace(monkeypatch, sketcher)
    calls, cls = [], type("Editor", (sketcher.SketchEditor,), dict.fromkeys(OF_TK, lambda e: None))
    spy = spy_on(cls, callee, calls)
    member = staticmethod(spy) if callee in STATIC else spy
    if level == "subclass":
        cls = type("Own", (cls,), {callee: member})
    elif level == "class":
        monkeypatch.setattr(cls if callee in OF_TK else sketcher.SketchEditor, callee, member)
    editor = unshown(cls, stage)
    prepare(editor)
    if level == "instance":
        setattr(editor, callee, spy if callee in STATIC else types.MethodType(spy, editor))
    arguments = [a(editor) if callable(a) else a for a in arguments]
    calls.clear()
    getattr(editor, operation)(*arguments)
    assert calls and set(calls) == {callee}


@pytest.mark.parametrize("level", ["class", "subclass"])
@pytest.mark.parametrize(
    "callee", ["_build", "_default_grid", "_extent", "fit", "redraw", "refresh_list", "show_props"]
)
def test_overridden_operation_is_used_by_the_constructor(
    open_editor, sketcher, monkeypatch, level, callee
):
    calls = []
    cls = sketcher.SketchEditor
    spy = spy_on(cls, callee, calls)
    if level == "class":
        monkeypatch.setattr(cls, callee, spy)
    else:
        cls = type("Editor", (cls,), {callee: spy})
    open_editor(one_of_each(), cls=cls)
    assert calls


def test_operation_borrowed_from_another_editor_is_used():
    lender = PlainEditor(width=200, height=100, scale=2.0, centre=np.array([5.0, 0.0]))
    borrower = PlainEditor(width=400, height=400, scale=1.0, entities=[circle(r=3.0)])
    borrower.to_screen = lender.to_screen
    borrower.redraw()
    ((corners, _),) = borrower.canvas.named("create_polygon")
    assert corners == (96.0, 50.0, 90.0, 44.0, 84.0, 50.0, 90.0, 56.0)
    assert borrower.pick(90, 44) == 0


def test_validity_may_be_overridden_by_an_ordinary_method(open_editor, sketcher):
    class Editor(sketcher.SketchEditor):
        def _ok(self, e):
            return self.sk["entities"].index(e) == 2

    editor = open_editor(one_of_each(), cls=Editor)
    assert len([i for i in editor.canvas.find_all() if editor.canvas.type(i) == "polygon"]) == 1


def test_moving_may_be_overridden_by_an_ordinary_method(open_editor, sketcher):
    class Editor(sketcher.SketchEditor):
        def _moved(self, e, d):
            return {**e, "moved": (self is not None, len(d))}

    editor = open_editor(one_of_each(), cls=Editor)
    moving(editor)
    editor._drag(ANYWHERE)
    assert editor.sk["entities"][1]["moved"] == (True, 2)


def test_a_selection_that_a_class_works_out_is_asked_between_the_shapes(open_editor, sketcher):
    """Not for all of them before any is painted: what it answers may hang on what is there."""
    painted = []

    class Selecting(sketcher.SketchEditor):
        @property
        def sel(self):
            shapes = [
                item for item in self.canvas.find_all() if self.canvas.type(item) == "polygon"
            ]
            painted.append(len(shapes))

        @sel.setter
        def sel(self, index):
            pass

    editor = open_editor({"entities": one_of_each()["entities"][:3]}, cls=Selecting)
    del painted[:]
    editor.redraw()
    assert {0, 1, 2} <= set(painted)
