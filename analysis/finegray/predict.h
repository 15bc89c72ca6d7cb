// Predicted incidences from fits of survmeth finegray, in memory or saved.
#ifndef ANALYSIS_FINEGRAY_PREDICT_H_
#define ANALYSIS_FINEGRAY_PREDICT_H_

#include <memory>
#include <string>
#include <vector>

#include "analysis/cox/predict.h"
#include "analysis/finegray/finegray.h"

namespace survmeth::analysis {

// What lasts of a fit: of each type of event what a proportional-hazards fit keeps, hazards being
// those of the subdistribution.
struct FineGraySaved {
  std::string status;               // its column
  std::vector<std::string> events;  // types
  std::vector<CoxSaved> fits;
};

// In   data   those of the fit
// Throws BadOption (save) where there is no fit, numerics::Cancelled
FineGraySaved fineGraySaved(const frame::Frame& data, const FineGrayAnswer& answer,
                            const FineGrayRequest& request, numerics::Progress& progress);
void writeFineGraySaved(const FineGraySaved& saved, report::JsonWriter& json);
// Throws JsonError.
FineGraySaved readFineGraySaved(const JsonNode& node);

struct FineGrayPredictRequest {
  std::shared_ptr<const FineGraySaved> fit;
  std::vector<double> at;
  IncidenceScale scale = IncidenceScale::kComplementary;
  double alpha = 0.05;
  bool curves = false;
};

// Of each type of event.
struct FineGrayPredictions {
  std::vector<CoxPredictions> types;
};

// survmeth predict of fits of survmeth finegray.
Declaration fineGrayPredictDeclaration();

}  // namespace survmeth::analysis

#endif  // ANALYSIS_FINEGRAY_PREDICT_H_
