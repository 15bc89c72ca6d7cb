"""The rules of the Cox family: preparation, likelihood, fit, criteria, baseline, residuals."""

from frame import EPSILON, INFINITE, MISSING, Mat, div, exp, log, root, sort_q, trunc
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
