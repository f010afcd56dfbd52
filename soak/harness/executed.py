"""What of the C++ a build executed, line by line and branch by branch, as gcovr counts it.

Branches that are taken only while an exception is on its way don't count. A line or branch that no
test can reach stands with its reason in unreachable.toml; any other that isn't reached is an error,
and so is an entry there that is reached after all or whose line is gone.
"""

from __future__ import annotations

import json
import subprocess
import sys
import tomllib
from pathlib import Path
from typing import Any, Collection, Iterable, NamedTuple

from harness.places import ROOT
from soak.harness.suite import quietly

SOURCES = "tandrel/gui/sketcher/"
UNREACHABLE = ROOT / "soak" / "unreachable.toml"
GCOV = ROOT / "soak" / "harness" / "gcov.py"
# As many branches in the machine code as in the source: without optimisation the compiler checks
# whether temporaries exist that always do, and with it, it merges conditions. Thread-safe statics
# are checked twice.
FLAGS = (
    "-O1 -fno-inline -fno-ssa-phiopt --param=logical-op-non-short-circuit=0"
    " -fno-threadsafe-statics"
)


class Line(NamedTuple):
    """A line of the source and how often it and each of its branches were executed."""

    file: str
    number: int
    text: str
    executed: int
    branches: list[int]

    @property
    def missed(self) -> int:
        """How many branches were never taken; 1 for a line that was never executed."""
        return self.branches.count(0) if self.executed else 1

    def __str__(self) -> str:
        what = f"{self.missed} branches not taken" if self.executed else "never executed"
        return f"{self.file}:{self.number}: {what}: {self.text}"


class Result(NamedTuple):
    faults: list[str]
    figure: str


def build(folder: Path) -> None:
    """Build the preset whose folder this is, nothing of it executed yet."""
    preset = folder.name
    quietly("cmake", "--preset", preset, "-DCMAKE_BUILD_TYPE=", f"-DCMAKE_CXX_FLAGS={FLAGS}")
    quietly("cmake", "--build", "--preset", preset)
    for counts in folder.rglob("*.gcda"):
        counts.unlink()


def of_module(folder: Path) -> Result:
    """What was executed of the module that is built in this folder."""
    entries = tomllib.loads(UNREACHABLE.read_text()).get("unreachable", [])
    return judged(counted(ROOT, folder, SOURCES), entries)


def counted(root: Path, folder: Path, sources: str) -> list[Line]:
    """What the programs in `folder` executed of the sources below `root`."""
    command = ["gcovr", "--root", str(root), "--object-directory", str(folder), "--json"]
    command += ["--filter", str(root / sources), "--gcov-executable", f"{sys.executable} {GCOV}"]
    command += ["--exclude-throw-branches", "--exclude-unreachable-branches", str(folder)]
    done = subprocess.run(command, cwd=root, check=True, capture_output=True, text=True)
    return list(lines_of(json.loads(done.stdout)["files"], root))


def lines_of(files: Iterable[dict[str, Any]], root: Path) -> Iterable[Line]:
    for file in files:
        texts = (root / file["file"]).read_text().splitlines()
        for row in file["lines"]:
            if row["gcovr/noncode"]:
                continue
            number = row["line_number"]
            branches = [branch["count"] for branch in row["branches"]]
            yield Line(file["file"], number, texts[number - 1].strip(), row["count"], branches)


def judged(lines: list[Line], entries: list[dict[str, Any]]) -> Result:
    """Compares what was missed with the entries, each with `file`, `line`, `missed`, `reason`.

    An entry speaks of all lines of its file with that text; `missed` is how many of their branches
    aren't taken, a line that isn't executed counting as one.
    """
    argued = {(entry["file"], entry["line"]): entry["missed"] for entry in entries}
    faults = [str(line) for line in lines if line.missed and not is_in(argued, line)]
    for (file, text), expected in argued.items():
        found = [line.missed for line in lines if (line.file, line.text) == (file, text)]
        if not found:
            faults.append(f"{UNREACHABLE.name}: no line of {file} reads {text}")
        elif sum(found) != expected:
            faults.append(
                f"{UNREACHABLE.name}: {expected} argued and {sum(found)} missed in {file}: {text}"
            )
    return Result(faults, figure(lines, argued.keys()))


def figure(lines: list[Line], argued: Collection[tuple[str, str]]) -> str:
    unreachable = sum(line.missed for line in lines if is_in(argued, line))
    executed = [line.executed for line in lines if line.executed or not is_in(argued, line)]
    taken = [count for line in lines for count in line.branches if count or not is_in(argued, line)]
    return (
        f"coverage: {percentage(executed)} of {len(executed):,} lines, "
        f"{percentage(taken)} of {len(taken):,} reachable branches "
        f"({unreachable} unreachable, each argued)"
    )


def is_in(argued: Collection[tuple[str, str]], line: Line) -> bool:
    return (line.file, line.text) in argued


def percentage(counts: list[int]) -> str:
    """The part of the counts that isn't zero; 100.0 % only for all of them."""
    return f"{(len(counts) - counts.count(0)) * 1000 // max(len(counts), 1) / 10:.1f} %"
