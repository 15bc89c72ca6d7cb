// Whole Cox regressions through the flat arrays.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "tests/survival/cox/cox_case.h"

namespace {

using survmeth::test::CoxArrays;
using survmeth::test::Csv;
using survmeth::test::Doubles;
using survmeth::test::Ints;
using survmeth::test::Regression;

CoxArrays threeEvents() { return CoxArrays({3, 1, 2}, {1, 1, 1}, {{1, 1, 0}}); }

void expectClose(double got, double expected, const std::string& what) {
  EXPECT_NEAR(got, expected, 1e-8 * std::fabs(expected)) << what;
}

// Another program's fit of the same model.
void expectReference(const Regression& r, const std::string& name) {
  const std::string base = SURVMETH_REFERENCE "/cox_" + name;
  const Csv coefficients(base + "_coefficients.csv");
  const char* columns[] = {"coef", "se", "wald.chisq", "", "hazard.ratio", "lower95", "upper95"};
  for (int i = 1; i <= r.finalCovariates; ++i) {
    const std::string term = coefficients.text("term", static_cast<std::size_t>(i - 1));
    for (int column = 1; column <= 7; ++column) {
      if (column == 4) continue;
      expectClose(r.coefficient(i, column),
                  coefficients.number(columns[column - 1], static_cast<std::size_t>(i - 1)),
                  term + " " + columns[column - 1]);
    }
    EXPECT_DOUBLE_EQ(r.coefficient(i, 4), pValChiSq(r.coefficient(i, 3), 1));
  }

  const Csv fit(base + "_fit.csv");
  const auto value = [&](const char* key) { return fit.number(key, 0); };
  expectClose(r.criterion(3, 1), -2 * value("loglik.null"), "null log-likelihood");
  expectClose(r.criterion(3, 2), -2 * value("loglik"), "log-likelihood");
  expectClose(r.test(1, 2), value("lr"), "likelihood ratio");
  expectClose(r.test(2, 2), value("score"), "score");
  expectClose(r.test(3, 2), value("wald"), "Wald");

  // Hazard: of the reference at every time of the stratum, one file after the other.
  const Csv hazard(base + "_baseline_hazard.csv");
  const Doubles times = hazard.numbers("time");
  const Doubles cumulated = hazard.numbers("hazard");
  std::size_t line = 0;
  for (int s = 1; s <= r.a.S; ++s) {
    for (int k = 1; k <= r.a.distinctTimes[static_cast<std::size_t>(s - 1)]; ++k, ++line) {
      const int row = r.a.at(r.a.groupStart, s, k);
      ASSERT_EQ(r.a.time[static_cast<std::size_t>(row - 1)], times[line]);
      EXPECT_NEAR(-std::log(r.survivalAt(r.baseline, s, k)), cumulated[line],
                  1e-8 * cumulated[line]);
    }
  }
  EXPECT_EQ(line, times.size());

  const Csv residuals(base + "_residuals.csv");
  const Doubles martingale = residuals.numbers("martingale");
  const Doubles deviance = residuals.numbers("deviance");
  for (int row = 1; row <= r.a.n; ++row) {
    const auto original = static_cast<std::size_t>(r.a.extra[static_cast<std::size_t>(row - 1)]);
    EXPECT_NEAR(r.residual(row, 3), martingale[original], 1e-8) << row;
    if (r.residual(row, 4) == kMissing) {
      EXPECT_EQ(martingale[original], 0.0);
    } else {
      EXPECT_NEAR(r.residual(row, 4), deviance[original], 1e-8) << row;
    }
  }
}

TEST(CoxRegression, LungCancerAgreesWithTheReference) {
  for (const int ties : {0, 1}) {
    Regression::Options options;
    options.ties = ties;
    const Regression r(survmeth::test::lungCancer(), options);
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.finalCovariates, 3);
    EXPECT_EQ(r.criterion(1, 1), 164.0);
    expectReference(r, "lung");
  }
}

TEST(CoxRegression, StratifiedVeteransAgreeWithTheReference) {
  const Regression r(survmeth::test::veterans(), {});
  EXPECT_EQ(r.code, 0);
  expectReference(r, "veteran_by_celltype");
  // The first stratum's censored rows only: 137 less 4 of the squamous type, not 128 events.
  EXPECT_EQ(r.criterion(1, 1), 133.0);
}

