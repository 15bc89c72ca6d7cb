// Confidence intervals: published examples, closed forms, the rules at the ends.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Dist/Dist"

namespace {

constexpr double kZ = 1.959963984540054;

struct Bounds {
  double lower = 7.0;
  double upper = 7.0;
};

Bounds wald(double z, double p, double m) {
  Bounds b;
  GetInfSupWald(z, p, m, &b.lower, &b.upper);
  return b;
}

Bounds wilson(double z, double p, double m, double c) {
  Bounds b;
  GetInfSupWilson(z, p, m, c, &b.lower, &b.upper);
  return b;
}

Bounds clopper(double x, double m, double alpha) {
  Bounds b;
  GetInfSupClopper(x, m, alpha, &b.lower, &b.upper);
  return b;
}

Bounds logInterval(double z, double ratio, double s) {
  Bounds b;
  GetInfSupLog(z, ratio, s, &b.lower, &b.upper);
  return b;
}

// Newcombe, Statistics in Medicine 17 (1998) 857-872, table I: 81/263, 15/148, 0/20, 1/29.
struct Newcombe {
  double x;
  double m;
  Bounds wald;
  Bounds wilson;
  Bounds wilsonCorrected;
  Bounds clopper;
};

const Newcombe kNewcombe[] = {
    {81, 263, {0.2522, 0.3638}, {0.2553, 0.3662}, {0.2535, 0.3682}, {0.2527, 0.3676}},
    {15, 148, {0.0527, 0.1500}, {0.0624, 0.1605}, {0.0598, 0.1644}, {0.0578, 0.1617}},
    {0, 20, {0.0, 0.0}, {0.0, 0.1611}, {0.0, 0.2005}, {0.0, 0.1684}},
    {1, 29, {-0.0319, 0.1009}, {0.0061, 0.1718}, {0.0018, 0.1963}, {0.0009, 0.1776}},
};

void expectPublished(const Bounds& computed, const Bounds& published) {
  EXPECT_NEAR(computed.lower, published.lower, 5.001e-5);
  EXPECT_NEAR(computed.upper, published.upper, 5.001e-5);
}

TEST(Intervals, NewcombesTable) {
  for (const Newcombe& row : kNewcombe) {
    SCOPED_TRACE(testing::Message() << row.x << " of " << row.m);
    expectPublished(wald(kZ, row.x / row.m, row.m), row.wald);
    expectPublished(wilson(kZ, row.x / row.m, row.m, 0.0), row.wilson);
    expectPublished(wilson(kZ, row.x / row.m, row.m, 0.5), row.wilsonCorrected);
    expectPublished(clopper(row.x, row.m, 0.05), row.clopper);
  }
}

TEST(Wald, IsNotClipped) {
  const Bounds low = wald(2.0, 0.1, 9.0);  // 0.1 -+ 2 sqrt(0.09 / 9)
  EXPECT_NEAR(low.lower, -0.1, 1e-16);
  EXPECT_NEAR(low.upper, 0.3, 1e-16);
  EXPECT_NEAR(wald(2.0, 0.9, 9.0).upper, 1.1, 1e-15);
}

TEST(Wald, KeepsTheSignOfZ) {
  const Bounds b = wald(-2.0, 0.5, 25.0);
  EXPECT_NEAR(b.lower, 0.7, 1e-15);
  EXPECT_NEAR(b.upper, 0.3, 1e-15);
}

TEST(Wald, IsAPointAtZeroAndOne) {
  for (const double p : {0.0, 1.0}) {
    EXPECT_EQ(wald(kZ, p, 12.0).lower, p);
    EXPECT_EQ(wald(kZ, p, 12.0).upper, p);
  }
}

TEST(Wald, NoCasesGiveNoBounds) {
  EXPECT_TRUE(std::isnan(wald(kZ, 0.0, 0.0).lower));
  EXPECT_TRUE(std::isnan(wald(kZ, 0.3, -4.0).upper));
}

// z^2 / m = 1, p = 1/2: 2 q^2 - 2 q + 1/4 = 0.
TEST(Wilson, RootsOfItsEquation) {
  const Bounds b = wilson(2.0, 0.5, 4.0, 0.0);
  EXPECT_NEAR(b.lower, 0.5 - std::sqrt(0.125), 1e-16);
  EXPECT_NEAR(b.upper, 0.5 + std::sqrt(0.125), 2e-16);
}

// With the correction the roots belong to p - c/m and p + c/m: here r = 1/4 and 3/4, z^2 / m = 1,
// 2 q^2 - 3/2 q + 1/16 = 0 and 2 q^2 - 5/2 q + 9/16 = 0.
TEST(Wilson, TheCorrectionMovesTheProportionBeforeTheRootIsTaken) {
  const Bounds b = wilson(std::sqrt(2.0), 0.5, 2.0, 0.5);
  EXPECT_NEAR(b.lower, (1.5 - std::sqrt(1.75)) / 4.0, 1e-15);
  EXPECT_NEAR(b.upper, (2.5 + std::sqrt(1.75)) / 4.0, 1e-15);
}

TEST(Wilson, IsZeroOrOneWhereTheCorrectionReachesTheEnd) {
  EXPECT_EQ(wilson(kZ, 0.0, 20.0, 0.5).lower, 0.0);
  EXPECT_EQ(wilson(kZ, 0.02, 20.0, 0.5).lower, 0.0);
  EXPECT_EQ(wilson(kZ, 0.025, 20.0, 0.5).lower, 0.0);
  EXPECT_EQ(wilson(kZ, 1.0, 20.0, 0.5).upper, 1.0);
  EXPECT_EQ(wilson(kZ, 0.99, 20.0, 0.5).upper, 1.0);
  EXPECT_EQ(wilson(kZ, 0.0, 20.0, 0.0).lower, 0.0);
  EXPECT_EQ(wilson(kZ, 1.0, 20.0, 0.0).upper, 1.0);
}

TEST(Wilson, DoesNotDependOnTheSignOfZ) {
  const Bounds plus = wilson(kZ, 0.3, 17.0, 0.5);
  const Bounds minus = wilson(-kZ, 0.3, 17.0, 0.5);
  EXPECT_EQ(plus.lower, minus.lower);
  EXPECT_EQ(plus.upper, minus.upper);
}

TEST(Wilson, ASmallLowerBoundKeepsItsDigits) {
  // p = 1e-12, z^2 / m = 3: lower = 2 p^2 / (2 p + 3 + sqrt(9 + 12 p (1 - p))) = p^2 / 3 (1 - ...).
  EXPECT_NEAR(wilson(3.0, 1e-12, 3.0, 0.0).lower, 1e-24 / 3.0, 1e-35);
}

TEST(ClopperPearson, NoSuccessesAndNoFailuresInClosedForm) {
  for (const double m : {1.0, 4.0, 29.0, 1e6}) {
    for (const double alpha : {0.1, 0.05, 1e-9}) {
      EXPECT_EQ(clopper(0.0, m, alpha).lower, 0.0);
      EXPECT_EQ(clopper(m, m, alpha).upper, 1.0);
      const double logarithm = std::log(0.5 * alpha) / m;
      EXPECT_NEAR(clopper(0.0, m, alpha).upper, -std::expm1(logarithm),
                  -2e-15 * std::expm1(logarithm));
      EXPECT_NEAR(clopper(m, m, alpha).lower, std::exp(logarithm), 1e-15);
    }
  }
}

TEST(ClopperPearson, OneOfOneAtEveryLevel) {
  for (const double alpha : {0.01, 0.5, 1.0}) {
    EXPECT_NEAR(clopper(1.0, 1.0, alpha).lower, 0.5 * alpha, 1e-16);
    EXPECT_NEAR(clopper(0.0, 1.0, alpha).upper, 1.0 - 0.5 * alpha, 2e-16);
  }
}

// x = 1: the lower bound is 1 - (1 - alpha / 2)^(1 / m), x = m - 1 mirrors it.
TEST(ClopperPearson, OneSuccessInClosedForm) {
  for (const double m : {2.0, 17.0, 1e5}) {
    const double expected = -std::expm1(std::log1p(-0.025) / m);
    EXPECT_NEAR(clopper(1.0, m, 0.05).lower, expected, 2e-15 * expected);
    EXPECT_NEAR(clopper(m - 1.0, m, 0.05).upper, 1.0 - expected, 2e-16);
  }
}

TEST(ClopperPearson, SuccessesAndFailuresMirrorEachOther) {
  for (const double x : {0.5, 3.0, 7.25, 40.0}) {
    const Bounds a = clopper(x, 64.0, 0.05);
    const Bounds b = clopper(64.0 - x, 64.0, 0.05);
    EXPECT_NEAR(a.lower, 1.0 - b.upper, 2e-16);
    EXPECT_NEAR(a.upper, 1.0 - b.lower, 2e-16);
  }
}

// P(X >= x) = alpha / 2 at the lower bound, P(X <= x) = alpha / 2 at the upper one.
TEST(ClopperPearson, BoundsAreWhereTheBinomialTailsAreHalfAlpha) {
  const int m = 12;
  const double alpha = 0.08;
  for (int x = 1; x < m; ++x) {
    const Bounds b = clopper(x, m, alpha);
    const auto term = [&](double q, int k) {
      double value = 1.0;
      for (int i = 1; i <= k; ++i) value *= q * (m - k + i) / i;
      for (int i = 0; i < m - k; ++i) value *= 1.0 - q;
      return value;
    };
    double above = 0.0;
    double below = 0.0;
    for (int k = x; k <= m; ++k) above += term(b.lower, k);
    for (int k = 0; k <= x; ++k) below += term(b.upper, k);
    EXPECT_NEAR(above, 0.5 * alpha, 1e-15);
    EXPECT_NEAR(below, 0.5 * alpha, 1e-15);
  }
}

TEST(ClopperPearson, FractionalCountsLieBetweenTheirNeighbours) {
  double previousLower = -1.0;
  double previousUpper = -1.0;
  for (int i = 0; i <= 80; ++i) {
    const Bounds b = clopper(0.125 * i, 10.0, 0.05);
    EXPECT_GE(b.lower, previousLower);
    EXPECT_GE(b.upper, previousUpper);
    previousLower = b.lower;
    previousUpper = b.upper;
  }
}

TEST(ClopperPearson, CountsOutsideTheRangeEndAtZeroAndOne) {
  EXPECT_EQ(clopper(-1.5, 10.0, 0.05).lower, 0.0);
  EXPECT_EQ(clopper(11.5, 10.0, 0.05).upper, 1.0);
  EXPECT_TRUE(std::isnan(clopper(11.5, 10.0, 0.05).lower));
  EXPECT_TRUE(std::isnan(clopper(-1.5, 10.0, 0.05).upper));
  EXPECT_TRUE(std::isnan(clopper(3.0, 10.0, -0.1).lower));
  EXPECT_TRUE(std::isnan(clopper(3.0, 10.0, 2.5).upper));
}

TEST(ClopperPearson, WithAlphaZeroEverythingIsCovered) {
  EXPECT_EQ(clopper(3.0, 10.0, 0.0).lower, 0.0);
  EXPECT_EQ(clopper(3.0, 10.0, 0.0).upper, 1.0);
}

TEST(ClopperPearson, CountsBeyondAllMeasureAreAProportion) {
  const Bounds b = clopper(1e299, 4e299, 0.05);
  EXPECT_NEAR(b.lower, 0.25, 1e-15);
  EXPECT_NEAR(b.upper, 0.25, 1e-15);
  // Three of very many: a gamma quantile over the count.
  EXPECT_NEAR(clopper(3.0, 1e200, 0.05).lower, 0.5 * InvCDFChiSq(0.025, 6.0) / 1e200, 1e-214);
}

TEST(LogInterval, MultipliesAndDividesByTheSameFactor) {
  const Bounds b = logInterval(std::log(3.0), 6.0, 1.0);
  EXPECT_NEAR(b.lower, 2.0, 1e-15);
  EXPECT_NEAR(b.upper, 18.0, 1e-14);
  const Bounds turned = logInterval(-std::log(3.0), 6.0, 1.0);
  EXPECT_EQ(turned.lower, b.upper);
  EXPECT_EQ(turned.upper, b.lower);
}

TEST(LogInterval, OverflowsAndUnderflowsQuietly) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(logInterval(2.0, 1.5, 1e6).upper, kInf);
  EXPECT_EQ(logInterval(2.0, 1.5, 1e6).lower, 0.0);
  EXPECT_EQ(logInterval(2.0, 1.5, kInf).upper, kInf);
  EXPECT_EQ(logInterval(2.0, 1.5, kInf).lower, 0.0);
  EXPECT_EQ(logInterval(1e300, 1.5, 1e300).upper, kInf);
  EXPECT_EQ(logInterval(2.0, 1.5, 0.0).upper, 1.5);
}

}  // namespace
