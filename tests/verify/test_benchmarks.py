"""The benchmarks: the editor in plain Python behaves as the editor, and what is counted exactly."""

import os
import subprocess
import sys
from types import SimpleNamespace

import numpy as np
import pytest
from benchmarks import floor, instructions, run
from harness.python_editor import PythonEditor
from benchmarks.sketches import POINTS, asked_of, sketch
from benchmarks.stage import PIXEL, Stage
from harness.places import ROOT
from support.canvas import items, of_kind
from support.neighbours import one_of_each
from support.plain import RecordingCanvas
from tandrel import sketch as geometry


def test_the_editor_in_plain_python_paints_picks_and_snaps_as_the_module_does(open_editor):
    """Once: the random user compares the same operations after every event."""
    ring = np.array([[0.05, 0.0], [0.0, 0.05], [-0.05, 0.0], [0.0, -0.05]])
    references = [("ring", ring), ("point", ring[:1]), ("none", [])]
    answers = []
    for cls in (None, PythonEditor):
        editor = open_editor(one_of_each(), cls, references=references)
        editor.select(0)
        pixels = [(x, y) for x in range(0, 620, 31) for y in range(0, 460, 23)]
        pixels += [tuple(map(round, editor.to_screen(point))) for point in editor.key_points()]
        picked = [editor.pick(*pixel) for pixel in pixels]
        snapped = [editor.snapped(*pixel).tolist() for pixel in pixels]
        answers.append((items(editor.canvas), picked, snapped))
    assert answers[0] == answers[1]
    assert set(answers[0][1]) == {None, 0, 1, 2, 3, 4}


@pytest.fixture
def stage(root):
    """Opens stages; they end with their main window."""
    return lambda count: Stage(root, count)


class TestSketches:
    @pytest.mark.parametrize("count", [0, 1, 7, 100])
    def test_has_so_many_good_shapes_of_64_points(self, count):
        entities = sketch(count)["entities"]
        assert len(entities) == count
        assert {len(geometry.outline(e)) for e in entities} <= {POINTS}
        assert count == 0 or geometry.check(sketch(count)) == []

    def test_has_holes_and_islands(self):
        depths = geometry.depths(sketch(100))
        assert [depths.count(depth) for depth in (0, 1, 2)] == [60, 20, 20]

    def test_the_host_in_memory_gives_the_host_s_answers(self, stage):
        at = stage(20)
        here = at.editor.to_world(*PIXEL)
        for e in at.editor.sk["entities"]:
            outline = at.host.outline(e)
            assert outline is geometry.outline(e)
            assert at.host.area(e) == geometry.area(e)
            assert at.host.corners(e) is geometry.corners(e)
            assert at.host.inside(outline, here) == geometry.inside(outline, here)
        assert at.host.depths(at.editor.sk) == geometry.depths(at.editor.sk)

    def test_units_are_asked_each_question_once(self, sketcher, monkeypatch):
        asked = []
        own = SimpleNamespace(fmt=lambda *question: asked.append(question) or "1 mm")
        monkeypatch.setattr(sketcher, "units", lambda: own)
        with asked_of(geometry):
            texts = [sketcher.units().fmt(length, "length") for length in (0.001, 0.001, 0.002)]
        assert texts == ["1 mm"] * 3
        assert asked == [(0.001, "length"), (0.002, "length")]
        assert sketcher.units() is own

    def test_something_is_under_the_pointer(self, stage):
        at = stage(100)
        with asked_of(at.host):
            assert at.editor.pick(*PIXEL) is not None

    def test_the_items_sent_again_make_the_same_picture(self, stage):
        at = stage(15)
        with asked_of(at.host):
            at.editor.redraw()
            picture = items(at.editor.canvas)
            assert len(at.items) == 1 + len(picture)
        at.send_items_again()
        assert items(at.editor.canvas) == picture


