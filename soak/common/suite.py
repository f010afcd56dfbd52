"""The test suite on a build of one's own."""

import importlib.util
import os
import signal
import subprocess
import sys
from pathlib import Path
from typing import IO, Sequence, Union

from harness.places import ROOT

# Of the file that is released: standard templates that weren't optimised away show among its
# symbols.
NOT_OF_OTHER_BUILDS = (
    "tests/verify/test_interpreters.py::test_module_offers_its_initialisation_and_no_other_symbol"
)


class TooSlow(Exception):
    """The suite didn't end in time."""


def quietly(*command: str, cwd: Path = ROOT) -> None:
    """Runs a command; RuntimeError with all that it said where it fails."""
    done = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if done.returncode:
        raise RuntimeError(f"{' '.join(command)}\n{done.stdout.decode(errors='replace')}")


def built(preset: str) -> Path:
    """The build of a preset, made anew where it is older than its sources."""
    quietly("cmake", "--preset", preset, f"-DPython3_EXECUTABLE={sys.executable}")
    quietly("cmake", "--build", "--preset", preset)
    return ROOT / "build" / preset


def run_tests(
    root: Path,
    build: str,
    tests: Sequence[str],
    output: Union[IO[bytes], IO[str]],
    options: Sequence[str] = (),
    seconds: float = 3600.0,
    jobs: int = 1,
) -> int:
    """pytest's exit status for these tests of the tree at `root` with the module from its folder
    `build`; TooSlow where they take longer, and nothing of them is left running then. With several
    jobs, where pytest can, each file's tests are one job."""
    command = ["setpriv", "--pdeathsig", "KILL", "--"]  # no run outlives the one who wants it
    command += [sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider"]
    command += ["--deselect", NOT_OF_OTHER_BUILDS, *options, *tests]
    if jobs > 1 and importlib.util.find_spec("xdist"):
        command += ["-n", str(jobs), "--dist", "loadfile"]
    process = subprocess.Popen(
        command,
        cwd=root,
        env={**os.environ, "TANDREL_BUILD": build, "PYTHONDONTWRITEBYTECODE": "1"},
        stdout=output,
        stderr=subprocess.STDOUT,
        start_new_session=True,
    )
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        raise TooSlow(f"not finished after {seconds:g} s") from None
    finally:
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
