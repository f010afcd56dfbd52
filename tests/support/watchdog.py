"""Running what might never end, or might end the process, so that the test fails instead."""

import os
import select
import signal

import pytest
from harness import patience


def finishes(function):
    """What the function returns or raises; fails the test where it hangs or crashes.

    A forked copy of the process tries it first, so the function must not touch a window and must
    do the same thing twice.
    """
    child = os.fork()
    if child == 0:
        try:
            function()
        finally:
            os._exit(0)
    ended = _ends(child)
    if not ended:
        os.kill(child, signal.SIGKILL)
    _, status = os.waitpid(child, 0)
    if not ended:
        pytest.fail(f"not finished after {patience.SECONDS:g} seconds")
    if os.WIFSIGNALED(status):
        pytest.fail(f"the process ended by {signal.Signals(os.WTERMSIG(status)).name}")
    return function()


def _ends(child):
    process = os.pidfd_open(child)
    try:
        return bool(select.select([process], [], [], patience.SECONDS)[0])
    finally:
        os.close(process)
