// Penalised partial likelihoods: half the logarithm of the determinant of the information, which
// keeps every estimate finite, and a ridge.
#ifndef ENGINE_COX_PENALISED_H_
#define ENGINE_COX_PENALISED_H_

#include <cstddef>
#include <vector>

#include "engine/cox/fit.h"

namespace survmeth::engine::cox {

struct Penalty {
  enum class Kind {
    kDeterminant,  // l + log |I| / 2: Jeffreys' prior, which takes off the bias of order 1 / n
    kRidge,        // l - (theta / 2) sum of s_j^2 b_j^2
  };
  Kind kind = Kind::kDeterminant;
  double theta = 0.0;        // of the ridge, not negative
  bool standardised = true;  // s_j is the column's standard deviation over the rows, else 1
};

struct PenalisedFit {
  // Coefficients, outcomes and counts as of an ordinary fit, none of them infinite; of a penalty by the
  // determinant the covariance is the inverse information, of a ridge the inverse of information and
  // penalty. `logLikelihood` is without the penalty, `iterations` those of the penalised fit.
  // Likelihood ratios of the determinant compare penalised likelihoods, `terms` among them; a ridge has
  // none here, nor a score test.
  Fit fit;
  Penalty penalty;
  double logLikelihood = kAbsent;      // penalised
  double logLikelihoodNull = kAbsent;  // likewise, at coefficients of 0
  // Of a ridge: the trace of information times covariance, and twice the gain in the likelihood
  // (without the penalty) on as many degrees of freedom.
  double effectiveDegrees = kAbsent;
  double chiSquare = kAbsent, pValue = kAbsent;
};

// The columns that depend on those before them take no part in either penalty.
//
// Edge refuses what fit() refuses; the determinant further exact treatments of ties, both penalties
//      clusters, sampling weights and robust covariances. Without an event, or with dependent columns
//      and without dropAliased, nothing is estimated
// Cost of the determinant O((n + events) p^2 (log n with late entry)) for each of some ten iterations,
//      and as much for each term; a ridge as an ordinary fit
// Source Firth, Biometrika 80 (1993) 27-38; Heinze & Schemper, Biometrics 57 (2001) 114-119; Verweij &
//      van Houwelingen, Stat Med 13 (1994) 2427-2436; Gray, JASA 87 (1992) 942-951 (degrees of
//      freedom)
PenalisedFit fitPenalised(const Response& response, const Rows& rows, const Design& design,
                          const Options& options, const Penalty& penalty,
                          numerics::Progress& progress);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_PENALISED_H_
