// Preparation of survival data.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <numeric>
#include <random>
#include <vector>

#include "survival/life/life.h"
#include "survival/survival.h"
#include "tests/support/matrices.h"
#include "tests/survival/life/life_calls.h"

namespace {

using survmeth::test::Column;
using survmeth::test::elements;
using survmeth::test::kInf;
using survmeth::test::kMissingMark;
using survmeth::test::kNan;
using survmeth::test::kNo;
using survmeth::test::kUntouched;
using survmeth::test::kYes;
using survmeth::test::prepare;
using survmeth::test::Prepared;
using Values = std::vector<double>;

TEST(ReorganizeData, GroupsByStratumAndSortsByTime) {
  const Prepared data = prepare({5, 3, 9, 1, 4, 2}, {1, 0, 1, 1, 0, 1}, {2, 1, 1, 2, 1, 2}, {3, 3});
  EXPECT_EQ(data.code, 0);
  EXPECT_EQ(data.time, (Values{3, 4, 9, 1, 2, 5}));
  EXPECT_EQ(data.status, (Values{0, 0, 1, 1, 1, 1}));
  EXPECT_EQ(data.weight, (Values{20, 50, 30, 40, 60, 10}));
  EXPECT_EQ(data.stratum, (Values{1, 1, 1, 2, 2, 2}));
  EXPECT_EQ(data.sizes, (Values{3, 3}));
  EXPECT_EQ(data.maxTime, 9.0);
}

TEST(ReorganizeData, TiesKeepTheirOrder) {
  const Prepared data = prepare({2, 1, 2, 1, 2}, {0, 1, 1, 0, 0}, {1, 1, 1, 1, 1}, {5});
  EXPECT_EQ(data.time, (Values{1, 1, 2, 2, 2}));
  EXPECT_EQ(data.weight, (Values{20, 40, 10, 30, 50}));
  EXPECT_EQ(data.status, (Values{1, 0, 0, 1, 0}));
}

TEST(ReorganizeData, StrataCodesMayBeAnyNumbers) {
  const Prepared data = prepare({1, 2, 3, 4}, {1, 0, 1, 0}, {0.5, -3, 0.5, 1e300}, {1, 2, 1});
  EXPECT_EQ(data.stratum, (Values{-3, 0.5, 0.5, 1e300}));
  EXPECT_EQ(data.time, (Values{2, 1, 3, 4}));
}

TEST(ReorganizeData, RefusesAStatusOutsideItsRange) {
  for (const double bad : {-1.0, -1e-300, 1.0000000000000002, 2.0, kInf, -kInf}) {
    const Prepared data = prepare({3, 1, 2}, {1, bad, 0}, {1, 1, 1}, {3});
    EXPECT_EQ(data.code, -1) << bad;
    EXPECT_EQ(data.time, (Values{3, 1, 2}));
    EXPECT_EQ(data.weight, (Values{10, 20, 30}));
    EXPECT_EQ(data.maxTime, kUntouched);
  }
}

TEST(ReorganizeData, AHalfPassesTheRangeCheck) {
  EXPECT_EQ(prepare({2, 1}, {0.5, 0}, {1, 1}, {2}).code, 0);
}

TEST(ReorganizeData, ANaNStatusPassesTheRangeCheck) {
  const Prepared data = prepare({2, 1}, {kNan, 1}, {1, 1}, {2});
  EXPECT_EQ(data.code, 0);
  EXPECT_EQ(data.time, (Values{1, 2}));
}

TEST(ReorganizeData, OnlyMinusOneSkipsTheStatusCheck) {
  EXPECT_EQ(prepare({2, 1}, {3, 0}, {1, 1}, {2}, -1).code, 0);
  EXPECT_EQ(prepare({2, 1}, {3, 0}, {1, 1}, {2}, 0).code, -1);
  EXPECT_EQ(prepare({2, 1}, {3, 0}, {1, 1}, {2}, 1).code, -1);
}

TEST(ReorganizeData, FewerThanTwoRowsAreRefused) {
  for (const short skip : {kYes, kNo, short{1}}) {
    const Prepared one = prepare({4}, {1}, {1}, {1}, skip);
    EXPECT_EQ(one.code, -2);
    EXPECT_EQ(one.maxTime, kUntouched);
    EXPECT_EQ(prepare({}, {}, {}, {1}, skip).code, -2);
    int n = -5;
    double cell = 4.0;
    double size = 1.0;
    double maxTime = kUntouched;
    EXPECT_EQ(ReorganizeData(&cell, &n, &cell, &cell, &cell, &size, 1, skip, &maxTime), -2);
    EXPECT_EQ(n, -5);
    EXPECT_EQ(cell, 4.0);
    EXPECT_EQ(maxTime, kUntouched);
  }
}

TEST(ReorganizeData, TheStatusOfASingleRowIsCheckedFirst) {
  EXPECT_EQ(prepare({4}, {2}, {1}, {1}, kNo).code, -1);
  EXPECT_EQ(prepare({4}, {2}, {1}, {1}, kYes).code, -2);
}

TEST(ReorganizeData, NoEventIsReportedAndTheRowsAreSorted) {
  const Prepared data = prepare({3, 1, 2}, {0, 0, 0}, {1, 1, 1}, {3});
  EXPECT_EQ(data.code, -3);
  EXPECT_EQ(data.time, (Values{1, 2, 3}));
  EXPECT_EQ(data.weight, (Values{20, 30, 10}));
  EXPECT_EQ(data.maxTime, 3.0);
}

TEST(ReorganizeData, NothingCensoredIsReportedAndTheRowsAreSorted) {
  const Prepared data = prepare({3, 1, 2}, {1, 1, 1}, {1, 1, 1}, {3});
  EXPECT_EQ(data.code, -5);
  EXPECT_EQ(data.time, (Values{1, 2, 3}));
  EXPECT_EQ(data.weight, (Values{20, 30, 10}));
}

TEST(ReorganizeData, ASumOfStatusesDecidesNotTheirValues) {
  EXPECT_EQ(prepare({1, 2}, {1, -1}, {1, 1}, {2}, kYes).code, -3);
  EXPECT_EQ(prepare({1, 2}, {2, 0}, {1, 1}, {2}, kYes).code, 0);  // sum 2 = n, but not constant
  EXPECT_EQ(prepare({1, 2}, {0.5, 0.5}, {1, 1}, {2}, kYes).code, 0);
}

TEST(ReorganizeData, NoStratumSortsNothingButFindsTheLargestTime) {
  const Prepared data = prepare({3, 8, 2}, {1, 0, 1}, {2, 1, 2}, {});
  EXPECT_EQ(data.code, 0);
  EXPECT_EQ(data.time, (Values{3, 8, 2}));
  EXPECT_EQ(data.stratum, (Values{2, 1, 2}));
  EXPECT_EQ(data.maxTime, 8.0);
}

TEST(ReorganizeData, ANegativeNumberOfStrataSortsNothing) {
  Values time{3, 8, 2}, status{1, 0, 1}, weight{1, 2, 3}, stratum{2, 1, 2}, sizes{3};
  int n = 3;
  double maxTime = 0.0;
  EXPECT_EQ(ReorganizeData(time.data(), &n, status.data(), weight.data(), stratum.data(),
                           sizes.data(), -4, kNo, &maxTime),
            0);
  EXPECT_EQ(time, (Values{3, 8, 2}));
  EXPECT_EQ(maxTime, 8.0);
}

TEST(ReorganizeData, OneStratumSortsItsRowsWithoutGrouping) {
  const Prepared data = prepare({5, 4, 3, 2}, {1, 0, 1, 0}, {9, 8, 7, 6}, {3});
  EXPECT_EQ(data.time, (Values{3, 4, 5, 2}));
  EXPECT_EQ(data.weight, (Values{30, 20, 10, 40}));
  EXPECT_EQ(data.stratum, (Values{9, 8, 7, 6}));
}

TEST(ReorganizeData, SizesShortOfTheRowsLeaveTheRestUnsorted) {
  const Prepared data = prepare({5, 4, 3, 2, 1}, {1, 0, 1, 0, 1}, {1, 1, 2, 2, 2}, {2, 1});
  EXPECT_EQ(data.time, (Values{4, 5, 3, 2, 1}));
}

TEST(ReorganizeData, SizesPastTheRowsEndAtTheLastRow) {
  const Prepared data = prepare({5, 4, 3, 2}, {1, 0, 1, 0}, {1, 1, 2, 2}, {2, 90, 3});
  EXPECT_EQ(data.time, (Values{4, 5, 2, 3}));
}

TEST(ReorganizeData, SizesAreTruncated) {
  const Prepared data = prepare({5, 4, 3, 2}, {1, 0, 1, 0}, {1, 1, 2, 2}, {2.99, 2.01});
  EXPECT_EQ(data.time, (Values{4, 5, 2, 3}));
}

TEST(ReorganizeData, SizesThatAreNoCountsNeitherCrashNorLoseRows) {
  for (const double size : {-3.0, 0.0, kNan, kInf, -kInf, 1e18}) {
    const Prepared data = prepare({5, 4, 3, 2}, {1, 0, 1, 0}, {1, 1, 2, 2}, {size, 2.0, size});
    EXPECT_EQ(data.code, 0) << size;
    Values sorted = data.time;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, (Values{2, 3, 4, 5})) << size;
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(data.weight[i], 10.0 * (6.0 - data.time[i]));
  }
}

