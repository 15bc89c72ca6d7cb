// The checks that the facade's functions share. Each throws InvalidRequest, with the element's
// index where one element is at fault.
#ifndef ANALYSIS_CHECKS_H_
#define ANALYSIS_CHECKS_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>

namespace survmeth {

// The entry points count their flat arrays in int; the widest has twelve elements a row and two
// rows more than the data.
inline constexpr std::size_t kMostRows = std::numeric_limits<int>::max() / 12 - 2;

void require(bool holds, const char* member, const char* what);

// At least `least` (what is said otherwise: `tooFew`) and at most kMostRows. To be checked before
// anything looks at an element.
void requireRows(std::size_t rows, std::size_t least, const char* member, const char* tooFew);

void requireAlpha(double alpha);  // in (0, 1)
void requireFinite(std::span<const double> values, const char* member);
void requireTimes(std::span<const double> times);      // finite, not negative: "time"
void requireWeights(std::span<const double> weights);  // each and the sum: "weight"

// Codes 0 .. count - 1.
void requireCodes(std::span<const std::uint32_t> codes, std::size_t count, const char* member);

// Not one value repeated. The column is not empty.
void requireSpread(std::span<const double> column, const char* member);

}  // namespace survmeth

#endif  // ANALYSIS_CHECKS_H_
