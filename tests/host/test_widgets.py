"""Palette, theme, sizes, form and tooltip on a real screen."""

import tkinter as tk
from itertools import product
from tkinter import ttk

import pytest
from harness.display import x_server
from support.children import printed
from support.events import settle
from support.widgets import tcl_state, walk
from tandrel.gui import widgets
from tandrel.gui.widgets import PAL, Form, Tooltip, px

STYLES = {
    "Panel.TFrame": ttk.Frame,
    "Panel.TLabel": ttk.Label,
    "Muted.TLabel": ttk.Label,
    "Primary.TButton": ttk.Button,
    "SketchTool.TRadiobutton": ttk.Radiobutton,
}


@pytest.fixture
def themed(root):
    widgets.install(root)
    return root


@pytest.mark.parametrize("name", STYLES)
def test_the_editor_s_styles_make_widgets(themed, name):
    widget = STYLES[name](themed, style=name)
    assert widget.winfo_reqwidth() > 0
    assert ttk.Style(themed).lookup(name, "background") in (PAL["window"], PAL["primary"])


def test_a_tool_button_is_a_flat_toggle(themed):
    style = ttk.Style(themed)
    name = "SketchTool.TRadiobutton"
    assert "indicator" not in repr(style.layout(name))
    assert style.lookup(name, "background") == PAL["window"]
    assert style.lookup(name, "background", ["selected"]) == PAL["chosen"]
    assert style.lookup(name, "background", ["selected", "active"]) == PAL["chosen"]
    for bevel in ("lightcolor", "darkcolor"):
        assert style.lookup(name, bevel, ["selected"]) == PAL["chosen"]


def test_a_tool_button_is_chosen_by_a_click(themed):
    choice = tk.StringVar(themed, "a")
    for value in "ab":
        button = ttk.Radiobutton(themed, text=value, value=value, variable=choice)
        button.configure(style="SketchTool.TRadiobutton")
        button.pack(fill="x")
    settle(themed)
    button.event_generate("<Enter>")
    button.event_generate("<ButtonPress-1>", x=5, y=5)
    button.event_generate("<ButtonRelease-1>", x=5, y=5)
    assert choice.get() == "b"
    assert button.instate(["selected"])


def test_a_check_box_shows_its_tick(themed):
    on, off = ("tandrel-on", "tandrel-off")
    colours = {
        name: {themed.tk.call(name, "get", x, y) for x, y in product(range(px(15)), repeat=2)}
        for name in (on, off)
    }
    primary = tuple(bytes.fromhex(PAL["primary"][1:]))
    assert primary in colours[on]
    assert primary not in colours[off]
    assert len(colours[on]) > 4


def test_installing_again_or_in_a_second_window_works_as_the_first_time(themed):
    before = themed.tk.call("bind", "Canvas", "<ButtonPress-1>")
    second = tk.Tk()
    for window in (themed, second):
        widgets.install(window)
        assert window.tk.call("bind", "Canvas", "<ButtonPress-1>") == before
        assert ttk.Style(window).theme_use() == "tandrel"
    second.destroy()


def test_clicking_a_canvas_gives_it_the_focus(managed_root):
    widgets.install(managed_root)
    entry, canvas = ttk.Entry(managed_root), tk.Canvas(managed_root, width=50, height=50)
    pressed = []
    canvas.bind("<ButtonPress-1>", pressed.append)
    entry.pack()
    canvas.pack()
    settle(managed_root)
    entry.focus_force()
    settle(managed_root, lambda: managed_root.focus_get() is entry)
    canvas.event_generate("<ButtonPress-1>", x=10, y=10)
    settle(managed_root, lambda: managed_root.focus_get() is canvas)
    assert len(pressed) == 1


def test_px_follows_the_scaling_of_the_screen(root, large_root):
    try:
        large_root.tk.call("tk", "scaling", 96 / 72)
        widgets.install(large_root)
        assert [px(n) for n in (0, 1, 260, 7.6)] == [0, 1, 260, 8]
        assert isinstance(px(7.6), int)
        large_root.tk.call("tk", "scaling", 192 / 72)
        widgets.install(large_root)
        assert px(260) == pytest.approx(520, abs=1)
    finally:
        widgets.install(root)


