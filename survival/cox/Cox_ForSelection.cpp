// Forward selection of the covariates of a Cox model.
#include <algorithm>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/cox/cox.h"
#include "survival/cox/strata.h"

namespace {

// What a candidate's fit leaves behind besides its log-likelihoods.
struct Scratch {
  explicit Scratch(int order)
      : gradient(order, 1, 0),
        secondDerivatives(order, order, 0),
        inverse(order, order, 0),
        gradient0(order, 1, 0),
        inverse0(order, order, 0),
        beta(order, 1, 0) {}
  matrix gradient;
  matrix secondDerivatives;
  matrix inverse;
  matrix gradient0;
  matrix inverse0;
  matrix beta;
};

int inModel(const matrix& outside, int p) {
  int count = 0;
  for (int j = 1; j <= p; ++j) count += outside.vbget(j, 1) == 0.0 ? 1 : 0;
  return count;
}

}  // namespace

int Cox_ForSelection(int n, int* q, matrix* delta, matrix* X, matrix* stratumSizes, int S,
                     int* iterations, double tolerance, int ties, matrixInt* distinctTimes,
                     matrixInt* groupSize, matrixInt* groupEvents, matrixInt* groupStart,
                     double threshold, matrix* beta, double* logLik, double* logLik0,
                     matrix* gradient, matrix* secondDerivatives, matrix* inverse,
                     matrix* gradient0, matrix* inverse0, matrix* history, int* step,
                     matrixInt* order) {
  const int p = survival::cox::coefficientsWithin(*q, X, history);
  const int limit = *iterations;
  order->ReInit();
  matrix outside(p, 1, 1);  // 1 for a candidate, 0 for a covariate of the model
  *step = 1;
  double previous = 0.0;

  do {
    matrix logLiks(p, 1, 0);
    matrix pValues(p, 1, 0);
    for (int i = 1; i <= p; ++i) {
      if (outside.vbget(i, 1) == 0.0) continue;
      outside.vbset(i, 1, 0.0);
      const int size = inModel(outside, p);
      matrix columns(n, size, 0);
      M_RemoveColsInList(X, n, p, &outside, &columns);
      Scratch fit(size);
      int fitIterations = limit;
      double reached = 0.0;
      double start = 0.0;
      OptimizeCoxModel(size, delta, &columns, stratumSizes, S, &fitIterations, tolerance, ties,
                       distinctTimes, groupSize, groupEvents, groupStart, &reached, &start,
                       &fit.gradient, &fit.secondDerivatives, &fit.inverse, &fit.gradient0,
                       &fit.inverse0, &fit.beta);
      if (*step == 1) previous = start;
      logLiks.vbset(i, 1, reached);
      // Degrees of freedom: the whole model's, not the one that the candidate adds. Analyses made
      // so far chose their models by this test.
      const double pValue =
          previous - reached >= 0.0 ? 0.0 : pValChiSq(-2.0 * (previous - reached), size);
      pValues.vbset(i, 1, pValue);
      outside.vbset(i, 1, 1.0);
    }

    int entering = 0;
    double smallest = 1.0;
    for (int i = 1; i <= p; ++i) {
      const double pValue = pValues.vbget(i, 1);
      if (pValue != 0.0 && pValue < smallest) {
        smallest = pValue;
        entering = i;
      }
    }
    if (entering == 0 || smallest > threshold) break;

    const double entered = logLiks.vbget(entering, 1);
    history->vbset(1, *step, *step);
    history->vbset(2, *step, -2.0 * (previous - entered));
    history->vbset(3, *step, smallest);
    outside.vbset(entering, 1, 0.0);
    order->vbset(entering, 1, *step);
    previous = entered;
    ++*step;
  } while (*step != p);  // the last covariate is never tried

  const int size = inModel(outside, p);
  *iterations = limit;
  if (size == 0) {
    // No covariate entered: callers get the model of all of them.
    return OptimizeCoxModel(p, delta, X, stratumSizes, S, iterations, tolerance, ties,
                            distinctTimes, groupSize, groupEvents, groupStart, logLik, logLik0,
                            gradient, secondDerivatives, inverse, gradient0, inverse0, beta);
  }
  matrix columns(n, size, 0);
  M_RemoveColsInList(X, n, p, &outside, &columns);
  matrix estimates(size, 1, 0);
  for (matrix* square : {secondDerivatives, inverse, inverse0}) {
    matrix::matCheck(square, size, size, 0.0);
  }
  matrix::matCheck(gradient0, size, 1, 0.0);
  OptimizeCoxModel(size, delta, &columns, stratumSizes, S, iterations, tolerance, ties,
                   distinctTimes, groupSize, groupEvents, groupStart, logLik, logLik0, gradient,
                   secondDerivatives, inverse, gradient0, inverse0, &estimates);
  V_Duplicate(&estimates, 1, 1, size, beta, 1, 1);
  M_CopyBlock(&columns, 1, n, 1, size, X);
  *q = size;
  return 0;
}
