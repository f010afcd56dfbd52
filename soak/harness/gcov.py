"""gcov without the branches that only an exception on its way takes.

Stands in for gcov: takes the same arguments and leaves the same files, apart from the branches of
two kinds, for which gcov's text has no "(throw)" that gcovr could exclude them by. One are those of
clean-up code, which gcov tells from other code only by the mark of its blocks. The other are those
of lines that were never executed, as are all copies of an inline function but the one that the
linker kept: whether such a line is executed at all is told by the line.
"""

import re
import subprocess
import sys
from pathlib import Path
from typing import Iterator

LINE = re.compile(r" *([^ :]+): *\d+:")
BLOCK = re.compile(r" *([^ :]+): *\d+-block +\d+$")
BRANCH = re.compile(r"branch +\d+ ")
NEVER_EXECUTED = ("#####", "=====")
# Of blocks that are only reached by exceptions, and were not; others that were not have "%%%%%".
CLEAN_UP = "$$$$$"


def main() -> int:
    command = ["gcov", "--all-blocks", *sys.argv[1:]]
    done = subprocess.run(command, check=False)
    for file in Path().glob("*.gcov"):
        file.write_text("\n".join(without_exceptions(file.read_text().splitlines())) + "\n")
    return done.returncode


def without_exceptions(lines: list[str]) -> Iterator[str]:
    in_dead_line = in_clean_up = False
    for line in lines:
        if block := BLOCK.match(line):
            in_clean_up = block[1] == CLEAN_UP
            continue
        if source := LINE.match(line):
            in_dead_line, in_clean_up = source[1] in NEVER_EXECUTED, False
        if BRANCH.match(line) and (in_dead_line or in_clean_up):
            continue
        yield line


if __name__ == "__main__":
    sys.exit(main())
