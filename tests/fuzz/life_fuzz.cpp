// Fuzz target of the life family.
#include <climits>
#include <cmath>

#include "survival/calls/life.h"
#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/kaplan.h"

namespace survmeth::fuzz {
namespace {

Call reorganize(Input& in, Arrays& a) {
  const int n = in.count(40), strata = in.count(6);
  const short unchecked = in.flag();
  double *time = a.inOut(in.column(n, Likely::kTimes)),
         *status = a.inOut(in.column(n, Likely::kStatus)),
         *weight = a.inOut(in.column(n, Likely::kOnes)),
         *stratum = a.inOut(in.column(n, Likely::kGroups)), *sizes = a.in(in.sizes(strata, n)),
         *maxTime = a.out();
  int* rows = a.in(std::vector<int>{n});
  return [=] {
    return coded(
        ReorganizeData(time, rows, status, weight, stratum, sizes, strata, unchecked, maxTime),
        {0, -3, -5}, {-1, -2});
  };
}

Call run(Input& in, Arrays& a) {
  const int n = in.count(40), strata = in.count(4), stratum = in.integer(1, 3);
  const int nGrid = in.count(40), nIntervals = in.count(20), eventCode = in.integer(0, 1);
  const short counts = in.flag(), fill = in.flag(), lifeTable = in.flag(), byWidth = in.flag();
  const int offset = in.byte() < 160 ? 0 : in.integer(-2, 40);
  const int m = in.byte() < 160 ? n : in.count(40);
  const double width = in.byte() < 160 ? (1 + in.byte()) / 16.0 : in.number();
  const std::vector<double> sorted = in.column(n, Likely::kSorted);

  long long intervalRows = m + 1LL, tableRows = m + 2LL;
  if (lifeTable == -1) {
    long long intervalCount = nIntervals;
    if (byWidth == -1) {
      const long long last = static_cast<long long>(offset) + std::max(m, 0);
      const double q = std::floor((last >= 1 && last <= n ? sorted[last - 1] : -1.0) / width);
      // Arrays of these sizes would only slow the fuzzer down; beyond the largest that can exist
      // the routine has to refuse.
      if (q > 600 && q < INT_MAX / 8) return {};
      intervalCount = q >= -3 && q <= 600 ? static_cast<long long>(q) : -3;
    }
    intervalRows = intervalCount + 2;
    tableRows = std::max<long long>(intervalCount, nIntervals) + 3;
  }
  std::vector<double> bounds = in.column(std::max(nIntervals, 1), Likely::kSorted);
  double *time = a.in(sorted), *status = a.in(in.column(n, Likely::kStatus)),
         *weight = a.in(in.column(n, Likely::kOnes)), *boundList = a.in(bounds),
         *intervals = a.out(2 * std::max(intervalRows, 0LL)), *total = a.out(),
         *table = a.out((lifeTable == -1 ? 16 : 12) * std::max(tableRows, 0LL));
  const int cells = fill == -1 ? std::max(3 * strata + 1, 0) * std::max(nGrid, 1) : 1;
  std::vector<double> gridValues = in.column(cells, Likely::kTimes);
  // A grid with the data's own times, which the cursor needs to move past the first.
  if (fill == -1 && strata >= 0 && in.byte() < 160) {
    for (int g = 0; g < std::min(nGrid, n); ++g) {
      gridValues[static_cast<std::size_t>(g) * (3 * strata + 1)] = sorted[g];
    }
  }
  double* grid = a.inOut(gridValues);
  int *before = a.in(std::vector<int>{offset}), *rows = a.outInts();
  return [=] {
    RunLife(n, stratum, before, nIntervals, width, nGrid, strata, m, eventCode, 0, 0, time, status,
            weight, counts, fill, lifeTable, byWidth, boundList, intervals, total, table, rows,
            grid);
    require(fill == -1 || *grid == 0, "an output that was not asked for becomes 0");
    return Outcome{};
  };
}

Call meanMedian(Input& in, Arrays& a) {
  const int m = in.count(40);
  int rows = 0;
  const std::vector<double> time = in.column(m, Likely::kSorted),
                            status = in.column(m, Likely::kStatus);
  double* table = a.in(kaplanTable(in, time, status, m, &rows));
  const int r = in.byte() < 200 ? rows : in.count(45);
  const int nObs = in.byte() < 200 ? m : in.integer(-2, 3);
  const double alpha = in.alpha();
  double *cut = a.out(), *mean = a.out(4), *quartiles = a.out(12);
  return [=] {
    ComputeKaplanMeanMedian(table, m, alpha, nObs, r, cut, mean, quartiles);
    return Outcome{};
  };
}

Call tests(Input& in, Arrays& a) {
  const int strata = in.count(6), columns = in.count(40);
  const int times = in.byte() < 200 ? columns : in.count(45);
  const double alpha = in.alpha();
  double *grid =
             a.in(in.column(std::max(3 * strata + 1, 0) * std::max(columns, 0), Likely::kTimes)),
         *result = a.out(12);
  return [=] {
    ComputeLifeTests(grid, times, columns, strata, alpha, result);
    return Outcome{};
  };
}

Call loadGrid(Input& in, Arrays& a) {
  const int nTimes = in.count(40), strata = in.count(6);
  const int n = in.byte() < 200 ? nTimes : in.count(45);
  double *times = a.in(in.column(nTimes, Likely::kTimes)),
         *grid = a.out(std::max(3LL * strata + 1, 0LL) * std::max(n, 0));
  int* count = a.inOut(std::vector<int>{n});
  return [=] {
    LoadKaplanTest(count, nTimes, strata, times, grid);
    require(*count <= n, "no more distinct times than times");
    return Outcome{};
  };
}

}  // namespace

const std::vector<Prepare> kEntries = {reorganize, run, meanMedian, tests, loadGrid};

}  // namespace survmeth::fuzz
