"""Sketch files: strict reading with messages that name line and key, and what is written."""

import copy
import json
import re
import resource
from contextlib import nullcontext
from functools import reduce
from operator import getitem
from pathlib import Path

import numpy as np
import pytest
from harness.places import HOST
from hypothesis import given
from hypothesis import strategies as st
from support.children import in_child
from support.neighbours import circle, regular
from support.shapes import EVERY_KIND, document
from tandrel import storage
from tandrel.kinds import KINDS
from tandrel.progress import Stopped
from tandrel.storage import Document, SketchFileError

FLANGE = HOST / "parts" / "flange.json"

number = st.floats(allow_nan=False, allow_infinity=False)
point = st.tuples(number, number).map(list)


def like(sample):
    """Entities of the same type, with any values of the kinds that the sample has."""
    values = {key: VALUES[type(value)] for key, value in sample.items() if key != "type"}
    return st.fixed_dictionaries({"type": st.just(sample["type"]), **values})


VALUES = {float: number, int: st.integers(), list: st.lists(point, max_size=5)}
entities = st.one_of(like(sample) for sample in EVERY_KIND.values())
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


@given(documents)
def test_what_is_written_is_read_number_by_number(tmp_path_factory, part):
    path = tmp_path_factory.mktemp("files") / "sketch.json"
    before = copy.deepcopy(part)
    storage.write(path, part)
    assert storage.read(path) == part == before
    assert repr(storage.read(path).sketch) == repr(part.sketch)


def test_a_file_may_be_without_references(content):
    del content["references"]
    assert storage.loads(json.dumps(content).encode()).references == []


def test_whole_numbers_are_read_as_lengths(content):
    content["sketch"]["offset"] = 2
    assert repr(storage.loads(json.dumps(content).encode()).sketch["offset"]) == "2.0"


def test_numbers_of_numpy_are_written_as_plain_ones():
    entity = circle(np.float64(0.5), 0, np.float64(1))
    (read,) = storage.loads(storage.dumps(document(entity))).sketch["entities"]
    assert read == circle(0.5, 0.0, 1.0)


def test_a_file_saved_again_is_the_same_line_by_line():
    assert storage.dumps(storage.read(FLANGE)) == FLANGE.read_bytes()


EXPECTED = " / ".join(KINDS)


@pytest.mark.parametrize(
    "line, place, value, why",
    [
        (2, "format", "other", 'expected "tandrel sketch", found "other"'),
        (3, "version", 0, "expected 1, found 0"),
        (3, "version", True, "expected 1, found true"),
        (3, "version", 1.0, "expected 1, found 1.0"),
        (3, "version", 2, "the file was written by a newer version of this program"),
        (5, "length_unit", "mm", 'expected "m", found "mm"'),
        (4, "name", 7, "expected a text, found 7"),
        (24, "extra", 0, "this key is not known"),
        (6, "sketch", [], "expected an object, found []"),
        (8, "sketch.offset", "0", 'expected a finite number, found "0"'),
        (8, "sketch.offset", True, "expected a finite number, found true"),
        (8, "sketch.offset", None, "expected a finite number, found null"),
        (9, "sketch.entities", {}, "expected a list, found {}"),
        (11, "sketch.entities[1]", 3, "expected an object, found 3"),
        (11, "sketch.entities[1].type", "spline", f'expected {EXPECTED}, found "spline"'),
        (11, "sketch.entities[1].type", [1], f"expected {EXPECTED}, found [1]"),
        (11, "sketch.entities[1].raduis", 1, "this key is not known"),
        (22, "references[0].points[2]", [1.0], "expected a pair of numbers, found [1.0]"),
        (
            22,
            "references[0].points[2][1]",
            "x" * 99,
            f'expected a finite number, found "{38 * "x"}…',
        ),
    ],
)
def test_a_damaged_file_is_refused_by_line_and_key(content, refused, line, place, value, why):
    *way, last = [int(step) if step.isdigit() else step for step in re.findall(r"\w+", place)]
    reduce(getitem, way, content)[last] = value
    # In the lines of a saved file, whatever it holds.
    assert refused(storage._laid_out(content).encode()) == f"line {line}, {place}: {why}"


