"""Builds of the module with a planted memory fault, to show that a tool finds it."""

from __future__ import annotations

import re
import shutil
import subprocess
from pathlib import Path
from typing import NamedTuple

from harness.places import ROOT
from soak.common.suite import quietly

_FILE = "tandrel/gui/sketcher.abi3.so"
_SOURCES = ROOT / "tandrel" / "gui" / "sketcher"


class Plant(NamedTuple):
    """`old` becomes `new` in `file`."""

    file: str
    old: str
    new: str


_NUMBER = "double Ref::number() const {"
PLANTS = {
    "number never released": Plant(
        "python/object.cpp",
        "return Ref::steal(PyFloat_FromDouble(value));",
        "return Ref::borrow(PyFloat_FromDouble(value));",
    ),
    "list never released": Plant(
        "python/object.cpp",
        "return Ref::steal(PyList_New(0));",
        "return Ref::borrow(PyList_New(0));",
    ),
    "write past the end": Plant(
        "python/object.cpp",
        _NUMBER,
        _NUMBER + "volatile char* copy = new char[3]; copy[3] = 0; delete[] copy;",
    ),
    "signed overflow": Plant(
        "python/object.cpp", _NUMBER, _NUMBER + "volatile int most = 2147483647; most = most + 1;"
    ),
    "value never set": Plant(
        "python/object.cpp",
        _NUMBER,
        _NUMBER + "volatile int* unset = new int; if (*unset == 5) ++*unset; delete unset;",
    ),
    "allocation not checked": Plant(
        "python/object.cpp",
        "  if (object == nullptr) throw Error::pending();\n  return Ref(object);",
        "  Py_REFCNT(object);\n  return Ref(object);",
    ),
}


def plant(name: str, build: Path, folder: Path) -> Path:
    """A copy of the files in `build`, a build folder of the sound tree, with this fault; where it
    is."""
    fault = PLANTS[name]
    text = (_SOURCES / fault.file).read_text()
    if text.count(fault.old) != 1:
        raise ValueError(f"{fault.file} has no single place for: {name}")
    shutil.copytree(build / "tandrel", folder / "tandrel")
    source, compiled = folder / Path(fault.file).name, folder / "planted.o"
    source.write_text(text.replace(fault.old, fault.new))
    *compilations, link = subprocess.check_output(
        ["ninja", "-C", str(build), "-t", "commands", _FILE], text=True
    ).splitlines()[-100:]
    sound = str(_SOURCES / fault.file)
    compilation = next(line for line in compilations if line.endswith(f" -c {sound}"))
    replaced = re.search(r" -o (\S+)", compilation)
    assert replaced is not None
    compilation = compilation.replace(sound, str(source)).replace(replaced[1], str(compiled))
    target = str(folder / _FILE)
    link = re.sub(r" -o \S+", f" -o {target}", link.replace(replaced[1], str(compiled)))
    quietly("sh", "-c", f"{compilation} -w", cwd=build)
    quietly("sh", "-c", link, cwd=build)
    return folder
