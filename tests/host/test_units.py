"""Numbers and lengths as texts, and back."""

import math
from decimal import Decimal
from fractions import Fraction

import numpy as np
import pytest
from hypothesis import example, given
from hypothesis import strategies as st
from tandrel.units import SYSTEMS, UnitSystem, num_text, set_units, units

METRES = {"mm": Fraction(1, 1000), "cm": Fraction(1, 100), "m": 1, "in": Fraction(254, 10000)}

any_system = st.sampled_from(list(SYSTEMS.values()))
any_float = st.floats(allow_nan=False, allow_infinity=False)


@st.composite
def typed(draw, digits=15, smallest=-9, largest=3):
    """A number that somebody could type: at most so many digits, of any ordinary size."""
    whole = draw(st.integers(-(10**digits) + 1, 10**digits - 1))
    length = len(str(abs(whole)))
    exponent = draw(st.integers(smallest, largest)) - length
    return float(f"{whole}e{exponent}")


@pytest.mark.parametrize(
    "number, text",
    [
        (12.3, "12.3"),
        (40.0, "40"),
        (1200, "1200"),
        (0.0, "0"),
        (-0.0, "0"),
        (-2.50, "-2.5"),
        (0.1 + 0.2, "0.30000000000000004"),
        (1e-5, "0.00001"),
        (1e-9, "0.000000001"),
        (-1.5e-7, "-0.00000015"),
        (123456789.125, "123456789.125"),
        (1e15, "1000000000000000"),
        (9007199254740993.0, "9007199254740992"),
        (1e16, "1e+16"),
        (1e-10, "1e-10"),
        (5e-324, "5e-324"),
        (math.inf, "inf"),
        (-math.inf, "-inf"),
        (math.nan, "nan"),
        (np.float64(0.25), "0.25"),
        (7, "7"),
    ],
)
def test_text_of_a_number(number, text):
    assert num_text(number) == text


@given(any_float)
@example(1.7976931348623157e308)
def test_a_number_s_text_reads_back_as_the_number(number):
    assert float(num_text(number)) == number


@given(st.floats(1e-9, 9.99e15))
def test_ordinary_numbers_are_plain_digits_and_as_few_as_possible(number):
    text = num_text(number)
    assert "e" not in text
    significant = text.replace(".", "").lstrip("0").rstrip("0")
    assert len(significant) <= len(Decimal(repr(number)).normalize().as_tuple().digits)


@pytest.mark.parametrize("name", SYSTEMS)
@given(shown=typed(12, -6, 6))
def test_a_typed_length_is_the_double_next_to_the_exact_length_and_shows_as_typed(name, shown):
    system = SYSTEMS[name]
    exact = Fraction(Decimal(num_text(shown))) * METRES[name]
    length = system.to_si(shown, "length")
    assert length == exact.numerator / exact.denominator
    assert num_text(system.from_si(length, "length")) == num_text(shown)


def shown_and_read(system, length):
    return system.to_si(float(num_text(system.from_si(length, "length"))), "length")


@pytest.mark.parametrize("name", SYSTEMS)
@given(length=typed())
@example(length=1.001)
@example(length=0.0123)
def test_a_length_shown_and_read_back_is_the_same_double(name, length):
    assert shown_and_read(SYSTEMS[name], length) == length


@given(any_system, st.floats(-1e6, 1e6))
@example(SYSTEMS["mm"], 36 * 0.001)
def test_any_length_comes_back_but_for_noise_and_then_stays(system, length):
    once = shown_and_read(system, length)
    assert abs(once - length) <= 6 * math.ulp(max(abs(length), 1.0))
    assert shown_and_read(system, once) == once


@given(st.integers(-1000, 1000), st.integers(-1000, 1000))
@example(39, 35)
@example(1000, 999)
@example(36, 0)
@example(99_999, 0)
def test_distances_between_grid_points_show_and_are_read_without_noise(one, other):
    between = one * 0.001 - other * 0.001
    assert num_text(SYSTEMS["mm"].from_si(between, "length")) == str(one - other)
    assert shown_and_read(SYSTEMS["mm"], between) == (one - other) / 1000


