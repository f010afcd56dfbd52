"""Tools that try to break the editor, each a command that prints its figure."""

import sys

from harness.places import ROOT, SEARCH_PATH

sys.path[:0] = [*SEARCH_PATH, str(ROOT / "tests")]