class TestFloor:
    @pytest.fixture(scope="class")
    def library(self, tmp_path_factory):
        return floor.library(tmp_path_factory.mktemp("floor"))

    def test_makes_the_polygons_of_the_repaint_and_nothing_else(self, stage, library):
        at = stage(15)
        with asked_of(at.host):
            at.editor.redraw()
            polygons = of_kind(at.editor.canvas, "polygon")
            bottom = floor.Floor(library, at.editor.canvas, at.polygons)
        for _ in range(2):
            bottom.repaint()
            assert items(at.editor.canvas) == polygons
        assert len(polygons) == 15

    def test_tells_what_tk_refuses(self, stage, library):
        at = stage(1)
        bottom = floor.Floor(library, at.editor.canvas, [([0.0] * 6, {"fill": "no such colour"})])
        with pytest.raises(RuntimeError, match="refused"):
            bottom.repaint()


class TestRun:
    @pytest.fixture(scope="class")
    def quick(self):
        environment = {key: value for key, value in os.environ.items() if key != "DISPLAY"}
        command = [sys.executable, str(ROOT / "benchmarks" / "run.py"), "--quick"]
        return subprocess.run(command, env=environment, capture_output=True, text=True, timeout=300)

    def test_runs_without_a_display_and_reports_every_figure(self, quick):
        assert (quick.returncode, quick.stderr) == (0, "")
        for what, rows in (
            ("repaint / sending its canvas items again", 3),
            ("repaint / its polygons made by C", 2),
            ("repaint, plain Python / ours", 3),
            ("pick, plain Python / ours", 1),
            ("snapped, plain Python / ours", 1),
            ("outlines asked of the host per shape", 3),
            ("growth of ", 5),
            ("motion to painted", 2),
        ):
            assert quick.stdout.count(what) == rows, what
        assert quick.stdout.count(" ok\n") == 3

    def test_leaves_a_picture(self, quick):
        (name,) = [line.split()[0] for line in quick.stdout.splitlines() if ".png" in line]
        assert (ROOT / name).read_bytes().startswith(b"\x89PNG")

    @pytest.mark.parametrize(
        "bound, value, holds",
        [
            ({"most": 1.1}, 1.1, True),
            ({"most": 1.1}, 1.11, False),
            ({"least": 30}, 30, True),
            ({"least": 30}, 29.9, False),
            ({}, 29.9, True),
        ],
    )
    def test_tells_a_missed_bound(self, bound, value, holds, capsys):
        figure = run.Figure("figure", "100", value, **bound)
        assert run.report(figure, judged=True) is holds
        assert ("MISSED" in capsys.readouterr().out) is not holds
        assert run.report(figure, judged=False)

    @pytest.mark.parametrize("value, code", [(1.0, 0), (1.01, 1)])
    def test_ends_with_1_where_a_bound_is_missed(self, value, code, monkeypatch, tmp_path):
        figure = run.Figure("figure", "0", value, most=1.0, exact=True)
        fine = run.Figure("figure", "0", 1.0, most=1.0, exact=True)
        monkeypatch.setattr(run, "ROOT", tmp_path)
        monkeypatch.setattr(run, "RESULTS", tmp_path / "results")
        monkeypatch.setattr(run, "figures", lambda root, size: iter([fine, figure, fine]))
        assert run.measure(run.QUICK, quick=True) == code
        assert (tmp_path / "results" / "quick.png").exists()


class TestInstructions:
    """What callgrind counts; counting itself takes minutes."""

    @pytest.mark.parametrize("operation", [instructions.repaint, instructions.motion])
    def test_an_editor_without_a_window_paints_everything(self, operation):
        editor = instructions.windowless(5)
        editor.canvas = RecordingCanvas()
        with asked_of(geometry):
            operation(editor)
        assert len(editor.canvas.named("create_polygon")) == 5
        assert len(editor.canvas.named("delete")) == 1

    def test_an_operation_is_repeated_as_often_as_asked(self, monkeypatch):
        done = []
        monkeypatch.setattr(instructions.Windowless, "redraw", lambda self: done.append(self))
        instructions.repeat("repaint, no window", 3, 4)
        assert len(done) == 4