TEST(CoxRegression, ThreeEventsWorkedByHand) {
  const Regression r(threeEvents(), {});
  const double beta = -0.5 * std::log(2.0);
  EXPECT_NEAR(r.beta[0], beta, 1e-12);
  // With e = 1/sqrt 2 the curvature is minus twice (sqrt 2 - 1) (2 - sqrt 2).
  const double h = -2 * (std::sqrt(2.0) - 1) * (2 - std::sqrt(2.0));
  EXPECT_NEAR(r.coefficient(1, 2), std::sqrt(-1 / h), 1e-6);  // one step old
  EXPECT_NEAR(r.coefficient(1, 5), 1 / std::sqrt(2.0), 1e-12);
  EXPECT_NEAR(r.criterion(3, 1), 2 * std::log(6.0), 1e-12);
  EXPECT_NEAR(r.criterion(3, 2), 4 * std::log(1 + std::sqrt(2.0)), 1e-12);
  EXPECT_NEAR(r.criterion(4, 2), 2 + 4 * std::log(1 + std::sqrt(2.0)), 1e-12);
  EXPECT_NEAR(r.criterion(5, 2), std::log(3.0) + 4 * std::log(1 + std::sqrt(2.0)), 1e-12);
  EXPECT_EQ(r.criterion(6, 2), r.iterations);
  EXPECT_NEAR(r.test(2, 2), 1.0 / 17, 1e-14);  // (1/6)^2 / (17/36)
  EXPECT_NEAR(r.test(3, 2), -h * beta * beta, 1e-10);
  EXPECT_NEAR(r.test(1, 2), 2 * std::log(6.0) - 4 * std::log(1 + std::sqrt(2.0)), 1e-12);
}

TEST(CoxRegression, CopiesBackOutputsOnly) {
  const Regression r(survmeth::test::lungCancer(), {20, 1e-9, 0, 1, 0, 0.05, 0.1, 0.05, -1});
  EXPECT_EQ(r.finalCovariates, 2);  // age leaves
  EXPECT_EQ(r.a.covariates, r.covariatesBefore);
}

TEST(CoxRegression, AFlagThatIsNotMinusOneZeroesTheFirstElements) {
  for (const short flag : {short{0}, short{1}, short{2}}) {
    Regression::Options options;
    options.survival = flag;
    const Regression r(threeEvents(), options);
    EXPECT_EQ(r.baseline, (Doubles{0, 3, 3}));
    EXPECT_EQ(r.mean, (Doubles{0, 3, 3}));
    EXPECT_EQ(r.residuals[0], 0.0);
    for (std::size_t i = 1; i < r.residuals.size(); ++i) EXPECT_EQ(r.residuals[i], 3.0);
    EXPECT_NEAR(r.beta[0], -0.5 * std::log(2.0), 1e-12);
  }
}

TEST(CoxRegression, ColumnsEightAndNineOfTheTableStay) {
  const Regression r(threeEvents(), {});
  EXPECT_EQ(r.coefficient(1, 8), 3.0);
  EXPECT_EQ(r.coefficient(1, 9), 3.0);
}

TEST(CoxRegression, WithoutSelectionItsOutputsStay) {
  const Regression r(threeEvents(), {});
  EXPECT_EQ(r.history, (Doubles{3, 3, 3}));
  EXPECT_EQ(r.order, (Ints{3}));
  EXPECT_EQ(r.steps, 77);
}

