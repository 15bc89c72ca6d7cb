// Derivatives where the two parts of the information cancel.
#ifndef ENGINE_COX_RECENTRED_H_
#define ENGINE_COX_RECENTRED_H_

#include <span>
#include <vector>

#include "engine/cox/problem.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::cox {

// Gradient and information as a sum over ranges of event times, each with covariates centred at the
// mean of its risk sets, which changes nothing but the rounding. A range is split where its means
// fall apart most, until no range has a sum of squares of more than 10^4 times the information, or
// there are 24 ranges.
//
// In   factor       none, or one number for each event time
//      squares      of each column, the sum over the rows that the means are taken from
// Out  gradient, information   replaced where a column needs it; the lower triangle
// Cost nothing where no column needs it, else O(n p^2) for each range
void recentre(const Problem& problem, const Hazards& hazards, Ties ties,
              std::span<const double> factor, std::span<const double> squares,
              std::vector<double>& gradient, numerics::SquareMatrix& information);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_RECENTRED_H_
