"""The display, the module and the windows that tests share."""

import copy
import gc
import importlib
import os
import sys
from pathlib import Path

import pytest
from hypothesis import HealthCheck, settings

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT))

from harness.places import SEARCH_PATH  # noqa: E402

sys.path[:0] = SEARCH_PATH

from harness.display import x_server  # noqa: E402
from support import neighbours as scripted  # noqa: E402
from support.desk import Desk  # noqa: E402
from support.events import Send, settle  # noqa: E402
from support.interpreters import VERSIONS, interpreter_of  # noqa: E402
from support.roots import close_root, open_root  # noqa: E402
from support.types import CARDS  # noqa: E402

# What is true doesn't depend on how busy the machine is, nor on how large examples become.
# Nor on chance: the same examples each time. `--hypothesis-profile=others` tries others.
calm = settings(
    deadline=None,
    suppress_health_check=[HealthCheck.too_slow, HealthCheck.data_too_large],
)
settings.register_profile("others", calm)
settings.register_profile("sketches", calm, derandomize=True)
settings.load_profile("sketches")


@pytest.fixture(scope="session", autouse=True)
def display():
    """An X server for this run, without a window manager; its name, which DISPLAY also holds."""
    with x_server(1280, 1024) as name:
        before = os.environ.get("DISPLAY")
        os.environ["DISPLAY"] = name
        yield name
        if before is None:
            del os.environ["DISPLAY"]
        else:
            os.environ["DISPLAY"] = before


@pytest.fixture(scope="session")
def managed_display():
    """The name of a second X server, on which a window manager places and decorates windows."""
    with x_server(1280, 1024, window_manager=True) as name:
        yield name


@pytest.fixture(scope="session")
def sketcher():
    """The module."""
    return importlib.import_module("tandrel.gui.sketcher")


@pytest.fixture(params=VERSIONS)
def interpreter(request):
    """Each of the other versions of the interpreter that is there."""
    return interpreter_of(request.param)


@pytest.fixture(params=["this", *VERSIONS])
def any_interpreter(request):
    """This interpreter, and each of the other versions that is there."""
    return sys.executable if request.param == "this" else interpreter_of(request.param)


@pytest.fixture(params=CARDS, ids=lambda card: card.name)
def card(request):
    """Each type of shapes, by its card."""
    return request.param


@pytest.fixture
def neighbours(monkeypatch, sketcher):
    """Scripted stand-ins for the neighbours of the module, by the names that it imports."""
    return scripted.replace(monkeypatch, sketcher)


@pytest.fixture(scope="module")
def only_new_garbage():
    """What is there before a module's tests isn't looked through each time they collect."""
    gc.collect()
    gc.freeze()
    yield
    gc.unfreeze()


@pytest.fixture
def millimetres_in_english():
    """The stand-in application shows millimetres and English, and after the test what it did."""
    from tandrel.gui import i18n, widgets

    before = widgets.units().name, i18n.language()
    widgets.set_units("mm")
    i18n.set_language("en")
    yield
    widgets.set_units(before[0])
    i18n.set_language(before[1])


@pytest.fixture
def root(display):
    """A main window for one test, which takes the errors that it expects out of `errors`."""
    window = open_root()
    yield window
    close_root(window)


@pytest.fixture
def managed_root(managed_display):
    """A main window for one test under a window manager."""
    window = open_root(managed_display)
    yield window
    close_root(window)


@pytest.fixture
def open_editor(request, sketcher):
    """Opens editors: open_editor(sketch, cls=SketchEditor, parent=root, **arguments of the editor).

    They end with their main window.
    """

    def open_one(sketch=None, cls=None, parent=None, **kwargs):
        parent = parent or request.getfixturevalue("root")
        editor = (cls or sketcher.SketchEditor)(parent, sketch, **kwargs)
        settle(editor, lambda: editor.canvas.winfo_width() > 1)
        return editor

    return open_one


@pytest.fixture
def select(open_editor):
    """Opens editors on these entities with one selected, the first unless told otherwise."""

    def open_selected(*entities, index=0, **arguments):
        editor = open_editor({"entities": list(entities)}, **arguments)
        editor.select(index)
        editor.update()
        return editor

    return open_selected


@pytest.fixture
def send():
    """The user's hands on an editor's canvas: send(editor).press(x, y) ..."""
    return Send


@pytest.fixture
def desk(open_editor, send):
    """Opens an editor with its user: desk(sketch, **arguments of the editor)."""

    def open_one(sketch=None, **kwargs):
        editor = open_editor(copy.deepcopy(sketch), **kwargs)
        return Desk(editor, send(editor))

    return open_one
