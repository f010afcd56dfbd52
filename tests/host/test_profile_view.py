"""The window's view of the profile: smooth at any size, zoomed and panned by hand."""

import math

import numpy as np
import pytest
from harness.user import find, until
from support.application import fills, in_editor, outlines
from support.events import settle
from tandrel.gui.widgets import PAL


@pytest.fixture
def view(start, part):
    """The view of the flange."""
    return start(part).view


def wheel(view, x, y, notches):
    for _ in range(abs(notches)):
        view.event_generate("<Button-4>" if notches > 0 else "<Button-5>", x=x, y=y)
    settle(view, lambda: view._waiting is None)


def place(view, x, y):
    """What lies at a pixel, in metres."""
    away = np.array([x - view.winfo_width() / 2, view.winfo_height() / 2 - y])
    return view._centre + away / view._scale


def off_circle(points):
    """How far, in pixels, the middles of chords are from the circle that their ends lie on."""
    middle = (points.min(axis=0) + points.max(axis=0)) / 2
    radius = np.linalg.norm(points[0] - middle)
    chords = (points + np.roll(points, 1, axis=0)) / 2
    return radius - np.linalg.norm(chords - middle, axis=1).min()


@pytest.mark.parametrize("notches", [0, 3, 12])
def test_arcs_are_smooth_however_large_they_are(view, notches):
    bore = outlines(view)[1]
    x, y = bore[0]
    wheel(view, round(x), round(y), notches)
    assert off_circle(bore) < 0.15
    zoomed = max(outlines(view), key=len)
    turned = np.diff(np.unwrap(np.arctan2(*np.diff(zoomed, axis=0).T)))
    steps = np.linalg.norm(np.diff(zoomed, axis=0), axis=1)
    near = (np.abs(zoomed[1:-1] - (x, y)) < 100).all(axis=1)
    # A chord of length s that turns by t against the next is off by s t / 8.
    assert (steps[:-1] * np.abs(turned) / 8)[near].max() < 0.3


def test_what_is_under_the_pointer_stays_there(view):
    before = place(view, 40, 50)
    wheel(view, 40, 50, 5)
    assert place(view, 40, 50) == pytest.approx(before, abs=1e-12)
    assert view._scale == pytest.approx(1.2**5 * view._fitted_scale(view._box))
    wheel(view, 40, 50, -5)
    assert place(view, 40, 50) == pytest.approx(before, abs=1e-12)


def test_the_wheel_ends_where_nothing_is_to_be_seen(view):
    wheel(view, 10, 10, 200)
    assert math.isfinite(view._scale) and view._scale == 1e5 * view._fitted_scale(view._box)
    wheel(view, 10, 10, -200)
    assert view._scale == pytest.approx(1e-2 * view._fitted_scale(view._box))


def test_the_button_and_the_key_show_the_whole_again(start, part):
    app = start(part)
    for again in (find(app.root, "TButton", text="Fit").invoke, lambda: app.perform("fit")):
        wheel(app.view, 30, 40, 4)
        assert app.view._scale > 2 * app.view._fitted_scale(app.view._box)
        again()
        app.root.update()
        assert app.view._scale == app.view._fitted_scale(app.view._box)
        plate = outlines(app.view)[0]
        middle = (plate.min(axis=0) + plate.max(axis=0)) / 2
        assert middle == pytest.approx([app.view.winfo_width() / 2, app.view.winfo_height() / 2])


def test_an_edit_keeps_the_view_and_another_part_is_shown_whole(start, part):
    app = start(part)
    wheel(app.view, 30, 40, 4)
    scale = app.view._scale

    def enlarge(editor):
        editor.select(0)
        editor.vars["w"].set("200")
        editor.apply_props()
        editor.ok()

    in_editor(app, enlarge)
    assert app.view._scale == scale
    app.open(str(part))
    assert app.view._scale == app.view._fitted_scale(app.view._box) != scale


def test_of_a_view_close_by_what_is_out_of_sight_is_not_painted(view):
    x, y = outlines(view)[1][0]
    wheel(view, round(x), round(y), 20)
    assert fills(view) == [PAL["accent_soft"], PAL["panel"]]
    assert sum(map(len, outlines(view))) < 5000


def test_a_hand_zooms_and_pans(acted, part):
    def script(app, person):
        view = app.view
        yield from person.steady(view)
        yield from person.over(view, 120, 130)
        before, scale = place(view, 120, 130), view._scale
        person.click(4, times=3)
        yield until(lambda: view._scale > 1.7 * scale, "three notches")
        assert place(view, 120, 130) == pytest.approx(before, abs=1e-9)
        for button in (2, 3):
            dragged = place(view, 120, 130)
            yield from person.over(view, 120, 130)
            person.press(button)
            yield from person.over(view, 150, 110)
            person.release(button)
            yield until(lambda: np.allclose(place(view, 150, 110), dragged), "the profile to come")
        person.key("ctrl+0")
        yield until(lambda: view._scale == view._fitted_scale(view._box), "all of it")

    acted(script, part)
