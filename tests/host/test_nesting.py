"""Which shapes lie inside which, and what the check says about doubtful cases."""

import math
import random

import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from shapely.geometry import Polygon
from shapely.prepared import prep
from support.neighbours import circle, polygon, rectangle, regular, slot
from tandrel import sketch as S
from tandrel._shapes import shape
from tandrel.geometry import nesting


def depths(*entities):
    return S.depths({"entities": list(entities)})


def check(*entities):
    return S.check({"entities": list(entities)})


PLATE, HOLE, ISLAND = rectangle(0.0, 0.0, 10.0, 10.0), circle(5.0, 5.0, 3.0), circle(5.0, 5.0, 1.0)


ELL = polygon((0, 0), (10, 0), (10, 2), (2, 2), (2, 10), (0, 10))
TWO_PLATES = [rectangle(0.0, 0.0, 6.0, 6.0), rectangle(2.0, 2.0, 6.0, 7.0)]
# The points of the circle lie inside, but the circle between them does not.
RIM = regular(r=1.0005, n=64)
NESTED = {
    "apart": ([circle(), circle(5.0, 0.0, 2.0)], [0, 0]),
    "hole and island": ([PLATE, HOLE, ISLAND], [0, 1, 2]),
    "in another order": ([ISLAND, PLATE, HOLE], [2, 0, 1]),
    "a hole in what two plates have in common is a hole": (
        [*TWO_PLATES, circle(4.0, 4.0, 1.0), circle(1.0, 1.0, 0.5)],
        [0, 0, 1, 1],
    ),
    # The island stands in a hole of one plate and, with that, on another one.
    "the longest chain counts whatever else lies around": (
        [rectangle(4.0, -5.0, 20.0, 20.0), PLATE, HOLE, circle(5.5, 5.0, 1.0)],
        [0, 0, 1, 2],
    ),
    "equal shapes do not hold each other": ([PLATE, PLATE, HOLE, HOLE], [0, 0, 1, 1]),
    "nor do they as other types": ([PLATE, polygon((0, 0), (10, 0), (10, 10), (0, 10))], [0, 0]),
    "what touches from inside does not lie in it": (
        [PLATE, rectangle(0.0, 2.0, 3.0, 3.0), circle(5.0, 5.0, 5.0)],
        [0, 0, 0],
    ),
    "nor a circle in a circle": ([circle(r=3.0), circle(1.0, 0.0, 2.0)], [0, 0]),
    "outlines touch within a billionth": ([PLATE, rectangle(9e-9, 1.0)], [0, 0]),
    "but not further": ([PLATE, rectangle(11e-9, 1.0)], [0, 1]),
    "never inside one of smaller area": ([RIM, circle()], [0, 0]),
    "in the box but not in the shape": ([ELL, circle(6.0, 6.0), circle(1.0, 1.0, 0.5)], [0, 0, 1]),
    "a larger box of a smaller shape": ([ELL, rectangle(3.0, 3.0, 6.5, 6.5)], [0, 0]),
    "what cannot be built has no depth and holds nothing": (
        [{**rectangle(-1.0, -1.0, 20.0), "h": None}, HOLE, None, ISLAND, {"type": "circle"}],
        [0, 0, 0, 1, 0],
    ),
}


