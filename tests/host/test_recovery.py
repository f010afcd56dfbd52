"""Autosave: what a crash leaves, and what the next start finds."""

import json
import os
from dataclasses import replace
from datetime import datetime, timedelta, timezone
from pathlib import Path

import pytest
from harness.places import HOST
from support.children import before_calls, in_child, kill_oneself
from support.shapes import document
from tandrel import storage
from tandrel.application.recovery import Recovery
from tandrel.application.session import Session
from tandrel.storage import SketchFileError

FLANGE = HOST / "parts" / "flange.json"


@pytest.fixture
def folder(tmp_path):
    return tmp_path / "state" / "tandrel"


def part(number):
    return document(name=f"bore {number}", offset=number)


def left_by_a_crash(folder, *numbers, path=None):
    """Another program keeps these parts, each in the place of the one before, and is killed."""

    def work():
        recovery = Recovery(folder)
        for number in numbers:
            recovery.keep(part(number), path)
        kill_oneself()

    assert in_child(work) is None


def found(folder):
    """What a program that starts now is offered, while it lasts: the names."""
    return in_child(lambda: " ".join(r.document.name for r in Recovery(folder).found()))


def test_an_accepted_edit_outlives_a_killed_program(folder):
    def work():
        session = Session(Recovery(folder))
        session.open(os.path.relpath(FLANGE))
        assert session.accept({**session.document.sketch, "offset": 0.25})
        kill_oneself()

    assert in_child(work) is None
    (record,) = Recovery(folder).found()
    flange = storage.read(FLANGE)
    assert record.document == replace(flange, sketch={**flange.sketch, "offset": 0.25})
    assert record.path == str(FLANGE)
    assert timedelta(0) <= datetime.now(timezone.utc) - record.saved_at < timedelta(minutes=5)
    record.discard()
    assert list(folder.iterdir()) == []


def test_a_program_s_latest_document_takes_the_place_of_the_one_before(folder):
    left_by_a_crash(folder, 1, 2, 3)
    assert found(folder) == "bore 3"
    assert len(list(folder.iterdir())) == 2


@pytest.mark.parametrize("earlier, last", [([1], "bore 1"), ([], "")])
def test_killed_before_any_call_a_program_leaves_its_last_or_present_document(
    tmp_path, earlier, last
):
    seen, ended = [], None
    while ended is None:
        folder = tmp_path / str(len(seen))

        def work():
            recovery = Recovery(folder)
            for number in earlier:
                recovery.keep(part(number), None)
            before_calls(lambda number: number == len(seen) and kill_oneself())
            recovery.keep(part(2), None)

        ended = in_child(work)
        seen.append(found(folder))
    assert set(seen) == {last, "bore 2"} and len(seen) > 5
    assert seen == sorted(seen) and ended == "None"
    assert not list(tmp_path.glob("*/*.damaged"))


def test_dropped_work_is_gone_and_new_work_is_kept_again(folder):
    recovery = Recovery(folder)
    recovery.drop()
    recovery.keep(part(1), None)
    assert [f.suffix for f in sorted(folder.iterdir())] == [".lock", ".sketch"]
    recovery.drop()
    recovery.drop()
    assert list(folder.iterdir()) == []
    left_by_a_crash(folder, 1)
    recovery.keep(part(2), None)
    assert found(folder) == "bore 1"


def test_running_programs_don_t_take_each_other_s_work(folder):
    first, second = Recovery(folder), Recovery(folder)
    first.keep(part(1), None)
    second.keep(part(2), None)
    assert first.found() == second.found() == []
    assert found(folder) == ""
    first.drop()
    assert len(list(folder.glob("*.sketch"))) == 1


def test_what_one_start_offers_no_other_does_until_it_ends(folder):
    left_by_a_crash(folder, 1)
    (record,) = Recovery(folder).found()
    assert found(folder) == ""
    record.discard()
    left_by_a_crash(folder, 2)
    assert found(folder) == "bore 2"
    assert found(folder) == "bore 2"


def test_the_latest_comes_first(folder):
    known = set()
    for number in (2, 3, 1):
        left_by_a_crash(folder, number, path=f"/files/part {number}.json")
        (file,) = set(folder.glob("*.sketch")) - known
        os.utime(file, (1e9 + number, 1e9 + number))
        known.add(file)
    records = Recovery(folder).found()
    assert [r.path for r in records] == [f"/files/part {number}.json" for number in (3, 2, 1)]
    assert records[0].saved_at == datetime.fromtimestamp(1e9 + 3, timezone.utc)
    assert records[0].saved_at.tzinfo is not None


@pytest.mark.parametrize(
    "data",
    [
        b"",
        b"null",
        b"null\n",
        b"null\n{}",
        b"7\n" + FLANGE.read_bytes(),
        b"[" * 9999 + b"\n" + FLANGE.read_bytes(),
        b'"\xff"\n' + FLANGE.read_bytes(),
        b"null\n" + FLANGE.read_bytes()[:-3],
        os.urandom(999),
        None,
    ],
    ids=range(10),
)
def test_damaged_records_are_set_aside(folder, data):
    left_by_a_crash(folder, 1)
    broken = folder / "broken.sketch"
    os.mkfifo(broken) if data is None else broken.write_bytes(data)
    assert found(folder) == "bore 1"
    assert [file.name for file in folder.glob("broken*")] == ["broken.damaged"]
    assert found(folder) == "bore 1"
    if data is not None:
        assert (folder / "broken.damaged").read_bytes() == data


def test_paths_of_any_bytes_come_back(folder, monkeypatch, tmp_path):
    monkeypatch.chdir(tmp_path)
    for path in (os.fsdecode(b"caf\xe9\n.json"), "part.json"):
        left_by_a_crash(folder, 1, path=path)
        (record,) = Recovery(folder).found()
        assert record.path == str(tmp_path / path)
        record.discard()


def test_a_folder_that_went_away_is_made_again(folder):
    recovery = Recovery(folder)
    recovery.keep(part(1), None)
    for file in folder.iterdir():
        file.unlink()
    folder.rmdir()
    recovery.keep(part(2), None)
    assert found(folder) == ""
    assert len(list(folder.glob("*.sketch"))) == 1


def test_a_folder_that_can_t_be_read_offers_nothing(folder, tmp_path):
    assert Recovery(folder).found() == []
    folder.parent.mkdir()
    folder.write_text("in the way")
    assert Recovery(folder).found() == []
    with pytest.raises(SketchFileError, match="File exists"):
        Recovery(folder).keep(part(1), None)


@pytest.mark.parametrize("named, place", [("/elsewhere", "/elsewhere"), ("", "/.local/state")])
def test_the_usual_folder_is_where_the_environment_says(monkeypatch, named, place):
    monkeypatch.setenv("HOME", "/")
    monkeypatch.setenv("XDG_STATE_HOME", named)
    assert Recovery().folder == Path(place, "tandrel")


def test_nobody_else_reads_the_records(folder):
    Recovery(folder).keep(part(1), None)
    assert folder.stat().st_mode & 0o777 == 0o700
    (record,) = folder.glob("*.sketch")
    assert json.loads(record.read_bytes().split(b"\n")[0]) is None
