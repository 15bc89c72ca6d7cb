// The comparison tests between strata.
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
using survmeth::test::kNan;
using survmeth::test::kUntouched;
using survmeth::test::Sheet;
using Values = std::vector<double>;

// One stratum at one grid time.
struct Cell {
  double atRisk, events;
};

// times[i][j]: stratum j + 1 at grid time i + 1.
Sheet gridOf(const std::vector<std::vector<Cell>>& times, int K) {
  Sheet grid(3 * K + 1, static_cast<long long>(times.size()), 0.0);
  for (std::size_t i = 0; i < times.size(); ++i) {
    const int column = static_cast<int>(i) + 1;
    grid.at(1, column) = column;
    for (std::size_t j = 0; j < times[i].size(); ++j) {
      const int row = 3 * (static_cast<int>(j) + 1);
      grid.at(row - 1, column) = times[i][j].atRisk;
      grid.at(row, column) = times[i][j].events;
      grid.at(row + 1, column) = times[i][j].events < 0.0 ? -1.0 : 0.0;
    }
  }
  return grid;
}

Sheet test(const Sheet& grid, int nTimes, int G, int K, double alpha = 0.05) {
  Sheet result(3, 4);
  Sheet copy = grid;
  ComputeLifeTests(copy.data(), nTimes, G, K, alpha, result.data());
  EXPECT_TRUE(allSame(grid.elements(), copy.elements()));
  EXPECT_TRUE(result.marginIsUntouched());
  return result;
}

Sheet test(const std::vector<std::vector<Cell>>& times, int K, double alpha = 0.05) {
  const int G = static_cast<int>(times.size());
  return test(gridOf(times, K), G, G, K, alpha);
}

const std::vector<std::vector<Cell>> kThreeTimes{
    {{3, 1}, {3, 0}}, {{2, 0}, {3, 1}}, {{2, 1}, {2, 1}}};

TEST(LifeTests, StatisticsOfThreeTimes) {
  const Sheet out = test(kThreeTimes, 2);
  // U = 1/2 - 2/5 + 0, V = 1/4 + 6/25 + 1/3
  EXPECT_DOUBLE_EQ(out.at(1, 1), 3.0 / 247);
  // The same terms times 6, 5, 4 and their squares: U = 1, V = 9 + 6 + 16/3
  EXPECT_DOUBLE_EQ(out.at(2, 1), 3.0 / 61);
  // Times the roots: V = 6/4 + 5 * 6/25 + 4/3
  const double score = std::sqrt(6.0) / 2 - 2 * std::sqrt(5.0) / 5;
  EXPECT_DOUBLE_EQ(out.at(3, 1), score * score * 30 / 121);
}

TEST(LifeTests, EachRowHasCriticalValueProbabilityAndAlpha) {
  const Sheet out = test(kThreeTimes, 2);
  for (int row = 1; row <= 3; ++row) {
    EXPECT_NEAR(out.at(row, 2), 3.841458820694124, 1e-12);  // chi-square, 1 degree of freedom
    EXPECT_NEAR(out.at(row, 3), std::erfc(std::sqrt(out.at(row, 1) / 2)), 1e-14);
    EXPECT_EQ(out.at(row, 4), 0.05);
  }
  EXPECT_NEAR(test(kThreeTimes, 2, 0.01).at(1, 2), 6.634896601021213, 1e-12);
}

TEST(LifeTests, TheDegreesOfFreedomAreTheStrataLessOne) {
  std::vector<std::vector<Cell>> times;
  for (int i = 0; i < 6; ++i)
    times.push_back({{9.0 - i, 1}, {8.0 - i, 0}, {7.0 - i, 1.0 * (i % 2)}});
  const Sheet out = test(times, 3);
  EXPECT_NEAR(out.at(1, 2), -2 * std::log(0.05), 1e-12);  // 2 degrees of freedom
  EXPECT_NEAR(out.at(1, 3), std::exp(-out.at(1, 1) / 2), 1e-13);
}

