// Param_BackSelection and Param_ForSelection.
#include <gtest/gtest.h>

#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

const std::vector<std::string> kNames = {"age", "karno", "diagtime", "prior"};

double waldPValue(double wald) { return std::erfc(std::sqrt(wald / 2.0)); }

// The fit of the columns `chosen` (from 0) of the veteran data.
struct SubModel {
  SubModel(int law, const std::vector<int>& chosen) : model(law, rowsOf(chosen)), fit(model) {
    code = fit.run(model);
  }

  static std::vector<Observation> rowsOf(const std::vector<int>& chosen) {
    std::vector<std::string> names;
    for (const int j : chosen) names.push_back(kNames[static_cast<std::size_t>(j)]);
    return veteran(names);
  }

  double wald(int j) const {
    const double beta = fit.parameters.vbget(j, 1);
    return beta * beta / -fit.covariance.vbget(j, j);
  }

  Model model;
  Fit fit;
  int code;
};

struct Selection {
  explicit Selection(int law, const std::vector<std::string>& names = kNames)
      : model(law, veteran(names)),
        fit(model),
        p(model.p),
        steps(3, std::max(model.p, 1), 777),
        order(std::max(model.p, 1), 1, 777) {}

  int backward(double threshold, int option = 0) {
    return Param_BackSelection(
        &model.times, model.n, &p, model.k, &model.status, &model.bounds, &model.covariates,
        &model.weights, &fit.iterations, fit.tolerance, model.distribution, fit.useInitialValues,
        &fit.initialValues, fit.fixIntercept, fit.interceptValue, option, threshold,
        &fit.parameters, &fit.logLik, &fit.logLik0, &fit.gradient, &fit.hessian, &fit.covariance,
        &fit.gradient0, &fit.hessian0, &steps, &count, &order);
  }

  int forward(double threshold) {
    return Param_ForSelection(
        &model.times, model.n, &p, model.k, &model.status, &model.bounds, &model.covariates,
        &model.weights, &fit.iterations, fit.tolerance, model.distribution, fit.useInitialValues,
        &fit.initialValues, fit.fixIntercept, fit.interceptValue, threshold, &fit.parameters,
        &fit.logLik, &fit.logLik0, &fit.gradient, &fit.hessian, &fit.covariance, &fit.gradient0,
        &fit.hessian0, &steps, &count, &order);
  }

  // The first p columns of the covariates are those named.
  void expectCovariates(const std::vector<int>& chosen) {
    ASSERT_EQ(static_cast<int>(chosen.size()), p);
    const std::vector<Observation> whole = veteran(kNames);
    for (int i = 1; i <= model.n; ++i) {
      for (int j = 1; j <= p; ++j) {
        ASSERT_EQ(whole[i - 1].covariates[chosen[j - 1]], model.covariates.vbget(i, j));
      }
    }
  }

  void expectFit(const SubModel& want) {
    const int m = want.model.m();
    for (int r = 1; r <= m; ++r) {
      EXPECT_EQ(want.fit.parameters.vbget(r, 1), fit.parameters.vbget(r, 1));
      EXPECT_EQ(want.fit.gradient.vbget(r, 1), fit.gradient.vbget(r, 1));
      EXPECT_EQ(want.fit.gradient0.vbget(r, 1), fit.gradient0.vbget(r, 1));
      for (int s = 1; s <= m; ++s) {
        EXPECT_EQ(want.fit.hessian.vbget(r, s), fit.hessian.vbget(r, s));
        EXPECT_EQ(want.fit.covariance.vbget(r, s), fit.covariance.vbget(r, s));
        EXPECT_EQ(want.fit.hessian0.vbget(r, s), fit.hessian0.vbget(r, s));
      }
    }
    EXPECT_EQ(want.fit.logLik, fit.logLik);
    EXPECT_EQ(want.fit.logLik0, fit.logLik0);
    EXPECT_EQ(want.fit.iterations, fit.iterations);
  }

  Model model;
  Fit fit;
  int p;
  matrix steps;
  int count = 777;
  matrixInt order;
};

