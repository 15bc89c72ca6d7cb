# Writes normal.csv: probabilities that correlated normal variables leave a rectangle, by integrals of other kinds than the program's.
# Run in this folder: python3 make_normal.py (mpmath 1.3.0, some minutes). 25 digits of what is inside.
#
# factors   X = a F + b G + c E with the loadings given: conditionally on the common F, G the variables are independent, and the
#           integral over F and G is a trapezoidal sum, which for such integrands converges faster than any power of the step
# polygon   X = a F + b G exactly: the rectangle is a polygon in the plane of F and G; one integral, cut at the polygon's corners
# smeared   a polygon whose last variable has c E besides: the polygon's probability as a function of the shift c E, over E
# pair      two variables, X2 given X1
from mpmath import mp, mpf, erfc, exp, sqrt, pi, quad, inf, matrix
mp.dps = 25
lines = ["case,kind,d,lower,upper,correlation,outside"]

def cdf(x): return erfc(-x / sqrt(mpf(2))) / 2
def density(x): return exp(-x * x / 2) / sqrt(2 * pi)
def within(lo, up): return cdf(up) - cdf(lo) if lo <= 0 else cdf(-lo) - cdf(-up)
def text(x): return repr(float(x))
def put(kind, lower, upper, correlation, inside):
    cells = lambda row: ";".join(text(x) for x in row)
    lines.append(",".join([str(len(lines)), kind, str(len(lower)), cells(lower), cells(upper),
                           cells(x for row in correlation for x in row), mp.nstr(1 - inside, 20)]))
    print(lines[-1], flush=True)

def correlationOf(a, b): return [[mpf(1) if i == j else a[i] * a[j] + b[i] * b[j] for j in range(len(a))] for i in range(len(a))]

def factors(lower, upper, a, b, step=mpf(1) / 8):
    a, b = [mpf(x) for x in a], [mpf(x) for x in b]
    c = [sqrt(1 - x * x - y * y) for x, y in zip(a, b)]
    lower, upper = [mpf(x) for x in lower], [mpf(x) for x in upper]
    n = int(mpf("9.6") / step); total = mpf(0)
    for i in range(-n, n + 1):
        f = i * step
        for j in range(-n, n + 1) if any(b) else [0]:
            g = j * step
            if f * f + g * g > 92: continue
            product = density(f) * (density(g) if any(b) else 1 / step)
            for k in range(len(a)):
                m = a[k] * f + b[k] * g
                product *= within((lower[k] - m) / c[k], (upper[k] - m) / c[k])
                if product < mpf(10) ** -40: break
            total += product
    put("factors", lower, upper, correlationOf(a, b), total * step * step)

# The probability that lower < a F + b G < upper for all, b > 0 or a = 1 for the first.
def polygonInside(lower, upper, a, b):
    lo0, up0 = max(lower[0], mpf(-14)), min(upper[0], mpf(14))
    cuts = {lo0, up0, mpf(0)} if lo0 < 0 < up0 else {lo0, up0}
    sides = [(x[k], a[k], b[k]) for k in range(1, len(a)) for x in (lower, upper)]
    for p in range(len(sides)):
        for q in range(p):
            den = sides[p][1] * sides[q][2] - sides[q][1] * sides[p][2]
            if den == 0: continue
            f = (sides[p][0] * sides[q][2] - sides[q][0] * sides[p][2]) / den
            if lo0 < f < up0: cuts.add(f)
    def inner(f):
        low, high = mpf(-20), mpf(20)
        for k in range(1, len(a)):
            u, v = (lower[k] - a[k] * f) / b[k], (upper[k] - a[k] * f) / b[k]
            low, high = max(low, min(u, v)), min(high, max(u, v))
        return density(f) * within(low, high) if low < high else mpf(0)
    points = sorted(cuts)
    fine = [points[0]]
    for x in points[1:]:
        while x - fine[-1] > 2: fine.append(fine[-1] + 2)
        if x - fine[-1] > mpf(10) ** -20: fine.append(x)
    return quad(inner, fine, method="gauss-legendre", maxdegree=5)

def unit(a): a = mpf(a); return a, sqrt(1 - a * a)
def polygon(lower, upper, a, signs=None):
    pairs = [unit(x) for x in a]
    if signs: pairs = [(p[0], s * p[1]) for p, s in zip(pairs, signs)]
    a, b = [p[0] for p in pairs], [p[1] for p in pairs]
    lower, upper = [mpf(x) for x in lower], [mpf(x) for x in upper]
    put("polygon", lower, upper, correlationOf(a, b), polygonInside(lower, upper, a, b))

# The last variable is sqrt(1 - c^2) (a F + b G) + c E.
def smeared(lower, upper, a, signs, c):
    pairs = [unit(x) for x in a]
    pairs = [(p[0], s * p[1]) for p, s in zip(pairs, signs)]
    a, b = [p[0] for p in pairs], [p[1] for p in pairs]
    lower, upper = [mpf(x) for x in lower], [mpf(x) for x in upper]
    c = mpf(c); shrink = sqrt(1 - c * c)
    def given(e):
        low, up = lower[:-1] + [(lower[-1] - c * e) / shrink], upper[:-1] + [(upper[-1] - c * e) / shrink]
        return density(e) * polygonInside(low, up, a, b)
    mp.dps = 18
    # Where the last side passes a corner of the others the polygon gains or loses a side.
    cuts = {mpf(x) for x in (-8, -4, -2, 0, 2, 4, 8)}
    for i in range(len(a) - 1):
        for j in range(i):
            for x in (lower[i], upper[i]):
                for y in (lower[j], upper[j]):
                    if abs(x) > 99 or abs(y) > 99: continue
                    den = a[i] * b[j] - a[j] * b[i]
                    corner = a[-1] * (x * b[j] - y * b[i]) / den + b[-1] * (y * a[i] - x * a[j]) / den
                    cuts |= {e for e in [(z - shrink * corner) / c for z in (lower[-1], upper[-1]) if abs(z) < 99] if abs(e) < 8}
    inside = quad(given, sorted(cuts), method="gauss-legendre", maxdegree=3)
    mp.dps = 25
    a[-1] *= shrink; b[-1] *= shrink
    put("smeared", lower, upper, correlationOf(a, b), inside)

