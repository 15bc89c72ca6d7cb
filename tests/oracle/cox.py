"""Oracle of the Cox family: preparation, likelihood, fit, criteria, baseline, residuals, selection.

Usage: cox.py LIBSURVIVAL LIBDIST [CASES]
"""

import copy
import sys

from coxRules import IntMat, prepare, likelihood, fit, criteria, baseline, residuals
from frame import INF, NAN, Dist, Library, Mat, Run
from lifeRules import inverse


def main():
    lib, dist = Library(sys.argv[1]), Dist(sys.argv[2])
    cases = int(sys.argv[3]) if len(sys.argv) > 3 else 400
    run = Run()
    rnd = run.random

    def data(n, p, S):
        kind = rnd.randrange(3)
        time = [float(rnd.randrange(1, 6)) if kind == 0 else rnd.random() * 10 for _ in range(n)]
        status = [float(rnd.random() < 0.7) for _ in range(n)]
        if rnd.random() < .15:
            status = [rnd.choice([0.0, 0.5, 1.0]) for _ in range(n)]
        X = [[rnd.choice([0.0, 1.0]) if rnd.random() < .3 else rnd.gauss(0, 1) for _ in range(n)] for _ in range(p)]
        stratum = [float(rnd.randrange(1, S + 1)) for _ in range(n)]
        sizes = [float(sum(1 for s in stratum if s == j + 1)) for j in range(S)]
        return time, status, X, stratum, sizes

    for _ in range(cases * 3):
        n, p, S = rnd.choice([0, 1, 2, 3, 5, 9, 15]), rnd.choice([0, 1, 2, 3]), rnd.choice([-1, 0, 1, 2, 3])
        shaped = max(S, 1)
        time, status, X, stratum, sizes = data(n, p, shaped)
        if rnd.random() < .1 and n:
            status[rnd.randrange(n)] = rnd.choice([-0.1, 1.5, NAN])
        if rnd.random() < .1:
            status = [0.0] * n
        extra = [float(100 + i) for i in range(n)]
        key = [float(rnd.choice([0, 1, 1, 2])) if rnd.random() < .5 else float(i + 1) for i in range(n)]
        cols = p
        ints = lambda r, c: [rnd.randrange(-9, 10) for _ in range(r * c)]
        D0, C0, ST0, SZ0, EV0 = ints(shaped, 1), ints(shaped, 1), ints(shaped, n), ints(shaped, n), ints(shaped, n)
        groups0 = rnd.choice([0, 0, 3])
        flat = [x for col in X for x in col]
        w = copy.deepcopy([time, status, extra, key, X, stratum])
        mats = [IntMat(shaped, 1, D0), IntMat(shaped, 1, C0), IntMat(shaped, n, ST0), IntMat(shaped, n, SZ0),
                IntMat(shaped, n, EV0)]
        code, groups = prepare(w[0], n, p, w[1], w[2], w[3], w[4], w[5], sizes, S, *mats, groups0)
        got, arr = lib.call("Cpp_ReorganizeDataCox",
                            [("D", time), ("i", n), ("i", cols), ("D", status), ("D", extra), ("D", key), ("D", flat),
                             ("D", stratum), ("D", sizes), ("i", S), ("I", D0), ("I", C0), ("I", ST0), ("I", SZ0),
                             ("I", EV0), ("I", [groups0])])
        run.compare("Cpp_ReorganizeDataCox", (n, p, S, time, status, key, X, stratum, sizes),
                    [("code", code), ("time", w[0]), ("status", w[1]), ("extra", w[2]), ("key", w[3]),
                     ("X", [x for col in w[4] for x in col]), ("stratum", w[5]), ("sizes", sizes),
                     ("distinct", mats[0].v), ("censored", mats[1].v), ("start", mats[2].v), ("size", mats[3].v),
                     ("events", mats[4].v), ("groups", groups)],
                    [("code", got), ("time", arr[0]), ("status", arr[1]), ("extra", arr[2]), ("key", arr[3]),
                     ("X", arr[4]), ("stratum", arr[5]), ("sizes", arr[6]), ("distinct", arr[7]), ("censored", arr[8]),
                     ("start", arr[9]), ("size", arr[10]), ("events", arr[11]), ("groups", arr[12])])

    def prepared(n, p, S):
        while True:
            time, status, X, stratum, sizes = data(n, p, S)
            if sum(status) == 0:
                continue
            key = [1.0] * n if rnd.random() < .7 else [float(rnd.choice([0, 1, 1])) for _ in range(n)]
            mats = [IntMat(S, 1, fill=0), IntMat(S, 1, fill=0), IntMat(S, n, fill=0), IntMat(S, n, fill=0),
                    IntMat(S, n, fill=0)]
            code, G = prepare(time, n, p, status, [0.0] * n, key, X, stratum, sizes, S, *mats, 0)
            if code == 0:
                cut = [IntMat(S, G, mt.v[:S * G]) for mt in mats[2:]]
                return time, status, X, sizes, mats[0], mats[1], cut[0], cut[1], cut[2], G

    for _ in range(cases):
        n, p, S = rnd.choice([2, 3, 5, 9, 15, 40]), rnd.choice([1, 1, 2, 3, 7, 9]), rnd.choice([1, 1, 2, 3])
        time, status, X, sizes, D, C, g, m, d, G = prepared(n, p, S)
        if rnd.random() < .1:
            X[0][rnd.randrange(n)] = rnd.choice([700.0, 699.999, 710.0, -800.0, INF, NAN])
        beta = [rnd.gauss(0, 1) if rnd.random() < .8 else rnd.choice([0.0, 1.0, -1.0]) for _ in range(p)]
        ties = rnd.choice([0, 0, 1, 1, 2, -1])
        flat = [x for col in X for x in col]
        dm, xm, sm = Mat(n, 1, status), Mat(n, p, flat), Mat(1, S, sizes)
        ll, U, H = likelihood(p, dm, xm, ties, beta, D, m, g, S, sm, d)
        _, arr = lib.call("ComputeLogLikeDerivativesCox",
                          [("i", p), ("M", (n, 1, status)), ("M", (n, p, flat)), ("i", ties), ("M", (p, 1, beta)),
                           ("N", (S, 1, D.v)), ("N", (S, G, m.v)), ("N", (S, G, g.v)), ("i", S),
                           ("M", (1, S, sizes)), ("N", (S, G, d.v)), ("D", [5.0]), ("M", (p, 1, [7.0] * p)),
                           ("M", (p, p, [7.0] * (p * p)))])
        run.compare("ComputeLogLikeDerivativesCox, to the bit",
                    (n, p, S, time, status, X, sizes, beta, ties, D.v, g.v, m.v, d.v),
                    [("logLik", ll), ("gradient", U), ("hessian", H.v)],
                    [("logLik", arr[8]), ("gradient", arr[9]), ("hessian", arr[10])])

    for _ in range(cases):
        n, p, S = rnd.choice([8, 15, 40]), rnd.choice([1, 1, 2, 3]), rnd.choice([1, 1, 2])
        time, status, X, sizes, D, C, g, m, d, G = prepared(n, p, S)
        if rnd.random() < .05:
            X[-1] = [1.0] * n
        if rnd.random() < .1:
            X[0] = [x * 100 for x in X[0]]
        flat = [x for col in X for x in col]
        limit = rnd.choice([1, 2, 3, 5, 20, 20])
        tol = rnd.choice([1e-6, 1e-9])
        ties = rnd.choice([0, 1])
        alpha = rnd.choice([0.05, 0.1])
        dm, xm, sm = Mat(n, 1, status), Mat(n, p, flat), Mat(1, S, sizes)
        method = rnd.choice([-1, -1, -1, 2])
        want_output = rnd.choice([-1, 0, 1])
        if method == -1:
            f = fit(p, dm, xm, sm, S, limit, tol, ties, D, m, d, g)
        else:
            zero = [[0.0] * p for _ in range(p)]
            f = dict(ll=0.0, ll0=0.0, t=limit, beta=[0.5] * p, U0=[0.0] * p, inverse=zero, inverse0=zero, H=Mat(p, p))
        crit, tests, coef = Mat(6, 2, fill=3.0), Mat(3, 3, fill=3.0), Mat(p, 9, fill=3.0)
        criteria(n, p, C, f, alpha, dist, crit, coef, tests)
        base, mean = Mat(S, G, fill=3.0), Mat(S, G, fill=3.0)
        res = Mat(n, 2 * p + 4, fill=3.0)
        if want_output == -1:
            baseline(n, p, xm, sm, S, f["beta"], D, g, d, G, base, mean)
            residuals(Mat(n, 1, time), n, p, dm, xm, sm, S, f["beta"], D, m, g, base, res)
            want_out = [base.v, mean.v, res.v]
        else:
            want_out = [[0.0] + base.v[1:], [0.0] + mean.v[1:], [0.0] + res.v[1:]]
        got, arr = lib.call("RunCoxReg",
                            [("D", time), ("i", n), ("i", p), ("I", [9]), ("D", status), ("i", 5), ("D", flat), ("i", 6),
                             ("D", sizes), ("i", S), ("I", [limit]), ("d", tol), ("i", ties), ("I", D.v), ("I", m.v),
                             ("I", d.v), ("I", C.v), ("I", g.v), ("i", method), ("i", 0), ("d", 0.05), ("d", 0.1),
                             ("d", alpha), ("i", G), ("s", want_output), ("i", 1), ("i", 2), ("i", 3),
                             ("D", [0.5] * p), ("D", [3.0] * 12), ("D", [3.0] * 9), ("D", [3.0] * (9 * p)),
                             ("D", [3.0] * (S * G)), ("D", [3.0] * (S * G)), ("D", [3.0] * (n * (2 * p + 4))),
                             ("D", [3.0] * (3 * p)), ("I", [9]), ("I", [9] * p)])
        names = ["beta", "criteria", "tests", "coefficients", "baseline", "mean survival", "residuals"]
        wants = [f["beta"], crit.v, tests.v, coef.v] + want_out
        gots = arr[11:18]
        run.compare("RunCoxReg", (n, p, S, time, status, X, sizes, limit, tol, ties, method, want_output),
                    [("code", 0), ("q", p)] + list(zip(names, wants)), [("code", got), ("q", arr[1][0])] + list(zip(names, gots)),
                    relative=1e-7, absolute=1e-9)
    run.finish()


if __name__ == "__main__":
    main()
