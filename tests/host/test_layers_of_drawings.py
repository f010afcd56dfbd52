"""Which layers of a drawing are the part: frames, sheets, and what is left out with them."""

import pytest
from support.drawings import new_drawing, raw, read, rectangle
from tandrel.exchange import LayersUnclear


class TestLayers:
    def frame(self):
        drawing, space = new_drawing()
        rectangle(space, 0, 0, 297, 210, "FRAME")
        rectangle(space, 5, 5, 287, 200, "FRAME")
        rectangle(space, 50, 50, 100, 60, "PART")
        space.add_circle((70, 70), 5, dxfattribs={"layer": "HOLE"})
        return drawing

    def test_a_frame_around_the_sheet_is_asked_about(self):
        with pytest.raises(LayersUnclear, match="FRAME") as asked:
            read(self.frame())
        assert asked.value.layers == {"FRAME": 2, "PART": 1, "HOLE": 1}
        assert asked.value.proposed == ["PART", "HOLE"]

    @pytest.mark.parametrize(
        "border, part",
        [((20, 10, 267, 190), (50, 50, 100, 60)), ((5, 5, 287, 200), (15, 15, 265, 180))],
        ids=["small part", "part nearly as large as the border"],
    )
    def test_one_on_the_layer_of_the_part_is_asked_about_if_it_is_a_sheet(self, border, part):
        drawing, space = new_drawing()
        for sides in (0, 0, 297, 210), border, part:
            rectangle(space, *sides)
        space.add_circle((70, 70), 5)
        with pytest.raises(LayersUnclear) as asked:
            read(drawing)
        assert asked.value.layers == {"0: sheet": 1, "0: border": 1, "0": 2}
        assert asked.value.proposed == ["0"]
        assert len(read(drawing, layers=["0"])[0]) == 2
        rectangle(space, -5, -5, 310, 220)
        assert len(read(drawing)[0]) == 5

    def material(self, *circles):
        """A plate or a sheet with rings on it."""
        drawing, space = new_drawing()
        rectangle(space, 0, 0, 240, 130)
        for u, v, radius in circles:
            space.add_circle((u, v), radius)
            space.add_circle((u, v), 4)
        return drawing

    def test_a_sheet_of_material_that_is_full_of_parts_with_holes_is_asked_about(self):
        parts = [(u, v, 30) for u in (40, 120, 200) for v in (35, 95)]
        with pytest.raises(LayersUnclear) as asked:
            read(self.material(*parts))
        assert asked.value.layers == {"0: sheet": 1, "0": 12}
        assert asked.value.proposed == ["0"]

    @pytest.mark.parametrize("circles", [[(40, 35, 10), (120, 35, 10)], [(120, 65, 62)]])
    def test_a_plate_with_small_rings_or_a_large_one_is_not(self, circles):
        assert len(read(self.material(*circles))[0]) == 1 + 2 * len(circles)

    @pytest.mark.parametrize("layer", ["0", "HOLES"])
    def test_what_lies_where_a_border_would_may_be_the_part(self, layer):
        drawing, space = new_drawing()
        rectangle(space, 0, 0, 297, 210)
        rectangle(space, 8, 5, 280, 200)
        for u in 50, 150:
            space.add_circle((u, 50), 10, dxfattribs={"layer": layer})
        with pytest.raises(LayersUnclear) as asked:
            read(drawing)
        assert asked.value.layers == {"0: sheet": 1, "0: border": 1, layer: 2}
        assert asked.value.proposed == ["0: border", layer]
        assert len(read(drawing, layers=asked.value.proposed)[0]) == 3

    def test_the_layer_of_a_sheet_is_no_other_one(self):
        """Of old drawings, in which nobody minds the colon."""
        boxes = (0, 0, 297, 210), (50, 50, 150, 110)
        sides = [
            (0, "LINE", 8, 0, 10, u, 20, v, 11, w, 21, z)
            for left, low, right, high in boxes
            for u, v, w, z in (
                (left, low, right, low),
                (right, low, right, high),
                (right, high, left, high),
                (left, high, left, low),
            )
        ]
        hole = (0, "CIRCLE", 8, "0: sheet", 10, 70, 20, 70, 40, 5)
        with pytest.raises(LayersUnclear) as asked:
            read(raw(*(tag for line in (*sides, hole) for tag in line)))
        assert asked.value.layers == {"0: sheet": 1, "0: sheet'": 1, "0": 1}
        assert asked.value.proposed == ["0: sheet", "0"]

    def test_a_part_that_touches_the_frame_is_no_notch_of_it(self):
        drawing, space = new_drawing()
        rectangle(space, 0, 0, 100, 60, "BOX")
        space.add_lwpolyline([(0, 0), (100, 0), (100, 30), (60, 60), (0, 60)], close=True)
        space.add_circle((20, 20), 5)
        with pytest.raises(LayersUnclear) as asked:
            read(drawing)
        assert asked.value.layers == {"BOX": 1, "0": 2}
        assert [e["type"] for e in read(drawing, layers=["0"])[0]] == [
            "polygon",
            "circle",
        ]

    def test_the_layer_0_of_a_block_is_that_which_the_block_is_placed_on(self):
        drawing, space = new_drawing()
        rectangle(drawing.blocks.new("SHEET"), 0, 0, 400, 300)
        space.add_blockref("SHEET", (0, 0), dxfattribs={"layer": "FRAME"})
        rectangle(space, 50, 50, 100, 100)
        with pytest.raises(LayersUnclear) as asked:
            read(drawing)
        assert asked.value.layers == {"FRAME": 1, "0": 1}
        drawing.layers.add("FRAME").off()
        assert len(read(drawing)[0]) == 1

    def test_what_is_not_chosen_is_left_out_and_told(self):
        found, notes = read(self.frame(), layers=["PART", "HOLE"])
        assert [e["type"] for e in found] == ["rectangle", "circle"]
        assert notes == ["Left out (2): contours on the layer FRAME, near u = 0 mm, v = 0 mm"]

    def test_a_plate_and_its_holes_on_layers_of_their_own_may_be_one_too(self):
        drawing, space = new_drawing()
        rectangle(space, 0, 0, 100, 60, "PLATE")
        space.add_circle((20, 20), 5, dxfattribs={"layer": "M5"})
        with pytest.raises(LayersUnclear) as asked:
            read(drawing)
        assert asked.value.proposed == ["PLATE", "M5"]

    def test_a_plate_with_letters_may_be_one_too(self):
        drawing, space = new_drawing()
        rectangle(space, 0, 0, 80, 30, "PLATE")
        for u in (30, 40):
            rectangle(space, u, 10, 5, 8, "ENGRAVE")
            rectangle(space, u + 1, 11, 3, 6, "ENGRAVE")
        with pytest.raises(LayersUnclear) as asked:
            read(drawing)
        assert asked.value.proposed == ["PLATE", "ENGRAVE"]

    def test_an_outline_that_no_frame_has_is_not_asked_about(self):
        drawing, space = new_drawing()
        space.add_circle((0, 0), 50, dxfattribs={"layer": "PLATE"})
        space.add_circle((20, 20), 5, dxfattribs={"layer": "M5"})
        assert len(read(drawing)[0]) == 2
