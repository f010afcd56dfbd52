"""The whole test suite, and the other tools here, under AddressSanitizer,
UndefinedBehaviorSanitizer and LeakSanitizer, without any suppression.

Every report of a Python process counts. Of the leaks those count whose allocation has a frame of
the module in its stack: what the interpreter, Tk and the fonts leave behind is told as a number.
Leaks are looked for at the end of each Python process, while its interpreter is whole (see
common/usercustomize.py); not in the few that ignore the environment, as Python's own allocator
hides them there.

    python3 -m soak sanitizers [tests/test_pointer.py ...] [--with "random_user --events 9999"]
"""

import argparse
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path
from unittest.mock import patch

from harness.places import ROOT
from soak.common.suite import built, run_tests
from support.interpreters import VERSIONS

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


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("tests", nargs="*", default=["tests"], help="all unless told otherwise")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1, help="of the test suite")
    parser.add_argument("--with", dest="tool", metavar="TOOL", help="another tool to run, too")
    options = parser.parse_args(arguments)
    build = built("sanitize")
    with tempfile.TemporaryDirectory(prefix="sanitizers-") as logs:
        with patch.dict(os.environ, sanitizing(build, Path(logs))):
            tests = number_of_passed(options.tests, options.jobs, build)
            passed, done = tests > 0, f"{tests:,} tests"
            if options.tool:
                command = [sys.executable, "-m", "soak", *shlex.split(options.tool)]
                passed &= subprocess.run(command, cwd=ROOT).returncode == 0
                done += f", {options.tool}"
        reports, others, processes = read(Path(logs), build)
    for text in reports:
        print(text, end="\n\n")
    print(f"{processes} processes looked for leaks; others leaked {others} objects")
    if not passed:
        print("Something failed, see above.")
    print(f"sanitizers: {done}: {len(reports)} reports")
    return 0 if passed and not reports else 1


def sanitizing(build: Path, logs: Path) -> dict[str, str]:
    """The environment in which every program is sanitized, with this build of the module."""
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
    return {
        "TANDREL_BUILD": str(build),
        "PYTHONMALLOC": "malloc",  # every object an allocation of its own
        "ASAN_OPTIONS": address,
        "UBSAN_OPTIONS": "print_stacktrace=1",
        "UNDEFINED_BEHAVIOR_REPORT": f"{logs}/report.python.undefined",
        "PYTHONUSERBASE": f"{logs}/user",
        "LD_PRELOAD": " ".join(files),
    }


def number_of_passed(tests: list[str], jobs: int, build: Path) -> int:
    """How many tests ran; none where not all of them passed."""
    with tempfile.TemporaryFile("w+") as output:
        status = run_tests(ROOT, str(build), tests, output, NOT_HERE, jobs=jobs)
        output.seek(0)
        said = output.read()
    if status:
        print(said)
    passed = re.search(r"(\d+) passed", said)
    return int(passed[1]) if passed and not status else 0


def read(logs: Path, build: Path) -> tuple[list[str], int, int]:
    """The faults and the module's leaks; how many objects others leaked, and how many processes
    looked for leaks."""
    reports, others, processes = [], 0, 0
    # Named after the programs: the X server and other tools aren't under test.
    for log in sorted(logs.glob("report.python*")):
        for text in re.split(r"\n\n|\n(?======)", log.read_text(errors="replace")):
            leak = re.search(r"(?:Direct|Indirect) leak of .* in (\d+) object", text)
            if leak and MODULE not in text:
                others += int(leak[1])
            elif "LeakSanitizer" in text and not leak:
                processes += 1
            elif leak or "Sanitizer: " in text and "ERROR" in text or "runtime error:" in text:
                reports.append(named(text, build))
    return reports, others, processes


def named(text: str, build: Path) -> str:
    """A report with the names of the module's own frames."""
    file = build / "tandrel" / "gui" / MODULE

    def place(frame: re.Match[str]) -> str:
        command = ["addr2line", "-Cfpe", str(file), frame[2]]
        return f"{frame[1]} {subprocess.check_output(command, text=True).strip()}"

    own_frame = rf"^( *#\d+) .*{re.escape(MODULE)}\+(0x[0-9a-f]+)\).*$"
    return re.sub(own_frame, place, text, flags=re.M)
