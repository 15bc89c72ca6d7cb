// The runs of survmeth cox and survmeth clogit.
#ifndef ANALYSIS_COX_RUN_H_
#define ANALYSIS_COX_RUN_H_

#include "analysis/cox/answer.h"
#include "analysis/cox/request.h"
#include "frame/frame.h"
#include "model/response.h"
#include "numerics/progress.h"

namespace survmeth::analysis {

// In   data   rows that are complete for the formula; what --versus needs besides may be missing
// Throws engine::Refusal, BadOption, frame::ExpressionError, numerics::Cancelled
CoxAnswer fitCox(const frame::Frame& data, const CoxRequest& request, numerics::Progress& progress);

// The model of a formula alone, of rows that a bootstrap has drawn: what the request asks besides is left
// out, and a fit that is no answer is not refused.
//
// Throws engine::Refusal: no event, too few values for a basis, columns without numbers
CoxAnswer refitCox(const frame::Frame& data, const CoxRequest& request,
                   const model::Formula& formula);

// --- Parts of the run ----------------------------------------------------------------------------

// What a fit takes, with the storage behind it.
struct CoxInput {
  model::Formula formula;
  model::ModelData model;
  engine::Rows rows;
  engine::cox::Options options;
};

// Throws engine::Refusal for a factor of more levels than a person can have meant.
void requireCoxLevels(const CoxRequest& request, const model::Coding& coding);

// Throws engine::Refusal for a column so wide or so narrow that its squares are no numbers.
void requireCoxUnits(const engine::Design& design);

// Fills answer.columns and answer.terms from the design.
void describeCoxColumns(const CoxInput& input, CoxAnswer& answer);

// Throws engine::Refusal where the fit is no answer: no event counts, it does not converge, nothing varies, or columns
// depend on each other and --aliased drop is not there.
void requireCoxAnswer(const CoxRequest& request, const CoxInput& input, const CoxAnswer& answer);

// Notes what the fit says of its columns: constant, dependent, separating, too many.
void noteCoxOutcomes(const CoxRequest& request, const CoxInput& input, CoxAnswer& answer);

// The likelihood-ratio test against --versus.
// Throws engine::Refusal (kFormula) where neither model is nested in the other, and where a row
// lacks a value of --versus alone
CoxComparison compareCox(const frame::Frame& data, const CoxRequest& request, const CoxInput& input,
                         const engine::cox::Fit& fit, numerics::Progress& progress);

// Tests, hazards and residuals of a fit, as they are asked for.
void followUp(const frame::Frame& data, const CoxRequest& request, const CoxInput& input,
              CoxAnswer& answer);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_RUN_H_
