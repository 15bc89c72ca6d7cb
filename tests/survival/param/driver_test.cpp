// RunParamReg: the order of its parts, its codes, its flags.
#include <gtest/gtest.h>

#include "numerics/elementary.h"
#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

// Everything that the driver takes; outputs are filled with 777.
struct Driver {
  explicit Driver(const Model& source)
      : initialValues(source.m(), 1, 0),
        parameters(source.m(), 1, 777),
        statistics(7, 2, 777),
        tests(3, 3, 777),
        coefficients(source.m(), 9, 777),
        survival(source.n, 1, 777),
        residuals(source.n, 2, 777),
        probabilities(source.n, 2, 777),
        quantiles(source.n, 9, 777),
        steps(3, std::max(source.p, 1), 777),
        order(std::max(source.p, 1), 1, 777) {}

  int run(Model& model) {
    return RunParamReg(&model.times, model.n, model.p, &kept, model.k, &model.status, &model.bounds,
                       &model.covariates, &model.weights, iterations, tolerance, logTimes,
                       model.distribution, noCovariates, method, backwardOption, enterThreshold,
                       removeThreshold, 0.05, useInitialValues, &initialValues, fixIntercept,
                       interceptValue, &parameters, &statistics, &tests, &coefficients, &survival,
                       &residuals, &probabilities, &quantiles, &steps, &count, &order);
  }

  void expectUntouchedTables() const {
    EXPECT_EQ(777, kept);
    for (const matrix* table :
         {&statistics, &tests, &coefficients, &survival, &residuals, &probabilities, &quantiles}) {
      EXPECT_EQ(std::vector<double>(static_cast<std::size_t>(table->count()), 777.0),
                elements(*table));
    }
  }

  int kept = 777;
  int iterations = 100;
  double tolerance = 1e-10;
  short logTimes = 0;
  short noCovariates = 0;
  int method = -1;
  int backwardOption = 0;
  double enterThreshold = 0.05;
  double removeThreshold = 0.05;
  short useInitialValues = 0;
  short fixIntercept = 0;
  double interceptValue = 0.0;
  matrix initialValues;
  matrix parameters;
  matrix statistics;
  matrix tests;
  matrix coefficients;
  matrix survival;
  matrix residuals;
  matrix probabilities;
  matrix quantiles;
  matrix steps;
  int count = 777;
  matrixInt order;
};

TEST(Driver, FitsTestsAndPredicts) {
  Model model(kWeibull, veteran());
  Fit fit(model);
  ASSERT_EQ(0, fit.run(model));
  Driver driver(model);
  EXPECT_EQ(0, driver.run(model));
  EXPECT_EQ(2, driver.kept);
  EXPECT_EQ(fit.estimates(), elements(driver.parameters));

  matrix statistics(7, 2, 777), tests(3, 3, 777), coefficients(4, 9, 777);
  double z = 0.0;
  ComputeCritParam(137, 2, 2, fit.logLik, fit.logLik0, fit.iterations, 0.05, &fit.parameters,
                   &fit.hessian, &fit.covariance, &z, &fit.gradient0, &fit.hessian0, &statistics,
                   &coefficients, &tests);
  EXPECT_EQ(elements(statistics), elements(driver.statistics));
  EXPECT_EQ(elements(tests), elements(driver.tests));
  EXPECT_EQ(elements(coefficients), elements(driver.coefficients));

  matrix survival(137, 1, 0), probabilities(137, 2, 0), residuals(137, 2, 0), quantiles(137, 9, 0);
  ResParam(&model.times, 137, 2, kWeibull, 0, &model.covariates, &fit.parameters, &survival,
           &probabilities, &residuals, &quantiles);
  EXPECT_EQ(elements(survival), elements(driver.survival));
  EXPECT_EQ(elements(probabilities), elements(driver.probabilities));
  EXPECT_EQ(elements(residuals), elements(driver.residuals));
  EXPECT_EQ(elements(quantiles), elements(driver.quantiles));
  // Without a selection its history stays as it is.
  EXPECT_EQ(777, driver.count);
  EXPECT_EQ(std::vector<double>(6, 777.0), elements(driver.steps));
  EXPECT_EQ(std::vector<int>(2, 777), elements(driver.order));
}

