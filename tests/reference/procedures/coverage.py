#!/usr/bin/env python3
"""How often bootstrap limits of a log hazard ratio hold the true one, on simulated data.

    coverage.py PROGRAM [DATA SETS]

Exponential times with hazard exp(0.7 x - 0.5 z), x 0 or 1, z normal, uniform censoring, 80 rows;
400 replicates for each data set; 95% limits. Prints the share of data sets whose limits hold 0.7 and
-0.5, for Wald's limits too.
"""

import csv
import io
import json
import math
import pathlib
import random
import subprocess
import sys
import tempfile

TRUE = {"x": 0.7, "z": -0.5}


def simulated(seed):
    draw = random.Random(seed)
    text = io.StringIO()
    out = csv.writer(text, lineterminator="\n")
    out.writerow(["time", "event", "x", "z"])
    for _ in range(80):
        x, z = draw.randrange(2), draw.gauss(0, 1)
        time = draw.expovariate(math.exp(TRUE["x"] * x + TRUE["z"] * z))
        censored = draw.uniform(0, 4)
        out.writerow([repr(min(time, censored)), int(time <= censored), x, repr(z)])
    return text.getvalue()


def main():
    program, count = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 200
    held = {}
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "data.csv"
        for seed in range(count):
            file.write_text(simulated(seed), encoding="utf-8")
            for kind in ("percentile", "bca"):
                report = json.loads(subprocess.run(
                    [program, "cox", file, "--formula", "Surv(time, event) ~ x + z", "--bootstrap",
                     "400", "--bootstrap-limits", kind, "--seed", str(seed), "--json", "--quiet"],
                    capture_output=True, check=True, encoding="utf-8").stdout)
                for name, table in (("wald", "coefficients"), (kind, "bootstrap")):
                    values = report["tables"][table]["values"]
                    for j, column in enumerate(values["name"]):
                        ratio = math.exp(TRUE[column])
                        inside = values["lower"][j] <= ratio <= values["upper"][j]
                        held.setdefault((name, column), []).append(inside)
    for (name, column), inside in sorted(held.items()):
        print(f"{name} {column}: {sum(inside) / len(inside):.3f} of {len(inside)}")


if __name__ == "__main__":
    main()
