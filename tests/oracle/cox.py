"""Oracle of the Cox family: preparation, likelihood, fit, criteria, baseline, residuals, selection.

Usage: cox.py LIBSURVIVAL LIBDIST [CASES]
"""

import copy
import math
import sys

from frame import (EPSILON, INF, INFINITE, MISSING, NAN, Dist, Library, Mat, Run, div, exp, log, root, sort_q, trunc)
from lifeRules import inverse


class IntMat(Mat):
    pass


def prepare(time, n, p, status, extra, key, X, stratum, sizes, S, distinct, censored, start, size, events, groups):
    """X: list of p column lists. Returns code, groups."""
    first = 1
    for s in range(1, S + 1):
        distinct.put(s, 1, 1)
        censored.put(s, 1, 0)
        start.put(s, 1, first)
        size.put(s, 1, 1)
        first += trunc(sizes[s - 1])
    if n < 1:
        return -2, groups
    for x in status:
        if x < 0 or x > 1:
            return -1, groups
    if n < 2:
        return -2, groups
    total = 0.0
    for x in status:
        total += x
    if total == 0:
        return -3, groups
    if S >= 2:
        copy1, copy2 = list(stratum), list(stratum)
        sort_q([status, key], stratum, 1, n, True)
        sort_q([extra, key], copy1, 1, n, True)
        sort_q(X + [time], copy2, 1, n, True)
    a = 1
    for s in range(1, S + 1):
        m = trunc(sizes[s - 1])
        last = min(a + m - 1, n)
        copy1, copy2 = list(time), list(time)
        sort_q([status, key], time, a, last, True)
        sort_q([extra, key], copy1, a, last, True)
        sort_q(X, copy2, a, last, True)
        for i in range(a, last + 1):
            if status[i - 1] == 0:
                censored.put(s, 1, censored(s) + 1)
        k = 1
        for i in range(a + 1, last + 1):
            if time[i - 1] != time[i - 2]:
                k += 1
                distinct.put(s, 1, k)
                start.put(s, k, i)
                size.put(s, k, 1)
            elif key[i - 1] != 0:
                size.put(s, k, size(s, k) + 1)
        for g in range(1, k + 1):
            zero = 0
            for i in range(start(s, g), start(s, g) + size(s, g)):
                if 1 <= i <= n and status[i - 1] == 0:
                    zero += 1
            events.put(s, g, size(s, g) - zero)
        groups = max(groups, k)
        a += m
    return 0, groups


def likelihood(p, delta, X, ties, beta, D, m, g, S, sizes, d):
    """Returns logLik, gradient, hessian (Mat)."""
    ll = 0.0
    U, H = [0.0] * p, Mat(p, p)
    if ties not in (0, 1):
        return ll, U, H
    a = 1
    for s in range(1, S + 1):
        ns = trunc(sizes(1, s))
        b = a + ns - 1
        groups = D(s)
        A = []
        for k in range(1, groups + 1):
            row = []
            for j in range(1, p + 1):
                t = 0.0
                for i in range(g(s, k), g(s, k) + m(s, k)):
                    t += delta(i) * X(i, j)
                row.append(t)
            A.append(row)
        linear = 0.0
        for k in range(groups):
            for j in range(p):
                linear += A[k][j] * beta[j]
        ll = linear if s == 1 else ll + linear
        eta = {}
        for i in range(a, b + 1):
            t = 0.0
            for j in range(1, p + 1):
                t += X(i, j) * beta[j - 1]
            eta[i] = t
        expected, curvature = [0.0] * p, [[0.0] * p for _ in range(p)]
        for k in range(1, groups + 1):
            S0, S1, S2 = 0.0, [0.0] * p, [[0.0] * p for _ in range(p)]
            for i in range(g(s, k), b + 1):
                if ties == 0 and eta[i] >= 700:
                    continue
                e = exp(eta[i])
                S0 += e
                for r in range(p):
                    S1[r] += X(i, r + 1) * e
                    for c in range(p):
                        S2[r][c] += X(i, r + 1) * X(i, c + 1) * e
            dk = d(s, k)
            if ties == 0:
                if S0 > EPSILON:
                    ll -= dk * log(S0)
                if abs(S0) > EPSILON:
                    for j in range(p):
                        U[j] += A[k - 1][j] - dk * S1[j] / S0
                    for r in range(p):
                        for c in range(p):
                            H.put(r + 1, c + 1, H(r + 1, c + 1) + dk * ((S1[c] / S0) * (S1[r] / S0) - S2[r][c] / S0))
            else:
                if dk > 0:
                    T0, T1, T2 = 0.0, [0.0] * p, [[0.0] * p for _ in range(p)]
                    for i in range(g(s, k), g(s, k) + m(s, k)):
                        e = exp(eta.get(i, -1))
                        T0 += delta(i) * e
                        for r in range(p):
                            T1[r] += delta(i) * X(i, r + 1) * e
                            for c in range(p):
                                T2[r][c] += delta(i) * X(i, r + 1) * X(i, c + 1) * e
                    S0 = S0 - 0.0 * T0
                    S1 = [x - 0.0 * y for x, y in zip(S1, T1)]
                    S2 = [[x - 0.0 * y for x, y in zip(u, v)] for u, v in zip(S2, T2)]
                L = 0.0
                for _ in range(dk):
                    L += log(S0)
                ll -= L
                for j in range(p):
                    U[j] += A[k - 1][j]
                for _ in range(dk):
                    for j in range(p):
                        expected[j] += div(S1[j], S0)
                    for r in range(p):
                        for c in range(p):
                            curvature[r][c] += div(S1[c] * div(S1[r], S0), S0) - div(S2[r][c], S0)
        if ties == 1:
            for r in range(p):
                U[r] -= expected[r]
                for c in range(p):
                    H.put(r + 1, c + 1, H(r + 1, c + 1) + curvature[r][c])
        a += ns
    return ll, U, H


