// What of predictions is wanted: the options that survmeth predict and survmeth cox with new data
// have in common.
#ifndef ANALYSIS_COX_WISHES_H_
#define ANALYSIS_COX_WISHES_H_

#include <functional>
#include <string>
#include <vector>

#include "analysis/declare.h"
#include "engine/curves/limits.h"

namespace survmeth::analysis {

// At which covariates a linear predictor is 0.
enum class CoxReference { kMeans, kStrata, kZero };

inline constexpr const char* kSubjectHelp =
    "Column of subjects whose rows follow each other: one curve for each subject";

struct CoxWishes {
  std::vector<double> at;         // times of survival
  std::vector<double> quantiles;  // shares that have failed
  engine::curves::Scale survivalLimits = engine::curves::Scale::kLogLog;
  CoxReference centre = CoxReference::kMeans;
  bool parts = false, expected = false, curves = false;  // parts: of each term
  std::string subject;                                   // column of subjects of several rows

  // Whether the times of the new rows are asked for.
  bool needsTimes() const { return expected || !subject.empty(); }
  bool needsHazard() const {
    return !at.empty() || !quantiles.empty() || expected || curves || !subject.empty();
  }
};

// Adds the options of Request's wishes but for the column of subjects. `reference` is the name of the
// one of which an analysis has another; `has` tells whether there is anything to predict.
template <class Request, class Result>
void addWishes(Declaring<Request, Result>& made, const char* reference,
               const std::function<bool(const Request&)>& has) {
  using engine::curves::Scale;
  made.numbers("at", &CoxWishes::at,
               {.least = 0, .ascending = true, .expected = "ascending numbers not below 0"},
               "Times of predicted survival")
      .numbers("quantiles", &CoxWishes::quantiles,
               {.least = 0,
                .most = 1,
                .open = true,
                .ascending = true,
                .expected = "ascending numbers between 0 and 1"},
               "Shares that have failed by the times to be predicted; 0.5: the median", "P,Q")
      .template choice<Scale>(
          "conf", &CoxWishes::survivalLimits,
          {{"log-log", Scale::kLogLog}, {"log", Scale::kLog}, {"plain", Scale::kPlain}},
          "Limits of survival")
      .plannedWhere(has)
      .template choice<CoxReference>(
          reference, &CoxWishes::centre,
          {{"means", CoxReference::kMeans},
           {"strata", CoxReference::kStrata},
           {"zero", CoxReference::kZero}},
          "Covariates at which linear predictors and terms are 0; strata: means of the row's")
      .plannedWhere(has)
      .flag("terms", &CoxWishes::parts, "Each term's part of the linear predictor")
      .flag("expected", &CoxWishes::expected,
            "Expected events in the time of each row, whose columns are the fit's")
      .table("curves", &CoxWishes::curves, "curves",
             "File for the curves at all event times (CSV)");
}

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_WISHES_H_
