// Residuals of a Cox model.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "Dist/Dist"
#include "tests/support/matrices.h"
#include "tests/survival/cox/cox_case.h"

namespace {

using survmeth::test::Column;
using survmeth::test::CoxArrays;
using survmeth::test::CoxCase;
using survmeth::test::Doubles;
using survmeth::test::Fit;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Baseline and residuals at the given coefficients; residual cells start as 7.
struct Residuals {
  Residuals(CoxCase* c, const Doubles& coefficients)
      : q(static_cast<int>(coefficients.size())),
        survival(c->S, c->G, 7),
        mean(c->S, c->G, 7),
        table(c->n, 2 * q + 4, 7) {
    Column beta(coefficients);
    SurvFoncCox(c->n, q, &c->X, &c->sizes, c->S, &beta, &c->distinct, &c->start, &c->events, c->G,
                &survival, &mean);
    compute(c, &beta);
  }
  void compute(CoxCase* c, matrix* beta) {
    ResCox(&c->time, c->n, q, &c->delta, &c->X, &c->sizes, c->S, beta, &c->distinct, &c->size,
           &c->start, &survival, &table);
  }
  double martingale(int i) const { return table.vbget(i, 3); }
  double deviance(int i) const { return table.vbget(i, 4); }
  double schoenfeld(int i, int j = 1) const { return table.vbget(i, 4 + j); }
  double second(int i, int j = 1) const { return table.vbget(i, 4 + q + j); }
  int q;
  matrix survival;
  matrix mean;
  matrix table;
};

TEST(CoxResiduals, ThreeEventsWithADoubledHazard) {
  // Risk sums 5, 3, 2; hazards 1/5, 8/15, 31/30; predictors ln 2, 0, ln 2.
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}}));
  const Residuals r(&c, {std::log(2.0)});
  EXPECT_EQ(r.table.vbget(2, 1), 2.0);
  EXPECT_EQ(r.table.vbget(2, 2), 1.0);
  EXPECT_NEAR(r.martingale(1), 3.0 / 5, 1e-14);
  EXPECT_NEAR(r.martingale(2), 7.0 / 15, 1e-14);
  EXPECT_NEAR(r.martingale(3), -16.0 / 15, 1e-14);
  const double d1 = std::sqrt(2 * (-3.0 / 5 - std::log(2.0 / 5)));
  const double d2 = std::sqrt(2 * (-7.0 / 15 - std::log(8.0 / 15)));
  const double d3 = -std::sqrt(2 * (16.0 / 15 - std::log(31.0 / 15)));
  EXPECT_NEAR(r.deviance(1), d1, 1e-13);
  EXPECT_NEAR(r.deviance(2), d2, 1e-13);
  EXPECT_NEAR(r.deviance(3), d3, 1e-13);
  EXPECT_NEAR(r.schoenfeld(1), 1.0 / 5, 1e-14);
  EXPECT_NEAR(r.schoenfeld(2), -2.0 / 3, 1e-14);
  EXPECT_NEAR(r.schoenfeld(3), 0.0, 1e-14);
  const double eta = std::log(2.0);
  EXPECT_NEAR(r.second(1), 1.0 / 5 - d1 * eta / 25, 1e-14);
  EXPECT_NEAR(r.second(2), -2.0 / 3, 1e-14);
  EXPECT_NEAR(r.second(3), -(d1 / 25 - 2 * d2 / 9) * eta, 1e-14);
}

TEST(CoxResiduals, ACensoredRow) {
  // Hazards 1/2 and 1/2: censored martingale -1/2, deviance -sqrt(2 x 1/2) = -1.
  CoxCase c(CoxArrays({1, 2}, {1, 0}, {{3, 1}}));
  const Residuals r(&c, {0});
  EXPECT_NEAR(r.martingale(1), 0.5, 1e-15);
  EXPECT_NEAR(r.martingale(2), -0.5, 1e-15);
  EXPECT_NEAR(r.deviance(2), -1.0, 1e-15);
  EXPECT_NEAR(r.schoenfeld(1), 1.0, 1e-15);
  EXPECT_EQ(r.schoenfeld(2), 0.0);
  EXPECT_EQ(r.second(1), r.schoenfeld(1));  // linear predictor 0
}

