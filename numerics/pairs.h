// Two doubles at once, which every machine with vectors has: sums along two columns side by side,
// each in the order of its rows.
#ifndef NUMERICS_PAIRS_H_
#define NUMERICS_PAIRS_H_

#include <cstring>

namespace survmeth::numerics {

typedef double Pair __attribute__((vector_size(2 * sizeof(double))));

// Two neighbours in an array, on no boundary in particular. Copied: compilers take a vector behind a
// reference for aligned, whatever its type says.
inline Pair pairAt(const double* values) {
  Pair pair;
  std::memcpy(&pair, values, sizeof pair);
  return pair;
}
inline void putPair(const Pair& pair, double* values) { std::memcpy(values, &pair, sizeof pair); }

inline Pair firsts(const Pair& a, const Pair& b) { return __builtin_shufflevector(a, b, 0, 2); }
inline Pair seconds(const Pair& a, const Pair& b) { return __builtin_shufflevector(a, b, 1, 3); }

}  // namespace survmeth::numerics

#endif  // NUMERICS_PAIRS_H_
