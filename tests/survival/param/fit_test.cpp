// OptimizeParamModel: steps, halving, ends.
#include <gtest/gtest.h>

#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

const double kE = std::exp(1.0);

// One event at ln 2, starting at 0: hazard 2, slope 1, curvature -2, so a step to 1/2.
const std::vector<Observation> kOneEvent = {{kEvent, std::log(2.0)}};

TEST(Fit, OneIterationIsOneNewtonStep) {
  Model model(kExponential, kOneEvent);
  Fit fit(model);
  fit.startAt({0.0});
  fit.iterations = 1;
  EXPECT_EQ(0, fit.run(model));
  EXPECT_EQ(1, fit.iterations);
  EXPECT_DOUBLE_EQ(0.5, fit.estimates()[0]);
  EXPECT_DOUBLE_EQ(std::log(2.0) - 2.0, fit.logLik0);
  EXPECT_EQ(fit.logLik0, fit.logLik);
  EXPECT_DOUBLE_EQ(1.0, fit.gradient0.vbget(1, 1));
  EXPECT_DOUBLE_EQ(-2.0, fit.hessian0.vbget(1, 1));
  EXPECT_DOUBLE_EQ(-0.5, fit.covariance.vbget(1, 1));
  EXPECT_DOUBLE_EQ(2.0 / std::sqrt(kE) - 1.0, fit.gradient.vbget(1, 1));
  EXPECT_DOUBLE_EQ(-2.0 / std::sqrt(kE), fit.hessian.vbget(1, 1));
}

TEST(Fit, TheLogLikelihoodIsThatOfThePointTheLastStepLeft) {
  Model model(kExponential, kOneEvent);
  Fit one(model);
  one.startAt({0.0});
  one.iterations = 1;
  one.run(model);
  Fit two(model);
  two.startAt({0.0});
  two.iterations = 2;
  two.run(model);
  EXPECT_EQ(model.logLik(one.estimates()), two.logLik);
  EXPECT_NE(model.logLik(two.estimates()), two.logLik);
  // And the covariance is the inverse of the second derivatives there.
  EXPECT_DOUBLE_EQ(-std::sqrt(kE) / 2.0, two.covariance.vbget(1, 1));
}

TEST(Fit, ConvergesOnTheMaximum) {
  // Events only: e^intercept is the mean of e^y, here (1 + 2 + 6) / 3.
  Model model(kExponential, {{kEvent, 0.0}, {kEvent, std::log(2.0)}, {kEvent, std::log(6.0)}});
  Fit fit(model);
  EXPECT_EQ(0, fit.run(model));
  EXPECT_NEAR(std::log(3.0), fit.estimates()[0], 1e-10);
  EXPECT_LT(fit.iterations, 10);
}

TEST(Fit, AnOvershootingStepIsHalved) {
  // y = 20 from 23: the Newton step is e^3 - 1 = 19.09 down; its eighth is the first that gains.
  Model model(kExponential, {{kEvent, 20.0}});
  Fit fit(model);
  fit.startAt({23.0});
  fit.iterations = 1;
  EXPECT_EQ(0, fit.run(model));
  EXPECT_NEAR(23.0 - (std::exp(3.0) - 1.0) / 8.0, fit.estimates()[0], 1e-13);
}

TEST(Fit, TheLastParameterIsKeptAboveZeroWhateverTheLaw) {
  // y = 0 from 3: the step would end at -16; the exponential intercept is held at 1e-12.
  Model model(kExponential, {{kEvent, 0.0}});
  Fit fit(model);
  fit.startAt({3.0});
  fit.iterations = 1;
  EXPECT_EQ(0, fit.run(model));
  EXPECT_EQ(1e-12, fit.estimates()[0]);
}

TEST(Fit, AFixedExponentialInterceptBelowZeroIsLiftedToo) {
  Model model(kExponential,
              {{kEvent, 0.5, 1.0, 0.0, 0.0, {1.0}}, {kEvent, 1.5, 1.0, 0.0, 0.0, {2.0}}});
  Fit fit(model);
  fit.startAt({0.0, 0.0});
  fit.fixIntercept = kTrue;
  fit.interceptValue = -1.0;
  fit.iterations = 1;
  EXPECT_EQ(0, fit.run(model));
  EXPECT_EQ(1e-12, fit.estimates()[1]);
}

