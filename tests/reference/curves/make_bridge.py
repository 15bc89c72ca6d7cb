"""Writes bridge.csv: quantiles of the largest deviation of a Brownian bridge over an interval.

Run in this folder: python3 make_bridge.py     (mpmath 1.3.0; minutes)

hallWellner: sup |W(x)| over [a, b]; its law as a sine series of a motion that ends at +-k, the way
there and back integrated numerically. equalPrecision: sup |W(x)| / sqrt(x (1 - x)) over an interval
of length T = log(b (1 - a) / (a (1 - b))) / 2 in the time of the stationary process; eigenfunctions
1F1(-lambda / 2; 1 / 2; x^2 / 2), their norms and means integrated numerically. 30 digits.
"""

from mpmath import exp, findroot, hyp1f1, log, mp, mpf, npdf, pi, quad, sin, sqrt

mp.dps = 30


def within(k, a, b):
    def part(variance, m):
        if variance == 0:
            return sin(m * pi / 2)
        near = min(k, 6 * sqrt(variance)) / 2
        return quad(lambda y: npdf(y, 0, sqrt(variance)) * sin(m * pi * (y + k) / (2 * k)),
                    [-k, -near, 0, near, k])

    total, m = mpf(0), 1
    while True:
        decay = exp(-m * m * pi**2 * (b - a) / (8 * k * k))
        if decay < mpf(10) ** -18:
            return sqrt(2 * pi) / k * total
        total += decay * part(a, m) * part(1 - b, m)
        m += 2


def eigenvalues(c, length):
    """Those that matter, by sign changes on a grid and bisection to the last digit."""
    end = lambda rate: hyp1f1(-rate / 2, mpf(1) / 2, c * c / 2)
    found, at, step = [], mpf(0), (pi / c) ** 2 / 40
    value = end(at)
    while not found or found[-1] * length < 40:
        to = at + step * (1 + sqrt(at / step) / 4)
        there = end(to)
        if value * there < 0:
            found.append(findroot(end, (at, to), solver="anderson", tol=mpf(10) ** -25))
        at, value = to, there
    return found


def standardized_within(c, length):
    total = mpf(0)
    for rate in eigenvalues(c, length):
        psi = lambda x: hyp1f1(-rate / 2, mpf(1) / 2, x * x / 2)
        cuts = [c * i / 8 for i in range(9)]
        mean = 2 * quad(lambda x: psi(x) * npdf(x), cuts)
        norm = 2 * quad(lambda x: psi(x) ** 2 * npdf(x), cuts)
        total += exp(-rate * length) * mean**2 / norm
    return total


def quantile(law, level, guess):
    return findroot(lambda x: law(x) - level, (guess, guess * mpf("1.02")), tol=mpf(10) ** -14)


with open("bridge.csv", "w", encoding="ascii") as file:
    file.write("kind,level,a,b,quantile\n")
    for level, a, b, guess in [("0.95", "0", "1", "1.36"), ("0.95", "0.1", "0.6", "1.32"), ("0.9", "0.02", "0.3", "0.9"),
                               ("0.99", "0.3", "0.9", "1.6"), ("0.95", "0.6", "0.98", "1.2"), ("0.95", "0", "0.4", "1.2"),
                               ("0.8", "0.45", "0.55", "0.8")]:
        value = quantile(lambda k: within(k, mpf(a), mpf(b)), mpf(level), mpf(guess))
        file.write(f"hallWellner,{level},{a},{b},{mp.nstr(value, 17)}\n")
        file.flush()
    for level, a, b, guess in [("0.95", "0.1", "0.9", "3.03"), ("0.9", "0.02", "0.6", "2.8"), ("0.99", "0.1", "0.3", "3.2"),
                               ("0.95", "0.001", "0.98", "3.3"), ("0.95", "0.3", "0.4", "2.4"), ("0.5", "0.1", "0.9", "2.0")]:
        p, q = mpf(a), mpf(b)
        length = log(q * (1 - p) / (p * (1 - q))) / 2
        value = quantile(lambda c: standardized_within(c, length), mpf(level), mpf(guess))
        file.write(f"equalPrecision,{level},{a},{b},{mp.nstr(value, 17)}\n")
        file.flush()
