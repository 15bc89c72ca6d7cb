// What is read off survival curves on demand: quantiles, survival at given times, and restricted
// means with what the groups differ by.
#ifndef ANALYSIS_CURVE_READINGS_H_
#define ANALYSIS_CURVE_READINGS_H_

#include <optional>
#include <vector>

#include "analysis/curveTables.h"
#include "analysis/survivalCurves.h"
#include "engine/curves/means.h"
#include "engine/curves/quantiles.h"
#include "engine/curves/rates.h"
#include "report/report.h"

namespace survmeth::analysis {

struct ReadingsRequest {
  std::vector<double> quantiles;  // shares that have failed, within (0, 1)
  std::vector<double> at;         // times, ascending
  std::optional<double> tau;      // horizon of the means, above 0
};

// Of each group; empty what is not asked for.
struct Readings {
  std::vector<std::vector<engine::curves::Quantile>> quantiles;
  std::vector<std::vector<engine::curves::Reading>> at;
  std::vector<std::vector<engine::curves::RiskCount>> risk;  // at the same times
  std::vector<engine::curves::RestrictedMean> means;
  std::vector<engine::curves::MeanContrasts> contrasts;  // of the second, third ... to the first
};

// Of the same curves as survivalCurves makes: only equal times are one.
//
// Cost O(n log n); nothing where nothing is asked for
Readings readingsOf(const SurvivalData& data, const ReadingsRequest& request, double alpha,
                    CurveLimits limits);

// Adds tables "quantiles", "survivalAt", "restrictedMeans" and "meanContrasts", methods and notes.
void describeReadings(const Readings& readings, const CurveNames& names, report::Report& report);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_CURVE_READINGS_H_
