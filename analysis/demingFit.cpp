// The closed form and its jackknife, computed here: the entry point's differences of large numbers
// lose the slope at ratios far from 1, and its guards take small units for 0.
//
// Each method goes in a unit of its own, a power of 2 that brings its largest deviation near 1;
// refitted subsamples again, for the pair that is left out may have been the only large one. With x
// and y so scaled, tau the square root of the ratio of error variances (of y over that of x) in these
// units, A = Syy - tau^2 Sxx and B = 2 tau Sxy, the slope is
//   (A + sqrt(A^2 + B^2)) / (2 Sxy)             where A >= 0
//   2 tau^2 Sxy / (sqrt(A^2 + B^2) - A)         where A < 0
// in which nothing cancels. For tau > 1 numerator and denominator are divided by tau^2.
//
// The jackknife of many pairs takes the differences from the line of all. Without pair i, of
// deviations u and v from the means of n pairs, the means fall by u / (n - 1) and v / (n - 1), and
// Sxx, Sxy and Syy by n / (n - 1) times u u, u v and v v. The slope b solves
//   Sxy b^2 - A b - tau^2 Sxy = 0;
// put in with the lesser sums, b and its change d leave
//   Sxy d^2 + (2 Sxy b - A) d = n / (n - 1) (u b - v) (v b + tau^2 u)
// in which nothing cancels but the pair's distance from the line, u b - v. The lesser sums keep their
// digits where the pair held at most half of Sxx and Syy; of the others, four at most in large
// data, the pairs left are fitted anew.
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
// Up to so many pairs are fitted anew without each, which takes no time anybody notices: the numbers
// of studies of the usual size do not hang on how those of large ones are reached.
constexpr std::size_t kFewPairs = 1000;
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

// Sums of squares and products of n pairs' deviations. A covariance of at most `rounding` is what
// rounding makes of none.
struct Sums {
  std::size_t n = 0;
  double xx = 0, yy = 0, xy = 0;
  double rounding = 0;

  bool covary() const { return xx > 0 && yy > 0 && std::fabs(xy) > rounding; }
  // The slope at this tau: infinite for a vertical line and NaN for none.
  double slope(double tau) const {
    if (xx == 0 || yy == 0) return xx > 0 ? 0 : yy > 0 ? kVertical : kNone;
    const double small = std::min(tau, 1 / tau);
    const double a = tau <= 1 ? yy - small * small * xx : small * small * yy - xx;
    const double b = 2 * small * xy;
    if (!covary()) {
      if (std::fabs(a) <= 4 * kEpsilon * static_cast<double>(n)) return kNone;
      return a < 0 ? 0 : kVertical;
    }
    const double root = std::sqrt(a * a + b * b);
    if (a < 0) return 2 * (tau <= 1 ? small * small : 1) * xy / (root - a);
    return (a + root) / (2 * (tau <= 1 ? 1 : small * small) * xy);
  }
};

// A line in the units of the values that went in.
struct Line {
  Column x, y;
  Sums sums;
  double tau = 1;
  double scaledSlope = kNone, slope = kNone, intercept = kNone;

