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
file unreadable, with a message that names line and key, so that no part is cut from half a file.
"""

from __future__ import annotations

import codecs
import json
import math
import os
import re
from collections.abc import Callable, Iterable, Iterator, Mapping
from dataclasses import dataclass, field
from itertools import islice
from typing import Any, Dict, List, Optional, TypeVar, Union

from tandrel import files
from tandrel.gui.i18n import N_, tr
from tandrel.kinds import KINDS
from tandrel.kinds.fields import Corners, Count, Number
from tandrel.progress import Tick, no_tick

FORMAT = "tandrel sketch"
VERSION = 1
LENGTH_UNIT = "m"
LONGEST_NUMBER = 309  # digits and sign of a whole number; one with more is no float
DEEPEST = 6  # lists and objects within each other in a sound file
SHOWN = 40  # characters of a value in a message
VALUES_BETWEEN_TICKS = 4096

_Value = TypeVar("_Value")
_Path = List[Union[str, int, None]]


class SketchFileError(Exception):
    """A sketch file that can't be read or written; its text says why, in the user's language."""


@dataclass(frozen=True)
class Document:
    """What a sketch file holds. References are named outlines, shown while drawing, not cut."""

    name: str
    sketch: Dict[str, Any]
    references: List[Dict[str, Any]] = field(default_factory=list)


def read(path: str | os.PathLike[str], tick: Tick = no_tick) -> Document:
    """The document in a file; SketchFileError if it isn't a sound sketch file."""
    try:
        data = files.contents(path)
    except (OSError, ValueError) as error:
        raise SketchFileError(files.reason(error)) from error
    return loads(data, tick)


def write(path: str | os.PathLike[str], document: Document) -> None:
    """Replace a file's content; SketchFileError leaves the file, or its absence, as it was.

    The version before stays beside it as ``NAME~``.
    """
    data = dumps(document)
    try:
        files.replace(path, data, keep_previous=True)
    except (OSError, ValueError) as error:
        raise SketchFileError(files.reason(error)) from error


def loads(data: bytes, tick: Tick = no_tick) -> Document:
    """The document that a sketch file with these bytes holds."""
    tick(0.0)
    data = data.removeprefix(codecs.BOM_UTF8)
    try:
        text = data.decode()
    except UnicodeDecodeError as error:
        text = data[: error.start].decode()
        why = tr("this is not UTF-8 text")
        raise _placed_at(text, len(text), why, _Beat(tick, text)) from error
    beat = _Beat(tick, text)
    try:
        return _document(_json(text, beat), beat)
    except _Fault as fault:
        raise _placed(text, fault, beat) from fault
    except json.JSONDecodeError as error:
        why = tr("this is not JSON")
        raise _placed_at(text, error.pos, why, beat) from error
    except RecursionError as error:
        deep = next((at for at, path in _steps(text, beat) if len(path) > DEEPEST), 0)
        raise _placed_at(text, deep, tr("this is nested too deeply"), beat) from error
    except MemoryError as error:
        raise SketchFileError(tr("there is not enough memory")) from error


