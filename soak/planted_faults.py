"""Small wrong changes to the C++, one at a time: does the test suite notice each?

They stand in soak/faults/, a file for each unit. Each is put into a copy of the tree, which is
built and tested until the first failure. A crash and a suite that doesn't end count as noticed.
The copy without any fault has to pass the same tests, so that nothing else counts as noticing.
"""

from __future__ import annotations

import argparse
import queue
import re
import shutil
import sys
import tempfile
import tomllib
from concurrent.futures import ThreadPoolExecutor
from contextlib import contextmanager
from pathlib import Path
from typing import Iterator, NamedTuple, Optional, Sequence

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT))

from soak.harness.suite import TooSlow, quietly, run_tests  # noqa: E402

FAULTS = ROOT / "soak" / "faults"
SOURCES = Path("tandrel/gui/sketcher")
NOT_COPIED = shutil.ignore_patterns(".git", "build", "__pycache__", ".*_cache", ".hypothesis")
EVERYTHING = ("tests",)
# Quickly built, and what a fault leaves unused is no reason to reject it.
OPTIONS = ("-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS=-w", "-DCMAKE_CXX_FLAGS_DEBUG=-O0")
PATIENCE = 900.0  # seconds
# Exit statuses of pytest.
PASSED, FAILED, BROKEN_OFF = 0, 1, 2


class Fault(NamedTuple):
    """`old` becomes `new` in `file`; `tests` are likely to notice and run first."""

    unit: str
    file: str
    old: str
    new: str
    wrong: str
    tests: tuple[str, ...]

    def __str__(self) -> str:
        return f"{self.unit}: {self.wrong}"

    def put_into(self, text: str) -> str:
        """The file's text with the fault; ValueError unless `old` occurs exactly once."""
        if text.count(self.old) != 1 or self.old == self.new:
            raise ValueError(f"occurs {text.count(self.old)} times in {self.file}:\n{self.old}")
        return text.replace(self.old, self.new)


class Verdict(NamedTuple):
    fault: Fault
    kind: str  # "found", "SURVIVED" or "ERROR"
    why: str = ""

    def __str__(self) -> str:
        return f"{self.kind:8} {self.fault}" + (f"\n         {self.why}" if self.why else "")


class Tree:
    """A copy of the tree, with a build of its own."""

    def __init__(self, root: Path, source: Path = ROOT) -> None:
        self.root = root
        shutil.copytree(source, root, ignore=NOT_COPIED, dirs_exist_ok=True, symlinks=True)
        self._sound: set[tuple[str, ...]] = set()

    def configure(self) -> None:
        quietly("cmake", "--preset", "release", *OPTIONS, cwd=self.root)

    def build(self) -> None:
        """RuntimeError with the compiler's output where it doesn't build."""
        quietly("cmake", "--build", "--preset", "release", cwd=self.root)

    def noticed_by(self, tests: Sequence[str]) -> str:
        """What failed first, empty where all pass."""
        with tempfile.TemporaryFile() as output:
            try:
                status = run_tests(self.root, "build", tests, output, ["-x"], PATIENCE)
            except TooSlow as error:
                return str(error)
            output.seek(0)
            said = output.read().decode(errors="replace")
        if status == PASSED:
            return ""
        if status < 0:
            return f"ended by signal {-status}"
        if status in (FAILED, BROKEN_OFF):
            failed = re.search(r"^(?:FAILED|ERROR) (.*)$", said, re.M)
            return failed[1] if failed else "pytest was broken off"
        raise RuntimeError(f"pytest: exit status {status}\n{said}")

    def require_sound(self, tests: tuple[str, ...]) -> None:
        """RuntimeError where the copy, built without a fault, doesn't pass these tests."""
        if tests not in self._sound:
            self.build()
            if noticed := self.noticed_by(tests):
                raise RuntimeError(f"without any fault: {noticed}")
            self._sound.add(tests)

    @contextmanager
    def with_fault(self, fault: Fault) -> Iterator[None]:
        path = self.root / SOURCES / fault.file
        sound = path.read_text()
        path.write_text(fault.put_into(sound))
        try:
            yield
        finally:
            path.write_text(sound)


def main(arguments: Optional[Sequence[str]] = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--jobs", type=int, default=1, help="copies of the tree at work at once")
    parser.add_argument("--only", default="", metavar="PATTERN", help="of 'unit: what is wrong'")
    parser.add_argument("--list", action="store_true", help="only tell which there are")
    options = parser.parse_args(arguments)
    faults = [fault for fault in read_faults(FAULTS) if re.search(options.only, str(fault))]
    if wrong := [verdict for fault in faults for verdict in not_applicable(fault)]:
        print(*wrong, sep="\n")
        return 1
    if options.list:
        print(*faults, f"{len(faults)} faults", sep="\n")
        return 0
    with tempfile.TemporaryDirectory(prefix="planted-faults-") as folder:
        return report(faults, all_judged(faults, Path(folder), options.jobs))


def read_faults(folder: Path) -> list[Fault]:
    return [
        Fault(
            path.stem,
            row["file"],
            row["old"],
            row["new"],
            row["wrong"],
            tuple(row.get("tests", ())),
        )
        for path in sorted(folder.glob("*.toml"))
        for row in tomllib.loads(path.read_text())["fault"]
    ]


def not_applicable(fault: Fault, root: Path = ROOT) -> list[Verdict]:
    missing = [name for name in fault.tests if not (root / name).exists()]
    try:
        fault.put_into((root / SOURCES / fault.file).read_text())
    except (ValueError, OSError) as error:
        return [Verdict(fault, "ERROR", str(error))]
    return [Verdict(fault, "ERROR", f"no such tests: {missing}")] if missing else []


def all_judged(faults: list[Fault], folder: Path, jobs: int) -> Iterator[Verdict]:
    """The verdicts in order. Each job works on a tree of its own."""
    trees: queue.SimpleQueue[Tree] = queue.SimpleQueue()
    for job in range(jobs):
        tree = Tree(folder / str(job))
        tree.configure()
        trees.put(tree)

    def verdict(fault: Fault) -> Verdict:
        tree = trees.get()
        try:
            return judged(fault, tree)
        finally:
            trees.put(tree)

    with ThreadPoolExecutor(jobs) as pool:
        try:
            yield from pool.map(verdict, faults)
        finally:
            pool.shutdown(cancel_futures=True)


def judged(fault: Fault, tree: Tree) -> Verdict:
    """Tries the tests that are likely to notice, then, where they don't, the whole suite."""
    for tests in filter(None, (fault.tests, EVERYTHING)):
        tree.require_sound(tests)
        with tree.with_fault(fault):
            try:
                tree.build()
            except RuntimeError as error:
                return Verdict(fault, "ERROR", f"doesn't build: {error}")
            if noticed := tree.noticed_by(tests):
                return Verdict(fault, "found", noticed)
    return Verdict(fault, "SURVIVED")


def report(faults: Sequence[Fault], verdicts: Iterator[Verdict]) -> int:
    found = 0
    for verdict in verdicts:
        print(verdict, flush=True)
        found += verdict.kind == "found"
    print(f"planted faults: {found} of {len(faults)} found")
    return 0 if found == len(faults) else 1


if __name__ == "__main__":
    sys.exit(main())
