"""The document being worked on: its file, its history and its dirty mark."""

import copy
import itertools
import math
import os
import shutil
from datetime import datetime, timedelta
from pathlib import Path

import pytest
from harness.places import HOST
from hypothesis import settings
from hypothesis import strategies as st
from hypothesis.stateful import RuleBasedStateMachine, initialize, invariant, rule
from support.neighbours import circle
from support.ticks import stop
from tandrel import sketch, storage
from tandrel.application.recovery import Recovery
from tandrel.application.session import Session
from tandrel.progress import Stopped
from tandrel.storage import Document, SketchFileError

FLANGE = HOST / "parts" / "flange.json"


def drawn(*radii):
    """A sketch of circles."""
    return {**sketch.new(), "entities": [circle(r=r) for r in radii]}


@pytest.fixture
def recovery(tmp_path):
    return Recovery(tmp_path / "state")


@pytest.fixture
def session(recovery):
    return Session(recovery)


def records(recovery):
    """The names of the documents kept for this and other programs."""
    return [
        storage.loads(file.read_bytes().split(b"\n", 1)[1]).name
        for file in recovery.folder.glob("*.sketch")
    ]


def state(session):
    return (
        copy.deepcopy(session.document),
        session.path,
        session.dirty,
        session.can_undo,
        session.can_redo,
    )


def test_a_new_document_is_empty_clean_and_has_no_file(session, recovery):
    assert session.document == Document("", sketch.new(), [])
    assert state(session)[1:] == (None, False, False, False)
    assert not session.undo() and not session.redo()
    with pytest.raises(ValueError, match="no file"):
        session.save()
    assert records(recovery) == [] and not recovery.folder.exists()


def test_another_file_gives_it_its_name(session, tmp_path):
    session.accept(drawn(1.0))
    session.save_as(tmp_path / "bracket.v2.json")
    assert (session.document.name, session.dirty) == ("bracket.v2", False)
    assert session.path == str(tmp_path / "bracket.v2.json")
    session.save_as(str(tmp_path / "other.json"))
    assert session.document.name == "other"
    assert storage.read(tmp_path / "other.json") == session.document
    session.undo()
    assert session.document == Document("other", sketch.new())


def test_saving_to_its_own_file_keeps_its_name(session, tmp_path, monkeypatch):
    path = shutil.copy(FLANGE, tmp_path)
    session.open(path)
    session.accept(drawn(1.0))
    monkeypatch.chdir(tmp_path)
    session.save_as("flange.json")
    assert session.document.name == "Mounting flange"


def test_bytes_that_are_no_text_make_a_readable_name(session, tmp_path):
    session.save_as(tmp_path / os.fsdecode(b"caf\xe9.json"))
    assert session.document.name == "caf\ufffd"
    assert storage.read(session.path) == session.document


def test_an_opened_document_s_references_stay_with_it(session):
    session.open(FLANGE)
    session.accept(drawn(1.0))
    assert session.document == Document(
        "Mounting flange", drawn(1.0), storage.read(FLANGE).references
    )


def test_recovered_work_can_go_back_to_its_file(session, tmp_path):
    path = str(tmp_path / "part.json")
    session.adopt(Document("part", drawn(1.0)), path)
    assert session.dirty and session.path == path
    session.save()
    assert storage.read(path) == session.document and not session.dirty


def test_it_knows_whether_somebody_else_has_written_its_file(session, tmp_path):
    path = Path(shutil.copy(FLANGE, tmp_path))
    assert not session.changed_elsewhere
    session.open(path)
    assert not session.changed_elsewhere
    path.write_bytes(path.read_bytes())
    assert session.changed_elsewhere
    session.save()
    assert not session.changed_elsewhere
    path.unlink()
    assert not session.changed_elsewhere, "there is nothing to lose"


def test_recovered_work_knows_whether_its_file_is_still_the_one_that_it_began_with(
    session, tmp_path
):
    path = Path(shutil.copy(FLANGE, tmp_path))
    for hours, is_changed in ((-1, True), (1, False)):
        kept_at = datetime.now() + timedelta(hours=hours)
        session.adopt(Document("part", drawn(1.0)), str(path), kept_at)
        assert session.changed_elsewhere == is_changed


