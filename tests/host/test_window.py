"""The application's window on a real screen, with the real editor: what it shows and edits."""

import copy
from dataclasses import replace

import numpy as np
import pytest
from support.application import accept_bore, choose, fills, in_editor, outlines, texts
from support.canvas import shapes
from support.events import settle
from support.neighbours import circle
from support.shapes import PAIR
from support.ticks import stop
from tandrel import profile, storage
from tandrel.application.settings import Settings
from tandrel.gui import i18n, widgets
from tandrel.gui.widgets import PAL


def test_the_window_shows_name_measures_and_profile(start, part):
    app = start(part)
    assert app.name.cget("text") == "Mounting flange"
    assert app.size.cget("text") == "140 mm × 100 mm"
    square = widgets.units().fmt(profile.area(app.session.document.sketch), "area")
    assert app.area.cget("text") == f"Area {square}"
    assert app.contours.cget("text") == "Contours: 9"
    assert app.root.title() == "Mounting flange – tandrel"
    assert app.message.cget("text") == str(part)
    assert texts(app.view) == ["140 mm", "100 mm"]
    soft, hole = PAL["accent_soft"], PAL["panel"]
    assert fills(app.view) == [soft, hole, soft, *6 * [hole]], "what lies inside lies over the rest"


def test_a_hole_in_two_plates_is_a_hole(start, part_of):
    app = start(part_of(*PAIR))
    assert fills(app.view) == [PAL["accent_soft"], PAL["panel"]]
    assert app.contours.cget("text") == "Contours: 2"

    def look(editor):
        assert shapes(editor.canvas)[-1].has(fill=PAL["panel"])

    in_editor(app, look)


def test_the_profile_stays_whole_and_in_the_middle(start, part):
    app = start(part)
    app.root.geometry("700x900")
    settle(app.root, lambda: app.view.winfo_height() > 600)
    app.root.update_idletasks()
    plate = outlines(app.view)[0]
    room = np.array([app.view.winfo_width(), app.view.winfo_height()])
    assert (plate.min(axis=0) > 0).all() and (plate.max(axis=0) < room).all()
    middle = (plate.min(axis=0) + plate.max(axis=0)) / 2
    assert middle == pytest.approx(room / 2, abs=2)
    width, height = np.ptp(plate, axis=0)
    assert width / height == pytest.approx(1.4, rel=0.02)
    assert max(width / room[0], height / room[1]) > 0.7


def test_outlines_lie_where_the_sketch_has_them(start, part):
    app = start(part)
    plate, *holes = outlines(app.view)
    scale = np.ptp(plate[:, 0]) / 0.14

    def middle(ring):
        return (ring.min(axis=0) + ring.max(axis=0)) / 2

    drawn = {tuple(np.round((middle(ring) - middle(plate)) / scale, 6)) for ring in holes}
    circles = [e for e in app.session.document.sketch["entities"] if e["type"] == "circle"]
    assert {(e["xc"], -e["yc"]) for e in circles} <= drawn


@pytest.mark.parametrize(
    "label, name, size",
    [
        ("Centimetres (cm)", "cm", "14 cm × 10 cm"),
        ("Metres (m)", "m", "0.14 m × 0.1 m"),
        ("Inches (in)", "in", "5.51181 in × 3.93701 in"),
        ("Millimetres (mm)", "mm", "140 mm × 100 mm"),
    ],
)
def test_units_are_chosen_in_the_menu(start, part, label, name, size):
    app = start(part)
    before = part.read_bytes()
    choose(app.menus["units"], label)
    assert widgets.units().name == name
    assert app.message.cget("text") == "", "it was the path until the next action"
    assert app.size.cget("text") == size
    assert texts(app.view) == size.split(" × ")
    area = profile.area(app.session.document.sketch)
    assert app.area.cget("text") == "Area " + widgets.units().fmt(area, "area")
    assert part.read_bytes() == before
    assert Settings.load().units == name


def test_the_language_is_chosen_in_the_menu(start, part):
    app = start(part)
    choose(app.menus["language"], "Deutsch")
    settle(app.root, lambda: app.edit_button.cget("text") == "Skizze bearbeiten …")
    assert i18n.language() == "de" == Settings.load().language
    assert app.menus["bar"].entrycget(0, "label") == "Datei"
    assert app.name.cget("text") == "Mounting flange"
    assert app.root.title() == "Mounting flange – tandrel"
    assert app.root.tk.eval("::msgcat::mc Cancel") == "Cancel"
    assert app.root.tk.eval("namespace eval ::tk {::msgcat::mc &Cancel}") == "&Abbruch"
    choose(app.menus["language"], "English")
    settle(app.root, lambda: app.edit_button.cget("text") == "Edit sketch…")


