"""How long anybody here waits for what is going to happen.

On a busy machine everything takes longer than one thinks. What hasn't happened after this time
won't, and only then a verdict may depend on it.
"""

import time
from collections.abc import Callable

SECONDS = 60.0


def wait_for(condition: Callable[[], object], what: str) -> None:
    """Return once the condition holds; too late is a TimeoutError."""
    deadline = time.monotonic() + SECONDS
    while not condition():
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited too long: {what}")
        time.sleep(0.02)
