"""Neighbours that raise, answer nonsense or meddle: an ordinary exception at most.

Whatever a neighbour does, and whatever foreign code does in the middle of an operation, the
process neither crashes nor hangs, and an error that isn't the editor's to catch arrives as it was
raised.
"""

import sys

import numpy as np
import pytest
from soak.hostility.attack import NONSENSE
from support.neighbours import circle, rectangle
from support.operations import CLICK_TOOLS, OPERATIONS, TOOLS, run_all, sound

# What numpy says about nonsense isn't this module's concern.
pytestmark = pytest.mark.filterwarnings("ignore")

ERRORS = [
    ValueError("v"),
    KeyError("k"),
    TypeError("t"),
    IndexError("i"),
    AttributeError("a"),
    StopIteration("s"),
    MemoryError("m"),
    KeyboardInterrupt("ctrl"),
    type("OwnBase", (BaseException,), {})("base"),
]


PRESSES = [f"_press with {tool}" for tool in TOOLS]
SELECTS, CLICKS = PRESSES[:1], [f"_press with {tool}" for tool in CLICK_TOOLS]
SNAPS = ["_motion", "_drag", "_release", *PRESSES]
REPAINTS = "redraw fit _zoom _motion _drag _release _list_selected add select delete".split()
REPAINTS += ["cancel_drawing", *SELECTS, *CLICKS]
# What is asked, the errors that are an answer to it, and the operations that others come out of.
ASKED = {
    "S.outline": ((ValueError, KeyError, TypeError), ["_default_grid", "pick", *REPAINTS]),
    "S.corners": ((ValueError, KeyError), ["key_points", "snapped", *SNAPS]),
    "S.inside": ((), ["pick", *SELECTS]),
    "S.depths": ((ValueError, KeyError), REPAINTS),
    "S.check": ((), ["ok"]),
    "units.to_si": ((ValueError,), ["ok", *REPAINTS]),
}


@pytest.mark.parametrize("error", ERRORS, ids=lambda e: type(e).__name__)
@pytest.mark.parametrize("name", [*ASKED, "S.area", "units.from_si", "units.fmt"])
def test_an_error_that_is_no_answer_arrives_as_it_was_raised(neighbours, name, error):
    neighbour, asked = name.split(".")
    getattr(neighbours, neighbour).fail[asked] = error
    left = set()
    for operation, run in OPERATIONS.items():
        try:
            run(sound())
        except BaseException as caught:
            assert caught is error, operation
            left.add(operation)
    if name in ASKED:
        answers, operations = ASKED[name]
        assert left == (set() if isinstance(error, answers) else set(operations))


ANSWERS = [nonsense() for nonsense in NONSENSE]


@pytest.mark.parametrize("answer", ANSWERS, ids=lambda value: repr(value).partition(" at ")[0])
class TestNeighboursThatAnswerNonsense:
    def everywhere(self, answers, names, answer):
        """Every operation with this answer in the place of each name."""
        for name in names.split():
            answers[name] = lambda *args: answer
            run_all(sound)
            del answers[name]

    def test_the_sketch_module(self, neighbours, answer):
        names = "outline corners area inside depths check"
        self.everywhere(neighbours.S.answers, names, answer)

    def test_the_units(self, neighbours, answer):
        self.everywhere(neighbours.units.answers, "to_si from_si fmt unit", answer)

    def test_the_names_of_the_module(self, sketcher, monkeypatch, answer):
        asked = dict.fromkeys("S PAL SNAP_PX TOOL_TIPS TYPE_LABEL".split(), answer)
        called = dict.fromkeys("units tr describe".split(), lambda *args: answer)
        for name, value in {**asked, **called}.items():
            with monkeypatch.context() as patch:
                patch.setattr(sketcher, name, value)
                run_all(sound)

    def test_operations_of_the_editor(self, sketcher, answer):
        names = "to_screen to_world grid_step key_points snapped pick _ok _moved _from_drag _slot"
        for name in (names + " _extent _default_grid").split():

            def make():
                editor = sound()
                setattr(editor, name, lambda *args: answer)
                return editor

            run_all(make)


class TestNeighboursThatMeddle:
    """Code that runs in the middle of an operation may change what the operation works on."""

    def meddle(self, editor, how):
        entities = editor.sk.get("entities", [])
        if how == "clear":
            del entities[:]
        elif how == "replace":
            editor.sk["entities"] = [rectangle()]
        elif how == "shrink" and len(entities) > 1:
            entities.pop()
        elif how == "grow" and len(entities) < 50:
            entities.insert(0, circle(0.0, 0.0, 0.001))
        elif how == "forget":
            editor.sk = {"entities": [], "other": 1}
            editor.clicks, editor.drag, editor.refs = [], None, []
            editor.centre, editor.cursor = np.zeros(2), np.zeros(2)
        elif how == "remove":
            for name in ("canvas", "clicks", "centre", "cursor"):
                vars(editor).pop(name, None)

    HOW = ["clear", "replace", "shrink", "grow", "forget", "remove"]
    WHERE = [f"S.{name}" for name in ("outline", "corners", "area", "inside", "depths")]
    WHERE += [f"canvas.create_{kind}" for kind in ("line", "text", "polygon", "oval")]
    WHERE += ["_ok", "to_screen", "to_world", "snapped", "redraw", "module.describe"]

    @pytest.mark.parametrize("how", HOW)
    @pytest.mark.parametrize("where", WHERE)
    def test_in_the_middle_of_an_operation(self, sketcher, neighbours, monkeypatch, where, how):
        owner, _, name = where.rpartition(".")
        shared = {"S": neighbours.S, "module": sketcher}.get(owner)
        original = getattr(shared, name, None)

        def make():
            editor = sound()
            of = shared or (editor.canvas if owner else editor)
            real = original or getattr(of, name)

            def operation(*args, **options):
                self.meddle(editor, how)
                return real(*args, **options)

            monkeypatch.setattr(of, name, operation, raising=False)
            return editor

        run_all(make)

    def test_an_operation_that_calls_itself_ends_by_the_interpreter_s_limit(self, sketcher):
        editor = sound()
        editor._preview = editor.redraw
        with pytest.raises(RecursionError):
            editor.redraw()

    def test_operations_nest_a_thousand_deep_at_most(self, sketcher):
        """Whatever the interpreter allows, since the limit of the C++ stack is none of its."""
        editor = sound()
        depths = []

        def nested(*point):
            depths.append(len(depths))
            return editor.snapped(*point)

        editor.to_world = nested
        limit = sys.getrecursionlimit()
        sys.setrecursionlimit(100_000)
        try:
            with pytest.raises(RecursionError, match="^maximum recursion depth exceeded$"):
                editor.snapped(1, 2)
        finally:
            sys.setrecursionlimit(limit)
        assert len(depths) == 1000
