"""Two palettes: every pair of colours that meets on the screen, and windows that change theirs."""

import tkinter as tk
from itertools import product
from tkinter import ttk

import pytest
from PIL import ImageGrab
from support.canvas import items
from support.desk import ORANGE
from support.events import focus, settle
from support.neighbours import circle, rectangle
from tandrel.gui import theme, widgets
from tandrel.gui.theme import PAL, PALETTES

FIRST_AXIS, SECOND_AXIS = "#D2504B", "#3E9B5B"  # the editor's own, as the orange is
TEXT, LINE = 4.5, 3.0

# (foreground, ground, least contrast); names of the palette or colours.
DRAWING = [
    # Dimensions, the selected shape's sizes and outline: on the ground, on a region and in a hole.
    *product(["muted", ORANGE], ["panel"], [TEXT]),
    *product([ORANGE], ["accent_soft"], [TEXT]),
    *product(["accent"], ["panel", "accent_soft"], [LINE]),
    # Axes with their letters, references and the frame; shapes cover them.
    *product([FIRST_AXIS, SECOND_AXIS], ["panel"], [TEXT]),
    *product(["muted", "line"], ["panel"], [LINE]),
]
WINDOWS = [
    *product(["text", "hint", "warning"], ["window", "field"], [TEXT]),
    *product(["text"], ["button", "button_over", "chosen"], [TEXT]),
    *product(["primary_over"], ["chosen"], [TEXT]),
    *product(["on_primary"], ["primary", "primary_over"], [TEXT]),
    # Hints turn the colours of texts round.
    ("field", "text", TEXT),
    *product(["edge", "primary"], ["window", "field"], [LINE]),
    ("primary", "button", LINE),
    ("text", "edge", LINE),
    ("line", "window", LINE),
]


def luminance(colour):
    """Relative luminance, as the accessibility guidelines define it."""
    parts = [int(colour[i : i + 2], 16) / 255 for i in (1, 3, 5)]
    parts = [c / 12.92 if c <= 0.04045 else ((c + 0.055) / 1.055) ** 2.4 for c in parts]
    return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2]


def contrast(one, other):
    light, dark = sorted((luminance(one), luminance(other)), reverse=True)
    return (light + 0.05) / (dark + 0.05)


def test_contrast_is_what_the_guidelines_say():
    assert contrast("#000000", "#FFFFFF") == 21
    assert contrast("#777777", "#FFFFFF") == pytest.approx(4.48, abs=0.01)


@pytest.mark.parametrize("palette", PALETTES)
@pytest.mark.parametrize("ink, ground, least", DRAWING + WINDOWS)
def test_texts_and_lines_stand_out(palette, ink, ground, least):
    colours = PALETTES[palette]
    assert contrast(colours.get(ink, ink), colours.get(ground, ground)) >= least


@pytest.mark.parametrize("palette", PALETTES)
def test_the_grid_stays_behind_and_a_hole_differs_from_a_region(palette):
    colours = PALETTES[palette]
    assert 1.1 < contrast(colours["bg"], colours["panel"]) < 2
    assert contrast(colours["accent_soft"], colours["panel"]) >= 1.3


def test_the_editor_s_colours_are_those_tested(root, open_editor):
    """Each colour of a busy canvas is one whose contrast is known."""
    references = [("blank", [[-0.06, -0.05], [0.06, -0.05], [0.06, 0.05]])]
    shapes = [rectangle(-0.05, -0.04, 0.1, 0.08), circle(r=0.02)]
    editor = open_editor({"entities": shapes}, references=references)
    used = set()
    for selected in (None, 0, 1):
        editor.select(selected)
        editor.redraw()
        for item in items(editor.canvas):
            used.add(item.options["fill"])
            used.add(item.options.get("outline", "") if item.kind != "text" else "")
    known = {PAL.get(name, name) for row in DRAWING for name in row[:2]}
    assert used - {"", PAL["bg"]} <= known
    assert {ORANGE, FIRST_AXIS, SECOND_AXIS} <= used


def test_the_palettes_have_the_same_colours_to_give():
    assert PALETTES["light"].keys() == PALETTES["dark"].keys()
    for name in ("panel", "bg", "line", "muted", "accent", "accent_soft"):
        assert PALETTES["light"][name] == PALETTES["dark"][name]


