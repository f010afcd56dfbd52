"""One file for every interpreter: the same use of a real dialog in each that is found, as it is
started usually, in developer mode with warnings as errors, and with the debug allocator.

Where an interpreter has no numpy, a stand-in takes its place. What each did is compared with what
this interpreter did with its numpy.
"""

from __future__ import annotations

import argparse
import os
import subprocess
import sys
from collections.abc import Mapping
from pathlib import Path
from typing import Any, NamedTuple

ROOT = Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT), str(ROOT / "tests")]

from harness.display import x_server  # noqa: E402
from harness.places import BUILD  # noqa: E402
from support.interpreters import (  # noqa: E402
    DEVELOPER_MODE,
    VERSIONS,
    found,
    nearly_equal,
    walk_through,
)


class Mode(NamedTuple):
    options: tuple[str, ...] = ()
    environment: Mapping[str, str] = {}


MODES = {
    "usual": Mode(),
    " ".join(DEVELOPER_MODE): Mode(DEVELOPER_MODE),
    "debug allocator": Mode(environment={"PYTHONMALLOC": "debug"}),
}


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--build", type=Path, default=BUILD, help="where the module is")
    options = parser.parse_args(arguments)
    with x_server(1280, 1024) as display:
        os.environ["DISPLAY"] = display
        return report(options.build, found())


def report(build: Path, interpreters: Mapping[str, Path]) -> int:
    """A line for each interpreter, then the figure; 0 where all that there are did the same."""
    try:
        reference = walk_through(sys.executable, path=[build])
    except (AssertionError, subprocess.TimeoutExpired) as error:
        print(f"{sys.executable}: {error}\ninterpreters: 0 of {len(VERSIONS)}: not even this one")
        return 1
    served = 0
    wrong = judged("this", Path(sys.executable), build, reference)
    for version in VERSIONS:
        if version in interpreters:
            found_wrong = judged(version, interpreters[version], build, reference)
            served += not found_wrong
            wrong += found_wrong
        else:
            print(f"{version:5} skipped: none under ~/.pyenv/versions", flush=True)
    print(
        f"interpreters: {served} of {len(VERSIONS)} with the same file, {len(MODES)} ways each: "
        f"{wrong} faults"
    )
    return 0 if not wrong and interpreters else 1


def judged(name: str, interpreter: Path, build: Path, reference: Any) -> int:
    """Print how one interpreter did; in how many ways it did something else."""
    faults = {}
    for mode, (options, environment) in MODES.items():
        try:
            outcome = walk_through(interpreter, *options, path=[build], **environment)
        except (AssertionError, subprocess.TimeoutExpired) as error:
            faults[mode] = str(error).strip() or "ended with an error"
            continue
        if not nearly_equal(outcome, reference):
            faults[mode] = f"did otherwise: {outcome}"
    told = "; ".join(MODES) + ": the same" if not faults else ""
    print(f"{name:5} {exact_version(interpreter):8} {told}".rstrip(), flush=True)
    for mode, fault in faults.items():
        print(f"      {mode}: {fault}", flush=True)
    return len(faults)


def exact_version(interpreter: Path) -> str:
    code = "import platform; print(platform.python_version())"
    return subprocess.check_output([str(interpreter), "-c", code], text=True).strip()


if __name__ == "__main__":
    sys.exit(main())
