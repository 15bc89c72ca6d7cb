// Reading of numbers, free of any locale.
#include "cli/shell/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace cli {
namespace {

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
    const auto read = std::from_chars(power.data(), power.data() + power.size(), exponent);
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
  if (text.starts_with('+')) text.remove_prefix(1);
  const bool negative = text.starts_with('-');
  const std::string_view digits = text.substr(negative ? 1 : 0);
  // No second sign, and neither inf nor nan.
  if (digits.empty() || !(isDigit(digits[0]) || digits[0] == '.')) return {};
  double value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
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

std::string pValue(double p) {
  if (!std::isfinite(p)) return exact(p);
  if (p < 0.0001) return "<0.0001";
  return p < 0.001 ? fixed(p, 5) : fixed(p, 4);
}

}  // namespace cli