def test_whoever_holds_the_palette_sees_it_change():
    held = widgets.PAL
    theme.use_palette("dark")
    assert held is theme.PAL and held == PALETTES["dark"]
    theme.use_palette("light")
    assert held == PALETTES["light"]


def test_an_unknown_palette_changes_nothing():
    with pytest.raises(KeyError):
        theme.use_palette("purple")
    assert PAL == PALETTES["light"]


def pixel(root, image, x, y):
    return "#{:02X}{:02X}{:02X}".format(*root.tk.call(image, "get", x, y))


def test_open_windows_take_the_new_colours(root):
    theme.install(root)
    menu, text = tk.Menu(root), tk.Text(root)
    other = tk.Toplevel(root)
    label = ttk.Label(other, text="a", style="Warning.TLabel")
    drawing = tk.Canvas(other, background="white")
    for widget in (text, label, drawing):
        widget.pack()
    settle(root)
    for name in ("dark", "light", "dark"):
        theme.use_palette(name)
        theme.install(root)
        colours = PALETTES[name]
        style = ttk.Style(root)
        assert style.lookup("TLabel", "background") == colours["window"]
        assert style.lookup("Warning.TLabel", "foreground") == colours["warning"]
        assert style.lookup("TButton", "background", ["active"]) == colours["button_over"]
        for window in (root, other):
            assert str(window.cget("background")) == colours["window"]
        assert str(menu.cget("background")) == colours["window"]
        assert str(menu.cget("foreground")) == colours["text"]
        assert str(menu.cget("disabledforeground")) == colours["hint"]
        assert str(text.cget("background")) == colours["field"]
        assert str(text.cget("insertbackground")) == colours["text"]
        assert str(tk.Text(root).cget("foreground")) == colours["text"]
        assert str(tk.Menu(root).cget("activebackground")) == colours["chosen"]
        slider, trough = (style.lookup("TScrollbar", n) for n in ("background", "troughcolor"))
        assert contrast(slider, trough) >= LINE
        assert drawing.cget("highlightcolor") == colours["accent"]
        assert pixel(root, "tandrel-on", 1, widgets.px(7)) == colours["primary"]
        assert pixel(root, "tandrel-off", widgets.px(7), widgets.px(7)) == colours["field"]
        # Drawings have the same colours in both, and others' canvases are their own affair.
        assert drawing.cget("background") == "white"


def test_what_is_on_the_screen_changes(root):
    theme.install(root)
    root.geometry("200x100+0+0")
    ttk.Frame(root, style="Panel.TFrame").pack(fill="both", expand=True)
    settle(root)

    def seen():
        box = (root.winfo_rootx() + 50, root.winfo_rooty() + 50)
        picture = ImageGrab.grab((*box, box[0] + 1, box[1] + 1), xdisplay=root.winfo_screen())
        return "#{:02X}{:02X}{:02X}".format(*picture.getpixel((0, 0)))

    for name in ("light", "dark", "light"):
        theme.use_palette(name)
        theme.install(root)
        settle(root, lambda name=name: seen() == PALETTES[name]["window"])


@pytest.mark.parametrize("key", ["<Control-a>", "<Control-slash>"])
@pytest.mark.parametrize("kind", [ttk.Entry, ttk.Spinbox])
def test_a_key_selects_all_that_a_field_holds(root, kind, key):
    theme.install(root)
    field = kind(root)
    field.insert(0, "by hand")
    field.icursor(2)
    field.pack()
    focus(field)
    field.event_generate(key)
    assert (field.index("sel.first"), field.index("sel.last")) == (0, len("by hand"))
    # Home is still a way to the beginning.
    field.event_generate("<Home>")
    assert field.index("insert") == 0 and not field.selection_present()


def test_a_key_selects_all_lines_of_a_text(root):
    theme.install(root)
    text = tk.Text(root)
    text.insert("end", "0 0\n80 0")
    text.pack()
    focus(text)
    text.event_generate("<Control-a>")
    assert text.get("sel.first", "sel.last").split("\n")[:2] == ["0 0", "80 0"]


def test_caps_lock_makes_no_other_key_of_it(root):
    theme.install(root)
    # As a sequence: an event made here has Shift with a capital letter.
    assert "<Control-Lock-Key-A>" in root.event_info("<<SelectAll>>")
    assert "<Control-Lock-Key-A>" not in root.event_info("<<LineStart>>")
