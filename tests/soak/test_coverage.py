"""The coverage tool tells what isn't reached, and nothing of what only an exception's way is."""

import json
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
    return lambda *options: coverage.exported(tmp_path / "program", tmp_path, *options)


def test_what_is_not_reached_is_told(counted):
    files = json.loads(counted())["data"][0]["files"]
    missed = [*coverage.missed_lines(counted("-format=lcov")), *coverage.missed_branches(files)]
    assert sorted(place.partition("program.cpp:")[2] for place in missed) == [
        "11:7: never true",
        "12: never executed",
        "13: never executed",
        "14:10: never false",
        "14:22: never false",
    ]


def test_the_suite_has_to_pass(monkeypatch):
    monkeypatch.setattr(coverage, "count", lambda tests, jobs: 1)
    with pytest.raises(SystemExit, match="has to pass first"):
        coverage.main([])


@pytest.mark.parametrize("reached, status", [(True, 0), (False, 1)])
def test_the_figure_is_judged(monkeypatch, capsys, reached, status):
    part = {"count": 1000, "covered": 1000 - (not reached)}
    file = {"filename": "a.cpp", "branches": [[3, 5, 3, 9, 7, int(reached), 0, 0, 4]]}
    counts = {"data": [{"files": [file], "totals": {"lines": part, "branches": part}}]}
    lcov = f"SF:a.cpp\nDA:3,{int(reached)}\nend_of_record\n"
    monkeypatch.setattr(coverage, "count", lambda tests, jobs: 0)
    monkeypatch.setattr(
        coverage, "exported", lambda *words: lcov if words[2:] else json.dumps(counts)
    )
    assert coverage.main([]) == status
    *missed, figure = capsys.readouterr().out.strip().splitlines()
    of = "1,000 of 1,000" if reached else "999 of 1,000"
    assert figure == f"coverage: {of} lines, {of} branches"
    told = ["a.cpp:3: never executed", "a.cpp:3:5: never false"]
    assert missed == ([] if reached else told)
