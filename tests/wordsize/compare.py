"""Compares every result of the 64-bit build with the 32-bit build's: bit for bit, whole numbers by
value, any NaN like any other.

    compare.py FOLDER64 FOLDER32

The folders hold wordsize_results. Ends with 1 when a result differs or there are none.
"""

import argparse
import pathlib
import subprocess
import sys


def results(*command, environment=None):
    """What the program wrote: {array: [elements]}."""
    try:
        output = subprocess.run(command, check=True, capture_output=True, text=True,
                                env=environment).stdout
    except (OSError, subprocess.CalledProcessError) as error:
        sys.exit(f"{command} does not run: {error}")
    return parse(output, command[-1])


def parse(text, name="the table"):
    lines = text.splitlines()
    if not lines or lines[-1] != "end":
        raise ValueError(f"{name} is not complete")
    table = {}
    for line in lines[:-1]:
        head, elements = line.rsplit("|", 1)
        if head in table:
            raise ValueError(f"{name} has {head} twice")
        table[head] = elements.split()
    return table


def is_real(head):
    return head.rsplit("|", 1)[1].startswith("d")


def is_nan(text):
    return int(text, 16) & 0x7FFFFFFFFFFFFFFF > 0x7FF0000000000000


def same(head, first, second):
    """Whether two elements are the same: bit for bit, any NaN like any other."""
    if first == second or not is_real(head):
        return first == second
    return is_nan(first) and is_nan(second)


def compare(first, second):
    """The failures, one line each, of two tables that have to be the same."""
    if not first:
        return ["there are no results"]
    if {h: len(e) for h, e in first.items()} != {h: len(e) for h, e in second.items()}:
        return ["the tables do not hold the same arrays"]
    return [f"{head}[{i}]: {a} {b}" for head, elements in first.items()
            for i, (a, b) in enumerate(zip(elements, second[head])) if not same(head, a, b)]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folders", nargs=2, type=pathlib.Path)
    tables = [results(folder / "wordsize_results") for folder in parser.parse_args().folders]
    failures = compare(*tables)
    for failure in failures[:40]:
        print(failure)
    print(f"{sum(map(len, tables[0].values()))} elements, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
