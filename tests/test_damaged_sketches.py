"""Damaged sketches and senseless views: an ordinary exception at most.

Nothing that a sketch holds or an attribute of the editor is set to may crash the process or keep
it busy for ever.
"""

import copy
import itertools
import math
from contextlib import suppress

import numpy as np
import pytest
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st
from support.neighbours import (
    PALETTE,
    circle,
    one_of_each,
    polygon,
    rectangle,
    regular,
    slot,
)
from support.operations import OPERATIONS, run_all, sound
from support.plain import Event, PlainEditor, Var

# What numpy says about nonsense isn't this module's concern.
pytestmark = pytest.mark.filterwarnings("ignore")

NAN, INF = math.nan, math.inf


GRID = {"fill": PALETTE["bg"]}


def grid_lines(editor):
    return [args for _, args, options in editor.canvas.drawn if options == GRID]


def others(editor):
    return [name for name, _, options in editor.canvas.drawn if options != GRID]


AXES_AND_DOT = ["create_line", "create_line", "create_text", "create_text", "create_oval"]


class TestRepaintingEnds:
    """Where the grid makes no sense, there is none; everything else is painted."""

    def repaint(self, step=None, **attributes):
        editor = PlainEditor(**{"scale": 40.0, **attributes})
        if step is not None:
            editor.grid_step = lambda: step
        editor.redraw()
        assert others(editor) == AXES_AND_DOT
        return grid_lines(editor)

    FAR = [1e17, -1e17, 1e20, -1e30, 1e300, -1.7e308]

    @pytest.mark.parametrize(
        "step, attributes, most",
        [(step, {}, 0) for step in (NAN, INF, -INF, -1.0, -5e-324, -1e308, np.float64(NAN))]
        + [(step, {}, 2) for step in (0, 0.0, -0.0, np.float64(0))]
        + [(1.0, {"scale": scale}, 2) for scale in (NAN, INF, -1.0, -INF)]
        + [(1.0, {"scale": scale}, 72) for scale in (1e300, 1e308, 1e16, 1e-16, 1e-300)]
        + [(1.0, {"centre": np.array([far, 0.0])}, 0) for far in (NAN, INF, -INF)]
        + [(1.0, {"centre": np.array([0.0, far])}, 0) for far in (NAN, INF, -INF)]
        + [(1.0, {"centre": np.array([far, 0.0])}, 14) for far in FAR]
        + [(1.0, {"centre": np.array([0.0, far])}, 14) for far in FAR]
        + [
            (None, {"grid": Var(text)}, 72)
            for text in ("0", "-1", "nan", "inf", "1e-320", "1e308", "5e-324", "")
        ],
    )
    def test_with_a_step_a_scale_or_a_centre_of_no_sense(self, neighbours, step, attributes, most):
        assert len(self.repaint(step, **attributes)) <= most

    @pytest.mark.parametrize("step", [5e-324, 1e-300, 1e-30, 1e-11])
    def test_with_a_tiny_step_the_lines_are_still_ten_pixels_apart(self, neighbours, step):
        upright = [line for line in self.repaint(step) if line[1] == 0 and line[3] == 300]
        assert 8 <= len(upright) <= 41

    @pytest.mark.parametrize("step", [1e17, 1e300, 10**30])
    def test_with_a_step_far_wider_than_the_canvas(self, neighbours, step):
        upright, level = self.repaint(step)[1::2]
        assert upright == (200.0, 0, 200.0, 300)
        assert level == (0, 150.0, 400, 150.0)

    @pytest.mark.parametrize("scale", [0.0, -0.0, 5e-324])
    def test_with_no_scale(self, neighbours, scale):
        with suppress(ZeroDivisionError):
            PlainEditor(scale=scale).redraw()

    @pytest.mark.parametrize(
        "lo, hi",
        [
            ((-INF, 0.0), (5.0, 5.0)),
            ((0.0, 0.0), (INF, 5.0)),
            ((0.0, NAN), (5.0, 5.0)),
            ((0.0, 0.0), (5.0, NAN)),
            ((5.0, 5.0), (-5.0, -5.0)),
        ],
    )
    def test_with_a_box_that_is_not_finite_or_upside_down(self, neighbours, lo, hi):
        corners = {(0, 300): np.array(lo), (400, 0): np.array(hi)}
        assert self.repaint(1.0, to_world=lambda x, y: corners[x, y]) == []

    def test_with_every_mixture_of_extremes(self, neighbours):
        extremes = [0.0, 5e-324, 1e-160, 1.0, 1e16, 1e160, 1.7e308, INF, NAN]
        extremes += [-value for value in extremes]
        for step, scale, far in itertools.product(extremes, repeat=3):
            editor = PlainEditor(scale=scale, centre=np.array([far, 1.0]))
            editor.grid_step = lambda: step
            with suppress(ArithmeticError, ValueError):
                editor.redraw()
            assert len(grid_lines(editor)) < 100


