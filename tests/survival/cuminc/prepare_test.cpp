// Sorting of recoded competing-risks data.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "Klikro/Klikro"
#include "survival/calls/cuminc.h"
#include "survival/cuminc/cuminc.h"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::elements;
using Vector = std::vector<double>;

struct Prepared {
  Vector time, status, stratum, sizes, flag;
  double maxTime = 99.0;
  int code = 0;

  Prepared(Vector times, Vector statuses, Vector strata, Vector strataSizes, int S)
      : time(times),
        status(statuses),
        stratum(strata),
        sizes(strataSizes),
        flag(times.size(), 55.0) {
    code = Cpp_ReorganizeDataCum(time.data(), static_cast<int>(time.size()), status.data(),
                                 flag.data(), stratum.data(), sizes.data(), S, &maxTime);
  }
};

TEST(ReorganizeDataCum, OneStratumIsSortedByTimeAndItsLabelsStay) {
  const Prepared data({5, 2, 9, 2, 1}, {0, 1, 2, 0, 3}, {4, 3, 2, 1, 0}, {5}, 1);
  EXPECT_EQ(data.code, 0);
  EXPECT_EQ(data.time, (Vector{1, 2, 2, 5, 9}));
  EXPECT_EQ(data.status, (Vector{3, 1, 0, 0, 2}));
  EXPECT_EQ(data.flag, (Vector{1, 1, 0, 0, 1}));
  EXPECT_EQ(data.stratum, (Vector{4, 3, 2, 1, 0}));
  EXPECT_EQ(data.sizes, (Vector{5}));
  EXPECT_EQ(data.maxTime, 9.0);
}

TEST(ReorganizeDataCum, StrataStandInAscendingOrderEachSortedByTime) {
  const Prepared data({5, 2, 9, 3, 1, 4}, {0, 1, 2, 0, 1, 2}, {2, 1, 2, 1, 2, 1}, {3, 3}, 2);
  EXPECT_EQ(data.code, 0);
  EXPECT_EQ(data.stratum, (Vector{1, 1, 1, 2, 2, 2}));
  EXPECT_EQ(data.time, (Vector{2, 3, 4, 1, 5, 9}));
  EXPECT_EQ(data.status, (Vector{1, 0, 2, 1, 0, 2}));
  EXPECT_EQ(data.flag, (Vector{1, 0, 1, 1, 0, 1}));
  EXPECT_EQ(data.maxTime, 9.0);
}

TEST(ReorganizeDataCum, FewerThanTwoRowsAreRefusedUntouched) {
  const Prepared one({5}, {1}, {7}, {1}, 1);
  EXPECT_EQ(one.code, -2);
  EXPECT_EQ(one.flag, (Vector{55}));
  EXPECT_EQ(one.maxTime, 99.0);
  const Prepared none({}, {}, {}, {3}, 1);
  EXPECT_EQ(none.code, -2);
  EXPECT_EQ(none.sizes, (Vector{3}));
  double cell = 8.0;
  EXPECT_EQ(Cpp_ReorganizeDataCum(&cell, -4, &cell, &cell, &cell, &cell, -2, &cell), -2);
  EXPECT_EQ(cell, 8.0);
}

TEST(ReorganizeDataCum, NoEventIsReportedAndTheDataAreSortedAllTheSame) {
  const Prepared data({3, 1, 2}, {0, 0, 0}, {1, 1, 1}, {3}, 1);
  EXPECT_EQ(data.code, -3);
  EXPECT_EQ(data.time, (Vector{1, 2, 3}));
  EXPECT_EQ(data.flag, (Vector{0, 0, 0}));
  EXPECT_EQ(data.maxTime, 3.0);
}

TEST(ReorganizeDataCum, TheCodeForNoEventFollowsTheSumAndNotTheRows) {
  const Prepared data({3, 1, 2}, {1, -1, 0}, {1, 1, 1}, {3}, 1);
  EXPECT_EQ(data.code, -3);
  EXPECT_EQ(data.flag, (Vector{1, 0, 1}));
}

TEST(ReorganizeDataCum, OnlyEventsOfTypeOneAreReported) {
  const Prepared data({3, 1, 2}, {1, 1, 1}, {1, 1, 1}, {3}, 1);
  EXPECT_EQ(data.code, -5);
  EXPECT_EQ(data.time, (Vector{1, 2, 3}));
  EXPECT_EQ(data.flag, (Vector{1, 1, 1}));
}

TEST(ReorganizeDataCum, ASumOfNWithoutAConstantColumnIsNoReport) {
  EXPECT_EQ(Prepared({3, 1, 2}, {0, 2, 1}, {1, 1, 1}, {3}, 1).code, 0);
  EXPECT_EQ(Prepared({3, 1, 2}, {2, 2, 2}, {1, 1, 1}, {3}, 1).code, 0);
}