def test_colours_are_chosen_in_the_menu(start, part):
    app = start(part)
    before = fills(app.view)
    choose(app.menus["palette"], "Dark")
    assert app.root.cget("background") == PAL["window"] == "#1C252E"
    assert str(app.menus["file"].cget("background")) == PAL["window"]
    assert str(app.message.master.cget("background")) == PAL["window"]
    assert fills(app.view) == before
    assert Settings.load().palette == "dark"
    choose(app.menus["palette"], "Light")
    assert app.root.cget("background") == "#F3F5F7"


def test_menus_tell_what_is_in_use(start, part, catalogues):
    widgets.set_units("in")
    i18n.set_language("de")
    Settings(Settings.load().folder, palette="dark").save()
    app = start(part)
    chosen = app.unit_choice, app.language_choice, app.palette_choice
    assert [choice.get() for choice in chosen] == ["in", "de", "dark"]


def test_an_empty_sketch_says_what_to_do_next(start):
    app = start()
    assert app.name.cget("text") == "Untitled"
    assert [label.cget("text") for label in (app.size, app.area, app.contours)] == ["", "", ""]
    (text,) = texts(app.view)
    assert "“Edit sketch…”" in text
    assert app.root.title() == "Untitled – tandrel"
    in_editor(app, lambda editor: None)
    assert not app.session.dirty


def test_a_long_name_stays_on_one_line_within_the_window(start, part_of):
    path = part_of()
    storage.write(path, replace(storage.read(path), name="Part\nof a name " * 40))
    app = start(path)
    text = app.name.cget("text")
    assert "\n" not in text and len(text) <= 60
    assert app.root.winfo_width() >= app.name.winfo_reqwidth()
    app.tell("x" * 5000, ["y" * 5000])
    settle(app.root, lambda: app.message.winfo_height() >= app.message.winfo_reqheight() > 100)
    assert app.message.cget("text") == "x" * 5000 + "\n• " + "y" * 5000
    assert app.edit_button.winfo_viewable()
    assert app.view.winfo_height() > 150


def test_shapes_that_can_t_be_built_are_left_out(start, part_of):
    app = start(part_of(circle(r=0.01), circle(r=-1.0)))
    assert app.size.cget("text") == "20 mm × 20 mm"
    assert app.contours.cget("text") == "Contours: 1"
    assert len(fills(app.view)) == 1
    assert "Shape 2 (Circle): the radius must be greater than zero" in app.message.cget("text")
    assert app.message.cget("style") == "Warning.TLabel"


def test_only_shapes_that_can_t_be_built_leave_the_view_empty(start, part_of):
    app = start(part_of(circle(r=-1.0)))
    assert app.size.cget("text") == ""
    assert fills(app.view) == []
    assert texts(app.view) == ["None of the shapes can be drawn."], "nobody stopped anything"
    in_editor(app, lambda editor: None)


# Editing.


def test_the_editor_gets_the_sketch_its_references_and_a_title(start, part):
    app = start(part)
    seen = {}

    def look(editor):
        seen.update(title=editor.title(), dim=editor.dim, refs=editor.refs)
        sketch = app.session.document.sketch
        seen["same"] = editor.sk == sketch and editor.sk is not sketch

    in_editor(app, look)
    assert seen["title"] == "Sketch of Mounting flange"
    assert (seen["dim"], seen["same"]) == (3, True)
    ((name, points),) = seen["refs"]
    assert name == "Blank"
    np.testing.assert_array_equal(
        points, [[-0.08, -0.06], [0.08, -0.06], [0.08, 0.06], [-0.08, 0.06]]
    )


def bore(app):
    return app.session.document.sketch["entities"][1]["r"]


def test_an_accepted_edit_is_shown_and_marked_and_goes_back_and_forth(start, part):
    def seen():
        return bore(app), app.area.cget("text"), app.root.title()

    app, before = start(part), part.read_bytes()
    opened = seen()
    in_editor(app, accept_bore)
    edited = seen()
    assert (edited[0], edited[2]) == (0.033, "• Mounting flange – tandrel")
    assert edited[1] != opened[1]
    for operation, shown in (("undo", opened), ("redo", edited), ("redo", edited)):
        app.perform(operation)
        assert seen() == shown
    assert part.read_bytes() == before