TEST(Driver, TakesLogarithmsOfTimesAndOfTheBoundsOfIntervals) {
  const std::vector<Observation> rows = {{kEvent, 2.0, 1.0, 5.0, 6.0},
                                         {kInterval, 3.0, 1.0, 2.0, 8.0},
                                         {kRight, 4.0, 1.0, 5.0, 6.0},
                                         {kEvent, 1.5, 1.0, 5.0, 6.0}};
  for (const short flag : {short{-1}, short{1}, short{0}}) {
    Model model(kWeibull, rows);
    Driver driver(model);
    driver.logTimes = flag;
    driver.run(model);
    if (flag == kTrue) {
      EXPECT_EQ((std::vector<double>{numerics::log(2.0), numerics::log(3.0), numerics::log(4.0),
                                     numerics::log(1.5)}),
                elements(model.times));
      EXPECT_EQ((std::vector<double>{5.0, numerics::log(2.0), 5.0, 5.0, 6.0, numerics::log(8.0),
                                     6.0, 6.0}),
                elements(model.bounds));
      // And the percentiles come back as times.
      const double eta = driver.parameters.vbget(1, 1);
      const double sigma = driver.parameters.vbget(2, 1);
      EXPECT_DOUBLE_EQ(std::exp(eta - sigma * 0.36651292058166435), driver.quantiles.vbget(1, 5));
    } else {
      EXPECT_EQ((std::vector<double>{2.0, 3.0, 4.0, 1.5}), elements(model.times));
      EXPECT_EQ(2.0, model.bounds.vbget(2, 1));
    }
  }
}

TEST(Driver, TheTransformIsNotUndoneWhenTheFitFails) {
  Model model(4, {{kEvent, 2.0}, {kEvent, 3.0}});
  Driver driver(model);
  driver.logTimes = kTrue;
  EXPECT_EQ(-5, driver.run(model));
  EXPECT_EQ(numerics::log(2.0), model.times.vbget(1, 1));
}

TEST(Driver, TimesAtOrBelowZeroEndInACode) {
  for (const double time : {0.0, -1.0, kNaN}) {
    for (const int law : {kExponential, kWeibull, kLogNormal}) {
      Model model(law, {{kEvent, time}, {kEvent, 2.0}, {kRight, 3.0}});
      Driver driver(model);
      driver.logTimes = kTrue;
      EXPECT_EQ(-5, driver.run(model));
    }
  }
}

TEST(Driver, AFailedFitReturnsMinusFiveAndNoTables) {
  Model model(4, {{kEvent, 2.0}, {kEvent, 3.0}});
  Driver driver(model);
  EXPECT_EQ(-5, driver.run(model));
  driver.expectUntouchedTables();
  EXPECT_EQ(2.5, driver.parameters.vbget(1, 1));
}

TEST(Driver, AFitThatTakesAllItsStepsReturnsMinusOneAndNoTables) {
  Model model(kWeibull, veteran());
  Fit fit(model);
  ASSERT_EQ(0, fit.run(model));
  ASSERT_GT(fit.iterations, 2);
  Driver exact(model);
  exact.iterations = fit.iterations;
  EXPECT_EQ(-1, exact.run(model));
  exact.expectUntouchedTables();
  EXPECT_EQ(fit.estimates(), elements(exact.parameters));
  Driver more(model);
  more.iterations = fit.iterations + 1;
  EXPECT_EQ(0, more.run(model));
}

TEST(Driver, WithoutALimitTheStepsNeverMatchIt) {
  Model model(kExponential, {{kEvent, 0.0}, {kEvent, 1.0}});
  for (const int limit : {0, -7}) {
    Driver driver(model);
    driver.iterations = limit;
    driver.tolerance = -1.0;
    EXPECT_EQ(0, driver.run(model));
    EXPECT_GT(driver.statistics.vbget(7, 2), 3.0);
    EXPECT_LT(driver.statistics.vbget(7, 2), 10.0);
  }
}

TEST(Driver, NoCovariatesLeavesInterceptAndScale) {
  Model model(kWeibull, veteran({"karno", "age", "diagtime"}));
  Model empty(kWeibull, veteran(std::vector<std::string>{}));
  Fit fit(empty);
  ASSERT_EQ(0, fit.run(empty));
  Driver driver(model);
  driver.noCovariates = kTrue;
  EXPECT_EQ(0, driver.run(model));
  EXPECT_EQ(0, driver.kept);
  EXPECT_EQ(fit.estimates()[0], driver.parameters.vbget(1, 1));
  EXPECT_EQ(fit.estimates()[1], driver.parameters.vbget(2, 1));
  EXPECT_EQ(777.0, driver.parameters.vbget(3, 1));
  EXPECT_EQ(2.0, driver.statistics.vbget(2, 2));
  EXPECT_EQ(std::vector<double>(9, 777.0), elements(driver.tests));
  Driver with(model);
  with.noCovariates = 1;
  EXPECT_EQ(0, with.run(model));
  EXPECT_EQ(3, with.kept);
}