TEST(LifeTests, TheOrderOfTheStrataDoesNotMatter) {
  std::vector<std::vector<Cell>> times, turned;
  for (int i = 0; i < 6; ++i) {
    const Cell a{9.0 - i, 1}, b{8.0 - i, 0}, c{7.0 - i, 1.0 * (i % 2)};
    times.push_back({a, b, c});
    turned.push_back({c, a, b});
  }
  for (int row = 1; row <= 3; ++row) {
    EXPECT_NEAR(test(times, 3).at(row, 1), test(turned, 3).at(row, 1), 1e-12);
  }
}

TEST(LifeTests, OneStratumHasNothingToCompare) {
  const Sheet out = test({{{3, 1}}, {{2, 1}}}, 1);
  for (int row = 1; row <= 3; ++row) EXPECT_EQ(out.row(row, 4), (Values{0, 0, 1, 0.05}));
}

TEST(LifeTests, NoStrataHaveNoDegreesOfFreedom) {
  Sheet grid(1, 2, 0.0);
  const Sheet none = test(grid, 2, 2, 0);
  EXPECT_EQ(none.at(1, 1), 0.0);
  EXPECT_TRUE(std::isnan(none.at(1, 2)));
  EXPECT_TRUE(std::isnan(none.at(1, 3)));
  Sheet empty(0, 2);
  for (const int K : {-1, -5, INT_MIN}) EXPECT_EQ(test(empty, 2, 2, K).at(3, 1), 0.0);
}

TEST(LifeTests, TheMarkerOfNoObservationCountsAsNoEvent) {
  auto times = kThreeTimes;
  times[0][1].events = -1;
  times[1][0].events = -1;
  EXPECT_TRUE(allSame(test(kThreeTimes, 2).elements(), test(times, 2).elements()));
}

TEST(LifeTests, NumbersAtRiskAreSummedAsTheyStand) {
  // With -1 at risk in the second stratum N is 2, and E = 1 * 3 / 2.
  const Sheet out = test({{{3, 1}, {-1, 0}}, {{2, 1}, {2, 0}}}, 2);
  const double U = (1 - 3.0 / 2) + (1 - 1.0 / 2);
  EXPECT_EQ(U, 0.0);
  EXPECT_EQ(out.at(1, 1), 0.0);
  const double gehan = (1 - 3.0 / 2) * 2 + (1 - 1.0 / 2) * 4;
  const double variance = 4 * 1 * 1 / 1.0 * (3.0 / 2) * (1 - 3.0 / 2) + 16 * 3 / 3.0 * 0.5 * 0.5;
  EXPECT_DOUBLE_EQ(test({{{3, 1}, {-1, 0}}, {{2, 1}, {2, 0}}}, 2).at(2, 1),
                   gehan * gehan / variance);
}

TEST(LifeTests, ASingleSubjectCountsInTheScoreOnly) {
  auto times = kThreeTimes;
  times.push_back({{1, 1}, {0, 0}});  // observed 1, expected 1
  EXPECT_DOUBLE_EQ(test(times, 2).at(1, 1), 3.0 / 247);
  times.back() = {{0.5, 1}, {0.5, 0}};  // N = 1: U gains 1/2, V nothing
  EXPECT_DOUBLE_EQ(test(times, 2).at(1, 1), 0.6 * 0.6 * 300 / 247);
}

TEST(LifeTests, WithNobodyAtRiskTheExpectationOfTheTimeBeforeStands) {
  auto times = kThreeTimes;
  times.push_back({{0, 1}, {0, 0}});
  // E stays 1 from the third time: U gains nothing.
  EXPECT_DOUBLE_EQ(test(times, 2).at(1, 1), 3.0 / 247);
  times = {kThreeTimes[0], {{0, 1}, {0, 0}}, kThreeTimes[1], kThreeTimes[2]};
  // E stays 1/2: U gains 1/2.
  EXPECT_DOUBLE_EQ(test(times, 2).at(1, 1), 0.6 * 0.6 * 300 / 247);
}

