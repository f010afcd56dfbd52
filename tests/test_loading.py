"""How the module loads: its imports, its refusals, once in a process."""

import importlib
import json
import re
from pathlib import Path

import pytest
from harness.places import BUILD, SEARCH_PATH
from support.children import run

MODULE_FILE = BUILD / "tandrel" / "gui" / "sketcher.abi3.so"
ALREADY = "Module 'sketcher' has already been imported. Re-initialisation is not supported."
SECOND_INTERPRETER = (
    "Interpreter change detected - this module can only be loaded into one interpreter "
    "per process."
)
IMPORTED = "copy math tkinter tkinter.ttk typing numpy tandrel.sketch".split()
IMPORTED += ["tandrel.gui.i18n", "tandrel.gui.widgets"]


# Everything that the module imports, as files that do as little as possible.
SMALLEST = {
    "numpy.py": "",
    "tandrel/sketch.py": "",
    "tandrel/gui/i18n.py": "class N_(str): pass\ndef tr(text): raise RuntimeError(text)\n",
    "tandrel/gui/widgets.py": "PAL = {}\nForm = Tooltip = num_text = px = units = None\n",
}


@pytest.fixture
def smallest(tmp_path):
    """A search path on which the module finds the smallest neighbours possible."""
    for name, text in SMALLEST.items():
        file = tmp_path / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
    return (tmp_path, BUILD)


# --- imports


def test_imports_come_in_their_order(smallest):
    before, order = run(
        f"""
        import sys
        sys.path[:0] = {[str(path) for path in smallest]!r}
        names = {IMPORTED!r}
        before = [name for name in names if name in sys.modules]
        order = []

        class Watch:
            @staticmethod
            def find_spec(name, path=None, target=None):
                if name in names:
                    order.append(name)

        sys.meta_path.insert(0, Watch)
        import tandrel.gui.sketcher
        import json
        print(json.dumps([before, order]))
        """,
        "-I",
        "-S",
    )
    assert before == []
    assert order == IMPORTED


def test_texts_of_the_tables_are_marked_and_not_translated_and_keys_are_neither(smallest):
    unmarked, count, keys = run(
        """
        import json
        import tandrel.gui.sketcher as m

        rows = [row for rows in m.FIELDS.values() for row in rows]
        texts = [label for _, label in m.TOOLS] + [label for _, label, _ in rows]
        texts += [*m.TOOL_TIPS.values(), *m.TYPE_LABEL.values()]
        keys = [key for key, _ in m.TOOLS] + [key for key, _, _ in rows]
        keys += [*m.TOOL_TIPS, *m.FIELDS, *m.TYPE_LABEL]
        unmarked = [text for text in texts if type(text) is not m.N_]
        print(json.dumps([unmarked, len(texts), sorted({type(key).__name__ for key in keys})]))
        """,
        paths=smallest,
    )
    assert unmarked == []
    assert count > 30
    assert keys == ["str"]


def test_module_loads_without_a_display(smallest, monkeypatch):
    monkeypatch.delenv("DISPLAY")
    assert run("import tandrel.gui.sketcher; print(1)", paths=smallest) == 1


def test_failed_initialisation_can_be_tried_again(smallest, any_interpreter):
    outcomes, works = run(
        """
        import importlib, json, sys

        NAME = "tandrel.gui.sketcher"
        outcomes = []

        def attempt():
            try:
                importlib.import_module(NAME)
            except BaseException as error:
                outcomes.append([type(error).__name__, str(error), NAME in sys.modules])
            else:
                outcomes.append("loaded")

        for name in sys.argv[1:]:
            kept = importlib.import_module(name)
            package, _, attribute = name.rpartition(".")
            if package:
                delattr(sys.modules[package], attribute)
            sys.modules[name] = None
            attempt()
            sys.modules[name] = kept
            if package:
                setattr(sys.modules[package], attribute, kept)
        names = {"tandrel.gui.i18n": "N_ tr", "tandrel.gui.widgets": "PAL Form Tooltip"}
        names["tandrel.gui.widgets"] += " num_text px units"
        names["typing"] = "Any Dict List Optional Sequence Tuple"
        for module, text in names.items():
            for name in text.split():
                kept = vars(sys.modules[module]).pop(name)
                attempt()
                setattr(sys.modules[module], name, kept)
        tkinter, i18n = sys.modules["tkinter"], sys.modules["tandrel.gui.i18n"]
        for module, name, other in ((tkinter, "Toplevel", None), (i18n, "N_", 5)):
            kept = getattr(module, name)
            setattr(module, name, other)
            attempt()
            setattr(module, name, kept)
        attempt()
        module = sys.modules[NAME]
        works = [module.SketchEditor.__mro__[1] is tkinter.Toplevel, module.TOOLS[0][0]]
        works += [module.describe.__name__, module.PAL, module.tk is tkinter]
        print(json.dumps([outcomes, works]))
        """,
        interpreter=any_interpreter,
        paths=smallest,
        arguments=IMPORTED,
    )
    assert outcomes.pop() == "loaded"
    assert works == [True, "select", "describe", {}, True]
    assert not any(present for _, _, present in outcomes)
    missing_modules, missing_names, rest = outcomes[:9], outcomes[9:-2], outcomes[-2:]
    assert {kind for kind, *_ in missing_modules} == {"ModuleNotFoundError"}
    halted = [re.fullmatch(r"import of (\S+) halted;.*", m).group(1) for _, m, _ in missing_modules]
    assert halted == IMPORTED
    assert [kind for kind, *_ in missing_names] == ["ImportError"] * 14
    expected = "N_ tr PAL Form Tooltip num_text px units Any Dict List Optional Sequence Tuple"
    assert [re.search(r"cannot import name '(\w+)'", m).group(1) for _, m, _ in missing_names] == (
        expected.split()
    )
    assert [kind for kind, *_ in rest] == ["TypeError", "TypeError"]