TEST(CoxResiduals, ACensoredRowBeforeTheFirstEventHasNoDeviance) {
  CoxCase c(CoxArrays({1, 2, 3}, {0, 1, 1}, {{1, 2, 4}}));
  const Residuals r(&c, {0.5});
  EXPECT_EQ(r.martingale(1), 0.0);
  EXPECT_EQ(r.deviance(1), kMissing);
  EXPECT_EQ(r.schoenfeld(1), 0.0);
  EXPECT_EQ(r.second(1), 0.0);
  // Its marker takes part in later sums only through its Schoenfeld residual, 0.
  EXPECT_NE(r.deviance(2), kMissing);
  const double s =
      r.schoenfeld(2) - r.schoenfeld(2) * r.deviance(2) * 1.0 / (std::exp(1.0) + std::exp(2.0));
  EXPECT_NEAR(r.second(2), s, 1e-13);
}

TEST(CoxResiduals, AMarkerInsideTheSumContributesAsAValue) {
  // The first row's predictor is 700: no deviance, and a Schoenfeld residual of 700.
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{700, 1, 0}}));
  const Residuals r(&c, {1});
  EXPECT_EQ(r.martingale(1), 1.0);
  EXPECT_EQ(r.deviance(1), kMissing);
  EXPECT_EQ(r.second(1), r.schoenfeld(1));
  // Row 2: -1.8e308 times about 700 is minus infinity, and its predictor is 1.
  EXPECT_EQ(r.second(2), std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(r.second(3)));  // minus infinity times 0
}

TEST(CoxResiduals, AnEventWithAPredictorOf700HasItsStatusAsMartingale) {
  CoxCase c(CoxArrays({1, 2}, {1, 0.25}, {{0, 701}}));
  const Residuals r(&c, {1});
  EXPECT_EQ(r.martingale(2), 0.25);
  EXPECT_EQ(r.deviance(2), kMissing);
}

TEST(CoxResiduals, ABaselineOfZeroLeavesTheHazardAtZero) {
  CoxCase c(CoxArrays({1, 2}, {1, 1}, {{3, 1}}));
  Residuals r(&c, {0});
  Column beta({0.0});
  r.survival.vbset(1, 2, 0.0);
  r.compute(&c, &beta);
  EXPECT_EQ(r.martingale(2), 1.0);
  EXPECT_EQ(r.deviance(2), kMissing);
  r.survival.vbset(1, 2, kNaN);
  r.compute(&c, &beta);
  EXPECT_EQ(r.martingale(2), 1.0);
}

TEST(CoxResiduals, AFractionalStatusEntersBothFactors) {
  // One group, hazard 1 / 2 of one event for two rows.
  CoxCase c(CoxArrays({1, 1}, {0.5, 0}, {{1, 0}}));
  const Residuals r(&c, {0});
  EXPECT_NEAR(r.martingale(1), 0.0, 1e-15);
  EXPECT_NEAR(r.schoenfeld(1), 0.25, 1e-15);
}

TEST(CoxResiduals, ARowInNoGroupHasNoRiskSum) {
  CoxArrays a({1, 2, 2, 3}, {1, 1, 1, 1}, {{1, 2, 3, 4}});
  a.tieKey = {1, 1, 0, 1};
  CoxCase c(a);
  const Residuals r(&c, {0.1});
  EXPECT_EQ(r.martingale(3), 1.0);
  EXPECT_EQ(r.deviance(3), kMissing);
  EXPECT_TRUE(std::isnan(r.schoenfeld(3)));
  EXPECT_TRUE(std::isnan(r.second(4)));  // the sum runs over it
  EXPECT_FALSE(std::isnan(r.second(2)));
}

