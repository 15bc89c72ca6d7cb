// One Deming regression through the entry point.
#ifndef TESTS_SURVIVAL_METHCOMP_DEMING_FIT_H_
#define TESTS_SURVIVAL_METHCOMP_DEMING_FIT_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

#include "survival/survival.h"

namespace survmeth::test {

// One call; outputs start at 77 so that what is not written shows.
struct Fit {
  std::vector<double> x, y, ids;
  short hasReplicates = 0;
  std::vector<int> counts{1};
  int m = 1;
  int mode = 1;
  short weighted = 0;
  double alpha = 0.05, ratio = 1, tolerance = 1e-10;
  int maxIterations = 100;
  std::vector<double> difference, bias, residuals, fitted, band;
  double a = 77, aLower = 77, aUpper = 77, b = 77, bLower = 77, bUpper = 77;
  double cusum = 77, critical = 77, p = 77, r = 77;
  double xMin = 77, xMax = 77, xMean = 77, xSd = 77, yMin = 77, yMax = 77, yMean = 77, ySd = 77;
  double maxAbs = 77;
  double p1 = 77, p1Lower = 77, p1Upper = 77, p2 = 77, p2Lower = 77, p2Upper = 77;
  double varA = 0.25, varB = 0, covAB = 0;

  Fit(std::vector<double> first, std::vector<double> second)
      : x(std::move(first)), y(std::move(second)), ids(x.size()) {
    std::iota(ids.begin(), ids.end(), 1);
  }
  Fit& run() {
    const std::size_t n = x.size();
    difference.assign(n, 77);
    bias.assign(2 * n, 77);
    residuals.assign(n, 77);
    fitted.assign(n, 77);
    band.assign(2 * n, 77);
    EXPECT_EQ(VB_DemingRegression(
                  x.data(), static_cast<int>(n), y.data(), ids.data(), hasReplicates, m,
                  counts.data(), mode, weighted, alpha, ratio, tolerance, maxIterations, 1, 2, &a,
                  &aLower, &aUpper, &b, &bLower, &bUpper, difference.data(), bias.data(),
                  residuals.data(), fitted.data(), band.data(), &cusum, &critical, &p, &r, &xMin,
                  &xMax, &xMean, &xSd, &yMin, &yMax, &yMean, &ySd, &maxAbs, &p1, &p1Lower, &p1Upper,
                  &p2, &p2Lower, &p2Upper, &varA, &varB, &covAB),
              0);
    return *this;
  }
};

}  // namespace survmeth::test

#endif  // TESTS_SURVIVAL_METHCOMP_DEMING_FIT_H_
