// The actuarial table, from counts by time.
#include "analysis/life/actuarial.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "text/charconv.h"

namespace survmeth {

using engine::Refusal;
using engine::Role;
using engine::curves::Curve;
using engine::curves::Options;
namespace {

constexpr double kMostIntervals = 100000;

// A positive number as its shortest decimal: digits x 10^exponent.
struct Decimal {
  std::string digits;
  int exponent = 0;
};

Decimal shortestDecimal(double value) {
  char buffer[40];
  const auto end =
      text::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific);
  const std::string text(buffer, end.ptr);  // d.ddde+xx
  const std::size_t e = text.find('e');
  Decimal result{text.substr(0, 1), std::atoi(text.c_str() + e + 1)};
  if (e > 2) {
    result.digits += text.substr(2, e - 2);
    result.exponent -= static_cast<int>(e - 2);
  }
  return result;
}

// The double nearest to k times the decimal, as reading its digits from a file would give.
double multiple(const Decimal& unit, std::uint64_t k) {
  // Schoolbook multiplication digit by digit: 17 digits times k may pass 64 bits.
  std::string product;
  std::uint64_t carry = 0;
  for (auto digit = unit.digits.rbegin(); digit != unit.digits.rend(); ++digit) {
    carry += static_cast<std::uint64_t>(*digit - '0') * k;
    product += static_cast<char>('0' + carry % 10);
    carry /= 10;
  }
  for (; carry > 0; carry /= 10) product += static_cast<char>('0' + carry % 10);
  std::reverse(product.begin(), product.end());
  product += 'e' + std::to_string(unit.exponent);
  double value = 0;
  text::from_chars(product.data(), product.data() + product.size(), value);
  return value;
}

// Time until half of the survival at the start of each interval is left, by a straight line within
// the interval in which that happens. That interval never lies before the one found for an earlier
// start, as survival only falls.
void addMedianResiduals(std::vector<LifeInterval>& table) {
  std::size_t j = 0;
  for (std::size_t k = 0; k < table.size() && table[k].survivalAtStart > 0; ++k) {
    LifeInterval& start = table[k];
    const double half = start.survivalAtStart / 2;
    j = std::max(j, k);
    while (j < table.size() && !(table[j].survivalAtEnd <= half)) ++j;
    if (j == table.size()) return;
    const LifeInterval& row = table[j];
    if (!std::isfinite(row.upper)) return;
    const double part = (row.survivalAtStart - half) / (row.survivalAtStart - row.survivalAtEnd);
    start.medianResidual = row.lower - start.lower + (row.upper - row.lower) * part;
    start.medianResidualError = half / (row.density * std::sqrt(start.effective));
  }
}

}  // namespace

std::vector<double> intervalBounds(double width, const std::vector<double>& bounds, double last) {
  std::vector<double> lower;
  if (width != 0) {
    if (!bounds.empty()) {
      throw Refusal(Role::kIntervals, Refusal::kNone,
                    "a width and bounds are given, expected one of the two");
    }
    if (!std::isfinite(width) || width < 0) {
      throw Refusal(Role::kIntervals, Refusal::kNone, "the width is not a positive number");
    }
    if (!(last / width < kMostIntervals - 1)) {
      throw Refusal(Role::kIntervals, Refusal::kNone,
                    "the width gives more than 100,000 intervals");
    }
    const Decimal unit = shortestDecimal(width);
    for (std::uint64_t k = 0; k == 0 || lower.back() <= last; ++k) {
      lower.push_back(multiple(unit, k));
    }
    return lower;  // the last one is the upper bound of the interval before
  }
  if (bounds.empty()) throw Refusal(Role::kIntervals, Refusal::kNone, "there are no bounds");
  if (static_cast<double>(bounds.size()) > kMostIntervals) {
    throw Refusal(Role::kIntervals, Refusal::kNone, "there are more than 100,000 bounds");
  }
  if (bounds.front() != 0) lower.push_back(0);
  for (std::size_t i = 0; i < bounds.size(); ++i) {
    const double bound = bounds[i];
    if (!std::isfinite(bound) || bound < 0 || (!lower.empty() && bound <= lower.back())) {
      throw Refusal(Role::kIntervals, Refusal::kNone, "the bounds are not ascending numbers from 0",
                    i);
    }
    lower.push_back(bound + 0.0);
  }
  lower.push_back(std::numeric_limits<double>::infinity());
  return lower;
}

std::vector<LifeInterval> actuarialTable(const Curve& curve, const std::vector<double>& bounds,
                                         const Options& options) {
  const double z = engine::curves::normalQuantile(options.level);
  std::vector<LifeInterval> table(bounds.size() - 1);
  std::size_t at = 0;
  double survival = 1, sum = 0;
  for (std::size_t k = 0; k < table.size(); ++k) {
    LifeInterval& row = table[k];
    row.lower = bounds[k];
    row.upper = bounds[k + 1];
    if (at == curve.time.size()) continue;
    row.entering = curve.atRisk[at];
    for (; at < curve.time.size() && curve.time[at] < row.upper; ++at) {
      row.events += curve.eventsAt[at];
      row.censored += curve.censoredAt[at];
    }

    const double n = row.effective = row.entering - 0.5 * row.censored;
    const double q = row.conditional = row.events / n, p = 1 - q;
    const double width = row.upper - row.lower;
    row.survivalAtStart = survival;
    if (std::isfinite(width)) {
      row.density = survival * q / width;
      row.densityError = survival / width * std::sqrt(q * q * sum + q * p / n);
      row.hazard = 2 * q / (width * (1 + p));
      // sqrt(1 - (hazard w / 2)^2) with hazard w / 2 = q / (1 + p), so that p = 0 gives 0.
      row.hazardError = 2 * std::sqrt(q / n) / (width * (1 + p)) *
                        std::sqrt(std::max(1 - q * q / ((1 + p) * (1 + p)), 0.0));
    }
    survival *= p;
    row.survivalAtEnd = survival;
    if (p > 0) {
      sum += q / (p * n);
      row.standardError = survival * std::sqrt(sum);
    }
    row.limits = engine::curves::survivalLimits(survival, z * std::sqrt(sum), options.scale);
  }
  addMedianResiduals(table);
  return table;
}

}  // namespace survmeth
