"""The extension module in the wheel is the one that the CMake build makes."""

import os
import re
import shutil
import subprocess
import sys
import sysconfig
from pathlib import Path

import setuptools
from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

try:
    from wheel.bdist_wheel import bdist_wheel
except ImportError:  # newer ones have it themselves
    try:
        from setuptools.command.bdist_wheel import bdist_wheel
    except ImportError:
        sys.exit("The package `wheel` is missing: `pip install wheel`, or python3-wheel.")

HERE = Path(__file__).resolve().parent

if int(setuptools.__version__.split(".")[0]) < 61:
    sys.exit(f"setuptools {setuptools.__version__} is too old: 61 or later reads pyproject.toml.")

# The age that files have in the wheel, so that the same sources make the same bytes.
os.environ.setdefault("SOURCE_DATE_EPOCH", "1767225600")

# The oldest Linux that a wheel is for, and the versions of the libraries' symbols that it has.
OLDEST = "manylinux_2_28"
THERE = {"GLIBC": (2, 28), "GLIBCXX": (3, 4, 25), "CXXABI": (1, 3, 11), "GCC": (8, 0, 0)}


class BuildWithCMake(build_ext):
    def build_extension(self, ext: Extension) -> None:
        headers = sysconfig.get_path("include")
        if not shutil.which("cmake"):
            sys.exit("CMake is missing: `pip install cmake`, or the package cmake.")
        if not Path(headers, "Python.h").exists():
            sys.exit(f"There is no Python.h in {headers}: the package python3-dev has it.")
        target = Path(self.get_ext_fullpath(ext.name)).resolve()
        folder = Path(self.build_temp).resolve()
        options = [
            "-DCMAKE_BUILD_TYPE=Release",
            f"-DPython3_EXECUTABLE={sys.executable}",
            f"-DPython3_INCLUDE_DIR={headers}",
        ]
        if shutil.which("ninja"):
            options.append("-GNinja")
        subprocess.run(["cmake", "-S", HERE, "-B", folder, *options], check=True)
        build = ["cmake", "--build", folder, "--config", "Release", "--target", "sketcher"]
        subprocess.run(build, check=True)
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(folder / "tandrel" / "gui" / target.name, target)


class WheelForEveryLinux(bdist_wheel):
    def get_tag(self):
        """With `OLDEST` in the place of "linux" where that is true of the module."""
        interpreter, abi, platform = super().get_tag()
        modules = list(Path(self.bdist_dir).rglob("sketcher.*.so"))
        if platform.startswith("linux_") and modules and shutil.which("readelf"):
            newer = [version for version in symbol_versions(modules[0]) if not is_there(version)]
            if newer:
                print(f"No {OLDEST}, for the module needs {' and '.join(newer)}.", file=sys.stderr)
            else:
                platform = platform.replace("linux", OLDEST, 1)
        return interpreter, abi, platform


def symbol_versions(module: Path) -> "list[str]":
    """The versions of other libraries' symbols that it needs, such as GLIBC_2.14."""
    command = ["readelf", "--version-info", "--wide", str(module)]
    printed = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout
    return sorted(set(re.findall(r"Name: (\S+)", printed)))


def is_there(version: str) -> bool:
    library, _, number = version.partition("_")
    return re.fullmatch(r"[\d.]+", number) is not None and (
        tuple(map(int, number.split("."))) <= THERE.get(library, ())
    )


def description() -> str:
    """The front page without what lies beside it in the sources: pictures, and links to files."""
    text = (HERE / "README.md").read_text(encoding="utf-8")
    without_pictures = re.sub(r"^!\[.*\)\n\n", "", text, flags=re.MULTILINE)
    return re.sub(r"\[([^]]+)\]\((?!https?:)[^)]*\)", r"\1", without_pictures)


setup(
    ext_modules=[Extension("tandrel.gui.sketcher", sources=[], py_limited_api=True)],
    cmdclass={"build_ext": BuildWithCMake, "bdist_wheel": WheelForEveryLinux},
    options={"bdist_wheel": {"py_limited_api": "cp39"}, "build": {"build_base": "build/wheel"}},
    long_description=description(),
    long_description_content_type="text/markdown",
)