TEST(ReorganizeData, NaNTimesComeLastAndAreNotTheLargest) {
  const Prepared data = prepare({kNan, 4, kInf, 2, kNan}, {1, 0, 1, 0, 0}, {1, 1, 1, 1, 1}, {5});
  EXPECT_EQ(data.time[0], 2.0);
  EXPECT_EQ(data.time[1], 4.0);
  EXPECT_EQ(data.time[2], kInf);
  EXPECT_EQ(data.weight, (Values{40, 20, 30, 10, 50}));
  EXPECT_EQ(data.maxTime, kInf);
  EXPECT_EQ(prepare({kNan, 4}, {1, 0}, {1, 1}, {2}).maxTime, 4.0);
  EXPECT_EQ(prepare({kNan, kNan}, {1, 0}, {1, 1}, {2}).maxTime, kMissingMark);
}

TEST(ReorganizeData, TheLargestTimeIsThatOfAllStrata) {
  EXPECT_EQ(prepare({-5, -4, -3}, {1, 0, 1}, {1, 1, 2}, {2, 1}).maxTime, -3.0);
}

TEST(ReorganizeDataOnMatrices, AStatusColumnThatIsTooShortFailsTheCheck) {
  Column time({3, 1, 2}), status({1, 0}), weight({1, 2, 3}), stratum({1, 1, 1}), sizes({3});
  int n = 3;
  double maxTime = 0.0;
  EXPECT_EQ(cReorganizeData(&time, &n, &status, &weight, &stratum, &sizes, 1, kNo, &maxTime), -1);
  EXPECT_EQ(elements(time), (Values{3, 1, 2}));
}

