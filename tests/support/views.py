"""Plane points and views, to compare with and to try."""

import random

import numpy as np

from .plain import PlainEditor, same_number


def is_point(value, *expected):
    """Whether it is an array of two doubles with exactly these values."""
    return (
        isinstance(value, np.ndarray)
        and value.dtype == np.float64
        and value.shape == (2,)
        and all(same_number(a, b) for a, b in zip(value, expected))
    )


def random_views(count=300):
    """Editors with views and points of all magnitudes, the same ones in every run."""
    dice = random.Random(20)
    for _ in range(count):

        def number():
            return dice.uniform(-1, 1) * 10 ** dice.randint(-6, 6)

        yield PlainEditor(
            width=dice.randint(1, 2000),
            height=dice.randint(1, 2000),
            scale=abs(number()) + 1e-9,
            centre=np.array([number(), number()]),
        ), (number(), number())
