"""Editors to be measured: on one sketch, side by side, with a host that answers from memory."""

from contextlib import ExitStack, contextmanager
from functools import cached_property

from harness.python_editor import PythonEditor
from benchmarks.sketches import answers, asked_of, sketch
from tandrel import sketch as geometry
from tandrel.gui.sketcher import SketchEditor

PIXEL = (301, 213)  # where the pointer is


class Stage:
    """An editor with a shape selected, and its sketch module, which has one pixel in aim."""

    def __init__(self, root, count):
        self._root = root
        self.count = count
        self.editor = opened(SketchEditor, root, sketch(count))
        self.editor.sel = count // 2 if count else None
        self.host = answers(self.editor.sk)
        with asked_of(self.host):
            self.editor.fit()
        self.host.aim(self.editor.to_world(*PIXEL))

    @cached_property
    def plain(self):
        """An editor in plain Python with the same sketch, selection, view and canvas.

        There is one canvas only: while items of another one are left, Tk need not ask the X server
        for their colours again, as it has to in use.
        """
        plain = opened(PythonEditor, self._root, None)
        plain.canvas.destroy()
        for name in ("sk", "sel", "scale", "centre", "canvas"):
            setattr(plain, name, getattr(self.editor, name))
        plain.grid.set(self.editor.grid.get())
        plain.tool.set(self.editor.tool.get())
        return plain

    @cached_property
    def items(self):
        """The calls that one repaint makes on its canvas."""
        return recorded(self.editor)

    @property
    def polygons(self):
        """The numbers and the options of each polygon of one repaint."""
        return [
            (numbers, options)
            for method, numbers, options in self.items
            if method.__name__ == "create_polygon"
        ]

    def send_items_again(self):
        """What a repaint sends to the canvas, without what it takes to find that out."""
        for method, args, kwargs in self.items:
            method(*args, **kwargs)

    def close(self):
        self.editor.destroy()
        if "plain" in vars(self):
            self.plain.destroy()


def opened(cls, root, sk):
    """An editor that is shown and laid out; for that the application's own host is asked."""
    with asked_of(geometry):
        editor = cls(root, sk)
        editor.update()
    return editor


class RecordingCanvas:
    """Keeps what is created and deleted, as (method of the real canvas, args, kwargs).

    Everything else is answered by the real canvas.
    """

    def __init__(self, canvas):
        self.calls = []
        self._canvas = canvas

    def __getattr__(self, name):
        real = getattr(self._canvas, name)
        if name != "delete" and not name.startswith("create_"):
            return real
        return lambda *args, **kwargs: self.calls.append((real, args, kwargs))


def recorded(editor):
    """The calls of its canvas that one repaint of an editor consists of."""
    canvas = editor.canvas
    editor.canvas = RecordingCanvas(canvas)
    try:
        editor.redraw()
        return editor.canvas.calls
    finally:
        editor.canvas = canvas


@contextmanager
def stages(root, *counts):
    """Stages of these numbers of shapes, closed at the end."""
    with ExitStack() as stack:
        opened_stages = []
        for count in counts:
            opened_stages.append(Stage(root, count))
            stack.callback(opened_stages[-1].close)
        yield opened_stages
