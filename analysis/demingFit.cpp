// The closed form and its jackknife, computed here: the entry point's differences of large numbers
// lose the slope at ratios far from 1, and its guards take small units for 0.
//
// Each method goes in a unit of its own, a power of 2 that brings its largest deviation near 1;
// each subsample again, for the pair that is left out may have been the only large one. With x and
// y so scaled, tau the square root of the ratio of error variances (of y over that of x) in these
// units, A = Syy - tau^2 Sxx and B = 2 tau Sxy, the slope is
//   (A + sqrt(A^2 + B^2)) / (2 Sxy)             where A >= 0
//   2 tau^2 Sxy / (sqrt(A^2 + B^2) - A)         where A < 0
// in which nothing cancels. For tau > 1 numerator and denominator are divided by tau^2.
#include "analysis/demingFit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Dist/Dist"
#include "analysis/checks.h"
#include "analysis/spread.h"

namespace survmeth {

using engine::Role;
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kVertical = std::numeric_limits<double>::infinity();
constexpr std::size_t kNobody = static_cast<std::size_t>(-1);
// Leave-one-out slopes of points on a line agree better than this, by far.
constexpr double kSameSlope = 1e-6;

// One method without one pair: its mean, and the deviations from it.
struct Column {
  double mean = 0;
  int unit = 0;                    // the deviations are below 2^unit
  std::vector<double> deviations;  // in that unit

  Column(const std::vector<double>& values, std::size_t without) : deviations(values) {
    if (without != kNobody) {
      deviations.erase(deviations.begin() + static_cast<std::ptrdiff_t>(without));
    }
    mean = centre(deviations);
    unit = unitOf(deviations);
    deviations = inUnit(deviations, unit);
  }
};

// A line in the units of the values that went in. The slope is infinite for a vertical line and NaN
// for none.
struct Line {
  Column x, y;
  double xx = 0, yy = 0, xy = 0;
  double tau = 1;
  double scaledSlope = kNone, slope = kNone, intercept = kNone;

  Line(const std::vector<double>& first, const std::vector<double>& second, double tauOfValues,
       std::size_t without = kNobody)
      : x(first, without), y(second, without), tau(std::ldexp(tauOfValues, x.unit - y.unit)) {
    double sizes = 0;
    const std::size_t n = x.deviations.size();
    for (std::size_t i = 0; i < n; ++i) {
      const double product = x.deviations[i] * y.deviations[i];
      xx += x.deviations[i] * x.deviations[i];
      yy += y.deviations[i] * y.deviations[i];
      xy += product;
      sizes += std::fabs(product);
    }
    scaledSlope = slopeOf(kEpsilon * static_cast<double>(n) * sizes);
    slope = std::ldexp(scaledSlope, y.unit - x.unit);
    intercept = y.mean - slope * x.mean;
  }

 private:
  // A covariance of at most `rounding` is what rounding makes of none.
  double slopeOf(double rounding) const {
    if (xx == 0 || yy == 0) return xx > 0 ? 0 : yy > 0 ? kVertical : kNone;
    const double small = std::min(tau, 1 / tau);
    const double a = tau <= 1 ? yy - small * small * xx : small * small * yy - xx;
    const double b = 2 * small * xy;
    if (std::fabs(xy) <= rounding) {
      if (std::fabs(a) <= 4 * kEpsilon * static_cast<double>(x.deviations.size())) return kNone;
      return a < 0 ? 0 : kVertical;
    }
    const double root = std::sqrt(a * a + b * b);
    if (a < 0) return 2 * (tau <= 1 ? small * small : 1) * xy / (root - a);
    return (a + root) / (2 * (tau <= 1 ? 1 : small * small) * xy);
  }
};

void check(const DemingRequest& request) {
  const std::size_t n = request.first.size();
  requireRows(n, 3, Role::kFirst, "fewer than three pairs");
  require(request.second.size() == n, Role::kSecond,
          "the two methods have different numbers of values");
  require(request.ratio > 0 && std::isfinite(request.ratio), Role::kRatio,
          "the ratio of error variances must be above 0");
  requireAlpha(request.alpha);
  requireFinite(request.first, Role::kFirst);
  requireFinite(request.second, Role::kSecond);
  requireSpread(request.first, Role::kFirst);
}

bool onTheLine(const Line& line) {
  // Rounding of numbers below 1, the first method's carried over by the slope.
  const double rounding = 8 * kEpsilon * (1 + std::fabs(line.slope));
  for (std::size_t i = 0; i < line.x.deviations.size(); ++i) {
    const double error = line.y.deviations[i] - line.scaledSlope * line.x.deviations[i];
    if (!(std::fabs(std::ldexp(error, line.y.unit)) <= rounding)) return false;
  }
  return true;
}

// The leave-one-out lines, or why the jackknife gives nothing.
struct Jackknife {
  std::vector<double> slopes, intercepts;
  std::size_t vertical = 0, undetermined = 0;
  std::optional<std::size_t> without;

