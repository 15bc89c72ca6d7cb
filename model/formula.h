// A formula taken apart: response, terms, strata, clusters and offsets, with R's meaning where R
// has one. Knows no data but the names of the columns, which "." stands for.
//
//     Surv(time, status == "dead") ~ age + sex*trt + log(bili) + ns(age, 3) + strata(site)
//
// Source Chambers & Hastie, Statistical Models in S (1992), ch. 2
#ifndef MODEL_FORMULA_H_
#define MODEL_FORMULA_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/expression.h"

namespace survmeth::model {

using frame::Expression;

// What a variable of a term is: read off the outermost function.
enum class VariableKind {
  kPlain,             // a column: numbers, or a factor where its cells are labels
  kFactor,            // C(x), strata(x): a factor, also where its cells are numbers
  kNumbers,           // arithmetic and functions of columns: log(x), I(x / 10), x > 3
  kNaturalSpline,     // ns(x, df) or ns(x, knots = c(...))
  kRestrictedSpline,  // rcs(x, knots) or rcs(x, c(...))
  kPolynomial,        // poly(x, degree), poly(x, degree, raw = TRUE)
};

struct Variable {
  VariableKind kind = VariableKind::kPlain;
  Expression expression;  // the whole: ns(age, 3)
  std::string name;       // as deparsed
  bool operator==(const Variable& other) const { return name == other.name; }
  // The strata as a factor of an interaction. Their main effect is part of the baseline hazards.
  bool isStrata() const { return expression.isCall("strata"); }
};

// A main effect or an interaction: variables by their index, ascending.
struct Term {
  std::vector<std::size_t> variables;
  std::string name;  // "age", "sex:trt"
  bool operator==(const Term& other) const { return variables == other.variables; }
};

struct Formula {
  std::string text;
  // Surv(time, status) or Surv(entry, exit, status); absent where the formula begins with ~.
  std::optional<Expression> entry, exit, event;
  std::vector<Variable> variables;
  std::vector<Term> terms;         // main effects first, then by the number of variables
  std::vector<Expression> strata;  // arguments of all strata()
  std::vector<std::string> strataNames;
  std::optional<Expression> cluster;
  std::vector<Expression> offsets;

  // The columns it reads, each once: response first, then in order of first use.
  std::vector<std::string> columns() const;
};

// Reads a formula. `allColumns` are what "." may stand for, the response's and those of strata(),
// cluster() and offset() excepted; empty where they are not known: "." is refused then.
// An intercept that is asked for or taken away (1, 0, -1) changes nothing: the coding is that of
// a model with one, as for proportional hazards.
// Throws frame::ExpressionError with the place in the text.
Formula parseFormula(std::string_view text, const std::vector<std::string>& allColumns = {});

// The same with a left side that says which rows are cases: case ~ exposure + strata(set). All of
// them have the time 1, so that the case of a set is its event and everybody is at risk.
Formula parseCaseFormula(std::string_view text, const std::vector<std::string>& allColumns = {});

// The formula with its terms spelled out; what it means is that of the text where nothing has been
// taken away since.
std::string textOf(const Formula& formula);

// Whether the text has a "." that stands for all other columns.
bool hasDot(std::string_view text);

}  // namespace survmeth::model

#endif  // MODEL_FORMULA_H_
