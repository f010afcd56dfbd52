"""The document being worked on: its file, its history and whether it is saved. No windows."""

from __future__ import annotations

import os
from dataclasses import replace
from datetime import datetime
from pathlib import Path
from typing import Any, Dict, List, Optional, Tuple

from tandrel import files, sketch, storage
from tandrel.application.recovery import Recovery
from tandrel.progress import Tick, no_tick
from tandrel.storage import Document, SketchFileError

Sketch = Dict[str, Any]
Stamp = Tuple[int, int, int]


class Session:
    """One document and how it came to be what it is.

    A new document has no name until it gets a file. The sketches of the history are handed out as
    they are: nobody changes them in place. Whatever raises leaves the session as it was.

    ``autosave_failed`` says why the present state isn't kept safe, empty while it is.
    """

    document: Document
    path: Optional[str]
    _history: List[Sketch]
    _position: int
    _saved: Optional[int]  # the position that the file holds
    _stamp: Optional[Stamp]  # of the file when it was last read or written here

    def __init__(self, recovery: Optional[Recovery] = None) -> None:
        self._recovery = recovery
        self.autosave_failed = ""
        self._begin(Document("", sketch.new()), None)

    @property
    def dirty(self) -> bool:
        """Whether the document differs from what its file holds."""
        return self._position != self._saved

    @property
    def can_undo(self) -> bool:
        return self._position > 0

    @property
    def can_redo(self) -> bool:
        return self._position < len(self._history) - 1

    @property
    def changed_elsewhere(self) -> bool:
        """Whether the document's file isn't any more what it was when last read or written."""
        found = None if self.path is None else files.stamp(self.path)
        return found is not None and found != self._stamp

    def new(self) -> None:
        """Begin a new, empty document."""
        self._begin(Document("", sketch.new()), None)
        self._autosave()

    def open(self, path: str | os.PathLike[str], tick: Tick = no_tick) -> None:
        """Go on with the document in a file."""
        self.opened(storage.read(path, tick), path)

    def opened(
        self, document: Document, path: str | os.PathLike[str], stamp: Optional[Stamp] = None
    ) -> None:
        """Go on with a document that was just read from a file, with the file's stamp before."""
        self._begin(document, os.fspath(path))
        self._stamp = stamp or files.stamp(path)
        self._autosave()

    def adopt(
        self, document: Document, path: Optional[str] = None, kept_at: Optional[datetime] = None
    ) -> None:
        """Go on with a document that no file holds yet: an import, or recovered work.

        Saving goes to ``path``, if there is one. Its file is another one now where somebody wrote
        it after the work was kept.
        """
        self._begin(document, path)
        self._saved = None
        stamp = None if path is None else files.stamp(path)
        if stamp and kept_at and stamp[0] <= kept_at.timestamp() * 1e9:
            self._stamp = stamp
        self._autosave()

    def save(self) -> None:
        """Write the document to its file."""
        if self.path is None:
            raise ValueError("the document has no file yet")
        self.save_as(self.path)

    def save_as(self, path: str | os.PathLike[str]) -> None:
        """Write the document to a file and stay with it; another file gives it its name."""
        document = self.document
        if not document.name or not self._is_at(path):
            document = replace(document, name=_name(path))
        storage.write(path, document)
        self.document, self.path, self._saved = document, os.fspath(path), self._position
        self._stamp = files.stamp(path)
        self._autosave()

    def accept(self, edited: Sketch) -> bool:
        """Go on with an edited sketch; False, and no trace, where nothing changed."""
        if _same(edited, self.document.sketch):
            return False
        if self._saved is not None and self._saved > self._position:
            self._saved = None  # the saved state goes with what could be redone
        del self._history[self._position + 1 :]
        self._history.append(_sharing(edited, self.document.sketch))
        self._go_to(self._position + 1)
        return True

    def undo(self) -> bool:
        """Go back by one edit, to what was opened at most."""
        return self.can_undo and self._go_to(self._position - 1)

    def redo(self) -> bool:
        """Take the last undo back."""
        return self.can_redo and self._go_to(self._position + 1)

    def keep_draft(self, edited: Sketch) -> str:
        """Keep a sketch that is still being edited where a crash can't reach it.

        It takes the place of the document there until that is kept again. Says why it can't be
        kept, "" if it is.
        """
        if self._recovery is None:
            return ""
        if _same(edited, self.document.sketch):
            self.forget_draft()
            return self.autosave_failed
        try:
            self._recovery.keep(replace(self.document, sketch=edited), self.path)
        except SketchFileError as error:
            return str(error)
        return ""

    def forget_draft(self) -> None:
        """Keep the document itself again: what was being edited isn't wanted."""
        self._autosave()

    def close(self) -> None:
        """Leave on purpose: what isn't saved now isn't wanted."""
        if self._recovery is not None:
            self._recovery.drop()

    def _is_at(self, path: str | os.PathLike[str]) -> bool:
        """Whether a file is the document's own."""
        return self.path is not None and os.path.abspath(self.path) == os.path.abspath(path)

    def _begin(self, document: Document, path: Optional[str]) -> None:
        self.document = document
        self.path = path
        self._history = [document.sketch]
        self._position = 0
        self._saved = 0
        self._stamp = None

    def _go_to(self, position: int) -> bool:
        self._position = position
        self.document = replace(self.document, sketch=self._history[position])
        self._autosave()
        return True

    def _autosave(self) -> None:
        """Keep what isn't in the file where a crash can't reach it; failing must not stop work."""
        self.autosave_failed = ""
        if self._recovery is None:
            return
        if not self.dirty:
            self._recovery.drop()
            return
        try:
            self._recovery.keep(self.document, self.path)
        except SketchFileError as error:
            self.autosave_failed = str(error)


def _name(path: str | os.PathLike[str]) -> str:
    """A file's name without its ending, as text even where the system allows other bytes."""
    return os.fsencode(Path(path).stem).decode(errors="replace")


def _sharing(edited: Sketch, before: Sketch) -> Sketch:
    """An edited sketch with the very entities that it began and ended with before the edit.

    So a long history of a large sketch takes little more room than the sketch.
    """
    entities, old = edited.get("entities"), before.get("entities")
    if not isinstance(entities, list) or not isinstance(old, list):
        return edited
    shared = list(entities)
    for at in (lambda k: k), (lambda k: ~k):
        for k in range(min(len(entities), len(old))):
            if not _same(entities[at(k)], old[at(k)]):
                break
            shared[at(k)] = old[at(k)]
    return {**edited, "entities": shared}


def _same(one: Any, other: Any) -> bool:
    """Whether two values of a sketch are equal; NaN is equal to NaN here."""
    if one is other or one == other:
        return True
    if isinstance(one, dict) and isinstance(other, dict):
        return one.keys() == other.keys() and all(_same(one[key], other[key]) for key in one)
    if isinstance(one, list) and isinstance(other, list):
        return len(one) == len(other) and all(map(_same, one, other))
    return bool(one != one and other != other)
