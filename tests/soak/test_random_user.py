"""The random user at a small size, and that it finds what is wrong with an editor."""

import copy
import io
import json
import os
import signal
import time
import tkinter
from pathlib import Path

import pytest
from soak import random_user
from soak.common.watched import Telling, named
from soak.random_user import Plan

SHORT = 3_000  # events


def found_by_a_user(cls, plan):
    """The first fault of an editor class that is found: its step and what is told."""
    told = io.StringIO()
    random_user.use(cls, plan._replace(most_faults=1), Telling(told))
    lines = map(json.loads, told.getvalue().splitlines())
    return [value for kind, value in lines if kind == "found"]


def test_the_editor_has_no_faults():
    assert random_user.run(Plan(SHORT)) == (SHORT, [])


def test_jobs_share_the_events():
    assert random_user.run(Plan(101, seed=2), jobs=2) == (101, [])


FAULTS = {}


def in_place_of(name, **more):
    """Names a fault: an operation that is done in another way, and what else the class has.

    It is given the editor, what the operation would do, and its arguments.
    """

    def planted(operation):
        FAULTS[operation.__name__] = (name, operation, more)
        return operation

    return planted


def with_fault(fault, base):
    """A class of editors with one fault."""
    name, operation, more = FAULTS[fault]

    def method(self, *arguments, **named):
        real = getattr(super(Editor, self), name)
        return operation(self, lambda: real(*arguments, **named), *arguments, **named)

    Editor = type("Editor", (base,), {name: method, **more})
    return Editor


@in_place_of("redraw")
def paints_one_item_more(editor, redraw):
    redraw()
    if editor.sel is not None:
        editor.canvas.create_line(0, 0, 9, 9)


@in_place_of("redraw")
def paints_with_one_option_more(editor, redraw):
    redraw()
    editor.canvas.itemconfigure("all", state="disabled")


@in_place_of("redraw")
def paints_the_preview_first(editor, redraw):
    redraw()
    editor.canvas.tag_lower(editor.canvas.find_all()[-1])


@in_place_of("redraw")
def paints_a_hair_beside(editor, redraw):
    redraw()
    editor.canvas.move(editor.canvas.find_all()[-1], 1e-9, 0)


@in_place_of("cancel_drawing")
def forgets_to_repaint_after_a_tool_is_chosen(editor, cancel_drawing):
    editor.clicks, editor.drag = [], None


@in_place_of("__init__", add=lambda self, ent: added(self, ent))
def draws_in_the_callers_sketch(editor, construct, parent, sketch, **_):
    construct()
    editor.callers = sketch


def added(editor, ent):
    super(type(editor), editor).add(ent)
    if editor.callers:
        editor.callers["entities"] = list(editor.sk["entities"])


@in_place_of("add")
def adds_twice(editor, add, ent):
    add()
    if ent["type"] == "polygon":
        add()


@in_place_of("_ok")
def adds_what_is_not_valid(editor, ok, e):
    return e is not None and e["type"] == "polygon" or ok()


@in_place_of("focus_get")
def deletes_while_text_is_typed(editor, focus_get):
    return None


@in_place_of("delete")
def deletes_the_last_shape(editor, delete):
    if editor.sel is not None:
        editor.sel = len(editor.sk["entities"]) - 1
    delete()


@in_place_of("refresh_list")
def keeps_the_list_while_dragging(editor, refresh_list, keep=False):
    if not (keep and editor.drag):
        refresh_list()


@in_place_of("show_props")
def keeps_the_form_after_a_move(editor, show_props):
    if not (editor.drag and editor.drag["kind"] == "move"):
        show_props()


@in_place_of("select")
def selects_without_telling_the_list(editor, select, i):
    editor.sel = i
    editor.show_props()
    editor.redraw()


@in_place_of("_drag")
def adds_up_its_moves(editor, drag, event):
    drag()
    if editor.drag and editor.drag["kind"] == "move" and editor.sel is not None:
        editor.drag["orig"] = editor.sk["entities"][editor.sel]
        editor.drag["start"] = editor.cursor


