// What survmeth finegray is asked, what it finds and how it says it.
#ifndef ANALYSIS_FINEGRAY_FINEGRAY_H_
#define ANALYSIS_FINEGRAY_FINEGRAY_H_

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "analysis/cox/request.h"
#include "analysis/cox/smooth.h"
#include "analysis/finegray/incidence.h"
#include "engine/cox/baseline.h"
#include "engine/finegray/fit.h"
#include "engine/finegray/proportionality.h"
#include "frame/frame.h"
#include "model/design.h"
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

// The test of proportional subdistribution hazards, with the residuals' smooth of each term.
struct FineGrayProportionality {
  engine::finegray::Proportionality test;
  std::vector<Smooth> smooth;
};

// The hazards of a fit, made when they are first asked for.
class FineGrayHazard {
 public:
  // Throws numerics::Cancelled
  // Cost the first time that of one iteration of the fit
  const engine::cox::BaselineHazard& of(const engine::finegray::Fit& fit,
                                        numerics::Progress& progress) const;

 private:
  struct Made {
    std::mutex mutex;
    std::optional<engine::cox::BaselineHazard> hazard;
  };
  std::shared_ptr<Made> made_ = std::make_shared<Made>();
};

// The fits of one type of event.
struct FineGrayOfType {
  std::string label;
  engine::finegray::Fit fit;
  std::optional<engine::cox::Fit> causeSpecific;  // the others censored
  std::optional<FineGrayProportionality> zph;
  // Of each stratum with rows, at the times asked for and the covariates' means.
  std::vector<std::vector<IncidenceAtTime>> at;

  const engine::cox::BaselineHazard& hazard(numerics::Progress& progress) const {
    return hazard_.of(fit, progress);
  }

 private:
  FineGrayHazard hazard_;
};

struct FineGrayAnswer {
  model::EventTypes event;
  std::string status;              // its column
  std::vector<std::string> names;  // of the columns of the design
  std::vector<std::string> terms;
  std::vector<double> means;        // of the columns, weighted
  std::vector<std::string> strata;  // by code; empty without strata
  model::Coding coding;             // without the status
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
std::vector<std::vector<IncidenceAtTime>> fineGrayCurves(const FineGrayOfType& type,
                                                         const FineGrayAnswer& answer,
                                                         const FineGrayRequest& request,
                                                         numerics::Progress& progress);

report::Report describeFineGray(const FineGrayAnswer& answer, const FineGrayRequest& request);

// "baseline": incidence of each type of event at the covariates' means, at its event times.
std::optional<report::Table> fineGrayBaseline(const FineGrayAnswer& answer,
                                              const FineGrayRequest& request,
                                              numerics::Progress& progress);
// "residuals": of the kind of Schoenfeld's, a row for each event time.
std::optional<report::Table> fineGrayResiduals(const FineGrayAnswer& answer,
                                               const FineGrayRequest& request);
// "the incidence before the time", "the rank of the time", ...
std::string fineGrayTime(engine::cox::TimeTransform transform);
// "proportionality": for each type of event the tests of its terms.
report::Table fineGrayProportionality(const FineGrayAnswer& answer);
// "schoenfeld": scaled residuals against transformed time, a panel for each type and term.
std::optional<report::Figure> fineGraySchoenfeld(const FineGrayAnswer& answer,
                                                 const FineGrayRequest& request);
// "incidence": that baseline, a curve for each type of event, a panel for each stratum.
std::optional<report::Figure> fineGrayFigure(const FineGrayAnswer& answer,
                                             const FineGrayRequest& request,
                                             numerics::Progress& progress);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_FINEGRAY_FINEGRAY_H_