numbers = st.one_of(
    st.floats(),
    st.integers(),
    st.sampled_from([10**400, -(10**400), 2**63, 1e308, -1e308, 5e-324, -0.0, True]),
)
anything = st.one_of(
    numbers,
    st.none(),
    st.text(max_size=3),
    st.binary(max_size=3),
    st.lists(numbers, max_size=4),
    st.lists(st.lists(numbers, max_size=3), max_size=5),
    st.dictionaries(st.sampled_from(["type", "x", "points"]), numbers, max_size=2),
    st.builds(np.array, st.lists(st.floats(), max_size=3)),
)


@st.composite
def damaged_entities(draw):
    """A sound entity with some of its keys gone or of another value."""
    entity = dict(draw(st.sampled_from(one_of_each()["entities"])))
    for key in draw(st.sets(st.sampled_from(sorted(entity)), min_size=1)):
        if draw(st.booleans()):
            del entity[key]
        else:
            entity[key] = draw(anything)
    return entity


sketches = st.lists(st.one_of(damaged_entities(), anything), min_size=1, max_size=4)
unchecked = [*settings.default.suppress_health_check, HealthCheck.function_scoped_fixture]
hostile = settings(max_examples=60, suppress_health_check=unchecked)


class TestDamagedEntities:
    @hostile
    @given(entities=sketches, sel=st.sampled_from([None, 0, 1]))
    def test_no_operation_crashes_or_hangs(self, sketcher, entities, sel):
        def make():
            editor = sound()
            editor.sk["entities"] = copy.deepcopy(entities) + [circle()]
            editor.sel = sel
            return editor

        run_all(make)

    @hostile
    @given(entities=sketches, sel=st.sampled_from([None, 0, 1]))
    def test_bad_shapes_stop_neither_repainting_nor_fitting_nor_picking(
        self, sketcher, entities, sel
    ):
        editor = sound()
        editor.sk["entities"] = [circle(0.0, 0.0, 0.01)] + copy.deepcopy(entities)
        editor.sel = sel
        editor.fit()
        assert editor.pick(*editor.to_screen((0.0, 0.0))) is not None
        drawn = [name for name, _, _ in editor.canvas.drawn].count("create_polygon")
        assert drawn == sum(map(editor._ok, editor.sk["entities"]))

    @hostile
    @given(entity=damaged_entities(), dx=st.floats(), dy=st.floats())
    def test_moving_a_damaged_shape_leaves_it_alone(self, sketcher, entity, dx, dy):
        before = repr(entity)

        with suppress(KeyError, ValueError, TypeError, IndexError, OverflowError):
            sketcher.SketchEditor._moved(entity, (dx, dy))
        assert repr(entity) == before

    @pytest.mark.parametrize(
        "entity",
        [
            {"type": "spline", "points": [[0, 0]]},
            {"type": None},
            {"type": "circle"},
            circle(None, "x", [1]),
            circle(NAN, INF, -INF),
            circle(10**400, 0, 1),
            rectangle(w=NAN),
            rectangle(w=1e308, h=1e308),
            regular(n=10**400),
            regular(n=NAN),
            regular(n="six"),
            slot(r=INF),
            polygon((NAN, 0), (1, INF), (0, 1)),
            {"type": "polygon", "points": None, "radius": 0.0},
            {"type": "polygon", "points": [[0.0], [1.0, 2.0, 3.0], "ab", None], "radius": 0.0},
            {"type": "polygon", "points": "text", "radius": 0.0},
            {"type": "polygon", "points": {0: 1}, "radius": 0.0},
        ],
    )
    def test_are_neither_drawn_nor_picked_nor_measured(self, sketcher, entity):
        editor = sound()
        editor.clicks = []
        editor.sk["entities"] = [copy.deepcopy(entity)]
        editor.sel = 0
        editor.refs = []
        editor.fit()
        assert editor.pick(200, 150) is None
        names = [name for name, _, _ in editor.canvas.drawn]
        assert "create_polygon" not in names
        assert names.count("create_text") == 2
        assert (editor.scale, editor.centre.tolist()) == (0.8 * (300 / 0.1), [0.0, 0.0])

    def test_of_unknown_type_give_no_key_points(self, sketcher):
        editor = sound()
        editor.clicks = []
        editor.sk["entities"] = [{"type": "spline", "x": 1}, {"type": None}, {"type": [1]}]
        assert len(editor.key_points()) == 1

    def cyclic_points(self):
        points = [[0.0, 0.0], [1.0, 0.0]]
        points.append(points)
        return {"type": "polygon", "points": points, "radius": 0.0}

    def cyclic_entity(self):
        entity = circle(0.0, 0.0, 0.01)
        entity["self"] = entity
        return entity

    @pytest.mark.parametrize("make", ["cyclic_points", "cyclic_entity"])
    def test_that_hold_themselves(self, sketcher, make):
        def editor():
            made = sound()
            made.sk["entities"] = [getattr(self, make)(), circle(0.0, 0.0, 0.02)]
            made.sk["entities"].append(made.sk["entities"])
            made.sel = 0
            return made

        raised = run_all(editor)
        assert "redraw" not in raised
        assert "pick" not in raised

    def test_a_moved_shape_that_holds_itself_still_does(self, sketcher):
        moved = sketcher.SketchEditor._moved(self.cyclic_entity(), (1, 2))
        assert moved["self"] is moved
        assert (moved["xc"], moved["yc"]) == (1.0, 2.0)

    def test_nested_deeper_than_the_interpreter_goes(self, sketcher):
        nested = []
        for _ in range(100_000):
            nested = [nested]

        with pytest.raises(RecursionError):
            sketcher.SketchEditor._moved({**circle(), "deep": nested}, (1, 2))
        while nested:
            nested = nested.pop()

    @pytest.mark.parametrize(
        "sketch",
        [None, 5, [], {}, {"entities": [None]}, {"entities": iter([circle()])}]
        + [{"entities": some} for some in (None, 5, "text", {}, {0: circle()}, ())],
    )
    def test_a_sketch_or_a_list_of_shapes_that_is_none(self, sketcher, sketch):
        def make():
            editor = sound()
            editor.sk = sketch
            return editor

        run_all(make)


