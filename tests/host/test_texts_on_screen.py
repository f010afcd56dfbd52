"""What the windows show in every language: nothing untranslated, nothing cut off."""

import re
from tkinter import font, ttk

import pytest
from support.application import dialogs, in_editor, labels, shown
from support.events import Send, settle
from support.types import CARDS
from support.widgets import walk
from tandrel.application.dialogs import Question
from tandrel.gui import i18n, widgets

LANGUAGES = ("en", "de", "fr", "zh", "qps")
# The part's own name, units, planes, axes and keys: the same in every language.
NEUTRAL = set("TEST mm cm m in XY XZ YZ x y z u v Ø tandrel json dxf".split())


@pytest.fixture
def screen(request):
    """The main window of one of these screens."""
    return request.getfixturevalue(request.param)


@pytest.fixture
def language(start, catalogues, monkeypatch, request):
    monkeypatch.setenv("TANDREL_PSEUDO", "1")
    code = getattr(request, "param", "qps")
    i18n.set_language(code)
    return code


@pytest.fixture
def every_type(part_of):
    """A file with a shape of each type."""
    return part_of(*(card.sample for card in CARDS), name="TEST")


def texts_in(window):
    """Every text in a window, but for menus and hints that appear by and by."""
    yield str(window.winfo_toplevel().title())
    for widget in walk(window):
        if "text" in (widget.keys() or ()):
            yield str(widget.cget("text"))
        if isinstance(widget, ttk.Treeview):
            yield from (widget.heading(column, "text") for column in ("#0", "size"))
            for row in widget.get_children():
                yield from (widget.item(row, "text"), *map(str, widget.item(row, "values")))
        if widget.winfo_class() == "Canvas":
            items = [item for item in widget.find_all() if widget.type(item) == "text"]
            yield from (widget.itemcget(item, "text") for item in items)


def texts_of(menus):
    own_names = set(i18n.languages().values())
    for name, menu in menus.items():
        if name != "recent" and menu.index("end") is not None:
            yield from (label for label in labels(menu) if label not in own_names)
            for index, label in enumerate(labels(menu)):
                if label and menu.type(index) == "command":
                    yield re.sub(r"[A-Z]", "", menu.entrycget(index, "accelerator"))


def untranslated(texts, *names):
    """Of texts in the pseudo-language, which has no plain letter, those with words of another."""
    neutral = NEUTRAL.union(names)
    return sorted({t for t in texts if set(re.findall(r"[A-Za-z]+|Ø", t)) - neutral})


def test_a_word_that_passed_no_translation_is_noticed(language):
    assert untranslated([i18n.tr("Width") + " 3 mm", "[{} ~]".format(i18n.tr("Sketch"))]) == []
    assert untranslated(["Width", "[Ŵîđţĥ: not a number ~]"]) != []


def test_everything_in_the_main_window_is_translated(language, start, every_type):
    app = start(every_type)
    app.tell("")
    assert untranslated([*texts_in(app.root), *texts_of(app.menus)]) == []
    assert len(app.view.find_all()) > 5
    app.new()
    shown(app)
    texts = list(texts_in(app.root))
    assert untranslated(texts) == []
    assert any(text.startswith("[Ñöţĥîñğ") for text in texts)


@pytest.fixture
def seen(sketcher, monkeypatch):
    """The texts of the editor's hints."""
    hints = []
    monkeypatch.setattr(sketcher, "Tooltip", lambda widget, text: hints.append(text))
    return hints


def test_everything_in_the_editor_is_translated(language, sketcher, start, every_type, seen):
    def look(editor):
        texts = seen
        for index in (None, *range(len(CARDS))):
            editor.select(index)
            editor.update()
            texts += texts_in(editor)
        for tool, _ in sketcher.TOOLS:
            editor.tool.set(tool)
            Send(editor).motion(200, 200)
            texts.append(str(editor.status.cget("text")))
        assert untranslated(texts) == []
        assert len(set(texts)) > 50

    in_editor(start(every_type), look)


def test_what_the_editor_refuses_is_told_in_translation(language, start, every_type):
    def refused(editor, index, key, text):
        editor.select(index)
        editor.vars[key].set(text)
        editor.apply_props()
        told = str(editor.status.cget("text"))
        editor.forget_typed()
        return told

    def act(editor):
        told = [
            refused(editor, 0, "w", "-1"),
            refused(editor, 0, "radius", "90"),
            refused(editor, 1, "r", "0"),
            refused(editor, 2, "n", "2"),
            refused(editor, 4, "radius", "-1"),
            *(refused(editor, 0, "w", text) for text in ("", "x", "1x", "1/0", "3,5", "1+1in")),
        ]
        editor.select(4)
        editor.points_text.insert("1.0", "1 2 3\n")
        editor.apply_props()
        told.append(str(editor.status.cget("text")))
        editor.forget_typed()
        editor.offset.set("x")
        editor.ok()
        told.append(str(editor.status.cget("text")))
        editor.offset.set("0")
        editor.sk["entities"].append(dict(editor.sk["entities"][1]))
        editor.ok()
        told.append(str(editor.status.cget("text")))
        assert untranslated(told) == []
        assert len(set(told)) == len(told) and all(text.startswith("[") for text in told)

    in_editor(start(every_type), act)


