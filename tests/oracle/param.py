"""Oracle of parametric regression and of interval and judge data.

Usage: param.py LIBSURVIVAL LIBDIST [CASES]
"""

import copy
import math
import sys

from frame import EPSILON, INF, INFINITE, MISSING, NAN, Dist, Library, Mat, Run, div, exp, log, root, order
from life import inverse

# At a maximum the gradient is what the rounding of its terms leaves: up to 40 terms of size 1, each
# sum of them off by 2^-53 of it. Everything else is compared relatively.
AT_MAXIMUM = 40 * 40 * 2.0 ** -53


def likelihood(y, n, p, status, lo, up, X, theta, w, family, dist):
    ll = 0.0
    T = [0.0] * 4
    sigma = theta[p + 1] if family in (2, 3) else 1.0
    for i in range(n):
        eta = sum((X[j][i] * theta[j] for j in range(p)), 0.0) + theta[p]
        st, wi = status[i], w[i]
        if family == 1:
            d = y[i] - eta
            if st == 1:
                T[1] = d - exp(d) if d < 700 else T[1] + d
            elif st == 0 and d < 700:
                T[0] = -exp(d)
            elif st == 2 and d < 700:
                T[2] = log(1 - exp(-exp(d)))
            elif st == 3 and up[i] - eta < 700:
                T[3] = log(exp(-exp(lo[i] - eta)) - exp(-exp(up[i] - eta)))
            ll += wi * (T[0] + T[1] + T[2] + T[3])
        elif family == 2:
            z = div(y[i] - eta, sigma)
            if st == 1:
                ll += -wi * log(sigma) + wi * z - wi * y[i]
                if not z >= 700:
                    ll += -wi * exp(z)
            elif st == 0 and not z >= 700:
                ll += -wi * exp(z)
            elif st == 2:
                ll += log(1 - exp(-exp(z)))
            elif st == 3:
                ll += log(exp(-exp(div(lo[i] - eta, sigma))) - exp(-exp(div(up[i] - eta, sigma))))
        elif family == 3:
            z = div(y[i] - eta, sigma)
            Phi = dist.CDFNormalStd
            if st == 1:
                ll += wi * log(div(dist.PDFNormalStd(z), sigma))
            elif st == 0:
                ll += wi * log(1 - Phi(z))
            elif st == 2:
                ll -= wi * log(Phi(z))
            elif st == 3:
                ll += wi * log(Phi(div(up[i] - eta, sigma)) - Phi(div(lo[i] - eta, sigma)))
    return ll


