// Harrell's concordance index.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "Klikro/Klikro"
#include "survival/validation/validation.h"
#include "tests/support/csv.h"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::Csv;
using Vector = std::vector<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// One covariate with coefficient 1: the score itself.
double index(const Vector& times, const Vector& statuses, const Vector& scores) {
  Column time(times), status(statuses), X(scores), beta({1});
  return ConcordIndex(static_cast<int>(times.size()), 1, &time, &status, &X, &beta);
}

TEST(ConcordIndex, CountsThePairsWhoseEarlierTimeIsAnEvent) {
  // Usable: (1, 2), (1, 3), (1, 4), (3, 4); concordant the first, the second and the last.
  EXPECT_DOUBLE_EQ(index({1, 2, 3, 4}, {1, 0, 1, 0}, {5, 4, 3, 6}), 2 / 4.0);
  EXPECT_DOUBLE_EQ(index({1, 2, 3, 4}, {1, 0, 1, 0}, {5, 4, 3, 1}), 1.0);
}

TEST(ConcordIndex, PerfectAndReversedOrder) {
  EXPECT_EQ(index({1, 2, 3, 4, 5}, {1, 1, 1, 1, 1}, {9, 7, 5, 3, 1}), 1.0);
  EXPECT_EQ(index({1, 2, 3, 4, 5}, {1, 1, 1, 1, 1}, {1, 3, 5, 7, 9}), 0.0);
}

TEST(ConcordIndex, TiesInScoreAreDiscordant) {
  EXPECT_EQ(index({1, 2, 3}, {1, 1, 1}, {4, 4, 4}), 0.0);
  EXPECT_DOUBLE_EQ(index({1, 2, 3}, {1, 1, 1}, {4, 4, 3}), 2 / 3.0);
  EXPECT_EQ(index({1, 2}, {1, 1}, {0.0, -0.0}), 0.0);
}

TEST(ConcordIndex, TiesInTimeMakeAPairUnusable) {
  EXPECT_DOUBLE_EQ(index({1, 1, 2}, {1, 1, 0}, {9, 1, 5}), 1 / 2.0);
  // Censored at the time of an event: not usable either.
  EXPECT_EQ(index({1, 1}, {1, 0}, {9, 1}), kMissing);
}

TEST(ConcordIndex, WithoutAUsablePairItIsMissing) {
  EXPECT_EQ(index({1, 2, 3}, {0, 0, 0}, {1, 2, 3}), kMissing);
  EXPECT_EQ(index({2, 2, 2}, {1, 1, 1}, {1, 2, 3}), kMissing);
  EXPECT_EQ(index({1, 2, 3}, {0, 0, 1}, {1, 2, 3}), kMissing);
  EXPECT_EQ(index({1}, {1}, {1}), kMissing);
  EXPECT_EQ(index({}, {}, {}), kMissing);
}

TEST(ConcordIndex, OnlyAStatusOfExactlyOneIsAnEvent) {
  EXPECT_EQ(index({1, 2}, {2, 1}, {2, 1}), kMissing);
  EXPECT_EQ(index({1, 2}, {0.9999999999999999, 1}, {2, 1}), kMissing);
  EXPECT_EQ(index({1, 2}, {-1, 1}, {2, 1}), kMissing);
  EXPECT_EQ(index({1, 2}, {kNan, 1}, {2, 1}), kMissing);
  EXPECT_EQ(index({1, 2}, {1, 0}, {2, 1}), 1.0);
}

TEST(ConcordIndex, NotANumberIsNeitherEarlierNorHigher) {
  EXPECT_EQ(index({1, kNan}, {1, 1}, {2, 1}), kMissing);
  EXPECT_EQ(index({1, 2}, {1, 1}, {kNan, 1}), 0.0);
  EXPECT_EQ(index({1, 2}, {1, 1}, {1, kNan}), 0.0);
  EXPECT_DOUBLE_EQ(index({1, 2, 3}, {1, 1, 1}, {3, kNan, 1}), 1 / 3.0);
}

TEST(ConcordIndex, InfinitiesOrderLikeNumbers) {
  EXPECT_EQ(index({-kInf, kInf}, {1, 0}, {2, 1}), 1.0);
  EXPECT_EQ(index({kInf, kInf}, {1, 1}, {2, 1}), kMissing);
  EXPECT_EQ(index({1, 2}, {1, 0}, {kInf, -kInf}), 1.0);
  EXPECT_EQ(index({1, 2}, {1, 0}, {kInf, kInf}), 0.0);
}

TEST(ConcordIndex, ScoresAreSumsOfProducts) {
  Column time({1, 2, 3}), status({1, 1, 0}), beta({2, -1});
  matrix X(3, 2, 0);
  const double covariates[3][2] = {{1, 0}, {2, 3}, {0, 5}};  // scores 2, 1, -5
  for (int i = 1; i <= 3; ++i) {
    for (int j = 1; j <= 2; ++j) X.vbset(i, j, covariates[i - 1][j - 1]);
  }
  EXPECT_EQ(ConcordIndex(3, 2, &time, &status, &X, &beta), 1.0);
  // Without covariates every score is 0.
  EXPECT_EQ(ConcordIndex(3, 0, &time, &status, &X, &beta), 0.0);
  EXPECT_EQ(ConcordIndex(3, -5, &time, &status, &X, &beta), 0.0);
}

