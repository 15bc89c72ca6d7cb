// The largest of several weighted log-rank tests of two groups: one test against early, late and
// lasting differences, at a price that the tests' joint law sets.
#ifndef ENGINE_CURVES_COMBINATION_H_
#define ENGINE_CURVES_COMBINATION_H_

#include <cstddef>
#include <span>
#include <vector>

#include "engine/curves/comparison.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::curves {

enum class Alternative {
  kTwoSided,
  kGreater,  // the second group fails more than is expected of it
  kLess,     // it fails less
};

struct Combination {
  std::vector<Weighting> weightings;
  // Of each weighting: (O - E) / sqrt(V) of the second group, above 0 where it fails more, and the
  // p-value of this test alone; absent where V is 0.
  std::vector<double> z, alone;
  numerics::SquareMatrix correlation;  // of the z's; 0 where one is absent
  std::size_t largest = 0;             // the weighting of the statistic
  double statistic = kAbsent;          // largest |z|; one-sided the largest z, or -z
  double pValue = kAbsent;             // of the largest, by the joint normal law
};

// Fleming and Harrington's (0, 0), (1, 0), (0, 1), (1, 1): lasting, early, late, middle differences.
std::span<const Weighting> usualCombination();

// The covariance of two weighted differences is the hypergeometric variance with the product of
// the two weights.
//
// In   as compare; exactly two groups, else Refusal(kGroup)
//      weightings  1 to 4, else Refusal(kRho)
// Edge weightings without variance take no part; without any there is no test
// Cost O(n log n); the joint law some milliseconds
// Source Tarone, Biometrics 37 (1981) 79-85; Lee, Biometrics 52 (1996) 721-725; Karrison, Stata J
//        16 (2016) 678-690
Combination combine(const Response& response, const Rows& rows, const Groups& groups,
                    std::span<const Weighting> weightings,
                    Alternative alternative = Alternative::kTwoSided,
                    double tieTolerance = risk::kTieTolerance);
Combination combine(const Pooled& pooled, std::span<const Weighting> weightings,
                    Alternative alternative = Alternative::kTwoSided);

// Every pair of groups, its rows alone.
struct CombinationPair {
  std::uint32_t first, second;  // first < second
  Combination test;
  double adjusted = kAbsent;
};
std::vector<CombinationPair> combinePairs(const Response& response, const Rows& rows,
                                          const Groups& groups,
                                          std::span<const Weighting> weightings,
                                          Alternative alternative, Adjustment adjustment,
                                          double tieTolerance = risk::kTieTolerance);
std::vector<CombinationPair> combinePairs(const Pooled& pooled,
                                          std::span<const Weighting> weightings,
                                          Alternative alternative, Adjustment adjustment);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_COMBINATION_H_
