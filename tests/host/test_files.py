"""Files on the disk: read whatever they are, and replaced whole or not at all."""

import errno
import itertools
import os
import resource
import shutil
import tempfile
from pathlib import Path

import pytest
from harness.places import HOST
from support.children import before_calls, in_child, kill_oneself, plain_user
from support.shapes import document
from tandrel import files, storage
from tandrel.storage import SketchFileError

FLANGE = HOST / "parts" / "flange.json"


@pytest.fixture
def flange():
    return storage.read(FLANGE)


def version(number):
    return document(name=f"version {number}", offset=number)


def names(path):
    """The names of a file's version and of the version before it, None where there is none."""
    return [
        storage.read(p).name if os.path.exists(p) else None for p in (path, os.fspath(path) + "~")
    ]


def refuse(*_):
    raise PermissionError(errno.EPERM, os.strerror(errno.EPERM))


def refuse_folders(handle, real=os.fsync):
    if os.path.isdir(f"/proc/self/fd/{handle}"):
        raise OSError(errno.EINVAL, "Invalid argument")
    real(handle)


@pytest.fixture
def saved(tmp_path):
    """A file with a version before it."""
    path = tmp_path / "sketch.json"
    for number in (1, 2):
        storage.write(path, version(number))
    path.chmod(0o640)
    assert names(path) == ["version 2", "version 1"]
    return path


def test_the_version_before_stays_beside_each_file(tmp_path):
    path = tmp_path / "sketch.json"
    seen = []
    for number in (1, 2, 3):
        storage.write(path, version(number))
        seen.append(names(path))
    assert seen == [["version 1", None], ["version 2", "version 1"], ["version 3", "version 2"]]
    assert sorted(os.listdir(tmp_path)) == ["sketch.json", "sketch.json~"]


def test_what_was_no_sketch_stays_beside_the_file_too(tmp_path, flange):
    path = tmp_path / "notes"
    path.write_text("as it was")
    storage.write(path, flange)
    assert (tmp_path / "notes~").read_text() == "as it was"


@pytest.mark.parametrize(
    "call, fail", [("link", refuse), ("fchmod", refuse), ("fsync", refuse_folders)]
)
def test_links_permissions_and_synced_folders_may_be_unknown_to_a_file_system(
    saved, monkeypatch, call, fail
):
    monkeypatch.setattr(os, call, fail)
    storage.write(saved, version(3))
    assert names(saved) == ["version 3", "version 2"]
    assert Path(f"{saved}~").stat().st_mode & 0o777 == 0o640
    assert sorted(os.listdir(saved.parent)) == ["sketch.json", "sketch.json~"]


def test_two_names_of_one_content_are_no_obstacle(saved):
    os.unlink(f"{saved}~")
    os.link(saved, f"{saved}~")
    storage.write(saved, version(3))
    assert names(saved) == ["version 3", "version 2"]
    assert sorted(os.listdir(saved.parent)) == ["sketch.json", "sketch.json~"]


WHOLE = (["version 2", "version 1"], ["version 2", "version 2"], ["version 3", "version 2"])


@pytest.mark.parametrize("links", [True, False], ids=["links", "no links"])
def test_killed_before_any_call_a_writer_leaves_old_or_new_and_the_one_before(tmp_path, links):
    def write(last):
        if not links:
            os.link = refuse
        before_calls(lambda number: number == last and kill_oneself())
        storage.write(path, version(3))

    killed, seen = 0, []
    while killed < 99:
        path = tmp_path / f"{killed}.json"
        for number in (1, 2):
            storage.write(path, version(number))
        ended = in_child(lambda: write(killed))
        assert names(path) in WHOLE
        seen.append(names(path))
        if ended is not None:
            break
        killed += 1
    assert ended == "None" and 8 < killed
    assert [state for state in WHOLE if state in seen] == list(WHOLE)
    assert seen == sorted(seen, key=WHOLE.index)


@pytest.mark.parametrize("for_good", [False, True], ids=["once", "for good"])
def test_failing_at_any_call_a_writer_says_so_and_leaves_the_file(tmp_path, for_good):
    def write(first):
        failed = []

        def fail(number):
            if number == first:
                failed.append(number)
                raise OSError(errno.EIO, "first")
            if for_good and number > first:
                raise OSError(errno.EIO, "later")

        before_calls(fail)
        storage.write(path, version(3))
        return "failed, but written" if failed else "finished"

    refused, ended = [], None
    for failing in itertools.takewhile(lambda _: ended != "finished", itertools.count()):
        path = tmp_path / str(failing) / "sketch.json"
        path.parent.mkdir()
        for number in (1, 2):
            storage.write(path, version(number))
        ended = in_child(lambda: write(failing))
        if ended in ("failed, but written", "finished"):
            assert names(path) == WHOLE[-1]
        else:
            refused.append(ended.removeprefix("SketchFileError: "))
            assert names(path) in WHOLE[:-1]
        if not for_good:
            assert sorted(os.listdir(path.parent)) == ["sketch.json", "sketch.json~"]
    # Told is why nothing was written, not that tidying up failed too. Without a link it goes on.
    assert refused[:3] == ["first"] * 3 and len(refused) > 4