class TestDamagedEditors:
    @pytest.mark.parametrize("value", [None, "text", 10**400, NAN, [], {}, object(), np.zeros(0)])
    def test_an_attribute_of_any_value(self, sketcher, value):
        names = "sk sel tool snap grid sides drag clicks cursor scale centre plane dim refs"
        for name in (names + " canvas list status").split():

            def make():
                editor = sound()
                setattr(editor, name, value)
                return editor

            run_all(make)

    @pytest.mark.parametrize("attribute", ["sk", "tool", "cursor", "scale", "canvas"])
    def test_a_missing_attribute_is_an_attribute_error(self, sketcher, attribute):
        editor = sound()
        delattr(editor, attribute)
        with pytest.raises(AttributeError, match=attribute):
            editor.redraw()

    def test_no_editor_at_all(self, sketcher):
        cls = sketcher.SketchEditor
        for name in OPERATIONS:
            method = name.split()[0]
            for editor in (None, 5, object()):
                with pytest.raises((AttributeError, TypeError)):
                    getattr(cls, method)(editor)

    def test_a_pan_that_never_began(self, sketcher):
        with pytest.raises(AttributeError):
            sound()._pan_move(Event(1, 2))


class TestInTheWindow:
    """A damaged sketch in a real dialog with the application's own neighbours."""

    DAMAGED = [
        {"type": "circle"},
        circle(NAN, 0.0, 0.01),
        circle(10**400, 0.0, 0.01),
        rectangle(w="wide"),
        {"type": "polygon", "points": [[0.0], None], "radius": 0.0},
        {"type": "polygon", "radius": 0.0},
        regular(n=None),
    ]

    @pytest.fixture
    def editor(self, open_editor):
        sound = circle(0.0, 0.0, 0.02)
        return open_editor({"entities": copy.deepcopy(self.DAMAGED) + [sound]})

    def test_it_opens_and_lists_them_with_a_question_mark(self, editor):
        rows = [editor.list.item(iid) for iid in editor.list.get_children()]
        assert [row["values"][0] for row in rows[:1] + rows[3:4] + rows[6:7]] == ["?"] * 3
        assert len(rows) == len(self.DAMAGED) + 1

    def test_they_can_be_deleted_one_by_one_and_the_rest_accepted(self, editor, send, root):
        hands = send(editor)
        sound = editor.sk["entities"][-1]
        for _ in self.DAMAGED:
            editor.list.selection_set("0")
            editor.update()
            assert editor.sel == 0
            hands.key("Delete")
        assert editor.sk["entities"] == [sound]
        reported = (ValueError, KeyError, TypeError, IndexError, OverflowError)
        assert [error for error in root.errors if not isinstance(error, reported)] == []
        root.errors.clear()
        hands.stroke(hands.at((0.0, 0.0)), hands.at((0.01, 0.0)), hands.at((0.02, 0.0)))
        editor.ok()
        assert editor.result["entities"] == [circle(0.02, 0.0, 0.02)]