class TestDepths:
    def test_an_empty_sketch(self):
        assert S.depths({}) == S.depths(S.new()) == []

    @pytest.mark.parametrize("entities, found", NESTED.values(), ids=NESTED)
    def test_shapes_lie_in_others(self, entities, found):
        assert depths(*entities) == found

    @pytest.mark.parametrize("far", [0.0, 1e6])
    @pytest.mark.parametrize("across", [False, True])
    def test_rounding_does_not_decide_whether_a_shape_touches(self, far, across):
        def placed(u, v, w, h):
            return rectangle(v, u, h, w) if across else rectangle(u, v, w, h)

        for k in range(1, 100):
            u, w = far + k / 7, k / 300
            outer = placed(u, 0.0, w, w)
            for inner_u in (u, math.nextafter(u, math.inf), u + w - w / 3):
                assert depths(outer, placed(inner_u, w / 4, w / 3, w / 2)) == [0, 0]

    def test_a_shape_changed_in_place_is_seen(self):
        hole = dict(HOLE)
        assert depths(PLATE, hole) == [0, 1]
        hole["xc"] = 50.0
        assert depths(PLATE, hole) == [0, 0]

    def test_the_list_handed_out_is_the_caller_s_own(self):
        depths(PLATE, HOLE).clear()
        assert depths(PLATE, HOLE) == [0, 1]

    def test_unchanged_shapes_are_not_compared_again(self, monkeypatch):
        depths(PLATE, HOLE)
        monkeypatch.setattr(nesting, "_holders", None)
        assert depths(dict(PLATE), dict(HOLE)) == [0, 1]

    def test_a_deep_nest_takes_one_comparison_a_shape(self, monkeypatch):
        compared = []

        class Counted:
            def __init__(self, shape):
                self.box, self.area, self.polygon = shape.box, shape.area, shape.polygon
                self.prepared = self
                self.inner = shape.prepared

            def contains_properly(self, polygon):
                compared.append(polygon)
                return self.inner.contains_properly(polygon)

        shapes = [shape(circle(0.0, 0.0, 1.0 + k)) for k in range(300)]
        random.Random(5).shuffle(shapes)
        found = nesting.depths(tuple(Counted(one) for one in shapes))
        assert sorted(found) == list(range(300))
        assert len(compared) == 299


GRID = st.integers(0, 12)
SIZE = st.integers(1, 8)
SHAPES = st.one_of(
    st.builds(rectangle, GRID, GRID, SIZE, SIZE),
    st.builds(rectangle, GRID, GRID, SIZE, SIZE, st.just(0.25)),
    st.builds(circle, GRID, GRID, SIZE.map(lambda r: r / 2)),
)


def holders(entities):
    """For each shape those that it lies inside of, by comparing each with each."""
    polygons = [Polygon(S.outline(e)) for e in entities]
    return [
        [k for k, outer in enumerate(polygons) if prep(outer).contains_properly(inner)]
        for inner in polygons
    ]


def longest_chains(entities):
    around = holders(entities)

    def chain(k):
        return max((1 + chain(holder) for holder in around[k]), default=0)

    return [chain(k) for k in range(len(entities))]


@settings(deadline=None, max_examples=200)
@given(st.lists(SHAPES, max_size=12))
def test_depths_are_those_of_comparing_each_with_each(entities):
    assert depths(*entities) == longest_chains(entities)


@settings(deadline=None, max_examples=100)
@given(st.lists(SHAPES, max_size=24))
def test_without_overlaps_the_depth_is_the_number_of_shapes_around(entities):
    apart, polygons = [], []
    for entity in entities:
        polygon = Polygon(S.outline(entity))
        if not any(polygon.exterior.intersects(other.exterior) for other in polygons):
            apart.append(entity)
            polygons.append(polygon)
    assert depths(*apart) == [len(around) for around in holders(apart)]


def test_depths_of_many_shapes_are_those_of_comparing_each_with_each():
    chance = random.Random(7)
    entities = [
        circle(chance.random(), chance.random(), 0.2 * chance.random() ** 3 + 1e-3)
        for _ in range(300)
    ]
    found = depths(*entities)
    assert found == longest_chains(entities)
    assert max(found) >= 3


