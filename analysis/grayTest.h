// Gray's test that the cumulative incidence of one type of event is the same in all groups while
// other types compete with it.
#ifndef ANALYSIS_GRAY_TEST_H_
#define ANALYSIS_GRAY_TEST_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "analysis/estimate.h"

namespace survmeth {

struct GrayRequest {
  std::span<const double> time;           // finite, not negative
  std::span<const std::uint32_t> status;  // 0 censored, otherwise the type of the event
  std::span<const std::uint32_t> group;   // 0 .. groups - 1; groups may be empty
  std::size_t groups = 0;
  std::uint32_t event = 1;  // the type that is tested, not 0; every other one competes
  double rho = 0;           // weight (1 - pooled incidence)^rho: 0 weighs all times alike
};

// Where no test exists, `reason` says why and the numbers are NaN.
// Degrees of freedom: groups that have part in the test, less one.
struct GrayResult : Test {
  std::string reason;
  // Of each group: somebody in it is at risk at a time of an event of the type. The others have no
  // part in the test.
  std::vector<bool> included;
};

// Throws engine::Refusal: columns of different length or without rows ("time"), a time out of its
// range ("time", with its index), a group code out of range ("group", with its index), type 0
// ("event"), a rho that is not finite ("rho").
// Edge the groups at risk at the first event of the type have part; nobody who left before counts
//      for the statistic. No test exists with fewer than two of them, nor where all who are at
//      risk have the event together at its only time, unless competing events before it make up
//      the variance, nor where the estimate of the variance does not come out positive
// Cost O(n log n + n groups^2)
// Source Gray, Annals of Statistics 16 (1988) 1141-1154
GrayResult grayTest(const GrayRequest& request);

}  // namespace survmeth

#endif  // ANALYSIS_GRAY_TEST_H_
