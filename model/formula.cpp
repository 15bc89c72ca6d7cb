// Expansion of a formula's operators into terms.
#include "model/formula.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <utility>

#include "model/parts.h"
#include "text/words.h"

namespace survmeth::model {
namespace {

using frame::ExpressionError;

constexpr std::size_t kMostTerms = 10000;

bool isDot(const Expression& expression) {
  return expression.kind == Expression::Kind::kName && expression.text == ".";
}

bool containsDot(const Expression& expression) {
  return isDot(expression) ||
         std::any_of(expression.arguments.begin(), expression.arguments.end(), containsDot);
}

class Expander {
 public:
  Expander(Formula& formula, const std::vector<std::string>& allColumns)
      : formula_(formula), allColumns_(allColumns) {}

  void right(const Expression& right) {
    std::vector<Term> terms = expand(right);
    std::stable_sort(terms.begin(), terms.end(), [](const Term& a, const Term& b) {
      return a.variables.size() < b.variables.size();
    });
    // strata() by itself is no term: the strata have a part in others.
    std::erase_if(terms, [this](const Term& term) {
      return std::all_of(term.variables.begin(), term.variables.end(),
                         [this](std::size_t v) { return formula_.variables[v].isStrata(); });
    });
    formula_.terms = std::move(terms);
    for (Term& term : formula_.terms) term.name = nameOf(term);
    dropUnused();
  }

 private:
  [[noreturn]] void fail(const Expression& at, const std::string& sentence) const {
    throw ExpressionError(formula_.text, at.at, sentence);
  }

  // The terms of an expression, in order, each once.
  std::vector<Term> expand(const Expression& expression) {
    if (expression.isCall("(")) return expand(expression.arguments[0]);
    if (isBeside(expression) && !expression.isCall("strata")) return {};
    if (expression.isOperator("+")) {
      if (expression.arguments.size() == 1) return expand(expression.arguments[0]);
      auto [left, right] = operands(expression);
      return united(std::move(left), right);
    }
    if (expression.isOperator("-")) return difference(expression);
    if (expression.isOperator("*")) {
      requireNothingBeside(expression);
      const auto [left, right] = operands(expression);
      return united(united(left, right), crossed(expression, left, right));
    }
    if (expression.isOperator(":") || expression.isOperator("%in%")) {
      requireNothingBeside(expression);
      const auto [left, right] = operands(expression);
      return crossed(expression, left, right);
    }
    if (expression.isOperator("/")) {
      requireNothingBeside(expression);
      const auto [left, right] = operands(expression);
      Term all;
      for (const Term& term : left) all = joined(all, term);
      return united(left, crossed(expression, {all}, right));
    }
    if (expression.isOperator("^")) return power(expression);
    if (expression.kind == Expression::Kind::kNumber) {
      if (expression.number == 0 || expression.number == 1) return {};
      fail(expression, text::quote(expression.text) +
                           " is no term; expected a column, or I(...) around arithmetic");
    }
    if (expression.kind == Expression::Kind::kText) {
      fail(expression, text::quote(expression.text) +
                           " is a text; expected a column (in backticks where its name needs it)");
    }
    if (isDot(expression)) return dot(expression);
    return {Term{{variableOf(expression)}, {}}};
  }

  // The left side first: variables are numbered in the order in which they stand.
  std::pair<std::vector<Term>, std::vector<Term>> operands(const Expression& expression) {
    std::vector<Term> left = expand(expression.arguments[0]);
    return {std::move(left), expand(expression.arguments[1])};
  }

  void requireNothingBeside(const Expression& expression) const {
    for (const Expression& argument : expression.arguments) {
      if (argument.isCall("strata")) {
        if (argument.arguments.size() != 1 ||
            argument.arguments[0].kind != Expression::Kind::kName) {
          fail(argument, "strata() in an interaction takes one column; expected strata(site)");
        }
      } else if (isBeside(argument)) {
        fail(argument, argument.text +
                           "() has no part in interactions; expected it as a summand, and C(...) "
                           "for a factor that interacts");
      }
      requireNothingBeside(argument);
    }
  }

  std::vector<Term> difference(const Expression& expression) {
    if (expression.arguments.size() == 1) {  // -1 at the beginning
      expand(expression.arguments[0]);
      return {};
    }
    std::vector<Term> left = expand(expression.arguments[0]);
    for (const Term& gone : expand(expression.arguments[1])) std::erase(left, gone);
    return left;
  }

  std::vector<Term> power(const Expression& expression) {
    requireNothingBeside(expression);
    const Expression& exponent = expression.arguments[1];
    if (exponent.kind != Expression::Kind::kNumber || exponent.number < 1 ||
        exponent.number != std::trunc(exponent.number) || exponent.number > 100) {
      fail(exponent, text::quote(deparse(exponent)) +
                         " is no power of a sum of terms; expected a whole number, or I(...) "
                         "around arithmetic");
    }
    const std::vector<Term> base = expand(expression.arguments[0]);
    std::vector<Term> all = base;
    for (int i = 1; i < static_cast<int>(exponent.number); ++i) {
      std::vector<Term> more = united(all, crossed(expression, all, base));
      if (more.size() == all.size()) break;
      all = std::move(more);
    }
    return all;
  }

