// The exponential where it is an ordinary number: the one piece of code behind the scalar
// functions, the arrays and the power, so that all of them agree to the bit.
//
// x = (128 m + j) ln 2 / 128 + r with |r| <= ln 2 / 256, and e^x = 2^m 2^(j / 128) e^r.
// Source Tang, ACM Trans. Math. Software 15 (1989) 144-157
#ifndef NUMERICS_EXP_KERNEL_H_
#define NUMERICS_EXP_KERNEL_H_

#include <cmath>
#include <cstdint>

#include "numerics/bits.h"
#include "numerics/tables.h"

namespace survmeth::numerics {

// Beyond these the scale leaves the range of normal numbers, or the tail times the scale is too
// near its end to keep its digits.
inline constexpr double kExpLowest = -700.0;
inline constexpr double kExpHighest = 709.0;

// scale (1 + tail), the tail below 2^-8.
struct ExpParts {
  double scale, tail;
};

// e^(x + rest), |x| <= 1100, rest a correction below the last place of x. The exponent of the scale
// is `lift` higher than that of the result.
inline ExpParts expParts(double x, double rest, std::uint64_t lift) {
  // Adding 1.5 2^52 rounds to a whole number and leaves it in the lowest bits.
  constexpr double kRound = 0x1.8p52;
  const double shifted = x * kExpInverseStep + kRound;
  const double steps = shifted - kRound;
  const auto k = bitCast<std::uint64_t>(shifted);
  const std::uint64_t j = k & 127;
  // The first difference is exact: two numbers within a factor of 2, or no steps at all.
  const double r = (x - steps * kExpStepHigh) - steps * kExpStepLow + rest;
  const double* c = kExpPolynomial;
  const double square = r * r;
  const double tail =
      kExpTable[j].rest + r + square * (c[0] + r * c[1] + square * (c[2] + r * c[3]));
  // The bits of 128 m, moved by 45, are m in the exponent's field.
  const std::uint64_t power = ((k - j) << 45) + (lift << 52);
  return {bitCast<double>(bitCast<std::uint64_t>(kExpTable[j].value) + power), tail};
}

struct ExpKernel {
  static bool ordinary(double x) { return x >= kExpLowest && x <= kExpHighest; }
  static double value(double x) {
    const ExpParts e = expParts(x, 0.0, 0);
    return e.scale + e.scale * e.tail;
  }
};

struct Expm1Kernel {
  // A zero keeps its sign outside the kernel.
  static bool ordinary(double x) { return std::fabs(x) >= 0x1p-54 && std::fabs(x) <= 708.0; }
  static double value(double x) {
    const double near = nearZero(x);
    const double far = awayFromZero(x);
    return std::fabs(x) <= 0.125 ? near : far;
  }

 private:
  static double nearZero(double x) {
    const double* c = kExpm1Polynomial;
    const double square = x * x;
    const double fourth = square * square;
    const double low = c[0] + x * c[1] + square * (c[2] + x * c[3]);
    const double high = c[4] + x * c[5] + square * (c[6] + x * c[7]) + fourth * c[8];
    return x + (0.5 * square + x * square * (low + fourth * high));
  }
  static double awayFromZero(double x) {
    const ExpParts e = expParts(x, 0.0, 0);
    // scale - 1 and its rounding error
    const double difference = e.scale - 1.0;
    const double part = difference - e.scale;
    const double error = (e.scale - (difference - part)) - (1.0 + part);
    return difference + (error + e.scale * e.tail);
  }
};

}  // namespace survmeth::numerics

#endif  // NUMERICS_EXP_KERNEL_H_
