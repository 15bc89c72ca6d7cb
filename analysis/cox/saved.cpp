// From an answer to what lasts of it. The JSON is in savedJson.cpp.
#include "analysis/cox/saved.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "analysis/option.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
using model::CodedVariable;
using model::Formula;

// The coding of the terms that are left, without the response and what concerns rows alone.
model::Coding codingOf(const model::Coding& whole) {
  const Formula& all = whole.formula();
  Formula formula;
  formula.text = all.text;
  formula.strata = all.strata;
  formula.strataNames = all.strataNames;
  formula.offsets = all.offsets;
  std::vector<CodedVariable> variables;
  std::vector<std::size_t> place(all.variables.size(), all.variables.size());
  for (const model::Term& term : all.terms) {
    model::Term kept{{}, term.name};
    for (const std::size_t variable : term.variables) {
      if (place[variable] == all.variables.size()) {
        place[variable] = variables.size();
        variables.push_back(whole.variables()[variable]);
        formula.variables.push_back(all.variables[variable]);
      }
      kept.variables.push_back(place[variable]);
    }
    formula.terms.push_back(std::move(kept));
  }
  return {std::move(formula), std::move(variables)};
}

// The columns that the coding reads, each as it was: numbers, labels, or both.
std::vector<frame::Wanted> columnsOf(const model::Coding& coding, const frame::Frame& data) {
  std::set<std::string> names;
  const auto add = [&names](const frame::Expression& expression) {
    for (std::string& name : frame::namesIn(expression)) names.insert(std::move(name));
  };
  const Formula& formula = coding.formula();
  for (const model::Variable& each : formula.variables) add(each.expression);
  for (const frame::Expression& each : formula.strata) add(each);
  for (const frame::Expression& each : formula.offsets) add(each);
  std::vector<frame::Wanted> columns;
  for (const std::string& name : names) {
    if (data.numbers(name) != nullptr) {
      columns.push_back({.name = name, .cells = frame::Cells::kNumbers});
    }
    if (data.labels(name) == nullptr) continue;
    frame::Wanted want{.name = name, .cells = frame::Cells::kText};
    // A level of the model is no missing cell, whatever it is called.
    for (const CodedVariable& variable : coding.variables()) {
      if (variable.column == name) want.named = variable.levels;
    }
    columns.push_back(std::move(want));
  }
  return columns;
}

}  // namespace

std::vector<std::vector<double>> stratumMeans(const cox::Problem& problem, std::size_t strata) {
  const engine::risk::Arrangement& a = problem.arrangement;
  std::vector<std::vector<double>> means(strata, std::vector<double>(problem.columns(), kNone));
  for (std::size_t s = 0; s < a.strata() && !means.empty(); ++s) {
    for (std::size_t j = 0; j < problem.columns(); ++j) {
      double weights = 0, sum = 0;
      for (std::size_t i = a.stratumRow[s]; i < a.stratumRow[s + 1]; ++i) {
        weights += a.weight[i];
        sum += a.weight[i] * problem.x(i, j);
      }
      means[a.stratumCode[s]][j] = problem.centre(s, j) + sum / weights;
    }
  }
  return means;
}

CoxSaved savedCoding(const frame::Frame& data, const model::Coding& coding) {
  CoxSaved saved;
  saved.coding = codingOf(coding);
  saved.entry = coding.formula().entry;
  saved.exit = coding.formula().exit;
  saved.columns = columnsOf(saved.coding, data);
  return saved;
}

CoxSaved coxSaved(const frame::Frame& data, const CoxAnswer& answer, const CoxRequest&) {
  const cox::Fit& fit = answer.fit;
  for (std::size_t j = 0; j < answer.columns.size(); ++j) {
    if (fit.column[j] != cox::Column::kInfinite) continue;
    throw BadOption("save", "the coefficient of " + text::quote(answer.columns[j].name) +
                                " is infinite, so that there are no predictions; expected a "
                                "model without it, or --firth");
  }
  CoxSaved saved = savedCoding(data, answer.coding);
  for (const CoxColumn& column : answer.columns) {
    saved.names.push_back(column.name);
    saved.mean.push_back(column.mean);
  }
  saved.coefficients = fit.coefficients;
  saved.covariance = fit.inference();
  saved.strata = answer.strata;
  saved.stratumMean = stratumMeans(*fit.problem, saved.strata.size());
  if (fit.ties == cox::Ties::kEfron || fit.ties == cox::Ties::kBreslow) {
    saved.hazard = cox::BaselineHazard(fit).sums();
  }
  return saved;
}

}  // namespace survmeth::analysis
