// Reading of numbers, free of any locale.
#include "cli/shell/numbers.h"

#include <charconv>
#include <cmath>

namespace cli {
namespace {

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

std::string pValue(double p) {
  if (!std::isfinite(p)) return exact(p);
  if (p < 0.0001) return "<0.0001";
  return p < 0.001 ? fixed(p, 5) : fixed(p, 4);
}

}  // namespace cli
