// The log-likelihood and its derivatives together.
#include "survival/param/evaluate.h"
#include "survival/param/param.h"

void ComputeLogLikeDerivativesParam(matrix* times, int n, int p, int k, matrix* status,
                                    matrix* bounds, matrix* covariates, matrix* parameters,
                                    matrix* weights, int distribution, double* logLik,
                                    matrix* gradient, matrix* hessian) {
  survival::param::evaluate({times, n, p, k, status, bounds, covariates, weights, distribution},
                            parameters, logLik, gradient, hessian);
}
