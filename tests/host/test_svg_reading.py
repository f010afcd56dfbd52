"""SVG drawings of others, and those that are written here."""

import math

import pytest
from support.drawings import sketch_in
from support.shapes import EVERY_KIND, PLATE, document
from tandrel import exchange
from tandrel import sketch as S
from tandrel.exchange import ExchangeError, UnitsMissing, svg, svg_reading
from tandrel.gui import i18n
from tandrel.progress import no_tick


def read(content, head='width="200mm" height="100mm" viewBox="0 0 200 100"', **answers):
    text = f'<svg xmlns="http://www.w3.org/2000/svg" {head}>{content}</svg>'
    sketch, notes = sketch_in(text.encode(), reader=svg_reading, **answers)
    return sketch["entities"], notes


def approx(**entity):
    return pytest.approx(entity, abs=1e-12)


def test_shapes_in_true_size_with_v_up():
    found, notes = read(
        '<rect x="10" y="20" width="30" height="40"/><circle cx="100" cy="50" r="7"/>'
        '<polygon points="150,10 160,10 155,20"/><polyline points="0,0 5,0 5,5 0,0"/>'
        '<rect x="60" y="20" width="20" height="10" rx="2"/>'
    )
    assert [e["type"] for e in found] == [
        "rectangle",
        "circle",
        "polygon",
        "rectangle",
        "polygon",
    ]
    assert found[0] == approx(type="rectangle", x=0.01, y=0.04, w=0.03, h=0.04, radius=0)
    assert found[1] == approx(type="circle", xc=0.1, yc=0.05, r=0.007)
    assert found[3]["radius"] == pytest.approx(0.002)
    assert notes == []


@pytest.mark.parametrize(
    "head, size",
    [
        ('width="4in" viewBox="0 0 100 50"', 4 * 0.0254 / 100),
        ('width="10cm" height="50mm" viewBox="0 0 1000 500"', 1e-4),
        ('width="72pt" viewBox="5 5 10 10"', 0.00254),
        ('width="100mm" height="10mm" viewBox="0 0 100 100"', 1e-4),
    ],
)
def test_sizes_by_view_box_and_unit(head, size):
    ((found,), _) = read('<circle cx="0" cy="0" r="40"/>', head)
    assert found["r"] == pytest.approx(40 * size, rel=1e-15)


@pytest.mark.parametrize("head", ["", 'viewBox="0 0 9 9"', 'width="9" viewBox="0 0 9 9"'])
def test_pixels_are_asked_about(head):
    circle = '<circle cx="0" cy="0" r="48"/>'
    with pytest.raises(UnitsMissing) as caught:
        read(circle, head)
    assert caught.value.choices["mm"] == "96 mm × 96 mm"
    assert caught.value.choices["stated"] == "px: 25.4 mm × 25.4 mm"
    assert "px" not in caught.value.choices
    assert read(circle, head, unit="mm")[0][0]["r"] == 0.048
    assert read(circle, head, unit="stated")[0][0]["r"] == pytest.approx(0.0127)


@pytest.mark.usefixtures("catalogues")
def test_a_choice_has_the_colon_of_the_language():
    i18n.set_language("fr")
    with pytest.raises(UnitsMissing) as caught:
        read('<circle cx="0" cy="0" r="48"/>', "")
    assert caught.value.choices["stated"].startswith("px\u00a0: ")


@pytest.mark.parametrize(
    "head, u, v",
    [('viewBox="5 7 10 20"', 5, 27), ('x="9in" y="9in" viewBox="0 0 10 20"', 0, 20), ("", 0, 20)],
)
def test_the_lower_left_corner_is_the_origin(head, u, v):
    circle = f'<circle cx="{u}" cy="{v}" r="2"/>'
    ((found,), _) = read(circle, f'width="10px" height="20px" {head}', unit="mm")
    assert found == approx(type="circle", xc=0.0, yc=0.0, r=0.002)


def test_transforms_and_uses():
    found, notes = read(
        '<g transform="translate(10,20) scale(2)"><circle id="c" cx="1" cy="2" r="3"/></g>'
        '<g transform="rotate(90 50 50)"><rect x="50" y="50" width="20" height="5"/></g>'
        '<use href="#c" x="100"/>'
    )
    assert found[0] == approx(type="circle", xc=0.012, yc=0.076, r=0.006)
    assert found[1] == approx(type="rectangle", x=0.045, y=0.03, w=0.005, h=0.02, radius=0)
    assert found[2] == approx(type="circle", xc=0.101, yc=0.098, r=0.003)


def test_curves_are_divided_within_a_micrometre():
    ((egg,), notes) = read(
        '<ellipse cx="50" cy="50" rx="40" ry="20" transform="rotate(30 50 50)"/>'
    )
    assert S.area(egg) == pytest.approx(math.pi * 0.04 * 0.02, abs=1e-6 * 0.2)
    assert notes == ["Curves (1): divided into edges within 0.001 mm"]
    ((leaf,), _) = read('<path d="M 0 0 C 0 40 60 40 60 0 Q 30 -20 0 0 Z"/>')
    # Above the axis 120 t (1 - t) over dx = 360 t (1 - t) dt, below it a parabola.
    assert S.area(leaf) == pytest.approx((43200 / 30 + 2 / 3 * 60 * 10) * 1e-6, abs=1e-6 * 0.2)


