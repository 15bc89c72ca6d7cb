#include "analysis/cox/request.h"

#include <algorithm>
#include <map>
#include <utility>

#include "analysis/option.h"
#include "model/response.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

using frame::Cells;
using frame::Expression;
using model::Formula;
using model::Variable;
using model::VariableKind;
using text::quote;

Expression named(const std::string& column) {
  Expression name;
  name.kind = Expression::Kind::kName;
  name.text = column;
  return name;
}

Formula fromOptions(const CoxRequest& request) {
  Formula formula;
  if (!request.entry.empty()) formula.entry = named(request.entry);
  formula.exit = named(request.time);
  formula.event = named(request.event);
  for (const std::string& column : request.covariates) {
    formula.terms.push_back({{formula.variables.size()}, column});
    formula.variables.push_back({VariableKind::kPlain, named(column), column});
  }
  if (!request.strata.empty()) {
    formula.strata = {named(request.strata)};
    formula.strataNames = {request.strata};
  }
  return formula;
}

std::vector<std::string> withoutOwn(const CoxRequest& request, std::vector<std::string> columns) {
  for (const std::string* own : {&request.weights, &request.cluster, &request.id}) {
    std::erase(columns, *own);
  }
  return columns;
}

bool isFactor(const CoxRequest& request, const std::string& column) {
  for (const std::string& each : coxCoding(request).factors) {
    if (each == column) return true;
  }
  return false;
}

// What the columns of a formula are to be. Of a column that stands in several places numbers are
// asked for where one needs them, else labels where every place takes labels.
class Needs {
 public:
  explicit Needs(const CoxRequest& request) : request_(request) {}

  void addAll(const Formula& formula) {
    for (const auto* time : {&formula.entry, &formula.exit}) {
      if (*time) add(**time, Cells::kNumbers);
    }
    if (formula.event) add(*formula.event, Cells::kText);
    addTerms(formula);
    for (const Expression& each : formula.strata) add(each, Cells::kText);
    if (formula.cluster) add(*formula.cluster, Cells::kText);
    for (const Expression& each : formula.offsets) add(each, Cells::kNumbers);
  }

  void addTerms(const Formula& formula) {
    for (const Variable& variable : formula.variables) {
      const Expression& whole = variable.expression;
      if (variable.kind == VariableKind::kFactor) {
        for (const Expression& each : whole.arguments) add(each, Cells::kText);
      } else if (variable.kind == VariableKind::kPlain && isFactor(request_, whole.text)) {
        add(whole, Cells::kText);
      } else {
        add(whole, Cells::kEither);
      }
    }
  }

  // A row may keep a missing cell where the rest of an expression may decide its value.
  void add(const Expression& expression, Cells cells, bool mayBeMissing = false) {
    if (expression.kind != Expression::Kind::kName) {
      const bool decides = expression.isOperator("&") || expression.isOperator("|");
      for (const Expression& each : expression.arguments) {
        add(each, Cells::kEither, mayBeMissing || decides);
      }
      return;
    }
    const auto [found, isNew] = place_.emplace(expression.text, wanted_.size());
    if (isNew) {
      frame::Wanted want;
      want.name = expression.text;
      want.cells = cells;
      want.mayBeMissing = mayBeMissing;
      want.labelsOption = "--factor";
      wanted_.push_back(std::move(want));
      return;
    }
    frame::Wanted& want = wanted_[found->second];
    want.mayBeMissing = want.mayBeMissing && mayBeMissing;
    if (want.cells != cells) {
      const bool numbers = want.cells == Cells::kNumbers || cells == Cells::kNumbers;
      want.cells = numbers ? Cells::kNumbers : Cells::kEither;
    }
  }

  // Those of --versus alone: their missing cells are refused by name, not left out.
  void addVersus(const Formula& formula) {
    const std::size_t before = wanted_.size();
    addTerms(formula);
    for (std::size_t i = before; i < wanted_.size(); ++i) wanted_[i].mayBeMissing = true;
  }

  std::vector<frame::Wanted>& wanted() { return wanted_; }

 private:
  const CoxRequest& request_;
  std::vector<frame::Wanted> wanted_;
  std::map<std::string, std::size_t> place_;
};

// Labels that a person names are never taken for missing.
void nameLabels(const CoxRequest& request, const Formula& formula, frame::Wanted& want) {
  for (const auto& [column, level] : coxCoding(request).references) {
    if (column == want.name) want.named.push_back(level);
  }
  const bool isEvent = formula.event && formula.event->kind == Expression::Kind::kName &&
                       formula.event->text == want.name;
  if (!isEvent) return;
  want.named.insert(want.named.end(), request.eventValues.begin(), request.eventValues.end());
}

}  // namespace

