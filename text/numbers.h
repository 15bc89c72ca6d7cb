// Numbers as text, free of any locale: read with the nearest double, written with every digit (so
// that they read back as the same double) or with those that mean something.
#ifndef TEXT_NUMBERS_H_
#define TEXT_NUMBERS_H_

#include <optional>
#include <string>
#include <string_view>

namespace survmeth::text {

// The number that the whole of `text` spells (decimal, a leading + allowed, no locale), else
// nothing. Infinities, NaN and what is too large for a double are not numbers here; what is too
// small for one is 0.
std::optional<double> parseNumber(std::string_view text);

// Whether the whole of `text` spells a decimal number that is too large for a double.
bool isTooLarge(std::string_view text);

// Shortest text that reads back as the same double, but whole numbers below 10^15 in full: codes
// and line numbers; "-" for NaN, "inf" and "-inf".
std::string exact(double value);

// `decimals` places after the point.
std::string fixed(double value, int decimals);

// At most `digits` significant digits, without trailing zeros; whole numbers in full: times,
// counts and weights.
std::string brief(double value, int digits = 6);

}  // namespace survmeth::text

#endif  // TEXT_NUMBERS_H_