def newton(beta, U, H, tol):
    p = len(beta)
    inv = inverse([[H(i, j) for j in range(1, p + 1)] for i in range(1, p + 1)], p, 0.0)
    if p and all(x == 0 for row in inv for x in row):
        return -1, list(beta)
    step = [sum((inv[i][j] * U[j] for j in range(p)), 0.0) for i in range(p)]
    new = [b - x for b, x in zip(beta, step)]
    return (1 if all(abs(x) < tol for x in step) else 0), new


def fit(p, delta, X, sizes, S, limit, tol, ties, D, m, d, g):
    evaluate = lambda b: likelihood(p, delta, X, ties, b, D, m, g, S, sizes, d)
    beta = [0.0] * p
    t, stale = 0, True
    out = {}
    ll, U, H = None, None, None
    while True:
        if t == 0 or stale:
            ll, U, H = evaluate(beta)
        old = list(beta)
        out["inverse"] = inverse([[H(i, j) for j in range(1, p + 1)] for i in range(1, p + 1)], p, 0.0)
        r, beta = newton(beta, U, H, tol)
        if t == 0:
            out.update(ll0=ll, U0=list(U), inverse0=out["inverse"])
        delta_step = [o - b for o, b in zip(old, beta)]
        ll_old = ll
        stale = True
        for h in range(1, 11):
            ll, U, H = evaluate(beta)
            if ll - ll_old > EPSILON:
                stale = False
                break
            beta = [b + x * 2.0 ** -h for b, x in zip(beta, delta_step)]
            stale = True
        t += 1
        if t == limit or (r == 1 and t > 10) or abs(ll - ll_old) < tol or t >= 100000:
            break
    out.update(beta=beta, ll=ll, U=U, H=H, t=t)
    return out


