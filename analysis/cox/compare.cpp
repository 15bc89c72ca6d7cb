// The comparison of two nested models on the same rows.
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/run.h"
#include "analysis/option.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;

std::string termsOf(const model::Formula& formula) {
  std::string text = "~";
  for (const model::Term& term : formula.terms) {
    text += (text.size() == 1 ? " " : " + ") + term.name;
  }
  return text;
}

void requireSameRows(const frame::Frame& data, const model::Formula& versus) {
  const std::size_t complete = model::Coding::completeRows(versus, data).size();
  if (complete == data.rows) return;
  std::string columns;
  for (const std::string& name : versus.columns()) {
    const frame::Column* column = data.find(name);
    if (column == nullptr) continue;
    std::size_t missing = 0;
    for (std::size_t i = 0; i < column->rows(); ++i) missing += column->isMissing(i) ? 1 : 0;
    if (missing == 0) continue;
    columns +=
        (columns.empty() ? " of " : ", ") + text::quote(name) + " (" + text::grouped(missing) + ")";
  }
  throw BadOption("versus", text::counted(data.rows - complete, "row of the model lacks",
                                          "rows of the model lack") +
                                " a value" + columns + "; expected both models on the same rows");
}

std::size_t coefficientsOf(const cox::Fit& fit) {
  return static_cast<std::size_t>(
      std::count_if(fit.column.begin(), fit.column.end(),
                    [](cox::Column column) { return column != cox::Column::kAliased; }));
}

// Whether every column of `inner` is a combination of those of `outer`: the engine finds that beside
// them nothing of it is left.
bool isNested(const CoxInput& input, const engine::Design& outer, const engine::Design& inner) {
  engine::Design both = outer;
  both.columns.insert(both.columns.end(), inner.columns.begin(), inner.columns.end());
  both.names.insert(both.names.end(), inner.names.begin(), inner.names.end());
  both.term.resize(both.columns.size(), both.termNames.size());
  both.termNames.emplace_back("inner");
  cox::Options options = input.options;
  options.robust = false;
  options.iterationLimit = 1;
  numerics::Progress none;
  const cox::Fit fit = cox::fit(input.model.response(), input.rows, both, options, none);
  const auto from = fit.column.begin() + static_cast<std::ptrdiff_t>(outer.size());
  return std::all_of(from, fit.column.end(),
                     [](cox::Column column) { return column == cox::Column::kAliased; });
}

}  // namespace

CoxComparison compareCox(const frame::Frame& data, const CoxRequest& request, const CoxInput& input,
                         const cox::Fit& fit, numerics::Progress& progress) {
  const model::Formula versus = coxVersus(request, input.formula, frame::columnNames(data));
  requireSameRows(data, versus);
  const model::DesignColumns columns =
      model::Coding::learn(versus, data, coxCoding(request)).design(data);
  CoxComparison comparison;
  comparison.other =
      cox::fit(input.model.response(), input.rows, columns.design, input.options, progress);
  const std::size_t own = coefficientsOf(fit), others = coefficientsOf(comparison.other);
  const auto refuse = [](const std::string& why) {
    throw BadOption("versus", "neither model is nested in the other: " + why +
                                  "; expected one whose terms the other has too");
  };
  if (own == others) {
    refuse("both have " + text::counted(own, "coefficient", "coefficients"));
  }
  comparison.versusIsSmaller = others < own;
  comparison.larger = termsOf(comparison.versusIsSmaller ? input.formula : versus);
  comparison.smaller = termsOf(comparison.versusIsSmaller ? versus : input.formula);
  const engine::Design& outer =
      comparison.versusIsSmaller ? input.model.design.design : columns.design;
  const engine::Design& inner =
      comparison.versusIsSmaller ? columns.design : input.model.design.design;
  if (!isNested(input, outer, inner)) {
    refuse(comparison.larger + " does not contain " + comparison.smaller);
  }
  if (!comparison.other.converged) {
    throw BadOption("versus", "the fit does not converge; expected a model that does");
  }
  const double sign = comparison.versusIsSmaller ? 1 : -1;
  comparison.test = cox::chiSquareTest(
      std::max(0.0, 2 * sign * (fit.logLikelihood - comparison.other.logLikelihood)),
      own > others ? own - others : others - own);
  return comparison;
}

}  // namespace survmeth::analysis
