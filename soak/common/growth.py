"""What a process holds at a moment, and what grew between two moments.

Everything that Tcl, Python and the operating system can count: `measured` counts, `growth` tells
what there is more of.
"""

from __future__ import annotations

import gc
import json
import os
import sys
import tkinter as tk
import warnings
from array import array
from collections import Counter
from collections.abc import Mapping
from typing import NamedTuple

MEASURES = ("commands", "variables", "windows", "objects", "references", "blocks", "descriptors")

# Every namespace of the interpreter, each before those in it.
_NAMESPACES = """
apply {{} {
    set found {}
    set left {::}
    while {[llength $left]} {
        set left [lassign $left namespace]
        lappend found $namespace
        lappend left {*}[namespace children $namespace]
    }
    return $found
}}
"""
_COMMANDS = "llength [info commands %s::*]"
# A variable counts one, an array one for each element as well.
_VARIABLES = """
apply {{} {
    set count 0
    foreach name [info vars %s::*] {
        incr count
        if {[array exists $name]} {incr count [array size $name]}
    }
    return $count
}}
"""
_WINDOWS = """
apply {{} {
    set found [list .]
    for {set i 0} {$i < [llength $found]} {incr i} {
        lappend found {*}[winfo children [lindex $found $i]]
    }
    expr {[llength $found] + [llength [after info]] + [llength [image names]]
          + [llength [font names]]}
}}
"""


class Measured(NamedTuple):
    """How much there is of everything.

    Kept packed: what is kept of one measurement must not depend on its numbers, for the next one
    counts it.
    """

    counts: array[int]  # in the order of MEASURES
    held: array[int]  # references to the watched objects, in their order
    types: str  # JSON: how many objects there are of each type


def measured(root: tk.Misc, watched: Mapping[str, object]) -> Measured:
    """Collect the garbage and count; of the watched objects the references."""
    # The collector stops counting a tuple only once it has stopped counting what that holds.
    for _ in range(2):
        gc.collect()
    forget_names()
    blocks = sys.getallocatedblocks()
    objects = gc.get_objects()
    types = json.dumps(Counter(type(thing).__name__ for thing in objects))
    counts = {"objects": len(objects), "blocks": blocks}
    del objects
    held = array("q", (sys.getrefcount(thing) for thing in watched.values()))
    # A debug build's total would only tell of extension modules that are compiled for it.
    counts["references"] = sum(held)
    namespaces = ["" if name == "::" else name for name in root.tk.eval(_NAMESPACES).split()]
    for measure, script in ("commands", _COMMANDS), ("variables", _VARIABLES):
        counts[measure] = sum(int(root.tk.eval(script % name)) for name in namespaces)
    counts["windows"] = int(root.tk.eval(_WINDOWS))
    counts["descriptors"] = len(os.listdir("/proc/self/fd"))
    return Measured(array("q", (counts[name] for name in MEASURES)), held, types)


def forget_names() -> None:
    """Empty the interpreter's cache of attributes.

    It keeps the names that C code looks up, of which numpy makes a new string each time it forwards
    a scalar's method, such as "item": up to 4,096 blocks that come and go. In some
    versions its empty places hold references to None.
    """
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", DeprecationWarning)  # from 3.13 on
        sys._clear_type_cache()


class Growth(NamedTuple):
    """What there is more of: of each measure, and of what in particular."""

    by: dict[str, int]
    details: str

    def at_most(self, other: Growth) -> Growth:
        """The smaller one of each measure."""
        by = {name: min(count, other.by[name]) for name, count in self.by.items()}
        return Growth(by, self.details)


def growth(before: Measured, after: Measured, watched: Mapping[str, object]) -> Growth:
    """Growth from one measurement to another; what became less is none, of any watched object."""
    held = _more(dict(zip(watched, before.held)), dict(zip(watched, after.held)))
    types = _more(json.loads(before.types), json.loads(after.types))
    by = {name: max(b - a, 0) for name, a, b in zip(MEASURES, before.counts, after.counts)}
    by["references"] = sum(held.values())
    rows = [("objects", types)] if by["objects"] else []
    rows += [("references", held)] if held else []
    details = [
        f"    {what}: " + ", ".join(f"{name} +{count}" for name, count in grew.items())
        for what, grew in rows
    ]
    return Growth(by, "\n".join(details))


def _more(before: Mapping[str, int], after: Mapping[str, int]) -> dict[str, int]:
    more = {name: count - before.get(name, 0) for name, count in after.items()}
    return {name: by for name, by in more.items() if by > 0}
