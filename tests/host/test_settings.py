"""What the application remembers from one start to the next."""

import json
import os
from dataclasses import asdict
from pathlib import Path

import pytest
from hypothesis import given
from hypothesis import strategies as st
from tandrel.application import settings
from tandrel.application.settings import Settings

DEFAULTS = dict(recent=[], geometry="", editor_size="", units="mm", language="", palette="light")
SOUND = dict(
    recent=["/files/b.json", "/files/a.json"],
    geometry="900x700+10-20",
    editor_size="1200x800",
    units="in",
    language="de",
    palette="dark",
)


def values(loaded):
    return {key: value for key, value in asdict(loaded).items() if key != "folder"}


@pytest.fixture
def loaded(tmp_path):
    """loaded(bytes or JSON value): the settings that a file with these gives."""

    def load(data):
        data = data if isinstance(data, bytes) else json.dumps(data).encode()
        (tmp_path / settings.FILE).write_bytes(data)
        return values(Settings.load(tmp_path))

    return load


def test_a_first_start_has_defaults(tmp_path):
    assert values(Settings.load(tmp_path / "missing")) == DEFAULTS


def test_what_was_saved_is_loaded(tmp_path):
    kept = Settings(tmp_path / "new" / "folder", **SOUND)
    kept.save()
    assert Settings.load(kept.folder) == kept
    assert os.listdir(kept.folder) == [settings.FILE]


def test_unknown_keys_are_kept_away(loaded, tmp_path):
    assert loaded({**SOUND, "folder": "/", "save": 1, "recents": []}) == SOUND
    Settings.load(tmp_path).save()
    assert json.loads((tmp_path / settings.FILE).read_text()) == SOUND


@pytest.mark.parametrize(
    "key, value",
    [
        ("recent", "a.json"),
        ("recent", ["a.json", 7]),
        ("recent", ["a\0.json"]),
        ("recent", [""]),
        ("recent", [f"{n}.json" for n in range(9)]),
        ("geometry", 7),
        ("geometry", "large"),
        ("geometry", "0x500"),
        ("geometry", "900x700; exit"),
        ("geometry", "900x700\n"),
        ("geometry", "999999x700"),
        ("geometry", "\u0669x\u0669"),
        ("editor_size", 7),
        ("editor_size", "1200x"),
        ("editor_size", "1200x0"),
        ("editor_size", "1200x800+0+0"),
        ("units", "ell"),
        ("units", ["mm"]),
        ("language", None),
        ("language", "../de"),
        ("palette", "purple"),
        ("palette", {}),
    ],
)
def test_a_damaged_setting_is_its_default_and_no_other(loaded, key, value):
    assert loaded({**SOUND, key: value}) == {**SOUND, key: DEFAULTS[key]}


@pytest.mark.parametrize("geometry", ["", "900x700", "900x700+0+0", "900x700-5+-12"])
def test_tk_s_geometries_are_sound(loaded, geometry):
    assert loaded({"geometry": geometry}) == {**DEFAULTS, "geometry": geometry}


@pytest.mark.parametrize(
    "data",
    [b"", b"{", b"\xff\xfe", b"null", b"[]", b"7", b"[" * 99_999, b'{"recent": ' + b"1" * 9999],
)
def test_a_damaged_file_gives_defaults(loaded, data):
    assert loaded(data) == DEFAULTS


json_values = st.recursive(
    st.none() | st.booleans() | st.floats() | st.text(max_size=9) | st.integers(),
    lambda inner: st.lists(inner, max_size=3) | st.dictionaries(st.text(max_size=3), inner),
    max_leaves=5,
)


@given(st.dictionaries(st.sampled_from([*DEFAULTS, "x"]), json_values), st.integers(0, 99))
def test_whatever_the_file_holds_the_settings_are_sound(tmp_path_factory, content, cut):
    folder = tmp_path_factory.mktemp("settings")
    text = json.dumps(content)
    (folder / settings.FILE).write_text(text[: len(text) - cut] if cut < 50 else text)
    found = Settings.load(folder)
    found.save()
    assert Settings.load(folder) == found
    assert found.palette in ("light", "dark") and len(found.recent) <= settings.MOST_RECENT


def test_what_is_no_file_gives_defaults_and_is_left_alone(tmp_path):
    (tmp_path / "a" / settings.FILE).mkdir(parents=True)
    (tmp_path / "b").mkdir()
    os.mkfifo(tmp_path / "b" / settings.FILE)
    (tmp_path / "c").write_text("in the way")
    for folder in (*(tmp_path / name for name in "abc"), Path("/proc"), Path("null\0")):
        found = Settings.load(folder)
        assert values(found) == DEFAULTS
        found.save()
    assert (tmp_path / "a" / settings.FILE).is_dir()
    assert (tmp_path / "b" / settings.FILE).is_fifo()
    assert (tmp_path / "c").read_text() == "in the way"


def test_recent_files_are_few_and_the_newest_comes_first(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    found = Settings(tmp_path)
    for number in range(10):
        found.remember(f"{number}.json")
    found.remember(tmp_path / "5.json")
    assert found.recent == [str(tmp_path / f"{number}.json") for number in (5, 9, 8, 7, 6, 4, 3, 2)]
    found.remember(os.fsdecode(b"/caf\xe9.json"))
    found.save()
    assert Settings.load(tmp_path).recent == found.recent


@pytest.mark.parametrize("named", ["/elsewhere", "not/absolute", ""])
def test_the_usual_folder_is_where_the_environment_says(monkeypatch, tmp_path, named):
    monkeypatch.setenv("HOME", str(tmp_path))
    monkeypatch.setenv("XDG_CONFIG_HOME", named)
    base = named if named == "/elsewhere" else tmp_path / ".config"
    assert Settings.load().folder == Path(base, "tandrel")
