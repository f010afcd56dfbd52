"""Small wrong changes to the C++, made at random, one at a time: do the tests notice each?

The changes are those of common/changes.py, every kind of them as often as another. Each is put into
a copy of the tree, which is built and tested until the first failure: first by the tests that
noticed a change of that file before, then by the module's own, then by the rest. A crash and a test
that doesn't end count as noticed. A change that doesn't compile, or after which the compiler writes
the same file, isn't counted. Those that change nothing for anybody stand in argued_faults.toml.
"""

import argparse
import filecmp
import json
import random
import re
import shutil
import sys
import tempfile
import threading
import tomllib
from collections import Counter, defaultdict
from collections.abc import Iterator, Sequence
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import NamedTuple, Optional

from harness.places import ROOT
from soak.common.changes import Change, changes_in
from soak.common.suite import TooSlow, quietly, run_tests

ARGUED = ROOT / "soak" / "argued_faults.toml"
HISTORY = ROOT / "build" / "soak" / "noticed.json"  # which tests noticed a change of which file
SOURCES = Path("tandrel/gui/sketcher")
MODULE = Path("build/tandrel/gui/sketcher.abi3.so")
NOT_COPIED = shutil.ignore_patterns(".git", "build", "__pycache__", ".*_cache", ".hypothesis")
# Optimised, so that what changes nothing is seen to; what a fault leaves unused is no reason to
# reject it.
OPTIONS = (
    f"-DPython3_EXECUTABLE={sys.executable}",
    "-DCMAKE_BUILD_TYPE=Debug",
    "-DCMAKE_CXX_FLAGS=-w",
    "-DCMAKE_CXX_FLAGS_DEBUG=-O1",
)
MOST_SECONDS = 300.0  # of one test
PATIENCE = 3600.0  # of all of them
NOT_COUNTED = ("not compiled", "same file")
# They prove the tools, or build and measure for minutes what the others try as well.
NOT_HERE = ("tests/verify/test_packaging.py", "tests/verify/test_benchmarks.py")
# The module's own first.
TESTS = sorted(str(file.relative_to(ROOT)) for file in ROOT.glob("tests/test_*.py"))
TESTS += ["tests/host", "tests/verify"]
LIKELY = 40  # tests that are tried before the others
PASSED, FAILED, BROKEN_OFF = 0, 1, 2  # exit statuses of pytest


class Fault(NamedTuple):
    """One change in one file."""

    file: str
    kind: str
    line: int
    old: str  # the lines that it changes, in single spaces, without what is the same around them
    new: str
    text: str  # the whole file with it

    def __str__(self) -> str:
        return f"{self.file}:{self.line}: {self.kind}: {self.key[1]}"

    @property
    def key(self) -> tuple[str, str]:
        return self.file, f"{self.old}  ->  {self.new}"


def fault_of(file: str, text: str, change: Change) -> Fault:
    start = text.rfind("\n", 0, change.start) + 1
    end = text.find("\n", change.end)
    old = text[start:end]
    new = text[start : change.start] + change.new + text[change.end : end]
    line = text.count("\n", 0, change.start) + 1
    old, new = (" ".join(part.split()) for part in (old, new))
    return Fault(file, change.kind, line, old, new, change.made_in(text))


def sample(sources: Path, seed: int, only: str = "") -> Iterator[Fault]:
    """All faults in a random order, each kind as often as another as long as there are any."""
    kinds: defaultdict[str, list[Fault]] = defaultdict(list)
    for path in sorted(sources.rglob("*.[ch]pp")):
        text, name = path.read_text(), str(path.relative_to(sources))
        for change in changes_in(text) if re.search(only, name) else ():
            kinds[change.kind].append(fault_of(name, text, change))
    chance = random.Random(seed)
    for kind in sorted(kinds):
        chance.shuffle(kinds[kind])
    while kinds:
        kind = chance.choice(sorted(kinds))
        yield kinds[kind].pop()
        if not kinds[kind]:
            del kinds[kind]


class Verdict(NamedTuple):
    fault: Fault
    kind: str  # "noticed", "argued", "SURVIVED", "not compiled" or "same file"
    by: str = ""

    def __str__(self) -> str:
        return f"{self.kind:8} {self.fault}" + (f"\n         {self.by}" if self.by else "")


