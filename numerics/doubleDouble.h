// Numbers of twice the precision of a double: the unevaluated sum of two doubles, 106 bits.
//
// Only +, -, *, / and square root of doubles are used, so the results have the same bits on every
// machine that rounds to double after each operation. Factors must stay below 2^996, where
// splitting one would overflow.
// Source Dekker, Numer. Math. 18 (1971) 224-242; Knuth, Seminumerical Algorithms, 4.2.2
#ifndef NUMERICS_DOUBLE_DOUBLE_H_
#define NUMERICS_DOUBLE_DOUBLE_H_

#include <cmath>

namespace survmeth::numerics {

struct DoubleDouble {
  double hi = 0.0;
  double lo = 0.0;

  constexpr DoubleDouble() = default;
  constexpr DoubleDouble(double value) : hi(value) {}  // implicit: a double is one
  constexpr DoubleDouble(double high, double low) : hi(high), lo(low) {}
};

// a + b and its rounding error, |a| >= |b|.
inline DoubleDouble quickTwoSum(double a, double b) {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}

// a + b and its rounding error.
inline DoubleDouble twoSum(double a, double b) {
  const double sum = a + b;
  const double part = sum - a;
  return {sum, (a - (sum - part)) + (b - part)};
}

// The upper and lower 26 bits of a.
inline DoubleDouble split(double a) {
  const double scaled = 134217729.0 * a;  // 2^27 + 1
  const double high = scaled - (scaled - a);
  return {high, a - high};
}

// a * b and its rounding error.
inline DoubleDouble twoProduct(double a, double b) {
  const double product = a * b;
  const DoubleDouble u = split(a);
  const DoubleDouble v = split(b);
  return {product, ((u.hi * v.hi - product) + u.hi * v.lo + u.lo * v.hi) + u.lo * v.lo};
}

inline DoubleDouble operator-(DoubleDouble a) { return {-a.hi, -a.lo}; }

inline DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
  DoubleDouble high = twoSum(a.hi, b.hi);
  const DoubleDouble low = twoSum(a.lo, b.lo);
  high = quickTwoSum(high.hi, high.lo + low.hi);
  return quickTwoSum(high.hi, high.lo + low.lo);
}

inline DoubleDouble operator+(DoubleDouble a, double b) {
  const DoubleDouble high = twoSum(a.hi, b);
  return quickTwoSum(high.hi, high.lo + a.lo);
}

inline DoubleDouble operator-(DoubleDouble a, DoubleDouble b) { return a + (-b); }
inline DoubleDouble operator-(DoubleDouble a, double b) { return a + (-b); }

inline DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble product = twoProduct(a.hi, b.hi);
  return quickTwoSum(product.hi, product.lo + (a.hi * b.lo + a.lo * b.hi));
}

inline DoubleDouble operator*(DoubleDouble a, double b) {
  const DoubleDouble product = twoProduct(a.hi, b);
  return quickTwoSum(product.hi, product.lo + a.lo * b);
}

inline DoubleDouble operator/(DoubleDouble a, double b) {
  const double quotient = a.hi / b;
  const DoubleDouble rest = a - twoProduct(quotient, b);
  return quickTwoSum(quotient, rest.hi / b);
}

inline DoubleDouble operator/(DoubleDouble a, DoubleDouble b) {
  const double quotient = a.hi / b.hi;
  const DoubleDouble rest = a - b * quotient;
  return quickTwoSum(quotient, rest.hi / b.hi);
}

// Square root of a >= 0.
inline DoubleDouble squareRoot(DoubleDouble a) {
  if (!(a.hi > 0.0)) return 0.0;
  const double root = std::sqrt(a.hi);
  const DoubleDouble rest = a - twoProduct(root, root);
  return quickTwoSum(root, rest.hi / (2.0 * root));
}

// value * 2^exponent: a probability too small, or a power too large, for the range of a double.
struct Scaled {
  DoubleDouble value;
  int exponent = 0;
};

inline Scaled operator*(Scaled a, DoubleDouble b) { return {a.value * b, a.exponent}; }
inline Scaled operator/(Scaled a, DoubleDouble b) { return {a.value / b, a.exponent}; }
inline Scaled operator-(Scaled a) { return {-a.value, a.exponent}; }

inline double toDouble(Scaled a) { return std::ldexp(a.value.hi, a.exponent); }

// The same as a double-double, for values well inside the range.
inline DoubleDouble toDoubleDouble(Scaled a) {
  return {std::ldexp(a.value.hi, a.exponent), std::ldexp(a.value.lo, a.exponent)};
}

}  // namespace survmeth::numerics

#endif  // NUMERICS_DOUBLE_DOUBLE_H_
