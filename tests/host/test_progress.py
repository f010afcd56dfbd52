"""Long tasks: when their window appears, what it shows, and how they are stopped."""

from unittest.mock import Mock

import pytest
from support.application import dialogs
from support.events import settle
from tandrel.application import progress
from tandrel.gui import widgets
from tandrel.progress import Stopped


@pytest.fixture(autouse=True)
def half_a_second(monkeypatch):
    monkeypatch.setattr(progress, "PATIENCE_SECONDS", 0.5)


@pytest.fixture
def clock():
    """A time that passes only when told to."""
    clock = Mock(now=100.0)
    clock.side_effect = lambda: clock.now
    return clock


@pytest.fixture
def themed(root):
    widgets.install(root)
    settle(root)
    return root


def shown(root):
    return dialogs(root, progress._Progress)


def test_a_short_task_has_no_window_and_lets_no_event_through(themed, clock):
    happened = []
    themed.after(0, lambda: happened.append(True))

    def task(tick):
        for k in range(40):
            clock.now += 0.01
            tick(k / 40)
        assert not shown(themed)
        return "result"

    assert progress.run(themed, "Working", task, clock) == "result"
    assert happened == []


def test_a_long_task_shows_how_far_it_is(themed, clock):
    seen = []

    def task(tick):
        for k in range(21):
            clock.now += 0.1
            tick(k / 20)
            seen.append([float(w.bar.cget("value")) for w in shown(themed)])
        return "result"

    assert progress.run(themed, "Opening big.json…", task, clock) == "result"
    assert seen[:4] == [[], [], [], []]
    assert [values[0] for values in seen[5:]] == pytest.approx([k / 20 for k in range(5, 21)])
    assert not shown(themed)


def test_events_are_handled_now_and_then(themed, clock):
    turns = []

    def task(tick):
        clock.now += 1
        tick(0.0)
        (window,) = shown(themed)
        window.update = lambda: turns.append(clock.now)
        for _ in range(1000):
            clock.now += 0.001
            tick(0.5)
        del window.update

    progress.run(themed, "Working", task, clock)
    assert 15 <= len(turns) <= 20


@pytest.mark.parametrize("way", ["button", "escape", "frame"])
def test_the_user_stops_a_task(managed_root, clock, way):
    themed, done = managed_root, []
    widgets.install(themed)

    def task(tick):
        for k in range(100):
            clock.now += 0.1
            tick(k / 100)
            done.append(k)
            for window in shown(themed):
                if way == "button":
                    window.button.invoke()
                elif way == "escape":
                    settle(window, lambda: window.focus_get() is window.button)
                    window.event_generate("<Escape>")
                else:
                    window.tk.call(*window.tk.splitlist(window.protocol("WM_DELETE_WINDOW")))

    with pytest.raises(Stopped):
        progress.run(themed, "Working", task, clock)
    assert len(done) < 10
    assert not shown(themed)
    assert themed.grab_current() is None


def test_what_a_task_raises_comes_out_and_the_window_goes(themed, clock):
    def task(tick):
        clock.now += 1
        tick(0.0)
        assert shown(themed)
        raise KeyError("cause")

    with pytest.raises(KeyError, match="cause"):
        progress.run(themed, "Working", task, clock)
    assert not shown(themed)


def test_the_window_takes_what_the_user_does_and_shows_any_fraction(themed, clock):
    def task(tick):
        for fraction, value in ((-1, 0), (0.25, 0.25), (7, 1)):
            clock.now += 1
            tick(fraction)
            (window,) = shown(themed)
            assert float(window.bar.cget("value")) == value
        assert themed.grab_current() is window
        assert window.focus_lastfor() is window.button

    progress.run(themed, "Working", task, clock)


def test_a_span_is_a_part_of_the_whole():
    told = []
    tick = progress.span(told.append, 0.5, 0.9)
    for fraction in (0, 0.5, 1):
        tick(fraction)
    assert told == pytest.approx([0.5, 0.7, 0.9])
