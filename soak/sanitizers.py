"""The whole test suite, and the other tools here, under AddressSanitizer,
UndefinedBehaviorSanitizer and LeakSanitizer, without any suppression.

Every report of a Python process counts. Of the leaks those count whose allocation has a frame of
the module in its stack: what the interpreter, Tk and the fonts leave behind is told as a number.
Leaks are looked for at the end of each Python process, while its interpreter is whole (see
common/usercustomize.py); not in the few that ignore the environment, as Python's own allocator
hides them there.

    soak/sanitizers.py [tests/test_pointer.py ...] [--with "random_user.py --events 1000000"]
"""

from __future__ import annotations

import argparse
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path
from typing import NamedTuple

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))

from harness.places import ROOT  # noqa: E402
from soak.common.suite import quietly, run_tests  # noqa: E402
from support.interpreters import VERSIONS  # noqa: E402

BUILD = ROOT / "build" / "sanitize"
AT_EXIT = ROOT / "soak" / "common" / "usercustomize.py"
MODULE = "sketcher.abi3.so"
NOT_HERE = [
    # AddressSanitizer needs more address space than a limit leaves, and where operator new has
    # no more memory it ends the process.
    "--deselect=tests/test_errors_pass_on.py::TestMemory",
    "--deselect=tests/host/test_storage.py::test_too_little_memory_is_told",
    # Some start sanitized or otherwise measured builds of their own; the others run by options.
    "--ignore=tests/soak",
]
# Enough to see who asked the interpreter for an object, and no more: frames cost time.
FRAMES = 8


class Reports(NamedTuple):
    """What the log files of a run say."""

    faults: list[str]
    leaks: list[str]  # with a frame of the module
    others: int  # allocations that others leaked
    processes: int  # that looked for leaks


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("tests", nargs="*", default=["tests"], help="all unless told otherwise")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1, help="of the test suite")
    parser.add_argument("--with", dest="tool", metavar="COMMAND", help="another tool to run, too")
    options = parser.parse_args(arguments)
    with tempfile.TemporaryDirectory(prefix="sanitizers-") as folder:
        return run_all(options, built(), Path(folder))


def built() -> Path:
    """The build that is looked at, made anew where it is older than its sources."""
    if not (BUILD / "build.ninja").exists():
        quietly("cmake", "--preset", BUILD.name, f"-DPython3_EXECUTABLE={sys.executable}")
    quietly("cmake", "--build", "--preset", BUILD.name)
    return BUILD


def run_all(options: argparse.Namespace, build: Path, folder: Path) -> int:
    logs = folder / "logs"
    logs.mkdir()
    with sanitized(build, logs):
        passed, tests = run_suite(options.tests, options.jobs, build)
        done = [f"{tests:,} tests"]
        if options.tool:
            command = [sys.executable, *shlex.split(options.tool)]
            passed &= subprocess.run(command, cwd=ROOT / "soak").returncode == 0
            done.append(options.tool)
    reports = read(logs, build)
    for text in (*reports.faults, *reports.leaks):
        print(text, end="\n\n")
    print(f"{reports.processes} processes looked for leaks; others leaked {reports.others} objects")
    if not passed:
        print("Something failed, see above.")
    found = len(reports.faults) + len(reports.leaks)
    print(f"sanitizers: {', '.join(done)}: {found} reports")
    return 0 if passed and tests and not found else 1


@contextmanager
def sanitized(build: Path, logs: Path) -> Iterator[None]:
    """The sanitizers in every program that is started meanwhile, with this build of the module."""
    before = dict(os.environ)
    files = [
        subprocess.check_output(["g++", f"-print-file-name={name}"], text=True).strip()
        for name in ("libasan.so", "libubsan.so", "libstdc++.so.6")
    ]
    for version in VERSIONS:
        folder = logs / "user" / "lib" / f"python{version}" / "site-packages"
        folder.mkdir(parents=True)
        shutil.copy(AT_EXIT, folder)
    address = f"log_path={logs}/report:log_exe_name=1:detect_leaks=1:leak_check_at_exit=0"
    # The interpreter keeps no frame pointers. Finding names for thousands of leaks of others would
    # take minutes; see `named`.
    address += f":fast_unwind_on_malloc=0:malloc_context_size={FRAMES}:symbolize=0"
    # As malloc does without it, where there is no memory or a size is senseless.
    address += ":allocator_may_return_null=1"
    os.environ.update(
        {
            "TANDREL_BUILD": str(build),
            "PYTHONMALLOC": "malloc",  # every object an allocation of its own
            "ASAN_OPTIONS": address,
            "UBSAN_OPTIONS": "print_stacktrace=1",
            "UNDEFINED_BEHAVIOR_REPORT": f"{logs}/report.python.undefined",
            "PYTHONUSERBASE": f"{logs}/user",
            "LD_PRELOAD": " ".join(files),
        }
    )
    try:
        yield
    finally:
        os.environ.clear()
        os.environ.update(before)


def run_suite(tests: list[str], jobs: int, build: Path) -> tuple[bool, int]:
    """Whether all passed, and how many ran."""
    with tempfile.TemporaryFile("w+") as output:
        status = run_tests(ROOT, str(build), tests, output, NOT_HERE, jobs=jobs)
        output.seek(0)
        said = output.read()
    counted = re.search(r"(\d+) passed", said)
    if status:
        print(said)
    return status == 0, int(counted[1]) if counted else 0


def read(logs: Path, build: Path) -> Reports:
    faults, leaks, others, processes = [], [], 0, 0
    # Named after the programs: the X server and other tools aren't under test.
    for log in sorted(logs.glob("report.python*")):
        for text in re.split(r"\n\n|\n(?======)", log.read_text(errors="replace")):
            if leak := re.search(r"(?:Direct|Indirect) leak of .* in (\d+) object", text):
                if MODULE in text:
                    leaks.append(named(text, build))
                else:
                    others += int(leak[1])
            elif "LeakSanitizer" in text:
                processes += 1
            elif "Sanitizer: " in text and "ERROR" in text or "runtime error:" in text:
                faults.append(named(text, build))
    return Reports(faults, leaks, others, processes)


def named(text: str, build: Path) -> str:
    """A report with the names of the module's own frames."""
    file = build / "tandrel" / "gui" / MODULE

    def place(frame: re.Match[str]) -> str:
        command = ["addr2line", "-Cfpe", str(file), frame[2]]
        return f"{frame[1]} {subprocess.check_output(command, text=True).strip()}"

    own_frame = rf"^( *#\d+) .*{re.escape(MODULE)}\+(0x[0-9a-f]+)\).*$"
    return re.sub(own_frame, place, text, flags=re.M)


if __name__ == "__main__":
    sys.exit(main())
