// The flat-array entry points: shapes, what is copied back and what stays.
#include <gtest/gtest.h>

#include "survival/calls/param.h"
#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

// The veteran data as a caller holds them.
struct Arrays {
  explicit Arrays(const std::vector<std::string>& names = {"karno", "age", "diagtime"}, int law = 2)
      : distribution(law) {
    const Model model(law, veteran(names));
    n = model.n;
    p = model.p;
    k = model.k;
    times = elements(model.times);
    status = elements(model.status);
    bounds = elements(model.bounds);
    covariates = elements(model.covariates);
    weights = elements(model.weights);
  }

  std::size_t m() const { return static_cast<std::size_t>(p) + static_cast<std::size_t>(k); }

  int distribution;
  int n;
  int p;
  int k;
  std::vector<double> times, status, bounds, covariates, weights;
};

std::vector<double> filled(std::size_t count) { return std::vector<double>(count, 777.0); }

TEST(EntryPoint, DerivativesOfFlatArraysAreThoseOfMatrices) {
  Arrays data;
  const std::vector<double> theta = {0.03, 0.01, -0.01, 2.5, 1.25};
  std::vector<double> parameters = theta;
  std::vector<double> gradient = filled(5), hessian = filled(25);
  double logLik = 777.0;
  Cpp_ComputeLogLikeDerivativesParam(data.times.data(), data.n, data.p, data.k, data.status.data(),
                                     data.bounds.data(), data.covariates.data(), parameters.data(),
                                     data.weights.data(), kWeibull, &logLik, gradient.data(),
                                     hessian.data());
  Model model(kWeibull, veteran({"karno", "age", "diagtime"}));
  EXPECT_EQ(model.logLik(theta), logLik);
  std::vector<double> all = gradient;
  all.insert(all.end(), hessian.begin(), hessian.end());
  EXPECT_EQ(model.derivatives(theta), all);
  EXPECT_EQ(theta, parameters);
}

TEST(EntryPoint, DerivativesOfAnotherLawAreZero) {
  Arrays data(std::vector<std::string>{}, 4);
  std::vector<double> parameters = {1.0};
  std::vector<double> gradient = filled(1), hessian = filled(1);
  double logLik = 777.0;
  Cpp_ComputeLogLikeDerivativesParam(data.times.data(), data.n, 0, 1, data.status.data(),
                                     data.bounds.data(), data.covariates.data(), parameters.data(),
                                     data.weights.data(), 4, &logLik, gradient.data(),
                                     hessian.data());
  EXPECT_EQ(0.0, logLik);
  EXPECT_EQ(0.0, gradient[0]);
  EXPECT_EQ(0.0, hessian[0]);
}

TEST(EntryPoint, TheFitGivesBackOneColumnOfCovariance) {
  Arrays data;
  std::vector<double> initial(5, 0.0), gradient = filled(5), hessian = filled(25);
  std::vector<double> covariance = filled(25), gradient0 = filled(5), hessian0 = filled(25);
  std::vector<double> parameters = filled(5);
  int iterations = 100;
  double logLik = 777.0, logLik0 = 777.0;
  const auto run = [&](int law) {
    return Cpp_OptimizeParamModel(data.times.data(), data.n, data.p, data.k, data.status.data(),
                                  data.bounds.data(), data.covariates.data(), data.weights.data(),
                                  &iterations, 1e-10, law, 0, initial.data(), 0, 0.0, &logLik,
                                  &logLik0, gradient.data(), hessian.data(), covariance.data(),
                                  gradient0.data(), hessian0.data(), parameters.data());
  };
  EXPECT_EQ(0, run(kWeibull));
  Model model(kWeibull, veteran({"karno", "age", "diagtime"}));
  Fit fit(model);
  ASSERT_EQ(0, fit.run(model));
  EXPECT_EQ(fit.estimates(), parameters);
  EXPECT_EQ(fit.iterations, iterations);
  EXPECT_EQ(fit.logLik, logLik);
  EXPECT_EQ(fit.logLik0, logLik0);
  EXPECT_EQ(elements(fit.gradient), gradient);
  EXPECT_EQ(elements(fit.hessian), hessian);
  EXPECT_EQ(elements(fit.gradient0), gradient0);
  EXPECT_EQ(elements(fit.hessian0), hessian0);
  std::vector<double> column = elements(fit.covariance);
  std::fill(column.begin() + 5, column.end(), 777.0);
  EXPECT_EQ(column, covariance);
  iterations = 3;
  EXPECT_EQ(-2, run(5));
  EXPECT_EQ(3, iterations);
}

