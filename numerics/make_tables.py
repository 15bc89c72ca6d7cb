#!/usr/bin/python3
"""Writes the tables and polynomials of the elementary functions (needs mpmath).

usage: make_tables.py       tables.h, doubleDoubleTables.h and gammaTables.h beside the program

A polynomial goes through the function at the Chebyshev points of its interval, which is within a
small factor of the best one of its degree; the coefficients are then rounded to doubles.
"""
import contextlib
import os

from mpmath import (bernoulli, cos, euler, expm1, factorial, floor, hyp1f1, log, log1p, lu_solve,
                    matrix, mp, mpf, pi, zeta)

mp.dps = 60
STEPS = 128  # entries of either table
LOG_START = 0x3fe60000_00000000  # bits of 0.6875: fractions are taken from [0.6875, 1.375)


def hexadecimal(x):
    return float(x).hex()


def pair(x):
    """The double-double nearest to x."""
    high = float(x)
    return f"{{{high.hex()}, {float(x - mpf(high)).hex()}}}"


def below(x, unit):
    """The multiple of `unit` nearest to x."""
    return floor(x / unit + mpf(1) / 2) * unit


def interpolated(f, low, high, count):
    """`count` coefficients of the polynomial through f at the Chebyshev points of [low, high]."""
    equations, right = matrix(count, count), matrix(count, 1)
    for i in range(count):
        x = (low + high) / 2 + (high - low) / 2 * cos(pi * (2 * i + 1) / (2 * count))
        for j in range(count):
            equations[i, j] = x**j
        right[i] = f(x)
    return list(lu_solve(equations, right))


def table(comment, kind, name, entries):
    print(f"\n// {comment}")
    print(f"inline constexpr {kind} {name}[{len(entries)}] = {{")
    for entry in entries:
        print(f"    {entry},")
    print("};")


def constant(comment, name, value):
    print(f"\n// {comment}")
    print(f"inline constexpr double {name} = {hexadecimal(value)};")


def long_constant(comment, name, value):
    print(f"\n// {comment}")
    print(f"inline constexpr DoubleDouble {name} = {pair(value)};")


def exp_tables():
    print("struct ExpEntry {\n  double value, rest;\n};")
    step = log(2) / STEPS
    constant(f"{STEPS} / ln 2", "kExpInverseStep", 1 / step)
    # The number of steps has 18 bits at most, so that its product with 34 bits is exact.
    high = below(step, mpf(2)**-41)
    constant("ln 2 / 128, its first 34 bits and the rest", "kExpStepHigh", high)
    print(f"inline constexpr double kExpStepLow = {hexadecimal(step - high)};")
    rows = []
    for j in range(STEPS):
        exact = mpf(2)**(mpf(j) / STEPS)
        value = mpf(float(exact))
        rows.append(f"{{{hexadecimal(value)}, {hexadecimal(exact / value - 1)}}}")
    table("2^(j / 128) = value (1 + rest)", "ExpEntry", "kExpTable", rows)
    reach = step / 2
    table("(exp(r) - 1 - r) / r^2, |r| <= ln 2 / 256", "double", "kExpPolynomial",
          [hexadecimal(c) for c in interpolated(lambda r: (expm1(r) - r) / r**2, -reach, reach, 4)])
    table("(exp(x) - 1 - x - x^2 / 2) / x^3 = 1F1(1; 4; x) / 6, |x| <= 1 / 8", "double",
          "kExpm1Polynomial",
          [hexadecimal(c) for c in interpolated(
              lambda x: hyp1f1(1, 4, x) / 6, -mpf(1) / 8, mpf(1) / 8, 9)])


def fraction_of(bits):
    """The double of these bits, brought into [0.6875, 1.375)."""
    mantissa = 1 + mpf(bits & (2**52 - 1)) / 2**52
    return mantissa / 2 if mantissa >= mpf(11) / 8 else mantissa


