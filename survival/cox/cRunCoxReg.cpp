// The Cox regression driver: fit or selection, criteria, baseline survival, residuals.
#include "Klikro/Klikro"
#include "survival/cox/cox.h"

int cRunCoxReg(matrix* time, int n, int p, int* finalCovariates, matrix* delta, matrix* X,
               matrix* stratumSizes, int S, int* iterations, double tolerance, int ties,
               matrixInt* distinctTimes, matrixInt* groupSize, matrixInt* groupEvents,
               matrixInt* censored, matrixInt* groupStart, int method, int removalTest,
               double entryThreshold, double removalThreshold, double alpha, int G, short survival,
               matrix* beta, matrix* criteria, matrix* tests, matrix* coefficients,
               matrix* baselineSurvival, matrix* meanSurvival, matrix* residuals, matrix* history,
               int* steps, matrixInt* order) {
  enum Method { kNoSelection = -1, kForward = 0, kBackward = 1 };

  matrix gradient(p, 1, 0);
  matrix secondDerivatives(p, p, 0);
  matrix inverse(p, p, 0);
  matrix gradient0(p, 1, 0);
  matrix inverse0(p, p, 0);
  double logLik = 0.0;
  double logLik0 = 0.0;
  int q = p;

  // Any other method fits nothing, and the tables then describe zeros.
  switch (method) {
    case kNoSelection:
      OptimizeCoxModel(p, delta, X, stratumSizes, S, iterations, tolerance, ties, distinctTimes,
                       groupSize, groupEvents, groupStart, &logLik, &logLik0, &gradient,
                       &secondDerivatives, &inverse, &gradient0, &inverse0, beta);
      break;
    case kForward:
      Cox_ForSelection(n, &q, delta, X, stratumSizes, S, iterations, tolerance, ties, distinctTimes,
                       groupSize, groupEvents, groupStart, entryThreshold, beta, &logLik, &logLik0,
                       &gradient, &secondDerivatives, &inverse, &gradient0, &inverse0, history,
                       steps, order);
      break;
    case kBackward:
      Cox_BackSelection(n, &q, delta, X, stratumSizes, S, iterations, tolerance, ties,
                        distinctTimes, groupSize, groupEvents, removalTest, removalThreshold,
                        groupStart, beta, &logLik, &logLik0, &gradient, &secondDerivatives,
                        &inverse, &gradient0, &inverse0, history, steps, order);
      break;
    default:
      break;
  }

  double z = 0.0;
  ComputeCritCox(n, q, censored, logLik, logLik0, *iterations, alpha, beta, &secondDerivatives,
                 &inverse, &z, &gradient0, &inverse0, criteria, coefficients, tests);
  if (survival == kTrue) {
    SurvFoncCox(n, q, X, stratumSizes, S, beta, distinctTimes, groupStart, groupEvents, G,
                baselineSurvival, meanSurvival);
    ResCox(time, n, q, delta, X, stratumSizes, S, beta, distinctTimes, groupSize, groupStart,
           baselineSurvival, residuals);
  }
  *finalCovariates = q;
  return 0;
}
