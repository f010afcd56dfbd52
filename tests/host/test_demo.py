"""The X servers that the demonstration starts, and the demonstration itself."""

import json
import math
import os
import subprocess
import sys
from pathlib import Path
from unittest.mock import Mock

import pytest
from demo import run
from demo.drawing import PARTS, flat_bracket
from harness import patience
from harness.display import x_server
from harness.patience import wait_for
from harness.places import ROOT
from PIL import Image
from support.children import printed
from support.events import settle
from tandrel.gui import theme


def servers_here():
    """The X servers that this process runs."""
    children = Path(f"/proc/self/task/{os.getpid()}/children").read_text().split()
    return {child for child in children if Path(f"/proc/{child}/comm").read_text() == "Xvfb\n"}


SIZE = """
import tkinter as tk
root = tk.Tk()
print(root.winfo_screenwidth(), root.winfo_screenheight(), round(root.winfo_fpixels("1i")))
"""


def test_servers_are_apart_as_large_as_asked_and_end_with_their_block():
    display, servers = os.environ.get("DISPLAY"), servers_here()
    with x_server(320, 200) as one, x_server(640, 480, dpi=192) as other:
        sizes = [printed("-c", SIZE, DISPLAY=name).split() for name in (one, other)]
        assert one != other
        assert len(servers_here() - servers) == 2
        assert os.environ.get("DISPLAY") == display
    assert servers_here() == servers
    found = [int(n) for size in sizes for n in size]
    assert found == [320, 200, pytest.approx(96, abs=2), 640, 480, pytest.approx(192, abs=2)]


def test_a_server_ends_with_an_error_too():
    servers = servers_here()
    with pytest.raises(ZeroDivisionError):
        with x_server(320, 200, window_manager=True):
            assert len(servers_here() - servers) == 1
            raise ZeroDivisionError
    assert servers_here() == servers


@pytest.mark.parametrize("managed", [True, False])
def test_windows_are_managed_from_the_start_where_wanted(managed):
    with x_server(320, 200, window_manager=managed) as name:
        environment = {**os.environ, "DISPLAY": name}
        # Answered from a property that only a window manager sets.
        asked = subprocess.run(["xdotool", "get_desktop"], env=environment, capture_output=True)
    assert (asked.returncode == 0) == managed


KILLED = """
import os, signal
from harness import patience
from harness.display import x_server
with x_server(320, 200, window_manager=True):
    print(open(f"/proc/self/task/{os.getpid()}/children").read(), flush=True)
    os.kill(os.getpid(), signal.SIGKILL)
"""


def test_a_server_ends_when_its_program_is_killed():
    environment = {**os.environ, "PYTHONPATH": str(ROOT)}
    ended = subprocess.run([sys.executable, "-c", KILLED], env=environment, stdout=subprocess.PIPE)
    assert ended.returncode == -9
    server, manager = [Path("/proc", child) for child in ended.stdout.decode().split()]
    wait_for(lambda: not server.exists() and not manager.exists(), "both to end")


def test_a_missing_server_program_is_an_error(monkeypatch):
    monkeypatch.setenv("PATH", "")
    with pytest.raises(FileNotFoundError):
        with x_server():
            pass


def test_a_server_that_ends_at_once_is_an_error():
    with pytest.raises(RuntimeError, match="Xvfb ended before it was ready"):
        with x_server(width=-1):
            pass


def test_with_a_display_the_application_opens_a_copy_of_the_part(tmp_path):
    """A copy that the user has changed stays as it is the next time."""
    command = [sys.executable, ROOT / "demo" / "run.py", "--folder", tmp_path]
    copy = tmp_path / run.PART.name
    names = [b"Mounting flange", b"My flange"]
    with x_server(1000, 800) as display_name:
        environment = {**os.environ, "DISPLAY": display_name, "LANGUAGE": "en"}
        for name in names:
            with subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL) as program:
                search = ["xdotool", "search", "--sync", "--name", name]
                subprocess.check_output(search, env=environment, timeout=patience.SECONDS)
                assert program.poll() is None
                program.terminate()
            assert copy.read_bytes() == run.PART.read_bytes().replace(names[0], name)
            copy.write_bytes(copy.read_bytes().replace(*names))


@pytest.fixture(scope="module")
def replayed(tmp_path_factory):
    """The folder in which a replayed session left its results, and what it said."""
    folder = tmp_path_factory.mktemp("run")
    (folder / "home").mkdir()
    places = dict.fromkeys(("HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME"), str(folder / "home"))
    environment = {name: value for name, value in os.environ.items() if name != "DISPLAY"}
    environment.update(places)
    command = [sys.executable, ROOT / "demo" / "run.py", "--folder", folder]
    ended = subprocess.run(command, env=environment, capture_output=True, text=True)
    assert (ended.returncode, ended.stderr) == (0, "")
    return folder, ended.stdout


