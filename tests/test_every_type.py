"""Every list of the types of entities, or of the tools, has all of them: those of the program and
its manuals, and the cards that the other tests read."""

import re

import pytest
from harness.places import ROOT
from support.operations import DRAG_TOOLS, TOOLS
from support.plain import Event, PlainEditor, Var
from support.types import CARDS
from tandrel import sketch as S
from tandrel.kinds import KINDS


def written(file, pattern):
    return re.findall(pattern, (ROOT / file).read_text(), re.MULTILINE)


KNOWN = {
    "the cards": [card.name for card in CARDS],
    "the application": KINDS,
    "the stub": written("tandrel/gui/sketcher.pyi", r'^    type: Literal\["(\w+)"\]'),
    "the programmer's manual": written("docs/programming.md", r'^\| `"(\w+)"` \|'),
}


@pytest.mark.parametrize("known", KNOWN.values(), ids=KNOWN)
def test_all_types_are_there(sketcher, known):
    assert set(known) == set(sketcher.TYPE_LABEL)


def test_the_application_and_the_editor_call_them_alike(sketcher):
    assert {kind: known.label for kind, known in KINDS.items()} == sketcher.TYPE_LABEL


class TestCard:
    def test_its_samples_have_all_keys_and_are_sound(self, card):
        keys = [field.key for field in card.fields] + ["points"] * (card.corners_text is not None)
        for entity in (card.sample, card.placed, card.moved, card.make()):
            assert set(entity) == {"type", *keys}
            S.outline(entity)
        values = [card.sample[field.key] for field in card.fields]
        assert len(set(values)) == len(values) == len(card.shown)

    def test_its_variants_have_the_area_that_it_says(self, card):
        for entity, _, _, area in card.variants.values():
            assert S.area(entity) == pytest.approx(area, rel=1e-13)

    def test_its_statement_of_the_summary_says_what_its_examples_say(self, card):
        for entity, summary in card.summaries:
            assert card.summary(entity, lambda value: f"<{value!r} length>", str) == summary

    def test_its_place_is_in_its_own_sample_only(self, card):
        inside = [S.inside(S.outline(other.placed), card.place) for other in CARDS]
        assert inside == [other is card for other in CARDS]


def test_all_tools_are_tried(sketcher, neighbours):
    assert set(TOOLS) == {key for key, _ in sketcher.TOOLS}
    editors = [PlainEditor(tool=Var(tool), select=lambda index: None) for tool in TOOLS]
    for editor in editors:
        editor._press(Event(200, 150))
    assert DRAG_TOOLS == [e.tool.get() for e in editors if e.drag is not None]
