"""DXF drawings: what others read in those that are written, and what is read in those of others."""

import math

import ezdxf
import ezdxf.path
import pytest
from hypothesis import example, given, settings
from hypothesis import strategies as st
from shapely.geometry import Polygon
from support.children import printed
from support.drawings import binary, new_drawing, opened, raw, read, sketch_in, text_of
from support.neighbours import circle, rectangle, regular, slot
from support.shapes import EVERY_KIND, PAIR, PLATE, document, entities, sketch
from support.ticks import stopping_at
from support.types import CARD
from tandrel import exchange, profile
from tandrel import sketch as S
from tandrel.exchange import ExchangeError, UnitsMissing, dxf
from tandrel.progress import Stopped
from tandrel.storage import Document

METRES = {"mm": 0.001, "cm": 0.01, "m": 1.0, "in": 0.0254}
CODES = {"mm": 4, "cm": 5, "m": 6, "in": 1}
every_unit = pytest.mark.parametrize("unit", METRES)
every_kind = pytest.mark.parametrize("entity", EVERY_KIND.values(), ids=EVERY_KIND)


def polyline_area(part):
    """The area in a closed polyline: its corners' and its circular segments'."""
    area, points = 0.0, part.get_points("xyb")
    for (u1, v1, bulge), (u2, v2, _) in zip(points, [*points[1:], points[0]]):
        area += (
            (u1 - points[0][0]) * (v2 - points[0][1]) - (u2 - points[0][0]) * (v1 - points[0][1])
        ) / 2
        if bulge:
            angle = 4 * math.atan(bulge)
            radius = math.hypot(u2 - u1, v2 - v1) / 2 / math.sin(angle / 2)
            area += radius**2 * (angle - math.sin(angle)) / 2
    return area


