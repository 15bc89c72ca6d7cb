#!/usr/bin/python3
"""Writes the reference tables of the elementary functions (needs mpmath).

usage: make_tables.py [name ...]      all tables, or the ones named, into the folder of the program

Arguments: the ends of every range; from each of several regions some at random and those, of many
thousand, whose value is hardest to round (next to the middle between two doubles); published
worst cases for correct rounding. Columns: the arguments (exact doubles in hexadecimal), the double
nearest to the value, and how far above it the value is, in units of its last place; 60 digits.
"""
import math
import os
import random
import sys

from mpmath import exp, expm1, floor, frexp, log, log1p, loggamma, mp, mpf

mp.dps = 60
HERE = os.path.dirname(os.path.abspath(__file__))
TRIED, HARD, DRAWN = 20000, 80, 50  # for each region of a function

# Lefevre & Muller, Worst cases for correct rounding of the elementary functions in double
# precision, Proc. 15th IEEE Symposium on Computer Arithmetic (2001) 111-118, and arguments of the
# same kind; hardness() below confirms each.
WORST_EXP = ["-0x1.12d31a20fb38bp+5", "-0x1.a2fefefd580dfp-13", "0x1.1d5c2daebe367p+4",
             "-0x1.ed318efb627eap-27", "0x1.9e9cbbfd6080bp-31", "0x1.83d4bcdebb3f4p+2",
             "-0x1.02393d5976769p+1", "-0x1.22e24fa3d5cf9p-1", "0x1.c7206c1b753e4p+8",
             "0x1.accfbe46b4ef0p-1"]
WORST_EXPM1 = ["0x1.83d4bcdebb3f4p+2", "0x1.accfbe46b4ef0p-1"]
WORST_LOG = ["0x1.9476e304cd7c7p-384", "0x1.26e9c4d327960p-232", "0x1.613955dc802f8p-35",
             "0x1.baded30cbf1c4p-1", "0x1.c90810d354618p+245", "0x1.62a88613629b6p+678",
             "0x1.ac50b409c8aeep+8"]
WORST_LOG1P = ["0x1.ab50b409c8aeep+8"]


def unit(value):
    """The distance of neighbouring doubles at the value."""
    return mpf(2)**max(int(frexp(value)[1]) - 53, -1074)


def hardness(value):
    """Distance of the value from the middle between two doubles, in ulp."""
    scaled = abs(value) / unit(value)
    return abs(scaled - floor(scaled) - mpf(1) / 2)


def is_worst_case(value):
    """Whether 50 bits after the last place, or after the one behind it, are the same."""
    doubled = abs(value) / unit(value) * 2
    return abs(doubled - floor(doubled + mpf(1) / 2)) < mpf(2)**-50


def write(name, arguments, rows):
    """rows: tuples of arguments and their value."""
    with open(os.path.join(HERE, name + ".csv"), "w", encoding="ascii") as out:
        print(",".join([*arguments, "value", "above"]), file=out)
        for args, value in rows:
            high = float(value)
            assert math.isfinite(high), args
            above = float((value - mpf(high)) / unit(mpf(high)))
            print(",".join([*(a.hex() for a in args), high.hex(), f"{above:.12f}"]), file=out)
    print(name, len(rows))


def table(name, function, arguments, draws, fixed, worst, tried=TRIED):
    """A table of `function`. Each of `draws` gives argument tuples of a region, `fixed` and `worst`
    are such tuples."""
    for args in worst:
        assert is_worst_case(function(*map(mpf, args))), args
    kept = {args: function(*map(mpf, args)) for args in [*fixed, *worst]}
    for draw in draws:
        drawn = {}
        while len(drawn) < tried:
            args = draw()
            value = function(*map(mpf, args))
            if value != 0 and abs(value) < mpf(2)**1023:
                drawn[args] = value
        for args in sorted(drawn, key=lambda a: hardness(drawn[a]))[:HARD] + list(drawn)[:DRAWN]:
            kept[args] = drawn[args]
    write(name, arguments, sorted(kept.items()))


def singles(texts):
    return [(float.fromhex(text) if isinstance(text, str) else float(text),) for text in texts]


def both(values):
    return [v for value in values for v in (value, -value)]


def power_of_two(source, low, high):
    """A double of either sign, its exponent drawn evenly from low..high - 1."""
    return source.choice((-1.0, 1.0)) * math.ldexp(source.uniform(1, 2), source.randrange(low, high))


def exp_table(source):
    # Middles between the steps of the reduction, where the rest is largest.
    middle = lambda: (source.randrange(-128000, 128000) + 0.5) * math.log(2) / 128
    table("exp", exp, ["x"],
          [lambda: (source.uniform(-745, 709),), lambda: (source.uniform(-2, 2),),
           lambda: (source.uniform(-745, -700),), lambda: (power_of_two(source, -60, 9),),
           lambda: (middle(),)],
          singles(["0x1.62e42fefa39efp+9", "-0x1.6232bdd7abcd2p+9", "-0x1.74385446d71c3p+9",
                   "-0x1.74910d52d3051p+9", -700, -709, 709,
                   *both([2.0**-54, 2.0**-53, 2.0**-52, 1e-300, 5e-324, 1])]),
          singles(WORST_EXP))


