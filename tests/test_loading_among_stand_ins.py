"""The module loads as any module of Python does, whatever stands in for its neighbours."""

import pytest
from support.children import run

LOADED = """
import json, sys, types
from unittest.mock import MagicMock
from support.neighbours import *
from support.stand_ins import *

stage = Stage()
stage.install()
{}
import tandrel.gui.sketcher as module
print(json.dumps({}))
"""


def loaded(prepare, answer):
    """A value after the module was loaded in a process that was prepared for it."""
    return run(LOADED.format(prepare, answer))


# --- imports


NO_ATTRIBUTE = "del stage.tk.ttk; stage.tk.__class__ = types.ModuleType\n"
# What a process is prepared with, and what must be true of the module.
FOUND = {
    "an attribute of tkinter will do": (
        "",
        "'tkinter.ttk' not in sys.modules and module.ttk is stage.ttk",
    ),
    "an attribute wins over the table of modules": (
        "sys.modules['tkinter.ttk'] = object()\n"
        "import tandrel; tandrel.sketch = other = object()",
        "module.ttk is stage.ttk and module.S is other",
    ),
    "without an attribute the table of modules serves": (
        NO_ATTRIBUTE + "sys.modules['tkinter.ttk'] = other = object()",
        "module.ttk is other and module.tk is stage.tk",
    ),
    "what a package has, with one import for each name": (
        "import builtins; real, asked = builtins.__import__, []\n"
        "builtins.__import__ = lambda name, *rest: asked.append(name) or real(name, *rest)",
        "asked.count('tandrel.gui.widgets') == len('PAL Form Tooltip num_text px units'.split())",
    ),
    "imported modules themselves come from the table": (
        "import tandrel.gui; tandrel.gui.widgets = tandrel.gui.i18n = object()\n"
        "import numpy; sys.modules['numpy'] = other = types.ModuleType('numpy')",
        "module.np is other and module.px is stage.px and module.tr is stage.tr",
    ),
}


@pytest.mark.parametrize("prepare, holds", FOUND.values(), ids=FOUND)
def test_imports_find(prepare, holds):
    assert loaded(prepare, holds) is True


def test_without_either_it_is_imported_from_the_package(tmp_path):
    (tmp_path / "ttk.py").write_text("Frame = 'found'\n")
    prepare = f"{NO_ATTRIBUTE}stage.tk.__path__ = [{str(tmp_path)!r}]"
    assert loaded(prepare, "module.ttk.Frame") == "found"


def test_nowhere_to_be_found_is_an_import_error():
    code = """
import json, types, sys
from support.stand_ins import *

stage = Stage()
stage.install()
del stage.tk.ttk
stage.tk.__class__ = types.ModuleType
try:
    import tandrel.gui.sketcher
except ImportError as error:
    print(json.dumps(str(error).partition(" (")[0]))
"""
    assert run(code) == "cannot import name 'ttk' from 'tkinter'"


# --- the class


def test_the_metaclass_of_the_base_makes_the_class():
    prepare = """
made = []

class Meta(type):
    @classmethod
    def __prepare__(meta, name, bases, **options):
        made.append([name, [base.__name__ for base in bases], options])
        return {"prepared": True}

    def __new__(meta, name, bases, members):
        made.append([name, members["prepared"], members["__qualname__"]])
        return super().__new__(meta, name, bases, members)

class Toplevel(metaclass=Meta):
    def __init_subclass__(cls):
        made.append("subclass")

made.clear()
stage.tk.Toplevel = Toplevel
"""
    answer = "[made, type(module.SketchEditor) is Meta, module.SketchEditor.prepared]"
    made, is_made_by_it, prepared = loaded(prepare, answer)
    assert made == [
        ["SketchEditor", ["Toplevel"], {}],
        ["SketchEditor", True, "SketchEditor"],
        "subclass",
    ]
    assert is_made_by_it and prepared


def test_a_base_that_names_its_classes():
    prepare = """
class Toplevel:
    pass

class Alias:
    def __mro_entries__(self, bases):
        return (Toplevel,)

stage.tk.Toplevel = alias = Alias()
"""
    answer = "[module.SketchEditor.__bases__ == (Toplevel,), "
    answer += "module.SketchEditor.__orig_bases__ == (alias,)]"
    assert loaded(prepare, answer) == [True, True]


@pytest.mark.parametrize(
    "prepare",
    [
        "sys.modules['tkinter'] = MagicMock()",
        "sys.modules['tkinter'] = MagicMock(); sys.modules['tkinter.ttk'] = MagicMock()",
        "sys.modules['tkinter'] = MagicMock(Toplevel=type('Toplevel', (), {}))",
        "sys.modules['tkinter'] = types.SimpleNamespace(ttk=None, Toplevel=MagicMock())",
    ],
)
def test_a_mock_of_tkinter(prepare):
    answer = """[
        module.TOOLS[0], list(module.FIELDS), module.TYPE_LABEL["slot"], module.SNAP_PX,
        module.describe(rectangle()), module.describe(polygon()),
    ]"""
    assert loaded(prepare, answer) == [
        ["select", "Select and move"],
        ["rectangle", "circle", "regular", "slot", "polygon"],
        "Slot",
        9,
        "2000 mm x 1000 mm",
        "<3 corners>",
    ]


def test_mocks_of_all_neighbours():
    prepare = """
for name in ("tkinter", "tandrel.sketch", "tandrel.gui.i18n", "tandrel.gui.widgets", "numpy"):
    sys.modules[name] = MagicMock()
"""
    answer = "[module.TOOLS[0][0], type(module.describe(circle())).__name__, module.SNAP_PX]"
    assert loaded(prepare, answer) == ["select", "MagicMock", 9]
