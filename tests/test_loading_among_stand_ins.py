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


def test_an_attribute_of_tkinter_will_do():
    answer = '["tkinter.ttk" in sys.modules, module.ttk is stage.ttk]'
    assert loaded("", answer) == [False, True]


def test_an_attribute_wins_over_the_table_of_modules():
    prepare = "sys.modules['tkinter.ttk'] = object()"
    assert loaded(prepare, "[module.ttk is stage.ttk]") == [True]
    prepare = "import tandrel; tandrel.sketch = other = object()"
    assert loaded(prepare, "[module.S is other]") == [True]


def test_without_an_attribute_the_table_of_modules_serves():
    prepare = (
        "del stage.tk.ttk; stage.tk.__class__ = types.ModuleType\n"
        "sys.modules['tkinter.ttk'] = other = object()"
    )
    assert loaded(prepare, "[module.ttk is other, module.tk is stage.tk]") == [True, True]


def test_without_either_it_is_imported_from_the_package(tmp_path):
    (tmp_path / "ttk.py").write_text("Frame = 'found'\n")
    prepare = (
        "del stage.tk.ttk; stage.tk.__class__ = types.ModuleType\n"
        f"stage.tk.__path__ = [{str(tmp_path)!r}]"
    )
    assert loaded(prepare, "[module.ttk.Frame]") == ["found"]


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


def test_imported_modules_themselves_come_from_the_table():
    prepare = (
        "import tandrel.gui\n"
        "tandrel.gui.widgets = tandrel.gui.i18n = object()\n"
        "import numpy; sys.modules['numpy'] = other = types.ModuleType('numpy')"
    )
    answer = "[module.np is other, module.px is stage.px, module.tr is stage.tr]"
    assert loaded(prepare, answer) == [True, True, True]


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
