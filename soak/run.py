"""Everything that tries to break the editor, at full size; prints the figures.

    make soak        or, for some of it,    /usr/bin/python3 soak/run.py hostile coverage

Each tool is a command of its own, and its last line is the figure. What they print lies in
build/soak/. Ends with 1 where a figure is not as demanded.
"""

from __future__ import annotations

import argparse
import shlex
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
RESULTS = ROOT / "build" / "soak"

TOOLS = {
    "coverage": "soak/coverage.py --jobs 2",
    "opening": "soak/opening.py --cycles 10000",
    "hostile": "soak/hostile.py --cases 200000 --jobs 2",
    "random_user": "soak/random_user.py --events 1000000 --jobs 2",
    "allocation": "soak/allocation.py",
    "sanitizers": "soak/sanitizers.py --with 'random_user.py --events 20000'",
    "memcheck": "soak/memcheck.py --events 2000",
    "planted_faults": "soak/planted_faults.py --jobs 2 --faults 300",
}


def run(name: str) -> tuple[str, bool]:
    """A tool's last line, and whether it is satisfied."""
    with open(RESULTS / f"{name}.txt", "w") as output:
        ended = subprocess.run(
            [sys.executable, *shlex.split(TOOLS[name])], cwd=ROOT, stdout=output, text=True
        )
    lines = (RESULTS / f"{name}.txt").read_text().strip().splitlines()
    return lines[-1] if lines else "said nothing", ended.returncode == 0


def main() -> int:
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawTextHelpFormatter
    )
    parser.add_argument("tools", nargs="*", metavar="TOOL", help=f"of {', '.join(TOOLS)}; else all")
    chosen = parser.parse_args().tools or list(TOOLS)
    unknown = sorted(set(chosen) - set(TOOLS))
    if unknown:
        parser.error(f"no tool {', '.join(unknown)}")
    RESULTS.mkdir(parents=True, exist_ok=True)
    failed = []
    for name in chosen:
        figure, satisfied = run(name)
        print(figure if satisfied else f"FAILED: {figure}", flush=True)
        if not satisfied:
            failed.append(name)
    if failed:
        print(f"make soak: failed: {' '.join(failed)}; see {RESULTS}", file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