TEST(Fit, AFixedInterceptTakesTheFullInverseAndDropsItsEntry) {
  Model model(kWeibull, {{kEvent, 0.5}, {kEvent, 1.0}, {kEvent, 2.0}, {kRight, 1.5}});
  Fit fit(model);
  fit.startAt({0.0, 0.5});
  fit.fixIntercept = kTrue;
  fit.interceptValue = 1.5;
  fit.iterations = 1;
  ASSERT_EQ(0, fit.run(model));
  const std::vector<double> d = model.derivatives({1.5, 0.5});
  const double determinant = d[2] * d[5] - d[3] * d[4];
  const double step = (-d[3] * d[0] + d[2] * d[1]) / determinant;
  EXPECT_EQ(1.5, fit.estimates()[0]);
  EXPECT_NEAR(0.5 - step, fit.estimates()[1], 1e-13);
  // The step of the scale alone would be another one.
  EXPECT_GT(std::fabs(step - d[1] / d[5]), 1e-3);
}

TEST(Fit, AFixedInterceptStaysToTheEnd) {
  Model model(kWeibull, {{kEvent, 0.5}, {kEvent, 1.0}, {kEvent, 2.0}, {kRight, 1.5}});
  Fit fit(model);
  fit.fixIntercept = kTrue;
  fit.interceptValue = 1.25;
  EXPECT_EQ(0, fit.run(model));
  EXPECT_EQ(1.25, fit.estimates()[0]);
}

// A left-censored log-normal row: every step up the true likelihood lowers the reported one.
const std::vector<Observation> kAgainst = {{kLeft, 0.5}, {kLeft, 1.0}, {kRight, 0.25, 0.5}};

// The Newton point of the two parameters from derivatives d.
std::vector<double> newtonPoint(const std::vector<double>& from, const std::vector<double>& d) {
  const double determinant = d[2] * d[5] - d[3] * d[4];
  return {from[0] - (d[5] * d[0] - d[4] * d[1]) / determinant,
          from[1] - (-d[3] * d[0] + d[2] * d[1]) / determinant};
}

TEST(Fit, ARefusedStepLeavesTheEstimatesAndADiagonal) {
  Model model(kLogNormal, kAgainst);
  const std::vector<double> start = {0.75, 1.0};
  Fit fit(model);
  fit.startAt(start);
  fit.iterations = 1;
  EXPECT_EQ(0, fit.run(model));
  EXPECT_EQ(start, fit.estimates());
  const std::vector<double> d = model.derivatives(start);
  EXPECT_EQ((std::vector<double>{d[0], d[1]}), elements(fit.gradient));
  EXPECT_EQ((std::vector<double>{d[2], 0.0, 0.0, d[5]}), elements(fit.hessian));
  EXPECT_EQ((std::vector<double>{d[2], d[3], d[4], d[5]}), elements(fit.hessian0));
}

TEST(Fit, AfterARefusalTheLastParameterStartsFromTheTenthHalving) {
  Model model(kLogNormal, kAgainst);
  const std::vector<double> start = {0.75, 1.0};
  const std::vector<double> newton = newtonPoint(start, model.derivatives(start));
  ASSERT_GT(newton[1], 0.0);
  Fit fit(model);
  fit.startAt(start);
  fit.tolerance = 0.0;
  fit.iterations = 2;
  EXPECT_EQ(0, fit.run(model));
  const double moved = 1.0 + (newton[1] - 1.0) / 1024.0;
  EXPECT_NEAR(model.logLik({0.75, moved}), fit.logLik, 1e-15);
  EXPECT_GT(std::fabs(model.logLik(start) - fit.logLik), 1e-6);
}

TEST(Fit, TheTenthHalvingIsNotEvaluated) {
  Model model(kLogNormal, kAgainst);
  const std::vector<double> start = {0.75, 1.0};
  const std::vector<double> newton = newtonPoint(start, model.derivatives(start));
  const auto change = [&](double part) {
    return std::fabs(model.logLik(start) -
                     model.logLik({start[0] + part * (newton[0] - start[0]),
                                   start[1] + part * (newton[1] - start[1])}));
  };
  ASSERT_GT(change(1.0 / 512.0), 1.5 * change(1.0 / 1024.0));
  Fit fit(model);
  fit.startAt(start);
  // The change of the ninth halving counts: it is above this tolerance, that of the tenth below.
  fit.tolerance = 0.5 * (change(1.0 / 512.0) + change(1.0 / 1024.0));
  fit.iterations = 50;
  fit.run(model);
  EXPECT_GT(fit.iterations, 1);
  Fit wider(model);
  wider.startAt(start);
  wider.tolerance = 1.01 * change(1.0 / 512.0);
  wider.iterations = 50;
  EXPECT_EQ(0, wider.run(model));
  EXPECT_EQ(1, wider.iterations);
}

