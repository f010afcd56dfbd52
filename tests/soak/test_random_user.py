"""The random user at a small size, and that it finds what is wrong with an editor."""

import copy
import os
import signal
import time
from pathlib import Path

import pytest
from soak import random_user
from soak.random_user import Plan

SHORT = 3_000  # events


def found_by_a_user(cls, plan):
    """The first fault of an editor class that is found: its step and what is told."""
    faults = []
    random_user.use(
        cls, plan._replace(most_faults=1), lambda step: None, lambda *f: faults.append(f)
    )
    return faults


def test_the_editor_has_no_faults():
    assert random_user.run(Plan(SHORT)) == (SHORT, [])


def test_jobs_share_the_events():
    assert random_user.run(Plan(101, seed=2), jobs=2) == (101, [])


class Editors:
    """Editors with one fault each."""

    def __init__(self, base):
        self.base = base

    def paints_one_item_more(self):
        class Editor(self.base):
            def redraw(self):
                super().redraw()
                if self.sel is not None:
                    self.canvas.create_line(0, 0, 9, 9)

        return Editor

    def paints_with_one_option_more(self):
        class Editor(self.base):
            def redraw(self):
                super().redraw()
                self.canvas.itemconfigure("all", state="disabled")

        return Editor

    def paints_the_preview_first(self):
        class Editor(self.base):
            def redraw(self):
                super().redraw()
                self.canvas.tag_lower(self.canvas.find_all()[-1])

        return Editor

    def paints_a_hair_beside(self):
        class Editor(self.base):
            def redraw(self):
                super().redraw()
                self.canvas.move(self.canvas.find_all()[-1], 1e-9, 0)

        return Editor

    def forgets_to_repaint_after_a_tool_is_chosen(self):
        class Editor(self.base):
            def cancel_drawing(self):
                self.clicks, self.drag = [], None

        return Editor

    def draws_in_the_callers_sketch(self):
        class Editor(self.base):
            def __init__(self, parent, sketch, **arguments):
                super().__init__(parent, sketch, **arguments)
                self.callers = sketch

            def add(self, ent):
                super().add(ent)
                if self.callers:
                    self.callers["entities"] = list(self.sk["entities"])

        return Editor

    def adds_twice(self):
        class Editor(self.base):
            def add(self, ent):
                super().add(ent)
                if ent["type"] == "polygon":
                    super().add(ent)

        return Editor

    def adds_what_is_not_valid(self):
        class Editor(self.base):
            @staticmethod
            def _ok(e):
                return e is not None and e["type"] == "polygon" or super(Editor, Editor)._ok(e)

        return Editor

    def deletes_while_text_is_typed(self):
        class Editor(self.base):
            def focus_get(self):
                return None

        return Editor

    def deletes_the_last_shape(self):
        class Editor(self.base):
            def delete(self):
                if self.sel is not None:
                    self.sel = len(self.sk["entities"]) - 1
                super().delete()

        return Editor

    def keeps_the_list_while_dragging(self):
        class Editor(self.base):
            def refresh_list(self, keep=False):
                if not (keep and self.drag):
                    super().refresh_list(keep)

        return Editor

    def keeps_the_form_after_a_move(self):
        class Editor(self.base):
            def show_props(self):
                if not (self.drag and self.drag["kind"] == "move"):
                    super().show_props()

        return Editor

    def selects_without_telling_the_list(self):
        class Editor(self.base):
            def select(self, i):
                self.sel = i
                self.show_props()
                self.redraw()

        return Editor

    def adds_up_its_moves(self):
        class Editor(self.base):
            def _drag(self, e):
                super()._drag(e)
                if self.drag and self.drag["kind"] == "move" and self.sel is not None:
                    self.drag["orig"] = self.sk["entities"][self.sel]
                    self.drag["start"] = self.cursor

        return Editor

    def moves_a_hair_too_far(self):
        class Editor(self.base):
            @staticmethod
            def _moved(e, d):
                return super(Editor, Editor)._moved(e, d * (1 + 2**-52))

        return Editor

    def snaps_to_the_grid_first(self):
        class Editor(self.base):
            def key_points(self):
                return super().key_points()[:1]

        return Editor

    def picks_the_largest(self):
        class Editor(self.base):
            def pick(self, x, y):
                hit = super().pick(x, y)
                return hit if hit is None else max(hit - 1, 0)

        return Editor

    def keeps_half_of_a_refused_edit(self):
        class Editor(self.base):
            def apply_props(self):
                super().apply_props()
                if self.status.cget("text").startswith(("Not applied", "Nicht")):
                    self.sk["entities"][self.sel]["r"] = 0.001

        return Editor

    def stores_the_offset_as_typed(self):
        class Editor(self.base):
            def ok(self):
                super().ok()
                if self.winfo_exists():
                    self.sk["offset"] = self.offset.get()

        return Editor

    def closes_in_spite_of_problems(self):
        class Editor(self.base):
            def ok(self):
                self.result = self.sk
                self.destroy()

        return Editor

    def replaces_shapes_that_it_leaves_alone(self):
        class Editor(self.base):
            def delete(self):
                super().delete()
                self.sk["entities"][:] = copy.deepcopy(self.sk["entities"])

        return Editor

    def hands_back_a_copy(self):
        class Editor(self.base):
            def run(self):
                result = super().run()
                return result and dict(result)

        return Editor

    def raises_now_and_then(self):
        class Editor(self.base):
            def _zoom(self, f, x, y):
                super()._zoom(f, x, y)
                if f < 1 and x > 400:
                    raise ZeroDivisionError("planted")

        return Editor

    def catches_what_it_should_let_through(self):
        class Editor(self.base):
            def snapped(self, x, y):
                try:
                    return super().snapped(x, y)
                except TypeError:
                    return self.cursor

        return Editor

    def is_left_behind_when_it_can_not_be_made(self):
        class Editor(self.base):
            def __init__(self, parent, sketch, **arguments):
                try:
                    super().__init__(parent, sketch, **arguments)
                except Exception:
                    import tkinter

                    tkinter.Toplevel(parent)
                    raise

        return Editor


PLANTED = [name for name in vars(Editors) if not name.startswith("_")]


@pytest.mark.parametrize("fault", PLANTED)
def test_a_planted_fault_is_found(fault, sketcher):
    assert found_by_a_user(getattr(Editors(sketcher.SketchEditor), fault)(), Plan(SHORT))


def test_what_is_told_of_a_fault_replays_it(sketcher):
    editor_class = Editors(sketcher.SketchEditor).adds_twice()
    ((step, told),) = found_by_a_user(editor_class, Plan(SHORT))
    dialog, event = step
    assert Plan(SHORT).replay(step).endswith(f"--seed 1 --dialog {dialog} --events {event}")
    assert found_by_a_user(editor_class, Plan(event, dialog=dialog)) == [(step, told)]
    assert told.startswith("shapes that ")


# -- in a process of its own --------------------------------------------------------------------


def editor_that(meets_its_end):
    class Editor(random_user.imported(random_user.EDITOR)):
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