TEST(LifeTests, BeforeTheFirstTimeTheExpectationIsZero) {
  auto times = kThreeTimes;
  times.insert(times.begin(), {{0, 1}, {0, 0}});
  EXPECT_DOUBLE_EQ(test(times, 2).at(1, 1), 1.1 * 1.1 * 300 / 247);
}

TEST(LifeTests, AStratumStartsWithTheExpectationThatTheOneBeforeItEndedWith) {
  // An event of the second stratum while nobody is at risk, then 6, 5, 4 at risk and an event in
  // the first and the last. E of the first stratum is 0, then 12/15; of the second 12/15 still,
  // then 10/15. U = (1/5, 1 - 4/5 - 2/3); V = 13/7 [2/5 3/5, -2/5 1/3; ., 1/3 2/3].
  const Sheet out = test({{{0, 0}, {0, 1}, {0, 0}}, {{6, 1}, {5, 0}, {4, 1}}}, 3);
  const double a = 6.0 / 25, b = -2.0 / 15, c = 2.0 / 9;  // V without 13/7
  const double u = 1.0 / 5, v = 1 - 4.0 / 5 - 2.0 / 3;
  const double form = (c * u * u - 2 * b * u * v + a * v * v) / (a * c - b * b);
  EXPECT_DOUBLE_EQ(out.at(1, 1), form * 7 / 13);
  EXPECT_NEAR(out.at(1, 1), 0.54923, 5e-6);  // the five digits of the sum worked on paper
}

TEST(LifeTests, WithNobodyEverAtRiskTheExpectationIsZeroInEveryStratum) {
  // U = (1, 1), but no V: singular, and no statistic.
  EXPECT_EQ(test({{{0, 1}, {0, 1}, {0, 0}}}, 3).at(1, 1), 0.0);
}

TEST(LifeTests, ASingularCovarianceGivesNoStatistic) {
  const Sheet out = test({{{3, 1}, {0, -1}}, {{2, 1}, {0, -1}}}, 2);
  for (int row = 1; row <= 3; ++row) {
    EXPECT_EQ(out.at(row, 1), 0.0);
    EXPECT_EQ(out.at(row, 3), 1.0);
  }
}

TEST(LifeTests, ACovarianceBelowTheToleranceCountsAsSingular) {
  // V is about 5e-13 in the log-rank test; the weights of the others, 4e6 at risk, lift it.
  const std::vector<std::vector<Cell>> times{{{2e6, 2e-12}, {2e6, 0}}};
  const Sheet out = test(times, 2);
  EXPECT_EQ(out.at(1, 1), 0.0);
  EXPECT_GT(out.at(2, 1), 0.0);
}

TEST(LifeTests, TheThreeTestsCoincideWhereAllWeightsAreOne) {
  const Sheet out = test({{{1, 1}, {0, 0}}, {{0, 0}, {1, 1}}}, 2);
  for (int row = 2; row <= 3; ++row) EXPECT_EQ(out.row(row, 4), out.row(1, 4));
}

TEST(LifeTests, OnlyTheFirstColumnsCount) {
  const Sheet grid = gridOf(kThreeTimes, 2);
  const Sheet out = test(grid, 1, 3, 2);
  EXPECT_DOUBLE_EQ(out.at(1, 1), 1.0);  // U = 1/2, V = 1/4
  for (const int none : {0, -1, INT_MIN}) EXPECT_EQ(test(grid, none, 3, 2).at(1, 1), 0.0);
}

TEST(LifeTests, ColumnsPastTheGridChangeNothing) {
  const Sheet grid = gridOf(kThreeTimes, 2);
  for (const int nTimes : {4, 100, INT_MAX}) {
    EXPECT_TRUE(allSame(test(grid, 3, 3, 2).elements(), test(grid, nTimes, 3, 2).elements()));
  }
  EXPECT_EQ(test(Sheet(7, 0), 5, 0, 2).at(1, 1), 0.0);
  EXPECT_EQ(test(Sheet(7, 0), 5, -4, 2).at(1, 1), 0.0);
}

