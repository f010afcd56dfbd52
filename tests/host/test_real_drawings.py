"""What drawings of the world have that those of this application don't."""

import math

import pytest
from ezdxf.math import BSpline, ConstructionArc
from shapely.geometry import LinearRing, Point
from support.drawings import new_drawing, raw, read, rectangle
from tandrel import sketch as S
from tandrel.exchange import ExchangeError, OutlineOpen

REPAIRED = "The file is damaged; it was repaired as well as it can be."


class TestCurves:
    def test_one_without_an_end_is_told(self):
        """It runs to infinity and back, or is so large that it would take millions of edges."""
        drawing, space = new_drawing()
        space.add_rational_spline([(0, 0), (50, 100), (100, 0)], [1, -1, 1], degree=2)
        space.add_ellipse((0, 0), (1e9, 0), 0.5)
        space.add_circle((20, 20), 5)
        (_, notes) = read(drawing, unit="mm", outline="go on")
        assert notes == [
            "Left out (2): an outline can have 10000 corners at most, near u = 0 mm, v = 0 mm"
        ]

    def test_a_closed_spline(self):
        """Its area is that of a fine polygon of the same curve, worked out by the library."""
        drawing, space = new_drawing()
        flat = [(0, 0), (50, -20), (100, 0), (90, 60), (40, 80), (-10, 50)]
        spline = space.add_spline()
        spline.set_closed([(u, v, 0) for u, v in flat])
        points = [(p.x, p.y) for p in spline.construction_tool().approximate(20_000)]
        area = abs(sum(a[0] * b[1] - b[0] * a[1] for a, b in zip(points, points[1:]))) / 2
        ((found,), notes) = read(drawing)
        assert S.area(found) == pytest.approx(area * 1e-6, abs=1e-6 * 0.3)
        assert notes == ["Curves (1): divided into edges within 0.001 mm"]

    def test_knots_may_begin_anywhere(self):
        found = []
        for first in (0, 5):
            drawing, space = new_drawing()
            spline = BSpline([(0, 0), (30, 60), (60, -40), (100, 0)], order=4)
            moved = space.add_spline()
            moved.apply_construction_tool(spline)
            moved.knots = [knot + first for knot in spline.knots()]
            space.add_lwpolyline([(0, 0), (0, 90), (100, 90), (100, 0)])
            found += read(drawing)[0]
        assert S.area(found[0]) == pytest.approx(S.area(found[1]), rel=1e-12)

    @pytest.mark.parametrize("turn", [1 / 8, 3 / 8, 1 / 2])
    def test_one_that_turns_from_side_to_side(self, turn):
        """Where it does, in the middle of a chord, it lies on that: v = 400 (u / 100 - turn)³."""
        drawing, space = new_drawing()
        rest = 1 - turn
        flat = [-(turn**3), turn**2 * rest, -turn * rest**2, rest**3]
        space.add_open_spline([(100 * k / 3, 400 * v, 0) for k, v in enumerate(flat)])
        ends = (0, 400 * flat[0]), (100, 400 * flat[3])
        space.add_lwpolyline([ends[0], (0, -500), (100, -500), ends[1]])
        ((found,), _) = read(drawing)
        rim = LinearRing(S.outline(found))
        curve = [Point(k / 1e4, 0.4 * (k / 1e3 - turn) ** 3) for k in range(1001)]
        assert max(map(rim.distance, curve)) < 1e-6

    def test_curves_of_fit_points_alone(self):
        drawing, space = new_drawing()
        space.add_spline([(0, 0), (50, 10), (100, 0)])
        space.add_line((0, 0), (100, 0))
        ((found,), _) = read(drawing)
        # That of a parabola, about: how the curve ends hangs on the library's release.
        assert S.area(found) == pytest.approx(100 * 10 * 2 / 3 * 1e-6, rel=0.1)

    def test_an_arc_as_a_spline_lets_a_slot_be_a_slot(self):
        drawing, space = new_drawing()
        for start, end in (((20, -5), (20, 5)), ((0, 5), (0, -5))):
            half = ConstructionArc.from_2p_angle(start, end, 180)
            space.add_spline().apply_construction_tool(BSpline.from_arc(half))
        space.add_line((0, 5), (20, 5))
        space.add_spline().apply_construction_tool(BSpline([(0, -5), (20, -5)], order=2))
        ((found,), notes) = read(drawing)
        assert (found["type"], notes) == ("slot", [])
        assert found["r"] == pytest.approx(0.005, abs=1e-8)

    def test_ellipses_and_parts_of_them(self):
        drawing, space = new_drawing()
        space.add_ellipse((0, 0), (40, 10), 0.5)
        space.add_ellipse((200, 0), (30, 0), 0.5, 0, math.pi)
        space.add_line((170, 0), (230, 0))
        (whole, half), _ = read(drawing)
        assert S.area(whole) == pytest.approx(math.pi * 1700e-6 / 2, abs=1e-6 * 0.2)
        assert S.area(half) == pytest.approx(math.pi * 30 * 15e-6 / 2, abs=1e-6 * 0.2)
        assert S.outline(half)[:, 1].min() == pytest.approx(0)

    @pytest.mark.parametrize("ratio", [0.5, 1.0])
    @pytest.mark.parametrize("first, last", [(0, 6.2832), (0, 6.28318), (1, 1 + 2 * math.pi)])
    def test_a_whole_ellipse_begins_anywhere_and_ends_there_but_for_rounding(
        self, ratio, first, last
    ):
        drawing, space = new_drawing()
        space.add_ellipse((0, 0), (40, 10), ratio, first, last)
        ((whole,), _) = read(drawing)
        assert S.area(whole) == pytest.approx(math.pi * 1700e-6 * ratio, abs=1e-6 * 0.2)

    def test_closed_curves_of_fit_points_alone(self):
        drawing, space = new_drawing()
        space.add_spline([(0, 0), (50, -20), (100, 0), (90, 60), (40, 80), (-10, 50)]).closed = True
        ((found,), _) = read(drawing)
        assert S.area(found) > 8e-3  # that of the polygon through the points

    def test_one_whose_first_point_is_repeated_but_for_rounding(self):
        areas = []
        for last in ([], [(0, 0)], [(0, 1e-9)]):
            drawing, space = new_drawing()
            points = [(0, 0), (50, -20), (100, 0), (90, 60), (40, 80), (-10, 50)]
            space.add_spline([*points, *last]).closed = True
            areas.append(S.area(read(drawing)[0][0]))
        assert areas == pytest.approx([areas[0]] * 3, rel=1e-6)

    @pytest.mark.parametrize("lift", [0, 0.01])
    def test_a_flat_polyline_in_space_is_flat(self, lift):
        drawing, space = new_drawing()
        space.add_polyline3d([(0, 0, 5), (10, 0, 5 + lift), (0, 10, 5)], close=True)
        assert S.area(read(drawing)[0][0]) == pytest.approx(50e-6)

    def test_what_leans_by_rounding_is_flat(self):
        drawing, space = new_drawing()
        space.add_circle((0, 0), 5, dxfattribs={"extrusion": (0, 1e-6, 1)})
        assert read(drawing)[0][0]["type"] == "circle"


