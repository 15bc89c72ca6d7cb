// The worked example of docs/statistics/param.md.
#include <gtest/gtest.h>

#include "survival/calls/param.h"
#include "tests/support/page.h"
#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

TEST(ParametricDocument, TheWorkedExampleHolds) {
  const Csv file(SURVMETH_DATA "/veteran.csv");
  std::vector<double> times = file.numbers("time"), status = file.numbers("status");
  std::vector<double> covariates = file.numbers("karno"), age = file.numbers("age");
  covariates.insert(covariates.end(), age.begin(), age.end());
  const int n = static_cast<int>(times.size());
  const std::size_t rows = times.size();
  std::vector<double> bounds(2 * rows, 0.0), weights(rows, 1.0), initial(4, 0.0), parameters(4);
  std::vector<double> statistics(14), tests(9), coefficients(36), survival(rows);
  std::vector<double> residuals(2 * rows), probabilities(2 * rows), quantiles(9 * rows), steps(6);
  std::vector<int> order(2);
  int kept = 0, count = 0;
  ASSERT_EQ(0, Cpp_RunParamReg(times.data(), n, 2, &kept, 2, status.data(), bounds.data(),
                               covariates.data(), weights.data(), 100, 1e-10, -1, kWeibull, 0, -1,
                               0, 0.05, 0.05, 0.05, 0, 0, initial.data(), 0, 0.0, parameters.data(),
                               statistics.data(), tests.data(), coefficients.data(),
                               survival.data(), residuals.data(), probabilities.data(),
                               quantiles.data(), steps.data(), &count, order.data()));
  ASSERT_EQ(137, n);
  ASSERT_EQ(2, kept);

  // Rows intercept, karno, age, sigma.
  const auto cell = [&](int row, int column) { return coefficients[row + 4 * (column - 1)]; };
  const Page page("param");
  page.says("%d patients, survival in days", n);
  page.says("| intercept | %.4f | %.4f | %.3f | %s | %.4f to %.4f |", cell(0, 1), cell(0, 2),
            cell(0, 3), survmeth::test::pText(cell(0, 4)).c_str(), cell(0, 5), cell(0, 6));
  page.says("| karno | %.5f | %.5f | %.3f | %s | %.5f to %.5f |", cell(1, 1), cell(1, 2),
            cell(1, 3), survmeth::test::pText(cell(1, 4)).c_str(), cell(1, 5), cell(1, 6));
  page.says("| age | %.5f | %.5f | %.4f | %.3f | %.5f to %.5f |", cell(2, 1), cell(2, 2),
            cell(2, 3), cell(2, 4), cell(2, 5), cell(2, 6));
  page.says("| sigma | %.4f | %.4f | | | %.4f to %.4f |", cell(3, 1), cell(3, 2), cell(3, 5),
            cell(3, 6));
  page.says("-2 logL = %.2f, AIC %.2f, SBC %.2f in %.0f steps", statistics[9], statistics[10],
            statistics[11], statistics[13]);
  page.says("the survival time by exp(%.4f) = %.2f", 10.0 * parameters[0],
            std::exp(10.0 * parameters[0]));
  page.says("The likelihood-ratio statistic in the table is %.1f,", tests[3]);

  // The first patient.
  const auto quantile = [&](int column) { return quantiles[rows * (column - 1)]; };
  page.says(
      "The first patient (%.0f days, score %.0f, age %.0f) has r = %.3f, fitted survival %.3f",
      times[0], covariates[0], covariates[rows], residuals[0], survival[0]);
  page.says("a predicted median of %.1f days (10 %% die within %.1f days, 90 %% within %.0f)",
            quantile(5), quantile(3), quantile(7));

  Model none(kWeibull, veteran(std::vector<std::string>{}));
  Fit fit(none);
  ASSERT_EQ(0, fit.run(none));
  page.says("(logL %.3f) it is 2 (%.3f - %.3f) = %.2f on 2", fit.logLik, -fit.logLik,
            statistics[9] / 2.0, -statistics[9] - 2.0 * fit.logLik);
}

}  // namespace
}  // namespace survmeth::test
