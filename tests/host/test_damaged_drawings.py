"""DXF drawings that are damaged, senseless or too large: a message, or what is sound in them."""

import io
import math

import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from support.drawings import LWPOLYLINE, binary, new_drawing, opened, raw, read, text_of
from support.shapes import PLATE
from tandrel import exchange
from tandrel import sketch as S
from tandrel.exchange import ExchangeError
from tandrel.exchange.dxf import parts


SOUND = text_of(*PLATE)
BINARY = binary(opened(*PLATE))
CIRCLE = (0, "CIRCLE", 10, 0, 20, 0, 40, 1)
LINES = [
    ("empty", ""),
    ("a word", "hello"),
    ("json", '{"format": "tandrel sketch"}'),
    ("end only", "0\nEOF\n"),
    ("no entities", raw()),
    ("no number", raw(0, "CIRCLE", 10, "x", 20, 0, 40, 1)),
    ("not a number", raw(0, "CIRCLE", 10, "nan", 20, 0, 40, 1)),
    ("endless", raw(0, "CIRCLE", 10, "inf", 20, 0, 40, 1)),
    ("too far", raw(0, "CIRCLE", 10, 1e300, 20, 0, 40, 1)),
    ("not shown", raw(*CIRCLE, 60, 1)),
    ("no radius", raw(0, "CIRCLE", 10, 0, 20, 0)),
    ("radius 0", raw(0, "CIRCLE", 10, 0, 20, 0, 40, 0)),
    ("radius -1", raw(0, "CIRCLE", 10, 0, 20, 0, 40, -1)),
    ("no centre", raw(0, "CIRCLE", 40, 1)),
    ("endless angle", raw(0, "ARC", 10, 0, 20, 0, 40, 1, 50, "inf", 51, "nan")),
    ("huge angle", raw(0, "ARC", 10, 0, 20, 0, 40, 1, 50, 1e300, 51, -1e300)),
    ("huge bulge", raw(*LWPOLYLINE, 90, 2, 70, 1, 10, 0, 20, 0, 42, 1e308, 10, 1, 20, 0)),
    ("nan bulge", raw(*LWPOLYLINE, 90, 2, 70, 1, 10, 0, 20, 0, 42, "nan", 10, 1, 20, 0)),
    ("no vertices", raw(*LWPOLYLINE, 90, 0, 70, 1)),
    ("one vertex", raw(*LWPOLYLINE, 90, 1, 70, 1, 10, 5, 20, 5)),
    ("wrong count", raw(*LWPOLYLINE, 90, 10**9, 70, 1, 10, 5, 20, 5)),
    ("unended polyline", raw(0, "POLYLINE", 66, 1, 70, 1, 0, "VERTEX", 10, 1, 20, 1)),
    ("line without length", raw(0, "LINE", 10, 5, 20, 5, 11, 5, 21, 5)),
    ("no normal", raw(*CIRCLE, 210, 0, 220, 0, 230, 0)),
    ("nan normal", raw(*CIRCLE, 210, "nan", 220, 0, 230, 1)),
    ("unknown kind", raw(0, "GARBAGE", 10, 0)),
    ("block in no block", raw(0, "INSERT", 2, "X", 10, 0, 20, 0)),
]


@pytest.mark.parametrize("text", [text for _, text in LINES], ids=[name for name, _ in LINES])
def test_drawings_with_nothing_sound_in_them_give_a_message(text):
    with pytest.raises(ExchangeError) as caught:
        read(text, unit="mm")
    assert str(caught.value)


@settings(max_examples=40)
@given(st.integers(0, len(SOUND) - 8))
def test_half_a_drawing_is_refused_wherever_it_ends(length):
    with pytest.raises(ExchangeError):
        read(SOUND[:length], unit="mm")


@settings(max_examples=60)
@given(st.data())
def test_drawings_with_damaged_lines_give_a_message_or_notes(data):
    lines = SOUND.split("\n")
    entities_at = lines.index("ENTITIES")
    for _ in range(data.draw(st.integers(1, 5))):
        at = data.draw(
            st.one_of(st.integers(0, len(lines) - 1), st.integers(entities_at, entities_at + 150))
        )
        lines[at] = data.draw(
            st.sampled_from(["", "x", "-1", "1e400", "nan", "0", "70", "LINE", "ÿ\x00"])
        )
    try:
        found, notes = read("\n".join(lines).encode("latin-1"), unit="mm")
    except ExchangeError as error:
        assert str(error)
    else:
        assert all(S.area(entity) > 0 for entity in found)
        assert all(isinstance(note, str) for note in notes)


