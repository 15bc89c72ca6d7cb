// ComputeDerivativesParam, ComputeLogLikeDerivativesParam and modifyDerivatives.
#include <gtest/gtest.h>

#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

const double kE = std::exp(1.0);

// Relative distance, with an absolute floor where the reference is 0.
void expectClose(double want, double got, double tolerance, std::size_t row) {
  EXPECT_LE(std::fabs(want - got), tolerance * std::fabs(want) + 1e-13)
      << "row " << row << ": " << want << " against " << got;
}

TEST(Derivatives, AgreeWithDifferencesInFiftyDigits) {
  const Csv table(SURVMETH_REFERENCE "/param/derivatives.csv");
  const std::vector<double> laws = table.numbers("distribution");
  ASSERT_EQ(144u, laws.size());
  for (std::size_t i = 0; i < laws.size(); ++i) {
    const auto at = [&](const char* name) { return table.number(name, i); };
    const int law = static_cast<int>(laws[i]);
    Model model(law,
                {{at("status"), at("time"), at("weight"), at("lower"), at("upper"), {at("x")}}});
    std::vector<double> theta = {at("coefficient"), at("intercept")};
    if (law != kExponential) theta.push_back(at("sigma"));
    const std::vector<double> got = model.derivatives(theta);
    const std::vector<double> want =
        law == kExponential
            ? std::vector<double>{at("b"), at("i"), at("bb"), at("bi"), at("bi"), at("ii")}
            : std::vector<double>{at("b"),  at("i"),  at("s"),  at("bb"), at("bi"), at("bs"),
                                  at("bi"), at("ii"), at("is"), at("bs"), at("is"), at("ss")};
    ASSERT_EQ(want.size(), got.size());
    for (std::size_t r = 0; r < want.size(); ++r) expectClose(want[r], got[r], 1e-9, i + 2);
  }
}

TEST(LogLikelihood, AgreesWithFiftyDigitsButForItsOwnConventions) {
  const Csv table(SURVMETH_REFERENCE "/param/derivatives.csv");
  for (std::size_t i = 0; i < table.rows(); ++i) {
    const auto at = [&](const char* name) { return table.number(name, i); };
    const int law = static_cast<int>(at("distribution"));
    Model model(law,
                {{at("status"), at("time"), at("weight"), at("lower"), at("upper"), {at("x")}}});
    double want = at("value");
    // The Weibull law: Jacobian of events, no weight for left- and interval-censored rows.
    if (law == kWeibull && at("status") == kEvent) want -= at("weight") * at("time");
    if (law == kWeibull && at("status") >= kLeft) want /= at("weight");
    if (law == kLogNormal && at("status") == kLeft) want = -want;
    const double got = model.logLik({at("coefficient"), at("intercept"), at("sigma")});
    expectClose(want, got, 1e-13, i + 2);
  }
}

TEST(Derivatives, AnExponentialEventAtThePredictorHasNoSlope) {
  Model model(kExponential, {{kEvent, 2.0, 3.0}});
  EXPECT_EQ((std::vector<double>{0.0, -3.0}), model.derivatives({2.0}));
}

TEST(Derivatives, NothingIsCarriedFromRowToRow) {
  // Two rows at z = 0: event (0, -1) and right-censored (1, -1).
  Model model(kExponential, {{kEvent, 0.0}, {kRight, 0.0}, {4.0, 0.0, 9.0}, {kNaN, 0.0, 9.0}});
  EXPECT_EQ((std::vector<double>{1.0, -2.0}), model.derivatives({0.0}));
}

TEST(Derivatives, LeftAndIntervalCensoredWeibullRowsAreWeighted) {
  for (const double status : {kLeft, kInterval}) {
    Model one(kWeibull, {{status, 1.0, 1.0, 0.5, 2.0}});
    Model three(kWeibull, {{status, 1.0, 3.0, 0.5, 2.0}});
    const std::vector<double> unit = one.derivatives({0.75, 0.5});
    const std::vector<double> weighted = three.derivatives({0.75, 0.5});
    for (std::size_t r = 0; r < unit.size(); ++r) {
      EXPECT_NE(0.0, unit[r]);
      EXPECT_DOUBLE_EQ(3.0 * unit[r], weighted[r]);
    }
  }
}

