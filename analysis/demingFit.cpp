#include "analysis/demingFit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "analysis/invalidRequest.h"
#include "survival/survival.h"

namespace survmeth {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// Limits as the entry point gives them, the missing marker as NaN.
BoundedValue limited(double value, double lower, double upper) {
  return lower > -1.797e308 ? BoundedValue{value, lower, upper} : BoundedValue{value, kNan, kNan};
}

}  // namespace

DemingResult demingFit(const DemingRequest& request) {
  const std::size_t n = request.first.size();
  if (request.second.size() != n) {
    throw InvalidRequest("second", "the two methods have different numbers of values");
  }
  if (n < 3) throw InvalidRequest("first", "fewer than three pairs");
  if (!(request.ratio > 0) || !std::isfinite(request.ratio)) {
    throw InvalidRequest("ratio", "the ratio of error variances must be above 0");
  }
  requireSpread(request.first, "first");
  requireSpread(request.second, "second");

  std::vector<double> x(request.first.begin(), request.first.end());
  std::vector<double> y(request.second.begin(), request.second.end());
  std::vector<double> subject(n), difference(n), biasAndSe(2 * n), band(2 * n);
  int count = 1;
  DemingResult result;
  result.pairs = n;
  result.fitted.resize(n);
  result.residuals.resize(n);
  double interceptLower = 0, interceptUpper = 0, slopeLower = 0, slopeUpper = 0;
  double unused[24] = {};
  VB_DemingRegression(
      x.data(), static_cast<int>(n), y.data(), subject.data(), 0, 1, &count, 1, 0, request.alpha,
      request.ratio, 0, 0, 0, 0, &result.intercept.value, &interceptLower, &interceptUpper,
      &result.slope.value, &slopeLower, &slopeUpper, difference.data(), biasAndSe.data(),
      result.residuals.data(), result.fitted.data(), band.data(), &unused[0], &unused[1],
      &unused[2], &result.correlation, &unused[3], &unused[4], &unused[5], &unused[6], &unused[7],
      &unused[8], &unused[9], &unused[10], &unused[11], &unused[12], &unused[13], &unused[14],
      &unused[15], &unused[16], &unused[17], &unused[18], &unused[19], &unused[20]);
  if (!std::isfinite(result.slope.value)) {
    throw InvalidRequest("second", "the two methods do not vary together: no line fits");
  }
  const double t = InvCDFStudent(1 - request.alpha / 2, static_cast<double>(n) - 2);
  result.intercept = limited(result.intercept.value, interceptLower, interceptUpper);
  result.slope = limited(result.slope.value, slopeLower, slopeUpper);
  result.interceptSe = (result.intercept.upper - result.intercept.value) / t;
  result.slopeSe = (result.slope.upper - result.slope.value) / t;
  return result;
}

}  // namespace survmeth
