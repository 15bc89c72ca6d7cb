// Mean and quartiles of survival.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>
#include <vector>

#include "Dist/Dist"
#include "survival/life/life.h"
#include "tests/support/matrices.h"
#include "tests/survival/life/life_calls.h"

namespace {

using survmeth::test::allSame;
using survmeth::test::kInf;
using survmeth::test::kMissingMark;
using survmeth::test::kNan;
using survmeth::test::kUntouched;
using survmeth::test::LifeCall;
using survmeth::test::LifeTables;
using survmeth::test::runLife;
using survmeth::test::Sheet;
using Values = std::vector<double>;

struct Summary {
  double cut = kUntouched;
  Values mean = Values(4, kUntouched);
  Sheet quartiles = Sheet(3, 4);
};

Summary summarise(const Sheet& table, int r, int nObs, double alpha = 0.05) {
  Summary out;
  Sheet copy = table;
  ComputeKaplanMeanMedian(copy.data(), static_cast<int>(table.rows()) - 2, alpha, nObs, r, &out.cut,
                          out.mean.data(), out.quartiles.data());
  EXPECT_TRUE(allSame(table.elements(), copy.elements()));
  EXPECT_TRUE(out.quartiles.marginIsUntouched());
  return out;
}

Summary summarise(Values time, Values status, double alpha = 0.05) {
  LifeCall call;
  call.time = std::move(time);
  call.status = std::move(status);
  call.fill = 0.0;
  const LifeTables out = runLife(call);
  return summarise(out.table, out.nRows, static_cast<int>(call.time.size()), alpha);
}

// One row of a made-up table.
struct Row {
  double time, events, atRisk, survival, greenwood;
};

Sheet tableOf(const std::vector<Row>& rows) {
  Sheet table(static_cast<long long>(rows.size()) + 2, 12, 0.0);
  table.at(1, 7) = table.at(1, 8) = 1.0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const int row = static_cast<int>(i) + 2;
    table.at(row, 1) = rows[i].time;
    table.at(row, 4) = rows[i].events;
    table.at(row, 6) = rows[i].atRisk;
    table.at(row, 8) = rows[i].survival;
    table.at(row, 11) = rows[i].greenwood;
  }
  return table;
}

TEST(MeanSurvival, IsTheAreaUnderACurveThatReachesZero) {
  const Summary out = summarise({2, 3, 3, 5, 8}, {1, 1, 0, 0, 1});
  EXPECT_EQ(out.cut, 0.0);
  EXPECT_DOUBLE_EQ(out.mean[0], 2 + 0.8 * 1 + 0.6 * 2 + 0.6 * 3);
  // (3.8^2 / 20 + 3^2 / 12) * 5 / 4
  EXPECT_DOUBLE_EQ(out.mean[1], std::sqrt(1.84));
  EXPECT_DOUBLE_EQ(out.mean[2], 5.8 - 1.959963984540054 * std::sqrt(1.84));
  EXPECT_DOUBLE_EQ(out.mean[3], 5.8 + 1.959963984540054 * std::sqrt(1.84));
}

TEST(MeanSurvival, WithoutCensoringItIsTheArithmeticMeanWithItsStandardError) {
  const Values times{1, 2, 4, 4, 7, 11, 13};
  const Summary out = summarise(times, Values(times.size(), 1.0));
  double mean = 0.0, squares = 0.0;
  for (const double t : times) mean += t / 7.0;
  for (const double t : times) squares += (t - mean) * (t - mean);
  EXPECT_NEAR(out.mean[0], mean, 1e-14);
  EXPECT_NEAR(out.mean[1], std::sqrt(squares / 6.0 / 7.0), 1e-14);
}

TEST(MeanSurvival, IsRestrictedToTheLastGroupOfCensorings) {
  const Summary out = summarise({1, 2, 3, 4}, {1, 0, 1, 0});
  EXPECT_EQ(out.cut, 4.0);
  // 0..1 at 1, 1..2 and 2..3 at 3/4; the step that ends at the cut is not counted.
  EXPECT_DOUBLE_EQ(out.mean[0], 1 + 0.75 * 1 + 0.75 * 1);
}

