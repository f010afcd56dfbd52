"""Drawings in the application's window: what is asked, and what is told of them."""

import math
from tkinter.font import Font

import pytest
from support.application import answering, dialogs, outlines
from support.drawings import new_drawing, rectangle
from support.events import settle
from tandrel.application.dialogs import Question
from tandrel.application.importing import Layers, Report
from tandrel.exchange.tell import Note
from tandrel.gui import i18n


@pytest.fixture
def drawn(tmp_path):
    """drawn(draw, units=4): the path of a drawing whose space draw(space) has filled."""

    def write(draw, units=4):
        drawing, space = new_drawing(units)
        draw(space)
        path = tmp_path / "part.dxf"
        drawing.saveas(path)
        return path

    return write


def too_large(space):
    """In inches."""
    rectangle(space, 0, 0, 370, 370)


def with_frame(space):
    rectangle(space, 0, 0, 297, 210, "FRAME")
    rectangle(space, 50, 50, 100, 60, "PART")
    space.add_circle((70, 70), 5, dxfattribs={"layer": "PART"})


def with_gap(space):
    space.add_lwpolyline([(0, 0), (100, 0), (100, 50), (0, 50), (0, 1)])
    space.add_circle((20, 20), 5)


def with_texts(space):
    rectangle(space, 0, 0, 100, 50)
    for k in range(3):
        space.add_text("a note", dxfattribs={"insert": (200 + k, 20)})
    space.add_point((10, 10))


def size(app):
    return app.size.cget("text")


def ticking(root, *toggled, ends=True):
    """Toggle layers in the dialog to come, then import, or close it; their names gather."""
    seen = []

    def look():
        shown = [d for d in dialogs(root, Layers) if root.grab_current() is d]
        if not shown:
            root.after(5, look)
            return
        seen.append({name: on for name, on in shown[0].chosen.items()})
        for name in toggled:
            shown[0].toggle(name)
        if ends:
            shown[0].button.invoke()
        else:
            shown[0].close()

    root.after(5, look)
    return seen


def zoomed(view, x, y):
    """The scale after a notch of the wheel."""
    view.event_generate("<Button-4>", x=x, y=y)
    settle(view, lambda: view._waiting is None)
    return view._scale


@pytest.mark.parametrize("unit, shown", [("mm", "370 mm × 370 mm"), ("in", "9398 mm × 9398 mm")])
def test_units_that_make_no_part_are_asked_about(start, drawn, unit, shown):
    app = start()
    asked = answering(app.root, unit)
    app.open(str(drawn(too_large, units=1)))
    assert asked[0].startswith("part.dxf") and "9398 mm × 9398 mm" in asked[0]
    assert size(app) == shown


@pytest.mark.parametrize("draw", [too_large, with_frame])
def test_without_an_answer_nothing_changes(start, part, drawn, draw):
    app = start(part)
    before = app.session.document
    answering(app.root, None)
    ticking(app.root, ends=False)
    app.open(str(drawn(draw, units=1 if draw is too_large else 4)))
    assert app.session.document is before
    assert app.root.title() == "Mounting flange – tandrel"
    assert app.message.cget("text") == "part.dxf isn't opened. Everything is as it was."


@pytest.mark.parametrize("language, mark", [("de", ": "), ("fr", "\u00a0: "), ("zh", "\uff1a")])
def test_units_to_choose_from_are_written_as_the_language_does(start, drawn, language, mark):
    app = start()
    i18n.set_language(language)
    asked = []

    def look():
        for question in dialogs(app.root, Question):
            asked.extend(button.cget("text") for button in question.buttons.values())
            question.close()
        if not asked:
            app.root.after(5, look)

    app.root.after(5, look)
    app.open(str(drawn(with_gap, units=0)))
    assert asked[0].endswith(f"(mm){mark}100 mm × 50 mm")


def test_a_unit_from_the_command_line_is_not_asked_about(start, drawn):
    app = start()
    app.open(str(drawn(too_large, units=1)), "mm")
    assert size(app) == "370 mm × 370 mm"
    (report,) = dialogs(app.root, Report)
    assert report.list.item("0", "text").startswith("The drawing says that its unit is in")