class TestDamage:
    def test_points_in_another_order_of_codes(self):
        sides = [(0, 0, 9, 0), (9, 0, 9, 9), (9, 9, 0, 9), (0, 9, 0, 0)]
        lines = [x for u, v, w, z in sides for x in (0, "LINE", 8, 0, 10, u, 11, w, 20, v, 21, z)]
        ((found,), notes) = read(raw(*lines), unit="mm")
        assert (found["type"], notes) == ("rectangle", [REPAIRED])

    def test_a_damaged_text_refuses_nothing(self):
        text = (0, "TEXT", 8, 0, 10, "x", 20, 0, 40, "high", 1, "Ø")
        ((found,), notes) = read(raw(*text, 0, "CIRCLE", 8, 0, 10, 0, 20, 0, 40, 5))
        assert found["r"] == 0.005
        assert notes == [REPAIRED, "Left out (1): texts"]

    @pytest.mark.parametrize(
        "lines_end, end", [(b"\r\r\n", b""), (b"\n", b"\x1a"), (b"\n", b"\0\n")]
    )
    def test_signs_at_the_end_of_lines_and_files(self, lines_end, end):
        """Of lines whose points are written in another order, too."""
        line = (0, "LINE", 8, 0, 10, 0, 11, 9, 20, 0, 21, 9)
        data = raw(*line, 0, "CIRCLE", 8, 0, 10, 0, 20, 0, 40, 5).encode()
        ((found,), notes) = read(data.replace(b"\n", lines_end) + end, unit="mm")
        assert found["type"] == "circle"
        assert REPAIRED in notes

    def test_half_a_drawing_is_not_repaired(self):
        text = raw(0, "LINE", 8, 0, 10, 0, 11, 9, 20, 0, 21, 9)
        with pytest.raises(ExchangeError, match="not a sound"):
            read(text[: text.rindex("0\nENDSEC")], unit="mm")


