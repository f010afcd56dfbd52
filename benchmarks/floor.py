"""The floor of a repaint: the polygons of its canvas made by C, without Python."""

import ctypes
import subprocess
from pathlib import Path

SOURCE = Path(__file__).with_name("floor.c")


class Polygon(ctypes.Structure):
    _fields_ = [
        ("words", ctypes.POINTER(ctypes.c_void_p)),
        ("word_count", ctypes.c_int),
        ("numbers", ctypes.POINTER(ctypes.c_double)),
        ("number_count", ctypes.c_int),
    ]


def library(folder):
    """The C part, built in a folder."""
    flags = ["pkg-config", "--cflags", "--libs", "tcl"]
    tcl = subprocess.run(flags, check=True, capture_output=True, text=True).stdout.split()
    built = folder / "floor.so"
    folder.mkdir(parents=True, exist_ok=True)
    options = ["-O2", "-Wall", "-Wextra", "-Werror", "-shared", "-fPIC"]
    subprocess.run(["gcc", *options, "-o", built, SOURCE, *tcl], check=True)
    return ctypes.PyDLL(str(built))


class Floor:
    """Clears a canvas and makes polygons on it; each is given as its numbers and its options."""

    def __init__(self, c, canvas, polygons):
        self._repaint = c.repaint
        self._word, self._words = c.word, {}
        self._word.restype = ctypes.c_void_p
        path = str(canvas)
        made = [self._polygon(path, *polygon) for polygon in polygons]
        self._arguments = (
            ctypes.c_void_p(canvas.tk.interpaddr()),
            self._array(path, "delete", "all"),
            ctypes.c_void_p(self._array("coords")[0]),
            (Polygon * len(made))(*made),
            len(made),
        )

    def repaint(self):
        if self._repaint(*self._arguments) != 0:
            raise RuntimeError("Tk refused a command")

    def _polygon(self, path, numbers, options):
        words = [word for name, value in options.items() for word in (f"-{name}", str(value))]
        array = self._array(path, "create", "polygon", *[""] * 6, *words)
        return Polygon(array, len(array), (ctypes.c_double * len(numbers))(*numbers), len(numbers))

    def _array(self, *texts):
        for text in {*texts} - {*self._words}:
            self._words[text] = self._word(text.encode())
        return (ctypes.c_void_p * len(texts))(*[self._words[text] for text in texts])
