"""What the window asks: each question in words, and the key of the answer to it.

None where the user gives no answer.
"""

from __future__ import annotations

import tkinter as tk
from typing import Optional

from tandrel.application.dialogs import ask
from tandrel.application.recovery import Found
from tandrel.gui.i18n import tr


def unsaved(parent: tk.Misc, name: str) -> Optional[str]:
    """What becomes of unsaved work: "save", "leave" or "stay"."""
    question = tr("Save the changes to {name}?").format(name=name)
    answers = {"save": tr("Save"), "leave": tr("Don't save"), "stay": tr("Cancel")}
    return ask(parent, question, answers)


def changed_elsewhere(parent: tk.Misc, file: str) -> Optional[str]:
    """What becomes of a file that somebody else wrote: "other", "replace" or "stay"."""
    question = tr("{file} was changed by another program. What becomes of that?")
    answers = {"other": tr("Save as…"), "replace": tr("Overwrite"), "stay": tr("Cancel")}
    return ask(parent, question.format(file=file), answers)


def recovered(parent: tk.Misc, name: str, work: Found) -> Optional[str]:
    """What becomes of work that a program left: "take", "later" or "drop"."""
    question = tr("{name} has unsaved changes of {when}. Go on with them?")
    when = f"{work.saved_at:%Y-%m-%d %H:%M}"
    answers = {"take": tr("Recover"), "later": tr("Ask later"), "drop": tr("Discard")}
    return ask(parent, question.format(name=name, when=when), answers)


def discarded(parent: tk.Misc, name: str) -> bool:
    """Whether the user is sure that work left by a program shall go."""
    question = tr("Discard the unsaved changes to {name} for good?").format(name=name)
    return ask(parent, question, {"keep": tr("Keep"), "drop": tr("Discard")}) == "drop"
