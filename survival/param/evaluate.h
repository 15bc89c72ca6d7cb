// The pass over the rows behind the log-likelihood and its derivatives.
#ifndef SURVIVAL_PARAM_EVALUATE_H_
#define SURVIVAL_PARAM_EVALUATE_H_

#include "survival/param/model.h"

namespace survival::param {

// logLik := the log-likelihood, gradient and hessian := the derivatives; logLik may be null, or
// gradient and hessian both. The value does not depend on whether derivatives are asked for.
void evaluate(const Model& model, matrix* parameters, double* logLik, matrix* gradient,
              matrix* hessian);

}  // namespace survival::param

#endif  // SURVIVAL_PARAM_EVALUATE_H_