def log_tables():
    print("\nstruct LogEntry {\n  double inverse, high, low;\n};")
    # The product of the exponent and 32 bits is exact, and so is its sum with a tabulated
    # logarithm: all are multiples of 2^-42 below 2^11.
    unit = mpf(2)**-42
    high = below(log(2), unit)
    constant("ln 2, a multiple of 2^-42 and the rest", "kLn2High", high)
    print(f"inline constexpr double kLn2Low = {hexadecimal(log(2) - high)};")
    rows = []
    for i in range(STEPS):
        first = fraction_of(LOG_START + (i << 45))
        last = fraction_of(LOG_START + ((i + 1) << 45) - 1)
        # Both intervals at 1 share the inverse 1, which keeps log(x) relatively exact around it.
        # The inverses have 16 bits after the point: their products with half a fraction are exact.
        inverse = mpf(1) if first == 1 or 0 < 1 - last < mpf(2)**-50 else below(
            2 / (first + last), mpf(2)**-16)
        value = -log(inverse)
        top = below(value, unit)
        rows.append(f"{{{hexadecimal(inverse)}, {hexadecimal(top)}, {hexadecimal(value - top)}}}")
    table("an inverse c of each interval's middle, -log(c) as a multiple of 2^-42 and the rest",
          "LogEntry", "kLogTable", rows)
    table("(log(1 + r) - r + r^2 / 2) / r^3, -0.004 <= r <= 1 / 128", "double", "kLogPolynomial",
          [hexadecimal(c) for c in interpolated(
              lambda r: (log1p(r) - r + r**2 / 2) / r**3, -mpf(4) / 1000, mpf(1) / 128, 6)])


def double_double_tables():
    long_constant("ln 2", "kLn2", log(2))
    table("1 / k!, k = 0..9", "DoubleDouble", "kInverseFactorial",
          [pair(1 / factorial(k)) for k in range(10)])
    table("1 / (k + 10)!, k = 0..5", "double", "kInverseFactorialRest",
          [hexadecimal(1 / factorial(k + 10)) for k in range(6)])
    table("1 / (k + 3)!, k = 0..12", "double", "kExpTail",
          [hexadecimal(1 / factorial(k + 3)) for k in range(13)])
    table("1 / (2 k + 3), k = 0..9: atanh(s) = s + s^3 (1/3 + s^2/5 + ...)", "DoubleDouble",
          "kAtanh", [pair(mpf(1) / (2 * k + 3)) for k in range(10)])
    table("1 / (2 k + 23), k = 0..9", "double", "kAtanhRest",
          [hexadecimal(mpf(1) / (2 * k + 23)) for k in range(10)])


def gamma_tables():
    long_constant("1 - Euler's constant", "kOneMinusEuler", 1 - euler)
    long_constant("log(2 pi) / 2", "kHalfLog2Pi", log(2 * pi) / 2)
    long_constant("pi", "kPi", +pi)
    taylor = [(-1)**k * (zeta(k) - 1) / k for k in range(2, 48)]
    table("(-1)^k (zeta(k) - 1) / k, k = 2..21: log(Gamma(2 + e)) = (1 - Euler) e + these e^k",
          "DoubleDouble", "kLogGamma", [pair(c) for c in taylor[:20]])
    table("the same for k = 22..47", "double", "kLogGammaRest",
          [hexadecimal(c) for c in taylor[20:]])
    table("B(2 k) / (2 k (2 k - 1)), k = 1..9: Stirling's series", "double", "kStirlingSeries",
          [hexadecimal(bernoulli(2 * k) / (2 * k * (2 * k - 1))) for k in range(1, 10)])
    table("(-1)^k / (2 k + 1)!, k = 0..14: the sine", "DoubleDouble", "kSine",
          [pair((-1)**k / factorial(2 * k + 1)) for k in range(15)])


def header(name, guard, about, double_doubles, *parts):
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), name)
    with open(path, "w", encoding="ascii") as out, contextlib.redirect_stdout(out):
        print(f"// {about} Written by make_tables.py; do not edit.\n// clang-format off")
        print(f"#ifndef NUMERICS_{guard}_H_\n#define NUMERICS_{guard}_H_\n")
        if double_doubles:
            print('#include "numerics/doubleDouble.h"\n')
        print("namespace survmeth::numerics {\n" if not double_doubles else
              "namespace survmeth::numerics {")
        for part in parts:
            part()
        print(f"\n}}  // namespace survmeth::numerics\n\n#endif  // NUMERICS_{guard}_H_")


header("tables.h", "TABLES", "Tables of exp and log.", False, exp_tables, log_tables)
header("doubleDoubleTables.h", "DOUBLE_DOUBLE_TABLES",
       "Coefficients of exp and log in double-double.", True, double_double_tables)
header("gammaTables.h", "GAMMA_TABLES", "Coefficients of lgamma.", True, gamma_tables)
