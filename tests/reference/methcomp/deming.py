#!/usr/bin/env python3
"""Makes deming.csv: Deming lines and Bland-Altman numbers in many digits, with mpmath.

Run from the root of the project. A value is the exact result for the doubles that the numbers of a
case are read as. The slope is found from the angle of the line, tan 2 phi = 2 Sxy / (Sxx - Syy) in
units of the errors' standard deviations, not from the closed form that the program uses.
"""

import csv

from mpmath import mp, mpf

mp.dps = 800  # the angle at a ratio of 1e300 cancels some 300 of them

WRIGHT = [494, 395, 516, 434, 476, 557, 413, 442, 650, 433, 417, 656, 267, 478, 178, 423, 427]
MINI = [512, 430, 520, 428, 500, 600, 364, 380, 658, 445, 432, 626, 260, 477, 259, 350, 451]


def sums(x, y):
    mx, my = mp.fsum(x) / len(x), mp.fsum(y) / len(y)
    xx = mp.fsum((a - mx) ** 2 for a in x)
    yy = mp.fsum((b - my) ** 2 for b in y)
    xy = mp.fsum((a - mx) * (b - my) for a, b in zip(x, y))
    return mx, my, xx, yy, xy


def line(x, y, ratio):
    mx, my, xx, yy, xy = sums(x, y)
    error = mp.sqrt(ratio)  # of x over that of y
    slope = mp.tan(mp.atan2(2 * error * xy, xx - ratio * yy) / 2) / error
    return my - slope * mx, slope


def jackknife(x, y, ratio):
    n = len(x)
    without = [line(x[:i] + x[i + 1 :], y[:i] + y[i + 1 :], ratio) for i in range(n)]
    errors = []
    for part in zip(*without):
        mean = mp.fsum(part) / n
        errors.append(mp.sqrt(mpf(n - 1) / n * mp.fsum((v - mean) ** 2 for v in part)))
    return errors


def spread(values):
    mean = mp.fsum(values) / len(values)
    return mean, mp.sqrt(mp.fsum((v - mean) ** 2 for v in values) / (len(values) - 1))


rows = []


def deming(name, x, y, ratio=1.0):
    x, y, ratio = [mpf(float(v)) for v in x], [mpf(float(v)) for v in y], mpf(ratio)
    for value, what in zip(line(x, y, ratio), ("intercept", "slope")):
        rows.append((f"{name}.{what}", value))
    for value, what in zip(jackknife(x, y, ratio), ("intercept.se", "slope.se")):
        rows.append((f"{name}.{what}", value))


for exponent in (-300, -16, -13, 13, 16, 300):
    deming(f"ratio1e{exponent}", WRIGHT, MINI, float(f"1e{exponent}"))
for exponent in (-300, -90, 77, 160, 300):
    scale = float(f"1e{exponent}")
    deming(f"unit1e{exponent}", [v * scale for v in WRIGHT], [v * scale for v in MINI])
deming("offset1e12", [v + 1e12 for v in WRIGHT], [v + 1e12 for v in MINI])
deming("apart", [v * 1e-150 for v in WRIGHT], [v * 1e150 for v in MINI], 1e-300)

for exponent in (-200, 160):
    scale = float(f"1e{exponent}")
    differences = [mpf(b * scale) - mpf(a * scale) for a, b in zip(WRIGHT, MINI)]
    for value, what in zip(spread(differences), ("bias", "sd")):
        rows.append((f"agree1e{exponent}.{what}", value))
relative = [mpf(b - a) / (mpf(a + b) / 2) for a, b in zip(WRIGHT, MINI)]
for value, what in zip(spread(relative), ("bias", "sd")):
    rows.append((f"relative.{what}", value))

with open("tests/reference/methcomp/deming.csv", "w", newline="", encoding="ascii") as file:
    writer = csv.writer(file, lineterminator="\n")
    writer.writerow(("name", "value"))
    for name, value in rows:
        writer.writerow((name, mp.nstr(value, 20)))
