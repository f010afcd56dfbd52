"""Every list of the types of entities, or of the tools, has all of them: those of the program and
its manuals, and the samples that the other tests go through."""

import re
from random import Random

import pytest
from harness.places import ROOT
from soak.user import random_sketches
from support import form, shapes
from support.neighbours import PLACES, one_of_each
from support.operations import DRAG_TOOLS, TOOLS
from support.plain import Event, PlainEditor, Var
from tandrel import sketch as S
from tandrel.kinds import KINDS


def types(entities):
    return [e["type"] for e in entities]


def written(file, pattern):
    return re.findall(pattern, (ROOT / file).read_text(), re.MULTILINE)


KNOWN = {
    "the application": KINDS,
    "the stub": written("tandrel/gui/sketcher.pyi", r'^    type: Literal\["(\w+)"\]'),
    "the programmer's manual": written("docs/programming.md", r'^\| `"(\w+)"` \|'),
    "the random sketches": {random_sketches.entity(Random(n))["type"] for n in range(100)},
    "one_of_each": types(one_of_each()["entities"]),
    "EVERY_TYPE": form.EVERY_TYPE,
    "EVERY_KIND": types(shapes.EVERY_KIND.values()),
}


@pytest.mark.parametrize("known", KNOWN.values(), ids=KNOWN)
def test_all_types_are_there(sketcher, known):
    assert set(known) == set(sketcher.TYPE_LABEL)


def test_the_front_page_names_all_types(sketcher):
    (sentence,) = written("README.md", r"^`entities`: (.+) dictionaries")
    assert set(re.findall(r'"(\w+)"', sentence)) == set(sketcher.TYPE_LABEL)


def test_the_application_and_the_editor_call_them_alike(sketcher):
    assert {kind: known.label for kind, known in KINDS.items()} == sketcher.TYPE_LABEL


def test_one_of_each_is_one_of_each(sketcher):
    entities = one_of_each()["entities"]
    assert len(entities) == len(PLACES) == len(sketcher.TYPE_LABEL)
    for k, place in enumerate(PLACES):
        assert [S.inside(S.outline(e), place) for e in entities] == [
            n == k for n in range(len(entities))
        ]


def test_all_tools_are_tried(sketcher, neighbours):
    assert set(TOOLS) == {key for key, _ in sketcher.TOOLS}
    editors = [PlainEditor(tool=Var(tool), select=lambda index: None) for tool in TOOLS]
    for editor in editors:
        editor._press(Event(200, 150))
    assert DRAG_TOOLS == [e.tool.get() for e in editors if e.drag is not None]
