"""Autosave: the work that isn't in its file yet, kept where a crash can't reach it.

A record is a file with the path of the document's file on its first line, as JSON, and the sketch
file after it. Beside it lies a file that its program keeps locked: a record without a lock is one
whose program is gone. Nobody else touches a record that is locked.
"""

from __future__ import annotations

import fcntl
import json
import os
import uuid
from contextlib import suppress
from dataclasses import dataclass
from datetime import datetime
from pathlib import Path
from typing import List, Optional

from tandrel import files, storage
from tandrel.application.settings import xdg_folder
from tandrel.storage import Document, SketchFileError

RECORD, LOCK, DAMAGED = ".sketch", ".lock", ".damaged"


class _Claim:
    """A record that no other program takes; OSError if another one has it.

    It is held until it is given up or this program ends, however it ends.
    """

    def __init__(self, file: Path) -> None:
        self.file = file
        self.lock = file.with_suffix(LOCK)
        self._handle = os.open(self.lock, os.O_RDWR | os.O_CREAT, 0o600)
        try:
            fcntl.flock(self._handle, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            os.close(self._handle)
            raise

    def give_up(self) -> None:
        """Remove the record, if it is still there, and then the lock."""
        for file in (self.file, self.lock):
            with suppress(OSError):
                file.unlink()
        os.close(self._handle)


@dataclass
class Found:
    """What a program that is gone had not saved. Nobody else is offered it until this one ends."""

    document: Document
    path: Optional[str]
    saved_at: datetime
    file: Path
    _claim: _Claim

    def discard(self) -> None:
        """Remove the record: the work is safe elsewhere, or not wanted."""
        self._claim.give_up()


class Recovery:
    """This program's record, and those that others left behind, in a folder that all share."""

    def __init__(self, folder: Optional[Path] = None) -> None:
        self.folder = xdg_folder("XDG_STATE_HOME", ".local/state") if folder is None else folder
        self._claim: Optional[_Claim] = None

    def keep(self, document: Document, path: Optional[str]) -> None:
        """Record the document, and its file if it has one; SketchFileError if that can't be."""
        place = None if path is None else os.path.abspath(path)
        data = json.dumps(place).encode() + b"\n" + storage.dumps(document)
        try:
            self.folder.mkdir(mode=0o700, parents=True, exist_ok=True)
            if self._claim is None or not self._claim.lock.exists():
                self._claim = _Claim(self.folder / f"{uuid.uuid4().hex}{RECORD}")
            files.replace(self._claim.file, data)
        except (OSError, ValueError) as error:
            raise SketchFileError(files.reason(error)) from error

    def drop(self) -> None:
        """Remove this program's record: there is nothing to lose now."""
        if self._claim is not None:
            self._claim.give_up()
            self._claim = None

    def found(self) -> List[Found]:
        """The records whose programs are gone, the latest first. Damaged ones are set aside."""
        records = []
        for file in self.folder.glob("*" + RECORD):
            try:
                claim = _Claim(file)
            except OSError:
                continue
            try:
                records.append(_read(file, claim))
            except (OSError, ValueError, RecursionError, SketchFileError):
                with suppress(OSError):
                    file.rename(file.with_suffix(DAMAGED))
                claim.give_up()
        return sorted(records, key=lambda record: record.saved_at, reverse=True)


def _read(file: Path, claim: _Claim) -> Found:
    place, data = files.contents(file).split(b"\n", 1)
    path = json.loads(place)
    if not isinstance(path, (str, type(None))):
        raise ValueError("no path")
    saved_at = datetime.fromtimestamp(file.stat().st_mtime).astimezone()
    return Found(storage.loads(data), path, saved_at, file, claim)
