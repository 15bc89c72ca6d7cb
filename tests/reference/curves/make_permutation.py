# Writes arrangements_data.csv and arrangements.csv: small samples, and how many of all arrangements of their groups are no less extreme
# than the one observed. Run in this folder: python3 make_permutation.py
# Nothing but the definitions: for every arrangement the weighted differences time after time, in fractions (square roots of n apart, in
# 50 digits), over the variance among the arrangements as they come.
from fractions import Fraction
from itertools import combinations, product
from mpmath import mp, mpf, sqrt
mp.dps = 50

def sample(seed, strata):  # rows (stratum, entry, exit, event, group) from a generator of Lehmer's
    rows = []
    for s, (sizes, late) in enumerate(strata):
        for g, size in enumerate(sizes):
            for _ in range(size):
                seed = seed * 48271 % 2147483647; entry = seed % 4 if late else -1
                seed = seed * 48271 % 2147483647; exit = max(entry, 0) + 1 + seed // 7 % (9 - 2 * g)
                seed = seed * 48271 % 2147483647
                rows.append((s, entry, exit, int(seed // 11 % 10 < 7), g))
    return rows

samples = {"pair": sample(11, [((7, 6), False)]), "strata": sample(5, [((3, 4), False), ((4, 2), False), ((1, 3), False)]),
           "three": sample(23, [((3, 4, 3), False)]), "threeStrata": sample(31, [((2, 2, 1), False), ((1, 2, 2), False)]), "late": sample(47, [((6, 6), True)])}
kinds = ("logRank", "taroneWare", "fh10", "fh01", "fh11")

def weight(kind, n, S): return {"logRank": Fraction(1), "taroneWare": None, "fh10": S, "fh01": 1 - S, "fh11": S * (1 - S)}[kind]

# O - E of every group with these labels, over the strata.
def differences(rows, labels, kind, groups):
    U = [mpf(0) if kind == "taroneWare" else Fraction(0)] * groups
    for s in sorted({r[0] for r in rows}):
        S = Fraction(1)
        for t in sorted({r[2] for r in rows if r[0] == s and r[3]}):
            risk = [i for i, r in enumerate(rows) if r[0] == s and r[1] < t <= r[2]]; fail = [i for i in risk if rows[i][2] == t and rows[i][3]]
            n, d = len(risk), len(fail); w = sqrt(mpf(n)) if kind == "taroneWare" else weight(kind, n, S); S *= 1 - Fraction(d, n)
            for g in range(groups):
                e = sum(labels[i] == g for i in fail) - Fraction(d * sum(labels[i] == g for i in risk), n)
                U[g] += w * (mpf(e.numerator) / e.denominator if kind == "taroneWare" else e)
    return U

def arrangements(rows, groups):
    def of(indices, counts):  # of one stratum
        if len(counts) == 1: yield {i: counts[0][0] for i in indices}; return
        for chosen in combinations(indices, counts[0][1]):
            for rest in of([i for i in indices if i not in chosen], counts[1:]): yield {**{i: counts[0][0] for i in chosen}, **rest}
    parts = []
    for s in sorted({r[0] for r in rows}):
        at = [i for i, r in enumerate(rows) if r[0] == s]
        parts.append(list(of(at, [(g, sum(rows[i][4] == g for i in at)) for g in range(groups)])))
    for combination in product(*parts):
        labels = [0] * len(rows)
        for part in combination:
            for i, g in part.items(): labels[i] = g
        yield labels

data, out = ["sample,stratum,entry,exit,event,group"], ["sample,arrangements,test,side,extreme"]
for name, rows in samples.items():
    data += ["%s,%d,%d,%d,%d,%d" % (name, *r) for r in rows]
    groups = 1 + max(r[4] for r in rows); everything = list(arrangements(rows, groups)); observed = [r[4] for r in rows]
    sizes = {}
    for kind in kinds:
        U = [differences(rows, labels, kind, groups) for labels in everything]; seen = differences(rows, observed, kind, groups)
        U = [[mpf(x.numerator) / x.denominator if isinstance(x, Fraction) else x for x in u] for u in U]; seen = [mpf(x.numerator) / x.denominator if isinstance(x, Fraction) else x for x in seen]
        if groups == 2:
            deviation = sqrt(sum(u[1] ** 2 for u in U) / len(U)); z = [u[1] / deviation for u in U]; own = seen[1] / deviation
            sizes[kind] = {"twoSided": ([abs(x) for x in z], abs(own)), "greater": (z, own), "less": ([-x for x in z], -own)}
        else:  # the last group is the others' negative
            k = groups - 1; V = mp.matrix(k, k)
            for u in U:
                for a in range(k):
                    for b in range(k): V[a, b] += u[a] * u[b] / len(U)
            W = V ** -1; form = lambda u: sum(u[a] * W[a, b] * u[b] for a in range(k) for b in range(k))
            sizes[kind] = {"twoSided": ([sqrt(form(u)) for u in U], sqrt(form(seen)))}
        for side, (all_, own) in sizes[kind].items(): out.append("%s,%d,%s,%s,%d" % (name, len(everything), kind, side, sum(x >= own - mpf(10) ** -30 for x in all_)))
    if groups == 2:
        four = [k for k in kinds if k != "taroneWare"]
        for side in ("twoSided", "greater", "less"):
            own = max(sizes[k][side][1] for k in four); largest = [max(x) for x in zip(*(sizes[k][side][0] for k in four))]
            out.append("%s,%d,combination,%s,%d" % (name, len(everything), side, sum(x >= own - mpf(10) ** -30 for x in largest)))
    print(name, len(everything), flush=True)
open("arrangements_data.csv", "w").write("\n".join(data) + "\n"); open("arrangements.csv", "w").write("\n".join(out) + "\n")