def derivatives(y, n, p, status, lo, up, X, theta, w, family, dist):
    m = p + (1 if family == 1 else 2)
    U, H = [0.0] * m, Mat(m, m)
    sigma = theta[p + 1] if family in (2, 3) else 1.0
    for i in range(n):
        x = [X[j][i] for j in range(p)] + [1.0]
        eta = sum((X[j][i] * theta[j] for j in range(p)), 0.0) + theta[p]
        st = status[i]

        def cdf(t):
            """Lower-tail probability at standardised t with two derivatives in t."""
            if family == 3:
                f = dist.PDFNormalStd(t)
                return dist.CDFNormalStd(t), f, -t * f
            u = exp(t)
            s = exp(-u)
            return 1 - s, u * s, (u - u * u) * s

        def chain(t, g1, g2):
            """Derivatives in eta, sigma of g((y - eta) / sigma)."""
            return (-g1 / sigma, -t * g1 / sigma, g2 / sigma ** 2, (g1 + t * g2) / sigma ** 2,
                    (2 * t * g1 + t * t * g2) / sigma ** 2)

        def logarithm(G, parts):
            e, s, ee, es, ss = parts
            a, b = div(e, G), div(s, G)
            return (a, b, div(ee, G) - a * a, div(es, G) - a * b, div(ss, G) - b * b)

        z = (y[i] - eta) / sigma
        if st == 1:
            if family == 3:
                part = chain(z, -z, -1.0)
            else:
                u = exp(z) if z < 700 else 0.0
                part = chain(z, 1 - u, -u)
            e, s, ee, es, ss = part
            part = (e, s - 1 / sigma, ee, es, ss + 1 / sigma ** 2)
        elif st == 0:
            if family == 3:
                F, f1, f2 = cdf(z)
                part = logarithm(1 - F, chain(z, -f1, -f2))
            else:
                u = exp(z) if z < 700 else 0.0
                part = chain(z, -u, -u)
        elif st == 2:
            F, f1, f2 = cdf(z)
            part = logarithm(F, chain(z, f1, f2))
        elif st == 3:
            zl, zu = (lo[i] - eta) / sigma, (up[i] - eta) / sigma
            L, Up = cdf(zl), cdf(zu)
            a, b = chain(zu, Up[1], Up[2]), chain(zl, L[1], L[2])
            # The extreme-value laws take the difference of the survivals: 1 - S cancels in the tail.
            G = Up[0] - L[0] if family == 3 else exp(-exp(zl)) - exp(-exp(zu))
            part = logarithm(G, tuple(s - t for s, t in zip(a, b)))
        else:
            continue
        e, s, ee, es, ss = (w[i] * t for t in part)
        for j in range(p + 1):
            U[j] += x[j] * e
            for k in range(p + 1):
                H.put(j + 1, k + 1, H(j + 1, k + 1) + x[j] * x[k] * ee)
            if family != 1:
                H.put(j + 1, p + 2, H(j + 1, p + 2) + x[j] * es)
                H.put(p + 2, j + 1, H(p + 2, j + 1) + x[j] * es)
        if family != 1:
            U[p + 1] += s
            H.put(p + 2, p + 2, H(p + 2, p + 2) + ss)
    return U, H


def fit(data, p, family, theta0, fixed, value, limit, tol, dist):
    """Literal fit from given starting values."""
    y, n, status, lo, up, X, w = data
    m = p + (1 if family == 1 else 2)
    value_of = lambda t: likelihood(y, n, p, status, lo, up, X, t, w, family, dist)
    slopes = lambda t: derivatives(y, n, p, status, lo, up, X, t, w, family, dist)
    theta = list(theta0)
    mask = [0.0] * m
    if fixed == -1:
        theta[p] = value
        mask[p] = 1.0
    ll0 = value_of(theta)
    U, H = slopes(theta)
    U0, H0 = list(U), H.v[:]
    cand = list(theta)
    t = 0
    while True:
        old = value_of(cand)
        inv = inverse([[H(i, j) for j in range(1, m + 1)] for i in range(1, m + 1)], m, 0.0)
        singular = all(x == 0 for row in inv for x in row)
        code = 0
        if singular:
            code = -1
        else:
            step = [sum((inv[i][j] * U[j] for j in range(m)), 0.0) for i in range(m)]
            cand = [c if k else c - s for c, s, k in zip(cand, step, mask)]
        cov = inv
        if cand[-1] <= 0:
            cand[-1] = 1e-12
        t += 1
        diff = [a - b for a, b in zip(theta, cand)]
        new = value_of(cand)
        h = 1
        while True:
            if new - old > EPSILON:
                theta = list(cand)
                U, H = slopes(theta)
                break
            cand = [c + d * 2.0 ** -h for c, d in zip(cand, diff)]
            h += 1
            if h <= 10:
                new = value_of(cand)
                continue
            for r in range(1, m + 1):
                for c in range(1, m + 1):
                    if r != c:
                        H.put(r, c, 0.0)
            cand[:-1] = theta[:-1]
            break
        if t == limit or abs(old - new) < tol or t >= 100000:
            break
    out = dict(code=-2 if code < 0 else 0, t=t, ll=old, ll0=ll0, U=U, H=H.v, cov=cov, U0=U0, H0=H0, theta=theta)
    return out