TEST(Derivatives, TheLeftCensoredLogNormalTermHasItsTrueSign) {
  // At z = 0: d ln Phi / d eta = -phi(0) / (1/2) / sigma.
  Model model(kLogNormal, {{kLeft, 3.0, 2.0}});
  const double want = -2.0 * std::sqrt(2.0 / std::acos(-1.0)) / 0.5;
  EXPECT_NEAR(want, model.derivatives({3.0, 0.5})[0], 1e-14);
}

TEST(Derivatives, WithoutCovariatesThereAreInterceptAndScale) {
  Model exponential(kExponential, {{kEvent, 0.0}});
  EXPECT_EQ(2u, exponential.derivatives({0.0}).size());
  // Weibull event at z = 0, sigma = 1/2: -2 + 2, -2 - 0 + 0; -4, (1 - 1 - 0) 4, (1 + 0 - 0) 4.
  Model weibull(kWeibull, {{kEvent, 1.0}});
  EXPECT_EQ((std::vector<double>{0.0, -2.0, -4.0, 0.0, 0.0, 4.0}), weibull.derivatives({1.0, 0.5}));
}

TEST(Derivatives, BeyondTheLimitExponentialEventsKeepTheirLinearPart) {
  Model event(kExponential, {{kEvent, 700.0, 2.0, 0.0, 0.0, {3.0}}});
  EXPECT_EQ((std::vector<double>{-6.0, -2.0, 0.0, 0.0, 0.0, 0.0}), event.derivatives({0.0, 0.0}));
  Model right(kExponential, {{kRight, 700.0, 2.0, 0.0, 0.0, {3.0}}});
  EXPECT_EQ(std::vector<double>(6, 0.0), right.derivatives({0.0, 0.0}));
  Model inside(kExponential, {{kRight, 699.0, 2.0}});
  EXPECT_DOUBLE_EQ(2.0 * std::exp(699.0), inside.derivatives({0.0})[0]);
}

TEST(Derivatives, BeyondTheLimitNothingIsAddedToTheSecondDerivatives) {
  // An infinite covariate: 0 times infinity would not be a number.
  Model model(kExponential, {{kEvent, 1.0, 1.0, 0.0, 0.0, {kInf}}});
  EXPECT_EQ((std::vector<double>{-kInf, -1.0, 0.0, 0.0, 0.0, 0.0}), model.derivatives({-1.0, 0.0}));
}

TEST(Derivatives, BeyondTheLimitWeibullEventsKeepTheirLinearPart) {
  // z = 1400, sigma = 1/2: -2, -2 - 2800; 0, 4, (1 + 2800) 4.
  Model event(kWeibull, {{kEvent, 700.0}});
  EXPECT_EQ((std::vector<double>{-2.0, -2802.0, 0.0, 4.0, 4.0, 11204.0}),
            event.derivatives({0.0, 0.5}));
  Model right(kWeibull, {{kRight, 700.0}});
  EXPECT_EQ(std::vector<double>(6, 0.0), right.derivatives({0.0, 0.5}));
}

TEST(Derivatives, ARowWithoutATermIsNotReadAtAll) {
  Model model(kWeibull, {{kEvent, 1.0, 1.0, 0.0, 0.0, {0.0}},
                         {4.0, kNaN, kNaN, kNaN, kNaN, {kNaN}},
                         {kRight, 900.0, 1.0, 0.0, 0.0, {kInf}}});
  // The third row stands at z = -inf with a coefficient of 1 and beyond the limit with -1.
  EXPECT_EQ((std::vector<double>{0.0, 0.0, -2.0, 0.0, 0.0, 0.0, 0.0, -4.0, 0.0, 0.0, 0.0, 4.0}),
            model.derivatives({-1.0, 1.0, 0.5}));
}

