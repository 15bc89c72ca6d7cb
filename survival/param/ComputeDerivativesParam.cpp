// The derivatives of the log-likelihood.
#include "survival/param/evaluate.h"
#include "survival/param/param.h"

void ComputeDerivativesParam(matrix* times, int n, int p, int k, matrix* status, matrix* bounds,
                             matrix* covariates, matrix* parameters, matrix* weights,
                             int distribution, matrix* gradient, matrix* hessian) {
  survival::param::evaluate({times, n, p, k, status, bounds, covariates, weights, distribution},
                            parameters, nullptr, gradient, hessian);
}
