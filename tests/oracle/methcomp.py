"""Oracle of method comparison.

Usage: methcomp.py LIBSURVIVAL LIBDIST [CASES]
"""

import math
import sys

from frame import EPSILON, INF, INFINITE, MISSING, NAN, Dist, Library, Mat, Run, div, order, root, sort_q, trunc


def mean_sd(values):
    n = float(len(values))
    mean = div(sum(values, 0.0), n)
    return mean, root(div(sum(((x - mean) ** 2 for x in values), 0.0), n - 1))


def bland_altman(first, second, kind, alpha, diff, means, dist):
    used = []
    for i, (x, y) in enumerate(zip(first, second)):
        if x <= MISSING or y <= MISSING:
            continue
        means[i] = (x + y) * 0.5
        if kind == 0:
            diff[i] = y - x
        else:
            bottom = means[i] if kind == 1 else x
            if abs(bottom) <= EPSILON:
                diff[i] = MISSING
                continue
            diff[i] = (y - x) / bottom if kind == 1 else y / bottom
        used.append(diff[i])
    bias, sd = mean_sd(used)
    h = div(sd * dist.InvCDFStudent(1 - alpha / 2, len(used) - 1.0), root(float(len(used))))
    z = dist.InvCDFNormalStd(1 - alpha / 2)
    return bias, sd, bias - h, bias + h, bias - z * sd, bias + z * sd


def repeatability(values, subjects, alpha, dist):
    present = [(v, int(s)) for v, s in zip(values, subjects) if v > MISSING]
    N = len(present)
    mean = div(sum((v for v, _ in present), 0.0), float(N))
    var = div(sum(((v - mean) ** 2 for v, _ in present), 0.0), float(N))
    groups = {}
    for v, s in present:
        groups.setdefault(s, []).append(v)
    ssb = sum(((mean - sum(groups[s]) / len(groups[s])) ** 2 for _, s in present), 0.0)
    ssw = N * var - ssb
    if ssw <= EPSILON:
        return [MISSING] * 3, ssw
    df = float(N - len(groups))
    sd = root(div(ssw, df))
    return [sd, div(sd, root(div(dist.InvCDFChiSq(1 - alpha / 2, df), df))),
            div(sd, root(div(dist.InvCDFChiSq(alpha / 2, df), df)))], ssw


