#include "model/design.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "frame/labels.h"
#include "model/learn.h"
#include "text/words.h"

namespace survmeth::model {
namespace {

using engine::Refusal;
using engine::Role;

// One variable in the rows of a frame: its columns with the ends of their names.
struct Coded {
  std::vector<std::span<const double>> columns;
  std::vector<std::string> names;
  std::vector<ColumnMeaning> meaning;
  std::vector<std::vector<double>> own;
};

std::uint32_t levelIn(const CodedVariable& variable, const std::string& level, std::size_t row) {
  const auto found = std::find(variable.levels.begin(), variable.levels.end(), level);
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
  const frame::Column& column = *data.find(variable.column);
  const frame::Labels labels = frame::labelsOf(column);
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
  frame::Values values = numbersOf(variable.variable, data, text);
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
  for (const Term& term : formula_.terms) {
    Coded coded;
    for (std::size_t k = 0; k < term.variables.size(); ++k) {
      const CodedVariable& variable = variables_[term.variables[k]];
      Term margin = term;
      margin.variables.erase(margin.variables.begin() + static_cast<std::ptrdiff_t>(k));
      const bool all = !margin.variables.empty() && !formula_.has(margin);
      Coded one = variable.isFactor() ? codedFactor(variable, data, all)
                                      : codedNumbers(variable, data, formula_.text);
      coded = k == 0 ? std::move(one) : product(coded, one, data.rows);
    }
    const std::size_t index = made.design.termNames.size();
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
  const auto read = [&](std::span<const double> numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      if (std::isnan(numbers[i])) complete[i] = false;
    }
  };
  for (const Variable& variable : formula.variables) {
    if (variable.kind == VariableKind::kPlain || variable.kind == VariableKind::kFactor) continue;
    read(numbersOf(variable, data, formula.text).numbers);
  }
  for (const Expression& offset : formula.offsets) {
    read(frame::evaluate(offset, data, formula.text).numbers);
  }
  std::vector<std::uint32_t> rows;
  for (std::size_t i = 0; i < data.rows; ++i) {
    if (complete[i]) rows.push_back(static_cast<std::uint32_t>(i));
  }
  return rows;
}

}  // namespace survmeth::model
