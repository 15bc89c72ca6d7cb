// What survmeth finegray is asked, what it finds and how it says it.
#ifndef ANALYSIS_FINEGRAY_FINEGRAY_H_
#define ANALYSIS_FINEGRAY_FINEGRAY_H_

#include <optional>
#include <string>
#include <vector>

#include "analysis/cox/request.h"
#include "analysis/finegray/incidence.h"
#include "engine/finegray/fit.h"
#include "frame/frame.h"
#include "model/eventTypes.h"
#include "numerics/progress.h"
#include "report/report.h"

namespace survmeth::analysis {

// Formula, weights, clusters, factors, references and alpha are those of the base.
struct FineGrayRequest : CoxRequest {
  std::string cause, censor;  // statuses
  std::string censoring;      // column of strata of the censoring
  engine::finegray::CensoringTies censoringTies = engine::finegray::CensoringTies::kAtRisk;
  engine::finegray::Errors errors = engine::finegray::Errors::kEstimatedWeights;
  bool causeSpecific = false;
  std::vector<double> incidenceTimes;  // of the incidence at the covariates' means
  IncidenceScale incidenceScale = IncidenceScale::kComplementary;
};

// The fits of one type of event.
struct FineGrayOfType {
  std::string label;
  engine::finegray::Fit fit;
  std::optional<engine::cox::Fit> causeSpecific;  // the others censored
  // Of each stratum with rows, at the times asked for and the covariates' means.
  std::vector<std::vector<IncidenceAtTime>> at;
};

struct FineGrayAnswer {
  model::EventTypes event;
  std::string status;              // its column
  std::vector<std::string> names;  // of the columns of the design
  std::vector<std::string> terms;
  std::vector<double> means;        // of the columns, weighted
  std::vector<std::string> strata;  // by code; empty without strata
  std::vector<FineGrayOfType> types;
  double alpha = 0.05;
};

void wantFineGrayColumns(const FineGrayRequest& request, const std::vector<std::string>& header,
                         std::vector<frame::Wanted>& wanted);
std::vector<std::uint32_t> fineGrayRows(const frame::Frame& data, const FineGrayRequest& request);

// In   data   rows that are complete for the formula
// Throws engine::Refusal, BadOption, frame::ExpressionError, numerics::Cancelled
FineGrayAnswer fitFineGray(const frame::Frame& data, const FineGrayRequest& request,
                           numerics::Progress& progress);

// The incidence of one type of event at the covariates' means, of each stratum with rows.
// Cost that of one iteration of the fit
std::vector<std::vector<IncidenceAtTime>> fineGrayCurves(const FineGrayOfType& type,
                                                         const FineGrayAnswer& answer,
                                                         const FineGrayRequest& request);

report::Report describeFineGray(const FineGrayAnswer& answer, const FineGrayRequest& request);

// "baseline": incidence of each type of event at the covariates' means, at its event times.
std::optional<report::Table> fineGrayBaseline(const FineGrayAnswer& answer,
                                              const FineGrayRequest& request);
// "residuals": of the kind of Schoenfeld's, a row for each event time.
std::optional<report::Table> fineGrayResiduals(const FineGrayAnswer& answer,
                                               const FineGrayRequest& request);
// "incidence": that baseline, a curve for each type of event, a panel for each stratum.
std::optional<report::Figure> fineGrayFigure(const FineGrayAnswer& answer,
                                             const FineGrayRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_FINEGRAY_FINEGRAY_H_
