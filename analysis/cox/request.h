// What survmeth cox and survmeth clogit are asked, and the model that it says.
#ifndef ANALYSIS_COX_REQUEST_H_
#define ANALYSIS_COX_REQUEST_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/cox/wishes.h"
#include "engine/cox/proportionality.h"
#include "frame/frame.h"
#include "frame/wanted.h"
#include "model/design.h"
#include "model/formula.h"

namespace survmeth::analysis {

enum class CoxSelection { kNone, kBackward, kForward, kBoth };
enum class CoxLimits { kWald, kProfile };
enum class CoxAliased { kRefuse, kDrop };
enum class CoxOrigin { kMeans, kZero };

struct CoxRequest : CoxWishes {
  std::string formula;
  // The parts of a formula in options of their own; either they or the formula.
  std::string time, event, entry, strata;
  std::vector<std::string> covariates;

  std::vector<std::string> eventValues, factors;
  std::vector<std::string> references;  // "column=level"
  std::string weights, cluster, id;
  engine::WeightKind weightsAre = engine::WeightKind::kFrequencies;
  bool robust = false;
  engine::cox::Ties ties = engine::cox::Ties::kEfron;
  std::optional<double> tieTolerance;
  CoxAliased aliased = CoxAliased::kRefuse;
  double alpha = 0.05;
  CoxLimits limits = CoxLimits::kWald;
  bool dropOne = false;
  std::string versus;
  // The transform of the test of proportional hazards; none: no test.
  std::optional<engine::cox::TimeTransform> zph;
  bool residuals = false, byCluster = false;
  std::vector<std::string> residualKinds;  // empty: those that suit
  bool baseline = false;
  CoxOrigin origin = CoxOrigin::kMeans;
  bool covariance = false;
  CoxSelection select = CoxSelection::kNone;
  std::optional<double> remove, enter;  // p-values
  std::string criterion;                // p, aic or bic; empty: p
  std::vector<std::string> force;       // terms
  std::optional<double> bootstrap, seed;
  std::string bootstrapLimits;  // percentile, basic or bca; empty: percentile
  bool firth = false;           // penalised by the determinant
  std::optional<double> ridge;  // its theta
  bool ridgeRaw = false;
  std::string newData;  // what the wishes are of; empty: there are none
  bool cases = false;   // clogit: the left side says which rows are cases

  bool isPenalised() const { return firth || ridge; }
  double tolerance() const { return tieTolerance.value_or(engine::risk::kTieTolerance); }
};

// Refuses options that do not go together; throws BadOption.
void checkCox(const CoxRequest& request);

// The model of a request. `columns` are those that there are: "." stands for the ones that neither
// the formula nor an option names.
// Throws frame::ExpressionError, BadOption
model::Formula coxFormula(const CoxRequest& request, const std::vector<std::string>& columns);

// The terms of --versus beside the response, strata and offsets of `formula`.
model::Formula coxVersus(const CoxRequest& request, const model::Formula& formula,
                         const std::vector<std::string>& columns);

// Factors and reference levels that the request names; a column with a reference is a factor.
model::CodingOptions coxCoding(const CoxRequest& request);

// Asks for the columns of the formulas.
void wantCoxColumns(const CoxRequest& request, const std::vector<std::string>& header,
                    std::vector<frame::Wanted>& wanted);

std::vector<std::uint32_t> coxRows(const frame::Frame& data, const CoxRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_REQUEST_H_
