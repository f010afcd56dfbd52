"""Which shape lies under the pointer, selecting it, moving it, deleting it."""

import copy
import math
import tkinter as tk
from tkinter import ttk

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from support.neighbours import circle, polygon, rectangle, slot
from support.plain import painting_nothing

NAN = math.nan


@pytest.fixture
def editor(neighbours):
    """400 x 300 pixels, 10 pixels to the unit, the origin at (200, 150); nothing is painted."""
    return painting_nothing()


class TestPick:
    @pytest.mark.parametrize("order", [(0, 1), (1, 0)])
    def test_the_smallest_of_the_hit_shapes_is_picked(self, editor, order):
        plate, hole = rectangle(-10.0, -10.0, 20.0, 20.0), circle(0.0, 0.0, 3.0)
        editor.sk["entities"] = [(plate, hole)[k] for k in order]
        assert editor.sk["entities"][editor.pick(203, 147)] is hole
        assert editor.sk["entities"][editor.pick(260, 90)] is plate

    def test_the_first_of_equally_large_shapes_is_picked(self, editor):
        editor.sk["entities"] = [circle(0.0, 0.0, 9.0)] + [rectangle(-2.0, -2.0, 4.0, 4.0)] * 3
        picked = editor.pick(203, 147)
        assert picked == 1 and type(picked) is int

    def test_areas_are_compared_as_the_host_gives_them(self, editor, neighbours):
        editor.sk["entities"] = [circle(0.0, 0.0, 3.0)]
        neighbours.S.answers["area"] = None  # of a lone one nobody asks how large it is
        assert editor.pick(203, 147) == 0
        editor.sk["entities"] *= 2
        sizes = iter(["large", "a small one"])
        neighbours.S.answers["area"] = lambda e: next(sizes)
        assert editor.pick(203, 147) == 1

    def test_a_small_shape_hit_near_its_outline_beats_a_large_one_around(self, editor):
        editor.sk["entities"] = [rectangle(-10.0, -10.0, 20.0, 20.0), circle(5.0, 0.0, 1.0)]
        assert editor.pick(265, 150) == 1

    @pytest.mark.parametrize(
        "pixel, hit", [((259, 150), 0), ((259.001, 150), None), ((258, 150), 0), ((260, 150), None)]
    )
    def test_exactly_nine_pixels_from_an_outline_s_point_still_counts(self, editor, pixel, hit):
        editor.sk["entities"] = [polygon((5, 0), (-5, 3), (-5, -3))]
        assert editor.pick(*pixel) == hit

    @pytest.mark.parametrize("d, hit", [(6, 0), (6.4, None), (8, None)])
    def test_nearness_is_the_distance_in_any_direction(self, editor, d, hit):
        editor.sk["entities"] = [rectangle(0.0, 0.0, 5.0, 5.0)]
        assert editor.pick(200 - d, 150 + d) == hit

    def test_nearness_is_measured_to_the_points_not_to_the_edges(self, editor):
        editor.sk["entities"] = [rectangle(-10.0, 0.0, 20.0, 5.0)]
        assert editor.pick(200, 152) is None
        assert editor.pick(102, 152) == 0

    def test_the_radius_is_the_module_s(self, editor, sketcher, monkeypatch):
        editor.sk["entities"] = [polygon((5, 0), (-5, 3), (-5, -3))]
        assert editor.pick(270, 150) is None
        monkeypatch.setattr(sketcher, "SNAP_PX", 20)
        assert editor.pick(270, 150) == 0

    def test_inside_is_asked_with_outline_and_the_editor_s_plane_point(self, editor, neighbours):
        outline, point = np.array([[9.0, 9.0], [12.0, 9.0], [12.0, 12.0]]), np.array([77.0, 88.0])
        neighbours.S.answers.update(outline=outline, inside=np.bool_(True))
        editor.sk["entities"] = [circle()]
        editor.to_world = lambda x, y: point
        assert editor.pick(203, 147) == 0
        ((o, p),) = neighbours.S.named("inside")
        assert o is outline
        assert p is point

    def test_inside_is_asked_only_where_no_point_is_near(self, editor, neighbours):
        editor.sk["entities"] = [rectangle(0.0, 0.0, 5.0, 5.0), rectangle(-20.0, -20.0, 60.0, 60.0)]
        assert editor.pick(203, 147) == 0
        assert neighbours.S.count("inside") == 1

    def test_areas_are_asked_of_the_hit_shapes_only(self, editor, neighbours):
        hit, missed = rectangle(-5.0, -5.0, 10.0, 10.0), rectangle(15.0, 10.0, 1.0, 1.0)
        editor.sk["entities"] = [missed, hit]
        assert editor.pick(200, 150) == 1
        assert [args[0] for args in neighbours.S.named("area")] == [hit]
        assert neighbours.S.named("area")[0][0] is hit

    @pytest.mark.parametrize("error", [ValueError, KeyError, TypeError])
    def test_bad_shapes_are_passed_over(self, editor, neighbours, error):
        bad, good = circle(0.0, 0.0, 1.0), rectangle(-10.0, -10.0, 20.0, 20.0)
        neighbours.S.fail["outline"] = lambda e: error("no") if e is bad else None
        editor.sk["entities"] = [bad, good]
        assert editor.pick(200, 150) == 1

    @pytest.mark.parametrize("error", [ValueError, KeyError, TypeError])
    def test_errors_of_inside_and_area_pass_whatever_they_are(self, editor, neighbours, error):
        editor.sk["entities"] = [rectangle(-10.0, -10.0, 20.0, 20.0)]
        for operation in ("inside", "area"):
            neighbours.S.fail = {operation: error("broken")}
            with pytest.raises(error):
                editor.pick(200, 150)

    def test_asks_the_editor_for_validity_and_pixels(self, editor, neighbours):
        mine, other = rectangle(-10.0, -10.0, 20.0, 20.0), rectangle(-9.0, -9.0, 18.0, 18.0)
        editor.sk["entities"] = [mine, other]
        editor._ok = lambda e: e is mine
        assert editor.pick(200, 150) == 0
        neighbours.S.answers["inside"] = False
        editor.to_screen = lambda p: (p[0] * 100 + 5000, p[1] * 100)
        assert editor.pick(200, 150) is None
        assert editor.pick(4000, -1005) == 0

    def test_an_outline_with_a_point_that_is_no_number_is_never_near(self, editor, neighbours):
        outline = [[0.0, 0.0], [NAN, 0.0], [5.0, 5.0]]
        editor.sk["entities"] = [circle()]
        for order in ((0, 1, 2), (1, 0, 2), (2, 0, 1)):
            neighbours.S.answers.update(outline=np.array([outline[k] for k in order]), inside=False)
            assert editor.pick(200, 150) is None
        neighbours.S.answers["inside"] = True
        assert editor.pick(200, 150) == 0

    @pytest.mark.parametrize("areas", [(5.0, NAN), (NAN, 5.0), (NAN, NAN)])
    def test_an_area_that_is_no_number_is_not_smaller_than_any(self, editor, neighbours, areas):
        editor.sk["entities"] = [circle(), rectangle(-1.0, -1.0, 2.0, 2.0)]
        neighbours.S.answers["area"] = lambda e: areas[editor.sk["entities"].index(e)]
        assert editor.pick(200, 150) == 0

    def test_validity_of_all_shapes_is_asked_in_their_order(self, editor):
        asked = []
        editor.sk["entities"] = [circle(), polygon(), rectangle()]
        editor._ok = lambda e: asked.append(e["type"])
        assert editor.pick(200, 150) is None
        assert asked == ["circle", "polygon", "rectangle"]


