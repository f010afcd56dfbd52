"""Files at the application's window: opened, saved, imported, exported; work that isn't lost."""

import os
import time

import pytest
from support.application import accept_bore, answering, in_editor, labels, state
from support.neighbours import circle
from support.shapes import document
from support.ticks import stop
from tandrel import exchange, profile, storage
from tandrel.application.recovery import Recovery
from tandrel.application.settings import Settings


def radius(path):
    """The radius of the flange's bore in a file."""
    return storage.read(path).sketch["entities"][1]["r"]


@pytest.fixture
def full_disk(monkeypatch):
    def fail(*_):
        raise OSError(28, "No space left on device")

    with monkeypatch.context() as patch:
        patch.setattr(os, "replace", fail)
        yield patch


@pytest.fixture
def changed(start, part):
    """The window on the flange with another bore, not saved."""
    app = start(part)
    in_editor(app, accept_bore)
    return app


@pytest.fixture
def leaves(monkeypatch):
    """leaves(app): whether quitting destroys the window, which stays for the test."""

    def quit(app):
        destroyed = []
        with monkeypatch.context() as patch:
            patch.setattr(app.root, "destroy", lambda: destroyed.append(True))
            app.perform("quit")
        return bool(destroyed)

    return quit


# Opening.


@pytest.mark.parametrize("data, why", [(None, "No such file"), (b"{", "line 1"), (b"[]", "object")])
def test_a_missing_or_damaged_file_gives_a_message(start, tmp_path, data, why):
    path = tmp_path / "bad.json"
    if data is not None:
        path.write_bytes(data)
    app = start(path)
    assert "bad.json can't be opened" in app.message.cget("text")
    assert why in app.message.cget("text")
    assert app.message.cget("style") == "Warning.TLabel"
    assert app.session.path is None
    assert (path.read_bytes() if path.exists() else None) == data


def test_a_part_stays_open_where_the_next_can_t_be_read(start, part, tmp_path):
    app = start(part)
    before = app.session.document
    (tmp_path / "bad.dxf").write_bytes(b"\0\1\2 no drawing")
    for name in ("missing.json", "bad.dxf"):
        app.open(str(tmp_path / name))
        assert f"{name} can't be opened" in app.message.cget("text")
        assert (app.session.document, app.session.path) == (before, str(part))
        assert app.name.cget("text") == "Mounting flange"
    app.open(str(part))
    assert app.message.cget("style") == "Muted.TLabel"


def test_a_file_name_may_hold_any_bytes(start, part):
    strange = os.path.join(os.fsencode(part.parent), b"bore\xff\x01.json")
    os.rename(part, strange)
    app = start(os.fsdecode(strange))
    assert app.name.cget("text") == "Mounting flange"
    app.perform("save")
    assert len(app.settings.recent) == 1
    assert storage.read(strange).name == "Mounting flange"


def test_the_file_dialog_opens_a_part(start, part, picks):
    app = start()
    asked = picks(part)
    app.perform("choose_file")
    assert app.session.path == str(part)
    picks("")
    app.perform("choose_file")
    assert app.session.path == str(part)
    assert asked[0]["initialdir"] is None
    asked = picks("")
    app.perform("choose_file")
    assert asked[0]["initialdir"] == str(part.parent)


@pytest.mark.parametrize("step", ["read", "contours"])
def test_stopping_while_a_file_opens_leaves_everything(changed, part, part_of, monkeypatch, step):
    app, other = changed, part_of(name="other")
    before, drawn = app.session.document, app.view.find_all()

    module = storage if step == "read" else profile
    with monkeypatch.context() as patch:
        patch.setattr(module, step, stop)
        app.open(str(other))
    assert app.session.document is before
    assert (app.session.path, app.session.can_undo) == (str(part), True)
    assert app.view.find_all() == drawn
    assert app.message.cget("text").startswith("Stopped.")
    app.open(str(other))
    assert app.name.cget("text") == "other"


# Recent files.


def test_files_are_found_again(start, part, part_of):
    app, other = start(), part_of(name="other")
    assert state(app.menus["file"], "Open recent") == "disabled"
    for path in (part, other):
        app.open(str(path))
    assert state(app.menus["file"], "Open recent") == "normal"
    assert Settings.load().recent == [str(other), str(part)]
    first, second = labels(app.menus["recent"])
    assert first.startswith("other.json") and second.startswith("flange.json")
    app.menus["recent"].invoke(1)
    assert app.session.path == str(part)
    assert Settings.load().recent == [str(part), str(other)]


