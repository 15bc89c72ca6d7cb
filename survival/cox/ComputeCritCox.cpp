// Fit criteria, global tests and the table of coefficients of a Cox model.
#include <algorithm>
#include <cmath>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "survival/cox/cox.h"
#include "survival/cox/strata.h"

namespace numerics = survmeth::numerics;

namespace {

// Upper limits of a hazard ratio past exp of this would come too near the overflow.
constexpr double kLargestExponent = 709.0;

void fillCriteria(int n, int q, int censored, double logLik, double logLik0, int iterations,
                  matrix* criteria) {
  const double events = static_cast<double>(n) - censored;
  const double logEvents = numerics::log(events);
  const double models[2][6] = {
      {events, 0.0, -2.0 * logLik0, -2.0 * logLik0, 0.0 * logEvents - 2.0 * logLik0, 1.0},
      {events, static_cast<double>(q), -2.0 * logLik, 2.0 * q - 2.0 * logLik,
       q * logEvents - 2.0 * logLik, static_cast<double>(iterations)}};
  for (int column = 1; column <= 2; ++column) {
    for (int row = 1; row <= 6; ++row) criteria->vbset(row, column, models[column - 1][row - 1]);
  }
}

void fillCoefficient(int i, double beta, double variance, double z, matrix* coefficients) {
  coefficients->vbset(i, 1, beta);
  if (!(variance <= -kEpsilon)) {  // of the inverse second derivatives: a maximum has it below 0
    for (int column = 2; column <= 7; ++column) coefficients->vbset(i, column, kMissing);
    return;
  }
  const double error = sqr(-variance);
  const double ratio = beta / error;
  const double wald = error == 0.0 ? kMissing : std::fabs(ratio * ratio);
  const double upper = beta + z * error;
  coefficients->vbset(i, 2, error);
  coefficients->vbset(i, 3, wald);
  coefficients->vbset(i, 4, wald == kMissing ? kMissing : pValChiSq(wald, 1.0));
  coefficients->vbset(i, 5, numerics::exp(beta));
  coefficients->vbset(i, 6, numerics::exp(beta - z * error));
  coefficients->vbset(i, 7, upper <= kLargestExponent ? numerics::exp(upper) : kInfinite);
}

}  // namespace

void ComputeCritCox(int n, int q, matrixInt* censored, double logLik, double logLik0,
                    int iterations, double alpha, matrix* beta, matrix* secondDerivatives,
                    matrix* inverse, double* z, matrix* gradient0, matrix* inverse0,
                    matrix* criteria, matrix* coefficients, matrix* tests) {
  // The first stratum's count, however many strata there are: reports compare runs by it.
  fillCriteria(n, q, censored->vbget(1, 1), logLik, logLik0, iterations, criteria);

  *z = InvCDFNormalStd(1.0 - alpha / 2.0);
  const int written = std::min(q, coefficients->count());
  for (int i = 1; i <= written; ++i) {
    fillCoefficient(i, beta->vbget(i, 1), inverse->vbget(i, i), *z, coefficients);
  }

  for (int test = 1; test <= 3; ++test) tests->vbset(test, 1, q);
  const int order =
      survival::cox::coefficientsWithin(truncated(tests->vbget(1, 1)), beta, secondDerivatives);
  const double statistics[] = {-2.0 * (logLik0 - logLik),
                               -M_ProductTrVBV(gradient0, order, inverse0),
                               -M_ProductTrVBV(beta, order, secondDerivatives)};
  for (int test = 1; test <= 3; ++test) {
    const bool formed = test != 1 || logLik0 - logLik <= 0.0;
    tests->vbset(test, 2, statistics[test - 1]);
    tests->vbset(test, 3, formed ? pValChiSq(statistics[test - 1], q) : kMissing);
  }
}
