// Entries of a radix sort of doubles: keys that are ordered as the numbers are, with positions.
#ifndef NUMERICS_RADIX_H_
#define NUMERICS_RADIX_H_

#include <cstddef>
#include <cstdint>

#include "numerics/bits.h"
#include "numerics/largeArray.h"

namespace survmeth::numerics::radix {

inline constexpr int kBits = 11;
inline constexpr std::size_t kDigits = std::size_t{1} << kBits;
inline constexpr int kPasses = 6;  // 6 times 11 bits cover 64
// Below this many values the counts of a pass cost more than comparisons.
inline constexpr std::size_t kFew = 512;

struct Entry {
  std::uint64_t key;
  std::uint32_t position;
};

// An unsigned number that is ordered as the double is: the sign bit turned for positive numbers,
// every bit for negative ones. Adding 0 makes -0 and 0 one.
inline std::uint64_t orderedKey(double value) {
  const auto bits = bitCast<std::uint64_t>(value + 0.0);
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

// The number of a key.
inline double valueOf(std::uint64_t key) {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  return bitCast<double>((key & kSign) != 0 ? key ^ kSign : ~key);
}

inline std::size_t digit(std::uint64_t key, int pass) {
  return static_cast<std::size_t>(key >> (pass * kBits)) & (kDigits - 1);
}

// Sorts the entries, which stand in the order of their positions, by their keys; those of one key
// keep their order. One thread.
void sort(LargeArray<Entry>& entries);

// Sorts by insertion what is nearly sorted; false, with equal keys still in their order, after
// more than four moves a value.
bool insertionSorted(LargeArray<Entry>& entries);

}  // namespace survmeth::numerics::radix

#endif  // NUMERICS_RADIX_H_
