// Coefficients that have no finite estimate, and columns that say nothing.
#ifndef ENGINE_COX_SEPARATION_H_
#define ENGINE_COX_SEPARATION_H_

#include <optional>
#include <span>
#include <vector>

#include "engine/cox/problem.h"
#include "numerics/cholesky.h"

namespace survmeth::engine::cox {

// A direction in which the likelihood rises without end: at every event time no row at risk lies
// above the rows that fail. Under an exact treatment of ties rows that fail at one time may differ:
// none of the others lies above any of them.
struct Separation {
  std::vector<std::size_t> columns;   // that the direction is made of
  std::vector<double> direction;      // p, 0 elsewhere
  std::vector<std::uint32_t> strata;  // codes of strata in which some row lies below
};

// Whether `direction` separates, parts of it below 1e-5 of the largest (in units of the columns'
// spread) left out and differences up to 1e-6 of its range over the rows ignored.
//
// Cost O(n p); kDiscrete and kMarginal O(|R|) besides for each time with tied events
// Source Heinze & Schemper, Biometrics 57 (2001) 114-119
std::optional<Separation> separates(const Problem& problem, Ties ties,
                                    std::span<const double> direction);

Outcome separationOutcome(const Problem& problem, const Separation& separation);

// One outcome for each dependent column: the columns that it is a combination of, or that it does
// not vary within the risk sets.
std::vector<Outcome> collinearOutcomes(const Problem& problem, const numerics::Cholesky& factor);

// Diagonal elements of the information that are rounding: of columns that are constant within
// every risk set but for the last digits.
std::vector<double> smallestInformation(const Problem& problem);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_SEPARATION_H_