class TestChecks:
    def test_a_shape_drawn_twice(self):
        assert check(PLATE, HOLE, dict(PLATE), dict(PLATE)) == [
            "Shape 3 (Rectangle) lies exactly on Shape 1 (Rectangle): delete one of them",
            "Shape 4 (Rectangle) lies exactly on Shape 1 (Rectangle): delete one of them",
        ]

    def test_a_shape_drawn_twice_in_another_way(self):
        square = polygon((10, 10), (10, 0), (0, 0), (0, 10))
        turned = regular(5.0, 5.0, math.sqrt(50), 4, 45.0)
        assert len(check(PLATE, square)) == len(check(PLATE, turned)) == 1
        assert check(slot(0.1, 0.2, 0.7, 0.9, 0.3), slot(0.7, 0.9, 0.1, 0.2, 0.3)) == [
            "Shape 2 (Slot) lies exactly on Shape 1 (Slot): delete one of them"
        ]

    def test_a_shape_drawn_twice_but_for_rounding(self):
        for size in (0.1, 0.5, 1.0, 3.0):
            above = math.nextafter(size, math.inf)
            below = math.nextafter(size, 0.0)
            squares = [rectangle(0.0, 0.0, s, s) for s in (below, size, above)]
            assert len(check(*squares)) == 2

    def test_shapes_with_one_box_that_are_not_the_same(self):
        rounded = rectangle(0.0, 0.0, 10.0, 10.0, 1.0)
        assert not any("exactly" in message for message in check(PLATE, rounded))
        up, down = polygon((0, 0), (4, 0), (0, 4)), polygon((4, 4), (0, 4), (4, 0))
        assert check(up, down) == []
        assert not any("exactly" in message for message in check(circle(), regular(n=64)))

    @pytest.mark.parametrize(
        "inner, place",
        [
            (circle(2.0, 5.0, 2.0), "u = 0 mm, v = 5000 mm"),
            (rectangle(8.0, 4.0, 2.0, 1.0), "u = 10000 mm, v = 4000 mm"),
            (polygon((5, 5), (5, 10), (4, 5)), "u = 5000 mm, v = 10000 mm"),
        ],
    )
    def test_a_shape_that_touches_another_from_inside(self, inner, place):
        label = {"circle": "Circle", "rectangle": "Rectangle", "polygon": "Outline"}[inner["type"]]
        assert check({"type": "spline"}, PLATE, inner)[1:] == [
            f"Shape 3 ({label}) touches Shape 2 (Rectangle) from inside near {place}:"
            " move it clear of the outline or across it"
        ]

    def test_a_shape_that_touches_a_slanted_edge_from_inside(self):
        outer = polygon((0, 0), (9, 3), (0, 7))
        for k in range(1, 30):
            corner = (9 * k / 31, 3 * k / 31)
            inner = polygon(
                corner, (corner[0] + 0.01, corner[1] + 0.2), (corner[0], corner[1] + 0.2)
            )
            (message,) = check(outer, inner)
            assert "from inside" in message

    @pytest.mark.parametrize(
        "others",
        [
            [rectangle(10.0, 0.0, 5.0, 5.0)],
            [rectangle(10.0, 10.0, 5.0, 5.0)],
            [rectangle(5.0, 5.0, 15.0, 5.0)],
            [circle(10.0, 5.0, 2.0)],
            [circle(2.001, 5.0, 2.0)],
            [circle(3.0, 5.0, 1.0), circle(5.0, 5.0, 1.0)],
        ],
        ids=["outside", "at a corner", "sharing a side", "across", "close", "holes side by side"],
    )
    def test_what_touches_from_outside_overlaps_or_keeps_clear_may_do_so(self, others):
        assert check(PLATE, *others) == []

    def test_islands_must_keep_clear(self):
        (message,) = check(PLATE, HOLE, circle(6.0, 5.0, 2.0))
        assert message.startswith("Shape 3 (Circle) touches Shape 2 (Circle) from inside")

    def test_a_shape_that_touches_several_is_said_once(self):
        outer = rectangle(0.0, 0.0, 10.0, 20.0)
        assert len(check(outer, PLATE, rectangle(0.0, 0.0, 5.0, 5.0))) == 2
