// What lasts of a Cox fit: all that predictions need, and none of its rows.
#ifndef ANALYSIS_COX_SAVED_H_
#define ANALYSIS_COX_SAVED_H_

#include <optional>
#include <string>
#include <vector>

#include "analysis/cox/answer.h"
#include "analysis/cox/request.h"
#include "analysis/jsonTree.h"
#include "engine/cox/baseline.h"
#include "frame/expression.h"
#include "frame/wanted.h"
#include "model/design.h"
#include "numerics/squareMatrix.h"
#include "report/jsonWriter.h"

namespace survmeth::analysis {

struct CoxSaved {
  model::Coding coding;                          // without the response
  std::optional<frame::Expression> entry, exit;  // its times
  // Of new data: what the model's columns were.
  std::vector<frame::Wanted> columns;
  std::vector<std::string> names;                // p columns of the design
  std::vector<double> coefficients;              // p; NaN: follows from the others
  std::vector<double> mean;                      // p, over the rows of the fit
  std::vector<std::vector<double>> stratumMean;  // of each of `strata`, p
  numerics::SquareMatrix covariance;
  std::vector<std::string> strata;  // by code; empty without
  // None under the exact treatments of ties.
  std::optional<engine::cox::HazardSums> hazard;
};

// What codes new data as those of the fit were; nothing of the coefficients yet.
CoxSaved savedCoding(const frame::Frame& data, const model::Coding& coding);
// Weighted means of the columns in each stratum; those of a stratum without rows are NaN.
std::vector<std::vector<double>> stratumMeans(const engine::cox::Problem& problem,
                                              std::size_t strata);

// In   data   those of the fit
// Throws BadOption (save) where a coefficient is infinite
CoxSaved coxSaved(const frame::Frame& data, const CoxAnswer& answer, const CoxRequest& request);

void writeCoxSaved(const CoxSaved& saved, report::JsonWriter& json);
// Throws JsonError.
CoxSaved readCoxSaved(const JsonNode& node);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_SAVED_H_