def test_what_the_window_asks_and_tells_is_translated(language, start, every_type, tmp_path):
    app = start(every_type)
    told = []
    for content in (b"{", b"[]", b'{"format": "other"}', b"\xff", b"[" * 9999):
        every_type.write_bytes(content)
        app.open(str(every_type))
        told.append(str(app.message.cget("text")))
    for path in (tmp_path / "missing" / "TEST.json", tmp_path):
        app.open(str(path))
        told.append(str(app.message.cget("text")).replace(tmp_path.name, ""))
    assert len(set(told)) > 2 and all(text.startswith("[") for text in told)
    assert untranslated(told, "format", "sketch", "other", "file") == []
    asked = []

    def ask(window, close):
        def look():
            questions = dialogs(window, Question)
            for question in questions:
                asked.extend(texts_in(question))
                question.destroy()
            if not questions:
                window.after(5, look)

        window.after(5, look)
        close()

    def leave(editor):
        editor.select(1)
        editor.delete()
        ask(editor, editor.close)
        editor.ok()

    in_editor(app, leave)
    assert len(asked) == 4  # the title, the question and two answers
    ask(app.root, app.may_leave)
    assert untranslated(asked) == []
    assert len(asked) == 4 + 5  # three answers


# Nothing is cut off.


def cut_off(window):
    """Widgets that show a text and have less room than it needs, or lie beyond the edge."""
    window.update()
    for widget in walk(window):
        if not widget.winfo_viewable() or not isinstance(
            widget, (ttk.Label, ttk.Button, ttk.Checkbutton, ttk.Radiobutton)
        ):
            continue
        needed = widget.winfo_reqwidth(), widget.winfo_reqheight()
        given = widget.winfo_width(), widget.winfo_height()
        right = widget.winfo_rootx() + given[0]
        edge = window.winfo_rootx() + window.winfo_width()
        if needed[0] > given[0] or needed[1] > given[1] or right > edge:
            yield f"{widget.cget('text')}: {needed} in {given}"


def cut_off_rows(rows):
    """Rows of the list of shapes with a text that is wider than its column."""
    measure = font.nametofont("TkDefaultFont", rows).measure
    for row in rows.get_children():
        texts = {"#0": rows.item(row, "text"), "size": rows.set(row, "size")}
        for column, text in texts.items():
            width = rows.bbox(row, column)[2]
            if measure(text) > width:
                yield f"{text}: {measure(text)} in {width}"


SCREENS = pytest.mark.parametrize("screen", ["root", "large_root", "small_root"], indirect=True)
IN_EVERY_LANGUAGE = pytest.mark.parametrize("language", LANGUAGES, indirect=True)


@SCREENS
@IN_EVERY_LANGUAGE
def test_nothing_is_cut_off_in_the_smallest_window(language, start, every_type, screen):
    i18n.set_language("en")
    app = start(every_type, root=screen)
    app.language_choice.set(language)
    app.perform("change_language")
    room = app.root.winfo_screenwidth(), app.root.winfo_screenheight()
    assert app.root.winfo_width() < room[0] and app.root.winfo_height() < room[1]
    for name in widgets.SYSTEMS:
        app.unit_choice.set(name)
        app.perform("change_units")
        width, height = app.root.minsize()
        app.root.geometry(f"{width}x{height}")
        settle(app.root, lambda: app.root.winfo_width() == width)
        assert list(cut_off(app.root)) == []
    for operation in ("save", "new"):
        app.perform(operation)
        shown(app)
        assert list(cut_off(app.root)) == []
    (text,) = [i for i in app.view.find_all() if app.view.type(i) == "text"]
    x1, y1, x2, y2 = app.view.bbox(text)
    assert 0 < x1 and x2 < app.view.winfo_width() and 0 < y1 and y2 < app.view.winfo_height()


@SCREENS
@IN_EVERY_LANGUAGE
def test_nothing_is_cut_off_in_the_editor(language, start, every_type, screen):
    def look(editor):
        for index in (None, *range(len(CARDS))):
            editor.select(index)
            assert list(cut_off(editor)) == []

    in_editor(start(every_type, root=screen), look)


@pytest.mark.parametrize("language", ["en", "de", "fr", "zh"], indirect=True)
def test_sizes_fit_into_the_list_of_shapes(language, start, every_type):
    """Of parts below a metre, drawn to a micrometre."""

    def look(editor):
        for index in (1, 2):
            editor.sk["entities"][index].update(r=0.061728)
        editor.refresh_list()
        editor.update()
        assert "123.456 mm" in editor.list.set("2", "size")
        assert list(cut_off_rows(editor.list)) == []

    in_editor(start(every_type), look)
