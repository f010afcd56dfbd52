"""The coverage tool tells what isn't reached, and nothing of what only an exception's way is."""

import shutil
import subprocess

import pytest
from soak import coverage

PROGRAM = """
#include <string>

std::string said(int a) {
  return std::string(static_cast<std::size_t>(a), 'x');
}

int main(int argc, char**) {
  std::size_t sum = 0;
  for (const std::string& text : {said(1), said(2)}) sum += text.size();
  if (argc > 1) {
    sum += 4;
  }
  return sum == 3 && argc == 1 ? 0 : 1;
}
"""


@pytest.fixture
def counted(tmp_path):
    """What is counted of a program that was run once."""
    needed = [name for name in ("clang++", "llvm-cov", "llvm-profdata") if not shutil.which(name)]
    if needed:
        pytest.skip(f"needs {needed}")
    (tmp_path / "program.cpp").write_text(PROGRAM)
    flags = ["-fprofile-instr-generate", "-fcoverage-mapping"]
    subprocess.run(["clang++", *flags, "program.cpp", "-o", "program"], cwd=tmp_path, check=True)
    environment = {"LLVM_PROFILE_FILE": str(tmp_path / "1.profraw")}
    subprocess.run([tmp_path / "program"], env=environment, check=True)
    return coverage.counts_of(tmp_path / "program", tmp_path)


def test_what_is_not_reached_is_told(counted):
    (file,) = counted["files"]
    places = [line.partition("program.cpp:")[2] for line in coverage.missed_in(file)]
    assert sorted(places) == [
        "11:17: never executed",
        "11:7: never true",
        "14:10: never false",
        "14:22: never false",
        "14:38: never executed",
    ]
    assert counted["totals"]["branches"]["covered"] == counted["totals"]["branches"]["count"] - 3


def test_the_suite_has_to_pass(monkeypatch):
    monkeypatch.setattr(coverage, "count", lambda tests, jobs: 1)
    with pytest.raises(SystemExit, match="has to pass first"):
        coverage.main([])


@pytest.mark.parametrize("reached, status", [(True, 0), (False, 1)])
def test_the_figure_is_judged(monkeypatch, capsys, reached, status):
    totals = {
        kind: {"count": 1000, "covered": 1000 - (not reached)} for kind in ("lines", "branches")
    }
    file = {
        "filename": "a.cpp",
        "segments": [],
        "branches": [[3, 5, 3, 9, 7, int(reached), 0, 0, 4]],
    }
    monkeypatch.setattr(coverage, "count", lambda tests, jobs: 0)
    monkeypatch.setattr(coverage, "counts_of", lambda *_: {"files": [file], "totals": totals})
    assert coverage.main([]) == status
    told = capsys.readouterr().out.strip().splitlines()
    of = "1,000 of 1,000" if reached else "999 of 1,000"
    assert told[-1] == f"coverage: {of} lines, {of} branches"
    assert [line.partition("a.cpp")[2] for line in told[:-1]] == (
        [] if reached else [":3:5: never false"]
    )
