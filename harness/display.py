"""X servers of one's own, for programs that need a screen where there is none."""

from __future__ import annotations

import os
import select
import subprocess
import tempfile
import time
from collections.abc import Iterator
from contextlib import ExitStack, contextmanager
from typing import IO

from harness import patience

# Ends a program with the one that started it, even when that one is killed.
_GUARD = ["setpriv", "--pdeathsig", "TERM", "--"]


@contextmanager
def x_server(
    width: int = 1600, height: int = 1200, window_manager: bool = False, dpi: int = 96
) -> Iterator[str]:
    """Run a private X server and yield its display name, such as ":7".

    With `window_manager` a window manager with its default settings runs in it too. The server
    picks a free number itself; neither the environment nor any other display is touched. What is
    started here is stopped when the block ends, however it ends, and when this process is killed.
    """
    with ExitStack() as stack:
        name = stack.enter_context(_server(width, height, dpi))
        if window_manager:
            stack.enter_context(_window_manager(name))
        yield name


@contextmanager
def _server(width: int, height: int, dpi: int) -> Iterator[str]:
    reading, writing = os.pipe()
    with os.fdopen(reading, "rb") as answers:
        command = ["Xvfb", "-displayfd", str(writing), "-nolisten", "tcp", "-noreset", "-r"]
        command += ["-screen", "0", f"{width}x{height}x24", "-dpi", str(dpi)]
        try:
            process = subprocess.Popen(
                _GUARD + command,
                stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL,
                pass_fds=(writing,),
            )
        finally:
            os.close(writing)
        with _stopped_at_end(process):
            yield f":{int(_first_line(answers, 'Xvfb'))}"


@contextmanager
def _window_manager(display_name: str) -> Iterator[None]:
    with tempfile.TemporaryDirectory() as home:
        settings = dict.fromkeys(("HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"), home)
        # The start-up command runs once windows are managed: its output is the ready signal.
        process = subprocess.Popen(
            [*_GUARD, "openbox", "--sm-disable", "--startup", "echo ready"],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            env={**os.environ, **settings, "DISPLAY": display_name},
        )
        with _stopped_at_end(process):
            assert process.stdout is not None
            _first_line(process.stdout, "openbox")
            yield


@contextmanager
def _stopped_at_end(process: subprocess.Popen[bytes]) -> Iterator[None]:
    try:
        yield
    finally:
        process.terminate()
        try:
            process.wait(patience.SECONDS)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
        if process.stdout is not None:
            process.stdout.close()


def _first_line(stream: IO[bytes], program: str) -> bytes:
    """The first line that a starting program reports; RuntimeError when it ends or is too slow."""
    deadline = time.monotonic() + patience.SECONDS
    line = b""
    while not line.endswith(b"\n"):
        left = max(deadline - time.monotonic(), 0.0)
        if not select.select([stream], [], [], left)[0]:
            raise RuntimeError(f"{program} was not ready within {patience.SECONDS:g} seconds")
        byte = os.read(stream.fileno(), 1)
        if not byte:
            raise RuntimeError(f"{program} ended before it was ready")
        line += byte
    return line
