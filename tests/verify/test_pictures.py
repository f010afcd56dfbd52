"""The manual's pictures and messages are those of the program as it is."""

import json
import platform
import re
import subprocess
import sys

import pytest
from harness.places import ROOT
from PIL import Image
from PIL.PngImagePlugin import PngInfo

IMAGES = ROOT / "docs" / "images"
MANUAL = (ROOT / "docs" / "drawing.md").read_text()
CATALOGUE = ROOT / "host" / "tandrel" / "gui" / "locale" / "tandrel.pot"
SHOWN = sorted(set(re.findall(r"\(images/(\w+)\.png\)", MANUAL)))


@pytest.fixture(scope="module")
def made(tmp_path_factory):
    folder = tmp_path_factory.mktemp("pictures")
    subprocess.run([sys.executable, "docs/pictures.py", "--folder", folder], cwd=ROOT, check=True)
    return folder


def content(file):
    """All that a picture shows: its texts, each with its place and what it stands on, and every
    other dot. How letters are drawn is the font's own affair."""
    with Image.open(file) as picture:
        texts = json.loads(picture.text["texts"])
        picture = picture.convert("RGB")
    shown = []
    for box, text in texts:
        ground = max(picture.crop(box).getcolors(1 << 24))[1]
        shown.append((box, text, ground))
    for box, _ in texts:
        picture.paste(0, tuple(box))
    return picture.size, shown, picture.tobytes()


def test_each_tool_has_a_section_with_a_picture(sketcher):
    start, end = MANUAL.index("## Tools"), MANUAL.index("## What snaps to what")
    titles = re.findall(r"^### (.+)$", MANUAL[start:end], re.MULTILINE)
    assert sorted(titles) == sorted(label for _, label in sketcher.TOOLS)
    assert MANUAL[start:end].count("(images/") == len(titles)


@pytest.mark.skipif(
    platform.freedesktop_os_release().get("VERSION_CODENAME") != "bookworm",
    reason="pictures are made on Debian 12, and letters as wide as its are its only",
)
@pytest.mark.parametrize("name", SHOWN)
def test_pictures_are_current(name, made):
    kept, now = content(IMAGES / f"{name}.png"), content(made / f"{name}.png")
    assert kept == now, "make pictures, and look at them"


def test_a_single_dot_and_a_single_letter_are_noticed(made, tmp_path):
    before, changed = content(made / "circle.png"), tmp_path / "changed.png"
    with Image.open(made / "circle.png") as picture:
        about = PngInfo()
        about.add_text("texts", picture.text["texts"].replace('"x ', '"u '))
        picture.save(changed, pnginfo=about)
        assert [one == other for one, other in zip(content(changed), before)] == [1, 0, 1]
        about = PngInfo()
        about.add_text("texts", picture.text["texts"])
        picture.putpixel((300, 40), (0, 0, 0))
        picture.save(changed, pnginfo=about)
        assert [one == other for one, other in zip(content(changed), before)] == [1, 1, 0]


@pytest.mark.parametrize("name", sorted(set(SHOWN) - {"editor"}))
def test_the_tools_are_in_one_picture_only(name, made, sketcher):
    texts = [text for _, text, _ in content(made / f"{name}.png")[1]]
    assert not {label for _, label in sketcher.TOOLS} & set(texts)


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
    assert len(told) > 25
    assert [t for t in told if f'"{t}"' not in catalogue] == []
