"""Sketch files: strict reading, and writing whole or not at all."""

import copy
import json
import os
import subprocess
import sys
import time
from pathlib import Path

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from tandrel import sketch, storage
from tandrel.gui import i18n
from tandrel.storage import Document, SketchFileError

HOST = Path(storage.__file__).parents[1]
FLANGE = HOST / "parts" / "flange.json"

number = st.floats(allow_nan=False, allow_infinity=False)
point = st.tuples(number, number).map(list)


def entity(kind, **values):
    return st.fixed_dictionaries({"type": st.just(kind), **values})


def numbers(*keys):
    return dict.fromkeys(keys, number)


entities = st.one_of(
    entity("rectangle", **numbers("x", "y", "w", "h", "radius")),
    entity("circle", **numbers("xc", "yc", "r")),
    entity("regular", **numbers("xc", "yc", "r", "angle"), n=st.integers()),
    entity("slot", **numbers("x1", "y1", "x2", "y2", "r")),
    entity("polygon", points=st.lists(point, max_size=5), radius=number),
)
documents = st.builds(
    Document,
    name=st.text(st.characters(blacklist_categories=["Cs"])),
    sketch=st.fixed_dictionaries(
        {"plane": st.text(max_size=3), "offset": number, "entities": st.lists(entities, max_size=5)}
    ),
    references=st.lists(
        st.fixed_dictionaries({"name": st.text("ab"), "points": st.lists(point, max_size=3)}),
        max_size=2,
    ),
)


@pytest.fixture
def content():
    """What a sound file holds, to be damaged."""
    return json.loads(FLANGE.read_text())


@pytest.fixture
def refused(tmp_path):
    """refused(bytes or JSON value): the message of reading it."""

    def read(data):
        path = tmp_path / "sketch.json"
        path.write_bytes(data if isinstance(data, bytes) else json.dumps(data).encode())
        with pytest.raises(SketchFileError) as error:
            storage.read(path)
        return str(error.value)

    return read


def test_the_flange_is_a_sound_part():
    flange = storage.read(FLANGE)
    assert flange.name == "Mounting flange"
    assert sketch.check(flange.sketch) == []
    assert sketch.depths(flange.sketch) == [0, 1, 1, 1, 1, 1, 1, 2, 3]
    kinds = [e["type"] for e in flange.sketch["entities"]]
    assert kinds == ["rectangle"] + 5 * ["circle"] + ["slot"] + 2 * ["circle"]


@given(documents)
def test_what_is_written_is_read_number_by_number(tmp_path_factory, document):
    path = tmp_path_factory.mktemp("files") / "sketch.json"
    before = copy.deepcopy(document)
    storage.write(path, document)
    assert storage.read(path) == document == before
    assert repr(storage.read(path).sketch) == repr(document.sketch)


def test_a_file_may_be_without_references(content, tmp_path):
    del content["references"]
    path = tmp_path / "sketch.json"
    path.write_text(json.dumps(content))
    assert storage.read(path).references == []


def test_whole_numbers_are_read_as_lengths(content, tmp_path):
    content["sketch"]["offset"] = 2
    path = tmp_path / "sketch.json"
    path.write_text(json.dumps(content))
    assert repr(storage.read(path).sketch["offset"]) == "2.0"


def test_numbers_of_numpy_are_written_as_plain_ones(tmp_path):
    circle = {"type": "circle", "xc": np.float64(0.5), "yc": 0, "r": np.float64(1)}
    document = Document("part", {"plane": "XY", "offset": 0.0, "entities": [circle]})
    storage.write(tmp_path / "sketch.json", document)
    (read,) = storage.read(tmp_path / "sketch.json").sketch["entities"]
    assert read == {"type": "circle", "xc": 0.5, "yc": 0.0, "r": 1.0}


def set_at(place, value):
    """A change of one value in a file's content; `...` takes the key away."""

    def change(content):
        *way, last = place
        for step in way:
            content = content[step]
        if value is ...:
            del content[last]
        else:
            content[last] = value

    return change


