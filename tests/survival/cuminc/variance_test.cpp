// Variance of the cumulative incidence: another derivation, and long tables against the sum.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "Klikro/Klikro"
#include "survival/calls/cuminc.h"
#include "tests/survival/cuminc/tables.h"

namespace {

using survmeth::test::Count;
using survmeth::test::Incidence;
using survmeth::test::kaplanMeier;
using survmeth::test::Subjects;
using survmeth::test::Table;
using Vector = std::vector<double>;

// Random subjects with types 0, 1, 2; the first has type 1 and the last, alone, is censored.
Subjects randomSubjects(std::mt19937& random, int n, bool ties, double censored) {
  std::uniform_real_distribution<double> uniform;
  Vector time = {-1};
  Vector status = {1};
  for (int i = 1; i < n - 1; ++i) {
    time.push_back(ties ? std::ceil(10 * uniform(random)) : uniform(random));
    const double u = uniform(random);
    status.push_back(u < censored ? 0 : u < (1 + censored) / 2 ? 1 : 2);
  }
  time.push_back(20);
  status.push_back(0);
  return Subjects(time, status);
}

// Incidence and its variance by carrying the covariance of (survival, incidence) from time to
// time: a multinomial draw at each time, and the linear map of what was before.
struct Carried {
  double survival = 1.0, incidence = 0.0;
  double varSurvival = 0.0, covariance = 0.0, varIncidence = 0.0;

  void add(double n, double d, double e) {
    const double p = d / n, q = e / n, s2 = survival * survival / n;
    const double cov = covariance;
    varIncidence += 2 * q * cov + q * q * varSurvival + s2 * q * (1 - q);
    covariance = (1 - p) * (cov + q * varSurvival) - s2 * q * (1 - p);
    varSurvival = (1 - p) * (1 - p) * varSurvival + s2 * p * (1 - p);
    incidence += survival * q;
    survival *= 1 - p;
  }
};

TEST(CumIncVariance, IsTheCarriedCovarianceOfSurvivalAndIncidence) {
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    const Subjects subjects = randomSubjects(random, 10 + round, round % 2 == 0, 0.3);
    const Incidence one(subjects, 1);
    Carried carried;
    for (int k = 1; k <= one.table.rows(); ++k) {
      carried.add(one.table(k, 2), one.table(k, 4), one.table(k, 3));
      EXPECT_NEAR(one.table(k, 6), carried.incidence, 1e-13);
      // The event at the first time is of the type: the first variance lacks no factor.
      EXPECT_NEAR(one.table(k, 7), std::sqrt(carried.varIncidence), 1e-10);
    }
  }
}

// The double sum as the formula has it, and what it is made of without regard to sign.
struct Summed {
  long double variance = 0;
  long double size = 0;
};

Summed summed(const Table& table, const Table& km, int first, int j) {
  Summed result;
  for (int i = first; i <= j; ++i) {
    const long double n = table(i, 2), d = table(i, 4), e = table(i, 3), s = km(i, 8);
    if (!(n - d > 0)) continue;
    const long double step = static_cast<long double>(table(j, 6)) - table(i, 6);
    const long double spread = step * step * d / ((n - d) * n);
    const long double own = s * s * (n - e) * e / (n * n * n);
    const long double shared = 2 * step * s * e / (n * n);
    result.variance += spread + own - shared;
    result.size += std::fabs(spread) + std::fabs(own) + std::fabs(shared);
  }
  return result;
}

TEST(CumIncVariance, LongTablesAgreeWithTheDoubleSum) {
  std::mt19937 random(11);
  double worst = 0.0;
  for (int round = 0; round < 12; ++round) {
    const Subjects subjects = randomSubjects(random, 700 + 150 * round, false, 0.1 + 0.07 * round);
    const Table km = kaplanMeier(countsOf(subjects), subjects.size());
    const Incidence one(subjects, 1);
    ASSERT_GT(one.table.rows(), 512);
    for (int j = 2; j <= one.table.rows(); j += 1 + j / 40) {
      if (one.table(j, 3) <= 0) continue;
      const Summed sum = summed(one.table, km, 1, j);
      const double variance = one.table(j, 7) * one.table(j, 7);
      const double off = std::fabs(static_cast<double>(variance - sum.variance));
      EXPECT_LT(off, 1e-12 * static_cast<double>(sum.size)) << "row " << j;
      if (sum.variance > 1e-2L * sum.size) {
        worst = std::max(worst, off / static_cast<double>(sum.variance));
      }
    }
  }
  EXPECT_LT(worst, 1e-12);
}

