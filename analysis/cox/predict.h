// Predictions from a Cox fit, in memory or saved.
#ifndef ANALYSIS_COX_PREDICT_H_
#define ANALYSIS_COX_PREDICT_H_

#include <memory>
#include <vector>

#include "analysis/cox/saved.h"
#include "analysis/declare.h"
#include "engine/curves/limits.h"
#include "frame/frame.h"

namespace survmeth::analysis {

struct CoxPredictRequest {
  std::shared_ptr<const CoxSaved> fit;
  std::vector<double> at;  // times of survival
  engine::curves::Scale limits = engine::curves::Scale::kLogLog;
  double alpha = 0.05;
};

struct CoxPredictions {
  std::vector<double> line;          // of each row
  std::vector<std::string> stratum;  // likewise; empty without strata
  std::vector<double> predictor, standardError;
  // Rows x times, a row's times side by side; NaN after the last time of the row's stratum.
  std::vector<double> survival, survivalError, lower, upper;
};

// The linear predictor is that less its value at the means of the fit's covariates, its error
// that of this difference; offsets are added to it.
//
// In   data   complete in the fit's columns
// Throws engine::Refusal with the row: a level or a stratum that the fit does not know
// Cost O(rows (p^2 (1 + times)))
CoxPredictions predictCox(const CoxSaved& fit, const frame::Frame& data,
                          const CoxPredictRequest& request);

// survmeth predict of fits of survmeth cox.
Declaration coxPredictDeclaration();

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_PREDICT_H_