TEST(CoxRegression, AnUnknownMethodFitsNothing) {
  for (const int method : {2, -2, 100}) {
    Regression::Options options;
    options.method = method;
    const Regression r(threeEvents(), options, 0.5);
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.finalCovariates, 1);
    EXPECT_EQ(r.iterations, options.limit);
    EXPECT_EQ(r.criterion(6, 2), options.limit);
    EXPECT_EQ(r.criterion(3, 2), 0.0);
    EXPECT_EQ(r.criterion(4, 2), 2.0);
    EXPECT_EQ(r.coefficient(1, 1), 0.5);
    for (int column = 2; column <= 7; ++column) EXPECT_EQ(r.coefficient(1, column), kMissing);
    for (int test = 1; test <= 3; ++test) {
      EXPECT_EQ(r.test(test, 2), 0.0);
      EXPECT_EQ(r.test(test, 3), 1.0);
    }
    // Baseline and residuals are those of the caller's coefficient.
    EXPECT_NEAR(r.baseline[0], std::exp(-1 / (2 * std::exp(0.5) + 1)), 1e-14);
  }
}

TEST(CoxRegression, ForwardSelectionDescribesTheChosenModel) {
  Regression::Options options;
  options.method = 0;
  options.entry = 0.05;
  const Regression r(survmeth::test::lungCancer(), options);
  EXPECT_EQ(r.finalCovariates, 2);
  EXPECT_EQ(r.order, (Ints{0, 2, 1}));
  EXPECT_EQ(r.steps, 3);
  EXPECT_EQ(r.criterion(2, 2), 2.0);
  EXPECT_EQ(r.test(1, 1), 2.0);
  // Entries past the model: the coefficients keep the caller's, the table its cells.
  EXPECT_EQ(r.beta[2], 3.0);
  EXPECT_EQ(r.coefficient(3, 1), 3.0);
  // The residual columns close up: 2 x 2 + 4 of 10.
  EXPECT_NE(r.residual(1, 8), 3.0);
  EXPECT_EQ(r.residual(1, 9), 3.0);
  EXPECT_EQ(r.residual(1, 10), 3.0);

  const CoxArrays lung = survmeth::test::lungCancer();
  const auto column = [&](int j) {
    return Doubles(lung.covariates.begin() + (j - 1) * lung.n,
                   lung.covariates.begin() + j * lung.n);
  };
  const Regression chosen(CoxArrays(lung.time, lung.status, {column(2), column(3)}), {});
  for (int i = 1; i <= 2; ++i) {
    for (int j = 1; j <= 7; ++j) EXPECT_EQ(r.coefficient(i, j), chosen.coefficient(i, j));
  }
  EXPECT_EQ(r.tests, chosen.tests);
  EXPECT_EQ(r.baseline, chosen.baseline);
  EXPECT_EQ(r.mean, chosen.mean);
}

TEST(CoxRegression, BackwardSelectionDescribesTheChosenModel) {
  Regression::Options options;
  options.method = 1;
  const Regression forward(survmeth::test::lungCancer(), {50, 1e-12, 0, 0});
  const Regression r(survmeth::test::lungCancer(), options);
  EXPECT_EQ(r.finalCovariates, 2);
  EXPECT_EQ(r.order, (Ints{1, 0, 0}));
  EXPECT_EQ(r.steps, 2);
  EXPECT_EQ(r.step(1, 1), 3.0);
  EXPECT_NEAR(r.step(2, 1), 1.4196156235655, 1e-8);  // age in the model of all three
  EXPECT_EQ(r.step(1, 2), 2.0);
  EXPECT_EQ(r.step(2, 2), 3.0);
  EXPECT_EQ(r.tests, forward.tests);
  EXPECT_EQ(r.beta[2], 3.0);
}

TEST(CoxRegression, ASingularModelReturnsZeroWithMarkers) {
  const Regression r(CoxArrays({1, 2, 3}, {1, 1, 1}, {{1, 0, 1}, {1, 0, 1}}), {});
  EXPECT_EQ(r.code, 0);
  for (int i = 1; i <= 2; ++i) {
    EXPECT_EQ(r.coefficient(i, 1), 0.0);
    for (int column = 2; column <= 7; ++column) EXPECT_EQ(r.coefficient(i, column), kMissing);
  }
  EXPECT_EQ(r.test(1, 2), 0.0);
  EXPECT_EQ(r.test(1, 3), 1.0);
}

