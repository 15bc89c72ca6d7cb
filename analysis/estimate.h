// Numbers that may not exist, numbers with limits, and tests.
#ifndef ANALYSIS_ESTIMATE_H_
#define ANALYSIS_ESTIMATE_H_

#include <limits>

namespace survmeth {

inline constexpr double kNone = std::numeric_limits<double>::quiet_NaN();  // does not exist

struct Estimate {
  double value = kNone, lower = kNone, upper = kNone;
};

struct Test {
  double chiSquare = kNone, degreesOfFreedom = kNone, pValue = kNone;
};

}  // namespace survmeth

#endif  // ANALYSIS_ESTIMATE_H_
