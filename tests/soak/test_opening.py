"""Opening and closing at a small size, and that whatever a way leaves behind is told."""

import pytest
from soak import opening
from soak.common.growth import MEASURES

NOTHING = ", ".join(f"{measure} +0" for measure in MEASURES)


def test_nothing_is_left_of_any_way(capsys):
    status = opening.main(["--cycles", "200"])
    told = capsys.readouterr().out
    assert told.splitlines()[-1] == f"open and close: 200 cycles in 39 ways: {NOTHING}"
    assert status == 0


PLANTED = """
import os, signal
from soak import opening

kept = []

def leaves(step):
    def way(stage):
        stage.open().destroy()
        step(stage)
    return way

def sometimes(step, turn=[0]):
    def way(stage):
        turn[0] += 1
        if turn[0] % 3 == 0:
            step(stage)
    return way

def crash(stage):
    if len(kept) == 9:
        os.kill(os.getpid(), signal.SIGSEGV)
    kept.append(0)

WAYS = {{
    "nothing": leaves(lambda stage: None),
    "commands": leaves(lambda stage: stage.root.register(print)),
    "variables": leaves(lambda stage: stage.root.setvar(f"left{{len(kept)}}", kept.append(0))),
    "elements": leaves(lambda stage: stage.root.setvar(f"a({{len(kept)}})", kept.append(0))),
    "windows": leaves(lambda stage: stage.root.tk.call("after", 10**8, "set x 1")),
    "objects": leaves(lambda stage: kept.append([])),
    "references": leaves(lambda stage: kept.append(stage.sketch["entities"][2])),
    "blocks": leaves(lambda stage: kept.append(tuple(f"left {{n}}" for n in range(1000)))),
    "descriptors": leaves(lambda stage: os.dup(1)),
    "seldom": sometimes(lambda stage: kept.append([])),
    "window": lambda stage: stage.open(),
    "crash": crash,
    "error in a callback": lambda stage: stage.root.after(0, lambda: 1 / 0),
}}

def serve(telling, *_):
    opening.serve(telling, 10, None, {{{way!r}: WAYS[{way!r}]}})
"""


@pytest.fixture
def planted(told_of):
    """What the tool tells of a way that leaves something behind."""
    return lambda way: told_of(opening, PLANTED.format(way=way))


def test_a_way_that_leaves_nothing(planted):
    status, lines = planted("nothing")
    assert (status, lines[-1]) == (0, f"open and close: 10 cycles in 1 ways: {NOTHING}")


@pytest.mark.parametrize(
    "way, measure",
    [*((measure, measure) for measure in MEASURES), ("elements", "variables")],
)
def test_what_is_left_in_each_cycle_is_told_by_way_and_measure(planted, way, measure):
    status, lines = planted(way)
    assert status == 1
    row = next(line for line in lines if line.startswith(way))
    told = row.split()[MEASURES.index(measure) + 2]
    assert f"{measure} {told}" in lines[-1]
    # The interpreter takes and gives back a few blocks of its own; those left are a thousand.
    most = 10_099 if measure == "blocks" else 10
    assert (10_000 if measure == "blocks" else 10) <= int(told) <= most


def test_references_are_told_by_name(planted):
    assert "    references: entity 2 +10" in planted("references")[1]


def test_objects_are_told_by_type(planted):
    assert "    objects: list +10" in planted("objects")[1]


def test_what_is_left_in_some_cycles_only_is_told_too(planted):
    status, lines = planted("seldom")
    assert (status, "objects +3" in lines[-1]) == (1, True)


@pytest.mark.parametrize(
    "way, told",
    [
        ("window", "window, cycle -4: the process ended with 1"),
        ("crash", "crash, cycle 5: crash: SIGSEGV"),
        ("error in a callback", "error in a callback, cycle -4: the process ended with 1"),
    ],
)
def test_a_cycle_that_fails_is_told_with_its_way(planted, way, told):
    status, lines = planted(way)
    assert status == 1
    assert told in lines
    assert any(f"--ways {way!r}" in line for line in lines)
    assert lines[-1].endswith("1 faults")
