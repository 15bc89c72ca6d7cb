// Sums over risk sets and over times at risk against direct loops over all rows.
#include "engine/risk/sums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "numerics/gram.h"
#include "numerics/threads.h"

namespace survmeth::engine::risk {
namespace {

struct Sample {
  std::vector<double> entry, exit;
  std::vector<std::uint32_t> event, stratum;
  std::size_t strata = 3;
  Response response() const { return {entry, exit, event, 1}; }
  Rows rows() const {
    Rows rows;
    rows.stratum = stratum;
    rows.strata = strata;
    return rows;
  }
};

std::uint32_t next(std::uint64_t& state) {
  state = state * 6364136223846793005U + 1442695040888963407U;
  return static_cast<std::uint32_t>(state >> 33);
}

// `span` distinct whole times; rows enter up to `length` before their exit.
Sample sample(std::size_t n, std::uint32_t span, std::uint32_t length, std::uint32_t strata = 3) {
  Sample s;
  s.strata = strata;
  std::uint64_t state = n + span;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint32_t exit = 1 + next(state) % span;
    s.exit.push_back(exit);
    if (length > 0) {
      s.entry.push_back(std::max(0.0, exit - 1.0 - next(state) % length));
    }
    s.event.push_back(next(state) % 2);
    s.stratum.push_back(next(state) % strata);
  }
  return s;
}

void expectDirectSums(const Sample& s) {
  const Arrangement a(s.response(), s.rows(), 0.0);
  const Sums sums(a);
  std::vector<double> value(a.rows());
  for (std::size_t i = 0; i < a.rows(); ++i) value[i] = 1.0 + static_cast<double>(a.source[i] % 17);
  std::vector<double> others(a.times());
  std::vector<double> failing(a.times());
  sums.overRiskSets(value, others, failing);
  const std::vector<double> largest = sums.largestInRiskSets(value);
  std::vector<double> at(a.times());
  std::vector<double> own(a.times());
  for (std::size_t k = 0; k < a.times(); ++k) {
    at[k] = static_cast<double>(k % 13);
    own[k] = 1000.0 + static_cast<double>(k);
  }
  std::vector<double> total(a.rows());
  sums.overTimes(at, own, total);

  std::vector<double> expectedTotal(a.rows(), 0.0);
  for (std::size_t k = 0; k < a.times(); ++k) {
    double expectedOthers = 0.0;
    double expectedFailing = 0.0;
    double expectedLargest = 0.0;
    for (std::size_t i = 0; i < a.rows(); ++i) {
      const std::uint32_t row = a.source[i];
      const double entry = s.entry.empty() ? -1.0 : s.entry[row];
      if (s.stratum[row] != a.stratumCode[a.timeStratum[k]]) continue;
      if (!(entry < a.time[k] && a.time[k] <= s.exit[row])) continue;
      const bool fails = s.exit[row] == a.time[k] && s.event[row] == 1;
      (fails ? expectedFailing : expectedOthers) += value[i];
      expectedTotal[i] += fails ? own[k] : at[k];
      expectedLargest = std::max(expectedLargest, value[i]);
    }
    // Whole numbers: both sums are exact.
    EXPECT_EQ(others[k], expectedOthers);
    EXPECT_EQ(failing[k], expectedFailing);
    EXPECT_EQ(largest[k], expectedLargest);
  }
  EXPECT_EQ(total, expectedTotal);
}

TEST(RiskSums, AreDirectSumsWhereEverybodyIsAtRiskFromTheBeginning) {
  expectDirectSums(sample(300, 40, 0));
  expectDirectSums(sample(300, 100000, 0));
}

TEST(RiskSums, AreDirectSumsWhereRowsEnterLate) {
  for (const std::uint32_t length : {1U, 3U, 30U, 100U}) expectDirectSums(sample(400, 60, length));
  expectDirectSums(sample(400, 100000, 50000));
}

TEST(RiskSums, AreDirectSumsWhereRowsEnterLateInManyStrata) {
  // Of some ten and of some hundred rows each.
  expectDirectSums(sample(1000, 100000, 50000, 100));
  expectDirectSums(sample(1000, 60, 20, 10));
}

TEST(RiskSums, AreDirectSumsWhereRowsEnterLateAtThousandsOfTimes) {
  // Rows that stay for a few of the times, for some hundred and for nearly all.
  for (const std::uint32_t length : {2000U, 100000U, 1000000U}) {
    expectDirectSums(sample(9000, 1000000, length, 1));
  }
  expectDirectSums(sample(9000, 1000000, 400000, 2));
}

TEST(RiskSums, OfColumnsAbreastHaveTheBitsOfEachColumnByItself) {
  const Sample s = sample(5000, 1000000, 300000);
  const Arrangement a(s.response(), s.rows(), 0.0);
  const Sums sums(a);
  constexpr std::size_t kColumns = 6;
  numerics::BlockedColumns x(a.rows(), kColumns);
  std::vector<double> factor(a.rows());
  for (std::size_t i = 0; i < a.rows(); ++i) {
    factor[i] = 1.0 / static_cast<double>(1 + a.source[i] % 17);
    for (std::size_t j = 0; j < kColumns; ++j) {
      x(i, j) = static_cast<double>((a.source[i] * (j + 3)) % 29) / 7.0 - 2.0;
    }
  }
  for (std::size_t columns = 1; columns <= Sums::kAbreast; ++columns) {
    constexpr std::size_t kFirst = 2;
    std::vector<double> others(a.times() * columns);
    std::vector<double> failing(a.times() * columns);
    sums.overRiskSets(factor, x, kFirst, columns, others, failing);
    for (std::size_t c = 0; c < columns; ++c) {
      std::vector<double> value(a.rows());
      for (std::size_t i = 0; i < a.rows(); ++i) value[i] = factor[i] * x(i, kFirst + c);
      std::vector<double> othersAlone(a.times());
      std::vector<double> failingAlone(a.times());
      sums.overRiskSets(value, othersAlone, failingAlone);
      for (std::size_t k = 0; k < a.times(); ++k) {
        ASSERT_EQ(others[k * columns + c], othersAlone[k]);
        ASSERT_EQ(failing[k * columns + c], failingAlone[k]);
      }
    }
  }
}

TEST(RiskSums, OverTimesHaveTheSameBitsOnAnyNumberOfThreads) {
  const Sample s = sample(9000, 1000000, 300000);
  const Arrangement a(s.response(), s.rows(), 0.0);
  const Sums sums(a);
  std::vector<double> at(a.times());
  for (std::size_t k = 0; k < a.times(); ++k) at[k] = 1.0 / static_cast<double>(1 + k % 13);
  std::vector<double> one(a.rows());
  numerics::setThreads(1);
  sums.overTimes(at, at, one);
  for (const unsigned count : {2U, 7U}) {
    numerics::setThreads(count);
    std::vector<double> several(a.rows());
    sums.overTimes(at, at, several);
    EXPECT_EQ(several, one) << count << " threads";
  }
  numerics::setThreads(0);
}

TEST(RiskSums, SmallRisksLoseNoDigitsBesideLargeOnesThatHaveLeft) {
  // Risks of 1e12 are at risk in the first half, risks of 1 all the time, late entries included.
  Sample s;
  s.strata = 1;
  for (int i = 1; i <= 200; ++i) {
    s.exit.push_back(i);
    s.entry.push_back(i % 3 == 0 ? std::max(0, i - 50) : 0);
    s.event.push_back(1);
    s.stratum.push_back(0);
  }
  const Arrangement a(s.response(), s.rows(), 0.0);
  std::vector<double> value(a.rows());
  for (std::size_t i = 0; i < a.rows(); ++i) value[i] = i < 100 ? 1e12 / 3.0 : 1.0 / 3.0;
  std::vector<double> others(a.times());
  std::vector<double> failing(a.times());
  Sums(a).overRiskSets(value, others, failing);
  for (std::size_t k = 100; k < a.times(); ++k) {
    int atRisk = 0;
    for (std::size_t i = k + 1; i < a.rows(); ++i) atRisk += a.first[i] <= k ? 1 : 0;
    // A hundred additions, each rounded to half a unit of 2^-52.
    EXPECT_NEAR(others[k], atRisk / 3.0, 100 * 0x1p-53 * others[k]) << k;
  }
}

// Values in units of exp(256 b) with b of -2 .. 2 by row; the direct sums in the times' units.
void expectDirectScaledSums(const Sample& s) {
  const Arrangement a(s.response(), s.rows(), 0.0);
  const Sums sums(a);
  std::vector<double> value(a.rows());
  Scales scales;
  for (std::size_t i = 0; i < a.rows(); ++i) {
    value[i] = 1.0 + static_cast<double>(a.source[i] % 17);
    scales.row.push_back(static_cast<double>(a.source[i] % 5) - 2.0);
  }
  scales.time = sums.largestInRiskSets(scales.row);
  std::vector<double> others(a.times());
  std::vector<double> failing(a.times());
  sums.overRiskSets(value, others, failing, scales);
  std::vector<double> at(a.times());
  std::vector<double> own(a.times());
  for (std::size_t k = 0; k < a.times(); ++k) {
    at[k] = 1.0 + static_cast<double>(k % 13);
    own[k] = 1000.0 + static_cast<double>(k);
  }
  std::vector<double> total(a.rows());
  sums.overTimes(at, own, total, scales);

  std::vector<double> expectedTotal(a.rows(), 0.0);
  // Some hundred additions and two scalings of terms of one sign, each rounded to 2^-53.
  constexpr double kTolerance = 1e-14;
  for (std::size_t k = 0; k < a.times(); ++k) {
    double expected[2] = {0.0, 0.0};
    for (std::size_t i = 0; i < a.rows(); ++i) {
      const std::uint32_t row = a.source[i];
      const double entry = s.entry.empty() ? -1.0 : s.entry[row];
      if (s.stratum[row] != a.stratumCode[a.timeStratum[k]]) continue;
      if (!(entry < a.time[k] && a.time[k] <= s.exit[row])) continue;
      const bool fails = s.exit[row] == a.time[k] && s.event[row] == 1;
      const double factor = std::exp(256.0 * (scales.row[i] - scales.time[k]));
      expected[fails ? 1 : 0] += value[i] * factor;
      expectedTotal[i] += (fails ? own[k] : at[k]) * factor;
    }
    EXPECT_NEAR(others[k], expected[0], kTolerance * expected[0]);
    EXPECT_NEAR(failing[k], expected[1], kTolerance * expected[1]);
  }
  for (std::size_t i = 0; i < a.rows(); ++i) {
    EXPECT_NEAR(total[i], expectedTotal[i], kTolerance * expectedTotal[i]);
  }
}

TEST(RiskSums, AreDirectSumsInUnitsOfRowsAndTimes) {
  expectDirectScaledSums(sample(300, 40, 0));
  expectDirectScaledSums(sample(300, 100000, 0));
  for (const std::uint32_t length : {1U, 3U, 30U}) {
    expectDirectScaledSums(sample(400, 60, length));
  }
  expectDirectScaledSums(sample(400, 100000, 50000));
}

TEST(Arrangement, TimesThatDifferByRoundingAreTied) {
  Sample s;
  s.strata = 1;
  s.exit = {0.1 + 0.2, 0.3, 0.5};
  s.event = {1, 1, 1};
  s.stratum = {0, 0, 0};
  const Arrangement tied(s.response(), s.rows(), kTieTolerance);
  EXPECT_EQ(tied.times(), 2U);
  EXPECT_EQ(tied.time[0], 0.3);
  EXPECT_EQ(tied.events[0], 2U);
  EXPECT_EQ(Arrangement(s.response(), s.rows(), 0.0).times(), 3U);
}

TEST(Arrangement, AnIntervalThatTheToleranceClosesIsRefused) {
  Sample s;
  s.strata = 1;
  s.entry = {0.3, 0.0};
  s.exit = {0.1 + 0.2, 1.0};
  s.event = {1, 1};
  s.stratum = {0, 0};
  try {
    const Arrangement refused(s.response(), s.rows(), kTieTolerance);
    FAIL();
  } catch (const Refusal& refusal) {
    EXPECT_EQ(refusal.role(), Role::kEntry);
    EXPECT_EQ(refusal.row(), 0U);
    EXPECT_STREQ(refusal.what(), "entry and exit differ by no more than the tolerance of ties");
  }
  EXPECT_EQ(Arrangement(s.response(), s.rows(), 0.0).times(), 2U);
}

TEST(Arrangement, RowsOfWeightZeroAndEmptyStrataTakeNoPart) {
  const Sample s = [] {
    Sample made;
    made.strata = 5;
    made.exit = {1, 2, 3, 4};
    made.event = {1, 1, 1, 1};
    made.stratum = {4, 1, 4, 1};
    return made;
  }();
  Rows rows = s.rows();
  const std::vector<double> weight = {1.0, 0.0, 2.0, 1.0};
  rows.weight = weight;
  const Arrangement a(s.response(), rows, 0.0);
  EXPECT_EQ(a.source, (std::vector<std::uint32_t>{3, 0, 2}));
  EXPECT_EQ(a.stratumCode, (std::vector<std::uint32_t>{1, 4}));
  EXPECT_EQ(a.weight, (std::vector<double>{1.0, 1.0, 2.0}));
}

}  // namespace
}  // namespace survmeth::engine::risk
