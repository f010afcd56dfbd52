"""What the widgets of the dialog do: commands of buttons, and bindings of events."""

from tkinter import ttk

import pytest

from support.events import focus, settle
from support.neighbours import one_of_each
from support.widgets import button, walk

pytestmark = pytest.mark.usefixtures("neighbours")


@pytest.fixture
def spied(open_editor, sketcher):
    """Opens an editor whose operations of these names only keep their calls."""

    def open_spied(*names, **arguments):
        calls = []

        def replacement(name):
            def operation(self, *args, **kwargs):
                calls.append((name, args, kwargs))

            return operation

        members = {name: replacement(name) for name in names}
        editor = open_editor(cls=type("Editor", (sketcher.SketchEditor,), members), **arguments)
        calls.clear()
        return editor, calls

    return open_spied


def once(name, *args):
    return [(name, args, {})]


@pytest.mark.parametrize(
    "text, operation",
    [("Fit", "fit"), ("Delete", "delete"), ("Cancel", "destroy"), ("OK", "ok")],
)
def test_button_runs_its_operation(spied, text, operation):
    editor, calls = spied(operation)
    button(editor, text).invoke()
    assert calls == once(operation)
    calls.clear()


def test_choosing_a_tool_abandons_the_drawing(spied, sketcher):
    editor, calls = spied("cancel_drawing")
    buttons = [w for w in walk(editor) if type(w) is ttk.Radiobutton]
    for widget, (key, _) in zip(buttons, sketcher.TOOLS):
        widget.invoke()
        assert editor.tool.get() == key
        assert calls == once("cancel_drawing")
        calls.clear()


def test_operations_replaced_on_the_open_editor_are_called_where_they_are_looked_up(
    open_editor, send
):
    editor = open_editor(one_of_each())
    editor.select(1)
    calls = []
    for name in ("_zoom", "close_line", "cancel_drawing", "delete", "redraw", "apply_props"):
        setattr(editor, name, lambda *args, name=name: calls.append(name))
    hand = send(editor)
    hand.wheel(130, 100, 120)
    for key in ("Return", "Escape", "Delete"):
        hand.key(key)
    hand.key("Return", next(w for w in walk(editor.props) if type(w) is ttk.Entry))
    expected = ["_zoom", "close_line", "cancel_drawing", "delete", "apply_props", "close_line"]
    assert [name for name in calls if name != "redraw"] == expected


def test_operations_given_to_widgets_stay_what_they_were(spied, send):
    names = ["_press", "_drag", "_release", "_pan_start", "_pan_move", "_motion"]
    names += ["fit", "cancel_drawing", "ok", "apply_props"]
    editor, calls = spied(*names, sketch=one_of_each())
    editor.select(1)
    for name in names:
        setattr(editor, name, lambda *args: pytest.fail("was given before"))
    hand = send(editor)
    hand.stroke((100, 100), (120, 100))
    hand.stroke((100, 100), (120, 100), button=2)
    hand.motion(130, 100)
    for text in ("Fit", "Slot", "OK", "Apply"):
        button(editor, text).invoke()
    assert [name for name, *_ in calls] == names


@pytest.mark.parametrize(
    "text, operation",
    [
        ("Fit", "fit"),
        ("Circle", "cancel_drawing"),
        ("Delete", "delete"),
        ("Apply", "apply_props"),
        ("Cancel", "destroy"),
        ("OK", "ok"),
    ],
)
def test_command_is_named_after_its_operation(open_editor, text, operation):
    editor = open_editor(one_of_each())
    editor.select(1)
    assert str(button(editor, text).cget("command")).lstrip("0123456789") == operation


def test_choosing_a_plane_stores_it_and_then_repaints(spied):
    editor, calls = spied("_plane_changed", "redraw")
    (chooser,) = [w for w in walk(editor) if type(w) is ttk.Combobox]
    chooser.event_generate("<<ComboboxSelected>>")
    assert calls == once("_plane_changed") + once("redraw")


def test_chosen_plane_shows_its_axes(open_editor):
    editor = open_editor({"plane": "XY"})
    (chooser,) = [w for w in walk(editor) if type(w) is ttk.Combobox]
    chooser.set("YZ")
    chooser.event_generate("<<ComboboxSelected>>")
    assert editor.sk["plane"] == "YZ"
    letters = [
        editor.canvas.itemcget(item, "text")
        for item in editor.canvas.find_all()
        if editor.canvas.type(item) == "text"
    ]
    assert letters == ["y", "z"]


def grid_entry(editor):
    (entry,) = [
        w
        for w in walk(editor)
        if type(w) is ttk.Entry and str(w.cget("textvariable")) == str(editor.grid)
    ]
    return entry


def test_return_in_the_grid_field_repaints(spied, send):
    editor, calls = spied("redraw", "close_line")
    send(editor).key("Return", grid_entry(editor))
    assert calls == once("redraw") + once("close_line")


def test_leaving_the_grid_field_repaints(spied, send):
    editor, calls = spied("redraw")
    focus(grid_entry(editor))
    calls.clear()
    focus(editor.canvas)
    assert calls == once("redraw")


def test_typed_grid_takes_effect(open_editor, send):
    editor = open_editor()
    editor.grid.set("20")
    before = len(editor.canvas.find_all())
    send(editor).key("Return", grid_entry(editor))
    assert editor.grid_step() == 0.02
    assert len(editor.canvas.find_all()) < before


def test_snap_switch_changes_its_variable(open_editor):
    editor = open_editor()
    (switch,) = [w for w in walk(editor) if type(w) is ttk.Checkbutton]
    switch.invoke()
    assert editor.snap.get() is False
    switch.invoke()
    assert editor.snap.get() is True