class TestSelect:
    @pytest.mark.parametrize("i", [0, 1, None])
    def test_sets_the_selection_then_list_form_and_picture(self, editor, i):
        editor.sk["entities"] = [rectangle(), circle()]
        editor.sel = 1
        assert editor.select(i) is None
        assert editor.sel == i
        assert editor.calls == [
            ("refresh_list", (), {"keep": True}),
            ("show_props", (), {}),
            ("redraw", (), {}),
        ]

    def test_the_list_is_refreshed_with_the_new_selection(self, editor):
        seen = []
        editor.refresh_list = lambda keep: seen.append(editor.sel)
        editor.select(1)
        assert seen == [1]


class TestMoved:
    @pytest.fixture
    def moved(self, sketcher):
        return sketcher.SketchEditor._moved

    @pytest.mark.parametrize("d", [(1, 2), [1.0, 2.0], np.array([1.0, 2.0]), ("1", "2")])
    def test_of_every_type(self, moved, card, d):
        before = copy.deepcopy(card.sample)
        result = moved(card.sample, d)
        assert result == card.moved
        assert list(result) == list(before)
        assert card.sample == before

    def test_shares_nothing_with_the_entity(self, moved):
        entity = {**polygon(), "extra": {"list": [1, 2]}}
        result = moved(entity, (0, 0))
        assert result == entity
        assert result is not entity
        assert result["points"] is not entity["points"]
        assert result["extra"] == entity["extra"]
        assert result["extra"]["list"] is not entity["extra"]["list"]

    def test_positions_become_plain_floats(self, moved):
        result = moved({"type": "circle", "xc": 1, "yc": "2", "r": 3, "n": 4}, (0, 0))
        assert [type(result[key]) for key in ("xc", "yc", "r", "n")] == [float, float, int, int]
        assert result["yc"] == 2.0
        result = moved({"type": "polygon", "points": ((np.float32(1), 2), [3, 4, 5])}, (1, 1))
        assert result["points"] == [[2.0, 3.0], [4.0, 5.0]]
        assert type(result["points"]) is list
        assert all(type(p) is list and len(p) == 2 for p in result["points"])
        assert all(type(value) is float for p in result["points"] for value in p)

    def test_every_pair_of_keys_is_moved_whatever_the_type(self, moved):
        pairs = {key: 0.0 for key in ("x", "y", "xc", "yc", "x1", "y1", "x2", "y2")}
        result = moved({"type": "arcs", **pairs, "w": 5.0}, (1, 2))
        assert list(result.values()) == ["arcs", 1.0, 2.0, 1.0, 2.0, 1.0, 2.0, 1.0, 2.0, 5.0]

    @pytest.mark.parametrize(
        "entity", [{"type": "arcs", "points": [[0, 0]]}, {"type": "arcs", "y": 1.0, "y2": 2}]
    )
    def test_points_of_no_outline_and_a_second_key_alone_are_not_moved(self, moved, entity):
        assert moved(entity, (1, 2)) == entity

    @pytest.mark.parametrize(
        "entity, d, error",
        [
            *(({"type": "arcs", key: 1.0}, (1, 2), KeyError) for key in ("x", "xc", "x1", "x2")),
            ({"x": 1.0, "y": 1.0}, (1, 2), KeyError),
            (circle("left"), (1, 2), ValueError),
            (circle(None), (1, 2), TypeError),
            (circle(), (1,), IndexError),
            (circle(), None, TypeError),
            (circle(), ("a", 0), ValueError),
            ({"type": "polygon"}, (1, 2), KeyError),
            ({"type": "polygon", "points": [[1.0]]}, (1, 2), IndexError),
            ({"type": "polygon", "points": 5}, (1, 2), TypeError),
        ],
    )
    def test_errors_pass(self, moved, entity, d, error):
        with pytest.raises(error):
            moved(entity, d)

    @given(st.floats(), st.floats(), st.floats(), st.floats())
    def test_adds_in_doubles(self, sketcher, x, y, dx, dy):
        result = sketcher.SketchEditor._moved(circle(x, y), (dx, dy))
        assert repr((result["xc"], result["yc"])) == repr((x + dx, y + dy))
        result = sketcher.SketchEditor._moved(polygon((x, y)), (dx, dy))
        assert repr(result["points"]) == repr([[x + dx, y + dy]])