@pytest.mark.parametrize(
    "place, key, where",
    [
        ([], "version", "line 1"),
        (["sketch"], "plane", "line 6, sketch"),
        (["sketch", "entities", 1], "type", "line 11, sketch.entities[1]"),
        (["sketch", "entities", 1], "r", "line 11, sketch.entities[1]"),
    ],
)
def test_a_missing_key_is_named(content, refused, place, key, where):
    del reduce(getitem, place, content)[key]
    assert refused(storage._laid_out(content).encode()) == f'{where}: "{key}" is missing'


def test_a_key_that_is_no_name_is_quoted(content, refused):
    content["not a\nname"] = 0
    told = refused(storage._laid_out(content).encode())
    assert told == 'line 24, ["not a\\nname"]: this key is not known'


DIGITS = 38 * "1" + "1…"


@pytest.mark.parametrize(
    "old, new, message",
    [
        ("0.031", '"\\ud800"', '.r: expected a finite number, found "\\ud800"'),
        ("0.031", "NaN", ".r: NaN is not a number that a sketch can hold"),
        ("0.031", "-Infinity", ".r: -Infinity is not a number that a sketch can hold"),
        ("0.031", "1e999", ".r: 1e999 is not a number that a sketch can hold"),
        ("0.031", 400 * "1", f".r: {DIGITS} is not a number that a sketch can hold"),
        ("0.031", 309 * "1" + ".5", None),
        ("0.031", 309 * "9", f".r: expected a finite number, found {39 * '9'}…"),
        ("0.031", "0.031]", ".r: this is not JSON"),
        ("0.031", 9999 * "[", ".r[0][0]: this is nested too deeply"),
        ("0.031", 8 * "[" + 8 * "]", f".r: expected a finite number, found {8 * '['}{8 * ']'}"),
        ('"r": 0.031', '"r": 1, "r": 2', ".r: this key stands twice in one place"),
        ('"r": 0.031', '"r": {"a": 1, "a": 2}', ".r.a: this key stands twice in one place"),
        ('"r": 0.031', '"r": 1, "q": {"a": [{"r": NaN}], "a": 2}', ".q: this key is not known"),
        ('"r": 0.031', '"r": 1, "q', ": this is not JSON"),
        ('"r": 0.031', '"r": \udcff', ".r: this is not UTF-8 text"),
    ],
)
def test_a_damaged_text_is_refused_by_line_and_key(refused, old, new, message):
    text = FLANGE.read_text()
    assert text.count(old) == 1
    damaged = text.replace(old, new).encode(errors="surrogateescape")
    if message is None:
        assert storage.loads(damaged).sketch["entities"][1]["r"] == float(new)
    else:
        assert refused(damaged) == f"line 11, sketch.entities[1]{message}"


def test_half_a_character_is_no_text(refused):
    text = FLANGE.read_text().replace('"XY"', r'"\udc00"')
    assert refused(text.encode()) == r'line 7, sketch.plane: expected a text, found "\udc00"'


def test_a_key_that_stands_twice_is_named_where_it_stands_again(refused):
    text = FLANGE.read_text().replace('"offset"', '"plane": "XZ",\n    "offset"')
    assert refused(text.encode()) == "line 8, sketch.plane: this key stands twice in one place"
    text = FLANGE.read_text().replace('"references"', '"sketch": 1,\n"references"')
    assert refused(text.encode()) == "line 21, sketch: this key stands twice in one place"


@pytest.mark.parametrize(
    "data, message",
    [
        (b"", "line 1: this is not JSON"),
        (b"\n\n\xff\xfe\xfd", "line 3: this is not UTF-8 text"),
        (b"\0" * 9, "line 1: this is not JSON"),
        (b"<?xml version='1.0'?>", "line 1: this is not JSON"),
        (b"[" * 100_000, "line 1, [0][0][0][0][0][0]: this is nested too deeply"),
        (b'{"a": ' * 100_000, "line 1, a.a.a.a.a.a: this is nested too deeply"),
        (b"[" + b"," * 10_000_000, "line 1: this is not JSON"),
        (b"1" * 5000, f"line 1: {DIGITS} is not a number that a sketch can hold"),
        (b"null", "line 1: expected an object, found null"),
        (b"[]", "line 1: expected an object, found []"),
        (b"[NaN, {}]", 'line 1: expected an object, found ["…", {}]'),
        (b'{"type": "FeatureCollection"}', 'line 1: "format" is missing'),
        (b'{"a": 1}}', "line 1, a: this is not JSON"),
        (b"]", "line 1: this is not JSON"),
        (b"{1: 2}", "line 1: this is not JSON"),
    ],
    ids=lambda value: repr(value[:12]) if isinstance(value, bytes) else "",
)
def test_foreign_and_hostile_files_are_refused(refused, data, message):
    assert refused(data) == message


