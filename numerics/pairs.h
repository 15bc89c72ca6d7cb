// Two doubles at once, which every machine with vectors has: sums along two columns side by side,
// each in the order of its rows.
#ifndef NUMERICS_PAIRS_H_
#define NUMERICS_PAIRS_H_

namespace survmeth::numerics {

typedef double Pair __attribute__((vector_size(2 * sizeof(double))));
typedef double LoosePair __attribute__((vector_size(2 * sizeof(double)), aligned(8)));

// Two neighbours in an array, on no boundary in particular.
inline LoosePair& pairAt(double* values) { return *reinterpret_cast<LoosePair*>(values); }
inline const LoosePair& pairAt(const double* values) {
  return *reinterpret_cast<const LoosePair*>(values);
}

inline Pair firsts(const Pair& a, const Pair& b) { return __builtin_shufflevector(a, b, 0, 2); }
inline Pair seconds(const Pair& a, const Pair& b) { return __builtin_shufflevector(a, b, 1, 3); }

}  // namespace survmeth::numerics

#endif  // NUMERICS_PAIRS_H_