@pytest.mark.parametrize(
    "place, value, message",
    [
        (["format"], "other", 'file.format: expected "tandrel sketch", found "other"'),
        (["version"], 2, "file.version: expected 1, found 2"),
        (["version"], True, "file.version: expected 1, found true"),
        (["version"], ..., 'file: "version" is missing'),
        (["length_unit"], "mm", 'file.length_unit: expected "m", found "mm"'),
        (["name"], 7, "file.name: expected a text, found 7"),
        (["extra"], 0, 'file: "extra" is not known'),
        (["sketch"], [], "file.sketch: expected an object, found []"),
        (["sketch", "offset"], "0", 'file.sketch.offset: expected a finite number, found "0"'),
        (["sketch", "offset"], True, "file.sketch.offset: expected a finite number, found true"),
        (["sketch", "offset"], None, "file.sketch.offset: expected a finite number, found null"),
        (["sketch", "plane"], ..., 'file.sketch: "plane" is missing'),
        (["sketch", "entities"], {}, "file.sketch.entities: expected a list, found {}"),
        (
            ["sketch", "entities", 1],
            3,
            "file.sketch.entities[1].type: expected "
            "rectangle / circle / regular / slot / polygon, found null",
        ),
        (
            ["sketch", "entities", 1, "type"],
            "ellipse",
            "file.sketch.entities[1].type: expected "
            'rectangle / circle / regular / slot / polygon, found "ellipse"',
        ),
        (["sketch", "entities", 1, "r"], ..., 'file.sketch.entities[1]: "r" is missing'),
        (["sketch", "entities", 1, "raduis"], 1, 'file.sketch.entities[1]: "raduis" is not known'),
        (
            ["references", 0, "points", 2],
            [1.0],
            "file.references[0].points[2]: expected a pair of numbers, found [1.0]",
        ),
        (
            ["references", 0, "points", 2, 1],
            "x" * 99,
            "file.references[0].points[2][1]: expected a finite number, found " f'"{38 * "x"}…',
        ),
    ],
)
def test_a_damaged_file_is_refused_by_name_and_place(content, refused, place, value, message):
    set_at(place, value)(content)
    assert refused(content) == message


@pytest.mark.parametrize(
    "old, new, message",
    [
        (b'"r": 0.031', b'"r": NaN', "NaN is not a number that a sketch can hold"),
        (b'"r": 0.031', b'"r": -Infinity', "-Infinity is not a number that a sketch can hold"),
        (
            b'"r": 0.031',
            b'"r": 1e999',
            "file.sketch.entities[1].r: expected a finite number, found Infinity",
        ),
        (
            b'"r": 0.031',
            b'"r": 1' + 400 * b"0",
            f"file.sketch.entities[1].r: expected a finite number, found 1{38 * '0'}…",
        ),
        (b'"r": 0.031', b'"r": 1, "r": 2', 'the key "r" stands twice in one place'),
        (b'"version": 1,', b'"version" 1,', "line 3: this is not JSON (Expecting ':' delimiter)"),
    ],
)
def test_a_damaged_text_is_refused(refused, old, new, message):
    data = FLANGE.read_bytes()
    assert old in data
    assert refused(data.replace(old, new)) == message


@pytest.mark.parametrize(
    "data",
    [
        b"",
        b"\xff\xfe\xfd",
        b"\0" * 9,
        b"[" * 100_000,
        b"1" * 5000,
        b'{"a": ' * 3000,
        b"null",
        b"[]",
    ],
    ids=["empty", "binary", "zeros", "deep", "huge number", "deep objects", "null", "list"],
)
def test_foreign_files_are_refused(refused, data):
    assert refused(data)


@pytest.mark.parametrize("cut", range(0, 900, 50))
def test_a_file_cut_short_is_refused(refused, cut):
    assert refused(FLANGE.read_bytes()[:cut])


def test_messages_are_translated(catalogues, content, refused):
    i18n.set_language("de")
    content["sketch"]["offset"] = "x"
    assert refused(content) == 'file.sketch.offset: erwartet wird eine endliche Zahl, da steht "x"'


