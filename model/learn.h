// What one variable of a formula learns from data: levels, knots, centres.
#ifndef MODEL_LEARN_H_
#define MODEL_LEARN_H_

#include <string>

#include "frame/evaluate.h"
#include "model/design.h"

namespace survmeth::model {

// In   text   of the whole formula, for messages
// Throws as Coding::learn
CodedVariable learnVariable(const Variable& variable, const frame::Frame& data,
                            const CodingOptions& options, const std::string& text);

// The numbers of a variable that is no factor: of its expression, for a basis of its first
// argument.
frame::Values numbersOf(const Variable& variable, const frame::Frame& data, const std::string& text,
                        frame::AbsentLabel absent = frame::AbsentLabel::kRefuse);

}  // namespace survmeth::model

#endif  // MODEL_LEARN_H_