def log_table(source):
    # The ends of the intervals of the reduction.
    end = lambda: math.ldexp(1 + source.randrange(128) / 128, source.randrange(-3, 3)) * (
        1 + source.randrange(-200, 200) * 2.0**-52)
    table("log", log, ["x"],
          [lambda: (abs(power_of_two(source, -1074, 1024)),), lambda: (source.uniform(0.5, 2),),
           lambda: (source.uniform(1.005, 1.01),), lambda: (end(),),
           lambda: (1 + power_of_two(source, -52, -6),)],
          singles([5e-324, "0x0.fffffffffffffp-1022", "0x1p-1022", "0x1.fffffffffffffp+1023",
                   "0x1.fffffffffffffp-1", "0x1.0000000000001p+0", 0.6875, 1.375, 2, 10]),
          singles(WORST_LOG))


def expm1_table(source):
    # From 1/8 inwards the polynomial's quadratic term is largest.
    edge = lambda: source.choice((-1, 1)) * source.uniform(0.09, 0.13)
    table("expm1", expm1, ["x"],
          [lambda: (source.uniform(-45, 709),), lambda: (source.uniform(-1, 1),),
           lambda: (edge(),), lambda: (power_of_two(source, -70, 6),)],
          singles(["0x1.62e42fefa39efp+9", -38, -50, -700, -708, -709, 708, 709,
                   *both([2.0**-55, 2.0**-54, 2.0**-53, 1e-300, 5e-324, 0.125, 1])]),
          singles(WORST_EXPM1))


def log1p_table(source):
    table("log1p", log1p, ["x"],
          [lambda: (source.uniform(-1, 1),), lambda: (source.uniform(0.005, 0.01),),
           lambda: (power_of_two(source, -54, -51),), lambda: (power_of_two(source, -70, 0),),
           lambda: (abs(power_of_two(source, -3, 1024)),)],
          singles(["-0x1.fffffffffffffp-1", "0x1p+53", "0x1.0000000000001p+53",
                   "0x1.fffffffffffffp+1023",
                   *both([2.0**-55, 2.0**-54, 2.0**-53, 1e-300, 5e-324, 0.5])]),
          singles(WORST_LOG1P))


def power(x, y):
    return mpf(x)**y


def base_to(source, x, low, high):
    """x and a power that makes e^low to e^high of it."""
    return x, source.uniform(low, high) / math.log(x)


def pow_table(source):
    near = lambda: 1 + power_of_two(source, -30, -2)
    table("pow", power, ["x", "y"],
          [lambda: base_to(source, abs(power_of_two(source, -1074, 1024)), -744, 709),
           lambda: base_to(source, near(), -744, 709),
           # Where the logarithm is least exact and the power largest
           lambda: base_to(source, source.uniform(1.006, 1.0079), 690, 709),
           lambda: base_to(source, source.uniform(0.01, 0.99), -744, -707),
           lambda: (source.uniform(0, 1), source.uniform(0, 4))],
          [(2.0, -1074.0), (2.0, 1023.0), (10.0, 22.0), (10.0, 308.0), (0.1, 3.0), (5e-324, 0.5),
           (5e-324, 0.25), (1.7976931348623157e308, 0.5), (3.0, 33.0), (1 + 2.0**-52, 3e18),
           (1 - 2.0**-53, 6e18), (9.0, 0.5), (2.0, 0.5), (0.7, -2.0)],
          [])


def lgamma_table(source):
    either = lambda low, high: source.choice((1, 2)) + power_of_two(source, low, high)
    table("lgamma", lambda x: loggamma(x).real, ["x"],
          [lambda: (source.uniform(0, 3),), lambda: (either(-52, -1),),
           lambda: (source.uniform(2, 30),), lambda: (abs(power_of_two(source, -1074, 1014)),),
           lambda: (-source.uniform(0, 2.4),)],
          singles([0.5, 1.5, 2.5, 3, 4, 10, 24, 100, 171.5, 1e5, 1e15, 1e300, 2.5e305, 5e-324, 1e-300,
                   1e-18, -1e-18, -0.5, -1.5, -10.5, -100.5, -1e5 - 0.25, 2.0**-60, -2.0**-61]),
          [], 2000)


TABLES = {"exp": exp_table, "expm1": expm1_table, "log": log_table, "log1p": log1p_table,
          "pow": pow_table, "lgamma": lgamma_table}

for chosen in sys.argv[1:] or TABLES:
    TABLES[chosen](random.Random(chosen))