def test_sides_run_from_3_to_64(open_editor):
    editor = open_editor()
    (spin_box,) = [w for w in walk(editor) if type(w) is ttk.Spinbox]

    def step(event):
        spin_box.event_generate(event)
        return int(editor.sides.get())

    assert [step("<<Increment>>"), step("<<Decrement>>")] == [7, 6]
    assert [step("<<Decrement>>") for _ in range(5)] == [5, 4, 3, 3, 3]
    editor.sides.set("62")
    assert [step("<<Increment>>") for _ in range(4)] == [63, 64, 64, 64]


@pytest.mark.parametrize(
    "event, options, operation",
    [
        ("<ButtonPress-1>", {}, "_press"),
        ("<Motion>", {"state": 0x100}, "_drag"),
        ("<ButtonRelease-1>", {"state": 0x100}, "_release"),
        ("<Motion>", {}, "_motion"),
        ("<ButtonPress-2>", {}, "_pan_start"),
        ("<ButtonPress-3>", {}, "_pan_start"),
        ("<Motion>", {"state": 0x200}, "_pan_move"),
        ("<Motion>", {"state": 0x400}, "_pan_move"),
    ],
)
def test_pointer_event_reaches_its_handler(spied, event, options, operation):
    handlers = ("_press", "_drag", "_release", "_motion", "_pan_start", "_pan_move", "close_line")
    editor, calls = spied(*handlers)
    editor.canvas.event_generate(event, x=31, y=47, **options)
    ((name, (received,), named),) = calls
    assert (name, named) == (operation, {})
    assert (received.x, received.y, received.widget) == (31, 47, editor.canvas)


@pytest.mark.parametrize("delta, factor", [(120, 1.2), (1, 1.2), (0, 1 / 1.2), (-120, 1 / 1.2)])
def test_wheel_zooms_about_the_pointer(spied, send, delta, factor):
    editor, calls = spied("_zoom")
    send(editor).wheel(31, 47, delta)
    assert calls == once("_zoom", factor, 31, 47)
    assert type(calls[0][1][0]) is float


@pytest.mark.parametrize("number, factor", [(4, 1.2), (5, 0.8333333333333334)])
def test_wheel_buttons_zoom_about_the_pointer(spied, send, number, factor):
    editor, calls = spied("_zoom")
    send(editor).press(31, 47, button=number)
    assert calls == once("_zoom", factor, 31, 47)


def test_double_click_closes_the_outline(spied, send):
    editor, calls = spied("_press", "_release", "close_line")
    send(editor).double_click(31, 47)
    assert [name for name, *_ in calls] == ["_press", "_release", "close_line", "_release"]
    assert calls[2] == ("close_line", (), {})


def test_slow_clicks_are_no_double_click(spied, send):
    editor, calls = spied("_press", "_release", "close_line")
    hand = send(editor)
    hand.click(31, 47)
    hand.click(31, 47)
    assert [name for name, *_ in calls] == ["_press", "_release"] * 2


def test_other_buttons_do_nothing(spied):
    editor, calls = spied("_press", "_drag", "_release", "_motion", "_pan_start", "close_line")
    for number in (2, 3):
        editor.canvas.event_generate(f"<ButtonRelease-{number}>", x=1, y=1, state=0x100 << number)
    assert calls == []


def test_handlers_leave_the_event_to_other_bindings(open_editor, send, root):
    seen = []
    editor = open_editor()
    tag = "AfterTheEditor"
    editor.canvas.bindtags((*editor.canvas.bindtags(), tag))
    events = ["<ButtonPress>", "<ButtonRelease>", "<Motion>", "<MouseWheel>"]
    for event in events:
        editor.canvas.bind_class(tag, event, lambda e: seen.append(e.type.name))
    hand = send(editor)
    hand.stroke((10, 10), (50, 60))
    hand.motion(70, 70)
    hand.wheel(70, 70, 120)
    hand.press(70, 70, button=3)
    hand.press(70, 70, button=4)
    expected = "ButtonPress Motion ButtonRelease Motion MouseWheel ButtonPress ButtonPress"
    assert seen == expected.split()


def test_resizing_repaints_and_keeps_the_view(open_editor, sketcher):
    repaints = []

    class Editor(sketcher.SketchEditor):
        def redraw(self, *args):
            repaints.append(args)
            super().redraw(*args)

    editor = open_editor(one_of_each(), cls=Editor)
    view = (editor.scale, editor.centre.tolist())
    width = editor.canvas.winfo_width()
    repaints.clear()
    editor.geometry(f"{editor.winfo_width() + 60}x{editor.winfo_height() + 30}")
    settle(editor, lambda: editor.canvas.winfo_width() == width + 60)
    assert repaints and set(repaints) == {()}
    assert (editor.scale, editor.centre.tolist()) == view


def test_selection_in_the_list_reaches_its_handler_without_the_event(spied):
    editor, calls = spied("_list_selected", sketch=one_of_each())
    editor.list.selection_set("2")
    editor.update()
    assert calls == once("_list_selected")


def test_canvas_grows_with_the_window(open_editor):
    editor = open_editor()
    size = (editor.canvas.winfo_width(), editor.canvas.winfo_height())
    assert size == (622, 462)
    editor.geometry(f"{editor.winfo_width() + 50}x{editor.winfo_height() + 40}")
    settle(editor, lambda: editor.canvas.winfo_width() == size[0] + 50)
    assert editor.canvas.winfo_height() == size[1] + 40
