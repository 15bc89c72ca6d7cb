"""Oracle of the life family: preparation, both estimators, the strata grid, mean and quartiles,
the grid of times and the comparison tests.

Usage: life.py LIBSURVIVAL LIBDIST [CASES]
"""

import copy
import sys

from frame import INF, NAN, Dist, Library, Mat, Run
from lifeRules import reorganize, kaplan_meier, fill_grid, mean_median, load_times, tests


def main():
    lib, dist = Library(sys.argv[1]), Dist(sys.argv[2])
    cases = int(sys.argv[3]) if len(sys.argv) > 3 else 2000
    run = Run()
    rnd = run.random

    def times_of(n):
        kind = rnd.randrange(4)
        if kind == 0:
            return [float(rnd.randrange(1, 6)) for _ in range(n)]
        if kind == 1:
            return [rnd.random() * 10 for _ in range(n)]
        if kind == 2:
            return [float(rnd.randrange(0, 3)) for _ in range(n)]
        return [rnd.choice([0.0, -0.0, 1.5, 2.5, INF, -1.0, 7.0]) for _ in range(n)]

    for _ in range(cases):
        n = rnd.choice([0, 1, 2, 3, 5, 8, 20])
        k = rnd.choice([0, 1, 2, 3])
        time = times_of(n)
        if rnd.random() < 0.1 and n:
            time[rnd.randrange(n)] = NAN
        status = [float(rnd.choice([0, 1, 1, 1, 0.5] if rnd.random() < .3 else [0, 1])) for _ in range(n)]
        if rnd.random() < 0.1:
            status = [rnd.choice([0.0, 1.0])] * n
        if rnd.random() < 0.1 and n:
            status[rnd.randrange(n)] = rnd.choice([2.0, -1.0, NAN, 1.0000001])
        weight = [float(i + 1) for i in range(n)]
        stratum = [float(rnd.randrange(1, max(k, 1) + 1)) for _ in range(n)]
        sizes = [float(sum(1 for s in stratum if s == j + 1)) + rnd.choice([0, 0, 0, 0.7]) for j in range(max(k, 1))]
        if rnd.random() < 0.1:
            sizes[rnd.randrange(len(sizes))] += rnd.choice([-1, 1, 5])
        skip = rnd.choice([0, -1, 1])
        args = [time, status, weight, stratum, sizes]
        want = copy.deepcopy(args)
        code, biggest = reorganize(want[0], n, want[1], want[2], want[3], want[4], k, skip)
        got, arrays = lib.call("ReorganizeData", [("D", time), ("I", [n]), ("D", status), ("D", weight), ("D", stratum),
                                                 ("D", sizes), ("i", k), ("s", skip), ("D", [777.0])])
        run.compare("ReorganizeData", (args, n, k, skip),
                    [("code", code), ("time", want[0]), ("status", want[1]), ("weight", want[2]), ("stratum", want[3]),
                     ("sizes", want[4]), ("maxTime", 777.0 if biggest is None else biggest)],
                    [("code", got), ("time", arrays[0]), ("status", arrays[2]), ("weight", arrays[3]),
                     ("stratum", arrays[4]), ("sizes", arrays[5]), ("maxTime", arrays[6])])

    for _ in range(cases):
        n = rnd.choice([1, 2, 3, 5, 8, 20])
        offset = rnd.randrange(0, 3)
        m = n - offset if rnd.random() < .8 else rnd.randrange(0, n + 3)
        m = max(m, 0)
        time = times_of(n)
        if rnd.random() < 0.9:
            time.sort()
        counts = rnd.choice([0, -1, 1])
        if counts == -1:
            status = [float(rnd.randrange(0, 3)) for _ in range(n)]
            weight = [float(rnd.randrange(0, 3)) for _ in range(n)]
        else:
            status = [float(rnd.choice([0, 1, 1, 2])) for _ in range(n)]
            weight = [1.0] * n
            if rnd.random() < .2:
                weight = [rnd.choice([0.0, 1.0, 2.0, -1.0, 0.5]) for _ in range(n)]
        event = rnd.choice([1, 1, 1, 0, 2])
        K = rnd.choice([1, 2, 3])
        j = rnd.randrange(1, K + 1)
        pool = sorted(set(time + [float(rnd.randrange(0, 8)) for _ in range(3)]))
        G = len(pool) if rnd.random() < .7 else rnd.randrange(0, len(pool) + 2)
        fill = rnd.choice([0, -1, 1])
        grid = [rnd.random() for _ in range((3 * K + 1) * max(G, 1))]
        for g in range(min(G, len(pool))):
            grid[g * (3 * K + 1)] = pool[g]
        table = [rnd.random() for _ in range((m + 2) * 12)]
        intervals = [rnd.random() for _ in range((m + 1) * 2)]
        T, I, X = Mat(m + 2, 12, table), Mat(m + 1, 2, intervals), Mat(3 * K + 1, max(G, 1), grid)
        total, rows = kaplan_meier(offset, m, counts, event, Mat(n, 1, time), Mat(n, 1, status), Mat(n, 1, weight), T, I)
        if fill == -1:
            if m >= 1:
                fill_grid(T, m, j, X)
            grid_want = X.v
        else:
            grid_want = [0.0] + grid[1:]
        bounds = [0.25]
        _, arrays = lib.call("RunLife", [("i", n), ("i", j), ("I", [offset]), ("i", 0), ("d", 1.0), ("i", G), ("i", K),
                                         ("i", m), ("i", event), ("i", 5), ("i", 6), ("D", time), ("D", status),
                                         ("D", weight), ("s", counts), ("s", fill), ("s", 0), ("s", 0), ("D", bounds),
                                         ("D", intervals), ("D", [55.0]), ("D", table), ("I", [77]), ("D", grid)])
        run.compare("RunLife, Kaplan-Meier", (n, offset, m, time, status, weight, counts, event, fill, G, K, j, pool),
                    [("offset", offset), ("time", time), ("intervals", I.v), ("total", total), ("table", T.v),
                     ("nRows", rows), ("grid", grid_want)],
                    [("offset", arrays[0]), ("time", arrays[1]), ("intervals", arrays[5]), ("total", arrays[6]),
                     ("table", arrays[7]), ("nRows", arrays[8]), ("grid", arrays[9])])

        # Mean and quartiles of that table, and of tables nobody should pass.
        r = rows if rnd.random() < .9 else rnd.randrange(0, m + 3)
        alpha = rnd.choice([0.05, 0.1, 0.5])
        n_obs = rnd.choice([m, 1, 0, 2])
        if m >= 1 and rows >= 0:
            cut, mean, quart = mean_median(Mat(m + 2, 12, T.v), alpha, n_obs, r, dist)
            _, arrays = lib.call("ComputeKaplanMeanMedian", [("D", T.v), ("i", m), ("d", alpha), ("i", n_obs), ("i", r),
                                                            ("D", [9.0]), ("D", [9.0] * 4), ("D", [9.0] * 12)])
            run.compare("ComputeKaplanMeanMedian", (T.v, m, alpha, n_obs, r),
                        [("cut", cut), ("mean", mean), ("quartiles", quart)],
                        [("cut", arrays[1]), ("mean", arrays[2]), ("quartiles", arrays[3])], relative=1e-12,
                        absolute=1e-12)

    for _ in range(cases):
        nt = rnd.choice([0, 1, 2, 3, 5, 9, 15])
        n = nt if rnd.random() < .85 else rnd.randrange(0, nt + 3)
        K = rnd.choice([0, 1, 2])
        values = rnd.choice([[1.0, 2.0, 3.0], [float(x) for x in range(20)], [0.0, -0.0, INF, -INF, -1.0, 2.0], [4.0]])
        times = [rnd.choice(values) for _ in range(nt)]
        if rnd.random() < .1 and nt:
            times[rnd.randrange(nt)] = NAN
        grid = [rnd.random() for _ in range((3 * K + 1) * n)]
        X = Mat(3 * K + 1, n, grid)
        left = load_times(n, Mat(nt, 1, times), X)
        _, arrays = lib.call("LoadKaplanTest", [("I", [n]), ("i", nt), ("i", K), ("D", times), ("D", grid)])
        run.compare("LoadKaplanTest", (n, times, K), [("n", left), ("times", times), ("grid", X.v)],
                    [("n", arrays[0]), ("times", arrays[1]), ("grid", arrays[2])])

    for _ in range(cases):
        K = rnd.choice([0, 1, 2, 2, 3, 4])
        G = rnd.choice([0, 1, 2, 5, 9])
        grid = Mat(3 * K + 1, G)
        for g in range(1, G + 1):
            grid.put(1, g, float(g))
            nobody = rnd.random() < .1
            for j in range(1, K + 1):
                risk = 0 if nobody else rnd.choice([0, 1, 2, 5, 9])
                d = rnd.choice([-1, 0, min(1, risk), min(2, risk)] + [1] * (rnd.random() < .1))
                grid.put(3 * j - 1, g, float(risk))
                grid.put(3 * j, g, float(d))
                grid.put(3 * j + 1, g, float(-1 if d < 0 else rnd.randrange(2)))
        times = G if rnd.random() < .9 else rnd.randrange(0, G + 3)
        alpha = rnd.choice([0.05, 0.01])
        want = tests(grid, times, K, alpha, dist)
        _, arrays = lib.call("ComputeLifeTests", [("D", grid.v), ("i", times), ("i", G), ("i", K), ("d", alpha),
                                                  ("D", [5.0] * 12)])
        run.compare("ComputeLifeTests", (grid.v, times, G, K, alpha), [("result", want)], [("result", arrays[1])],
                    relative=1e-9, absolute=1e-12)
    run.finish()


if __name__ == "__main__":
    main()
