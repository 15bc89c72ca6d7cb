#include "frame/evaluate.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>
#include <utility>

#include "frame/date.h"
#include "frame/labels.h"
#include "frame/operators.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::frame {
namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

bool isLiteral(const Expression& expression) {
  return expression.kind == Expression::Kind::kText || expression.kind == Expression::Kind::kNumber;
}

class Evaluator {
 public:
  Evaluator(const Frame& data, std::string_view text, AbsentLabel absent)
      : data_(data), text_(text), absent_(absent) {}

  Values values(const Expression& expression) const {
    switch (expression.kind) {
      case Expression::Kind::kNumber:
        return owned(std::vector<double>(data_.rows, expression.number));
      case Expression::Kind::kText:
        fail(expression, text::quote(expression.text) + " is a text; expected numbers");
      case Expression::Kind::kName:
        return ofName(expression);
      case Expression::Kind::kOperator:
        return expression.arguments.size() == 1 ? unary(expression) : binary(expression);
      case Expression::Kind::kCall:
        break;
    }
    return call(expression);
  }

 private:
  [[noreturn]] void fail(const Expression& at, const std::string& sentence) const {
    throw ExpressionError(std::string(text_), at.at, sentence);
  }

  static Values owned(std::vector<double> own, bool isLogical = false) {
    Values values;
    values.own = std::move(own);
    values.numbers = values.own;
    values.isLogical = isLogical;
    return values;
  }

  const Column& column(const Expression& expression) const {
    const Column* found = data_.find(expression.text);
    if (found != nullptr) return *found;
    std::vector<std::string> names;
    for (const Column& each : data_.columns) names.push_back(each.name);
    fail(expression, "there is no column " + text::quote(expression.text) + "; expected one of " +
                         text::nearestFirst(expression.text, names));
  }

  // The column where the expression is one that holds labels, else nullptr.
  const Column* labels(const Expression& expression) const {
    if (expression.isCall("(")) return labels(expression.arguments[0]);
    if (expression.kind != Expression::Kind::kName) return nullptr;
    if (expression.text == "TRUE" || expression.text == "FALSE") return nullptr;
    const Column& found = column(expression);
    return found.type == Type::kNumber ? nullptr : &found;
  }

  Values ofName(const Expression& expression) const {
    if (expression.text == "TRUE" || expression.text == "FALSE") {
      return owned(std::vector<double>(data_.rows, expression.text == "TRUE" ? 1.0 : 0.0), true);
    }
    const Column& found = column(expression);
    if (found.type != Type::kNumber) {
      fail(expression, "the column " + text::quote(found.name) +
                           " holds labels; expected numbers, or a comparison with a label in "
                           "quotes");
    }
    Values values;
    values.numbers = found.numbers;
    values.isDate = found.isDate;
    return values;
  }

  Values unary(const Expression& expression) const {
    if (expression.text == "~") {
      fail(expression, "\"~\" does not fit here; expected an expression of columns");
    }
    const Values inner = values(expression.arguments[0]);
    std::vector<double> own(data_.rows);
    const bool isNot = expression.text == "!";
    for (std::size_t i = 0; i < own.size(); ++i) {
      const double value = inner.numbers[i];
      if (isNot) {
        own[i] = std::isnan(value) ? kMissing : value == 0 ? 1 : 0;
      } else {
        own[i] = expression.text == "-" ? -value : value;
      }
    }
    return owned(std::move(own), isNot);
  }

  // One value for each level of a column of labels, carried to the rows.
  Values ofLevels(const Column& column, const std::function<bool(const std::string&)>& is) const {
    std::vector<double> ofLevel;
    for (const std::string& level : column.levels) ofLevel.push_back(is(level) ? 1 : 0);
    std::vector<double> own(data_.rows);
    for (std::size_t i = 0; i < own.size(); ++i) {
      own[i] = column.isMissing(i) ? kMissing : ofLevel[column.codes[i]];
    }
    return owned(std::move(own), true);
  }

  Values comparedLabels(const Expression& expression, const Column& column,
                        const Expression& literal) const {
    if (expression.text != "==" && expression.text != "!=") {
      fail(expression, "the labels of " + text::quote(column.name) +
                           " have no order; expected == or != or %in%");
    }
    if (!isLiteral(literal)) {
      fail(literal,
           "the column " + text::quote(column.name) + " holds labels; expected a label in quotes");
    }
    const bool equal = expression.text == "==";
    requireLevel(column, literal);
    return ofLevels(
        column, [&](const std::string& level) { return sameLabel(level, literal.text) == equal; });
  }

  // A label that no row holds is a slip of the pen more often than a wish.
  void requireLevel(const Column& column, const Expression& literal) const {
    if (absent_ == AbsentLabel::kFalse) return;
    for (const std::string& level : column.levels) {
      if (sameLabel(level, literal.text)) return;
    }
    fail(literal, "no row of " + text::quote(column.name) + " holds " + text::quote(literal.text) +
                      "; expected one of " + text::nearestFirst(literal.text, column.levels));
  }

