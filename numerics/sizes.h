// Sizes of arrays.
#ifndef NUMERICS_SIZES_H_
#define NUMERICS_SIZES_H_

#include <cstddef>
#include <limits>
#include <stdexcept>

namespace survmeth::numerics {

// a * b elements. Where words have 32 bits such a product may exceed them, and what is left of it
// would be the size of an array that is too short.
//
// Edge std::length_error, as of an array that is too long
inline std::size_t product(std::size_t a, std::size_t b) {
  if (a != 0 && b > std::numeric_limits<std::size_t>::max() / a) {
    throw std::length_error("more elements than there are addresses");
  }
  return a * b;
}

}  // namespace survmeth::numerics

#endif  // NUMERICS_SIZES_H_
