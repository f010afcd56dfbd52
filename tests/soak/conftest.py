"""What the tests of the tools share."""

import sys

import pytest
from harness.places import ROOT


@pytest.fixture(autouse=True)
def same_display(display, monkeypatch):
    """The tools are programs: each may point its process at an X server of its own."""
    monkeypatch.setenv("DISPLAY", display)


@pytest.fixture
def told_of(tmp_path, capsys):
    """What a tool tells of a child that is this script: its status and lines."""

    def run(tool, script, *words):
        file = tmp_path / "planted.py"
        file.write_text(f"import sys\nsys.path[:0] = [{str(ROOT)!r}]\n{script}")
        status = tool.main([*words], [sys.executable, str(file)])
        return status, capsys.readouterr().out.splitlines()

    return run
