// Gray's test that the incidence of one cause is the same in all groups.
#ifndef ENGINE_INCIDENCE_GRAY_H_
#define ENGINE_INCIDENCE_GRAY_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/curves/comparison.h"
#include "engine/incidence/causes.h"

namespace survmeth::engine::incidence {

struct GrayOptions {
  std::uint32_t cause = 1;
  double rho = 0.0;           // weight (1 - pooled incidence)^rho, finite
  double tieTolerance = 0.0;  // 0: only equal times are one
};

// Where no test exists, `reason` says why and the numbers are NaN.
struct GrayTest {
  double chiSquare = kAbsent, pValue = kAbsent;
  double degreesOfFreedom = kAbsent;  // groups that have part less sets of groups that are never
                                      // at risk in one stratum
  std::string reason;
  // Of each group: somebody in it is at risk at an event of the cause, and others with it. The
  // other groups have no part.
  std::vector<bool> included;
};

// The scores sum, over the times of events of the cause, weight times the group's events less its
// share of all events by what is at risk for the subdistribution, n (1 - F) / S of each group;
// strata are summed.
//
// In   response, rows, groups   frequencies and strata of `rows` are used
// Edge Refusal for late entry, sampling weights and clusters; for a cause that is not one of
//      response.causes; for a rho that is not finite. Who leaves before the first event of the cause
//      in the stratum counts for nothing there. No test exists with fewer than two groups at risk
//      at an event, nor where all who are at risk have the event together at its only time, unless
//      competing events before it make up the variance, nor where the estimate of the variance is
//      not positive definite
// Cost O(n log n); for K groups of a stratum O(K^2) for each of its event times
// Source Gray, Ann Statist 16 (1988) 1141-1154
GrayTest grayTest(const Response& response, const Rows& rows, const Groups& groups,
                  const GrayOptions& options);

// The same of several causes, in their order; options.cause does not count. The rows are sorted
// once.
std::vector<GrayTest> grayTests(const Response& response, const Rows& rows, const Groups& groups,
                                std::span<const std::uint32_t> causes, GrayOptions options);
// Of rows whose order is known; the tolerance of ties is theirs.
std::vector<GrayTest> grayTests(const Ordered& ordered, std::span<const std::uint32_t> causes,
                                GrayOptions options);

// Every pair of groups: only their rows are looked at.
//
// Edge pairs without a test have none and do not count in the adjustment
// Cost O(n) for each pair, besides the sort
std::vector<curves::PairTest> grayPairs(const Response& response, const Rows& rows,
                                        const Groups& groups, const GrayOptions& options,
                                        curves::Adjustment adjustment);
std::vector<curves::PairTest> grayPairs(const Ordered& ordered, const GrayOptions& options,
                                        curves::Adjustment adjustment);

}  // namespace survmeth::engine::incidence

#endif  // ENGINE_INCIDENCE_GRAY_H_
