"""Oracle of competing risks and validation.

Usage: cuminc.py LIBSURVIVAL LIBDIST [CASES]
"""

import copy
import math
import sys

from frame import EPSILON, INF, MISSING, NAN, Dist, Library, Mat, Run, div, exp, log, root, sort_q, trunc
from lifeRules import inverse, kaplan_meier


def check_status(status, n, codes, count, censor):
    """Returns code, count, recoded."""
    recoded = Mat(n, 1, status)
    raw = Mat(n, 1, status)
    first = None
    for i in range(1, n + 2):
        if raw(i) != censor:
            first = i
            break
    if first is None:
        return -1, count, recoded.v
    recoded.put(first, 1, 1.0)
    count = 1
    codes.put(1, 1, float(raw(first)))
    for i in range(2, n + 1):
        if raw(i) == censor:
            recoded.put(i, 1, 0.0)
            continue
        for k in range(1, count + 1):
            if codes(k) == raw(i):
                recoded.put(i, 1, float(k))
                break
        else:
            count += 1
            codes.put(count, 1, raw(i))
            recoded.put(i, 1, float(count))
    return 0, count, recoded.v


def prepare(time, n, status, flag, stratum, sizes, S):
    if n < 2:
        return -2, None
    total = 0.0
    for x in status:
        total += x
    code = -3 if total == 0 else 0
    if total == n and all(x == status[0] for x in status):
        code = -5
    if S > 1:
        sort_q([status, time], stratum, 1, n, True)
    numbers = [t for t in time if t == t]
    biggest = max(numbers) if numbers else MISSING
    start = 1
    for j in range(S):
        m = trunc(sizes[j])
        sort_q([status], time, start, min(start + m - 1, n), True)
        start += m
    for i in range(n):
        flag[i] = 1.0 if status[i] != 0 else 0.0
    return code, biggest


def incidence(r, time, status, event, alpha, m, offset, K, F, Q, dist):
    z = dist.InvCDFNormalStd(1 - alpha / 2)
    i = offset
    for k in range(1, r + 1):
        i += 1
        if status(i) == event:
            F.put(k, 3, F(k, 3) + 1)
        while i + 1 < offset + m and time(i + 1) == time(i):
            i += 1
            if status(i) == event:
                F.put(k, 3, F(k, 3) + 1)
    for k in range(1, r + 1):
        F.put(k, 1, K(k + 1, 1))
        F.put(k, 2, K(k + 1, 6))
        F.put(k, 4, K(k + 1, 4))
        F.put(k, 5, K(k + 1, 5))
    f = r
    for k in range(1, r):
        if F(k, 3) > 0:
            f = k
            break
    for k in range(1, f):
        for c in range(6, 11):
            F.put(k, c, MISSING)
    e, n, d = (lambda k: F(k, 3)), (lambda k: F(k, 2)), (lambda k: F(k, 4))
    Sb = lambda k: K(k, 8)
    V = {}
    for j in range(f, r + 1):
        if e(j) > 0:
            if j == f:
                I = div(Sb(f) * e(f), n(f))
                F.put(f, 6, I)
                V[f] = div((n(f) - e(f)) * e(f), n(f) * n(f) * n(f))
                F.put(f, 7, V[f])
                s = root(V[f])
                F.put(f, 8, exp(log(I) - z * div(s, I)))
                F.put(f, 9, exp(log(I) + z * div(s, I)))
            else:
                F.put(j, 6, F(j - 1, 6) + div(Sb(j) * e(j), n(j)))
            F.put(j, 10, 1 - K(j + 1, 8))
        else:
            for c in (6, 8, 9, 10):
                F.put(j, c, F(j - 1, c))
    for j in range(f + 1, r + 1):
        if not e(j) > 0:
            for c in (7, 8, 9):
                F.put(j, c, F(j - 1, c))
            continue
        v = 0.0
        Ij = F(j, 6)
        for i in range(f, j + 1):
            if n(i) - d(i) > 0:
                D = Ij - F(i, 6)
                v += (D * D * d(i) / ((n(i) - d(i)) * n(i)) + Sb(i) * Sb(i) * (n(i) - e(i)) * e(i) / (n(i) ** 3)
                      - 2 * D * Sb(i) * e(i) / (n(i) ** 2))
        F.put(j, 7, v)
        s = math.sqrt(v) if v > 0 else 0.0
        F.put(j, 8, exp(log(Ij) - z * div(s, Ij)))
        F.put(j, 9, exp(log(Ij) + z * div(s, Ij)))
    for k in range(f, r + 1):
        v = F(k, 7)
        F.put(k, 7, 0.0 if v <= 0 else root(v))
    for k in range(1, r + 1):
        for c in range(1, 11):
            Q.put(k, c, F(k, c))
    for k in range(f, r + 1):
        for c, x in ((6, F(k, 6)), (8, F(k, 9)), (9, F(k, 8)), (10, F(k, 10))):
            Q.put(k, c, MISSING if x == MISSING else 1 - x)