  Jackknife(const std::vector<double>& x, const std::vector<double>& y, double tau) {
    for (std::size_t i = 0; i < x.size(); ++i) {
      const Line line(x, y, tau, i);
      slopes.push_back(line.slope);
      intercepts.push_back(line.intercept);
      vertical += std::isinf(line.slope) ? 1 : 0;
      undetermined += std::isnan(line.slope) ? 1 : 0;
      if (!std::isfinite(line.slope) && !without) without = i;
    }
  }

  std::string reason(const Line& line) const {
    if (vertical == 1) return "one leave-one-out slope is infinite";
    if (vertical > 1) return std::to_string(vertical) + " leave-one-out slopes are infinite";
    if (undetermined > 0) return "the pairs left without one of them determine no line";
    const auto same = [&line](double slope) {
      return std::fabs(slope - line.slope) <= kSameSlope * std::fabs(line.slope);
    };
    const bool straight = onTheLine(line) && std::all_of(slopes.begin(), slopes.end(), same);
    return straight ? "every pair lies on the line" : "";
  }
};

}  // namespace

DemingResult demingFit(const DemingRequest& request) {
  check(request);
  const std::size_t n = request.first.size();
  const int xUnit = unitOf(request.first), yUnit = unitOf(request.second);
  const std::vector<double> x = inUnit(request.first, xUnit), y = inUnit(request.second, yUnit);
  const double tau = std::ldexp(1 / std::sqrt(request.ratio), xUnit - yUnit);
  const Line line(x, y, tau);
  require(!std::isinf(line.slope), Role::kSecond,
          "the two methods do not vary together, and the line is vertical");
  require(!std::isnan(line.slope), Role::kSecond,
          "the two methods do not vary together, and no direction fits better than another");

  DemingResult result;
  result.pairs = n;
  if (line.yy > 0) result.correlation = line.xy / std::sqrt(line.xx * line.yy);
  result.slope = {std::ldexp(line.slope, yUnit - xUnit), kNone, kNone};
  result.intercept = {std::ldexp(line.intercept, yUnit), kNone, kNone};
  require(std::isfinite(result.slope.value) && std::isfinite(result.intercept.value) &&
              (result.slope.value != 0) == (line.scaledSlope != 0),
          Role::kSecond, "the line's coefficients are outside the range of numbers");
  // The share of a pair's distance in the second coordinate that is the second method's error.
  const double steepness = line.scaledSlope / line.tau;
  const double share = 1 / (1 + steepness * steepness);
  for (std::size_t i = 0; i < n; ++i) {
    const double error = line.y.deviations[i] - line.scaledSlope * line.x.deviations[i];
    result.residuals.push_back(std::ldexp(error * share, line.y.unit + yUnit));
    result.fitted.push_back(request.second[i] - result.residuals.back());
  }

  const Jackknife jackknife(x, y, tau);
  result.reason = jackknife.reason(line);
  result.without = jackknife.without;
  if (!result.reason.empty()) return result;
  const double pairs = static_cast<double>(n);
  const double t = InvCDFStudent(1 - request.alpha / 2, pairs - 2);
  const auto bound = [&](const std::vector<double>& values, int unit, Estimate& value) {
    const double se = std::ldexp(spreadOf(values).sd * (pairs - 1) / std::sqrt(pairs), unit);
    value.lower = value.value - t * se;
    value.upper = value.value + t * se;
    return se;
  };
  result.slopeSe = bound(jackknife.slopes, yUnit - xUnit, result.slope);
  result.interceptSe = bound(jackknife.intercepts, yUnit, result.intercept);
  return result;
}

}  // namespace survmeth
