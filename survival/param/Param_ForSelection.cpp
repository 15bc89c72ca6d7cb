// Forward entry of covariates.
#include <algorithm>
#include <cmath>

#include "Dist/Dist"
#include "survival/param/selection.h"

namespace {

struct Candidate {
  int covariate;
  double statistic;
  double pValue;
  double logLik;
};

}  // namespace

int Param_ForSelection(matrix* times, int n, int* p, int k, matrix* status, matrix* bounds,
                       matrix* covariates, matrix* weights, int* iterations, double tolerance,
                       int distribution, short useInitialValues, matrix* initialValues,
                       short fixIntercept, double interceptValue, double enterThreshold,
                       matrix* parameters, double* logLik, double* logLik0, matrix* gradient,
                       matrix* hessian, matrix* covariance, matrix* gradient0, matrix* hessian0,
                       matrix* selectionSteps, int* selectionCount, matrixInt* selectionOrder) {
  using namespace survival::param;
  const int whole = *p;
  const Selection selection{{times, n, whole, k, status, bounds, covariates, weights, distribution},
                            *iterations,
                            tolerance,
                            useInitialValues,
                            initialValues,
                            fixIntercept,
                            interceptValue,
                            logLik,
                            logLik0,
                            hessian,
                            covariance,
                            gradient0,
                            hessian0};
  const int m = parameterCount(whole, k);
  requireMatrix(m, m);
  selectionOrder->ReInit();
  *selectionCount = 1;

  matrix outside(std::max(whole, 0), 1, 1);
  matrix chosen(whole < 1 ? 0 : n, std::max(whole, 0), 0);
  int inside = 0;
  double reference = 0.0;
  while (inside < whole) {
    const int size = inside + 1;
    Candidate best{0, 0.0, 0.0, 0.0};
    matrix trial(parameterCount(size, k), 1, 0);
    for (int j = 1; j <= whole; ++j) {
      if (outside.vbget(j, 1) == 0.0) continue;
      outside.vbset(j, 1, 0.0);
      M_RemoveColsInList(covariates, n, whole, &outside, &chosen);
      outside.vbset(j, 1, 1.0);
      selection.fit(size, &chosen, &trial, gradient, iterations);
      // Each first candidate is compared with its own start, which stands for the null model.
      const double before = *selectionCount == 1 ? *logLik0 : reference;
      const double statistic = -2.0 * (before - *logLik);
      // Callers' published steps have the size of the whole candidate model here, not 1.
      const double pValue = before - *logLik >= 0.0 ? 0.0 : pValChiSq(statistic, size);
      if (pValue > 0.0 && (best.covariate == 0 || pValue < best.pValue)) {
        best = {j, statistic, pValue, *logLik};
      }
    }
    if (best.covariate == 0 || enterThreshold < best.pValue) break;
    const int step = *selectionCount;
    selectionSteps->vbset(1, step, step);
    selectionSteps->vbset(2, step, best.statistic);
    selectionSteps->vbset(3, step, best.pValue);
    outside.vbset(best.covariate, 1, 0.0);
    selectionOrder->vbset(best.covariate, 1, step);
    reference = best.logLik;
    ++inside;
    *selectionCount = step + 1;
    if (*selectionCount == whole) break;
  }

  if (inside == 0) {
    selection.fit(std::max(whole, 0), covariates, parameters, gradient, iterations);
  } else {
    M_RemoveColsInList(covariates, n, whole, &outside, &chosen);
    matrix estimates(parameterCount(inside, k), 1, 0);
    selection.fit(inside, &chosen, &estimates, gradient, iterations);
    estimates.copyMatTo(parameters);
    M_Duplicate(&chosen, n, inside, covariates, 1, 1, 1, 1);
    *p = inside;
  }
  return 0;
}
