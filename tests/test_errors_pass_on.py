"""What fails in the middle of an operation arrives at its caller as it was raised."""

import ctypes
import sys
from contextlib import contextmanager

import numpy as np
import pytest
from support.children import memory_is_limited, run_on_plain_editors
from support.neighbours import circle
from support.plain import Event, PlainEditor, Recorder


class OwnError(Exception):
    """One that nobody but these tests raises."""


def fail(*args):
    raise OwnError


def failing(base, *operations, **attributes):
    """A class derived from `base` whose operations of these names fail."""
    return type("Failing", (base,), {**dict.fromkeys(operations, fail), **attributes})


class TestReading:
    def test_an_attribute_that_may_be_missing(self, sketcher, monkeypatch):
        monkeypatch.setattr(sketcher, "np", failing(object, ndarray=property(fail))())
        with pytest.raises(OwnError):
            PlainEditor(refs=[("edge", [[0.0, 0.0]])])._extent()

    @pytest.mark.parametrize("operation", ["__contains__", "__setitem__"])
    def test_a_coordinate_that_cannot_be_read_or_set(self, sketcher, operation):
        entity = failing(dict, operation, __deepcopy__=lambda self, memo: self)(circle())
        with pytest.raises(OwnError):
            sketcher.SketchEditor._moved(entity, (1.0, 2.0))

    def test_the_kind_of_what_has_the_keyboard(self, sketcher):
        focused = failing(object, __class__=property(fail))()
        editor = PlainEditor(entities=[circle()], sel=0, focused=focused)
        with pytest.raises(OwnError):
            editor.delete()
        assert editor.sk["entities"] == [circle()]

    def test_the_kind_of_a_drag(self, sketcher):
        kind = failing(object, "__eq__", __hash__=None)()
        editor = PlainEditor(entities=[circle()], sel=0, drag={"kind": kind})
        editor.snapped = lambda x, y: np.zeros(2)
        for operation in (editor._drag, editor._release):
            with pytest.raises(OwnError):
                operation(Event(1, 1))
        assert editor.sk["entities"] == [circle()]

    def test_a_measure_of_the_master_that_is_no_number(self, sketcher):
        editor = PlainEditor(master=Recorder(winfo_rootx="far left", winfo_width=9))
        editor.winfo_width = lambda: 9
        calls = editor.watch("update_idletasks", "geometry", "grab_set", "fit", "wait_window")
        with pytest.raises(TypeError):
            editor.run()
        assert calls == [("update_idletasks", (), {})]

    @pytest.mark.parametrize(
        "pixel, told",
        [
            ((), "not enough values to unpack (expected 2, got 0)"),
            ((1.0,), "not enough values to unpack (expected 2, got 1)"),
            ((1.0, 2.0, 3.0), "too many values to unpack (expected 2)"),
        ],
    )
    def test_more_or_fewer_coordinates_than_two(self, neighbours, pixel, told):
        editor = PlainEditor(entities=[circle()], to_screen=lambda point: pixel)
        with pytest.raises(ValueError) as error:
            editor.redraw()
        assert str(error.value) == told

    @pytest.mark.parametrize("operation", ["redraw", "key_points", "_extent", "refresh_list"])
    def test_shapes_that_end_in_the_middle(self, neighbours, operation):
        def torn(self):
            yield circle()
            raise OwnError

        editor = PlainEditor()
        editor.sk["entities"] = failing(list, __iter__=torn)([circle(), circle()])
        with pytest.raises(OwnError):
            getattr(editor, operation)()

    def test_shapes_in_a_list_with_a_look_up_of_its_own(self, neighbours):
        entities = failing(list, "__getitem__")([circle()])
        editor = PlainEditor(sel=0)
        editor.sk["entities"] = entities
        for operation in (editor.redraw, editor.apply_props):
            with pytest.raises(OwnError):
                operation()

    def test_an_array_whose_bytes_are_none(self, sketcher, monkeypatch):
        class Array:
            shape, dtype = (2, 2), "float64"

            def __len__(self):
                return 2

            def tobytes(self):
                return "sixteen letters each"

        monkeypatch.setattr(sketcher, "np", Recorder(array=list))
        sketcher.np.ndarray = Array
        with pytest.raises(TypeError):
            PlainEditor(refs=[("edge", Array())])._extent()

    def test_an_outline_that_is_empty_is_numpy_s_to_refuse(self, neighbours):
        neighbours.S.answers["outline"] = np.zeros((0, 2))
        with pytest.raises(ValueError):
            PlainEditor(entities=[circle()])._extent()


class TestKinds:
    @pytest.mark.parametrize("base", [ValueError, KeyError, TypeError])
    def test_a_refusal_and_one_of_a_derived_class_is_one(self, neighbours, sketcher, base):
        neighbours.S.fail["outline"] = base("no")
        assert sketcher.SketchEditor._ok(circle()) is False
        neighbours.S.fail["outline"] = failing(base)("no")
        assert sketcher.SketchEditor._ok(circle()) is False
        assert PlainEditor(entities=[circle()]).pick(200, 150) is None

    def test_an_error_tells_where_it_was_raised(self, neighbours):
        neighbours.S.answers["outline"] = fail
        editor = PlainEditor(entities=[circle()])
        for operation in (editor.redraw, editor._extent):
            with pytest.raises(OwnError) as error:
                operation()
            assert error.traceback[-1].name == "fail"


