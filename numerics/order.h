// Ascending order of numbers: stable, and linear in their count.
#ifndef NUMERICS_ORDER_H_
#define NUMERICS_ORDER_H_

#include <cstdint>
#include <span>
#include <vector>

namespace survmeth::numerics {

// Positions of the values in ascending order; equal values, -0 and 0 among them, in the order in
// which they stand.
//
// In   values[n]  no NaN, n < 2^32
// Out  n positions from 0
// Cost O(n): a radix sort by eleven bits at a time, 32 bytes of working memory for each value;
//      digits that all values share are passed over, the lower half of the digits where the upper
//      half has nearly sorted the values
std::vector<std::uint32_t> ascendingOrder(std::span<const double> values);

// The same, with the values in that order; each -0 becomes 0.
//
// Out  sorted[n]
std::vector<std::uint32_t> ascendingOrder(std::span<const double> values,
                                          std::vector<double>& sorted);

}  // namespace survmeth::numerics

#endif  // NUMERICS_ORDER_H_
