"""The kinds of shapes, a module for each: its keys, label, drawing, and how a contour shows it.

A module of this folder that has a KIND is one, found by itself.
"""

from __future__ import annotations

import importlib
import pkgutil
from typing import Dict, List

from tandrel.kinds.kind import Kind


def _found() -> List[Kind]:
    names = [f"{__name__}.{module.name}" for module in pkgutil.iter_modules(__path__)]
    modules = [importlib.import_module(name) for name in names]
    return [module.KIND for module in modules if hasattr(module, "KIND")]


# The plainest first, as a contour is compared with them: a short slot is hardly longer than wide, a
# rectangle may be rounded to a circle, a square is a regular polygon, and all of them are outlines.
KINDS: Dict[str, Kind] = {kind.type: kind for kind in sorted(_found(), key=lambda kind: kind.rank)}
