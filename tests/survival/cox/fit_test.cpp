// The Newton-Raphson fit of a Cox model.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>

#include "solver/solver.h"
#include "tests/support/matrices.h"
#include "tests/survival/cox/cox_case.h"

namespace {

using survmeth::test::CoxArrays;
using survmeth::test::CoxCase;
using survmeth::test::Doubles;
using survmeth::test::elements;
using survmeth::test::Fit;
using survmeth::test::Likelihood;
using survmeth::test::threeEvents;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(CoxFit, FindsTheMaximumOfThreeEvents) {
  // With e = exp(beta): 1 - 2e/(2e + 1) - e/(1 + e) = 0 gives e^2 = 1/2.
  CoxCase c = threeEvents();
  for (const int ties : {0, 1}) {
    const Fit fit(&c, 50, 1e-14, ties);
    EXPECT_EQ(fit.code, 0);
    EXPECT_NEAR(fit.beta.vbget(1, 1), -0.5 * std::log(2.0), 1e-12);
    EXPECT_NEAR(fit.logLik, -2 * std::log(1 + std::sqrt(2.0)), 1e-13);
    EXPECT_NEAR(fit.logLik0, -std::log(6.0), 1e-15);
    EXPECT_NEAR(fit.gradient.vbget(1, 1), 0.0, 1e-12);
    EXPECT_NEAR(fit.gradient0.vbget(1, 1), -1.0 / 6, 1e-15);
    EXPECT_NEAR(fit.inverse0.vbget(1, 1), -36.0 / 17, 1e-14);
    EXPECT_LT(fit.iterations, 10);
  }
}

TEST(CoxFit, ALimitOfOneMakesOneStep) {
  CoxCase c = threeEvents();
  const Fit fit(&c, 1, 1e-9);
  EXPECT_EQ(fit.iterations, 1);
  EXPECT_NEAR(fit.beta.vbget(1, 1), -6.0 / 17, 1e-14);
  const Likelihood there(&c, 0, {fit.beta.vbget(1, 1)});
  EXPECT_EQ(fit.logLik, there.logLik);
  EXPECT_EQ(elements(fit.gradient), elements(there.gradient));
  EXPECT_EQ(elements(fit.hessian), elements(there.hessian));
  // The inverse is one step older than the second derivatives.
  EXPECT_NEAR(fit.inverse.vbget(1, 1), -36.0 / 17, 1e-14);
}

TEST(CoxFit, ALimitOfTwoMakesTwoSteps) {
  CoxCase c = threeEvents();
  const Fit one(&c, 1, 1e-9), two(&c, 2, 1e-9);
  EXPECT_EQ(two.iterations, 2);
  const Likelihood at(&c, 0, {one.beta.vbget(1, 1)});
  EXPECT_NEAR(two.inverse.vbget(1, 1), 1 / at.hessian.vbget(1, 1), 1e-14);
  EXPECT_NEAR(two.beta.vbget(1, 1),
              one.beta.vbget(1, 1) - at.gradient.vbget(1, 1) / at.hessian.vbget(1, 1), 1e-14);
}

TEST(CoxFit, StartsFromZeroWhateverTheCallerPassed) {
  CoxCase c = threeEvents();
  Fit fit(&c, 1, 1e-9);  // its coefficients start as 7
  EXPECT_NEAR(fit.logLik0, -std::log(6.0), 1e-15);
}

TEST(CoxFit, EndsWhenTheLikelihoodChangesByLessThanTheTolerance) {
  CoxCase c = threeEvents();
  const Fit fit(&c, 50, 10.0);
  EXPECT_EQ(fit.iterations, 1);
}

TEST(CoxFit, AfterTenRefusalsTheCoefficientsAreHalfAStepAhead) {
  // One group of two rows, covariates 0 and 1, no events in the data but a count of -1 in the
  // table: the "log-likelihood" is ln(1 + e^beta), which falls along the whole Newton step
  // from 0 to -2.
  CoxCase c(CoxArrays({1, 1}, {1, 0}, {{0, 1}}));
  c.events.vbset(1, 1, -1);
  const Fit fit(&c, 1, 1e-9);
  EXPECT_EQ(fit.iterations, 1);
  EXPECT_EQ(fit.beta.vbget(1, 1), -2.0 / 1024);
  const double e = std::exp(-2.0 / 512);
  EXPECT_NEAR(fit.logLik, std::log(1 + e), 1e-15);
  EXPECT_NEAR(fit.gradient.vbget(1, 1), e / (1 + e), 1e-15);
  EXPECT_NEAR(fit.hessian.vbget(1, 1), e / ((1 + e) * (1 + e)), 1e-15);
  EXPECT_NEAR(fit.logLik0, std::log(2.0), 1e-15);

  // The next pass evaluates where the coefficients stand.
  const Fit next(&c, 2, 1e-9);
  const double from = std::exp(-2.0 / 1024);
  EXPECT_NEAR(next.inverse.vbget(1, 1), (1 + from) * (1 + from) / from, 1e-12);
}

TEST(CoxFit, AnInfiniteLikelihoodIsTakenForAnImprovement) {
  // The stratum ends with its first row, so the second group's risk set is empty: minus ln 0.
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{-2000, 1, 0}}));
  c.sizes.vbset(1, 1, 1);
  c.start.vbset(1, 2, 2);
  c.start.vbset(1, 3, 1);
  const Fit fit(&c, 3, 1e-9, 1);
  EXPECT_EQ(fit.code, 0);
  EXPECT_EQ(fit.iterations, 3);
  EXPECT_EQ(fit.logLik0, std::numeric_limits<double>::infinity());
}

