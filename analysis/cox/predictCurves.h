// Curves of survival from cumulative hazards, and what is read off them.
#ifndef ANALYSIS_COX_PREDICT_CURVES_H_
#define ANALYSIS_COX_PREDICT_CURVES_H_

#include <cstddef>
#include <vector>

#include "analysis/cox/predict.h"
#include "engine/cox/baseline.h"

namespace survmeth::analysis {

class CoxCurves {
 public:
  explicit CoxCurves(const CoxPredictRequest& request);

  CoxSurvival survival(double time, double hazard, double error) const;
  std::vector<CoxSurvival> points(const engine::cox::CumulativeHazard& whole) const;

  // At request.at; unknown after `last`.
  std::vector<CoxSurvival> readings(const engine::cox::CumulativeHazard& whole, double last) const;

  // The same of the hazards at these times; unknown where a hazard is.
  std::vector<CoxSurvival> readings(const std::vector<engine::cox::HazardValue>& hazards) const;

  // The normal quantile of the limits.
  double z() const { return z_; }

 private:
  const CoxPredictRequest& request_;
  double z_;
};

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_PREDICT_CURVES_H_
