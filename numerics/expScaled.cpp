// The exponential at and beyond the ends of the range of doubles.
#include "numerics/expScaled.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "numerics/expKernel.h"

namespace survmeth::numerics {
namespace {

// Twice these are infinite and less than half the smallest double.
constexpr double kTooLarge = 710.0;
constexpr double kTooSmall = -746.0;
// Room for the kernel's power of two at either end of the range.
constexpr std::uint64_t kLift = 1024;

// (scale + low) 2^-1022, scale > 0, rounded once.
double toSubnormal(double scale, double low) {
  constexpr double kSmallest = std::numeric_limits<double>::min();
  const double sum = scale + low;
  if (sum >= 1.0) return sum * kSmallest;
  // The last place of a subnormal is that of a number in [1, 2) before scaling.
  const double rest = (scale - sum) + low;
  const double raised = 1.0 + sum;
  const double lost = ((1.0 - raised) + sum) + rest;
  return ((raised + lost) - 1.0) * kSmallest;
}

}  // namespace

double expScaled(double x, double rest) {
  if (std::isnan(x)) return x + x;
  if (x > kTooLarge) return std::numeric_limits<double>::infinity();
  if (x < kTooSmall) return 0.0;
  if (x >= kExpLowest && x <= kExpHighest) {
    const ExpParts e = expParts(x, rest, 0);
    return e.scale + e.scale * e.tail;
  }
  if (x > 0.0) {
    const ExpParts e = expParts(x, rest, std::uint64_t{0} - kLift);
    return (e.scale + e.scale * e.tail) * 0x1p1023 * 2.0;
  }
  const ExpParts e = expParts(x, rest, 1022);
  return toSubnormal(e.scale, e.scale * e.tail);
}

}  // namespace survmeth::numerics
