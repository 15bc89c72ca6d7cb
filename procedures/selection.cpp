#include "procedures/selection.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <utility>

#include "Dist/Dist"

namespace survmeth::procedures {
namespace {

// A gain that rounding could make, as in a model that only renames another.
constexpr double kGain = 1e-7;

struct Change {
  SelectionStep step;
  Fit fit;
};

class Selecting {
 public:
  Selecting(Family& family, const SelectionOptions& options, numerics::Progress& progress)
      : family_(family), options_(options), progress_(progress) {}

  Selection made() {
    made_.in.assign(family_.terms(), options_.direction != Direction::kForward);
    for (std::size_t term = 0; term < options_.forced.size(); ++term) {
      if (options_.forced[term]) made_.in[term] = true;
    }
    made_.fit = family_.fit(made_.in, none_);
    for (std::size_t step = 0; made_.fit.exists && seen_.insert(made_.in).second; ++step) {
      progress_.at(std::min(
          1.0, static_cast<double>(step) / static_cast<double>(family_.terms() + std::size_t{1})));
      std::optional<Change> change = options_.byPValue ? byPValue() : byCriterion();
      if (!change) break;
      made_.in[change->step.term] = change->step.added;
      made_.fit = std::move(change->fit);
      change->step.logLikelihood = made_.fit.logLikelihood;
      change->step.parameters = made_.fit.parameters;
      made_.steps.push_back(change->step);
    }
    return std::move(made_);
  }

 private:
  bool isForced(std::size_t term) const {
    return !options_.forced.empty() && options_.forced[term];
  }
  bool mayLeave(std::size_t term) const {
    if (!made_.in[term] || isForced(term) || options_.direction == Direction::kForward)
      return false;
    for (std::size_t other = 0; other < made_.in.size(); ++other) {
      if (made_.in[other] && family_.isWithin(term, other)) return false;
    }
    return true;
  }
  bool mayEnter(std::size_t term) const {
    if (made_.in[term] || options_.direction == Direction::kBackward) return false;
    for (std::size_t other = 0; other < made_.in.size(); ++other) {
      if (!made_.in[other] && family_.isWithin(other, term)) return false;
    }
    return true;
  }
  Fit with(std::size_t term, bool in) {
    std::vector<bool> terms = made_.in;
    terms[term] = in;
    return family_.fit(terms, none_);
  }

  // The term that leaves, or else the one that comes in.
  std::optional<Change> byPValue() {
    const std::vector<Test>& tests = made_.fit.terms;
    std::optional<std::size_t> worst;
    for (std::size_t term = 0; term < made_.in.size(); ++term) {
      if (!mayLeave(term) || std::isnan(tests[term].pValue)) continue;
      if (!worst || tests[term].pValue > tests[*worst].pValue) worst = term;
    }
    if (worst && tests[*worst].pValue >= options_.remove) {
      Change change{{*worst, false, tests[*worst]}, with(*worst, false)};
      return change.fit.exists ? std::optional(std::move(change)) : std::nullopt;
    }
    std::optional<Change> best;
    for (std::size_t term = 0; term < made_.in.size(); ++term) {
      if (!mayEnter(term)) continue;
      Fit fit = with(term, true);
      if (!fit.exists || !(fit.terms[term].pValue < options_.enter)) continue;
      const Test test = fit.terms[term];
      if (!best || test.pValue < best->step.test.pValue) {
        best = Change{{term, true, test}, std::move(fit)};
      }
    }
    return best;
  }

  double criterion(const Fit& fit) const {
    return -2.0 * fit.logLikelihood + options_.penalty * static_cast<double>(fit.parameters);
  }

  std::optional<Change> byCriterion() {
    double least = criterion(made_.fit) - kGain;
    std::optional<Change> best;
    for (std::size_t term = 0; term < made_.in.size(); ++term) {
      if (!mayLeave(term) && !mayEnter(term)) continue;
      const bool added = !made_.in[term];
      Fit fit = with(term, added);
      if (!fit.exists || !(criterion(fit) < least)) continue;
      least = criterion(fit);
      best = Change{{term, added, ratio(fit)}, std::move(fit)};
    }
    return best;
  }

  // The likelihood ratio of the present model and another.
  Test ratio(const Fit& other) const {
    const Fit& own = made_.fit;
    const std::size_t degrees = own.parameters > other.parameters
                                    ? own.parameters - other.parameters
                                    : other.parameters - own.parameters;
    const double chiSquare = 2.0 * std::fabs(own.logLikelihood - other.logLikelihood);
    return {chiSquare, degrees, pValChiSq(chiSquare, static_cast<double>(degrees))};
  }

  Family& family_;
  const SelectionOptions& options_;
  numerics::Progress& progress_;
  numerics::Progress none_;
  std::set<std::vector<bool>> seen_;
  Selection made_;
};

}  // namespace

Selection select(Family& family, const SelectionOptions& options, numerics::Progress& progress) {
  return Selecting(family, options, progress).made();
}

}  // namespace survmeth::procedures
