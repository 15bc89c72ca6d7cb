"""Tails of the distributions: integrals of their densities with 60 digits."""

import math

from mpmath import betainc, exp, expm1, gammainc, inf, log, log1p, loggamma, mp, mpf, quad, sqrt

mp.dps = 60
SMALLEST = mpf(2)**-1075


def tail_integral(h, slope, curvature):
    """Integral of exp(-h(v)) over v > 0, h convex, rising from 0 with these two derivatives."""
    depth = mpf(150)
    end = 2 * depth / (slope + sqrt(slope * slope + 2 * depth * curvature))
    while h(end) < depth:
        end *= 2
    points = [mpf(0)]
    step = min(mpf(1), 2 / (slope + sqrt(slope * slope + 2 * curvature)))  # where h is about 1
    while points[-1] < end:
        points.append(min(points[-1] + step, end))
        step = min(step * 3 / 2, max(mpf(1), points[-1] / 16))  # h may bend within a unit
    total, error = quad(lambda v: exp(-h(v)), points, method="gauss-legendre", error=True)
    assert error < total * mpf(10)**-30, (total, error)
    return total


def gap(v):
    """exp(v) - 1 - v"""
    if abs(v) > mpf("0.01"):
        return exp(v) - 1 - v
    term, total, n = v * v / 2, mpf(0), 2
    while abs(term) > mpf(10)**-70 * abs(total) or n < 4:
        total += term
        n += 1
        term *= v / n
        if term == 0:
            break
    return total


# --- the laws: (smaller tail, which one, density times x) -----------------------------------------


def gamma_tail(a, x):
    """Both tails of the gamma law at x and x times its density."""
    a, x = mpf(a), mpf(x)
    slope = exp(a * log(x) - x - loggamma(a))
    if x >= a:
        upper = slope * tail_integral(lambda v: x * gap(v) + (x - a) * v, x - a, x)
        return 1 - upper, upper, slope
    lower = slope * tail_integral(lambda v: x * gap(-v) + (a - x) * v, a - x, x)
    return lower, 1 - lower, slope


def log_beta(a, b):
    extra = 10 + int(max(0, math.log10(float(a + b))))
    mp.dps += extra
    value = loggamma(a) + loggamma(b) - loggamma(a + b)
    mp.dps -= extra
    return value


def beta_tail(a, b, x, y=None):
    """Both tails of the beta law at x and x^a y^b / B(a, b)."""
    a, b, x = mpf(a), mpf(b), mpf(x)
    y = 1 - x if y is None else mpf(y)
    excess = a * y - b * x
    slope = exp(a * log(x) + b * log(y) - log_beta(a, b))
    if excess >= 0:
        h = lambda v: a * v + (a + b) * log1p(x * expm1(-v))
        lower = slope * tail_integral(h, excess, (a + b) * x * y)
        return lower, 1 - lower, slope
    h = lambda v: b * v + (a + b) * log1p(y * expm1(-v))
    upper = slope * tail_integral(h, -excess, (a + b) * x * y)
    return 1 - upper, upper, slope


def student_tail(t, df):
    """P(0 < T < t), P(T > t) and t times the density, t > 0."""
    t, df = mpf(t), mpf(df)
    mp.dps += 15
    x, y = df / (df + t * t), t * t / (df + t * t)
    lower, upper, slope = beta_tail(df / 2, mpf(1) / 2, x, y)
    mp.dps -= 15
    return upper / 2, lower / 2, slope


def check_laws():
    """The integrals against mpmath's own functions where those are reliable."""
    for a, x in ((0.25, 0.1), (0.25, 7), (3.5, 1), (3.5, 20), (40, 30), (40, 90)):
        lower, upper, _ = gamma_tail(a, x)
        assert abs(upper / gammainc(mpf(a), mpf(x), inf, regularized=True) - 1) < mpf(10)**-30
        assert abs(lower / gammainc(mpf(a), 0, mpf(x), regularized=True) - 1) < mpf(10)**-30
    for a, b, x in ((0.25, 0.5, 0.1), (3, 4, 0.3), (3.5, 0.25, 0.9), (20, 90, 0.25), (80, 7.5, 0.8)):
        lower, upper, _ = beta_tail(a, b, x)
        assert abs(lower / betainc(mpf(a), mpf(b), 0, mpf(x), regularized=True) - 1) < mpf(10)**-30
        assert abs(upper / betainc(mpf(a), mpf(b), mpf(x), 1, regularized=True) - 1) < mpf(10)**-30


def root(tail, target, start):
    """The x > 0 where tail(x)[0] is target; tail(x)[1] is its derivative with respect to log x."""
    x = mpf(start)
    for _ in range(200):
        value, change = tail(x)
        step = -log(value / target) * value / change
        x *= exp(max(min(step, 5), -5))
        if abs(step) < mpf(10)**-22:
            return x
    raise ArithmeticError("no root")


# --- tables -----------------------------------------------------------------------------------------
