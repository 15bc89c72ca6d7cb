// Reading and writing of numbers, free of any locale.
#include "cli/shell/numbers.h"

#include <charconv>
#include <cmath>

namespace cli {
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
  const auto end = std::to_chars(buffer, buffer + kBuffer, value, format, precision);
  return std::string(buffer, end.ptr);
}

// "-0.000" says nothing that "0.000" does not.
std::string withoutNegativeZero(std::string text) {
  if (text.size() > 1 && text[0] == '-' && text.find_first_not_of("-0.") == std::string::npos) {
    text.erase(0, 1);
  }
  return text;
}

bool equalFolded(std::string_view text, std::string_view lower) {
  if (text.size() != lower.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] + 32) : text[i];
    if (c != lower[i]) return false;
  }
  return true;
}

}  // namespace

std::optional<double> parseNumber(std::string_view text) {
  const char* first = text.data();
  const char* const last = first + text.size();
  if (first != last && *first == '+') {
    ++first;
    if (first != last && *first == '-') return std::nullopt;
  }
  double value = 0;
  const auto [end, error] = std::from_chars(first, last, value);
  if (error == std::errc() && end == last && std::isfinite(value)) return value;
  return std::nullopt;
}

bool spellsMissing(std::string_view text) {
  switch (text.size()) {
    case 0:
      return true;
    case 1:
      return text[0] == '.';
    case 2:
      return equalFolded(text, "na");
    case 3:
      return equalFolded(text, "n/a") || equalFolded(text, "nan");
    case 4:
      return equalFolded(text, "null");
    default:
      return false;
  }
}

std::string exact(double value) {
  if (!std::isfinite(value)) return special(value);
  char buffer[kBuffer];
  const auto end = std::to_chars(buffer, buffer + kBuffer, value);
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

std::string pValue(double p) {
  if (!std::isfinite(p)) return special(p);
  if (p == 0) return "<1e-300";  // below what a double holds
  if (p < 0.0001) return formatted(p, std::chars_format::scientific, 1);
  return p < 0.001 ? fixed(p, 5) : fixed(p, 4);
}

}  // namespace cli
