#!/usr/bin/env python3
"""Makes deming.csv: Deming lines and Bland-Altman numbers in many digits, with mpmath.

Run from the root of the project. A value is the exact result for the doubles that the numbers of a
case are read as. The slope is found from the angle of the line, tan 2 phi = 2 Sxy / (Sxx - Syy) in
units of the errors' standard deviations, not from the closed form that the program uses. Pairs that
are repeated are summed once with their number.
"""

import csv

from mpmath import mp, mpf

mp.dps = 800  # the angle at a ratio of 1e300 cancels some 300 of them

WRIGHT = [494, 395, 516, 434, 476, 557, 413, 442, 650, 433, 417, 656, 267, 478, 178, 423, 427]
MINI = [512, 430, 520, 428, 500, 600, 364, 380, 658, 445, 432, 626, 260, 477, 259, 350, 451]


def sums(x, y, times):
    def total(terms):
        return mp.fsum(k * term for k, term in zip(times, terms))

    mx, my = total(x) / sum(times), total(y) / sum(times)
    xx = total((a - mx) ** 2 for a in x)
    yy = total((b - my) ** 2 for b in y)
    xy = total((a - mx) * (b - my) for a, b in zip(x, y))
    return mx, my, xx, yy, xy


def line(x, y, ratio, times):
    mx, my, xx, yy, xy = sums(x, y, times)
    error = mp.sqrt(ratio)  # of x over that of y
    slope = mp.tan(mp.atan2(2 * error * xy, xx - ratio * yy) / 2) / error
    return my - slope * mx, slope


def jackknife(x, y, ratio, times):
    n = sum(times)
    fewer = [times[:i] + [times[i] - 1] + times[i + 1 :] for i in range(len(x))]
    without = [line(x, y, ratio, each) for each in fewer]
    errors = []
    for part in zip(*without):
        mean = mp.fsum(k * v for k, v in zip(times, part)) / n
        squares = mp.fsum(k * (v - mean) ** 2 for k, v in zip(times, part))
        errors.append(mp.sqrt(mpf(n - 1) / n * squares))
    return errors


def spread(values):
    mean = mp.fsum(values) / len(values)
    return mean, mp.sqrt(mp.fsum((v - mean) ** 2 for v in values) / (len(values) - 1))


rows = []


def deming(name, x, y, ratio=1.0, times=None):
    x, y, ratio = [mpf(float(v)) for v in x], [mpf(float(v)) for v in y], mpf(ratio)
    times = times or [1] * len(x)
    for value, what in zip(line(x, y, ratio, times), ("intercept", "slope")):
        rows.append((f"{name}.{what}", value))
    for value, what in zip(jackknife(x, y, ratio, times), ("intercept.se", "slope.se")):
        rows.append((f"{name}.{what}", value))


for exponent in (-300, -16, -13, 13, 16, 300):
    deming(f"ratio1e{exponent}", WRIGHT, MINI, float(f"1e{exponent}"))
for exponent in (-300, -90, 77, 160, 300):
    scale = float(f"1e{exponent}")
    deming(f"unit1e{exponent}", [v * scale for v in WRIGHT], [v * scale for v in MINI])
deming("offset1e12", [v + 1e12 for v in WRIGHT], [v + 1e12 for v in MINI])
deming("apart", [v * 1e-150 for v in WRIGHT], [v * 1e150 for v in MINI], 1e-300)

# Large data: each pair a hundred times, alone and beside one pair that outweighs them all.
MANY = [100] * len(WRIGHT)
deming("many", WRIGHT, MINI, 1.0, MANY)
for exponent in (-300, 300):
    scale = float(f"1e{exponent}")
    deming(f"many.ratio1e{exponent}", WRIGHT, MINI, scale, MANY)
    x, y = [v * scale for v in WRIGHT], [v * scale for v in MINI]
    deming(f"many.unit1e{exponent}", x, y, 1.0, MANY)
deming("many.offset1e12", [v + 1e12 for v in WRIGHT], [v + 1e12 for v in MINI], 1.0, MANY)
deming("many.outlier", WRIGHT + [1e6], MINI + [5e5], 1.0, MANY + [1])

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