class TestWriting:
    @every_unit
    def test_the_auditor_finds_nothing_wrong(self, unit):
        drawing = opened(*PLATE, unit=unit)
        auditor = drawing.audit()
        assert auditor.errors == [] and auditor.fixes == []

    @every_unit
    def test_units_are_named(self, unit):
        drawing = opened(*PLATE, unit=unit)
        assert drawing.header["$INSUNITS"] == CODES[unit]
        assert drawing.header["$MEASUREMENT"] == (0 if unit == "in" else 1)
        assert drawing.dxfversion == "AC1024"

    @every_unit
    @every_kind
    def test_the_area_is_exact(self, entity, unit):
        (part,) = opened(entity, unit=unit).modelspace()
        if entity["type"] == "circle":
            assert part.dxftype() == "CIRCLE"
            area = math.pi * part.dxf.radius**2
        else:
            assert part.dxftype() == "LWPOLYLINE" and part.closed
            area = polyline_area(part)
        assert area * METRES[unit] ** 2 == pytest.approx(S.area(entity), rel=1e-12)

    def test_another_program_draws_the_same_region(self):
        rings = [
            Polygon(ezdxf.path.make_path(part).flattening(1e-4))
            for part in opened(*PLATE).modelspace()
        ]
        seen = (
            rings[0].difference(rings[1]).union(rings[2]).difference(rings[3]).difference(rings[4])
        )
        known = profile.region(sketch(*PLATE))
        assert seen.area * 1e-6 == pytest.approx(profile.area(sketch(*PLATE)), rel=2e-4)
        assert seen.bounds == pytest.approx([c * 1000 for c in known.bounds], abs=1e-3)

    def test_holes_lie_on_a_layer_of_their_own(self):
        layers = [part.dxf.layer for part in opened(*PLATE).modelspace()]
        assert layers == ["CONTOUR", "HOLES", "CONTOUR", "HOLES", "HOLES"]

    def test_shapes_that_overlap_are_one_contour_whose_arcs_are_arcs(self):
        bar, boss = rectangle(0.0, -0.005, 0.06, 0.01), circle(r=0.01)
        (part,) = opened(bar, boss).modelspace()
        assert part.dxftype() == "LWPOLYLINE" and part.closed
        assert polyline_area(part) * 1e-6 == pytest.approx(profile.area(sketch(bar, boss)))
        arcs = [bulge for *_, bulge in part.get_points("xyb") if bulge]
        assert math.fsum(4 * math.atan(b) for b in arcs) == pytest.approx(math.radians(300))

    def test_contours_as_they_are_come_back_as_the_shapes(self):
        pair = [circle(0.01 * k, r=0.01) for k in range(2)]
        back, notes = read(opened(*pair, own_contours=True))
        assert (back, notes) == (pair, [])

    def test_a_joined_hole_lies_on_the_layer_of_holes(self):
        holes = [circle(0.01 * k, r=0.01) for k in range(2)]
        outside, hole = opened(*holes, rectangle(-0.1, -0.1, 0.2, 0.2)).modelspace()
        assert (outside.dxf.layer, hole.dxf.layer) == ("CONTOUR", "HOLES")
        assert polyline_area(hole) > 0

    @pytest.mark.parametrize("own_contours", [False, True])
    def test_a_hole_in_two_plates_is_a_hole(self, own_contours):
        parts = opened(*PAIR, own_contours=own_contours).modelspace()
        layers = {(part.dxftype(), part.dxf.layer) for part in parts}
        assert layers == {("LWPOLYLINE", "CONTOUR"), ("CIRCLE", "HOLES")}

    def test_typed_lengths_are_written_as_they_were_typed(self):
        hole = circle(0.0123, -0.0001, 0.0007)
        text = text_of(hole, EVERY_KIND["polygon"], own_contours=True)
        assert "\n 10\n12.3\n 20\n-0.1\n" in text
        assert "\n 40\n0.7\n" in text
        assert "\n 10\n60.0\n 20\n20.0\n" in text

    def test_the_drawing_opens_with_all_of_it_in_sight(self):
        drawing = opened(*PLATE)
        assert list(drawing.header["$EXTMIN"]) == pytest.approx([-80.0, -60.0, 0.0])
        assert list(drawing.header["$EXTMAX"]) == pytest.approx([80.0, 60.0, 0.0])
        (port,) = drawing.viewports.get("*Active")
        assert tuple(port.dxf.center)[:2] == pytest.approx((0.0, 0.0), abs=1e-9)
        assert port.dxf.height >= 160

    def test_plane_and_offset_are_noted_and_come_back(self):
        found, _ = sketch_in(text_of(*PLATE, plane="YZ", offset=0.0123).encode())
        assert (found["plane"], found["offset"]) == ("YZ", 0.0123)

    @pytest.mark.parametrize(
        "plane, offset", [("Q", "1"), ("XZ", "x"), ("XZ", "nan"), ("XZ", "1e99")]
    )
    def test_placings_that_make_no_sense_are_not_taken_over(self, plane, offset):
        drawing = disc(4, 2)
        drawing.header.custom_vars.append("Sketch plane", plane)
        drawing.header.custom_vars.append("Offset along the normal (m)", offset)
        found, _ = sketch_in(binary(drawing), "mm")
        assert found["plane"] in ("XY", plane) and found["plane"] in S.PLANES
        assert found["offset"] in (0.0, 1.0) and S.check(found) == []

    def test_the_same_sketch_makes_the_same_bytes(self):
        """In other processes, at other times, with other orders of sets."""
        code = (
            "import sys; from support.shapes import PLATE, document;"
            "from tandrel.exchange import dxf; from tandrel.progress import no_tick;"
            "print(dxf.written(document(*PLATE), 'mm', no_tick).decode(), end='')"
        )
        results = {printed("-c", code, PYTHONHASHSEED=seed) for seed in ("1", "4")}
        assert results == {text_of(*PLATE)}
        assert not ezdxf.options.write_fixed_meta_data_for_testing

    def test_a_tick_stops_it(self):
        with pytest.raises(Stopped):
            dxf.written(document(*PLATE), "mm", stopping_at(0.5))