TEST(CoxResiduals, RowsInNoStratumHaveZeros) {
  CoxCase c(CoxArrays({1, 2, 9}, {1, 1, 1}, {{1, 0, 5}}, {}, {2}));
  const Residuals r(&c, {0.1});
  EXPECT_EQ(r.table.vbget(3, 1), 9.0);
  EXPECT_EQ(r.table.vbget(3, 2), 1.0);
  for (int column = 3; column <= 6; ++column) EXPECT_EQ(r.table.vbget(3, column), 0.0);
}

TEST(CoxResiduals, SumsOfTheFormulaToTheBit) {
  // Strata up to 2048 rows: the second residual as it stands, term by term.
  std::mt19937_64 random(4);
  std::normal_distribution<double> normal;
  for (int round = 0; round < 40; ++round) {
    const int n = 2 + static_cast<int>(random() % 60);
    Doubles time, status{1.0}, x, y, labels, sizes(2);
    for (int i = 0; i < n; ++i) {
      time.push_back(static_cast<double>(random() % 25));
      if (i > 0) status.push_back(random() % 3 == 0 ? 0.0 : 1.0);
      x.push_back(normal(random));
      y.push_back(normal(random));
      labels.push_back(static_cast<double>(1 + random() % 2));
      ++sizes[static_cast<std::size_t>(labels.back()) - 1];
    }
    CoxCase c(CoxArrays(time, status, {x, y}, labels, sizes));
    const Doubles beta{0.4, -0.3};
    const Residuals r(&c, beta);
    int a = 1;
    for (int s = 1; s <= 2; ++s) {
      const int rows = static_cast<int>(sizes[s - 1]);
      for (int k = 1; k <= c.distinct.vbget(s, 1) && rows > 0; ++k) {
        double total = 0.0;
        for (int i = c.start.vbget(s, k); i < a + rows; ++i) {
          total += std::exp(0.0 + c.X.vbget(i, 1) * beta[0] + c.X.vbget(i, 2) * beta[1]);
        }
        for (int i = c.start.vbget(s, k); i < c.start.vbget(s, k) + c.size.vbget(s, k); ++i) {
          c.time.vbset(i, 1, total);  // the row's risk sum, kept where the test finds it
        }
      }
      for (int row = a; row < a + rows; ++row) {
        const double eta = 0.0 + c.X.vbget(row, 1) * beta[0] + c.X.vbget(row, 2) * beta[1];
        for (int j = 1; j <= 2; ++j) {
          double sum = 0.0;
          for (int m = a; m <= row; ++m) {
            sum += r.schoenfeld(m, j) * r.deviance(m) * eta / c.time.vbget(m, 1);
          }
          if (r.deviance(row) == kMissing) sum = 0.0;
          EXPECT_EQ(r.second(row, j), r.schoenfeld(row, j) - sum);
        }
      }
      a += rows;
    }
  }
}

TEST(CoxResiduals, LargeStrataDifferByRoundingOnly) {
  std::mt19937_64 random(6);
  std::normal_distribution<double> normal;
  const int n = 3000;
  Doubles time, status, x;
  for (int i = 0; i < n; ++i) {
    time.push_back(i);
    status.push_back(i % 3 != 1);
    x.push_back(normal(random));
  }
  CoxCase c(CoxArrays(time, status, {x}));
  const Residuals r(&c, {0.3});
  double at = 0.0;
  Doubles totals(n + 2);
  for (int i = n; i >= 1; --i) totals[i] = at += std::exp(0.3 * c.X.vbget(i, 1));
  for (const int row : {1, 2, 700, 1999, 2999, 3000}) {
    double sum = 0.0;
    double size = 0.0;
    for (int m = 1; m <= row; ++m) {
      const double term = r.schoenfeld(m) * r.deviance(m) * (0.3 * c.X.vbget(row, 1)) / totals[m];
      sum += term;
      size += std::fabs(term);
    }
    EXPECT_NEAR(r.second(row), r.schoenfeld(row) - sum, 1e-12 * (1 + size));
  }
  // With a marker that takes part the products overflow, as the formula has them.
  c.X.vbset(1, 1, 710 / 0.3);
  const Residuals overflowing(&c, {0.3});
  EXPECT_EQ(overflowing.deviance(1), kMissing);
  // The first term is -infinity times the row's predictor, and is taken off.
  EXPECT_EQ(overflowing.second(2000),
            std::copysign(std::numeric_limits<double>::infinity(), c.X.vbget(2000, 1)));
}

