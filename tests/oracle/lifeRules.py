"""The rules of the life family: preparation, both estimators, the strata grid, mean and quartiles,
the grid of times and the comparison tests."""

import math

from frame import EPSILON, INF, MISSING, Mat, div, root, sort_q, trunc


def reorganize(time, n, status, weight, stratum, sizes, k, skip):
    """Returns code, maxTime (None: not written)."""
    if skip != -1:
        if n < 1:
            return -2, None
        for i in range(n):
            if status[i] < 0 or status[i] > 1:
                return -1, None
    if n < 2:
        return -2, None
    s = 0.0
    for x in status:
        s += x
    code = -3 if s == 0 else 0
    if s == n and all(x == status[0] for x in status):
        code = -5
    if k >= 2:
        sort_q([status, weight], stratum, 1, n, False)
        sort_q([time], stratum, 1, n, True)
    best = None
    for t in time:
        if t == t and (best is None or t > best):
            best = t
    start = 1
    for j in range(k):
        m = trunc(sizes[j])
        sort_q([status, weight], time, start, min(start + m - 1, n), True)
        start += m
    return code, MISSING if best is None else best


def kaplan_meier(offset, m, counts, event, time, status, weight, table, intervals):
    """Returns total, nRows."""
    t = lambda i: time(offset + i)
    for i in range(1, m + 1):
        intervals.put(i, 1, t(i))
        intervals.put(i, 2, t(i + 1) if i < m else t(m) + 1.0)
    for c in range(1, 13):
        table.put(1, c, 1.0 if c in (7, 8) else 0.0)
    if counts == -1:
        total = 0.0
        for i in range(1, m + 1):
            total += status(offset + i) + weight(offset + i)
    else:
        total = float(max(m, 0))
    if m <= 0:
        return 0.0, 0
    risk, i, k = total, 1, 0
    S, G = 1.0, 0.0
    while True:
        k += 1
        d = c = 0.0
        first = i
        while True:
            if counts == -1:
                d += status(offset + i)
                c += weight(offset + i)
            elif status(offset + i) == event:
                d += weight(offset + i)
            else:
                c += weight(offset + i)
            last = i
            i += 1
            if last == m or t(i) > t(last):
                break
        table.put(k + 1, 4, d)
        table.put(k + 1, 5, c)
        table.put(k + 1, 3, risk)
        table.put(k + 1, 1, t(first))
        table.put(k + 1, 6, risk)
        if risk <= 0:
            return total, last - 1
        n = risk
        risk = risk - d - c
        if d > 0:
            p = 1 - d / n
            S_new = S * p
            table.put(k + 1, 7, p)
            table.put(k + 1, 8, S_new)
            table.put(k + 1, 9, div(S - S_new, intervals(last, 2) - t(first)))
            if p != 0:
                G = G + div(1 - p, p * n)
            table.put(k + 1, 11, G)
            S = S_new
        else:
            for col in (7, 8, 11):
                table.put(k + 1, col, table(k, col))
        if last == m:
            return total, k


def fill_grid(table, R, j, grid):
    g, G = 1, grid.cols
    for r in range(2, R + 2):
        if table(r, 3) == 0:
            continue
        while g <= G and grid(1, g) != table(r, 1):
            grid.put(3 * j - 1, g, table(r, 3))
            grid.put(3 * j, g, -1.0)
            grid.put(3 * j + 1, g, -1.0)
            g += 1
        if g <= G:
            grid.put(3 * j - 1, g, table(r, 3))
            grid.put(3 * j, g, table(r, 4))
            grid.put(3 * j + 1, g, table(r, 5))
            g += 1


