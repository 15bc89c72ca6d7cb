// Breslow's baseline survival.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/matrices.h"
#include "tests/survival/cox/cox_case.h"

namespace {

using survmeth::test::Column;
using survmeth::test::CoxArrays;
using survmeth::test::CoxCase;
using survmeth::test::Doubles;
using survmeth::test::elements;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Both tables, S x G, cells to be left alone marked 7.
struct Baseline {
  Baseline(CoxCase* c, Doubles coefficients, int columns = 0)
      : survival(c->S, columns > 0 ? columns : c->G, 7), mean(c->S, survival.cols(), 7) {
    Column beta(coefficients);
    SurvFoncCox(c->n, static_cast<int>(coefficients.size()), &c->X, &c->sizes, c->S, &beta,
                &c->distinct, &c->start, &c->events, c->G, &survival, &mean);
  }
  matrix survival;
  matrix mean;
};

TEST(CoxBaseline, WithoutEffectIsTheExponentialOfTheHazardSum) {
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}}));
  const Baseline b(&c, {0});
  EXPECT_NEAR(b.survival.vbget(1, 1), std::exp(-1.0 / 3), 1e-15);
  EXPECT_NEAR(b.survival.vbget(1, 2), std::exp(-5.0 / 6), 1e-15);
  EXPECT_NEAR(b.survival.vbget(1, 3), std::exp(-11.0 / 6), 1e-15);
  EXPECT_EQ(elements(b.mean), elements(b.survival));
}

TEST(CoxBaseline, AtTheMeansIsAPower) {
  // Risk sums 5, 3, 2; the covariate's mean is 2/3, its hazard 2^(2/3).
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}}));
  const Baseline b(&c, {std::log(2.0)});
  const double sums[] = {1.0 / 5, 8.0 / 15, 31.0 / 30};
  for (int k = 1; k <= 3; ++k) {
    EXPECT_NEAR(b.survival.vbget(1, k), std::exp(-sums[k - 1]), 1e-14);
    EXPECT_NEAR(b.mean.vbget(1, k), std::exp(-sums[k - 1] * std::pow(2.0, 2.0 / 3)), 1e-14);
  }
}

TEST(CoxBaseline, TiedEventsShareOneRiskSum) {
  // Two events among four rows, then one among two.
  CoxCase c(CoxArrays({1, 1, 2, 2}, {1, 1, 1, 0}, {{1, 0, 1, 0}}));
  const Baseline b(&c, {0});
  EXPECT_NEAR(b.survival.vbget(1, 1), std::exp(-0.5), 1e-15);
  EXPECT_NEAR(b.survival.vbget(1, 2), std::exp(-1.0), 1e-15);
}

TEST(CoxBaseline, StrataHaveTheirOwnCurvesAndTheMeansOfAllRows) {
  CoxCase c(
      CoxArrays({1, 2, 3, 1, 2}, {1, 1, 1, 1, 1}, {{1, 0, 1, 4, 4}}, {1, 1, 1, 2, 2}, {3, 2}));
  const double e = std::exp(0.1);
  const Baseline b(&c, {0.1});
  EXPECT_NEAR(b.survival.vbget(2, 1), std::exp(-1 / (2 * std::pow(e, 4))), 1e-14);
  EXPECT_NEAR(b.survival.vbget(1, 1), std::exp(-1 / (2 * e + 1)), 1e-14);
  EXPECT_NEAR(b.mean.vbget(2, 1), std::pow(b.survival.vbget(2, 1), std::exp(0.2)), 1e-14);
  EXPECT_EQ(b.survival.vbget(2, 3), 7.0);  // past the stratum's groups
  EXPECT_EQ(b.mean.vbget(2, 3), 7.0);
}

TEST(CoxBaseline, PredictorsOf700OrMoreAreNotAtRisk) {
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{700, 0}}));
  const Baseline b(&c, {1});
  EXPECT_NEAR(b.survival.vbget(1, 1), std::exp(-1.0), 1e-15);
  EXPECT_NEAR(b.survival.vbget(1, 2), std::exp(-2.0), 1e-15);
  CoxCase below(CoxArrays({1, 2}, {1, 1}, {{699, 0}}));
  EXPECT_EQ(Baseline(&below, {1}).survival.vbget(1, 1), 1.0);
}

