// The arguments of a call in a formula: ns(age, df = 3), rcs(x, c(1, 2, 5)).
#ifndef MODEL_CALL_ARGUMENTS_H_
#define MODEL_CALL_ARGUMENTS_H_

#include <cstddef>
#include <string>
#include <vector>

#include "frame/expression.h"

namespace survmeth::model {

// Of one call, whose first argument is a column. Every function throws frame::ExpressionError at
// the argument that is wrong.
class CallArguments {
 public:
  // In   text   of the whole formula, for messages; both outlive this
  //      most   arguments that may stand without a name, the column among them
  //      names  of those that have one
  CallArguments(const frame::Expression& call, const std::string& text, std::size_t most,
                const std::vector<std::string>& names);

  // The argument named `name`, or the one at `place` where it has no name; nullptr if absent.
  const frame::Expression* find(const char* name, std::size_t place) const;

  // The whole number at `at`; `what` says what it counts: "degree".
  std::size_t count(const frame::Expression* at, std::size_t least, std::size_t most,
                    const char* what) const;

  // c(1, 2, 3) or a single number, ascending.
  std::vector<double> numberList(const frame::Expression& list) const;

  [[noreturn]] void fail(const frame::Expression& at, const std::string& sentence) const;

 private:
  const frame::Expression& call_;
  const std::string& text_;
};

}  // namespace survmeth::model

#endif  // MODEL_CALL_ARGUMENTS_H_
