"""Menus and keys: each does what it says, says what it can, and waits while something is done."""

import re

import pytest
from support.application import accept_bore, answering, in_editor, labels, state
from support.events import CONTROL, SHIFT
from tandrel import storage
from tandrel.application import menus, progress
from tandrel.application.menus import BAR, Entry
from tandrel.gui import theme
from tandrel.gui.widgets import px
from tandrel.units import SYSTEMS

CAPS_LOCK = 0x2
ENTRIES = {row.operation: row for _, rows in BAR.values() for row in rows if isinstance(row, Entry)}


@pytest.fixture
def performed(start, part, monkeypatch):
    """The window, whose operations only note that they were asked for."""
    app = start(part)
    app.done = []
    for operation in ENTRIES:
        monkeypatch.setattr(app, operation, lambda name=operation: app.done.append(name))
    return app


def test_the_menus_hold_what_people_look_for(start, part):
    app = start(part)
    found = {name: ", ".join(labels(app.menus[name])) for name in ("bar", "file", "edit", "view")}
    assert found == {
        "bar": "File, Edit, View",
        "file": "New, Open…, Open recent, Import drawing…, , Save, Save as…, Export…, "
        "Export contours as they are…, , Quit",
        "edit": "Undo, Redo, , Edit sketch…",
        "view": "Units, Language, Colours, , Fit",
    }


@pytest.mark.parametrize("operation", ENTRIES)
def test_an_entry_does_what_its_key_does(performed, operation):
    app, entry = performed, ENTRIES[operation]
    for name in ("undo", "redo", "save"):
        app.menus.enable(name, True)
    menu = next(app.menus[name] for name, (_, rows) in BAR.items() if entry in rows)
    menu.invoke(labels(menu).index(entry.label))
    assert app.done == [operation]
    shown = menu.entrycget(labels(menu).index(entry.label), "accelerator")
    if not entry.key:
        assert shown == ""
        return
    assert shown == f"Ctrl+{entry.key}"
    shifted = SHIFT if entry.key.startswith("Shift+") else 0
    for lock in (0, CAPS_LOCK):
        app.done.clear()
        state = CONTROL | shifted | lock
        app.root.event_generate("<KeyPress>", keysym=entry.key[-1].lower(), state=state)
        assert app.done == [operation]


def test_redo_has_two_keys(performed):
    performed.root.event_generate("<Control-Shift-Z>")
    performed.root.event_generate("<Control-y>")
    assert performed.done == ["redo", "redo"]


def test_no_two_entries_have_the_same_key():
    keys = [entry.key for entry in ENTRIES.values() if entry.key]
    assert len(set(keys)) == len(keys)


def states(app):
    found = {"undo": "edit", "redo": "edit", "save": "file", "export": "file"}
    return [state(app.menus[m], ENTRIES[name].label) == "normal" for name, m in found.items()]


def test_entries_are_dead_where_they_can_t_act(start, part):
    app = start(part)
    assert states(app) == [False, False, False, True]
    in_editor(app, accept_bore)
    assert states(app) == [True, False, True, True]
    app.perform("undo")
    assert states(app) == [False, True, False, True]
    app.perform("redo")
    app.perform("save")
    assert states(app) == [True, False, False, True]
    app.perform("new")
    assert states(app) == [False, False, True, False]


def test_a_new_language_keeps_what_is_dead(start, part):
    app = start(part)
    in_editor(app, accept_bore)
    app.language_choice.set("de")
    app.perform("change_language")
    app.root.update()
    entries = [app.menus["edit"].entrycget(i, "state") for i in (0, 1)]
    assert entries == ["normal", "disabled"]


def test_keys_wait_while_a_question_is_asked(start, part):
    app = start(part)
    in_editor(app, accept_bore)
    bells = []
    app.root.bell = lambda: bells.append(True)
    asked = answering(app.root, "stay")
    app.root.after(1, lambda: app.root.event_generate("<Control-q>"))
    app.root.after(1, lambda: app.root.event_generate("<Control-z>"))
    app.perform("new")
    assert asked == ["Save the changes to Mounting flange?"]
    assert len(bells) == 2
    assert app.session.can_undo
    app.perform("undo")
    assert not app.session.can_undo


def test_everything_else_waits_while_a_file_opens(start, part, monkeypatch):
    app = start(part)
    bells = []
    app.root.bell = lambda: bells.append(True)
    monkeypatch.setattr(progress, "PATIENCE_SECONDS", 0)
    monkeypatch.setattr(progress, "TURN_SECONDS", 0)
    read = storage.read

    def slowly(path, tick):
        for k in range(5):
            tick(k / 5)
            app.perform("new")
            app.root.tk.call(*app.root.tk.splitlist(app.root.protocol("WM_DELETE_WINDOW")))
        return read(path, tick)

    monkeypatch.setattr(storage, "read", slowly)
    app.menus["recent"].invoke(0)
    assert app.root.winfo_exists()
    assert len(bells) == 10
    assert app.session.path == str(part)


def test_recent_files_are_told_by_name_and_folder(start, part, monkeypatch):
    monkeypatch.setenv("HOME", str(part.parent.parent))
    app = start(part)
    assert labels(app.menus["recent"]) == [f"flange.json  (~/{part.parent.name})"]
    monkeypatch.setenv("HOME", str(part.parent))
    app.refresh()
    assert labels(app.menus["recent"]) == ["flange.json  (~)"]
    monkeypatch.setenv("HOME", str(part.parent)[:-1])
    app.refresh()
    assert labels(app.menus["recent"]) == [f"flange.json  ({part.parent})"]


def test_a_recent_file_far_away_makes_no_menu_wider_than_the_screen(start):
    app = start()
    app.settings.remember(f"/begin{'/folder' * 40}/end/{'name' * 40}.json")
    app.refresh()
    (label,) = labels(app.menus["recent"])
    assert re.fullmatch(r"name.*….*name\.json  \(/begin.*….*/end\)", label)
    assert len(label) < 110


def test_what_is_chosen_has_a_tick_as_large_as_the_screen_needs(start, large_root):
    app = start(root=large_root)
    for name in ("units", "language", "palette"):
        menu = app.menus[name]
        for entry in range(menu.index("end") + 1):
            signs = [menu.entrycget(entry, option) for option in ("image", "selectimage")]
            assert signs == ["tandrel-none", "tandrel-on"]
            assert not large_root.getboolean(menu.entrycget(entry, "indicatoron"))
    sizes = [large_root.tk.call("image", "height", sign) for sign in signs]
    assert sizes == 2 * [px(15)]


def test_every_unit_and_palette_has_a_label():
    assert menus.UNITS.keys() == SYSTEMS.keys()
    assert menus.PALETTES.keys() == theme.PALETTES.keys()
