#!/usr/bin/env python3
"""Makes derivatives.csv: gradient and second derivatives of weighted parametric log-likelihoods.

Central differences of the textbook log-likelihood in 50 digits (mpmath), so that nothing of the
formulas under test is used: only densities, survival functions and the model itself. The step is
1e-12, its error therefore near 1e-24. One covariate, one row a case; columns:

  distribution  1 exponential, 2 Weibull, 3 log-normal
  status        1 event, 0 right-, 2 left-, 3 interval-censored
  value         the log-likelihood of the row, weighted, without a Jacobian
  b, i, s       derivatives in coefficient, intercept and sigma (0 for the exponential law)

Needs mpmath. Usage: make_derivatives.py > derivatives.csv
"""

from mpmath import exp, log, mp, mpf, ncdf, npdf, nstr

mp.dps = 50
STEP = mpf(10) ** -12


def survival(z, distribution):
    return ncdf(-z) if distribution == 3 else exp(-exp(z))


def below(z, distribution):
    return ncdf(z) if distribution == 3 else 1 - exp(-exp(z))


def log_likelihood(theta, row):
    distribution, status, weight, time, lower, upper, x = row
    coefficient, intercept, sigma = theta
    z = lambda t: (t - x * coefficient - intercept) / sigma
    if status == 1:
        at = z(time)
        density = log(npdf(at)) if distribution == 3 else at - exp(at)
        return weight * (density - log(sigma))
    if status == 0:
        return weight * log(survival(z(time), distribution))
    if status == 2:
        return weight * log(below(z(time), distribution))
    return weight * log(survival(z(lower), distribution) - survival(z(upper), distribution))


def moved(theta, *steps):
    point = list(theta)
    for index, step in steps:
        point[index] += step
    return point


def differences(theta, row):
    f = lambda *steps: log_likelihood(moved(theta, *steps), row)
    free = range(2 if row[0] == 1 else 3)
    gradient = [mpf(0)] * 3
    hessian = [[mpf(0)] * 3 for _ in range(3)]
    for a in free:
        gradient[a] = (f((a, STEP)) - f((a, -STEP))) / (2 * STEP)
        for b in free:
            hessian[a][b] = (f((a, STEP), (b, STEP)) - f((a, STEP), (b, -STEP)) -
                             f((a, -STEP), (b, STEP)) + f((a, -STEP), (b, -STEP))) / (4 * STEP * STEP)
    return f(), gradient, hessian


def text(value):
    return nstr(value, 20)


# Covariate, coefficient, intercept, sigma, time, lower and upper bound: exact in binary, so that
# the table and the program under test start from the same numbers.
POINTS = [
    ("0.75", "0.5", "1.25", "0.5", "1.125", "0.625", "1.5"),
    ("-1.5", "0.25", "0.5", "1.25", "-1.75", "-2.5", "0.75"),
    ("2.0", "-0.375", "2.0", "0.8125", "2.0", "0.25", "2.25"),
    ("0.5", "1.0", "-0.5", "2.0", "1.5", "-4.0", "0.0"),
]
WEIGHTS = ["1.0", "2.5", "0.125"]


def main():
    print("distribution,status,weight,time,lower,upper,x,coefficient,intercept,sigma,"
          "value,b,i,s,bb,bi,bs,ii,is,ss")
    for distribution in (1, 2, 3):
        for status in (1, 0, 2, 3):
            for weight in WEIGHTS:
                for x, coefficient, intercept, sigma, time, lower, upper in POINTS:
                    sigma = "1.0" if distribution == 1 else sigma
                    row = (distribution, status) + tuple(map(mpf, (weight, time, lower, upper, x)))
                    value, g, h = differences([mpf(coefficient), mpf(intercept), mpf(sigma)], row)
                    print(",".join([str(distribution), str(status), weight, time, lower, upper, x,
                                    coefficient, intercept, sigma] +
                                   [text(v) for v in (value, *g, h[0][0], h[0][1], h[0][2],
                                                      h[1][1], h[1][2], h[2][2])]))


if __name__ == "__main__":
    main()