def mean_median(T, alpha, n_obs, r, dist):
    cut = 0.0
    t, d, n, S, G = (lambda k: T(k, 1)), (lambda k: T(k, 4)), (lambda k: T(k, 6)), (lambda k: T(k, 8)), (lambda k: T(k, 11))
    if S(r + 1) > EPSILON and r >= 2:
        for k in range(2, r + 1):
            if d(k + 1) == 0 and t(k) > cut:
                cut = t(k + 1)

    def area(a):
        total = 0.0
        for i in range(a, r + 1):
            if cut == 0 or t(i + 1) < cut:
                total += S(i) * (t(i + 1) - t(i))
        return total

    mean = t(2)
    for k in range(2, r + 1):
        if cut == 0 or t(k + 1) < cut:
            mean += S(k) * (t(k + 1) - t(k))
    out = [mean, 0.0, 0.0, 0.0]
    V = 0.0
    for k in range(2, r + 1):
        if (cut == 0 or t(k + 1) < cut) and abs(n(k) - d(k)) > EPSILON:
            V += div(area(k) ** 2 * d(k), (n(k) - d(k)) * n(k))
    if n_obs - 1 >= 1:
        V = n_obs * V / (n_obs - 1)
        se = root(V)
        z = dist.InvCDFNormalStd(1 - alpha / 2)
        lower = mean - z * se
        out[1:] = [se, 0.0 if lower <= 0 else lower, mean + z * se]
    else:
        out[1:] = [MISSING] * 3
    quartiles = Mat(3, 4)
    chi = dist.InvCDFChiSq(1 - alpha, 1)
    for j in (1, 2, 3):
        q = 0.25 * j
        inside = lambda k: (S(k) - q) ** 2 <= S(k) ** 2 * chi * G(k)
        if S(r + 1) > q:
            est = low = up = MISSING
        else:
            est = low = up = -1
            for k in range(2, r + 1):
                if S(k) >= q > S(k + 1) and d(k + 1) > 0:
                    est = t(k + 1)
                if inside(k) and low == -1:
                    low = t(k)
                if inside(k) and not inside(k + 1) and t(k) > 0 and k >= 3 and up == -1:
                    up = t(k + 1)
            if est == -1:
                est = MISSING
            if low == -1:
                low = 0.0 if d(2) > 0 else MISSING
            if up == -1:
                up = t(r + 1) if d(r + 1) > 0 else MISSING
        for c, x in enumerate([(4 - j) * 0.25, est, low, up]):
            quartiles.put(j, c + 1, x)
    return cut, out, quartiles.v


def load_times(n, times, grid):
    rows = grid.rows
    X = lambda b: grid(1, b)
    for i in range(1, n + 1):
        grid.put(1, i, times(i))
    a = 1
    while a <= n - 1:
        b = a + 1
        while b <= n:
            if X(a) > X(b):
                x, y = X(a), X(b)
                grid.put(1, a, y)
                grid.put(1, b, x)
                b += 1
            elif X(a) == X(b):
                n -= 1
                for c in range(b, n + 1):
                    grid.put(1, c, X(c + 1))
                grid.put(1, n + 1, X(n + 1) + 1.0)
            else:
                b += 1
        a += 1
    return n


def inverse(V, n, eps):
    a = [[V[i][j] for j in range(n)] for i in range(n)]
    b = [[1.0 if i == j else 0.0 for j in range(n)] for i in range(n)]
    for k in range(n):
        p = max(range(k, n), key=lambda i: abs(a[i][k]))
        if not abs(a[p][k]) > eps:
            return [[0.0] * n for _ in range(n)]
        a[k], a[p], b[k], b[p] = a[p], a[k], b[p], b[k]
        pivot = a[k][k]
        a[k] = [x / pivot for x in a[k]]
        b[k] = [x / pivot for x in b[k]]
        for i in range(n):
            if i != k:
                f = a[i][k]
                a[i] = [x - f * y for x, y in zip(a[i], a[k])]
                b[i] = [x - f * y for x, y in zip(b[i], b[k])]
    return b