TEST(BackwardSelection, RemovesTheLeastSignificantUntilTheThreshold) {
  // Of age, karno, diagtime and prior only karno matters; who goes first follows from each fit.
  std::vector<int> left = {0, 1, 2, 3};
  std::vector<int> removedAt(4, 0);
  std::vector<std::vector<double>> history;
  for (int step = 1; left.size() > 1; ++step) {
    const SubModel sub(kWeibull, left);
    ASSERT_EQ(0, sub.code);
    int worst = 1;
    for (int j = 2; j <= static_cast<int>(left.size()); ++j) {
      if (sub.wald(j) < sub.wald(worst)) worst = j;
    }
    const double pValue = waldPValue(sub.wald(worst));
    if (pValue < 0.05) break;
    history.push_back({static_cast<double>(left.size()), sub.wald(worst), pValue});
    removedAt[left[worst - 1]] = step;
    left.erase(left.begin() + (worst - 1));
  }
  ASSERT_EQ((std::vector<int>{1}), left);

  Selection selection(kWeibull);
  EXPECT_EQ(0, selection.backward(0.05));
  EXPECT_EQ(4, selection.count);
  for (int s = 1; s <= 3; ++s) {
    EXPECT_EQ(history[s - 1][0], selection.steps.vbget(1, s));
    EXPECT_NEAR(history[s - 1][1], selection.steps.vbget(2, s), 1e-12 * history[s - 1][1]);
    EXPECT_NEAR(history[s - 1][2], selection.steps.vbget(3, s), 1e-12);
  }
  // One covariate left: the loop has ended and the last column is not begun.
  EXPECT_EQ(777.0, selection.steps.vbget(1, 4));
  // The order is as long as the parameters.
  ASSERT_EQ(6, selection.order.rows());
  removedAt.resize(6, 0);
  EXPECT_EQ(removedAt, elements(selection.order));
  selection.expectCovariates({1});
  selection.expectFit(SubModel(kWeibull, {1}));
}

TEST(BackwardSelection, TheStepThatStopsWritesItsCovariateCountOnly) {
  Selection selection(kLogNormal);
  EXPECT_EQ(0, selection.backward(2.0));
  EXPECT_EQ(1, selection.count);
  EXPECT_EQ(4.0, selection.steps.vbget(1, 1));
  EXPECT_EQ(777.0, selection.steps.vbget(2, 1));
  EXPECT_EQ(777.0, selection.steps.vbget(3, 1));
  selection.expectCovariates({0, 1, 2, 3});
  selection.expectFit(SubModel(kLogNormal, {0, 1, 2, 3}));
}

TEST(BackwardSelection, APValueAtTheThresholdIsRemoved) {
  const SubModel whole(kLogNormal, {0, 1, 2, 3});
  double largest = 0.0;
  Selection probe(kLogNormal);
  probe.backward(0.0);
  largest = probe.steps.vbget(3, 1);
  Selection at(kLogNormal);
  at.backward(largest);
  EXPECT_GE(at.count, 2);
  Selection above(kLogNormal);
  above.backward(std::nextafter(largest, 1.0));
  EXPECT_EQ(1, above.count);
}

TEST(BackwardSelection, AnotherOptionRemovesTheFirstAtPValueZero) {
  for (const int option : {1, -1, 7}) {
    Selection selection(kWeibull);
    EXPECT_EQ(0, selection.backward(0.0, option));
    EXPECT_EQ(4, selection.count);
    EXPECT_EQ(
        (std::vector<double>{4.0, 0.0, 0.0, 3.0, 0.0, 0.0, 2.0, 0.0, 0.0, 777.0, 777.0, 777.0}),
        elements(selection.steps));
    EXPECT_EQ((std::vector<int>{1, 2, 3, 0, 0, 0}), elements(selection.order));
    selection.expectCovariates({3});
    selection.expectFit(SubModel(kWeibull, {3}));
  }
  Selection kept(kWeibull);
  EXPECT_EQ(0, kept.backward(1e-300, 1));
  EXPECT_EQ(1, kept.count);
}

TEST(BackwardSelection, TheOnlyCovariateIsNeverRemoved) {
  Selection selection(kWeibull, {"diagtime"});
  EXPECT_EQ(0, selection.backward(0.0));
  EXPECT_EQ(1, selection.p);
  EXPECT_EQ(1, selection.count);
  EXPECT_EQ(std::vector<double>(3, 777.0), elements(selection.steps));
  EXPECT_EQ(std::vector<int>(3, 0), elements(selection.order));
}

