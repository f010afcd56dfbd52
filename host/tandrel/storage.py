"""Sketch files: one profile in a JSON file, read strictly and written whole or not at all.

    {
      "format": "tandrel sketch",
      "version": 1,
      "name": "Mounting flange",
      "length_unit": "m",
      "sketch": {"plane": "XY", "offset": 0.0, "entities": [{"type": "circle", ...}, ...]},
      "references": [{"name": "Blank", "points": [[-0.08, -0.06], ...]}]
    }

Lengths are metres, angles degrees. Anything missing, unknown or of the wrong kind makes the whole
file unreadable, with a message that names the place, so that no part is cut from half a file.
"""

from __future__ import annotations

import json
import math
import os
import stat
import tempfile
from collections.abc import Callable, Iterable, Mapping
from contextlib import suppress
from dataclasses import dataclass, field
from typing import Any, Dict, List, TypeVar

from tandrel.gui.i18n import N_, tr

FORMAT = "tandrel sketch"
VERSION = 1
LENGTH_UNIT = "m"
# Far beyond any drawing; a larger file is something else.
LARGEST_FILE = 50_000_000

_Value = TypeVar("_Value")
_Place = str


class SketchFileError(Exception):
    """A sketch file that can't be read or written; its text says why, in the user's language."""


@dataclass(frozen=True)
class Document:
    """What a sketch file holds. References are named outlines, shown while drawing, not cut."""

    name: str
    sketch: Dict[str, Any]
    references: List[Dict[str, Any]] = field(default_factory=list)


def read(path: str | os.PathLike[str]) -> Document:
    """The document in a file; SketchFileError if it isn't a sound sketch file."""
    try:
        with open(path, "rb", opener=_open_at_once) as file:
            if not stat.S_ISREG(os.fstat(file.fileno()).st_mode):
                raise _error(N_("this is not a file"))
            data = file.read(LARGEST_FILE + 1)
    except OSError as error:
        raise SketchFileError(error.strerror) from error
    if len(data) > LARGEST_FILE:
        raise _error(N_("the file is too large for a sketch"))
    return _document(_json(data))


def write(path: str | os.PathLike[str], document: Document) -> None:
    """Replace a file's content; SketchFileError leaves the file, or its absence, as it was.

    What is written passes the same checks as what is read, so every saved file opens again.
    """
    content = {
        "format": FORMAT,
        "version": VERSION,
        "name": document.name,
        "length_unit": LENGTH_UNIT,
        "sketch": document.sketch,
        "references": document.references,
    }
    checked = _document(content)
    content.update(sketch=checked.sketch, references=checked.references)
    text = json.dumps(content, ensure_ascii=False, indent=2) + "\n"
    try:
        _replace(os.path.realpath(path), text.encode())
    except OSError as error:
        raise SketchFileError(error.strerror) from error


def _replace(path: str, data: bytes) -> None:
    """Put new content in a file's place in one step that outlasts a power failure."""
    folder = os.path.dirname(path)
    handle, temporary = tempfile.mkstemp(prefix=".", suffix=".tmp", dir=folder)
    try:
        with open(handle, "wb") as file:
            # File systems without permissions refuse this, and need none.
            with suppress(PermissionError):
                os.fchmod(file.fileno(), _mode(path))
            file.write(data)
            file.flush()
            os.fsync(file.fileno())
        os.replace(temporary, path)
    except BaseException:
        os.unlink(temporary)
        raise
    # The new content is in place; a file system that can't sync a folder doesn't change that.
    with suppress(OSError):
        handle = os.open(folder, os.O_RDONLY)
        try:
            os.fsync(handle)
        finally:
            os.close(handle)


def _mode(path: str) -> int:
    """The permissions that the file has, or that a new file gets."""
    try:
        return stat.S_IMODE(os.stat(path).st_mode)
    except FileNotFoundError:
        mask = os.umask(0)
        os.umask(mask)
        return 0o666 & ~mask


def _open_at_once(path: str, flags: int) -> int:
    """Open without waiting, as a named pipe would for its other end."""
    return os.open(path, flags | os.O_NONBLOCK)


def _json(data: bytes) -> Any:
    try:
        return json.loads(data, object_pairs_hook=_object, parse_constant=_constant)
    except json.JSONDecodeError as error:
        why = _error(N_("line {line}: this is not JSON ({why})"), line=error.lineno, why=error.msg)
        raise why from error
    except (ValueError, RecursionError) as error:
        raise _error(N_("this is not JSON ({why})"), why=error) from error


