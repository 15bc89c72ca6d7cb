"""The rules of comparing areas, of the same subjects or of different ones."""

from frame import MISSING, Mat, div, order, root
from rocRules import psi


def compare(status, n, V, weights, sizes, k, alpha, paired, aucs, variances, selected, out, dist):
    weights = [1.0] + weights[1:]
    z = dist.InvCDFNormalStd(1 - alpha / 2)
    for name in ("diff", "z", "half", "cov", "p"):
        out[name] = Mat(k, k, fill=MISSING)
    out["sig"] = Mat(k, k, fill=-2147483648)
    var = list(variances)

    def test(i, j, s, cdf):
        diff = aucs[i] - aucs[j]
        out["diff"].put(i + 1, j + 1, diff)
        out["diff"].put(j + 1, i + 1, -diff)
        return diff

    if paired == -1:
        o = order(status)
        st = [status[i] for i in o]
        w0 = [weights[i] for i in o]
        vals = [[V[t][i] for i in o] for t in range(k)]
        n_neg = n - int(sum(status))
        cov = {}
        for i in range(k):
            for j in range(i, k):
                if selected[i] != 1 or selected[j] != 1:
                    continue
                w = [0.0 if vals[i][r] <= MISSING or vals[j][r] <= MISSING else w0[r] for r in range(n)]
                N, P = sum(w[:n_neg], 0.0), sum(w[n_neg:], 0.0)
                comp = []
                for t in (i, j):
                    v10, v01, total = [0.0] * n_neg, [0.0] * (n - n_neg), 0.0
                    for a in range(n_neg):
                        for b in range(n - n_neg):
                            c = w[a] * w[n_neg + b]
                            if c > 1e-12:
                                c *= psi(vals[t][a], vals[t][n_neg + b])
                                v10[a] += c
                                v01[b] += c
                                total += c
                    comp.append(([div(x, P) for x in v10], [div(x, N) for x in v01], div(total, N * P)))
                (x10, x01, xa), (y10, y01, ya) = comp
                s10 = div(sum((w[a] * (x10[a] - xa) * (y10[a] - ya) for a in range(n_neg)), 0.0), N - 1)
                s01 = div(sum((w[n_neg + b] * (x01[b] - xa) * (y01[b] - ya) for b in range(n - n_neg)), 0.0), P - 1)
                cov[i, j] = div(s10, N) + div(s01, P)
                out["cov"].put(i + 1, j + 1, cov[i, j])
                out["cov"].put(j + 1, i + 1, cov[i, j])
        for i in range(k):
            if selected[i] == 1:
                var[i] = root(cov[i, i])
                out["p"].put(i + 1, i + 1, 1.0)
            else:
                var[i] = MISSING
        for i in range(k):
            for j in range(i + 1, k):
                if (i, j) not in cov:
                    continue
                s = root(cov[i, i] + cov[j, j] - 2 * cov[i, j])
                diff = test(i, j, s, None)
                if s > 0:
                    fill(out, i, j, diff, s, z, dist.CDFNormalStd(abs(diff) / s), alpha)
    else:
        for i in range(k):
            if selected[i] == 1:
                out["p"].put(i + 1, i + 1, 1.0)
            for j in range(i + 1, k):
                if selected[i] != 1 or selected[j] != 1 or not variances[i] > 0 or not variances[j] > 0:
                    continue
                ni, nj = int(sizes[i]), int(sizes[j])
                a, b = variances[i] / ni, variances[j] / nj
                s = root(a + b)
                df = div((a + b) ** 2, div(b * b, nj - 1.0) + div(a * a, ni - 1.0))
                diff = test(i, j, s, None)
                for x, y in ((i, j), (j, i)):
                    out["cov"].put(x + 1, y + 1, 0.0)
                if s > 0:
                    fill(out, i, j, diff, s, abs(dist.InvCDFStudent(1 - alpha / 2, df)),
                         dist.CDFStudent(abs(diff) / s, df), alpha)
    return var


def fill(out, i, j, diff, s, critical, cdf, alpha):
    out["z"].put(i + 1, j + 1, diff / s)
    out["z"].put(j + 1, i + 1, -(diff / s))
    out["half"].put(i + 1, j + 1, critical * s)
    p = 2 * min(cdf, 1 - cdf)
    for x, y in ((i, j), (j, i)):
        out["p"].put(x + 1, y + 1, p)
        out["sig"].put(x + 1, y + 1, 1 if p < alpha / 2 else 0)
