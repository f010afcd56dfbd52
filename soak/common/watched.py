"""Work that may crash or hang, done by child processes and watched from here.

A child tells on its standard output, a line each, what it begins and what it found:

    telling = Telling()
    telling.begin(17)
    telling.found(17, "what differed")

`watch` runs such a child and yields what it found. Where the child ends by itself with 0, that is
all; where it crashes, or is silent for too long, the step that it last began is a finding too, with
the stack that faulthandler wrote (the child calls `faulthandler.enable()`).
"""

from __future__ import annotations

import json
import os
import select
import signal
import subprocess
import sys
import tempfile
import threading
import time
from collections.abc import Callable, Iterator, Mapping, Sequence
from concurrent.futures import ThreadPoolExecutor
from typing import IO, Any, NamedTuple

from harness import patience

STACK_LINES = 30
# Ends the child with its parent, even when that one is killed.
_GUARD = ["setpriv", "--pdeathsig", "KILL", "--"]


class Finding(NamedTuple):
    """Something that must not be, and the step at which it was."""

    step: Any
    what: str
    fatal: bool = False  # the child ended with it


class Telling:
    """A child's side: one line of JSON for each thing that it tells."""

    def __init__(self, stream: IO[str] | None = None) -> None:
        self._stream = stream or sys.stdout

    def begin(self, step: Any) -> None:
        self._say("begin", step)

    def found(self, step: Any, what: str) -> None:
        self._say("found", [step, what])

    def result(self, value: Any) -> None:
        self._say("result", value)

    def _say(self, kind: str, value: Any) -> None:
        self._stream.write(json.dumps([kind, value]) + "\n")
        self._stream.flush()


class Progress:
    """A line on the standard error at most once every so many seconds."""

    def __init__(self, seconds: float = 10.0) -> None:
        self._seconds = seconds
        self._next = time.monotonic() + seconds

    def tell(self, text: str) -> None:
        now = time.monotonic()
        if now >= self._next:
            self._next = now + self._seconds
            print(text, file=sys.stderr, flush=True)


def watch(
    command: Sequence[str], silence: float, environment: Mapping[str, str] | None = None
) -> Iterator[tuple[str, Any]]:
    """Run a child; yield ("begin", step), ("result", value) and ("found", Finding) as they come.

    A child that is silent for `silence` seconds hangs: it is made to write its stack and killed.
    """
    with tempfile.TemporaryFile() as errors:
        child = subprocess.Popen(
            _GUARD + list(command), stdout=subprocess.PIPE, stderr=errors, env=environment
        )
        output = child.stdout
        assert output is not None
        step: Any = None
        hangs = False
        try:
            for line in _lines(output, silence):
                if line is None:
                    hangs = True
                    break
                kind, value = json.loads(line)
                if kind == "begin":
                    step = value
                yield kind, Finding(*value) if kind == "found" else value
            if hangs:
                _abort(child)
            status = child.wait()
        finally:
            child.kill()
            child.wait()
            output.close()
        if hangs or status != 0:
            how = f"hang: silent for {silence:g} s" if hangs else _ending(status)
            yield "found", Finding(step, f"{how}\n{_tail(errors)}".rstrip(), fatal=True)


def watch_all(
    commands: Sequence[Sequence[str]],
    silence: float,
    heard: Callable[[str, Any], None],
    environment: Mapping[str, str] | None = None,
    jobs: int | None = None,
) -> list[Finding]:
    """Run children, all or so many side by side; what they found, in the order in which it came.

    Whatever else they tell is heard as it comes.
    """
    findings: list[Finding] = []
    lock = threading.Lock()

    def listen(command: Sequence[str]) -> None:
        for kind, value in watch(command, silence, environment):
            with lock:
                findings.append(value) if kind == "found" else heard(kind, value)

    with ThreadPoolExecutor(jobs or len(commands)) as pool:
        list(pool.map(listen, commands))
    return findings


def _lines(stream: IO[bytes], silence: float) -> Iterator[bytes | None]:
    """The whole lines of a pipe until it is closed; None where nothing comes for so long."""
    pending = b""
    while True:
        if not select.select([stream], [], [], silence)[0]:
            yield None
            return
        got = os.read(stream.fileno(), 65536)
        if not got:
            return
        *whole, pending = (pending + got).split(b"\n")
        yield from whole


def _abort(child: subprocess.Popen[bytes]) -> None:
    child.send_signal(signal.SIGABRT)
    try:
        child.wait(patience.SECONDS)  # to write the stack
    except subprocess.TimeoutExpired:
        pass


def _ending(status: int) -> str:
    if status < 0:
        return f"crash: {signal.Signals(-status).name}"
    return f"the process ended with {status}"


def _tail(errors: IO[bytes]) -> str:
    errors.seek(0)
    text = errors.read().decode(errors="replace")
    lines = [line for line in text.splitlines() if not line.startswith("Extension modules")]
    return "\n".join(lines[-STACK_LINES:])
