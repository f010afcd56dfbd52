"""Damaged DXF files made such that the library can read them."""

from __future__ import annotations

import re
from copy import deepcopy
from typing import Iterable, Iterator, List, Tuple

from tandrel.exchange.dxf.parts import NEVER_CUT, READABLE
from tandrel.exchange.tell import Notes
from tandrel.gui.i18n import tr

_Tag = Tuple[bytes, bytes]
_Record = List[_Tag]  # a part of a drawing: its kind, and all that is said of it

_LENGTHS = {b"%d" % code for code in (*range(10, 60), *range(110, 150), *range(210, 240))}
_COMMA = re.compile(rb"^([-+]?\d*),(\d+)$")  # as some programs write numbers in some countries
_REFERENCES = b"5", b"330", b"360"  # to and from what may be missing
# The names of the classes of those parts that the library doesn't read without.
_CLASSES = {b"LWPOLYLINE": b"AcDbPolyline", b"SPLINE": b"AcDbSpline"}
# Parts that the older versions of the format don't have, and the first version that has them.
_YOUNG = re.compile(rb"[\r\n][ \t]*0[ \t]*[\r\n]+[ \t]*(?:LWPOLYLINE|SPLINE|ELLIPSE)\s")
_HEADER = re.compile(rb"[\r\n][ \t]*2[ \t]*[\r\n]+[ \t]*HEADER[ \t]*[\r\n]+")
_LINE_END = rb"[ \t]*(?:\r*\n|\r)[ \t]*"
_VERSION = re.compile(rb"\$ACADVER%b1%b(\S*)" % (_LINE_END, _LINE_END))
_YOUNGER, _FIRST = b"AC1012", b"AC1015"


def dated(data: bytes) -> bytes:
    """A drawing with the version of the format that its parts are of.

    Some programs name an older one, or none; of that the library would read them in part.
    """
    named = _VERSION.search(data)
    if (named and named[1] >= _YOUNGER) or not _YOUNG.search(data):
        return data
    if named:
        return data[: named.start(1)] + _FIRST + data[named.end(1) :]
    version = b"9\n$ACADVER\n1\n%s\n" % _FIRST
    header = _HEADER.search(data)
    if header:
        return data[: header.end()] + version + data[header.end() :]
    return b"0\nSECTION\n2\nHEADER\n%s0\nENDSEC\n%s" % (version, data)


def repaired(data: bytes) -> Iterator[Tuple[bytes, Notes]]:
    """What a damaged drawing may be, the most faithful first, and what that leaves out of it.

    Half of a drawing is nothing: it is of no use, however well it is repaired.
    """
    # Some programs end each line twice, some the file with a sign of its own.
    lines = data.replace(b"\r\r\n", b"\n").strip(b"\0\x1a \t\r\n").splitlines()
    if [line.strip() for line in lines[-1:]] != [b"EOF"]:
        return
    notes = Notes()
    try:
        # Where a code is no number, nobody knows what the lines after it are.
        tags = [(b"%d" % int(code), value.strip()) for code, value in zip(lines[::2], lines[1::2])]
        records = [_with_class(record) for record in _with_numbers(_records(tags), notes)]
    except ValueError:
        return
    yield _text(records), deepcopy(notes)
    kept = []
    for record in records:
        what = NEVER_CUT.get(_kind(record))
        if what is None:
            kept.append(record)
        else:
            notes.leave(tr(what))
    yield _text(kept), deepcopy(notes)
    yield _text(_bare(kept)), notes


def _records(tags: List[_Tag]) -> Iterator[_Record]:
    """The parts of a drawing, those of a polyline with it."""
    record: _Record = []
    for tag in tags:
        is_more = tag[1] in (b"VERTEX", b"SEQEND") and record[:1] == [(b"0", b"POLYLINE")]
        if tag[0] == b"0" and record and not is_more:
            yield record
            record = []
        record.append(tag)
    yield record


def _kind(record: _Record) -> str:
    return record[0][1].decode("latin-1").upper()


def _with_numbers(records: Iterable[_Record], notes: Notes) -> Iterator[_Record]:
    """The parts but for those that lack a number: the library would make one up.

    ValueError where a block lacks one: all that is in it would lie elsewhere; and where one has
    commas and points, so that of the others nobody knows what a point or a comma is there.
    """
    for record in records:
        kind = _kind(record)
        if kind not in READABLE and kind != "BLOCK":
            yield record
            continue
        if any(code in _LENGTHS and b"," in value and b"." in value for code, value in record):
            raise ValueError
        try:
            yield [(code, _number(value) if code in _LENGTHS else value) for code, value in record]
        except ValueError:
            if kind == "BLOCK":
                raise
            notes.leave(tr("parts that are damaged"))


def _number(value: bytes) -> bytes:
    value = _COMMA.sub(rb"\1.\2", value)
    float(value)
    return value


def _with_class(record: _Record) -> _Record:
    kind, *rest = record
    if kind[1] not in _CLASSES or b"100" in dict(rest):
        return record
    return [kind, (b"100", b"AcDbEntity"), (b"100", _CLASSES[kind[1]]), *rest]


def _bare(records: Iterable[_Record]) -> Iterator[_Record]:
    """The parts alone, without anything that refers to what may be missing or wrong."""
    section = b""
    for record in records:
        kind = record[0][1].upper()
        if kind == b"SECTION":
            section = dict(record).get(b"2", b"")
        if kind == b"EOF" or section == b"HEADER":
            yield record
        elif section in (b"BLOCKS", b"ENTITIES"):
            yield [tag for tag in record if tag[0] not in _REFERENCES]


def _text(records: Iterable[_Record]) -> bytes:
    return b"".join(b"%s\n%s\n" % tag for record in records for tag in record)
