"""Repainting the shapes: holes and islands, the selection, labels, and what may go wrong."""

import numpy as np
import pytest
from support.neighbours import circle, rectangle, slot
from support.painting import corners_on_screen, fills, painted, polygons, without_preview

ORANGE, ACCENT, SOLID, HOLE = "#E8833A", "#1155aa", "#ddeeff", "#f7f7f7"


@pytest.fixture
def editor(neighbours):
    return without_preview()


@pytest.fixture
def nested(editor):
    """The same with two shapes, one in the other."""
    editor.sk["entities"] = [rectangle(0.0, 0.0, 3.0, 3.0), rectangle(1.0, 1.0, 1.0, 1.0)]
    return editor


def outlines(editor):
    return [options["outline"] for _, options in polygons(editor)]


class TestShapes:
    def test_holes_and_islands_alternate(self, editor):
        island = rectangle(2.0, 2.0, 1.0, 1.0)
        hole = rectangle(1.0, 1.0, 4.0, 4.0)
        plate = rectangle(0.0, 0.0, 6.0, 6.0)
        editor.sk["entities"] = [island, plate, hole]
        found = polygons(editor)
        order = [corners_on_screen(editor, e) for e in (plate, hole, island)]
        assert [args for args, _ in found] == order
        assert [options["fill"] for _, options in found] == [SOLID, HOLE, SOLID]

    def test_equal_depths_keep_the_stored_order(self, editor, neighbours):
        entities = [rectangle(float(k), 0.0) for k in range(5)]
        editor.sk["entities"] = entities
        neighbours.S.answers["depths"] = [2, 0, 1, 0, 2]
        order = [corners_on_screen(editor, entities[k]) for k in (1, 3, 2, 0, 4)]
        found = polygons(editor)
        assert [args for args, _ in found] == order
        assert [options["fill"] for _, options in found] == [SOLID, SOLID, HOLE, SOLID, SOLID]

    @pytest.mark.parametrize("depths", [(3, 0, 1), np.array([3, 0, 1]), [3.0, 0.0, 1.0]])
    def test_depths_may_be_any_sequence_of_numbers(self, editor, neighbours, depths):
        editor.sk["entities"] = [rectangle(), rectangle(1.0), rectangle(2.0)]
        neighbours.S.answers["depths"] = depths
        assert fills(editor) == [SOLID, HOLE, HOLE]

    def test_depths_are_asked_once_for_the_whole_sketch(self, editor, neighbours):
        editor.sk["entities"] = [rectangle(), circle()]
        editor.redraw()
        assert [args[0] for args in neighbours.S.named("depths")] == [editor.sk]
        assert neighbours.S.named("depths")[0][0] is editor.sk

    @pytest.mark.parametrize("bad", [circle(r=-1.0), {"type": "slot"}, {"type": "nonsense"}])
    def test_a_bad_shape_is_not_drawn_and_flattens_the_others(self, editor, neighbours, bad):
        plate, hole = rectangle(0.0, 0.0, 6.0, 6.0), rectangle(1.0, 1.0, 4.0, 4.0)
        editor.sk["entities"] = [hole, bad, plate]
        found = polygons(editor)
        assert [args for args, _ in found] == [corners_on_screen(editor, e) for e in (hole, plate)]
        assert [options["fill"] for _, options in found] == [SOLID, SOLID]
        assert neighbours.S.count("depths") == 0

    def test_the_validity_of_all_is_asked_up_to_the_first_bad_one(self, editor):
        first, bad, last = rectangle(), circle(), slot()
        asked = []
        editor._ok = lambda e: asked.append(e) or e is not bad
        editor.sk["entities"] = [first, bad, last]
        editor.redraw()
        assert [id(e) for e in asked] == [id(e) for e in (first, bad, first, bad, last)]

    @pytest.mark.parametrize("error", [ValueError, KeyError])
    def test_refused_depths_flatten_all_shapes(self, editor, neighbours, error):
        editor.sk["entities"] = [rectangle(1.0, 1.0, 4.0, 4.0), rectangle(0.0, 0.0, 6.0, 6.0)]
        neighbours.S.fail["depths"] = error("no")
        assert fills(editor) == [SOLID, SOLID]
        assert polygons(editor)[0][0] == corners_on_screen(editor, editor.sk["entities"][0])

    def test_too_few_depths_are_an_error(self, editor, neighbours):
        editor.sk["entities"] = [rectangle(), circle()]
        neighbours.S.answers["depths"] = [0]
        with pytest.raises(IndexError):
            editor.redraw()

    @pytest.mark.parametrize(
        "depth, fill",
        [(-1, HOLE), (-2, SOLID), (3, HOLE), (0.5, HOLE), (-0.0, SOLID), (True, HOLE)],
    )
    def test_every_multiple_of_two_is_solid(self, nested, neighbours, depth, fill):
        neighbours.S.answers["depths"] = [depth, depth]
        assert fills(nested) == [fill, fill]

    @pytest.mark.parametrize(
        "depths, lowest", [([np.nan, 5], 1), ([np.inf, 5], 1), ([np.nan, np.inf], 0)]
    )
    def test_what_has_no_depth_is_painted_last(self, nested, neighbours, depths, lowest):
        neighbours.S.answers["depths"] = depths
        nested.redraw()
        painted = [points[:2] for points, _ in nested.canvas.named("create_polygon")]
        corners = [nested.to_screen(corner) for corner in ((0.0, 0.0), (1.0, 1.0))]
        assert painted == [corners[lowest], corners[1 - lowest]]

    @pytest.mark.parametrize("error", [ValueError, KeyError])
    def test_a_test_of_validity_that_fails_flattens_all_shapes(self, nested, neighbours, error):
        failures = [error("not now")]

        def valid(e):
            if failures:
                raise failures.pop()
            return True

        assert fills(nested) == [SOLID, HOLE]
        neighbours.S.calls.clear()
        nested._ok = valid
        assert fills(nested) == [SOLID, SOLID]
        assert neighbours.S.count("depths") == 0

    @pytest.mark.parametrize("error", [TypeError, IndexError, RuntimeError])
    def test_other_errors_of_the_test_pass(self, nested, error):
        def refuse(e):
            raise error("broken")

        nested._ok = refuse
        with pytest.raises(error):
            nested.redraw()

    @pytest.mark.parametrize("error", [ValueError, KeyError])
    def test_an_error_of_the_test_while_drawing_passes(self, nested, error):
        answers = iter([True, True])

        def valid(e):
            for answer in answers:
                return answer
            raise error("broken")

        nested._ok = valid
        with pytest.raises(error):
            nested.redraw()

    @pytest.mark.parametrize("error", [ValueError, KeyError])
    def test_shapes_that_cannot_be_gone_through_are_flat(self, nested, neighbours, error):
        class Torn(list):
            def __iter__(self):
                raise error("torn")

        nested.sk["entities"] = Torn(nested.sk["entities"])
        assert fills(nested) == [SOLID, SOLID]
        assert neighbours.S.count("depths") == 0