  Values binary(const Expression& expression) const {
    if (expression.text == "%in%") return in(expression);
    const Expression &left = expression.arguments[0], &right = expression.arguments[1];
    const Binary* found = findBinary(expression.text);
    if (found == nullptr) {
      fail(expression, text::quote(expression.text) +
                           " does not fit here; expected arithmetic, a comparison, & or |");
    }
    const bool isComparison = found->isLogical && found->name != "&" && found->name != "|";
    if (isComparison) {
      if (const Column* column = labels(left)) return comparedLabels(expression, *column, right);
      if (const Column* column = labels(right)) return comparedLabels(expression, *column, left);
    }
    const Values a = isComparison ? compared(left, right) : values(left);
    const Values b = isComparison ? compared(right, left) : values(right);
    std::vector<double> own(data_.rows);
    for (std::size_t i = 0; i < own.size(); ++i) {
      const double x = a.numbers[i], y = b.numbers[i];
      own[i] = isComparison && (std::isnan(x) || std::isnan(y)) ? kMissing : found->value(x, y);
    }
    return owned(std::move(own), found->isLogical);
  }

  bool isDates(const Expression& expression) const {
    if (expression.isCall("(")) return isDates(expression.arguments[0]);
    if (expression.kind != Expression::Kind::kName) return false;
    const Column* found = data_.find(expression.text);
    return found != nullptr && found->isDate;
  }

  double daysOf(const Expression& literal) const {
    const std::optional<double> days = parseDate(literal.text);
    if (days) return *days;
    fail(literal, text::quote(literal.text) + " is no date; expected one such as \"2024-03-01\"");
  }

  // One side of a comparison: a date in quotes beside a column of dates is a number.
  Values compared(const Expression& expression, const Expression& other) const {
    if (expression.kind != Expression::Kind::kText || !isDates(other)) return values(expression);
    return owned(std::vector<double>(data_.rows, daysOf(expression)));
  }

  Values in(const Expression& expression) const {
    const Expression& set = expression.arguments[1];
    std::vector<const Expression*> literals;
    if (isLiteral(set)) {
      literals.push_back(&set);
    } else if (set.isCall("c")) {
      for (const Expression& each : set.arguments) literals.push_back(&each);
    }
    if (literals.empty() || !std::all_of(literals.begin(), literals.end(),
                                         [](const auto* e) { return isLiteral(*e); })) {
      fail(set, "the right side of %in% is " + text::quote(deparse(set)) +
                    "; expected c(...) of labels in quotes or numbers");
    }
    if (const Column* column = labels(expression.arguments[0])) {
      for (const Expression* literal : literals) requireLevel(*column, *literal);
      return ofLevels(*column, [&](const std::string& level) {
        return std::any_of(literals.begin(), literals.end(), [&](const Expression* literal) {
          return sameLabel(level, literal->text);
        });
      });
    }
    const Values left = values(expression.arguments[0]);
    std::vector<double> wanted;
    for (const Expression* literal : literals) {
      if (literal->kind == Expression::Kind::kText && isDates(expression.arguments[0])) {
        wanted.push_back(daysOf(*literal));
        continue;
      }
      const std::optional<double> number = text::parseNumber(literal->text);
      if (!number) {
        fail(*literal, text::quote(literal->text) +
                           " is a text, the left side holds numbers; "
                           "expected numbers");
      }
      wanted.push_back(*number);
    }
    std::vector<double> own(data_.rows);
    for (std::size_t i = 0; i < own.size(); ++i) {
      const double value = left.numbers[i];
      own[i] = std::isnan(value)                                                ? kMissing
               : std::find(wanted.begin(), wanted.end(), value) != wanted.end() ? 1
                                                                                : 0;
    }
    return owned(std::move(own), true);
  }

  Values call(const Expression& expression) const {
    const Function* found = findFunction(expression.text);
    if (found == nullptr) {
      fail(expression, "there is no function " + text::quote(expression.text) +
                           " here; expected one of " +
                           text::nearestFirst(expression.text, functionNames()));
    }
    if (expression.arguments.size() != 1 || !expression.argumentNames[0].empty()) {
      fail(expression, expression.text + "() has " +
                           text::counted(expression.arguments.size(), "argument", "arguments") +
                           "; expected one, without a name");
    }
    Values inner = values(expression.arguments[0]);
    if (found->value == nullptr) return inner;
    std::vector<double> own(data_.rows);
    std::transform(inner.numbers.begin(), inner.numbers.end(), own.begin(), found->value);
    return owned(std::move(own));
  }

  const Frame& data_;
  std::string_view text_;
  AbsentLabel absent_;
};

}  // namespace

Values evaluate(const Expression& expression, const Frame& data, std::string_view text,
                AbsentLabel absent) {
  return Evaluator(data, text, absent).values(expression);
}

RowsWhere rowsWhere(const Expression& condition, const Frame& data, std::string_view text) {
  const Values values = evaluate(condition, data, text);
  if (!values.isLogical) {
    throw ExpressionError(std::string(text), condition.at,
                          "this is no condition; expected a comparison such as age > 40");
  }
  RowsWhere where;
  for (std::size_t i = 0; i < values.numbers.size(); ++i) {
    if (values.numbers[i] == 1) where.rows.push_back(static_cast<std::uint32_t>(i));
    where.missing += std::isnan(values.numbers[i]) ? 1 : 0;
  }
  return where;
}

}  // namespace survmeth::frame