TEST(MeanSurvival, TheCutFollowsAGroupLaterThanTheCutBeforeIt) {
  // Groups of censorings at 2, 3 and 4: 2 follows 1 > 0; 3 follows 2, which is not above the cut
  // 2; 4 follows 3 > 2.
  EXPECT_EQ(summarise({1, 2}, {1, 0}).cut, 2.0);
  EXPECT_EQ(summarise({1, 2, 3}, {1, 0, 0}).cut, 2.0);
  EXPECT_EQ(summarise({1, 2, 3, 4}, {1, 0, 0, 0}).cut, 4.0);
}

TEST(MeanSurvival, AFirstGroupOfCensoringsDoesNotCut) {
  const Summary out = summarise({1, 2, 2}, {0, 1, 0});
  EXPECT_EQ(out.cut, 0.0);
  EXPECT_DOUBLE_EQ(out.mean[0], 1 + 1.0 * 1);
}

TEST(MeanSurvival, GroupsAtOrBeforeZeroDoNotCut) {
  EXPECT_EQ(summarise({-1, 0, 3}, {1, 0, 1}).cut, 0.0);
  EXPECT_EQ(summarise({0, 2, 2}, {1, 0, 0}).cut, 0.0);
}

TEST(MeanSurvival, ASurvivalNotAboveTheGuardCountsAsZero) {
  std::vector<Row> rows{{1, 1, 4, 0.75, 0}, {2, 0, 3, 0.75, 0}, {3, 3, 3, 0x1p-52, 0}};
  EXPECT_EQ(summarise(tableOf(rows), 3, 4).cut, 0.0);
  rows[2].survival = 0x1.0000000000001p-52;
  EXPECT_EQ(summarise(tableOf(rows), 3, 4).cut, 2.0);
}

TEST(MeanSurvival, ASingleObservationHasNoStandardError) {
  const Summary out = summarise({3}, {1});
  EXPECT_EQ(out.mean[0], 3.0);
  for (int i = 1; i <= 3; ++i) EXPECT_EQ(out.mean[static_cast<std::size_t>(i)], kMissingMark);
}

TEST(MeanSurvival, CountsBelowTwoHaveNoStandardError) {
  const Sheet table = tableOf({{1, 1, 2, 0.5, 0.5}, {3, 1, 1, 0, 0.5}});
  for (const int nObs : {1, 0, -3, INT_MIN}) {
    const Summary out = summarise(table, 2, nObs);
    EXPECT_EQ(out.mean, (Values{2, kMissingMark, kMissingMark, kMissingMark})) << nObs;
  }
  EXPECT_DOUBLE_EQ(summarise(table, 2, 2).mean[1], std::sqrt(2 * (1.0 / (1 * 2)) / 1));
}

TEST(MeanSurvival, ALowerBoundBelowZeroIsZero) {
  const Summary out = summarise({1, 1, 1, 40}, {1, 1, 1, 1});
  EXPECT_GT(1.959963984540054 * out.mean[1], out.mean[0]);
  EXPECT_EQ(out.mean[2], 0.0);
}

TEST(MeanSurvival, AGroupThatAllFailsAddsNoVariance) {
  const Summary out = summarise({2, 2}, {1, 1});
  EXPECT_EQ(out.mean, (Values{2, 0, 2, 2}));
}

TEST(MeanSurvival, AlphaIsTheSignificanceLevel) {
  const Values times{1, 2, 4, 4, 7}, events(5, 1.0);
  const Summary ten = summarise(times, events, 0.1);
  EXPECT_DOUBLE_EQ(ten.mean[3] - ten.mean[0], 1.6448536269514722 * ten.mean[1]);
  // Above 1 the quantile is negative and keeps its sign.
  const Summary wide = summarise(times, events, 1.5);
  EXPECT_GT(wide.mean[2], wide.mean[3]);
  EXPECT_EQ(summarise(times, events, 0.0).mean[2], 0.0);
  EXPECT_EQ(summarise(times, events, 0.0).mean[3], kInf);
  EXPECT_TRUE(std::isnan(summarise(times, events, -1.0).mean[3]));
  EXPECT_TRUE(std::isnan(summarise(times, events, kNan).mean[2]));
}

