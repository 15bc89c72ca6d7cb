"""Compares the symbols a shared library exports with the lists checked in beside this file.

    check_symbols.py NM LIBRARY LIST [--families SOURCES LISTS] [--count N]

LIST holds one mangled name a line, sorted. With --families the list LISTS/<family>.symbols is in
force as well for every family that has a folder SOURCES/<family>. Ends with 1 when a listed symbol
is not exported or an exported one is not listed, or when there are not N of them.
"""

import argparse
import pathlib
import subprocess
import sys

# What linkers define in every shared object, not the library's sources.
LINKER_SYMBOLS = {"_init", "_fini", "__bss_start", "_edata", "_end"}


def listed(path):
    """The names in a list; a list out of order, or with a name twice, is refused."""
    names = path.read_text(encoding="ascii").split()
    if names != sorted(set(names)):
        sys.exit(f"{path}: not sorted, or a name stands twice")
    return names


def exported(nm, library):
    """The names of the dynamic symbols that the library defines, without versions."""
    output = subprocess.run(
        [nm, "--dynamic", "--defined-only", "--format=posix", library],
        check=True, capture_output=True, text=True).stdout
    names = {line.split()[0].split("@")[0] for line in output.splitlines() if line.strip()}
    return names - LINKER_SYMBOLS


def expected(arguments):
    names = set(listed(arguments.list))
    if arguments.families:
        sources, lists = arguments.families
        for family in sorted(lists.glob("*.symbols")):
            if (sources / family.stem).is_dir():
                names |= set(listed(family))
    return names


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("nm")
    parser.add_argument("library")
    parser.add_argument("list", type=pathlib.Path)
    parser.add_argument("--families", nargs=2, type=pathlib.Path, metavar=("SOURCES", "LISTS"))
    parser.add_argument("--count", type=int)
    arguments = parser.parse_args()
    wanted, found = expected(arguments), exported(arguments.nm, arguments.library)
    for name in sorted(wanted - found):
        print(f"not exported: {name}")
    for name in sorted(found - wanted):
        print(f"not listed:   {name}")
    print(f"{arguments.library}: {len(found)} exported, {len(wanted)} listed")
    if arguments.count is not None and len(found) != arguments.count:
        print(f"{arguments.count} are promised")
        return 1
    return 0 if wanted == found else 1


if __name__ == "__main__":
    sys.exit(main())
