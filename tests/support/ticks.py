"""What long tasks tell of their way: ticks with the fraction that is done."""

from tandrel.progress import Stopped


def stop(*_):
    """A tick, or a task, that the user stops at once."""
    raise Stopped


def stopping_at(most):
    """A tick that stops its task beyond a fraction."""

    def tick(done):
        assert 0 <= done <= 1
        if done > most:
            raise Stopped

    return tick
