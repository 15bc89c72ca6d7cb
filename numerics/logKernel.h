// The logarithm where its argument is an ordinary number: the one piece of code behind the scalar
// functions and the arrays, so that they agree to the bit.
//
// x = 2^k z with z in [0.6875, 1.375) and c the tabulated inverse of the middle of z's interval:
// log(x) = k ln 2 - log(c) + log(1 + r), r = z c - 1. Without a fused multiplication r is exact
// as the sum of two products of half of z each; c has few bits for that.
// Source Tang, ACM Trans. Math. Software 16 (1990) 378-400
#ifndef NUMERICS_LOG_KERNEL_H_
#define NUMERICS_LOG_KERNEL_H_

#include <cmath>
#include <cstdint>
#include <limits>

#include "numerics/bits.h"
#include "numerics/tables.h"

namespace survmeth::numerics {

// log(x) = k ln 2 - log(c) + log(1 + r) + rest
struct LogReduced {
  double high, low;  // k ln 2 - log(c), the first exact
  double r, rest;
  double inverse;  // c 2^-k, 0 where that is subnormal
};

// x positive and normal; `lift` is added to k.
inline LogReduced logReduced(double x, double lift) {
  constexpr std::uint64_t kStart = 0x3fe6000000000000;  // bits of 0.6875
  constexpr std::uint64_t kExponentField = 0xfff0000000000000;
  constexpr std::uint64_t kUpperHalf = 0xfffffffff8000000;
  const auto bits = bitCast<std::uint64_t>(x);
  const std::uint64_t distance = bits - kStart;
  const double z = bitCast<double>(bits - (distance & kExponentField));
  // k + 1024 in the lowest bits of 2^52 becomes a double without a conversion of integers.
  const std::uint64_t biased = (distance + (std::uint64_t{1024} << 52)) >> 52;
  const double k =
      bitCast<double>(biased | bitCast<std::uint64_t>(0x1p52)) - (0x1p52 + 1024.0) + lift;
  const LogEntry& entry = kLogTable[(distance >> 45) & 127];

  const double upper = bitCast<double>(bitCast<std::uint64_t>(z) & kUpperHalf);
  const double first = upper * entry.inverse - 1.0;
  const double second = (z - upper) * entry.inverse;
  const double r = first + second;
  // Exact: where the first is smaller than the second, r has no rounding error.
  const double rest = (first - r) + second;
  const double unscale = bitCast<double>((2047 - biased) << 52);
  return {k * kLn2High + entry.high, k * kLn2Low + entry.low, r, rest, entry.inverse * unscale};
}

// The sum of the parts, to about 2^-9 ulp before the last rounding.
inline double logSum(const LogReduced& x) {
  const double* c = kLogPolynomial;
  const double square = x.r * x.r;
  const double cubic =
      c[0] + x.r * c[1] + square * (c[2] + x.r * c[3]) + square * square * (c[4] + x.r * c[5]);
  const double tail = square * (x.r * cubic - 0.5);
  const double sum = x.high + x.r;
  const double error = (x.high - sum) + x.r;
  return sum + ((error + (x.rest + x.low)) + tail);
}

struct LogKernel {
  static bool ordinary(double x) {
    return x >= std::numeric_limits<double>::min() && x <= std::numeric_limits<double>::max();
  }
  static double value(double x) { return logSum(logReduced(x, 0.0)); }
};

struct Log1pKernel {
  // A zero keeps its sign outside the kernel; beyond 2^53 the 1 is lost.
  static bool ordinary(double x) { return std::fabs(x) >= 0x1p-54 && x > -1.0 && x <= 0x1p53; }
  static double value(double x) {
    const double sum = 1.0 + x;
    const double part = sum - x;
    const double error = (x - (sum - part)) + (1.0 - part);
    LogReduced reduced = logReduced(sum, 0.0);
    // log(1 + r + rest) = log(1 + r) + rest / (1 + r) + ...
    const double rest = error * reduced.inverse;
    reduced.rest = reduced.rest + (rest - rest * reduced.r);
    return logSum(reduced);
  }
};

}  // namespace survmeth::numerics

#endif  // NUMERICS_LOG_KERNEL_H_
