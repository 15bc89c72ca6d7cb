// The log-likelihood of a parameter vector.
#include "survival/param/evaluate.h"
#include "survival/param/param.h"

void ComputeLogLikeParam(matrix* times, int n, int p, int k, matrix* status, matrix* bounds,
                         matrix* covariates, matrix* parameters, matrix* weights, int distribution,
                         double* logLik) {
  survival::param::evaluate({times, n, p, k, status, bounds, covariates, weights, distribution},
                            parameters, logLik, nullptr, nullptr);
}