@pytest.mark.parametrize("part", PARTS)
def test_the_replayed_session_leaves_the_parts_as_they_are_on_the_drawings(replayed, part):
    folder, said = replayed
    drawn = json.loads((folder / f"drawn-{part}.json").read_text())
    expected = json.loads(run.PART.with_stem(part).read_text())
    assert drawn["sketch"] == expected["sketch"]
    assert str(folder / f"drawn-{part}.json") in said


def test_the_replayed_session_uses_every_kind_of_shape():
    parts = [json.loads(run.PART.with_stem(part).read_text()) for part in PARTS]
    kinds = {entity["type"] for part in parts for entity in part["sketch"]["entities"]}
    assert kinds == {"circle", "regular", "slot", "polygon"}


def test_a_bracket_with_four_equal_holes_takes_fifteen_acts():
    assert len(flat_bracket(Mock())) == 15


def test_the_replayed_session_leaves_other_parts_alone_and_keeps_nothing_at_home(replayed):
    """Neither settings nor autosaved work, wherever the user has them."""
    folder, _ = replayed
    assert (folder / "replayed-flange.json").read_bytes() == run.PART.read_bytes()
    assert {path.suffix for path in folder.rglob("*")} == {".json", ".png", ""}
    assert list((folder / "home").iterdir()) == []


def test_the_replayed_session_leaves_pictures(replayed):
    folder, said = replayed
    pictures = list(folder.glob("*.png"))
    assert len(pictures) == 15
    for path in pictures:
        assert str(path) in said
        with Image.open(path) as picture:
            assert min(picture.size) > 400
            assert len(picture.convert("RGB").getcolors(1 << 24)) > 50


def places_of_numbers(value):
    """Where numbers are in lists and dictionaries: (the container, the key)."""
    for key, item in value.items() if isinstance(value, dict) else enumerate(value):
        if isinstance(item, float):
            yield value, key
        elif isinstance(item, (dict, list)):
            yield from places_of_numbers(item)


@pytest.mark.parametrize("part", PARTS)
def test_the_replay_notices_the_smallest_difference(replayed, tmp_path, part):
    folder, _ = replayed
    drawn, expected = folder / f"drawn-{part}.json", run.PART.with_stem(part)
    assert run.fault_in(drawn, expected) == ""
    content = json.loads(expected.read_text())
    changed = tmp_path / "changed.json"
    places = list(places_of_numbers(content["sketch"]))
    assert len(places) > 15
    for container, key in places:
        right = container[key]
        container[key] = math.nextafter(right, math.inf)
        changed.write_text(json.dumps(content))
        assert run.fault_in(drawn, changed)
        container[key] = right
    content["sketch"]["entities"].pop()
    changed.write_text(json.dumps(content))
    assert run.fault_in(drawn, changed)


# -- what the replayed user notices on the way -------------------------------------------------


def painted(shown, canvas, operation, colour):
    """From now on what is shown is painted right and then filled with a colour."""
    paint = getattr(shown, operation)

    def wrong():
        paint()
        for item in canvas.find_all():
            if canvas.type(item) == "polygon":
                canvas.itemconfigure(item, fill=colour)

    setattr(shown, operation, wrong)
    wrong()


@pytest.mark.parametrize("colour, seen", [(None, "material is"), ("accent_soft", "holes look")])
@pytest.mark.parametrize("where", ["window", "editor"])
def test_a_profile_painted_wrong_is_seen(hands, where, colour, seen):
    def script(person):
        fill = theme.PAL[colour] if colour else ""
        if where == "window":
            painted(person.app.view, person.app.view, "repaint", fill)
        else:
            yield from person.open_editor()
            painted(person.editor, person.editor.canvas, "redraw", fill)
        yield from person.see_profile(where)

    with pytest.raises(RuntimeError, match=f"{where}: {seen}"):
        hands(script)


@pytest.mark.parametrize("act", ["press", "click"])
def test_a_press_on_another_point_is_an_error_at_once(hands, monkeypatch, act):
    """The window moves after the user has aimed."""

    def script(person):
        yield from person.open_editor()
        yield from person.choose({"press": "circle", "click": "line"}[act])
        at_once = getattr(person.user, act)

        def late():
            editor = person.editor
            x = editor.winfo_rootx()
            editor.geometry(f"+{editor.winfo_x() + 40}+{editor.winfo_y()}")
            settle(editor, lambda: editor.winfo_rootx() != x)
            at_once()

        monkeypatch.setattr(person.user, act, late)
        try:
            if act == "press":
                yield from person.hold((10, 12), (15, 12))
            else:
                yield from person.place((10, 12))
        finally:
            # The display serves other tests, too.
            person.user.release()

    with pytest.raises(RuntimeError, match="the button reached .* instead of 10 12 mm"):
        hands(script)
