"""Writes finegray_errors_cases.csv, finegray_errors.csv and finegray_score_tests.csv: cumulative subdistribution hazards of rows of the data sets in data/ with
their standard errors, by the definition: of every row the integrals over its martingale and over that of its censoring, each a sum over
pairs of rows and times, squared and added up over rows or clusters. Run in this folder:  python3 make_finegray_errors.py
Python 3.11, numpy 2.4. With --bootstrap it writes nothing and compares standard errors with those of 2,000 resamples of melanoma.

Of a row i at time t, for covariates x (Fine & Gray, JASA 94 (1999) 496-509, sections 3 and 4):
  eta  = integral of (x_i - mean) w_i dM_i                      psi  = integral of q(u) / n(u) dMc_i(u)
  phi0 = integral to t of w_i dM_i / S0                         phic = integral to t of v_t(u) / n(u) dMc_i(u)
  q(u)   = sum over j that fail of another cause before u and event times s >= u of (x_j - mean(s)) w_j(s) e_j dL(s)
  v_t(u) = the same over u <= s <= t of w_j(s) e_j dL(s) / S0(s)
  what the row does to the hazard:  exp(x'b) ((sum to t of (x - mean) dL)' I^-1 (eta + psi) + phi0 + phic)
The tests: U' V^-1 U with U the score of theta in coefficients b + theta g(t), V the sum of squares of what each row does to it: its
eta + psi with g in the integrals, less (information with g) I^-1 (eta + psi).
Rows of a frequency count as often; with offset "far" row 4 (from 0), which fails first, has exp(27.5) times its risk; weights of late entry are taken as known."""
import csv
import sys

import numpy as np


def read(name):
    with open(f"data/{name}.csv") as file:
        rows = list(csv.DictReader(file))
    return {key: np.array([float(row[key]) for row in rows]) for key in rows[0]}