@pytest.mark.parametrize(
    "length, text",
    [
        (0.1 + 0.2, "0.3"),
        (math.hypot(0.01, 0.02), "0.022360679774997897"),
        (1 / 3, "0.3333333333333333"),
        (0.123456789012345, "0.123456789012345"),
        (0.500000000001001, "0.500000000001001"),
        (0.5 + 1e-15, "0.500000000000001"),
        (math.nextafter(0.5, 1), "0.5"),
        (2e-16, "2e-16"),
        (0.1 + 0.2 - 0.3, "0"),
    ],
)
def test_only_noise_is_taken_away(length, text):
    assert num_text(SYSTEMS["m"].from_si(length, "length")) == text


@pytest.mark.parametrize(
    "name, length, text",
    [
        ("mm", 0.0125, "12.5 mm"),
        ("cm", 0.0125, "1.25 cm"),
        ("m", 0.0125, "0.0125 m"),
        ("in", 0.0127, "0.5 in"),
        ("mm", 1.0 / 3, "333.333 mm"),
        ("mm", 0.1 + 0.2, "300 mm"),
        ("mm", 1e-17, "0 mm"),
        ("mm", -0.0, "0 mm"),
        ("mm", -0.0025, "-2.5 mm"),
        ("mm", 12345.6789, "12345679 mm"),
        ("mm", 999.9999, "1000000 mm"),
        ("mm", 1.2345678, "1234.57 mm"),
        ("m", math.inf, "inf m"),
        ("in", math.nan, "nan in"),
    ],
)
def test_short_text_of_a_length(name, length, text):
    assert SYSTEMS[name].fmt(length, "length") == text


@given(any_system, st.floats() | st.floats().map(np.float64))
def test_no_number_is_too_odd_for_a_conversion_to_a_plain_one(system, value):
    assert type(system.from_si(value, "length")) is float
    assert type(system.to_si(value, "length")) is float
    assert system.fmt(value, "length").endswith(f" {system.name}")


@pytest.mark.parametrize(
    "name, area, text",
    [
        ("mm", 12.5e-6, "12.5 mm²"),
        ("cm", 12.5e-6, "0.125 cm²"),
        ("m", 12.5e-6, "0.0000125 m²"),
        ("in", 1.94 * 0.0254**2, "1.94 in²"),
        ("mm", math.pi * 0.03**2, "2827.43 mm²"),
        ("mm", 0.0158083862, "15808.4 mm²"),
        ("mm", 1.5, "1500000 mm²"),
        ("mm", 1e-13, "0.0000001 mm²"),
        ("m", 0.0, "0 m²"),
        ("mm", 0.1 + 0.2, "300000 mm²"),
        ("in", math.nan, "nan in²"),
    ],
)
def test_short_text_of_an_area(name, area, text):
    assert SYSTEMS[name].fmt(area, "area") == text


@pytest.mark.parametrize("name", SYSTEMS)
@given(shown=typed(12, -6, 6))
def test_areas_are_shown_in_squares_of_the_unit(name, shown):
    exact = Fraction(Decimal(num_text(shown))) * METRES[name] ** 2
    nearest = exact.numerator / exact.denominator
    area = SYSTEMS[name].to_si(shown, "area")
    # Of the areas that show alike it is the one with the shortest text.
    assert abs(area - nearest) <= 2 * math.ulp(nearest)
    assert SYSTEMS[name].from_si(area, "area") == pytest.approx(shown, rel=1e-15)


def test_only_lengths_and_areas_are_known():
    for call in (units().from_si, units().to_si, units().fmt, lambda _, q: units().unit(q)):
        with pytest.raises(KeyError):
            call(1.0, "weight")


def test_units_are_those_last_set():
    for name in SYSTEMS:
        set_units(name)
        assert units() is SYSTEMS[name]
        assert units().unit("length") == name
        assert units().unit("area") == f"{name}²"
    with pytest.raises(ValueError, match="furlong"):
        set_units("furlong")
    assert units().name == "in"


def test_a_unit_system_is_fixed():
    with pytest.raises(AttributeError):
        SYSTEMS["mm"].metres = Decimal(1)
    assert SYSTEMS["mm"] == UnitSystem("mm", Decimal("0.001"))
