// Numbers that look random and are the same everywhere: of whole-number arithmetic and exact
// scaling only.
#ifndef TESTS_BITS_SEQUENCE_H_
#define TESTS_BITS_SEQUENCE_H_

#include <cstdint>

#include "numerics/bits.h"

namespace survmeth::test {

// Source Steele, Lea & Flood, OOPSLA 2014, 453-472 (splitmix64)
class Sequence {
 public:
  explicit Sequence(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15U;
    z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27U)) * 0x94d049bb133111ebU;
    return z ^ (z >> 31U);
  }
  // In [0, 1), a multiple of 2^-53.
  double share() { return static_cast<double>(next() >> 11U) * 0x1p-53; }
  // A finite number of any sign, exponent and fraction.
  double ofAnyExponent() {
    for (;;) {
      const auto value = numerics::bitCast<double>(next());
      if (value - value == 0.0) return value;
    }
  }

 private:
  std::uint64_t state_;
};

}  // namespace survmeth::test

#endif  // TESTS_BITS_SEQUENCE_H_