class TestWriting:
    def test_an_attribute_that_cannot_be_set(self, neighbours):
        def set_attribute(self, name, value):
            if name == "scale" and "canvas" in vars(self):
                raise OwnError
            object.__setattr__(self, name, value)

        editor = failing(PlainEditor, __setattr__=set_attribute)()
        with pytest.raises(OwnError):
            editor._zoom(1.2, 0, 0)
        assert editor.scale == 1.0 and editor.centre.tolist() == [0.0, 0.0]


NAMES = {"units": "grid_step", "np": "key_points", "math": "_default_grid"}


@contextmanager
def unreadable(dictionary, name):
    """Has `dictionary` fail when it is asked for `name`."""

    key = failing(object, "__eq__", __hash__=lambda self: hash(name))()
    value = dictionary.pop(name)
    dictionary[key] = value
    try:
        yield
    finally:
        del dictionary[key]
        dictionary[name] = value


class TestLookingUp:
    @pytest.mark.parametrize("name, operation", NAMES.items())
    def test_a_name_of_the_module_that_was_deleted(self, sketcher, monkeypatch, name, operation):
        monkeypatch.delattr(sketcher, name)
        with pytest.raises(NameError, match=f"^name '{name}' is not defined$"):
            getattr(PlainEditor(), operation)()

    @pytest.mark.parametrize("name, operation", NAMES.items())
    def test_a_namespace_that_cannot_be_searched(self, sketcher, name, operation):
        with unreadable(vars(sketcher), name), pytest.raises(OwnError):
            getattr(PlainEditor(), operation)()

    def test_modules_that_cannot_be_searched(self, neighbours):
        editor = PlainEditor(entities=[circle()])
        with unreadable(sys.modules, "numpy"), pytest.raises(OwnError):
            editor.pick(0, 0)

    def test_a_name_that_vanishes_while_shapes_are_picked(self, sketcher, neighbours, monkeypatch):
        def outline(e):
            monkeypatch.delattr(sketcher, "S")
            return [[100.0, 100.0], [200.0, 100.0], [200.0, 200.0]]

        neighbours.S.answers["outline"] = outline
        with pytest.raises(NameError, match="'S'"):
            PlainEditor(entities=[circle()]).pick(0, 0)


class TestMemory:
    @pytest.mark.parametrize("length", [2**58, sys.maxsize], ids=["2^58", "all"])
    def test_more_shapes_than_any_memory_holds(self, neighbours, length):
        entities = failing(list, __len__=lambda self: length)()
        editor = PlainEditor()
        editor.sk["entities"] = entities
        with pytest.raises(MemoryError):
            editor.redraw()

    def test_memory_that_ends_while_corners_are_read(self):
        """The array itself takes no memory; its bytes do, and their numbers as much again."""
        if not memory_is_limited():
            pytest.skip("this system keeps no process to a limit of memory")
        run_on_plain_editors(
            """
            import resource
            import numpy as np

            sketcher.S = FakeSketch()
            sketcher.S.answers["corners"] = np.broadcast_to(np.zeros(2), (2**21, 2))
            editor = PlainEditor(entities=[polygon()])
            _, most = resource.getrlimit(resource.RLIMIT_AS)
            for mebibytes in range(8, 400, 8):
                pages = int(open("/proc/self/statm").read().split()[0])
                limit = pages * resource.getpagesize() + mebibytes * 2**20
                resource.setrlimit(resource.RLIMIT_AS, (limit, most))
                try:
                    editor.snapped(200, 150)
                    break
                except MemoryError:
                    resource.setrlimit(resource.RLIMIT_AS, (most, most))
            assert 32 < mebibytes < 300, mebibytes
            """
        )

    def test_every_allocation_of_the_interpreter_may_fail(self):
        pytest.importorskip("_testcapi")
        run_on_plain_editors(
            """
            import _testcapi

            sketcher.S = FakeSketch()
            failures = 0
            for allocation in range(1, 400):
                editor = PlainEditor(entities=[polygon()] * 3)
                _testcapi.set_nomemory(allocation, allocation + 1)
                try:
                    editor.key_points()
                except MemoryError:
                    failures += 1
                finally:
                    _testcapi.remove_mem_hooks()
            assert failures > 50, failures
            assert len(editor.key_points()) == 10
            """
        )


class TypeSlot(ctypes.Structure):
    _fields_ = [("slot", ctypes.c_int), ("function", ctypes.c_void_p)]


class TypeSpec(ctypes.Structure):
    _fields_ = [
        ("name", ctypes.c_char_p),
        ("basicsize", ctypes.c_int),
        ("itemsize", ctypes.c_int),
        ("flags", ctypes.c_uint),
        ("slots", ctypes.POINTER(TypeSlot)),
    ]


GETATTRO = 58
SILENT = ctypes.PYFUNCTYPE(ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p)(lambda *_: None)


def test_an_object_that_fails_without_an_exception(sketcher):
    """As those of a faulty extension module may: null, and nothing said."""
    slots = (TypeSlot * 2)(TypeSlot(GETATTRO, ctypes.cast(SILENT, ctypes.c_void_p)))
    spec = TypeSpec(b"silent.Silent", object.__basicsize__, 0, 0, slots)
    make_type = ctypes.pythonapi.PyType_FromSpec
    make_type.restype = ctypes.py_object
    silent = make_type(ctypes.byref(spec))()
    with pytest.raises(SystemError, match="^a call failed without an exception$"):
        PlainEditor(canvas=silent).redraw()
