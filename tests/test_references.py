"""What the operations hold: nothing once they are done, and nothing less than they need."""

import gc
import sys
import weakref

import pytest
from soak.common.growth import forget_names
from support.neighbours import one_of_each
from support.operations import OPERATIONS, sound
from support.plain import PlainEditor, Var

REPETITIONS = 20

pytestmark = pytest.mark.usefixtures("only_new_garbage")


def blocks():
    gc.collect()
    forget_names()
    return sys.getallocatedblocks()


def growth(run):
    """By how many blocks of the interpreter's memory so many runs leave more behind each time.

    The interpreter takes and gives back blocks of its own; what the runs leave is there every time.
    """
    for _ in range(10):
        run()
    held = [blocks()]
    for _ in range(3):
        for _ in range(REPETITIONS):
            run()
        held.append(blocks())
    return min(after - before for before, after in zip(held, held[1:]))


@pytest.mark.parametrize("name", OPERATIONS)
def test_an_operation_leaves_nothing_behind(neighbours, name):
    def run():
        try:
            OPERATIONS[name](sound())
        finally:
            forget(neighbours)

    assert growth(run) < REPETITIONS / 2


@pytest.mark.parametrize("error", [ValueError, RuntimeError])
def test_an_operation_that_fails_leaves_nothing_behind(neighbours, error):
    def fail(*args):
        raise error("no")

    def run():
        editor = PlainEditor(entities=one_of_each()["entities"], sel=0, to_screen=fail)
        for operation in (editor.redraw, lambda: editor.pick(0, 0)):
            with pytest.raises(error):
                operation()
        forget(neighbours)

    assert growth(run) < REPETITIONS / 2


def test_a_value_that_is_replaced_is_forgotten(neighbours):
    editor = PlainEditor(grid=Var("0"), _default_grid=lambda: 0.5)

    def run():
        assert editor.grid_step() == 0.5
        forget(neighbours)

    assert growth(run) < REPETITIONS / 2


def forget(neighbours):
    """Empties the record of what the neighbours were asked."""
    for neighbour in vars(neighbours).values():
        own = getattr(neighbour, "__dict__", {})
        for kept in (own.get("calls"), own.get("asked")):
            if isinstance(kept, list):
                kept.clear()


def test_an_operation_keeps_the_references_of_others(neighbours):
    editor = PlainEditor(entities=one_of_each()["entities"])
    point, entity, units = (1.0, 2.0), editor.sk["entities"][0], neighbours.units
    held = (None, point, entity, units, editor.sk, editor.sk["entities"])

    def counted():
        forget_names()  # whose empty places hold None
        return [sys.getrefcount(each) for each in held]

    before = counted()
    for _ in range(REPETITIONS):
        editor.to_screen(point)
        editor.cancel_drawing()
        editor.redraw()
        editor.grid_step()
        forget(neighbours)
    after = counted()
    assert all(abs(a - b) < REPETITIONS / 2 for a, b in zip(before, after)), (before, after)


def test_a_closed_dialog_is_freed(open_editor, root):
    editor = open_editor(one_of_each())
    gone = weakref.ref(editor)
    editor.destroy()
    del editor
    root.update()
    gc.collect()
    assert gone() is None
