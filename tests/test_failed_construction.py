"""Constructors that fail, and what dialogs leave behind."""

import gc
import tkinter as tk

import pytest

from support.neighbours import circle, one_of_each
from support.plain import Recorder
from support.widgets import tcl_state

pytestmark = pytest.mark.usefixtures("neighbours", "only_new_garbage")


class Failure(Exception):
    """Raised by a neighbour in the middle of the construction."""


def raising(*args, **kwargs):
    raise Failure(args)


def what_is_left(root, neighbours):
    """Commands and variables of Tcl once nothing but the module could hold the dialog."""
    neighbours.Tooltip.calls.clear()
    neighbours.Form.made.clear()
    gc.collect()
    return tcl_state(root)


def fail_unit(name):
    def prepare(monkeypatch, sketcher, neighbours):
        neighbours.units.fail[name] = lambda *args: Failure(name)

    return prepare


def fail_sketch(name):
    def prepare(monkeypatch, sketcher, neighbours):
        neighbours.S.fail[name] = lambda *args: Failure(name)

    return prepare


def fail_name(name, replacement=raising):
    def prepare(monkeypatch, sketcher, neighbours):
        monkeypatch.setattr(sketcher, name, replacement)

    return prepare


def fail_palette(key):
    def prepare(monkeypatch, sketcher, neighbours):
        del neighbours.PAL[key]

    return prepare


def fail_operation(name):
    def prepare(monkeypatch, sketcher, neighbours):
        monkeypatch.setattr(sketcher.SketchEditor, name, raising)

    return prepare


def fail_last_tip(monkeypatch, sketcher, neighbours):
    tips = dict(sketcher.TOOL_TIPS)
    del tips["slot"]
    monkeypatch.setattr(sketcher, "TOOL_TIPS", tips)


def fail_describe(monkeypatch, sketcher, neighbours):
    monkeypatch.setattr(sketcher, "describe", raising)


FAILURES = {
    "copy": (fail_name("copy", Recorder(deepcopy=raising)), Failure),
    "tr": (fail_name("tr"), Failure),
    "units": (fail_name("units"), Failure),
    "from_si": (fail_unit("from_si"), Failure),
    "unit": (fail_unit("unit"), Failure),
    "num_text": (fail_name("num_text"), Failure),
    "px": (fail_name("px"), Failure),
    "Tooltip": (fail_name("Tooltip"), Failure),
    "outline": (fail_sketch("outline"), Failure),
    "depths": (fail_sketch("depths"), Failure),
    "no panel colour": (fail_palette("panel"), KeyError),
    "no line colour": (fail_palette("line"), KeyError),
    "no background colour": (fail_palette("bg"), KeyError),
    "tip missing": (fail_last_tip, KeyError),
    "describe": (fail_describe, Failure),
    **{
        name: (fail_operation(name), Failure)
        for name in "_default_grid _extent _build refresh_list show_props fit redraw".split()
    },
}


@pytest.mark.parametrize("name", FAILURES)
def test_failing_constructor_leaves_nothing_behind(
    root, sketcher, neighbours, monkeypatch, open_editor, name
):
    open_editor(one_of_each()).destroy()
    before = what_is_left(root, neighbours)
    prepare, error = FAILURES[name]
    with monkeypatch.context() as patch:
        prepare(patch, sketcher, neighbours)
        with pytest.raises(error) as caught:
            sketcher.SketchEditor(root, one_of_each())
        del caught
    assert root.winfo_children() == []
    root.update()
    assert {type(shown) for shown in root.errors} <= {error}
    root.errors.clear()
    assert what_is_left(root, neighbours) == before


@pytest.mark.parametrize("failing", ["new", "references", "sketch", "entities"])
def test_bad_arguments_leave_no_window(root, sketcher, neighbours, failing):
    arguments = {"sketch": one_of_each(), "references": ()}
    if failing == "new":
        neighbours.S.fail["new"] = TypeError("new")
        arguments["sketch"] = None
    elif failing == "references":
        arguments["references"] = 5
    elif failing == "sketch":
        arguments["sketch"] = 5
    else:
        arguments["sketch"] = {"entities": 5}
    with pytest.raises((TypeError, AttributeError)):
        sketcher.SketchEditor(root, **arguments)
    assert root.winfo_children() == []


def test_failing_subclass_constructor_raises_its_own_error(root, sketcher):
    class Editor(sketcher.SketchEditor):
        def fit(self):
            raise Failure(self.winfo_exists())

    with pytest.raises(Failure) as caught:
        Editor(root, None)
    assert caught.value.args == (1,)
    assert root.winfo_children() == []


def test_failing_constructor_raises_its_own_error_though_closing_fails_too(root, sketcher):
    class Editor(sketcher.SketchEditor):
        def fit(self):
            raise Failure("fit")

        def destroy(self):
            super().destroy()
            raise ZeroDivisionError

    with pytest.raises(Failure, match="fit"):
        Editor(root, None)
    assert root.winfo_children() == []


def test_parent_that_is_gone_is_refused(root, sketcher):
    parent = tk.Toplevel(root)
    parent.destroy()
    with pytest.raises(tk.TclError):
        sketcher.SketchEditor(parent, None)
    assert root.winfo_children() == []


@pytest.mark.parametrize("end", ["ok", "destroy"])
def test_closed_dialog_leaves_nothing_behind(root, neighbours, open_editor, send, end):
    def use():
        editor = open_editor(one_of_each())
        for i in range(5):
            editor.select(i)
        editor.apply_props()
        hand = send(editor)
        hand.motion(50, 50)
        hand.wheel(60, 60, 120)
        getattr(editor, end)()

    use()
    before = what_is_left(root, neighbours)
    use()
    assert root.winfo_children() == []
    assert what_is_left(root, neighbours) == before


def test_editors_may_follow_each_other_and_stand_side_by_side(open_editor):
    first, second = open_editor(one_of_each()), open_editor()
    first.delete()
    second.add(circle())
    second.select(0)
    first.select(3)
    assert (first.sel, second.sel) == (3, 0)
    first.ok()
    assert second.winfo_exists()
    third = open_editor(first.result)
    assert third.sk == first.sk
