#include "engine/curves/bridge.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "Dist/Dist"
#include "Dist/constants.h"
#include "engine/curves/limits.h"
#include "numerics/elementary.h"

namespace survmeth::engine::curves {
namespace {

constexpr double kSqrtTwoPi = dist::kSqrt2Pi.hi;

// The normal density of this variance.
double density(double x, double variance) {
  return numerics::exp(-0.5 * x * x / variance) / (kSqrtTwoPi * std::sqrt(variance));
}

// P(l < X < u) of the standard normal law, from the tail in which nothing cancels.
double normalBetween(double l, double u) {
  return l > 0.0 ? CDFNormalStd(-l) - CDFNormalStd(-u) : CDFNormalStd(u) - CDFNormalStd(l);
}

// The ways from y at a to 0 at 1 that stay within [-k, k] up to b.
class WayBack {
 public:
  WayBack(double k, double a, double b)
      : k_(k),
        whole_(1.0 - a),
        share_((1.0 - b) / (1.0 - a)),
        deviation_(std::sqrt((b - a) * share_)),
        images_(static_cast<int>(std::ceil((9.0 * std::sqrt(whole_) / k + 3.0) / 4.0))) {}

  double from(double y) const {
    double sum = 0.0;
    for (int j = images_; j > 0; --j) {
      sum += pair(y, 4.0 * j * k_) + pair(y, -4.0 * j * k_);
    }
    return sum + pair(y, 0.0);
  }

 private:
  double pair(double y, double shift) const { return one(y + shift) - one(2.0 * k_ - y + shift); }
  double one(double m) const {
    const double mean = m * share_;
    // A motion that is held at 0 already at b has no way to go.
    const double within =
        deviation_ > 0.0 ? normalBetween((-k_ - mean) / deviation_, (k_ - mean) / deviation_) : 1.0;
    return density(m, whole_) * within;
  }

  double k_, whole_, share_, deviation_;
  int images_;
};

// psi and its derivatives at c.
struct Solution {
  double value, slope;  // psi, psi'
  double byLambda;      // d psi / d lambda
  int zeros;            // of psi within (0, c)
};

// Taylor steps that no more than one zero can lie in: zeros are at least pi / sqrt(lambda + 1/2)
// apart. 26 terms leave less than 1e-16 up to c = 10.
Solution solve(double lambda, double c) {
  constexpr int kTerms = 26;
  const double longest = std::min(0.25, 1.0 / std::sqrt(lambda + 1.0));
  const int steps = static_cast<int>(std::ceil(c / longest));
  const double h = c / steps;
  double value = 1.0;
  double slope = 0.0;
  double valueBy = 0.0;
  double slopeBy = 0.0;
  int zeros = 0;
  for (int step = 0; step < steps; ++step) {
    const double x = h * step;
    // Coefficients times powers of h, of psi and of its derivative by lambda.
    double a[kTerms + 2] = {value, slope * h};
    double e[kTerms + 2] = {valueBy, slopeBy * h};
    for (int n = 0; n < kTerms; ++n) {
      const double scale = h / ((n + 1.0) * (n + 2.0));
      a[n + 2] = scale * (x * (n + 1.0) * a[n + 1] + h * ((n - lambda) * a[n]));
      e[n + 2] = scale * (x * (n + 1.0) * e[n + 1] + h * ((n - lambda) * e[n] - a[n]));
    }
    const double before = value;
    value = slope = valueBy = slopeBy = 0.0;
    for (int n = kTerms + 1; n >= 0; --n) {
      value += a[n];
      slope += n * a[n];
      valueBy += e[n];
      slopeBy += n * e[n];
    }
    slope /= h;
    slopeBy /= h;
    if ((value > 0.0) != (before > 0.0)) ++zeros;
  }
  return {value, slope, valueBy, zeros};
}

// The eigenvalues one after the other.
class Spectrum {
 public:
  explicit Spectrum(double c) : c_(c) {}

