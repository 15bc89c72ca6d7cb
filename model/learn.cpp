#include "model/learn.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "frame/labels.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::model {
namespace {

using engine::Refusal;
using engine::Role;
using frame::ExpressionError;

constexpr std::size_t kMostLevels = 1000;
constexpr std::size_t kMostColumns = 50;  // of one basis

class Learner {
 public:
  Learner(const frame::Frame& data, const CodingOptions& options, const std::string& text)
      : data_(data), options_(options), text_(text) {}

  CodedVariable learn(const Variable& variable) const {
    CodedVariable coded;
    coded.variable = variable;
    if (const Expression* name = factorName(variable)) {
      learnLevels(coded, *name);
      return coded;
    }
    if (variable.kind == VariableKind::kPlain || variable.kind == VariableKind::kNumbers) {
      requireFinite(variable, numbersOf(variable, data_, text_).numbers);
      return coded;
    }
    requireFinite(variable, numbersOf(variable, data_, text_).numbers);
    // As in R, every row with a value counts, also one that is left out for another variable's sake.
    const frame::Frame& all = data_.whole != nullptr ? *data_.whole : data_;
    const frame::Values values = numbersOf(variable, all, text_);
    std::vector<double> present;
    std::copy_if(values.numbers.begin(), values.numbers.end(), std::back_inserter(present),
                 [](double x) { return std::isfinite(x); });
    switch (variable.kind) {
      case VariableKind::kNaturalSpline:
        coded.basis = naturalSpline(variable, present);
        break;
      case VariableKind::kRestrictedSpline:
        coded.basis = restrictedSpline(variable, present);
        break;
      default:
        coded.basis = polynomial(variable, present);
    }
    return coded;
  }

 private:
  [[noreturn]] void fail(const Expression& at, const std::string& sentence) const {
    throw ExpressionError(text_, at.at, sentence);
  }
  [[noreturn]] static void refuse(std::size_t row, const std::string& sentence) {
    throw Refusal(Role::kFormula, row, sentence);
  }

  const frame::Column& column(const Expression& name) const {
    const frame::Column* found = data_.find(name.text);
    if (found != nullptr) return *found;
    std::vector<std::string> names;
    for (const frame::Column& each : data_.columns) names.push_back(each.name);
    fail(name, "there is no column " + text::quote(name.text) + "; expected one of " +
                   text::nearestFirst(name.text, names));
  }

  // The column's name where the variable is a factor.
  const Expression* factorName(const Variable& variable) const {
    const Expression& whole = variable.expression;
    if (variable.kind == VariableKind::kFactor) {
      if (whole.arguments.size() != 1 || whole.arguments[0].kind != Expression::Kind::kName) {
        fail(whole, whole.text + "() takes one column; expected " + whole.text + "(stage)");
      }
      return &whole.arguments[0];
    }
    if (variable.kind != VariableKind::kPlain) return nullptr;
    const bool asked = std::find(options_.factors.begin(), options_.factors.end(), whole.text) !=
                       options_.factors.end();
    return asked || column(whole).type != frame::Type::kNumber ? &whole : nullptr;
  }

  void learnLevels(CodedVariable& coded, const Expression& name) const {
    coded.column = name.text;
    coded.levels = frame::labelsOf(column(name)).labels;
    if (coded.levels.empty()) refuse(Refusal::kNone, text::quote(name.text) + " has no values");
    if (coded.levels.size() > kMostLevels) {
      refuse(Refusal::kNone, text::quote(name.text) + " has " +
                                 text::counted(coded.levels.size(), "level", "levels") +
                                 ", more than " + text::grouped(kMostLevels));
    }
    for (const auto& [column, reference] : options_.references) {
      if (column != name.text) continue;
      const std::string& level = reference;  // a binding cannot be captured
      const auto found =
          std::find_if(coded.levels.begin(), coded.levels.end(),
                       [&](const std::string& each) { return frame::sameLabel(each, level); });
      if (found == coded.levels.end()) {
        refuse(Refusal::kNone, "no row of " + text::quote(column) + " holds the reference " +
                                   text::quote(level) + "; expected one of " +
                                   text::nearestFirst(level, coded.levels));
      }
      std::rotate(coded.levels.begin(), found, found + 1);
    }
  }

  void requireFinite(const Variable& variable, std::span<const double> numbers) const {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      if (std::isinf(numbers[i])) refuse(i, text::quote(variable.name) + " is infinite");
    }
  }

  // --- Arguments of bases ---

