"""Tables of intervals of proportions and ratios, from their closed formulas."""

import random

from mpmath import exp, log, mpf, sqrt
from scipy import special

from laws import beta_tail, log_beta, root
from writing import logspace, write


def condition(f, args):
    """Sum of |a df/da| over |f|."""
    value = f(*args)
    if value == 0:
        return mpf(0)
    total = mpf(0)
    for i, a in enumerate(args):
        if a == 0:
            continue
        d = abs(a) * mpf(10)**-25
        up, down = list(args), list(args)
        up[i] += d
        down[i] -= d
        total += abs(a * (f(*up) - f(*down)) / (2 * d))
    return total / abs(value)


def both(name, arguments, cases, lower, upper):
    rows = []
    for side, f in ((0, lower), (1, upper)):
        for case in cases:
            args = [mpf(a) for a in case]
            rows.append(((side,) + tuple(map(float, case)), f(*args), condition(f, args)))
    write(name, ["side"] + arguments, rows)


Z = [1.6448536269514722, 1.959963984540054, 2.5758293035489004]


def wald():
    rng = random.Random(9)
    cases = [(rng.choice(Z), rng.random(), float(rng.randint(1, 500))) for _ in range(80)]
    cases += [(1.96, 0.02, 10.0), (1.96, 0.99, 12.5), (-1.5, 0.3, 40.0)]
    f = lambda sign: lambda z, p, m: p + sign * z * sqrt(p * (1 - p) / m)
    both("GetInfSupWald", ["z", "p", "m"], cases, f(-1), f(1))


def wilson():
    rng = random.Random(10)
    cases = []
    for _ in range(120):
        m = float(rng.randint(1, 400))
        cases.append((rng.choice(Z), rng.randint(0, int(m)) / m, m, rng.choice((0.0, 0.5))))
    cases += [(1.96, 1e-9, 1e6, 0.0), (1.96, 1 - 1e-9, 1e4, 0.0), (3.0, 1e-12, 3.0, 0.0),
              (1.96, 0.35, 17.3, 0.5), (1.96, 0.06, 10.0, 0.5), (1.96, 0.94, 10.0, 0.5)]

    def bound(sign):
        def f(z, p, m, c):
            r = p + sign * c / m
            if sign < 0 and r <= 0:
                return mpf(0)
            if sign > 0 and r >= 1:
                return mpf(1)
            s = z * z / m
            return (2 * r + s + sign * sqrt((2 * r + s)**2 - 4 * (1 + s) * r * r)) / (2 * (1 + s))
        return f

    # Where the bound is constant or has a corner the derivative is that of the constant.
    both("GetInfSupWilson", ["z", "p", "m", "c"], cases, bound(-1), bound(1))


def ratio():
    rng = random.Random(11)
    cases = [(rng.choice(Z), logspace(rng, 1e-3, 1e3), logspace(rng, 1e-3, 10)) for _ in range(80)]
    cases += [(1.96, 2.5, 300.0), (-1.96, 2.5, 0.3), (1.96, 1e-20, 200.0)]
    f = lambda sign: lambda z, r, s: r * exp(sign * z * s)
    both("GetInfSupLog", ["z", "ratio", "s"], cases, f(-1), f(1))


def clopper():
    rng = random.Random(12)
    cases = [(x, m, 0.05) for m in (1, 2, 10, 29, 263) for x in (0, 1, m // 2, m - 1, m)]
    cases += [(81, 263, a) for a in (1e-300, 1e-20, 1e-6, 0.01, 0.1, 0.5, 0.9, 1.0)]
    cases += [(15, 148, 0.05), (0.5, 3, 0.05), (2.5, 3, 0.1), (1e-3, 5, 0.05), (4.999, 5, 0.05),
              (0.01, 1000, 0.01), (7.25, 1234.5, 0.05), (1e6, 1e6 + 5, 0.05), (5, 1e6, 0.05),
              (500000, 1e6, 0.05), (123456.75, 1e6, 1e-10), (3e5, 1e7, 0.01), (5e8, 1e9, 0.05),
              (3500, 7100, 0.05), (2900, 7100, 0.05), (3000, 1e8, 0.05), (1e7, 1.00001e7, 0.05),
              (2, 1e12, 0.05)]
    for _ in range(70):
        m = logspace(rng, 1, 3000)
        cases.append((m * rng.random(), m, 10**rng.uniform(-8, 0)))
    for _ in range(40):
        m = rng.randint(1, 400)
        cases.append((rng.randint(0, m), m, rng.choice((0.01, 0.05, 0.1))))
    rows = []
    for side in (0, 1):
        for x, m, alpha in ((float(x), float(m), float(a)) for x, m, a in cases):
            p = mpf(alpha) / 2
            if (side == 0 and x <= 0) or (side == 1 and x >= m):
                rows.append(((side, x, m, alpha), mpf(side), mpf(0)))
                continue
            # the lower bound, or one minus the upper bound, has lower tail p
            a, b = (mpf(x), mpf(m) - mpf(x) + 1) if side == 0 else (mpf(m) - mpf(x), mpf(x) + 1)
            start = special.betaincinv(float(a), float(b), float(p))
            if not 0 < start < 1:
                start = exp((log(p) + log(a) + log_beta(a, b)) / a)
            if start < mpf(10)**-290:
                continue
            odds = start / (1 - mpf(start))
            tail = lambda o: (lambda t: (t[0], t[2]))(beta_tail(a, b, o / (1 + o), 1 / (1 + o)))
            odds = root(tail, p, odds)
            small, large = odds / (1 + odds), 1 / (1 + odds)
            slope = beta_tail(a, b, small, large)[2]
            value = small if side == 0 else large
            # d log small / d log odds = large, d log large / d log odds = -small
            k = p / slope * (large if side == 0 else small)
            rows.append(((side, x, m, alpha), value, k))
    write("GetInfSupClopper", ["side", "x", "m", "alpha"], rows)
