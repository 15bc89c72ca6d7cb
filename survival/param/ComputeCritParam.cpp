// Fit statistics, coefficient table and global tests.
#include <algorithm>
#include <cmath>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "survival/param/model.h"
#include "survival/param/param.h"

namespace numerics = survmeth::numerics;

namespace {

// e^x is formed up to this exponent.
constexpr double kLargestExponent = 709.0;
// Log-likelihoods and quadratic forms at or below these are failures of the fit, not values.
constexpr double kNoLogLik = -1e50;
constexpr double kNoForm = -1e100;

void writeStatistics(int column, double logLik, double parameterCount, double n, double iterations,
                     matrix* statistics) {
  statistics->vbset(1, column, n);
  statistics->vbset(2, column, parameterCount);
  const double deviance = -2.0 * logLik;
  double criteria[4] = {deviance, deviance, deviance, deviance};
  if (logLik <= kNoLogLik) {
    std::fill_n(criteria, 4, kMissing);
  } else if (column == 2) {
    const double m = parameterCount;
    criteria[1] = 2.0 * m - 2.0 * logLik;
    criteria[2] = m * numerics::log(n) - 2.0 * logLik;
    criteria[3] = criteria[1] + 2.0 * m * (m + 1.0) / (n - 1.0 - m);
  }
  for (int row = 0; row < 4; ++row) statistics->vbset(row + 3, column, criteria[row]);
  statistics->vbset(7, column, iterations);
}

struct Estimate {
  double value;
  double variance;  // as the inverse of the Hessian holds it: negative
};

// Columns 1 to 6 of a row; sigma has its limits on the log scale.
void writeCoefficient(int row, const Estimate& estimate, double z, bool isScale,
                      matrix* coefficients) {
  coefficients->vbset(row, 1, estimate.value);
  if (estimate.variance >= 0.0) {
    for (int column = 2; column <= 6; ++column) coefficients->vbset(row, column, kMissing);
    return;
  }
  const double error = sqr(-estimate.variance);
  const double ratio = estimate.value / error;
  const double wald = std::fabs(ratio * ratio);
  double lower = estimate.value - z * error;
  double upper = estimate.value + z * error;
  if (isScale) {
    const double f = z * error / estimate.value;
    lower = f >= 0.0 ? estimate.value / numerics::exp(f) : 0.0;
    upper = f <= kLargestExponent ? estimate.value * numerics::exp(f) : kInfinite;
  }
  coefficients->vbset(row, 2, error);
  coefficients->vbset(row, 3, wald);
  coefficients->vbset(row, 4, pValChiSq(wald, 1.0));
  coefficients->vbset(row, 5, lower);
  coefficients->vbset(row, 6, upper);
}

void writeTest(int row, double df, double statistic, double pValue, matrix* tests) {
  tests->vbset(row, 1, df);
  tests->vbset(row, 2, statistic);
  tests->vbset(row, 3, pValue);
}

}  // namespace

void ComputeCritParam(int n, int p, int k, double logLik, double logLik0, int iterations,
                      double alpha, matrix* parameters, matrix* hessian, matrix* covariance,
                      double* zOut, matrix* gradient0, matrix* hessian0, matrix* fitStatistics,
                      matrix* coefficients, matrix* tests) {
  using namespace survival::param;
  requireMatrix(p, p);
  const double m = static_cast<double>(p) + k;
  writeStatistics(1, logLik0, 0.0, n, 1.0, fitStatistics);
  writeStatistics(2, logLik, m, n, iterations, fitStatistics);

  const double z = InvCDFNormalStd(1.0 - alpha / 2.0);
  *zOut = z;
  const auto estimateAt = [&](int r) {
    return Estimate{parameters->vbget(r, 1), covariance->vbget(r, r)};
  };
  // The intercept comes first in the table and after the coefficients in the parameters.
  writeCoefficient(1, estimateAt(afterCoefficients(p, 1)), z, false, coefficients);
  for (int j = 1; j <= p; ++j) writeCoefficient(j + 1, estimateAt(j), z, false, coefficients);
  if (k > 1) {
    const int scale = afterCoefficients(p, 2);
    writeCoefficient(scale, estimateAt(scale), z, true, coefficients);
  }

  if (p < 1) return;
  const double rise = logLik0 - logLik;
  const double ratio = -2.0 * rise;
  writeTest(1, p, ratio, rise <= 0.0 ? pValChiSq(ratio, p) : kMissing, tests);
  // The second derivatives themselves, not their inverse: published results depend on it.
  const double score = -M_ProductTrVBV(gradient0, p, hessian0);
  writeTest(2, p, score, pValChiSq(score, p), tests);
  const double form = M_ProductTrVBV(parameters, p, hessian);
  const bool formed = !(form <= kNoForm);
  writeTest(3, p, formed ? -form : kMissing, formed ? pValChiSq(-form, p) : kMissing, tests);
}
