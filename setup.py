"""The extension module in the wheel is the one that the CMake build makes."""

import os
import shutil
import subprocess
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = Path(__file__).resolve().parent
BUILT = HERE / "build" / "tandrel" / "gui" / "sketcher.abi3.so"

# The age that files have in the wheel, so that the same sources make the same bytes.
os.environ.setdefault("SOURCE_DATE_EPOCH", "1767225600")


class BuildWithCMake(build_ext):
    def build_extension(self, ext: Extension) -> None:
        for command in (["--preset"], ["--build", "--target", "sketcher", "--preset"]):
            subprocess.run(["cmake", *command, "release"], cwd=HERE, check=True)
        target = Path(self.get_ext_fullpath(ext.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(BUILT, target)


setup(
    ext_modules=[Extension("tandrel.gui.sketcher", sources=[], py_limited_api=True)],
    cmdclass={"build_ext": BuildWithCMake},
    options={"bdist_wheel": {"py_limited_api": "cp39"}, "build": {"build_base": "build/wheel"}},
)
