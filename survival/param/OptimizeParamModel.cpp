// The Newton-Raphson fit of one model.
#include <cmath>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "solver/solver.h"
#include "survival/param/evaluate.h"
#include "survival/param/param.h"
#include "survival/repetition.h"

namespace numerics = survmeth::numerics;

namespace {

using survival::param::Model;

constexpr int kHalvings = 10;
// The last parameter after a step that took it to 0 or below.
constexpr double kSmallestLast = 1e-12;
// Shift of a Weibull intercept over the mean of the times. Not quite Euler's constant: the starting
// log-likelihood that the tests of a fit compare with is the one of this value.
constexpr double kWeibullShift = 0.572;

// A standard deviation as starting scale. Callers compare starting log-likelihoods, so the Weibull
// rule stays as it is: half the logarithm of 4 s / 1.64 where that is positive.
double startingScale(const Model& model) {
  const double deviation = sqr(V_Var(model.times, model.n, nullptr, model.weights));
  if (model.distribution != survival::param::kWeibull) return deviation;
  const double rescaled = 0.5 * numerics::log(4.0 * deviation / 1.64);
  return rescaled > 0.0 ? rescaled : deviation;
}

void startingValues(const Model& model, short fixIntercept, matrix* start) {
  using namespace survival::param;
  const int intercept = afterCoefficients(model.p, 1);
  if (model.p < 1) {
    double mean = V_Mean(model.times, model.n, nullptr, model.weights);
    if (model.distribution == kWeibull) mean += kWeibullShift;
    start->vbset(intercept, 1, mean);
  } else {
    requireMatrix(model.n, model.p + 1LL);
    matrix coefficients(intercept, 1, 0);
    matrix residuals(model.n, 1, 0);
    OLSBasic(model.n, model.p, model.covariates, model.times, model.weights, 1, 0, fixIntercept,
             1e-4, &coefficients, &residuals);
    V_Duplicate(&coefficients, 1, 1, intercept, start, 1, 1);
  }
  if (model.distribution != kExponential && model.distribution != kWithoutLikelihood) {
    start->vbset(afterCoefficients(model.p, 2), 1, startingScale(model));
  }
}

// What the steps after this one depend on: where it starts from, the estimates and the curvature.
std::vector<double> stateOf(const matrix& candidate, const matrix& parameters,
                            const matrix& hessian) {
  std::vector<double> state;
  for (const matrix* part : {&candidate, &parameters, &hessian}) {
    state.insert(state.end(), part->data(), part->data() + part->count());
  }
  return state;
}

}  // namespace

int OptimizeParamModel(matrix* times, int n, int p, int k, matrix* status, matrix* bounds,
                       matrix* covariates, matrix* weights, int* iterations, double tolerance,
                       int distribution, short useInitialValues, matrix* initialValues,
                       short fixIntercept, double interceptValue, double* logLik, double* logLik0,
                       matrix* gradient, matrix* hessian, matrix* covariance, matrix* gradient0,
                       matrix* hessian0, matrix* parameters) {
  using namespace survival::param;
  const Model model{times, n, p, k, status, bounds, covariates, weights, distribution};
  const int m = parameterCount(p, k);
  requireMatrix(m, m);
  const int intercept = afterCoefficients(p, 1);

  matrix mask(m, 1, 0);
  matrix work(m, 1, 0);
  matrix candidate(m, 1, 0);
  matrix step(m, 1, 0);
  {
    matrix start(m, 1, 0);
    if (useInitialValues != kTrue) startingValues(model, fixIntercept, &start);
    V_Duplicate(useInitialValues == kTrue ? initialValues : &start, 1, 1, m, parameters, 1, 1);
  }
  if (fixIntercept == kTrue) {
    parameters->vbset(intercept, 1, interceptValue);
    mask.vbset(intercept, 1, 1.0);
  }

  evaluate(model, parameters, logLik0, gradient, hessian);
  V_Duplicate(gradient, 1, 1, m, gradient0, 1, 1);
  M_Duplicate(hessian, m, m, hessian0, 1, 1, 1, 1);
  V_Duplicate(parameters, 1, 1, m, &candidate, 1, 1);

  const bool limited = *iterations > 0;
  const int lastStep = limited ? *iterations : survival::kMostSteps;
  survival::Repetition repetition(1);
  double before = 0.0;
  evaluate(model, &candidate, &before, nullptr, nullptr);
  for (int t = 1;; ++t) {
    *logLik = before;
    const std::vector<double> from = stateOf(candidate, *parameters, *hessian);
    const int solverCode = cNewtonRaphson(&candidate, m, &mask, gradient, hessian, tolerance, &work,
                                          covariance, -1, 1.0);
    // Meant for sigma, but it holds for the last parameter of every law.
    if (candidate.vbget(m, 1) <= 0.0) candidate.vbset(m, 1, kSmallestLast);
    for (int j = 1; j <= m; ++j) {
      step.vbset(j, 1, parameters->vbget(j, 1) - candidate.vbget(j, 1));
    }

    double after = 0.0;
    evaluate(model, &candidate, &after, nullptr, nullptr);
    bool accepted = after - before > kEpsilon;
    // The point of the last halving is never evaluated.
    for (int h = 1; !accepted && h <= kHalvings; ++h) {
      for (int j = 1; j <= m; ++j) {
        candidate.vbset(j, 1, candidate.vbget(j, 1) + std::ldexp(step.vbget(j, 1), -h));
      }
      if (h == kHalvings) break;
      evaluate(model, &candidate, &after, nullptr, nullptr);
      accepted = after - before > kEpsilon;
    }
    bool repeats = false;
    if (accepted) {
      V_Duplicate(&candidate, 1, 1, m, parameters, 1, 1);
      evaluate(model, parameters, nullptr, gradient, hessian);
    } else {
      modifyDerivatives(hessian, m);
      // All but the last go back; the last one starts the next step from where halving left it.
      V_Duplicate(parameters, 1, 1, m - 1, &candidate, 1, 1);
      // What is refused and changes nothing is refused again, up to the limit.
      repeats = survival::sameBits(stateOf(candidate, *parameters, *hessian), from);
    }
    if (!limited && !repeats) {
      repeats = repetition.period(t, stateOf(candidate, *parameters, *hessian)) > 0;
    }

    const bool converged = std::fabs(before - after) < tolerance;
    if (converged || repeats || t == lastStep) {
      if (solverCode < 0) return -2;
      *iterations = converged || !limited ? t : lastStep;
      return 0;
    }
    if (accepted) {
      before = after;
    } else {
      evaluate(model, &candidate, &before, nullptr, nullptr);
    }
  }
}