def solve(A, b):
    """Gaussian elimination of a regular system."""
    n = len(b)
    A = [row[:] + [value] for row, value in zip(A, b)]
    for k in range(n):
        pivot = max(range(k, n), key=lambda i: abs(A[i][k]))
        A[k], A[pivot] = A[pivot], A[k]
        for i in range(k + 1, n):
            f = A[i][k] / A[k][k]
            A[i] = [x - f * y for x, y in zip(A[i], A[k])]
    x = [0.0] * n
    for k in reversed(range(n)):
        x[k] = (A[k][n] - sum(A[k][j] * x[j] for j in range(k + 1, n))) / A[k][k]
    return x


def start(data, p, family, fixed):
    """Starting values of a fit from data with independent covariates."""
    y, n, _, _, _, X, w = data
    total = sum(w)
    mean = sum(a * b for a, b in zip(w, y)) / total
    if p == 0:
        theta = [mean + (0.572 if family == 2 else 0.0)]
    else:
        design = X[:p] + ([] if fixed == -1 else [[1.0] * n])
        cross = [[sum(v * a * b for v, a, b in zip(w, c, d)) for d in design] for c in design]
        theta = solve(cross, [sum(v * a * b for v, a, b in zip(w, c, y)) for c in design])
        if fixed == -1:
            theta.append(0.0)
    if family not in (1, 4):
        s = root(sum(a * (b - mean) ** 2 for a, b in zip(w, y)) / (total - 1))
        half = 0.5 * log(4 * s / 1.64)
        theta.append(half if family == 2 and half > 0 else s)
    return theta


def with_columns(data, columns):
    y, n, status, lo, up, _, w = data
    return y, n, status, lo, up, columns, w


class Options:
    """What the fits of a selection share."""

    def __init__(self, family, limit, tol, given, fixed, value, dist):
        self.family, self.limit, self.tol = family, limit, tol
        self.given, self.fixed, self.value, self.dist = given, fixed, value, dist
        self.k = 1 if family == 1 else 2

    def fit(self, data, columns):
        p = len(columns)
        data = with_columns(data, columns)
        theta0 = self.given[:p + self.k] if self.given else start(data, p, self.family, self.fixed)
        return fit(data, p, self.family, theta0, self.fixed, self.value, self.limit, self.tol, self.dist)


def backward(options, data, threshold, option):
    columns, p = list(data[5]), len(data[5])
    steps, order, s = {}, [0] * max(p, 1), 1
    f = options.fit(data, columns)
    while len(columns) > 1:
        q = len(columns)
        steps[s] = [float(q)]
        worst, W, P = 0, 0.0, 0.0
        if option == 0:
            best = -1.0
            for j in range(q):
                ratio = div(f["theta"][j], root(-f["cov"][j][j]))
                wj = abs(ratio * ratio)
                pj = options.dist.pValChiSq(wj, 1)
                if pj > best:
                    worst, W, P, best = j, wj, pj, pj
        if not threshold <= P:
            break
        steps[s] += [W, P]
        left = [i for i in range(p) if order[i] == 0]
        order[left[worst]] = s
        del columns[worst]
        f = options.fit(data, columns)
        s += 1
    return f, columns, steps, s, order


def forward(options, data, threshold):
    columns, p = data[5], len(data[5])
    inside, steps, order, s, reference = [], {}, [0] * max(p, 1), 1, 0.0
    while p > 0:
        best = None
        for j in range(p):
            if j in inside:
                continue
            f = options.fit(data, [columns[i] for i in sorted(inside + [j])])
            before = f["ll0"] if s == 1 else reference
            P = 0.0 if before - f["ll"] >= 0 else options.dist.pValChiSq(-2 * (before - f["ll"]), len(inside) + 1)
            if P != 0 and not math.isnan(P) and (best is None or P < best[0]):
                best = (P, j, -2 * (before - f["ll"]), f["ll"])
        if best is None or threshold < best[0]:
            break
        steps[s] = [float(s), best[2], best[0]]
        inside.append(best[1])
        order[best[1]] = s
        reference = best[3]
        s += 1
        if s == p:
            break
    chosen = sorted(inside) if inside else range(p)
    chosen = [columns[i] for i in chosen]
    return options.fit(data, chosen), chosen, steps, s, order


