"""Oracle of the ROC family: table, area with its three standard errors, 2 x 2 statistics, labelled
tables, comparison.

Usage: roc.py LIBSURVIVAL LIBDIST [CASES]
"""

import sys

from frame import MISSING, Dist, Library, Mat, Run
from rocComparison import compare
from rocRules import compute, stats_2x2


def main():
    lib, dist = Library(sys.argv[1]), Dist(sys.argv[2])
    cases = int(sys.argv[3]) if len(sys.argv) > 3 else 1500
    run = Run()
    rnd = run.random

    def values_of(n):
        kind = rnd.randrange(3)
        v = [float(rnd.randrange(0, 5)) if kind == 0 else rnd.gauss(0, 1) for _ in range(n)]
        if kind == 2:
            v = [round(x, 1) + rnd.choice([0, 0, 1e-12, 5e-13, 2e-12]) for x in v]
        return [MISSING if rnd.random() < .05 else x for x in v]

    for _ in range(cases):
        n = rnd.choice([2, 3, 5, 8, 20])
        status = [float(rnd.random() < .5) for _ in range(n)]
        values = values_of(n)
        unit = rnd.random() < .6
        weights = [1.0 if unit else rnd.choice([0.0, 0.5, 1.0, 2.0, 3.0]) for _ in range(n)]
        T = len({v for v in values if v > MISSING})
        rule, alternative, ci, method = (rnd.choice([0, 1, 2, 3, 7]), rnd.choice([0, -1, 1, 5]),
                                         rnd.choice([0, 1, 2, 3, 9]), rnd.choice([0, 1, 2, 4]))
        correction, alpha = rnd.choice([-1, 0, 1]), rnd.choice([0.05, 0.1])
        prevalence, costs = rnd.choice([0.0, -1.0, 0.2]), [rnd.random() for _ in range(4)]
        out = {"thresholds": Mat(T, 1, fill=4.), "points": Mat(T + 1, 2, fill=4.), "sensitivity": Mat(T, 3, fill=4.),
               "specificity": Mat(T, 3, fill=4.), "tp": Mat(T, 1, fill=4.), "tn": Mat(T, 1, fill=4.),
               "fp": Mat(T, 1, fill=4.), "fn": Mat(T, 1, fill=4.), "lr": Mat(T, 2, fill=4.), "pv": Mat(T, 2, fill=4.),
               "auc": Mat(9, 1, fill=4.), "cost": Mat(T, 1, fill=4.)}
        raw = [m.v[:] for m in out.values()]
        v = list(values)
        code = compute(list(status), n, T, v, list(weights), rule, alpha, alternative, ci, correction, method, prevalence,
                       costs, out, dist)
        got, arr = lib.call("Cpp_ComputeROC",
                            [("D", status), ("i", n), ("i", T), ("D", values), ("D", weights), ("i", rule), ("d", alpha),
                             ("i", alternative), ("i", ci), ("s", correction), ("i", method), ("d", prevalence)] +
                            [("d", c) for c in costs] + [("D", r) for r in raw])
        unspecified = {name: m.v for name, m in out.items()}
        if code == 0 and out["auc"].v[2] is None:
            unspecified["auc"] = out["auc"].v[:2] + arr[-2][2:4] + out["auc"].v[4:]
        run.compare("Cpp_ComputeROC", (status, values, weights, rule, alternative, ci, correction, method, prevalence),
                    [("code", code), ("values", v if code == 0 else values)] + list(unspecified.items()),
                    [("code", got), ("values", arr[1])] + list(zip(out, arr[3:])), relative=1e-9, absolute=1e-10)

    for _ in range(cases):
        t = [float(rnd.choice([0, 0, 1, 2, 10, 17.5, 100])) for _ in range(4)]
        ci, correction, prevalence = rnd.choice([0, 1, 2, 3, 9]), rnd.choice([-1, 0, 1]), rnd.choice([0.0, 0.3])
        if sum(t) == 0:
            continue
        S, prop = stats_2x2(t, 0.05, ci, correction, prevalence, dist)
        got, arr = lib.call("Cpp_GetROCStats", [("D", t), ("d", 0.05), ("i", ci), ("s", correction), ("d", prevalence),
                                               ("D", [4.0] * 39), ("D", [4.0] * 9)])
        run.compare("Cpp_GetROCStats", (t, ci, correction, prevalence),
                    [("code", 0), ("table", t), ("stats", S), ("proportions", prop)],
                    [("code", got), ("table", arr[0]), ("stats", arr[1]), ("proportions", arr[2])], relative=1e-11)

    for _ in range(cases // 2):
        n, k = rnd.choice([4, 8, 15]), rnd.choice([1, 2, 3])
        status = [float(rnd.random() < .5) for _ in range(n)]
        V = [values_of(n) for _ in range(k)]
        weights = [1.0 if rnd.random() < .8 else rnd.choice([0.0, 2.0, 0.5]) for _ in range(n)]
        if not 0 < sum(status) < n:
            continue
        sizes = [float(rnd.randrange(2, 30)) for _ in range(k)]
        aucs = [rnd.random() for _ in range(k)]
        variances = [rnd.choice([0.5, 1.0, 0.0, -1.0]) for _ in range(k)]
        selected = [rnd.choice([1, 1, 1, 0, -1]) for _ in range(k)]
        paired, alpha = rnd.choice([-1, 0, 1]), rnd.choice([0.05, 0.4])
        out = {}
        var = compare(status, n, V, weights, sizes, k, alpha, paired, aucs, variances, selected, out, dist)
        blank = [4.0] * (k * k)
        got, arr = lib.call("Cpp_ComputeROCComparisonsDep2",
                            [("D", status), ("i", n), ("D", [x for t in V for x in t]), ("D", weights), ("D", sizes),
                             ("i", k), ("d", alpha), ("s", paired), ("D", aucs), ("D", variances), ("I", selected),
                             ("D", blank), ("D", blank), ("D", blank), ("D", blank), ("D", blank), ("I", [4] * (k * k))])
        run.compare("Cpp_ComputeROCComparisonsDep2", (status, V, weights, sizes, aucs, variances, selected, paired, alpha),
                    [("variances", var if paired == -1 else variances), ("diff", out["diff"].v), ("z", out["z"].v),
                     ("half", out["half"].v), ("cov", out["cov"].v), ("p", out["p"].v), ("sig", out["sig"].v)],
                    [("variances", arr[5]), ("diff", arr[7]), ("z", arr[8]), ("half", arr[9]), ("cov", arr[10]),
                     ("p", arr[11]), ("sig", arr[12])], relative=1e-8, absolute=1e-10)
    run.finish()


if __name__ == "__main__":
    main()
