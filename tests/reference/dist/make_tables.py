#!/usr/bin/python3
"""Writes the reference tables of the distribution functions (needs mpmath and scipy).

usage: make_tables.py [name ...]      all tables, or the ones named, into the folder of the program

Every probability is an integral of the density, taken numerically with 60 digits by tanh-sinh or
Gauss-Legendre quadrature and, for moderate parameters, held against mpmath's own hypergeometric
evaluation; every quantile is the root of that integral. The library uses neither at such length.
Columns: the arguments (exact doubles in hexadecimal), the value as a sum of two doubles, and the
condition number k: the relative change of the value over a small relative change of the first
argument; for a quantile the smallest over p, 1 - p and, for symmetric laws, p - 1/2; for the
closed formulas the sum over all arguments.
"""
import math
import random
import sys

from mpmath import erfc, erfinv, exp, isnan, log, loggamma, mp, mpf, npdf, pi, sqrt
from scipy import special

from intervals import clopper, ratio, wald, wilson
from laws import check_laws, gamma_tail, log_beta, root, student_tail
from writing import logspace, write


def normal_cdf():
    rng = random.Random(1)
    xs = [-38.4, -38, -37.5, -30, -20, -10, -5, -4.999, -3, -2, -1, -0.68, -0.6, -0.5, -1e-3,
          -1e-10, 0.0, 1e-300, 1e-8, 0.25, 0.6, 0.679, 0.68, 0.7, 1, 1.5, 2, 5, 8, 8.2, 9, 40]
    xs += [rng.uniform(-38, 8) for _ in range(150)] + [rng.uniform(-6, 3) for _ in range(150)]
    rows = []
    for x in sorted(map(float, xs)):
        value = erfc(-mpf(x) / sqrt(mpf(2))) / 2
        rows.append(((x,), value, abs(mpf(x)) * npdf(mpf(x)) / value))
    write("CDFNormalStd", ["x"], rows)


def normal_pdf():
    rng = random.Random(2)
    xs = [0.0, 1, -1, 2.5, 10, 37, 38, -38] + [rng.uniform(-38, 38) for _ in range(150)]
    rows = []
    for x in sorted(map(float, xs)):
        rows.append(((x,), exp(-mpf(x)**2 / 2) / sqrt(2 * pi), mpf(x)**2))
    write("PDFNormalStd", ["x"], rows)


def normal_quantile():
    rng = random.Random(3)
    ps = [1e-300, 1e-200, 1e-100, 1e-50, 1e-20, 1e-12, 1e-5, 0.001, 0.005, 0.01, 0.025, 0.05, 0.1,
          0.2, 0.25, 0.3, 0.4, 0.49, 0.5 - 2**-54, 0.5 + 2**-53, 0.5 + 1e-12, 0.51, 0.6, 0.7, 0.75,
          0.8, 0.9, 0.925, 0.95, 0.975, 0.99, 0.995, 0.9995, 1 - 1e-8, 1 - 2**-52, 1 - 2**-53]
    ps += [10**rng.uniform(-300, 0) for _ in range(80)] + [rng.random() for _ in range(120)]
    ps += [1 - 10**rng.uniform(-15, -1) for _ in range(40)]
    ps += [0.5 + rng.choice((-1, 1)) * 10**rng.uniform(-16, -1) for _ in range(40)]
    rows = []
    for p in sorted(ps):
        if p == 0.5:
            continue
        centre = mpf(p) - mpf(1) / 2
        if abs(centre) < mpf("0.4"):
            value = sqrt(mpf(2)) * erfinv(2 * centre)
        else:
            small = min(mpf(p), 1 - mpf(p))
            tail = lambda x: (erfc(x / sqrt(mpf(2))) / 2, -x * npdf(x))
            value = root(tail, small, -special.ndtri(float(small)))
            value = -value if centre < 0 else value
        near = min(mpf(p), 1 - mpf(p), abs(centre))
        rows.append(((p,), value, near / (abs(value) * npdf(value))))
    write("InvCDFNormalStd", ["p"], rows)


CHI_DF = [0.5, 1, 2, 3, 4, 5, 7.5, 10, 20, 31.9, 32, 33, 40, 100, 317.5, 1000, 1e4, 123456.7, 1e6]