TEST(ReorganizeDataOnMatrices, MoreStrataThanSizesEndWithTheSizes) {
  Column time({3, 1, 2}), status({1, 0, 1}), weight({1, 2, 3}), stratum({1, 1, 1}), sizes({3});
  int n = 3;
  double maxTime = 0.0;
  EXPECT_EQ(cReorganizeData(&time, &n, &status, &weight, &stratum, &sizes, INT_MAX, kNo, &maxTime),
            0);
  EXPECT_EQ(elements(time), (Values{1, 2, 3}));
}

// The same order as a stable sort of whole rows by stratum and then by time.
TEST(ReorganizeData, KeepsRowsTogether) {
  std::mt19937 random(11);
  for (int round = 0; round < 300; ++round) {
    const std::size_t n = 2 + random() % 40;
    const int strata = 1 + static_cast<int>(random() % 4);
    Values time(n), status(n), stratum(n), sizes(static_cast<std::size_t>(strata));
    for (std::size_t i = 0; i < n; ++i) {
      time[i] = static_cast<double>(random() % 9);
      status[i] = static_cast<double>(random() % 2);
      const auto code = random() % static_cast<unsigned>(strata);
      stratum[i] = static_cast<double>(code);
      sizes[code] += 1.0;
    }
    std::vector<std::size_t> order(n);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
      return stratum[a] != stratum[b] ? stratum[a] < stratum[b] : time[a] < time[b];
    });
    const Prepared data = prepare(time, status, stratum, sizes);
    for (std::size_t k = 0; k < n; ++k) {
      ASSERT_EQ(data.time[k], time[order[k]]);
      ASSERT_EQ(data.status[k], status[order[k]]);
      ASSERT_EQ(data.stratum[k], stratum[order[k]]);
      ASSERT_EQ(data.weight[k], 10.0 * (static_cast<double>(order[k]) + 1.0));
    }
  }
}

}  // namespace