def test_ok_without_a_change_leaves_no_trace(start, part):
    app = start(part)

    def act(editor):
        for i in range(len(editor.sk["entities"])):
            editor.select(i)
            editor.apply_props()
        editor.ok()

    for name in widgets.SYSTEMS:
        widgets.set_units(name)
        in_editor(app, act)
        assert not app.session.dirty
        assert not app.session.can_undo


def test_neither_work_in_the_editor_nor_cancel_changes_anything(start, part):
    app = start(part)
    before, shown = part.read_bytes(), app.session.document
    sketch = copy.deepcopy(shown.sketch)
    in_editor(app, lambda editor: (editor.select(1), editor.delete()))
    assert part.read_bytes() == before
    assert app.session.document is shown and shown.sketch == sketch


def test_nothing_else_is_done_while_the_editor_is_open(start, part):
    app = start(part)
    sketch = app.session.document.sketch

    def act(editor):
        for operation in ("quit", "new", "undo", "edit", "save", "choose_file"):
            app.perform(operation)
        app._open_recent(str(part))
        accept_bore(editor)

    in_editor(app, act)
    assert app.root.winfo_exists()
    assert app.session.can_undo
    app.perform("undo")
    assert app.session.document.sketch is sketch


def test_an_edit_that_can_t_be_kept_for_a_crash_says_so(start, part, monkeypatch):
    app = start(part)

    def fail(*_):
        raise storage.SketchFileError("No space left on device")

    monkeypatch.setattr(app.session._recovery, "keep", fail)
    in_editor(app, accept_bore)
    assert "No space left on device" in app.message.cget("text")
    assert app.message.cget("style") == "Warning.TLabel"
    assert bore(app) == 0.033


def test_stopping_the_drawing_keeps_the_edit(start, part, monkeypatch):
    app = start(part)
    with monkeypatch.context() as patch:
        patch.setattr(profile, "contours", stop)
        in_editor(app, accept_bore)
    assert bore(app) == 0.033
    assert texts(app.view) == ["The profile isn't drawn: it was stopped."]
    assert app.area.cget("text") == app.contours.cget("text") == ""
    in_editor(app, lambda editor: accept_bore(editor, "60"))
    assert texts(app.view) == ["140 mm", "100 mm"]


def test_stopping_a_step_back_leaves_everything_as_it_was(start, part, monkeypatch):
    app = start(part)
    in_editor(app, accept_bore)
    for operation, possible in (("undo", "can_undo"), ("redo", "can_redo")):
        before, title = app.session.document.sketch, app.root.title()
        with monkeypatch.context() as patch:
            patch.setattr(profile, "contours", stop)
            app.perform(operation)
        assert app.session.document.sketch is before
        assert (getattr(app.session, possible), app.root.title()) == (True, title)
        assert app.message.cget("text").startswith("Stopped.")
        app.perform(operation)


def test_an_error_reaches_the_user_and_whoever_listens(root, start, part):
    app = start(part)

    def fail():
        raise RuntimeError("the cause")

    app.edit = fail
    app.edit_button.event_generate("<<Invoke>>")
    assert [str(error) for error in root.errors] == ["the cause"]
    root.errors.clear()
    told = app.message.cget("text")
    assert told.startswith("Something went wrong with Mounting flange: the cause\nSave your work")
    assert app.message.cget("style") == "Warning.TLabel"
    app.perform("undo")
    app.perform("change_units")


# The window itself.


def test_its_size_is_remembered(start, part, monkeypatch):
    app = start(part)
    app.root.geometry("811x622")
    settle(app.root, lambda: app.root.winfo_width() == 811)
    with monkeypatch.context() as patch:
        patch.setattr(app.root, "destroy", lambda: None)
        app.perform("quit")
    assert Settings.load().geometry.startswith("811x622")
    app.root.geometry("600x500")
    again = start(part)
    settle(again.root, lambda: again.root.winfo_width() == 811)


@pytest.mark.parametrize("kept", ["5000x700", "700x5000+0+0", "12x9+5+5"])
def test_a_size_that_doesn_t_fit_is_forgotten_or_made_to_fit(start, part, kept):
    Settings(Settings.load().folder, geometry=kept).save()
    app = start(part)
    root = app.root
    assert root.winfo_width() <= root.winfo_screenwidth()
    assert root.winfo_height() <= root.winfo_screenheight()
    assert app.edit_button.winfo_rooty() + app.edit_button.winfo_height() <= (
        root.winfo_rooty() + root.winfo_height()
    )
