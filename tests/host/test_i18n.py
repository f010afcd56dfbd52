"""Translation: what is translated into what, and what happens where nothing fits."""

import ast
import re
import string
import subprocess
from collections import Counter

import polib
import pytest
import tandrel.gui
from harness.places import HOST, ROOT
from tandrel.application.menus import BAR, SUBMENUS
from tandrel.gui import i18n
from tandrel.gui.i18n import N_, tr

EXTRACT = ROOT / "scripts" / "extract-texts"
LOCALE = HOST / "tandrel" / "gui" / "locale"
TEMPLATE = LOCALE / "tandrel.pot"
LANGUAGES = ("de", "fr", "zh")
TEXTS = sorted(entry.msgid for entry in polib.pofile(TEMPLATE))


def translations(language):
    return {entry.msgid: entry.msgstr for entry in polib.pofile(LOCALE / f"{language}.po")}


def marked():
    """Every call of a marker in the application's sources: where it stands, and its argument."""
    for path in (HOST / "tandrel").rglob("*.py"):
        for node in ast.walk(ast.parse(path.read_text())):
            if isinstance(node, ast.Call) and getattr(node.func, "id", "") in ("N_", "tr"):
                yield f"{path.name}:{node.lineno}", node.args[0]


def table_texts(sketcher):
    yield from (label for _, label in sketcher.TOOLS)
    yield from sketcher.TOOL_TIPS.values()
    yield from sketcher.TYPE_LABEL.values()
    yield from (label for rows in sketcher.FIELDS.values() for _, label, _ in rows)


def names(text):
    """The placeholders of a text; ValueError where its braces don't fit."""
    return Counter(piece[1:] for piece in string.Formatter().parse(text) if piece[1] is not None)


def of_the_older_kind(text):
    """The placeholders that argparse fills in, in their order where they have no names."""
    found = re.findall(r"%(?:\(\w+\))?[sr]", text)
    return sorted(found) if "%(" in text else found


def test_the_template_is_what_the_sources_say(tmp_path):
    subprocess.run([EXTRACT, tmp_path / "new.pot"], check=True)
    assert (tmp_path / "new.pot").read_text() == TEMPLATE.read_text()


def test_every_marked_text_is_in_the_template(sketcher):
    texts = {node.value for _, node in marked() if isinstance(node, ast.Constant)}
    assert {"Open…", "Nothing is drawn yet", *texts, *table_texts(sketcher)} <= set(TEXTS)


def test_texts_are_put_together_after_translation_only():
    """Of a name or a look-up the text is marked elsewhere; a built text would never be found."""
    built = (ast.JoinedStr, ast.BinOp, ast.IfExp)
    assert [place for place, node in marked() if isinstance(node, built)] == []


@pytest.mark.parametrize("language", LANGUAGES)
def test_every_text_is_translated_and_nothing_else(language):
    catalogue = polib.pofile(LOCALE / f"{language}.po")
    assert sorted(entry.msgid for entry in catalogue) == TEXTS
    unfit = [entry.msgid for entry in catalogue if not entry.translated() or entry.obsolete]
    assert unfit == []


@pytest.mark.parametrize("language", LANGUAGES)
def test_translations_take_the_same_placeholders(language):
    """By name, each as often; tools don't compare those of texts from C++."""
    for text, translation in translations(language).items():
        assert all(plain == ["", None] for _, *plain in names(text)), text
        assert names(translation) == names(text), translation
        assert of_the_older_kind(translation) == of_the_older_kind(text), translation


@pytest.mark.parametrize("language", LANGUAGES)
def test_translations_begin_and_end_as_the_texts_do(language):
    """Blanks at the ends, and the dots of entries that ask for more."""
    for text, translation in translations(language).items():
        assert translation.startswith(" ") == text.startswith(" "), translation
        assert translation.endswith(" ") == text.endswith(" "), translation
        assert translation.endswith("…") == text.endswith("…"), translation
        # A blank before it, or none, as the language has it.
        assert translation.endswith(" …") == (language == "de" and text.endswith("…")), translation
        assert translation.endswith(":") == text.endswith(":") or language == "zh", translation


@pytest.mark.parametrize("language", ["en", *LANGUAGES])
def test_letters_that_open_menus_differ(catalogues, language):
    i18n.set_language(language)
    submenus = [tr(SUBMENUS[name]) for name in BAR["view"][1] if name in SUBMENUS]
    for labels in ([tr(label) for label, _ in BAR.values()], submenus):
        letters = [label[0].lower() for label in labels]
        assert len(set(letters)) == len(letters) > 1


