// Half the logarithm of the determinant of the information, as a penalty.
#ifndef ENGINE_COX_DETERMINANT_H_
#define ENGINE_COX_DETERMINANT_H_

#include <cstddef>
#include <span>
#include <vector>

#include "engine/cox/problem.h"
#include "numerics/newton.h"

namespace survmeth::engine::cox {

// Adds to value and gradient log |I| / 2 and tr(I^-1 dI / db_r) / 2 over the columns `active`. The
// derivative of the information is a third central moment over the risk sets:
//
//     dI / db_r = sum_kl (omega_k / d_k) E_kl[(x - xbar)(x - xbar)'(x_r - xbar_r)]
//
// whose trace with V = I^-1 is, with a = x'Vx, the sum of Cov_kl(a, x_r) - 2 (V xbar_kl)' Cov_kl(x, x_r).
//
// In   hazards, point  what evaluate gives at the coefficients; not of an exact treatment of ties
// Edge false where the information is singular
// Cost O((n + events) p^2)
// Source Firth, Biometrika 80 (1993) 27-38
bool addDeterminant(const Problem& problem, const Hazards& hazards, Ties ties,
                    std::span<const std::size_t> active, numerics::NewtonPoint& point);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_DETERMINANT_H_
