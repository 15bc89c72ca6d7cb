"""Writes marginal.csv: the exact marginal likelihood of tied events, to 50 digits.

With risks r_i of the d rows that fail at a time and S of the others at risk, the probability that
the d come before all others is the integral of S exp(-S u) prod (1 - exp(-r_i u)) over u > 0. Here
it is formed without an integral: the product is multiplied out, and each of the 2^d terms
integrates to a fraction. Derivatives are central differences at 50 digits. Run in this folder.
"""
import csv
import itertools

import mpmath as mp

mp.mp.dps = 120  # the alternating sum of 2^d fractions and the differences cost digits


def column(rows, name):
    return [mp.mpf(row[name]) for row in rows]


def log_likelihood(rows, names, b):
    time, event = column(rows, "time"), column(rows, "event")
    entry = column(rows, "start") if "start" in rows[0] else [mp.mpf(-1)] * len(rows)
    x = [column(rows, name) for name in names]
    risk = [mp.exp(mp.fsum(b[j] * x[j][i] for j in range(len(b)))) for i in range(len(rows))]
    total = mp.mpf(0)
    for t in sorted({t for t, e in zip(time, event) if e == 1}):
        failing = [risk[i] for i in range(len(rows)) if time[i] == t and event[i] == 1]
        others = mp.fsum(risk[i] for i in range(len(rows))
                         if entry[i] < t <= time[i] and not (time[i] == t and event[i] == 1))
        if others == 0:
            continue
        probability = mp.mpf(0)
        for size in range(len(failing) + 1):
            for chosen in itertools.combinations(failing, size):
                probability += (-1) ** size * others / (others + mp.fsum(chosen))
        total += mp.log(probability)
    return total


def derivatives(rows, names, b):
    p, h = len(b), mp.mpf(10) ** -25

    def at(*steps):
        moved = list(b)
        for j, step in steps:
            moved[j] += step
        return log_likelihood(rows, names, moved)

    value = at()
    gradient = [(at((j, h)) - at((j, -h))) / (2 * h) for j in range(p)]
    information = [[-(at((j, h), (k, h)) - at((j, h), (k, -h)) - at((j, -h), (k, h))
                      + at((j, -h), (k, -h))) / (4 * h * h) for k in range(p)] for j in range(p)]
    return value, gradient, information


CASES = [("ovarian", ["age", "rx"], 26), ("hodgkin", ["allo", "score"], 43),
         ("burn", ["bathing", "percent"], 60), ("larynx", ["stage3", "age"], 90),
         ("heart", ["age", "transplant"], 60)]


def main():
    with open("marginal.csv", "w", newline="") as file:
        out = csv.writer(file, lineterminator="\n")
        out.writerow(["data", "rows", "columns", "item", "row", "column", "value"])
        for data, names, count in CASES:
            with open(f"data/{data}.csv") as source:
                rows = list(csv.DictReader(source))[:count]
            at = [mp.mpf(j + 1) / 8 for j in range(len(names))]
            at[names.index("age") if "age" in names else -1] = mp.mpf("0.03125")
            value, gradient, information = derivatives(rows, names, at)
            cells = [("logLikelihood", 0, 0, value)]
            cells += [("at", j, 0, v) for j, v in enumerate(at)]
            cells += [("gradient", j, 0, v) for j, v in enumerate(gradient)]
            cells += [("information", j, k, information[j][k])
                      for j in range(len(at)) for k in range(len(at))]
            for item, row, col, v in cells:
                out.writerow([data, count, ";".join(names), item, row, col, mp.nstr(v, 20)])


if __name__ == "__main__":
    main()
