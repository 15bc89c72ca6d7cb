// Tests of equal survival by permutation: how often do groups that are exchanged among the rows of a
// stratum differ as much as those observed?
#ifndef ENGINE_CURVES_PERMUTATION_H_
#define ENGINE_CURVES_PERMUTATION_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/curves/combination.h"
#include "engine/curves/comparison.h"
#include "numerics/progress.h"

namespace survmeth::engine::curves {

struct Permutations {
  bool exact = false;            // every arrangement of the groups, else random ones
  std::uint64_t count = 10'000;  // of the random ones
  std::uint64_t seed = 1;
  double level = 0.95;  // of a random p-value's limits
};

// As many arrangements are enumerated, no more.
inline constexpr double kMostArrangements = 1e7;

struct PermutationTest {
  // Of two groups (O - E) / sqrt(V) of the second, V the variance over all arrangements; absent for
  // more.
  double z = kAbsent;
  // U' V^- U over all groups, and its p-value by the chi-square law (by the normal law where the
  // alternative has a side); 0 degrees: no test.
  double chiSquare = kAbsent;
  std::size_t degreesOfFreedom = 0;
  double asymptotic = kAbsent;
  // The arrangements no less extreme than the observed one, within 1e-9 of a standard deviation.
  std::uint64_t extreme = 0;
  // extreme / arrangements, or (extreme + 1) / (count + 1) with Clopper and Pearson's limits of what
  // all arrangements would give; no limits where it is exact.
  double pValue = kAbsent, lower = kAbsent, upper = kAbsent;
};

struct PermutationComparison {
  double arrangements = kAbsent;       // that there are; infinite beyond the range of a double
  std::uint64_t looked = 0;            // looked at
  std::vector<PermutationTest> tests;  // of each weighting
  // Of two groups: the largest of the weightings' |z| (z, -z), by permutation alone.
  PermutationTest combination;
};

// How many there are; infinite beyond the range of a double.
double arrangementsOf(const Response& response, const Rows& rows, const Groups& groups);

// A weighting's difference of a group, O - E, is the sum over its rows of scores that are the same
// whoever is in which group: the weight of the row's event less the integral of the weighted hazard
// while it is at risk. The rows of each stratum exchange their groups.
//
// In   as compare; sides other than kTwoSided of two groups, else Refusal(kGroup); weights 0 and 1,
//      else Refusal(kWeight)
//      weightings  any number
// Edge Refusal(kValue) for no permutation, and where more than kMostArrangements would be
//      enumerated; a test without variance has none
// Cost random: O(rows) for each permutation, whose numbers are a function of the seed and of its
//      own number, on all threads; enumerated: O(groups) for each arrangement
// Source Heimann & Neuhaus, Biometrics 54 (1998) 168-184; Strasser & Weber, Math Methods Statist 8
//        (1999) 220-250; Phipson & Smyth, Stat Appl Genet Mol Biol 9 (2010) 39
PermutationComparison permute(const Response& response, const Rows& rows, const Groups& groups,
                              std::span<const Weighting> weightings,
                              const Permutations& permutations,
                              Alternative alternative = Alternative::kTwoSided,
                              numerics::Progress* progress = nullptr,
                              double tieTolerance = risk::kTieTolerance);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_PERMUTATION_H_
