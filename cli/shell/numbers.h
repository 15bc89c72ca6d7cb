// How the commands show numbers.
#ifndef CLI_SHELL_NUMBERS_H_
#define CLI_SHELL_NUMBERS_H_

#include <optional>
#include <string>
#include <string_view>

#include "report/numbers.h"
#include "text/numbers.h"
#include "text/words.h"

namespace cli {

using survmeth::report::brief;
using survmeth::report::exact;
using survmeth::report::fixed;
using survmeth::text::counted;
using survmeth::text::grouped;
using survmeth::text::isTooLarge;
using survmeth::text::parseNumber;

// 0.0312; 0.00024 below 0.001; <0.0001 below 0.0001.
std::string pValue(double p);

}  // namespace cli

#endif  // CLI_SHELL_NUMBERS_H_
