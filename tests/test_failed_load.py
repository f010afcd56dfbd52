"""What code that kept the function or the class of a load that failed can do with it."""

import os
import subprocess
import sys

from harness.places import SEARCH_PATH

PROGRAM = """
import sys, tkinter, types

kept = []

def refuse(cls, **_):
    kept.append((cls, sys.modules["tandrel.gui.sketcher"].describe))
    raise ValueError("no subclass today")

tkinter.Toplevel.__init_subclass__ = classmethod(refuse)
try:
    import tandrel.gui.sketcher
except ValueError as error:
    print(error)
editor_class, describe = kept[0]
calls = (
    lambda: describe({"type": "circle"}),
    lambda: editor_class.fit(object()),
    lambda: editor_class._extent(types.SimpleNamespace(sk={"entities": [{}]}, _ok=print)),
)
for call in calls:
    try:
        call()
    except (NameError, AttributeError, SystemError) as error:
        print(type(error).__name__)
del tkinter.Toplevel.__init_subclass__
import tandrel.gui.sketcher
print(tandrel.gui.sketcher.describe({"type": "circle", "r": 0.5}))
"""


def test_it_is_an_error_to_use_it_and_the_next_load_succeeds():
    path = os.pathsep.join(SEARCH_PATH)
    run = subprocess.run(
        [sys.executable, "-X", "faulthandler", "-c", PROGRAM],
        env={**os.environ, "PYTHONPATH": path},
        capture_output=True,
        text=True,
        timeout=60,
    )
    expected = [
        "no subclass today",
        "NameError",
        "AttributeError",
        "SystemError",
        "diameter 1000 mm",
    ]
    assert (run.returncode, run.stdout.splitlines()) == (0, expected), run.stderr