  std::vector<Term> dot(const Expression& expression) {
    if (allColumns_.empty()) {
      fail(expression,
           "\".\" stands for all other columns, which are not known here; expected "
           "their names");
    }
    std::set<std::string> used;
    const auto use = [&used](const Expression& each) {
      for (const std::string& name : namesIn(each)) used.insert(name);
    };
    for (const auto* each : {&formula_.entry, &formula_.exit, &formula_.event, &formula_.cluster}) {
      if (*each) use(**each);
    }
    for (const Expression& each : formula_.strata) use(each);
    for (const Expression& each : formula_.offsets) use(each);
    std::vector<Term> terms;
    for (const std::string& name : allColumns_) {
      if (used.contains(name)) continue;
      Expression column;
      column.kind = Expression::Kind::kName;
      column.text = name;
      column.at = expression.at;
      column.end = expression.end;
      terms.push_back(Term{{variableOf(column)}, {}});
    }
    return terms;
  }

  VariableKind kindOf(const Expression& expression) const {
    if (expression.kind == Expression::Kind::kName) return VariableKind::kPlain;
    if (expression.kind != Expression::Kind::kCall) return VariableKind::kNumbers;
    if (expression.text == "C" || expression.text == "factor" || expression.text == "as.factor" ||
        expression.text == "strata") {
      return VariableKind::kFactor;
    }
    if (expression.text == "ns") return VariableKind::kNaturalSpline;
    if (expression.text == "rcs") return VariableKind::kRestrictedSpline;
    if (expression.text == "poly") return VariableKind::kPolynomial;
    return VariableKind::kNumbers;
  }

  std::size_t variableOf(const Expression& expression) {
    const std::string name = deparse(expression);
    for (std::size_t i = 0; i < formula_.variables.size(); ++i) {
      if (formula_.variables[i].name == name) return i;
    }
    formula_.variables.push_back({kindOf(expression), expression, name});
    return formula_.variables.size() - 1;
  }

  static std::vector<Term> united(std::vector<Term> left, const std::vector<Term>& right) {
    for (const Term& term : right) {
      if (std::find(left.begin(), left.end(), term) == left.end()) left.push_back(term);
    }
    return left;
  }

  static Term joined(const Term& a, const Term& b) {
    Term term;
    std::set_union(a.variables.begin(), a.variables.end(), b.variables.begin(), b.variables.end(),
                   std::back_inserter(term.variables));
    return term;
  }

  std::vector<Term> crossed(const Expression& at, const std::vector<Term>& left,
                            const std::vector<Term>& right) const {
    if (left.size() * right.size() > kMostTerms) {
      fail(at, "there are more than " + text::grouped(kMostTerms) + " terms");
    }
    std::vector<Term> terms;
    for (const Term& a : left) {
      for (const Term& b : right) terms.push_back(joined(a, b));
    }
    return united({}, terms);
  }

  std::string nameOf(const Term& term) const {
    std::string name;
    for (const std::size_t variable : term.variables) {
      name += (name.empty() ? "" : ":") + formula_.variables[variable].name;
    }
    return name;
  }

  // Variables that only stood in terms taken away are not read.
  void dropUnused() {
    std::vector<std::size_t> place(formula_.variables.size(), formula_.variables.size());
    std::vector<Variable> kept;
    for (std::size_t i = 0; i < formula_.variables.size(); ++i) {
      const bool used =
          std::any_of(formula_.terms.begin(), formula_.terms.end(), [i](const Term& term) {
            return std::find(term.variables.begin(), term.variables.end(), i) !=
                   term.variables.end();
          });
      if (!used) continue;
      place[i] = kept.size();
      kept.push_back(std::move(formula_.variables[i]));
    }
    formula_.variables = std::move(kept);
    for (Term& term : formula_.terms) {
      for (std::size_t& variable : term.variables) variable = place[variable];
    }
  }

  Formula& formula_;
  const std::vector<std::string>& allColumns_;
};

Formula parsed(std::string_view text, const std::vector<std::string>& allColumns,
               const char* expected, void (*readLeft)(const Expression&, Formula&)) {
  const Expression whole = frame::parseExpression(text);
  Formula formula;
  formula.text = text;
  if (!whole.isOperator("~")) {
    throw ExpressionError(
        formula.text, text.size(),
        std::string("there is no ~ between response and terms; expected ") + expected);
  }
  if (whole.arguments.size() == 2) readLeft(whole.arguments[0], formula);
  readBeside(whole.arguments.back(), formula);  // "." needs it beforehand
  Expander(formula, allColumns).right(whole.arguments.back());
  return formula;
}

}  // namespace

Formula parseFormula(std::string_view text, const std::vector<std::string>& allColumns) {
  return parsed(text, allColumns, "Surv(time, status) ~ terms", readResponse);
}

Formula parseCaseFormula(std::string_view text, const std::vector<std::string>& allColumns) {
  return parsed(text, allColumns, "case ~ terms + strata(set)",
                [](const Expression& left, Formula& formula) {
                  Expression& time = formula.exit.emplace();
                  time.text = "1";
                  time.number = 1;
                  formula.event = left;
                });
}

bool hasDot(std::string_view text) { return containsDot(frame::parseExpression(text)); }

}  // namespace survmeth::model
