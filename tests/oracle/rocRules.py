"""The rules of one ROC curve: table, area with its three standard errors, 2 x 2 statistics."""

import ctypes
import math

from frame import INFINITE, MISSING, Mat, div, order, root


def bounds(dist, name, *args):
    low, up = ctypes.c_double(), ctypes.c_double()
    getattr(dist.lib, name)(*[ctypes.c_double(a) for a in args], ctypes.byref(low), ctypes.byref(up))
    return low.value, up.value


def proportion_b(dist, method, z, p, m, cc, alpha):
    """Interval of sensitivity and specificity, and the m used."""
    if method == 0:
        return bounds(dist, "GetInfSupWald", z, p, m), m
    if method == 1:
        return bounds(dist, "GetInfSupWald", z, div(p * m + 2, m + 4), m + 4), m + 4
    if method == 2:
        return bounds(dist, "GetInfSupWilson", z, p, m, cc), m
    return bounds(dist, "GetInfSupClopper", p * m, m, alpha), m


def psi(x, y):
    return 1.0 if y - x > 1e-12 else 0.5 if abs(y - x) < 1e-12 else 0.0


def compute(status, n, T, values, weights, rule, alpha, alternative, ci, correction, method, prevalence, costs, out, dist):
    z = abs(dist.InvCDFNormalStd(1 - alpha / 2))
    total = 0.0
    for s in status:
        total += s
    n_pos = int(total)
    n_neg = n - n_pos
    if n_neg * n_pos == 0:
        return -2
    o = order(status)
    status, values_, weights = [status[i] for i in o], [values[i] for i in o], [weights[i] for i in o]
    missing = [v <= MISSING for v in values_]
    gv = [0.0 if b else v for v, b in zip(values_, missing)]
    gw = [0.0 if b else w for w, b in zip(weights, missing)]
    xv, xw, yv, yw = gv[:n_neg], gw[:n_neg], gv[n_neg:], gw[n_neg:]
    o = order(values_)
    v, st, w = [values_[i] for i in o], [status[i] for i in o], [gw[i] for i in o]
    values[:] = v
    wp, wn = [a * b for a, b in zip(w, st)], [a * (1 - b) for a, b in zip(w, st)]
    P = N = 0.0
    for a, b in zip(wp, wn):
        P += a
        N += b
    cc = 0.5 if correction == -1 else 0.0
    k, s = 0, 0
    rows = []
    while s < n:
        e = s + 1
        while e < n and not v[e] > v[e - 1]:
            e += 1
        if not v[s] <= MISSING:
            k += 1
            lo = lambda a, r: sum(a[:r], 0.0)
            hi = lambda a, r: sum(a[r:], 0.0)
            if rule == 2:
                tp, fp, tn, fn = hi(wp, s), hi(wn, s), lo(wn, s), lo(wp, s)
                if k == 1:
                    tn = fn = 0.0
            elif rule == 1:
                tp, fp, tn, fn = lo(wp, e), lo(wn, e), hi(wn, e), hi(wp, e)
            elif rule == 0:
                tp, fp, tn, fn = lo(wp, s), lo(wn, s), hi(wn, s), hi(wp, s)
                if k == 1:
                    tp = fp = 0.0
            else:
                tp, fp, tn, fn = hi(wp, e), hi(wn, e), lo(wn, e), lo(wp, e)
            rows.append((v[s], tp, tn, fp, fn))
        s = e
    for k, (t, tp, tn, fp, fn) in enumerate(rows, 1):
        out["thresholds"].put(k, 1, t) if k <= T else None
        if k > T:
            continue
        for name, x in (("tp", tp), ("tn", tn), ("fp", fp), ("fn", fn)):
            out[name].put(k, 1, x)
        se, sp = div(tp, P), div(tn, N)
        for name, p, m in (("sensitivity", se, P), ("specificity", sp, N)):
            (low, up), _ = proportion_b(dist, ci, z, p, m, cc, alpha)
            for c, x in enumerate((p, low, up), 1):
                out[name].put(k, c, x)
        pi = div(P, P + N) if prevalence <= 0 else prevalence
        d1 = (1 - sp) * (1 - pi) + pi * se
        d2 = pi * (1 - se) + (1 - pi) * sp
        out["pv"].put(k, 1, pi * se / d1 if d1 > 1e-12 else MISSING)
        out["pv"].put(k, 2, (1 - pi) * sp / d2 if d2 > 1e-12 else MISSING)
        if (tp + fn) * fp * (fp + tn) > 1e-12:
            lr = (tp / (tp + fn)) / (fp / (fp + tn))
        elif fp + tn < 1e-12:
            lr = div(tp, tp + fn)
        else:
            lr = INFINITE if tp >= 1e-12 or fp >= 1e-12 else MISSING
        out["lr"].put(k, 1, lr)
        if (tp + fn) * tn * (fp + tn) > 1e-12:
            lr = (fn / (tp + fn)) / (tn / (fp + tn))
        elif fp + tn < 1e-12:
            lr = div(fn, tp + fn)
        else:
            lr = INFINITE if fn >= 1e-12 or tn >= 1e-12 else MISSING
        out["lr"].put(k, 2, lr)
        out["cost"].put(k, 1, tp * costs[0] + fp * costs[1] + fn * costs[2] + tn * costs[3])
        out["points"].put(k, 1, 1 - sp)
        out["points"].put(k, 2, se)
    points = out["points"]
    corner = 0.0 if rule in (1, 2) else 1.0
    points.put(T + 1, 1, corner)
    points.put(T + 1, 2, corner)
    rows = [(points(i, 1), points(i, 2)) for i in range(1, T + 2)]
    nan_last = lambda x: (math.isnan(x), 0.0 if math.isnan(x) else x)
    rows.sort(key=lambda r: nan_last(r[1]))
    rows.sort(key=lambda r: nan_last(r[0]))
    for i, (a, b) in enumerate(rows, 1):
        points.put(i, 1, a)
        points.put(i, 2, b)
    auc = 0.0
    for i in range(1, T + 1):
        auc += (points(i + 1, 1) - points(i, 1)) * (points(i, 2) + points(i + 1, 2)) / 2
    A = auc
    if method == 0:
        q1, q2 = div(A, 2 - A), div(2 * A * A, 1 + A)
        SE = root(div(A * (1 - A) + (P - 1) * (q1 - A * A) + (N - 1) * (q2 - A * A), N * P))
    elif method == 1:
        t1 = t2 = 0.0
        for x, wx in zip(xv, xw):
            for y, wy in zip(yv, yw):
                if abs(x - y) < 1e-12:
                    t1 += wx
                    t2 += wy
        V = (N + P) - t1 * t2
        for x in xv:
            a = sum((wy for y, wy in zip(yv, yw) if y < x), 0.0)
            b = sum((wy for y, wy in zip(yv, yw) if y > x), 0.0)
            V += (a - b) ** 2 - (a + b)
        for y, wy in zip(yv, yw):
            c = d = 0.0
            for x in xv:
                if x > y:
                    c += wy
                elif x < y:
                    d += wy
            V += (c - d) ** 2 - (c + d)
        V = div(V, N * P) - 4 * (N + P - 1) * (A - 0.5) ** 2
        SE = 0.0 if (N - 1) * (P - 1) <= 1e-12 or V <= 1e-12 else 0.5 * root(V / ((N - 1) * (P - 1)))
    else:
        total = 0.0
        v10, v01 = [], [0.0] * len(yv)
        for x, wx in zip(xv, xw):
            row = 0.0
            for j, (y, wy) in enumerate(zip(yv, yw)):
                c = wy * wx * psi(x, y)
                row += c
                v01[j] += c
            total += row
            v10.append(div(row, P))
        v01 = [div(c, N) for c in v01]
        A = div(total, N * P)
        s10 = sum((wx * (c - A) ** 2 for wx, c in zip(xw, v10)), 0.0)
        s01 = sum((wy * (c - A) ** 2 for wy, c in zip(yw, v01)), 0.0)
        SE = root(div(s01, (P - 1) * P) + div(s10, (N - 1) * N))
    S = [auc, SE, max(0.0, auc - z * SE) if SE == SE else None, min(1.0, auc + z * SE) if SE == SE else None]
    if SE > 1e-12:
        d = A - 0.5
        Z = d / SE
        phi = dist.CDFNormalStd(Z)
        if alternative == 0:
            S += [Z, d - z * SE, d + z * SE, 2 * min(phi, 1 - phi), z]
        elif alternative == -1:
            q = dist.InvCDFNormalStd(alpha)
            S += [Z, MISSING, d + abs(q) * SE, phi, q]
        else:
            c = 1 - dist.InvCDFNormalStd(alpha)
            S += [Z, d - abs(c) * SE, INFINITE, 1 - phi, c]
    else:
        S += [MISSING] * 5
    out["auc"].v = S
    return 0