SIZES = """
from tkinter import font
from tandrel.gui import widgets
window = widgets.main_window("Tandrel")
print(window.winfo_class(), widgets.px(1000), font.nametofont("TkTextFont").metrics("linespace"))
"""


def sizes(display_name, home):
    """What a program of its own finds: a display that has gone would end this one."""
    found = printed("-c", SIZES, DISPLAY=display_name, HOME=str(home))
    name, pixels, line = found.split()
    assert name == "Tandrel"
    return int(pixels), int(line)


@pytest.mark.parametrize("setting, factor", [("192", 2), ("144", 1.5), ("nonsense", 1)])
def test_a_window_takes_the_size_that_the_desktop_asks_for(screen_of, tmp_path, setting, factor):
    screen = screen_of(1600, 1200)
    pixels, line = sizes(screen, tmp_path)
    assert pixels == pytest.approx(1000, rel=0.01)
    (tmp_path / ".Xdefaults").write_text(f"Xft.dpi: {setting}\n")
    more, higher = sizes(screen, tmp_path)
    assert more == pytest.approx(factor * 1000, rel=0.01)
    assert higher == pytest.approx(factor * line, abs=2)


def test_a_dense_screen_makes_everything_larger(display, tmp_path):
    _, line = sizes(display, tmp_path)
    with x_server(1600, 1200, dpi=192) as name:
        pixels, higher = sizes(name, tmp_path)
    assert pixels == pytest.approx(2000, rel=0.01)
    assert higher == pytest.approx(2 * line, abs=2)


@pytest.mark.parametrize("dpi, setting", [(192, ""), (96, "Xft.dpi: 192\n")])
@pytest.mark.parametrize("screen, factor", [((1024, 768), 1.28), ((640, 480), 1)])
def test_nothing_is_larger_than_the_screen_has_room_for(
    display, screen_of, tmp_path, dpi, setting, screen, factor
):
    """Nor smaller than everywhere."""
    _, line = sizes(display, tmp_path)
    (tmp_path / ".Xdefaults").write_text(setting)
    pixels, higher = sizes(screen_of(*screen, dpi), tmp_path)
    assert pixels == pytest.approx(factor * 1000, rel=0.01)
    # Points are whole numbers.
    assert higher == pytest.approx(factor * line, abs=3)


@pytest.fixture
def form(themed):
    made = Form(themed, label_width=14)
    made.pack()
    return made


def children(widget, kind):
    return [child for child in widget.winfo_children() if type(child) is kind]


def test_form_rows_have_label_entry_and_unit_and_stand_one_below_the_other(themed, form):
    variable = tk.StringVar(themed, "12.5")
    entry = form.entry("Width", variable, "mm", width=10)
    others = [form.entry(name, tk.StringVar(themed), "") for name in ("b", "c")]
    settle(themed)
    assert type(entry) is ttk.Entry
    assert entry.cget("width") == 10
    assert entry.get() == "12.5"
    label, unit = children(form, ttk.Label)[:2]
    assert (label.cget("text"), unit.cget("text")) == ("Width", "mm")
    assert label.winfo_x() < entry.winfo_x() < unit.winfo_x()
    assert label.winfo_rooty() < entry.winfo_rooty() + entry.winfo_height()
    entry.insert("end", "0")
    assert variable.get() == "12.50"
    assert {other.winfo_x() for other in others} == {entry.winfo_x()}
    tops = [field.winfo_y() for field in (entry, *others)]
    assert tops == sorted(set(tops))


def test_a_long_label_wraps_and_shows_whole(themed, form):
    entry = form.entry("Angle of first corner (degrees), measured", tk.StringVar(themed), "")
    short = form.entry("a", tk.StringVar(themed), "")
    settle(themed)
    label = children(form, ttk.Label)[0]
    assert label.winfo_width() >= label.winfo_reqwidth()
    assert label.winfo_height() > 1.5 * children(form, ttk.Label)[2].winfo_height()
    assert entry.winfo_x() == short.winfo_x()


