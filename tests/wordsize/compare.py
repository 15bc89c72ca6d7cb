"""Compares every result of the 64-bit build with the 32-bit build's.

    compare.py FOLDER64 FOLDER32 [--table]

The folders hold wordsize_results and wordsize_results_own. The two builds differ in what they take
from the system's library: exp, log and pow, which round otherwise in either word size. So:

 1. With the same exp, log and pow in both, every result is the same bit for bit.
 2. With the system's, what does not depend on them is the same bit for bit. It is found by moving
    them: what then stays as it was does not depend on them.
 3. The rest is within 4 units in the last place, or within 2 a where that is more: a is how far the
    result moves when exp, log and pow are off by one unit in the 64-bit build alone, the most over
    the patterns of up and down in NEAR. Twice, since both builds may be off.
 4. Whole numbers are the same.

Ends with 1 when one of these fails. --table prints what was found for each entry point.
"""

import argparse
import collections
import os
import pathlib
import subprocess
import sys

FAR = ["1 1048576", "2 1048576", "3 1048576", "4 1048576"]
NEAR = [f"{pattern} 1" for pattern in range(1, 17)]
ALLOWED = 4


def results(program, move=None):
    """What the program wrote: {array: [elements]}."""
    environment = {k: v for k, v in os.environ.items() if k != "SURVMETH_MOVE"}
    if move:
        environment["SURVMETH_MOVE"] = move
    try:
        output = subprocess.run([program], env=environment, check=True, capture_output=True,
                                text=True).stdout
    except (OSError, subprocess.CalledProcessError) as error:
        sys.exit(f"{program} does not run: {error}")
    return parse(output, program)


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


def is_nan(bits):
    return bits & 0x7FFFFFFFFFFFFFFF > 0x7FF0000000000000


def ulps(first, second):
    """Doubles between two, given in hexadecimal; 0 for two NaN, None for one."""
    a, b = int(first, 16), int(second, 16)
    if is_nan(a) or is_nan(b):
        return 0 if is_nan(a) and is_nan(b) else None
    def place(bits):
        return bits if bits < 1 << 63 else (1 << 63) - bits
    return abs(place(a) - place(b))


def same(head, first, second):
    """Whether two elements are the same: bit for bit, any NaN like any other."""
    if first == second or not is_real(head):
        return first == second
    return is_nan(int(first, 16)) and is_nan(int(second, 16))


class Found:
    """What was found for one entry point."""

    def __init__(self):
        self.elements = self.dependent = self.different = self.most = self.above = 0


def compare(system, own, far, near):
    """system and own: the tables of both builds; far and near: tables of the moved functions.

    Returns the failures and {call: Found}."""
    failures, found = [], collections.OrderedDict()
    if not system[0]:
        failures.append("there are no results")
    for table in (system[1], *own, *far, *near):
        if {h: len(e) for h, e in table.items()} != {h: len(e) for h, e in system[0].items()}:
            return ["the tables do not hold the same arrays"], found
    for head, elements in system[0].items():
        call = head.split("|", 1)[0]
        entry = found.setdefault(call, Found())
        entry.elements += len(elements)
        others = system[1][head]
        base = own[0][head]
        for i, (a, b) in enumerate(zip(base, own[1][head])):
            if not same(head, a, b):
                failures.append(f"{head}[{i}]: {a} {b} with the same functions")
        moved = [table[head] for table in far if table[head] != base]
        for i, (a, b) in enumerate(zip(elements, others)):
            dependent = any(m[i] != base[i] for m in moved)
            entry.dependent += dependent
            if same(head, a, b):
                continue
            entry.different += 1
            if not is_real(head) or not dependent:
                failures.append(f"{head}[{i}]: {a} {b}")
                continue
            distance = ulps(a, b)
            if distance is None:
                failures.append(f"{head}[{i}]: {a} {b}, not a number in one of them")
                continue
            entry.most = max(entry.most, distance)
            if distance <= ALLOWED:
                continue
            entry.above += 1
            amplified = max((ulps(base[i], table[head][i]) or 0 for table in near), default=0)
            if distance > 2 * amplified:
                failures.append(f"{head}[{i}]: {a} {b}, {distance} ulp; {amplified} for one ulp of "
                                "exp, log and pow")
    if not any(f.dependent for f in found.values()):
        failures.append("nothing depends on exp, log and pow: they were not moved")
    if all(f.dependent for f in found.values()):
        failures.append("everything depends on exp, log and pow")
    return failures, found


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folders", nargs=2, type=pathlib.Path)
    parser.add_argument("--table", action="store_true")
    arguments = parser.parse_args()
    system = [results(folder / "wordsize_results") for folder in arguments.folders]
    program = [folder / "wordsize_results_own" for folder in arguments.folders]
    own = [results(p) for p in program]
    failures, found = compare(system, own, [results(program[0], move) for move in FAR],
                              [results(program[0], move) for move in NEAR])
    if arguments.table:
        print("elements, dependent on exp, log and pow, different, largest difference, above 4 ulp")
        for call, f in found.items():
            print(f"{call:45} {f.elements:7} {f.dependent:7} {f.different:5} {f.most:20} {f.above:5}")
    for failure in failures[:40]:
        print(failure)
    total = [sum(getattr(f, field) for f in found.values())
             for field in ("elements", "dependent", "different", "above")]
    print("{} elements, {} of them depend on exp, log and pow; {} differ, {} by more than 4 ulp; "
          "{} failures".format(*total, len(failures)))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
