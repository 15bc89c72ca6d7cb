"""The rules of parametric regression."""

import math

from frame import EPSILON, INFINITE, MISSING, Mat, div, exp, log, root, order
from lifeRules import inverse

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
