// The functions of one number and the operators of two that expressions know.
#ifndef FRAME_OPERATORS_H_
#define FRAME_OPERATORS_H_

#include <string>
#include <string_view>
#include <vector>

namespace survmeth::frame {

struct Function {
  std::string_view name;
  double (*value)(double);  // nullptr: the number itself
};

struct Binary {
  std::string_view name;
  double (*value)(double, double);
  bool isLogical;  // 1, 0 or, where a missing number leaves it open, NaN
};

// nullptr where there is none of this name.
const Function* findFunction(std::string_view name);
const Binary* findBinary(std::string_view name);

std::vector<std::string> functionNames();

}  // namespace survmeth::frame

#endif  // FRAME_OPERATORS_H_
