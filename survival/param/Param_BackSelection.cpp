// Backward elimination of covariates.
#include <cmath>

#include "Dist/Dist"
#include "survival/param/selection.h"

namespace {

struct Candidate {
  int covariate;
  double wald;
  double pValue;
};

// The covariate with the largest Wald p-value, the first one on ties; p-values that are not
// numbers are passed over. Without any the first covariate stands, with p-value 0.
Candidate leastSignificant(int p, const matrix* parameters, const matrix* covariance) {
  Candidate worst{0, 0.0, 0.0};
  for (int j = 1; j <= p; ++j) {
    const double ratio = parameters->vbget(j, 1) / sqr(-covariance->vbget(j, j));
    const double wald = std::fabs(ratio * ratio);
    const double pValue = pValChiSq(wald, 1.0);
    if (worst.covariate == 0 ? pValue >= 0.0 : pValue > worst.pValue) worst = {j, wald, pValue};
  }
  if (worst.covariate == 0) worst.covariate = 1;
  return worst;
}

// Input position of the j-th covariate still in the model; 0 when there is none.
int inputPosition(int j, int covariates, const matrixInt* order) {
  for (int position = 1; position <= covariates; ++position) {
    if (order->vbget(position, 1) == 0 && --j == 0) return position;
  }
  return 0;
}

}  // namespace

int Param_BackSelection(matrix* times, int n, int* p, int k, matrix* status, matrix* bounds,
                        matrix* covariates, matrix* weights, int* iterations, double tolerance,
                        int distribution, short useInitialValues, matrix* initialValues,
                        short fixIntercept, double interceptValue, int backwardOption,
                        double removeThreshold, matrix* parameters, double* logLik, double* logLik0,
                        matrix* gradient, matrix* hessian, matrix* covariance, matrix* gradient0,
                        matrix* hessian0, matrix* selectionSteps, int* selectionCount,
                        matrixInt* selectionOrder) {
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
  matrixInt::matCheck(selectionOrder, m, 1, 0.0);
  *selectionCount = 1;
  selection.fit(whole, covariates, parameters, gradient, iterations);

  while (*p > 1) {
    const int step = *selectionCount;
    selectionSteps->vbset(1, step, *p);
    const Candidate worst =
        backwardOption == 0 ? leastSignificant(*p, parameters, covariance) : Candidate{1, 0.0, 0.0};
    if (!(removeThreshold <= worst.pValue)) break;
    selectionSteps->vbset(2, step, worst.wald);
    selectionSteps->vbset(3, step, worst.pValue);
    selectionOrder->vbset(inputPosition(worst.covariate, whole, selectionOrder), 1, step);
    M_RemoveCol(covariates, n, *p, worst.covariate, covariates);
    *p -= 1;
    selection.fit(*p, covariates, parameters, gradient, iterations);
    *selectionCount = step + 1;
  }
  return 0;
}
