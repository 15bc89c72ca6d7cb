// The log partial likelihood without its derivatives, for steps that may be refused.
#ifndef SURVIVAL_COX_LIKELIHOOD_H_
#define SURVIVAL_COX_LIKELIHOOD_H_

#include "Klikro/matrix"
#include "survival/cox/strata.h"

namespace survival::cox {

// What ComputeLogLikeDerivativesCox returns as the log-likelihood, to the bit, in one of the
// 1 + p + p (p + 1) / 2 passes that it takes over the risk sets. p lies within what the matrices
// hold (coefficientsWithin).
double logLikelihood(int p, matrix* delta, matrix* X, int ties, matrix* beta,
                     const GroupTables& tables);

}  // namespace survival::cox

#endif  // SURVIVAL_COX_LIKELIHOOD_H_