@settings(max_examples=60)
@given(
    st.binary(max_size=300),
    st.sampled_from([b"", BINARY[:22], b"0\nSECTION\n"]),
)
def test_garbage_gives_a_message(data, start):
    with pytest.raises(ExchangeError):
        read(start + data, unit="mm")


class TestExcess:
    def test_a_block_that_holds_itself(self):
        drawing, space = new_drawing()
        block = drawing.blocks.new("LOOP")
        block.add_circle((0, 0), 1)
        block.add_blockref("LOOP", (1, 0))
        space.add_blockref("LOOP", (0, 0))
        found, notes = read(drawing)
        assert len(found) == 8
        assert notes == ["Left out (1): blocks too deep within each other"]

    def test_blocks_that_multiply(self, monkeypatch):
        monkeypatch.setattr(parts, "_MOST_PARTS", 3000)
        drawing, space = new_drawing()
        for k in range(8):
            block = drawing.blocks.new(f"B{k}")
            for _ in range(10):
                block.add_blockref(f"B{k + 1}", (0, 0))
        drawing.blocks.new("B8")
        space.add_blockref("B0", (0, 0))
        with pytest.raises(ExchangeError, match="too many parts"):
            read(drawing)

    def test_an_array_without_end(self):
        drawing, space = new_drawing()
        drawing.blocks.new("BOLT").add_circle((0, 0), 1)
        grid = dict(row_count=30000, column_count=30000, row_spacing=1, column_spacing=1)
        space.add_blockref("BOLT", (0, 0), dxfattribs=grid)
        with pytest.raises(ExchangeError, match="endless"):
            read(drawing)

    def test_far_more_corners_than_an_outline_can_have(self):
        points = (f"10\n{math.cos(k / 1e5)}\n20\n{math.sin(k / 1e5)}" for k in range(10**5))
        with pytest.raises(ExchangeError, match="10000 corners at most"):
            read(raw(*LWPOLYLINE, 90, 10**5, 70, 1, *points), unit="mm")

    def test_far_more_lines(self):
        corners = [(math.cos(k / 1e4), math.sin(k / 1e4)) for k in range(62832)]
        lines = [
            f"0\nLINE\n10\n{one[0]}\n20\n{one[1]}\n11\n{two[0]}\n21\n{two[1]}"
            for one, two in zip(corners, [*corners[1:], corners[0]])
        ]
        with pytest.raises(ExchangeError, match="10000 corners at most"):
            read(raw(*lines), unit="mm")

    def test_a_file_too_large_to_be_a_drawing(self, tmp_path):
        path = tmp_path / "huge.dxf"
        with open(path, "wb") as file:
            file.truncate(10**12)
        with pytest.raises(ExchangeError):
            exchange.import_(path)


SQUARE = (90, 4, 70, 1, 10, 0, 20, 0, 10, 9, 20, 0, 10, 9, 20, 9, 10, 0, 20, 9)
PLAIN = (0, "LWPOLYLINE", 8, "CUT", *SQUARE)
MARKED = (*LWPOLYLINE[:4], 8, "CUT", *LWPOLYLINE[4:], *SQUARE)
KNOTS = (0, 0, 1, 2, 3, 4, 4)
CURVE = (0, "SPLINE", 8, "CUT", 70, 8, 71, 1, 72, 7, 73, 5)
CURVE += tuple(tag for knot in KNOTS for tag in (40, knot))
CURVE += tuple(tag for u, v in ((0, 0), (9, 0), (9, 9), (0, 9), (0, 0)) for tag in (10, u, 20, v))