class TestRoundTrip:
    @settings(max_examples=150)
    @given(entities(), st.sampled_from(list(METRES)))
    @example(EVERY_KIND["stadium"], "in")
    @example(rectangle(w=1.0, h=1.0, radius=0.5), "mm")
    @example(regular(1.0, n=4, angle=45.0), "mm")
    @example(slot(0.0, 1e4, 1e-4, 1e4, 10.0), "mm")
    def test_shapes_keep_area_place_and_kind(self, entity, unit):
        (back,), notes = read(text_of(entity, unit=unit))
        assert notes == []
        card, read_as = CARD[entity["type"]], CARD[back["type"]]
        assert read_as.name in card.returns
        assert S.area(back) == pytest.approx(S.area(entity), rel=1e-9)
        if card.centres:
            rounding = 8 * math.ulp(max(map(abs, card.middle(entity))))
            assert math.dist(read_as.middle(back), card.middle(entity)) <= max(1e-9, rounding)

    @every_unit
    def test_sizes_and_corners_come_back(self, unit):
        back = [read(text_of(entity, unit=unit))[0][0] for entity in EVERY_KIND.values()]
        assert [e["type"] for e in back] == [e["type"] for e in EVERY_KIND.values()]
        for one, other in zip(EVERY_KIND.values(), back):
            if "points" in one:
                assert other["radius"] == pytest.approx(one["radius"], abs=1e-12)
                one, other = (
                    sorted((round(u, 12) + 0.0, round(v, 12)) for u, v in e["points"])
                    for e in (one, other)
                )
                assert [c for p in other for c in p] == pytest.approx(
                    [c for p in one for c in p], abs=1e-12
                )
            elif len(CARD[one["type"]].centres) < 2:
                assert other == pytest.approx(one, abs=1e-12)
            else:  # which of its ends comes first is nobody's business
                middle = CARD[one["type"]].middle
                assert middle(other) == pytest.approx(middle(one), abs=1e-12)

    @settings(max_examples=10)
    @given(
        st.sampled_from(list(METRES)),
        st.lists(entities(st.just(1e-3), farthest=0.0), min_size=1, max_size=300),
    )
    def test_a_plate_with_many_holes(self, unit, shapes):
        plate = rectangle(-0.005, -0.005, 2.0, 2.0, 0.002)
        holes = [moved(e, 0.004 * (k % 20), 0.004 * (k // 20)) for k, e in enumerate(shapes)]
        before = sketch(plate, *holes)
        back, notes = read(text_of(*before["entities"], unit=unit))
        assert notes == [] and len(back) == len(holes) + 1
        assert profile.area(sketch(*back)) == pytest.approx(profile.area(before), rel=1e-9)
        for one, other in zip(holes, back[1:]):
            assert S.area(other) == pytest.approx(S.area(one), rel=1e-9)


def moved(e, u, v):
    if "points" in e:
        return {**e, "points": [[x + u, y + v] for x, y in e["points"]]}
    by = {"x": u, "xc": u, "x1": u, "x2": u, "y": v, "yc": v, "y1": v, "y2": v}
    return {key: value + by.get(key, 0) if key != "type" else value for key, value in e.items()}


def disc(code, size):
    """A drawing in a unit of a circle as large as that."""
    drawing, space = new_drawing(code)
    space.add_circle((0, 0), size / 2)
    return drawing


class TestUnits:
    @pytest.mark.parametrize(
        "code, metres",
        [(1, 0.0254), (2, 0.3048), (4, 0.001), (5, 0.01), (6, 1.0), (9, 2.54e-5), (14, 0.1)],
    )
    def test_lengths_are_in_the_drawing_s_unit(self, code, metres):
        drawing, space = new_drawing(code)
        space.add_circle((12.3, 0), 0.05 / metres)
        ((hole,), _) = read(drawing, unit="stated")
        assert hole["xc"] == pytest.approx(12.3 * metres, rel=1e-15)
        assert hole["r"] == pytest.approx(0.05, rel=1e-15)

    @pytest.mark.parametrize(
        "drawing", [raw(0, "CIRCLE", 10, 0, 20, 0, 40, 1, units=n) for n in (0, None)]
    )
    def test_a_drawing_without_units_is_asked_about(self, drawing):
        with pytest.raises(UnitsMissing):
            read(drawing)
        ((hole,), _) = read(drawing, unit="in")
        assert hole["r"] == 0.0254

    def test_a_unit_that_is_given_holds_and_that_is_said(self):
        ((hole,), notes) = read(disc(5, 2), unit="in")
        assert hole["r"] == 0.0254
        assert notes == ["The drawing says that its unit is cm; it was read in in."]
        assert read(disc(5, 2), unit="cm")[1] == []

    @pytest.mark.parametrize("code, size", [(4, 2.1), (4, 1990), (6, 1.9)])
    def test_sizes_that_parts_have_are_believed(self, code, size):
        assert len(read(disc(code, size))[0]) == 1

    @pytest.mark.parametrize("code, size", [(4, 1.9), (4, 2010), (6, 2.1), (1, 9)])
    def test_sizes_that_no_part_has_are_asked_about(self, code, size):
        with pytest.raises(UnitsMissing) as caught:
            read(disc(code, size))
        assert f"{size} in × {size} in = " in caught.value.choices["in"]
        assert caught.value.choices["mm"] == f"{size} mm × {size} mm"
        assert len(read(disc(code, size), unit="stated")[0]) == 1

    def test_millimetres_of_a_drawing_that_calls_itself_imperial(self):
        drawing = disc(4, 8)
        drawing.header["$MEASUREMENT"] = 0
        with pytest.raises(UnitsMissing):
            read(drawing)

    def test_what_is_written_here_is_believed_whatever_its_size(self):
        for huge in circle(r=12.0), circle(1.001e6, 0, 1e3):
            assert read(text_of(huge))[0] == [huge]

    def test_a_unit_of_no_use_can_be_overridden(self):
        assert len(read(raw(0, "CIRCLE", 10, 0, 20, 0, 40, 1, units=20), unit="mm")[0]) == 1

    @pytest.mark.parametrize(
        "size, hole, is_metric, is_believed",
        [(9, 0.2, 0, True), (9, 0.2, 1, False), (9, 1.2, 0, False), (11, 0.2, 0, False)],
    )
    def test_inches_are_believed_of_small_parts_with_finer_details_than_millimetres_have(
        self, size, hole, is_metric, is_believed
    ):
        drawing, space = new_drawing(1)
        drawing.header["$MEASUREMENT"] = is_metric
        space.add_circle((0, 0), size / 2)
        space.add_circle((0, 0), hole / 2)
        if is_believed:
            assert read(drawing)[0][0]["r"] == pytest.approx(size / 2 * 0.0254)
        else:
            with pytest.raises(UnitsMissing):
                read(drawing)

    @pytest.mark.parametrize(
        "code, size, hole, is_believed",
        [(5, 30, 0.3, True), (5, 30, 3, False), (5, 60, 0.3, False), (9, 3000, 40, True)]
        + [(9, 300, 3, False), (13, 30_000, 500, True), (2, 1, 0.1, False), (14, 5, 0.1, False)],
    )
    def test_units_in_which_few_draw_are_asked_about_unless_all_speaks_for_them(
        self, code, size, hole, is_believed
    ):
        drawing = disc(code, size)
        drawing.modelspace().add_circle((0, 0), hole)
        if is_believed:
            assert len(read(drawing)[0]) == 2
        else:
            with pytest.raises(UnitsMissing):
                read(drawing)

    def test_points_are_offered_as_well(self):
        """Vector drawing programs write them, and name no unit."""
        drawing = disc(0, 144)
        with pytest.raises(UnitsMissing) as asked:
            read(drawing)
        assert list(asked.value.choices)[-2:] == ["pt", "px"]
        assert asked.value.choices["pt"] == "points of 1/72 in: 50.8 mm × 50.8 mm"
        assert asked.value.choices["px"] == "points of 1/96 in: 38.1 mm × 38.1 mm"
        assert read(drawing, unit="pt")[0][0]["r"] == 0.0254
        assert read(drawing, unit="px")[0][0]["r"] == 0.01905

    def test_they_are_named_by_their_signs(self):
        with pytest.raises(UnitsMissing, match="its unit is ft, which") as asked:
            read(disc(2, 1))
        assert asked.value.choices["stated"] == "ft: 304.8 mm × 304.8 mm"

    @pytest.mark.parametrize("code", [20, 99, -1])
    def test_units_that_no_part_has_are_asked_about(self, code):
        with pytest.raises(UnitsMissing):
            read(raw(0, "CIRCLE", 10, 0, 20, 0, 40, 1, units=code))


class TestReading:
    @pytest.mark.parametrize("bulge", [1e-13, -1e-200, 5e-324])
    def test_arcs_that_are_flatter_than_any_number_are_lines(self, bulge):
        drawing, space = new_drawing()
        space.add_lwpolyline([(0, 0, bulge), (9, 0), (9, 4), (0, 4)], format="xyb", close=True)
        ((found,), _) = read(drawing)
        assert found["type"] == "rectangle"

    def test_the_older_kind_of_polyline(self):
        drawing = ezdxf.new("R12")
        corners = [(1, 0), (9, 0), (10, 1), (10, 4), (9, 5), (1, 5), (0, 4), (0, 1)]
        bulges = 4 * [0, math.tan(math.pi / 8)]
        vertices = [(u, v, bulge) for (u, v), bulge in zip(corners, bulges)]
        drawing.modelspace().add_polyline2d(vertices, format="xyb", close=True)
        ((found,), notes) = read(drawing, unit="mm")
        assert found == pytest.approx(rectangle(0, 0, 0.01, 0.005, 0.001), abs=1e-15)
        assert notes == []

    def test_lines_and_arcs_that_meet(self):
        """A slot as most programs draw it, once from below, its parts in any order."""
        drawing, space = new_drawing()
        space.add_line((0, 5), (20, 5))
        space.add_arc((20, 0), 5, 270, 90)
        space.add_line((20, -5), (0, -5))
        space.add_arc((0, 0), 5, 90, 270)
        space.add_line((0, 50), (1, 50))
        ((found,), notes) = read(drawing)
        assert found["type"] == "slot"
        assert sorted((found["x1"], found["x2"])) == pytest.approx([0.0, 0.02], abs=1e-15)
        assert found["r"] == pytest.approx(0.005)
        assert notes == ["Left out (1): lines and arcs that do not close, near u = 0 mm, v = 50 mm"]
        assert notes[0].place == (0.0, 0.05)

    def test_a_polyline_whose_end_is_its_start(self):
        drawing, space = new_drawing()
        space.add_lwpolyline([(0, 0), (10, 0), (0, 10), (0, 0)])
        ((found,), notes) = read(drawing)
        assert (found["type"], S.area(found), notes) == ("polygon", pytest.approx(5e-5), [])

    def test_parts_drawn_from_below_are_mirrored(self):
        drawing, space = new_drawing()
        below = {"extrusion": (0, 0, -1)}
        space.add_circle((3, 4), 1, dxfattribs=below)
        space.add_lwpolyline([(10, 0), (20, 0, 0, 0, 0.5), (20, 7)], close=True, dxfattribs=below)
        space.add_arc((50, 0), 5, 0, 180, dxfattribs=below)
        space.add_line((-55, 0), (-45, 0))
        (hole, flap, half), notes = read(drawing)
        assert notes == ["Approximated (2): contours with arcs, now polygons within 0.001 mm"]
        assert (hole["xc"], hole["yc"]) == (-0.003, 0.004)
        us, vs = S.outline(flap).T
        assert us.min() < -0.0210 and us.max() == pytest.approx(-0.01) and vs.max() == 0.007
        us, vs = S.outline(half).T
        assert (us.min(), us.max()) == pytest.approx((-0.055, -0.045))
        assert vs.max() == pytest.approx(0.005, abs=1e-6) and vs.min() == 0

    def test_full_turns_are_circles(self):
        drawing, space = new_drawing()
        space.add_arc((1, 2), 3, 30, 390)
        space.add_ellipse((11, 2), (0, 3), 1.0)
        found, notes = read(drawing)
        for hole, xc in zip(found, (0.001, 0.011)):
            assert hole == pytest.approx({"type": "circle", "xc": xc, "yc": 0.002, "r": 0.003})
        assert (len(found), notes) == (2, [])

    def test_blocks_are_read_where_they_are_placed(self):
        drawing, space = new_drawing()
        block = drawing.blocks.new("BOLT")
        block.add_circle((1, 0), 0.5)
        inner = drawing.blocks.new("PAIR")
        inner.add_blockref("BOLT", (0, 0))
        inner.add_blockref("BOLT", (0, 0), dxfattribs={"xscale": -1})
        space.add_blockref(
            "PAIR", (10, 20), dxfattribs={"rotation": 90, "xscale": 2, "yscale": 2, "zscale": 2}
        )
        space.add_blockref("BOLT", (0, 0), dxfattribs={"column_count": 3, "column_spacing": 5})
        found, notes = read(drawing)
        places = sorted((round(e["xc"], 9), round(e["yc"], 9), round(e["r"], 9)) for e in found)
        assert notes == []
        assert places == [
            (0.001, 0.0, 0.0005),
            (0.006, 0.0, 0.0005),
            (0.01, 0.018, 0.001),
            (0.01, 0.022, 0.001),
            (0.011, 0.0, 0.0005),
        ]

    def test_what_cannot_be_cut_is_counted_by_kind(self):
        drawing, space = new_drawing()
        space.add_circle((0, 0), 10)
        for k in range(3):
            space.add_text("a note", dxfattribs={"insert": (k + 1, 2)})
        space.add_point((0, 0))
        space.add_polyline3d([(0, 0, 0), (1, 0, 0), (1, 1, 1)], close=True)
        space.add_circle((0, 0), 2, dxfattribs={"extrusion": (0, 1, 1)})
        space.add_circle((0, 0), 2, dxfattribs={"layer": "plan"})
        for k in range(2):
            space.add_lwpolyline([(k, 0), (k + 1, 1), (k + 1, 0), (k, 1)], close=True)
        space.add_blockref("NOWHERE", (0, 0))
        drawing.add_xref_def("other.dxf", "ELSEWHERE")
        space.add_blockref("ELSEWHERE", (0, 0))
        drawing.layers.add("PLAN").off()
        found, notes = read(drawing)
        assert len(found) == 1
        assert notes[0] == "Left out (3): texts, near u = 1 mm, v = 2 mm"
        assert notes[0].place == pytest.approx((0.001, 0.002))
        assert sorted(notes[1:]) == [
            "Left out (1): curves and nets in space, near u = 0 mm, v = 0 mm",
            "Left out (1): parts that are hidden or on hidden layers, near u = 0 mm, v = 0 mm",
            "Left out (1): parts that stand askew in space, near u = 0 mm, v = 0 mm",
            "Left out (1): points, near u = 0 mm, v = 0 mm",
            "Left out (2): blocks that are missing, damaged or endless",
            "Left out (2): contours that cross or touch themselves, near u = 0.5 mm, v = 0.5 mm",
        ]

    def test_a_drawing_without_contours_says_what_is_in_it_instead(self):
        drawing, space = new_drawing()
        space.add_line((0, 0), (1, 0))
        with pytest.raises(
            ExchangeError, match="no closed contour.*lines and arcs that do not close"
        ):
            read(drawing, unit="mm")

    def test_binary_drawings(self):
        drawing, space = new_drawing()
        space.add_circle((1, 2), 3)
        ((hole,), _) = read(binary(drawing))
        assert hole == {"type": "circle", "xc": 0.001, "yc": 0.002, "r": 0.003}

    def test_texts_in_any_code_page_and_line_ends_of_any_kind(self):
        text = raw(0, "TEXT", 1, "Größe ", 0, "CIRCLE", 8, "été", 10, 0, 20, 0, 40, 1)
        for encoding in ("utf-8", "utf-8-sig", "cp1252", "latin-1"):
            for end in ("\n", "\r\n", "\r"):
                assert len(read(text.replace("\n", end).encode(encoding))[0]) == 1

    def test_a_tick_stops_it_at_any_time(self):
        text = text_of(*PLATE * 100, own_contours=True)
        told = []
        read(text, tick=told.append)
        assert told == sorted(told) and 0 <= told[0] and told[-1] <= 1
        for most in (-1, 0.2, 0.6, 0.85):
            with pytest.raises(Stopped):
                read(text, tick=stopping_at(most))


def test_the_whole_way_through_files(tmp_path):
    before = Document(
        "Plate", sketch(*PLATE, plane="XZ"), [{"name": "Blank", "points": [[0.0, 0.0]]}]
    )
    exchange.export(before, tmp_path / "Blech ü.DXF", "in")
    imported = exchange.import_(tmp_path / "Blech ü.DXF")
    assert (imported.document.name, imported.notes) == ("Blech ü", [])
    assert imported.document.sketch["plane"] == "XZ"
    assert profile.area(imported.document.sketch) == pytest.approx(
        profile.area(before.sketch), rel=1e-9
    )
    assert S.check(imported.document.sketch) == []