def test_a_file_that_has_gone_leaves_the_list(start, part, part_of):
    other = part_of(name="other")
    app = start(other)
    app.open(str(part))
    other.unlink()
    app.menus["recent"].invoke(1)
    assert "other.json can't be opened" in app.message.cget("text")
    assert app.session.path == str(part)
    assert app.settings.recent == Settings.load().recent == [str(part)]
    assert len(labels(app.menus["recent"])) == 1


def test_a_damaged_file_stays_in_the_list(start, part):
    app = start(part)
    part.write_bytes(b"{")
    app.menus["recent"].invoke(0)
    assert "line 1" in app.message.cget("text")
    assert app.settings.recent == [str(part)]


# Saving.


def test_saving_writes_the_edit_and_takes_the_mark_away(changed, part):
    assert radius(part) == 0.031
    asked = answering(changed.root)
    changed.perform("save")
    assert radius(part) == 0.033
    assert changed.root.title() == "Mounting flange – tandrel"
    assert changed.message.cget("text") == f"Saved: {part}"
    changed.perform("undo")
    assert changed.root.title().startswith("• ")
    changed.perform("save")
    assert (asked, radius(part)) == ([], 0.031), "what was written here is no other program's"


def test_a_new_part_asks_for_its_file(start, tmp_path, picks):
    app = start()
    path = tmp_path / "bracket.json"
    asked = picks(path)
    app.perform("save")
    assert asked[0]["initialfile"] == "Untitled.json"
    assert storage.read(path).sketch["entities"] == []
    assert app.session.path == str(path)
    assert app.name.cget("text") == "bracket"
    assert app.settings.recent == [str(path)]


def test_saving_under_another_name_leaves_the_first_file(changed, part, tmp_path, picks):
    other = tmp_path / "other.json"
    asked = picks(other)
    changed.perform("save_as")
    assert asked[0]["initialfile"] == "flange.json"
    assert (radius(part), radius(other)) == (0.031, 0.033)
    assert changed.session.path == str(other)
    assert changed.name.cget("text") == "other" == storage.read(other).name
    assert changed.root.title() == "other – tandrel"
    picks("")
    changed.perform("save_as")
    assert changed.session.path == str(other)


@pytest.mark.parametrize("suffix", [".dxf", ".SVG", ".png"])
def test_a_sketch_isn_t_saved_under_a_drawing_s_name(changed, tmp_path, picks, suffix):
    picks(tmp_path / f"flange{suffix}")
    changed.perform("save_as")
    assert "Export" in changed.message.cget("text")
    assert not (tmp_path / f"flange{suffix}").exists()
    assert changed.session.dirty


def test_an_edit_that_can_t_be_saved_is_kept(changed, part, full_disk, leaves):
    before = part.read_bytes()
    changed.perform("save")
    told, advice = changed.message.cget("text").splitlines()
    assert told == "flange.json isn't saved: No space left on device"
    assert advice == "Your work is still here: try again, or choose another place."
    assert changed.message.cget("style") == "Warning.TLabel"
    assert changed.session.document.sketch["entities"][1]["r"] == 0.033
    assert part.read_bytes() == before
    assert changed.root.title().startswith("• ")
    answering(changed.root, "save")
    assert not leaves(changed)
    assert changed.session.dirty and "No space left" in changed.message.cget("text")
    full_disk.undo()
    changed.perform("save")
    assert radius(part) == 0.033


def written_by_another(part):
    content = part.read_bytes().replace(b"0.031", b"0.029")
    part.write_bytes(content)
    return content


@pytest.mark.parametrize("answer", ["other", "replace", "stay", None])
def test_what_another_program_wrote_is_not_overwritten_without_asking(
    changed, part, tmp_path, picks, answer
):
    content = written_by_another(part)
    picks(tmp_path / "mine.json")
    asked = answering(changed.root, answer)
    changed.perform("save")
    assert asked == ["flange.json was changed by another program. What becomes of that?"]
    assert (part.read_bytes() == content) == (answer != "replace")
    assert changed.session.dirty == (answer in ("stay", None))
    mine = tmp_path / "mine.json"
    assert (radius(mine) if mine.exists() else None) == (0.033 if answer == "other" else None)


# Work that isn't saved.


