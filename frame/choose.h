// The rows of a frame that meet a condition, and of these the complete ones.
#ifndef FRAME_CHOOSE_H_
#define FRAME_CHOOSE_H_

#include <string>
#include <vector>

#include "frame/expression.h"
#include "frame/frame.h"
#include "frame/wanted.h"

namespace survmeth::frame {

struct Condition {
  std::string text;
  Expression expression;
};

// Throws ExpressionError.
Condition parseCondition(const std::string& text);

// What has to be read for the rows to be chosen: the wanted columns with their missing cells and
// without limits, as the other rows may hold anything, then those that the condition names.
std::vector<Wanted> wantedFor(const Condition& condition, const std::vector<Wanted>& wanted);

// In   data   the columns of wantedFor
// The rows in which the condition is true, and of these those in which no wanted column is missing
// that must not be; the wanted columns only. Labels are those of the chosen rows, as if the file
// had no others. How many rows were chosen is among the remarks.
// Throws ExpressionError; Unreadable where no row is chosen, and for numbers out of range.
Frame chosenRows(const Frame& data, const Condition& condition, const std::vector<Wanted>& wanted);

}  // namespace survmeth::frame

#endif  // FRAME_CHOOSE_H_