def median(values):
    v = sorted(values)
    n = len(v)
    return MISSING if not n else v[n // 2] if n % 2 else v[n // 2 - 1] + 0.5 * (v[n // 2] - v[n // 2 - 1])


def cusum(residuals, positions, alpha, dist):
    up = sum(1 for r in residuals if r > 1e-12)
    down = sum(1 for r in residuals if r < -1e-12)
    scores = []
    for r in residuals:
        scores.append(root(div(float(down), float(up))) if r > 1e-12 else
                      -root(div(float(up), float(down))) if r < -1e-12 else 0.0)
    total, biggest = 0.0, MISSING
    for i in order(positions):
        total += scores[i]
        biggest = max(biggest, abs(total))
    K = dist.CDFKolmogorov
    scale = root(float(up + down))
    table = {0.01: 1.62762361151, 0.05: 1.35809863932, 0.1: 1.2238478702091}
    if alpha < 0 or alpha > 1:
        critical = MISSING
    elif alpha in table:
        critical = table[alpha] * scale
    else:
        f = lambda h: 1 - K(h) - alpha
        lo, hi = 1.0, 4.0
        while f(lo) < 0:
            lo /= 2
        h = lo
        if f(lo) > 1e-12:
            while f(hi) > 0:
                hi *= 2
            while True:
                h = (lo + hi) / 2
                if f(h) >= 0:
                    lo = h
                else:
                    hi = h
                if abs(f(h)) < 1e-12:
                    break
        critical = h * scale
    return biggest, critical, 1 - K(div(biggest, scale))


def passing_bablok(x, y, alpha, dist):
    n = len(x)
    slopes = []
    for i in range(n):
        for j in range(i + 1, n):
            if abs(x[i] - x[j]) > 1e-12 and abs(y[i] - y[j]) > 1e-12:
                s = (y[i] - y[j]) / (x[i] - x[j])
                if not abs(s + 1) <= 1e-12:
                    slopes.append(s)
    slopes.sort()
    N = len(slopes)
    S = lambda k: slopes[k - 1] if 1 <= k <= N else -1.0
    K = next((i for i, s in enumerate(slopes) if s > -1), N)
    b = (S(N // 2 + K) + S(N // 2 + K + 1)) / 2 if N % 2 == 0 else S((N + 1) // 2 + K)
    W = dist.InvCDFNormalStd(1 - alpha / 2) * root(2.0 * n + 5) * root(n * (n - 1) / 18.0)
    middle = (N - W) / 2 + 0.5
    M1 = math.floor(middle) if math.isfinite(middle) else trunc(middle)
    low, up = S(max(1, M1 + K)), S(N - M1 + 1 + K)
    a, a_low, a_up = (median([v - s * u for u, v in zip(x, y)]) for s in (b, up, low))
    fitted = [a + b * u for u in x]
    res = [v - f for v, f in zip(y, fitted)]
    D = [(v + div(u, b) - a) / root(div(1.0, b * b) + 1) for u, v in zip(x, y)]
    perp = [0.0 if abs(r) <= 1e-12 else math.copysign(1.0, r) * root((v - a) ** 2 + u * u - d * d)
            for r, u, v, d in zip(res, x, y, D)]
    return ([a, a_low, a_up, b, low, up], res, [v - u for u, v in zip(x, y)], perp, fitted,
            list(cusum(res, D, alpha, dist)))


def deming(x, y, w, lam):
    W = sum(w, 0.0)
    xm, ym = div(sum((a * b for a, b in zip(w, x)), 0.0), W), div(sum((a * b for a, b in zip(w, y)), 0.0), W)
    sxx = sum((c * (a - xm) ** 2 for c, a in zip(w, x)), 0.0)
    syy = sum((c * (a - ym) ** 2 for c, a in zip(w, y)), 0.0)
    sxy = sum((c * (a - xm) * (b - ym) for c, a, b in zip(w, x, y)), 0.0)
    d = syy - lam * sxx
    b = div(d + root(d * d + 4 * lam * sxy * sxy), 2 * sxy)
    return ym - b * xm, b


def weighted(subjects, max_iter, tol, m):
    """subjects: (xs, ys, x replicates, y replicates)."""
    def ss(v):
        mean = sum(v) / len(v)
        return sum((a - mean) ** 2 for a in v)
    sx = [div(ss(s[2]), m - 1.0) for s in subjects]
    sy = [div(ss(s[3]), m - 1.0) for s in subjects]
    b = a = 0.0
    w = [0.0] * len(subjects)
    for _ in range(max_iter):
        for i in range(len(subjects)):
            d = sy[i] + b * b * sx[i]
            if d != 0:
                w[i] = 1 / d
        W = sum(w, 0.0)
        X = 0.0 if W == 0 else sum(c * s[0] for c, s in zip(w, subjects)) / W
        Y = 0.0 if W == 0 else sum(c * s[1] for c, s in zip(w, subjects)) / W
        top = bottom = 0.0
        for i, s in enumerate(subjects):
            u, v = s[0] - X, s[1] - Y
            t = w[i] * (b * sx[i] * v + sy[i] * u)
            top += w[i] * t * v
            bottom += w[i] * t * u
        old, b = b, 0.0 if bottom == 0 else top / bottom
        a = Y - b * X
        if abs(b - old) < tol:
            break
    return a, b


def variance(v, unbiased):
    v = [a for a in v if not a <= MISSING]
    m = div(sum(v, 0.0), float(len(v)))
    return div(sum(((a - m) ** 2 for a in v), 0.0), float(len(v)) - (1 if unbiased else 0))


def pearson(x, y):
    n = len(x)
    a, b = sum(x) / n, sum(y) / n
    return div(sum((u - a) * (v - b) for u, v in zip(x, y)), root(sum((u - a) ** 2 for u in x) * sum((v - b) ** 2 for v in y)))


def regression(x, y, ids, has, m, counts, mode, is_weighted, alpha, ratio, tol, max_iter, preds, components, dist):
    n = len(x)
    x, y, ids = list(x), list(y), list(ids)
    out = {"r": pearson(x, y), "yMinusX": [b - a for a, b in zip(x, y)]}
    out["maxAbs"] = max(abs(d) for d in out["yMinusX"])
    xm, ym = sum(x) / n, sum(y) / n
    xs_, ys_ = root(variance(x, False)), root(variance(y, False))
    out["describe"] = [min(x), max(x), xm, xs_, min(y), max(y), ym, ys_]
    if has == -1:
        sort_q([x, y], ids, 1, n, True)
    else:
        m, counts = n, [1] * n
    subjects, at = [], 0
    for c in counts[:m]:
        xr, yr = x[at:at + c], y[at:at + c]
        mx, my = sum(xr) / c, sum(yr) / c
        if has != -1:
            pair = (xr[0], yr[0])
        else:
            pair = {1: (mx, my), 2: (xr[0], yr[0]), 3: (xr[0], my)}.get(mode, (mx, yr[0]))
        subjects.append((*pair, xr, yr))
        at += c
    sx, sy = [s[0] for s in subjects], [s[1] for s in subjects]
    lam = 1 / ratio
    if is_weighted == -1:
        a, b = weighted(subjects, max_iter, tol, m)
        jack = [weighted(subjects[:j] + subjects[j + 1:], max_iter, tol, m - 1) for j in range(m)]
    else:
        out["r"] = pearson(sx, sy)
        a, b = deming(sx, sy, [1.0] * m, lam)
        jack = [deming(sx, sy, [0.0 if i == j else 1.0 for i in range(m)], lam) for j in range(m)]
    fitted = [a + b * (u + ((v - a) - b * u) * b / (b * b + lam)) for u, v in zip(x, y)]
    res = [v - f for v, f in zip(y, fitted)]
    out["fitted"], out["residuals"] = fitted, res
    bias1 = [a + (b - 1) * u for u in x]
    t = dist.InvCDFStudent(1 - alpha / 2, m - 2.0)

    def limits(value, values):
        v = variance(values, False)
        if v <= 0:
            return [MISSING, MISSING], v
        h = t * root(v * (m - 1))
        return [value - h, value + h], v

    la, va = limits(a, [j[0] for j in jack])
    lb, vb = limits(b, [j[1] for j in jack])
    out["line"] = [a] + la + [b] + lb
    out["degenerate"] = min(va, vb) < 1e-20
    if is_weighted != -1:
        c = sum((x[r] - xm) * (y[r] - ym) for r in range(m)) / m
        rest = ys_ ** 2 * xs_ ** 2 - c * c
        A = (1 / m) * (ys_ ** 2 - 2 * b * abs(c) + b * b * xs_ ** 2 + (xm ** 2 * b ** 2 / c ** 2) * rest)
        B = (b * b / (c * c)) / m * rest
        components = [A, B, -B * xm]
        bias2, band = [], [[], []]
        for r in range(m):
            fits = [aj + bj * (x[r] + ((y[r] - aj) - bj * x[r]) * b / (bj * bj + lam)) for aj, bj in jack]
            h = t * root(variance(fits, True) * (m - 1))
            band[0].append(fitted[r] - h)
            band[1].append(fitted[r] + h)
            bias2.append(root(A + B * x[r] ** 2 + 2 * x[r] * components[2]))
        fill = [4.0] * (n - m)
        out["bias"] = bias1 + bias2 + fill
        out["band"] = band[0] + fill + band[1] + fill
    else:
        out["bias"] = bias1 + [4.0] * n
        out["band"] = [4.0] * (2 * n)
    out["components"] = components
    A, B, AB = components
    out["predictions"] = []
    for p in preds:
        h = t * root(2 * AB * p + B * p * p + A)
        out["predictions"] += [a + b * p, a + b * p - h, a + b * p + h]
    D = [(v + div(u, b) - a) / root(div(1.0, b * b) + 1) for u, v in zip(x, y)]
    out["cusum"] = list(cusum(res, D, alpha, dist))
    out["x"], out["y"], out["ids"] = x, y, ids
    return out


def main():
    lib, dist = Library(sys.argv[1]), Dist(sys.argv[2])
    cases = int(sys.argv[3]) if len(sys.argv) > 3 else 1000
    run = Run()
    rnd = run.random
    alphas = [0.05, 0.01, 0.1, 0.2, 0.5, 0.9]
    odd_alphas = alphas + [0.0, 1.0, 1.5, -0.5, float("nan")]

    def pairs(n):
        x = [round(rnd.uniform(1, 20), rnd.choice([0, 1, 6])) for _ in range(n)]
        sign = 1 if rnd.random() < .8 else -1
        return x, [sign * u * rnd.choice([1, 1.1]) + round(rnd.gauss(0, 1), rnd.choice([0, 2, 6])) for u in x]

    for _ in range(cases):
        n = rnd.choice([0, 1, 2, 3, 8])
        x, y = pairs(n)
        x = [rnd.choice([v, v, v, 0.0, MISSING, -v]) for v in x]
        y = [rnd.choice([v, v, v, v, MISSING, -u]) for u, v in zip(x, y)]
        kind, alpha = rnd.choice([0, 1, 2, 7]), rnd.choice(alphas)
        diff, means = [4.0] * n, [4.0] * n
        want = bland_altman(x, y, kind, alpha, diff, means, dist)
        got, arr = lib.call("Cpp_BlandAltman", [("D", x), ("D", y), ("i", n), ("i", kind), ("d", alpha), ("D", [4.0] * n),
                                               ("D", [4.0] * n)] + [("D", [9.0])] * 6)
        run.compare("Cpp_BlandAltman", (x, y, kind, alpha),
                    [("code", 0), ("differences", diff), ("means", means), ("numbers", list(want))],
                    [("code", got), ("differences", arr[2]), ("means", arr[3]), ("numbers", [a[0] for a in arr[4:]])],
                    relative=1e-11, absolute=1e-13)

    for _ in range(cases):
        k = rnd.choice([1, 2, 5])
        subjects = [float(rnd.randrange(1, k + 1)) for _ in range(rnd.choice([3, 6, 12]))] + [float(i + 1) for i in range(k)]
        values = [rnd.choice([rnd.gauss(10, 2), 3.0, MISSING]) if rnd.random() < .3 else rnd.gauss(10, 2) for _ in subjects]
        want, ssw = repeatability(values, subjects, 0.05, dist)
        if abs(ssw) < 1e-9:
            continue
        _, arr = lib.call("Cpp_GetRepeatability", [("D", values), ("i", len(values)), ("D", subjects), ("d", 0.05)] +
                          [("D", [9.0])] * 3, restype=None)
        run.compare("Cpp_GetRepeatability", (values, subjects), [("sd", want)], [("sd", [a[0] for a in arr[2:]])],
                    relative=1e-9)

    for _ in range(cases):
        n = rnd.choice([0, 1, 2, 3, 4, 5, 9, 20])
        x, y = pairs(n)
        alpha = rnd.choice(odd_alphas)
        want = passing_bablok(x, y, alpha, dist)
        blank = [9.0] * n
        got, arr = lib.call("VB_PassingBablok", [("D", x), ("i", n), ("D", y), ("d", alpha)] + [("D", [9.0])] * 6 +
                            [("D", blank)] * 4 + [("D", [9.0])] * 3)
        if min([abs(r) for r in want[1]] or [1]) < 1e-9 and any(1e-14 < abs(r) < 1e-9 for r in want[1]):
            continue  # the sign of rounding noise
        run.compare("VB_PassingBablok", (x, y, alpha),
                    [("code", 0), ("line", want[0]), ("residuals", want[1]), ("yMinusX", want[2]), ("fitted", want[4]),
                     ("cusum", want[5])],
                    [("code", got), ("line", [a[0] for a in arr[2:8]]), ("residuals", arr[8]), ("yMinusX", arr[9]),
                     ("fitted", arr[11]), ("cusum", [a[0] for a in arr[12:]])], relative=1e-10, absolute=1e-11)

    for _ in range(cases):
        m = rnd.choice([3, 4, 6, 12])
        has, is_weighted = rnd.choice([-1, 0, 1]), rnd.choice([-1, 0, 1])
        counts = [rnd.choice([1, 2, 3]) for _ in range(m)] if has == -1 else [1] * m
        ids = [float(g + 1) for g in range(m) for _ in range(counts[g])]
        rnd.shuffle(ids)
        n = len(ids)
        x, y = pairs(n)
        mode, alpha, ratio = rnd.choice([1, 2, 3, 4]), rnd.choice(alphas), rnd.choice([1.0, 0.5, 4.0])
        tol, max_iter = 1e-8, rnd.choice([0, 1, 20])
        preds, components = [2.0, 15.0], [0.3, 0.01, -0.02]
        try:
            w = regression(x, y, ids, has, m, counts, mode, is_weighted, alpha, ratio, tol, max_iter, preds, components, dist)
        except ZeroDivisionError:
            continue
        if w["degenerate"] or any(0 < abs(r) < 1e-9 for r in w["residuals"]):
            continue
        blank, two, one = [4.0] * n, [4.0] * (2 * n), [("D", [9.0])]
        got, arr = lib.call("VB_DemingRegression",
                            [("D", x), ("i", n), ("D", y), ("D", ids), ("s", has), ("i", m), ("I", counts), ("i", mode),
                             ("s", is_weighted), ("d", alpha), ("d", ratio), ("d", tol), ("i", max_iter), ("d", preds[0]),
                             ("d", preds[1])] + one * 6 + [("D", blank), ("D", two), ("D", blank), ("D", blank), ("D", two)] +
                            one * 3 + one + one * 8 + one + one * 6 + [("D", [c]) for c in components])
        s = lambda i, j: [a[0] for a in arr[i:j]]
        run.compare("VB_DemingRegression", (x, y, ids, has, counts, mode, is_weighted, alpha, ratio, max_iter),
                    [("code", 0), ("x", w["x"]), ("y", w["y"]), ("ids", w["ids"]), ("line", w["line"]),
                     ("yMinusX", w["yMinusX"]), ("bias", w["bias"]), ("residuals", w["residuals"]), ("fitted", w["fitted"]),
                     ("band", w["band"]), ("cusum", w["cusum"]), ("r", w["r"]), ("describe", w["describe"]),
                     ("maxAbs", w["maxAbs"]), ("predictions", w["predictions"]), ("components", w["components"])],
                    [("code", got), ("x", arr[0]), ("y", arr[1]), ("ids", arr[2]), ("line", s(4, 10)),
                     ("yMinusX", arr[10]), ("bias", arr[11]), ("residuals", arr[12]), ("fitted", arr[13]),
                     ("band", arr[14]), ("cusum", s(15, 18)), ("r", arr[18][0]), ("describe", s(19, 27)),
                     ("maxAbs", arr[27][0]), ("predictions", s(28, 34)), ("components", s(34, 37))],
                    relative=1e-7, absolute=1e-8)
    run.finish()


if __name__ == "__main__":
    main()