def test_paths_of_lines_and_arcs():
    found, _ = read(
        '<path d="M10 10 h20 a5 5 0 0 1 0 10 h-20 a5 5 0 0 1 0 -10 z m 100 0 h10 v10 z"/>'
        '<path d="M60 60 A5 5 0 1 0 70 60 A5 5 0 0 0 60 60"/>'
    )
    assert [e["type"] for e in found] == ["slot", "polygon", "circle"]
    assert found[0]["r"] == pytest.approx(0.005)


def test_what_is_only_referred_to_is_drawn_where_it_is_used():
    square = '<rect width="10" height="10"/>'
    used = '<use href="#s" x="100" y="50"/>'
    symbol = f'<g><symbol id="s">{square}</symbol></g>'
    for name in ("symbol", "mask", "marker"):
        assert len(read(f'<circle r="5"/><{name} id="s">{square}</{name}>')[0]) == 1
    for content in (used + symbol, symbol + used):
        ((found,), _) = read(content)
        assert found == approx(type="rectangle", x=0.1, y=0.04, w=0.01, h=0.01, radius=0)


def test_what_is_not_cut_is_told():
    found, notes = read(
        '<circle cx="0" cy="0" r="9"/><text>a</text><image width="5" height="5"/>'
        '<circle cx="0" cy="0" r="8" visibility="hidden"/><circle r="7" display="none"/>'
        '<g style="opacity:1; display: none"><circle r="6" style="display:inline"/></g>'
        '<style>.off { display: none }</style><circle class="off" r="5"/><style/>'
    )
    assert len(found) == 1
    assert sorted(notes) == [
        "Left out (1): pictures",
        "Left out (1): texts",
        "Left out (4): parts that are hidden or on hidden layers",
    ]


@pytest.mark.parametrize(
    "data",
    [b"", b"<svg", b"<html/>", b"\x00", b'<svg xmlns="http://www.w3.org/2000/svg"/>'],
)
def test_what_is_no_drawing_gives_a_message(data):
    with pytest.raises(ExchangeError) as caught:
        sketch_in(data, unit="mm", reader=svg_reading)
    assert str(caught.value)


def test_elements_that_multiply_are_refused():
    doubling = "".join(
        f'<g id="a{k + 1}"><use href="#a{k}"/><use href="#a{k}"/></g>' for k in range(40)
    )
    with pytest.raises(ExchangeError, match="too many parts"):
        read('<circle id="a0" r="1"/>' + doubling)
    with pytest.raises(ExchangeError, match="too many parts"):
        read('<g id="a"><use href="#a"/></g>')


@pytest.mark.parametrize("path", ["M nan 0 h 1 v 1 z", "M 1e300 0 h 1 v 1 z", "M x", "M0 0 A 0 0"])
def test_senseless_numbers_give_a_message(path):
    with pytest.raises(ExchangeError):
        read(f'<path d="{path}"/>')


@pytest.mark.parametrize("entity", EVERY_KIND.values(), ids=EVERY_KIND)
def test_what_is_written_comes_back(entity):
    data = svg.written(document(entity), "mm", no_tick)
    (back,) = sketch_in(data, reader=svg_reading)[0]["entities"]
    assert back["type"] == entity["type"]
    assert S.area(back) == pytest.approx(S.area(entity), rel=1e-9)


def test_a_small_circle_far_from_the_corner_is_one_again():
    """Of twelve digits of a coordinate few are left for how its halves meet."""
    circles = [
        {"type": "circle", "xc": x / 331, "yc": x / 9973, "r": 7.23899268e-4} for x in range(60)
    ]
    data = svg.written(document(*circles), "mm", no_tick)
    back = sketch_in(data, reader=svg_reading)[0]["entities"]
    assert {entity["type"] for entity in back} == {"circle"}


def test_the_whole_way_through_files(tmp_path):
    exchange.export(document(*PLATE), tmp_path / "part.SVG", "in")
    found = exchange.import_(tmp_path / "part.SVG").document
    assert (found.name, len(found.sketch["entities"])) == ("part", len(PLATE))
    assert S.check(found.sketch) == []


def test_arcs_are_as_exact_as_their_numbers():
    """By angles a short one would be a full circle, and one of half a circle off by a hundredth."""
    short = "A5 5 0 0 0 29.9999999754 10.0000000003"
    ((found,), _) = read(f'<path d="M10 10 H30 {short} L10 30 z"/>')
    assert S.area(found) == pytest.approx(2e-4)
    half = b'<svg><path d="M0 0 A49.9999999999 49.9999999999 0 0 1 100 0 L100 50 H0 z"/></svg>'
    assert svg_reading.read(half, no_tick).lines[0].edges[0].bulge == -1.0
