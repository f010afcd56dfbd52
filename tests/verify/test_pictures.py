"""The manual's pictures and messages are those of the program as it is."""

import re
import subprocess
import sys

import pytest
from harness.places import ROOT
from PIL import Image, ImageChops

IMAGES = ROOT / "docs" / "images"
MANUAL = (ROOT / "docs" / "drawing.md").read_text()
CATALOGUE = ROOT / "host" / "tandrel" / "gui" / "locale" / "tandrel.pot"
SHOWN = sorted(set(re.findall(r"\(images/(\w+)\.png\)", MANUAL)))
# Another version of a font may set a few dots of a letter differently.
DIFFERENT, FEW = 64, 60


@pytest.fixture(scope="module")
def made(tmp_path_factory):
    folder = tmp_path_factory.mktemp("pictures")
    subprocess.run([sys.executable, "docs/pictures.py", "--folder", folder], cwd=ROOT, check=True)
    return folder


def different_pixels(a, b):
    assert a.size == b.size
    difference = ImageChops.difference(a.convert("L"), b.convert("L"))
    return sum(difference.histogram()[DIFFERENT:])


def test_each_tool_has_a_section_with_a_picture(sketcher):
    start, end = MANUAL.index("## Tools"), MANUAL.index("## What snaps to what")
    titles = re.findall(r"^### (.+)$", MANUAL[start:end], re.MULTILINE)
    assert sorted(titles) == sorted(label for _, label in sketcher.TOOLS)
    assert MANUAL[start:end].count("(images/") == len(titles)


@pytest.mark.parametrize("name", SHOWN)
def test_pictures_are_current(name, made):
    with Image.open(IMAGES / f"{name}.png") as kept, Image.open(made / f"{name}.png") as now:
        assert different_pixels(kept, now) < FEW, "make pictures, and look at them"


def test_another_picture_is_noticed(made):
    with Image.open(made / "rectangle.png") as one, Image.open(made / "circle.png") as other:
        assert different_pixels(one, other) >= FEW


def messages():
    """The texts of the catalogue that tell what is wrong with a sketch."""
    entries = CATALOGUE.read_text().split("\n\n")
    for entry in entries:
        if not re.search(r"#:.*(_checks|_shapes|kinds/\w+|tools|side_panel)\.", entry):
            continue
        parts = re.search(r'^msgid ((?:".*"\n?)+)', entry, re.MULTILINE).group(1)
        yield "".join(part[1:-1] for part in parts.splitlines())


def test_manual_explains_each_message_with_a_reason():
    reasons = [text for text in messages() if re.match(r"the |an |\{shape\}|Not ", text)]
    assert len(reasons) > 15
    assert [text for text in reasons if f'"{text}"' not in MANUAL] == []


def test_messages_of_the_manual_are_the_program_s():
    tables = MANUAL[MANUAL.index("## Messages") : MANUAL.index("## What the editor does not do")]
    rows = [line.split("|")[1] for line in tables.splitlines() if line.startswith('| "')]
    told = [text for row in rows for text in re.findall(r'"([^"]+)"', row)]
    catalogue = re.sub(r'"\n"', "", CATALOGUE.read_text())
    by_the_interpreter = "could not convert string to float: …"
    assert len(told) > 25
    assert [t for t in told if f'"{t}"' not in catalogue] == [by_the_interpreter]