def nelson_aalen(K, N, r, alpha, ci, method, dist):
    z = dist.InvCDFNormalStd(1 - alpha / 2)
    for k in range(1, r + 1):
        for c, src in ((1, 1), (2, 6), (3, 4), (4, 5)):
            N.put(k, c, K(k + 1, src))
    f = r
    for k in range(1, r):
        if N(k, 3) > 0:
            f = k
            break
    for k in range(1, f):
        for c in range(5, 10):
            N.put(k, c, MISSING)
    for j in range(f, r + 1):
        d, n = N(j, 3), N(j, 2)
        if d > 0:
            if method == 1 or n == 1:
                inc = div(d, n * n)
            elif method == 2:
                inc = div(d * (n - d), n * n * n)
            else:
                inc = div(d * (n - d), n * n * (n - 1))
            H = div(d, n) + (0.0 if j == f else N(j - 1, 5))
            V = inc + (0.0 if j == f else N(j - 1, 6))
            N.put(j, 5, H)
            N.put(j, 6, V)
            s = root(V)
            if ci == 1:
                low, up = H - z * s, H + z * s
            else:
                low, up = div(H, exp(z * div(s, H))), H * exp(z * div(s, H))
            N.put(j, 7, low)
            N.put(j, 8, up)
            N.put(j, 9, exp(-H))
        else:
            for c in range(5, 10):
                N.put(j, c, N(j - 1, c))
    for k in range(1, r + 1):
        N.put(k, 6, root(N(k, 6)))


def power(a, b):
    try:
        x = a ** b
    except ZeroDivisionError:
        return INF
    except OverflowError:
        return INF
    return NAN if isinstance(x, complex) else x