def test_the_pseudo_language_is_offered_on_demand_only(catalogues, monkeypatch):
    for value in ("", "0"):
        monkeypatch.setenv("TANDREL_PSEUDO", value)
        assert "qps" not in i18n.languages()
        with pytest.raises(LookupError):
            i18n.set_language("qps")
    monkeypatch.setenv("TANDREL_PSEUDO", "1")
    assert list(i18n.languages()) == ["en", *LANGUAGES, "qps"]
    i18n.set_language("qps")
    assert tr("Select and move") == "[Šéļéçţ åñđ ɱöṽé ~~~]"


@pytest.fixture
def pseudo(catalogues, monkeypatch):
    monkeypatch.setenv("TANDREL_PSEUDO", "1")
    i18n.set_language("qps")


def test_pseudo_texts_are_longer_and_take_the_same_placeholders(pseudo):
    for text in TEXTS:
        shown = tr(text)
        assert names(shown) == names(text), text
        assert of_the_older_kind(shown) == of_the_older_kind(text), text
        assert shown[0] + shown[-1] == "[]"
        assert len(shown) >= 1.3 * len(text), text
        plain = re.sub(r"%(\(\w+\))?[sr]", "", shown)
        letters = set("".join(literal for literal, *_ in string.Formatter().parse(plain)))
        assert not letters & set(string.ascii_letters), text


@pytest.mark.parametrize("text", ["{", "}{", "%s {0} {x!r}", "\0", "Ø ✓", "{a} {a}"])
def test_anything_has_a_pseudo_text(pseudo, text):
    assert tr(text).startswith("[")
    assert tr("") == ""


def test_texts_follow_the_language(catalogues):
    assert tr("Rectangle") == "Rectangle"
    i18n.set_language("de")
    assert i18n.language() == "de"
    assert (tr("Rectangle"), N_("Rectangle")) == ("Rechteck", "Rectangle")
    assert tr("{n} corners").format(n=5) == "5 Ecken"
    i18n.set_language("en")
    assert tr("Rectangle") == "Rectangle"


@pytest.mark.parametrize("text", ["", "no such text", "{", "%s {0} {x!r}", "\0", "Ø ✓"])
def test_a_text_without_translation_stays_as_it_is(catalogues, text):
    for language in ("en", *LANGUAGES):
        i18n.set_language(language)
        assert tr(text) == text
        assert tr(N_(text)) == text


def test_an_unknown_language_is_refused_and_changes_nothing(catalogues):
    i18n.set_language("de")
    for code in ("xx", "", "../de", "english", "qps"):
        with pytest.raises(LookupError):
            i18n.set_language(code)
    assert i18n.language() == "de"
    assert tr("Rectangle") == "Rechteck"


def test_only_languages_with_a_catalogue_are_offered(catalogues, monkeypatch, tmp_path):
    own_names = {"en": "English", "de": "Deutsch", "fr": "Français", "zh": "简体中文"}
    assert i18n.languages() == own_names
    assert sorted(path.stem for path in LOCALE.glob("*.po")) == sorted(LANGUAGES)
    monkeypatch.setattr(tandrel.gui, "__path__", [str(tmp_path)])
    assert i18n.languages() == {"en": "English"}
    for code in LANGUAGES:
        with pytest.raises(LookupError):
            i18n.set_language(code)


@pytest.mark.parametrize(
    "environment, language",
    [
        ({}, "en"),
        ({"LANG": "C"}, "en"),
        ({"LANG": "de_AT.UTF-8"}, "de"),
        ({"LANG": "fr_FR.UTF-8"}, "fr"),
        ({"LANG": "zh_CN.UTF-8"}, "zh"),
        ({"LANG": "de@euro"}, "de"),
        ({"LANG": "it_IT.UTF-8"}, "en"),
        ({"LANG": "deu"}, "en"),
        ({"LANG": "qps"}, "en"),
        ({"LANG": "de_DE.UTF-8", "LC_ALL": "en_GB.UTF-8"}, "en"),
        ({"LANG": "en_GB.UTF-8", "LC_MESSAGES": "de_DE"}, "de"),
        ({"LANG": "en_GB.UTF-8", "LANGUAGE": "it:de:en"}, "de"),
        ({"LANG": "de_DE.UTF-8", "LANGUAGE": "en:de"}, "en"),
    ],
)
def test_the_user_s_language(catalogues, monkeypatch, environment, language):
    for variable in ("LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"):
        monkeypatch.delenv(variable, raising=False)
    for variable, value in environment.items():
        monkeypatch.setenv(variable, value)
    assert i18n.preferred_language() == language
