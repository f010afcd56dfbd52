"""Export by the name of the file, whole or not at all, without a display."""

import os

import pytest
from support.children import printed
from support.shapes import PLATE, document
from support.ticks import stop
from tandrel import exchange
from tandrel.exchange import ExchangeError, export, import_
from tandrel.gui import i18n
from tandrel.progress import Stopped

SIGNATURES = {".dxf": b"  0\nSECTION", ".svg": b"<?xml", ".png": b"\x89PNG"}
every_suffix = pytest.mark.parametrize("suffix", exchange.SUFFIXES)


@every_suffix
def test_the_suffix_says_the_kind_in_either_case(suffix, tmp_path):
    for name in ("part" + suffix, "part" + suffix.upper()):
        export(document(*PLATE), tmp_path / name)
        assert (tmp_path / name).read_bytes().startswith(SIGNATURES[suffix])
    assert len(os.listdir(tmp_path)) == 2


ACROSS = {**PLATE[0], "x": PLATE[0]["x"] + PLATE[0]["w"] / 2}


@every_suffix
def test_every_file_holds_the_profile(suffix, tmp_path):
    assert export(document(PLATE[0], ACROSS), tmp_path / f"joined{suffix}") == []


def test_contours_as_they_are_come_with_a_note_where_they_overlap(tmp_path):
    path = tmp_path / "part.dxf"
    assert export(document(*PLATE), path, own_contours=True) == []
    (note,) = export(document(PLATE[0], ACROSS), path, own_contours=True)
    assert "overlap" in note
    assert len(import_(path).document.sketch["entities"]) == 2


@pytest.mark.parametrize("suffix", [".svg", ".png"])
def test_only_drawings_hold_contours_as_they_are(suffix, tmp_path):
    with pytest.raises(ExchangeError, match=r"only \.dxf files"):
        export(document(*PLATE), tmp_path / f"part{suffix}", own_contours=True)
    assert os.listdir(tmp_path) == []


@pytest.mark.parametrize(
    "name, kind",
    [("part", "part"), ("part.pdf", ".pdf"), (".dxf", ".dxf"), ("part.dxf.txt", ".txt")],
)
def test_other_kinds_are_refused(name, kind, tmp_path):
    with pytest.raises(ExchangeError, match=rf"^{kind} is no kind .* \.dxf, \.svg, \.png$"):
        export(document(*PLATE), tmp_path / name)
    assert os.listdir(tmp_path) == []


def test_unknown_units_are_refused(tmp_path):
    with pytest.raises(ExchangeError, match="furlong.*mm, cm, m, in"):
        export(document(*PLATE), tmp_path / "part.dxf", "furlong")
    with pytest.raises(ExchangeError, match="furlong"):
        import_(tmp_path / "part.dxf", "furlong")


@every_suffix
@pytest.mark.parametrize(
    "shapes", [[], [{"type": "circle", "xc": 0.0, "yc": 0.0, "r": -1.0}], [PLATE[0], PLATE[0]]]
)
def test_a_sketch_that_is_not_ready_is_refused_with_what_must_be_put_right(
    suffix, shapes, tmp_path
):
    with pytest.raises(ExchangeError) as caught:
        export(document(*shapes), tmp_path / f"part{suffix}")
    assert str(caught.value)
    assert os.listdir(tmp_path) == []


@every_suffix
def test_what_stops_it_leaves_the_old_file(suffix, tmp_path):
    path = tmp_path / f"part{suffix}"
    path.write_text("old")

    with pytest.raises(Stopped):
        export(document(*PLATE), path, tick=stop)
    assert (path.read_text(), os.listdir(tmp_path)) == ("old", [path.name])


@every_suffix
def test_a_disk_that_is_full_leaves_the_old_file(suffix, tmp_path, monkeypatch):
    path = tmp_path / f"part{suffix}"
    path.write_text("old")

    def full(_handle):
        raise OSError(28, "No space left on device")

    monkeypatch.setattr(os, "fsync", full)
    with pytest.raises(ExchangeError, match="No space left"):
        export(document(*PLATE), path)
    assert (path.read_text(), os.listdir(tmp_path)) == ("old", [path.name])


@pytest.mark.parametrize("name", ["nowhere/part.dxf", "folder.dxf", "part\x00.dxf"])
def test_places_that_cannot_be_written_or_read_give_a_message(name, tmp_path):
    (tmp_path / "folder.dxf").mkdir()
    for call in (lambda path: export(document(*PLATE), path), import_):
        with pytest.raises(ExchangeError) as caught:
            call(os.path.join(tmp_path, name))
        assert str(caught.value)


def test_messages_are_in_the_user_s_language(monkeypatch, tmp_path):
    monkeypatch.setattr(i18n, "_catalogue", Shouting())
    with pytest.raises(ExchangeError, match="IS NO KIND OF FILE"):
        export(document(*PLATE), tmp_path / "part.pdf")


class Shouting:
    """A catalogue that translates every text, but for its placeholders, into capitals."""

    def gettext(self, text):
        parts = text.split("{")
        return parts[0].upper() + "".join(
            "{" + name + "}" + rest.upper()
            for name, _, rest in (p.partition("}") for p in parts[1:])
        )


def test_nothing_here_needs_a_display(tmp_path):
    code = """
import sys
from support.shapes import PLATE, document
from tandrel import exchange, profile
for suffix in exchange.SUFFIXES:
    exchange.export(document(*PLATE), sys.argv[1] + suffix)
imported = exchange.import_(sys.argv[1] + ".dxf")
assert len(profile.contours(imported.document.sketch)) == len(PLATE)
assert not {"tkinter", "_tkinter"} & set(sys.modules)
"""
    printed("-c", code, tmp_path / "part", DISPLAY="")
    assert len(os.listdir(tmp_path)) == 3
