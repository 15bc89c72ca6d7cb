// The columns of the design as a person knows them: names, levels, means and counts.
#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/run.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

constexpr std::size_t kMostLevels = 100;
// Squares of the ranges between them, over a million rows, neither vanish nor overflow.
constexpr double kNarrowest = 1e-120, kWidest = 1e120;

double weightOf(const CoxInput& input, std::size_t row) {
  return input.rows.weight.empty() ? 1 : input.rows.weight[row];
}

double meanOf(const CoxInput& input, std::size_t j) {
  double weights = 0, sum = 0;
  for (std::size_t i = 0; i < input.model.event.size(); ++i) {
    const double weight = weightOf(input, i);
    weights += weight;
    sum += weight * input.model.design.design.columns[j][i];
  }
  return sum / weights;
}

// Of the rows in which an indicator is 1.
CoxCount countOf(const CoxInput& input, std::span<const double> indicator) {
  const bool counted = input.rows.weightKind == engine::WeightKind::kFrequencies;
  CoxCount count;
  for (std::size_t i = 0; i < indicator.size(); ++i) {
    const double weight = weightOf(input, i);
    if (weight == 0 || indicator[i] == 0) continue;
    count.rows += counted ? weight : 1;
    if (input.model.event[i] != 0) count.events += counted ? weight : 1;
  }
  return count;
}

// What the levels of the factor from column `first` on leave of `all`.
CoxCount referenceOf(const std::vector<CoxColumn>& columns, std::size_t first, CoxCount all) {
  for (std::size_t j = first; j < columns.size() && columns[j].term == columns[first].term; ++j) {
    all.rows -= columns[j].count.rows;
    all.events -= columns[j].count.events;
  }
  return all;
}

}  // namespace

void requireCoxLevels(const CoxRequest& request, const model::Coding& coding) {
  for (const model::CodedVariable& coded : coding.variables()) {
    if (coded.levels.size() <= kMostLevels) continue;
    const auto& columns = request.covariates;
    const auto found = std::find(columns.begin(), columns.end(), coded.column);
    const std::string levels = text::grouped(coded.levels.size()) + " levels";
    const std::string expected = "numbers, or at most " + std::to_string(kMostLevels) + " levels";
    if (found != columns.end()) {
      throw engine::Refusal(engine::Role::kCovariate, engine::Refusal::kNone,
                            "the column has " + levels,
                            static_cast<std::size_t>(found - columns.begin()), expected);
    }
    throw engine::Refusal(engine::Role::kFormula, engine::Refusal::kNone,
                          "the factor " + text::quote(coded.variable.name) + " has " + levels,
                          engine::Refusal::kNone, expected);
  }
}

void requireCoxUnits(const engine::Design& design) {
  for (std::size_t j = 0; j < design.size(); ++j) {
    const auto [least, most] =
        std::minmax_element(design.columns[j].begin(), design.columns[j].end());
    const double range = *most - *least;
    if (range == 0 || (range >= kNarrowest && range <= kWidest)) continue;
    throw engine::Refusal(engine::Role::kFormula, engine::Refusal::kNone,
                          "the values of " + text::quote(design.names[j]) + " differ by up to " +
                              text::brief(range, 3) + ", whose square is no number any more",
                          engine::Refusal::kNone, "a unit in which they are nearer to 1");
  }
}

void describeCoxColumns(const CoxInput& input, CoxAnswer& answer) {
  const engine::Design& design = input.model.design.design;
  answer.terms = design.termNames;
  for (std::size_t j = 0; j < design.size(); ++j) {
    CoxColumn column;
    column.name = design.names[j];
    column.term = design.term[j];
    column.mean = meanOf(input, j);
    const auto& variables = answer.coding.formula().terms[column.term].variables;
    const auto& levels = input.model.design.meaning[j].levels;
    if (variables.size() == 1 && levels.size() == 1) {
      const model::CodedVariable& coded = answer.coding.variables()[variables[0]];
      column.factor = coded.variable.name;
      column.level = levels[0].second;
      column.reference = coded.levels[0];
      column.count = countOf(input, design.columns[j]);
    }
    answer.columns.push_back(std::move(column));
  }
  const std::vector<double> everybody(input.model.event.size(), 1.0);
  const CoxCount all = countOf(input, everybody);
  for (std::size_t j = 0; j < answer.columns.size(); ++j) {
    CoxColumn& column = answer.columns[j];
    if (column.factor.empty()) continue;
    const bool isFirst = j == 0 || answer.columns[j - 1].term != column.term;
    column.referenceCount =
        isFirst ? referenceOf(answer.columns, j, all) : answer.columns[j - 1].referenceCount;
  }
}

}  // namespace survmeth::analysis
