// The worked example of docs/statistics/cox.md: every number of the page from the data.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/page.h"
#include "tests/survival/cox/cox_case.h"

namespace {

using survmeth::test::lungCancer;
using survmeth::test::Page;
using survmeth::test::Regression;

const Page& page() {
  static const Page cox("cox");
  return cox;
}

TEST(CoxExample, CoefficientsOfThePage) {
  const Regression r(lungCancer(), {});
  const char* names[] = {"age", "male", "score"};
  for (int i = 1; i <= 3; ++i) {
    page().says("| %s | %.5f | %.5f | %.3f | %s | %.3f | %.3f to %.3f |", names[i - 1],
                r.coefficient(i, 1), r.coefficient(i, 2), r.coefficient(i, 3),
                survmeth::test::pText(r.coefficient(i, 4)).c_str(), r.coefficient(i, 5),
                r.coefficient(i, 6), r.coefficient(i, 7));
  }
  page().says(
      "the hazard of men is %.2f times that of women; each step of the score multiplies it "
      "by %.2f.",
      r.coefficient(2, 5), r.coefficient(3, 5));
}

TEST(CoxExample, CriteriaAndTestsOfThePage) {
  const Regression r(lungCancer(), {});
  page().says("the %d patients with a performance score (%.0f deaths)", r.a.n, r.criterion(1, 2));
  page().says("-2 log-likelihood %.3f without covariates, %.3f with them; AIC %.3f; SBC %.3f",
              r.criterion(3, 1), r.criterion(3, 2), r.criterion(4, 2), r.criterion(5, 2));
  page().says(
      "Likelihood ratio %.3f, score %.3f, Wald %.3f, each on %.0f degrees of freedom "
      "(p < 0.0001)",
      r.test(1, 2), r.test(2, 2), r.test(3, 2), r.test(1, 1));
  for (const int test : {1, 2, 3}) EXPECT_LT(r.test(test, 3), 0.0001);
}

TEST(CoxExample, SurvivalOfThePage) {
  const Regression r(lungCancer(), {});
  int last = 0;
  double when = 0.0;
  for (int k = 1; k <= r.a.distinctTimes[0]; ++k) {
    const double time = r.a.time[static_cast<std::size_t>(r.a.at(r.a.groupStart, 1, k) - 1)];
    if (time > 365.0) break;
    last = k;
    when = time;
  }
  const auto mean = [&](int j) {
    double sum = 0.0;
    for (int i = 0; i < r.a.n; ++i) {
      sum += r.a.covariates[static_cast<std::size_t>((j - 1) * r.a.n + i)];
    }
    return sum / r.a.n;
  };
  page().says(
      "the last time before is day %.0f): %.3f for covariates of 0, who do not exist "
      "(age 0), and %.3f at the means, age %.1f, %.0f %% men, score %.2f",
      when, r.survivalAt(r.baseline, 1, last), r.survivalAt(r.mean, 1, last), mean(1),
      100 * mean(2), mean(3));
}

TEST(CoxExample, SelectionsOfThePage) {
  Regression::Options options;
  options.method = 1;
  const Regression backward(lungCancer(), options);
  page().says(
      "removes age (chi-square %.3f, p = %.4f) and keeps male (hazard ratio %.3f) and "
      "score (%.3f)",
      backward.step(2, 1), backward.step(3, 1), backward.coefficient(1, 5),
      backward.coefficient(2, 5));
  options.method = 0;
  const Regression forward(lungCancer(), options);
  EXPECT_EQ(forward.order, (survmeth::test::Ints{0, 2, 1}));
  page().says(
      "enters score (likelihood ratio %.3f) and then male (%.3f, p = %.4f on 2 degrees of freedom; "
      "the usual test on 1 gives %.4f)",
      forward.step(2, 1), forward.step(2, 2), forward.step(3, 2),
      std::erfc(std::sqrt(forward.step(2, 2) / 2)));
}

}  // namespace