class Tree:
    """A copy of the tree, with a build of its own."""

    def __init__(self, root: Path, tests: Sequence[str], source: Path = ROOT) -> None:
        self.root, self.tests = root, tests
        shutil.copytree(source, root, ignore=NOT_COPIED, dirs_exist_ok=True, symlinks=True)
        quietly("cmake", "--preset", "release", *OPTIONS, cwd=root)
        self.build()
        shutil.copytree(root / "build" / "tandrel", root / "build" / "sound" / "tandrel")
        self.ids = self.collected()
        self._sound: set[str] = set()

    def build(self) -> None:
        """What was changed; RuntimeError with the compiler's output where it doesn't build."""
        quietly("cmake", "--build", "--preset", "release", cwd=self.root)

    def judged(self, fault: Fault, likely: Sequence[str]) -> Verdict:
        path = self.root / SOURCES / fault.file
        sound = path.read_text()
        path.write_text(fault.text)
        try:
            self.build()
            if filecmp.cmp(self.root / MODULE, self.sound_file(), shallow=False):
                return Verdict(fault, "same file")
            known = [test for test in likely if test in self.ids]
            noticed = self.noticed_by(known) or self.noticed_by(self.tests)
        except RuntimeError:
            return Verdict(fault, "not compiled")
        finally:
            path.write_text(sound)
        return Verdict(fault, "noticed" if noticed else "SURVIVED", noticed)

    def sound_file(self) -> Path:
        return self.root / "build" / "sound" / MODULE.relative_to("build")

    def noticed_by(self, tests: Sequence[str]) -> str:
        """What failed first, empty where all pass. It passes without the fault, or the run ends."""
        if not tests:
            return ""
        failed = self.failed("build", tests)
        file = failed.split("::")[0]
        if (self.root / file).is_file() and file not in self._sound:
            if wrong := self.failed("build/sound", [file]):
                sys.exit(f"planted faults: fails without any fault: {wrong}")
            self._sound.add(file)
        return failed

    def collected(self) -> set[str]:
        """Each test by its name; the run ends where not all of them load without a fault."""
        status, said = self.run("build", self.tests, "--collect-only")
        if status != PASSED:
            sys.exit(f"planted faults: without any fault pytest's exit status is {status}\n{said}")
        return {line for line in said.splitlines() if "::" in line}

    def run(self, build: str, tests: Sequence[str], *options: str) -> tuple[int, str]:
        """pytest's exit status and all that it said."""
        left_out = [f"--ignore={file}" for file in NOT_HERE]
        timeout = ["-o", f"timeout={MOST_SECONDS:g}"]
        with tempfile.TemporaryFile() as output:
            status = run_tests(
                self.root, build, tests, output, [*options, *timeout, *left_out], PATIENCE
            )
            output.seek(0)
            return status, output.read().decode(errors="replace")

    def failed(self, build: str, tests: Sequence[str]) -> str:
        try:
            status, said = self.run(build, tests, "-x")
        except TooSlow as error:
            return str(error)
        if status == PASSED:
            return ""
        if status < 0:
            return f"ended by signal {-status}"
        failed = re.search(r"^(?:FAILED|ERROR) (.*)|^\++ (Timeout) \++$", said, re.M)
        if status not in (FAILED, BROKEN_OFF) or failed is None:
            sys.exit(f"planted faults: pytest: exit status {status}\n{said}")
        return (failed[1] or failed[2]).split(" - ")[0]  # without the reason


class Likely:
    """The tests that noticed changes of a file before, kept from run to run."""

    def __init__(self, history: Path = HISTORY) -> None:
        self._path = history
        kept = json.loads(history.read_text()) if history.exists() else {}
        self._noticed = defaultdict(Counter, {file: Counter(row) for file, row in kept.items()})

    def of(self, file: str) -> list[str]:
        """The likeliest first; of a file of which nothing is known, those for any."""
        known = self._noticed[file] or sum(self._noticed.values(), Counter())
        return [test for test, _ in known.most_common(LIKELY)]

    def learn(self, verdict: Verdict) -> None:
        if "::" in verdict.by:
            self._noticed[verdict.fault.file][verdict.by] += 1
            self._path.parent.mkdir(parents=True, exist_ok=True)
            self._path.write_text(json.dumps(self._noticed))


def argued_in(path: Path) -> dict[tuple[str, str], str]:
    rows = tomllib.loads(path.read_text()).get("fault", [])
    return {(row["file"], row["change"]): row["reason"] for row in rows}


class Run:
    """Faults judged until enough of them count, each tree at work on one at a time."""

    def __init__(self, faults: Iterator[Fault], number: int, likely: Likely) -> None:
        self.counts: Counter[str] = Counter()
        self._faults, self._left, self._likely = faults, number, likely
        self._argued = argued_in(ARGUED)
        self._lock = threading.Lock()

    def on(self, trees: Sequence[Tree]) -> None:
        with ThreadPoolExecutor(len(trees)) as pool:
            try:
                list(pool.map(self._work, trees))
            finally:
                self._left = 0

    def _work(self, tree: Tree) -> None:
        while (fault := self._next()) is not None:
            if fault.key in self._argued:
                verdict = Verdict(fault, "argued", self._argued[fault.key])
            else:
                verdict = tree.judged(fault, self._likely.of(fault.file))
            with self._lock:
                self._likely.learn(verdict)
                self.counts[verdict.kind] += 1
                self._left += verdict.kind in NOT_COUNTED
                print(verdict, flush=True)

    def _next(self) -> Optional[Fault]:
        with self._lock:
            self._left -= 1
            return next(self._faults, None) if self._left >= 0 else None


def main(arguments: Optional[Sequence[str]] = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tests", nargs="*", default=TESTS, help="all but those of the tools")
    parser.add_argument("--faults", type=int, default=300, metavar="N")
    parser.add_argument("--seed", type=int, default=random.randrange(1_000_000))
    parser.add_argument("--only", default="", metavar="PATTERN", help="of the file's name")
    parser.add_argument("--jobs", type=int, default=1, help="copies of the tree at work at once")
    options = parser.parse_args(arguments)
    run = Run(sample(ROOT / SOURCES, options.seed, options.only), options.faults, Likely())
    with tempfile.TemporaryDirectory(prefix="planted-faults-") as folder:
        run.on([Tree(Path(folder) / str(job), options.tests) for job in range(options.jobs)])
    noticed, argued, survived = (run.counts[kind] for kind in ("noticed", "argued", "SURVIVED"))
    print(
        f"planted faults, seed {options.seed}: {noticed} of {noticed + survived} noticed; "
        f"{argued} argued to change nothing"
    )
    return 1 if survived or not noticed else 0
