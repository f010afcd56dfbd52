"""The module's own tests on arm64, with the wheel of `make wheels`, in an emulated Debian.

Makes the wheels twice, to see that they are the same; lays this Debian for arm64 in build/arm64,
the first time, with debootstrap; and runs there, through qemu, the tests that are named, or all of
the module's own. As root; hours.
"""

import argparse
import os
import platform
import shutil
import subprocess
import sys
import zipfile
from pathlib import Path

from harness.places import ROOT

DEBIAN = ROOT / "build" / "arm64"
TREE = DEBIAN / "tree"
NEEDED = "python3-tk python3-numpy python3-shapely python3-pil python3-ezdxf python3-pytest"
NEEDED += " python3-pytest-timeout python3-hypothesis xvfb openbox xdotool fonts-dejavu-core"
NOT_IN_THE_TREE = shutil.ignore_patterns("build", ".git", "__pycache__", ".*_cache", "*.so")

# Runs a command inside, with the file systems that an X server and its clients look for, and takes
# them away with itself.
INSIDE = """
    set -e
    mount -t proc proc "$1/proc"
    mount --rbind /dev "$1/dev"
    mount -t tmpfs tmpfs "$1/tmp"
    exec chroot "$@"
"""


def run(*command: str | Path) -> None:
    subprocess.run(command, cwd=ROOT, check=True)


def made_wheel() -> Path:
    shutil.rmtree(ROOT / "build" / "wheel", ignore_errors=True)
    run("make", "wheels")
    (wheel,) = (ROOT / "build" / "wheels").glob("*_aarch64.whl")
    return wheel


def lay_debian() -> None:
    release = platform.freedesktop_os_release()["VERSION_CODENAME"]
    packages = "--include=" + ",".join(NEEDED.split())
    run("debootstrap", "--arch=arm64", "--variant=minbase", packages, release, DEBIAN)


def lay_tree(wheel: Path) -> None:
    """The sources, and beside the catalogues the module out of the wheel."""
    shutil.rmtree(TREE, ignore_errors=True)
    shutil.copytree(ROOT, TREE, ignore=NOT_IN_THE_TREE)
    locale = Path("build", "tandrel", "gui", "locale")
    shutil.copytree(ROOT / locale, TREE / locale)
    with zipfile.ZipFile(wheel) as archive:
        archive.extractall(TREE / "build")


def main(arguments: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("tests", nargs="*", help="all of the module's own by default")
    tests = parser.parse_args(arguments).tests
    if os.geteuid() != 0:
        sys.exit("arm64: laying a Debian takes root")
    run("make", "build")
    run("scripts/ensure-packages", "arm64", "emulation")
    first = made_wheel().read_bytes()
    wheel = made_wheel()
    if wheel.read_bytes() != first:
        print("arm64: the same sources made another wheel")
        return 1
    run("update-binfmts", "--enable", "qemu-aarch64")
    if not (DEBIAN / "usr" / "bin" / "xdotool").exists():
        lay_debian()
    lay_tree(wheel)
    tests = tests or [str(file.relative_to(ROOT)) for file in ROOT.glob("tests/test_*.py")]
    pytest = f'cd /{TREE.name} && exec python3 -m pytest -q -p no:cacheprovider "$@"'
    inside = [str(DEBIAN), "/usr/bin/env", "-i", "PATH=/usr/bin:/bin", "HOME=/root", "LANG=C.UTF-8"]
    command = ["sh", "-c", INSIDE, "sh", *inside, "sh", "-c", pytest, "sh", *sorted(tests)]
    namespaces = ["unshare", "--mount", "--pid", "--fork", "--kill-child"]
    return subprocess.run([*namespaces, *command]).returncode
