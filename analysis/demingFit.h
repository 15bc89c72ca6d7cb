// Deming regression: a line between two methods that both have measurement error.
#ifndef ANALYSIS_DEMING_FIT_H_
#define ANALYSIS_DEMING_FIT_H_

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "analysis/agreement.h"
#include "analysis/estimate.h"

namespace survmeth {

struct DemingRequest {
  std::span<const double> first, second;  // x and y, the same length; finite
  double ratio = 1;                       // error variance of first over that of second; above 0
  double alpha = 0.05;                    // in (0, 1); intervals have level 1 - alpha
};

struct DemingResult {
  std::size_t pairs = 0;
  double correlation = kNone;  // Pearson's; NaN where second is constant
  // second = intercept + slope first. Limits by the jackknife with Student's t and pairs - 2
  // degrees of freedom.
  Estimate intercept, slope;
  double interceptSe = kNone, slopeSe = kNone;  // jackknife standard errors
  // Why errors and limits are NaN: every pair lies on the line, to rounding, or the pairs have no
  // line of finite slope without one of them, `without` (the first such).
  std::string reason;
  std::optional<std::size_t> without;
  // For each pair the point of the line nearest to it, the ratio giving the direction: `fitted` is
  // its second coordinate, `residuals` second - fitted.
  std::vector<double> fitted, residuals;
};

// In any unit and at any ratio: nothing overflows, vanishes or cancels. Methods without covariance
// have slope 0 where first spreads wider against its error than second, as it does where second is
// constant, and a vertical line where second does; that, and an equal spread in every direction, is
// refused.
//
// Throws engine::Refusal for columns of different length, fewer than three pairs, more than
// kMostRows, a value that is not finite, a first column without spread, a ratio or alpha out
// of its range, a line that is vertical or not determined, coefficients outside the range of doubles.
// Cost O(n); up to 1,000 pairs are fitted anew without each, O(n^2).
// Source Deming, Statistical Adjustment of Data (1943); Linnet, Clin Chem 39 (1993) 424-432
DemingResult demingFit(const DemingRequest& request);

}  // namespace survmeth

#endif  // ANALYSIS_DEMING_FIT_H_
