"""The parts that come with the application: sound, true to their drawings, fit to be cut."""

import pytest
from harness.places import HOST
from shapely.geometry import Polygon
from support.children import printed
from tandrel import profile, storage
from tandrel import sketch as S
from tandrel.units import num_text, units

PARTS = HOST / "parts"
NAMES = ["bracket", "flange", "gasket", "gear", "panel", "spanner"]


def part(name):
    return storage.read(PARTS / f"{name}.json")


def lengths(sketch):
    """All lengths of a sketch."""
    for entity in sketch["entities"]:
        numbers = {key: n for key, n in entity.items() if isinstance(n, float) and key != "angle"}
        yield from numbers.values()
        yield from (n for point in entity.get("points", []) for n in point)


@pytest.fixture(scope="module")
def drawn(tmp_path_factory):
    """A folder with every part, made from its drawing."""
    folder = tmp_path_factory.mktemp("drawn")
    printed(PARTS / "drawings.py", folder)
    return folder


def test_the_files_of_the_parts_are_what_their_drawings_say(drawn):
    for folder in (PARTS, drawn):
        assert sorted(path.stem for path in folder.glob("*.json")) == NAMES
    for name in NAMES:
        assert (PARTS / f"{name}.json").read_bytes() == (drawn / f"{name}.json").read_bytes()


@pytest.mark.parametrize("name", NAMES)
def test_parts_are_sound(name):
    sketch = part(name).sketch
    assert S.check(sketch) == []
    assert (sketch["plane"], sketch["offset"]) == ("XY", 0.0)


@pytest.mark.parametrize("name", NAMES)
def test_parts_have_lengths_that_people_type(name):
    """Tenths of a micrometre at most, and never a length with the noise of arithmetic."""
    for length in lengths(part(name).sketch):
        assert length == units().to_si(float(f"{length * 1000:.4f}"), "length")
        assert "e" not in num_text(length)


PIECES = {"bracket": 1, "flange": 2, "gasket": 1, "gear": 1, "panel": 1, "spanner": 1}
HOLES = {"bracket": 4, "flange": 7, "gasket": 5, "gear": 7, "panel": 17, "spanner": 2}


@pytest.mark.parametrize("name", NAMES)
def test_parts_are_in_one_piece_with_their_holes(name):
    """The flange has its loose ring. A bore and its keyway are one hole."""
    pieces = profile.polygons(profile.region(part(name).sketch))
    assert len(pieces) == PIECES[name]
    assert sum(len(piece.interiors) for piece in pieces) == HOLES[name]


@pytest.mark.parametrize("name", NAMES)
def test_parts_fit_into_their_blanks(name):
    document = part(name)
    (blank,) = document.references
    area = profile.region(document.sketch)
    assert Polygon(blank["points"]).contains(area)
    assert area.area > 0.2 * Polygon(blank["points"]).area


@pytest.mark.parametrize("name", NAMES)
def test_webs_are_wide_enough_to_be_cut(name):
    """No two holes, and no hole and the edge, come closer than two millimetres."""
    for piece in profile.polygons(profile.region(part(name).sketch)):
        rings = [piece.exterior, *piece.interiors]
        for k, ring in enumerate(rings):
            assert all(ring.distance(other) > 0.002 for other in rings[:k])
