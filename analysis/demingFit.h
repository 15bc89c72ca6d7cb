// Deming regression: a line between two methods that both have measurement error.
#ifndef ANALYSIS_DEMING_FIT_H_
#define ANALYSIS_DEMING_FIT_H_

#include <cstddef>
#include <span>
#include <vector>

#include "analysis/agreement.h"

namespace survmeth {

struct DemingRequest {
  std::span<const double> first, second;  // x and y, the same length; finite
  double ratio = 1;                       // error variance of first over that of second; above 0
  double alpha = 0.05;                    // in (0, 1); intervals have level 1 - alpha
};

struct DemingResult {
  std::size_t pairs = 0;
  double correlation = 0;  // Pearson's
  // second = intercept + slope first. Limits by the jackknife with Student's t and pairs - 2
  // degrees of freedom; NaN where leaving out a pair never changes the line.
  BoundedValue intercept, slope;
  double interceptSe = 0, slopeSe = 0;  // jackknife standard errors
  // For each pair the point of the line nearest to it, the ratio giving the direction: `fitted` is
  // its second coordinate, `residuals` second - fitted.
  std::vector<double> fitted, residuals;
};

// Throws InvalidRequest for columns of different length, fewer than three pairs, a column without
// spread, columns that do not vary together, a ratio that is not above 0. Cost O(n^2).
// Source Deming, Statistical Adjustment of Data (1943); Linnet, Clin Chem 39 (1993) 424-432
DemingResult demingFit(const DemingRequest& request);

}  // namespace survmeth

#endif  // ANALYSIS_DEMING_FIT_H_