def gray(n, K, time, status, group, event, rho, dist):
    rows = [(t, s, g) for t, s, g in zip(time, status, group)]
    o = sorted(range(n), key=lambda i: rows[i][2])
    rows = [rows[i] for i in o]
    rows.sort(key=lambda x: x[0])
    L = K - 1
    r = [float(sum(1 for x in rows if x[2] == k + 1)) for k in range(K)]
    Sm, F = [1.0] * K, [0.0] * K
    s = [0.0] * L
    V = [[0.0] * L for _ in range(L)]
    Q = [[0.0] * K for _ in range(L)]
    P = [0.0] * K
    Fhat = 0.0
    i = 0
    while i < n:
        j = i
        while j < n and rows[j][0] == rows[i][0]:
            j += 1
        d = [[0.0] * K for _ in range(3)]
        for t, st, g in rows[i:j]:
            cause = 1 if st == event else (2 if st != 0 else 0)
            for k in range(K):
                if g == k + 1:
                    d[cause][k] += 1
        nd1, nd2 = sum(d[1]), sum(d[2])
        S_new, F_new = list(Sm), list(F)
        if nd1 + nd2 > 0:
            T1 = T2 = 0.0
            h = [0.0] * K
            for k in range(K):
                if r[k] > 0:
                    S_new[k] = (r[k] - d[1][k] - d[2][k]) * Sm[k] / r[k]
                    F_new[k] = d[1][k] * Sm[k] / r[k] + F[k]
                    h[k] = r[k] / Sm[k]
                    T1 += h[k]
                    T2 += (1 - F[k]) * r[k] / Sm[k]
            w = power(1 - Fhat, rho)
            for k in range(L):
                if r[k] > 0:
                    s[k] += w * (d[1][k] - nd1 * r[k] * (1 - F[k]) / Sm[k] / T2)
            F2 = Fhat + nd1 / T1
            if nd1 > 0:
                for q in range(K):
                    if r[q] <= 0:
                        continue
                    A = [w * ((1.0 if k == q else 0.0) - h[k] / T1) * h[q] if r[k] > 0 else 0.0 for k in range(L)]
                    D = [a * nd1 / (T1 * (1 - Fhat)) if a != 0 else 0.0 for a in A]
                    for k in range(L):
                        for l in range(k + 1):
                            V[k][l] += D[k] * Q[l][q] + D[l] * Q[k][q] + D[k] * D[l] * P[q]
                    for k in range(L):
                        Q[k][q] += D[k] * P[q]
                    b = 1.0 if S_new[q] == 0 else 1 - (1 - F2) / S_new[q]
                    f = 1 - (nd1 - 1) / (Sm[q] * T1 - 1) if nd1 > 1 else 1.0
                    dd = f * nd1 / (T1 * h[q])
                    for k in range(L):
                        for l in range(k + 1):
                            V[k][l] += A[k] * A[l] * dd
                        Q[k][q] += A[k] * b * dd
                    P[q] += b * b * dd
            for q in range(K):
                if r[q] > 0 and d[2][q] > 0 and S_new[q] > 0:
                    b = (1 - F2) / S_new[q]
                    f = 1 - (d[2][q] - 1) / (r[q] - 1) if d[2][q] > 1 else 1.0
                    v = b * b * f * Sm[q] * Sm[q] * d[2][q] / (r[q] * r[q])
                    P[q] += v
                    # The competing events move Q through A of nothing: only P changes.
            Fhat = F2
        for t, st, g in rows[i:j]:
            for k in range(K):
                if g == k + 1:
                    r[k] -= 1
        Sm, F = S_new, F_new
        i = j
    full = [[V[max(a, b)][min(a, b)] for b in range(L)] for a in range(L)]
    inv = inverse(full, L, EPSILON) if L > 0 else []
    stat = sum((s[a] * sum((inv[a][b] * s[b] for b in range(L)), 0.0) for a in range(L)), 0.0)
    return stat, float(K - 1), dist.pValChiSq(stat, K - 1)


def quantile(values, p):
    if not values:
        return MISSING
    v = sorted(values)
    pos = min(max((len(v) - 1) * p, 0.0), len(v) - 1.0)
    k = math.floor(pos)
    return v[k] if pos == k else v[k] + (pos - k) * (v[k + 1] - v[k])


def boot(B, alpha, stats, out):
    means = []
    for c in range(1, 6):
        t = out(c, 1)
        for b in range(1, B + 1):
            if stats(b, c) > MISSING:
                t += stats(b, c)
        out.put(c, 1, div(t, float(B)))
    for c in range(1, 6):
        t = out(c, 2)
        for b in range(1, B + 1):
            if stats(b, c) > MISSING:
                t += (stats(b, c) - out(c, 1)) ** 2
        out.put(c, 2, div(t, float(B - 1)))
    for c in range(1, 6):
        kept = [stats(b, c) for b in range(1, B + 1) if stats(b, c) > MISSING]
        out.put(c, 3, quantile(kept, alpha * 0.5))
        out.put(c, 4, quantile(kept, 1 - alpha * 0.5))


def concordance(n, p, time, status, X, beta):
    eta = [sum((X[k][i] * beta[k] for k in range(p)), 0.0) for i in range(n)]
    C = U = 0.0
    for i in range(n):
        for j in range(n):
            if time[i] < time[j] and status[i] == 1:
                U += 1
                if eta[j] < eta[i]:
                    C += 1
    return MISSING if U == 0 else C / U


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
