"""Constructors that fail, and what dialogs leave behind."""

import gc
import tkinter as tk

import pytest

from support.neighbours import circle, one_of_each
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


# Names of the module and operations of the class that raise when they are called, what neighbours
# are asked for, and what is missing from a palette or a table.
CALLED = "copy.deepcopy tr units num_text px Tooltip describe".split()
CALLED += "_default_grid _extent _build refresh_list show_props fit redraw".split()
ASKED = "units.from_si units.unit S.outline S.depths".split()
MISSING = "PAL.panel PAL.line PAL.bg TOOL_TIPS.slot".split()


def let_fail(patch, sketcher, name):
    """Let what has this name fail; the error that comes of it."""
    owner, _, part = name.rpartition(".")
    of = getattr(sketcher, owner) if owner else sketcher
    if name in MISSING:
        patch.delitem(of, part)
        return KeyError
    if name in ASKED:
        patch.setitem(of.fail, part, lambda *args: Failure(name))
    else:
        patch.setattr(of if hasattr(of, part) else sketcher.SketchEditor, part, raising)
    return Failure


@pytest.mark.parametrize("name", CALLED + ASKED + MISSING)
def test_failing_constructor_leaves_nothing_behind(
    root, sketcher, neighbours, monkeypatch, open_editor, name
):
    open_editor(one_of_each()).destroy()
    before = what_is_left(root, neighbours)
    with monkeypatch.context() as patch:
        error = let_fail(patch, sketcher, name)
        with pytest.raises(error) as caught:
            sketcher.SketchEditor(root, one_of_each())
        del caught
    assert root.winfo_children() == []
    root.update()
    assert {type(shown) for shown in root.errors} <= {error}
    root.errors.clear()
    assert what_is_left(root, neighbours) == before


@pytest.mark.parametrize(
    "sketch, references", [(None, ()), (one_of_each(), 5), (5, ()), ({"entities": 5}, ())]
)
def test_bad_arguments_leave_no_window(root, sketcher, neighbours, sketch, references):
    neighbours.S.fail["new"] = TypeError("new")
    with pytest.raises((TypeError, AttributeError)):
        sketcher.SketchEditor(root, sketch, references=references)
    assert root.winfo_children() == []


@pytest.mark.parametrize("closing_fails", [False, True])
def test_failing_constructor_of_a_subclass_raises_its_own_error(root, sketcher, closing_fails):
    class Editor(sketcher.SketchEditor):
        def fit(self):
            raise Failure(self.winfo_exists())

        def destroy(self):
            super().destroy()
            if closing_fails:
                raise ZeroDivisionError

    with pytest.raises(Failure) as caught:
        Editor(root, None)
    assert caught.value.args == (1,)
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