class Data:
    def __init__(self, columns, cause, censoring="", strata="", frequency=None, after_events=False, offset=None):
        self.time, self.status = columns["time"], columns["status"]
        n = len(self.time)
        self.entry = columns.get("entry", np.full(n, -np.inf))
        self.x = np.column_stack([columns[k] for k in sorted(columns) if k[0] == "x"])
        self.f = np.ones(n) if frequency is None else frequency
        self.offset = np.zeros(n) if offset is None else offset
        self.group = columns[censoring] if censoring else np.zeros(n)
        self.stratum = columns[strata] if strata else np.zeros(n)
        self.own = self.status == cause
        self.other = (self.status != 0) & ~self.own
        self.after = after_events
        # Event times with their stratum.
        self.at = sorted({(s, t) for s, t in zip(self.stratum[self.own], self.time[self.own])})
        self.k = np.array([t for _, t in self.at])
        self.ks = np.array([s for s, _ in self.at])
        self.censorings()
        here = self.stratum[:, None] == self.ks[None, :]
        w = ((self.entry[:, None] < self.k) & (self.k <= self.time[:, None])).astype(float)
        for i in np.flatnonzero(self.other):
            since = self.curve(self.group[i], self.time[i])
            for m in np.flatnonzero(self.k > self.time[i]):
                w[i, m] = self.curve(self.group[i], self.k[m]) / since
        self.w = w * here
        self.events = here & self.own[:, None] & (self.time[:, None] == self.k)
        self.d = (self.f[:, None] * self.events).sum(0)

    def censorings(self):
        """Of each group: times u, censored c, those who may be censored n, and who of the rows they are."""
        self.u = {}
        for g in np.unique(self.group):
            rows = self.group == g
            u = np.unique(self.time[rows])
            there = rows[:, None] & (self.entry[:, None] < u) & (u <= self.time[:, None])
            if self.after:
                there &= ~((self.status[:, None] != 0) & (self.time[:, None] == u))
            c = (self.f[:, None] * (rows[:, None] & (self.status[:, None] == 0) & (self.time[:, None] == u))).sum(0)
            self.u[g] = (u, c, (self.f[:, None] * there).sum(0), there)

    def curve(self, g, t):
        u, c, n, _ = self.u[g]
        if t > u[-1]:
            return 0.0
        value = 1.0
        for m in np.flatnonzero((u < t) & (c > 0)):
            value *= 1 - c[m] / n[m]
        rows = self.group == g
        for s in np.unique(self.entry[rows & np.isfinite(self.entry)]):
            if s >= t:
                behind = self.f[rows & (self.entry <= s) & (self.time > s)].sum()
                value *= 1 - self.f[rows & (self.entry == s)].sum() / behind
        return value

    def sums(self, b):
        risk = self.f * np.exp(self.x @ b + self.offset)
        s0 = risk @ self.w
        mean = (risk[:, None] * self.x).T @ self.w / s0
        return risk, s0, mean.T

    def fit(self):
        b = np.zeros(self.x.shape[1])
        for _ in range(30):
            risk, s0, mean = self.sums(b)
            gradient = (self.f * self.own) @ self.x - self.d @ mean
            information = np.zeros((len(b), len(b)))
            for k in range(len(self.k)):
                r = risk * self.w[:, k]
                away = self.x - mean[k]
                information += self.d[k] / s0[k] * (r[:, None] * away).T @ away
            step = np.linalg.solve(information, gradient)
            b = b + step
        return b, np.linalg.inv(information)

    def censored(self, value):
        """The integral of the sum over j, s of value[j, s] (columns) over u's martingales: value has shape n x K x c."""
        result = np.zeros((len(self.time), value.shape[2]))
        for g, (u, c, size, there) in self.u.items():
            rows = np.flatnonzero(self.other & (self.group == g))
            for m in np.flatnonzero(c > 0):
                early = rows[self.time[rows] < u[m]]
                late = np.flatnonzero(self.k >= u[m])
                q = value[np.ix_(early, late)].sum((0, 1))
                ends = (self.group == g) & (self.status == 0) & (self.time == u[m])
                martingale = self.f * (ends / size[m] - there[:, m] * c[m] / size[m] ** 2)
                result += martingale[:, None] * q
        return result

    def errors(self, times, x, stratum, cluster=None, estimated=True):
        """Hazard and standard error at each of the times, of each row of x."""
        b, inverse = self.fit()
        risk, s0, mean = self.sums(b)
        dl = self.d / s0
        dm = self.f[:, None] * self.events - risk[:, None] * self.w * dl
        score = (dm.sum(1)[:, None] * self.x) - dm @ mean

        exposed = risk[:, None] * self.w * dl
        if estimated:
            score = score + self.censored(exposed[:, :, None] * (self.x[:, None, :] - mean[None, :, :]))
        made = []
        for t in times:
            until = (self.k <= t) & (self.ks == stratum)
            phi = (dm[:, until] / s0[until]).sum(1)
            if estimated:
                phi = phi + self.censored((exposed * until / s0)[:, :, None])[:, 0]
            for each in x:
                scale = np.exp(each @ b)
                away = ((each - mean[until]) * dl[until, None]).sum(0)
                change = scale * (score @ inverse @ away + phi)
                if cluster is None:
                    variance = (change**2 / self.f).sum()
                else:
                    variance = sum(change[cluster == c].sum() ** 2 for c in np.unique(cluster))
                made.append((t, scale * dl[until].sum(), variance**0.5))
        return made


    def tests(self, g, cluster=None, estimated=True):
        """Score tests of theta in b + theta g of each column, and of all: of the influences on the score."""
        b, inverse = self.fit()
        risk, s0, mean = self.sums(b)
        dl = self.d / s0
        dm = self.f[:, None] * self.events - risk[:, None] * self.w * dl
        exposed = risk[:, None] * self.w * dl
        away = self.x[:, None, :] - mean[None, :, :]
        influence = []
        for weight in (np.ones(len(g)), g):
            score = np.einsum("ik,ikj->ij", dm * weight, away)
            if estimated:
                score = score + self.censored((exposed * weight)[:, :, None] * away)
            influence.append(score)
        mixed = np.einsum("ik,ikj,ikl->jl", exposed * g, away, away)
        rest = influence[1] - influence[0] @ inverse @ mixed
        if cluster is not None:
            rest = np.array([rest[cluster == c].sum(0) for c in np.unique(cluster)])
            variance = rest.T @ rest
        else:
            variance = (rest / self.f[:, None]).T @ rest
        u = np.einsum("ik,ikj->j", self.f[:, None] * self.events * g, away)
        return [*(u**2 / np.diag(variance)), u @ np.linalg.solve(variance, u)]


