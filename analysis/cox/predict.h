// Predictions from a Cox fit, in memory or saved.
#ifndef ANALYSIS_COX_PREDICT_H_
#define ANALYSIS_COX_PREDICT_H_

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "analysis/cox/saved.h"
#include "analysis/cox/wishes.h"
#include "analysis/declare.h"
#include "engine/curves/quantiles.h"
#include "frame/frame.h"
#include "procedures/bootstrap.h"
#include "report/report.h"

namespace survmeth::analysis {

struct CoxPredictRequest : CoxWishes {
  std::shared_ptr<const CoxSaved> fit;
  double alpha = 0.05;
  bool drawn = true;  // the first curves are kept for a figure
  // Of the survival at `at`, by whoever has the rows of the fit; empty: none is wanted.
  std::function<procedures::Bootstrap(const frame::Frame& newData, numerics::Progress&)> bootstrap;
  procedures::BootstrapLimits bootstrapLimits = procedures::BootstrapLimits::kPercentile;
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

  // Of each row, or with subjects of each of these: who it is; survival at `at`, quantiles, and the first
  // curves, or all where they are asked for.
  std::vector<std::string> who;
  std::vector<std::vector<CoxSurvival>> at;
  std::vector<std::vector<engine::curves::Quantile>> quantiles;
  std::vector<CoxPredictedCurve> curves;
  std::optional<procedures::Bootstrap> bootstrap;  // of the survivals of `at`, in their order
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

// Who a row of a table of curves is about: lines as numbers, subjects by their names.
report::Column coxWhoColumn(const CoxPredictRequest& request,
                            const std::vector<std::string>& names);
report::Table coxSurvivalBootstrapTable(const CoxPredictions& made,
                                        const CoxPredictRequest& request);
report::Report describeCoxPredictions(const CoxPredictions& made, const CoxPredictRequest& request);
std::optional<report::Table> coxCurveTable(const CoxPredictions& made,
                                           const CoxPredictRequest& request);
std::optional<report::Figure> coxCurveFigure(const CoxPredictions& made,
                                             const CoxPredictRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_PREDICT_H_