def laid_out(values, fill, count):
    """The values at the head of a column that was filled before."""
    return list(values) + [fill] * (count - len(values))


def block(values, q, m):
    """The leading q x q block of a column-major m x m matrix."""
    return [values[i + j * m] for j in range(q) for i in range(q)]


def criteria(n, p, k, ll, ll0, t, alpha, theta, H, V, U0, H0, fitm, coef, tests, dist):
    m = p + k
    z = dist.InvCDFNormalStd(1 - alpha / 2)
    for r, (a, b) in enumerate([(n, n), (0, m)]):
        fitm.put(r + 1, 1, a)
        fitm.put(r + 1, 2, b)
    aic = 2 * m - 2 * ll
    cols = [[-2 * ll0] * 4, [-2 * ll, aic, m * log(n) - 2 * ll, aic + div(2.0 * m * (m + 1), float(n - 1 - m))]]
    for c, (value, column) in enumerate(zip((ll0, ll), cols), 1):
        for r, x in enumerate(column):
            fitm.put(r + 3, c, MISSING if value <= -1e50 else x)
    fitm.put(7, 1, 1)
    fitm.put(7, 2, t)
    rows = [p + 1] + list(range(1, p + 1)) + ([p + 2] if k == 2 else [])
    for row, r in enumerate(rows, 1):
        est, v = theta[r - 1], V(r, r)
        coef.put(row, 1, est)
        if v >= 0:
            for c in range(2, 7):
                coef.put(row, c, MISSING)
            continue
        se = root(-v)
        chi = abs((est / se) ** 2)
        coef.put(row, 2, se)
        coef.put(row, 3, chi)
        coef.put(row, 4, dist.pValChiSq(chi, 1))
        if r == p + 2:
            f = div(z * se, est)
            coef.put(row, 5, div(est, exp(f)) if f >= 0 else 0.0)
            coef.put(row, 6, est * exp(f) if f <= 709 else INFINITE)
        else:
            coef.put(row, 5, est - z * se)
            coef.put(row, 6, est + z * se)
    if p > 0:
        quad = lambda v, B: sum((v[i] * sum((B(i + 1, j + 1) * v[j] for j in range(p)), 0.0) for i in range(p)), 0.0)
        lr, score, wald = -2 * (ll0 - ll), -quad(U0, H0), quad(theta, H)
        for r, x in enumerate((lr, score, -wald), 1):
            tests.put(r, 1, p)
            tests.put(r, 2, x)
            tests.put(r, 3, dist.pValChiSq(x, p))
        if not ll0 - ll <= 0:
            tests.put(1, 3, MISSING)
        if wald <= -1e100:
            tests.put(3, 2, MISSING)
            tests.put(3, 3, MISSING)
    return z


QS = [-4.600149226776579, -2.9701952490421637, -2.2503673273124454, -1.2458993237072382, -0.36651292058166435,
      0.32663425997828094, 0.834032445247956, 1.0971887003649483, 1.5271796258079011]


def residuals(y, n, p, family, logt, X, theta, S, P, R, Q):
    sigma = theta[p + 1] if family == 2 and theta[p + 1] != 0 else 1.0
    for i in range(1, n + 1):
        eta = sum((X[j][i - 1] * theta[j] for j in range(p)), 0.0) + theta[p]
        r = (y[i - 1] - eta) / sigma
        R.put(i, 1, r)
        s = exp(-exp(r))
        S.put(i, 1, s)
        P.put(i, 1, 1 - s)
        P.put(i, 2, exp(r) * (1 / sigma) * s)
        if s > 0:
            if R.cols >= 2:
                R.put(i, 2, -log(s))
        for c, q in enumerate(QS, 1):
            v = eta + sigma * q
            if logt == -1:
                v = MISSING if v >= 700 else exp(v)
            Q.put(i, c, v)