TEST(CoxResiduals, MartingalesSumToZeroInEveryStratum) {
  CoxCase c(survmeth::test::veterans());
  const Residuals r(&c, {-0.02, 0.01, 0.003});
  int row = 0;
  for (int s = 1; s <= 4; ++s) {
    double sum = 0.0;
    for (int i = 0; i < c.sizes.vbget(1, s); ++i) sum += r.martingale(++row);
    EXPECT_NEAR(sum, 0.0, 1e-10) << s;
  }
}

TEST(CoxResiduals, SchoenfeldColumnsSumToTheGradient) {
  CoxCase c(survmeth::test::lungCancer());
  const Fit fit(&c, 50, 1e-12);
  const Doubles beta = survmeth::test::elements(fit.beta);
  const Residuals atMaximum(&c, beta);
  const Residuals elsewhere(&c, {0.01, 0.3, 0.2});
  const survmeth::test::Likelihood there(&c, 0, {0.01, 0.3, 0.2});
  for (int j = 1; j <= 3; ++j) {
    double sum = 0.0, other = 0.0;
    for (int i = 1; i <= c.n; ++i) {
      sum += atMaximum.schoenfeld(i, j);
      other += elsewhere.schoenfeld(i, j);
    }
    EXPECT_NEAR(sum, 0.0, 1e-8);
    EXPECT_NEAR(other, there.gradient.vbget(j, 1), 1e-9);
  }
}

TEST(CoxResiduals, ColumnsPastTheModelAreLeftAlone) {
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}, {4, 5, 6}}));
  Column beta({0.1});
  matrix survival(1, 3, 0.5), table(3, 8, 7);
  ResCox(&c.time, 3, 1, &c.delta, &c.X, &c.sizes, 1, &beta, &c.distinct, &c.size, &c.start,
         &survival, &table);
  for (int i = 1; i <= 3; ++i) {
    EXPECT_NE(table.vbget(i, 6), 7.0);
    EXPECT_EQ(table.vbget(i, 7), 7.0);
    EXPECT_EQ(table.vbget(i, 8), 7.0);
  }
}

TEST(CoxResiduals, WildTablesEndAndStayInside) {
  const Doubles columns = {1, 2, 3, 1, 1, 1, 1, 0, 1};
  for (const int wild : {2147483647, -2147483647 - 1, 7, -7}) {
    for (int place = 0; place < 3; ++place) {
      CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}}));
      matrixInt* tables[] = {&c.start, &c.size, &c.distinct};
      tables[place]->vbset(1, 1, wild);
      Residuals(&c, {0.1});
      EXPECT_EQ(c.columns(), columns);
    }
    CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}}));
    c.sizes.vbset(1, 1, wild);
    Residuals(&c, {0.1});
    matrix survival(1, 1, 0.5), table(3, 6, 7), beta(1, 1, 0);
    ResCox(&c.time, wild, wild, &c.delta, &c.X, &c.sizes, wild, &beta, &c.distinct, &c.size,
           &c.start, &survival, &table);
    EXPECT_EQ(c.columns(), columns);
  }
}

}  // namespace