def chi_square_tail():
    rng = random.Random(4)
    cases = []
    for df in CHI_DF:
        cases += [(df * f, df) for f in (0.999, 1.0, 1.001)]
        for z in (-12, -6, -2, -1, -0.2, 0.3, 1, 2, 4, 8, 15, 25, 34):
            x = df * (1 - 2 / (9 * df) + z * math.sqrt(2 / (9 * df)))**3
            if 0 < x:
                cases.append((x, df))
        cases += [(df * 10**-e, df) for e in (1, 2, 4, 8)]
    cases += [(x, 1) for x in (2.705543454095404, 3.841458820694124, 6.634896601021213, 1000)]
    cases += [(x, df) for df in (0.5, 1, 2, 5) for x in (1e-5, 7.9, 8.1, 23.9, 24.1, 100, 700, 1300)]
    cases += [(x, df) for df in (1e-12, 1e-7, 3e-6, 0.01, 0.19, 0.21)
              for x in (1e-3, 0.5, 3, 7.9, 8.1, 23.9, 24.1, 50)]
    cases += [(1e7 + 1e4, 1e7), (1e7 - 1e4, 1e7), (1e10 + 2e5, 1e10), (1e10 - 3e5, 1e10)]
    for _ in range(120):
        df = logspace(rng, 0.5, 1e6)
        cases.append((df * (1 - 2 / (9 * df) + rng.uniform(-3, 8) * math.sqrt(2 / (9 * df)))**3, df))
    rows = []
    for x, df in sorted((float(x), float(df)) for x, df in cases if x > 0):
        _, upper, slope = gamma_tail(mpf(df) / 2, mpf(x) / 2)
        if upper > mpf(10)**-305:
            rows.append(((x, df), upper, slope / upper))
    write("pValChiSq", ["x", "df"], rows)


def probabilities(rng, count):
    ps = [1e-300, 1e-100, 1e-20, 1e-8, 0.001, 0.025, 0.05, 0.3, 0.5, 0.6, 0.9, 0.95, 0.99, 0.999999,
          1 - 2**-53]
    return ps + [10**rng.uniform(-12, 0) for _ in range(count)] + \
        [1 - 10**rng.uniform(-15, 0) for _ in range(count)]


def chi_square_quantile():
    rng = random.Random(5)
    cases = [(p, df) for df in CHI_DF for p in probabilities(rng, 2)]
    cases += [(p, 10**rng.uniform(-0.3, 6)) for p in probabilities(rng, 40)]
    cases += [(p, df) for df in (0.01, 0.1) for p in (0.3, 0.9, 0.999, 1 - 1e-12)]
    rows = []
    for p, df in sorted((float(p), float(df)) for p, df in cases):
        a = mpf(df) / 2
        if p <= 0.5:
            target = mpf(p)
            tail = lambda x: (lambda t: (t[0], t[2]))(gamma_tail(a, x))
            start = special.gammaincinv(float(a), p)
            if not start > 0:
                start = exp((log(target) + loggamma(a + 1)) / a)
        else:
            target = 1 - mpf(p)
            tail = lambda x: (lambda t: (t[1], -t[2]))(gamma_tail(a, x))
            start = special.gammainccinv(float(a), float(target))
        if start < mpf(10)**-290:
            continue
        x = root(tail, target, start)
        _, _, slope = gamma_tail(a, x)
        rows.append(((p, df), 2 * x, min(mpf(p), 1 - mpf(p)) / slope))
    write("InvCDFChiSq", ["p", "df"], rows)


STUDENT_DF = [0.5, 0.9, 1, 2, 3, 5, 10, 29.5, 31.9, 32, 40, 100, 1000, 1e5, 1e7, 1e10]


def student_cdf():
    rng = random.Random(6)
    cases = []
    for df in STUDENT_DF:
        for t in (1e-10, 0.001, 0.1, 0.5, 0.7, 0.99, 1.01, 1.5, 2.3, 3, 3.4, 3.5, 5, 12, 30, 200, 1e6,
                  1e50):
            cases.append((-t, df))
        cases += [(t, df) for t in (1e-5, 0.3, 1, 2, 4)]
    for _ in range(150):
        cases.append((-math.exp(rng.uniform(-3, 4)), 10**rng.uniform(-0.3, 10)))
    cases += [(-t, df) for t in (0.4, 3, 40) for df in (0.01, 1e-5, 1e13, 1e18)]
    cases += [(-1e150, 0.5), (-1e200, 1.5), (-1e300, 0.5), (-1e145, 2)]
    rows = []
    for t, df in sorted((float(t), float(df)) for t, df in cases):
        centre, tail, slope = student_tail(abs(t), df)
        value = tail if t < 0 else mpf(1) / 2 + centre
        if value > mpf(10)**-305:
            rows.append(((t, df), value, slope / value))
    write("CDFStudent", ["t", "df"], rows)


