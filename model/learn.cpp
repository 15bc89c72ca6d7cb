#include "model/learn.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "frame/labels.h"
#include "model/callArguments.h"
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
    const CallArguments call(variable.expression, text_, 2, {"df", "knots"});
    const Expression* knots = call.find("knots", kMostColumns);
    const Expression* df = call.find("df", 1);
    requireValues(variable, numbers, 2);
    NaturalSpline basis;
    if (knots != nullptr) {
      if (df != nullptr) fail(*df, "ns() has both df and knots; expected one of them");
      const auto [low, high] = std::minmax_element(numbers.begin(), numbers.end());
      std::vector<double> list = call.numberList(*knots);
      requireKnots(variable, list, *low, *high);
      basis = naturalSplineAt(numbers, std::move(list));
    } else {
      const std::size_t columns =
          df == nullptr ? 1 : call.count(df, 1, kMostColumns, "number of columns");
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
    const CallArguments call(variable.expression, text_, 2, {"knots"});
    const Expression* knots = call.find("knots", 1);
    if (knots == nullptr || knots->kind == Expression::Kind::kNumber) {
      constexpr std::size_t kFewest = 3, kMost = 7, kUsual = 5;
      const std::size_t wanted =
          knots == nullptr ? kUsual : call.count(knots, kFewest, kMost, "number of knots");
      requireValues(variable, numbers, wanted + 1);
      RestrictedSpline basis = learnRestrictedSpline(numbers, wanted);
      requireKnots(variable, basis.knots, -HUGE_VAL, HUGE_VAL);
      return basis;
    }
    RestrictedSpline basis;
    basis.knots = call.numberList(*knots);
    if (basis.knots.size() < 3) {
      fail(*knots, "rcs() has " + text::counted(basis.knots.size(), "knot", "knots") +
                       "; expected 3 or more");
    }
    return basis;
  }

  Polynomial polynomial(const Variable& variable, std::span<const double> numbers) const {
    const CallArguments call(variable.expression, text_, 2, {"degree", "raw"});
    const Expression* degree = call.find("degree", 1);
    const Expression* raw = call.find("raw", kMostColumns);
    if (raw != nullptr && raw->text != "TRUE" && raw->text != "FALSE") {
      fail(*raw, text::quote(deparse(*raw)) + " is no answer; expected TRUE or FALSE");
    }
    const std::size_t wanted = degree == nullptr ? 1 : call.count(degree, 1, 20, "degree");
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
