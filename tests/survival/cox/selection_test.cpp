// Forward and backward selection of the covariates of a Cox model.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "Dist/Dist"
#include "tests/support/matrices.h"
#include "tests/survival/cox/cox_case.h"

namespace {

using survmeth::test::CoxArrays;
using survmeth::test::CoxCase;
using survmeth::test::Doubles;
using survmeth::test::elements;
using survmeth::test::Fit;
using survmeth::test::Ints;

constexpr int kLimit = 30;
constexpr double kTolerance = 1e-11;

// Four covariates: the second matters much, the fourth somewhat, the others are noise.
std::vector<Doubles> columnsOfFour(int n) {
  std::mt19937_64 random(77);
  std::normal_distribution<double> normal;
  std::vector<Doubles> columns(4);
  for (int i = 0; i < n; ++i) {
    const double when = i / static_cast<double>(n);
    columns[0].push_back(normal(random));
    columns[1].push_back(normal(random) - 3.0 * when);
    columns[2].push_back(normal(random));
    columns[3].push_back(normal(random) + 2.0 * when);
  }
  return columns;
}

CoxArrays dataOf(const std::vector<Doubles>& columns) {
  Doubles time, status;
  for (std::size_t i = 0; i < columns.front().size(); ++i) {
    time.push_back(static_cast<double>(i / 2));
    status.push_back(i % 5 == 3 ? 0.0 : 1.0);
  }
  return CoxArrays(time, status, columns);
}

// The model of some of the columns, fitted on its own.
Fit fitOf(const std::vector<Doubles>& columns, const Ints& chosen) {
  std::vector<Doubles> some;
  for (const int j : chosen) some.push_back(columns[static_cast<std::size_t>(j - 1)]);
  CoxCase c(dataOf(some));
  return Fit(&c, kLimit, kTolerance);
}

struct Selection {
  explicit Selection(const CoxArrays& a)
      : c(a),
        q(c.p),
        iterations(kLimit),
        beta(c.p, 1, 7),
        gradient(c.p, 1, 7),
        hessian(c.p, c.p, 7),
        inverse(c.p, c.p, 7),
        gradient0(c.p, 1, 7),
        inverse0(c.p, c.p, 7),
        history(3, c.p, 7),
        order(c.p, 1, 7) {}

