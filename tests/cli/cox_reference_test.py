#!/usr/bin/env python3
"""The numbers of survmeth cox and clogit are those of R's survival (tests/reference/cox_command).

    cox_reference_test.py PROGRAM SOURCE

Each call of cases.txt prints its JSON; every cell of expected.csv is looked up there by table, row and
column. A number may differ by 1e-9 of the larger of its size and its scale, which for a coefficient is
its standard error: both programs end within some 1e-12 of the maximum, the rest is the rounding of
another order of sums.
"""

import collections
import csv
import json
import pathlib
import shlex
import subprocess
import sys
import tempfile

TOLERANCE = 1e-9


def rows_of(table):
    """The row that a label names: its first column, of a baseline stratum and time."""
    columns = table["values"]
    keys = list(columns)
    first = columns[keys[0]]
    if keys[0] == "stratum":
        return {f"{s}|{t:g}": i for i, (s, t) in enumerate(zip(first, columns["time"]))}
    return {str(name): i for i, name in enumerate(first)}


def found(report, cell):
    if cell["table"] == "facts":
        return report["facts"][cell["column"]]
    table = report["tables"][cell["table"]]
    return table["values"][cell["column"]][table["rows"][cell["row"]]]


def report_of(program, source, arguments):
    with tempfile.TemporaryDirectory() as folder:
        for name in ("data", "tests"):
            (pathlib.Path(folder) / name).symlink_to(source / name, target_is_directory=True)
        result = subprocess.run([program] + shlex.split(arguments) + ["--json"], cwd=folder,
                                capture_output=True, check=False, timeout=120)
    if result.returncode != 0:
        raise SystemExit(f"{arguments}: {result.stderr.decode()}")
    report = json.loads(result.stdout)
    for table in report["tables"].values():
        table["rows"] = rows_of(table)
    return report


def main():
    program, source = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    folder = source / "tests/reference/cox_command"
    cells = collections.defaultdict(list)
    with open(folder / "expected.csv", encoding="utf-8") as file:
        for cell in csv.DictReader(file):
            cells[cell["case"]].append(cell)
    problems, count, largest = [], 0, 0.0
    calls = [line.split("\t") for line in
             (folder / "cases.txt").read_text(encoding="utf-8").splitlines()]
    for name, arguments in calls:
        report = report_of(program, source, arguments)
        for cell in cells.pop(name):
            place = f'{name}: {cell["table"]} {cell["row"]} {cell["column"]}'
            value = found(report, cell)
            count += 1
            if value is None or cell["value"] == "":
                if value is not None or cell["value"] != "":
                    problems.append(f'{place}: {value}, expected {cell["value"] or "none"}')
                continue
            off = abs(value - float(cell["value"])) / (float(cell["scale"]) or 1.0)
            largest = max(largest, off)
            if off > TOLERANCE:
                problems.append(f'{place}: {value!r}, expected {cell["value"]} ({off:.2g})')
    problems += [f"{name} has numbers and no call" for name in cells]
    if count < 1500:
        problems.append(f"only {count} numbers were compared")
    print("\n".join(problems) or f"{count} numbers, the farthest off by {largest:.2g}")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
