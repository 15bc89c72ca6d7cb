// The life family's entry points with named arguments, on arrays that show every touched cell.
#ifndef TESTS_SURVIVAL_LIFE_LIFE_CALLS_H_
#define TESTS_SURVIVAL_LIFE_LIFE_CALLS_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "survival/survival.h"

namespace survmeth::test {

constexpr double kUntouched = 777.25;
constexpr double kMissingMark = -1.79769313486231e308;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr short kYes = -1;
constexpr short kNo = 0;

// The same double, -0 equal to +0 and NaN equal to NaN.
inline bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

inline testing::AssertionResult allSame(const std::vector<double>& expected,
                                        const std::vector<double>& actual) {
  if (expected.size() != actual.size()) {
    return testing::AssertionFailure() << expected.size() << " against " << actual.size();
  }
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (!same(expected[i], actual[i])) {
      return testing::AssertionFailure()
             << "element " << i << ": expected " << expected[i] << ", got " << actual[i];
    }
  }
  return testing::AssertionSuccess();
}

// A caller's block, column by column, with room behind it that nobody may touch.
class Sheet {
 public:
  Sheet(long long rows, long long cols, double fill = kUntouched)
      : rows_(std::max(rows, 0LL)),
        count_(static_cast<std::size_t>(rows_ * std::max(cols, 0LL))),
        cells_(count_ + kMargin, fill) {
    std::fill(cells_.begin() + static_cast<std::ptrdiff_t>(count_), cells_.end(), kUntouched);
  }

  double* data() { return cells_.data(); }
  long long rows() const { return rows_; }
  double& at(int i, int j) { return cells_.at(static_cast<std::size_t>(i - 1 + (j - 1) * rows_)); }
  double at(int i, int j) const {
    return cells_.at(static_cast<std::size_t>(i - 1 + (j - 1) * rows_));
  }
  std::vector<double> row(int i, int cols) const {
    std::vector<double> values;
    for (int j = 1; j <= cols; ++j) values.push_back(at(i, j));
    return values;
  }
  std::vector<double> elements() const {
    return {cells_.begin(), cells_.begin() + static_cast<std::ptrdiff_t>(count_)};
  }
  bool marginIsUntouched() const {
    return std::all_of(cells_.begin() + static_cast<std::ptrdiff_t>(count_), cells_.end(),
                       [](double cell) { return cell == kUntouched; });
  }

 private:
  static constexpr std::size_t kMargin = 64;
  long long rows_;
  std::size_t count_;
  std::vector<double> cells_;
};

// Arguments of RunLife; m = -1000 stands for all rows past the offset.
struct LifeCall {
  static constexpr int kAllRows = -1000;

  std::vector<double> time, status, weight;  // weight empty: all 1
  int stratum = 1;
  int offset = 0;
  int m = kAllRows;
  int eventCode = 1;
  short countsFormat = kNo;
  short lifeTable = kNo;
  short intervalsByWidth = kNo;
  double width = 1.0;
  int nIntervals = 0;
  std::vector<double> bounds;
  short fillStrata = kNo;
  int nStrata = 1;
  std::vector<double> gridTimes;
  double fill = kUntouched;  // of table and intervals
};

struct LifeTables {
  Sheet intervals, table, grid;
  double total = kUntouched;
  int nRows = INT_MIN;
};

inline LifeTables runLife(LifeCall call) {
  const int nAll = static_cast<int>(call.time.size());
  if (call.m == LifeCall::kAllRows) call.m = nAll - call.offset;
  if (call.weight.empty()) call.weight.assign(call.time.size(), 1.0);
  if (call.nIntervals == 0) call.nIntervals = static_cast<int>(call.bounds.size());
  if (call.bounds.empty()) call.bounds.assign(1, 0.0);
  const int nGrid = static_cast<int>(call.gridTimes.size());

  long long intervalRows = call.m + 1LL;
  long long tableRows = call.m + 2LL;
  if (call.lifeTable == kYes) {
    long long filled = call.nIntervals;
    if (call.intervalsByWidth == kYes) {
      const long long last = 0LL + call.offset + std::max(call.m, 0);
      const double lastTime =
          last >= 1 && last <= nAll ? call.time[static_cast<std::size_t>(last - 1)] : -1.0;
      const double q = std::floor(lastTime / call.width);
      filled = std::fabs(q) < 1e6 ? static_cast<long long>(q) : -1000;
    }
    intervalRows = filled + 2;
    tableRows = std::max<long long>(filled, call.nIntervals) + 3;
  }
  LifeTables out{Sheet(intervalRows, 2, call.fill),
                 Sheet(tableRows, call.lifeTable == kYes ? 16 : 12, call.fill),
                 Sheet(3 * call.nStrata + 1, std::max(nGrid, 1))};
  for (int g = 1; g <= nGrid; ++g)
    out.grid.at(1, g) = call.gridTimes[static_cast<std::size_t>(g) - 1];

  const LifeCall before = call;
  RunLife(nAll, call.stratum, &call.offset, call.nIntervals, call.width, nGrid, call.nStrata,
          call.m, call.eventCode, 11, 12, call.time.data(), call.status.data(), call.weight.data(),
          call.countsFormat, call.fillStrata, call.lifeTable, call.intervalsByWidth,
          call.bounds.data(), out.intervals.data(), &out.total, out.table.data(), &out.nRows,
          out.grid.data());
  EXPECT_TRUE(out.intervals.marginIsUntouched());
  EXPECT_TRUE(out.table.marginIsUntouched());
  EXPECT_TRUE(out.grid.marginIsUntouched());
  EXPECT_TRUE(allSame(before.time, call.time));
  EXPECT_TRUE(allSame(before.status, call.status));
  EXPECT_TRUE(allSame(before.weight, call.weight));
  EXPECT_TRUE(allSame(before.bounds, call.bounds));
  EXPECT_EQ(before.offset, call.offset);
  return out;
}

struct Prepared {
  std::vector<double> time, status, weight, stratum, sizes;
  int code = 0;
  double maxTime = kUntouched;
};

inline Prepared prepare(std::vector<double> time, std::vector<double> status,
                        std::vector<double> stratum, std::vector<double> sizes,
                        short skipStatusCheck = kNo) {
  Prepared data{std::move(time), std::move(status), {}, std::move(stratum), std::move(sizes)};
  // Weights that tell the rows apart.
  for (std::size_t i = 0; i < data.time.size(); ++i) data.weight.push_back(10.0 * (i + 1.0));
  int n = static_cast<int>(data.time.size());
  const int strata = static_cast<int>(data.sizes.size());
  if (data.sizes.empty()) data.sizes.assign(1, 0.0);
  data.code = ReorganizeData(data.time.data(), &n, data.status.data(), data.weight.data(),
                             data.stratum.data(), data.sizes.data(), strata, skipStatusCheck,
                             &data.maxTime);
  EXPECT_EQ(n, static_cast<int>(data.time.size()));
  return data;
}

}  // namespace survmeth::test

#endif  // TESTS_SURVIVAL_LIFE_LIFE_CALLS_H_