def stats_2x2(t, alpha, ci, correction, prevalence, dist):
    a, c, b, d = t
    n = a + b + c + d
    p11, p12, p21, p22 = (div(x, n) for x in (a, b, c, d))
    S = Mat(13, 3, fill=MISSING)
    z = abs(dist.InvCDFNormalStd(1 - alpha / 2))
    cc = 0.5 if correction == -1 else 0.0

    def A(row, p, m):
        low, up = bounds(dist, "GetInfSupWilson", z, p, m, cc) if ci == 0 else bounds(dist, "GetInfSupWald", z, p, m)
        for k, x in enumerate((p, low, up), 1):
            S.put(row, k, x)

    def ratio(row, value, s):
        S.put(row, 1, value)
        if s is not None:
            low, up = bounds(dist, "GetInfSupLog", z, value, s)
            S.put(row, 2, low)
            S.put(row, 3, up)

    A(1, p11 + p22, n)
    A(2, p21 + p12, n)
    se = sp = 0.0
    if not p11 + p21 <= 1e-12:
        se = p11 / (p11 + p21)
        (low, up), m = proportion_b(dist, ci, z, se, n * (p11 + p21), cc, alpha)
        for k, x in enumerate((se, low, up), 1):
            S.put(3, k, x)
        A(6, 1 - se, m)
    if not p12 + p22 <= 1e-12:
        sp = p22 / (p12 + p22)
        (low, up), m = proportion_b(dist, ci, z, sp, n * (p12 + p22), cc, alpha)
        for k, x in enumerate((sp, low, up), 1):
            S.put(4, k, x)
        A(5, 1 - sp, m)
    A(7, p11 + p21, n)
    pi = p11 + p21 if prevalence <= 0 else prevalence
    if p11 + p12 > 1e-12:
        A(8, div(pi * se, (1 - pi) * (1 - sp) + pi * se), n * (p11 + p12))
    if p21 + p22 > 1e-12:
        A(9, div((1 - pi) * sp, (1 - se) * pi + (1 - pi) * sp), n * (p21 + p22))
    if (p11 + p21) * p12 * (p12 + p22) > 1e-12:
        ratio(10, se / (p12 / (p12 + p22)), root(((1 - se) / p11 + sp / p12) / n) if p11 > 1e-12 else None)
    if (p11 + p21) * p22 * (p12 + p22) > 1e-12:
        ratio(11, (p21 / (p11 + p21)) / sp, root(((1 - sp) / p22 + se / p21) / n) if p21 > 1e-12 else None)
    A_, B_, C_, D_ = n * p11, n * p12, n * p21, n * p22
    if p21 * (p11 + p12) * (p21 + p22) > 1e-12:
        s = None
        if p11 > 1e-12:
            s = (root((S(9, 1) / p21 + (1 - S(8, 1)) / p11) / n) if ci == 0 else
                 root(1 / (A_ + .5) + 1 / (C_ + .5) - 1 / (A_ + B_ + .5) - 1 / (C_ + D_ + .5)))
        ratio(12, (p11 / (p11 + p12)) / (p21 / (p21 + p22)), s)
    if p21 * p12 > 1e-12:
        s = None
        if p11 * p22 > 1e-12:
            s = (root((1 / p22 + 1 / p12 + 1 / p11 + 1 / p21) / n) if ci == 0 else
                 root(1 / (A_ + .5) + 1 / (B_ + .5) + 1 / (C_ + .5) + 1 / (D_ + .5)))
        ratio(13, (p11 * p22) / (p21 * p12), s)
    return S.v, [p11, p21, p11 + p21, p12, p22, p12 + p22, p11 + p12, p21 + p22, 1.0]