TEST(Fit, WithoutALikelihoodItFailsAndKeepsTheCount) {
  Model model(4, {{kEvent, 1.0}, {kEvent, 3.0}});
  for (const int limit : {1, 7, 0, -3}) {
    Fit fit(model);
    fit.iterations = limit;
    EXPECT_EQ(-2, fit.run(model));
    EXPECT_EQ(limit, fit.iterations);
    EXPECT_EQ((std::vector<double>{2.0}), fit.estimates());
    EXPECT_EQ(0.0, fit.logLik);
    EXPECT_EQ(0.0, fit.logLik0);
    EXPECT_EQ((std::vector<double>{0.0}), elements(fit.covariance));
  }
}

TEST(Fit, WithoutRowsItFails) {
  Model model(kWeibull, {{kEvent, 1.0}});
  for (const int n : {0, -1}) {
    model.n = n;
    Fit fit(model);
    EXPECT_EQ(-2, fit.run(model));
  }
}

TEST(Fit, WithoutALimitItEndsWhereItStandsStill) {
  Model model(kExponential, {{kEvent, 0.0}, {kEvent, 1.0}});
  for (const int limit : {0, -1, std::numeric_limits<int>::min()}) {
    Fit fit(model);
    fit.iterations = limit;
    fit.tolerance = -1.0;
    EXPECT_EQ(0, fit.run(model));
    // Newton's steps double the digits: a handful, then none moves anything.
    EXPECT_GT(fit.iterations, 3);
    EXPECT_LT(fit.iterations, 10);
    EXPECT_NEAR(std::log((1.0 + kE) / 2.0), fit.estimates()[0], 1e-12);
  }
  Fit converging(model);
  converging.iterations = 0;
  EXPECT_EQ(0, converging.run(model));
  EXPECT_LT(converging.iterations, 10);
}

// Two events that three parameters meet exactly, and a censored row whose term creeps to 0.
TEST(Fit, WithoutALimitACreepingFitTakesTheThousandsOfStepsThatItNeeds) {
  Model model(kExponential, {{kEvent, -0.6, 1, 0, 0, {-0.6, 2.0}},
                             {kRight, -1.6, 1, 0, 0, {2.0, 0.4}},
                             {kEvent, 1.3, 1, 0, 0, {1.0, 1.0}}});
  Fit far(model);
  far.iterations = 99999;
  ASSERT_EQ(0, far.run(model));
  EXPECT_GT(far.iterations, 10000);
  EXPECT_LT(far.iterations, 99999);
  Fit fit(model);
  fit.iterations = 0;
  EXPECT_EQ(0, fit.run(model));
  EXPECT_EQ(far.iterations, fit.iterations);
  EXPECT_EQ(far.estimates(), fit.estimates());
  EXPECT_EQ(far.logLik, fit.logLik);
}

TEST(Fit, ALikelihoodThatIsNotANumberEnds) {
  for (const int law : {kExponential, kWeibull, kLogNormal}) {
    Model model(law, {{kEvent, kNaN}, {kEvent, 1.0}, {kRight, 2.0}});
    for (const int limit : {0, 1, 20, std::numeric_limits<int>::max()}) {
      Fit fit(model);
      fit.iterations = limit;
      EXPECT_EQ(-2, fit.run(model));
      EXPECT_EQ(limit, fit.iterations);
    }
  }
}

TEST(Fit, StepsThatChangeNothingAreNotRepeatedUpToTheLimit) {
  Model model(kExponential, {{kEvent, 0.0}, {kEvent, 1.0}});
  Fit fit(model);
  fit.iterations = std::numeric_limits<int>::max();
  fit.tolerance = 0.0;
  EXPECT_EQ(0, fit.run(model));
  EXPECT_EQ(std::numeric_limits<int>::max(), fit.iterations);
}