  Line(const std::vector<double>& first, const std::vector<double>& second, double tauOfValues,
       std::size_t without = kNobody)
      : x(first, without), y(second, without), tau(std::ldexp(tauOfValues, x.unit - y.unit)) {
    double sizes = 0;
    sums.n = x.deviations.size();
    for (std::size_t i = 0; i < sums.n; ++i) {
      const double product = x.deviations[i] * y.deviations[i];
      sums.xx += x.deviations[i] * x.deviations[i];
      sums.yy += y.deviations[i] * y.deviations[i];
      sums.xy += product;
      sizes += std::fabs(product);
    }
    sums.rounding = kEpsilon * static_cast<double>(sums.n) * sizes;
    scaledSlope = sums.slope(tau);
    slope = std::ldexp(scaledSlope, y.unit - x.unit);
    intercept = y.mean - slope * x.mean;
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

// What the line of all pairs but one has more than that of all.
class Without {
 public:
  explicit Without(const Line& all) : all_(all), left_(static_cast<double>(all.sums.n) - 1) {
    const double small = std::min(all.tau, 1 / all.tau);
    (all.tau <= 1 ? xPart_ : yPart_) = small * small;
    for (std::size_t i = 0; i < all.sums.n; ++i) {
      const double u = std::fabs(all.x.deviations[i]), v = std::fabs(all.y.deviations[i]);
      xSizes_ += u;
      ySizes_ += v;
      sizes_ += u * v;
    }
  }

  // Pair i holds so much of a sum that too little is left of its digits without it.
  bool loses(std::size_t i) const {
    const Sums sums = without(i);
    return sums.xx < all_.sums.xx / 2 || sums.yy < all_.sums.yy / 2;
  }
  // Of the slope in the units of the deviations. Infinite and NaN as the slope without i.
  double slope(std::size_t i) const {
    const Sums sums = without(i);
    const double b = all_.scaledSlope, u = all_.x.deviations[i], v = all_.y.deviations[i];
    const double linear = 2 * yPart_ * sums.xy * b - (yPart_ * sums.yy - xPart_ * sums.xx);
    const double constant = (left_ + 1) / left_ * (u * b - v) * (yPart_ * v * b + xPart_ * u);
    const double square = linear * linear + 4 * yPart_ * sums.xy * constant;
    // Lines far apart differ by no more digits than they have.
    if (!sums.covary() || !(linear > 0) || !(square > 0)) return sums.slope(all_.tau) - b;
    return 2 * constant / (linear + std::sqrt(square));
  }
  // Of the intercept, where the slope has `slope` more in the units of the values.
  double intercept(std::size_t i, double slope) const {
    const double u = all_.x.deviations[i], v = all_.y.deviations[i];
    const double mean = all_.x.mean - std::ldexp(u / left_, all_.x.unit);
    return std::ldexp((all_.scaledSlope * u - v) / left_, all_.y.unit) - slope * mean;
  }

 private:
  Sums without(std::size_t i) const {
    const double u = all_.x.deviations[i], v = all_.y.deviations[i], share = (left_ + 1) / left_;
    Sums sums = all_.sums;
    --sums.n;
    sums.xx -= share * u * u;
    sums.yy -= share * v * v;
    sums.xy -= share * u * v;
    // No less than the sizes of the products of the deviations from the means without i.
    const double sizes =
        sizes_ - std::fabs(u * v) +
        (std::fabs(u) * ySizes_ + std::fabs(v) * xSizes_ + std::fabs(u * v)) / left_;
    sums.rounding = kEpsilon * left_ * sizes;
    return sums;
  }

  const Line& all_;
  double left_;                   // pairs
  double xPart_ = 1, yPart_ = 1;  // of Sxx and Syy in A, over the larger of 1 and tau^2
  double xSizes_ = 0, ySizes_ = 0, sizes_ = 0;
};

// The leave-one-out lines, or why the jackknife gives nothing.
struct Jackknife {
  double slope = 0, intercept = 0;         // of all many pairs; 0 of few
  std::vector<double> slopes, intercepts;  // without each pair, less these
  std::size_t vertical = 0, undetermined = 0;
  std::optional<std::size_t> without;

  Jackknife(const std::vector<double>& x, const std::vector<double>& y, double tau,
            const Line& all) {
    slopes.reserve(x.size());
    intercepts.reserve(x.size());
    const bool few = x.size() <= kFewPairs;
    if (!few) slope = all.slope, intercept = all.intercept;
    const Without fewer(all);
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (few || fewer.loses(i)) {
        const Line line(x, y, tau, i);
        add(i, line.slope - slope, line.intercept - intercept);
      } else {
        const double more = std::ldexp(fewer.slope(i), all.y.unit - all.x.unit);
        add(i, more, fewer.intercept(i, more));
      }
    }
  }

  std::string reason(const Line& line) const {
    if (vertical == 1) return "one leave-one-out slope is infinite";
    if (vertical > 1) return std::to_string(vertical) + " leave-one-out slopes are infinite";
    if (undetermined > 0) return "the pairs left without one of them determine no line";
    const auto same = [&](double more) {
      return std::fabs(slope + more - line.slope) <= kSameSlope * std::fabs(line.slope);
    };
    const bool straight = onTheLine(line) && std::all_of(slopes.begin(), slopes.end(), same);
    return straight ? "every pair lies on the line" : "";
  }

 private:
  void add(std::size_t i, double moreSlope, double moreIntercept) {
    slopes.push_back(moreSlope);
    intercepts.push_back(moreIntercept);
    vertical += std::isinf(moreSlope) ? 1 : 0;
    undetermined += std::isnan(moreSlope) ? 1 : 0;
    if (!std::isfinite(moreSlope) && !without) without = i;
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
  if (line.sums.yy > 0) result.correlation = line.sums.xy / std::sqrt(line.sums.xx * line.sums.yy);
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

  const Jackknife jackknife(x, y, tau, line);
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