TEST(CoxFit, ASingularMatrixLeavesTheCoefficientsAtZero) {
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}, {1, 0, 1}}));
  const Fit fit(&c, 25, 1e-9);
  EXPECT_EQ(fit.iterations, 1);  // nothing changed, less than the tolerance
  EXPECT_EQ(elements(fit.beta), (Doubles{0, 0}));
  EXPECT_EQ(elements(fit.inverse), (Doubles{0, 0, 0, 0}));
  EXPECT_EQ(elements(fit.inverse0), (Doubles{0, 0, 0, 0}));
  EXPECT_NEAR(fit.logLik, -std::log(6.0), 1e-15);
  EXPECT_NE(fit.gradient.vbget(1, 1), 0.0);
}

TEST(CoxFit, AConstantCovariateIsSingular) {
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 1, 1}}));
  const Fit fit(&c, 25, 1e-9);
  EXPECT_EQ(elements(fit.beta), (Doubles{0}));
  EXPECT_EQ(elements(fit.inverse), (Doubles{0}));
}

TEST(CoxFit, WithoutALimitItEndsWhereItStandsStillOrIsNotANumber) {
  CoxCase singular(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 1, 1}}));
  CoxCase broken(CoxArrays({1, 2, 3}, {1, 1, 1}, {{kNaN, 1, 0}}));
  CoxCase sound = threeEvents();
  for (const int limit : {0, -1, -2147483647}) {
    // The rule of the eleventh iteration comes first, and a repetition takes two to show.
    EXPECT_EQ(Fit(&singular, limit, 0.0).iterations, 12);
    EXPECT_EQ(Fit(&broken, limit, 1e-9).iterations, 11);
    EXPECT_EQ(Fit(&sound, limit, 0.0).iterations, 12);
    EXPECT_EQ(elements(Fit(&sound, limit, 0.0).beta), elements(Fit(&sound, 1000, 0.0).beta));
    EXPECT_LT(Fit(&sound, limit, 1e-9).iterations, 10);
  }
}

TEST(CoxFit, AHugeLimitOnAFitThatStandsStillIsReachedAtOnce) {
  CoxCase singular(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 1, 1}}));
  CoxCase broken(CoxArrays({1, 2, 3}, {1, 1, 1}, {{kNaN, 1, 0}}));
  const int huge = 2147483647;
  EXPECT_EQ(Fit(&singular, huge, 0.0).iterations, huge);
  EXPECT_EQ(Fit(&broken, huge, 1e-9).iterations, huge);
}