def test_what_is_no_file_is_refused_at_once(tmp_path):
    os.mkfifo(tmp_path / "pipe")
    for path in (tmp_path / "pipe", tmp_path, tmp_path / "missing.json", "/dev/zero"):
        with pytest.raises(SketchFileError):
            storage.read(path)


def test_a_file_too_large_is_refused(tmp_path, monkeypatch):
    monkeypatch.setattr(storage, "LARGEST_FILE", FLANGE.stat().st_size - 1)
    with pytest.raises(SketchFileError, match="too large"):
        storage.read(FLANGE)
    monkeypatch.setattr(storage, "LARGEST_FILE", FLANGE.stat().st_size)
    assert storage.read(FLANGE)


@pytest.fixture
def flange():
    return storage.read(FLANGE)


@pytest.fixture
def saved(tmp_path):
    path = tmp_path / "sketch.json"
    path.write_text("as it was")
    path.chmod(0o640)
    return path


@pytest.mark.parametrize("damage", [float("nan"), "1", None, [], 10**400])
def test_what_could_not_be_read_is_not_written(saved, flange, damage):
    flange.sketch["offset"] = damage
    with pytest.raises(SketchFileError, match="file.sketch.offset"):
        storage.write(saved, flange)
    assert saved.read_text() == "as it was"
    assert os.listdir(saved.parent) == ["sketch.json"]


@pytest.mark.parametrize("step", ["replace", "fsync", "fchmod"])
def test_a_failing_disk_leaves_the_file_as_it_was(saved, flange, monkeypatch, step):
    def fail(*_):
        raise OSError(28, "No space left on device")

    monkeypatch.setattr(os, step, fail)
    with pytest.raises(SketchFileError, match="No space left"):
        storage.write(saved, flange)
    monkeypatch.undo()
    assert saved.read_text() == "as it was"
    assert os.listdir(saved.parent) == ["sketch.json"]


def test_a_folder_that_can_t_be_synced_does_not_matter(saved, flange, monkeypatch):
    real = os.fsync

    def files_only(handle):
        if os.path.isdir(f"/proc/self/fd/{handle}"):
            raise OSError(22, "Invalid argument")
        real(handle)

    monkeypatch.setattr(os, "fsync", files_only)
    storage.write(saved, flange)
    assert storage.read(saved) == flange


def test_a_file_system_without_permissions_does_not_matter(saved, flange, monkeypatch):
    def refuse(*_):
        raise PermissionError(1, "Operation not permitted")

    monkeypatch.setattr(os, "fchmod", refuse)
    storage.write(saved, flange)
    assert storage.read(saved) == flange


def test_a_missing_folder_is_named(tmp_path, flange):
    with pytest.raises(SketchFileError, match="No such file"):
        storage.write(tmp_path / "missing" / "sketch.json", flange)


def test_permissions_and_links_stay(saved, flange):
    link = saved.parent / "link.json"
    link.symlink_to(saved)
    storage.write(link, flange)
    assert link.is_symlink()
    assert storage.read(saved) == flange
    assert saved.stat().st_mode & 0o777 == 0o640


def test_a_new_file_has_the_user_s_usual_permissions(tmp_path, flange):
    before = os.umask(0o027)
    try:
        storage.write(tmp_path / "new.json", flange)
    finally:
        os.umask(before)
    assert (tmp_path / "new.json").stat().st_mode & 0o777 == 0o640


WRITE_FOR_EVER = """
import sys
from tandrel import storage
document = storage.read(sys.argv[1])
print("ready", flush=True)
while True:
    storage.write(sys.argv[2], document)
"""


def test_a_writer_killed_at_any_moment_leaves_a_whole_file(tmp_path, flange):
    path = tmp_path / "sketch.json"
    environment = {**os.environ, "PYTHONPATH": str(HOST)}
    for delay in (0.0, 0.003, 0.007, 0.013, 0.02):
        storage.write(path, flange)
        command = [sys.executable, "-c", WRITE_FOR_EVER, FLANGE, path]
        with subprocess.Popen(command, env=environment, stdout=subprocess.PIPE) as writer:
            assert writer.stdout.readline() == b"ready\n"
            time.sleep(delay)
            writer.kill()
        assert storage.read(path) == flange
