// Newton-Raphson fit of a Cox model with step halving.
#include <cmath>
#include <vector>

#include "Klikro/Klikro"
#include "solver/solver.h"
#include "survival/cox/cox.h"
#include "survival/cox/likelihood.h"
#include "survival/cox/strata.h"
#include "survival/repetition.h"

namespace {

constexpr int kHalvings = 10;
// Gains below this may drown in the rounding of the likelihood, whose size is some thousands.
constexpr double kDoubtful = 1e-6;
// The step-size rule of the solver is heeded only after this many iterations.
constexpr int kPatience = 10;

std::vector<double> valuesOf(const matrix* m) {
  return std::vector<double>(m->data(), m->data() + m->count());
}

// What a step of -`back` adds to a quadratic likelihood of that gradient whose top it leads to.
double expectedGain(const matrix& gradient, const std::vector<double>& back) {
  double gain = 0.0;
  for (std::size_t j = 0; j < back.size(); ++j) gain -= gradient.data()[j] * back[j];
  return 0.5 * gain;
}

}  // namespace

int OptimizeCoxModel(int p, matrix* delta, matrix* X, matrix* stratumSizes, int S, int* iterations,
                     double tolerance, int ties, matrixInt* distinctTimes, matrixInt* groupSize,
                     matrixInt* groupEvents, matrixInt* groupStart, double* logLik, double* logLik0,
                     matrix* gradient, matrix* secondDerivatives, matrix* inverse,
                     matrix* gradient0, matrix* inverse0, matrix* beta) {
  p = survival::cox::coefficientsWithin(p, X, secondDerivatives);
  matrix::matCheck(beta, p, 1, 0.0);
  matrix mask(p, 1, 0);
  matrix work(p, 1, 0);

  // At coefficients just evaluated the results stand already, the derivatives where they were asked
  // for.
  enum class Known { nothing, value, derivatives };
  Known known = Known::nothing;
  std::vector<double> knownAt;
  const auto evaluate = [&](Known wanted) {
    const std::vector<double> here = valuesOf(beta);
    if (known >= wanted && survival::sameBits(here, knownAt)) return;
    if (wanted == Known::value) {
      *logLik = survival::cox::logLikelihood(
          p, delta, X, ties, beta,
          {stratumSizes, S, distinctTimes, groupStart, groupSize, groupEvents});
    } else {
      ComputeLogLikeDerivativesCox(p, delta, X, ties, beta, distinctTimes, groupSize, groupStart, S,
                                   stratumSizes, groupEvents, logLik, gradient, secondDerivatives);
    }
    known = wanted;
    knownAt = here;
  };

  const bool limited = *iterations > 0;
  const int last = limited ? *iterations : survival::kMostSteps;
  survival::Repetition repetition(kPatience + 1);
  for (int t = 0;;) {
    evaluate(Known::derivatives);
    const std::vector<double> before = valuesOf(beta);
    // A singular matrix inverts to zeros and leaves the coefficients where they are.
    short singular = 0;
    secondDerivatives->inverse1(inverse, singular, 0.0);
    const int solved = cNewtonRaphson(beta, p, &mask, gradient, secondDerivatives, tolerance, &work,
                                      inverse, 0, 0.5);
    if (t == 0) {
      *logLik0 = *logLik;
      gradient->copyMatTo(gradient0);
      inverse->copyMatTo(inverse0);
    }

    const double logLikBefore = *logLik;
    std::vector<double> back(before.size());
    for (int j = 1; j <= p; ++j) back[j - 1] = before[j - 1] - beta->vbget(j, 1);
    // A step that promises next to nothing is often refused, and a shorter one more often still:
    // there the derivatives, nearly all of the work, wait until it is accepted or is the last.
    bool doubtful = expectedGain(*gradient, back) < kDoubtful;
    for (int h = 1; h <= kHalvings; ++h) {
      evaluate(doubtful && h < kHalvings ? Known::value : Known::derivatives);
      if (*logLik - logLikBefore > kEpsilon) {
        evaluate(Known::derivatives);
        break;
      }
      doubtful = true;
      // After the tenth refusal the coefficients move on once more, without an evaluation.
      for (int j = 1; j <= p; ++j) {
        beta->vbset(j, 1, beta->vbget(j, 1) + back[j - 1] * std::ldexp(1.0, -h));
      }
    }

    ++t;
    const bool settled = std::fabs(*logLik - logLikBefore) < tolerance;
    bool ended = t == last || (solved == 1 && t > kPatience) || settled;
    if (!ended && t > kPatience) {
      // Nothing is better than what is not a number.
      if (!limited) ended = std::isnan(logLikBefore) || survival::anyNaN(valuesOf(beta));
      if (const int period = repetition.period(t, valuesOf(beta)); period > 0) {
        // Whole periods lead back to the state in hand and may be skipped.
        if (limited) t += (last - t) / period * period;
        ended = t == last || !limited;
      }
    }
    if (ended) {
      *iterations = t;
      return 0;
    }
  }
}
