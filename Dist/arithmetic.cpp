// Arithmetic helpers: square root, sign, minimum, parity, subsets, correlation.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "Dist/Dist"
#include "Dist/doubleDouble.h"

namespace dist {
namespace {

// A power of two that brings the values near 1, so that no square leaves the range.
double scaleOf(const double* values, int n) {
  double largest = 0.0;
  for (int i = 0; i < n; ++i) largest = std::fmax(largest, std::fabs(values[i]));
  if (!std::isfinite(largest)) return 1.0;
  int power = 0;
  std::frexp(largest, &power);
  return std::ldexp(1.0, std::clamp(-power, -1000, 1000));
}

DoubleDouble mean(const double* values, int n, double scale) {
  DoubleDouble sum;
  for (int i = 0; i < n; ++i) sum = sum + values[i] * scale;
  return sum / static_cast<double>(n);
}

}  // namespace
}  // namespace dist

double sqr(double x) { return std::sqrt(x); }

double FSgn(double x) {
  if (std::isnan(x)) return x;
  return x < 0.0 ? -1.0 : 1.0;
}

double Min(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::numeric_limits<double>::quiet_NaN();
  return b < a ? b : a;
}

int IsEven(int n) { return n % 2 == 0 ? 1 : 0; }

void cKurtzberg(int n, int k, int* out) {
  if (k < 1 || k > n) return;
  const auto size = static_cast<std::size_t>(k);
  for (int i = 0; i < k; ++i) out[i] = i + 1;
  for (;;) {
    // The next subset: raise the last element that can be, restart those after it.
    int place = k - 1;
    while (place >= 0 && out[place] == n - (k - 1 - place)) --place;
    if (place < 0) return;
    int* next = out + size;
    std::copy(out, next, next);
    next[place] = out[place] + 1;
    for (int i = place + 1; i < k; ++i) next[i] = next[i - 1] + 1;
    out = next;
  }
}

double V_PearsonRho(const double* x, const double* y, int n) {
  using namespace dist;
  if (n < 1) return std::numeric_limits<double>::quiet_NaN();
  // Exact means, so that a constant vector has no variance and the result is NaN.
  const double scaleX = scaleOf(x, n);
  const double scaleY = scaleOf(y, n);
  const DoubleDouble meanX = mean(x, n, scaleX);
  const DoubleDouble meanY = mean(y, n, scaleY);
  DoubleDouble xx;
  DoubleDouble yy;
  DoubleDouble xy;
  for (int i = 0; i < n; ++i) {
    const DoubleDouble dx = DoubleDouble(x[i] * scaleX) - meanX;
    const DoubleDouble dy = DoubleDouble(y[i] * scaleY) - meanY;
    xx = xx + dx * dx;
    yy = yy + dy * dy;
    xy = xy + dx * dy;
  }
  const double rho = (xy / (squareRoot(xx) * squareRoot(yy))).hi;
  if (std::isnan(rho)) return rho;
  return std::clamp(rho, -1.0, 1.0);
}
