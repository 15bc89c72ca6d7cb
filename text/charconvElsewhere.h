// The conversions of doubles for standard libraries without them, by fast_float and fmt: character
// by character what the standard says, which a test holds against a library that has them.
#ifndef TEXT_CHARCONV_ELSEWHERE_H_
#define TEXT_CHARCONV_ELSEWHERE_H_

#ifndef FMT_HEADER_ONLY
#define FMT_HEADER_ONLY
#endif
#include <fast_float/fast_float.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string>
#include <system_error>

namespace survmeth::text::elsewhere {

// Out of range both ways, as the standard has it: too large, and not 0 but too small.
inline std::from_chars_result from_chars(const char* first, const char* last, double& value) {
  double read = 0;
  const fast_float::from_chars_result result = fast_float::from_chars(first, last, read);
  if (result.ec != std::errc()) return {result.ptr, result.ec};
  const auto isDigit = [](char c) { return c >= '1' && c <= '9'; };
  const char* const mantissa =
      std::find_if(first, result.ptr, [](char c) { return c == 'e' || c == 'E'; });
  const bool hasDigit = std::any_of(first, mantissa, isDigit);
  if (hasDigit && (read == 0 || std::isinf(read))) {
    return {result.ptr, std::errc::result_out_of_range};
  }
  value = read;
  return {result.ptr, std::errc()};
}

namespace detail {

inline std::to_chars_result copied(const std::string& text, char* first, char* last) {
  if (static_cast<std::ptrdiff_t>(text.size()) > last - first) {
    return {last, std::errc::value_too_large};
  }
  return {std::copy(text.begin(), text.end(), first), std::errc()};
}

// The shortest digits that read back as the same double: d.ddd times ten to the exponent.
struct Shortest {
  std::string digits;
  int exponent = 0;
};

inline Shortest shortestOf(double value) {
  const std::string text = fmt::format("{}", value);
  const std::size_t e = std::min(text.find('e'), text.size());
  std::string mantissa = text.substr(0, e);
  int exponent = e < text.size() ? std::stoi(text.substr(e + 1)) : 0;
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  exponent += static_cast<int>(point) - 1;
  if (point < mantissa.size()) mantissa.erase(point, 1);
  const std::size_t begin = mantissa.find_first_not_of('0');
  if (begin == std::string::npos) return {"0", 0};
  exponent -= static_cast<int>(begin);
  return {mantissa.substr(begin, mantissa.find_last_not_of('0') + 1 - begin), exponent};
}

inline std::string scientific(const Shortest& shortest) {
  std::string text = shortest.digits.substr(0, 1);
  if (shortest.digits.size() > 1) text += "." + shortest.digits.substr(1);
  return text + fmt::format("e{:+03d}", shortest.exponent);
}

inline std::string fixed(const Shortest& shortest, double value) {
  const int after = static_cast<int>(shortest.digits.size()) - 1 - shortest.exponent;
  // A whole number has all its digits, not zeros in the place of those that it could do without.
  return fmt::format("{:.{}f}", value, std::max(after, 0));
}

}  // namespace detail

inline std::to_chars_result to_chars(char* first, char* last, double value) {
  if (!std::isfinite(value)) return detail::copied(fmt::format("{}", value), first, last);
  const std::string sign = std::signbit(value) ? "-" : "";
  const detail::Shortest shortest = detail::shortestOf(std::fabs(value));
  const std::string scientific = detail::scientific(shortest);
  const std::string fixed = detail::fixed(shortest, std::fabs(value));
  return detail::copied(sign + (fixed.size() <= scientific.size() ? fixed : scientific), first,
                        last);
}

// The shortest, in scientific notation.
inline std::to_chars_result to_chars(char* first, char* last, double value, std::chars_format) {
  const std::string sign = std::signbit(value) ? "-" : "";
  return detail::copied(sign + detail::scientific(detail::shortestOf(std::fabs(value))), first,
                        last);
}

inline std::to_chars_result to_chars(char* first, char* last, double value,
                                     std::chars_format format, int precision) {
  switch (format) {
    case std::chars_format::scientific:
      return detail::copied(fmt::format("{:.{}e}", value, precision), first, last);
    case std::chars_format::fixed:
      return detail::copied(fmt::format("{:.{}f}", value, precision), first, last);
    default:
      return detail::copied(fmt::format("{:.{}g}", value, precision), first, last);
  }
}

}  // namespace survmeth::text::elsewhere

#endif  // TEXT_CHARCONV_ELSEWHERE_H_