def test_failed_initialisation_keeps_nothing(smallest):
    left = run(
        """
        import gc, json, sys
        import numpy, tandrel.gui.widgets

        del tandrel.gui.widgets.units
        for _ in range(3):
            try:
                import tandrel.gui.sketcher
            except ImportError:
                pass
        gc.collect()
        names = [d.get("__name__") for d in gc.get_objects() if type(d) is dict]
        print(json.dumps(names.count("tandrel.gui.sketcher")))
        """,
        paths=smallest,
    )
    assert left == 0


def test_what_is_kept_of_a_failed_load_is_an_error_to_use():
    """Its function and its class; the next load succeeds."""
    outcomes = run(
        """
        import json, sys, tkinter, types

        kept, outcomes = [], []

        def refuse(cls, **_):
            kept.append((cls, sys.modules["tandrel.gui.sketcher"].describe))
            raise ValueError("no subclass today")

        def attempt(call):
            try:
                outcomes.append(call())
            except (NameError, AttributeError, SystemError, ValueError) as error:
                outcomes.append(type(error).__name__)

        def load():
            from tandrel.gui import sketcher
            return sketcher.describe({"type": "circle", "r": 0.5})

        tkinter.Toplevel.__init_subclass__ = classmethod(refuse)
        attempt(load)
        editor_class, describe = kept[0]
        attempt(lambda: describe({"type": "circle"}))
        attempt(lambda: editor_class.fit(object()))
        damaged = types.SimpleNamespace(sk={"entities": [{}]}, _ok=print)
        attempt(lambda: editor_class._extent(damaged))
        del tkinter.Toplevel.__init_subclass__
        attempt(load)
        print(json.dumps(outcomes))
        """,
        "-X",
        "faulthandler",
        paths=SEARCH_PATH,
    )
    expected = ["ValueError", "NameError", "AttributeError", "SystemError", "diameter 1000 mm"]
    assert outcomes == expected


def test_error_of_a_neighbour_passes_and_the_next_try_loads(smallest):
    (smallest[0] / "tandrel" / "sketch.py").write_text(
        "import sys\nif not hasattr(sys, 'ready'):\n    raise ZeroDivisionError('not yet')\n"
    )
    outcome = run(
        """
        import json, sys
        try:
            import tandrel.gui.sketcher
        except ZeroDivisionError as error:
            outcome = [str(error)]
        sys.ready = True
        import tandrel.gui.sketcher
        print(json.dumps(outcome + [tandrel.gui.sketcher.SNAP_PX]))
        """,
        paths=smallest,
    )
    assert outcome == ["not yet", 9]


# --- once per process


