#include "engine/cox/fall.h"

#include <cmath>
#include <limits>

namespace survmeth::engine::cox {

// Newton's steps on a function that is nearly a straight line, halved where they leave the bracket.
double limitOfFall(const std::function<Fall(double)>& fallAt, const FallSearch& search,
                   bool& exists) {
  const auto& [start, first, z, sign, far] = search;
  double inside = start;
  double outside = sign * std::numeric_limits<double>::infinity();
  double b = first;
  for (int step = 0; step < 100; ++step) {
    const Fall fall = fallAt(b);
    if (!fall.exists) {
      exists = false;
      return std::numeric_limits<double>::quiet_NaN();
    }
    if (std::fabs(fall.root - z) <= 1e-10 * z) return b;
    (fall.root < z ? inside : outside) = b;
    double next = b + (z - fall.root) / fall.slope;
    const bool bracketed = std::isfinite(outside);
    const bool within =
        sign * (next - inside) > 0.0 && (!bracketed || sign * (outside - next) > 0.0);
    if (!within || !std::isfinite(next)) {
      next = bracketed ? 0.5 * (inside + outside) : b + sign * (1.0 + std::fabs(b - first));
    }
    if (next == b) return b;
    if (sign * next > far) return sign * std::numeric_limits<double>::infinity();
    b = next;
  }
  exists = false;
  return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace survmeth::engine::cox
