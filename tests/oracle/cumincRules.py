"""The rules of competing risks and validation: incidence, cumulative hazard, Gray's test, the
quantiles of resampled statistics, concordance."""

import math

from frame import EPSILON, INF, MISSING, NAN, Mat, div, exp, log, root, sort_q, trunc
from lifeRules import inverse


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