TEST(CoxFit, SkippedIterationsEndWhereTheyWouldHave) {
  // 40 iterations without a stop, one limit at a time, against one run: the coefficients after
  // iteration t are those of a fit that ends there.
  CoxCase c(CoxArrays({1, 1}, {1, 0}, {{0, 1}}));
  c.events.vbset(1, 1, -1);
  CoxCase sound = threeEvents();
  for (CoxCase* data : {&c, &sound}) {
    Doubles last;
    for (int limit = 30; limit <= 40; ++limit) {
      const Fit fit(data, limit, 0.0);
      EXPECT_EQ(fit.iterations, limit);
      const Fit longer(data, limit + 1, 0.0);
      // One more Newton step from where this one ended.
      const Likelihood at(data, 0, elements(fit.beta));
      EXPECT_DOUBLE_EQ(longer.inverse.vbget(1, 1), 1 / at.hessian.vbget(1, 1));
    }
  }
}

TEST(CoxFit, TheStepRuleWaitsForMoreThanTenIterations) {
  // A likelihood without maximum: each step adds about 1 / 1e9 to the coefficient, far below the
  // tolerance, while the likelihood still changes by about e^-t.
  CoxCase c(CoxArrays({1, 2, 3, 4}, {1, 1, 1, 1}, {{3e9, 2e9, 1e9, 0}}));
  const Fit fit(&c, 100, 1e-7);
  EXPECT_EQ(fit.iterations, 11);
  // In units in which the steps exceed the tolerance only the likelihood can end the fit.
  CoxCase scaled(CoxArrays({1, 2, 3, 4}, {1, 1, 1, 1}, {{3, 2, 1, 0}}));
  EXPECT_GT(Fit(&scaled, 100, 1e-7).iterations, 11);
}

TEST(CoxFit, AnUnknownTiesMethodStandsStill) {
  CoxCase c = threeEvents();
  const Fit fit(&c, 5, 1e-9, 2);
  EXPECT_EQ(fit.iterations, 1);
  EXPECT_EQ(fit.logLik, 0.0);
  EXPECT_EQ(elements(fit.beta), (Doubles{0}));
}

TEST(CoxFit, WithoutCoefficientsReportsTheLikelihood) {
  CoxCase c(CoxArrays({1, 2, 3}, {1, 1, 1}, {}));
  const Fit fit(&c, 5, 1e-9);
  EXPECT_EQ(fit.iterations, 1);
  EXPECT_NEAR(fit.logLik, -std::log(6.0), 1e-15);
  EXPECT_EQ(fit.beta.count(), 0);
}

TEST(CoxFit, ShapesTheCoefficients) {
  CoxCase c = threeEvents();
  matrix beta(4, 2, 9), gradient(1, 1, 0), h(1, 1, 0), i(1, 1, 0), g0(1, 1, 0), i0(1, 1, 0);
  int iterations = 3;
  double logLik, logLik0;
  OptimizeCoxModel(1, &c.delta, &c.X, &c.sizes, 1, &iterations, 1e-9, 0, &c.distinct, &c.size,
                   &c.events, &c.start, &logLik, &logLik0, &gradient, &h, &i, &g0, &i0, &beta);
  EXPECT_EQ(beta.rows(), 1);
  EXPECT_EQ(beta.cols(), 1);
}

