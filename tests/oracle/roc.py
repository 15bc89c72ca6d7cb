"""Oracle of the ROC family: table, area with its three standard errors, 2 x 2 statistics, labelled
tables, comparison.

Usage: roc.py LIBSURVIVAL LIBDIST [CASES]
"""

import copy
import ctypes
import math
import sys

from frame import INF, INFINITE, MISSING, NAN, Dist, Library, Mat, Run, div, order, root


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


def compare(status, n, V, weights, sizes, k, alpha, paired, aucs, variances, selected, out, dist):
    weights = [1.0] + weights[1:]
    z = dist.InvCDFNormalStd(1 - alpha / 2)
    for name in ("diff", "z", "half", "cov", "p"):
        out[name] = Mat(k, k, fill=MISSING)
    out["sig"] = Mat(k, k, fill=-2147483648)
    var = list(variances)

    def test(i, j, s, cdf):
        diff = aucs[i] - aucs[j]
        out["diff"].put(i + 1, j + 1, diff)
        out["diff"].put(j + 1, i + 1, -diff)
        return diff

    if paired == -1:
        o = order(status)
        st = [status[i] for i in o]
        w0 = [weights[i] for i in o]
        vals = [[V[t][i] for i in o] for t in range(k)]
        n_neg = n - int(sum(status))
        cov = {}
        for i in range(k):
            for j in range(i, k):
                if selected[i] != 1 or selected[j] != 1:
                    continue
                w = [0.0 if vals[i][r] <= MISSING or vals[j][r] <= MISSING else w0[r] for r in range(n)]
                N, P = sum(w[:n_neg], 0.0), sum(w[n_neg:], 0.0)
                comp = []
                for t in (i, j):
                    v10, v01, total = [0.0] * n_neg, [0.0] * (n - n_neg), 0.0
                    for a in range(n_neg):
                        for b in range(n - n_neg):
                            c = w[a] * w[n_neg + b]
                            if c > 1e-12:
                                c *= psi(vals[t][a], vals[t][n_neg + b])
                                v10[a] += c
                                v01[b] += c
                                total += c
                    comp.append(([div(x, P) for x in v10], [div(x, N) for x in v01], div(total, N * P)))
                (x10, x01, xa), (y10, y01, ya) = comp
                s10 = div(sum((w[a] * (x10[a] - xa) * (y10[a] - ya) for a in range(n_neg)), 0.0), N - 1)
                s01 = div(sum((w[n_neg + b] * (x01[b] - xa) * (y01[b] - ya) for b in range(n - n_neg)), 0.0), P - 1)
                cov[i, j] = div(s10, N) + div(s01, P)
                out["cov"].put(i + 1, j + 1, cov[i, j])
                out["cov"].put(j + 1, i + 1, cov[i, j])
        for i in range(k):
            if selected[i] == 1:
                var[i] = root(cov[i, i])
                out["p"].put(i + 1, i + 1, 1.0)
            else:
                var[i] = MISSING
        for i in range(k):
            for j in range(i + 1, k):
                if (i, j) not in cov:
                    continue
                s = root(cov[i, i] + cov[j, j] - 2 * cov[i, j])
                diff = test(i, j, s, None)
                if s > 0:
                    fill(out, i, j, diff, s, z, dist.CDFNormalStd(abs(diff) / s), alpha)
    else:
        for i in range(k):
            if selected[i] == 1:
                out["p"].put(i + 1, i + 1, 1.0)
            for j in range(i + 1, k):
                if selected[i] != 1 or selected[j] != 1 or not variances[i] > 0 or not variances[j] > 0:
                    continue
                ni, nj = int(sizes[i]), int(sizes[j])
                a, b = variances[i] / ni, variances[j] / nj
                s = root(a + b)
                df = div((a + b) ** 2, div(b * b, nj - 1.0) + div(a * a, ni - 1.0))
                diff = test(i, j, s, None)
                for x, y in ((i, j), (j, i)):
                    out["cov"].put(x + 1, y + 1, 0.0)
                if s > 0:
                    fill(out, i, j, diff, s, abs(dist.InvCDFStudent(1 - alpha / 2, df)),
                         dist.CDFStudent(abs(diff) / s, df), alpha)
    return var


def fill(out, i, j, diff, s, critical, cdf, alpha):
    out["z"].put(i + 1, j + 1, diff / s)
    out["z"].put(j + 1, i + 1, -(diff / s))
    out["half"].put(i + 1, j + 1, critical * s)
    p = 2 * min(cdf, 1 - cdf)
    for x, y in ((i, j), (j, i)):
        out["p"].put(x + 1, y + 1, p)
        out["sig"].put(x + 1, y + 1, 1 if p < alpha / 2 else 0)


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
