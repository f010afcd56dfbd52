"""The application's window on a real screen, with the real editor."""

import json
import os
import shutil
import subprocess
import sys
import tkinter as tk
from pathlib import Path
from tkinter import filedialog, messagebox

import numpy as np
import pytest
from demo.places import SEARCH_PATH
from shapely.geometry import Polygon
from support.events import settle
from tandrel import app as application
from tandrel import profile, storage
from tandrel.app import App
from tandrel.gui import i18n, widgets
from tandrel.gui.widgets import PAL

HOST = Path(application.__file__).parents[1]
FLANGE = HOST / "parts" / "flange.json"


@pytest.fixture
def part(tmp_path):
    """A copy of the flange."""
    return Path(shutil.copy(FLANGE, tmp_path))


@pytest.fixture
def start(root, catalogues):
    """start(path): the application's window, shown."""

    def open_window(path=None):
        root.geometry("")
        widgets.install(root)
        started = App(root, None if path is None else str(path))
        settle(root, lambda: started.view.winfo_width() > 100)
        return started

    return open_window


def in_editor(app, act):
    """Press "Edit sketch", act(editor) in the modal dialog, and leave it if it is still open."""
    opened = []

    def look():
        editors = [w for w in app.root.winfo_children() if hasattr(w, "sk")]
        if not editors or app.root.grab_current() is not editors[0]:
            app.root.after(5, look)
            return
        opened.append(editors[0])
        try:
            act(editors[0])
        finally:
            if editors[0].winfo_exists():
                editors[0].destroy()

    app.root.after(5, look)
    app.edit_button.invoke()
    assert opened


def fills(app):
    """The colours of the regions on the canvas, bottom up."""
    view = app.view
    return [view.itemcget(i, "fill") for i in view.find_all() if view.type(i) == "polygon"]


def texts(app):
    view = app.view
    return [view.itemcget(i, "text") for i in view.find_all() if view.type(i) == "text"]


def test_the_window_shows_name_size_and_profile(start, part):
    app = start(part)
    assert app.name.cget("text") == "Mounting flange"
    assert app.size.cget("text") == "140 mm × 100 mm"
    assert app.root.title() == "Mounting flange – tandrel"
    assert texts(app) == ["140 mm", "100 mm"]
    holes = 6 * [PAL["panel"]]
    assert fills(app) == [PAL["accent_soft"], *holes, PAL["accent_soft"], PAL["panel"]]


def test_the_profile_stays_whole_and_in_the_middle(start, part):
    app = start(part)
    app.root.geometry("700x900")
    settle(app.root, lambda: app.view.winfo_height() > 600)
    (plate, *_) = [i for i in app.view.find_all() if app.view.type(i) == "polygon"]
    x1, y1, x2, y2 = app.view.bbox(plate)
    width, height = app.view.winfo_width(), app.view.winfo_height()
    assert x1 > 0 and y1 > 0 and x2 < width and y2 < height
    assert (x1 + x2) / 2 == pytest.approx(width / 2, abs=2)
    assert (y1 + y2) / 2 == pytest.approx(height / 2, abs=2)
    assert (x2 - x1) / (y2 - y1) == pytest.approx(1.4, rel=0.02)


def test_overlapping_shapes_join_and_islands_stay():
    def rectangle(x, y, w, h):
        return {"type": "rectangle", "x": x, "y": y, "w": w, "h": h, "radius": 0.0}

    broken = {"type": "circle", "xc": 0.0, "yc": 0.0, "r": -1.0}
    shapes = [
        rectangle(0, 0, 10, 10),
        rectangle(9, 4, 6, 2),
        rectangle(2, 2, 5, 5),
        broken,
        rectangle(3, 3, 1, 1),
    ]
    area = profile.region({"entities": shapes})
    plate = Polygon([(0, 0), (10, 0), (10, 10), (0, 10)]).union(
        Polygon([(9, 4), (15, 4), (15, 6), (9, 6)])
    )
    hole = Polygon([(2, 2), (7, 2), (7, 7), (2, 7)])
    island = Polygon([(3, 3), (4, 3), (4, 4), (3, 4)])
    assert area.symmetric_difference(plate.difference(hole).union(island)).area < 1e-9
    assert [round(piece.area, 6) for piece in profile.polygons(area)] == [110 - 25, 1]
    assert profile.polygons(profile.region({"entities": [broken]})) == []


