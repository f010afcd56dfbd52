"""Has a Python process ask LeakSanitizer what it holds no more and never freed.

It asks at the end of the program, while the interpreter is whole, so that whatever it still holds
counts as held. Put into the user's site-packages, whose `usercustomize` an interpreter imports when
it starts. UndefinedBehaviorSanitizer gets a file to report into as well.
"""

import atexit
import gc
import importlib
import os
import struct

_LINKS = 2 * struct.calcsize("P")
_HEADER = object.__basicsize__


def ask() -> None:
    """In a process of its own, for it is ruined.

    The collector's links before each object that it tracks reach every list, tuple and dictionary,
    the forgotten ones too, and are cut: nothing that is tracked may be freed from then on.
    """
    import ctypes

    for _ in range(3):
        gc.collect()
    child = ctypes.PyDLL(None)["fork"]()  # the interpreter's own refuses at the end
    if child:
        os.waitpid(child, 0)
        return
    gc.disable()
    check, cut = ctypes.CDLL(None)["__lsan_do_recoverable_leak_check"], ctypes.memset
    tracked = gc.get_objects()
    for number in range(len(tracked)):
        cut(id(tracked[number]) - _LINKS, 0, _LINKS)
    # The list itself reaches them all as well: forget its length and where its items are.
    cut(id(tracked) + _HEADER, 0, _LINKS)
    check()
    os._exit(0)


def name_report_file() -> None:
    """Beside AddressSanitizer, gcc's UndefinedBehaviorSanitizer heeds no log_path and writes to the
    standard error, which a test runner may swallow."""
    import ctypes

    library = ctypes.CDLL("libubsan.so.1")
    library["__sanitizer_set_report_path"](os.environ["UNDEFINED_BEHAVIOR_REPORT"].encode())


def in_main_interpreter() -> bool:
    """Others of the process may neither fork nor, some of them, use ctypes."""
    try:
        interpreters = importlib.import_module("_interpreters")
    except ImportError:
        interpreters = importlib.import_module("_xxsubinterpreters")
    return bool(interpreters.get_current() == interpreters.get_main())


if in_main_interpreter():
    atexit.register(ask)
    name_report_file()