def pair(lower, upper, r):
    r = mpf(r); root = sqrt(1 - r * r)
    lower, upper = [mpf(x) for x in lower], [mpf(x) for x in upper]
    def inner(x): return density(x) * within((lower[1] - r * x) / root, (upper[1] - r * x) / root)
    lo, up = max(lower[0], mpf(-14)), min(upper[0], mpf(14))
    cuts = {lo, up}
    for y in (lower[1], upper[1]):
        if abs(y) < 20 and r != 0:
            for w in (-14, -6, -2, 0, 2, 6, 14):
                x = y / r + w * root / abs(r)
                if lo < x < up: cuts.add(x)
    cuts = sorted(cuts); fine = [cuts[0]]
    for x in cuts[1:]:
        while x - fine[-1] > 2: fine.append(fine[-1] + 2)
        if x > fine[-1]: fine.append(x)
    put("pair", lower, upper, [[1, r], [r, 1]], quad(inner, fine, method="gauss-legendre", maxdegree=6))

both = lambda c, d: ([-mpf(c)] * d, [mpf(c)] * d)
mp.dps = 45  # what is left outside is down to 1e-17
for r in ("0.3", "-0.75", "0.92", "0.93", "-0.96", "0.999", "0.99999", "-0.9999999", "0.999999999", "0.9999999999999"):
    r = mpf(float(r))
    pair(*both("2.1", 2), r); pair([-mpf("1.3"), mpf("-0.4")], [mpf("0.7"), mpf("2.5")], r); pair([-inf, -inf], [mpf("1.2"), mpf("1.25")], r)
pair(*both("8.5", 2), "0.5"); pair([-inf, -inf], [mpf(6), mpf("6.5")], "0.95"); pair(*both("0.01", 2), "0.97"); pair([-inf, -inf], [mpf(-3), mpf(-2)], "0.7"); pair([mpf(-7), mpf(-9)], [mpf(7), mpf(3)], "-0.99")
mp.dps = 25
third = [("0.5", "0.5", "0.5"), ("0.3", "-0.6", "0.1"), ("0.8", "0.7", "-0.5"), ("0.2", "0.9", "0.4")]
for a, b in ((third[0], ("0", "0", "0")), (third[2], third[1]), (third[3], ("0.8", "-0.3", "0.6"))):
    factors(*both("2.2", 3), a, b); factors([-inf, mpf("-1.5"), mpf("-0.2")], [mpf("1.1"), inf, mpf("1.9")], a, b)
fourth = [("0.8", "0.7", "0.75", "0.6"), ("0.5", "-0.4", "0.6", "0.1"), ("0.7", "0.2", "0.5", "0.85"), ("0.1", "0.6", "-0.7", "0.3")]
for c in ("2.3", "1", "6"): factors(*both(c, 4), fourth[0], ("0", "0", "0", "0"))
for a, b in ((fourth[0], fourth[1]), (fourth[2], fourth[3])):
    factors(*both("2.3", 4), a, b); factors([-inf] * 4, [mpf("2.1")] * 4, a, b); factors([mpf("-0.5"), -inf, mpf("-1.1"), mpf("-2")], [mpf("0.9"), mpf("1.4"), inf, mpf("0.3")], a, b)
# Both thirds and fourths of rank 2; the last ones with all sides through common corners.
polygon(*both("2.2", 3), ["1", "0.8", "0.6"], (1, 1, 1)); polygon(*both("2", 3), ["1", "0.5", "-0.5"], (1, 1, 1)); polygon([-inf] * 3, [mpf("1.7")] * 3, ["1", "0.8", "0.96"], (1, 1, -1))
polygon(*both("2.24", 4), ["1", "0.95", "0.8", "0.6"], (1, 1, 1, 1)); polygon(*both("2.24", 4), ["1", "0.9", "0.7", "0.85"], (1, 1, -1, -1)); polygon([-inf] * 4, [mpf("2")] * 4, ["1", "0.9", "0.7", "0.85"], (1, 1, -1, -1))
polygon([mpf("-0.3"), mpf("-2"), -inf, mpf("-1")], [mpf("1.3"), mpf("0.4"), mpf("1.1"), inf], ["1", "0.2", "-0.7", "0.85"], (1, 1, 1, 1))
polygon(*both("2.3", 4), ["1", "0.9999", "0.99", "0.9"], (1, 1, 1, 1)); polygon(*both("2.3", 4), ["1", "0.99999999", "0.999", "-0.9"], (1, 1, 1, 1))
for c in ("0.1", "0.001", "0.00001"):
    smeared(*both("2.2", 3), ["1", "0.8", "0.6"], (1, 1, 1), c); smeared([-inf] * 3, [mpf("1.7")] * 3, ["1", "0.8", "0.96"], (1, 1, -1), c)
    smeared(*both("2.24", 4), ["1", "0.9", "0.7", "0.85"], (1, 1, -1, -1), c); smeared(*both("2", 4), ["1", "0.5", "0.8", "-0.5"], (1, 1, 1, 1), c)
open("normal.csv", "w").write("\n".join(lines) + "\n")
