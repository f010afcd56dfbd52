"""Why a shape can't be built, worded for the user when somebody reads it.

A reason travels as the argument of an ordinary exception, ``ValueError(Reason(...))``, so that
``str(error)`` is the message. The wording waits until then: a reason remembered from an earlier
try still speaks the language and the units of length of the moment.
"""

from __future__ import annotations

from typing import Any, Mapping

from tandrel.gui.i18n import tr
from tandrel.units import units


class Reason:
    """A message with its figures; ``str()`` translates it and shows lengths in display units.

    ``text`` is the English message, marked with ``N_`` where it is written; its placeholders are
    filled from ``lengths`` (SI) and from ``words`` (anything else that ``str.format`` takes).
    """

    __slots__ = ("text", "words", "lengths")

    def __init__(self, text: str, words: Mapping[str, Any] = {}, **lengths: float) -> None:
        self.text = text
        self.words = words
        self.lengths = lengths

    def __str__(self) -> str:
        unit = units()
        shown = {name: unit.fmt(value, "length") for name, value in self.lengths.items()}
        return tr(self.text).format(**shown, **self.words)

    def __repr__(self) -> str:
        return repr(str(self))
