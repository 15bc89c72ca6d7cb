#!/usr/bin/python3
"""Writes constants.h: every number in it is computed here with 60 digits (needs mpmath).

usage: make_constants.py > constants.h
"""
from mpmath import (bernoulli, cos, erfc, euler, exp, floor, legendre, log, lu_solve, matrix, mp, mpf,
                    pi, polyval, sqrt, zeta)

mp.dps = 60
NODES = 28  # Gauss-Legendre points


def double(x):
    return float(x).hex()


def pair(x):
    """The double-double nearest to x."""
    high = float(x)
    return f"{{{high.hex()}, {float(x - mpf(high)).hex()}}}"


def table(comment, kind, name, entries):
    print(f"\n// {comment}")
    print(f"inline constexpr {kind} {name}[{len(entries)}] = {{")
    for entry in entries:
        print(f"    {entry},")
    print("};")


def constant(comment, name, value):
    print(f"\n// {comment}")
    print(f"inline constexpr DoubleDouble {name} = {pair(value)};")


def rational(f, low, high, top, bottom):
    """P / Q, Q(0) = 1, through f at the Chebyshev points of [low, high]."""
    n = top + bottom + 1
    equations, right = matrix(n, n), matrix(n, 1)
    for i in range(n):
        x = (low + high) / 2 + (high - low) / 2 * cos(pi * (2 * i + 1) / (2 * n))
        y = f(x)
        for j in range(top + 1):
            equations[i, j] = x**j
        for j in range(1, bottom + 1):
            equations[i, top + j] = -y * x**j
        right[i] = y
    s = lu_solve(equations, right)
    return [s[j] for j in range(top + 1)], [mpf(1)] + [s[top + j] for j in range(1, bottom + 1)]


def mills(x):
    """Upper tail of the normal law over its density."""
    return sqrt(pi / 2) * exp(x * x / 2) * erfc(x / sqrt(2))


def rounded(values, bits=12):
    """Values short enough for exact products."""
    scaled = [(v, mpf(2)**(bits - 1 - int(floor(log(v, 2))))) for v in values]
    return [floor(v * s + mpf(1) / 2) / s for v, s in scaled]


def far_mills(z):
    """(x times Mills' ratio - 1) x^2 as a function of z = 1 / x^2"""
    return mpf(-1) if z == 0 else (mills(1 / sqrt(z)) / sqrt(z) - 1) / z


def gauss_legendre(n):
    """Nodes in the upper half of [-1, 1], ascending, with weights; n even."""
    rule = []
    for i in range(n // 2, 0, -1):
        x = cos(pi * (i - mpf(1) / 4) / (n + mpf(1) / 2))
        for _ in range(8):
            slope = n * (x * legendre(n, x) - legendre(n - 1, x)) / (x * x - 1)
            x -= legendre(n, x) / slope
        rule.append((x, 2 / ((1 - x * x) * slope * slope)))
    return rule


print("// Numerical constants. Written by make_constants.py; do not edit.")
print("// clang-format off")
print("#ifndef DIST_CONSTANTS_H_\n#define DIST_CONSTANTS_H_\n")
print('#include "Dist/doubleDouble.h"\n\nnamespace dist {\n\n// clang-format off')

constant("1 / sqrt(2 pi)", "kInvSqrt2Pi", 1 / sqrt(2 * pi))
constant("sqrt(2 pi)", "kSqrt2Pi", sqrt(2 * pi))
constant("pi^2 / 8", "kPiSquaredOver8", pi**2 / 8)
constant("Euler's constant", "kEuler", +euler)
constant("zeta(2) / 2", "kHalfZeta2", zeta(2) / 2)

factorial = [mpf(1)]
for i in range(1, 40):
    factorial.append(factorial[-1] * i)
stirling = [bernoulli(2 * k) / (2 * k * (2 * k - 1)) for k in range(1, 12)]
table("B(2 k) / (2 k (2 k - 1)), k = 1, 2: Stirling's series", "DoubleDouble", "kStirling",
      [pair(c) for c in stirling[:2]])
table("the same for k = 3..11", "double", "kStirlingRest", [double(c) for c in stirling[2:]])

table("(-1)^k / (2^k k! (2 k + 1) sqrt(2 pi)), k = 1..16: central normal law", "double",
      "kNormalCentre",
      [double((-1)**k / (mpf(2)**k * factorial[k] * (2 * k + 1) * sqrt(2 * pi)))
       for k in range(1, 17)])
base_top, base_bottom = map(rounded, rational(mills, mpf("0.6"), mpf(5), 1, 2))
table("Mills' ratio on [0.6, 5] to three digits, numerator", "double", "kMillsBaseTop",
      [double(c) for c in base_top])
table("the same, denominator", "double", "kMillsBaseBottom", [double(c) for c in base_bottom])
top, bottom = rational(
    lambda x: mills(x) - polyval(base_top[::-1], x) / polyval(base_bottom[::-1], x), mpf("0.6"),
    mpf(5), 9, 10)
table("what Mills' ratio has beyond that, numerator", "double", "kMillsTop",
      [double(c) for c in top])
table("the same, denominator", "double", "kMillsBottom", [double(c) for c in bottom])
top, bottom = rational(far_mills, mpf(0), mpf(1) / 25, 6, 6)
table("(x times Mills' ratio - 1) x^2 as a function of 1 / x^2, x >= 5, numerator", "double",
      "kMillsFarTop", [double(c) for c in top])
table("the same, denominator", "double", "kMillsFarBottom", [double(c) for c in bottom])

rule = gauss_legendre(NODES)
table(f"Gauss-Legendre nodes, {NODES} points, the positive ones", "double", "kLegendreNode",
      [double(x) for x, _ in rule])
table("their weights", "double", "kLegendreWeight", [double(w) for _, w in rule])

print("\n// clang-format on\n\n}  // namespace dist\n\n#endif  // DIST_CONSTANTS_H_")