TEST(Derivatives, CodesTwoAndThreeHaveNoGuard) {
  // Beyond the limit the survival is 0 and its hazard infinite: 0 times infinity.
  for (const int law : {kExponential, kWeibull}) {
    Model left(law, {{kLeft, 800.0}});
    EXPECT_TRUE(std::isnan(left.derivatives({0.0, 1.0})[0]));
    Model interval(law, {{kInterval, 0.0, 1.0, 0.0, 800.0}});
    EXPECT_TRUE(std::isnan(interval.derivatives({0.0, 1.0})[0]));
  }
}

TEST(Derivatives, AnotherLawHasNone) {
  Model model(4, {{kEvent, 1.0, 1.0, 0.0, 0.0, {2.0}}});
  EXPECT_EQ(std::vector<double>(6, 0.0), model.derivatives({0.0, 0.0}));
}

TEST(Derivatives, WithoutRowsTheyAreZero) {
  Model model(kWeibull, {{kEvent, 1.0}});
  model.n = 0;
  EXPECT_EQ(std::vector<double>(6, 0.0), model.derivatives({0.0, 1.0}));
}

TEST(Derivatives, TheGradientTakesTheShapeOfTheModel) {
  Model model(kWeibull, {{kEvent, 1.0}});
  Column theta({1.0, 0.5});
  matrix gradient(7, 3, 5);
  matrix hessian(3, 3, 5);
  ComputeDerivativesParam(&model.times, 1, 0, 2, &model.status, &model.bounds, &model.covariates,
                          &theta, &model.weights, kWeibull, &gradient, &hessian);
  EXPECT_EQ(2, gradient.rows());
  EXPECT_EQ(1, gradient.cols());
  EXPECT_EQ((std::vector<double>{0.0, -2.0}), elements(gradient));
  // A larger Hessian holds the model's in its corner, and zeros.
  EXPECT_EQ((std::vector<double>{-4.0, 0.0, 0.0, 0.0, 4.0, 0.0, 0.0, 0.0, 0.0}), elements(hessian));
}

TEST(Derivatives, WhatDoesNotFitIsDropped) {
  Model model(kWeibull, {{kEvent, 1.0, 1.0, 0.0, 0.0, {2.0}}});
  Column theta({0.0, 1.0, 0.5});
  matrix gradient(0, 0, 0);
  matrix hessian(0, 0, 0);
  ComputeDerivativesParam(&model.times, 1, 1, 2, &model.status, &model.bounds, &model.covariates,
                          &theta, &model.weights, kWeibull, &gradient, &hessian);
  EXPECT_EQ(3, gradient.count());
  EXPECT_EQ(0, hessian.count());
}

TEST(Derivatives, BothTrianglesAreEqualToTheBit) {
  std::vector<Observation> rows;
  for (int i = 0; i < 700; ++i) {
    rows.push_back({static_cast<double>(i % 4),
                    std::sin(i),
                    1.0 + i % 3,
                    std::sin(i) - 1.0,
                    std::sin(i) + 0.5,
                    {std::cos(i), std::cos(2.0 * i), std::cos(3.0 * i), std::cos(4.0 * i),
                     std::cos(5.0 * i)}});
  }
  for (const int law : {kExponential, kWeibull, kLogNormal}) {
    Model model(law, rows);
    const int m = model.m();
    const std::vector<double> all = model.derivatives({0.1, 0.2, -0.1, 0.3, 0.05, 0.5, 0.75});
    for (int r = 0; r < m; ++r) {
      for (int s = 0; s < r; ++s) EXPECT_EQ(all[m + r + s * m], all[m + s + r * m]);
    }
  }
}