def _object(pairs: list[tuple[str, Any]]) -> dict[str, Any]:
    content = dict(pairs)
    if len(content) < len(pairs):
        keys = [key for key, _ in pairs]
        twice = next(key for key in keys if keys.count(key) > 1)
        raise _error(N_("the key {key} stands twice in one place"), key=_quoted(twice))
    return content


def _constant(text: str) -> float:
    raise _error(N_("{value} is not a number that a sketch can hold"), value=text)


# Readers: each takes a value and its place in the file, and returns the value or raises.


def _text(value: Any, place: _Place) -> str:
    if not isinstance(value, str):
        raise _unfit(place, N_("a text"), value)
    return value


def _number(value: Any, place: _Place) -> float:
    if isinstance(value, (int, float)) and not isinstance(value, bool):
        try:
            if math.isfinite(value):
                return float(value)
        except OverflowError:
            pass
    raise _unfit(place, N_("a finite number"), value)


def _count(value: Any, place: _Place) -> int:
    if not isinstance(value, int) or isinstance(value, bool):
        raise _unfit(place, N_("a whole number"), value)
    return int(value)


def _only(expected: object) -> Callable[[Any, _Place], Any]:
    """A reader for the one value that can stand in a place."""

    def read_one(value: Any, place: _Place) -> Any:
        if type(value) is not type(expected) or value != expected:
            raise _unfit(place, json.dumps(expected), value)
        return value

    return read_one


def _list_of(
    reader: Callable[[Any, _Place], _Value], length: int | None = None
) -> Callable[[Any, _Place], list[_Value]]:
    def read_list(value: Any, place: _Place) -> list[_Value]:
        if not isinstance(value, list) or length not in (None, len(value)):
            raise _unfit(place, N_("a list") if length is None else N_("a pair of numbers"), value)
        return [reader(item, f"{place}[{index}]") for index, item in enumerate(value)]

    return read_list


def _record(
    fields: Mapping[str, Callable[[Any, _Place], Any]], optional: Iterable[str] = ()
) -> Callable[[Any, _Place], dict[str, Any]]:
    """A reader for an object with just these fields."""

    def read_record(value: Any, place: _Place) -> dict[str, Any]:
        if not isinstance(value, dict):
            raise _unfit(place, N_("an object"), value)
        for key in value:
            if key not in fields:
                raise _error(N_("{place}: {key} is not known"), place=place, key=_quoted(key))
        for key in fields:
            if key not in value and key not in optional:
                raise _error(N_("{place}: {key} is missing"), place=place, key=_quoted(key))
        return {key: fields[key](item, f"{place}.{key}") for key, item in value.items()}

    return read_record


_point = _list_of(_number, 2)
_ENTITY_FIELDS: Dict[str, Dict[str, Callable[[Any, _Place], Any]]] = {
    "rectangle": dict.fromkeys(("x", "y", "w", "h", "radius"), _number),
    "circle": dict.fromkeys(("xc", "yc", "r"), _number),
    "regular": {**dict.fromkeys(("xc", "yc", "r", "angle"), _number), "n": _count},
    "slot": dict.fromkeys(("x1", "y1", "x2", "y2", "r"), _number),
    "polygon": {"points": _list_of(_point), "radius": _number},
}


def _entity(value: Any, place: _Place) -> dict[str, Any]:
    kind = value.get("type") if isinstance(value, dict) else None
    if not isinstance(kind, str) or kind not in _ENTITY_FIELDS:
        raise _unfit(f"{place}.type", " / ".join(_ENTITY_FIELDS), kind)
    return _record({"type": _text, **_ENTITY_FIELDS[kind]})(value, place)


_sketch = _record({"plane": _text, "offset": _number, "entities": _list_of(_entity)})
_reference = _record({"name": _text, "points": _list_of(_point)})
_file = _record(
    {
        "format": _only(FORMAT),
        "version": _only(VERSION),
        "name": _text,
        "length_unit": _only(LENGTH_UNIT),
        "sketch": _sketch,
        "references": _list_of(_reference),
    },
    optional=("references",),
)


def _document(value: Any) -> Document:
    content = _file(value, "file")
    return Document(content["name"], content["sketch"], content.get("references", []))


def _unfit(place: _Place, expected: str, found: object) -> SketchFileError:
    text = N_("{place}: expected {expected}, found {found}")
    return _error(text, place=place, expected=tr(expected), found=_quoted(found))


def _quoted(value: object) -> str:
    """A value as it stands in the file, cut short."""
    text = json.dumps(value, ensure_ascii=False, default=repr)
    return text if len(text) <= 40 else text[:39] + "…"


def _error(text: str, **words: object) -> SketchFileError:
    return SketchFileError(tr(text).format(**words))
