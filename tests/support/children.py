"""Work done in another process: a fresh one, or a copy of this one that may be killed or fail where
a test says."""

import itertools
import json
import mmap
import os
import resource
import signal
import subprocess
import sys
import textwrap

from harness.places import BUILD, HOST, ROOT, SEARCH_PATH

TESTS = ROOT / "tests"

# What replacing a file asks of the system, one after the other.
CALLS = ("open", "fchmod", "fsync", "link", "replace", "unlink", "close")


def printed(*arguments, interpreter=sys.executable, paths=(HOST, BUILD, TESTS), **variables):
    """What a fresh Python prints, which must neither fail nor complain; environment variables."""
    environment = {**os.environ, "PYTHONPATH": os.pathsep.join(map(str, paths)), **variables}
    process = subprocess.run(
        [str(interpreter), *map(str, arguments)],
        env=environment,
        capture_output=True,
        text=True,
        timeout=120,
    )
    assert process.returncode == 0, process.stderr
    assert not process.stderr, process.stderr
    return process.stdout


def run(code, *options, interpreter=sys.executable, paths=(BUILD, TESTS), arguments=()):
    """Run code in a fresh process and return what it printed as JSON."""
    code = textwrap.dedent(code)
    return json.loads(
        printed(*options, "-c", code, *arguments, interpreter=interpreter, paths=paths)
    )


def run_on_plain_editors(program):
    """Run a program in a process that has the module, as `sketcher`, and editors without a window.

    Where it raises or crashes, the test fails with what it said.
    """
    names = "import sys\nimport tandrel.gui.sketcher as sketcher\n"
    names += "from support.neighbours import FakeSketch, polygon\n"
    names += "from support.plain import PlainEditor\n"
    code = f"{names}{textwrap.dedent(program)}\nprint(1)"
    run(code, "-X", "faulthandler", paths=[*SEARCH_PATH, TESTS])


def in_child(task):
    """Run a task in a copy of this process: what it returns as text, or None if it was killed."""
    reading, writing = os.pipe()
    child = os.fork()
    if not child:
        try:
            os.close(reading)
            text = str(task())
        except BaseException as error:
            text = f"{type(error).__name__}: {error}"
        os.write(writing, text.encode())
        os._exit(0)
    os.close(writing)
    with open(reading, encoding="utf-8") as answer:
        text = answer.read()
    status = os.waitpid(child, 0)[1]
    assert os.WIFEXITED(status) or os.WTERMSIG(status) == signal.SIGKILL
    return text if os.WIFEXITED(status) else None


def memory_is_limited():
    """Whether the system keeps a process to its limit of memory. An emulated one may not."""

    def take():
        resource.setrlimit(resource.RLIMIT_AS, (2**32, 2**32))
        mmap.mmap(-1, 2**33)

    return in_child(take).startswith("OSError")


def kill_oneself(_number=0):
    os.kill(os.getpid(), signal.SIGKILL)


def plain_user():
    """Go on without the rights that a superuser has over everybody's files."""
    if os.getuid() == 0:
        os.setgroups([])
        os.setgid(65534)
        os.setuid(65534)


def before_calls(act):
    """From now on ``act(number)`` comes before each of the calls, which it may prevent."""
    numbers = itertools.count()

    def preceded(real):
        def call(*arguments, **options):
            act(next(numbers))
            return real(*arguments, **options)

        return call

    for name in CALLS:
        setattr(os, name, preceded(getattr(os, name)))
