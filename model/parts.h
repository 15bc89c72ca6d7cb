// The parts of a formula that are no terms: response, strata, clusters, offsets.
#ifndef MODEL_PARTS_H_
#define MODEL_PARTS_H_

#include "model/formula.h"

namespace survmeth::model {

// Whether it is a call of strata(), cluster() or offset().
bool isBeside(const Expression& expression);

// An operator of interactions: * : / %in% ^.
bool isCrossing(const Expression& expression);

// Takes Surv(...) apart; its arguments go by their names, then by their places.
// Throws frame::ExpressionError
void readResponse(const Expression& left, Formula& formula);

// Collects strata(), cluster() and offset() of the sums of the right side.
// Throws frame::ExpressionError
void readBeside(const Expression& expression, Formula& formula);

}  // namespace survmeth::model

#endif  // MODEL_PARTS_H_