class TestSelection:
    def test_the_selected_shape_has_a_thick_orange_outline(self, editor):
        editor.sk["entities"] = [rectangle(), circle(), slot()]
        editor.sel = 1
        outlines = [(options["outline"], options["width"]) for _, options in polygons(editor)]
        assert outlines == [(ACCENT, 2), (ORANGE, 3), (ACCENT, 2)]

    def test_the_fill_is_that_of_its_depth(self, nested):
        nested.sel = 1
        assert polygons(nested)[1][1] == {"fill": HOLE, "outline": ORANGE, "width": 3}

    def test_its_labels_come_right_after_its_polygon(self, editor):
        labelled = []
        editor._dimensions = lambda e: labelled.append((e, len(editor.canvas.drawn)))
        editor.sk["entities"] = [rectangle(), circle(), slot()]
        editor.sel = 1
        calls = painted(editor)
        ((entity, count),) = labelled
        assert entity is editor.sk["entities"][1]
        assert calls[count - 1][2]["outline"] == ORANGE
        assert [name for name, _, _ in calls[count:]] == ["create_polygon"]

    def test_a_selected_bad_shape_shows_nothing(self, editor):
        editor._dimensions = lambda e: pytest.fail("labelled")
        editor.sk["entities"] = [rectangle(), circle(r=-1.0)]
        editor.sel = 1
        assert outlines(editor) == [ACCENT]

    @pytest.mark.parametrize("sel", [1, 1.0, True, np.int64(1)])
    def test_is_whatever_equals_the_index(self, nested, sel):
        nested.sel = sel
        assert outlines(nested) == [ACCENT, ORANGE]

    @pytest.mark.parametrize("sel", [None, -1, 2, 7, "1", 0.5])
    def test_nothing_else_selects(self, nested, sel):
        nested._dimensions = lambda e: pytest.fail("labelled")
        nested.sel = sel
        assert outlines(nested) == [ACCENT, ACCENT]

    def test_is_read_for_each_shape(self, nested):
        nested.sel = 0
        nested._dimensions = lambda e: setattr(nested, "sel", 1)
        assert outlines(nested) == [ORANGE, ORANGE]


def test_a_shape_replaced_while_depths_are_asked_shows_its_new_outline(nested, neighbours):
    def replace(sk):
        sk["entities"][1] = circle(0.0, 0.0, 1.0)
        return [0, 1]

    neighbours.S.answers["depths"] = replace
    nested.redraw()
    (_, _), (pixels, _) = nested.canvas.named("create_polygon")
    assert pixels == (240.0, 150.0, 200.0, 110.0, 160.0, 150.0, 200.0, 190.0)
