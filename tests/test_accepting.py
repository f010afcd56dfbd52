"""How a sketch is accepted, refused or left alone."""

import pytest

from support.plain import PlainEditor, Recorder, Var

pytestmark = pytest.mark.usefixtures("neighbours")


def accepting(**attributes):
    """A plain editor that can be accepted; `calls` holds what it did."""
    editor = PlainEditor(**attributes)
    editor.calls = editor.watch("destroy", "redraw", "refresh_list", "show_props")
    return editor


def test_ok_stores_the_placement_checks_hands_out_the_editors_own_sketch_and_closes(neighbours):
    steps = []
    neighbours.S.answers["check"] = lambda sk: steps.append((sk, dict(sk))) or []
    editor = accepting(offset=Var("25"), plane=Var("XZ"))
    editor.destroy = lambda: steps.append(editor.result)
    assert editor.ok() is None
    (checked, content), result = steps
    assert checked is result is editor.result is editor.sk
    assert content == editor.sk == {"entities": [], "offset": 0.025, "plane": "XZ"}
    assert list(editor.sk) == ["entities", "offset", "plane"]
    assert neighbours.units.named("to_si") == [(25.0, "length")]
    assert editor.calls == []
    assert editor.status.texts == []


@pytest.mark.parametrize("dim", [2, 1, 0, None, "3"], ids=repr)
def test_ok_of_a_plain_region_neither_reads_nor_stores_plane_and_offset(neighbours, dim):
    editor = accepting(dim=dim)
    del editor.offset, editor.plane
    editor.ok()
    assert editor.result is editor.sk
    assert editor.sk == {"entities": []}
    assert neighbours.units.asked == 0


@pytest.mark.parametrize("text", ["", " ", "abc", "1 mm", "1,5", "1/2", "0x10", "--1", "1e"])
def test_offset_must_be_a_number(neighbours, text):
    neighbours.tr.texts = {"The offset must be a number.": "Zahl!"}
    editor = accepting(offset=Var(text), plane=Var("XZ"))
    assert editor.ok() is None
    assert editor.status.texts == ["Zahl!"]
    assert editor.sk == {"entities": []}
    assert editor.result is None
    assert editor.calls == []
    assert neighbours.S.count("check") == 0


@pytest.mark.parametrize(
    "text, offset",
    [("-2", -0.002), (" 2.5\t", 0.0025), ("1e3", 1.0), (".5", 0.0005), ("1_0", 0.01)]
    + [("inf", float("inf")), ("-Infinity", float("-inf"))],
)
def test_offset_is_parsed_as_a_float(text, offset):
    editor = accepting(offset=Var(text))
    editor.ok()
    assert editor.result["offset"] == offset


def test_value_error_of_the_units_counts_as_a_bad_offset(neighbours):
    neighbours.units.fail["to_si"] = ValueError("too long")
    editor = accepting()
    editor.ok()
    assert editor.status.texts == ["The offset must be a number."]
    assert editor.sk == {"entities": []}


def test_value_error_of_the_plane_counts_as_a_bad_offset():
    def bad():
        raise ValueError("plane")

    editor = accepting(offset=Var("3"), plane=Recorder(get=bad))
    editor.ok()
    assert editor.status.texts == ["The offset must be a number."]
    assert editor.sk == {"entities": [], "offset": 0.003}
    assert editor.result is None


@pytest.mark.parametrize("dim, stored", [(3, {"offset": 0.004, "plane": "YZ"}), (2, {})])
def test_messages_of_the_check_refuse_the_sketch(neighbours, dim, stored):
    neighbours.S.answers["check"] = ["one is open", "two overlap", "{n}"]
    neighbours.tr.texts = {"one is open": "translated twice"}
    editor = accepting(dim=dim, offset=Var("4"), plane=Var("YZ"))
    assert editor.ok() is None
    assert editor.status.texts == ["one is open; two overlap; {n}"]
    assert editor.sk == {"entities": [], **stored}
    assert editor.result is None
    assert editor.calls == []