def intervals(answers, n, k, times, X, p, flags, bounds, type_, key, xout, summary):
    A, t, B = Mat(n, k, answers), Mat(k, 1, times), Mat(n, 2, bounds)
    for i in range(1, n + 1):
        if A(i, 1) == 0.0:
            flags[i - 1] = 1
            type_[i - 1] = -1.0
            continue
        if k < 2:
            continue
        c = next((j for j in range(2, k + 1) if A(i, j) == 0.0), None)
        if c is None:
            type_[i - 1] = 0.0
            key[i - 1] = t(k)
            continue
        type_[i - 1] = 3.0
        shift = 1 if t(c - 1) == 0.0 else 0
        B.put(i, 1, t(c - 1 + shift))
        key[i - 1] = t(c - 1 + shift)
        B.put(i, 2, t(c + shift))
        for j in range(c, k + 1):
            if A(i, j) == 1.0:
                type_[i - 1] = 2.0
                key[i - 1] = t(c)
            if type_[i - 1] == 2.0 and A(i, j) == 0.0 and B(i, 1) != t(j):
                type_[i - 1] = 3.0
                B.put(i, 2, t(j))
    o = order(key)
    perm = lambda v: [v[i] for i in o]
    X = [perm(col) for col in X]
    key[:], type_[:], flags[:] = perm(key), perm(type_), perm(flags)
    bounds[:] = perm(B.v[:n]) + perm(B.v[n:])
    removed = int(sum(flags))
    kept = [i for i in range(n) if flags[i] == 0]
    for j in range(p):
        for r, i in enumerate(kept):
            xout[j * n + r] = X[j][i]
    for v in (type_, key):
        w = list(v)
        for r, i in enumerate(kept):
            v[r] = w[i]
    n_kept = n - removed
    for j in range(1, k + 1):
        s = 0.0
        for i in range(1, n_kept + 1):
            s += A(i, j)
        summary[j - 1] = s
        summary[k + j - 1] = div(s * 100, float(n))
    code = 0
    if n_kept == 0:
        code = -2
    elif any(x < 0 or x > 3 for x in type_):
        code = -1
    return code, removed, n_kept


def judge(rating, n, K, key, G, sizes, X, p, ind, sx, levels):
    o = order(rating)
    X = [[c[i] for i in o] for c in X]
    key, rating = [key[i] for i in o], [rating[i] for i in o]
    L = Mat(K, 1, levels)
    L.put(1, 1, 0.0)
    L.put(2, 1, rating[0] if rating else -1)
    at = 2
    for i in range(n - 1):
        if rating[i + 1] > rating[i]:
            at += 1
            L.put(at, 1, rating[i + 1])
    o = order(key)
    X = [[c[i] for i in o] for c in X]
    rating = [rating[i] for i in o]
    R, I, SX = Mat(n, 1, rating), Mat(G, K, ind), Mat(G, p, sx)
    XM = Mat(n, p, [v for c in X for v in c])
    r = 1
    for g in range(1, G + 1):
        size = int(sizes[g - 1])
        if size == 1:
            for l in range(1, K + 1):
                if L(l) == R(r):
                    for c in range(1, l + 1):
                        I.put(g, c, 1.0)
                    I.put(g, K, 1.0)
        elif size == 2:
            a, b = R(r), R(r + 1)
            for l in range(1, K + 1):
                if L(l) == a and l >= 2:
                    for c in range(1, l):
                        I.put(g, c, 1.0)
                if L(l) == b:
                    for c in range(l, K + 1):
                        I.put(g, c, 1.0)
        for c in range(1, p + 1):
            SX.put(g, c, XM(r, p))
        r += size
    return I.v, SX.v, L.v


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
