"""What the oracles share: flat arrays in and out, the containers' rules, exact comparison.

An oracle is a second, literal implementation of an entry point, run against the library's on random
and degenerate input.
"""

import ctypes
import math
import os
import random
import sys

MISSING = -1.79769313486231e308
INFINITE = 1.79769313486231e308
EPSILON = 2.220446049250313e-16
NAN = float("nan")
INF = float("inf")


class Mat:
    """Column-major block indexed from 1: reads outside give -1, writes outside are dropped."""

    def __init__(self, rows, cols, values=None, fill=0.0):
        self.rows, self.cols = max(rows, 0), max(cols, 0)
        count = self.rows * self.cols
        self.v = [fill] * count if values is None else list(values[:count])

    def __call__(self, i, j=1):
        p = i + (j - 1) * self.rows - 1
        return self.v[p] if 0 <= p < len(self.v) else -1

    def put(self, i, j, x):
        p = i + (j - 1) * self.rows - 1
        if 0 <= p < len(self.v):
            self.v[p] = x


def trunc(x):
    """double -> int as the processor does it."""
    if not (-2147483649.0 < x < 2147483648.0):
        return -2147483648
    return int(x)


def div(a, b):
    """IEEE division."""
    if b != 0:
        return a / b
    if a == 0 or math.isnan(a) or math.isnan(b):
        return NAN
    return math.copysign(INF, a) * math.copysign(1.0, b)


def root(x):
    return math.sqrt(x) if x >= 0 else NAN


def exp(x):
    try:
        return math.exp(x)
    except OverflowError:
        return INF


def log(x):
    if x > 0:
        return math.log(x)
    return -INF if x == 0 else NAN


def order(keys):
    """Stable ascending order of 0-based positions, NaN last."""
    return sorted(range(len(keys)), key=lambda i: (math.isnan(keys[i]), 0.0 if math.isnan(keys[i]) else keys[i]))


def sort_q(columns, key, first, last, move_key):
    """Reorders rows first..last (1-based) of the lists in `columns` by `key`."""
    first, last = max(first, 1), min(last, len(key))
    if last <= first:
        return
    o = order(key[first - 1:last])
    for column in columns + ([key] if move_key else []):
        run = column[first - 1:last]
        column[first - 1:last] = [run[i] for i in o]


class Library:
    """Calls entry points with Python lists; lists come back as the arrays were left."""

    def __init__(self, path):
        self.lib = ctypes.CDLL(path)
        # Already loaded as a dependency; gives the containers' constructors.
        self.containers = ctypes.CDLL(os.path.join(os.path.dirname(path), "libKlikro.so"))

    def view(self, kind, rows, cols, array):
        """A matrix ("M") or matrixInt ("N") that is a view of a ctypes array."""
        memory = ctypes.create_string_buffer(64)
        name = "_ZN6matrixC1EiiPdb" if kind == "M" else "_ZN9matrixIntC1EiiPib"
        getattr(self.containers, name)(memory, rows, cols, array, ctypes.c_bool(True))
        return memory

    def call(self, name, args, restype=ctypes.c_int):
        """args: (kind, value) with kind d (double), i (int), s (short), D (double array),
        I (int array), M (rows, cols, doubles) and N (rows, cols, ints) for matrices. Returns
        (result, arrays as lists in order)."""
        function = getattr(self.lib, name)
        function.restype = restype
        passed, arrays = [], []
        for kind, value in args:
            if kind == "d":
                passed.append(ctypes.c_double(value))
            elif kind == "i":
                passed.append(ctypes.c_int(value))
            elif kind == "s":
                passed.append(ctypes.c_short(value))
            elif kind in "DI":
                base = ctypes.c_double if kind == "D" else ctypes.c_int
                array = (base * max(len(value), 1))(*value)
                arrays.append((array, len(value)))
                passed.append(array)
            elif kind in "MN":
                rows, cols, values = value
                base = ctypes.c_double if kind == "M" else ctypes.c_int
                array = (base * max(len(values), 1))(*values)
                arrays.append((array, len(values)))
                passed.append(self.view(kind, rows, cols, array))
            else:
                raise ValueError(kind)
        result = function(*passed)
        return result, [list(array)[:n] for array, n in arrays]


class Dist:
    """The distribution functions, which the oracles take as given."""

    def __init__(self, path):
        self.lib = ctypes.CDLL(path)

    def __getattr__(self, name):
        function = getattr(self.lib, name)
        function.restype = ctypes.c_double
        return lambda *args: function(*[ctypes.c_double(a) for a in args])


def same(a, b, relative=0.0):
    """Equal to the bit, NaN equal to NaN, or within a relative tolerance."""
    if isinstance(a, float) and math.isnan(a):
        return isinstance(b, float) and math.isnan(b)
    if a == b:
        return True
    if relative == 0.0 or math.isnan(b) or math.isinf(a) or math.isinf(b):
        return False
    return abs(a - b) <= relative * max(abs(a), abs(b))


class Run:
    """Counts cases, prints the first differences, ends the process."""

    def __init__(self, seed=20130517):
        self.random = random.Random(seed)
        self.failures = 0
        self.cases = {}

    def compare(self, name, inputs, expected, got, relative=0.0, absolute=0.0):
        """expected and got: lists of (label, list or scalar)."""
        self.cases[name] = self.cases.get(name, 0) + 1
        for (label, want), (_, have) in zip(expected, got):
            want = want if isinstance(want, list) else [want]
            have = have if isinstance(have, list) else [have]
            for k, (w, h) in enumerate(zip(want, have)):
                if not same(w, h, relative) and not (absolute and abs(w - h) <= absolute):
                    self.failures += 1
                    if self.failures <= 10:
                        print(f"{name}: {label}[{k}] expected {w!r}, got {h!r}")
                        print(f"  input {inputs!r}"[:2000])
                    return False
            if len(want) != len(have):
                raise AssertionError(f"{name}: {label} has the wrong length")
        return True

    def finish(self):
        for name, count in sorted(self.cases.items()):
            print(f"{name}: {count} cases")
        total = sum(self.cases.values())
        print(f"{total - self.failures} passed, {self.failures} failed")
        sys.exit(1 if self.failures or not total else 0)