def test_the_saved_state_is_gone_with_what_could_be_redone(session, tmp_path):
    session.accept(drawn(1.0))
    session.save_as(tmp_path / "part.json")
    session.undo()
    session.accept(drawn(2.0))
    assert session.dirty and not session.can_redo
    session.undo()
    assert session.dirty


@pytest.mark.parametrize(
    "one, other, is_same",
    [
        (drawn(1.0), drawn(1), True),
        (drawn(0.0), drawn(-0.0), True),
        (drawn(math.nan), drawn(float("nan")), True),
        (drawn(1.0, math.nan), drawn(1.0, float("nan")), True),
        (drawn(math.nan), drawn(1.0), False),
        (drawn(math.nan, 1.0), drawn(float("nan"), 2.0), False),
        (drawn(1.0), drawn(1.0, 1.0), False),
        (drawn(1.0, 2.0), drawn(2.0, 1.0), False),
        (drawn(1.0), drawn([1.0]), False),
        (drawn([1.0, 2.0]), drawn([1.0, 2.5]), False),
        (drawn(1.0), {**drawn(1.0), "plane": "XZ"}, False),
        (drawn(1.0), {**drawn(1.0), "note": None}, False),
    ],
)
def test_an_edit_that_changes_nothing_leaves_no_trace(session, recovery, one, other, is_same):
    session.accept(drawn(3.0))
    session.accept(one)
    session.accept(drawn(4.0))
    session.undo()
    before = repr(state(session))
    assert session.accept(other) is not is_same
    assert (repr(state(session)) == before) is is_same
    assert session.can_redo is is_same


@pytest.mark.parametrize(
    "before, after, kept",
    [
        ((1.0, 2.0, 3.0), (1.0, 2.5, 3.0), (0, None, 2)),
        ((1.0, 2.0, 3.0), (1.0, 3.0), (0, 2)),
        ((1.0, 3.0), (1.0, 2.0, 3.0), (0, None, 1)),
        ((1.0, math.nan), (2.0, math.nan), (None, 1)),
        ((), (1.0,), (None,)),
    ],
)
def test_the_history_shares_what_did_not_change(session, before, after, kept):
    session.accept({**drawn(9.0), **drawn(*before)})
    old = session.document.sketch["entities"]
    edited = drawn(*map(float, map(str, after)))
    given = list(edited["entities"])
    assert session.accept(edited)
    assert repr(session.document.sketch) == repr(drawn(*after)) == repr(edited)
    assert all(one is other for one, other in zip(given, edited["entities"]))
    shared = [
        next((k for k, other in enumerate(old) if other is entity), None)
        for entity in session.document.sketch["entities"]
    ]
    assert tuple(shared) == kept


@pytest.mark.parametrize("entities", [None, {}, "abc", ...])
def test_a_sketch_without_a_list_is_accepted_as_it_is(session, entities):
    edited = {**drawn(), "entities": entities}
    if entities is ...:
        del edited["entities"]
    assert session.accept(edited) and session.document.sketch == edited
    assert session.accept(drawn(1.0)) and session.undo() and session.document.sketch == edited


@pytest.mark.parametrize("task", ["open", "open damaged", "open stopped", "save", "save_as"])
def test_what_fails_leaves_everything_as_it_was(session, recovery, tmp_path, task):
    session.open(FLANGE)
    session.path = str(tmp_path / "missing" / "part.json")
    session.accept(drawn(1.0))
    session.accept(drawn(2.0))
    session.undo()
    (tmp_path / "damaged.json").write_bytes(FLANGE.read_bytes()[:-2])
    before = state(session), records(recovery)

    failing = {
        "open": lambda: session.open(tmp_path / "nothing.json"),
        "open damaged": lambda: session.open(tmp_path / "damaged.json"),
        "open stopped": lambda: session.open(FLANGE, stop),
        "save": session.save,
        "save_as": lambda: session.save_as(tmp_path),
    }
    with pytest.raises((SketchFileError, Stopped)):
        failing[task]()
    assert (state(session), records(recovery)) == before


