"""Lets LibreOffice Basic call libsurvival's flat-array entry points.

Basic passes arrays to UNO as sequences and cannot hand a C function their memory, so this script,
run by LibreOffice's Python in the office's own process, copies each sequence into a C array, makes
the call and returns every argument as the call left it.

    call("/path/of/libsurvival.so", "ReorganizeData", Array(...)) -> (result, argument 1, ...)

A type letter for each argument says what it becomes: D an array of double, I an array of int,
d a double, i an int, s a short (a flag: -1 is true). The first letter is what the entry point
returns, - for nothing.
"""

import ctypes

SIGNATURES = {
    "ReorganizeData": "i DIDDDDisD",
    "LoadKaplanTest": "- IiiDD",
    "RunLife": "- iiIidiiiiiiDDDssssDDDDID",
    "ComputeKaplanMeanMedian": "- DidiiDDD",
    "ComputeLifeTests": "- DiiidD",
    "Cpp_ReorganizeDataCox": "i DiiDDDDDDiIIIIII",
    "RunCoxReg": "i DiiIDiDiDiIdiIIIIIiidddisiiiDDDDDDDDII",
}
SCALARS = {"d": ctypes.c_double, "i": ctypes.c_int, "s": ctypes.c_short}
ELEMENTS = {"D": ctypes.c_double, "I": ctypes.c_int}


def converted(letter, value):
    """The C value or array of one argument; whole numbers arrive from Basic as either type."""
    if letter in ELEMENTS:
        kind = float if letter == "D" else int
        return (ELEMENTS[letter] * len(value))(*map(kind, value))
    return SCALARS[letter](float(value) if letter == "d" else int(value))


def call(library, name, arguments):
    result, letters = SIGNATURES[name].split()
    if len(arguments) != len(letters):
        raise ValueError(f"{name} takes {len(letters)} arguments, not {len(arguments)}")
    function = getattr(ctypes.CDLL(library), name)
    function.restype = None if result == "-" else ctypes.c_int
    passed = [converted(letter, value) for letter, value in zip(letters, arguments)]
    code = function(*passed)
    after = [tuple(value) if letter in ELEMENTS else value.value
             for letter, value in zip(letters, passed)]
    return (0 if code is None else code, *after)


g_exportedScripts = (call,)
