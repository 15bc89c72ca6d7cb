// What survmeth life finds.
#ifndef ANALYSIS_LIFE_ANSWER_H_
#define ANALYSIS_LIFE_ANSWER_H_

#include <cstddef>
#include <vector>

#include "analysis/life/actuarial.h"
#include "analysis/life/comparison.h"
#include "analysis/life/rows.h"
#include "engine/curves/curve.h"
#include "engine/curves/means.h"
#include "engine/curves/quantiles.h"
#include "engine/curves/rates.h"

namespace survmeth::analysis {

// What is read off the curves, of each group; empty what is not asked for.
struct LifeReadings {
  std::vector<std::vector<engine::curves::Quantile>> quantiles;
  std::vector<std::vector<engine::curves::Reading>> at;
  std::vector<std::vector<engine::curves::RiskCount>> risk;  // at the same times
  std::vector<engine::curves::RestrictedMean> means;
  std::vector<engine::curves::MeanContrasts> contrasts;  // of the second, third ... to the first
};

struct LifeAnswer {
  LifeRows rows;
  std::vector<engine::curves::Curve> curves;  // of each group
  std::vector<engine::curves::Quantile> medians;
  double n = 0, events = 0, censored = 0;  // sums of weights of all
  LifeComparison comparison;
  std::vector<std::vector<LifeInterval>> intervals;  // where they are asked for
  LifeReadings readings;
};

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_ANSWER_H_
