"""What the tests of the tools share."""

import pytest


@pytest.fixture(autouse=True)
def same_display(display, monkeypatch):
    """The tools are programs: each may point its process at an X server of its own."""
    monkeypatch.setenv("DISPLAY", display)


@pytest.fixture
def told_of(tmp_path, monkeypatch, capsys):
    """What a tool tells of a child that calls this script's `serve`: its status and lines."""

    def run(tool, script, *words):
        (tmp_path / "planted.py").write_text(script)
        monkeypatch.setenv("PYTHONPATH", str(tmp_path))
        monkeypatch.setattr(tool, "CHILD", "planted:serve")
        status = tool.main([*words])
        return status, capsys.readouterr().out.splitlines()

    return run
