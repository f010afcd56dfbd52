"""Neighbours that raise, answer nonsense or meddle: an ordinary exception at most.

Whatever a neighbour does, and whatever foreign code does in the middle of an operation, the
process neither crashes nor hangs, and an error that isn't the editor's to catch arrives as it was
raised.
"""


import numpy as np
import pytest
from soak.hostility.attack import NONSENSE
from support.neighbours import circle, rectangle
from support.operations import CLICK_TOOLS, OPERATIONS, TOOLS, run_all, sound
from support.plain import Recorder

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

    @pytest.mark.parametrize("how", HOW)
    @pytest.mark.parametrize("operation", ["outline", "corners", "area", "inside", "depths"])
    def test_the_sketch_module(self, neighbours, operation, how):
        def make():
            editor = sound()

            def fail(*args):
                self.meddle(editor, how)

            neighbours.S.fail[operation] = fail
            return editor

        run_all(make)

    @pytest.mark.parametrize("how", HOW)
    def test_the_canvas(self, sketcher, how):
        class Meddling(Recorder):
            def __getattr__(self, name):
                if name.startswith("create_"):
                    self.meddle()
                return super().__getattr__(name)

        def make():
            editor = sound()
            editor.canvas = Meddling(winfo_width=400, winfo_height=300)
            editor.canvas.meddle = lambda: self.meddle(editor, how)
            return editor

        run_all(make)

    @pytest.mark.parametrize("how", HOW)
    @pytest.mark.parametrize(
        "name", ["_ok", "to_screen", "to_world", "snapped", "redraw", "describe"]
    )
    def test_overrides(self, sketcher, monkeypatch, name, how):
        real_describe = sketcher.describe

        def make():
            editor = sound()
            if name == "describe":

                def describe(e):
                    self.meddle(editor, how)
                    return real_describe(e)

                monkeypatch.setattr(sketcher, "describe", describe)
                return editor
            real = getattr(editor, name)

            def operation(*args):
                self.meddle(editor, how)
                return real(*args)

            setattr(editor, name, operation)
            return editor

        run_all(make)

    def test_an_operation_that_calls_itself_ends_by_the_interpreter_s_limit(self, sketcher):
        editor = sound()
        editor._preview = editor.redraw
        with pytest.raises(RecursionError):
            editor.redraw()