// The fit as it is defined: every trial is evaluated whole.
struct PlainFit {
  PlainFit(CoxCase* c, int limit, double tolerance, int ties) : beta(c->p, 1, 0) {
    matrix mask(c->p, 1, 0), work(c->p, 1, 0), inverse(c->p, c->p, 0);
    auto now = std::make_unique<Likelihood>(c, ties, elements(beta));
    for (;;) {
      const Doubles before = elements(beta);
      short singular = 0;
      now->hessian.inverse1(&inverse, singular, 0.0);
      const int solved = cNewtonRaphson(&beta, c->p, &mask, &now->gradient, &now->hessian,
                                        tolerance, &work, &inverse, 0, 0.5);
      const Doubles step = elements(beta);
      const double logLikBefore = now->logLik;
      bool accepted = false;
      for (int h = 1; h <= 10 && !accepted; ++h) {
        now = std::make_unique<Likelihood>(c, ties, elements(beta));
        accepted = now->logLik - logLikBefore > 0x1p-52;
        for (int j = 1; j <= c->p && !accepted; ++j) {
          beta.vbset(j, 1, beta.vbget(j, 1) + (before[j - 1] - step[j - 1]) * std::ldexp(1.0, -h));
        }
      }
      logLik = now->logLik;
      gradient = elements(now->gradient);
      hessian = elements(now->hessian);
      if (++iterations == limit || (solved == 1 && iterations > 10) ||
          std::fabs(logLik - logLikBefore) < tolerance) {
        return;
      }
      if (!accepted) now = std::make_unique<Likelihood>(c, ties, elements(beta));
    }
  }
  matrix beta;
  double logLik = 0.0;
  Doubles gradient, hessian;
  int iterations = 0;
};

TEST(CoxFit, RefusedStepsChangeNothingOfTheResult) {
  std::mt19937_64 random(3);
  std::normal_distribution<double> normal;
  int fits = 0;
  for (int round = 0; round < 60; ++round) {
    const int n = 6 + static_cast<int>(random() % 40);
    CoxArrays arrays(Doubles(n, 0.0), Doubles(n, 0.0), {Doubles(n, 0.0), Doubles(n, 0.0)});
    for (int i = 0; i < n; ++i) {
      arrays.time[i] = 1.0 + static_cast<double>(random() % 20);
      arrays.status[i] = random() % 3 == 0 ? 0.0 : 1.0;
      arrays.covariates[i] = normal(random);
      arrays.covariates[n + i] = 100.0 * normal(random);
    }
    if (round % 2 == 1) {
      arrays.stratumSizes = {std::floor(n / 3.0), n - std::floor(n / 3.0)};
      for (int i = 0; i < n; ++i) arrays.stratum[i] = i < arrays.stratumSizes[0] ? 1.0 : 2.0;
      arrays.S = 2;
      arrays.distinctTimes.resize(2);
      arrays.censored.resize(2);
      for (auto* table : {&arrays.groupStart, &arrays.groupSize, &arrays.groupEvents}) {
        table->assign(2 * static_cast<std::size_t>(n), 0);
      }
    }
    CoxCase c(arrays);
    for (const int ties : {0, 1}) {
      for (const int limit : {1, 3, 8, 25}) {
        for (const double tolerance : {0.0, 1e-9}) {
          const Fit fit(&c, limit, tolerance, ties);
          const PlainFit plain(&c, limit, tolerance, ties);
          EXPECT_EQ(fit.iterations, plain.iterations);
          EXPECT_EQ(elements(fit.beta), elements(plain.beta));
          EXPECT_EQ(fit.logLik, plain.logLik);
          EXPECT_EQ(elements(fit.gradient), plain.gradient);
          EXPECT_EQ(elements(fit.hessian), plain.hessian);
          ++fits;
        }
      }
    }
  }
  EXPECT_EQ(fits, 960);
}

TEST(CoxFit, TheOrderOfRowsDoesNotMatter) {
  CoxCase forward(CoxArrays({1, 2, 3, 4, 5, 6}, {1, 0, 1, 1, 0, 1}, {{2, 7, 1, 8, 2, 8}}));
  CoxCase shuffled(CoxArrays({4, 6, 1, 5, 3, 2}, {1, 1, 1, 0, 1, 0}, {{8, 8, 2, 2, 1, 7}}));
  EXPECT_EQ(elements(Fit(&forward, 20, 1e-10).beta), elements(Fit(&shuffled, 20, 1e-10).beta));
}

TEST(CoxFit, TheGradientVanishesAtTheMaximum) {
  CoxCase c(survmeth::test::lungCancer());
  const Fit fit(&c, 50, 1e-12);
  for (const double u : elements(fit.gradient)) EXPECT_NEAR(u, 0.0, 1e-8);
}

}  // namespace