def criteria(n, q, censored, f, alpha, dist, crit, coef, tests):
    e = float(n - censored(1))
    ll, ll0 = f["ll"], f["ll0"]
    for r, (x, y) in enumerate([(e, e), (0, q), (-2 * ll0, -2 * ll), (-2 * ll0, 2 * q - 2 * ll),
                                (0 * log(e) - 2 * ll0, q * log(e) - 2 * ll), (1, f["t"])]):
        crit.put(r + 1, 1, x)
        crit.put(r + 1, 2, y)
    z = dist.InvCDFNormalStd(1 - alpha / 2)
    for i in range(1, q + 1):
        v = f["inverse"][i - 1][i - 1]
        b = f["beta"][i - 1]
        coef.put(i, 1, b)
        if v <= -EPSILON:
            se = root(-v)
            coef.put(i, 2, se)
            chi = MISSING if se == 0 else abs((b / se) * (b / se))
            coef.put(i, 3, chi)
            coef.put(i, 4, MISSING if chi == MISSING else dist.pValChiSq(chi, 1))
            coef.put(i, 5, exp(b))
            coef.put(i, 6, exp(b - z * se))
            coef.put(i, 7, exp(b + z * se) if b + z * se <= 709 else INFINITE)
        else:
            for c in range(2, 8):
                coef.put(i, c, MISSING)
    quad = lambda v, B: sum((v[i] * sum((B(i + 1, j + 1) * v[j] for j in range(q)), 0.0) for i in range(q)), 0.0)
    inv0 = lambda i, j: f["inverse0"][i - 1][j - 1]
    lr = -2 * (ll0 - ll)
    score = -quad(f["U0"], inv0)
    wald = -quad(f["beta"], f["H"])
    for r, x in enumerate([lr, score, wald]):
        tests.put(r + 1, 1, q)
        tests.put(r + 1, 2, x)
        tests.put(r + 1, 3, dist.pValChiSq(x, q) if r or ll0 - ll <= 0 else MISSING)


def baseline(n, q, X, sizes, S, beta, D, g, d, G, base, mean):
    a = 1
    for s in range(1, S + 1):
        ns = trunc(sizes(1, s))
        b = a + ns - 1
        eta = {i: sum((X(i, j) * beta[j - 1] for j in range(1, q + 1)), 0.0) for i in range(a, b + 1)}
        hazard = 0.0
        for k in range(1, D(s) + 1):
            R = 0.0
            for i in range(g(s, k), b + 1):
                if eta[i] < 700:
                    R += exp(eta[i])
            if abs(R) > EPSILON:
                hazard += d(s, k) / R
            base.put(s, k, exp(-hazard))
        kappa = 0.0
        for j in range(1, q + 1):
            t = 0.0
            for i in range(1, n + 1):
                t += X(i, j)
            kappa += t / n * beta[j - 1]
        if kappa < 700:
            for k in range(1, D(s) + 1):
                mean.put(s, k, base(s, k) ** exp(kappa))
        a += ns


def residuals(time, n, q, delta, X, sizes, S, beta, D, m, g, base, out):
    lam, M, dev = {}, {}, {}
    sch, second = {}, {}
    a = 1
    for s in range(1, S + 1):
        ns = trunc(sizes(1, s))
        b = a + ns - 1
        eta = {i: sum((X(i, j) * beta[j - 1] for j in range(1, q + 1)), 0.0) for i in range(a, b + 1)}
        S0i, S1i = dict.fromkeys(eta, 0.0), dict.fromkeys(eta, [0.0] * q)
        for k in range(1, D(s) + 1):
            S0, S1 = 0.0, [0.0] * q
            for i in range(g(s, k), b + 1):
                if eta[i] < 700:
                    e = exp(eta[i])
                    S0 += e
                    for j in range(q):
                        S1[j] += X(i, j + 1) * e
            for i in range(g(s, k), g(s, k) + m(s, k)):
                S0i[i], S1i[i] = S0, S1  # rows in no group keep zeros
                if base(s, k) > 0:
                    lam[i] = -log(base(s, k))
        for i in range(a, b + 1):
            L = lam.get(i, 0.0)
            M[i] = delta(i) - L * exp(eta[i]) if eta[i] < 700 else delta(i)
            x = delta(i) - M[i]
            if x != 0:
                sign = -1.0 if M[i] < 0 else 1.0
                dev[i] = sign * root(2 * (-M[i] - (delta(i) * log(x))))
            else:
                dev[i] = MISSING
            sch[i] = [delta(i) * (X(i, j + 1) - div(S1i[i][j], S0i[i])) for j in range(q)]
        for r in range(a, b + 1):
            row = []
            for j in range(q):
                t = 0.0
                if dev[r] != MISSING:
                    for i in range(a, r + 1):
                        t += div(sch[i][j] * dev[i] * eta[r], S0i[i])
                row.append(sch[r][j] - t)
            second[r] = row
        a += ns
    for i in range(1, n + 1):
        if i in M:
            out.put(i, 1, time(i))
            out.put(i, 2, delta(i))
            out.put(i, 3, M[i])
            out.put(i, 4, dev[i])
            for j in range(q):
                out.put(i, 5 + j, sch[i][j])
                out.put(i, 5 + q + j, second[i][j])


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