TEST(SurvivalQuartiles, OfFiveRows) {
  const Summary out = summarise({2, 3, 3, 5, 8}, {1, 1, 0, 0, 1});
  EXPECT_EQ(out.quartiles.row(1, 4), (Values{0.75, 8, 3, 8}));
  EXPECT_EQ(out.quartiles.row(2, 4), (Values{0.5, 8, 2, 8}));
  EXPECT_EQ(out.quartiles.row(3, 4), (Values{0.25, 3, 2, 8}));
}

TEST(SurvivalQuartiles, AreMissingWhereTheCurveStaysAbove) {
  const Summary out = summarise({1, 2, 3, 4, 5}, {1, 0, 0, 0, 0});
  for (int j = 1; j <= 3; ++j) {
    EXPECT_EQ(out.quartiles.row(j, 4),
              (Values{(4 - j) * 0.25, kMissingMark, kMissingMark, kMissingMark}));
  }
}

TEST(SurvivalQuartiles, AreMissingWhereTheFirstTimePassesTheLevel) {
  // Survival falls from 1 to 1/4 at the first time, then to 0.
  const Summary out = summarise({1, 1, 1, 2}, {1, 1, 1, 1});
  EXPECT_EQ(out.quartiles.at(3, 2), kMissingMark);
  EXPECT_EQ(out.quartiles.at(2, 2), kMissingMark);
  EXPECT_EQ(out.quartiles.at(1, 2), 2.0);
}

TEST(SurvivalQuartiles, AreMissingWhereTheCurveEndsOnTheLevel) {
  const Summary out = summarise({1, 2, 3, 4}, {1, 1, 0, 0});
  EXPECT_EQ(out.quartiles.at(2, 2), kMissingMark);  // it ends on 1/2: reached, but not passed
  EXPECT_NE(out.quartiles.at(2, 3), kMissingMark);
  EXPECT_EQ(out.quartiles.at(3, 2), 2.0);
}

TEST(SurvivalQuartiles, TheLastCrossingCounts) {
  const Sheet table =
      tableOf({{1, 1, 9, 0.6, 0}, {2, 1, 9, 0.4, 0}, {3, 1, 9, 0.7, 0}, {4, 1, 9, 0.3, 0}});
  EXPECT_EQ(summarise(table, 4, 9).quartiles.at(2, 2), 4.0);
}

TEST(SurvivalQuartiles, ACrossingNeedsAnEvent) {
  const Sheet table = tableOf({{1, 1, 9, 0.6, 0}, {2, 0, 9, 0.4, 0}});
  EXPECT_EQ(summarise(table, 2, 9).quartiles.at(2, 2), kMissingMark);
}

TEST(SurvivalQuartiles, AMissingLowerBoundIsZeroAfterAnEventAtTheFirstTime) {
  // No row is inside: Greenwood's sums are 0 and no survival is the level itself.
  std::vector<Row> rows{{1, 1, 9, 0.6, 0}, {2, 1, 9, 0.4, 0}};
  EXPECT_EQ(summarise(tableOf(rows), 2, 9).quartiles.row(2, 4), (Values{0.5, 2, 0, 2}));
  rows[0].events = 0.0;
  EXPECT_EQ(summarise(tableOf(rows), 2, 9).quartiles.at(2, 3), kMissingMark);
}

