"""Nothing moves under the pointer in the editor, whatever its widgets have to show."""

from itertools import cycle, product
from tkinter import ttk

import pytest
from support.application import in_editor
from support.events import Send, settle
from support.types import CARD, CARDS
from support.roots import close_root, open_root
from support.widgets import button, walk
from tandrel.application.editor import Editor
from tandrel.application.settings import Settings
from tandrel.gui import i18n, theme, widgets
from tandrel.gui.sketcher import TOOLS
from tandrel.gui.widgets import px

LANGUAGES = ("en", "de", "fr", "zh", "qps")
# Each language in two units and both palettes, each unit in several languages.
LOOKS = list(zip(2 * LANGUAGES, cycle(widgets.SYSTEMS), cycle(theme.PALETTES)))
SCREENS = {
    "1024x768": (1024, 768),
    "1024x768 at 2x": (1024, 768, 192),
    "1920x1200 at 2x": (1920, 1200, 192),
}


@pytest.fixture(params=SCREENS.values(), ids=SCREENS)
def screen(request, screen_of):
    """A main window on each of these screens."""
    window = open_root(screen_of(*request.param))
    yield window
    close_root(window)


@pytest.fixture
def open_one(catalogues, monkeypatch):
    """open_one(root, language, unit, palette, size): an editor with a shape of each type."""
    monkeypatch.setenv("TANDREL_PSEUDO", "1")

    def open_in(root, language="en", unit="mm", palette="light", size=""):
        i18n.set_language(language)
        widgets.set_units(unit)
        theme.use_palette(palette)
        widgets.install(root)
        editor = Editor(root, {"entities": [card.sample for card in CARDS]}, size)
        settle(editor, lambda: editor.canvas.winfo_width() > 1)
        return editor

    return open_in


def places(editor):
    """Where all lies but the status text and what is in the form, and how large it is."""
    editor.update()
    return {
        str(w): (w.winfo_rootx(), w.winfo_rooty(), w.winfo_width(), w.winfo_height())
        for w in walk(editor)
        if w is not editor.status and not str(w).startswith(f"{editor.props}.")
    }


def showing(editor):
    """Have the editor show one thing after another, each as long as may be; yields what it is."""
    for index in (*range(len(CARDS)), None):
        editor.select(index)
        yield f"shape {index}"
    editor.select(list(CARD).index("polygon"))
    editor.points_text.insert("1.0", "1000000.123456 1000000.123456\n" * 50)
    for variable in (*editor.vars.values(), editor.grid, editor.offset, editor.sides):
        variable.set("1000000.123456" * 3)
    yield "typed numbers"
    for tool, _ in TOOLS:
        editor.tool.set(tool)
        Send(editor).motion(50, 50)
        yield f"the hint of {tool}"
    for count in (1, 2, 3, 30):
        editor.status.configure(text="a message of some length " * 8 * count)
        yield f"{count} messages"
    editor.status.configure(text="")
    editor.sk["entities"] += 30 * [CARD["circle"].sample]
    editor.refresh_list()
    yield "a long list"


@pytest.mark.parametrize("language, unit, palette", LOOKS)
def test_nothing_moves_whatever_is_shown(screen, open_one, language, unit, palette):
    editor = open_one(screen, language, unit, palette)
    before = places(editor)
    assert len(before) > 25
    moved = {what: places(editor) for what in showing(editor)}
    assert [what for what, after in moved.items() if after != before] == []


def lies_within(widget, window):
    left, top = (widget.winfo_rootx() - window.winfo_rootx()), widget.winfo_rooty()
    below = top - window.winfo_rooty() + widget.winfo_height()
    shown = left + widget.winfo_width() <= window.winfo_width() and below <= window.winfo_height()
    whole = widget.winfo_width() >= widget.winfo_reqwidth()
    return shown and whole and widget.winfo_height() >= widget.winfo_reqheight()


