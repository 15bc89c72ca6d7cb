#include "model/design.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "frame/labels.h"
#include "model/learn.h"
#include "text/words.h"

namespace survmeth::model {
namespace {

using engine::Refusal;
using engine::Role;

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

// One variable in the rows of a frame: its columns with the ends of their names.
struct Coded {
  std::vector<std::span<const double>> columns;
  std::vector<std::string> names;
  std::vector<ColumnMeaning> meaning;
  std::vector<std::vector<double>> own;
};

std::uint32_t levelIn(const CodedVariable& variable, const std::string& level, std::size_t row) {
  auto found = std::find(variable.levels.begin(), variable.levels.end(), level);
  if (found == variable.levels.end()) {
    found = std::find_if(variable.levels.begin(), variable.levels.end(),
                         [&](const std::string& each) { return frame::sameLabel(each, level); });
  }
  if (found != variable.levels.end()) {
    return static_cast<std::uint32_t>(found - variable.levels.begin());
  }
  throw Refusal(Role::kFormula, row,
                text::quote(level) + " is no level of " + text::quote(variable.column) +
                    " that the model knows",
                Refusal::kNone, "one of " + text::nearestFirst(level, variable.levels));
}

// Indicators of the levels: all of them, or all but the reference.
Coded codedFactor(const CodedVariable& variable, const frame::Frame& data, bool all) {
  const frame::Column* column = data.find(variable.column);
  if (column == nullptr) {
    std::vector<std::string> names;
    for (const frame::Column& each : data.columns) names.push_back(each.name);
    throw Refusal(Role::kFormula, Refusal::kNone,
                  "there is no column " + text::quote(variable.column), Refusal::kNone,
                  "one of " + text::nearestFirst(variable.column, names));
  }
  const frame::Labels labels = frame::labelsOf(*column);
  std::vector<std::uint32_t> place(labels.labels.size());
  for (std::size_t i = 0; i < labels.labels.size(); ++i) {
    const auto first = std::find(labels.codes.begin(), labels.codes.end(), i);
    place[i] =
        levelIn(variable, labels.labels[i], static_cast<std::size_t>(first - labels.codes.begin()));
  }
  const std::size_t from = all ? 0 : 1;
  Coded coded;
  coded.own.assign(variable.levels.size() - from, std::vector<double>(data.rows, 0.0));
  for (std::size_t i = 0; i < data.rows; ++i) {
    if (labels.codes[i] == frame::Column::kMissing) {
      for (std::vector<double>& indicator : coded.own) indicator[i] = kMissing;
      continue;
    }
    const std::size_t level = place[labels.codes[i]];
    if (level >= from) coded.own[level - from][i] = 1;
  }
  for (std::size_t level = from; level < variable.levels.size(); ++level) {
    coded.columns.emplace_back(coded.own[level - from]);
    coded.names.push_back(variable.variable.name + "=" + variable.levels[level]);
    coded.meaning.push_back({{{variable.column, variable.levels[level]}}});
  }
  return coded;
}

Coded codedNumbers(const CodedVariable& variable, const frame::Frame& data,
                   const std::string& text) {
  frame::Values values = numbersOf(variable.variable, data, text, frame::AbsentLabel::kFalse);
  Coded coded;
  if (std::holds_alternative<std::monostate>(variable.basis)) {
    const bool borrowed = values.own.empty();
    coded.columns.push_back(values.numbers);
    if (!borrowed) {
      coded.own.push_back(std::move(values.own));
      coded.columns[0] = coded.own[0];
    }
    coded.names.push_back(variable.variable.name);
  } else {
    coded.own = std::visit(
        [&](const auto& basis) -> std::vector<std::vector<double>> {
          if constexpr (std::is_same_v<std::decay_t<decltype(basis)>, std::monostate>) {
            return {};
          } else {
            return evaluated(basis, values.numbers);
          }
        },
        variable.basis);
    for (std::size_t j = 0; j < coded.own.size(); ++j) {
      coded.columns.emplace_back(coded.own[j]);
      coded.names.push_back(variable.variable.name + std::to_string(j + 1));
    }
  }
  coded.meaning.resize(coded.columns.size());
  return coded;
}

Coded product(const Coded& left, const Coded& right, std::size_t rows) {
  Coded both;
  for (std::size_t b = 0; b < right.columns.size(); ++b) {
    for (std::size_t a = 0; a < left.columns.size(); ++a) {
      std::vector<double> column(rows);
      for (std::size_t i = 0; i < rows; ++i) column[i] = left.columns[a][i] * right.columns[b][i];
      both.own.push_back(std::move(column));
      both.names.push_back(left.names[a] + ":" + right.names[b]);
      ColumnMeaning meaning = left.meaning[a];
      meaning.levels.insert(meaning.levels.end(), right.meaning[b].levels.begin(),
                            right.meaning[b].levels.end());
      both.meaning.push_back(std::move(meaning));
    }
  }
  for (const std::vector<double>& column : both.own) both.columns.emplace_back(column);
  return both;
}

// Whether what remains of term `index` without its variable k lies in the span of the terms before
// it (the intercept's where nothing remains, the baseline hazards' where strata do): all levels of k
// together would only repeat it.
bool marginStands(const Formula& formula, std::size_t index, std::size_t k) {
  const std::vector<Term>& terms = formula.terms;
  std::vector<std::size_t> margin = terms[index].variables;
  margin.erase(margin.begin() + static_cast<std::ptrdiff_t>(k));
  const bool strata = std::all_of(margin.begin(), margin.end(), [&](std::size_t variable) {
    return formula.variables[variable].isStrata();
  });
  const auto holds = [&](const Term& term) {
    return std::includes(term.variables.begin(), term.variables.end(), margin.begin(),
                         margin.end());
  };
  const auto end = terms.begin() + static_cast<std::ptrdiff_t>(index);
  return strata || std::any_of(terms.begin(), end, holds);
}

}  // namespace

Coding Coding::learn(const Formula& formula, const frame::Frame& data,
                     const CodingOptions& options) {
  Coding coding;
  coding.formula_ = formula;
  for (const Variable& variable : formula.variables) {
    coding.variables_.push_back(learnVariable(variable, data, options, formula.text));
  }
  return coding;
}

DesignColumns Coding::design(const frame::Frame& data) const {
  DesignColumns made;
  for (std::size_t index = 0; index < formula_.terms.size(); ++index) {
    const Term& term = formula_.terms[index];
    Coded coded;
    for (std::size_t k = 0; k < term.variables.size(); ++k) {
      const CodedVariable& variable = variables_[term.variables[k]];
      const bool all = !marginStands(formula_, index, k);
      Coded one = variable.isFactor() ? codedFactor(variable, data, all)
                                      : codedNumbers(variable, data, formula_.text);
      coded = k == 0 ? std::move(one) : product(coded, one, data.rows);
    }
    made.design.termNames.push_back(term.name);
    for (std::size_t j = 0; j < coded.columns.size(); ++j) {
      made.design.columns.push_back(coded.columns[j]);
      made.design.names.push_back(coded.names[j]);
      made.design.term.push_back(index);
      made.meaning.push_back(std::move(coded.meaning[j]));
    }
    // Moving a vector leaves its elements where they are, so the spans stay valid.
    for (std::vector<double>& own : coded.own) made.own.push_back(std::move(own));
  }
  return made;
}

std::vector<std::uint32_t> Coding::completeRows(const Formula& formula, const frame::Frame& data) {
  std::vector<bool> complete(data.rows, true);
  const auto read = [&](const frame::Values& values) {
    for (std::size_t i = 0; i < data.rows; ++i) {
      if (std::isnan(values.numbers[i])) complete[i] = false;
    }
  };
  for (const Variable& variable : formula.variables) {
    const bool isFactor = variable.kind == VariableKind::kFactor;
    if (isFactor && variable.expression.arguments.size() != 1) continue;  // refused by learn()
    const Expression& name = isFactor ? variable.expression.arguments[0] : variable.expression;
    const frame::Column* column = data.find(name.text);
    if (name.kind == Expression::Kind::kName && column != nullptr) {
      for (std::size_t i = 0; i < data.rows; ++i) {
        if (column->isMissing(i)) complete[i] = false;
      }
      continue;
    }
    read(numbersOf(variable, data, formula.text, frame::AbsentLabel::kFalse));
  }
  for (const Expression& offset : formula.offsets) {
    read(frame::evaluate(offset, data, formula.text));
  }
  std::vector<std::uint32_t> rows;
  for (std::size_t i = 0; i < data.rows; ++i) {
    if (complete[i]) rows.push_back(static_cast<std::uint32_t>(i));
  }
  return rows;
}

}  // namespace survmeth::model