TEST(CoxRegression, WithoutCovariatesTheTablesHaveOneRowLeftAlone) {
  const Regression r(CoxArrays({1, 2, 3}, {1, 1, 1}, {}), {});
  EXPECT_EQ(r.finalCovariates, 0);
  EXPECT_EQ(r.coefficients, Doubles(9, 3.0));
  EXPECT_NEAR(r.criterion(3, 2), 2 * std::log(6.0), 1e-14);
  EXPECT_NEAR(r.survivalAt(r.baseline, 1, 3), std::exp(-11.0 / 6), 1e-14);
  EXPECT_NEAR(r.residual(1, 3), 2.0 / 3, 1e-14);
}

TEST(CoxRegression, LimitsOfNothingAndOfThree) {
  for (const int limit : {1, 2, 3}) {
    Regression::Options options;
    options.limit = limit;
    options.tolerance = 0.0;
    EXPECT_EQ(Regression(survmeth::test::lungCancer(), options).iterations, limit);
  }
  Regression::Options options;
  options.limit = 0;
  options.tolerance = 1e-9;
  const Regression r(survmeth::test::lungCancer(), options);
  EXPECT_LT(r.iterations, 10);
  expectReference(r, "lung");
}

TEST(CoxRegression, IsTheSameInAnyRowOrderWithoutTies) {
  Doubles time, status, x, y;
  for (int i = 0; i < 40; ++i) {
    time.push_back(i * 7 % 40);
    status.push_back(i % 4 != 1);
    x.push_back(std::sin(i));
    y.push_back(std::cos(3.0 * i));
  }
  const Regression a(CoxArrays(time, status, {x, y}), {});
  for (Doubles* column : {&time, &status, &x, &y}) {
    std::rotate(column->begin(), column->begin() + 13, column->end());
  }
  const Regression b(CoxArrays(time, status, {x, y}), {});
  EXPECT_EQ(a.coefficients, b.coefficients);
  EXPECT_EQ(a.baseline, b.baseline);
  EXPECT_EQ(a.residuals, b.residuals);
}

TEST(CoxRegression, StrataOfOneModelAddTheLogLikelihoodsOfTheirFits) {
  // With no effect to estimate the stratified likelihood is the sum of the strata's.
  const Regression both(CoxArrays({1, 2, 3, 1, 2}, {1, 1, 1, 1, 0}, {}, {1, 1, 1, 2, 2}, {3, 2}),
                        {});
  EXPECT_NEAR(both.criterion(3, 1), 2 * std::log(6.0) + 2 * std::log(2.0), 1e-13);
}

TEST(CoxRegression, NumbersThatAreNotOnesEndNormally) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double odd : {nan, inf, -inf, 1e308, -1e308}) {
    for (const int method : {-1, 0, 1}) {
      for (const int ties : {0, 1, 2}) {
        Regression::Options options;
        options.method = method;
        options.ties = ties;
        options.limit = 25;
        EXPECT_EQ(Regression(CoxArrays({1, 2, 3, 4}, {1, 1, 0, 1}, {{odd, 1, 0, 2}, {0, 1, 1, 0}}),
                             options)
                      .code,
                  0);
      }
    }
  }
  Regression::Options options;
  options.tolerance = nan;
  options.alpha = nan;
  options.entry = nan;
  options.removal = nan;
  options.limit = 5;
  const Regression r(threeEvents(), options);
  EXPECT_EQ(r.iterations, 5);
  EXPECT_TRUE(std::isnan(r.coefficient(1, 6)));
}

TEST(CoxRegression, CountsOfNothingEndNormally) {
  // No rows, no strata, no groups: every array still has an element.
  Doubles one(12, 0.0);
  double cells[16][64] = {};
  int counts[8][8] = {};
  for (const int none : {0, -1, -2147483647}) {
    int q = 7, iterations = 3, steps = 7;
    EXPECT_EQ(RunCoxReg(cells[0], none, none, &q, cells[1], 0, cells[2], 0, cells[3], none,
                        &iterations, 1e-9, 0, counts[0], counts[1], counts[2], counts[3], counts[4],
                        -1, 0, 0.05, 0.1, 0.05, none, -1, 0, 0, 0, cells[4], cells[5], cells[6],
                        cells[7], cells[8], cells[9], cells[10], cells[11], &steps, counts[5]),
              0);
    EXPECT_EQ(q, none);
  }
}

}  // namespace
