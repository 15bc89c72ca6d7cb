// What is read off a curve: its chosen cuts, its direction, its operating points.
#include <cstddef>

#include "engine/roc/curves.h"

namespace survmeth::engine::roc {

std::vector<Threshold> Curve::bestCuts() const {
  std::vector<Threshold> cuts;
  for (const std::size_t k : best) cuts.push_back(thresholds[k]);
  return cuts;
}

std::vector<Threshold> Curve::cheapestCuts() const {
  std::vector<Threshold> cuts;
  for (const std::size_t k : cheapest) cuts.push_back(thresholds[k]);
  if (cuts.empty()) cuts.emplace_back();
  for (Threshold& cut : cuts) cut.cost = leastCost;
  return cuts;
}

bool Curve::belowHalf() const {
  constexpr double kRounding = 1e-12;  // of a weighted area
  return 0.5 - area.value > kRounding;
}

Curve::Points Curve::points(double step) const {
  Points points{{0}, {0}};
  const std::size_t count = thresholds.size();
  for (std::size_t i = 0; i < count; ++i) {
    const Threshold& row = thresholds[lowerIsPositive ? i : count - 1 - i];
    const double x = row.fp / negatives, y = row.tp / positives;
    if (i + 1 < count && x - points.x.back() < step && y - points.y.back() < step) continue;
    points.x.push_back(x);
    points.y.push_back(y);
  }
  return points;
}

}  // namespace survmeth::engine::roc