TEST(CoxBaseline, RiskSumsAtOrBelowTwoToTheMinus52AddNoHazard) {
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{1, 1}}));
  EXPECT_EQ(elements(Baseline(&c, {-40}).survival), (Doubles{1, 1}));
  EXPECT_EQ(Baseline(&c, {-36}).survival.vbget(1, 1), 0.0);  // exp of minus exp(36) / 2
}

TEST(CoxBaseline, MeansWithAPredictorOf700OrMoreAreNotWritten) {
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{1400, 0}}));
  const Baseline b(&c, {1});
  EXPECT_EQ(elements(b.mean), (Doubles{7, 7}));
  EXPECT_NE(b.survival.vbget(1, 1), 7.0);
  CoxCase below(CoxArrays({1, 2}, {1, 1}, {{1399, 0}}));
  EXPECT_NE(Baseline(&below, {1}).mean.vbget(1, 1), 7.0);
}

TEST(CoxBaseline, ACovariateThatIsNotANumberIsNotAtRiskAndHasNoMean) {
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{kNaN, 0}}));
  const Baseline b(&c, {1});
  EXPECT_NEAR(b.survival.vbget(1, 1), std::exp(-1.0), 1e-15);
  EXPECT_EQ(elements(b.mean), (Doubles{7, 7}));
}

TEST(CoxBaseline, UsesTheModelsCovariatesOnly) {
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}, {kNaN, 5, 9}}));
  const Baseline b(&c, {0});
  EXPECT_NEAR(b.survival.vbget(1, 1), std::exp(-1.0 / 3), 1e-15);
}

TEST(CoxBaseline, WithoutCovariatesIsTheHazardSumToo) {
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {}));
  const Baseline b(&c, {});
  EXPECT_NEAR(b.survival.vbget(1, 3), std::exp(-11.0 / 6), 1e-15);
  EXPECT_EQ(elements(b.mean), elements(b.survival));
}

TEST(CoxBaseline, WhatFallsOutsideTheTablesIsDropped) {
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}}));
  const Baseline b(&c, {0}, 2);
  EXPECT_EQ(b.survival.count(), 2);
  EXPECT_NEAR(b.survival.vbget(1, 2), std::exp(-5.0 / 6), 1e-15);
}

TEST(CoxBaseline, WildTablesEndAndStayInside) {
  const Doubles columns = {1, 2, 3, 1, 1, 1, 1, 0, 1};
  for (const int wild : {2147483647, -2147483647 - 1, 7, -7}) {
    for (int place = 0; place < 3; ++place) {
      CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}}));
      matrixInt* tables[] = {&c.start, &c.events, &c.distinct};
      tables[place]->vbset(1, 1, wild);
      Baseline(&c, {0.1});
      EXPECT_EQ(c.columns(), columns);
    }
    CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}}));
    c.sizes.vbset(1, 1, wild);
    Baseline(&c, {0.1});
    c.S = 1;
    matrix table(1, 3, 7), mean(1, 3, 7), beta(1, 1, 0);
    SurvFoncCox(wild, wild, &c.X, &c.sizes, wild, &beta, &c.distinct, &c.start, &c.events, wild,
                &table, &mean);
    EXPECT_EQ(c.columns(), columns);
  }
}

TEST(CoxBaseline, RowsPastTheEndReadMinusOne) {
  // A stratum of four rows over three: the fourth has covariate -1.
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}}));
  c.sizes.vbset(1, 1, 4);
  const Baseline b(&c, {std::log(2.0)});
  EXPECT_NEAR(b.survival.vbget(1, 1), std::exp(-1 / 5.5), 1e-14);
}

TEST(CoxBaseline, AGroupThatBeginsBeforeItsStratumReadsMinusOneThere) {
  // The row before the stratum has no linear predictor: -1, hence exp(-1) in the risk sum.
  CoxCase c(CoxArrays({1, 1, 2}, {1, 1, 1}, {{5, 0, 0}}, {1, 2, 2}, {1, 2}));
  c.start.vbset(2, 1, 1);
  const Baseline b(&c, {0.3});
  EXPECT_NEAR(b.survival.vbget(2, 1), std::exp(-1 / (2 + std::exp(-1.0))), 1e-14);
}

}  // namespace
