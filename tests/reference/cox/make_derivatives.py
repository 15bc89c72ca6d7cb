#!/usr/bin/env python3
"""Log-likelihood, gradient and information of small hard samples from direct sums at 50 digits.

    make_derivatives.py     writes derivatives_data.csv and derivatives.csv beside this file

Every risk set is formed by looking at every row. Efron's treatment of ties with the mean weight of
the tied events, Breslow's beside it.
"""
import csv
import pathlib

from mpmath import exp, log, mp, mpf

mp.dps = 50
HERE = pathlib.Path(__file__).resolve().parent
P = 3


def uniforms(seed):
    state = seed
    while True:
        state = (state * 6364136223846793005 + 1442695040888963407) % 2**64
        yield (state >> 40) / 2.0**24


def rows_of(case):
    """entry, exit, event, weight, offset, x1 .. x3 of each row: doubles, as the test reads them."""
    u = uniforms(sum(map(ord, case)))
    rows = []
    for i in range(80):
        x = [next(u) - 0.5, float(next(u) < 0.4), 2.0 * next(u)]
        weight, offset, entry = 0.5 + (i % 7) / 4.0, 0.0, -1.0
        exit = float(1 + int(40 * next(u)))
        event = int(next(u) < 0.6)
        if case in ("risks", "offsets"):
            entry = max(0.0, exit - 1.0 - int(25 * next(u)))
        if case == "risks":  # that differ by 1e12
            offset = 27.7 * (next(u) - 0.5)
        elif case == "offsets":
            offset = 500.0 if next(u) < 0.4 else -500.0
        elif case == "from start":
            offset = 500.0 if next(u) < 0.4 else -500.0
        elif case in ("far", "far from start"):
            # Spread over 4000 and, within each cluster, as risks usually are.
            if case == "far":
                entry = max(0.0, exit - 1.0 - int(25 * next(u)))
            offset = 500.0 * (int(9 * next(u)) - 4) + 4.0 * next(u)
        elif case == "step":
            # Those that weigh nothing as long as the others are there lie far from them.
            offset = 30.0 if i < 40 else -30.0
            exit += 0.0 if i < 40 else 50.0
            x[0] += 1e6 if i < 40 else 0.0
        elif case == "drift":
            # Four groups one after the other, far from each other.
            entry = 50.0 * (i % 4) + max(0.0, exit - 1.0 - int(20 * next(u)))
            exit += 50.0 * (i % 4)
            x[0] += 1e6 * (i % 4)
        rows.append([entry, exit, event, weight, offset] + x)
    return rows


def derivatives(rows, beta, efron):
    entry, exit, event, weight, offset = ([mpf(row[c]) for row in rows] for c in range(5))
    x = [[mpf(value) for value in row[5:]] for row in rows]
    risk = [weight[i] * exp(offset[i] + sum(b * v for b, v in zip(beta, x[i])))
            for i in range(len(rows))]
    value, gradient = mpf(0), [mpf(0)] * P
    information = [[mpf(0)] * P for _ in range(P)]
    for time in sorted({exit[i] for i in range(len(rows)) if event[i]}):
        failing = [i for i in range(len(rows)) if event[i] and exit[i] == time]
        others = [i for i in range(len(rows))
                  if entry[i] < time <= exit[i] and i not in failing]
        for i in failing:
            value += weight[i] * (offset[i] + sum(b * v for b, v in zip(beta, x[i])))
            for j in range(P):
                gradient[j] += weight[i] * x[i][j]
        share = sum(weight[i] for i in failing) / len(failing)
        for l in range(len(failing)):
            part = mpf(len(failing) - l) / len(failing) if efron else mpf(1)
            r = {i: risk[i] for i in others} | {i: part * risk[i] for i in failing}
            s0 = sum(r.values())
            mean = [sum(r[i] * x[i][j] for i in r) / s0 for j in range(P)]
            value -= share * log(s0)
            for j in range(P):
                gradient[j] -= share * mean[j]
                for k in range(P):
                    information[j][k] += share * sum(
                        r[i] * (x[i][j] - mean[j]) * (x[i][k] - mean[k]) for i in r) / s0
    return value, gradient, information


def main():
    with open(HERE / "derivatives_data.csv", "w", newline="", encoding="ascii") as data, \
            open(HERE / "derivatives.csv", "w", newline="", encoding="ascii") as results:
        data = csv.writer(data, lineterminator="\n")
        results = csv.writer(results, lineterminator="\n")
        data.writerow("case entry exit event weight offset x1 x2 x3".split())
        results.writerow("case ties beta1 beta2 beta3 logLikelihood gradient1 gradient2 gradient3 "
                         "information11 information21 information22 information31 information32 "
                         "information33".split())
        for case in ("risks", "offsets", "from start", "far", "far from start", "step", "drift"):
            rows = rows_of(case)
            data.writerows([case] + [repr(v) for v in row] for row in rows)
            beta = [0.0 if case in ("step", "drift") else 0.375, -0.25, 0.125]
            for ties in ("efron", "breslow"):
                value, gradient, information = derivatives(rows, beta, ties == "efron")
                lower = [information[j][k] for j in range(P) for k in range(j + 1)]
                results.writerow([case, ties, *beta] +
                                 [mp.nstr(v, 20) for v in [value, *gradient, *lower]])


if __name__ == "__main__":
    main()