TEST(SurvivalQuartiles, AMissingUpperBoundIsTheLastTimeIfThatHasAnEvent) {
  std::vector<Row> rows{{1, 1, 9, 0.6, 0}, {2, 1, 9, 0.4, 0}, {3, 1, 9, 0.3, 0}};
  EXPECT_EQ(summarise(tableOf(rows), 3, 9).quartiles.at(2, 4), 3.0);
  rows[2].events = 0.0;
  EXPECT_EQ(summarise(tableOf(rows), 3, 9).quartiles.at(2, 4), kMissingMark);
}

TEST(SurvivalQuartiles, TheUpperBoundStartsWithTheSecondGroup) {
  // Group 1 is inside and group 2 is not, but the first group does not end the set.
  const std::vector<Row> rows{{1, 1, 9, 0.6, 1}, {2, 1, 9, 0.4, 0}, {3, 1, 9, 0.3, 0}};
  const Values row = summarise(tableOf(rows), 3, 9).quartiles.row(2, 4);
  EXPECT_EQ(row, (Values{0.5, 2, 1, 3}));
  const std::vector<Row> later{
      {1, 1, 9, 0.6, 0}, {2, 1, 9, 0.55, 1}, {3, 1, 9, 0.3, 0}, {4, 1, 9, 0.2, 0}};
  EXPECT_EQ(summarise(tableOf(later), 4, 9).quartiles.row(2, 4), (Values{0.5, 3, 2, 3}));
}

TEST(SurvivalQuartiles, ARowAtOrBeforeZeroEndsNoSet) {
  const std::vector<Row> rows{
      {-2, 1, 9, 0.9, 0}, {0, 1, 9, 0.55, 1}, {3, 1, 9, 0.3, 0}, {4, 1, 9, 0.2, 0}};
  EXPECT_EQ(summarise(tableOf(rows), 4, 9).quartiles.row(2, 4), (Values{0.5, 3, 0, 4}));
}

TEST(SurvivalQuartiles, ATimeOfMinusOneReadsAsNotFound) {
  // The bound found at -1 is taken for none, and the next row inside gives it.
  const std::vector<Row> rows{{-1, 1, 9, 0.9, 9}, {2, 1, 9, 0.55, 9}, {3, 1, 9, 0.3, 0}};
  EXPECT_EQ(summarise(tableOf(rows), 3, 9).quartiles.at(2, 3), 2.0);
}

TEST(SurvivalQuartiles, FewerThanTwoGroupsAreNotScanned) {
  const Sheet table = tableOf({{5, 1, 1, 0, 0}});
  const Summary out = summarise(table, 1, 1);
  for (int j = 1; j <= 3; ++j) {
    EXPECT_EQ(out.quartiles.row(j, 4), (Values{(4 - j) * 0.25, kMissingMark, 0, 5}));
  }
  // No group at all: the last row is the origin, whose survival is above every level.
  const Summary none = summarise(table, 0, 1);
  EXPECT_EQ(none.cut, 0.0);
  EXPECT_EQ(none.mean[0], 5.0);
  for (int j = 1; j <= 3; ++j) EXPECT_EQ(none.quartiles.at(j, 3), kMissingMark);
}

TEST(MeanSurvival, RowsPastTheTableReadAsMinusOne) {
  const Sheet table = tableOf({{1, 1, 4, 0.75, 0.1}, {2, 1, 3, 0.5, 0.2}});
  for (const int r : {3, 4, 5, 30, 70, INT_MAX, -1, -9, INT_MIN}) {
    const Summary out = summarise(table, r, 4);
    EXPECT_FALSE(out.mean[0] == kUntouched) << r;
    EXPECT_EQ(out.quartiles.at(1, 1), 0.75) << r;
  }
  Sheet empty(0, 12);
  double cut = kUntouched;
  Values mean(4, kUntouched), quartiles(12, kUntouched);
  for (const int m : {-2, -7, INT_MIN}) {
    ComputeKaplanMeanMedian(empty.data(), m, 0.05, 4, 3, &cut, mean.data(), quartiles.data());
    EXPECT_EQ(cut, 0.0);
    EXPECT_EQ(mean[0], -1.0);
    EXPECT_EQ(quartiles[0], 0.75);
  }
}

