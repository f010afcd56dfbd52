"""A small stand-in for numpy, in plain Python, for interpreters that have none.

One class of float arrays with one or two dimensions, and the few functions that the editor and the
scripted neighbours use:

    sys.modules["numpy"] = support.arrays
"""

import math
import types


class ndarray:
    """Floats in one row, or in rows of equal length; `flat` holds them in order."""

    def __init__(self, flat, shape):
        self.flat = flat
        self.shape = shape

    @property
    def dtype(self):
        return float

    def __len__(self):
        return self.shape[0]

    def __iter__(self):
        return (self[i] for i in range(len(self)))

    def __getitem__(self, i):
        item = self.tolist()[i]
        return array(item) if isinstance(item, list) else item

    def tolist(self):
        if len(self.shape) == 1:
            return list(self.flat)
        return [list(row) for row in zip(*[iter(self.flat)] * self.shape[1])]

    def copy(self):
        return ndarray(list(self.flat), self.shape)


def array(values, dtype=float):
    values = [v.tolist() if isinstance(v, ndarray) else v for v in values]
    if values and isinstance(values[0], (list, tuple)):
        columns = len(values[0])
        if any(len(row) != columns for row in values):
            raise ValueError("rows of different length")
        return ndarray([float(v) for row in values for v in row], (len(values), columns))
    return ndarray([float(v) for v in values], (len(values),))


def zeros(n):
    return array([0.0] * n)


def _norm(vector):
    return math.sqrt(sum(v * v for v in vector))


linalg = types.SimpleNamespace(norm=_norm)
