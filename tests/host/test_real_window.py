"""Whole paths by keyboard and pointer, in a window that a window manager placed."""

import re

from harness.user import until
from support.application import dialogs
from tandrel import storage
from tandrel.application.settings import Settings
from tandrel.gui import i18n, theme, widgets


def test_a_part_is_opened_changed_and_saved_without_a_mouse(acted, part):
    def script(app, person):
        yield from person.menu("f", "Down", "Return")
        yield from person.type_path(part)
        yield until(lambda: app.session.path == str(part), "the part")
        yield from person.change_the_bore()
        assert app.root.title().startswith("• ")
        person.key("ctrl+z")
        yield until(lambda: not app.session.dirty, "the step back")
        # Undo can't act any more: the first entry that can is lit.
        yield from person.menu("e", "Return")
        yield until(lambda: app.session.dirty, "the step forth")
        person.key("ctrl+s")
        yield until(lambda: not app.session.dirty, "the file")

    acted(script)
    assert storage.read(part).sketch["entities"][1]["r"] == 0.033


def test_leaving_asks_and_the_keys_answer(acted, part):
    gone = []

    def script(app, person):
        yield from person.change_the_bore()
        person.key("ctrl+q")
        yield from person.asked()
        person.key("Escape")
        yield until(lambda: not dialogs(app.root), "the question to go")
        assert app.session.dirty
        yield from person.focused(app.root)
        person.key("alt+F4")
        yield from person.asked()
        app.root.bind("<Destroy>", gone.append)
        person.key("Right", "Left", "Return")
        yield until(lambda: False, "the window to go")

    acted(script, part)
    assert gone
    assert storage.read(part).sketch["entities"][1]["r"] == 0.033
    assert Settings.load().geometry


def test_units_colours_and_language_are_chosen_by_keyboard(acted, part):
    def script(app, person):
        yield from person.menu("v", "Right", "Up", "Return")
        yield until(lambda: " in" in str(app.size.cget("text")), "inches")
        yield from person.menu("v", "Down", "Down", "Right", "Down", "Return")
        yield until(lambda: app.root.cget("background") == theme.PALETTES["dark"]["window"], "dark")
        before = app.edit_button
        yield from person.menu("v", "Down", "Right", "Down", "Return")
        yield until(lambda: app.edit_button is not before, "another language")
        yield from person.steady(app.edit_button)

    acted(script, part)
    assert widgets.units().name == "in"
    assert i18n.language() != "en"
    kept = Settings.load()
    assert (kept.units, kept.language, kept.palette) == ("in", i18n.language(), "dark")


def test_a_drawing_s_units_are_asked_and_the_part_gets_a_file(acted, part, tmp_path):
    from tandrel import exchange

    drawing = tmp_path / "flange.dxf"
    exchange.export(storage.read(part), drawing, "in")
    text = drawing.read_text()
    drawing.write_text(text.replace("$INSUNITS\n 70\n1\n", "$INSUNITS\n 70\n0\n"))
    assert drawing.read_text() != text
    saved = tmp_path / "imported.json"

    def script(app, person):
        yield from person.focused(app.root)
        person.key("ctrl+o")
        yield from person.type_path(drawing)
        yield from person.asked()
        person.key("Down", "Return")
        yield until(lambda: app.session.dirty, "the import")
        assert app.size.cget("text") == "140 mm × 100 mm"
        person.key("ctrl+shift+s")
        yield from person.type_path(saved)
        yield until(lambda: app.session.path == str(saved), "the file")
        assert app.name.cget("text") == "imported"

    acted(script)
    assert len(storage.read(saved).sketch["entities"]) == 9


def test_the_editor_lies_on_the_screen_when_its_window_stands_in_a_corner(acted, part):
    def script(app, person):
        yield from person.focused(app.root)
        before = app.root.winfo_x()
        app.root.geometry("-0-0")
        yield until(lambda: app.root.winfo_x() > before, "the window in the corner")
        person.key("space")
        yield until(person._editors, "the editor")
        (editor,) = person._editors()
        yield until(lambda: editor.grab_current() is editor, "the editor to be modal")

        def on_screen():
            # As asked for: the window manager may show it elsewhere before it shows it there.
            width, height, x, y = map(int, re.findall(r"-?\d+", editor.geometry()))
            right, lower = editor.winfo_screenwidth(), editor.winfo_screenheight()
            return 0 <= x <= right - width and 0 <= y <= lower - height

        yield until(on_screen, "the whole editor")
        editor.destroy()
        yield until(lambda: not person._editors(), "the editor to go")

    acted(script, part)