// Element by element over the rows in their order: the sum does not depend on how rows are cut.
TEST(Derivatives, AreSummedInTheOrderOfTheRows) {
  std::vector<Observation> rows;
  for (int i = 0; i < 1500; ++i) {
    rows.push_back({i % 3 == 0 ? kRight : kEvent,
                    std::sin(i),
                    1.0,
                    0.0,
                    0.0,
                    {std::cos(i), std::exp(std::sin(3.0 * i))}});
  }
  const std::vector<double> theta = {0.25, -0.125, 0.5, 0.75};
  Model model(kWeibull, rows);
  const std::vector<double> all = model.derivatives(theta);
  std::vector<double> sums(all.size(), 0.0);
  for (const Observation& row : rows) {
    Model single(kWeibull, {row});
    const std::vector<double> part = single.derivatives(theta);
    for (std::size_t r = 0; r < sums.size(); ++r) sums[r] += part[r];
  }
  EXPECT_EQ(sums, all);
}

TEST(ValueAndDerivatives, AreTheSameBitsTogetherAndApart) {
  std::vector<Observation> rows;
  for (int i = 0; i < 1100; ++i) {
    rows.push_back({static_cast<double>(i % 5),
                    std::sin(i),
                    1.0 + i % 3,
                    std::sin(i) - 1.0,
                    std::sin(i) + 0.5,
                    {std::cos(i), std::cos(2.0 * i)}});
  }
  for (const int law : {kExponential, kWeibull, kLogNormal}) {
    Model model(law, rows);
    const std::vector<double> parameters = {0.1, 0.2, 0.5, 0.75};
    Column theta(parameters);
    matrix gradient(model.m(), 1, 5);
    matrix hessian(model.m(), model.m(), 5);
    double value = 5.0;
    ComputeLogLikeDerivativesParam(&model.times, model.n, model.p, model.k, &model.status,
                                   &model.bounds, &model.covariates, &theta, &model.weights, law,
                                   &value, &gradient, &hessian);
    EXPECT_EQ(model.logLik(parameters), value);
    std::vector<double> all = elements(gradient);
    for (const double element : elements(hessian)) all.push_back(element);
    EXPECT_EQ(model.derivatives(parameters), all);
  }
}

TEST(ModifyDerivatives, LeavesTheDiagonal) {
  Rows hessian({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, {7.0, 8.0, 9.0}});
  EXPECT_EQ(3, modifyDerivatives(&hessian, 3));
  EXPECT_EQ((std::vector<double>{1.0, 0.0, 0.0, 0.0, 5.0, 0.0, 0.0, 0.0, 9.0}), elements(hessian));
}

TEST(ModifyDerivatives, LeavesASingleElementAndWhatLiesOutsideTheModel) {
  Column one({3.0});
  EXPECT_EQ(1, modifyDerivatives(&one, 1));
  EXPECT_EQ((std::vector<double>{3.0}), elements(one));
  Rows hessian({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, {7.0, 8.0, 9.0}});
  EXPECT_EQ(0, modifyDerivatives(&hessian, 0));
  EXPECT_EQ(-4, modifyDerivatives(&hessian, -4));
  EXPECT_EQ((std::vector<double>{1.0, 4.0, 7.0, 2.0, 5.0, 8.0, 3.0, 6.0, 9.0}), elements(hessian));
  EXPECT_EQ(2, modifyDerivatives(&hessian, 2));
  EXPECT_EQ((std::vector<double>{1.0, 0.0, 7.0, 0.0, 5.0, 8.0, 3.0, 6.0, 9.0}), elements(hessian));
}

TEST(ModifyDerivatives, EndsWithTheMatrixHoweverLargeTheCount) {
  Rows hessian({{1.0, 2.0}, {3.0, 4.0}});
  const int most = std::numeric_limits<int>::max();
  EXPECT_EQ(most, modifyDerivatives(&hessian, most));
  matrix none(0, 0, 0);
  EXPECT_EQ(most, modifyDerivatives(&none, most));
}

}  // namespace
}  // namespace survmeth::test
