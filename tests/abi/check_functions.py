"""Reports the functions of the system's mathematics library that a library takes from it and that
do not round the same way everywhere.

    check_functions.py NM LIBM LIBRARY...

LIBM is the system's library; a LIBRARY is shared or an archive. Ends with 1 when one of them needs a
function that LIBM has and EXACT has not.
"""

import pathlib
import subprocess
import sys

# Their results are exact, or rounded correctly as IEEE 754 asks: the same bits everywhere.
EXACT = {"ceil", "copysign", "fabs", "floor", "fmax", "fmin", "frexp", "ilogb", "ldexp", "logb",
         "modf", "nearbyint", "rint", "round", "scalbn", "sqrt", "trunc"}


def symbols(nm, path, which):
    """The names of the symbols of this kind (--defined-only, --undefined-only), without versions."""
    dynamic = [] if path.suffix == ".a" else ["--dynamic"]
    output = subprocess.run([nm, *dynamic, which, "--format=posix", path],
                            check=True, capture_output=True, text=True).stdout
    return {line.split()[0].split("@")[0] for line in output.splitlines()
            if len(line.split()) > 1}


def main():
    nm, libm, *libraries = sys.argv[1:]
    functions = symbols(nm, pathlib.Path(libm), "--defined-only")
    if not {"exp", "log", "pow", "sqrt"} <= functions or not libraries:
        sys.exit(f"{libm} is no mathematics library, or there is nothing to check")
    refused = 0
    for library in map(pathlib.Path, libraries):
        needed = symbols(nm, library, "--undefined-only") & functions
        for name in sorted(needed - EXACT):
            print(f"{library.name} takes {name} from the system")
            refused += 1
        print(f"{library.name}: {', '.join(sorted(needed & EXACT)) or 'nothing'}")
    return 1 if refused else 0


if __name__ == "__main__":
    sys.exit(main())