def instance_of(cls):
    """An instance for type tests, without a window."""
    return cls.__new__(cls)


class TestDelete:
    @pytest.fixture
    def editor(self, editor):
        editor.sk["entities"] = [rectangle(), circle(), slot()]
        editor.sel = 1
        return editor

    @pytest.mark.parametrize("sel, left", [(1, [rectangle(), slot()]), (0, [circle(), slot()])])
    def test_removes_the_selected_shape(self, editor, sel, left):
        entities, seen = editor.sk["entities"], []
        editor.sel = sel
        editor.refresh_list = lambda: seen.append((editor.sel, len(entities)))
        assert editor.delete() is None
        assert editor.sk["entities"] is entities
        assert entities == left
        assert editor.sel is None
        assert seen == [(None, 2)]
        assert editor.calls == [("redraw", (), {})]

    def test_does_nothing_without_a_selection(self, editor):
        editor.sel = None
        editor.focus_get = lambda: pytest.fail("asked")
        editor.delete()
        assert len(editor.sk["entities"]) == 3
        assert editor.calls == []

    @pytest.mark.parametrize(
        "cls",
        [ttk.Entry, tk.Entry, ttk.Spinbox, ttk.Combobox, type("MyEntry", (ttk.Entry,), {})],
    )
    def test_does_nothing_while_a_text_field_has_the_focus(self, editor, cls):
        editor.focused = instance_of(cls)
        editor.delete()
        assert len(editor.sk["entities"]) == 3
        assert editor.sel == 1
        assert editor.calls == []

    @pytest.mark.parametrize(
        "cls", [ttk.Button, ttk.Treeview, tk.Canvas, tk.Text, tk.Spinbox, tk.Toplevel]
    )
    def test_deletes_whatever_other_widget_has_the_focus(self, editor, cls):
        editor.focused = instance_of(cls)
        editor.delete()
        assert len(editor.sk["entities"]) == 2

    def test_a_stale_selection_is_an_error_and_stays(self, editor):
        editor.sel = 3
        with pytest.raises(IndexError):
            editor.delete()
        assert editor.sel == 3
        assert len(editor.sk["entities"]) == 3


class TestOnTheScreen:
    def test_a_straight_edge_is_hit_from_outside_between_its_corners_too(
        self, open_editor, sketcher
    ):
        box = rectangle(-0.04, -0.03, 0.08, 0.06)
        editor = open_editor({"entities": [box]})
        between = [p for p in sketcher.S.outline(box) if p[1] == -0.03 and abs(p[0]) < 0.03]
        assert between
        for p in between:
            x, y = editor.to_screen(p)
            assert editor.pick(x, y + 8) == 0
            assert editor.pick(x, y + 10) is None