def tests(X, times, K, alpha, dist):
    D, N = [], []
    for i in range(1, times + 1):
        D.append(sum((max(X(3 * j, i), 0.0) for j in range(1, K + 1)), 0.0))
        N.append(sum((X(3 * j - 1, i) for j in range(1, K + 1)), 0.0))
    out = Mat(3, 4)
    for t in (1, 2, 3):
        w = lambda i: 1.0 if t == 1 else N[i] if t == 2 else root(N[i])
        U = [0.0] * max(K - 1, 0)
        E = 0.0
        for j in range(1, K):
            for i in range(times):
                if N[i] > 0:
                    E = D[i] * X(3 * j - 1, i + 1) / N[i]
                if D[i] > 0:
                    U[j - 1] += (max(X(3 * j, i + 1), 0.0) - E) * w(i)
        V = [[0.0] * (K - 1) for _ in range(K - 1)]
        for j in range(1, K):
            for l in range(1, K):
                for i in range(times):
                    if N[i] * (N[i] - 1) != 0 and D[i] > 0:
                        V[j - 1][l - 1] += (w(i) ** 2 * D[i] * (N[i] - D[i]) / (N[i] - 1) * (X(3 * j - 1, i + 1) / N[i])
                                            * ((1.0 if j == l else 0.0) - X(3 * l - 1, i + 1) / N[i]))
        inv = inverse(V, K - 1, 1e-12) if K > 1 else []
        Q = 0.0
        for j in range(K - 1):
            for l in range(K - 1):
                Q += U[j] * inv[l][j] * U[l]
        out.put(t, 1, Q)
        out.put(t, 2, dist.InvCDFChiSq(1 - alpha, K - 1))
        out.put(t, 3, dist.pValChiSq(Q, K - 1))
        out.put(t, 4, alpha)
    return out.v


def life_table(offset, m, n_intervals, width, time, status, weight, bounds, counts, by_width, event, intervals, table):
    """Returns total, nRows."""
    import math
    t = lambda i: time(offset + i)
    listed = []
    if by_width == -1:
        if width > 0 and width < INF:
            ratio = t(m) / width + 1e-11
            q = math.floor(ratio)
            count = q + 1 + (1 if t(1) > 0 else 0)
            lower = 0.0
            for _ in range(max(count, 0)):
                listed.append((lower, lower + width))
                lower = lower + width
    elif bounds(1) > 0:
        for k in range(n_intervals):
            listed.append((0.0 if k == 0 else bounds(k), bounds(k + 1)))
    else:
        for k in range(n_intervals - 1):
            listed.append((bounds(k + 1), bounds(k + 2)))
    for k, (low, up) in enumerate(listed):
        intervals.put(k + 1, 1, low)
        intervals.put(k + 1, 2, up)
    rows = len(listed)
    total = 0.0
    if counts == -1:
        for i in range(1, m + 1):
            total += status(offset + i) + weight(offset + i)
    else:
        total = float(max(m, 0))
    table.put(1, 6, total)
    table.put(1, 7, 1.0)
    table.put(1, 8, 1.0)
    risk, i = total, 1
    S, G, H = 1.0, 0.0, None
    keep = {}
    n_rows = rows
    previous = None
    for k in range(1, rows + 1):
        low, up = listed[k - 1]
        table.put(k + 1, 1, low)
        d = c = 0.0
        first = True
        while i <= m and (t(i) <= up if first else t(i) < up):
            if counts == -1:
                d += status(offset + i)
                c += weight(offset + i)
            elif status(offset + i) == event:
                d += weight(offset + i)
            else:
                c += weight(offset + i)
            i += 1
            first = False
        table.put(k + 1, 4, d)
        table.put(k + 1, 5, c)
        table.put(k + 1, 3, risk)
        eff = risk - c * 0.5
        table.put(k + 1, 6, eff)
        if eff <= 0:
            n_rows = k - 1
            break
        p = 1 - d / eff
        w = up - low
        if previous is not None:
            S_prev, p_prev, eff_prev = previous
            S = S_prev * p_prev
        table.put(k + 1, 7, p)
        table.put(k + 1, 8, S)
        table.put(k, 9, div((1.0 if previous is None else previous[0]) - S, w))
        if previous is not None:
            if previous[1] > 0:
                G += div(1 - previous[1], previous[1] * previous[2])
            table.put(k + 1, 12, (0.0 if k == 2 else table(k, 12)) + div(1 - previous[1], previous[1] * previous[2]))
        table.put(k + 1, 10, div(2 * (1 - p), (1 + p) * w))
        table.put(k + 1, 11, G)
        previous = (S, p, eff)
        risk -= d + c
    return total, n_rows
