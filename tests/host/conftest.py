"""What the tests of the application share."""

import copy
import math
import os
import shutil
import subprocess
from contextlib import ExitStack
from functools import lru_cache
from pathlib import Path
from tkinter import filedialog

import pytest
import tandrel.gui
from demo.draughtsman import Draughtsman
from harness.display import x_server
from harness.places import HOST
from harness.user import play
from support.application import Person, shown
from support.events import Send
from support.roots import close_root, open_root
from support.shapes import document, sketch
from tandrel import storage
from tandrel.application import progress
from tandrel.application.recovery import Recovery
from tandrel.application.session import Session
from tandrel.application.settings import Settings
from tandrel.application.window import App
from tandrel.gui import i18n, theme, widgets

LOCALE = Path(i18n.__file__).parent / "locale"


@pytest.fixture(scope="session")
def compiled(tmp_path_factory):
    """A folder with every catalogue, compiled."""
    folder = tmp_path_factory.mktemp("compiled")
    for source in LOCALE.glob("*.po"):
        target = folder / "locale" / source.stem / "LC_MESSAGES" / "tandrel.mo"
        target.parent.mkdir(parents=True)
        subprocess.run(["msgfmt", "--check-format", "-o", target, source], check=True)
    return folder


@pytest.fixture
def catalogues(compiled, monkeypatch):
    """The package finds the compiled catalogues, whatever the build has made."""
    monkeypatch.setattr(tandrel.gui, "__path__", [str(compiled)])


@pytest.fixture(autouse=True)
def as_at_start(tmp_path_factory, monkeypatch):
    """Millimetres, English and light colours, before and after each test; an empty home.

    Nothing takes so long that a window says so, however busy the machine is.
    """
    home = tmp_path_factory.mktemp("home")
    for variable, folder in (("XDG_CONFIG_HOME", "config"), ("XDG_STATE_HOME", "state")):
        monkeypatch.setenv(variable, str(home / folder))
    monkeypatch.setattr(progress, "PATIENCE_SECONDS", math.inf)

    def begin():
        widgets.set_units("mm")
        i18n.set_language("en")
        theme.use_palette("light")

    begin()
    yield
    begin()


@pytest.fixture(scope="session")
def screen_of():
    """screen_of(width, height, dpi=96, window_manager=False): the name of such a screen.

    They all stay till the end: Tk never leaves a server that it knows.
    """
    with ExitStack() as servers:

        @lru_cache(maxsize=None)
        def screen(width, height, dpi=96, window_manager=False):
            return servers.enter_context(x_server(width, height, window_manager, dpi))

        yield screen


@pytest.fixture
def large_root(screen_of):
    """A main window on a screen of twice the usual resolution."""
    window = open_root(screen_of(2560, 2048, dpi=192))
    yield window
    close_root(window)


@pytest.fixture
def small_root(screen_of):
    """A main window on a screen without the room for what its resolution asks for."""
    window = open_root(screen_of(1024, 768, dpi=192))
    yield window
    close_root(window)


@pytest.fixture
def part(tmp_path):
    """A copy of the flange."""
    return Path(shutil.copy(HOST / "parts" / "flange.json", tmp_path))


@pytest.fixture
def part_of(tmp_path):
    """part_of(*entities, name): the file of a part with these shapes."""

    def write(*entities, name="part"):
        path = tmp_path / f"{name}.json"
        storage.write(path, document(*entities, name=name))
        return path

    return write


@pytest.fixture
def start(request, catalogues):
    """start(path, root): the application's window, shown; on the shared root unless told."""

    def open_window(path=None, root=None):
        root = root or request.getfixturevalue("root")
        root.geometry("")
        widgets.install(root)
        path = None if path is None else os.fspath(path)
        started = App(root, Session(Recovery()), Settings.load(), path)
        shown(started)
        return started

    return open_window


@pytest.fixture
def habit(open_editor, root):
    """habit(cls, *entities): a user's hands on an editor with some of the application's habits."""

    def begin(cls, *entities, **arguments):
        widgets.install(root)
        editor = open_editor(copy.deepcopy(sketch(*entities)), cls, **arguments)
        editor.geometry("900x700")
        editor.update()
        return Send(editor)

    return begin


@pytest.fixture
def picks(monkeypatch):
    """picks(path): what the user picks in the file dialogs to come; gives what they are asked."""

    def pick(path):
        asked = []
        for name in ("askopenfilename", "asksaveasfilename"):
            monkeypatch.setattr(
                filedialog, name, lambda **options: asked.append(options) or os.fspath(path)
            )
        return asked

    return pick


@pytest.fixture
def acted(managed_display, start, tmp_path):
    """acted(script, path): plays script(app, person) at the application until it ends."""

    def act(script, path=None):
        root = open_root(managed_display)
        app = start(path, root=root)
        play(root, script(app, Person(app, managed_display)), tmp_path / "failure.png")

    return act


@pytest.fixture
def hands(acted, part, tmp_path):
    """hands(script): plays script(draughtsman) at the application on the flange."""

    def play_out(script):
        acted(lambda app, person: script(Draughtsman(app, person, tmp_path)), part)

    return play_out
