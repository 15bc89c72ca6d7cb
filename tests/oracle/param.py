"""Oracle of parametric regression and of interval and judge data.

Usage: param.py LIBSURVIVAL LIBDIST [CASES]
"""

import copy
import sys

from frame import INF, NAN, Dist, Library, Mat, Run, exp, log, order
from judgeRules import intervals, judge
from paramRules import (likelihood, derivatives, fit, Options, backward, forward, laid_out, block,
                        criteria, residuals, AT_MAXIMUM)


def main():
    lib, dist = Library(sys.argv[1]), Dist(sys.argv[2])
    cases = int(sys.argv[3]) if len(sys.argv) > 3 else 1500
    run = Run()
    rnd = run.random

    def data(n, p, codes):
        y = [rnd.gauss(1, 1) for _ in range(n)]
        status = [rnd.choice(codes) for _ in range(n)]
        lo = [v - rnd.random() for v in y]
        up = [v + rnd.random() for v in y]
        X = [[rnd.gauss(0, 1) for _ in range(n)] for _ in range(p)]
        w = [rnd.choice([1.0, 1.0, 2.0, 0.5]) for _ in range(n)]
        return y, n, status, lo, up, X, w

    flat = lambda X, n: [v for c in X for v in c] or [0.0] * n
    for _ in range(cases):
        n, p, family = rnd.choice([0, 1, 2, 5, 12]), rnd.choice([0, 0, 1, 2, 3]), rnd.choice([1, 2, 3])
        codes = rnd.choice([[0., 1., 2., 3.], [0., 1.], [1.], [4., 1., 0., NAN, 2., 3.]])
        y, n, status, lo, up, X, w = data(n, p, codes)
        if n and rnd.random() < .1 and family < 3:
            y[rnd.randrange(n)] = rnd.choice([800.0, 3000.0])
            status = [rnd.choice([0.0, 1.0]) for _ in range(n)]
        k = 1 if family == 1 else 2
        theta = [rnd.gauss(0, .5) for _ in range(p + 1)] + ([0.5 + rnd.random()] if k == 2 else [])
        m = p + k
        want = likelihood(y, n, p, status, lo, up, X, theta, w, family, dist)
        try:
            U, H = derivatives(y, n, p, status, lo, up, X, theta, w, family, dist)
        except (ZeroDivisionError, OverflowError):
            continue
        _, arr = lib.call("Cpp_ComputeLogLikeDerivativesParam",
                          [("D", y), ("i", n), ("i", p), ("i", k), ("D", status), ("D", lo + up), ("D", flat(X, n)),
                           ("D", theta), ("D", w), ("i", family), ("D", [5.0]), ("D", [5.0] * m), ("D", [5.0] * (m * m))])
        run.compare("Cpp_ComputeLogLikeDerivativesParam", (y, status, lo, up, X, theta, w, family),
                    [("logLik", want), ("gradient", U), ("hessian", H.v)],
                    [("logLik", arr[6]), ("gradient", arr[7]), ("hessian", arr[8])], relative=1e-8)

    for _ in range(cases):
        n, p, family = rnd.choice([6, 12, 25]), rnd.choice([0, 1, 2]), rnd.choice([1, 2, 3])
        d = data(n, p, [0., 1., 1., 1.])
        y, n, status, lo, up, X, w = d
        k = 1 if family == 1 else 2
        m = p + k
        theta0 = [rnd.gauss(0, .2) for _ in range(p)] + [1.0 + rnd.random()] + ([1.0] if k == 2 else [])
        limit, fixed = rnd.choice([1, 2, 3]), rnd.choice([0, 0, -1, 1])
        f = fit(d, p, family, theta0, fixed, 1.25, limit, 1e-9, dist)
        got, arr = lib.call("Cpp_OptimizeParamModel",
                            [("D", y), ("i", n), ("i", p), ("i", k), ("D", status), ("D", lo + up), ("D", flat(X, n)),
                             ("D", w), ("I", [limit]), ("d", 1e-9), ("i", family), ("s", -1), ("D", theta0), ("s", fixed),
                             ("d", 1.25), ("D", [5.0]), ("D", [5.0]), ("D", [5.0] * m), ("D", [5.0] * (m * m)),
                             ("D", [5.0] * (m * m)), ("D", [5.0] * m), ("D", [5.0] * (m * m)), ("D", [5.0] * m)])
        cov = [f["cov"][i][0] for i in range(m)] + [5.0] * (m * m - m)
        run.compare("Cpp_OptimizeParamModel", (d, p, family, theta0, fixed, limit),
                    [("code", f["code"]), ("t", f["t"] if f["code"] == 0 else limit), ("ll", f["ll"]), ("ll0", f["ll0"]),
                     ("U", f["U"]), ("H", f["H"]), ("cov", cov), ("U0", f["U0"]), ("H0", f["H0"]), ("theta", f["theta"])],
                    [("code", got), ("t", arr[5][0]), ("ll", arr[7]), ("ll0", arr[8]), ("U", arr[9]), ("H", arr[10]),
                     ("cov", arr[11]), ("U0", arr[12]), ("H0", arr[13]), ("theta", arr[14])], relative=1e-6, absolute=AT_MAXIMUM)

    # Without a limit a fit goes on until it stands still, here for thousands of steps. How many
    # depends on the last bits of the exponentials, the place where they end hardly.
    columns = [[-0.6, 2.0, 1.0], [2.0, 0.4, 1.0]]
    d = ([-0.6, -1.6, 1.3], 3, [1.0, 0.0, 1.0], [0.0] * 3, [0.0] * 3, columns, [1.0] * 3)
    theta0 = [0.0, 0.0, 0.0]
    f = fit(d, 2, 1, theta0, 0, 0.0, 0, 1e-6, dist)
    got, arr = lib.call("Cpp_OptimizeParamModel",
                        [("D", d[0]), ("i", 3), ("i", 2), ("i", 1), ("D", d[2]), ("D", [0.0] * 6), ("D", flat(columns, 3)),
                         ("D", d[6]), ("I", [0]), ("d", 1e-6), ("i", 1), ("s", -1), ("D", theta0), ("s", 0), ("d", 0.0),
                         ("D", [5.0]), ("D", [5.0])] + [("D", [5.0] * size) for size in (3, 9, 3, 3, 9, 3)])
    run.compare("Cpp_OptimizeParamModel without a limit", (), [("code", f["code"]), ("steps", f["t"] > 1000)],
                [("code", got), ("steps", arr[5][0] > 1000)])
    run.compare("Cpp_OptimizeParamModel without a limit", (),
                [("t", f["t"]), ("ll", f["ll"]), ("theta", f["theta"])],
                [("t", arr[5][0]), ("ll", arr[7]), ("theta", arr[14])], relative=1e-4)

    # Selections, from the library's own starting values or given ones.
    for _ in range(cases // 3):
        n, p, family = rnd.choice([12, 25, 40]), rnd.choice([0, 1, 2, 3, 4]), rnd.choice([1, 2, 3])
        d = data(n, p, [0., 1., 1., 1.])
        y, n, status, lo, up, X, w = d
        k = 1 if family == 1 else 2
        m = p + k
        given = [0.1] * p + [1.0] + ([1.0] if k == 2 else []) if rnd.random() < .3 else None
        limit, fixed = rnd.choice([1, 4, 30]), rnd.choice([0, 0, 0, -1, 1])
        options = Options(family, limit, 1e-6, given, fixed, 1.25, dist)
        back = rnd.random() < .5
        threshold = rnd.choice([0.0, 0.05, 0.3, 0.9, 1e-3, -1.0])
        option = rnd.choice([0, 0, 1]) if back else 0
        f, columns, steps, count, order_ = (backward(options, d, threshold, option) if back
                                            else forward(options, d, threshold))
        q = len(columns)
        history = [9.0] * (3 * max(p, 1))
        for s, column in steps.items():
            history[3 * s - 3:3 * s - 3 + len(column)] = column
        middle = [("i", option), ("d", threshold)] if back else [("d", threshold)]
        got, arr = lib.call("Cpp_Param_BackSelection" if back else "Cpp_Param_ForSelection",
                            [("D", y), ("i", n), ("I", [p]), ("i", k), ("D", status), ("D", lo + up),
                             ("D", flat(X, n)), ("D", w), ("I", [limit]), ("d", 1e-6), ("i", family),
                             ("s", -1 if given else 0), ("D", given or [0.0] * m), ("s", fixed), ("d", 1.25)] + middle +
                            [("D", [7.0] * m), ("D", [5.0]), ("D", [5.0]), ("D", [5.0] * m), ("D", [5.0] * (m * m)),
                             ("D", [5.0] * (m * m)), ("D", [5.0] * m), ("D", [5.0] * (m * m)),
                             ("D", [9.0] * (3 * max(p, 1))), ("I", [9]), ("I", [9] * max(p, 1))])
        (_, p_out, _, _, x_out, _, t_out, _, theta, ll, ll0, U, H, V, U0, H0, steps_out, count_out, order_out) = arr
        run.compare("selections", (d, family, given, limit, fixed, back, threshold, option),
                    [("code", 0), ("p", q), ("covariates", [v for c in columns for v in c]),
                     ("iterations", f["t"] if f["code"] == 0 else limit), ("theta", f["theta"]), ("ll", f["ll"]),
                     ("ll0", f["ll0"]), ("steps", history), ("count", count), ("order", order_), ("U", f["U"]),
                     ("H", f["H"]), ("U0", f["U0"]), ("H0", f["H0"]),
                     ("V", [f["cov"][i][j] for j in range(q + k) for i in range(q + k)])],
                    [("code", got), ("p", p_out[0]), ("covariates", x_out[:n * q]), ("iterations", t_out[0]),
                     ("theta", theta[:q + k]), ("ll", ll), ("ll0", ll0), ("steps", steps_out), ("count", count_out[0]),
                     ("order", order_out), ("U", U[:q + k]), ("H", block(H, q + k, m)), ("U0", U0[:q + k]),
                     ("H0", block(H0, q + k, m)), ("V", block(V, q + k, m))], relative=1e-6, absolute=AT_MAXIMUM)

    # The whole regression.
    for _ in range(cases // 3):
        n, p, family = rnd.choice([12, 25, 40]), rnd.choice([0, 1, 2, 3]), rnd.choice([1, 2, 3, 4])
        y, n, status, lo, up, X, w = data(n, p, [0., 1., 1., 1.])
        k = 2 if family in (2, 3) else 1
        m = p + k
        log_times, none, method = rnd.choice([0, -1, 1]), rnd.choice([0, 0, -1, 1]), rnd.choice([-1, -1, 0, 1, 2])
        limit = rnd.choice([2, 30, 30, 30])
        raw = [exp(v) for v in y] if log_times == -1 else y
        theta = [0.25] * p + [1.0] + ([0.5] if k == 2 else [])
        columns = [] if none == -1 else X
        d = ([log(v) for v in raw] if log_times == -1 else raw, n, status, lo, up, columns, w)
        options = Options(family, limit, 1e-6, None, 0, 0.0, dist)
        steps, count, order_, code, f = {}, 9, [9] * max(p, 1), 0, None
        if family == 4:
            method = -1
            code = -5
        elif method == -1:
            f = options.fit(d, columns)
            code = -5 if f["code"] < 0 else -1 if f["t"] == limit else 0
        elif method == 0:
            f, columns, steps, count, order_ = forward(options, d, 0.3)
            order_ = order_ if none != -1 else [0] * max(p, 1)
        elif method == 1:
            f, columns, steps, count, order_ = backward(options, d, 0.3, 0)
            order_ = order_ if none != -1 else laid_out([0] * min(k, max(p, 1)), 9, max(p, 1))
        q = len(columns)
        history = [9.0] * (3 * max(p, 1))
        for s, column in steps.items():
            history[3 * s - 3:3 * s - 3 + len(column)] = column
        fitm, coef, tests_ = Mat(7, 2, fill=4.), Mat(m, 9, fill=4.), Mat(3, 3, fill=4.)
        S, P, R, Q = Mat(n, 1, fill=4.), Mat(n, 2, fill=4.), Mat(n, 2, fill=4.), Mat(n, 9, fill=4.)
        if code == 0:
            if f is None:
                zero = Mat(q + k, q + k)
                f = dict(theta=theta, ll=0.0, ll0=0.0, t=limit, U0=zero.v, code=0)
                H, V, H0 = zero, zero, zero
            else:
                H, H0 = Mat(q + k, q + k, f["H"]), Mat(q + k, q + k, f["H0"])
                V = Mat(q + k, q + k, [f["cov"][i][j] for j in range(q + k) for i in range(q + k)])
            t = f["t"] if f["code"] == 0 else limit
            criteria(n, q, k, f["ll"], f["ll0"], t, 0.1, f["theta"], H, V, f["U0"], H0, fitm, coef, tests_, dist)
            residuals(d[0], n, q, family, log_times, columns, f["theta"], S, P, R, Q)
        # A family without a likelihood keeps its starting value.
        want_theta = f["theta"] if f is not None else [sum(a * b for a, b in zip(w, d[0])) / sum(w)] if q == 0 else []
        got, arr = lib.call("Cpp_RunParamReg",
                            [("D", raw), ("i", n), ("i", p), ("I", [9]), ("i", k), ("D", status), ("D", lo + up),
                             ("D", flat(X, n)), ("D", w), ("i", limit), ("d", 1e-6), ("s", log_times), ("i", family),
                             ("s", none), ("i", method), ("i", 0), ("d", 0.3), ("d", 0.3), ("d", 0.1), ("i", 77), ("s", 0),
                             ("D", [0.0] * m), ("s", 0), ("d", 0.0), ("D", theta), ("D", [4.0] * 14), ("D", [4.0] * 9),
                             ("D", [4.0] * (9 * m)), ("D", [4.0] * n), ("D", [4.0] * (2 * n)), ("D", [4.0] * (2 * n)),
                             ("D", [4.0] * (9 * n)), ("D", [9.0] * (3 * max(p, 1))), ("I", [9]), ("I", [9] * max(p, 1))])
        (times_out, kept, _, _, _, _, _, theta_out, fit_out, tests_out, coef_out, s_out, r_out, p_out, q_out, steps_out,
         count_out, order_out) = arr
        run.compare("Cpp_RunParamReg", (raw, status, X, w, family, log_times, none, method, limit),
                    [("code", code), ("times", raw), ("kept", q if code == 0 else 9), ("theta", want_theta),
                     ("fit", fitm.v), ("tests", tests_.v), ("coefficients", coef.v), ("S", S.v), ("R", R.v), ("P", P.v),
                     ("Q", Q.v), ("steps", history), ("count", count), ("order", order_)],
                    [("code", got), ("times", times_out), ("kept", kept[0]), ("theta", theta_out[:len(want_theta)]),
                     ("fit", fit_out), ("tests", tests_out), ("coefficients", coef_out), ("S", s_out), ("R", r_out),
                     ("P", p_out), ("Q", q_out), ("steps", steps_out), ("count", count_out[0]), ("order", order_out)],
                    relative=1e-5, absolute=AT_MAXIMUM)

    for _ in range(cases):
        p, k, n = rnd.choice([0, 1, 2, 3]), rnd.choice([1, 2]), rnd.choice([5, 10, 3])
        m = p + k
        ll, ll0 = rnd.choice([-10.0, -12.5, -1e51, -INF]), rnd.choice([-11.0, -1e60, -10.0])
        theta, H = [rnd.gauss(0, 1) for _ in range(m)], [rnd.gauss(0, 1) for _ in range(m * m)]
        V = [rnd.choice([-.5, -.1, .2, 0.0]) for _ in range(m * m)]
        U0, H0 = [rnd.gauss(0, 1) for _ in range(m)], [rnd.gauss(0, 1) for _ in range(m * m)]
        if rnd.random() < .1:
            H = [h * -1e150 for h in H]
        fitm, coef, tests = Mat(7, 2, fill=4.), Mat(m, 9, fill=4.), Mat(3, 3, fill=4.)
        z = criteria(n, p, k, ll, ll0, 7, 0.05, theta, Mat(m, m, H), Mat(m, 1, V), U0, Mat(m, m, H0), fitm, coef, tests, dist)
        _, arr = lib.call("Cpp_ComputeCritParam",
                          [("i", n), ("i", p), ("i", k), ("d", ll), ("d", ll0), ("i", 7), ("d", 0.05), ("D", theta), ("D", H),
                           ("D", V), ("D", [5.0]), ("D", U0), ("D", H0), ("D", [4.0] * 14), ("D", [4.0] * (9 * m)),
                           ("D", [4.0] * 9)])
        run.compare("Cpp_ComputeCritParam", (n, p, k, ll, ll0, theta, H, V),
                    [("z", z), ("fit", fitm.v), ("coefficients", coef.v), ("tests", tests.v)],
                    [("z", arr[3]), ("fit", arr[6]), ("coefficients", arr[7]), ("tests", arr[8])], relative=1e-12,
                    absolute=1e-14)

    for _ in range(cases):
        n, p, family = rnd.choice([1, 3, 8]), rnd.choice([0, 1, 2]), rnd.choice([1, 2, 3, 4])
        k = 2 if family in (2, 3) else 1
        y, _, _, _, _, X, _ = data(n, p, [1.])
        if rnd.random() < .2:
            y[0] = rnd.choice([30.0, 900.0, -900.0])
        theta = [rnd.gauss(0, 1) for _ in range(p + 1)] + ([rnd.choice([0.5, 2.0, 0.0])] if k == 2 else [])
        if rnd.random() < .1:
            theta[p] = rnd.choice([700.0, 705.0, 699.0])
        logt = rnd.choice([0, -1, 1])
        S, P, R, Q = Mat(n, 1, fill=4.), Mat(n, 2, fill=4.), Mat(n, 1, fill=4.), Mat(n, 9, fill=4.)
        residuals(y, n, p, family, logt, X, theta, S, P, R, Q)
        _, arr = lib.call("Cpp_ResParam", [("D", y), ("i", n), ("i", p), ("i", k), ("i", family), ("s", logt),
                                          ("D", flat(X, n)), ("D", theta), ("D", [4.0] * n), ("D", [4.0] * (2 * n)),
                                          ("D", [4.0] * (2 * n)), ("D", [4.0] * (9 * n))])
        run.compare("Cpp_ResParam", (y, X, theta, family, logt),
                    [("S", S.v), ("P", P.v), ("R", R.v + [4.0] * n), ("Q", Q.v)],
                    [("S", arr[3]), ("P", arr[4]), ("R", arr[5]), ("Q", arr[6])], relative=1e-12, absolute=1e-300)

    for _ in range(cases * 2):
        n, k, p = rnd.choice([1, 2, 4, 8]), rnd.choice([1, 2, 3, 4, 5]), rnd.choice([0, 1, 2])
        answers = [rnd.choice([0.0, 1.0, 1.0]) if rnd.random() < .97 else rnd.choice([NAN, 0.5]) for _ in range(n * k)]
        times = sorted(float(rnd.randrange(0, 9)) for _ in range(k))
        X = [[rnd.random() for _ in range(n)] for _ in range(p)]
        flags = [0] * n
        bounds = [100.0 + i for i in range(2 * n)]
        type_, key = [rnd.choice([0.0, 5.0, 1.0]) for _ in range(n)], [rnd.choice([0.0, 3.0, 9.5]) for _ in range(n)]
        xout, summary = [7.0] * (n * p), [7.0] * (2 * k)
        w = copy.deepcopy([flags, bounds, type_, key, xout, summary])
        code, removed, kept = intervals(answers, n, k, times, X, p, *w)
        got, arr = lib.call("Cpp_PrepareIntervalData",
                            [("D", answers), ("i", n), ("i", k), ("D", times), ("D", [v for c in X for v in c]), ("i", p),
                             ("I", [9]), ("I", flags), ("I", [9]), ("D", bounds), ("D", type_), ("D", key), ("D", xout),
                             ("D", summary)])
        run.compare("Cpp_PrepareIntervalData", (answers, n, k, times, X, type_, key),
                    [("code", code), ("removed", removed), ("kept", kept), ("flags", w[0]), ("bounds", w[1]),
                     ("type", w[2]), ("key", w[3]), ("xout", w[4]), ("summary", w[5])],
                    [("code", got), ("removed", arr[3][0]), ("kept", arr[5][0]), ("flags", arr[4]), ("bounds", arr[6]),
                     ("type", arr[7]), ("key", arr[8]), ("xout", arr[9]), ("summary", arr[10])])

    for _ in range(cases):
        G, p = rnd.choice([1, 2, 4]), rnd.choice([1, 2])
        sizes = [float(rnd.choice([1, 2, 2, 3])) for _ in range(G)]
        keys = [float(g + 1) for g in range(G) for _ in range(int(sizes[g]))]
        rnd.shuffle(keys)
        n = len(keys)
        rating = [rnd.choice([0.0, 1.0, 2.5, 4.0]) for _ in range(n)]
        K = len(set(rating)) + 1
        if rnd.random() < .1:
            K = max(1, K + rnd.choice([-1, 1]))
        X = [[rnd.random() for _ in range(n)] for _ in range(p)]
        ind, sx, levels = [0.0] * (G * K), [7.0] * (G * p), [7.0] * K
        want = judge(rating, n, K, keys, G, sizes, X, p, ind, sx, levels)
        got, arr = lib.call("Cpp_TransformJudgeToInt",
                            [("D", rating), ("i", n), ("i", K), ("D", keys), ("i", G), ("D", sizes),
                             ("D", [v for c in X for v in c]), ("i", p), ("D", ind), ("D", sx), ("D", levels)])
        run.compare("Cpp_TransformJudgeToInt", (rating, keys, sizes, X, K),
                    [("code", 0), ("rating", rating), ("indicators", want[0]), ("X", want[1]), ("levels", want[2])],
                    [("code", got), ("rating", arr[0]), ("indicators", arr[4]), ("X", arr[5]), ("levels", arr[6])])
    run.finish()


if __name__ == "__main__":
    main()
