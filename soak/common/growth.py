"""What a process holds at a moment, and what grew between two moments.

Everything that Tcl, Python and the operating system can count: `measured` counts, `growth` tells
what there is more of. Numbers by their names are packed into one text, JSON: what is kept of one
measurement must not depend on its numbers, for the next one counts it.
"""

import gc
import json
import os
import sys
import tkinter as tk
import warnings
from collections import Counter
from collections.abc import Mapping

MEASURES = ("commands", "variables", "windows", "objects", "references", "blocks", "descriptors")


def measured(root: tk.Misc, watched: Mapping[str, object]) -> str:
    """Collect the garbage and count: by measure, by "objects: type" and, of what is watched, by
    "references: name"."""
    # The collector stops counting a tuple only once it has stopped counting what that holds.
    for _ in range(2):
        gc.collect()
    forget_names()
    blocks = sys.getallocatedblocks()
    objects = gc.get_objects()
    counts = {"objects": len(objects), "blocks": blocks}
    counts.update(Counter(f"objects: {type(thing).__name__}" for thing in objects))
    del objects
    # A debug build's total would only tell of extension modules that are compiled for it.
    held = {f"references: {name}": sys.getrefcount(thing) for name, thing in watched.items()}

    def told(*words: str) -> tuple[str, ...]:
        return root.tk.splitlist(root.tk.call(*words))

    def below(top: str, *children: str) -> list[str]:
        found = [top]
        for name in found:
            found += told(*children, name)
        return found

    patterns = [f"{name.rstrip(':')}::*" for name in below("::", "namespace", "children")]
    counts["commands"] = sum(len(told("info", "commands", pattern)) for pattern in patterns)
    variables = [name for pattern in patterns for name in told("info", "vars", pattern)]
    # An array counts one for each element as well.
    sizes = sum(int(root.tk.call("array", "size", name)) for name in variables)
    counts["variables"] = len(variables) + sizes
    others = (told("after", "info"), told("image", "names"), told("font", "names"))
    counts["windows"] = len(below(".", "winfo", "children")) + sum(map(len, others))
    counts["descriptors"] = len(os.listdir("/proc/self/fd"))
    return json.dumps({**counts, **held})


def forget_names() -> None:
    """Empty the interpreter's cache of attributes.

    It keeps the names that C code looks up, of which numpy makes a new string each time it forwards
    a scalar's method, such as "item": up to 4,096 blocks that come and go. In some
    versions its empty places hold references to None.
    """
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", DeprecationWarning)  # from 3.13 on
        sys._clear_type_cache()


def growth(before: str, after: str) -> str:
    """What there is more of; what became less is none, of any watched object."""
    more = Counter(json.loads(after)) - Counter(json.loads(before))
    more["references"] = sum(more[name] for name in more if name.startswith("references: "))
    grew = {name: more[name] for name in more if more[name.partition(":")[0]]}
    return json.dumps(grew) + "\n"  # a text of its own, too, where nothing grew


def least(one: str, other: str) -> str:
    """The smaller one of each number."""
    return json.dumps(Counter(json.loads(one)) & Counter(json.loads(other))) + "\n"
