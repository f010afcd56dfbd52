"""Rows of points as the arcs that they were divided from."""

import math

import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from support.drawings import new_drawing, opened, read, sketch_in, text_of
from support.shapes import EVERY_KIND, document
from tandrel import sketch as S
from tandrel.exchange import dxf, svg, svg_reading
from tandrel.exchange.curves import arcs_again, as_edges, contour_with_arcs
from tandrel.geometry.edges import Edge, arc
from tandrel.geometry.loops import divided, enclosed
from tandrel.progress import no_tick

MICRON = 1e-6


def rim(radius, first, angle, error=MICRON, centre=(0.01, -0.02)):
    edge = arc(centre, radius, first, angle)
    return [*divided([edge], error), edge.end]


@pytest.mark.parametrize("radius", [1e-4, 0.003, 0.05, 1.0, 30.0])
@pytest.mark.parametrize("angle", [90.0, -200.0, 330.0])
def test_a_divided_arc_is_one_again(radius, angle):
    points = rim(radius, 20.0, angle)
    (edge,) = arcs_again(points, MICRON)
    assert (edge.start, edge.end) == (points[0], points[-1])
    assert edge.radius == pytest.approx(radius, rel=1e-9)
    assert math.degrees(edge.sweep) == pytest.approx(angle, rel=1e-9)


def test_arcs_of_other_radii_and_lines_between_them_end_where_they_did():
    one, two = arc((0.0, 0.0), 0.05, 0.0, 90.0), arc((0.0, 0.02), 0.03, 90.0, 90.0)
    foot = [(-0.03, -0.2), (0.05, -0.2)]
    edges = [one, two, Edge(two.end, foot[0]), Edge(*foot), Edge(foot[1], one.start)]
    points = divided(edges, MICRON)
    found = contour_with_arcs(points, MICRON)
    assert sorted(round(edge.radius, 9) for edge in found if edge.bulge) == [0.03, 0.05]
    assert len(found) == 5
    assert enclosed(found) == pytest.approx(enclosed(edges))


@pytest.mark.parametrize("first", [0, 5, 17])
def test_it_does_not_matter_where_the_corners_begin(first):
    one = arc((0.0, 0.0), 0.05, 0.0, 180.0)
    corners = divided([one, Edge(one.end, one.start)], MICRON)
    found = contour_with_arcs([*corners[first:], *corners[:first]], MICRON)
    assert [round(abs(edge.bulge), 9) for edge in found].count(1.0) == 1
    assert len(found) == 2


@pytest.mark.parametrize("sides", [3, 6, 12, 60])
def test_corners_of_polygons_stay(sides):
    corners = [
        (math.cos(2 * math.pi * k / sides), math.sin(2 * math.pi * k / sides)) for k in range(sides)
    ]
    assert not any(edge.bulge for edge in contour_with_arcs(corners, MICRON))


@settings(max_examples=50)
@given(
    st.lists(
        st.tuples(st.floats(-1, 1), st.floats(-1, 1)),
        min_size=2,
        max_size=40,
        unique=True,
    )
)
def test_any_points_are_kept_to_within_the_error(points):
    edges = arcs_again(points, MICRON)
    assert edges[0].start == points[0] and edges[-1].end == points[-1]
    at = 0
    for edge in edges:
        last = points.index(edge.end, at + 1)
        for point in points[at + 1 : last]:
            assert abs(math.dist(edge.centre, point) - edge.radius) <= 1.001 * MICRON
        at = last


def test_a_curve_that_is_a_whole_circle_is_two_halves():
    found = as_edges(rim(0.02, 0.0, 360.0), MICRON)
    assert [edge.radius for edge in found] == pytest.approx([0.02, 0.02])
    assert sum(edge.sweep for edge in found) == pytest.approx(2 * math.pi)


class TestDrawings:
    def plate(self):
        """Its fillets have different radii: no entity has that."""
        drawing, space = new_drawing()
        fillet = math.tan(math.pi / 8)
        space.add_lwpolyline(
            [(0, 0), (90, 0, fillet), (100, 10), (100, 57, fillet), (97, 60), (0, 60)],
            format="xyb",
            close=True,
        )
        return drawing

    def test_arcs_of_differing_radii_come_back_when_they_are_written(self):
        ((plate,), notes) = read(self.plate())
        assert notes == ["Approximated (1): contours with arcs, now polygons within 0.001 mm"]
        (part,) = opened(plate).modelspace()
        radii = sorted(
            round(math.dist((u1, v1), (u2, v2)) / 2 / math.sin(2 * math.atan(bulge)), 6)
            for (u1, v1, bulge), (u2, v2, _) in zip(
                part.get_points("xyb"),
                [*part.get_points("xyb")[1:], part.get_points("xyb")[0]],
            )
            if bulge
        )
        assert radii == [3.0, 10.0] and len(part) == 6

    def test_and_are_read_as_they_were_again(self):
        ((plate,), _) = read(self.plate())
        ((again,), _) = read(text_of(plate))
        assert len(again["points"]) == len(plate["points"])
        for one, two in zip(sorted(again["points"]), sorted(plate["points"])):
            assert one == pytest.approx(two, abs=1e-13)
        assert S.area(again) == pytest.approx(S.area(plate), rel=1e-13)

    @pytest.mark.parametrize("reader, writer", [(dxf, dxf), (svg_reading, svg)])
    def test_corners_that_no_dividing_gives_come_back_too(self, reader, writer):
        """Those of a spline lie on arcs, but at other places than an arc's own would."""
        drawing, space = new_drawing()
        space.add_open_spline([(0, 0), (30, 40), (70, 40), (100, 0)])
        space.add_lwpolyline([(100, 0), (100, -30), (0, -30), (0, 0)])
        ((part,), _) = read(drawing)
        data = writer.written(document(part), "mm", no_tick)
        edges = [edge for line in reader.read(data, no_tick).lines for edge in line.edges]
        assert sum(edge.bulge != 0 for edge in edges) > len(part["points"]) / 2
        (again,) = sketch_in(data, reader=reader)[0]["entities"]
        (left, low), (u, v) = (min(e["points"], key=sum) for e in (part, again))
        assert sorted((x - u + left, y - v + low) for x, y in again["points"]) == [
            pytest.approx(point, abs=1e-12) for point in sorted(part["points"])
        ]

    @pytest.mark.parametrize("reader, writer", [(dxf, dxf), (svg_reading, svg)])
    def test_many_corners_round_a_circle_are_no_circle(self, reader, writer):
        part = {"type": "regular", "xc": 0.0, "yc": 0.0, "r": 0.01, "n": 1000, "angle": 0.0}
        data = writer.written(document(part), "mm", no_tick)
        (again,) = sketch_in(data, reader=reader)[0]["entities"]
        assert (again["type"], again["n"]) == ("regular", 1000)
        assert S.area(again) == pytest.approx(S.area(part), rel=1e-12)

    def test_outlines_with_few_corners_are_written_as_they_are(self):
        for entity in EVERY_KIND.values():
            if entity["type"] == "polygon" and not entity["radius"]:
                (part,) = opened(entity).modelspace()
                assert len(part) == len(entity["points"])
