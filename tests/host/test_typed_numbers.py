"""Numbers as people type them, and what is said of those that can't be read."""

from fractions import Fraction

import pytest
from tandrel.application.typed_numbers import Unreadable, read
from tandrel.gui import i18n

MM = {"mm": Fraction(1), "cm": Fraction(10), "in": Fraction("25.4"), '"': Fraction("25.4")}


@pytest.mark.parametrize(
    "text, value",
    [
        ("12.5", 12.5),
        (" -3 ", -3.0),
        ("+.5", 0.5),
        ("5.", 5.0),
        ("1e-3", 0.001),
        ("0.1234567890123456", 0.1234567890123456),
        ("40 mm", 40.0),
        ("40mm", 40.0),
        ("4 CM", 40.0),
        ("1.5in", 38.1),
        ('1/2"', 12.7),
        ("1 1/2 in", 38.1),
        ("120/2", 60.0),
        ("10+5", 15.0),
        ("10 - 2 - 3", 5.0),
        ("2*(10+5)", 30.0),
        ("12/4/3", 1.0),
        ("0.1+0.2", 0.3),
        ("10/3", 10 / 3),
        ("10+5 mm", 15.0),
        ("10 mm + 1 in", 35.4),
        ("(1 cm + 1 mm) / 2", 5.5),
        ("(10+5) cm", 150.0),
        ("2×１２÷3", 8.0),
        ("− 5", -5.0),
    ],
)
def test_what_is_read(text, value):
    assert read(text, MM) == value


REFUSED = {
    "": "a number is missing",
    "  ": "a number is missing",
    "four": "“four” can't be read as a number",
    "4 yards": '“yards” is no unit here; there are mm, cm, in, "',
    "3,5": "“3,5”: write decimals with a point",
    "1/0": "“1/0”: nothing can be divided by 0",
    "1 1/0": "“1 1/0”: nothing can be divided by 0",
    "1e999": "“1e999”: the number is too large",
    "10 + 1 in": "“10 + 1 in”: each number of a sum needs its unit",
    "9" * 101: "“" + 39 * "9" + "…” can't be read as a number",
}
UNREADABLE = "1 2|1..2|(1|1)|()|*2|1+|1/|mm|inf|nan|½|1_0|2 mm mm|2mm*3mm|(2mm) mm|5 %|1;2|\0|["


@pytest.mark.parametrize("text", [*REFUSED, *UNREADABLE.split("|"), 99 * "("])
def test_what_is_refused_and_why(text):
    with pytest.raises(Unreadable) as refused:
        read(text, MM)
    why = REFUSED.get(text)
    assert str(refused.value) == why or (why is None and "can't be read" in str(refused.value))


def test_nothing_is_evaluated():
    """Not even what takes long, or much room."""
    for text in ("9**9**9", "__import__('os')", "1e9999999", "9e999*9e999", "1if 1else 2"):
        with pytest.raises(Unreadable):
            read(text, MM)


@pytest.mark.parametrize("units", [{}, {"°": Fraction(1)}])
def test_a_field_has_its_own_units(units):
    with pytest.raises(Unreadable):
        read("40 mm", units)
    assert [read(f"45{unit}", units) for unit in ("", *units)] == [45.0] * (1 + len(units))


@pytest.mark.parametrize("language, value", [("de", 3.5), ("fr", 3.5), ("en", None), ("zh", None)])
def test_a_comma_is_read_where_the_language_writes_one(catalogues, language, value):
    i18n.set_language(language)
    assert read("3.5", MM) == 3.5
    if value is None:
        with pytest.raises(Unreadable):
            read("3,5", MM)
    else:
        assert read("3,5 + 0,0", MM) == value
        with pytest.raises(Unreadable):
            read("1.234,5", MM)