TEST(BackwardSelection, WithoutCovariatesThereIsOneFit) {
  Selection selection(kWeibull, std::vector<std::string>{});
  EXPECT_EQ(0, selection.backward(0.05));
  EXPECT_EQ(0, selection.p);
  EXPECT_EQ(1, selection.count);
  selection.expectFit(SubModel(kWeibull, {}));
}

TEST(BackwardSelection, TheGradientTakesTheShapeOfTheModelAndTheOthersKeepTheirs) {
  Selection selection(kWeibull);
  selection.backward(0.05);
  EXPECT_EQ(selection.p + 2, selection.fit.gradient.rows());
  EXPECT_EQ(6, selection.fit.hessian.rows());
  EXPECT_EQ(6, selection.fit.covariance.rows());
  EXPECT_EQ(6, selection.fit.parameters.rows());
}

TEST(BackwardSelection, EveryFitStartsWithTheLimit) {
  // Two steps are too few for the whole model; the last fit reports its own two.
  Selection selection(kWeibull);
  selection.fit.iterations = 2;
  selection.backward(0.05);
  EXPECT_EQ(2, selection.fit.iterations);
}

TEST(BackwardSelection, FitsThatFailGoOn) {
  Selection selection(4, {"age", "karno"});
  selection.fit.iterations = 9;
  EXPECT_EQ(0, selection.backward(0.05));
  EXPECT_EQ(9, selection.fit.iterations);
  EXPECT_EQ(0.0, selection.fit.logLik);
}

TEST(BackwardSelection, EverySizeStartsAtTheFirstOfTheGivenValues) {
  Selection selection(kWeibull);
  selection.fit.startAt({0.5, 1.0, 2.0, 0.25, 2.5, 1.0});
  selection.backward(0.0, 1);
  Model last(kWeibull, veteran({"prior"}));
  EXPECT_EQ(last.logLik({0.5, 1.0, 2.0}), selection.fit.logLik0);
}

TEST(ForwardSelection, EntersTheMostSignificantUntilTheThreshold) {
  // Candidates one by one, each against its own start; degrees of freedom are the model's size.
  int best = -1;
  double bestP = 2.0, bestStatistic = 0.0;
  for (int j = 0; j < 4; ++j) {
    const SubModel sub(kWeibull, {j});
    const double statistic = -2.0 * (sub.fit.logLik0 - sub.fit.logLik);
    const double pValue = waldPValue(statistic);
    if (statistic > 0.0 && pValue < bestP) {
      best = j;
      bestP = pValue;
      bestStatistic = statistic;
    }
  }
  Selection selection(kWeibull);
  EXPECT_EQ(0, selection.forward(bestP * (1.0 + 1e-10)));
  EXPECT_EQ(1.0, selection.steps.vbget(1, 1));
  EXPECT_NEAR(bestStatistic, selection.steps.vbget(2, 1), 1e-12 * bestStatistic);
  EXPECT_NEAR(bestP, selection.steps.vbget(3, 1), 1e-12 * bestP);
  EXPECT_EQ(1, selection.order.vbget(best + 1, 1));
}

TEST(ForwardSelection, LaterStepsTestAgainstTheModelBeforeWithItsWholeSize) {
  Selection selection(kLogNormal, {"age", "karno", "diagtime"});
  EXPECT_EQ(0, selection.forward(1.0));
  // With three covariates two enter, then the loop ends.
  EXPECT_EQ(3, selection.count);
  EXPECT_EQ(2, selection.p);
  EXPECT_EQ(2.0, selection.steps.vbget(1, 2));
  EXPECT_EQ(777.0, selection.steps.vbget(1, 3));
  int first = -1, second = -1;
  for (int j = 0; j < 3; ++j) {
    if (selection.order.vbget(j + 1, 1) == 1) first = j;
    if (selection.order.vbget(j + 1, 1) == 2) second = j;
  }
  ASSERT_GE(first, 0);
  ASSERT_GE(second, 0);
  const SubModel before(kLogNormal, {first});
  const SubModel after(kLogNormal, {std::min(first, second), std::max(first, second)});
  const double statistic = -2.0 * (before.fit.logLik - after.fit.logLik);
  EXPECT_DOUBLE_EQ(statistic, selection.steps.vbget(2, 2));
  // Two degrees of freedom: the tail is e^(-x/2).
  EXPECT_NEAR(std::exp(-statistic / 2.0), selection.steps.vbget(3, 2), 1e-14);
  selection.expectCovariates({std::min(first, second), std::max(first, second)});
  selection.expectFit(after);
}

