"""Survival in the lung cancer data, from Python: Kaplan-Meier curves by sex with their quartiles,
means and comparison, then a Cox regression, all through libsurvival's flat arrays.

    python3 lung.py DATA [LIBRARY]

LIBRARY is the path of libsurvival; without it the loader looks in its usual places.
"""

import csv
import ctypes
import sys

import numpy as np

MISSING = -1.79769313486231e308
YES, NO = -1, 0  # flags: 1 would be false
ALPHA = 0.05

# How ctypes passes each kind of argument. An array has to be of the right element type and
# column-major (order="F"); numpy refuses anything else instead of passing a copy.
D = np.ctypeslib.ndpointer(np.float64, flags="F_CONTIGUOUS,WRITEABLE")
I = np.ctypeslib.ndpointer(np.intc, flags="F_CONTIGUOUS,WRITEABLE")
i, s, d = ctypes.c_int, ctypes.c_short, ctypes.c_double

# The entry points' arguments in the order of survival/calls, and what they return.
PROTOTYPES = {
    "ReorganizeData": (i, [D, I, D, D, D, D, i, s, D]),
    "LoadKaplanTest": (None, [I, i, i, D, D]),
    "RunLife": (None, [i, i, I, i, d, i, i, i, i, i, i, D, D, D, s, s, s, s, D, D, D, D, I, D]),
    "ComputeKaplanMeanMedian": (None, [D, i, d, i, i, D, D, D]),
    "ComputeLifeTests": (None, [D, i, i, i, d, D]),
    "Cpp_ReorganizeDataCox": (i, [D, i, i, D, D, D, D, D, D, i, I, I, I, I, I, I]),
    "RunCoxReg": (i, [D, i, i, I, D, i, D, i, D, i, I, d, i, I, I, I, I, I, i, i, d, d, d, i, s, i,
                      i, i, D, D, D, D, D, D, D, D, I, I]),
}


def load(path):
    library = ctypes.CDLL(path)
    for name, (result, arguments) in PROTOTYPES.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return library


def reals(*shape):
    """Zeros, column-major: element (i, j) of the library is [i - 1, j - 1] here."""
    return np.zeros(shape, order="F")


def integers(*shape):
    return np.zeros(shape, np.intc, order="F")


def read_data(path):
    """The columns by name; an empty cell is MISSING, and male is 1, female 0."""
    with open(path, newline="", encoding="utf-8") as file:
        rows = list(csv.DictReader(file))
    words = {"": MISSING, "male": 1.0, "female": 0.0}
    return {name: np.array([words[row[name]] if row[name] in words else float(row[name])
                            for row in rows]) for name in rows[0]}


def show(values):
    """Cells of a table; what does not exist is a dash."""
    return "".join(f"{'-':>14}" if value <= MISSING else f"{value:14.6f}" for value in values)


def heading(first, names):
    print(f"{first:<18}" + "".join(f"{name:>14}" for name in names))


def row_of(name, values):
    print(f"{name:<18}" + show(values))


def show_curve(table):
    """The curve of one sex: a line for each distinct time."""
    heading("time", ["at risk", "deaths", "censored", "survival", "std error"])
    for row in table:
        survival, greenwood = row[7], row[10]
        print(f"{row[0]:<18.0f}{row[2]:14.0f}{row[3]:14.0f}{row[4]:14.0f}"
              + show([survival, survival * np.sqrt(greenwood)]))


def show_summary(library, table, m, rows):
    cut, mean, quartiles = reals(1), reals(4), reals(3, 4)
    library.ComputeKaplanMeanMedian(table, m, ALPHA, m, rows, cut, mean, quartiles)
    heading("falls to", ["time", "lower", "upper"])
    for name, row in zip(["survival 0.25", "survival 0.50", "survival 0.75"], quartiles):
        row_of(name, row[1:])
    heading("", ["mean", "std error", "lower", "upper", "cut"])
    row_of("restricted", [*mean, cut[0]])


