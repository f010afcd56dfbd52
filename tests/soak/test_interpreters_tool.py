"""The tool that uses the one file in every interpreter: what it says of the file, and of a wrong
one."""

import shutil
import sys
from pathlib import Path

import pytest
from harness.places import BUILD
from soak import interpreters

THIS = {"3.11": Path(sys.executable)}


@pytest.fixture
def wrong_build(tmp_path):
    """A build folder of its own, to spoil."""
    shutil.copytree(BUILD / "tandrel", tmp_path / "tandrel")
    return tmp_path


def test_this_interpreter_is_served_and_missing_ones_are_told(display, capsys):
    assert interpreters.report(BUILD, THIS) == 0
    lines = capsys.readouterr().out.splitlines()
    assert lines[0].startswith("this ") and lines[0].endswith(": the same")
    assert sum("skipped" in line for line in lines) == 4
    assert lines[-1] == "interpreters: 1 of 5 with the same file, 3 ways each: 0 faults"


def test_a_file_that_no_interpreter_can_load(display, capsys, wrong_build):
    (wrong_build / "tandrel" / "gui" / "sketcher.abi3.so").write_bytes(b"\x7fELF")
    assert interpreters.report(wrong_build, THIS) == 1
    assert "interpreters: 0 of 5: not even this one" in capsys.readouterr().out


def test_an_interpreter_that_does_otherwise(display, capsys, tmp_path):
    """It says that it is a newer one, and ends with an error when it is used."""
    script = tmp_path / "python"
    script.write_text('#!/bin/sh\n[ "$1" = -c ] && echo 3.99.0 || { echo "no" >&2; exit 1; }\n')
    script.chmod(0o755)
    assert interpreters.report(BUILD, {"3.13": script}) == 1
    lines = capsys.readouterr().out.splitlines()
    assert "3.13  3.99.0" in lines
    assert lines[-1] == "interpreters: 0 of 5 with the same file, 3 ways each: 3 faults"


def test_an_interpreter_that_paints_something_else(display, capsys, monkeypatch):
    real = interpreters.walk_through

    def walk_through(interpreter, *options, **settings):
        outcome = real(interpreter, *options, **settings)
        if options:
            outcome["pictures"][0].pop()
        return outcome

    monkeypatch.setattr(interpreters, "walk_through", walk_through)
    assert interpreters.report(BUILD, THIS) == 1
    printed = capsys.readouterr().out
    assert "-X dev -W error: did otherwise:" in printed
    assert printed.endswith("interpreters: 0 of 5 with the same file, 3 ways each: 2 faults\n")