def dumps(document: Document) -> bytes:
    """A sketch file's bytes, with one shape a line.

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
    try:
        data = (_laid_out(_file(content, _Beat(no_tick))) + "\n").encode()
    except _Fault as fault:
        raise _error(fault.why, fault.path) from fault
    if len(data) > files.LARGEST:
        raise SketchFileError(tr("the sketch is too large for a file"))
    return data


class _Beat:
    """Ticks now and then while each value of a text is counted twice: parsed, and checked."""

    def __init__(self, tick: Tick, text: str = "") -> None:
        self._tick = tick
        self._expected = 2 * text.count(",") + 2
        self._count = 0

    def __call__(self) -> None:
        self._count += 1
        if not self._count % VALUES_BETWEEN_TICKS:
            self._tick(min(1.0, self._count / self._expected))


# Parsing. Python's parser does it, and leaves a mark wherever the text has what no sketch holds.


@dataclass(repr=False)
class _Mark:
    """Stands for a value that no sketch holds, such as an object that has a key twice."""

    why: str
    twice: Optional[str] = None

    def __repr__(self) -> str:
        return "…"


def _json(text: str, beat: _Beat) -> Any:
    def refused(literal: str) -> _Mark:
        why = tr("{value} is not a number that a sketch can hold")
        return _Mark(why.format(value=_cut(literal)))

    def whole(literal: str) -> int | _Mark:
        beat()
        return int(literal) if len(literal) <= LONGEST_NUMBER else refused(literal)

    def decimal(literal: str) -> float | _Mark:
        beat()
        value = float(literal)
        return value if math.isfinite(value) else refused(literal)

    def content(pairs: list[tuple[str, Any]]) -> dict[str, Any] | _Mark:
        beat()
        found = dict(pairs)
        if len(found) == len(pairs):
            return found
        seen: set[str] = set()
        for twice, _ in pairs:
            if twice in seen:
                break
            seen.add(twice)
        return _Mark(tr("this key stands twice in one place"), twice)

    return json.loads(
        text,
        object_pairs_hook=content,
        parse_int=whole,
        parse_float=decimal,
        parse_constant=refused,
    )


# Readers: each takes a value, and returns what it means or raises.


class _Fault(Exception):
    """Why a value is refused, and its keys and indexes, which gather on the way out to the file."""

    def __init__(self, why: str, *path: str, earlier: int = 0) -> None:
        super().__init__(why)
        self.why = why
        self.path: _Path = [*path]
        self.earlier = earlier  # places with the same path before this one

    def within(self, step: str | int) -> _Fault:
        self.path.insert(0, step)
        return self


_Reader = Callable[[Any, _Beat], _Value]


def _text(value: Any, beat: _Beat) -> str:
    # Half a surrogate pair can be written as an escape, but not as text.
    if not isinstance(value, str) or any("\ud800" <= c <= "\udfff" for c in value):
        raise _unfit(N_("a text"), value)
    return value


def _number(value: Any, beat: _Beat) -> float:
    beat()
    if isinstance(value, (int, float)) and not isinstance(value, bool):
        try:
            if math.isfinite(value):
                return float(value)
        except OverflowError:
            pass
    raise _unfit(N_("a finite number"), value)


def _count(value: Any, beat: _Beat) -> int:
    if not isinstance(value, int) or isinstance(value, bool) or value.bit_length() > 1023:
        raise _unfit(N_("a whole number"), value)
    return int(value)


def _version(value: Any, beat: _Beat) -> int:
    if type(value) is int and value > VERSION:
        raise _Fault(tr("the file was written by a newer version of this program"))
    return _only(VERSION)(value, beat)


def _only(expected: _Value) -> _Reader[_Value]:
    """A reader for the one value that can stand in a place."""

    def read_one(value: Any, beat: _Beat) -> _Value:
        if type(value) is not type(expected) or value != expected:
            raise _unfit(json.dumps(expected), value)
        return expected

    return read_one


def _list_of(reader: _Reader[_Value], length: int | None = None) -> _Reader[list[_Value]]:
    def read_list(value: Any, beat: _Beat) -> list[_Value]:
        if not isinstance(value, list) or length not in (None, len(value)):
            raise _unfit(N_("a list") if length is None else N_("a pair of numbers"), value)
        read: list[_Value] = []
        try:
            for item in value:
                read.append(reader(item, beat))
        except _Fault as fault:
            raise fault.within(len(read))
        return read

    return read_list


def _record(fields: Mapping[str, _Reader[Any]], optional: str = "") -> _Reader[dict[str, Any]]:
    """A reader for an object with just these fields, looked at in this order."""

    def read_record(value: Any, beat: _Beat) -> dict[str, Any]:
        beat()
        if not isinstance(value, dict):
            raise _unfit(N_("an object"), value)
        read = {}
        for key, reader in fields.items():
            if key in value:
                try:
                    read[key] = reader(value[key], beat)
                except _Fault as fault:
                    raise fault.within(key)
            elif key != optional:
                raise _Fault(tr("{key} is missing").format(key=_quoted(key)))
        for key in value:
            if key not in fields:
                raise _Fault(tr("this key is not known"), key)
        return {key: read[key] for key in value}

    return read_record


_point = _list_of(_number, 2)


_FIELDS: dict[type, _Reader[Any]] = {
    Number: _number,
    Count: _count,
    Corners: _list_of(_point),
}
_ENTITIES = {
    name: _record({"type": _text, **{key: _FIELDS[type(f)] for key, f in kind.fields.items()}})
    for name, kind in KINDS.items()
}


def _kind(value: Any, beat: _Beat) -> str:
    if not isinstance(value, str) or value not in _ENTITIES:
        raise _unfit(" / ".join(_ENTITIES), value)
    return value


def _entity(value: Any, beat: _Beat) -> dict[str, Any]:
    kind = value.get("type") if isinstance(value, dict) else None
    reader = _ENTITIES.get(kind) if isinstance(kind, str) else None
    return (reader or _record({"type": _kind}))(value, beat)


_file = _record(
    {
        "format": _only(FORMAT),
        "version": _version,
        "name": _text,
        "length_unit": _only(LENGTH_UNIT),
        "sketch": _record({"plane": _text, "offset": _number, "entities": _list_of(_entity)}),
        "references": _list_of(_record({"name": _text, "points": _list_of(_point)})),
    },
    optional="references",
)


def _document(value: Any, beat: _Beat) -> Document:
    content = _file(value, beat)
    return Document(content["name"], content["sketch"], content.get("references", []))


def _unfit(expected: str, found: object) -> _Fault:
    if isinstance(found, _Mark):
        if found.twice is None:
            return _Fault(found.why)
        return _Fault(found.why, found.twice, earlier=1)
    why = tr("expected {expected}, found {found}")
    return _Fault(why.format(expected=tr(expected), found=_quoted(found)))


# Places in a text, looked for only when there is something to say about them.

_TOKEN = re.compile(r'[ \t\n\r]*(["\[\]{},:]|[^\s"\[\]{},:]+)')


def _steps(text: str, beat: _Beat, end: int | None = None) -> Iterator[tuple[int, _Path]]:
    """Where each key of an object and each item of a list begins, in order, and its path.

    It goes on to the end, or until nothing can be made of the text. The path changes on the way.
    """
    end = len(text) if end is None else end
    string = json.JSONDecoder().raw_decode
    path: _Path = []
    at = 0
    while token := _TOKEN.match(text, at, end):
        beat()
        start, at = token.span(1)
        sign = text[start]
        if sign in ",:]}":
            if not path:
                return
            if sign == ",":
                last = path[-1]
                path[-1] = last + 1 if isinstance(last, int) else None
            elif sign != ":":
                path.pop()
            continue
        inner = path[-1] if path else 0
        if sign == '"':
            try:
                key, at = string(text, start)
            except json.JSONDecodeError:
                key = None
            if inner is None:
                path[-1] = key
        if not isinstance(inner, str):
            yield start, path
        if sign in "[{":
            path.append(0 if sign == "[" else None)


def _placed(text: str, fault: _Fault, beat: _Beat) -> SketchFileError:
    same = (at for at, path in _steps(text, beat) if path == fault.path)
    return _error(fault.why, fault.path, text, next(islice(same, fault.earlier, None)))


def _placed_at(text: str, position: int, why: str, beat: _Beat) -> SketchFileError:
    """With the key or item that begins last up to a position."""
    last: _Path = []
    for _, path in _steps(text, beat, position + 1):
        last = path.copy()
    return _error(why, last, text, position)


def _error(why: str, path: _Path, text: str = "", position: int | None = None) -> SketchFileError:
    key = _shown(path)
    if position is None:
        place = key
    else:
        whole = N_("line {line}, {key}") if key else N_("line {line}")
        place = tr(whole).format(line=text.count("\n", 0, position) + 1, key=key)
    return SketchFileError(tr("{place}: {why}").format(place=place, why=why))


def _shown(path: _Path) -> str:
    """A path such as ``sketch.entities[2].r``, as far as a sound file's would go."""
    shown = ""
    for step in path[:DEEPEST]:
        if isinstance(step, str) and step.isidentifier() and len(step) < SHOWN:
            shown += f".{step}" if shown else step
        elif step is not None:
            shown += f"[{_quoted(step)}]"
    return shown


