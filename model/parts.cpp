#include "model/parts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "text/words.h"

namespace survmeth::model {
namespace {

constexpr const char* kSurv = "Surv(time, status) or Surv(entry, exit, status)";

[[noreturn]] void fail(const Formula& formula, const Expression& at, const std::string& sentence) {
  throw frame::ExpressionError(formula.text, at.at, sentence);
}

}  // namespace

bool isCrossing(const Expression& expression) {
  for (const char* each : {"*", ":", "%in%", "/", "^"}) {
    if (expression.isOperator(each)) return true;
  }
  return false;
}

bool isBeside(const Expression& expression) {
  return expression.isCall("strata") || expression.isCall("cluster") || expression.isCall("offset");
}

void readResponse(const Expression& left, Formula& formula) {
  if (!left.isCall("Surv")) {
    fail(formula, left, "the left side is " + text::quote(deparse(left)) + "; expected " + kSurv);
  }
  const auto& arguments = left.arguments;
  if (arguments.size() != 2 && arguments.size() != 3) {
    fail(formula, left,
         "Surv() has " + text::counted(arguments.size(), "argument", "arguments") + "; expected " +
             kSurv);
  }
  static constexpr std::array<const char*, 3> kNames = {"time", "time2", "event"};
  std::array<const Expression*, 3> taken = {};
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& name = left.argumentNames[i];
    if (name.empty()) continue;
    std::size_t place = 0;
    while (place < kNames.size() && name != kNames[place]) ++place;
    if (place == kNames.size()) {
      fail(formula, arguments[i],
           "Surv() has no argument " + text::quote(name) + "; expected time, time2 or event");
    }
    if (taken[place] != nullptr) {
      fail(formula, arguments[i], "Surv() has " + text::quote(name) + " twice; expected it once");
    }
    taken[place] = &arguments[i];
  }
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (!left.argumentNames[i].empty()) continue;
    std::size_t place = 0;
    // Of two arguments the second is the event.
    while (taken[place] != nullptr || (arguments.size() == 2 && place == 1)) ++place;
    taken[place] = &arguments[i];
  }
  if (taken[0] == nullptr || taken[2] == nullptr) {
    fail(formula, left, std::string("Surv() has no time or no event; expected ") + kSurv);
  }
  if (taken[1] != nullptr) formula.entry = *taken[0];
  formula.exit = taken[1] != nullptr ? *taken[1] : *taken[0];
  formula.event = *taken[2];
}

void readBeside(const Expression& expression, Formula& formula) {
  if (expression.isOperator("+") || expression.isCall("(") || isCrossing(expression)) {
    for (const Expression& argument : expression.arguments) readBeside(argument, formula);
    return;
  }
  if (expression.isOperator("-") && expression.arguments.size() == 2) {
    return readBeside(expression.arguments[0], formula);
  }
  if (!isBeside(expression)) return;
  if (expression.arguments.empty()) {
    fail(formula, expression, expression.text + "() is empty; expected a column");
  }
  for (std::size_t i = 0; i < expression.arguments.size(); ++i) {
    const std::string& name = expression.argumentNames[i];
    if (name.empty()) continue;
    fail(formula, expression.arguments[i],
         expression.text + "() has no argument " + text::quote(name) + "; expected a column");
  }
  if (expression.text == "strata") {
    for (const Expression& argument : expression.arguments) {
      // site*strata(arm) + age:strata(arm) names the strata twice.
      const std::string name = deparse(argument);
      const auto& known = formula.strataNames;
      if (std::find(known.begin(), known.end(), name) != known.end()) continue;
      formula.strata.push_back(argument);
      formula.strataNames.push_back(name);
    }
    return;
  }
  if (expression.arguments.size() > 1) {
    fail(formula, expression,
         expression.text + "() has " +
             text::counted(expression.arguments.size(), "argument", "arguments") +
             "; expected one");
  }
  if (expression.text == "offset") {
    formula.offsets.push_back(expression.arguments[0]);
    return;
  }
  if (formula.cluster) {
    fail(formula, expression, "there is more than one cluster(); expected one");
  }
  formula.cluster = expression.arguments[0];
}

}  // namespace survmeth::model