  // The next eigenvalue's solution; `lambda` its value.
  Solution next(double& lambda) {
    const int index = found_++;
    double low = last_;
    double high = std::max(2.0 * last_ - beforeLast_, last_ + 1.0);
    while (solve(high, c_).zeros <= index) {
      low = high;
      high += high - beforeLast_ + 1.0;
    }
    // psi(c) falls through 0 at even indices, rises at odd ones; one such change in between.
    while (solve(high, c_).zeros > index + 1) {
      const double middle = 0.5 * (low + high);
      (solve(middle, c_).zeros <= index ? low : high) = middle;
    }
    const double sign = index % 2 == 0 ? 1.0 : -1.0;
    double at = found_ == 1 ? 0.0 : 0.5 * (low + high);
    for (int step = 0; step < 100; ++step) {
      const Solution here = solve(at, c_);
      if (sign * here.value > 0.0) {
        low = std::max(low, at);
      } else {
        high = std::min(high, at);
      }
      double to = at - here.value / here.byLambda;
      if (!(to >= low && to <= high)) to = 0.5 * (low + high);
      const bool done = std::fabs(to - at) <= 4e-16 * to;
      at = to;
      if (done) break;
    }
    beforeLast_ = last_;
    last_ = at;
    lambda = at;
    return solve(at, c_);
  }

 private:
  double c_;
  int found_ = 0;
  double last_ = 0.0, beforeLast_ = 0.0;
};

// The value from `least` on with this probability: regula falsi, the kept end halved (Illinois).
template <class Probability>
double quantile(double level, double least, const Probability& probability) {
  double low = least;
  double atLow = probability(low) - level;
  double high = 1.25 * least;
  double atHigh = probability(high) - level;
  while (atHigh < 0.0) {
    low = high;
    atLow = atHigh;
    high *= 1.25;
    atHigh = probability(high) - level;
  }
  int kept = 0;
  for (int step = 0; step < 200 && high - low > 1e-13 * high; ++step) {
    double at = high - atHigh * (high - low) / (atHigh - atLow);
    if (!(at > low && at < high)) at = 0.5 * (low + high);
    const double value = probability(at) - level;
    if (value == 0.0) return at;
    if (value < 0.0) {
      if (std::fabs(value) < 1e-14) return at;
      low = at;
      atLow = value;
      if (kept == 1) atHigh *= 0.5;
      kept = 1;
    } else {
      if (std::fabs(value) < 1e-14) return at;
      high = at;
      atHigh = value;
      if (kept == -1) atLow *= 0.5;
      kept = -1;
    }
  }
  return 0.5 * (low + high);
}

}  // namespace

double bridgeWithin(double k, double a, double b) {
  const WayBack way(k, a, b);
  if (!(a > 0.0)) return std::clamp(kSqrtTwoPi * way.from(0.0), 0.0, 1.0);
  constexpr int kHalfRule = sizeof dist::kLegendreNode / sizeof dist::kLegendreNode[0];
  const double deviation = std::sqrt(a);
  const double narrow = 0.5 * std::sqrt(b - a);
  double sum = 0.0;
  double right = std::min(k, 10.0 * deviation);
  while (right > 0.0) {
    const double width = std::min({std::max(narrow, k - right), deviation, right});
    const double half = 0.5 * width;
    const double centre = right - half;
    double panel = 0.0;
    for (int i = 0; i < kHalfRule; ++i) {
      const double step = half * dist::kLegendreNode[i];
      panel += dist::kLegendreWeight[i] * (density(centre - step, a) * way.from(centre - step) +
                                           density(centre + step, a) * way.from(centre + step));
    }
    sum += half * panel;
    right = right - width > 1e-300 ? right - width : 0.0;
  }
  return std::clamp(2.0 * kSqrtTwoPi * sum, 0.0, 1.0);
}

double standardizedBridgeWithin(double c, double length) {
  const double densityAtC = numerics::exp(-0.5 * c * c) / kSqrtTwoPi;
  Spectrum spectrum(c);
  std::vector<double> terms;
  double lambda = 0.0;
  do {
    const Solution psi = spectrum.next(lambda);
    terms.push_back(numerics::exp(-lambda * length) * 2.0 * densityAtC * psi.slope /
                    (lambda * lambda * psi.byLambda));
  } while (lambda * length < 40.0);
  return std::clamp(std::accumulate(terms.rbegin(), terms.rend(), 0.0), 0.0, 1.0);
}

double bridgeQuantile(double level, double a, double b) {
  const double z = normalQuantile(level);
  // No less than the quantile at the point of the largest variance alone.
  const double x = std::clamp(0.5, a, b);
  return quantile(level, z * std::sqrt(x * (1.0 - x)),
                  [&](double k) { return bridgeWithin(k, a, b); });
}

double standardizedBridgeQuantile(double level, double length) {
  return quantile(level, normalQuantile(level),
                  [&](double c) { return standardizedBridgeWithin(c, length); });
}

}  // namespace survmeth::engine::curves