def _quoted(value: object) -> str:
    """A value as it stands in a file, cut short."""
    encoder = json.JSONEncoder(ensure_ascii=False, default=repr)
    try:
        return _cut("".join(islice(encoder.iterencode(value), SHOWN)))
    except ValueError:  # a whole number with too many digits to be written
        return "…"


def _cut(text: str) -> str:
    text = text if len(text) <= SHOWN else text[: SHOWN - 1] + "…"
    # Half a surrogate pair has no place in a message either.
    return text.encode(errors="backslashreplace").decode()


_encoded = json.JSONEncoder(ensure_ascii=False).encode


def _laid_out(value: Any, margin: str = "\n") -> str:
    """JSON text in which what holds objects is spread over lines."""
    inner = margin + "  "
    if isinstance(value, dict) and _holds_objects(value.values()):
        lines = [f"{_encoded(key)}: {_laid_out(item, inner)}" for key, item in value.items()]
        return "{" + inner + f",{inner}".join(lines) + margin + "}"
    if isinstance(value, list) and _holds_objects(value):
        return (
            "[" + inner + f",{inner}".join(_laid_out(item, inner) for item in value) + margin + "]"
        )
    return _encoded(value)


def _holds_objects(values: Iterable[Any]) -> bool:
    return any(
        isinstance(item, dict) or isinstance(item, list) and item and isinstance(item[0], dict)
        for item in values
    )
