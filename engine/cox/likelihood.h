// The partial likelihood with its first and second derivatives, under every treatment of ties.
#ifndef ENGINE_COX_LIKELIHOOD_H_
#define ENGINE_COX_LIKELIHOOD_H_

#include <span>
#include <vector>

#include "engine/cox/problem.h"
#include "numerics/newton.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::cox {

// Gradient and information from sums that are already formed:
//
//     gradient    = sum_i (w_i delta_i - r_i A_i) x_i
//     information = sum_i r_i A_i x_i x_i' - sum_k sum_l (omega_k / d_k) xbar_kl xbar_kl'
//
// with A_i the hazard that row i has been exposed to. Both terms are weighted outer products.
//
// In   factor   none, or one number for each event time that multiplies its terms
// Out  gradient[p], information p x p; terms of the exact methods at tied times are not in them
// Cost O(n p^2), several times that where the two terms nearly cancel; memory for two blocks and two
//      matrices for each part of the rows, with late entry for
//      p numbers an event time
void derivatives(const Problem& problem, const Hazards& hazards, Ties ties,
                 std::span<const double> factor, std::vector<double>& gradient,
                 numerics::SquareMatrix& information);

// Log-likelihood, gradient and information at `coefficients`; `hazards` holds the sums there.
//
// Edge false where predictors are no finite numbers
// Cost Efron and Breslow as above; kDiscrete O(|R| d p^2) and kMarginal O(|R| p^2) besides, for
//      each time with d > 1 events and |R| rows at risk
// Source Therneau & Grambsch, Modeling Survival Data (2000), 3.3
bool evaluate(const Problem& problem, Ties ties, std::span<const double> coefficients,
              Hazards& hazards, numerics::NewtonPoint& point);

// What the tied times add under the exact methods.
void addDiscreteTies(const Problem& problem, const Hazards& hazards, numerics::NewtonPoint& point);
void addMarginalTies(const Problem& problem, const Hazards& hazards, numerics::NewtonPoint& point);

// Rows at risk at event time k that do not fail then.
std::vector<std::uint32_t> othersAtRisk(const risk::Arrangement& arrangement, std::size_t k);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_LIKELIHOOD_H_
