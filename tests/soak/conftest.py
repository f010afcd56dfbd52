"""What the tests of the tools share."""

import pytest


@pytest.fixture(autouse=True)
def same_display(display, monkeypatch):
    """The tools are programs: each may point its process at an X server of its own."""
    monkeypatch.setenv("DISPLAY", display)