class TestOutline:
    def test_one_that_lacks_a_little_is_asked_about(self):
        drawing, space = new_drawing()
        space.add_lwpolyline([(0, 0), (100, 0), (100, 50), (0, 50), (0, 0.5)])
        space.add_circle((20, 20), 5)
        with pytest.raises(
            OutlineOpen, match="4 lines around 100 mm × 50 mm.*0.5 mm near"
        ) as asked:
            read(drawing)
        assert asked.value.place == pytest.approx((0, 0.00025))
        ((hole,), notes) = read(drawing, outline="go on")
        assert hole["type"] == "circle"
        assert notes[0].startswith("Gaps that stay (1): the largest contour lacks 0.5 mm, near")

    def test_one_of_several_pieces(self):
        drawing, space = new_drawing()
        for start, end in [((1, 0), (99, 0)), ((100, 1), (100, 49)), ((99, 50), (1, 50))]:
            space.add_line(start, end)
        space.add_line((0, 49), (0, 1))
        space.add_circle((20, 20), 5)
        with pytest.raises(OutlineOpen, match="4 lines around 100 mm × 50 mm"):
            read(drawing)

    def test_one_among_very_many_strokes(self):
        drawing, space = new_drawing()
        space.add_lwpolyline([(0, 0), (100, 0), (100, 50), (0, 50), (0, 0.5)])
        space.add_circle((20, 20), 5)
        for k in range(1200):
            space.add_line((30 + k % 60, 10 + k // 60), (30.5 + k % 60, 10 + k // 60))
        with pytest.raises(OutlineOpen, match="4 lines around 100 mm × 50 mm"):
            read(drawing)

    def test_one_that_a_bend_line_closes_in_part(self):
        drawing, space = new_drawing()
        space.add_lwpolyline([(100, 29), (100, 0), (0, 0), (0, 60), (100, 60), (100, 30)])
        space.add_line((80, 0), (80, 60))
        with pytest.raises(OutlineOpen, match="5 lines around 100 mm × 60 mm.*1 mm near"):
            read(drawing)

    @pytest.mark.parametrize(
        "pens", [[{"color": 1}, {"color": 2}], [{"layer": "A"}, {"layer": "B"}]]
    )
    def test_one_that_shares_a_side_with_a_contour_of_another_pen(self, pens):
        """A part beside another, or the rest of one that a bend line of its pen divides."""
        drawing, space = new_drawing()
        left = [(50, 0), (0, 0), (0, 60), (50, 60), (50, 0)]
        right = [(50, 0), (100, 0), (100, 60), (50, 60)]
        for corners, pen in zip((left, right), pens):
            for start, end in zip(corners, corners[1:]):
                space.add_line(start, end, dxfattribs=pen)
        with pytest.raises(OutlineOpen, match="3 lines around 50 mm × 60 mm.*60 mm near"):
            read(drawing)
        ((found,), notes) = read(drawing, outline="go on")
        assert S.area(found) == pytest.approx(3e-3)
        assert notes == ["Left out (3): lines and arcs that do not close, near u = 50 mm, v = 0 mm"]

    def test_one_that_shares_sides_with_the_contours_on_either_side(self):
        drawing, space = new_drawing()
        rectangle(space, 0, 0, 50, 60)
        rectangle(space, 80, 0, 50, 60, layer="B")
        for v in (0, 60):
            space.add_line((50, v), (80, v), dxfattribs={"layer": "C"})
        with pytest.raises(OutlineOpen, match="2 lines around 30 mm × 60 mm.*60 mm near"):
            read(drawing)

    def test_one_whose_side_is_missing(self):
        drawing, space = new_drawing()
        space.add_lwpolyline([(0, 50), (0, 0), (100, 0), (100, 50)])
        space.add_circle((20, 20), 5)
        with pytest.raises(OutlineOpen):
            read(drawing)

    def test_one_that_crosses_itself(self):
        drawing, space = new_drawing()
        space.add_lwpolyline([(0, 0), (100, 80), (100, 0), (0, 80)], close=True)
        space.add_circle((20, 30), 5)
        with pytest.raises(OutlineOpen, match="cross or touch themselves"):
            read(drawing)

    @pytest.mark.parametrize("is_spline", [True, False])
    def test_one_with_more_corners_than_any_can_have(self, is_spline):
        drawing, space = new_drawing()
        if is_spline:
            space.add_rational_spline([(0, 0), (50, 100), (100, 0)], [1, -1, 1], degree=2)
        else:
            space.add_lwpolyline([(k / 500, k % 2) for k in range(50_000)] + [(0, 90)], close=True)
        space.add_circle((20, 30), 5)
        with pytest.raises(OutlineOpen, match="0 mm large, .*: an outline can have 10000 corners"):
            read(drawing)

    def test_lines_within_and_beside_a_part_are_none(self):
        """Engraved, and dimension lines that reach around it."""
        drawing, space = new_drawing()
        rectangle(space, 0, 0, 100, 50)
        space.add_lwpolyline([(10, 10), (90, 10), (90, 40), (10, 40), (10, 11)])
        space.add_lwpolyline([(-10, 60), (-10, -10), (110, -10)])
        assert len(read(drawing)[0]) == 1


class TestNothingShown:
    def test_a_drawing_on_its_sheets(self):
        drawing, space = new_drawing()
        drawing.layout("Layout1").add_circle((0, 0), 5)
        ((found,), notes) = read(drawing)
        assert found["type"] == "circle"
        assert notes == ["Nothing is in the model: this is what is on the sheet Layout1."]
        space.add_point((0, 0))
        with pytest.raises(ExchangeError, match="no closed contour"):
            read(drawing)

    def test_of_several_sheets_the_first_with_something_to_cut(self):
        """Together, what is on one would lie on, or in, what is on another."""
        drawing, space = new_drawing()
        drawing.layout("Layout1").add_text("Ø 10")
        rectangle(drawing.new_layout("Plate"), 0, 0, 100, 60)
        rectangle(drawing.new_layout("Cover"), 20, 20, 60, 30)
        ((found,), notes) = read(drawing)
        assert S.area(found) == pytest.approx(6e-3)
        assert notes == [
            "Nothing is in the model: this is what is on the sheet Plate.",
            "Left out (1): parts on other sheets",
        ]

    def test_all_of_it_on_hidden_layers(self):
        drawing, space = new_drawing()
        drawing.layers.add("PART").off()
        space.add_circle((0, 0), 5, dxfattribs={"layer": "PART"})
        space.add_text("Ø 10")
        ((found,), notes) = read(drawing)
        assert found["type"] == "circle"
        assert notes == [
            "Nothing that could be cut is shown: this is what is hidden.",
            "Left out (1): texts, near u = 0 mm, v = 0 mm",
        ]


class TestBendLines:
    """From corner to corner of an outline that is drawn in lines."""

    CORNERS = [(0, 0), (50, 0), (100, 0), (100, 60), (50, 60), (0, 60)]

    @pytest.mark.parametrize("pen", [{"layer": "BEND"}, {"color": 3}, {"linetype": "CENTER"}])
    def test_those_of_another_layer_or_pen_divide_nothing(self, pen):
        drawing, space = new_drawing()
        space.add_line((50, 0), (50, 60), dxfattribs=pen)
        for start, end in zip(self.CORNERS, self.CORNERS[1:] + self.CORNERS[:1]):
            space.add_line(start, end)
        ((part,), notes) = read(drawing)
        assert S.area(part) == pytest.approx(6e-3)
        assert notes == ["Left out (1): lines and arcs that do not close, near u = 50 mm, v = 0 mm"]

    @pytest.mark.parametrize("is_circle", [True, False])
    def test_one_through_a_hole_does_not_fill_it(self, is_circle):
        drawing, space = new_drawing()
        space.add_line((50, 0), (50, 60))
        for start, end in zip(self.CORNERS, self.CORNERS[1:] + self.CORNERS[:1]):
            space.add_line(start, end)
        if is_circle:
            space.add_circle((50, 30), 5)
        else:
            space.add_arc((50, 30), 5, 45, 200)
            space.add_arc((50, 30), 5, 200, 45)
        (found, notes) = read(drawing)
        assert sorted(S.area(e) for e in found) == pytest.approx([25e-6 * math.pi, 6e-3])
        (note,) = notes
        assert note.startswith("Left out (1): lines and arcs that do not close, near u = 50 mm")

    @pytest.mark.parametrize("gap", [0, 0.001])
    def test_one_across_a_polyline_that_comes_back_without_being_marked_as_closed(self, gap):
        drawing, space = new_drawing()
        corners = [(5, 0), (3, 4), (-3, 4), (-5, 0), (-3, -4), (3, -4), (5, gap)]
        space.add_lwpolyline(corners)
        space.add_line((-5, 0), (5, 0))
        ((hole,), notes) = read(drawing)
        assert S.area(hole) == pytest.approx(64e-6)
        assert notes[-1].startswith("Left out (1): lines and arcs that do not close, near")

    @pytest.mark.parametrize("radius", [0, -5, 1e-300])
    def test_one_through_what_is_no_hole(self, radius):
        drawing, space = new_drawing()
        space.add_line((50, 0), (50, 60))
        for start, end in zip(self.CORNERS, self.CORNERS[1:] + self.CORNERS[:1]):
            space.add_line(start, end)
        space.add_circle((50, 30), radius)
        assert len(read(drawing)[0]) == 2


class TestContours:
    @pytest.mark.parametrize("is_forward", [True, False])
    def test_one_that_a_gap_keeps_open_is_what_it_was_meant_to_be(self, is_forward):
        drawing, space = new_drawing()
        corners = [(0, 0), (100, 0), (100, 50), (0, 50), (0, 0.01)]
        space.add_lwpolyline(corners if is_forward else corners[::-1])
        ((found,), notes) = read(drawing)
        assert (found["type"], found["w"], found["h"]) == ("rectangle", 0.1, 0.05)
        assert notes[0].startswith("Gaps closed (1): the widest is 0.01 mm, near")

    def test_those_that_touch_another_from_inside_are_notches(self):
        drawing, space = new_drawing()
        rectangle(space, 0, 0, 100, 60)
        rectangle(space, 0, 20, 10, 10)
        rectangle(space, 40, 40, 10, 20)
        rectangle(space, 20, 20, 10, 10)
        (hole, plate), notes = read(drawing)
        assert S.area(hole) == pytest.approx(1e-4)
        assert S.area(plate) == pytest.approx(6e-3 - 3e-4)
        (note,) = notes
        assert note.startswith("Cut out of the contour that they touch from inside (2), near")

    @pytest.mark.parametrize(
        "u, v, width, height, layer",
        [(0, 20, 10, 10, "BEND"), (0, 0, 100, 59.9, "0"), (0, 0, 90, 55, "0")],
    )
    def test_but_for_those_that_may_not_be_meant_so(self, u, v, width, height, layer):
        drawing, space = new_drawing()
        rectangle(space, 0, 0, 100, 60)
        rectangle(space, u, v, width, height, layer)
        ((plate,), notes) = read(drawing, layers=["0", layer])
        assert S.area(plate) == pytest.approx(6e-3)
        assert notes[0].startswith(
            "Left out (1): contours that touch another one from inside, near"
        )

    @pytest.mark.parametrize("width", [100, 10])
    def test_and_for_holes_that_touch_in_a_point(self, width):
        drawing, space = new_drawing()
        rectangle(space, 0, 0, width, 60)
        space.add_circle((5, 30), 5)
        ((plate,), notes) = read(drawing)
        assert plate["type"] == "rectangle"
        assert notes[0].startswith(
            "Left out (1): contours that touch another one from inside, near"
        )

    def test_the_two_sides_of_a_line_with_a_width_are_told(self):
        """The outline and a hole of a circuit board, plotted with a pen of 0.1 mm."""
        drawing, space = new_drawing()
        for half in (0.05, -0.05):
            rectangle(space, -half, -half, 100 + 2 * half, 60 + 2 * half)
            space.add_circle((20, 20), 5 + half)
        for radius in (0.2, 0.4):  # a drilled pad
            space.add_circle((50, 50), radius)
        rectangle(space, 1, 1, 98, 58)
        found, notes = read(drawing)
        assert len(found) == 7
        assert notes == [
            "Contours 0.1 mm within another one (2), near u = 0.05 mm, v = 0.05 mm: they may be the"
            " two sides of lines that were drawn with their width"
        ]

    def test_one_that_touches_itself_is_taken_apart(self):
        drawing, space = new_drawing()
        space.add_lwpolyline(
            [(0, 0), (20, 0), (20, 20), (40, 20), (40, 40), (20, 40), (20, 20), (0, 20)], close=True
        )
        found, _ = read(drawing)
        assert [S.area(e) for e in found] == pytest.approx([4e-4, 4e-4])

    def test_shapes_drawn_twice_in_different_ways(self):
        drawing, space = new_drawing()
        space.add_circle((0, 0), 5)
        space.add_lwpolyline([(-5, 0, 1), (5, 0, 1)], format="xyb", close=True)
        space.add_arc((0, 0), 5, 10, 190)
        space.add_arc((0, 0), 5, 190, 10)
        found, notes = read(drawing)
        assert len(found) == 1
        assert notes == ["Drawn more than once (2): one of each is kept"]

    def test_only_those_with_gaps_may_be_off_by_as_much_from_their_doubles(self):
        drawing, space = new_drawing()
        corners = [(0, 0), (20, 0), (20, 20), (0, 20)]
        for one, two in zip(corners, [*corners[1:], (0, 0.09)]):
            space.add_line(one, two)
        rectangle(space, 0.05, 0, 19.95, 20)
        rectangle(space, 40, 0, 20, 20)
        rectangle(space, 39.95, -0.05, 20.1, 20.1)
        found, notes = read(drawing)
        assert [round(S.area(e) * 1e6) for e in found] == [399, 400, 404]
        assert notes[0] == "Drawn more than once (1): one of each is kept"
