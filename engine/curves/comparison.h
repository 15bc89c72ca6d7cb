// Tests of equal survival in groups: the weighted log-rank family, stratified, with trends, pairs
// of groups and hazard ratios.
#ifndef ENGINE_CURVES_COMPARISON_H_
#define ENGINE_CURVES_COMPARISON_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/curves/limits.h"
#include "engine/curves/sample.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::curves {

struct Pooled;

// What the events of a time count for, with n at risk and d events in the stratum.
struct Weighting {
  enum class Kind {
    kLogRank,       // 1 (Mantel 1966)
    kGehanBreslow,  // n (Gehan, Biometrika 52 (1965) 203-223; Breslow, Biometrika 57 (1970) 579-594)
    kTaroneWare,    // sqrt(n) (Biometrika 64 (1977) 156-160)
    kPetoPeto,      // T, the product of 1 - d / (n + 1) up to and including the time
                    // (Peto & Peto, JRSS A 135 (1972) 185-206)
    kModifiedPetoPeto,   // T n / (n + 1) (Andersen, Int Statist Rev 50 (1982) 219-258)
    kFlemingHarrington,  // S^p (1 - S)^q, S the stratum's Kaplan-Meier curve just before the time
                         // (Fleming & Harrington, Counting Processes (1991) 7.2)
  };
  Kind kind = Kind::kLogRank;
  double p = 1.0, q = 0.0;  // of kFlemingHarrington, not negative
};

struct WeightedTest {
  Weighting weighting;
  // Of each group: weighted events, what is expected of them, and the hypergeometric covariance of
  // the differences, all summed over the strata.
  std::vector<double> observed, expected;
  numerics::SquareMatrix covariance;
  double chiSquare = kAbsent;
  std::size_t degreesOfFreedom =
      0;  // groups less sets of groups that are never at risk together; 0: no test
  double pValue = kAbsent;
  // Of the scores, with the test's weights; sign as of the association of score and events.
  double trend = kAbsent, trendPValue = kAbsent;
};

// Events of one group in one stratum, unweighted by time.
struct StratumEvents {
  std::uint32_t stratum, group;
  double n, observed, expected;
};

struct Comparison {
  std::vector<WeightedTest> tests;    // in the order asked for
  std::vector<StratumEvents> events;  // by stratum, then group; those that have rows
};

// In   response, rows, groups   frequencies and strata of `rows` are used; late entry too
//      weightings   any number
//      scores       none, or one for each group
// Edge Refusal for sampling weights and clusters; for scores that are not one finite number a
//      group; for negative p or q. Groups that share no event time with others' risk add nothing
//      to the rank. Frequencies need not be whole; where n <= 1 a time has no variance
// Cost O(n log n) and, for each weighting, O(n) for each group within a stratum; then groups^3 / 3.
//      Memory groups^2 for each weighting
// Source Klein & Moeschberger, Survival Analysis, 2nd ed. (2003) 7.3 to 7.5
Comparison compare(const Response& response, const Rows& rows, const Groups& groups,
                   std::span<const Weighting> weightings, std::span<const double> scores = {},
                   double tieTolerance = risk::kTieTolerance);

// The same of rows that are in order already (pooled.h), as several tests of them begin.
Comparison compare(const Pooled& pooled, std::span<const Weighting> weightings,
                   std::span<const double> scores = {});

// One weighting for every pair of groups: only their rows are looked at.
struct PairTest {
  std::uint32_t first, second;  // first < second
  double chiSquare = kAbsent, pValue = kAbsent, adjusted = kAbsent;
};

enum class Adjustment { kNone, kHolm, kBonferroni, kBenjaminiHochberg };

// Edge pairs without a test have none and do not count in the adjustment
// Cost O(n) for each group, besides the sort
std::vector<PairTest> comparePairs(const Response& response, const Rows& rows, const Groups& groups,
                                   const Weighting& weighting, Adjustment adjustment,
                                   double tieTolerance = risk::kTieTolerance);
std::vector<PairTest> comparePairs(const Pooled& pooled, const Weighting& weighting,
                                   Adjustment adjustment);

// Adjusted p-values in the order of the given ones; NaN stays NaN and does not count.
//
// Source Holm, Scand J Statist 6 (1979) 65-70; Benjamini & Hochberg, JRSS B 57 (1995) 289-300
std::vector<double> adjust(std::span<const double> pValues, Adjustment adjustment);

// The hazard of the second of two groups over that of the first, without covariates. The standard
// errors are those of the logarithms.
struct HazardRatios {
  // exp((O - E) / V) of the second group's log-rank numbers, error 1 / sqrt(V)
  Contrast peto;
  // sum of d2 n1 / n over sum of d1 n2 / n, error^2 = sum of d n1 n2 / n^2 over their product
  Contrast mantelHaenszel;
};

// In   as compare; exactly two groups, else Refusal(kGroup)
// Edge a ratio that is 0, infinite or 0 / 0 has no limits
// Source Yusuf, Peto et al., Prog Cardiovasc Dis 27 (1985) 335-371; Bernstein, Anderson & Pike,
//        Biometrics 37 (1981) 513-519
HazardRatios hazardRatios(const Response& response, const Rows& rows, const Groups& groups,
                          double level, double tieTolerance = risk::kTieTolerance);
HazardRatios hazardRatios(const Pooled& pooled, double level);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_COMPARISON_H_
