"""PNG pictures, pixel by pixel."""

import io

import pytest
from hypothesis import given, settings
from PIL import Image
from support.neighbours import circle, polygon, rectangle
from support.shapes import PAIR, PLATE, document, entities, sketch
from support.ticks import stop
from tandrel import profile
from tandrel.exchange import png
from tandrel.progress import Stopped, no_tick

WHITE, FILL = (255, 255, 255), (0x33, 0x56, 0x6F)


def picture(*shapes):
    image = Image.open(io.BytesIO(png.written(document(*shapes), "mm", no_tick)))
    image.load()
    return image


def filled(image):
    """The part of the picture that is material, counting half-covered pixels as halves."""
    counts = image.convert("L").histogram()
    dark = Image.new("RGB", (1, 1), FILL).convert("L").getpixel((0, 0))
    covered = sum(n * (255 - level) / (255 - dark) for level, n in enumerate(counts))
    return covered / (image.width * image.height)


def test_material_holes_and_islands():
    image = picture(*PLATE)
    assert image.size == (1600, 1220)
    scale = 1520 / 0.16

    def at(u, v):
        return image.getpixel((800 + u * scale, 610 - v * scale))

    for place in ((-0.07, -0.05), (0.0, 0.0)):
        assert at(*place) == FILL
    for place in ((0.0, 0.025), (-0.055, 0.0), (0.055, -0.035)):
        assert at(*place) == WHITE
    assert image.getpixel((5, 5)) == WHITE
    assert image.getpixel((45, 45)) == WHITE  # the corner is rounded


def test_up_is_up():
    image = picture(polygon((0, 0), (1, 0), (0, 1)))
    assert image.getpixel((100, image.height - 100)) == FILL
    assert image.getpixel((image.width - 100, 100)) == WHITE


def test_edges_are_smooth():
    image = picture(circle())
    assert len(image.getcolors()) > 10
    assert filled(image) == pytest.approx(3.14159265 * 760**2 / 1600**2, rel=2e-3)


def test_what_overlaps_is_joined_and_what_lies_inside_is_cut():
    bars = [rectangle(-1.0, -0.2, 2.0, 0.4), rectangle(-0.2, -1.0, 0.4, 2.0)]
    image = picture(*bars)
    assert image.getpixel((800, 800)) == FILL
    assert filled(image) == pytest.approx(profile.area(sketch(*bars)) / 4 * 0.95**2, rel=3e-3)


def test_a_hole_in_two_plates_is_a_hole():
    image = picture(*PAIR)
    assert image.getpixel((image.width // 2, image.height // 2)) == WHITE


def test_the_picture_knows_how_large_the_part_is():
    per_inch = picture(*PLATE).info["dpi"][0]
    assert 1520 / per_inch * 25.4 == pytest.approx(160, rel=1e-3)


@settings(max_examples=6)
@given(entities(farthest=2.0))
def test_any_shape_fills_as_much_as_it_encloses(entity):
    image = picture(entity)
    left, low, right, high = profile.box(sketch(entity))
    scale = 1520 / max(right - left, high - low)
    area, length = profile.area(sketch(entity)), profile.region(sketch(entity)).length
    pixels = filled(image) * image.width * image.height
    assert pixels == pytest.approx(area * scale**2, abs=0.5 * length * scale)


@pytest.mark.parametrize("w, h", [(1e-9, 1e-9), (1e9, 1e9), (1.0, 1e-7), (1e-7, 1.0)])
def test_parts_of_odd_sizes_have_a_picture(w, h):
    image = picture(rectangle(w=w, h=h))
    assert max(image.size) == 1600 and min(image.size) >= 160
    assert filled(image) > 0


def test_a_tick_stops_it():
    with pytest.raises(Stopped):
        png.written(document(*PLATE), "mm", stop)
