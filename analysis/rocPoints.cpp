// The operating points of a curve, as far apart as somebody can tell them.
#include <cstddef>

#include "analysis/rocCurve.h"

namespace survmeth {

RocCurve::Points RocCurve::points(double step) const {
  Points points{{0}, {0}};
  const std::size_t count = thresholds.size();
  for (std::size_t i = 0; i < count; ++i) {
    const RocThreshold& row = thresholds[lowerIsPositive ? i : count - 1 - i];
    const double x = row.fp / negatives, y = row.tp / positives;
    if (i + 1 < count && x - points.x.back() < step && y - points.y.back() < step) continue;
    points.x.push_back(x);
    points.y.push_back(y);
  }
  return points;
}

}  // namespace survmeth
