// The Newton-Raphson step that the Cox and the parametric fit share.
#ifndef SOLVER_SOLVER_H_
#define SOLVER_SOLVER_H_

#include "Klikro/export.h"
#include "Klikro/matrix"

// One full Newton-Raphson step: parameters - secondDerivatives^-1 gradient. The loop around it
// (halving, convergence) is the caller's.
//
// In/out parameters[p]             moved by the step, but for entries whose mask is 1
// In     mask[p]                   0 for a free parameter, 1 for a fixed one
//        gradient[p], secondDerivatives (p x p), read only
//        tolerance                 of the result below
// Out    work[p]                   the step, before the mask
//        inverse                   the inverse used; what falls outside a smaller matrix is
//                                  dropped, and the step is taken from the full inverse
// Returns -1 when secondDerivatives is singular (parameters untouched, inverse zeroed),
//         1 when the largest |step| over the free entries is below tolerance, else 0.
// The last two arguments are ignored. Cost O(p^3).
extern "C" KLIKRO_API int cNewtonRaphson(matrix* parameters, int p, matrix* mask, matrix* gradient,
                                         matrix* secondDerivatives, double tolerance, matrix* work,
                                         matrix* inverse, short mode, double factor);

#endif  // SOLVER_SOLVER_H_
