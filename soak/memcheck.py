"""Valgrind's memcheck over a use of everything: the import, every operation on an editor without
window, and a dialog with every tool, the form, OK, and a slice of the random user.

An error counts where a frame of the module is in its stack: reads and writes outside of what was
allocated or after it was freed, and decisions on values that nobody set. Errors without one, the
interpreter's, numpy's and Tk's, are told as a number. Leaks are the business of sanitizers.py.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

from harness.display import x_server
from harness.places import BUILD, HOST, ROOT

OURS = re.compile(r"sketcher\.abi3\.so|\btandrel::")  # in a frame
VALGRIND = ["valgrind", "--tool=memcheck", "--num-callers=40", "--trace-children=yes"]
# Nor is what a skipped program starts looked at.
VALGRIND += ["--trace-children-skip=*/Xvfb", "--error-limit=no"]

# What runs, by name; the random user watched by nobody, for here nothing is quick enough.
PROGRAMS = {
    "operations": [
        "-c",
        "from soak.dialogs import steps; steps.prepare(); steps.plain_works(None);"
        "steps.describe(steps.make_plain())",
    ],
    "dialog": ["-m", "support.walkthrough"],
    "random user": ["-m", "soak.common.watched", "soak.random_user:work"],
}


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--only", choices=PROGRAMS, help="only this program")
    parser.add_argument("--events", type=int, default=400, help="of the random user")
    options = parser.parse_args(arguments)
    names = [options.only] if options.only else list(PROGRAMS)
    errors: list[str] = []
    of_others, failed = 0, 0
    for name in names:
        words = [f"[{options.events}]"] if name == "random user" else []
        done, ours, others = looked_at([*PROGRAMS[name], *words])
        print(f"{name}: {len(ours)} errors, {others} of others", flush=True)
        if done.returncode:
            failed += 1
            print(f"{name} ended with {done.returncode}\n{done.stdout}{done.stderr}")
        errors += ours
        of_others += others
    print(*errors, sep="\n\n")
    broken = f", {failed} programs ended with an error" if failed else ""
    print(f"memcheck: {', '.join(names)}: {len(errors)} errors ({of_others} of others){broken}")
    return 1 if errors or failed else 0


def looked_at(words: list[str]) -> tuple[subprocess.CompletedProcess[str], list[str], int]:
    """How a Python program ended, and the errors in it as `read` gives them."""
    with tempfile.TemporaryDirectory(prefix="memcheck-") as name, x_server(1280, 1024) as display:
        environment = {
            **os.environ,
            "DISPLAY": display,
            "TANDREL_BUILD": str(BUILD),
            # Every object an allocation of its own, or valgrind sees only the interpreter's pools.
            "PYTHONMALLOC": "malloc",
            "PYTHONPATH": os.pathsep.join(map(str, (BUILD, HOST, ROOT / "tests", ROOT))),
        }
        command = [*VALGRIND, f"--log-file={name}/%p.log", sys.executable, *words]
        done = subprocess.run(command, env=environment, capture_output=True, text=True, cwd=ROOT)
        if not os.listdir(name):
            raise RuntimeError(f"valgrind looked at nothing: {done.stderr}")
        return done, *read(Path(name))


def read(logs: Path) -> tuple[list[str], int]:
    """The errors that valgrind wrote down, and how many there are without a frame of the module."""
    errors = [
        re.sub(r"^==\d+== ?", "", block, flags=re.M)
        for log in sorted(logs.iterdir())
        for block in re.split(r"^==\d+== *\n", log.read_text(errors="replace"), flags=re.M)
        if re.search(r"^==\d+==    at 0x", block, re.M)
    ]
    ours = [error for error in errors if OURS.search(error)]
    return ours, len(errors) - len(ours)