  // The argument named `name`, or the one at `place` where it has no name; nullptr if absent.
  static const Expression* argument(const Expression& call, const char* name, std::size_t place) {
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
      if (call.argumentNames[i] == name) return &call.arguments[i];
    }
    if (place < call.arguments.size() && call.argumentNames[place].empty()) {
      return &call.arguments[place];
    }
    return nullptr;
  }

  void requireArguments(const Expression& call, std::size_t most,
                        const std::vector<std::string>& names) const {
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
                                             : "there is no argument " + text::quote(name) +
                                                   " of " + call.text + "(); expected one of " +
                                                   text::nearestFirst(name, names));
      }
    }
  }

  std::size_t count(const Expression& call, const Expression* at, std::size_t least,
                    std::size_t most, const char* what) const {
    if (at->kind != Expression::Kind::kNumber || at->number < static_cast<double>(least) ||
        at->number > static_cast<double>(most) || at->number != std::trunc(at->number)) {
      fail(*at, text::quote(deparse(*at)) + " is no " + what + " of " + call.text +
                    "(); expected a whole number from " + std::to_string(least) + " to " +
                    std::to_string(most));
    }
    return static_cast<std::size_t>(at->number);
  }

  // c(1, 2, 3) or a single number, ascending.
  std::vector<double> numberList(const Expression& list) const {
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

  static std::size_t differentValues(std::span<const double> numbers) {
    std::vector<double> order(numbers.begin(), numbers.end());
    std::sort(order.begin(), order.end());
    return static_cast<std::size_t>(std::unique(order.begin(), order.end()) - order.begin());
  }

  void requireValues(const Variable& variable, std::span<const double> numbers,
                     std::size_t least) const {
    const std::size_t have = differentValues(numbers);
    if (have >= least) return;
    refuse(Refusal::kNone, text::quote(variable.name) + " has " +
                               text::counted(have, "different value", "different values") +
                               "; expected at least " + std::to_string(least));
  }

  // Knots that coincide, or stand where no data are, leave columns without support.
  void requireKnots(const Variable& variable, const std::vector<double>& knots, double low,
                    double high) const {
    for (std::size_t i = 0; i < knots.size(); ++i) {
      if (i > 0 && !(knots[i - 1] < knots[i])) {
        refuse(Refusal::kNone, "the knots of " + text::quote(variable.name) + " do not ascend: " +
                                   text::exact(knots[i]) + " follows " + text::exact(knots[i - 1]) +
                                   ", for too few rows differ; expected fewer knots");
      }
      if (!(knots[i] > low && knots[i] < high)) {
        refuse(Refusal::kNone, "a knot of " + text::quote(variable.name) + " is at " +
                                   text::exact(knots[i]) + "; expected it between " +
                                   text::exact(low) + " and " + text::exact(high));
      }
    }
  }

  NaturalSpline naturalSpline(const Variable& variable, std::span<const double> numbers) const {
    const Expression& call = variable.expression;
    requireArguments(call, 2, {"df", "knots"});
    const Expression* knots = argument(call, "knots", kMostColumns);
    const Expression* df = argument(call, "df", 1);
    requireValues(variable, numbers, 2);
    NaturalSpline basis;
    if (knots != nullptr) {
      if (df != nullptr) fail(*df, "ns() has both df and knots; expected one of them");
      const auto [low, high] = std::minmax_element(numbers.begin(), numbers.end());
      std::vector<double> list = numberList(*knots);
      requireKnots(variable, list, *low, *high);
      basis = naturalSplineAt(numbers, std::move(list));
    } else {
      const std::size_t columns =
          df == nullptr ? 1 : count(call, df, 1, kMostColumns, "number of columns");
      requireValues(variable, numbers, columns + 1);
      std::vector<double> inner = naturalKnots(numbers, columns);
      const auto [low, high] = std::minmax_element(numbers.begin(), numbers.end());
      requireKnots(variable, inner, *low, *high);
      basis = naturalSplineAt(numbers, std::move(inner));
    }
    return basis;
  }

  RestrictedSpline restrictedSpline(const Variable& variable,
                                    std::span<const double> numbers) const {
    const Expression& call = variable.expression;
    requireArguments(call, 2, {"knots"});
    const Expression* knots = argument(call, "knots", 1);
    if (knots == nullptr || knots->kind == Expression::Kind::kNumber) {
      constexpr std::size_t kFewest = 3, kMost = 7, kUsual = 5;
      const std::size_t wanted =
          knots == nullptr ? kUsual : count(call, knots, kFewest, kMost, "number of knots");
      requireValues(variable, numbers, wanted + 1);
      RestrictedSpline basis = learnRestrictedSpline(numbers, wanted);
      requireKnots(variable, basis.knots, -HUGE_VAL, HUGE_VAL);
      return basis;
    }
    RestrictedSpline basis;
    basis.knots = numberList(*knots);
    if (basis.knots.size() < 3) {
      fail(*knots, "rcs() has " + text::counted(basis.knots.size(), "knot", "knots") +
                       "; expected 3 or more");
    }
    return basis;
  }

  Polynomial polynomial(const Variable& variable, std::span<const double> numbers) const {
    const Expression& call = variable.expression;
    requireArguments(call, 2, {"degree", "raw"});
    const Expression* degree = argument(call, "degree", 1);
    const Expression* raw = argument(call, "raw", kMostColumns);
    if (raw != nullptr && raw->text != "TRUE" && raw->text != "FALSE") {
      fail(*raw, text::quote(deparse(*raw)) + " is no answer; expected TRUE or FALSE");
    }
    const std::size_t wanted = degree == nullptr ? 1 : count(call, degree, 1, 20, "degree");
    requireValues(variable, numbers, wanted + 1);
    return learnPolynomial(numbers, wanted, raw != nullptr && raw->text == "TRUE");
  }

  const frame::Frame& data_;
  const CodingOptions& options_;
  const std::string& text_;
};

}  // namespace

frame::Values numbersOf(const Variable& variable, const frame::Frame& data, const std::string& text,
                        frame::AbsentLabel absent) {
  const bool isBasis = variable.kind == VariableKind::kNaturalSpline ||
                       variable.kind == VariableKind::kRestrictedSpline ||
                       variable.kind == VariableKind::kPolynomial;
  if (!isBasis) return frame::evaluate(variable.expression, data, text, absent);
  if (variable.expression.arguments.empty()) {
    throw ExpressionError(text, variable.expression.at,
                          variable.expression.text + "() is empty; expected a column");
  }
  return frame::evaluate(variable.expression.arguments[0], data, text, absent);
}

CodedVariable learnVariable(const Variable& variable, const frame::Frame& data,
                            const CodingOptions& options, const std::string& text) {
  return Learner(data, options, text).learn(variable);
}

}  // namespace survmeth::model