def test_second_initialisation_is_refused(smallest, any_interpreter):
    outcomes, asked, same = run(
        """
        import importlib.util, json, sys
        import tandrel.gui.sketcher as first

        before = dict(vars(first))
        asked = []

        class Watch:
            @staticmethod
            def find_spec(name, path=None, target=None):
                asked.append(name)

        spec = importlib.util.find_spec("tandrel.gui.sketcher")
        sys.meta_path.insert(0, Watch)
        sys.modules["numpy"] = sys.modules["tandrel.sketch"] = None
        outcomes = []
        for _ in range(2):
            try:
                spec.loader.exec_module(importlib.util.module_from_spec(spec))
            except BaseException as error:
                outcomes.append([type(error).__name__, str(error)])
        del sys.modules["tandrel.gui.sketcher"]
        try:
            import tandrel.gui.sketcher
        except BaseException as error:
            outcomes.append([type(error).__name__, str(error)])
        same = vars(first) == before and first.SketchEditor._moved({"type": ""}, (0, 0))
        print(json.dumps([outcomes, asked, same]))
        """,
        interpreter=any_interpreter,
        paths=smallest,
    )
    assert outcomes == [["RuntimeError", ALREADY]] * 3
    assert asked == ["tandrel.gui.sketcher"]
    assert same == {"type": ""}


def test_reloading_changes_nothing(smallest, any_interpreter):
    outcome = run(
        """
        import importlib, json
        import tandrel.gui.sketcher as module

        module.units = "replaced"
        del module.SNAP_PX
        before = dict(vars(module))
        again = importlib.reload(module)
        kept = all(vars(module)[name] is value for name, value in before.items()
                   if not name.startswith("__"))
        print(json.dumps([again is module, kept, sorted(vars(module)) == sorted(before)]))
        """,
        interpreter=any_interpreter,
        paths=smallest,
    )
    assert outcome == [True, True, True]


IN_SUBINTERPRETER = """
import json, sys
sys.path[:0] = {paths!r}
import tandrel.gui
asked = []

class Watch:
    @staticmethod
    def find_spec(name, path=None, target=None):
        asked.append(name)

sys.meta_path.insert(0, Watch)
try:
    import tandrel.gui.sketcher
except BaseException as error:
    outcome = [type(error).__name__, str(error), asked]
else:
    outcome = ["loaded"]
with open({answer!r}, "w") as file:
    json.dump(outcome, file)
"""
CREATE_SUBINTERPRETER = """
try:
    import _interpreters as interpreters

    def create(isolated):
        return interpreters.create("isolated" if isolated else "legacy")
except ImportError:
    import _xxsubinterpreters as interpreters

    def create(isolated):
        return interpreters.create(isolated=isolated)
"""


def load_in_subinterpreter(tmp_path, interpreter, isolated):
    """Load the module, then try to load it into a second interpreter of the same process."""
    answer = tmp_path / "answer.json"
    inner = IN_SUBINTERPRETER.format(paths=[str(BUILD)], answer=str(answer))
    run(
        f"""
{CREATE_SUBINTERPRETER}
import sys
from support import arrays
sys.modules["numpy"] = arrays
from support import neighbours
neighbours.install_modules()
import tandrel.gui.sketcher as module
for _ in range(2):
    assert interpreters.run_string(create({isolated}), {inner!r}) is None
    assert module.describe({{"type": ""}}) == "0 corners"
print(1)
""",
        interpreter=interpreter,
    )
    return json.loads(answer.read_text())


@pytest.mark.parametrize("isolated", [False, True], ids=["legacy", "isolated"])
def test_second_interpreter_is_refused(tmp_path, any_interpreter, isolated):
    outcome = load_in_subinterpreter(tmp_path, any_interpreter, isolated)
    assert outcome == ["ImportError", SECOND_INTERPRETER, ["tandrel.gui.sketcher"]]


def test_main_interpreter_is_refused_after_another_has_loaded_it(smallest, tmp_path):
    for name in ("tkinter/__init__.py", "tkinter/ttk.py"):
        (tmp_path / name).parent.mkdir(exist_ok=True)
        (tmp_path / name).write_text("class Toplevel: pass\n")
    answer = tmp_path / "answer.json"
    paths = [str(path) for path in smallest]
    inner = IN_SUBINTERPRETER.format(paths=paths, answer=str(answer))
    outcome = run(
        f"""
{CREATE_SUBINTERPRETER}
import json, sys
sys.path[:0] = {paths!r}
other = create(False)
interpreters.run_string(other, {inner!r})
outcomes = []
for _ in range(2):
    try:
        import tandrel.gui.sketcher
    except BaseException as error:
        outcomes.append([type(error).__name__, str(error)])
    if other is not None:
        interpreters.destroy(other)
        other = None
print(json.dumps(outcomes))
""",
    )
    assert json.loads(answer.read_text()) == ["loaded"]
    assert outcome == [["ImportError", SECOND_INTERPRETER]] * 2


def test_module_is_found_beside_the_application(sketcher):
    assert Path(sketcher.__file__).resolve() == MODULE_FILE
    assert importlib.util.find_spec("tandrel.gui.sketcher").origin == sketcher.__file__