def student_quantile():
    rng = random.Random(7)
    cases = [(p, df) for df in STUDENT_DF for p in probabilities(rng, 2)]
    cases += [(0.5 + s * d, df) for df in STUDENT_DF for s, d in ((1, 1e-15), (-1, 1e-6), (1, 0.01),
                                                                  (-1, 0.1), (1, 0.24), (-1, 0.26))]
    cases += [(p, 10**rng.uniform(-0.3, 10)) for p in probabilities(rng, 40)]
    rows = []
    for p, df in sorted((float(p), float(df)) for p, df in cases):
        p0 = mpf(p)
        centre = p0 - mpf(1) / 2
        if centre == 0:
            continue
        small = min(p0, 1 - p0)
        inner = abs(centre) < mpf("0.2")
        target = abs(centre) if inner else small
        # -log x / log t is df at most: the power law starts the search from below.
        start = -special.stdtrit(df, float(small)) if small > mpf(10)**-15 else mpf(0)
        if not start > 0 or isnan(start) or start == math.inf:
            a = mpf(df) / 2
            normal = sqrt(-2 * log(small))
            power = exp(-(log(small * df) + log_beta(a, mpf(1) / 2)) / df + log(mpf(df)) / 2)
            start = power if power > 30 * normal else min(power, 2 * normal + 1)
            if inner:
                start = abs(centre) * 2.5
        if start > mpf(10)**300:
            continue

        def tail(t):
            middle, upper, slope = student_tail(t, df)
            return (middle, slope) if inner else (upper, -slope)

        t = root(tail, target, start)
        if t > mpf(10)**305:
            continue
        slope = student_tail(t, df)[2]
        rows.append(((p, df), -t if centre < 0 else t, min(small, abs(centre)) / slope))
    write("InvCDFStudent", ["p", "df"], rows)


def kolmogorov():
    rng = random.Random(8)
    xs = [0.05, 0.06, 0.1, 0.2, 0.3, 0.5, 0.828, 0.99, 1.0, 1.01, 1.2238478702091, 1.3580986393,
          1.6276236115, 2, 3, 5, 10] + [logspace(rng, 0.05, 10) for _ in range(150)]
    rows = []
    for x in sorted(map(float, xs)):
        # 1 - 2 (q - q^4 + q^9 - ...) with digits enough for what cancels: for small x the library
        # uses the other series of this theta function.
        u = mpf(x)
        mp.dps = 60 + int(1.3 / (x * x))
        q = exp(-2 * u * u)
        value, change, n = mpf(1), mpf(0), 1
        while True:
            term = 2 * (-1)**n * q**(n * n)
            value += term
            change -= 4 * n * n * u * term
            if abs(term) < mpf(10)**-(mp.dps):
                break
            n += 1
        k = u * change / value
        mp.dps = 60
        rows.append(((x,), +value, k))
    write("CDFKolmogorov", ["x"], rows)


def pearson():
    """Vectors made by a rule, seed and size, that the test repeats."""
    rows = []
    for seed, n, offset, noise in [(s, n, o, e) for s in (1, 2, 3) for n in (2, 3, 10, 300)
                                   for o in (0.0, 1e6) for e in (0.01, 1.0, 30.0)]:
        x, y = pearson_data(seed, n, offset, noise)
        X, Y = [mpf(v) for v in x], [mpf(v) for v in y]
        mx, my = sum(X) / n, sum(Y) / n
        dx, dy = [v - mx for v in X], [v - my for v in Y]
        xx, yy = sum(d * d for d in dx), sum(d * d for d in dy)
        xy = sum(u * v for u, v in zip(dx, dy))
        rho = xy / sqrt(xx * yy)
        k = sum(abs(X[i] * (dy[i] / sqrt(xx * yy) - rho * dx[i] / xx)) +
                abs(Y[i] * (dx[i] / sqrt(xx * yy) - rho * dy[i] / yy)) for i in range(n)) / abs(rho)
        rows.append(((seed, n, offset, noise), rho, k))
    write("V_PearsonRho", ["seed", "n", "offset", "noise"], rows)


def pearson_data(seed, n, offset, noise):
    state = seed
    draws = []
    for _ in range(2 * n):
        state = (state * 6364136223846793005 + 1442695040888963407) % 2**64
        draws.append((state >> 11) * 2.0**-53)
    x = [offset + draws[2 * i] for i in range(n)]
    y = [draws[2 * i] + noise * draws[2 * i + 1] for i in range(n)]
    return x, y


TABLES = {f.__name__: f for f in (normal_cdf, normal_pdf, normal_quantile, chi_square_tail,
                                  chi_square_quantile, student_cdf, student_quantile, kolmogorov,
                                  wald, wilson, ratio, clopper, pearson)}

if __name__ == "__main__":
    check_laws()
    for name in sys.argv[1:] or TABLES:
        TABLES[name]()