def kaplan_meier(library, data):
    # Copies, because the library sorts its inputs where they stand.
    time, status = data["time"].copy(), data["status"].copy()
    weight, stratum = np.ones(len(time)), 1 + data["sex"]
    sizes = np.array([np.sum(stratum == 1), np.sum(stratum == 2)], float)
    strata, count, max_time = len(sizes), len(time), reals(1)

    n = np.array([count], np.intc)
    code = library.ReorganizeData(time, n, status, weight, stratum, sizes, strata, NO, max_time)
    if code in (-1, -2):  # the other codes are soft
        sys.exit(f"refused with code {code}")
    print(f"Survival by sex: {count} patients, code {code}, last time {max_time[0]:.0f}")

    # The distinct times of both sexes, into row 1 of the grid.
    grid, times = reals(3 * strata + 1, count), np.array([count], np.intc)
    library.LoadKaplanTest(times, count, strata, time, grid)

    offset = integers(1)
    for number, sex in enumerate(["female", "male"], 1):
        m = int(sizes[number - 1])
        intervals, table = reals(m + 1, 2), reals(m + 2, 12)
        total, rows, unused_bounds = reals(1), integers(1), reals(1)
        library.RunLife(count, number, offset, 0, 0, count, strata, m, 1, 0, 0, time, status,
                        weight, NO, YES, NO, NO, unused_bounds, intervals, total, table, rows,
                        grid)
        print(f"\n{sex}: {m} patients, {rows[0]} times")
        show_curve(table[1:rows[0] + 1])  # row 1 is the origin
        show_summary(library, table, m, rows[0])
        offset[0] += m

    result = reals(3, 4)
    library.ComputeLifeTests(grid, times[0], count, strata, ALPHA, result)
    print(f"\nComparison over {times[0]} times")
    heading("", ["chi-square", "critical", "p-value"])
    for name, row in zip(["log-rank", "Gehan-Breslow", "Tarone-Ware"], result):
        row_of(name, row[:3])


def cox(library, data):
    names = ["age", "male", "ph.ecog"]
    # Complete rows only, the covariates centred: far from 0 their risk sums over- or underflow.
    columns = np.column_stack([data["age"], data["sex"], data["ph.ecog"]])
    complete = np.all(columns > MISSING, axis=1)
    covariates = np.asfortranarray(columns[complete] - columns[complete].mean(axis=0))
    time, status = data["time"][complete], data["status"][complete]
    n, p = covariates.shape

    extra, tie_key, stratum, sizes = reals(n), np.ones(n), np.ones(n), np.array([float(n)])
    distinct, censored, groups = integers(1), integers(1), integers(1)
    starts, group_sizes, events = integers(1, n), integers(1, n), integers(1, n)
    code = library.Cpp_ReorganizeDataCox(time, n, p, status, extra, tie_key, covariates, stratum,
                                         sizes, 1, distinct, censored, starts, group_sizes,
                                         events, groups)
    if code != 0:
        sys.exit(f"refused with code {code}")
    # The tables cut to the largest number of groups, again column-major.
    most = int(groups[0])
    starts, group_sizes, events = (np.asfortranarray(table[:, :most])
                                   for table in (starts, group_sizes, events))

    left, iterations, steps, order = integers(1), integers(1), integers(1), integers(p)
    iterations[0] = 50
    beta, criteria, tests, coefficients = reals(p), reals(6, 2), reals(3, 3), reals(p, 9)
    history = reals(3, p)
    # Baseline and residuals are not asked for: an array of one element, which becomes 0, is
    # enough.
    baseline, at_means, residuals = np.ones(1), np.ones(1), np.ones(1)
    library.RunCoxReg(time, n, p, left, status, 0, covariates, 0, sizes, 1, iterations, 1e-9, 0,
                      distinct, group_sizes, events, censored, starts, -1, 0, 0.05, 0.1, ALPHA,
                      most, NO, 0, 0, 0, beta, criteria, tests, coefficients, baseline, at_means,
                      residuals, history, steps, order)

    print(f"\nCox regression: {n} patients, {censored[0]} censored, {distinct[0]} distinct times, "
          f"{iterations[0]} iterations")
    heading("", ["coefficient", "std error", "chi-square", "p-value", "hazard ratio", "lower",
                 "upper"])
    for name, row in zip(names[:left[0]], coefficients):
        row_of(name, row[:7])
    heading("model", ["without", "fitted"])
    for name, row in zip(["events", "covariates", "-2 log L", "AIC", "SBC"], criteria):
        row_of(name, row)
    heading("", ["df", "chi-square", "p-value"])
    for name, row in zip(["likelihood ratio", "score", "Wald"], tests):
        row_of(name, row)
    print(f"not asked for: {baseline[0]:.0f} {at_means[0]:.0f} {residuals[0]:.0f}")


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit("usage: lung.py DATA [LIBRARY]")
    library = load(sys.argv[2] if len(sys.argv) == 3 else "libsurvival.so")
    data = read_data(sys.argv[1])
    kaplan_meier(library, data)
    cox(library, data)


if __name__ == "__main__":
    main()