@pytest.mark.parametrize(
    "name, size",
    [
        ("cm", "14 cm × 10 cm"),
        ("m", "0.14 m × 0.1 m"),
        ("in", "5.51181 in × 3.93701 in"),
        ("mm", "140 mm × 100 mm"),
    ],
)
def test_units_are_chosen_in_the_menu(start, part, name, size):
    app = start(part)
    before = part.read_bytes()
    app.menus["units"].invoke(list(widgets.SYSTEMS).index(name))
    assert widgets.units().name == name
    assert app.size.cget("text") == size
    assert texts(app) == size.split(" × ")
    assert part.read_bytes() == before


def test_the_language_is_chosen_in_the_menu(start, part):
    app = start(part)
    app.menus["language"].invoke(1)
    settle(app.root, lambda: app.edit_button.cget("text") == "Skizze bearbeiten")
    assert i18n.language() == "de"
    assert app.menus["bar"].entrycget(0, "label") == "Datei"
    assert app.name.cget("text") == "Mounting flange"
    assert app.root.title() == "Mounting flange – tandrel"
    app.menus["language"].invoke(0)
    settle(app.root, lambda: app.edit_button.cget("text") == "Edit sketch")


def test_menus_tell_what_is_in_use(start, part, catalogues):
    widgets.set_units("in")
    i18n.set_language("de")
    app = start(part)
    assert (app.unit_choice.get(), app.language_choice.get()) == ("in", "de")


def test_without_a_file_there_is_nothing_to_edit(start):
    app = start()
    assert app.name.cget("text") == "No part is open"
    assert app.size.cget("text") == ""
    assert app.edit_button.instate(["disabled"])
    assert app.view.find_all() == ()
    app.edit()
    app.save()
    assert app.root.title() == "tandrel"


def test_an_empty_sketch_has_no_size_and_can_be_edited(start, tmp_path):
    path = tmp_path / "new.json"
    storage.write(path, storage.Document("New", {"plane": "XY", "offset": 0.0, "entities": []}))
    app = start(path)
    assert app.size.cget("text") == ""
    assert app.edit_button.instate(["!disabled"])
    in_editor(app, lambda editor: None)


@pytest.mark.parametrize(
    "data, why", [(None, "No such file"), (b"{", "line 1"), (b"[]", "file: expected an object")]
)
def test_a_missing_or_damaged_file_gives_a_message(start, tmp_path, data, why):
    path = tmp_path / "bad.json"
    if data is not None:
        path.write_bytes(data)
    app = start(path)
    assert "bad.json can't be opened" in app.message.cget("text")
    assert why in app.message.cget("text")
    assert app.message.cget("style") == "Warning.TLabel"
    assert app.edit_button.instate(["disabled"])
    assert (path.read_bytes() if path.exists() else None) == data


def test_a_part_stays_open_where_the_next_can_t_be_read(start, part, tmp_path):
    app = start(part)
    app.open(str(tmp_path / "missing.json"))
    assert "missing.json" in app.message.cget("text")
    assert app.path == str(part)
    assert app.name.cget("text") == "Mounting flange"
    app.open(str(part))
    assert app.message.cget("style") == "Muted.TLabel"


def test_the_file_dialog_opens_a_part(start, part, monkeypatch):
    app = start()
    asked = []
    monkeypatch.setattr(filedialog, "askopenfilename", lambda **k: asked.append(k) or str(part))
    app.root.event_generate("<Control-o>")
    assert app.path == str(part)
    monkeypatch.setattr(filedialog, "askopenfilename", lambda **k: asked.append(k) or ())
    app.menus["file"].invoke(0)
    assert app.path == str(part)
    assert [k["initialdir"] for k in asked] == [None, str(part.parent)]


def test_the_editor_gets_the_sketch_its_references_and_a_title(start, part):
    app = start(part)
    seen = {}

    def look(editor):
        seen.update(title=editor.title(), dim=editor.dim, refs=editor.refs)
        seen["same"] = editor.sk == app.document.sketch and editor.sk is not app.document.sketch

    in_editor(app, look)
    assert seen["title"] == "Sketch of Mounting flange"
    assert (seen["dim"], seen["same"]) == (3, True)
    ((name, points),) = seen["refs"]
    assert name == "Blank"
    np.testing.assert_array_equal(
        points, [[-0.08, -0.06], [0.08, -0.06], [0.08, 0.06], [-0.08, 0.06]]
    )


def enlarge_bore(editor):
    editor.select(1)
    editor.vars["r"].set("33")
    editor.apply_props()


def test_ok_saves_the_edited_sketch(start, part):
    app = start(part)
    before = storage.read(part)

    def act(editor):
        enlarge_bore(editor)
        editor.offset.set("5")
        editor.ok()

    in_editor(app, act)
    after = storage.read(part)
    expected = before.sketch
    expected["entities"][1]["r"] = 0.033
    expected["offset"] = 0.005
    assert after.sketch == expected == app.document.sketch
    assert (after.name, after.references) == (before.name, before.references)
    assert app.message.cget("text") == f"Saved: {part}"


