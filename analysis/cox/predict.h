// Predictions from a Cox fit, in memory or saved.
#ifndef ANALYSIS_COX_PREDICT_H_
#define ANALYSIS_COX_PREDICT_H_

#include <memory>
#include <string>
#include <vector>

#include "analysis/cox/saved.h"
#include "analysis/declare.h"
#include "engine/curves/limits.h"
#include "engine/curves/quantiles.h"
#include "frame/frame.h"
#include "report/report.h"

namespace survmeth::analysis {

// At which covariates a linear predictor is 0.
enum class CoxReference { kMeans, kStrata, kZero };

struct CoxPredictRequest {
  std::shared_ptr<const CoxSaved> fit;
  std::vector<double> at;         // times of survival
  std::vector<double> quantiles;  // shares that have failed
  engine::curves::Scale limits = engine::curves::Scale::kLogLog;
  double alpha = 0.05;
  CoxReference reference = CoxReference::kMeans;
  bool terms = false, expected = false, curves = false;
  std::string id;  // column of subjects of several rows

  // Whether the times of the new rows are asked for.
  bool needsTimes() const { return expected || !id.empty(); }
  bool needsHazard() const {
    return !at.empty() || !quantiles.empty() || expected || curves || !id.empty();
  }
};

// A survival exp(-H) and the hazard H it is of, with limits.
struct CoxSurvival {
  double time = kNone;
  double hazard = kNone, hazardError = kNone, hazardLower = kNone, hazardUpper = kNone;
  double survival = kNone, error = kNone, lower = kNone, upper = kNone;
};

// The curve of a row, or of a subject of several.
struct CoxPredictedCurve {
  std::string name;     // its line, or the subject
  std::string stratum;  // of its first row; empty without strata
  std::vector<CoxSurvival> points;
};

struct CoxPredictedTerm {
  std::string name;
  std::vector<double> value, standardError;  // of each row
};

struct CoxPredictions {
  std::vector<double> line;          // of each row
  std::vector<std::string> stratum;  // likewise; empty without strata
  std::vector<double> predictor, standardError;
  std::vector<CoxPredictedTerm> terms;
  std::vector<engine::cox::HazardValue> expected;  // events of each row in its time

  // Of each row, or with `id` of each subject: who it is; survival at `at`, quantiles, and the first
  // curves, or all where they are asked for.
  std::vector<std::string> who;
  std::vector<std::vector<CoxSurvival>> at;
  std::vector<std::vector<engine::curves::Quantile>> quantiles;
  std::vector<CoxPredictedCurve> curves;
};

// As many curves as a figure shows.
inline constexpr std::size_t kDrawnCurves = 12;

// The linear predictor is that less its value at the reference, its error that of this difference;
// offsets are added to it. Hazards of a row are those of its covariates from the first time on, of
// a subject those along its rows.
//
// In   data   complete in the fit's columns
// Throws engine::Refusal with the row: a level or a stratum that the fit does not know, rows of a
//        subject that overlap
// Cost O(rows (p^2 + p (times + event times of the fit)))
CoxPredictions predictCox(const CoxSaved& fit, const frame::Frame& data,
                          const CoxPredictRequest& request, numerics::Progress& progress);

// survmeth predict of fits of survmeth cox.
Declaration coxPredictDeclaration();

// --- Parts ---------------------------------------------------------------------------------------

// The fit's coding, with the response's times where they are asked for.
model::Coding coxPredictCoding(const CoxSaved& fit, const CoxPredictRequest& request);

report::Report describeCoxPredictions(const CoxPredictions& made, const CoxPredictRequest& request);
std::optional<report::Table> coxCurveTable(const CoxPredictions& made,
                                           const CoxPredictRequest& request);
std::optional<report::Figure> coxCurveFigure(const CoxPredictions& made,
                                             const CoxPredictRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_PREDICT_H_
