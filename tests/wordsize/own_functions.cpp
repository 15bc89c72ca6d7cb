// The exponential, logarithm and power that the libraries take from the system, computed here with
// +, -, *, / only: a program that links this file gives its libraries the same three functions in
// either word size. SURVMETH_MOVE="pattern ulps" moves every result that is not exact by so many
// units in the last place, up or down as the pattern's number says: what changes then depends on
// these functions, and how far it moves shows how much the rest of the calculation amplifies.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "numerics/doubleDoubleFunctions.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Move {
  std::uint64_t pattern = 0;
  std::int64_t ulps = 0;
};

const Move move = [] {
  Move read;
  if (const char* text = std::getenv("SURVMETH_MOVE")) {
    char* end = nullptr;
    read.pattern = std::strtoull(text, &end, 10);
    read.ulps = std::strtoll(end, nullptr, 10);
  }
  return read;
}();

// The direction follows from the bits of the result, so that equal calls stay equal.
double moved(double value) {
  if (move.ulps == 0 || value == 0.0 || !std::isfinite(value)) return value;
  std::int64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  std::uint64_t mixed = static_cast<std::uint64_t>(bits) + move.pattern * 0x9E3779B97F4A7C15u;
  mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
  bits += (mixed >> 63) != 0 ? move.ulps : -move.ulps;
  std::memcpy(&value, &bits, sizeof bits);
  return value;
}

}  // namespace

// Declared noexcept by the C library's own header.
extern "C" __attribute__((visibility("default"))) double exp(double x) noexcept {
  if (x == 0.0) return 1.0;
  return moved(survmeth::numerics::exponentialRounded(x));
}

extern "C" __attribute__((visibility("default"))) double log(double x) noexcept {
  if (std::isnan(x) || x == kInfinity) return x;
  if (x < 0.0) return kNan;
  if (x == 0.0) return -kInfinity;
  return moved(survmeth::numerics::logarithm(x).hi);
}

extern "C" __attribute__((visibility("default"))) double pow(double x, double y) noexcept {
  if (y == 0.0 || x == 1.0) return 1.0;
  if (std::isnan(x) || std::isnan(y)) return kNan;
  if (y == 1.0) return x;
  const bool whole = y == std::floor(y);
  const bool odd = whole && std::fabs(y) < 0x1p53 && std::fmod(y, 2.0) != 0.0;
  if (x < 0.0 && !whole) return kNan;
  const double sign = odd && std::signbit(x) ? -1.0 : 1.0;
  const double base = std::fabs(x);
  if (base == 0.0 || base == kInfinity)
    return sign * ((base == 0.0) == (y > 0.0) ? 0.0 : kInfinity);
  if (std::isinf(y)) return base == 1.0 ? 1.0 : (base > 1.0) == (y > 0.0) ? kInfinity : 0.0;
  return moved(sign *
               survmeth::numerics::exponentialRounded(survmeth::numerics::logarithm(base) * y));
}
