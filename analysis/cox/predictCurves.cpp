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

}  // namespace survmeth::analysis
