"""Oracle of competing risks and validation.

Usage: cuminc.py LIBSURVIVAL LIBDIST [CASES]
"""

import copy
import sys

from cumincRules import check_status, prepare, incidence, nelson_aalen, gray, boot, concordance
from frame import INF, MISSING, NAN, Dist, Library, Mat, Run, div, exp
from lifeRules import kaplan_meier


def main():
    lib, dist = Library(sys.argv[1]), Dist(sys.argv[2])
    cases = int(sys.argv[3]) if len(sys.argv) > 3 else 1500
    run = Run()
    rnd = run.random

    for _ in range(cases):
        n = rnd.choice([0, 1, 2, 4, 8])
        pool = rnd.choice([[0.0, 1.0, 2.0], [-1.0], [0.0], [0.0, 5.0, 2.0, -3.5, 7.0], [-1.0, 0.0]])
        status = [rnd.choice(pool) for _ in range(n)]
        censor = rnd.choice([0, 0, -1, 2])
        codes, rec = [9.0 + i for i in range(n)], [7.0] * n
        cm = Mat(n, 1, codes)
        code, count, want = check_status(status, n, cm, 44, censor)
        got, arr = lib.call("Cpp_CheckStatusFormat", [("D", status), ("i", n), ("D", codes), ("I", [44]), ("i", censor),
                                                     ("D", rec)])
        run.compare("Cpp_CheckStatusFormat", (status, censor),
                    [("code", code), ("codes", cm.v), ("count", count), ("recoded", want), ("status", status)],
                    [("code", got), ("codes", arr[1]), ("count", arr[2][0]), ("recoded", arr[3]), ("status", arr[0])])

    for _ in range(cases):
        n, S = rnd.choice([0, 1, 2, 3, 6, 12]), rnd.choice([1, 1, 2, 3])
        time = [float(rnd.randrange(1, 6)) for _ in range(n)]
        status = [float(rnd.randrange(0, 3)) for _ in range(n)]
        if rnd.random() < .2:
            status = [float(rnd.choice([0, 1]))] * n
        stratum = [float(rnd.randrange(1, S + 1)) for _ in range(n)]
        sizes = [float(sum(1 for s in stratum if s == j + 1)) for j in range(S)]
        flag = [5.0] * n
        w = copy.deepcopy([time, status, flag, stratum])
        code, biggest = prepare(w[0], n, w[1], w[2], w[3], sizes, S)
        got, arr = lib.call("Cpp_ReorganizeDataCum", [("D", time), ("i", n), ("D", status), ("D", flag), ("D", stratum),
                                                     ("D", sizes), ("i", S), ("D", [55.0])])
        run.compare("Cpp_ReorganizeDataCum", (n, S, time, status, stratum, sizes),
                    [("code", code), ("time", w[0]), ("status", w[1]), ("flag", w[2]), ("stratum", w[3]),
                     ("maxTime", 55.0 if biggest is None else biggest)],
                    [("code", got), ("time", arr[0]), ("status", arr[1]), ("flag", arr[2]), ("stratum", arr[3]),
                     ("maxTime", arr[5])])

    for _ in range(cases):
        n = rnd.choice([1, 2, 4, 8, 20, 40])
        offset = rnd.choice([0, 0, 0, min(2, n - 1)])
        m = n - offset
        kind = rnd.randrange(2)
        time = sorted(float(rnd.randrange(1, 8)) if kind else rnd.random() for _ in range(n))
        status = [float(rnd.choice([0, 1, 1, 2])) for _ in range(n)]
        pooled = [float(s != 0) for s in status]
        T, I = Mat(m + 2, 12), Mat(m + 1, 2)
        _, r = kaplan_meier(offset, m, 0, 1, Mat(n, 1, time), Mat(n, 1, pooled), Mat(n, 1, fill=1.0), T, I)
        event = rnd.choice([1, 1, 2, 3])
        alpha = rnd.choice([0.05, 0.1])
        F, Q = Mat(r, 10), Mat(r, 10)
        incidence(r, Mat(n, 1, time), Mat(n, 1, status), event, alpha, m, offset, T, F, Q, dist)
        got, arr = lib.call("Cpp_CumIncCalc", [("i", r), ("i", n), ("D", time), ("D", status), ("i", event), ("d", alpha),
                                               ("i", m), ("i", offset), ("D", T.v), ("D", [0.0] * (r * 10)),
                                               ("D", [0.0] * (r * 10))])
        run.compare("Cpp_CumIncCalc", (n, offset, time, status, event), [("F", F.v), ("Q", Q.v)],
                    [("F", arr[3]), ("Q", arr[4])], relative=1e-9, absolute=3e-9)
        for ci in (1, 2):
            for method in (1, 2, 3):
                N = Mat(r, 9, fill=4.0)
                nelson_aalen(T, N, r, alpha, ci, method, dist)
                got, arr = lib.call("Cpp_TransNelsonAalen", [("D", T.v), ("D", [4.0] * (r * 9)), ("i", m), ("i", r),
                                                            ("d", alpha), ("i", ci), ("i", method)])
                run.compare("Cpp_TransNelsonAalen", (time, status, ci, method), [("N", N.v)], [("N", arr[1])],
                            relative=1e-13)

    for _ in range(cases):
        n, K = rnd.choice([3, 8, 20, 50]), rnd.choice([2, 2, 3, 4])
        kind = rnd.randrange(2)
        time = [float(rnd.randrange(1, 8)) if kind else rnd.random() for _ in range(n)]
        status = [float(rnd.choice([0, 1, 1, 2, -3])) for _ in range(n)]
        group = [float(rnd.randrange(1, K + 1)) for _ in range(n)]
        if rnd.random() < .1:
            group[rnd.randrange(n)] = rnd.choice([0.0, 1.5, 9.0])
        rho = rnd.choice([0.0, 1.0, -1.0, 2.0, 0.5])
        try:
            want = gray(n, K, time, status, group, 1, rho, dist)
        except ZeroDivisionError:
            continue
        _, arr = lib.call("Cpp_GrayTest", [("i", n), ("i", K), ("D", time), ("D", status), ("D", group), ("i", 1),
                                          ("d", rho), ("D", [5.0]), ("D", [5.0]), ("D", [5.0])], restype=None)
        run.compare("Cpp_GrayTest", (n, K, time, status, group, rho),
                    [("time", time), ("status", status), ("group", group), ("stat", want[0]), ("df", want[1]),
                     ("p", want[2])],
                    [("time", arr[0]), ("status", arr[1]), ("group", arr[2]), ("stat", arr[3][0]), ("df", arr[4][0]),
                     ("p", arr[5][0])], relative=1e-6, absolute=1e-8)

    for _ in range(cases):
        B = rnd.choice([1, 2, 3, 10, 41])
        stats = [rnd.gauss(0, 1) if rnd.random() < .9 else MISSING for _ in range(5 * B)]
        if rnd.random() < .1:
            stats[:B] = [MISSING] * B
        alpha = rnd.choice([0.05, 0.1, 0.5])
        start = [rnd.choice([0.0, 2.0]) for _ in range(20)]
        out = Mat(5, 4, start)
        boot(B, alpha, Mat(B, 5, stats), out)
        _, arr = lib.call("Cpp_ComputeBootOut", [("i", B), ("d", alpha), ("D", stats), ("D", start)])
        run.compare("Cpp_ComputeBootOut", (B, stats, alpha, start), [("stats", stats), ("summary", out.v)],
                    [("stats", arr[0]), ("summary", arr[1])], relative=1e-12, absolute=1e-13)

    for _ in range(cases):
        n, p = rnd.choice([1, 2, 3, 8, 20]), rnd.choice([1, 1, 2])
        time = [rnd.choice([1.0, 2.0, 3.0, 4.0, NAN, INF]) if rnd.random() < .5 else rnd.random() for _ in range(n)]
        status = [rnd.choice([0.0, 1.0, 1.0, 2.0, 0.5]) for _ in range(n)]
        X = [[float(rnd.randrange(0, 4)) for _ in range(n)] for _ in range(p)]
        if rnd.random() < .2:
            X[0][rnd.randrange(n)] = rnd.choice([NAN, INF, -INF])
        beta = [rnd.choice([1.0, -1.0, 0.5, 0.0]) for _ in range(p)]
        c = concordance(n, p, time, status, X, beta)
        H = [rnd.choice([0.0, 5.0, 3.0, -1.0]) for _ in range(9)]
        Fm = [rnd.choice([10.0, 20.0, 400.0, 5000.0, -3000.0]) for _ in range(12)]
        nu = float(n - 1 - p)
        f31, f32, h11, h12 = Fm[2], Fm[8], H[0], H[3]
        x = div(2.0, nu) * (f31 - f32)
        r2 = 1.0 if x < -700 else 1 - exp(-x)
        scaled = r2 if div(2 * f31, nu) < -700 else div(r2, 1 - div(exp(-2 * f31), nu))
        improve = max(0.0, (h12 - h11) / h12) if h12 > 0 else 0.0
        rows, row = 3, rnd.choice([1, 2, 3, 4])
        table = Mat(rows, 5, fill=8.0)
        for k, v in enumerate([r2, scaled, improve, c, 2 * (c - 0.5)]):
            table.put(row, k + 1, v)
        flat = [v for col in X for v in col]
        _, arr = lib.call("Cpp_ComputeCVTable", [("i", n), ("i", p), ("D", time), ("D", status), ("D", flat), ("D", beta),
                                                ("D", H), ("D", Fm), ("i", row), ("i", rows), ("D", [8.0] * 15)])
        if rows >= row:
            run.compare("Cpp_ComputeCVTable", (n, p, time, status, X, beta, H, Fm, row), [("table", table.v)],
                        [("table", arr[6])], relative=1e-12)
    run.finish()


if __name__ == "__main__":
    main()
