"""Repainting the canvas: grid, axes, references, shapes and holes, selection, and their order."""

import math

import numpy as np
import pytest
from support.neighbours import circle, rectangle
from support.painting import fills, painted, without_preview
from support.plain import Recorder

AXIS_1, AXIS_2 = "#D2504B", "#3E9B5B"
GRID, MUTED, SOLID = "#eeeeee", "#666666", "#ddeeff"


@pytest.fixture
def editor(neighbours):
    return without_preview()


def grid_lines(editor):
    """The coordinates of the grid lines: vertical ones, horizontal ones."""
    lines = [args for name, args, options in painted(editor) if options == {"fill": GRID}]
    across = [line for line in lines if line[0] == 0 and line[2] == editor.canvas.width]
    return [line for line in lines if line not in across], across


class TestClearing:
    @pytest.mark.parametrize("width", [0, 1])
    def test_a_canvas_that_is_not_laid_out_stays_empty(self, editor, width):
        editor.canvas.width = width
        editor.grid_step = editor._preview = lambda: pytest.fail("called")
        editor.redraw()
        assert editor.canvas.calls == [("delete", ("all",), {})]

    @pytest.mark.parametrize("size", [(2, 1), (2, 300), (400, 0)])
    def test_the_height_and_two_pixels_are_enough(self, editor, size):
        editor.canvas.width, editor.canvas.height = size
        assert [name for name, _, _ in painted(editor)][-2:] == ["create_text", "create_text"]

    def test_returns_nothing_and_changes_nothing(self, editor):
        editor.sk["entities"] = [rectangle(), circle()]
        editor.sel = 1
        before = dict(vars(editor))
        sketch = str(editor.sk)
        assert editor.redraw() is None
        assert dict(vars(editor)) == before
        assert str(editor.sk) == sketch


class TestGrid:
    def test_a_line_on_the_upper_bound_is_drawn(self, editor):
        editor.canvas.height = 320
        upright, level = grid_lines(editor)
        assert upright[-1] == (400, 0, 400, 320)
        assert level[-1] == (0, 0, 400, 0)

    @pytest.mark.parametrize(
        "scale, spacing",
        [(3.0, 15.0), (0.3, 37.5), (10.0, 10.0), (9.999, 49.995), (2.0, 10.0), (400.0, 400.0)],
    )
    def test_is_widened_by_fives_until_it_is_ten_pixels(self, editor, scale, spacing):
        editor.scale = scale
        editor.canvas.width = editor.canvas.height = 1000
        upright, level = grid_lines(editor)
        assert upright[1][0] - upright[0][0] == pytest.approx(spacing)
        assert level[0][1] - level[1][1] == pytest.approx(spacing)

    @pytest.mark.parametrize("step", [0.1, 0.3, 1, 7.7, 0.001])
    @pytest.mark.parametrize("centre", [(0.0, 0.0), (1234.56, -0.777), (-3e5, 1e-3)])
    @pytest.mark.parametrize("scale", [33.3, 0.07, 1e4])
    def test_adds_step_after_step_in_doubles(self, editor, step, centre, scale):
        editor.scale, editor.centre = scale, np.array(centre)
        editor.grid_step = lambda: step
        lo, hi = editor.to_world(0, 300), editor.to_world(400, 0)
        while step * scale < 10:
            step *= 5
        expected = ([], [])
        for axis in (0, 1):
            at = math.floor(lo[axis] / step) * step
            while at <= hi[axis]:
                s = editor.to_screen((at, 0) if axis == 0 else (0, at))[axis]
                expected[axis].append((s, 0, s, 300) if axis == 0 else (0, s, 400, s))
                at += step
        lines = [args for _, args, options in painted(editor) if options == {"fill": GRID}]
        assert lines == expected[0] + expected[1]
        assert 2 <= len(lines) < 80

    def test_the_box_and_the_step_are_asked_of_the_editor_once(self, editor):
        asked = []
        editor.to_world = (
            lambda *pixel: asked.append(pixel) or np.array([pixel[0], -pixel[1]]) / 100
        )
        editor.grid_step = lambda: asked.append("step") or 1.0
        upright, level = grid_lines(editor)
        assert asked == [(0, 300), (400, 0), "step"]
        assert [line[0] for line in upright] == [200.0, 240.0, 280.0, 320.0, 360.0]
        assert [line[1] for line in level] == [270.0, 230.0, 190.0, 150.0]

    def test_that_runs_backwards_has_no_lines(self, editor):
        """The step is wide enough on the screen, and would never reach the upper bound."""
        editor.grid_step, editor.scale = lambda: -1.0, -40.0
        editor.to_world = lambda x, y: (x, -y)
        assert grid_lines(editor) == ([], [])

    def test_of_more_lines_than_can_be_meant_has_none(self, editor):
        editor.to_world = lambda x, y: (x * 1e7, 0.0)
        assert all(len(lines) <= 1 for lines in grid_lines(editor))