TEST(Driver, ForwardSelectionUsesTheEntryThreshold) {
  Model model(kWeibull, veteran({"karno", "age", "diagtime"}));
  Driver driver(model);
  driver.method = 0;
  driver.enterThreshold = 1e-12;
  driver.removeThreshold = kNaN;
  EXPECT_EQ(0, driver.run(model));
  EXPECT_EQ(1, driver.kept);
  EXPECT_EQ(2, driver.count);
  EXPECT_EQ((std::vector<int>{0, 1, 0}), elements(driver.order));
  EXPECT_EQ(3.0, driver.statistics.vbget(2, 2));
  EXPECT_EQ(1.0, driver.tests.vbget(1, 1));
  // The residuals are those of the selected column.
  const double eta =
      driver.parameters.vbget(1, 1) * model.covariates.vbget(1, 1) + driver.parameters.vbget(2, 1);
  EXPECT_DOUBLE_EQ((model.times.vbget(1, 1) - eta) / driver.parameters.vbget(3, 1),
                   driver.residuals.vbget(1, 1));
}

TEST(Driver, BackwardSelectionUsesTheRemovalThresholdAndOption) {
  Model model(kWeibull, veteran({"age", "karno", "diagtime"}));
  Driver driver(model);
  driver.method = 1;
  driver.enterThreshold = kNaN;
  EXPECT_EQ(0, driver.run(model));
  EXPECT_EQ(1, driver.kept);
  EXPECT_EQ(3, driver.count);
  EXPECT_EQ(5, driver.order.rows());
  EXPECT_EQ(0, driver.order.vbget(2, 1));
  Model again(kWeibull, veteran({"age", "karno", "diagtime"}));
  Driver option(again);
  option.method = 1;
  option.backwardOption = 1;
  option.removeThreshold = 0.0;
  EXPECT_EQ(0, option.run(again));
  EXPECT_EQ((std::vector<int>{1, 2, 0, 0, 0}), elements(option.order));
}

TEST(Driver, ASelectionThatDoesNotConvergeIsNotReported) {
  Model model(kWeibull, veteran());
  for (const int method : {0, 1}) {
    Driver driver(model);
    driver.method = method;
    driver.iterations = 1;
    EXPECT_EQ(0, driver.run(model));
    EXPECT_EQ(1.0, driver.statistics.vbget(7, 2));
  }
  Model without(4, {{kEvent, 2.0}, {kEvent, 3.0}});
  Driver failed(without);
  failed.method = 1;
  EXPECT_EQ(0, failed.run(without));
  EXPECT_EQ(0, failed.kept);
}

TEST(Driver, AnotherMethodDescribesTheParametersPassed) {
  for (const int method : {2, -2, 17}) {
    Model model(kWeibull, {{kEvent, 2.0}, {kEvent, 3.0}, {kRight, 3.5}, {kEvent, 1.0}});
    Driver driver(model);
    driver.method = method;
    driver.iterations = 42;
    driver.parameters.vbset(1, 1, 2.0);
    driver.parameters.vbset(2, 1, 0.5);
    EXPECT_EQ(0, driver.run(model));
    EXPECT_EQ(0, driver.kept);
    EXPECT_EQ((std::vector<double>{2.0, 0.5}), elements(driver.parameters));
    // Log-likelihoods of 0, steps equal to the limit, and no variances.
    EXPECT_EQ(0.0, driver.statistics.vbget(3, 1));
    EXPECT_EQ(0.0, driver.statistics.vbget(3, 2));
    EXPECT_EQ(4.0, driver.statistics.vbget(4, 2));
    EXPECT_EQ(42.0, driver.statistics.vbget(7, 2));
    EXPECT_EQ(2.0, driver.coefficients.vbget(1, 1));
    EXPECT_EQ(kMissing, driver.coefficients.vbget(1, 2));
    EXPECT_EQ(-2.0, driver.residuals.vbget(4, 1));
    EXPECT_EQ(777, driver.count);
  }
}

TEST(Driver, AFixedInterceptAndGivenStartReachTheFit) {
  Model model(kWeibull, veteran());
  Driver driver(model);
  driver.fixIntercept = kTrue;
  driver.interceptValue = 2.5;
  driver.iterations = 1;
  EXPECT_EQ(-1, driver.run(model));
  EXPECT_EQ(2.5, driver.parameters.vbget(3, 1));
  Driver given(model);
  given.useInitialValues = kTrue;
  given.initialValues.vbset(4, 1, 1.0);
  given.initialValues.vbset(3, 1, 5.0);
  EXPECT_EQ(0, given.run(model));
  EXPECT_DOUBLE_EQ(-2.0 * model.logLik({0.0, 0.0, 5.0, 1.0}), given.statistics.vbget(3, 1));
}

TEST(Driver, ManyStatusesOfAnUnknownKindAreNoData) {
  Model model(kWeibull, {{5.0, 2.0}, {-1.0, 3.0}, {kNaN, 4.0}});
  Driver driver(model);
  EXPECT_EQ(-5, driver.run(model));
}

}  // namespace
}  // namespace survmeth::test
