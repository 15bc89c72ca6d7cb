// Backward selection of the covariates of a Cox model.
#include <cmath>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/cox/cox.h"
#include "survival/cox/strata.h"

namespace {

// The least significant covariate by Wald's test.
struct Weakest {
  int position = 0;  // among the covariates of the model; 0 when no p-value is above 0
  double wald = 0.0;
  double pValue = 0.0;
};

Weakest weakestOf(int q, const matrix* beta, const matrix* inverse) {
  Weakest weakest;
  for (int i = 1; i <= q; ++i) {
    const double ratio = std::fabs(beta->vbget(i, 1) / sqr(-inverse->vbget(i, i)));
    const double wald = ratio * ratio;
    const double pValue = pValChiSq(wald, 1.0);
    if (pValue > weakest.pValue) weakest = {i, wald, pValue};
  }
  return weakest;
}

// Index in the starting list of the covariate that stands at `position` of those not removed.
int startingIndex(int position, int p, const matrixInt* order) {
  for (int index = 1; index <= p; ++index) {
    if (order->vbget(index, 1) == 0 && --position == 0) return index;
  }
  return 0;
}

}  // namespace

int Cox_BackSelection(int n, int* q, matrix* delta, matrix* X, matrix* stratumSizes, int S,
                      int* iterations, double tolerance, int ties, matrixInt* distinctTimes,
                      matrixInt* groupSize, matrixInt* groupEvents, int removalTest,
                      double threshold, matrixInt* groupStart, matrix* beta, double* logLik,
                      double* logLik0, matrix* gradient, matrix* secondDerivatives, matrix* inverse,
                      matrix* gradient0, matrix* inverse0, matrix* history, int* step,
                      matrixInt* order) {
  const int p = survival::cox::coefficientsWithin(*q, X, history);
  const int limit = *iterations;
  matrixInt::matCheck(order, p, 1, 0.0);
  *step = 1;
  int size = p;
  const auto fit = [&] {
    for (matrix* square : {secondDerivatives, inverse, inverse0}) {
      matrix::matCheck(square, size, size, 0.0);
    }
    matrix::matCheck(gradient0, size, 1, 0.0);
    *iterations = limit;
    OptimizeCoxModel(size, delta, X, stratumSizes, S, iterations, tolerance, ties, distinctTimes,
                     groupSize, groupEvents, groupStart, logLik, logLik0, gradient,
                     secondDerivatives, inverse, gradient0, inverse0, beta);
  };
  fit();

  do {
    // On the pass that removes nothing as well.
    history->vbset(1, *step, size);
    const Weakest weakest = removalTest == 0 ? weakestOf(size, beta, inverse) : Weakest{};
    if (weakest.position == 0 || !(weakest.pValue >= threshold) || size == 1) break;
    history->vbset(2, *step, weakest.wald);
    history->vbset(3, *step, weakest.pValue);
    order->vbset(startingIndex(weakest.position, p, order), 1, *step);
    matrix kept(n, size - 1, 0);
    M_RemoveCol(X, n, size, weakest.position, &kept);
    M_CopyBlock(&kept, 1, n, 1, size - 1, X);
    --size;
    fit();
    ++*step;
  } while (size != 1);

  *q -= p - size;
  return 0;
}
