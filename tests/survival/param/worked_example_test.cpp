// The worked example of docs/statistics/param.md.
#include <gtest/gtest.h>

#include "survival/calls/param.h"
#include "tests/survival/param/models.h"

namespace survmeth::test {
namespace {

TEST(ParametricDocument, TheWorkedExampleHolds) {
  const auto file = readTable(std::string(SURVMETH_DATA) + "/veteran.csv");
  std::vector<double> times = file.at("time"), status = file.at("status");
  std::vector<double> covariates = file.at("karno");
  covariates.insert(covariates.end(), file.at("age").begin(), file.at("age").end());
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

  // Rows intercept, karno, age, sigma; the digits that the page shows.
  const auto cell = [&](int row, int column) { return coefficients[row + 4 * (column - 1)]; };
  const double table[3][6] = {{2.6571, 0.6810, 15.226, 0.000095, 1.3225, 3.9918},
                              {0.03496, 0.00497, 49.453, 2.0e-12, 0.02522, 0.04471},
                              {-0.00019, 0.00926, 0.0004, 0.984, -0.01834, 0.01796}};
  const double half[3][6] = {{5e-5, 5e-5, 5e-4, 5e-7, 5e-5, 5e-5},
                             {5e-6, 5e-6, 5e-4, 5e-14, 5e-6, 5e-6},
                             {5e-6, 5e-6, 5e-5, 5e-4, 5e-6, 5e-6}};
  for (int row = 0; row < 3; ++row) {
    for (int column = 1; column <= 6; ++column) {
      EXPECT_NEAR(table[row][column - 1], cell(row, column), half[row][column - 1]);
    }
  }
  EXPECT_NEAR(1.0224, cell(3, 1), 5e-5);
  EXPECT_NEAR(0.0665, cell(3, 2), 5e-5);
  EXPECT_NEAR(0.9001, cell(3, 5), 5e-5);
  EXPECT_NEAR(1.1613, cell(3, 6), 5e-5);

  EXPECT_NEAR(1452.07, statistics[9], 5e-3);
  EXPECT_NEAR(1460.07, statistics[10], 5e-3);
  EXPECT_NEAR(1471.75, statistics[11], 5e-3);
  EXPECT_EQ(9.0, statistics[13]);
  EXPECT_NEAR(1.42, std::exp(10.0 * parameters[0]), 5e-3);
  EXPECT_NEAR(681.5, tests[3], 5e-2);

  // The first patient.
  EXPECT_EQ(72.0, times[0]);
  EXPECT_NEAR(-0.455, residuals[0], 5e-4);
  EXPECT_NEAR(0.530, survival[0], 5e-4);
  const auto quantile = [&](int column) { return quantiles[rows * (column - 1)]; };
  EXPECT_NEAR(78.8, quantile(5), 5e-2);
  EXPECT_NEAR(11.5, quantile(3), 5e-2);
  EXPECT_NEAR(269.0, quantile(7), 5e-1);

  Model none(kWeibull, veteran(std::vector<std::string>{}));
  Fit fit(none);
  ASSERT_EQ(0, fit.run(none));
  EXPECT_NEAR(-748.091, fit.logLik, 5e-4);
  EXPECT_NEAR(44.11, -statistics[9] - 2.0 * fit.logLik, 5e-3);
}

}  // namespace
}  // namespace survmeth::test