@pytest.mark.parametrize("language", LANGUAGES)
def test_the_least_window_shows_its_buttons(screen, open_one, language):
    editor = open_one(screen, language)
    width, height = editor.minsize()
    editor.geometry(f"{width}x{height}")
    settle(editor, lambda: (editor.winfo_width(), editor.winfo_height()) == (width, height))
    assert width < editor.winfo_screenwidth() and height < editor.winfo_screenheight()
    for label in ("OK", "Cancel", "Fit", "Delete"):
        assert lies_within(button(editor, i18n.tr(label)), editor)
    for index in range(len(CARDS)):
        editor.select(index)
        editor.update()
        (apply,) = [w for w in editor.props.winfo_children() if isinstance(w, ttk.Button)]
        assert lies_within(apply, editor.props) and lies_within(apply, editor)
    # Room to draw in, and rows to choose from.
    assert editor.canvas.winfo_width() >= px(220) and editor.canvas.winfo_height() >= px(160)
    assert lies_within(editor.list, editor)


@pytest.mark.parametrize("screen", [(1280, 1024), (2560, 2048, 192)], ids=str, indirect=True)
@pytest.mark.parametrize("language", LANGUAGES)
def test_the_form_stands_under_the_list_and_is_no_wider(screen, open_one, language):
    editor = open_one(screen, language)
    for unit, index in product(widgets.SYSTEMS, range(len(CARDS))):
        widgets.set_units(unit)
        editor.select(index)
        editor.update_idletasks()
        (form,) = [w for w in editor.props.winfo_children() if isinstance(w, widgets.Form)]
        assert form.winfo_reqwidth() <= px(110 + 160) <= editor.list.winfo_reqwidth()
        assert 0 <= form.winfo_rootx() - editor.list.winfo_rootx() <= px(16)


def test_the_status_text_is_seen(root, open_one):
    editor = open_one(root)
    for text in ("one line", "two\nlines", "three\nshort\nlines"):
        editor.status.configure(text=text)
        editor.update()
        x, y, height = (
            getattr(editor.status, f"winfo_{n}")() for n in ("rootx", "rooty", "height")
        )
        for line in (2, height // 2, height - 2):
            assert editor.winfo_containing(x + 2, y + line) is editor.status
        canvas = editor.canvas
        covers = y < canvas.winfo_rooty() + canvas.winfo_height()
        assert covers == (text.count("\n") > 1)


def test_a_long_message_hides_no_button_and_goes_with_a_click(root, open_one):
    editor = open_one(root)
    ok, status = button(editor, "OK"), editor.status
    status.configure(text="could not convert string to float: " + "9 " * 9999)
    editor.update()
    assert status.winfo_height() >= status.winfo_reqheight() > editor.canvas.winfo_height()
    assert status.winfo_rooty() + status.winfo_height() <= ok.winfo_rooty()
    status.event_generate("<Button-1>")
    editor.update()
    assert status.winfo_rooty() > editor.canvas.winfo_rooty() + editor.canvas.winfo_height()


def test_the_canvas_takes_what_a_larger_window_has_to_give(root, open_one):
    editor = open_one(root)
    before = places(editor)
    width, height = editor.winfo_width() + 20, editor.winfo_height() + 10
    editor.geometry(f"{width}x{height}")
    settle(editor, lambda: editor.winfo_width() == width)
    after = places(editor)
    x, y, width, height = before[str(editor.canvas)]
    assert after[str(editor.canvas)] == (x, y, width + 20, height + 10)


def size_of(editor):
    return editor.winfo_width(), editor.winfo_height()


@pytest.mark.parametrize("wanted, given", [("900x700", (900, 700)), ("9x99999", None)])
def test_a_size_is_kept_as_far_as_the_screen_and_the_parts_allow(root, open_one, wanted, given):
    editor = open_one(root, size=wanted)
    least, most = editor.minsize(), (root.winfo_screenwidth(), root.winfo_screenheight())
    width, height = size_of(editor)
    assert (width, height) == (given or (least[0], height))
    assert most[1] * 0.9 < height < most[1] or given


def test_the_editor_opens_with_the_size_of_last_time(start, part):
    app = start(part)
    sizes = []

    def enlarge(editor):
        sizes.append(size_of(editor))
        editor.geometry("1001x802")
        settle(editor, lambda: editor.winfo_width() == 1001)

    in_editor(app, enlarge)
    assert Settings.load().editor_size == "1001x802"
    in_editor(app, lambda editor: sizes.append(size_of(editor)))
    assert sizes[0] != sizes[1] == (1001, 802)