def test_the_label_column_keeps_its_width(themed):
    narrow, wide = Form(themed, label_width=14), Form(themed, label_width=40)
    for made in (narrow, wide):
        made.pack()
        made.entry("a", tk.StringVar(themed), "")
    settle(themed)
    assert wide.winfo_reqwidth() > narrow.winfo_reqwidth()


def test_a_note_stands_below_the_rows(themed, form):
    entry = form.entry("a", tk.StringVar(themed), "")
    assert form.note("Corners (u v, one pair per line):") is None
    settle(themed)
    note = children(form, ttk.Label)[-1]
    assert note.cget("text") == "Corners (u v, one pair per line):"
    assert note.winfo_y() >= entry.winfo_y() + entry.winfo_height()


@pytest.fixture
def quick(monkeypatch):
    monkeypatch.setattr(Tooltip, "DELAY_MS", 1)


@pytest.fixture
def button(themed):
    made = ttk.Button(themed, text="tool")
    made.pack()
    settle(themed)
    return made


def hint(widget):
    """The hint that is shown for a widget."""
    shown = children(widget, tk.Toplevel)
    return shown[0] if shown and shown[0].winfo_viewable() else None


def rest_on(widget):
    """Let the pointer rest on a widget until its hint is there."""
    widget.event_generate("<Enter>")
    settle(widget.winfo_toplevel(), lambda: hint(widget))
    return hint(widget)


def test_a_hint_appears_below_its_widget_while_the_pointer_rests(button, quick):
    entered = []
    button.bind("<Enter>", entered.append)
    Tooltip(button, "Drag from corner to corner.")
    assert hint(button) is None
    for times in (1, 2):
        (label,) = rest_on(button).winfo_children()
        assert label.cget("text") == "Drag from corner to corner."
        assert hint(button).winfo_rooty() >= button.winfo_rooty() + button.winfo_height()
        assert (len(children(button, tk.Toplevel)), len(entered)) == (1, times)


def leave_by_keys(button):
    button.focus_force()
    settle(button.winfo_toplevel(), lambda: button.focus_get() is button)
    button.event_generate("<KeyPress-a>")


ENDS = {
    "the pointer leaves": lambda button: button.event_generate("<Leave>"),
    "a press": lambda button: button.event_generate("<ButtonPress-1>"),
    "a key": leave_by_keys,
    "its widget goes": lambda button: button.destroy(),
}


@pytest.mark.parametrize("end", ENDS.values(), ids=ENDS)
def test_a_hint_goes_when_the_user_goes_on(themed, button, quick, end):
    Tooltip(button, "text")
    rest_on(button)
    end(button)
    assert not [widget for widget in walk(themed) if type(widget) is tk.Toplevel]


def test_a_hint_waits(themed, button):
    Tooltip(button, "text")
    button.event_generate("<Enter>")
    themed.update()
    assert hint(button) is None
    button.event_generate("<Leave>")
    assert not themed.tk.call("after", "info")


def test_a_widget_may_go_while_its_hint_waits(themed, button, quick):
    Tooltip(button, "text")
    button.event_generate("<Enter>")
    button.destroy()
    assert not themed.tk.call("after", "info")


def test_a_hint_stays_on_the_screen(themed, quick):
    width, height = themed.winfo_screenwidth(), themed.winfo_screenheight()
    themed.geometry(f"100x60+{width - 100}+{height - 60}")
    made = ttk.Button(themed, text="tool")
    made.pack(fill="both", expand=True)
    settle(themed, lambda: themed.winfo_rooty() > height - 100)
    Tooltip(made, "a long hint " * 20)
    shown = rest_on(made)
    assert shown.winfo_rootx() + shown.winfo_width() <= width
    assert shown.winfo_rooty() + shown.winfo_height() <= made.winfo_rooty()


def test_hints_leave_nothing_behind(themed, quick):
    def show_and_destroy():
        made = ttk.Button(themed, text="tool")
        made.pack()
        Tooltip(made, "text")
        settle(themed)
        rest_on(made)
        made.destroy()

    show_and_destroy()
    before, _ = tcl_state(themed)
    for _ in range(5):
        show_and_destroy()
    assert tcl_state(themed)[0] == before
