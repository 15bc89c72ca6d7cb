#include "analysis/coxDesign.h"

#include <algorithm>

#include "engine/input.h"
#include "frame/labels.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

constexpr std::size_t kMostLevels = 100;

void addFactor(const frame::Column& column, std::size_t place, CoxDesign& design) {
  const frame::Labels levels = frame::labelsOf(column);
  if (levels.labels.size() < 2) {
    design.covariates.push_back({column.name, design.own.emplace_back(column.rows(), 0.0)});
    return;
  }
  if (levels.labels.size() > kMostLevels) {
    throw engine::Refusal(engine::Role::kCovariate, engine::Refusal::kNone,
                          "the column has " + text::grouped(levels.labels.size()) + " levels",
                          place, "numbers, or at most " + std::to_string(kMostLevels) + " levels");
  }
  design.references.emplace_back(column.name, levels.labels.front());
  for (std::size_t level = 1; level < levels.labels.size(); ++level) {
    std::vector<double>& indicator = design.own.emplace_back(column.rows());
    std::transform(levels.codes.begin(), levels.codes.end(), indicator.begin(),
                   [level](std::uint32_t code) { return code == level ? 1.0 : 0.0; });
    design.covariates.push_back({column.name + "=" + levels.labels[level], indicator});
  }
}

}  // namespace

CoxDesign coxDesignOf(const frame::Frame& data, const std::vector<std::string>& columns,
                      const std::vector<std::string>& factors) {
  CoxDesign design;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const bool isFactor = std::find(factors.begin(), factors.end(), columns[i]) != factors.end();
    const frame::Column* numbers = isFactor ? nullptr : data.numbers(columns[i]);
    if (numbers != nullptr) {
      design.covariates.push_back({numbers->name, numbers->numbers});
    } else {
      addFactor(isFactor ? *data.find(columns[i]) : *data.labels(columns[i]), i, design);
    }
  }
  return design;
}

}  // namespace survmeth::analysis