Formula coxFormula(const CoxRequest& request, const std::vector<std::string>& columns) {
  if (request.formula.empty()) return fromOptions(request);
  const std::vector<std::string> others = withoutOwn(request, columns);
  Formula formula = request.cases ? model::parseCaseFormula(request.formula, others)
                                  : model::parseFormula(request.formula, others);
  if (!formula.exit) {
    throw BadOption("formula",
                    request.cases ? "there is nothing before ~; expected case ~ terms + strata(set)"
                                  : "there is no response before ~; expected Surv(time, status) "
                                    "~ terms");
  }
  if (formula.terms.empty()) {
    throw BadOption("formula",
                    "there is no term whose coefficient is to be estimated; expected "
                    "one at least");
  }
  if (formula.cluster && !request.cluster.empty()) {
    throw BadOption("cluster", "stands beside cluster() in --formula; expected one of the two");
  }
  for (const std::string& column : coxCoding(request).factors) {
    const bool stands = std::any_of(
        formula.variables.begin(), formula.variables.end(), [&](const Variable& variable) {
          const Expression& whole = variable.expression;
          return whole.text == column ||
                 (variable.kind == VariableKind::kFactor && whole.arguments.size() == 1 &&
                  whole.arguments[0].text == column);
        });
    if (stands) continue;
    const auto& factors = request.factors;
    const bool asked = std::find(factors.begin(), factors.end(), column) != factors.end();
    throw BadOption(asked ? "factor" : "reference",
                    quote(column) + " is no term of the formula by itself; expected one that is");
  }
  return formula;
}

Formula coxVersus(const CoxRequest& request, const Formula& formula,
                  const std::vector<std::string>& columns) {
  Formula versus = request.cases
                       ? model::parseCaseFormula(request.versus, withoutOwn(request, columns))
                       : model::parseFormula(request.versus, withoutOwn(request, columns));
  const auto text = [](const std::optional<Expression>& each) {
    return each ? frame::deparse(*each) : std::string();
  };
  if (versus.exit &&
      (text(versus.entry) != text(formula.entry) || text(versus.exit) != text(formula.exit) ||
       text(versus.event) != text(formula.event))) {
    throw BadOption("versus", "the response is not that of the model; expected the same, or none");
  }
  if (!versus.strata.empty() || !versus.offsets.empty() || versus.cluster) {
    throw BadOption("versus",
                    "strata, clusters and offsets are those of the model; expected terms alone");
  }
  if (versus.terms.empty()) {
    throw BadOption("versus",
                    "there is no term; expected one at least, for the likelihood-ratio "
                    "test of all terms stands among the tests");
  }
  return versus;
}

model::CodingOptions coxCoding(const CoxRequest& request) {
  model::CodingOptions options;
  options.factors = request.factors;
  for (const std::string& reference : request.references) {
    const std::size_t sign = reference.find('=');
    std::string column = reference.substr(0, sign);
    options.factors.push_back(column);
    options.references.emplace_back(std::move(column), reference.substr(sign + 1));
  }
  return options;
}

void wantCoxColumns(const CoxRequest& request, const std::vector<std::string>& header,
                    std::vector<frame::Wanted>& wanted) {
  const Formula formula = coxFormula(request, header);
  Needs needs(request);
  if (!request.formula.empty()) needs.addAll(formula);
  for (frame::Wanted& want : wanted) {
    if (want.cells != Cells::kEither) continue;
    if (isFactor(request, want.name)) want.cells = Cells::kText;
    nameLabels(request, formula, want);
    want.labelsOption = "--factor";
  }
  if (!request.versus.empty()) needs.addVersus(coxVersus(request, formula, header));
  for (frame::Wanted& want : needs.wanted()) {
    const bool stands = std::any_of(wanted.begin(), wanted.end(), [&](const frame::Wanted& each) {
      return each.name == want.name && (want.mayBeMissing || each.cells == want.cells);
    });
    nameLabels(request, formula, want);
    if (!stands) wanted.push_back(std::move(want));
  }
}

std::vector<std::uint32_t> coxRows(const frame::Frame& data, const CoxRequest& request) {
  return model::completeRows(coxFormula(request, frame::columnNames(data)), data);
}

}  // namespace survmeth::analysis
