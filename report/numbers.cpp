// Writing of numbers, free of any locale.
#include "report/numbers.h"

#include <algorithm>
#include <cmath>

#include "text/charconv.h"
#include "text/numbers.h"

namespace survmeth::report {
namespace {

// Enough for any double in any of the formats used here, 309 digits before the point included.
constexpr std::size_t kBuffer = 400;
// Whole numbers below this are exact in a double and shown with all their digits.
constexpr double kWholeInFull = 1e15;
constexpr int kDataDigits = 6;      // of times and counts
constexpr int kLeastDigits = 3;     // of the smallest number in a column
constexpr int kMostMoreDigits = 4;  // of the largest, over those asked for
constexpr int kProbabilityDecimals = 4;
constexpr int kStatisticDecimals = 3;

std::string formatted(double value, std::chars_format format, int precision) {
  char buffer[kBuffer];
  const auto end = text::to_chars(buffer, buffer + kBuffer, value, format, precision);
  return std::string(buffer, end.ptr);
}

// The power of ten of the first digit once the number is rounded to `digits` digits.
int exponentOf(double value, int digits) {
  const std::string text = formatted(value, std::chars_format::scientific, digits - 1);
  const std::size_t e = text.find('e');
  int exponent = 0;
  const char* first = text.data() + e + (text[e + 1] == '+' ? 2 : 1);
  std::from_chars(first, text.data() + text.size(), exponent);
  return exponent;
}

// Decimals that are not 0 when the number is written with `decimals` of them.
int decimalsUsed(double value, int decimals) {
  const std::string text = formatted(value, std::chars_format::fixed, decimals);
  const std::size_t point = text.find('.');
  if (point == std::string::npos) return 0;
  return static_cast<int>(text.find_last_not_of('0') - point);
}

std::optional<int> sharedDecimals(std::span<const double> values, int digits) {
  double least = 0, most = 0;
  for (const double value : values) {
    const double size = std::fabs(value);
    if (!std::isfinite(value) || size == 0) continue;
    least = least == 0 ? size : std::min(least, size);
    most = std::max(most, size);
  }
  if (most == 0) return 0;
  if (most >= kWholeInFull) return std::nullopt;
  const int leading = exponentOf(most, digits);
  const int wanted = std::max(
      {0, digits - 1 - leading, std::min(digits, kLeastDigits) - 1 - exponentOf(least, digits)});
  if (wanted > 0 && wanted + std::max(leading, 0) + 1 > digits + kMostMoreDigits) {
    return std::nullopt;
  }
  int used = 0;
  for (const double value : values) {
    if (used == wanted) break;
    if (std::isfinite(value)) used = std::max(used, decimalsUsed(value, wanted));
  }
  return used;
}

}  // namespace

std::string pValue(double p) {
  if (!std::isfinite(p)) return text::exact(p);
  return p < 0.0001 ? "<0.0001" : text::fixed(p, kProbabilityDecimals);
}

std::string pValueInWords(double p) {
  const std::string text = pValue(p);
  return text.front() == '<' ? "p < " + text.substr(1) : "p = " + text;
}

Format formatOf(Kind kind, std::span<const double> values, int digits) {
  Format format{kind, kind == Kind::kEstimate ? std::max(digits, 1) : kDataDigits, std::nullopt};
  switch (kind) {
    case Kind::kProbability:
    case Kind::kPValue:
      format.decimals = kProbabilityDecimals;
      break;
    case Kind::kStatistic:
      format.decimals = kStatisticDecimals;
      break;
    case Kind::kEstimate:
    case Kind::kTime:
    case Kind::kCount:
    case Kind::kLabel:
      format.decimals = sharedDecimals(values, format.digits);
      break;
  }
  return format;
}

std::string shown(double value, const Format& format) {
  if (format.kind == Kind::kPValue) return pValue(value);
  if (format.decimals) return text::fixed(value, *format.decimals);
  return text::brief(value, format.digits);
}

}  // namespace survmeth::report
