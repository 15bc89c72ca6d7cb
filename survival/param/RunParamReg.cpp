// The whole parametric regression.
#include <algorithm>

#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "survival/param/model.h"
#include "survival/param/param.h"

namespace numerics = survmeth::numerics;

namespace {

enum Selection { kNone = -1, kForward = 0, kBackward = 1 };
constexpr double kIntervalCensored = 3.0;

// Rows past the end of every column have nothing to transform.
void takeLogarithms(matrix* times, int n, const matrix* status, matrix* bounds) {
  const int rows = std::min(n, std::max(times->count(), bounds->count()));
  for (int i = 1; i <= rows; ++i) {
    times->vbset(i, 1, numerics::log(times->vbget(i, 1)));
    if (status->vbget(i, 1) != kIntervalCensored) continue;
    for (int j = 1; j <= 2; ++j) bounds->vbset(i, j, numerics::log(bounds->vbget(i, j)));
  }
}

}  // namespace

int RunParamReg(matrix* times, int n, int p, int* nCovariatesOut, int k, matrix* status,
                matrix* bounds, matrix* covariates, matrix* weights, int iterations,
                double tolerance, short logTimes, int distribution, short noCovariates,
                int selectionMethod, int backwardOption, double enterThreshold,
                double removeThreshold, double alpha, short useInitialValues, matrix* initialValues,
                short fixIntercept, double interceptValue, matrix* parameters,
                matrix* fitStatistics, matrix* tests, matrix* coefficients, matrix* survivalOut,
                matrix* residualsOut, matrix* probabilitiesOut, matrix* quantilesOut,
                matrix* selectionSteps, int* selectionCount, matrixInt* selectionOrder) {
  int modelCovariates = noCovariates == kTrue ? 0 : p;
  if (logTimes == kTrue) takeLogarithms(times, n, status, bounds);

  const int m = survival::param::parameterCount(modelCovariates, k);
  survival::param::requireMatrix(m, m);
  matrix gradient(m, 1, 0);
  matrix hessian(m, m, 0);
  matrix covariance(m, m, 0);
  matrix gradient0(m, 1, 0);
  matrix hessian0(m, m, 0);
  double logLik = 0.0;
  double logLik0 = 0.0;
  int steps = iterations;
  switch (selectionMethod) {
    case kNone: {
      const int code = OptimizeParamModel(
          times, n, modelCovariates, k, status, bounds, covariates, weights, &steps, tolerance,
          distribution, useInitialValues, initialValues, fixIntercept, interceptValue, &logLik,
          &logLik0, &gradient, &hessian, &covariance, &gradient0, &hessian0, parameters);
      if (code < 0) return -5;
      if (steps == iterations) return -1;
      break;
    }
    case kForward:
      Param_ForSelection(times, n, &modelCovariates, k, status, bounds, covariates, weights, &steps,
                         tolerance, distribution, useInitialValues, initialValues, fixIntercept,
                         interceptValue, enterThreshold, parameters, &logLik, &logLik0, &gradient,
                         &hessian, &covariance, &gradient0, &hessian0, selectionSteps,
                         selectionCount, selectionOrder);
      break;
    case kBackward:
      Param_BackSelection(times, n, &modelCovariates, k, status, bounds, covariates, weights,
                          &steps, tolerance, distribution, useInitialValues, initialValues,
                          fixIntercept, interceptValue, backwardOption, removeThreshold, parameters,
                          &logLik, &logLik0, &gradient, &hessian, &covariance, &gradient0,
                          &hessian0, selectionSteps, selectionCount, selectionOrder);
      break;
    default:
      break;
  }

  double z = 0.0;
  ComputeCritParam(n, modelCovariates, k, logLik, logLik0, steps, alpha, parameters, &hessian,
                   &covariance, &z, &gradient0, &hessian0, fitStatistics, coefficients, tests);
  ResParam(times, n, modelCovariates, distribution, logTimes, covariates, parameters, survivalOut,
           probabilitiesOut, residualsOut, quantilesOut);
  *nCovariatesOut = modelCovariates;
  return 0;
}