def test_a_full_disk_leaves_the_file_as_it_was(saved, flange):
    def write():
        resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))
        storage.write(saved, flange)

    assert in_child(write) == "SketchFileError: File too large"
    assert names(saved) == ["version 2", "version 1"]
    assert sorted(os.listdir(saved.parent)) == ["sketch.json", "sketch.json~"]


def test_a_version_that_can_t_be_kept_stops_the_writing(saved):
    os.unlink(f"{saved}~")
    os.mkdir(f"{saved}~")
    with pytest.raises(SketchFileError, match="Is a directory"):
        storage.write(saved, version(3))
    assert storage.read(saved).name == "version 2"
    assert sorted(os.listdir(saved.parent)) == ["sketch.json", "sketch.json~"]


def test_permissions_and_links_stay(saved, flange):
    link = saved.parent / "elsewhere" / "link.json"
    link.parent.mkdir()
    link.symlink_to(saved)
    storage.write(link, flange)
    assert link.is_symlink() and os.listdir(link.parent) == ["link.json"]
    assert names(saved) == ["Mounting flange", "version 2"]
    assert saved.stat().st_mode & 0o777 == 0o640


def test_a_link_to_nothing_yet_is_followed(tmp_path, flange):
    (tmp_path / "link.json").symlink_to("target.json")
    storage.write(tmp_path / "link.json", flange)
    assert (tmp_path / "link.json").is_symlink()
    assert storage.read(tmp_path / "target.json") == flange


def test_a_new_file_has_the_user_s_usual_permissions(tmp_path, flange):
    before = os.umask(0o027)
    try:
        storage.write(tmp_path / "new.json", flange)
    finally:
        os.umask(before)
    assert (tmp_path / "new.json").stat().st_mode & 0o777 == 0o640


@pytest.fixture
def shared():
    """A folder that another user reaches, whose file that user may write."""
    folder = Path(tempfile.mkdtemp())
    storage.write(folder / "sketch.json", version(2))
    folder.chmod(0o777)
    (folder / "sketch.json").chmod(0o666)
    yield folder
    folder.chmod(0o700)
    shutil.rmtree(folder)


@pytest.mark.parametrize("name, mode", [("", 0o555), ("sketch.json", 0o444)])
def test_what_is_read_only_stays_as_it_is(shared, name, mode):
    def write():
        plain_user()
        storage.write(shared / "sketch.json", version(3))

    (shared / name).chmod(mode)
    assert in_child(write) == "SketchFileError: Permission denied"
    assert names(shared / "sketch.json") == ["version 2", None]
    assert os.listdir(shared) == ["sketch.json"]


def special_files(folder):
    """Paths that lead to no ordinary file, or can't be paths at all."""
    os.mkfifo(folder / "pipe")
    (folder / "loop").symlink_to("loop")
    (folder / "folder").mkdir()
    names = ("pipe", "loop", "folder", "missing/sketch.json", "n" * 300, "null\0", "half \ud800")
    return [*(os.path.join(folder, name) for name in names), "/dev/zero", "/dev/null", "/proc", ""]


def test_what_is_no_file_is_neither_read_nor_written(tmp_path, flange):
    for path in special_files(tmp_path):
        before = sorted(os.listdir(tmp_path))
        for attempt in (storage.read, lambda path: storage.write(path, flange)):
            with pytest.raises(SketchFileError) as error:
                attempt(path)
            assert str(error.value) not in ("", "None")
        assert sorted(os.listdir(tmp_path)) == before


def test_a_file_too_large_is_refused(saved, flange, monkeypatch):
    monkeypatch.setattr(files, "LARGEST", FLANGE.stat().st_size - 1)
    with pytest.raises(SketchFileError, match="the file is too large"):
        storage.read(FLANGE)
    with pytest.raises(SketchFileError, match="the sketch is too large for a file"):
        storage.write(saved, flange)
    assert names(saved) == ["version 2", "version 1"]
    monkeypatch.setattr(files, "LARGEST", FLANGE.stat().st_size)
    storage.write(saved, storage.read(FLANGE))
    assert storage.read(saved) == flange
