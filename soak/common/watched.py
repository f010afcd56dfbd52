"""Work that may crash or hang, done by child processes and watched from here.

A child calls a function, such as "soak.opening:serve", on an X server of its own. It tells on its
standard output, a line of JSON each, what it begins and what it found:

    def serve(telling, first, count):
        telling.begin(17)
        telling.found(17, "what differed")

`watch_all` runs such children and gives what they found. Where a child crashes, or is silent for
too long, the step that it last began is a finding too, with the stack that faulthandler wrote.
"""

import asyncio
import faulthandler
import importlib
import json
import os
import signal
import sys
import tempfile
import time
from collections.abc import AsyncIterator, Callable, Iterable, Mapping, Sequence
from contextlib import suppress
from typing import IO, Any, NamedTuple

from harness import patience
from harness.display import x_server
from harness.places import ROOT

STACK_LINES = 30
PROGRESS = 10.0  # seconds between two lines on the standard error
LONGEST_LINE = 1 << 30  # bytes
# Ends the child with its parent, even when that one is killed.
_CHILD = ["setpriv", "--pdeathsig", "KILL", "--", sys.executable, "-m", "soak.common.watched"]


class Finding(NamedTuple):
    """Something that must not be, and the step at which it was."""

    step: Any
    what: str


class Telling:
    """A child's side: one line of JSON for each thing that it tells."""

    def __init__(self, stream: IO[str]) -> None:
        self._stream = stream

    def begin(self, step: Any) -> None:
        self._say("begin", step)

    def found(self, step: Any, what: str) -> None:
        self._say("found", [step, what])

    def result(self, value: Any) -> None:
        self._say("result", value)

    def _say(self, kind: str, value: Any) -> None:
        self._stream.write(json.dumps([kind, value]) + "\n")
        self._stream.flush()


def serve(work: str, arguments: str) -> None:
    """Be the child: call the function of this name, "module:function", with a JSON list."""
    faulthandler.enable()
    telling = Telling(os.fdopen(os.dup(1), "w"))
    sys.stdout = sys.stderr
    with x_server(1024, 800) as display:
        os.environ["DISPLAY"] = display
        named(work)(telling, *json.loads(arguments))


def named(name: str) -> Any:
    """What "module:attribute" stands for."""
    module, _, attribute = name.partition(":")
    return getattr(importlib.import_module(module), attribute)


def watch_all(
    work: str,
    shares: Iterable[Sequence[Any]],
    heard: Callable[[str, Any], None],
    environment: Mapping[str, str] | None = None,
    silence: float = patience.SECONDS,
    jobs: int | None = None,
) -> list[Finding]:
    """Call a function in children, each with a share of the work, all or so many side by side.

    Gives what they found, in the order in which it came. Whatever else they tell, "begin" with a
    step or "result" with a value, is heard as it comes. One that is silent for so many seconds
    hangs: it is made to write its stack and killed.
    """
    findings: list[Finding] = []
    begun, next_sign = 0, time.monotonic() + PROGRESS

    async def listen(share: Sequence[Any], places: asyncio.Semaphore) -> None:
        nonlocal begun, next_sign
        async with places:
            command = [*_CHILD, work, json.dumps(share)]
            async for kind, value in _told(command, environment or {}, silence):
                if kind == "found":
                    findings.append(Finding(*value))
                    continue
                heard(kind, value)
                begun += kind == "begin"
                if time.monotonic() > next_sign:
                    next_sign = time.monotonic() + PROGRESS
                    print(f"{begun:,} steps begun", file=sys.stderr, flush=True)

    async def listen_to_all() -> None:
        every = list(shares)
        places = asyncio.Semaphore(jobs or len(every))
        await asyncio.gather(*(listen(share, places) for share in every))

    asyncio.run(listen_to_all())
    return findings


async def _told(
    command: list[str], environment: Mapping[str, str], silence: float
) -> AsyncIterator[tuple[str, Any]]:
    """What a child tells, and how it ended if not well."""
    with tempfile.TemporaryFile() as errors:
        child = await asyncio.create_subprocess_exec(
            *command,
            stdout=asyncio.subprocess.PIPE,
            stderr=errors,
            env={**os.environ, **environment},
            cwd=ROOT,
            limit=LONGEST_LINE,
        )
        assert child.stdout is not None
        step, ending = None, ""
        try:
            # The last line of one that crashes may be a part of one.
            while (line := await asyncio.wait_for(child.stdout.readline(), silence))[-1:] == b"\n":
                kind, value = json.loads(line)
                step = value if kind == "begin" else step
                yield kind, value
            if status := await child.wait():
                ending = f"the process ended with {status}"
                if status < 0:
                    ending = f"crash: {signal.Signals(-status).name}"
        except asyncio.TimeoutError:
            ending = f"hang: silent for {silence:g} s"
            child.send_signal(signal.SIGABRT)
            with suppress(asyncio.TimeoutError):
                await asyncio.wait_for(child.wait(), patience.SECONDS)  # to write its stack
        finally:
            if child.returncode is None:
                child.kill()
                await child.wait()
        if ending:
            yield "found", [step, f"{ending}\n{_tail(errors)}".rstrip()]


def _tail(errors: IO[bytes]) -> str:
    errors.seek(0)
    text = errors.read().decode(errors="replace")
    lines = [line for line in text.splitlines() if not line.startswith("Extension modules")]
    return "\n".join(lines[-STACK_LINES:])


if __name__ == "__main__":
    serve(*sys.argv[1:])