class TestAxes:
    def axes(self, editor):
        return [call for call in painted(editor) if call[2].get("fill") in (AXIS_1, AXIS_2)]

    def test_cross_the_canvas_through_the_origin_with_their_letters(self, editor):
        editor.centre = np.array([1.0, -0.5])
        assert self.axes(editor) == [
            ("create_line", (0, 130.0, 400, 130.0), {"fill": AXIS_1, "dash": (4, 3)}),
            ("create_line", (160.0, 0, 160.0, 300), {"fill": AXIS_2, "dash": (4, 3)}),
            ("create_text", (394, 126.0), {"text": "x", "anchor": "se", "fill": AXIS_1}),
            ("create_text", (164.0, 6), {"text": "y", "anchor": "nw", "fill": AXIS_2}),
        ]

    def letters(self, editor):
        return [call[2]["text"] for call in self.axes(editor)[2:]]

    @pytest.mark.parametrize("plane, letters", [("XZ", ["x", "z"]), ("YZ", ["y", "z"])])
    def test_have_the_plane_s_letters_in_space(self, editor, plane, letters):
        editor.plane.set(plane)
        assert self.letters(editor) == letters

    @pytest.mark.parametrize("dim", [2, 1, None, "3", 3.5])
    def test_are_x_and_y_for_a_plain_region_and_no_plane_is_asked(self, editor, neighbours, dim):
        editor.dim = dim
        editor.plane = None
        neighbours.S.AXES = None
        assert self.letters(editor) == ["x", "y"]

    def test_are_looked_up_with_x_and_y_as_the_default(self, editor, neighbours):
        neighbours.S.AXES = Recorder(get=("u", "v"))
        assert self.letters(editor) == ["u", "v"]
        assert neighbours.S.AXES.calls == [("get", ("XY", ("x", "y")), {})]

    def test_are_exactly_two(self, editor, neighbours):
        neighbours.S.AXES = {"XY": ("x", "y", "z")}
        with pytest.raises(ValueError):
            editor.redraw()

    @pytest.mark.parametrize("dim", [3.0, np.int64(3)])
    def test_lie_in_space_for_any_number_that_equals_three(self, editor, dim):
        editor.dim = dim
        editor.plane.set("XZ")
        assert self.letters(editor) == ["x", "z"]


class TestReferences:
    def references(self, editor):
        return [call for call in painted(editor) if call[2].get("fill") == MUTED]

    def test_are_closed_dashed_lines(self, editor):
        editor.refs = [("edge", np.array([[0.0, 0.0], [1.0, 0.0], [1.0, 2.0]]))]
        coordinates = (200.0, 150.0, 240.0, 150.0, 240.0, 70.0, 200.0, 150.0)
        options = {"fill": MUTED, "dash": (2, 3)}
        assert self.references(editor) == [("create_line", coordinates, options)]

    def test_of_fewer_than_two_points_are_skipped(self, editor):
        editor.refs = [("a", np.zeros((0, 2))), ("b", [[1.0, 1.0]]), ("c", [])]
        assert self.references(editor) == []

    def test_are_drawn_in_their_order_between_axes_and_shapes(self, editor):
        editor.refs = [("b", [[0.0, 0.0], [1.0, 0.0]]), ("a", [[0.0, 0.0], [0.0, 1.0]])]
        editor.sk["entities"] = [rectangle()]
        first, second = self.references(editor)
        assert first[1][2:4] == (240.0, 150.0)
        assert second[1][2:4] == (200.0, 110.0)
        kinds = [name for name, _, options in painted(editor) if options != {"fill": GRID}]
        axes = ["create_line"] * 2 + ["create_text"] * 2
        assert kinds == axes + ["create_line"] * 2 + ["create_polygon"]


class TestThroughTheEditor:
    def test_every_point_goes_through_to_screen(self, editor):
        editor.sk["entities"] = [rectangle(0.0, 0.0, 1.0, 1.0)]
        editor.refs = [("edge", [[0.0, 0.0], [2.0, 0.0]])]
        editor.to_screen = lambda p: (p[0] * 7 + 1000, p[1] * 7 + 2000)
        calls = painted(editor)
        plain = [args for name, args, options in calls if options != {"fill": GRID}]
        assert plain[0] == (0, 2000, 400, 2000)
        assert plain[1] == (1000, 0, 1000, 300)
        assert plain[3] == (1004, 6)
        assert plain[4] == (1000, 2000, 1014, 2000, 1000, 2000)
        assert plain[5] == (1000, 2000, 1007, 2000, 1007, 2007, 1000, 2007)
        assert grid_lines(editor)[0][0] == (1000 - 5 * 7, 0, 1000 - 5 * 7, 300)
        assert calls[11][1] == (0, 2000 - 4 * 7, 400, 2000 - 4 * 7)

    def test_grid_lines_are_placed_where_they_cross_the_axes(self, editor):
        editor.to_screen = lambda p: (p[0] * 10 + p[1] * 1000, p[1] * 10 + p[0] * 1000)
        upright, level = grid_lines(editor)
        assert [line[0] for line in upright] == [10.0 * k for k in range(-5, 6)]
        assert [line[1] for line in level] == [10.0 * k for k in range(-4, 4)]

    def test_the_palette_is_read_at_every_repaint(self, editor, neighbours):
        editor.sk["entities"] = [rectangle()]
        assert fills(editor) == [SOLID]
        neighbours.PAL["accent_soft"] = "#123456"
        assert fills(editor) == ["#123456"]
