"""Memory that runs out: points all over the module, and what the tool says of planted faults."""

import re

import pytest
from harness.places import BUILD
from soak import allocation
from support.planted_build import plant


def run(capsys, *options):
    """The exit status, what was printed, and the points and faults in its last line."""
    status = allocation.main([*options])
    printed = capsys.readouterr().out
    last = printed.splitlines()[-1]
    figure = re.fullmatch(r"allocation failure: ([\d,]+) points: (\d+) faults", last)
    return status, printed, int(figure[1].replace(",", "")), int(figure[2])


def test_memory_may_run_out_anywhere(capsys):
    status, printed, points, faults = run(capsys, "--points", "500")
    assert (status, points, faults) == (0, 500, 0), printed
    assert "MemoryError" in printed


def test_memory_may_run_out_at_any_moment_of_a_repaint(capsys):
    status, printed, points, faults = run(capsys, "--only", "redraw in a window")
    assert (status, faults) == (0, 0), printed
    assert points > 200


@pytest.mark.parametrize("step", ["describe", "import"])
def test_an_allocation_that_is_not_checked_crashes(capsys, monkeypatch, tmp_path, step):
    planted = plant("allocation not checked", BUILD, tmp_path)
    monkeypatch.setenv("TANDREL_BUILD", str(planted))
    status, printed, points, faults = run(capsys, "--only", step, "--points", "20")
    assert (status, points) == (1, 20)
    assert faults > 0
    assert "crash: SIGSEGV" in printed
    replay = re.search(r"replay: python3 -m soak allocation --only '(.*)'", printed)[1]
    status, printed, points, faults = run(capsys, "--only", replay)
    assert (status, points, faults) == (1, 1, 1), printed