def test_ok_without_a_change_leaves_every_number(start, part):
    app = start(part)
    before = storage.read(part)

    def act(editor):
        for i in range(len(editor.sk["entities"])):
            editor.select(i)
            editor.apply_props()
        editor.ok()

    for name in widgets.SYSTEMS:
        widgets.set_units(name)
        in_editor(app, act)
        assert storage.read(part) == before


def test_cancel_leaves_the_file_alone(start, part):
    app = start(part)
    before, shown = part.read_bytes(), app.document
    stamp = part.stat().st_mtime_ns
    in_editor(app, enlarge_bore)
    assert part.read_bytes() == before
    assert part.stat().st_mtime_ns == stamp
    assert app.document == shown


def test_the_sketch_shown_is_not_touched_while_editing(start, part):
    app = start(part)
    before = json.dumps(app.document.sketch)
    seen = []

    def act(editor):
        enlarge_bore(editor)
        seen.append(json.dumps(app.document.sketch))

    in_editor(app, act)
    assert seen == [before]


@pytest.fixture
def full_disk(monkeypatch):
    def fail(*_):
        raise OSError(28, "No space left on device")

    monkeypatch.setattr(os, "replace", fail)
    return monkeypatch


def accept_bore(editor):
    enlarge_bore(editor)
    editor.ok()


def test_an_edit_that_can_t_be_saved_is_kept(start, part, full_disk):
    app = start(part)
    before = part.read_bytes()
    in_editor(app, accept_bore)
    assert app.message.cget("text") == "Not saved: No space left on device"
    assert app.message.cget("style") == "Warning.TLabel"
    assert app.document.sketch["entities"][1]["r"] == 0.033
    assert part.read_bytes() == before
    assert app.root.title().startswith("• ")
    full_disk.undo()
    app.menus["file"].invoke(1)
    assert storage.read(part).sketch["entities"][1]["r"] == 0.033
    assert app.root.title() == "Mounting flange – tandrel"


@pytest.mark.parametrize("answer, leaves", [(None, False), (False, True), (True, True)])
def test_leaving_with_unsaved_work_asks(start, part, full_disk, answer, leaves):
    app = start(part)
    in_editor(app, accept_bore)
    full_disk.undo()
    asked = []
    full_disk.setattr(messagebox, "askyesnocancel", lambda *a, **k: asked.append(a) or answer)
    assert app.may_leave() == leaves
    assert len(asked) == 1
    assert storage.read(part).sketch["entities"][1]["r"] == (0.033 if answer else 0.031)


def test_leaving_stays_where_saving_fails_again(start, part, full_disk):
    app = start(part)
    in_editor(app, accept_bore)
    full_disk.setattr(messagebox, "askyesnocancel", lambda *a, **k: True)
    app.quit()
    assert app.root.winfo_exists()


def test_leaving_without_unsaved_work_doesn_t_ask(start, part, monkeypatch):
    app = start(part)
    monkeypatch.setattr(messagebox, "askyesnocancel", lambda *a, **k: pytest.fail("asked"))
    destroyed = []
    monkeypatch.setattr(app.root, "destroy", lambda: destroyed.append(True))
    app.root.event_generate("<Control-q>")
    assert destroyed == [True]


def run(arguments, display_name):
    search = os.pathsep.join(SEARCH_PATH)
    environment = {**os.environ, "PYTHONPATH": search, "DISPLAY": display_name}
    return subprocess.run(
        [sys.executable, "-m", "tandrel", *arguments],
        env=environment,
        capture_output=True,
        text=True,
        timeout=60,
    )


def test_without_a_display_it_says_so():
    ended = run([str(FLANGE)], "")
    assert ended.returncode == 1
    assert ended.stderr.startswith("tandrel: ")
    assert "Traceback" not in ended.stderr


def test_the_command_line_explains_itself(display):
    ended = run(["--help"], display)
    assert ended.returncode == 0
    assert "FILE" in ended.stdout
    assert run(["a", "b"], display).returncode == 2


def test_the_program_opens_the_file_it_is_given(display, part, monkeypatch):
    started = []
    monkeypatch.setattr(tk.Tk, "mainloop", lambda window: started.append(window))
    monkeypatch.setenv("LANGUAGE", "en")
    assert application.main([str(part)]) == 0
    (window,) = started
    assert window.title() == "Mounting flange – tandrel"
    window.destroy()