def test_only_unsaved_work_is_kept(session, recovery, tmp_path):
    def kept(act):
        act()
        assert session.autosave_failed == ""
        return len(records(recovery))

    acts = [
        lambda: session.accept(drawn(1.0)),
        lambda: session.accept(drawn(2.0)),
        lambda: session.save_as(tmp_path / "part.json"),
        session.undo,
        session.redo,
        lambda: session.accept(drawn(3.0)),
        session.close,
        lambda: session.accept(drawn(4.0)),
        session.new,
        lambda: session.adopt(Document("import", drawn(5.0))),
        lambda: session.open(FLANGE),
    ]
    assert [kept(act) for act in acts] == [1, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0]


def test_an_autosave_that_fails_is_told_and_stops_nobody(session, recovery, tmp_path):
    recovery.folder.write_text("in the way")
    assert session.accept(drawn(1.0)) and session.dirty
    assert session.autosave_failed == "File exists"
    assert session.undo() and session.autosave_failed == ""
    assert session.redo() and session.autosave_failed == "File exists"
    recovery.folder.unlink()
    assert session.accept(drawn(2.0)) and session.autosave_failed == ""
    assert session.accept(drawn(math.inf))
    assert session.autosave_failed.startswith("sketch.entities[0].r: expected a finite number")


class Work(RuleBasedStateMachine):
    """A session that keeps nothing for a crash, beside the plainest model: all states ever, where
    one is, and what is on disk."""

    numbers = itertools.count()

    @initialize()
    def begin(self):
        self.session = Session()
        self.path = self.folder / f"{next(self.numbers)}.json"
        self.states, self.at, self.on_disk, self.file = [sketch.new()], 0, 0, None

    def teardown(self):
        self.session.close()

    @rule(radii=st.lists(st.sampled_from([1.0, 2, math.nan]), max_size=2))
    def accept(self, radii):
        edited = drawn(*radii)
        changed = repr(drawn(*map(float, radii))) != repr(self.states[self.at])
        assert self.session.accept(edited) is changed
        if changed:
            self.at += 1
            self.states[self.at :] = [drawn(*map(float, radii))]
            if self.on_disk is not None and self.on_disk >= self.at:
                self.on_disk = None

    @rule()
    def undo(self):
        assert self.session.undo() is (self.at > 0)
        self.at = max(0, self.at - 1)

    @rule()
    def redo(self):
        assert self.session.redo() is (self.at + 1 < len(self.states))
        self.at = min(len(self.states) - 1, self.at + 1)

    @rule()
    def save(self):
        try:
            self.session.save_as(self.path)
        except SketchFileError:
            assert "nan" in repr(self.states[self.at])
        else:
            self.on_disk, self.file = self.at, str(self.path)
            self.saved = storage.read(self.path)
            assert self.saved == self.session.document

    @rule()
    def open(self):
        if self.path.exists():
            self.session.open(self.path)
            assert self.session.document == self.saved
            self.states, self.at, self.on_disk = [self.saved.sketch], 0, 0
            self.file = str(self.path)

    @rule()
    def adopt(self):
        self.session.adopt(Document("adopted", drawn(1.0)))
        self.states, self.at, self.on_disk, self.file = [drawn(1.0)], 0, None, None

    @rule()
    def new(self):
        self.session.new()
        self.states, self.at, self.on_disk, self.file = [sketch.new()], 0, 0, None

    @invariant()
    def agrees(self):
        if not hasattr(self, "session"):
            return
        shown = self.session.document.sketch
        radii = [float(circle["r"]) for circle in shown["entities"]]
        assert repr(drawn(*radii)) == repr(self.states[self.at])
        assert self.session.can_undo is (self.at > 0)
        assert self.session.can_redo is (self.at + 1 < len(self.states))
        assert self.session.dirty is (self.at != self.on_disk)
        assert (self.session.path, self.session.autosave_failed) == (self.file, "")


def test_any_sequence_of_work_agrees_with_the_model(tmp_path):
    Work.folder = tmp_path
    machine = Work.TestCase
    machine.settings = settings(max_examples=60, stateful_step_count=40, deadline=None)
    machine().runTest()
