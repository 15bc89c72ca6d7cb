#!/usr/bin/env python3
"""Proportional hazards penalised by log |I| / 2, to 30 digits, straight from its definition.

    make_firth.py > firth.csv

Firth, Biometrika 80 (1993) 27-38; Heinze & Schemper, Biometrics 57 (2001) 114-119: U*_r = U_r +
tr(I^-1 dI/db_r) / 2, with dI/db_r summed from third central moments over each risk set. The second
derivatives are differences of U*. Limits are where the profile has fallen by the chi-square quantile
over 2; tests hold a coefficient at 0 in the likelihood of all columns.
"""

import csv
import sys

from mpmath import mp, mpf, matrix, log, exp, sqrt, erfinv

mp.dps = 30


def read(name, columns):
    with open(name, encoding="utf-8") as file:
        rows = list(csv.DictReader(file))
    get = lambda row, key, otherwise: mpf(row[key]) if key in row else mpf(otherwise)
    return [dict(start=get(row, "start", -1), time=mpf(row["time"]), event=int(float(row["event"])),
                 weight=get(row, "weight", 1), stratum=get(row, "stratum", 0),
                 x=[mpf(row[c]) for c in columns]) for row in rows]


class Model:
    def __init__(self, rows, ties):
        self.p = len(rows[0]["x"])
        self.sets = []
        for stratum in sorted({row["stratum"] for row in rows}):
            own = [row for row in rows if row["stratum"] == stratum]
            for time in sorted({row["time"] for row in own if row["event"]}):
                fail = [r for r in own if r["event"] and r["time"] == time]
                rest = [r for r in own if r["start"] < time <= r["time"] and r not in fail]
                self.sets.append((fail, rest))
        self.ties = ties

    def at(self, b):
        """Value of the penalised likelihood, U*, I and the likelihood itself."""
        p = self.p
        loglik, score, info = mpf(0), [mpf(0)] * p, matrix(p, p)
        third = [matrix(p, p) for _ in range(p)]
        risk = lambda r: r["weight"] * exp(sum(bj * xj for bj, xj in zip(b, r["x"])))
        for fail, rest in self.sets:
            d = len(fail)
            omega = sum(r["weight"] for r in fail) / d
            for r in fail:
                loglik += r["weight"] * sum(bj * xj for bj, xj in zip(b, r["x"]))
                for j in range(p):
                    score[j] += r["weight"] * r["x"][j]
            risks = [(risk(r), r["x"], True) for r in fail] + [(risk(r), r["x"], False) for r in rest]
            for l in range(d):
                share = 1 - mpf(l) / d if self.ties == "efron" else mpf(1)
                w = [(k * share if fails else k, x) for k, x, fails in risks]
                s0 = sum(k for k, _ in w)
                mean = [sum(k * x[j] for k, x in w) / s0 for j in range(p)]
                loglik -= omega * log(s0)
                for j in range(p):
                    score[j] -= omega * mean[j]
                for k, x in w:
                    a = [x[j] - mean[j] for j in range(p)]
                    for i in range(p):
                        for j in range(p):
                            part = omega * k / s0 * a[i] * a[j]
                            info[i, j] += part
                            for r in range(p):
                                third[r][i, j] += part * a[r]
        inverse = info ** -1
        for r in range(p):
            score[r] += sum((inverse * third[r])[i, i] for i in range(p)) / 2
        return loglik + log(mp.det(info)) / 2, score, info, loglik

    def maximum(self, b, free):
        b = list(b)
        for _ in range(60):
            value, score, info, loglik = self.at(b)
            gradient = matrix([score[j] for j in free])
            if not free or max(abs(g) for g in gradient) < mpf(10) ** -20:
                return b, value, score, info, loglik
            h = mpf(10) ** -10
            second = matrix(len(free), len(free))
            for m, j in enumerate(free):
                above, below = list(b), list(b)
                above[j] += h
                below[j] -= h
                up, down = self.at(above)[1], self.at(below)[1]
                for l, i in enumerate(free):
                    second[l, m] = (down[i] - up[i]) / (2 * h)
            step = mp.lu_solve(second, gradient)
            length = mpf(1)
            while True:
                there = list(b)
                for m, j in enumerate(free):
                    there[j] += length * step[m]
                if self.at(there)[0] >= value - mpf(10) ** -18:
                    break
                length /= 2
            b = there
        raise RuntimeError("no maximum")


def main():
    out = csv.writer(sys.stdout, lineterminator="\n")
    out.writerow(["data", "ties", "column", "coef", "error", "lower", "upper", "chiSquare",
                  "penalised", "null", "logLikelihood"])
    quantile = sqrt(mpf(2)) * erfinv(mpf("0.95"))
    cases = [("separated.csv", "efron", ["x", "z"]), ("separated.csv", "breslow", ["x", "z"]),
             ("late.csv", "efron", ["x", "z"]), ("late.csv", "breslow", ["x", "z"]),
             ("../cox/data/ovarian.csv", "efron", ["age", "rx", "residual"]),
             ("myeloma.csv", "breslow", ["logBUN", "hgb", "contrived"])]
    for name, ties, columns in cases:
        model = Model(read(name, columns), ties)
        p = model.p
        everything = list(range(p))
        best, top, _, info, loglik = model.maximum([mpf(0)] * p, everything)
        inverse = info ** -1
        null = model.at([mpf(0)] * p)[0]
        for j in everything:
            others = [i for i in everything if i != j]
            held = list(best)
            held[j] = mpf(0)
            at_zero = model.maximum(held, others)[1]
            error = sqrt(inverse[j, j])
            limits = []
            for sign in (-1, 1):
                b, at = best[j] + sign * quantile * error, list(best)
                for _ in range(60):
                    at[j] = b
                    at, value, score, _, _ = model.maximum(at, others)
                    root = sqrt(2 * (top - value))
                    if abs(root - quantile) < mpf(10) ** -18:
                        break
                    b += (quantile - root) / (-score[j] / root)
                limits.append(b)
            out.writerow([name.split("/")[-1][:-4], ties, columns[j]] +
                         [mp.nstr(v, 20) for v in (best[j], error, *limits, 2 * (top - at_zero), top,
                                                   null, loglik)])
            sys.stdout.flush()


if __name__ == "__main__":
    main()