struct Flat {
  explicit Flat(Arrays& data)
      : gradient(filled(data.m())),
        hessian(filled(data.m() * data.m())),
        covariance(filled(data.m() * data.m())),
        gradient0(filled(data.m())),
        hessian0(filled(data.m() * data.m())),
        parameters(filled(data.m())),
        initial(data.m(), 0.0),
        steps(filled(3 * static_cast<std::size_t>(std::max(data.p, 1)))),
        order(data.m() + 3, 777) {}

  int backward(Arrays& data, double threshold) {
    return Cpp_Param_BackSelection(
        data.times.data(), data.n, &data.p, data.k, data.status.data(), data.bounds.data(),
        data.covariates.data(), data.weights.data(), &iterations, 1e-10, data.distribution, 0,
        initial.data(), 0, 0.0, 0, threshold, parameters.data(), &logLik, &logLik0, gradient.data(),
        hessian.data(), covariance.data(), gradient0.data(), hessian0.data(), steps.data(), &count,
        order.data());
  }

  int forward(Arrays& data, double threshold) {
    return Cpp_Param_ForSelection(data.times.data(), data.n, &data.p, data.k, data.status.data(),
                                  data.bounds.data(), data.covariates.data(), data.weights.data(),
                                  &iterations, 1e-10, data.distribution, 0, initial.data(), 0, 0.0,
                                  threshold, parameters.data(), &logLik, &logLik0, gradient.data(),
                                  hessian.data(), covariance.data(), gradient0.data(),
                                  hessian0.data(), steps.data(), &count, order.data());
  }

  std::vector<double> gradient, hessian, covariance, gradient0, hessian0, parameters, initial,
      steps;
  std::vector<int> order;
  int iterations = 100;
  int count = 777;
  double logLik = 777.0;
  double logLik0 = 777.0;
};

TEST(EntryPoint, BackwardSelectionGivesBackTheWholeCovarianceAndTheCovariates) {
  Arrays data({"age", "karno", "diagtime"});
  const Arrays before = data;
  Flat flat(data);
  EXPECT_EQ(0, flat.backward(data, 0.05));
  EXPECT_EQ(1, data.p);
  EXPECT_EQ(3, flat.count);
  // Three entries of the order, though the routine makes it five long.
  EXPECT_EQ(0, flat.order[1]);
  EXPECT_EQ(3, flat.order[0] + flat.order[2]);
  EXPECT_EQ(777, flat.order[3]);
  EXPECT_TRUE(std::equal(data.covariates.begin(), data.covariates.begin() + data.n,
                         before.covariates.begin() + data.n));
  Model model(kWeibull, veteran({"karno"}));
  Fit fit(model);
  fit.run(model);
  EXPECT_EQ(fit.estimates(),
            (std::vector<double>(flat.parameters.begin(), flat.parameters.begin() + 3)));
  // Row 2, column 2 of a 5 x 5 matrix.
  EXPECT_EQ(fit.covariance.vbget(2, 2), flat.covariance[6]);
  EXPECT_EQ(fit.hessian.vbget(3, 3), flat.hessian[12]);
  EXPECT_EQ(fit.gradient.vbget(3, 1), flat.gradient[2]);
  // The larger model's part: the gradient keeps the caller's values, the Hessian is cleared.
  EXPECT_EQ(777.0, flat.gradient[3]);
  EXPECT_EQ(777.0, flat.gradient[4]);
  EXPECT_EQ(0.0, flat.hessian[24]);
  EXPECT_EQ(before.times, data.times);
}

TEST(EntryPoint, ForwardSelectionGivesBackTheCovariates) {
  Arrays data({"karno", "age", "diagtime"});
  const Arrays before = data;
  Flat flat(data);
  EXPECT_EQ(0, flat.forward(data, 1e-12));
  EXPECT_EQ(1, data.p);
  EXPECT_EQ(2, flat.count);
  EXPECT_EQ((std::vector<int>{0, 1, 0, 777}),
            (std::vector<int>(flat.order.begin(), flat.order.begin() + 4)));
  EXPECT_TRUE(std::equal(data.covariates.begin(), data.covariates.begin() + data.n,
                         before.covariates.begin() + data.n));
  EXPECT_EQ(777.0, flat.parameters[3]);
}