@in_place_of("_moved")
def moves_a_hair_too_far(editor, moved, e, d):
    return type(editor).__base__._moved(e, d * (1 + 2**-52))


@in_place_of("key_points")
def snaps_to_the_grid_first(editor, key_points):
    return key_points()[:1]


@in_place_of("pick")
def picks_the_largest(editor, pick, x, y):
    hit = pick()
    return hit if hit is None else max(hit - 1, 0)


@in_place_of("apply_props")
def keeps_half_of_a_refused_edit(editor, apply_props):
    apply_props()
    if editor.status.cget("text").startswith(("Not applied", "Nicht")):
        editor.sk["entities"][editor.sel]["r"] = 0.001


@in_place_of("ok")
def stores_the_offset_as_typed(editor, ok):
    ok()
    if editor.winfo_exists():
        editor.sk["offset"] = editor.offset.get()


@in_place_of("ok")
def closes_in_spite_of_problems(editor, ok):
    editor.result = editor.sk
    editor.destroy()


@in_place_of("delete")
def replaces_shapes_that_it_leaves_alone(editor, delete):
    delete()
    editor.sk["entities"][:] = copy.deepcopy(editor.sk["entities"])


@in_place_of("run")
def hands_back_a_copy(editor, run):
    result = run()
    return result and dict(result)


@in_place_of("_zoom")
def raises_now_and_then(editor, zoom, f, x, y):
    zoom()
    if f < 1 and x > 400:
        raise ZeroDivisionError("planted")


@in_place_of("snapped")
def catches_what_it_should_let_through(editor, snapped, x, y):
    try:
        return snapped()
    except TypeError:
        return editor.cursor


@in_place_of("__init__")
def is_left_behind_when_it_can_not_be_made(editor, construct, parent, sketch, **_):
    try:
        construct()
    except Exception:
        tkinter.Toplevel(parent)
        raise


@pytest.mark.parametrize("fault", FAULTS)
def test_a_planted_fault_is_found(fault, sketcher):
    assert found_by_a_user(with_fault(fault, sketcher.SketchEditor), Plan(SHORT))


def test_what_is_told_of_a_fault_replays_it(sketcher):
    editor_class = with_fault("adds_twice", sketcher.SketchEditor)
    ((step, told),) = found_by_a_user(editor_class, Plan(SHORT))
    dialog, event = step
    assert Plan(SHORT).replay(step).endswith(f"--seed 1 --dialog {dialog} --events {event}")
    assert found_by_a_user(editor_class, Plan(event, dialog=dialog)) == [[step, told]]
    assert told.startswith("shapes that ")


# -- in a process of its own --------------------------------------------------------------------


def editor_that(meets_its_end):
    class Editor(named(random_user.EDITOR)):
        def _zoom(self, f, x, y):
            meets_its_end()

    return Editor


def crashing(*args, **kwargs):
    return editor_that(lambda: os.kill(os.getpid(), signal.SIGSEGV))(*args, **kwargs)


def hanging(*args, **kwargs):
    return editor_that(lambda: time.sleep(3600))(*args, **kwargs)


@pytest.mark.parametrize("editor, what", [(crashing, "crash: SIGSEGV"), (hanging, "hang: silent")])
def test_a_crash_and_a_hang_are_told_with_their_event(editor, what, monkeypatch):
    monkeypatch.setenv("PYTHONPATH", str(Path(__file__).parent))
    plan = Plan(SHORT, editor=f"{__name__}:{editor.__name__}")
    done, (fault,) = random_user.run(plan)
    dialog, event = fault.step
    assert fault.what.startswith(what)
    assert "in _zoom" in fault.what  # the stack
    assert 0 < event <= done < SHORT
    again = random_user.run(plan._replace(events=event, dialog=dialog))
    assert (again[0], again[1][0].step) == (event, fault.step)
