// How numbers are read from cells and written to files and tables.
//
// Files and JSON hold every digit (shortest text that reads back as the same double); text for
// people holds the digits that mean something. A value that does not exist, NaN, is shown as "-".
#ifndef CLI_SHELL_NUMBERS_H_
#define CLI_SHELL_NUMBERS_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "text/words.h"

namespace cli {

// The number that the whole of `text` spells (decimal, a leading + allowed, no locale), else
// nothing. Infinities, NaN and what no finite double can hold are not numbers here.
std::optional<double> parseNumber(std::string_view text);

// Whether a cell spells a missing value: empty, NA, N/A, NaN, null or . in any case.
bool spellsMissing(std::string_view text);

// Shortest text that reads back as the same double; "-" for NaN, "inf" and "-inf".
std::string exact(double value);

// `decimals` places after the point.
std::string fixed(double value, int decimals);

// At most `digits` significant digits, without trailing zeros; whole numbers in full: times,
// counts and weights.
std::string brief(double value, int digits = 6);

// 0.0312; 0.00024 below 0.001; 4.2e-05 below 0.0001.
std::string pValue(double p);

using survmeth::text::counted;
using survmeth::text::grouped;

}  // namespace cli

#endif  // CLI_SHELL_NUMBERS_H_
