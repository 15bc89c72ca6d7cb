// The values of an expression in the rows of a frame: arithmetic, comparisons, logic, %in% and the
// functions log, log2, log10, log1p, exp, expm1, sqrt, abs and I. A missing cell makes the value
// missing, except where the rest decides it (FALSE & missing is FALSE), as in R; %in% of a missing
// cell is missing too, where R says FALSE: an unknown status is no censored one.
#ifndef FRAME_EVALUATE_H_
#define FRAME_EVALUATE_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/expression.h"
#include "frame/frame.h"

namespace survmeth::frame {

// Numbers (logical values are 0 and 1), NaN where missing. The span points into the frame where the
// expression is a column by itself, else into `own`.
struct Values {
  std::span<const double> numbers;
  std::vector<double> own;
  bool isLogical = false;
  bool isDate = false;  // days of a column of dates by itself

  Values() = default;
  Values(Values&&) = default;
  Values& operator=(Values&&) = default;
};

// A comparison with a label that the column does not have is a slip of the pen more often than a
// wish, except in new data, of which not every label need be there.
enum class AbsentLabel { kRefuse, kFalse };

// In   text    the whole text of which the expression is a part, for messages
// Throws ExpressionError: a column that there is none of (the nearest names follow), labels where
// numbers are wanted, a function that is not known.
// Cost O(rows) for each node
Values evaluate(const Expression& expression, const Frame& data, std::string_view text,
                AbsentLabel absent = AbsentLabel::kRefuse);

// The rows in which a condition is true, and how many there are in which it is missing.
struct RowsWhere {
  std::vector<std::uint32_t> rows;
  std::size_t missing = 0;
};

// In   condition  parsed from `text`
// Throws ExpressionError, also where the expression is not a condition.
RowsWhere rowsWhere(const Expression& condition, const Frame& data, std::string_view text);

}  // namespace survmeth::frame

#endif  // FRAME_EVALUATE_H_