TEST(LifeTests, UndefinedCountsNeitherHangNorCrash) {
  for (const double odd : {kNan, kInf, -kInf}) {
    auto times = kThreeTimes;
    times[1][0].atRisk = odd;
    EXPECT_EQ(test(times, 2).at(1, 4), 0.05);
    times = kThreeTimes;
    times[1][0].events = odd;
    EXPECT_EQ(test(times, 2).at(1, 4), 0.05);
  }
}

TEST(LifeTestsOnMatrices, MoreStrataThanTheGridHoldsReadPastIt) {
  matrix grid(1, 1, 2.0), result(3, 4, kUntouched);
  EXPECT_EQ(cComputeLifeTests(&grid, 1, 3, 0.05, &result), 0);
  EXPECT_EQ(result.vbget(1, 1), 0.0);
}

// ---- Property: V, its inverse and the form by the book, for every element by itself ----

std::vector<Values> inverted(std::vector<Values> a) {
  const std::size_t n = a.size();
  std::vector<Values> b(n, Values(n, 0.0));
  for (std::size_t i = 0; i < n; ++i) b[i][i] = 1.0;
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t p = k;
    for (std::size_t i = k; i < n; ++i) {
      if (std::fabs(a[i][k]) > std::fabs(a[p][k])) p = i;
    }
    if (!(std::fabs(a[p][k]) > 1e-12)) return std::vector<Values>(n, Values(n, 0.0));
    std::swap(a[k], a[p]);
    std::swap(b[k], b[p]);
    for (std::size_t i = 0; i < n; ++i) {
      if (i == k) continue;
      const double f = a[i][k] / a[k][k];
      for (std::size_t j = 0; j < n; ++j) {
        a[i][j] -= f * a[k][j];
        b[i][j] -= f * b[k][j];
      }
    }
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) b[i][j] /= a[i][i];
  }
  return b;
}

TEST(LifeTests, AgreeWithASecondImplementation) {
  std::mt19937 random(41);
  for (int round = 0; round < 1000; ++round) {
    const int K = 2 + static_cast<int>(random() % 4);
    const int G = 4 + static_cast<int>(random() % 12);
    std::vector<std::vector<Cell>> times;
    for (int i = 0; i < G; ++i) {
      times.emplace_back();
      for (int j = 0; j < K; ++j) {
        const double atRisk = 3.0 + random() % 20;
        times.back().push_back({atRisk, random() % 4 == 0 ? -1.0 : 1.0 * (random() % 3)});
      }
    }
    const Sheet out = test(times, K);
    for (int row = 1; row <= 3; ++row) {
      const auto size = static_cast<std::size_t>(K) - 1;
      Values U(size, 0.0);
      std::vector<Values> V(size, Values(size, 0.0));
      for (const auto& cells : times) {
        double D = 0.0, N = 0.0;
        for (const Cell& cell : cells) {
          D += std::max(cell.events, 0.0);
          N += cell.atRisk;
        }
        if (!(D > 0.0)) continue;
        const double w = row == 1 ? 1.0 : row == 2 ? N : std::sqrt(N);
        for (std::size_t j = 0; j < size; ++j) {
          U[j] += (std::max(cells[j].events, 0.0) - D * cells[j].atRisk / N) * w;
          for (std::size_t l = 0; l < size; ++l) {
            V[j][l] += w * w * D * (N - D) / (N - 1) * (cells[j].atRisk / N) *
                       ((j == l ? 1.0 : 0.0) - cells[l].atRisk / N);
          }
        }
      }
      const std::vector<Values> inverse = inverted(V);
      double Q = 0.0;
      for (std::size_t j = 0; j < size; ++j) {
        for (std::size_t l = 0; l < size; ++l) Q += U[j] * inverse[l][j] * U[l];
      }
      ASSERT_NEAR(out.at(row, 1), Q, 1e-10 * (1 + std::fabs(Q)));
      ASSERT_EQ(out.at(row, 3), pValChiSq(out.at(row, 1), K - 1.0));
    }
  }
}

}  // namespace
