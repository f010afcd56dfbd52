"""Texts of the user interface in the user's language.

Texts are written in English, marked with `N_` where a table is built, and translated with `tr`
where they are shown. Catalogues are GNU gettext's: the sources lie beside this module in `locale/`;
the build compiles them to `locale/LANGUAGE/LC_MESSAGES/tandrel.mo` in a folder of this package.

The pseudo-language shows what a translator would stumble over: in it every text that passes through
`tr` is accented, longer than in English, and in brackets. A text without them is not translated, a
text without the right one is cut off.
"""

from __future__ import annotations

import gettext
import os
import re
import sys
from pathlib import Path

DOMAIN = "tandrel"
SOURCE_LANGUAGE = "en"
PSEUDO_LANGUAGE = "qps"  # offered where the environment asks for it by TANDREL_PSEUDO=1
_NAMES = {
    "en": "English",
    "de": "Deutsch",
    "fr": "Français",
    "zh": "简体中文",
    PSEUDO_LANGUAGE: "[Þšéûđö ~~]",
}


class _PseudoTranslations(gettext.NullTranslations):
    """Made from the English texts themselves; placeholders stay as they are."""

    _ACCENTED = str.maketrans(
        "AaBbCcDdEeFfGgHhIiJjKkLlMmNnOoPpQqRrSsTtUuVvWwXxYyZz",
        "ÅåßƀÇçĐđÉéƑƒĜğĤĥÎîĴĵĶķĻļṀɱÑñÖöÞþǪǫŘřŠšŢţÛûṼṽŴŵẊẋÝýŽž",
    )

    # Of other modules' texts, which take their figures in the older way, too.
    _PLACEHOLDER = re.compile(r"(\{[^{}]*\}|%(?:\(\w+\))?[sr])")

    def gettext(self, message: str) -> str:
        pieces = self._PLACEHOLDER.split(message)
        pieces[::2] = [piece.translate(self._ACCENTED) for piece in pieces[::2]]
        longer = "~" * max(round(0.4 * len(message)) - len("[ ]"), 1)
        return f"[{''.join(pieces)} {longer}]"


_catalogue: gettext.NullTranslations = gettext.NullTranslations()
_language = SOURCE_LANGUAGE


def N_(text: str) -> str:
    """Mark a text for translation where it is written; the text itself."""
    return text


def tr(text: str) -> str:
    """The text in the language in use, or as it is where there is no translation."""
    # The empty text is the catalogue's header to gettext.
    return _catalogue.gettext(text) if text else text


def language() -> str:
    """The code of the language in use."""
    return _language


def languages() -> dict[str, str]:
    """The languages that can be set: code and own name."""
    return {code: name for code, name in _NAMES.items() if _can_be_set(code)}


def set_language(code: str) -> None:
    """Translate into this language from now on; LookupError if it has no catalogue."""
    global _catalogue, _language
    if not _can_be_set(code):
        raise LookupError(f"no catalogue for language {code!r}")
    path = _compiled(code)
    if path is not None:
        with open(path, "rb") as file:
            catalogue: gettext.NullTranslations = gettext.GNUTranslations(file)
    elif code == PSEUDO_LANGUAGE:
        catalogue = _PseudoTranslations()
    else:
        catalogue = gettext.NullTranslations()
    _catalogue, _language = catalogue, code


def preferred_language() -> str:
    """The first language of the user's environment that can be set, else English."""
    available = languages()
    for variable in ("LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"):
        for locale in os.environ.get(variable, "").split(":"):
            code = re.split("[_.@]", locale)[0]
            if code in available:
                return code
    return SOURCE_LANGUAGE


def _can_be_set(code: str) -> bool:
    if code == PSEUDO_LANGUAGE:
        return os.environ.get("TANDREL_PSEUDO") == "1"
    return code == SOURCE_LANGUAGE or (code in _NAMES and _compiled(code) is not None)


def _compiled(code: str) -> Path | None:
    for folder in sys.modules[__package__].__path__:
        path = Path(folder, "locale", code, "LC_MESSAGES", f"{DOMAIN}.mo")
        if path.is_file():
            return path
    return None
