#include "analysis/cox/predictCurves.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Dist/Dist"
#include "numerics/elementary.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
namespace curves = engine::curves;

// Values of a curve that are formed at once.
constexpr std::size_t kBlock = 2048;

// to[k] = exp(of(from + k)), count of them at the end of `to`.
template <class Of>
void addExponentials(const Of& of, std::size_t from, std::size_t count, std::vector<double>& to) {
  double exponent[kBlock];
  for (std::size_t k = 0; k < count; ++k) exponent[k] = of(from + k);
  to.resize(from + count);
  numerics::expArray({exponent, count}, {to.data() + from, count});
}

}  // namespace

CoxCurves::CoxCurves(const CoxPredictRequest& request)
    : request_(request), z_(InvCDFNormalStd(1 - request.alpha / 2)) {}

CoxSurvival CoxCurves::survival(double time, double hazard, double error) const {
  CoxSurvival point{time, hazard, error};
  point.survival = numerics::exp(-hazard);
  point.error = point.survival * error;
  const curves::Interval limits =
      curves::survivalLimits(point.survival, z_ * error, request_.survivalLimits);
  point.lower = limits.lower;
  point.upper = limits.upper;
  point.hazardLower = 0 - numerics::log(limits.upper);
  point.hazardUpper = 0 - numerics::log(limits.lower);
  return point;
}

std::vector<CoxSurvival> CoxCurves::points(const cox::CumulativeHazard& whole) const {
  std::vector<CoxSurvival> points;
  points.reserve(whole.time.size());
  for (std::size_t k = 0; k < whole.time.size(); ++k) {
    points.push_back(survival(whole.time[k], whole.hazard[k], whole.standardError[k]));
  }
  return points;
}

std::vector<CoxSurvival> CoxCurves::readings(const cox::CumulativeHazard& whole,
                                             double last) const {
  std::vector<CoxSurvival> values;
  for (const double time : request_.at) {
    if (time > last) {
      values.push_back({.time = time});
      continue;
    }
    const auto next = std::upper_bound(whole.time.begin(), whole.time.end(), time);
    const auto k = static_cast<std::size_t>(next - whole.time.begin());
    values.push_back(k == 0 ? survival(time, 0, 0)
                            : survival(time, whole.hazard[k - 1], whole.standardError[k - 1]));
  }
  return values;
}

std::vector<CoxSurvival> CoxCurves::readings(const std::vector<cox::HazardValue>& hazards) const {
  std::vector<CoxSurvival> values;
  for (std::size_t k = 0; k < hazards.size(); ++k) {
    values.push_back(std::isnan(hazards[k].hazard)
                         ? CoxSurvival{.time = request_.at[k]}
                         : survival(request_.at[k], hazards[k].hazard, hazards[k].standardError));
  }
  return values;
}

// The next values of the curve, in arrays. Limits are those of curves::survivalLimits but for their
// last digits.
void CoxCurves::extend(const cox::CumulativeHazard& whole, std::size_t count,
                       curves::Curve& curve) const {
  const std::size_t from = curve.survival.size();
  const auto hazard = [&whole](std::size_t k) { return whole.hazard[k]; };
  const auto spread = [&](std::size_t k) { return z_ * whole.standardError[k]; };
  const auto add = [&](const auto& of, std::vector<double>& to) {
    addExponentials(of, from, count, to);
  };
  add([&](std::size_t k) { return -hazard(k); }, curve.survival);
  switch (request_.survivalLimits) {
    case curves::Scale::kPlain:
      for (std::size_t k = from; k < from + count; ++k) {
        curve.lower.push_back(std::max(0.0, curve.survival[k] * (1 - spread(k))));
        curve.upper.push_back(std::min(1.0, curve.survival[k] * (1 + spread(k))));
      }
      break;
    case curves::Scale::kLog:
      add([&](std::size_t k) { return -(hazard(k) + spread(k)); }, curve.lower);
      add([&](std::size_t k) { return std::min(0.0, spread(k) - hazard(k)); }, curve.upper);
      break;
    default: {
      double exponent[kBlock], factor[kBlock];
      for (std::size_t k = 0; k < count; ++k) exponent[k] = spread(from + k) / hazard(from + k);
      numerics::expArray({exponent, count}, {factor, count});
      add([&](std::size_t k) { return -hazard(k) * factor[k - from]; }, curve.lower);
      add([&](std::size_t k) { return -hazard(k) / factor[k - from]; }, curve.upper);
    }
  }
  for (std::size_t k = from; k < from + count; ++k) {
    if (curve.survival[k] == 0) curve.lower[k] = curve.upper[k] = kNone;
  }
}

std::vector<curves::Quantile> CoxCurves::quantiles(const cox::CumulativeHazard& whole,
                                                   double last) const {
  const std::size_t n = whole.time.size();
  // What is below that has crossed every level, by far more than levels are told apart.
  const double least =
      1 - *std::max_element(request_.quantiles.begin(), request_.quantiles.end()) - 1e-6;
  curves::Curve curve;
  bool below = false;
  for (std::size_t done = 0; done < n && !below; done = curve.survival.size()) {
    extend(whole, std::min(kBlock, n - done), curve);
    below =
        curve.survival.back() < least && curve.lower.back() < least && curve.upper.back() < least;
  }
  curve.time.assign(whole.time.begin(),
                    whole.time.begin() + static_cast<std::ptrdiff_t>(curve.survival.size()));
  if (!below && n > 0 && last > whole.time.back()) {
    curve.time.push_back(last);
    for (std::vector<double>* values : {&curve.survival, &curve.lower, &curve.upper}) {
      values->push_back(values->back());
    }
  }
  return curves::quantiles(curve, request_.quantiles);
}

}  // namespace survmeth::analysis
