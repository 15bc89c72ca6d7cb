"""Passes labels, the one kind of string that the library takes: arrays of pointers to wchar_t.

    python3 labels.py [LIBRARY]
"""

import ctypes
import sys

import numpy as np

library = ctypes.CDLL(sys.argv[1] if len(sys.argv) == 2 else "libsurvival.so")
labels = ["Poor", "Good", "Poor", "Good", "Poor"]
values = np.array([0.5, 0.1, 0.2, 0.4, 0.3])
weights = np.ones(len(values))
table = np.zeros((2, 2), order="F")

D = np.ctypeslib.ndpointer(np.float64, flags="F_CONTIGUOUS,WRITEABLE")
strings = (ctypes.c_wchar_p * len(labels))(*labels)  # of this platform's wchar_t
function = library.Cpp_CreateROCContingencyTable
function.restype = None
function.argtypes = [type(strings), ctypes.c_int, ctypes.c_wchar_p, D, ctypes.c_short,
                     ctypes.c_double, ctypes.c_int, D, D]
# Positive at or above 0.3, which is rule 3.
function(strings, len(labels), "Poor", values, 0, 0.3, 3, weights, table)
for name, row in zip(["test positive", "test negative"], table):
    print(f"{name}: {row[0]:.0f} Poor, {row[1]:.0f} Good")