TEST(Fit, OneColumnTakesTheFirstOfTheCovariance) {
  Model model(kWeibull, {{kEvent, 0.5}, {kEvent, 1.0}, {kEvent, 2.0}, {kRight, 1.5}});
  Fit whole(model);
  ASSERT_EQ(0, whole.run(model));
  Fit fit(model);
  matrix column(2, 1, 5);
  OptimizeParamModel(&model.times, model.n, 0, 2, &model.status, &model.bounds, &model.covariates,
                     &model.weights, &fit.iterations, fit.tolerance, kWeibull, 0,
                     &fit.initialValues, 0, 0.0, &fit.logLik, &fit.logLik0, &fit.gradient,
                     &fit.hessian, &column, &fit.gradient0, &fit.hessian0, &fit.parameters);
  EXPECT_EQ(whole.estimates(), fit.estimates());
  EXPECT_EQ((std::vector<double>{whole.covariance.vbget(1, 1), whole.covariance.vbget(2, 1)}),
            elements(column));
}

// Against R's survreg, where the law is the textbook's.
class AgainstSurvreg : public testing::Test {
 protected:
  static Csv reference() { return Csv(SURVMETH_REFERENCE "/param/survreg.csv"); }

  static void expectFit(int law, const std::vector<Observation>& rows, double jacobian) {
    const Csv table = reference();
    const auto at = [&](const char* name) {
      return table.number(name, static_cast<std::size_t>(law) - 1);
    };
    Model model(law, rows);
    ASSERT_EQ(at("n"), model.n);
    Fit fit(model);
    ASSERT_EQ(0, fit.run(model));
    const std::vector<double> theta = fit.estimates();
    // A step that gains less than the last digits of the log-likelihood is refused: how near the
    // maximum the fit ends depends on the step before.
    const double tolerance = law == kExponential ? 1e-6 : 1e-8;
    EXPECT_NEAR(at("karno"), theta[0], tolerance);
    EXPECT_NEAR(at("age"), theta[1], tolerance);
    EXPECT_NEAR(at("intercept"), theta[2], tolerance);
    EXPECT_NEAR(at("loglik"), fit.logLik + jacobian, 1e-8 * std::fabs(at("loglik")));
    const auto error = [&](int r) { return std::sqrt(-fit.covariance.vbget(r, r)); };
    EXPECT_NEAR(at("se.karno"), error(1), 1e-6 * at("se.karno"));
    EXPECT_NEAR(at("se.age"), error(2), 1e-6 * at("se.age"));
    EXPECT_NEAR(at("se.intercept"), error(3), 1e-6 * at("se.intercept"));
    if (law == kExponential) return;
    EXPECT_NEAR(at("scale"), theta[3], tolerance);
    EXPECT_NEAR(at("se.scale"), error(4), 1e-6 * at("se.scale"));
  }

  // What the logarithm of the events' times takes from a likelihood without a Jacobian.
  static double jacobianOf(const std::vector<Observation>& rows) {
    double sum = 0.0;
    for (const Observation& row : rows) {
      if (row.status == kEvent) sum -= row.time;
    }
    return sum;
  }
};

TEST_F(AgainstSurvreg, TheRightCensoredWeibullFitIsTheTextbooks) {
  expectFit(kWeibull, veteran(), 0.0);
}

TEST_F(AgainstSurvreg, TheRightCensoredLogNormalFitIsTheTextbooks) {
  expectFit(kLogNormal, veteran(), jacobianOf(veteran()));
}

TEST_F(AgainstSurvreg, TheExponentialFitOfEventsIsTheTextbooks) {
  std::vector<Observation> events;
  for (const Observation& row : veteran()) {
    if (row.status == kEvent) events.push_back(row);
  }
  expectFit(kExponential, events, jacobianOf(events));
}

TEST_F(AgainstSurvreg, BothTablesOfTheVeteranDataAgree) {
  const Csv own = reference();
  const Csv shared(SURVMETH_REFERENCE "/survreg_veteran.csv");
  for (const std::size_t law : {1, 2}) {
    for (const char* name : {"intercept", "karno", "age", "scale"}) {
      const double expected = own.number(name, law);
      EXPECT_NEAR(shared.number(name, law), expected, 1e-8 * std::fabs(expected));
    }
    EXPECT_NEAR(shared.number("loglik.time.scale", law), own.number("loglik", law), 1e-9);
  }
}

}  // namespace
}  // namespace survmeth::test