class TestRepair:
    """Drawings that the library refuses, or reads in part, although all of it is there."""

    @pytest.mark.parametrize("version", [None, "", " ", "AC1009", "AC1015"])
    @pytest.mark.parametrize("kind", [PLAIN, MARKED, CURVE], ids=["plain", "marked", "curve"])
    def test_young_parts_of_drawings_that_call_themselves_old(self, version, kind):
        text = raw(*kind, units=None if version is None else 4)
        before, _, after = text.partition("9\n$ACADVER\n1\nAC1015\n")
        named = f"9\n$ACADVER\n1\n{version.strip()}\n" if version else ""
        text = before + named + after if after else text
        ((found,), _) = read(text, unit="mm")
        assert found["type"] == "rectangle"
        assert S.area(found) == pytest.approx(81e-6)

    def test_a_comma_in_numbers(self):
        text = raw(0, "CIRCLE", 8, 0, 10, "0,5", 20, "-,5", 40, "1,25")
        ((found,), _) = read(text, unit="mm")
        assert found == pytest.approx({"type": "circle", "xc": 5e-4, "yc": -5e-4, "r": 1.25e-3})

    def test_a_comma_after_a_code_that_is_written_otherwise(self):
        circle = 0, "CIRCLE", 8, 0, 10, 0, 20, 0
        ((found,), _) = read(raw(*circle, "040", "1,75"), unit="mm")
        assert found["r"] == 1.75e-3
        with pytest.raises(ExchangeError, match="not a sound"):
            read(raw(*circle, "40.0", "1,75"), unit="mm")

    @pytest.mark.parametrize("number, other", [("1.234,5", "1.234"), ("1,234.5", "1,234")])
    def test_digits_in_groups_are_no_decimals(self, number, other):
        circles = ((0, "CIRCLE", 8, 0, 10, u, 20, 0, 40, "5,0") for u in (number, other))
        with pytest.raises(ExchangeError, match="not a sound"):
            read(raw(*(x for circle in circles for x in circle)), unit="mm")

    def test_a_comma_in_the_place_of_a_block(self):
        def text(place):
            circle = (0, "CIRCLE", 8, 0, 10, "12,5", 20, 0, 40, "1,5")
            block = (0, "BLOCK", 8, 0, 2, "HOLE", 70, 0, 10, place, 20, 0, *circle, 0, "ENDBLK")
            lines = (0, "SECTION", 2, "BLOCKS", *block, 0, "ENDSEC")
            before, entities, after = raw(0, "INSERT", 8, 0, 2, "HOLE", 10, 100, 20, 0).partition(
                "0\nSECTION\n2\nENTITIES\n"
            )
            return before + "".join(f"{line}\n" for line in lines) + entities + after

        ((found,), _) = read(text("12,5"), unit="mm")
        assert found == pytest.approx({"type": "circle", "xc": 0.1, "yc": 0.0, "r": 1.5e-3})
        with pytest.raises(ExchangeError, match="not a sound"):
            read(text("12.5mm"), unit="mm")

    @pytest.mark.parametrize("number", ["12.5mm", "1.#QNAN", "1.2.3", "x", ""])
    def test_a_part_without_one_of_its_numbers_is_left_out(self, number):
        """The library would make one up, of what looks like a number in it."""
        vertices = ((0, "VERTEX", 8, 0, 10, u, 20, v) for u, v in ((0, 0), (number, 0), (9, 9)))
        polyline = (0, "POLYLINE", 8, 0, 66, 1, 70, 1, *(x for v in vertices for x in v))
        text = raw(*polyline, 0, "SEQEND", 8, 0, 0, "CIRCLE", 8, 0, 10, 0, 20, 0, 40, 5)
        ((found,), notes) = read(text, unit="mm")
        assert found["type"] == "circle"
        assert notes[1:] == ["Left out (1): parts that are damaged"]

    @pytest.mark.parametrize("lost", ["HEADER", "TABLES"])
    def test_without_a_section(self, lost):
        drawing, space = new_drawing()
        space.add_circle((0, 0), 5)
        text = io.StringIO()
        drawing.write(text)
        before, _, rest = text.getvalue().partition(f"  0\nSECTION\n  2\n{lost}\n")
        ((found,), _) = read(before + rest.partition("ENDSEC\n")[2], unit="mm")
        assert found["type"] == "circle"

    def test_of_references_to_nothing(self):
        text = raw(0, "CIRCLE", 5, 0, 8, 0, 10, 0, 20, 0, 40, 5)
        assert len(read(text, unit="mm")[0]) == 1
