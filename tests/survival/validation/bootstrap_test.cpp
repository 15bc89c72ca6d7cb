// Summary of bootstrap samples.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "Klikro/Klikro"
#include "survival/calls/validation.h"
#include "survival/validation/validation.h"

namespace {

using Vector = std::vector<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// Five statistics, each a column of B values; the summary as five rows of four.
struct Summary {
  Vector cells;

  explicit Summary(std::vector<Vector> columns, double alpha = 0.05, double left = 0.0)
      : cells(20, left) {
    const Vector filler(columns.front().size(), 0.0);
    columns.resize(5, filler);
    Vector statistics;
    for (const Vector& column : columns) {
      statistics.insert(statistics.end(), column.begin(), column.end());
    }
    Cpp_ComputeBootOut(static_cast<int>(filler.size()), alpha, statistics.data(), cells.data());
  }
  double operator()(int c, int column) const { return cells[(column - 1) * 5 + (c - 1)]; }
};

TEST(ComputeBootOut, MeanVarianceAndPercentilesOfEachStatistic) {
  const Summary summary({{1, 2, 3, 4}, {4, 4, 4, 4}, {8, 0, 0, 0}, {-1, 1, -1, 1}, {4, 3, 2, 1}},
                        0.5);
  const double mean[] = {5 / 2.0, 4, 2, 0, 5 / 2.0};
  const double variance[] = {5 / 3.0, 0, 16, 4 / 3.0, 5 / 3.0};
  // Positions 1 + 3/4 and 1 + 9/4 among the ordered values.
  const double lower[] = {7 / 4.0, 4, 0, -1, 7 / 4.0};
  const double upper[] = {13 / 4.0, 4, 2, 1, 13 / 4.0};
  for (int c = 1; c <= 5; ++c) {
    EXPECT_DOUBLE_EQ(summary(c, 1), mean[c - 1]);
    EXPECT_DOUBLE_EQ(summary(c, 2), variance[c - 1]);
    EXPECT_DOUBLE_EQ(summary(c, 3), lower[c - 1]);
    EXPECT_DOUBLE_EQ(summary(c, 4), upper[c - 1]);
  }
}

TEST(ComputeBootOut, MissingValuesPullTheMeanTowardsZero) {
  const Summary summary({{1, kMissing, 3, kMissing}}, 0.5);
  EXPECT_EQ(summary(1, 1), 1.0);                     // 4 / 4
  EXPECT_DOUBLE_EQ(summary(1, 2), (0.0 + 4.0) / 3);  // squares about 1, over B - 1
  EXPECT_EQ(summary(1, 3), 1.5);                     // of 1 and 3
  EXPECT_EQ(summary(1, 4), 2.5);
}

TEST(ComputeBootOut, ValuesAtOrBelowTheMarkerAreMissing) {
  const double lowest = std::numeric_limits<double>::lowest();
  const Summary summary({{kMissing, lowest, -kInf, 6}}, 0.05);
  EXPECT_EQ(summary(1, 1), 1.5);
  EXPECT_EQ(summary(1, 3), 6.0);
  EXPECT_EQ(summary(1, 4), 6.0);
}

TEST(ComputeBootOut, SumsStartFromWhatTheCallerLeft) {
  const Summary summary({{1, 3}}, 0.5, 10.0);
  EXPECT_EQ(summary(1, 1), 7.0);                 // (10 + 4) / 2
  EXPECT_EQ(summary(1, 2), 10.0 + 36.0 + 16.0);  // about 7, over 1
  EXPECT_EQ(summary(1, 3), 1.5);
  EXPECT_EQ(summary(1, 4), 2.5);
}

TEST(ComputeBootOut, NinetyFivePercentIntervalOfFortyOneSamples) {
  Vector values;
  for (int i = 40; i >= 0; --i) values.push_back(i);
  const Summary summary({values}, 0.05);
  EXPECT_DOUBLE_EQ(summary(1, 3), 1.0);
  EXPECT_DOUBLE_EQ(summary(1, 4), 39.0);
}

TEST(ComputeBootOut, OneSampleDividesTheVarianceByZero) {
  const Summary summary({{3}}, 0.05);
  EXPECT_EQ(summary(1, 1), 3.0);
  EXPECT_TRUE(std::isnan(summary(1, 2)));  // 0 / 0
  EXPECT_EQ(summary(1, 3), 3.0);
  EXPECT_EQ(summary(1, 4), 3.0);
  const Summary left({{3}}, 0.05, 1.0);  // mean 4, (1 + 1) / 0
  EXPECT_EQ(left(1, 2), kInf);
}

TEST(ComputeBootOut, AStatisticMissingThroughout) {
  const Summary summary({{kMissing, kMissing, kMissing}}, 0.05);
  EXPECT_EQ(summary(1, 1), 0.0);
  EXPECT_EQ(summary(1, 2), 0.0);
  EXPECT_EQ(summary(1, 3), kMissing);
  EXPECT_EQ(summary(1, 4), kMissing);
}

TEST(ComputeBootOut, WithoutSamplesTheSumsAreDividedAllTheSame) {
  for (const int B : {0, -2, std::numeric_limits<int>::min()}) {
    double none = 5.0;
    Vector cells(20, 3.0);
    Cpp_ComputeBootOut(B, 0.05, &none, cells.data());
    EXPECT_EQ(none, 5.0);
    for (int c = 0; c < 5; ++c) {
      EXPECT_EQ(cells[c], 3.0 / B);
      EXPECT_EQ(cells[5 + c], 3.0 / (static_cast<double>(B) - 1.0));
      EXPECT_EQ(cells[10 + c], kMissing);
      EXPECT_EQ(cells[15 + c], kMissing);
    }
  }
}

TEST(ComputeBootOut, NotANumberSpoilsMeanAndVarianceAndSortsLast) {
  const Summary summary({{1, kNan, 2}}, 1.0);
  EXPECT_TRUE(std::isnan(summary(1, 1)));
  EXPECT_TRUE(std::isnan(summary(1, 2)));
  EXPECT_EQ(summary(1, 3), 2.0);  // the median of 1, 2, NaN
  const Summary infinite({{1, kInf, 2}}, 1.0);
  EXPECT_EQ(infinite(1, 1), kInf);
  EXPECT_TRUE(std::isnan(infinite(1, 2)));
  EXPECT_EQ(infinite(1, 3), 2.0);
}

TEST(ComputeBootOut, LevelsOutsideTheirRangeEndAtTheExtremes) {
  const Summary wide({{1, 2, 3}}, -1.0);
  EXPECT_EQ(wide(1, 3), 1.0);
  EXPECT_EQ(wide(1, 4), 3.0);
  const Summary crossed({{1, 2, 3}}, 5.0);
  EXPECT_EQ(crossed(1, 3), 3.0);
  EXPECT_EQ(crossed(1, 4), 1.0);
  const Summary single({{2}}, kInf);
  EXPECT_EQ(single(1, 3), 2.0);
  EXPECT_EQ(single(1, 4), 2.0);
  const Summary none({{1, 2, 3}}, kNan);
  EXPECT_EQ(none(1, 1), 2.0);
  EXPECT_TRUE(std::isnan(none(1, 3)));
  EXPECT_TRUE(std::isnan(none(1, 4)));
}

TEST(ComputeBootOut, PercentilesAreThoseOfTheSortedValues) {
  std::mt19937 random(5);
  std::normal_distribution<double> normal;
  for (int B = 2; B < 200; B += 7) {
    Vector values;
    for (int b = 0; b < B; ++b) values.push_back(normal(random));
    const double alpha = 0.01 * (1 + B % 30);
    const Summary summary({values}, alpha);
    std::sort(values.begin(), values.end());
    const auto at = [&](double p) {
      const double position = (B - 1) * p;
      const int k = static_cast<int>(position);
      return k + 1 < B ? values[k] + (position - k) * (values[k + 1] - values[k]) : values[k];
    };
    EXPECT_DOUBLE_EQ(summary(1, 3), at(alpha / 2));
    EXPECT_DOUBLE_EQ(summary(1, 4), at(1 - alpha / 2));
  }
}

TEST(ComputeBootOut, ACountBeyondTheMatrixFollowsItsLinearPositions) {
  matrix statistics(2, 5, 0), summary(5, 4, 0);
  for (int c = 1; c <= 5; ++c) {
    statistics.vbset(1, c, 10 * c);
    statistics.vbset(2, c, 10 * c + 2);
  }
  EXPECT_EQ(ComputeBootOut(3, 0.5, &statistics, &summary), 0);
  EXPECT_DOUBLE_EQ(summary.vbget(1, 1), (10 + 12 + 20) / 3.0);
  EXPECT_DOUBLE_EQ(summary.vbget(5, 1), (50 + 52 - 1) / 3.0);
  EXPECT_DOUBLE_EQ(summary.vbget(5, 3), 24.5);  // -1, 50, 52 at 1/4
}

}  // namespace