// ---- Property: each rule by itself, the area from each group summed anew ----

TEST(MeanSurvival, AgreesWithASecondImplementation) {
  std::mt19937 random(17);
  const double z = InvCDFNormalStd(0.975);
  const double chiSquare = InvCDFChiSq(0.95, 1.0);
  for (int round = 0; round < 2000; ++round) {
    LifeCall call;
    const unsigned n = 1 + random() % 20;
    double time = random() % 2;
    for (unsigned i = 0; i < n; ++i) {
      call.time.push_back(time);
      call.status.push_back(random() % 3 != 0);
      time += random() % 3;
    }
    call.fill = 0.0;
    const LifeTables km = runLife(call);
    const int m = static_cast<int>(n);
    const int r = km.nRows;
    matrix T(m + 2, 12, const_cast<Sheet&>(km.table).data(), 0, 0);
    const auto t = [&](int k) { return T.vbget(k, 1); };
    const auto S = [&](int k) { return T.vbget(k, 8); };
    double cut = 0.0;
    if (S(r + 1) > 2.220446049250313e-16) {
      for (int k = 2; k <= r; ++k) {
        if (T.vbget(k + 1, 4) == 0.0 && t(k) > cut) cut = t(k + 1);
      }
    }
    const auto area = [&](int from) {
      double sum = 0.0;
      for (int i = from; i <= r; ++i) {
        if (cut == 0.0 || t(i + 1) < cut) sum += S(i) * (t(i + 1) - t(i));
      }
      return sum;
    };
    double variance = 0.0;
    for (int k = 2; k <= r; ++k) {
      const double d = T.vbget(k, 4), atRisk = T.vbget(k, 6);
      if ((t(k + 1) < cut || cut == 0.0) && std::fabs(atRisk - d) > 2.220446049250313e-16) {
        variance += area(k) * area(k) * d / ((atRisk - d) * atRisk);
      }
    }
    const Summary out = summarise(km.table, r, m);
    const double mean = t(2) + area(2);
    ASSERT_EQ(out.cut, cut);
    ASSERT_NEAR(out.mean[0], mean, 1e-13 * (1 + mean));
    if (m >= 2) {
      const double error = std::sqrt(m * variance / (m - 1));
      ASSERT_NEAR(out.mean[1], error, 1e-13 * (1 + error));
      ASSERT_NEAR(out.mean[2], std::max(0.0, mean - z * error), 1e-12 * (1 + mean));
      ASSERT_NEAR(out.mean[3], mean + z * error, 1e-12 * (1 + mean));
    }
    for (int j = 1; j <= 3; ++j) {
      const double q = 0.25 * j;
      double estimate = kMissingMark, lower = kMissingMark, upper = kMissingMark;
      if (S(r + 1) <= q) {
        bool estimated = false, lowered = false, uppered = false;
        for (int k = 2; k <= r; ++k) {
          const auto inside = [&](int row) {
            return (S(row) - q) * (S(row) - q) <= S(row) * S(row) * chiSquare * T.vbget(row, 11);
          };
          if (S(k) >= q && q > S(k + 1) && T.vbget(k + 1, 4) > 0.0) {
            estimate = t(k + 1);
            estimated = true;
          }
          if (inside(k) && !lowered) {
            lower = t(k);
            lowered = true;
          }
          if (inside(k) && !inside(k + 1) && t(k) > 0.0 && k >= 3 && !uppered) {
            upper = t(k + 1);
            uppered = true;
          }
        }
        if (!estimated) estimate = kMissingMark;
        if (!lowered && T.vbget(2, 4) > 0.0) lower = 0.0;
        if (!uppered && T.vbget(r + 1, 4) > 0.0) upper = t(r + 1);
      }
      ASSERT_EQ(out.quartiles.row(j, 4), (Values{(4 - j) * 0.25, estimate, lower, upper}));
    }
  }
}

}  // namespace