@pytest.mark.parametrize(
    "answer, gone, saved",
    [("stay", False, False), (None, False, False), ("leave", True, False), ("save", True, True)],
)
@pytest.mark.parametrize("way", ["quit", "new", "choose_file", "recent"])
def test_unsaved_work_is_asked_for(changed, part, leaves, picks, answer, gone, saved, way):
    picks(part)
    asked = answering(changed.root, answer)
    work = changed.session.document
    if way == "quit":
        assert leaves(changed) == gone
    elif way == "recent":
        changed.menus["recent"].invoke(0)
    else:
        changed.perform(way)
    assert asked == ["Save the changes to Mounting flange?"]
    assert radius(part) == (0.033 if saved else 0.031)
    if way != "quit":
        assert (changed.session.document.sketch is not work.sketch) == gone
    assert bool(Recovery().folder.exists() and list(Recovery().folder.glob("*.sketch"))) != gone


def test_leaving_stays_where_no_file_is_picked(start, picks, leaves):
    app = start()
    app.session.adopt(document(circle()))
    picks("")
    answering(app.root, "save")
    assert not leaves(app)
    assert app.session.dirty


def test_leaving_without_unsaved_work_doesn_t_ask(start, part, leaves):
    assert leaves(start(part))


# Recovered work.


@pytest.fixture
def lost(tmp_path):
    """What programs that are gone left: two sketches, the older first."""
    parts = [document(circle(r=r), name=name) for name, r in (("Older", 0.01), ("Newer", 0.02))]
    for part in parts:
        recovery = Recovery()
        recovery.keep(part, str(tmp_path / "lost.json"))
        # The lock goes with its program; here the program goes on.
        os.close(recovery._claim._handle)
        time.sleep(0.02)
    return parts


def records():
    return len(list(Recovery().folder.glob("*.sketch")))


def offered(start, *answers):
    app = start()
    asked = answering(app.root, *answers)
    app._one_at_a_time(lambda: app.offer(Recovery().found()))
    return app, asked


def test_lost_work_is_offered_and_taken_up(start, lost):
    app, asked = offered(start, "take")
    assert len(asked) == 1 and asked[0].startswith("Newer has unsaved changes of 2")
    assert app.session.document.sketch == lost[1].sketch
    assert app.size.cget("text") == "40 mm × 40 mm"
    assert app.root.title() == "• Newer – tandrel"
    assert os.path.basename(app.session.path) == "lost.json"
    # The other one, and this one until it is saved.
    assert records() == 2


@pytest.mark.parametrize("answers", [("later", "later"), (None, None), ("drop", None, "later")])
def test_lost_work_outlasts_a_wrong_key(start, lost, answers):
    app, asked = offered(start, *answers)
    assert len(asked) == len(answers)
    assert records() == 2
    assert not app.session.dirty


def test_lost_work_that_nobody_wants_goes(start, lost):
    app, asked = offered(start, "drop", "drop", "later")
    assert asked[1] == "Discard the unsaved changes to Newer for good?"
    assert records() == 1


def test_a_record_stays_where_taking_it_up_can_t_be_recorded(start, lost, full_disk):
    app, _ = offered(start, "take")
    assert app.session.dirty
    assert records() == 2


# Drawings.


def test_a_drawing_is_opened_like_a_sketch(start, tmp_path, picks):
    drawing = tmp_path / "ring.dxf"
    exchange.export(document(circle(r=0.01)), drawing)
    app = start(drawing)
    assert app.size.cget("text") == "20 mm × 20 mm"
    assert app.session.path is None and app.session.dirty
    assert app.settings.recent == [str(drawing)]
    asked = picks(drawing)
    answering(app.root, "leave", "leave")
    for operation in ("choose_drawing", "choose_file"):
        app.perform(operation)
        assert {".dxf", ".DXF", ".svg", ".SVG"} <= {*asked[-1]["filetypes"][0][1]}
    assert app.size.cget("text") == "20 mm × 20 mm"


@pytest.mark.parametrize("rest", ["", "~"])
def test_a_file_that_can_t_be_opened_leaves_a_way_out(start, part, rest):
    part.with_name(f"flange.json{rest}").write_bytes(b"{")
    part.write_bytes(b"{")
    advice = start(part).message.cget("text").splitlines()[1]
    assert advice == (
        "flange.json~ beside it is the version before: give it another name to open it."
        if rest
        else "Choose another file with “Open…”."
    )
