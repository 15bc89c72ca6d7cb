// How numbers are read from cells; how they are written is the report's business.
#ifndef CLI_SHELL_NUMBERS_H_
#define CLI_SHELL_NUMBERS_H_

#include <optional>
#include <string>
#include <string_view>

#include "report/numbers.h"
#include "text/words.h"

namespace cli {

using survmeth::report::brief;
using survmeth::report::exact;
using survmeth::report::fixed;
using survmeth::text::counted;
using survmeth::text::grouped;

// The number that the whole of `text` spells (decimal, a leading + allowed, no locale), else
// nothing. Infinities, NaN and what is too large for a double are not numbers here; what is too
// small for one is 0.
std::optional<double> parseNumber(std::string_view text);

// Whether the whole of `text` spells a decimal number that is too large for a double.
bool isTooLarge(std::string_view text);

// 0.0312; 0.00024 below 0.001; <0.0001 below 0.0001.
std::string pValue(double p);

}  // namespace cli

#endif  // CLI_SHELL_NUMBERS_H_