TEST(EntryPoint, SelectionsWithoutCovariatesTouchTheFirstEntryOfTheOrder) {
  for (const bool backward : {true, false}) {
    Arrays data(std::vector<std::string>{});
    Flat flat(data);
    EXPECT_EQ(0, backward ? flat.backward(data, 0.05) : flat.forward(data, 0.05));
    EXPECT_EQ(0, flat.order[0]);
    EXPECT_EQ(777, flat.order[1]);
    EXPECT_EQ(1, flat.count);
    EXPECT_EQ(filled(3), flat.steps);
  }
}

TEST(EntryPoint, CriteriaTakeOneColumnOfCovariance) {
  std::vector<double> parameters = {2.0, -1.0, 0.5};
  std::vector<double> hessian(9, -4.0), covariance = {-0.25, 5.0, 5.0}, gradient0(3, 3.0);
  std::vector<double> hessian0(9, -2.0), statistics = filled(14), coefficients = filled(27);
  std::vector<double> tests = filled(9);
  double z = 777.0;
  Cpp_ComputeCritParam(9, 1, 2, -20.0, -25.0, 4, 0.05, parameters.data(), hessian.data(),
                       covariance.data(), &z, gradient0.data(), hessian0.data(), statistics.data(),
                       coefficients.data(), tests.data());
  EXPECT_NEAR(1.959963984540054, z, 1e-15);
  // Standard errors: intercept 1, covariate 1/2, scale 1.
  EXPECT_EQ((std::vector<double>{1.0, 0.5, 1.0}),
            (std::vector<double>(coefficients.begin() + 3, coefficients.begin() + 6)));
  EXPECT_EQ(std::vector<double>(9, 777.0),
            (std::vector<double>(coefficients.begin() + 18, coefficients.end())));
  EXPECT_EQ(46.0 + 4.8, statistics[12]);
  EXPECT_EQ(18.0, tests[4]);
  EXPECT_EQ(16.0, tests[5]);
}

TEST(EntryPoint, CriteriaWithoutCovariatesLeaveTheTestsAlone) {
  std::vector<double> parameters = {1.0}, one = {-1.0}, statistics = filled(14);
  std::vector<double> coefficients = filled(9), tests = filled(9);
  double z = 0.0;
  Cpp_ComputeCritParam(5, 0, 1, -20.0, -25.0, 4, 0.05, parameters.data(), one.data(), one.data(),
                       &z, one.data(), one.data(), statistics.data(), coefficients.data(),
                       tests.data());
  EXPECT_EQ(filled(9), tests);
  EXPECT_EQ(1.0, coefficients[1]);
}

TEST(EntryPoint, ResidualsGiveBackOneColumn) {
  std::vector<double> times = {2.0, 0.5}, covariates = {3.0, 1.0}, parameters = {2.0, -5.0, 0.5};
  std::vector<double> survival = filled(2), probabilities = filled(4), residuals = filled(4);
  std::vector<double> quantiles = filled(18);
  Cpp_ResParam(times.data(), 2, 1, 2, kWeibull, 0, covariates.data(), parameters.data(),
               survival.data(), probabilities.data(), residuals.data(), quantiles.data());
  EXPECT_EQ((std::vector<double>{2.0, 7.0, 777.0, 777.0}), residuals);
  EXPECT_DOUBLE_EQ(std::exp(-std::exp(2.0)), survival[0]);
  EXPECT_EQ(1.0 - 0.5 * 0.36651292058166435, quantiles[8]);
}

struct Regression {
  explicit Regression(const Arrays& data)
      : initial(data.m(), 0.0),
        parameters(filled(data.m())),
        statistics(filled(14)),
        tests(filled(9)),
        coefficients(filled(9 * data.m())),
        survival(filled(data.times.size())),
        residuals(filled(2 * data.times.size())),
        probabilities(filled(2 * data.times.size())),
        quantiles(filled(9 * data.times.size())),
        steps(filled(3 * static_cast<std::size_t>(std::max(data.p, 1)))),
        order(static_cast<std::size_t>(std::max(data.p, 1)) + 1, 777) {}

  int run(Arrays& data, int reserved = 0) {
    return Cpp_RunParamReg(data.times.data(), data.n, data.p, &kept, data.k, data.status.data(),
                           data.bounds.data(), data.covariates.data(), data.weights.data(),
                           iterations, 1e-10, logTimes, data.distribution, noCovariates, method, 0,
                           1e-12, 0.05, 0.05, reserved, 0, initial.data(), 0, 0.0,
                           parameters.data(), statistics.data(), tests.data(), coefficients.data(),
                           survival.data(), residuals.data(), probabilities.data(),
                           quantiles.data(), steps.data(), &count, order.data());
  }

