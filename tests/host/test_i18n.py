"""Translation: what is translated into what, and what happens where nothing fits."""

import ast
import gettext
import string
from pathlib import Path

import pytest
import tandrel.gui
from tandrel.gui import i18n
from tandrel.gui.i18n import N_, tr

HOST = Path(i18n.__file__).parents[1]
LANGUAGES = sorted(path.stem for path in (HOST / "gui" / "locale").glob("*.po"))

# What the editor shows besides its tables.
EDITOR_TEXTS = {
    "Sketch",
    "Plane",
    "Offset along the normal",
    "Snap to grid",
    "Grid",
    "Fit",
    "Sides",
    "Delete",
    "Shape",
    "Size",
    "Shapes inside other shapes become holes; overlapping shapes join.",
    "Cancel",
    "OK",
    "Select a shape to type its exact size.",
    "Corners (u v, one pair per line):",
    "Apply",
    "diameter {d}",
    "{n} sides, {d} across corners",
    "{n} corners",
    "each corner needs two numbers",
    "Not added: {why}",
    "Not applied: {why}",
    "The offset must be a number.",
}


def host_texts():
    """Every text that the application marks or translates."""
    for path in HOST.rglob("*.py"):
        for node in ast.walk(ast.parse(path.read_text())):
            if isinstance(node, ast.Call) and getattr(node.func, "id", "") in ("N_", "tr"):
                if isinstance(node.args[0], ast.Constant):
                    yield node.args[0].value


def table_texts(sketcher):
    yield from (label for _, label in sketcher.TOOLS)
    yield from sketcher.TOOL_TIPS.values()
    yield from sketcher.TYPE_LABEL.values()
    yield from (label for rows in sketcher.FIELDS.values() for _, label, _ in rows)


@pytest.fixture
def texts(sketcher):
    """Every text that a user may see."""
    return EDITOR_TEXTS | set(host_texts()) | set(table_texts(sketcher))


def placeholders(text):
    return sorted(name for _, name, _, _ in string.Formatter().parse(text) if name is not None)


def catalogue(compiled, language):
    with open(compiled / "locale" / language / "LC_MESSAGES" / "tandrel.mo", "rb") as file:
        return gettext.GNUTranslations(file)._catalog


def messages(path):
    """The source texts of a catalogue's source."""
    lines = path.read_text().splitlines()
    return {ast.literal_eval(line[6:]) for line in lines if line.startswith("msgid ")} - {""}


def test_german_is_there():
    assert "de" in LANGUAGES


@pytest.mark.parametrize("language", LANGUAGES)
def test_every_text_is_translated_and_nothing_else(compiled, texts, language):
    found = {text for text, translation in catalogue(compiled, language).items() if translation}
    assert found - {""} == texts


def test_the_template_lists_every_text(texts):
    assert messages(HOST / "gui" / "locale" / "tandrel.pot") == texts


@pytest.mark.parametrize("language", LANGUAGES)
def test_translations_keep_the_placeholders(compiled, language):
    for text, translation in catalogue(compiled, language).items():
        if text:
            assert placeholders(translation) == placeholders(text), text


@pytest.mark.parametrize("language", LANGUAGES)
def test_translations_name_themselves(catalogues, language):
    assert i18n.languages()[language] != language


def test_texts_follow_the_language(catalogues):
    assert tr("Rectangle") == "Rectangle"
    i18n.set_language("de")
    assert i18n.language() == "de"
    assert tr("Rectangle") == "Rechteck"
    assert tr("diameter {d}").format(d="5 mm") == "Durchmesser 5 mm"
    i18n.set_language("en")
    assert tr("Rectangle") == "Rectangle"


@pytest.mark.parametrize("text", ["", "no such text", "{", "%s {0} {x!r}", "\0", "Ø ✓"])
def test_a_text_without_translation_stays_as_it_is(catalogues, text):
    for language in ("en", "de"):
        i18n.set_language(language)
        assert tr(text) == text
        assert tr(N_(text)) == text


def test_marking_changes_nothing(catalogues):
    i18n.set_language("de")
    assert N_("Rectangle") == "Rectangle"


def test_an_unknown_language_is_refused_and_changes_nothing(catalogues):
    i18n.set_language("de")
    for code in ("xx", "", "../de", "english"):
        with pytest.raises(LookupError):
            i18n.set_language(code)
    assert i18n.language() == "de"
    assert tr("Rectangle") == "Rechteck"


def test_only_languages_with_a_catalogue_are_offered(catalogues, monkeypatch, tmp_path):
    assert i18n.languages() == {"en": "English", "de": "Deutsch"}
    monkeypatch.setattr(tandrel.gui, "__path__", [str(tmp_path)])
    assert i18n.languages() == {"en": "English"}
    with pytest.raises(LookupError):
        i18n.set_language("de")


@pytest.mark.parametrize(
    "environment, language",
    [
        ({}, "en"),
        ({"LANG": "C"}, "en"),
        ({"LANG": "de_AT.UTF-8"}, "de"),
        ({"LANG": "fr_FR.UTF-8"}, "en"),
        ({"LANG": "de_DE.UTF-8", "LC_ALL": "en_GB.UTF-8"}, "en"),
        ({"LANG": "en_GB.UTF-8", "LC_MESSAGES": "de_DE"}, "de"),
        ({"LANG": "en_GB.UTF-8", "LANGUAGE": "fr:de:en"}, "de"),
        ({"LANG": "de_DE.UTF-8", "LANGUAGE": "en:de"}, "en"),
    ],
)
def test_the_user_s_language(catalogues, monkeypatch, environment, language):
    for variable in ("LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"):
        monkeypatch.delenv(variable, raising=False)
    for variable, value in environment.items():
        monkeypatch.setenv(variable, value)
    assert i18n.preferred_language() == language