  void forward(double threshold) {
    code = Cox_ForSelection(c.n, &q, &c.delta, &c.X, &c.sizes, c.S, &iterations, kTolerance, 0,
                            &c.distinct, &c.size, &c.events, &c.start, threshold, &beta, &logLik,
                            &logLik0, &gradient, &hessian, &inverse, &gradient0, &inverse0,
                            &history, &step, &order);
  }
  void backward(double threshold, int removalTest = 0) {
    code = Cox_BackSelection(c.n, &q, &c.delta, &c.X, &c.sizes, c.S, &iterations, kTolerance, 0,
                             &c.distinct, &c.size, &c.events, removalTest, threshold, &c.start,
                             &beta, &logLik, &logLik0, &gradient, &hessian, &inverse, &gradient0,
                             &inverse0, &history, &step, &order);
  }
  CoxCase c;
  int q;
  int iterations;
  matrix beta;
  double logLik = 7;
  double logLik0 = 7;
  matrix gradient;
  matrix hessian;
  matrix inverse;
  matrix gradient0;
  matrix inverse0;
  matrix history;
  int step = 77;
  matrixInt order;
  int code = 7;
};

Doubles columnOf(const matrix& X, int j) {
  Doubles column;
  for (int i = 1; i <= X.rows(); ++i) column.push_back(X.vbget(i, j));
  return column;
}

double likelihoodRatio(const Fit& smaller, const Fit& larger) {
  return -2 * (smaller.logLik - larger.logLik);
}

TEST(CoxForward, EntersByTheLikelihoodRatioOnAsManyDegreesAsTheModelHas) {
  const std::vector<Doubles> columns = columnsOfFour(120);
  const Fit two = fitOf(columns, {2}), both = fitOf(columns, {2, 4});
  Selection s(dataOf(columns));
  s.forward(0.05);
  EXPECT_EQ(s.code, 0);
  EXPECT_EQ(s.q, 2);
  EXPECT_EQ(s.step, 3);
  EXPECT_EQ(elements(s.order), (Ints{0, 1, 0, 2}));

  const double first = -2 * (two.logLik0 - two.logLik);
  EXPECT_EQ(s.history.vbget(1, 1), 1.0);
  EXPECT_NEAR(s.history.vbget(2, 1), first, 1e-9);
  EXPECT_NEAR(s.history.vbget(3, 1), pValChiSq(first, 1), 1e-12);
  const double second = likelihoodRatio(two, both);
  EXPECT_EQ(s.history.vbget(1, 2), 2.0);
  EXPECT_NEAR(s.history.vbget(2, 2), second, 1e-9);
  EXPECT_NEAR(s.history.vbget(3, 2), pValChiSq(second, 2), 1e-12);
  EXPECT_GT(std::fabs(pValChiSq(second, 2) - pValChiSq(second, 1)), 1e-5);
  EXPECT_EQ(s.history.vbget(1, 3), 7.0);

  // The final model's columns stand first, and the outputs are its own.
  EXPECT_EQ(columnOf(s.c.X, 1), columns[1]);
  EXPECT_EQ(columnOf(s.c.X, 2), columns[3]);
  EXPECT_EQ(s.beta.vbget(1, 1), both.beta.vbget(1, 1));
  EXPECT_EQ(s.beta.vbget(2, 1), both.beta.vbget(2, 1));
  EXPECT_EQ(s.beta.vbget(3, 1), 7.0);
  EXPECT_EQ(s.logLik, both.logLik);
  EXPECT_EQ(s.logLik0, both.logLik0);
  EXPECT_EQ(elements(s.inverse), elements(both.inverse));
  EXPECT_EQ(elements(s.hessian), elements(both.hessian));
  EXPECT_EQ(elements(s.gradient), elements(both.gradient));
  EXPECT_EQ(elements(s.gradient0), elements(both.gradient0));
  EXPECT_EQ(elements(s.inverse0), elements(both.inverse0));
  EXPECT_EQ(s.iterations, both.iterations);
}

TEST(CoxForward, ReturnsEveryCovariateWhenNoneEnters) {
  const std::vector<Doubles> columns = columnsOfFour(60);
  const Fit full = fitOf(columns, {1, 2, 3, 4});
  Selection s(dataOf(columns));
  s.forward(0.0);
  EXPECT_EQ(s.q, 4);
  EXPECT_EQ(s.step, 1);
  EXPECT_EQ(elements(s.order), (Ints{0, 0, 0, 0}));
  EXPECT_EQ(elements(s.beta), elements(full.beta));
  EXPECT_EQ(elements(s.inverse), elements(full.inverse));
  EXPECT_EQ(s.logLik, full.logLik);
  for (const double cell : elements(s.history)) EXPECT_EQ(cell, 7.0);
}

TEST(CoxForward, TheLastCovariateIsNeverTried) {
  const std::vector<Doubles> columns = columnsOfFour(60);
  Selection two(dataOf({columns[0], columns[1]}));
  two.forward(0.9999);
  EXPECT_EQ(two.q, 1);
  EXPECT_EQ(two.step, 2);
  EXPECT_EQ(elements(two.order), (Ints{0, 1}));
  EXPECT_EQ(columnOf(two.c.X, 1), columns[1]);
  Selection four(dataOf(columns));
  four.forward(0.9999);
  EXPECT_EQ(four.q, 3);
  EXPECT_EQ(four.step, 4);
}

TEST(CoxForward, OneCovariateIsTriedAndCanEnter) {
  const std::vector<Doubles> columns = columnsOfFour(120);
  Selection enters(dataOf({columns[1]}));
  enters.forward(0.05);
  EXPECT_EQ(enters.q, 1);
  EXPECT_EQ(enters.step, 2);
  EXPECT_EQ(elements(enters.order), (Ints{1}));
  Selection stays(dataOf({columns[1]}));
  stays.forward(0.0);
  EXPECT_EQ(stays.q, 1);
  EXPECT_EQ(stays.step, 1);
  EXPECT_EQ(elements(stays.order), (Ints{0}));
  EXPECT_EQ(elements(stays.beta), elements(enters.beta));
}

TEST(CoxForward, APValueOfTheThresholdEnters) {
  const std::vector<Doubles> columns = columnsOfFour(120);
  Selection probe(dataOf(columns));
  probe.forward(0.05);
  const double p = probe.history.vbget(3, 2);
  Selection at(dataOf(columns)), below(dataOf(columns));
  at.forward(p);
  EXPECT_EQ(at.q, 2);
  below.forward(std::nextafter(p, 0.0));
  EXPECT_EQ(below.q, 1);
}

TEST(CoxForward, APValueOfExactlyZeroNeverEnters) {
  // The first covariate orders 400 events perfectly: a likelihood ratio near 2 ln 400!, whose
  // upper tail is exactly 0.
  Doubles time, status, perfect, noise;
  std::mt19937_64 random(3);
  std::normal_distribution<double> normal;
  for (int i = 0; i < 400; ++i) {
    time.push_back(i);
    status.push_back(1.0);
    perfect.push_back((400 - i) / 10.0);
    noise.push_back(normal(random));
  }
  CoxArrays a(time, status, {perfect, noise});
  CoxCase alone(CoxArrays(time, status, {perfect}));
  const Fit fit(&alone, kLimit, kTolerance);
  ASSERT_EQ(pValChiSq(-2 * (fit.logLik0 - fit.logLik), 1), 0.0);
  Selection s(a);
  s.forward(0.9999);
  EXPECT_EQ(elements(s.order), (Ints{0, 1}));
}

TEST(CoxForward, ACandidateThatDoesNotImproveTheFitNeverEnters) {
  // A constant column leaves the likelihood where it was: p-value 0 by rule.
  const std::vector<Doubles> columns = columnsOfFour(60);
  Selection s(dataOf({Doubles(60, 1.0), columns[0]}));
  s.forward(1.0);
  EXPECT_EQ(elements(s.order), (Ints{0, 1}));
}

TEST(CoxForward, TheFirstOfEqualPValuesEnters) {
  const std::vector<Doubles> columns = columnsOfFour(60);
  Selection s(dataOf({columns[0], columns[1], columns[1]}));
  s.forward(0.05);
  EXPECT_EQ(s.order.vbget(2, 1), 1);
  EXPECT_EQ(s.order.vbget(3, 1), 0);
}

TEST(CoxForward, EveryFitHasTheCallersLimit) {
  const std::vector<Doubles> columns = columnsOfFour(60);
  Selection s(dataOf(columns));
  s.iterations = 1;
  s.forward(0.9999);
  EXPECT_EQ(s.iterations, 1);
  const Fit none = fitOf(columns, {2});
  EXPECT_GT(none.iterations, 1);
  // One iteration only for the candidates too.
  CoxCase second(dataOf({columns[1]}));
  const Fit short1(&second, 1, kTolerance);
  EXPECT_NEAR(s.history.vbget(2, 1), -2 * (short1.logLik0 - short1.logLik), 1e-10);
}

TEST(CoxForward, WithoutCovariatesFitsNone) {
  Selection s(CoxArrays({1, 2, 3}, {1, 1, 1}, {}));
  s.forward(0.5);
  EXPECT_EQ(s.q, 0);
  EXPECT_NEAR(s.logLik, -std::log(6.0), 1e-15);
}

double wald(const Fit& fit, int i) {
  const double ratio = fit.beta.vbget(i, 1) / std::sqrt(-fit.inverse.vbget(i, i));
  return ratio * ratio;
}

TEST(CoxBackward, RemovesByWaldsTestFromTheWeakest) {
  const std::vector<Doubles> columns = columnsOfFour(120);
  const Fit full = fitOf(columns, {1, 2, 3, 4});
  // Which of the two noise columns goes first is read off the full model.
  const int first = wald(full, 1) < wald(full, 3) ? 1 : 3;
  const int then = 4 - first;
  Ints three{1, 2, 3, 4};
  three.erase(three.begin() + first - 1);
  const Fit middle = fitOf(columns, three), last = fitOf(columns, {2, 4});
  const int position = then == 1 ? 1 : 2;

  Selection s(dataOf(columns));
  s.backward(0.1);
  EXPECT_EQ(s.code, 0);
  EXPECT_EQ(s.q, 2);
  EXPECT_EQ(s.step, 3);
  Ints order(4);
  order[static_cast<std::size_t>(first - 1)] = 1;
  order[static_cast<std::size_t>(then - 1)] = 2;
  EXPECT_EQ(elements(s.order), order);
  EXPECT_EQ(s.history.vbget(1, 1), 4.0);
  EXPECT_NEAR(s.history.vbget(2, 1), wald(full, first), 1e-10);
  EXPECT_NEAR(s.history.vbget(3, 1), pValChiSq(wald(full, first), 1), 1e-12);
  EXPECT_EQ(s.history.vbget(1, 2), 3.0);
  EXPECT_NEAR(s.history.vbget(2, 2), wald(middle, position), 1e-10);
  // The pass that stops writes the count and no more.
  EXPECT_EQ(s.history.vbget(1, 3), 2.0);
  EXPECT_EQ(s.history.vbget(2, 3), 7.0);
  EXPECT_EQ(s.history.vbget(3, 3), 7.0);
  EXPECT_EQ(s.history.vbget(1, 4), 7.0);

  EXPECT_EQ(columnOf(s.c.X, 1), columns[1]);
  EXPECT_EQ(columnOf(s.c.X, 2), columns[3]);
  EXPECT_EQ(elements(s.beta), elements(last.beta));
  EXPECT_EQ(elements(s.inverse), elements(last.inverse));
  EXPECT_EQ(elements(s.hessian), elements(last.hessian));
  EXPECT_EQ(elements(s.gradient0), elements(last.gradient0));
  EXPECT_EQ(elements(s.inverse0), elements(last.inverse0));
  EXPECT_EQ(s.logLik, last.logLik);
  EXPECT_EQ(s.iterations, last.iterations);
}

TEST(CoxBackward, APValueOfTheThresholdLeaves) {
  const std::vector<Doubles> columns = columnsOfFour(120);
  Selection probe(dataOf(columns));
  probe.backward(0.1);
  const double p = probe.history.vbget(3, 1);
  Selection at(dataOf(columns)), above(dataOf(columns));
  at.backward(p);
  EXPECT_EQ(at.q, 3);
  above.backward(std::nextafter(p, 1.0));
  EXPECT_EQ(above.q, 4);
  EXPECT_EQ(above.step, 1);
}

TEST(CoxBackward, StopsAtOneCovariateWithoutATrace) {
  const std::vector<Doubles> columns = columnsOfFour(120);
  Selection s(dataOf(columns));
  s.backward(0.0);
  EXPECT_EQ(s.q, 1);
  EXPECT_EQ(s.step, 4);
  EXPECT_EQ(s.history.vbget(1, 3), 2.0);
  EXPECT_EQ(s.history.vbget(1, 4), 7.0);
  EXPECT_EQ(columnOf(s.c.X, 1), columns[1]);
  EXPECT_EQ(s.order.vbget(2, 1), 0);
}

TEST(CoxBackward, OneCovariateStaysAndIsCounted) {
  const std::vector<Doubles> columns = columnsOfFour(60);
  Selection s(dataOf({columns[0]}));
  s.backward(0.0);
  EXPECT_EQ(s.q, 1);
  EXPECT_EQ(s.step, 1);
  EXPECT_EQ(elements(s.history), (Doubles{1, 7, 7}));
  EXPECT_EQ(elements(s.order), (Ints{0}));
}

TEST(CoxBackward, AnotherRemovalTestRemovesNothing) {
  const std::vector<Doubles> columns = columnsOfFour(60);
  const Fit full = fitOf(columns, {1, 2, 3, 4});
  for (const int test : {-1, 1, 2}) {
    for (const double threshold : {0.1, 0.0, -1.0}) {
      Selection s(dataOf(columns));
      s.backward(threshold, test);
      EXPECT_EQ(s.q, 4);
      EXPECT_EQ(s.step, 1);
      EXPECT_EQ(s.history.vbget(1, 1), 4.0);
      EXPECT_EQ(s.history.vbget(2, 1), 7.0);
      EXPECT_EQ(elements(s.order), (Ints{0, 0, 0, 0}));
      EXPECT_EQ(elements(s.beta), elements(full.beta));
    }
  }
}

TEST(CoxBackward, ASingularModelHasNoPValueAboveZero) {
  const std::vector<Doubles> columns = columnsOfFour(60);
  Selection s(dataOf({columns[0], columns[0]}));
  s.backward(0.0);
  EXPECT_EQ(s.q, 2);
  EXPECT_EQ(s.step, 1);
}

TEST(CoxBackward, NumbersAreThoseOfTheStartingList) {
  // Three removals in a row: the indices skip what left before.
  const std::vector<Doubles> columns = columnsOfFour(120);
  Selection s(dataOf({columns[1], columns[0], columns[3], columns[2]}));
  s.backward(0.0);
  EXPECT_EQ(s.order.vbget(1, 1), 0);
  EXPECT_EQ(s.order.vbget(3, 1), 3);
  EXPECT_EQ(s.order.vbget(2, 1) + s.order.vbget(4, 1), 3);
}

TEST(CoxBackward, ThresholdsThatAreNotNumbersRemoveNothing) {
  const std::vector<Doubles> columns = columnsOfFour(60);
  Selection s(dataOf(columns));
  s.backward(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(s.q, 4);
}

TEST(CoxBackward, WithoutCovariatesFitsNone) {
  Selection s(CoxArrays({1, 2, 3}, {1, 1, 1}, {}));
  s.backward(0.5);
  EXPECT_EQ(s.q, 0);
  EXPECT_EQ(s.step, 1);
  EXPECT_NEAR(s.logLik, -std::log(6.0), 1e-15);
}

}  // namespace
