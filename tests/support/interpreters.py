"""The interpreters that the one file of the module must serve, as far as they are there."""

import math
from pathlib import Path

import pytest

from .children import TESTS, run

VERSIONS = ["3.9", "3.10", "3.11", "3.12", "3.13"]
DEVELOPER_MODE = ("-X", "dev", "-W", "error")


def found():
    """The interpreters in the user's home, by their version."""
    interpreters = {}
    for folder in sorted(Path.home().glob(".pyenv/versions/*")):
        version = ".".join(folder.name.split(".")[:2])
        if version in VERSIONS and (folder / "bin" / "python").exists():
            interpreters[version] = folder / "bin" / "python"
    return interpreters


INTERPRETERS = found()


def interpreter_of(version):
    """The interpreter of this version; skips the test that asks where there is none."""
    if version not in INTERPRETERS:
        pytest.skip(f"no interpreter {version} under ~/.pyenv/versions")
    return INTERPRETERS[version]


def walk_through(interpreter, *options, path):
    """What the walkthrough prints in this interpreter, with the module found along `path`."""
    use = "from support import walkthrough\nwalkthrough.main()"
    return run(use, *options, interpreter=interpreter, paths=[*path, TESTS])


def nearly_equal(a, b):
    """Equal, numbers to within the rounding of another square root."""
    if isinstance(a, dict):
        return a.keys() == b.keys() and all(nearly_equal(a[key], b[key]) for key in a)
    if isinstance(a, list):
        return len(a) == len(b) and all(map(nearly_equal, a, b))
    if isinstance(a, float):
        return math.isclose(a, b, rel_tol=1e-12, abs_tol=1e-15)
    return type(a) is type(b) and a == b
