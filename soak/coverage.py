"""Coverage of the C++ by the test suite: each line, and each branch of the source both ways.

Builds the coverage preset with clang, runs the suite on it and has llvm-cov count: as the source is
written, so that what the compiler adds for exceptions, which gcov counts as branches, never shows.
"""

import argparse
import json
import os
import re
import shutil
import subprocess
import sys
from collections import Counter
from collections.abc import Iterable, Iterator
from pathlib import Path
from typing import Any

from harness.places import ROOT
from soak.common.suite import built, quietly, run_tests

FOLDER = ROOT / "build" / "coverage"
COUNTS = FOLDER / "counts"


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--jobs", type=int, default=1, help="of the test suite")
    parser.add_argument("tests", nargs="*", default=["tests"], help="the whole suite by default")
    options = parser.parse_args(arguments)
    if status := count(options.tests, options.jobs):
        sys.exit(f"coverage: the suite ended with status {status} and has to pass first")
    module = FOLDER / "tandrel" / "gui" / "sketcher.abi3.so"
    (counted,) = json.loads(exported(module, COUNTS))["data"]
    missed = list(missed_lines(exported(module, COUNTS, "-format=lcov")))
    missed += missed_branches(counted["files"])
    print(*missed, sep="\n")
    parts = (counted["totals"][kind] for kind in ("lines", "branches"))
    lines, branches = (f"{part['covered']:,} of {part['count']:,}" for part in parts)
    print(f"coverage: {lines} lines, {branches} branches")
    return 1 if missed else 0


def count(tests: list[str], jobs: int) -> int:
    """Run tests on a build that counts; how pytest ended."""
    build = built("coverage")
    shutil.rmtree(COUNTS, ignore_errors=True)
    os.environ["LLVM_PROFILE_FILE"] = f"{COUNTS}/%2m.profraw"
    return run_tests(ROOT, str(build), tests, sys.stderr, jobs=jobs)


def exported(program: Path, counts: Path, *options: str) -> str:
    """What llvm-cov tells of a program or module."""
    merged = counts / "all.profdata"
    quietly("llvm-profdata", "merge", *map(str, counts.glob("*.profraw")), "-o", str(merged))
    command = ["llvm-cov", "export", str(program), f"-instr-profile={merged}", *options]
    return subprocess.check_output(command, text=True)


def missed_lines(lcov: str) -> Iterator[str]:
    for record in lcov.split("end_of_record"):
        for line in re.findall(r"^DA:(\d+),0$", record, re.M):
            yield f"{re.search('SF:(.*)', record)[1]}:{line}: never executed"  # type: ignore[index]


def missed_branches(files: Iterable[Any]) -> Iterator[str]:
    """Conditions that never were true, or never false; not those that the compiler knew."""
    for file in files:
        taken: Counter[tuple[int, int, bool]] = Counter()
        for line, column, _, _, true, false, *_ in file["branches"]:  # for each use of a template
            taken.update({(line, column, True): true, (line, column, False): false})
        for (line, column, way), times in taken.items():
            if not times and taken[line, column, not way]:
                yield f"{file['filename']}:{line}:{column}: never {str(way).lower()}"
