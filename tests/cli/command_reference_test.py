#!/usr/bin/env python3
"""The numbers of a command are those of R's survival (tests/reference/cox_command, life_command).

    command_reference_test.py PROGRAM SOURCE FOLDER LEAST

Each call of FOLDER's cases.txt prints its JSON; every cell of expected.csv is looked up there by
table, row and column, LEAST cells at least. A number may differ by 1e-9 of the larger of its size and
its scale, which for a coefficient is its standard error: both programs end within some 1e-12 of the
maximum, the rest is the rounding of another order of sums.
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

# The columns that name a row, joined by "|"; the first one of other tables.
KEYS = {
    "baseline": ["stratum", "time"],
    "quantiles": ["group", "probability"],
    "meanContrasts": ["group", "statistic"],
    "rates": ["group", "from"],
    "rateRatios": ["group", "from"],
    "strata": ["stratum", "group"],
    "pairs": ["first", "second"],
}
KEYS |= {table: ["group", "time"] for table in
         ("kaplanMeier", "curves", "survivalAt", "survivalContrasts", "atRisk")}


def rows_of(name, table):
    """The row that its labels name."""
    columns = table["values"]
    keys = [key for key in KEYS.get(name, list(columns)[:1]) if key in columns]
    spelt = ([f"{cell:.12g}" if isinstance(cell, (int, float)) else cell for cell in columns[key]]
             for key in keys)
    return {"|".join(cells): i for i, cells in enumerate(zip(*spelt))}


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
    for name, table in report["tables"].items():
        table["rows"] = rows_of(name, table)
    return report


def main():
    program, source = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    folder = source / sys.argv[3]
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
    if count < int(sys.argv[4]):
        problems.append(f"only {count} numbers were compared")
    print("\n".join(problems) or f"{count} numbers, the farthest off by {largest:.2g}")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
