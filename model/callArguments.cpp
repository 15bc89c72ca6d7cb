#include "model/callArguments.h"

#include <algorithm>
#include <cmath>

#include "text/words.h"

namespace survmeth::model {

using frame::Expression;

CallArguments::CallArguments(const Expression& call, const std::string& text, std::size_t most,
                             const std::vector<std::string>& names)
    : call_(call), text_(text) {
  if (!call.argumentNames[0].empty()) {
    fail(call.arguments[0], "the first argument of " + call.text + "() is " +
                                text::quote(call.argumentNames[0]) + "; expected a column");
  }
  for (std::size_t i = 1; i < call.arguments.size(); ++i) {
    const std::string& name = call.argumentNames[i];
    const bool known =
        name.empty() ? i < most : std::find(names.begin(), names.end(), name) != names.end();
    if (!known) {
      fail(call.arguments[i], name.empty() ? call.text + "() has too many arguments"
                                           : "there is no argument " + text::quote(name) + " of " +
                                                 call.text + "(); expected one of " +
                                                 text::nearestFirst(name, names));
    }
  }
}

void CallArguments::fail(const Expression& at, const std::string& sentence) const {
  throw frame::ExpressionError(text_, at.at, sentence);
}

const Expression* CallArguments::find(const char* name, std::size_t place) const {
  for (std::size_t i = 0; i < call_.arguments.size(); ++i) {
    if (call_.argumentNames[i] == name) return &call_.arguments[i];
  }
  if (place < call_.arguments.size() && call_.argumentNames[place].empty()) {
    return &call_.arguments[place];
  }
  return nullptr;
}

std::size_t CallArguments::count(const Expression* at, std::size_t least, std::size_t most,
                                 const char* what) const {
  if (at->kind != Expression::Kind::kNumber || at->number < static_cast<double>(least) ||
      at->number > static_cast<double>(most) || at->number != std::trunc(at->number)) {
    fail(*at, text::quote(deparse(*at)) + " is no " + what + " of " + call_.text +
                  "(); expected a whole number from " + std::to_string(least) + " to " +
                  std::to_string(most));
  }
  return static_cast<std::size_t>(at->number);
}

std::vector<double> CallArguments::numberList(const Expression& list) const {
  std::vector<const Expression*> all;
  if (list.isCall("c")) {
    for (const Expression& each : list.arguments) all.push_back(&each);
  } else {
    all.push_back(&list);
  }
  std::vector<double> numbers;
  for (const Expression* each : all) {
    const bool negative = each->isOperator("-") && each->arguments.size() == 1;
    const Expression& literal = negative ? each->arguments[0] : *each;
    if (literal.kind != Expression::Kind::kNumber) {
      fail(*each, text::quote(deparse(*each)) + " is not a number; expected c(...) of numbers");
    }
    numbers.push_back(negative ? -literal.number : literal.number);
    if (numbers.size() > 1 && !(numbers[numbers.size() - 2] < numbers.back())) {
      fail(*each, "the knots do not ascend; expected each above the one before");
    }
  }
  if (numbers.empty()) fail(list, "there are no knots; expected c(...) of numbers");
  return numbers;
}

}  // namespace survmeth::model
