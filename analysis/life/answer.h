// What survmeth life finds.
#ifndef ANALYSIS_LIFE_ANSWER_H_
#define ANALYSIS_LIFE_ANSWER_H_

#include <cstddef>
#include <optional>
#include <vector>

#include "analysis/life/actuarial.h"
#include "analysis/life/comparison.h"
#include "analysis/life/permutation.h"
#include "analysis/life/rows.h"
#include "engine/curves/bands.h"
#include "engine/curves/combination.h"
#include "engine/curves/curve.h"
#include "engine/curves/hazardRate.h"
#include "engine/curves/means.h"
#include "engine/curves/quantiles.h"
#include "engine/curves/rates.h"

namespace survmeth::analysis {

// What stands in the summary's row of a group.
struct LifeSummary {
  engine::curves::Quantile lowerQuartile, median, upperQuartile;
  double followUp = kNone;  // the median of the reverse Kaplan-Meier curve
};

// What is read off the curves, of each group; empty what is not asked for.
struct LifeReadings {
  std::vector<std::vector<engine::curves::Quantile>> quantiles;
  std::vector<std::vector<engine::curves::Reading>> at;
  std::vector<std::vector<engine::curves::RiskCount>> risk;       // at the same times
  std::vector<std::vector<engine::curves::Contrast>> contrastAt;  // to the first group; its own
                                                                  // are empty
  std::vector<engine::curves::RestrictedMean> means;
  std::vector<engine::curves::MeanContrasts> contrasts;  // of the second, third ... to the first
  std::vector<std::vector<engine::curves::HazardRate>> hazards;
  std::vector<std::vector<engine::curves::Rate>> rates;
  std::vector<std::vector<engine::curves::RateRatio>> rateRatios;  // to the first; its own empty
};

struct LifeAnswer {
  LifeRequest request;  // with its columns (request.h)
  LifeRows rows;
  std::vector<engine::curves::Curve> curves;  // of each group
  std::vector<engine::curves::Band> bands;    // where they are asked for
  std::vector<LifeSummary> summaries;
  double n = 0, events = 0, censored = 0;  // sums of weights of all
  LifeComparison comparison;
  // Where they are asked for and tests exist.
  std::vector<engine::curves::CombinationPair> combination;
  std::optional<LifePermutation> permutation;
  std::vector<std::vector<LifeInterval>> intervals;  // where they are asked for
  LifeReadings readings;
  bool robust = false;  // whether the curves' variances are

  const std::vector<std::string>& labels() const { return rows.groups.labels; }
};

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_ANSWER_H_