TEST(ReorganizeDataCum, WithoutStrataNothingIsSorted) {
  for (const int S : {0, -3}) {
    const Prepared data({3, 1, 2}, {0, 2, 1}, {9, 8, 7}, {3}, S);
    EXPECT_EQ(data.code, 0);
    EXPECT_EQ(data.time, (Vector{3, 1, 2}));
    EXPECT_EQ(data.status, (Vector{0, 2, 1}));
    EXPECT_EQ(data.flag, (Vector{0, 1, 1}));
    EXPECT_EQ(data.maxTime, 3.0);
  }
}

TEST(ReorganizeDataCum, RowsPastTheSizesStayAndSizesPastTheRowsEndThere) {
  const Prepared shortSizes({5, 4, 3, 2, 1}, {1, 2, 3, 4, 5}, {1, 1, 1, 1, 1}, {3}, 1);
  EXPECT_EQ(shortSizes.time, (Vector{3, 4, 5, 2, 1}));
  EXPECT_EQ(shortSizes.status, (Vector{3, 2, 1, 4, 5}));
  const Prepared longSizes({5, 4, 3, 2, 1}, {1, 2, 3, 4, 5}, {1, 1, 1, 2, 2}, {3, 70}, 2);
  EXPECT_EQ(longSizes.time, (Vector{3, 4, 5, 1, 2}));
  EXPECT_EQ(longSizes.status, (Vector{3, 2, 1, 5, 4}));
}

TEST(ReorganizeDataCum, SizesAreTruncatedAndNonsensicalOnesHoldNoRow) {
  EXPECT_EQ(Prepared({5, 4, 3}, {1, 2, 3}, {1, 1, 1}, {2.9}, 1).time, (Vector{4, 5, 3}));
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  for (const double size : {nan, inf, -inf, -7.0, 0.0, 1e300}) {
    const Prepared data({5, 4, 3}, {1, 2, 3}, {1, 1, 1}, {size, size}, 2);
    EXPECT_EQ(data.code, 0) << size;
    EXPECT_EQ(data.time, (Vector{5, 4, 3})) << size;
    EXPECT_EQ(data.maxTime, 5.0) << size;
  }
}

TEST(ReorganizeDataCum, TimesThatAreNotNumbersSortLastAndAreNoMaximum) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const Prepared data({nan, 2, -inf, 1}, {1, 2, 3, nan}, {1, 1, 1, 1}, {4}, 1);
  EXPECT_EQ(data.code, 0);
  EXPECT_TRUE(std::isnan(data.time[3]));
  EXPECT_EQ(Vector(data.time.begin(), data.time.end() - 1), (Vector{-inf, 1, 2}));
  EXPECT_EQ(data.maxTime, 2.0);
  EXPECT_EQ(data.flag, (Vector{1, 1, 1, 1}));
  EXPECT_EQ(Prepared({nan, nan}, {1, 2}, {1, 1}, {2}, 1).maxTime, kMissing);
}

TEST(ReorganizeDataCum, EqualTimesKeepTheirOrder) {
  const Prepared data({2, 1, 2, 1, 2}, {1, 2, 3, 4, 5}, {1, 1, 1, 1, 1}, {5}, 1);
  EXPECT_EQ(data.status, (Vector{2, 4, 1, 3, 5}));
}

TEST(ReorganizeDataCum, StrataBeyondTheListOfSizesHoldNoRow) {
  Column time({3, 2, 1}), status({1, 0, 2}), flag({9, 9, 9}), stratum({1, 1, 1});
  Column sizes({2});
  double maxTime = 0.0;
  EXPECT_EQ(ReorganizeDataCum(&time, 3, &status, &flag, &stratum, &sizes,
                              std::numeric_limits<int>::max(), &maxTime),
            0);
  EXPECT_EQ(elements(time), (Vector{2, 3, 1}));
  EXPECT_EQ(elements(status), (Vector{0, 1, 2}));
}

TEST(ReorganizeDataCum, ACountBeyondTheColumnsReadsMinusOneThere) {
  Column time({-3, -2}), status({1, 0}), flag({9, 9}), stratum({1, 1}), sizes({2});
  double maxTime = 0.0;
  EXPECT_EQ(ReorganizeDataCum(&time, 3, &status, &flag, &stratum, &sizes, 1, &maxTime), -3);
  EXPECT_EQ(maxTime, -1.0);
  EXPECT_EQ(elements(flag), (Vector{1, 0}));
}

}  // namespace
