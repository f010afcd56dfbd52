"""Where things lie in the source tree."""

import os
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
HOST = ROOT / "host"
# Another build of the module takes its place where this variable names its folder, from the tree.
BUILD = ROOT / os.environ.get("TANDREL_BUILD", "build")
SEARCH_PATH = [str(HOST), str(BUILD)]