def cases():
    for name in ["melanoma", "pbc", "paquid", "mgus", "late", "random2"]:
        yield name, 1, {}, ""
    for name in ["melanoma", "pbc"]:
        yield name, 2, {"censoring": "stratum"}, ""
        yield name, 1, {"strata": "stratum"}, ""
        yield name, 1, {"censoring": "group", "strata": "stratum"}, "cluster"
        yield name, 1, {"estimated": False}, ""
        yield name, 1, {"weight": "count"}, ""
    yield "late", 1, {"weight": "count", "strata": "stratum"}, ""
    yield "late", 2, {"censoring": "group"}, "cluster"
    yield "late", 1, {"after": True}, ""
    yield "random26", 1, {"after": True}, ""
    yield "melanoma", 1, {"offset": "far"}, ""
    yield "melanoma", 1, {"offset": "far"}, "cluster"


def write():
    names = ("finegray_errors_cases.csv", "finegray_errors.csv", "finegray_score_tests.csv")
    with open(names[0], "w") as listed, open(names[1], "w") as values, open(names[2], "w") as tests:
        tests.write("case,transform,term,chiSquare\n")
        listed.write("case,data,cause,censoring,strata,weight,cluster,ties,errors,offset\n")
        values.write("case,stratum,row,time,hazard,standardError\n")
        count = {}
        for name, cause, how, cluster in cases():
            count[name] = count.get(name, 0) + 1
            case = f"{name}_{count[name]}"
            columns = read(name)
            n = len(columns["time"])
            frequency = 1.0 + np.arange(1, n + 1) % 3 if "weight" in how else None
            offset = np.where(np.arange(n) == 4, 27.5, 0.0) if "offset" in how else None
            data = Data(columns, cause, how.get("censoring", ""), how.get("strata", ""), frequency, "after" in how, offset)
            ties = "after-events" if "after" in how else "at-risk"
            errors = "estimated-weights" if how.get("estimated", True) else "sandwich"
            listed.write(f"{case},{name},{cause},{how.get('censoring', '')},{how.get('strata', '')},{how.get('weight', '')},{cluster},{ties},{errors},{how.get('offset', '')}\n")
            by = columns[cluster] if cluster else None
            for code, stratum in enumerate(np.unique(data.stratum)):
                k = data.k[data.ks == stratum]
                times = k[np.unique(np.linspace(0, len(k) - 1, 5).round().astype(int))]
                rows = [0, n // 2]
                made = data.errors(times, data.x[rows], stratum, by, how.get("estimated", True))
                for m, (t, hazard, error) in enumerate(made):
                    values.write(f"{case},{code},{rows[m % 2]},{t:.17g},{hazard:.17g},{error:.17g}\n")
            for transform, g in (("identity", data.k - data.k.mean()), ("log", np.log(data.k))):
                made = data.tests(g, by, how.get("estimated", True))
                for m, chi in enumerate(made):
                    term = "GLOBAL" if m + 1 == len(made) else f"x{m + 1}"
                    tests.write(f"{case},{transform},{term},{chi:.17g}\n")
            print(case, flush=True)


def bootstrap():
    columns = read("melanoma")
    n = len(columns["time"])
    times, x = [1000.0, 2000.0, 3000.0], np.array([[50.0, 0.7, 0.0], [65.0, 1.6, 1.0]])
    random = np.random.default_rng(20)
    drawn = []
    while len(drawn) < 2000:
        rows = random.integers(0, n, n)
        data = Data({key: value[rows] for key, value in columns.items()}, 1)
        b, _ = data.fit()
        risk, s0, _ = data.sums(b)
        hazard = [(data.d / s0)[data.k <= t].sum() for t in times]
        drawn.append([np.log(h) + each @ b for h in hazard for each in x])
    made = Data(columns, 1).errors(times, x, 0)
    for (t, hazard, error), each in zip(made, np.std(np.array(drawn), axis=0, ddof=1)):
        print(f"time {t:g}: incidence {1 - np.exp(-hazard):.4f}, error of log H {error / hazard:.4f}, bootstrap {each:.4f}")


if __name__ == "__main__":
    bootstrap() if "--bootstrap" in sys.argv else write()
