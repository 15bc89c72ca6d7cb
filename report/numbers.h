// How numbers are written. Files hold every digit (the shortest text that reads back as the same
// double); text for people holds the digits that mean something, by what a number is. A value that
// does not exist, NaN, is shown as "-".
#ifndef REPORT_NUMBERS_H_
#define REPORT_NUMBERS_H_

#include <optional>
#include <span>
#include <string>

#include "report/report.h"
#include "text/numbers.h"

namespace survmeth::report {

using text::brief;
using text::exact;
using text::fixed;

// 0.0312; "<0.0001" below that.
std::string pValue(double p);

// The same in a sentence: "p = 0.0312", "p < 0.0001".
std::string pValueInWords(double p);

// Significant digits of estimates unless a person asks for others.
inline constexpr int kEstimateDigits = 5;

// How the numbers of one column are shown: all with the same decimals, so that points stand under
// one another.
struct Format {
  Kind kind = Kind::kEstimate;
  int digits = kEstimateDigits;
  std::optional<int> decimals;  // none: each number by itself, as brief() shows it
};

// Probabilities have four decimals and statistics three. Estimates, times and counts have the
// decimals that show the largest number with `digits` significant digits (estimates; others with
// six) and the smallest with three, less those that are 0 in all; numbers too different in size
// for that are shown each by itself.
// In   values   those of the column; NaN and infinities are passed over
//      digits   significant digits of estimates, 1 or more
// Cost O(values)
Format formatOf(Kind kind, std::span<const double> values, int digits = kEstimateDigits);

std::string shown(double value, const Format& format);

}  // namespace survmeth::report

#endif  // REPORT_NUMBERS_H_