def test_the_frame_of_the_sheet_is_left_out_unless_it_is_ticked(start, drawn):
    app = start()
    path = str(drawn(with_frame))
    seen = ticking(app.root)
    app.open(path)
    assert seen == [{"FRAME": False, "PART": True}]
    assert size(app) == "100 mm × 60 mm"
    (report,) = dialogs(app.root, Report)
    assert "contours on the layer FRAME" in report.list.item("0", "text")
    ticking(app.root, "FRAME")
    app.open(path)
    assert size(app) == "297 mm × 210 mm"
    assert dialogs(app.root, Report) == []


@pytest.mark.parametrize("answer, shown", [("go on", "10 mm × 10 mm"), ("stay", ""), (None, "")])
def test_an_outline_is_not_lost_silently(start, drawn, answer, shown):
    app = start()
    asked = answering(app.root, answer)
    app.open(str(drawn(with_gap)))
    assert "lack 1 mm near u = 0 mm, v = 0.5 mm" in asked[0]
    assert size(app) == shown


def test_what_was_left_out_is_listed_and_shown(start, drawn):
    app = start(drawn(with_texts))
    (report,) = dialogs(app.root, Report)
    rows = [report.list.item(row, "text") for row in report.list.get_children()]
    assert rows == [
        "Left out (3): texts, near u = 200 mm, v = 20 mm",
        "Left out (1): points, near u = 10 mm, v = 10 mm",
    ]
    assert "the list tells" in app.message.cget("text")
    report.button.invoke()
    (ring,) = [i for i in app.view.find_withtag("mark") if app.view.type(i) == "oval"]
    x1, y1, x2, y2 = app.view.coords(ring)
    # It lies to the right of the profile, which makes room for it.
    assert x1 > max(outline[:, 0].max() for outline in outlines(app.view))
    assert x2 < app.view.winfo_width() and math.isclose(x2 - x1, y2 - y1)
    # What the user looks at stays, as long as the place is in sight.
    scale = zoomed(app.view, round((x1 + x2) / 2), round((y1 + y2) / 2))
    report.button.invoke()
    app.unit_choice.set("in")
    app.perform("change_units")
    assert app.view.find_withtag("mark") and app.view._scale == scale
    report.list.selection_set("1")
    report.button.invoke()
    whole = app.view._fitted_scale(app.view._box)
    assert app.view._scale == whole != scale
    scale = zoomed(app.view, 20, 20)
    report.close()
    assert app.view.find_withtag("mark") == () and app.view._scale == scale != whole


def test_what_has_no_place_cannot_be_shown(start, drawn):
    def twice(space):
        rectangle(space, 0, 0, 100, 50)
        rectangle(space, 0, 0, 100, 50)

    app = start(drawn(twice))
    (report,) = dialogs(app.root, Report)
    assert report.button.instate(["disabled"])


LONG = "a name of a drawing or of a layer that goes on and on " * 4


def lies_on_the_screen(window):
    window.update()
    right, lower = window.winfo_screenwidth(), window.winfo_screenheight()
    x, y = window.winfo_rootx(), window.winfo_rooty()
    return 0 <= x <= right - window.winfo_width() and 0 <= y <= lower - window.winfo_height()


@pytest.mark.parametrize("screen", ["root", "small_root"])
def test_what_is_asked_and_listed_lies_on_the_screen(start, request, screen):
    """Whatever names there are, and wherever the window stands."""
    app = start(root=request.getfixturevalue(screen))
    app.root.geometry("-0-0")
    settle(app.root, lambda: app.root.winfo_x() > 0)
    note = Note("Left out (1): points, near u = 1234.56 mm, v = 1234.56 mm, and more of it")
    report = Report(app.root, LONG, 20 * [note], app.view.mark)
    layers = Layers(app.root, f"{LONG}\n\n{LONG}", {f"{k} {LONG}": k for k in range(20)}, [])
    for dialog, rows in ((report, report.list), (layers, layers.boxes)):
        assert lies_on_the_screen(dialog)
        measure = Font(dialog, "TkDefaultFont").measure
        widest = max(measure(rows.item(row, "text")) for row in rows.get_children())
        assert widest < rows.bbox(rows.get_children()[0], "#0")[2]
        dialog.destroy()


def test_the_list_goes_with_the_drawing(start, drawn):
    app = start()
    app.open(str(drawn(with_texts)))
    settle(app.root, lambda: dialogs(app.root, Report))
    answering(app.root, "leave")
    app.perform("new")
    assert dialogs(app.root, Report) == []
