"""The runs under the sanitizers: nothing is said of the module, everything of a planted fault."""

import re

import pytest
from soak import sanitizers
from support.planted_build import plant

ONE_FILE = ["tests/test_describe.py", "--jobs", "1"]


def report(capsys):
    """The exit status, what was printed, and the number of reports in its last line."""
    status = sanitizers.main(ONE_FILE)
    printed = capsys.readouterr().out
    figure = re.fullmatch(r"sanitizers: ([\d,]+) tests: (\d+) reports", printed.splitlines()[-1])
    return status, printed, int(figure[1]), int(figure[2])


def test_nothing_is_reported_of_the_module(capsys):
    status, printed, tests, reports = report(capsys)
    assert (status, reports) == (0, 0), printed
    assert tests > 0
    assert "1 processes looked for leaks" in printed


@pytest.mark.parametrize(
    "fault, said",
    {
        "number never released": r"leak of \d+ byte.*\n(.*\n)*?.*tandrel::py::to_python\(double\)",
        "list never released": r"leak of \d+ byte.*\n(.*\n)*?.*/sketcher/",
        "write past the end": "heap-buffer-overflow|store to address .* with insufficient space",
        "signed overflow": "runtime error: signed integer overflow",
    }.items(),
)
def test_a_planted_fault_is_reported(capsys, monkeypatch, tmp_path, fault, said):
    planted = plant(fault, sanitizers.built("sanitize"), tmp_path)
    monkeypatch.setattr(sanitizers, "built", lambda preset: planted)
    status, printed, _, reports = report(capsys)
    assert status == 1
    assert reports > 0
    assert re.search(said, printed)
