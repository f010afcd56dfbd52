"""Line and branch coverage of the C++ by the test suite.

Builds the coverage preset, runs the suite on it and counts with gcovr; what counts as reached
stands in harness/executed.py.
"""

from __future__ import annotations

import argparse
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT))

from soak.harness import executed  # noqa: E402
from soak.harness.suite import run_tests  # noqa: E402

FOLDER = ROOT / "build" / "coverage"


def main() -> int:
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawTextHelpFormatter
    )
    parser.add_argument("--counted", action="store_true", help="report what the last run counted")
    parser.add_argument("--jobs", type=int, default=1, help="of the test suite")
    parser.add_argument("tests", nargs="*", default=["tests"], help="the whole suite by default")
    options = parser.parse_args()
    if not options.counted:
        print("building", file=sys.stderr)
        executed.build(FOLDER)
        module = str(FOLDER.relative_to(ROOT))
        status = run_tests(ROOT, module, options.tests, sys.stderr, jobs=options.jobs)
        if status:
            sys.exit(f"coverage: the suite ended with status {status} and has to pass first")
    result = executed.of_module(FOLDER)
    for fault in result.faults:
        print(fault)
    print(result.figure)
    return 1 if result.faults else 0


if __name__ == "__main__":
    sys.exit(main())
