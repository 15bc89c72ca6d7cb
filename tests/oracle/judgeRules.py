"""The rules of interval and judge data."""

from frame import Mat, div, order


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