TEST(ConcordIndex, CountsThatDisagreeReadMinusOne) {
  Column time({-3, 2}), status({1, 1}), X({2, 1}), beta({1});
  // Row 3 has time -1, status -1 and covariate -1: after row 1 and before row 2.
  EXPECT_EQ(ConcordIndex(3, 1, &time, &status, &X, &beta), 1.0);
  // The second covariate and its coefficient are -1 each, and move no order.
  EXPECT_EQ(ConcordIndex(2, 2, &time, &status, &X, &beta), 1.0);
  for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(ConcordIndex(n, 1, &time, &status, &X, &beta), kMissing);
  }
}

// The pairs one by one, in two n x n tables.
double literal(const Vector& time, const Vector& status, const Vector& score) {
  const std::size_t n = time.size();
  std::vector<Vector> A(n, Vector(n)), B(n, Vector(n));
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      if (time[i] < time[j] && status[i] == 1) A[i][j] = 1;
      if (score[j] < score[i]) B[i][j] = 1;
    }
  }
  double C = 0, U = 0;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = i + 1; j < n; ++j) {
      C += A[i][j] * B[i][j] + A[j][i] * B[j][i];
      U += A[i][j] + A[j][i];
    }
  }
  return U == 0 ? kMissing : C / U;
}

TEST(ConcordIndex, IsTheSameNumberAsByThePairs) {
  std::mt19937 random(29);
  const double special[] = {kNan, kInf, -kInf, 0.0, -0.0, 1e-310};
  std::uniform_real_distribution<double> uniform;
  for (int round = 0; round < 4000; ++round) {
    const std::size_t n = random() % 40;
    const bool ties = round % 2 == 0;
    const auto value = [&] {
      if (round % 3 == 0 && random() % 6 == 0) return special[random() % 6];
      return ties ? static_cast<double>(random() % 7) : uniform(random);
    };
    Vector time, status, score;
    for (std::size_t i = 0; i < n; ++i) {
      time.push_back(value());
      status.push_back(random() % 3 == 0 ? 0.0 : random() % 5 == 0 ? 2.0 : 1.0);
      score.push_back(value());
    }
    ASSERT_EQ(index(time, status, score), literal(time, status, score)) << "round " << round;
  }
}

TEST(ConcordIndex, IsTheSameNumberForLongColumns) {
  std::mt19937 random(31);
  for (const std::size_t n : {2500u, 3001u}) {  // long enough for another sort
    Vector time, status, score;
    for (std::size_t i = 0; i < n; ++i) {
      time.push_back(static_cast<double>(random() % 1500));
      status.push_back(random() % 2);
      score.push_back(static_cast<double>(random() % 1500) - 700);
    }
    EXPECT_EQ(index(time, status, score), literal(time, status, score));
  }
}

TEST(ConcordIndex, TheOrderOfTheRowsDoesNotMatter) {
  std::mt19937 random(37);
  Vector time, status, score;
  for (int i = 0; i < 300; ++i) {
    time.push_back(random() % 90);
    status.push_back(random() % 2);
    score.push_back(random() % 50);
  }
  const double expected = index(time, status, score);
  for (int round = 0; round < 10; ++round) {
    for (std::size_t i = time.size(); i > 1; --i) {
      const std::size_t j = random() % i;
      std::swap(time[i - 1], time[j]);
      std::swap(status[i - 1], status[j]);
      std::swap(score[i - 1], score[j]);
    }
    EXPECT_EQ(index(time, status, score), expected);
  }
}

TEST(ConcordIndex, LungCancerPairsCountedByAnotherProgram) {
  const Csv data(SURVMETH_DATA "/lung.csv");
  const Csv fit(SURVMETH_REFERENCE "/cox_lung_coefficients.csv");
  const Csv reference(SURVMETH_REFERENCE "/concordance_lung.csv");
  Vector time, status, covariates;
  std::vector<Vector> x(3);
  for (std::size_t i = 0; i < data.rows(); ++i) {
    if (data.text("ph.ecog", i).empty()) continue;
    time.push_back(data.number("time", i));
    status.push_back(data.number("status", i));
    x[0].push_back(data.number("age", i));
    x[1].push_back(data.text("sex", i) == "male" ? 1 : 0);
    x[2].push_back(data.number("ph.ecog", i));
  }
  for (const Vector& column : x) covariates.insert(covariates.end(), column.begin(), column.end());
  const int n = static_cast<int>(time.size());
  ASSERT_EQ(n, reference.number("rows", 0));
  Column t(time), s(status), beta(fit.numbers("coef"));
  matrix X(n, 3, covariates.data(), 0, 0);
  const double c = ConcordIndex(n, 3, &t, &s, &X, &beta);
  EXPECT_EQ(c, reference.number("concordant", 0) / reference.number("usable", 0));
  // With half a point for tied scores, and pairs tied in time, other programs show more.
  EXPECT_GT(reference.number("program.index", 0), c + 0.003);
}

}  // namespace