def test_too_little_memory_is_told():
    def load():
        room = int(Path("/proc/self/statm").read_text().split()[0]) * resource.getpagesize()
        resource.setrlimit(resource.RLIMIT_AS, (room + 20_000_000,) * 2)
        storage.loads(b"[" + 2_000_000 * b"[],")

    assert in_child(load) == "SketchFileError: there is not enough memory"


@pytest.mark.parametrize("cut", range(0, 900, 50))
def test_a_file_cut_short_is_refused_where_it_ends(refused, cut):
    data = FLANGE.read_bytes()[:cut]
    line = len(data.rstrip().split(b"\n"))
    assert re.match(rf"line ({line}|{line + 1})\b.*: this is not JSON", refused(data))


@given(st.integers(0, 1250), st.binary(max_size=4), st.integers(0, 4))
def test_whatever_is_damaged_is_read_or_refused(at, new, gone):
    data = FLANGE.read_bytes()
    try:
        part = storage.loads(data[:at] + new + data[at + gone :])
    except SketchFileError as error:
        assert re.fullmatch(r"line \d+(, [\w\[].*)?: .+", str(error))
    else:
        assert storage.loads(storage.dumps(part)) == part


def test_a_mark_before_the_text_is_no_part_of_it():
    assert storage.loads(b"\xef\xbb\xbf" + FLANGE.read_bytes()) == storage.read(FLANGE)


def test_messages_are_translated(content, refused, monkeypatch):
    monkeypatch.setattr(storage, "tr", lambda text: f"<{text}>")
    content["sketch"]["offset"] = "x"
    why = '<expected <a finite number>, found "x">'
    assert refused(content) == f"<<line 1, sketch.offset>: {why}>"


def many(number):
    """A file with this many shapes."""
    circle = '{"type": "circle", "xc": 0, "yc": 1.5, "r": 1e-3}'
    text = FLANGE.read_text().replace('"entities": [', f'"entities": [{number * f"{circle}, "}')
    return text.encode()


def test_a_long_reading_tells_how_far_it_is():
    told = []
    assert len(storage.loads(many(30_000), told.append).sketch["entities"]) == 30_009
    assert told == sorted(told) and told[0] == 0 and 0.9 < told[-1] <= 1
    assert max(b - a for a, b in zip(told, told[1:])) < 0.05


@pytest.mark.parametrize("damage", [b"", b"NaN", b"}", b"\xff"])
def test_a_long_reading_can_be_stopped_at_any_time(damage):
    data = many(3_000).replace(b'"references"', damage + b'"references"')
    told = []
    with pytest.raises(SketchFileError) if damage else nullcontext():
        storage.loads(data, told.append)
    assert len(told) > 5
    for last in range(1, len(told) + 1):

        def stop(_done):
            told.append(_done)
            if len(told) == last:
                raise Stopped

        told.clear()
        with pytest.raises(Stopped):
            storage.loads(data, stop)
        assert len(told) == last


def test_a_count_too_long_to_be_read_is_not_written():
    part = document(regular(n=10**309))
    with pytest.raises(SketchFileError, match=r"^sketch.entities\[0\].n: expected a whole number"):
        storage.dumps(part)
    part = document(regular(n=2**1023 - 1))
    assert storage.loads(storage.dumps(part)) == part


@pytest.mark.parametrize(
    "damage",
    [float("nan"), "1", None, [], 10**400, 10**5000, np.int64(1), {1}, [[]] * 9],
    ids=lambda value: type(value).__name__,
)
def test_what_could_not_be_read_is_not_written(tmp_path, damage):
    path = tmp_path / "sketch.json"
    path.write_text("as it was")
    part = storage.read(FLANGE)
    part.sketch["offset"] = damage
    with pytest.raises(SketchFileError, match="^sketch.offset: expected a finite number, found "):
        storage.write(path, part)
    assert path.read_text() == "as it was"
    assert [path.name for path in tmp_path.iterdir()] == ["sketch.json"]
