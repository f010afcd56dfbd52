"""Hostile cases at a small size, and that crashes, hangs and whatever else is wrong are told."""

import gc

import pytest
from harness.places import ROOT
from soak import hostile
from soak.hostility import neighbours
from support.children import printed

CASES = 2_000


def test_no_case_crashes_hangs_or_leaves_something_behind(capsys):
    status = hostile.main(["--cases", str(CASES)])
    told = capsys.readouterr().out
    assert told == f"hostile: {CASES:,} cases, seed 0: 0 faults\n"
    assert status == 0


def test_a_tool_is_a_command():
    told = printed("-m", "soak", "hostile", "--cases", "3", paths=[ROOT])
    assert told == "hostile: 3 cases, seed 0: 0 faults\n"


PLANTED = """
import os, signal, time
from soak import hostile

def strike(seed):
    if seed == 7:
        {what}
    return []

def serve(*share):
    hostile.runner = lambda aloud: strike
    hostile.serve(*share)
"""


@pytest.fixture
def planted(told_of):
    """What the tool tells of 20 cases of which seed 7 does this."""
    words = "--seed", "1", "--cases", "20"
    return lambda what: told_of(hostile, PLANTED.format(what=what), *words)


@pytest.mark.parametrize(
    "what, ending, said",
    [
        ("os.kill(os.getpid(), signal.SIGSEGV)", "crash: SIGSEGV", "in strike"),
        ("time.sleep(10**6)", "hang: silent for 60 s", "in strike"),
        ("1 / 0", "the process ended with 1", "ZeroDivisionError: division by zero"),
    ],
)
def test_how_a_child_ends_is_told_with_its_seed(planted, what, ending, said):
    status, lines = planted(what)
    assert lines[0] == f"seed 7: {ending}"
    assert any(line.endswith(said) for line in lines), "no stack"
    assert "  replay: python3 -m soak hostile --seed 7 --cases 1" in lines
    assert (status, lines[-1]) == (1, "hostile: 7 cases, seed 1: 1 faults")


def test_a_child_that_does_not_even_start_is_told(told_of):
    status, lines = told_of(hostile, "raise SystemExit(9)", "--cases", "5")
    assert (status, lines[0]) == (1, "seed None: the process ended with 9")


@pytest.mark.filterwarnings("ignore")
class TestWhatIsWrongAfterACase:
    """With an editor that has the fault: what a case of its comes back with."""

    @pytest.fixture
    def found(self, sketcher):
        """What is found in a run of cases on stand-in editors."""
        from soak.hostility import cases

        afterwards = cases.Afterwards()
        gc.collect()
        gc.freeze()

        def run(count=300):
            found = []
            for seed in range(count):
                case = cases.Case(seed)
                case.run()
                found += afterwards.check(case)
            return found

        yield run
        gc.unfreeze()

    @staticmethod
    def in_place_of(monkeypatch, name, replacement):
        from tandrel.gui import sketcher

        monkeypatch.setattr(sketcher.SketchEditor, name, replacement)

    def test_nothing_of_a_sound_editor(self, found):
        assert found() == []

    def test_something_of_the_sketch_that_is_kept(self, found, monkeypatch):
        kept = []
        self.in_place_of(monkeypatch, "redraw", lambda self: kept.append(dict(self.sk)))
        assert any("tokens of the sketch are still held" in what for what in found())

    def test_a_shared_object_that_is_kept(self, found, sketcher, monkeypatch):
        kept = []
        self.in_place_of(monkeypatch, "add", lambda self, ent: kept.append(sketcher.S))
        told = [what for what in found() if "held more often than before" in what]
        assert any("tandrel.sketch" in what for what in told)

    def test_an_editor_that_does_not_work_any_more(self, found, sketcher, monkeypatch):
        real, lost = sketcher.SketchEditor.redraw, []
        change = "a fresh editor paints another picture"

        def redraw(self):
            if not isinstance(self.scale, float):
                lost.append(1)
            if not lost:
                real(self)

        self.in_place_of(monkeypatch, "redraw", redraw)
        assert change in found()

    def test_an_error_that_only_native_code_makes(self, found, monkeypatch):
        def redraw(self):
            raise SystemError("returned a result with an exception set")

        self.in_place_of(monkeypatch, "_default_grid", redraw)
        assert "SystemError: returned a result with an exception set" in found()

    def test_a_picture_without_an_end(self, found, monkeypatch):
        def preview(self):
            for x in range(7_000):
                self.canvas.create_line(x, 0, x, 1)

        self.in_place_of(monkeypatch, "_preview", preview)
        monkeypatch.setattr(neighbours, "MOST_ITEMS", 5_000)
        assert any("EndlessPicture" in what for what in found(20))
