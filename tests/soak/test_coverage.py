"""The coverage tool tells what isn't reached, and isn't told what can't be."""

import shutil
import subprocess
import tomllib

import pytest
from harness.places import ROOT
from soak.harness import executed
from soak.harness.executed import Line, counted, judged

REACHED = Line("a.cpp", 1, "if (a) b();", 7, [3, 4])
ONE_WAY = Line("a.cpp", 2, "if (c) d();", 7, [0, 7])
DEAD = Line("a.cpp", 3, "e();", 0, [])


def argued(line, missed):
    return {"file": line.file, "line": line.text, "missed": missed, "reason": "none"}


class TestJudgement:
    def test_all_is_well_where_everything_is_reached(self):
        faults, figure = judged([REACHED], [])
        assert faults == []
        assert figure == (
            "coverage: 100.0 % of 1 lines, 100.0 % of 2 reachable branches "
            "(0 unreachable, each argued)"
        )

    def test_a_branch_and_a_line_that_nobody_reaches_are_faults(self):
        faults, figure = judged([REACHED, ONE_WAY, DEAD], [])
        assert faults == [
            "a.cpp:2: 1 branches not taken: if (c) d();",
            "a.cpp:3: never executed: e();",
        ]
        assert "66.6 % of 3 lines, 75.0 % of 4 reachable branches (0 un" in figure

    def test_what_is_argued_is_left_out_of_the_figure(self):
        faults, figure = judged([REACHED, ONE_WAY, DEAD], [argued(ONE_WAY, 1), argued(DEAD, 1)])
        assert faults == []
        assert "100.0 % of 2 lines, 100.0 % of 3 reachable branches (2 unreachable" in figure

    @pytest.mark.parametrize("line, missed", [(REACHED, 1), (ONE_WAY, 2), (DEAD, 2)])
    def test_an_entry_that_is_reached_after_all_is_a_fault(self, line, missed):
        faults, _ = judged([line], [argued(line, missed)])
        assert len(faults) == 1 and f"{missed} argued and {line.missed} missed" in faults[0]

    def test_an_entry_speaks_of_one_file(self):
        faults, _ = judged([ONE_WAY, ONE_WAY._replace(file="b.cpp")], [argued(ONE_WAY, 1)])
        assert faults == ["b.cpp:2: 1 branches not taken: if (c) d();"]

    def test_an_entry_whose_line_is_gone_is_a_fault(self):
        faults, _ = judged([REACHED], [argued(DEAD, 1)])
        assert faults == ["unreachable.toml: no line of a.cpp reads e();"]

    def test_nearly_all_is_not_all(self):
        lines = [REACHED._replace(number=number) for number in range(9999)]
        _, figure = judged([*lines, DEAD], [])
        assert "99.9 % of 10,000 lines" in figure


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


@pytest.mark.skipif(not shutil.which("gcovr"), reason="coverage is counted by gcovr")
def test_branches_that_only_an_exception_takes_do_not_count(tmp_path):
    """Those of clean-up code have no mark of their own in what gcov writes."""
    source = tmp_path / "program.cpp"
    source.write_text(PROGRAM)
    compiler = ["g++", "--coverage", *executed.FLAGS.split(), "-o", "program", source.name]
    subprocess.run(compiler, cwd=tmp_path, check=True)
    subprocess.run(["./program"], cwd=tmp_path, check=True)
    missed = {
        line.text: line.missed for line in counted(tmp_path, tmp_path, "program") if line.missed
    }
    assert missed == {
        "if (argc > 1) {": 1,
        "sum += 4;": 1,
        "return sum == 3 && argc == 1 ? 0 : 1;": 2,
    }


def test_every_entry_has_its_line_and_a_reason():
    entries = tomllib.loads(executed.UNREACHABLE.read_text())["unreachable"]
    for entry in entries:
        lines = (ROOT / entry["file"]).read_text().splitlines()
        assert entry["line"] in map(str.strip, lines)
        assert len(entry["reason"]) > 40