  std::vector<double> initial, parameters, statistics, tests, coefficients, survival, residuals,
      probabilities, quantiles, steps;
  std::vector<int> order;
  int kept = 777;
  int iterations = 100;
  short logTimes = 0;
  short noCovariates = 0;
  int method = -1;
  int count = 777;
};

TEST(EntryPoint, TheRegressionLeavesItsInputsAlone) {
  Arrays data;
  for (double& time : data.times) time = std::exp(time);
  const Arrays before = data;
  Regression regression(data);
  regression.logTimes = kTrue;
  EXPECT_EQ(0, regression.run(data));
  EXPECT_EQ(before.times, data.times);
  EXPECT_EQ(before.bounds, data.bounds);
  EXPECT_EQ(before.covariates, data.covariates);
  EXPECT_EQ(3, regression.kept);
  // Both columns of residuals, and standard errors of every coefficient.
  EXPECT_NE(777.0, regression.residuals[data.times.size()]);
  EXPECT_NE(1.0, regression.coefficients[5]);
  EXPECT_EQ(777.0, regression.coefficients[6 * data.m()]);
  EXPECT_EQ(777, regression.order[0]);
}

TEST(EntryPoint, TheReservedArgumentOfTheRegressionIsIgnored) {
  Arrays data;
  Regression zero(data), other(data);
  EXPECT_EQ(0, zero.run(data, 0));
  EXPECT_EQ(0, other.run(data, std::numeric_limits<int>::min()));
  EXPECT_EQ(zero.coefficients, other.coefficients);
}

TEST(EntryPoint, TheRegressionReportsFailureAndKeepsItsTables) {
  Arrays data(std::vector<std::string>{}, 4);
  Regression regression(data);
  EXPECT_EQ(-5, regression.run(data));
  EXPECT_EQ(777, regression.kept);
  EXPECT_EQ(filled(14), regression.statistics);
  Arrays fits;
  Regression hurried(fits);
  hurried.iterations = 1;
  EXPECT_EQ(-1, hurried.run(fits));
  EXPECT_EQ(filled(14), hurried.statistics);
  EXPECT_NE(777.0, hurried.parameters[0]);
}

TEST(EntryPoint, TheRegressionSelects) {
  Arrays data({"karno", "age", "diagtime"});
  Regression forward(data);
  forward.method = 0;
  EXPECT_EQ(0, forward.run(data));
  EXPECT_EQ(1, forward.kept);
  EXPECT_EQ((std::vector<int>{0, 1, 0, 777}), forward.order);
  Regression backward(data);
  backward.method = 1;
  EXPECT_EQ(0, backward.run(data));
  EXPECT_EQ(1, backward.kept);
  EXPECT_EQ(0, backward.order[0]);
  EXPECT_EQ(777, backward.order[3]);
  // With the covariates left out the order is made one place for each other parameter.
  Regression without(data);
  without.method = 1;
  without.noCovariates = kTrue;
  EXPECT_EQ(0, without.run(data));
  EXPECT_EQ(0, without.kept);
  EXPECT_EQ((std::vector<int>{0, 0, 777, 777}), without.order);
}

TEST(EntryPoint, NegativeCountsTouchNothing) {
  double cell = 777.0;
  int whole = 777;
  int minus = -4;
  double logLik = 777.0;
  Cpp_ComputeLogLikeDerivativesParam(&cell, -1, -3, 1, &cell, &cell, &cell, &cell, &cell, 2,
                                     &logLik, &cell, &cell);
  EXPECT_EQ(0.0, logLik);
  EXPECT_EQ(777.0, cell);
  Cpp_ResParam(&cell, -1, -1, 0, 2, 0, &cell, &cell, &cell, &cell, &cell, &cell);
  EXPECT_EQ(777.0, cell);
  int iterations = 5;
  int count = 0;
  // Only the history has a shape that never vanishes.
  std::vector<double> steps = filled(3);
  EXPECT_EQ(
      0, Cpp_Param_ForSelection(&cell, -1, &minus, 1, &cell, &cell, &cell, &cell, &iterations, 1e-6,
                                2, 0, &cell, 0, 0.0, 0.05, &cell, &logLik, &logLik, &cell, &cell,
                                &cell, &cell, &cell, steps.data(), &count, &whole));
  EXPECT_EQ(filled(3), steps);
  EXPECT_EQ(777.0, cell);
  EXPECT_EQ(-4, minus);
  EXPECT_EQ(0, whole);
}

}  // namespace
}  // namespace survmeth::test
