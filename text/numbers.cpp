// Reading and writing of numbers, free of any locale.
#include "text/numbers.h"

#include <algorithm>
#include <cmath>

#include "text/charconv.h"

namespace survmeth::text {
namespace {

// Enough for any double in any of the formats used here, 309 digits before the point included.
constexpr std::size_t kBuffer = 400;
// Whole numbers below this are exact in a double and shown with all their digits.
constexpr double kWholeInFull = 1e15;

std::string special(double value) {
  if (std::isnan(value)) return "-";
  return value > 0 ? "inf" : "-inf";
}

std::string formatted(double value, std::chars_format format, int precision) {
  char buffer[kBuffer];
  const auto end = to_chars(buffer, buffer + kBuffer, value, format, precision);
  return std::string(buffer, end.ptr);
}

// "-0.000" says nothing that "0.000" does not.
std::string withoutNegativeZero(std::string text) {
  if (text.size() > 1 && text[0] == '-' && text.find_first_not_of("-0.") == std::string::npos) {
    text.erase(0, 1);
  }
  return text;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Of a decimal number outside the range of doubles: whether it is above 1, by the place of its
// first digit and the exponent.
bool isAboveOne(std::string_view text) {
  const std::size_t mantissa = std::min(text.find_first_of("eE"), text.size());
  const std::size_t point = std::min(text.find('.'), mantissa);
  const std::size_t digit = text.find_first_of("123456789");
  const auto place = static_cast<long long>(point) - static_cast<long long>(digit);
  long long exponent = 0;
  if (mantissa < text.size()) {
    std::string_view power = text.substr(mantissa + 1);
    if (power.starts_with('+')) power.remove_prefix(1);
    const auto read = from_chars(power.data(), power.data() + power.size(), exponent);
    if (read.ec != std::errc()) return !power.starts_with('-');  // more digits than that
  }
  return place + exponent > 0;
}

// What the whole of a text spells: a finite number, one too large for a double, or neither.
struct Spelled {
  std::optional<double> number;
  bool tooLarge = false;
};

Spelled spelledBy(std::string_view text) {
  const bool plus = text.starts_with('+');
  if (plus) text.remove_prefix(1);
  const bool negative = !plus && text.starts_with('-');
  const std::string_view digits = text.substr(negative ? 1 : 0);
  // No second sign, and neither inf nor nan.
  if (digits.empty() || !(isDigit(digits[0]) || digits[0] == '.')) return {};
  double value = 0;
  const auto [end, error] = from_chars(digits.data(), digits.data() + digits.size(), value);
  if (end != digits.data() + digits.size() || error == std::errc::invalid_argument) return {};
  if (error == std::errc::result_out_of_range || !std::isfinite(value)) {
    if (isAboveOne(digits)) return {std::nullopt, true};
    value = 0;
  }
  return {negative ? -value : value, false};
}

}  // namespace

std::optional<double> parseNumber(std::string_view text) { return spelledBy(text).number; }

bool isTooLarge(std::string_view text) { return spelledBy(text).tooLarge; }

std::string exact(double value) {
  if (!std::isfinite(value)) return special(value);
  const bool isWhole = value == std::trunc(value) && std::fabs(value) < kWholeInFull;
  if (isWhole && value != 0) return fixed(value, 0);  // -0 keeps its sign
  char buffer[kBuffer];
  const auto end = to_chars(buffer, buffer + kBuffer, value);
  return std::string(buffer, end.ptr);
}

std::string fixed(double value, int decimals) {
  if (!std::isfinite(value)) return special(value);
  return withoutNegativeZero(formatted(value, std::chars_format::fixed, decimals));
}

std::string brief(double value, int digits) {
  if (!std::isfinite(value)) return special(value);
  if (value == std::trunc(value) && std::fabs(value) < kWholeInFull) return fixed(value, 0);
  return withoutNegativeZero(formatted(value, std::chars_format::general, digits));
}

}  // namespace survmeth::text
