// Sums, extremes, moments and quantiles of vectors.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "Klikro/utilities.h"

namespace {

bool skipped(const short* skip, int i) { return skip != nullptr && skip[i - 1] == kTrue; }

template <typename Vector>
double sum(const Vector* v, int n) {
  double total = 0.0;
  for (int i = 1; i <= n; ++i) total += v->vbget(i, 1);
  return total;
}

// Values of the first n rows whose flag is not -1.
std::vector<double> valuesOf(const matrix* v, int n, const short* skip) {
  std::vector<double> values;
  values.reserve(static_cast<std::size_t>(std::max(n, 0)));
  for (int i = 1; i <= n; ++i) {
    if (!skipped(skip, i)) values.push_back(v->vbget(i, 1));
  }
  return values;
}

std::vector<double> nonMissingOf(const matrix* v, int n) {
  std::vector<double> values = valuesOf(v, n, nullptr);
  values.erase(std::remove_if(values.begin(), values.end(), isMissing), values.end());
  return values;
}

// NaNs have their place at the end, all alike.
std::vector<double>::iterator numbersFirst(std::vector<double>& values) {
  return std::partition(values.begin(), values.end(), [](double x) { return !std::isnan(x); });
}

// The zero at a place of the values in order, the negative zeros before the others.
double zeroAt(const std::vector<double>& values, std::ptrdiff_t place) {
  const auto before = std::count_if(values.begin(), values.end(), [](double x) {
    return x < 0.0 || (x == 0.0 && std::signbit(x));
  });
  return place < before ? -0.0 : 0.0;
}

double largest(const std::vector<double>& values) {
  const auto end = std::max_element(values.begin(), values.end(), [](double a, double b) {
    return std::isnan(b) ? false : std::isnan(a) || a < b;
  });
  return end == values.end() || std::isnan(*end) ? kMissing : *end;
}

double quantile(std::vector<double> values, double p) {
  if (values.empty()) return kMissing;
  if (std::isnan(p)) return p;
  const double last = static_cast<double>(values.size() - 1);
  // Brought into [0, 1] before the product: an infinite p over one value would have none.
  const double position = last * std::min(std::max(p, 0.0), 1.0);
  const auto below = values.begin() + static_cast<std::ptrdiff_t>(std::floor(position));
  const double fraction = position - std::floor(position);
  const auto end = numbersFirst(values);
  if (below >= end) return std::numeric_limits<double>::quiet_NaN();
  std::nth_element(values.begin(), below, end);
  if (fraction == 0.0) return *below == 0.0 ? zeroAt(values, below - values.begin()) : *below;
  // The sign of a zero has no part in what lies between two numbers.
  if (below + 1 == end) return std::numeric_limits<double>::quiet_NaN();
  const double above = *std::min_element(below + 1, end);
  const double step = above - *below;
  // Ends of both signs near the largest double lie further apart than a double can tell; their
  // halves do not.
  if (std::isinf(step) && std::isfinite(above) && std::isfinite(*below)) {
    return 2.0 * (*below / 2.0 + fraction * (above / 2.0 - *below / 2.0));
  }
  return *below + fraction * step;
}

}  // namespace

double V_Sum2(matrix* v, int n) { return sum(v, n); }
double V_Sum2(matrixInt* v, int n) { return sum(v, n); }

short V_IsConstant(matrix* v, int n, short) {
  for (int i = 2; i <= n; ++i) {
    if (v->vbget(i, 1) != v->vbget(1, 1)) return 0;
  }
  return kTrue;
}

double V_Max(matrix* v, int n, short* skip) { return largest(valuesOf(v, n, skip)); }
double V_Max2(matrix* v, int n) { return largest(valuesOf(v, n, nullptr)); }

void V_Set1toN(matrix* v, int n) {
  for (int i = 1; i <= n; ++i) v->vbset(i, 1, i);
}

void InitVectorToFalse(short* flags, int n) { std::fill_n(flags, std::max(n, 0), short{0}); }

void V_Duplicate(matrix* src, int row, int col, int n, matrix* dst, int row2, int col2) {
  for (int i = 0; i < n; ++i) dst->vbset(row2 + i, col2, src->vbget(row + i, col));
}

double V_Mean(matrix* v, int n, short* skip, matrix* weights) {
  double weighted = 0.0;
  double weight = 0.0;
  for (int i = 1; i <= n; ++i) {
    if (skipped(skip, i)) continue;
    weighted += weights->vbget(i, 1) * v->vbget(i, 1);
    weight += weights->vbget(i, 1);
  }
  return weighted / weight;
}

double V_Mean2(matrix* v, int n) {
  double total = 0.0;
  int present = 0;
  for (int i = 1; i <= n; ++i) {
    const double value = v->vbget(i, 1);
    if (isMissing(value)) continue;
    total += value;
    ++present;
  }
  return total / present;
}

double V_Var(matrix* v, int n, short* skip, matrix* weights) {
  const double mean = V_Mean(v, n, skip, weights);
  double squares = 0.0;
  double weight = 0.0;
  for (int i = 1; i <= n; ++i) {
    if (skipped(skip, i)) continue;
    const double deviation = v->vbget(i, 1) - mean;
    squares += weights->vbget(i, 1) * (deviation * deviation);
    weight += weights->vbget(i, 1);
  }
  return squares / (weight - 1.0);
}

void V_MeanStdev(matrix* v, int n, short* skip, matrix* weights, double* mean, double* sd) {
  *mean = V_Mean(v, n, skip, weights);
  *sd = std::sqrt(V_Var(v, n, skip, weights));
}

double V_Var2(matrix* v, int n, short unbiased, short) {
  const double mean = V_Mean2(v, n);
  double squares = 0.0;
  int present = 0;
  for (int i = 1; i <= n; ++i) {
    const double value = v->vbget(i, 1);
    if (isMissing(value)) continue;
    squares += (value - mean) * (value - mean);
    ++present;
  }
  return squares / (present - (unbiased == kTrue ? 1.0 : 0.0));
}

int V_NbNonMissing(matrix* v, int n) { return static_cast<int>(nonMissingOf(v, n).size()); }

int V_NbDistinct(matrix* v, int n) {
  std::vector<double> values = nonMissingOf(v, n);
  std::sort(values.begin(), numbersFirst(values));
  return static_cast<int>(std::unique(values.begin(), values.end()) - values.begin());
}

double V_Quantile(matrix* v, int n, double p) { return quantile(valuesOf(v, n, nullptr), p); }

double V_QuantileM(matrix* v, int n, short* skip, double p) {
  return quantile(valuesOf(v, n, skip), p);
}