TEST(ForwardSelection, WhereNoneEntersTheWholeModelIsFitted) {
  Selection selection(kWeibull);
  EXPECT_EQ(0, selection.forward(-1.0));
  EXPECT_EQ(1, selection.count);
  EXPECT_EQ(4, selection.p);
  EXPECT_EQ(std::vector<double>(12, 777.0), elements(selection.steps));
  EXPECT_EQ(std::vector<int>(4, 0), elements(selection.order));
  selection.expectCovariates({0, 1, 2, 3});
  selection.expectFit(SubModel(kWeibull, {0, 1, 2, 3}));
}

TEST(ForwardSelection, ACandidateThatGainsNothingNeverEnters) {
  // Without a likelihood every statistic is 0 and every p-value exactly 0.
  Selection selection(4);
  EXPECT_EQ(0, selection.forward(1.0));
  EXPECT_EQ(1, selection.count);
  EXPECT_EQ(4, selection.p);
  EXPECT_EQ(std::vector<int>(4, 0), elements(selection.order));
}

TEST(ForwardSelection, AThresholdThatIsNotANumberStopsNothing) {
  Selection selection(kWeibull);
  EXPECT_EQ(0, selection.forward(kNaN));
  EXPECT_EQ(3, selection.p);
}

TEST(ForwardSelection, TheOnlyCovariateCanEnter) {
  Selection in(kWeibull, {"karno"});
  EXPECT_EQ(0, in.forward(1.0));
  EXPECT_EQ(2, in.count);
  EXPECT_EQ(1, in.p);
  EXPECT_EQ((std::vector<int>{1}), elements(in.order));
  Selection out(kWeibull, {"karno"});
  EXPECT_EQ(0, out.forward(-1.0));
  EXPECT_EQ(1, out.count);
  EXPECT_EQ(1, out.p);
  EXPECT_EQ((std::vector<int>{0}), elements(out.order));
  Model model(kWeibull, veteran({"karno"}));
  Fit fit(model);
  fit.run(model);
  EXPECT_EQ(fit.estimates(), in.fit.estimates());
  EXPECT_EQ(fit.estimates(), out.fit.estimates());
}

TEST(ForwardSelection, WithoutCovariatesThereIsOneFit) {
  for (const int p : {0, -2}) {
    Selection selection(kWeibull, std::vector<std::string>{});
    selection.p = p;
    EXPECT_EQ(0, selection.forward(0.05));
    EXPECT_EQ(p, selection.p);
    EXPECT_EQ(1, selection.count);
    EXPECT_EQ((std::vector<int>{0}), elements(selection.order));
    selection.expectFit(SubModel(kWeibull, {}));
  }
}

TEST(ForwardSelection, WhatLiesBeyondTheModelStaysInParametersAndCovariates) {
  Selection selection(kWeibull, {"karno", "age", "diagtime"});
  for (int r = 1; r <= 5; ++r) selection.fit.parameters.vbset(r, 1, 777.0);
  // Against its own start age gains most; karno follows with a p-value of 5e-10.
  selection.forward(1e-12);
  ASSERT_EQ(1, selection.p);
  EXPECT_EQ((std::vector<int>{0, 1, 0}), elements(selection.order));
  EXPECT_EQ(veteran({"age"})[0].covariates[0], selection.model.covariates.vbget(1, 1));
  EXPECT_NE(777.0, selection.fit.parameters.vbget(3, 1));
  EXPECT_EQ(777.0, selection.fit.parameters.vbget(4, 1));
  EXPECT_EQ(777.0, selection.fit.parameters.vbget(5, 1));
  EXPECT_EQ(veteran({"age"})[0].covariates[0], selection.model.covariates.vbget(1, 2));
  EXPECT_EQ(3, selection.fit.gradient.rows());
}

}  // namespace
}  // namespace survmeth::test
