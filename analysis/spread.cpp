// Means and standard deviations in any unit.
#include "analysis/spread.h"

#include <algorithm>
#include <cmath>

namespace survmeth {

int unitOf(std::span<const double> values) {
  double largest = 0;
  for (const double value : values) largest = std::max(largest, std::fabs(value));
  return largest > 0 ? std::ilogb(largest) + 1 : 0;
}

std::vector<double> inUnit(std::span<const double> values, int unit) {
  std::vector<double> scaled(values.begin(), values.end());
  for (double& value : scaled) value = std::ldexp(value, -unit);
  return scaled;
}

double centre(std::vector<double>& values) {
  const double n = static_cast<double>(values.size()), origin = values.front();
  double mean = 0, shift = origin;
  // The first value comes off exactly where all are alike; the mean of what is left is rounded in
  // proportion to that only, and the third pass takes off what the second one's rounding left.
  for (int pass = 0; pass < 3; ++pass) {
    double sum = 0;
    for (double& value : values) sum += value -= shift;
    shift = sum / n;
    if (pass == 0) mean = origin + shift;
  }
  return mean;
}

Spread spreadOf(std::span<const double> values) {
  const int unit = unitOf(values);
  std::vector<double> deviations = inUnit(values, unit);
  const double mean = centre(deviations);
  const int finer = unitOf(deviations);
  double squares = 0;
  for (const double value : deviations) {
    const double scaled = std::ldexp(value, -finer);
    squares += scaled * scaled;
  }
  const double sd = std::sqrt(squares / static_cast<double>(values.size() - 1));
  return {std::ldexp(mean, unit), std::ldexp(sd, unit + finer)};
}

}  // namespace survmeth
