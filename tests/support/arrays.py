"""A small stand-in for numpy, in plain Python, for interpreters that have none.

One class of float arrays with one or two dimensions, and the few functions that the editor uses:

    sys.modules["numpy"] = support.arrays
"""

import array as _array
import math
import operator
import types

float64 = float
inf = math.inf
nan = math.nan


class ndarray:
    """Floats in one row, or in rows of equal length; `flat` holds them in order."""

    def __init__(self, flat, shape):
        self.flat = flat
        self.shape = shape

    @property
    def ndim(self):
        return len(self.shape)

    @property
    def size(self):
        return len(self.flat)

    @property
    def T(self):
        return array(list(map(list, zip(*self.tolist()))))

    @property
    def dtype(self):
        return float64

    def __len__(self):
        return self.shape[0]

    def __iter__(self):
        return (self[i] for i in range(len(self)))

    def __getitem__(self, key):
        if isinstance(key, tuple):
            rows, column = key
            if isinstance(rows, slice):
                return array([row[column] for row in self.tolist()[rows]])
            return self[rows][column]
        if self.ndim == 1:
            part = self.flat[key]
            return array(part) if isinstance(key, slice) else part
        part = self.tolist()[key]
        return array(part)

    def __setitem__(self, key, value):
        if self.ndim != 1:
            raise NotImplementedError("only numbers of a row can be set")
        self.flat[key] = float(value)

    def tolist(self):
        if self.ndim == 1:
            return list(self.flat)
        return [list(row) for row in zip(*[iter(self.flat)] * self.shape[1])]

    def tobytes(self):
        return _array.array("d", self.flat).tobytes()

    def copy(self):
        return ndarray(list(self.flat), self.shape)

    def astype(self, dtype=float, copy=True):
        return self.copy()

    def item(self, i=0):
        return self.flat[i]

    def ravel(self):
        return ndarray(list(self.flat), (self.size,))

    flatten = ravel

    def min(self, axis=None):
        return _reduce(min, self, axis)

    def max(self, axis=None):
        return _reduce(max, self, axis)

    def all(self):
        return all(self)

    def __array__(self):
        return self

    def __repr__(self):
        return f"array({self.tolist()})"

    def __neg__(self):
        return ndarray([-v for v in self.flat], self.shape)

    def __abs__(self):
        return ndarray([abs(v) for v in self.flat], self.shape)

    def __bool__(self):
        if self.size != 1:
            raise ValueError("the truth value of an array of several elements is ambiguous")
        return bool(self.flat[0])

    def __deepcopy__(self, memo):
        return self.copy()

    __hash__ = None


def _elementwise(operation, a, b):
    """Apply to two arrays of one shape, or to an array and a number."""
    a, b = _operand(a), _operand(b)
    if not isinstance(a, ndarray) and not isinstance(b, ndarray):
        return operation(a, b)
    if not isinstance(b, ndarray):
        return ndarray([operation(v, b) for v in a.flat], a.shape)
    if not isinstance(a, ndarray):
        return ndarray([operation(a, v) for v in b.flat], b.shape)
    if a.shape != b.shape:
        raise ValueError(f"operands could not be broadcast together: {a.shape} {b.shape}")
    return ndarray([operation(v, w) for v, w in zip(a.flat, b.flat)], a.shape)


def _operand(value):
    return array(value) if isinstance(value, (list, tuple)) else value


def _divide(a, b):
    """Division as arrays do it: by zero it gives infinity or NaN."""
    if b != 0:
        return a / b
    return nan if a == 0 or a != a else math.copysign(inf, a) * math.copysign(1.0, b)


def _binary(operation):
    def forward(self, other):
        return _elementwise(operation, self, other)

    def backward(self, other):
        return _elementwise(operation, other, self)

    return forward, backward


for _name, _operation in {
    "add": operator.add,
    "sub": operator.sub,
    "mul": operator.mul,
    "truediv": _divide,
}.items():
    _forward, _backward = _binary(_operation)
    setattr(ndarray, f"__{_name}__", _forward)
    setattr(ndarray, f"__r{_name}__", _backward)
for _name in ("lt", "le", "gt", "ge", "eq", "ne"):
    setattr(ndarray, f"__{_name}__", _binary(getattr(operator, _name))[0])


def _reduce(choose, values, axis):
    if axis is None:
        return choose(values.flat)
    if axis != 0 or values.ndim != 2:
        raise NotImplementedError("only columns of rows")
    return array([choose(column) for column in zip(*values.tolist())])


def array(values, dtype=float, copy=True):
    if isinstance(values, ndarray):
        return values.copy()
    values = [v.tolist() if isinstance(v, ndarray) else v for v in values]
    if values and isinstance(values[0], (list, tuple)):
        columns = len(values[0])
        if any(len(row) != columns for row in values):
            raise ValueError("rows of different length")
        return ndarray([float(v) for row in values for v in row], (len(values), columns))
    return ndarray([float(v) for v in values], (len(values),))


def asarray(values, dtype=float):
    return values if isinstance(values, ndarray) else array(values)


ascontiguousarray = asarray


def zeros(n, dtype=float):
    return array([0.0] * n)


def frombuffer(data, dtype=float):
    values = _array.array("d")
    values.frombytes(bytes(data))
    return array(values.tolist())


def vstack(arrays):
    return array([row for part in arrays for row in asarray(part).tolist()])


def maximum(a, b):
    return _elementwise(max, a, b)


def minimum(a, b):
    return _elementwise(min, a, b)


def hypot(a, b):
    return _elementwise(math.hypot, a, b)


def isfinite(values):
    if isinstance(values, ndarray):
        return ndarray([math.isfinite(v) for v in values.flat], values.shape)
    return math.isfinite(values)


def all(values):  # noqa: A001
    flat = values.flat if isinstance(values, ndarray) else values
    return not any(not v for v in flat)


def any(values):  # noqa: A001
    for value in values:
        if value:
            return True
    return False


def round(values, decimals=0):  # noqa: A001
    """To the nearest whole number, halves to the even one; the sign of zero stays."""

    def nearest(v):
        return math.copysign(float(int(v // 1 + _above_half(v))), v) if math.isfinite(v) else v

    if decimals:
        raise NotImplementedError("whole numbers only")
    if isinstance(values, ndarray):
        return ndarray([nearest(v) for v in values.flat], values.shape)
    return nearest(values)


def _above_half(v):
    rest = v - v // 1
    return 1 if rest > 0.5 or rest == 0.5 and (v // 1) % 2 else 0


def _norm(values):
    return math.sqrt(sum(v * v for v in asarray(values).flat))


linalg = types.SimpleNamespace(norm=_norm)