TEST(CumIncVariance, DoesNotDependOnTheLengthOfTheTable) {
  std::mt19937 random(13);
  Subjects subjects = randomSubjects(random, 900, false, 0.4);
  Table km = kaplanMeier(countsOf(subjects), 900);
  const Incidence whole(subjects, km, 900, 1);
  const Incidence part(subjects, km, 512, 1);
  for (int k = 1; k <= 512; ++k) {
    EXPECT_EQ(whole.table(k, 6), part.table(k, 6));
    EXPECT_NEAR(whole.table(k, 7), part.table(k, 7), 1e-12 * part.table(k, 7)) << k;
    EXPECT_NEAR(whole.table(k, 9), part.table(k, 9), 1e-12 * part.table(k, 9)) << k;
  }
}

// What has no sum of positive terms is summed as the formula has it, to the bit.
double literal(const Table& table, const Table& km, int first, int j) {
  double sum = 0.0;
  for (int i = first; i <= j; ++i) {
    const double n = table(i, 2), d = table(i, 4), e = table(i, 3), s = km(i, 8);
    if (!(n - d > 0)) continue;
    const double step = table(j, 6) - table(i, 6);
    sum += step * step * d / ((n - d) * n) + s * s * (n - e) * e / (n * n * n) -
           2 * step * s * e / (n * n);
  }
  return sum;
}

TEST(CumIncVariance, NegativeCountsAndValuesThatAreNoNumbersFollowTheDoubleSum) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  std::mt19937 random(17);
  const Subjects subjects = randomSubjects(random, 640, false, 0.4);
  const Table clean = kaplanMeier(countsOf(subjects), 640);
  for (const int column : {4, 6, 8}) {
    for (const double bad : {nan, inf, -inf, -3.0, 0.0, 1e200, -1e-200}) {
      for (const int row : {2, 3, 300}) {
        Table km = clean;
        km(row, column) = bad;
        const Incidence one(subjects, km, 640, 1);
        for (int j = 2; j <= 640; ++j) {
          if (one.table(j, 3) <= 0) continue;
          const double variance = literal(one.table, km, 1, j);
          const double error = variance <= 0 ? 0.0 : std::sqrt(variance);
          if (std::isnan(variance)) {
            ASSERT_TRUE(std::isnan(one.table(j, 7))) << column << ' ' << bad << ' ' << j;
          } else if (std::isinf(variance)) {
            ASSERT_EQ(one.table(j, 7), error) << column << ' ' << bad << ' ' << j;
          } else {
            ASSERT_NEAR(one.table(j, 7), error, 1e-9 * error + 1e-12)
                << column << ' ' << bad << ' ' << row << ' ' << j;
          }
        }
      }
    }
  }
}

TEST(CumIncVariance, AFallingSurvivalWithTurnedSignIsSummedToTheBit) {
  std::mt19937 random(19);
  const Subjects subjects = randomSubjects(random, 600, false, 0.4);
  Table km = kaplanMeier(countsOf(subjects), 600);
  for (int row = 200; row < 600; row += 2) km(row, 8) = -km(row, 8);
  const Incidence one(subjects, km, 600, 1);
  int compared = 0;
  for (int j = 201; j <= 600; ++j) {
    if (one.table(j, 3) <= 0) continue;
    const double variance = literal(one.table, km, 1, j);
    ASSERT_EQ(one.table(j, 7), variance <= 0 ? 0.0 : std::sqrt(variance)) << j;
    ++compared;
  }
  EXPECT_GT(compared, 100);
}

TEST(CumIncVariance, AfterAFallOfTheIncidenceItIsSummedToTheBit) {
  std::mt19937 random(19);
  const Subjects subjects = randomSubjects(random, 600, false, 0.4);
  Table km = kaplanMeier(countsOf(subjects), 600);
  int fall = 300;  // a row with the event; fewer than none at risk there
  while (subjects.status[fall - 1] != 1) ++fall;
  km(fall + 1, 6) = -50;
  const Incidence one(subjects, km, 600, 1);
  EXPECT_LT(one.table(fall, 6), one.table(fall - 1, 6));
  for (int j = fall; j <= 600; ++j) {
    if (one.table(j, 3) <= 0) continue;
    const double variance = literal(one.table, km, 1, j);
    ASSERT_EQ(one.table(j, 7), variance <= 0 ? 0.0 : std::sqrt(variance)) << j;
  }
}

TEST(CumIncVariance, ShortTablesAreSummedToTheBit) {
  std::mt19937 random(23);
  // Every subject has the event: the last variance is a difference of equal sums, and what
  // rounding leaves of it is shown.
  for (int n = 3; n < 60; ++n) {
    Vector time, status(static_cast<std::size_t>(n), 1.0);
    for (int i = 0; i < n; ++i) time.push_back(static_cast<double>(random() % 1000003));
    const Subjects subjects(time, status);
    const Table km = kaplanMeier(countsOf(subjects), n);
    const Incidence one(subjects, 1);
    for (int j = 2; j <= one.table.rows(); ++j) {
      const double variance = literal(one.table, km, 1, j);
      ASSERT_EQ(one.table(j, 7), variance <= 0 ? 0.0 : std::sqrt(variance)) << n << ' ' << j;
    }
  }
}

}  // namespace
