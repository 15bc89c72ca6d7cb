// The checks that the facade's functions share. Each throws engine::Refusal, with the row
// where one is at fault.
#ifndef ANALYSIS_CHECKS_H_
#define ANALYSIS_CHECKS_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "engine/input.h"

namespace survmeth {

// The entry points count their flat arrays in int; the widest has twelve elements a row and two
// rows more than the data.
inline constexpr std::size_t kMostRows = std::numeric_limits<int>::max() / 12 - 2;

void require(bool holds, engine::Role role, const char* what);

// At least `least` (what is said otherwise: `tooFew`) and at most kMostRows. To be checked before
// anything looks at an element.
void requireRows(std::size_t rows, std::size_t least, engine::Role role, const char* tooFew);

void requireAlpha(double alpha);  // in (0, 1)
void requireFinite(std::span<const double> values, engine::Role role);
void requireTimes(std::span<const double> times);      // finite, not negative
void requireWeights(std::span<const double> weights);  // each and the sum

// Codes 0 .. count - 1, of what `name` says.
void requireCodes(std::span<const std::uint32_t> codes, std::size_t count, engine::Role role,
                  const char* name);

// Not one value repeated. The column is not empty.
void requireSpread(std::span<const double> column, engine::Role role);

}  // namespace survmeth

#endif  // ANALYSIS_CHECKS_H_
