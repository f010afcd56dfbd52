"""Texts of the user interface in the user's language.

Texts are written in English, marked with `N_` where a table is built, and translated with `tr`
where they are shown. Catalogues are GNU gettext's: the sources lie beside this module in `locale/`;
the build compiles them to `locale/LANGUAGE/LC_MESSAGES/tandrel.mo` in a folder of this package.
"""

from __future__ import annotations

import gettext
import os
import sys
from pathlib import Path

DOMAIN = "tandrel"
SOURCE_LANGUAGE = "en"
_NAMES = {"en": "English", "de": "Deutsch"}

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
    return {
        code: name
        for code, name in _NAMES.items()
        if code == SOURCE_LANGUAGE or _compiled(code) is not None
    }


def set_language(code: str) -> None:
    """Translate into this language from now on; LookupError if it has no catalogue."""
    global _catalogue, _language
    if code == SOURCE_LANGUAGE:
        catalogue = gettext.NullTranslations()
    else:
        path = _compiled(code)
        if path is None:
            raise LookupError(f"no catalogue for language {code!r}")
        with open(path, "rb") as file:
            catalogue = gettext.GNUTranslations(file)
    _catalogue, _language = catalogue, code


def preferred_language() -> str:
    """The first language of the user's environment that can be set, else English."""
    available = languages()
    for variable in ("LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"):
        for locale in os.environ.get(variable, "").split(":"):
            if locale[:2] in available:
                return locale[:2]
    return SOURCE_LANGUAGE


def _compiled(code: str) -> Path | None:
    for folder in sys.modules[__package__].__path__:
        path = Path(folder, "locale", code, "LC_MESSAGES", f"{DOMAIN}.mo")
        if path.is_file():
            return path
    return None
