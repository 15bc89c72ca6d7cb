// Curves of survival from cumulative hazards, and what is read off them.
#ifndef ANALYSIS_COX_PREDICT_CURVES_H_
#define ANALYSIS_COX_PREDICT_CURVES_H_

#include <cstddef>
#include <vector>

#include "analysis/cox/predict.h"
#include "engine/cox/baseline.h"
#include "engine/curves/quantiles.h"

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

  // Of request.quantiles. A curve that runs at a wanted level ends at `last`, event or not.
  // Cost O(event times until the curve and its limits are below all levels)
  std::vector<engine::curves::Quantile> quantiles(const engine::cox::CumulativeHazard& whole,
                                                  double last) const;

 private:
  void extend(const engine::cox::CumulativeHazard& whole, std::size_t count,
              engine::curves::Curve& curve) const;

  const CoxPredictRequest& request_;
  double z_;
};

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_PREDICT_CURVES_H_
